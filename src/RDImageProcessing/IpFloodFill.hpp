#pragma once

#include "RDTools/FpImage.hpp"
#include "RDTools/ProcessorBase.hpp"

/// Fills the four-connected region of equal value around a start point, or tags all white regions by their size.
/// Input   8-bit, one plane. The type is not checked: of other images the first m_nWidth bytes of each row count as the
///         pixels.
/// Output  if it is set, a deep copy of the input, filled; otherwise the input is filled in place.
/// Errors  -10 without input; ClExBadAlloc.
/// Cost    linear in the pixels; the work stack holds one entry per run of pixels.
class ClIpFloodFill : public ClProcessorBase
{
public:
    /// A region's extent, inclusive.
    struct StBoundingBox
    {
        long nMinX;
        long nMinY;
        long nMaxX;
        long nMaxY;
        long nCount; ///< pixels
    };
    /// A pixel of a run of equal values.
    struct StLinePart
    {
        unsigned char* pRow; ///< first sample of the row
        long nX;             ///< column
    };

    void SetParametersToDefault() override;
    void PublishParameters(ClParameterContainer& cContainer) override;
    using ClProcessorBase::QueryParameters;
    void QueryParameters(ClParameterInterface& cInterface) override;
    ClProcessorBase* Create() override;
    const char* Name() const override;
    long Initialize() override;
    /// BoundingBoxFill if m_pBoundingBox is set, else CountFill if m_nCountThresh is not 0, else FloodFill.
    long Process() override;

    /// Fills the region of the start point with m_nFillColor, in place. A start outside of the image has no region.
    void FloodFill(ClImage& cImage);
    /// The same, and measures into m_pBoundingBox, where the start point counts once more than it is filled: nCount is
    /// 1 if nothing was filled, else the number of pixels + 1.
    void BoundingBoxFill(ClImage& cImage);
    /// Writes into each region of 255 its number of pixels, if that is below m_nCountThresh and below 254; else 254.
    void CountFill(ClImage& cImage);

    ClImage* m_pInImage = nullptr;           ///< not owned
    ClImage* m_pOutImage = nullptr;          ///< not owned, may be null
    StBoundingBox* m_pBoundingBox = nullptr; ///< not owned, may be null
    long m_nCountThresh = 0;                 ///< pixels
    unsigned char m_nFillColor = 0;
    long m_nStartX = 0; ///< column
    long m_nStartY = 0; ///< row as stored

protected:
    ClImage& PrepareImage(); ///< the image to work on: the output, made a copy of the input, or the input

private:
    template <class Fn> void FillFromStart(ClImage& cImage, Fn&& fnRun);
};
