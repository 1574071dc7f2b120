#include "FingerlessPictures.hpp"

#include "TestTools.hpp"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace
{
constexpr int nInk = 40;
constexpr int nGround = 235;

// Painters fill a picture whose size is known. n is its number among the nOf pictures of its kind, nUnit the pixels of
// 1/100 inch.
struct ClCanvas
{
    ClFingerlessPicture& m_cPicture;
    ClTestRandom m_cRandom;
    int m_nUnit;

    int Width() const { return m_cPicture.m_nWidth; }
    int Height() const { return m_cPicture.m_nHeight; }
    template <class Fn> void Fill(Fn&& fnGrey)
    {
        std::uint8_t* p = m_cPicture.m_aPixels.data();
        for (int y = 0; y < Height(); ++y)
        {
            for (int x = 0; x < Width(); ++x)
            {
                *p++ = static_cast<std::uint8_t>(std::clamp(static_cast<int>(fnGrey(x, y)), 0, 255));
            }
        }
    }
    void Box(int nX, int nY, int nWidth, int nHeight, int nGrey)
    {
        for (int y = std::max(nY, 0); y < std::min(nY + nHeight, Height()); ++y)
        {
            for (int x = std::max(nX, 0); x < std::min(nX + nWidth, Width()); ++x)
            {
                m_cPicture.m_aPixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(Width()) +
                                     static_cast<std::size_t>(x)] = static_cast<std::uint8_t>(nGrey);
            }
        }
    }
    int Between(int nFrom, int nTo) { return nFrom + m_cRandom.Below(nTo - nFrom + 1); }
};

void Blank(ClCanvas& c, int n, int nOf)
{
    const int nGrey = n * 255 / (nOf - 1);
    c.Fill([=](int, int) { return nGrey; });
}

void UniformNoise(ClCanvas& c, int n, int nOf)
{
    const int nMiddle = 255 * (n % 10) / 9;
    const int nSpread = 1 + 255 * n / nOf;
    c.Fill([&](int, int) { return nMiddle + c.m_cRandom.Below(2 * nSpread + 1) - nSpread; });
}

void SaltAndPepper(ClCanvas& c, int n, int nOf)
{
    const int nShare = 4 + 20000 * n * n / (nOf * nOf); // of 65536
    const int nPlain = n % 3 == 0 ? 255 : n % 3 == 1 ? nGround : 128;
    c.Fill(
        [&](int, int)
        {
            const int nDie = c.m_cRandom.Below(65536);
            return nDie < nShare ? 0 : nDie < 2 * nShare ? 255 : nPlain;
        });
}

void Gradient(ClCanvas& c, int n, int nOf)
{
    const double dAngle = 6.283185307179586 * n / nOf;
    const double dX = std::cos(dAngle);
    const double dY = std::sin(dAngle);
    const double dSpan = (20 + 235 * (n % 7) / 6.0) / (std::abs(dX) * c.Width() + std::abs(dY) * c.Height());
    const int nNoise = n % 5;
    c.Fill(
        [&](int x, int y) {
            return 128 + dSpan * (dX * (x - c.Width() / 2) + dY * (y - c.Height() / 2)) +
                   c.m_cRandom.Below(2 * nNoise + 1);
        });
}

void Stripes(ClCanvas& c, int n, int)
{
    constexpr int nAngles = 10;
    const double dAngle = 3.141592653589793 * (n % nAngles) / nAngles;
    const int nPitch = c.m_nUnit * 2 * (1 + n / nAngles); // up to 20 pairs of stripes
    const double dX = std::cos(dAngle);
    const double dY = std::sin(dAngle);
    c.Fill(
        [&](int x, int y)
        {
            const double dPlace = (dX * x + dY * y) / nPitch;
            return dPlace - std::floor(dPlace) < 0.5 ? nInk : nGround;
        });
}

void Checkerboard(ClCanvas& c, int n, int)
{
    const int nCell = c.m_nUnit * (1 + n);
    c.Fill([=](int x, int y) { return (x / nCell + y / nCell) % 2 != 0 ? nGround : nInk; });
}

void Text(ClCanvas& c, int n, int)
{
    // Five columns by seven rows each, the upper row first: A E F H L O S T X 3.
    static const unsigned char aaGlyphs[][7] = {{14, 17, 17, 31, 17, 17, 17}, {31, 16, 16, 30, 16, 16, 31},
                                                {31, 16, 16, 30, 16, 16, 16}, {17, 17, 17, 31, 17, 17, 17},
                                                {16, 16, 16, 16, 16, 16, 31}, {14, 17, 17, 17, 17, 17, 14},
                                                {15, 16, 16, 14, 1, 1, 30},   {31, 4, 4, 4, 4, 4, 4},
                                                {17, 10, 10, 4, 10, 10, 17},  {30, 1, 1, 14, 1, 1, 30}};
    const int nDot = c.m_nUnit * (1 + n % 12);
    const int nPaper = n % 2 == 0 ? 255 : nGround;
    c.Fill([=](int, int) { return nPaper; });
    for (int nTop = c.Height() - nDot; nTop - 7 * nDot >= 0; nTop -= (9 + n % 4) * nDot)
    {
        for (int nLeft = nDot; nLeft + 5 * nDot <= c.Width(); nLeft += 6 * nDot)
        {
            if (c.m_cRandom.Below(6) == 0)
            {
                continue; // between words
            }
            const unsigned char* pGlyph = aaGlyphs[c.m_cRandom.Below(10)];
            for (int y = 0; y < 7; ++y)
            {
                for (int x = 0; x < 5; ++x)
                {
                    if ((pGlyph[y] >> (4 - x) & 1) != 0)
                    {
                        c.Box(nLeft + x * nDot, nTop - (y + 1) * nDot, nDot, nDot, nInk);
                    }
                }
            }
        }
    }
}

void Strokes(ClCanvas& c, int n, int)
{
    c.Fill([&](int, int) { return nGround + c.m_cRandom.Below(10); });
    const int nPen = c.m_nUnit * (1 + n % 6);
    for (int i = 0; i < 3 + n / 4; ++i)
    {
        int nX = c.m_cRandom.Below(c.Width());
        int nY = c.m_cRandom.Below(c.Height());
        int nToX = c.Between(-3, 3);
        int nToY = c.Between(-3, 3);
        for (int nStep = 0; nStep < 60 * c.m_nUnit; ++nStep)
        {
            c.Box(nX, nY, nPen, nPen, nInk);
            nX += nToX;
            nY += nToY;
            if (c.m_cRandom.Below(10) == 0)
            {
                nToX = c.Between(-3, 3);
                nToY = c.Between(-3, 3);
            }
        }
    }
}

/// What moisture and stray light leave: soft rings, filled or not, around places in or beside the picture.
void Halos(ClCanvas& c, int n, int)
{
    struct ClHalo
    {
        int m_nX, m_nY, m_nRadius, m_nSoft, m_nDepth;
        bool m_bFilled;
    };
    std::vector<ClHalo> aHalos;
    for (int i = 0; i <= n % 4; ++i)
    {
        aHalos.push_back({c.Between(-c.Width() / 4, c.Width() * 5 / 4), c.Between(-c.Height() / 4, c.Height() * 5 / 4),
                          c.m_nUnit * c.Between(20, 160), c.m_nUnit * c.Between(4, 60), c.Between(10, 180),
                          c.m_cRandom.Below(2) == 0});
    }
    c.Fill(
        [&](int x, int y)
        {
            double dGrey = nGround + 10;
            for (const ClHalo& cHalo : aHalos)
            {
                const double dBeyond = std::sqrt(static_cast<double>((x - cHalo.m_nX) * (x - cHalo.m_nX) +
                                                                     (y - cHalo.m_nY) * (y - cHalo.m_nY))) -
                                       cHalo.m_nRadius;
                const double dFrom = cHalo.m_bFilled && dBeyond < 0 ? 0.0 : std::abs(dBeyond);
                dGrey -= cHalo.m_nDepth * std::max(0.0, 1.0 - dFrom / cHalo.m_nSoft);
            }
            return dGrey;
        });
}

void Dots(ClCanvas& c, int n, int)
{
    const int nPitch = c.m_nUnit * (4 + 2 * n);
    const int nRadius = nPitch * (1 + n % 3) / 8;
    c.Fill(
        [=](int x, int y)
        {
            const int nX = x % nPitch - nPitch / 2;
            const int nY = y % nPitch - nPitch / 2;
            return nX * nX + nY * nY <= nRadius * nRadius ? nInk : nGround;
        });
}

using Painter_t = void (*)(ClCanvas&, int, int);
const Painter_t g_apPainters[] = {Blank,        UniformNoise, SaltAndPepper, Gradient, Stripes,
                                  Checkerboard, Text,         Strokes,       Halos,    Dots};
} // namespace

const std::vector<ClFingerlessKind>& FingerlessKinds()
{
    static const std::vector<ClFingerlessKind> aKinds = {
        {"blank", 60},        {"uniform noise", 100}, {"salt and pepper", 100}, {"gradient", 100}, {"stripes", 200},
        {"checkerboard", 60}, {"text", 120},          {"strokes", 100},         {"halos", 100},    {"dots", 60}};
    return aKinds;
}

ClGuardedVector ClFingerlessPicture::Block() const
{
    ClGuardedVector aBlock = PackedBitmap(m_nWidth, m_nHeight, 8);
    PutLong(aBlock.data(), 24, static_cast<std::uint32_t>(m_nPelsPerMetre));
    PutLong(aBlock.data(), 28, static_cast<std::uint32_t>(m_nPelsPerMetre));
    const auto nWidth = static_cast<std::size_t>(m_nWidth);
    for (std::size_t y = 0; y < static_cast<std::size_t>(m_nHeight); ++y)
    {
        std::memcpy(aBlock.data() + 1064 + y * ((nWidth + 3) / 4 * 4), m_aPixels.data() + y * nWidth, nWidth);
    }
    return aBlock;
}

ClFingerlessPicture FingerlessPicture(const ClFingerlessKind& cKind, int nPicture)
{
    const auto nKind = static_cast<std::size_t>(&cKind - FingerlessKinds().data());
    ClTestRandom cRandom(1000 * nKind + static_cast<std::uint64_t>(nPicture));
    ClFingerlessPicture cPicture;
    cPicture.m_sName = cKind.m_szName + (" " + std::to_string(nPicture));
    const int nUnit = nPicture + 1 == cKind.m_nPictures || nPicture % 40 == 20 ? 5 : nPicture % 8 == 4 ? 2 : 1;
    const bool bSlap = nPicture + 1 == cKind.m_nPictures;
    cPicture.m_nWidth = bSlap ? 1600 : nUnit * (160 + cRandom.Below(100));
    cPicture.m_nHeight = bSlap ? 1500 : nUnit * (160 + cRandom.Below(100));
    cPicture.m_nPelsPerMetre = 3937 * nUnit;
    cPicture.m_aPixels.resize(static_cast<std::size_t>(cPicture.m_nWidth) *
                              static_cast<std::size_t>(cPicture.m_nHeight));
    ClCanvas cCanvas{cPicture, cRandom, nUnit};
    g_apPainters[nKind](cCanvas, nPicture, cKind.m_nPictures);
    return cPicture;
}
