#pragma once

#include "HandleBase.hpp"
#include "RDTools/Bitmap.hpp"

/// A container for one cut-out finger: its rectangle in the input and its bitmap. Made empty, filled by the
/// segmentation handle, as often as one likes. It owns its bitmap and outlives the run, the segmentation handle and the
/// library's last reference. Properties: "x", "y", "Height", "Width", "FingerPosition", read only.
class ClKormelinSegmentHandle : public TSDKHandleBase<ClKormelinSegmentHandle, ClKormelinSegmentation, ClHandleBase>
{
public:
    /// Pixels of the input; nY as the segmentation handle's "CoordinateOrigin" tells.
    /// Errors: a negative value ClExVelmarin -35, the old rectangle stays.
    void SetRectangle(int nX, int nY, int nWidth, int nHeight);
    /// Copies the bitmap. Errors: those of the bitmap's assignment.
    void SetBitmap(ClBitmap& cBitmap);
    /// The bitmap as one block of header, colour table and pixels. *pnSize: in: bytes at pBitmap; out: bytes needed. A
    /// null pBitmap only measures.
    /// Errors, in order: ClExVelmarin -37 if pnSize is null, -51 without a bitmap, -21 if *pnSize was too small.
    void GetBitmap(tagBITMAPINFOHEADER* pBitmap, unsigned long* pnSize);

    void OnQueryPropertys(ClParameterContainer& cProperties) override;

    static const char m_szSignature[8]; ///< "SEGMENT"

    int m_nX = 0;              ///< left edge
    int m_nY = 0;              ///< lower or upper edge
    int m_nHeight = 0;         ///< rows
    int m_nWidth = 0;          ///< columns
    int m_nFingerPosition = 0; ///< always 0: the positions that the processor works out stay inside it
    ClBitmap m_cBitmap;        ///< empty until SetBitmap
};
