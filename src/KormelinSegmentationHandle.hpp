#pragma once

#include "HandleBase.hpp"
#include "RDTools/Bitmap.hpp"
#include "RDTools/FpImage.hpp"
#include "RDTools/Rect.hpp"
#include "RDTools/TpArrayDynamic.hpp"

class ClKormelinSegmentHandle;

/// Cuts the application's bitmap into segments, at most two, and keeps them until the next run.
/// Properties: "Count" (read only), "CoordinateOrigin" (0, 1), "SegmentationMode" (0, 1).
/// Rectangles are pixels of the input, bottom-up: right - left is the width, top - bottom the height of a segment.
class ClKormelinSegmentationHandle
    : public TSDKHandleBase<ClKormelinSegmentationHandle, ClKormelinSegmentation, ClHandleBase>
{
public:
    /// Runs a segmentation of a device-independent bitmap or of a whole BMP file in memory, nSize bytes in one block; 0
    /// if the size is not known. The block is read in place and not needed after the call.
    /// Errors, in order: null ClExVelmarin -10; those of ClBitmap::Attach and ClImage::Attach; not one plane
    /// ClExVelmarin -11; a block that ends before its pixels -21: up to here the results of the last run stay. Then
    /// those of the processor; more than two fingers ClExVelmarin -35. The handle can run again after any of them.
    void SegmentBitmap(const tagBITMAPINFOHEADER* pBitmap, unsigned long nSize);

    /// Copies segment nIndex of the last run: the bitmap first, then the rectangle with y as m_nCoordinateOrigin tells.
    /// pSelf is this handle again, tested for null only.
    /// Errors, in order: null pSegment, null pSelf ClExVelmarin -42; no such segment -35; those of the segment.
    void GetSegment(ClKormelinSegmentationHandle* pSelf, int nIndex, ClKormelinSegmentHandle* pSegment);

    void OnQueryPropertys(ClParameterContainer& cProperties) override;

    static const char m_szSignature[8];             ///< "KS"
    static constexpr unsigned int nMaxSegments = 2; ///< of a run

    int m_nCount = 0;             ///< segments of the last run, or the number of fingers that was too large
    long m_nCoordinateOrigin = 0; ///< 0: y is the lower edge from row 0 up; 1: the upper edge from the top down
    long m_nSegmentationMode = 0; ///< 0: fingers; otherwise the biggest component
    TpArrayDynamic<tagRECT, 1> m_aRectangles; ///< one for each segment
    TpArrayDynamic<ClImage, 1> m_aImages;     ///< one for each segment, with pixels of its own
    /// The input of the last run. It goes on pointing into the caller's block; only its height is read after the run.
    ClImage m_cImage;

private:
    void CutBiggestComponent();
    void CutFingers();
    void AddSegment(const tagRECT& cRectangle, const ClImage& cImage);
};
