#pragma once

#include "RDTools/FpImage.hpp"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace SegmentTool
{
using Bytes_t = std::vector<unsigned char>;

/// A picture of more pixels in a row or more rows is refused before memory is asked for.
constexpr int nMostSide = 20000;

/// A grey picture as the processor wants it, filled row by row from the top, as files hold their rows, and stored from
/// the bottom.
/// Errors: ClPictureError; ClExBadAlloc.
class ClPicture
{
public:
    /// Errors: a side of 0 or less, or above nMostSide, -14.
    static void CheckSize(std::int64_t nWidth, std::int64_t nHeight);
    /// Gives the picture its size and makes it white. Errors: those of CheckSize.
    void Create(std::int64_t nWidth, std::int64_t nHeight);

    int Width() const { return m_cImage.m_nWidth; }
    int Height() const { return m_cImage.m_nHeight; }
    /// Where the row goes that is nRow from the top, 0 to Height() - 1; Width() bytes.
    unsigned char* RowFromTop(int nRow);
    /// Folds a row of Width() pixels of blue, green and red to grey.
    void PutColourRow(int nRow, const unsigned char* pBlueGreenRed);

    ClImage m_cImage;      ///< one plane, 8 bits; its resolution is set by SetResolution
    double m_dXPels = 0.0; ///< pels per metre as the file tells them; 0 if it tells none
    double m_dYPels = 0.0;

private:
    std::vector<unsigned char> m_aColourRow; ///< padded as rows of images are
    ClImage m_cGreyRow;
};

/// A sample of 0 to nMost on the scale of 0 to 255, rounded to the nearest. nMost from 1 to 65535.
constexpr unsigned char ReduceSample(unsigned int nSample, unsigned int nMost)
{
    return static_cast<unsigned char>((nSample * 510u + nMost) / (2u * nMost));
}

constexpr double dMetresPerInch = 0.0254;

/// Sets the resolution of the picture's image: dPpi pixels per inch if that is above 0, else what the file tells.
/// Errors: -13 if the file tells none, or 72 or 96 pixels per inch, which programs write that know none. A scanner's
/// resolution is never guessed.
void SetResolution(ClPicture& cPicture, double dPpi);
} // namespace SegmentTool
