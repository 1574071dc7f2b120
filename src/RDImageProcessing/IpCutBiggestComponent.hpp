#pragma once

#include "RDImageProcessing/Ip1to1Base.hpp"

/// Crops an image to the bounding box of its largest object, all pixels that are not pure white being objects.
/// Input   8-bit, one plane. The type is not checked: of other images the threshold is the sample value 255, and the
///         objects are found among the first m_nWidth bytes of each binarised row.
/// Output  the box without its last column and last row: by design, one less than the object in both directions. May be
///         the input itself. Of two largest objects among up to 16 the one that begins first in raster order is taken.
/// Errors  -44 if there is no object; -35 for a type whose range does not reach 255, and as ClException for an object
///         of a single row or column; those of the frame; ClExBadAlloc.
/// Memory  at most 5 bytes per pixel beside the input, 4 of them for the labels, which are released before the cut.
class ClIpCutBiggestComponent : public NewIpBase::ClIp1to1Base
{
public:
    ClIpCutBiggestComponent();

    ClProcessorBase* Create() override;
    const char* Name() const override;
    long DoProcess(ClImage& cIn, ClImage& cOut) override;

    long m_nCutX0 = 0;     ///< first column of the last cut
    long m_nCutY0 = 0;     ///< first row of the last cut
    long m_nCutWidth = 0;  ///< columns
    long m_nCutHeight = 0; ///< rows

private:
    long FindBiggest(ClImage& cIn, ClImage& cBinary);
};
