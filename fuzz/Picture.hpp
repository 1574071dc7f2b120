#pragma once

#include "ByteSource.hpp"

#include <cstddef>

/// Rows of 8-bit samples that are drawn on.
struct StCanvas
{
    unsigned char* m_pData; ///< row 0
    int m_nWidth;
    int m_nHeight;
    std::ptrdiff_t m_nStride;

    unsigned char* Row(int y) const { return m_pData + y * m_nStride; }
};

/// A bright ground with ellipses, lines and noise on it, as the bytes say: what a slap is to a segmentation.
void DrawPicture(const StCanvas& cCanvas, ClByteSource& cBytes);
