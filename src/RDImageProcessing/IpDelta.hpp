#pragma once

#include "RDImageProcessing/Ip2to1Base.hpp"

/// The absolute difference of two images, |a - b|, within the output's range from black to white.
/// Values  worked out in a signed type that is wider than the samples of input 1: short for 8 bits, int for 16, long
///         for 32, double for floating point. Samples of input 2 are converted to it, a fraction is lost then, and
///         what does not fit wraps around.
/// The rest is told at ClIp2to1Base.
class ClIpDelta : public ClIp2to1Base
{
public:
    ClProcessorBase* Create() override;
    const char* Name() const override;
    /// Two eUInt8 images with an overlap of more than 90000 pixels take the table of all pairs, with the same result,
    /// where it may hold anything else than distances of bytes: with other ranges than those of the types, and for a
    /// derived class.
    long DoProcess(ClImage& cIn1, ClImage& cIn2, ClImage& cOut, long nWidth, long nHeight, long nPlanes1, long nPlanes2,
                   long nIn1Offset, long nIn1Row, long nIn2Offset, long nIn2Row, long nOutOffset,
                   long nOutRow) override;
    double GetValue(ClImage& cIn1, ClImage& cIn2, ClImage& cOut, double dValue1, double dValue2) override;

private:
    bool HasPlainTable(const ClImage& cIn1, const ClImage& cIn2, const ClImage& cOut) const;
    template <class TCalc, class T1>
    long DispatchDefault(ClImage& cIn1, ClImage& cIn2, ClImage& cOut, const StOverlap& c);
    template <class TCalc, class T1, class T2>
    long DispatchDefault2(ClImage& cIn1, ClImage& cIn2, ClImage& cOut, const StOverlap& c);
    template <class TCalc, class T1, class T2, class TOut>
    long Default(ClImage& cIn1, ClImage& cIn2, ClImage& cOut, const StOverlap& c);
};
