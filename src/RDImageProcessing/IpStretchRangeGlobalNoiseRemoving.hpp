#pragma once

#include "RDImageProcessing/IpStretchRangeGlobal.hpp"

/// Stretches the range that remains of an image when a share of its darkest and brightest pixels is cut off as noise.
/// Of several planes the ranges are merged.
class ClIpStretchRangeGlobalNoiseRemoving : public ClIpStretchRangeGlobal
{
public:
    ClIpStretchRangeGlobalNoiseRemoving();

    using ClIpStretchRangeGlobal::ApplyParam;
    /// Shares of the pixels, 0 to 1; 1 or more cuts nothing off.
    long ApplyParam(ClImage& cIn, ClImage& cOut, double dDarkNoisePart, double dBrightNoisePart);

    void SetParametersToDefault() override;
    void PublishParameters(ClParameterContainer& cContainer) override;
    using ClIpStretchRangeGlobal::QueryParameters;
    void QueryParameters(ClParameterInterface& cInterface) override;
    ClProcessorBase* Create() override;
    const char* Name() const override;
    long Initialize() override;

    double m_dDarkNoisePart = 0.0;
    double m_dBrightNoisePart = 0.0;
    ClImage** m_ppOutImage = nullptr; ///< if set, the output is taken from it in Initialize
};
