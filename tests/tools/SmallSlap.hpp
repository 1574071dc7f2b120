#pragma once

#include "SlapPicture.hpp"

#include <cstddef>

inline int PixelAt(const ClSlapPicture& cPicture, int nX, int nY)
{
    return cPicture.m_aPixels[static_cast<std::size_t>(nY) * static_cast<std::size_t>(cPicture.m_nWidth) +
                              static_cast<std::size_t>(nX)];
}

// A scene of 30.4 by 20.7 mm with one small finger; at 4015 pels per metre 122 by 83 pixels.
inline ClSlapScene SmallScene(int nPelsPerMetre)
{
    ClSlapScene cScene;
    cScene.m_nPelsPerMetre = nPelsPerMetre;
    cScene.m_nWidth = 30400;
    cScene.m_nHeight = 20700;
    ClSlapPart cPart;
    cPart.m_nTipX = 12000;
    cPart.m_nTipY = 19000;
    cPart.m_nWidth = 10000;
    cPart.m_nLength = 15000;
    cScene.m_aParts.push_back(cPart);
    return cScene;
}
