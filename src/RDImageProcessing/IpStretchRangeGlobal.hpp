#pragma once

#include "RDImageProcessing/IpLookUpTableBase.hpp"

/// Stretches a range of grey values linearly to a new range; what lies beyond takes the new range's ends.
/// Values  12-bit fixed point, truncated; 0.9 is added to the new range's length, so that its top is reached. An empty
///         range leaves the values as they are.
/// Range   The old range if its end is not below its start; otherwise (the default) from the smallest to the largest
///         value of the image, over all planes.
class ClIpStretchRangeGlobal : public ClIpLookUpTableBase
{
public:
    ClIpStretchRangeGlobal();

    using ClIpLookUpTableBase::ApplyParam;
    long ApplyParam(ClImage& cIn, ClImage& cOut);
    void Reset(); ///< no images, all parameters at their defaults

    void SetParametersToDefault() override;
    void PublishParameters(ClParameterContainer& cContainer) override;
    using ClIpLookUpTableBase::QueryParameters;
    void QueryParameters(ClParameterInterface& cInterface) override;
    ClProcessorBase* Create() override;
    const char* Name() const override;
    long Initialize() override;
    void CalculateLuT() override;

    unsigned char m_nOldRangeFrom;
    unsigned char m_nOldRangeTo;
    unsigned char m_nNewRangeFrom;
    unsigned char m_nNewRangeTo;
    unsigned char m_nActRangeFrom = 0; ///< the range in force
    unsigned char m_nActRangeTo = 0;

protected:
    void DescribeStretch(ClParameterInterface& cInterface, const char* szOutImage);

private:
    void SetRangesToDefault();
};
