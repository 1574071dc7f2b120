#pragma once

#include "RDImageProcessing/IpFilterBase.hpp"

#include <cstdint>

/// Means with eight fractional bits.
struct ClConvertFixPoint
{
    template <class TMean, class T> static TMean ToMean(T value) { return static_cast<TMean>(value * 256); }
    template <class T, class TMean> static T FromMean(TMean mean)
    {
        return static_cast<T>(static_cast<std::uint32_t>(mean) >> 8);
    }
};

/// Means as numbers of their type, truncated when they become samples.
struct ClConvertFloat
{
    template <class TMean, class T> static TMean ToMean(T value) { return static_cast<TMean>(value); }
    template <class T, class TMean> static T FromMean(TMean mean)
    {
        return static_cast<T>(static_cast<int>(mean)); // a mean of bytes
    }
};

/// Edge-preserving smoother: of all square masks that contain a pixel the most uniform one gives the pixel its mean. It
/// smooths along ridges and valleys and leaves the boundary between finger and background sharp, because a mask that
/// straddles an edge loses to one that lies on one side (M. Nagao and T. Matsuyama, Edge preserving smoothing, Computer
/// Graphics and Image Processing 9, 1979, with shifted squares instead of rotated bars).
/// Width   m_nFilterWidth F is odd and spans the whole neighbourhood: the masks have the side m = (F + 1) / 2 and stand
///         around the centres up to k = m / 2 away from the pixel. F = 9: 25 masks of 5 by 5. F = 1 copies, F = 3 is
///         refused.
/// Input   8-bit, of a colour image the first three planes, one by one; signed with the modes 2 and 3 only. Not smaller
///         than F. Mode XY only.
/// Output  Made here, 8-bit; never the input itself.
/// Border  Masks are clipped to the image and divide by the number of pixels that are left. Centres lie inside.
/// Values  The mean of the mask with the smallest deviation; equal deviations go by the rules of FindMinimum. With even
///         m (F = 7) a mask is m + 1 wide, but its sums are divided by m * m inside the image, as it stands.
/// Errors  -37 without images; -35 for an even F, for m = 2, for an unknown variance mode and for m above 15 in mode 2;
///         -14 if the image is smaller than F; -33 for other sample types and directions; -10 for an image without
///         pixels; ClExBadAlloc. The steps below raise ClExVelmarin: -35 for masks below 1, -33 for samples of another
///         size than theirs and -14 for images that differ in size.
/// Cost    Per pixel m * m absolute differences and two sliding minima; many pixels at a time for F = 9 in the modes 0
/// and 1. Thread  One object, one thread.
class ClIpFilterMidRotating : public ClIpFilterBase
{
public:
    /// How the deviation of a mask is measured.
    enum EVarianceMode : int
    {
        ModeLocalMinDistanceToAverage = 0,  ///< mask mean of the pixels' distances to their local means
        ModeLocalMaskDeviation = 1,         ///< mean distance of the mask's pixels to the mask's mean
        ModeLocalMaskDeviationFixPoint = 2, ///< variance with eight fractional bits
        ModeLocalMaskDeviationFloat = 3     ///< variance in 32-bit floats
    };

    ClIpFilterMidRotating();

    using ClIpFilterBase::ApplyParam;
    long ApplyParam(ClImage& cIn, ClImage& cOut, long nWidth); ///< the modes stay as they are
    long ApplyParam(ClImage& cIn, ClImage& cOut, long nWidth, EVarianceMode eMode);

    void SetParametersToDefault() override; ///< width 5, ModeLocalMaskDeviation
    void PublishParameters(ClParameterContainer& cContainer) override;
    ClProcessorBase* Create() override;
    const char* Name() const override;
    bool CanApply() override;
    long Initialize() override;
    long ProcessXY() override;
    long ProcessSignedXY() override;

    /// Mean absolute distance of the pixels of each mask to the mask's mean, truncated to its low byte. All images are
    /// 8-bit, cAvg has the size of cIn, cDev is made here.
    void CalculateDeviationByte(const ClImage& cAvg, const ClImage& cIn, int nMask, ClImage& cDev);
    /// Mean, over each mask, of the distance of its pixels to their own local means. Images as above.
    long CalculateMinDistanceToAverage(ClImage& cAvg, ClImage& cIn, int nMask, ClImage& cDev);
    /// Variance filter of one sample type: means, deviations and their minimum. Errors: -44 if cOut is cIn.
    template <class TIn, class TOut, class TMean, class TConvert>
    void LocalDeviation(const ClImage& cIn, int nMask, ClImage& cOut);
    /// Means of all masks; cMean is of the size of cIn. Errors: ClExVelmarin -14 if a mask is larger than the image.
    template <class T, class TMean, class TConvert>
    void CalculateAverage(const ClImage& cIn, int nMask, ClImage& cMean);
    /// Variances of all masks about their means in cMean; cDev is of the same type and size as cMean.
    template <class T, class TMean, class TConvert>
    void CalculateDeviation(const ClImage& cIn, const ClImage& cMean, int nMask, ClImage& cDev);
    /// For each pixel the mean in cAvg at the position of the smallest deviation in cDev, at most nMask / 2 away in
    /// each axis. Of equal deviations in a column the lowest row wins. Across the columns the leftmost of the range
    /// wins, but for one case: the rightmost of the best among the columns 0 to nMask / 2 - 1 stands until it leaves
    /// the range or a strictly smaller one comes. cOut has the size of cDev.
    template <class TDev, class TOut, class TConvert>
    void FindMinimum(const ClImage& cDev, const ClImage& cAvg, int nMask, ClImage& cOut);

    // Hooks for looking at intermediate images in a debugger.
    void TraceImageByte(ClImage&) {}
    void TraceImage(ClImage&) {}

    EVarianceMode m_eVarMode = ModeLocalMaskDeviation;

private:
    long MaskSide() const { return m_nFilterWidth - m_nFilterWidth / 2; }
    bool IsWidthAllowed() const;
    bool IsWiderThanInput() const;
    long DeviationFromLocalMean(int nMask);
};
