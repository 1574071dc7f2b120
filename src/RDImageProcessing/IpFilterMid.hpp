#pragma once

#include "RDImageProcessing/IpFilterBase.hpp"

/// Box mean over an odd square of m_nFilterWidth pixels, over a line of them in one direction, or along a direction per
/// pixel. An even width runs as the next odd one, which stays; 1 or less copies.
/// Input   Any of the eight sample types; of a colour image the first three planes, one by one. The directed modes take
///         8-bit images, and two images of the same size with the directions.
/// Output  Made here with the geometry, type, resolution and range of the input; never the input itself.
/// Border  The window is clipped to the image: with width 5 a corner pixel is the mean of 9 samples, not 25. An 8-bit
///         image that is narrower or lower than the width is copied in mode XY. The passes in one direction reduce
///         m_nFilterWidth instead until it fits (8-bit: to an odd width), and it stays reduced.
/// Values  8-bit XY truncates the quotient, and width 3 multiplies by a rounded reciprocal. The passes in one direction
///         add half the width to the sum before they divide, but for floating point. All other types do X, then Y.
/// Errors  -10 if output is input; -101 if a pass has no width left, a plane of a colour image is 0 then; -33 for the
///         directed modes on types other than unsigned 8-bit; directed: ClException -701 without directions, -33 for
///         directions that are not one plane of bytes, -14 for directions of another size and for an image that is too
///         narrow (which is copied);
///         ClExVelmarin -35 for an unknown mode or sample type; ClExBadAlloc.
/// Cost    Two additions and one division per pixel whatever the width, by running column sums (M. J. McDonnell,
///         Box-filtering techniques, Computer Graphics and Image Processing 17, 1981); width 3 does without division,
///         and so do the 8-bit boxes up to 21, many pixels at a time.
/// Thread  One object, one thread.
class ClIpFilterMid : public ClIpFilterBase
{
public:
    using ClIpFilterBase::ApplyParam;
    long ApplyParam(ClImage& cIn, ClImage& cOut, long nWidth); ///< m_nMode stays as it is

    /// The image that receives the fractional part of each unsigned 8-bit XY mean, in 1/256, or null. It is made with
    /// the geometry of the input, except where the input is merely copied: then it is left alone. Its presence turns
    /// the means into the truncated exact ones for width 3, too. Of a colour image it is that of the first plane. Not
    /// owned.
    void SetRemainder(ClImage* pRemainder) { m_pRemainder = pRemainder; }

    void SetParametersToDefault() override;
    ClProcessorBase* Create() override;
    const char* Name() const override;
    long Initialize() override; ///< an even width becomes the next odd one

    long DoProcess() override;
    long ProcessX() override;
    long ProcessY() override;
    long ProcessXY() override;
    long ProcessSignedX() override;
    long ProcessSignedY() override;
    long ProcessSignedXY() override;
    /// The mean of m_nFilterWidth samples along a line through each pixel, fewer near the border, where the line is
    /// kept inside the image. The directions are signed bytes, a unit vector scaled by about 127, y against the row
    /// order; bOrtho turns them by a right angle. A direction of (0, 0) gives the pixel itself.
    long ProcessDirected(bool bOrtho) override;

    ClImage* m_pRemainder = nullptr; ///< not owned; see SetRemainder

private:
    void Process3x3();
    void Process3x3Remainder();
    void ProcessXYRemainder();
    void ProcessSigned3x3();
    template <class T, class Acc> long ProcessT();
    template <class T, class Acc> long ProcessT_X();
    template <class T, class Acc> long ProcessT_Y();
    template <class T, class Acc> long ProcessT_XY();
    template <class Slide> long Pass(int nSize, bool bOddWidths, Slide&& slide);
    template <class Rule> long PassX(bool bOddWidths);
    template <class Rule> long PassY(bool bOddWidths);
    bool CopyIfTooSmall();
};
