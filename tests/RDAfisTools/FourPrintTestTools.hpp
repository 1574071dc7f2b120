#pragma once

#include "RDAfisTools/IpFourPrintSegmentation.hpp"
#include "SlapPicture.hpp"

#include <algorithm>
#include <vector>

using Box = ClIpFourPrintSegmentation::cBoundingboxes;
using Boxes = ClIpFourPrintSegmentation::Boxes_t;

inline Box MakeBox(int nMinX, int nMaxX, int nMinY, int nMaxY)
{
    Box cBox;
    cBox.m_nMinX = nMinX;
    cBox.m_nMaxX = nMaxX;
    cBox.m_nMinY = nMinY;
    cBox.m_nMaxY = nMaxY;
    return cBox;
}

inline std::vector<int> Limits(const Box& cBox)
{
    return {cBox.m_nMinX, cBox.m_nMaxX, cBox.m_nMinY, cBox.m_nMaxY};
}

/// A synthetic slap as an image, in both directions of the same resolution.
inline void MakeImage(const ClSlapPicture& cPicture, ClImage& cImage)
{
    cImage.NewWithType(ClImage::eUInt8, cPicture.m_nWidth, cPicture.m_nHeight, 1, cPicture.m_nPelsPerMetre,
                       cPicture.m_nPelsPerMetre);
    for (int y = 0; y < cPicture.m_nHeight; ++y)
    {
        const auto nFirst = static_cast<std::ptrdiff_t>(y) * cPicture.m_nWidth;
        std::copy_n(cPicture.m_aPixels.begin() + nFirst, cPicture.m_nWidth, Row<unsigned char>(cImage, y));
    }
}

/// A processor in the state that the box rules find: scale 1, no rotation, an input of the given size that is only
/// described (no rule reads its pixels), and one finger for each box. Cut-outs start at the origin of the picture, so a
/// result box is a place in the input.
struct ClBoxFixture
{
    ClBoxFixture(int nWidth, int nHeight, const std::vector<Box>& acBox)
    {
        m_cInput.Attach(m_acPixel, ClImage::eUInt8, nWidth, nHeight, 1, 3937, 3937);
        m_c.m_pInImage = &m_cInput;
        m_c.m_dScale = 1.0;
        for (const Box& cBox : acBox)
        {
            m_c.m_aResultBoxes.Add(cBox);
            m_c.m_aOriginBoxes.Add(MakeBox(0, 0, 0, 0));
        }
        m_c.m_aImages.New(acBox.size());
        for (unsigned long i = 0; i < acBox.size(); ++i)
        {
            m_c.m_aImages[i].NewWithType(ClImage::eUInt8, static_cast<int>(i) + 1, 1, 1, 0, 0); // told apart by width
        }
        m_c.m_nFingers = static_cast<int>(acBox.size());
    }

    /// Which of the fingers are left, by the width of their images; the three lists must agree.
    std::vector<int> Left() const
    {
        std::vector<int> anLeft;
        for (unsigned long i = 0; i < m_c.m_aImages.Entries(); ++i)
        {
            anLeft.push_back(m_c.m_aImages[i].m_nWidth - 1);
        }
        const unsigned long nCount = static_cast<unsigned long>(m_c.m_nFingers);
        const bool bAgree = m_c.m_aImages.Entries() == nCount && m_c.m_aResultBoxes.Entries() == nCount &&
                            m_c.m_aOriginBoxes.Entries() == nCount;
        return bAgree ? anLeft : std::vector<int>{-1};
    }

    unsigned char m_acPixel[4] = {};
    ClImage m_cInput;
    ClIpFourPrintSegmentation m_c;
};
