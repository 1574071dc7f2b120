#pragma once

// A thousand pictures that show no finger: what lies on scanners beside fingers, and what comes from broken ones. The
// same ones everywhere.

#include "GuardedBytes.hpp"

#include <cstdint>
#include <string>
#include <vector>

struct ClFingerlessKind
{
    const char* m_szName;
    int m_nPictures;
};

const std::vector<ClFingerlessKind>& FingerlessKinds();

/// 8 bits a pixel, row 0 the lower edge.
struct ClFingerlessPicture
{
    std::string m_sName;
    int m_nWidth = 0; ///< pixels
    int m_nHeight = 0;
    int m_nPelsPerMetre = 0;
    std::vector<std::uint8_t> m_aPixels; ///< m_nHeight rows of m_nWidth bytes

    ClGuardedVector Block() const; ///< as a packed bitmap
};

/// Picture nPicture of a kind. Most are of 160 to 260 pixels in either direction at 100 pixels per inch; every eighth
/// is of 200 pixels per inch, every fortieth of 500, and the last of a kind of 1600 by 1500 pixels.
ClFingerlessPicture FingerlessPicture(const ClFingerlessKind& cKind, int nPicture);
