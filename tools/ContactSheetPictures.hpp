#pragma once

#include "RDImageProcessing/Histogram.hpp"
#include "RDTools/FpImage.hpp"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// A picture as people see it, the upper edge first.
struct ClSheetPicture
{
    ClSheetPicture() = default;
    ClSheetPicture(int nWidth, int nHeight); ///< all white

    /// Red, green and blue of a pixel, which is not checked; y counts from the upper edge down.
    std::uint8_t* At(int nX, int nY);
    const std::uint8_t* At(int nX, int nY) const;

    int m_nWidth = 0;
    int m_nHeight = 0;
    std::vector<std::uint8_t> m_aPixels; ///< three bytes a pixel, rows without padding
};

/// Both ends included, in pixels of an image: rows count upward from the lower edge.
struct ClSheetBox
{
    long m_nMinX;
    long m_nMinY;
    long m_nMaxX;
    long m_nMaxY;
};

/// Samples of one byte are shown as they stand, -128 of a signed image as black and 127 as white. All other types are
/// stretched from the smallest to the largest sample. Two planes and more are blue, green and red as far as they go.
ClSheetPicture ShowImage(const ClImage& cImage);

/// The first plane, integers of any type, each value in a colour of its own; nBackground is white.
ClSheetPicture ShowLabels(const ClImage& cImage, long nBackground);

/// One column for two neighbouring bins, the highest column as high as the picture, and a red line at bin nMarked.
ClSheetPicture ShowHistogram(const ClHistogram& cHistogram, int nMarked);

/// Draws a red frame; what lies outside of the picture is left away.
void DrawBox(ClSheetPicture& cPicture, const ClSheetBox& cBox);

/// Size, sample type and range of an image in few letters: "162x162 u8 12..255"; planes if there are more than one.
std::string DescribeImage(const ClImage& cImage);

/// The pictures that the operators of the sheet work on, the same ones everywhere.
struct ClSheetInputs
{
    ClSheetInputs(); ///< Errors: std::runtime_error if an operator fails that prepares a picture; std::bad_alloc

    ClImage m_cHand;         ///< two fingers at 3937 pels per metre, the resolution at which fingers are looked for
    ClImage m_cRidges;       ///< 160 by 160 pixels of a fingertip at 19685 pels per metre, tip and ground included
    ClImage m_cSmall;        ///< 64 by 64 pixels from the middle of the fingertip
    ClImage m_cDots;         ///< black dots of 2 by 2 pixels on white: a filter shows its window
    ClImage m_cColour;       ///< the hand in blue, mirrored in green, a ramp from left to right in red
    ClImage m_cStretched;    ///< the hand, smoothed and stretched to all grey values
    ClImage m_cBinaryHand;   ///< two levels: fingers 0, ground 255
    ClImage m_cBinaryRidges; ///< two levels: ridges 0, ground and valleys 255
    ClImage m_cSigned;       ///< the fingertip in signed bytes, each 128 less
    ClImage m_cDull;         ///< the fingertip with a quarter of its contrast, about the grey value 120
    ClImage m_cDirectionX;   ///< of circles about the middle of 160 by 160 pixels, signed bytes
    ClImage m_cDirectionY;   ///< against the row order, as the directed filter reads it

private:
    void MakeBinaryHand();
};
