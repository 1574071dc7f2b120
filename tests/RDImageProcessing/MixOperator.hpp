#pragma once

#include "CanvasByDefinition.hpp"
#include "RDImageProcessing/Ip2to1Base.hpp"

/// An operator that tells its two arguments apart; notes the images of its last call.
class ClMix : public ClIp2to1Base
{
public:
    ClProcessorBase* Create() override { return NewProcessor<ClMix>(); }
    const char* Name() const override { return "ClMix"; }
    double GetValue(ClImage& cIn1, ClImage& cIn2, ClImage& cOut, double dValue1, double dValue2) override
    {
        ++m_nCalls;
        m_apSeen[0] = &cIn1;
        m_apSeen[1] = &cIn2;
        m_apSeen[2] = &cOut;
        return Value(dValue1, dValue2);
    }
    static double Value(double dValue1, double dValue2) { return 0.75 * dValue1 - 3.0 * dValue2 + 1.25; }

    long m_nCalls = 0;
    const ClImage* m_apSeen[3] = {};
};

inline long double Mixed(long double a, long double b)
{
    return ClMix::Value(static_cast<double>(a), static_cast<double>(b));
}

inline ClMix MixShifted(ClTestShift cShift, double dFill = 0.0)
{
    ClMix cMix;
    cMix.m_bSizeMustBeEqual = false;
    cMix.m_dFillColor = dFill;
    cMix.m_nOffsetX = cShift.nX;
    cMix.m_nOffsetY = cShift.nY;
    return cMix;
}
