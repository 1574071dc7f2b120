#pragma once

#include "RDImageProcessing/Ip1to1Base.hpp"

/// Folds a colour image to one plane.
/// Input   any sample type, three or four planes; the first three samples of a pixel count, in stored order: blue,
///         green, red in an image that comes from a bitmap.
/// Output  one plane with type, size and resolution of the input and the range of its type. May be the input itself.
/// Values  Luminance: weights 0.072169, 0.71516, 0.212671; integers take them as fixed-point numbers that add up to two
///         less than one, so that a white pixel of 8 bits gives 254, and nothing is rounded. MaxRgb: the largest
///         sample. Lightness: L* of CIE 1976 between the range of the input and that of the output, truncated.
/// Errors  ClException -35 for an unknown mode; -11 for less than three planes; those of the frame; ClExBadAlloc.
class ClIpRgbToGrey : public NewIpBase::ClIp1to1Base
{
public:
    enum eProcessingMode : int
    {
        MaxRgb = 0,
        Luminance = 1,
        Lightness = 2
    };

    ClIpRgbToGrey();

    using NewIpBase::ClIp1to1Base::ApplyParam;
    long ApplyParam(ClImage& cIn, ClImage& cOut, eProcessingMode eMode);

    using NewIpBase::ClIp1to1Base::QueryParameters;
    void QueryParameters(ClParameterInterface& cInterface) override;
    ClProcessorBase* Create() override;
    const char* Name() const override;
    bool CanApply() override; ///< whether an output is set
    void ParameterString(char* szBuffer, unsigned long nSize) override;
    long DoProcess(ClImage& cIn, ClImage& cOut) override;

    eProcessingMode m_eMode = Luminance;

private:
    long FoldPlanes(const ClImage& cIn, ClImage& cOut) const;
};
