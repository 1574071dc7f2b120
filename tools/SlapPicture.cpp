#include "SlapPicture.hpp"

#include <algorithm>
#include <cmath>
#include <stdexcept>

// All lengths are micrometres in 64-bit integers and all fractions have a fixed point: floating point would let the
// last bit of a pixel depend on the compiler and its mathematics library.
namespace
{
using Length_t = std::int64_t;

constexpr Length_t nMicrometresPerMetre = 1000000;
constexpr Length_t nRidgePeriod = 460;    // 9 pixels at 500 pixels per inch
constexpr Length_t nSamplePitch = 64;     // a coarser pixel is the mean of several samples
constexpr Length_t nMostRough = 500;      // how far roughness moves the edge of a part out
constexpr Length_t nOne = 1024;           // the fraction 1
constexpr Length_t nTurnOne = 1 << 20;    // the fraction 1 in sine and cosine of the lean
constexpr Length_t nFieldShift = 1 << 20; // keeps places and fields positive where they are divided

constexpr int nMinPelsPerMetre = 1000;
constexpr int nMaxPelsPerMetre = 80000;
constexpr int nMaxSide = 500000; // of a scene, micrometres
constexpr int nMaxPart = 150000; // of a part

std::uint32_t NextRandom(std::uint32_t nState)
{
    return nState * 1664525u + 1013904223u;
}

// 0 to 1024 for a lattice point; the same point of the same part always gives the same value.
Length_t LatticeValue(Length_t nX, Length_t nY, std::uint32_t nSeed)
{
    std::uint32_t n = NextRandom(nSeed ^ static_cast<std::uint32_t>(nX) * 2654435761u);
    n = NextRandom(n ^ (n >> 15));
    n = NextRandom(n ^ static_cast<std::uint32_t>(nY) * 2246822519u);
    n = NextRandom(n ^ (n >> 13));
    return static_cast<Length_t>(n >> 22);
}

// Smooth noise of 0 to 1024 that changes over nCell micrometres.
template <Length_t nCell> Length_t SmoothNoise(Length_t nU, Length_t nV, std::uint32_t nSeed)
{
    const Length_t nX = nU + nFieldShift;
    const Length_t nY = nV + nFieldShift;
    const Length_t nColumn = nX / nCell;
    const Length_t nRow = nY / nCell;
    const auto Ease = [](Length_t t) { return t * t * (3 * nOne - 2 * t) / (nOne * nOne); };
    const Length_t nFx = Ease(nX % nCell * nOne / nCell);
    const Length_t nFy = Ease(nY % nCell * nOne / nCell);
    const Length_t nLower =
        LatticeValue(nColumn, nRow, nSeed) * (nOne - nFx) + LatticeValue(nColumn + 1, nRow, nSeed) * nFx;
    const Length_t nUpper =
        LatticeValue(nColumn, nRow + 1, nSeed) * (nOne - nFx) + LatticeValue(nColumn + 1, nRow + 1, nSeed) * nFx;
    return (nLower * (nOne - nFy) + nUpper * nFy) / (nOne * nOne);
}

Length_t SquareRoot(Length_t nValue)
{
    if (nValue <= 0) return 0;
    auto nRoot = static_cast<Length_t>(std::sqrt(static_cast<double>(nValue)));
    while (nRoot * nRoot > nValue) --nRoot;
    while ((nRoot + 1) * (nRoot + 1) <= nValue) ++nRoot;
    return nRoot;
}

// sin(pi * t / 1024) * 1024 for t from 0 to 1024, after Bhaskara I; at most 0.2 per cent off.
Length_t HalfWave(Length_t t)
{
    const Length_t nProduct = t * (nOne - t);
    return 16 * nProduct * nOne / (5 * nOne * nOne - 4 * nProduct);
}

// A sine of amplitude 1024 along nPlace.
template <Length_t nPeriod> Length_t Sine(Length_t nPlace)
{
    const Length_t t = (nPlace + nFieldShift) % nPeriod * 2 * nOne / nPeriod;
    return t < nOne ? HalfWave(t) : -HalfWave(t - nOne);
}

// 1024 on a ridge, 0 in a valley, sinusoidal between.
Length_t RidgeProfile(Length_t nPhase)
{
    const Length_t nWave = HalfWave((nPhase + nFieldShift) % nRidgePeriod * nOne / nRidgePeriod);
    return nWave * nWave / nOne;
}

// The smaller of the two with a rounded corner of about nRound where they meet: ridges bend instead of breaking.
Length_t SmoothMin(Length_t a, Length_t b, Length_t nRound)
{
    return (a + b - SquareRoot((a - b) * (a - b) + nRound * nRound)) / 2;
}

// A place on a part: u across the finger to the right of one who looks towards the tip, v from the tip to the base.
struct ClPlace
{
    Length_t u;
    Length_t v;
};

ClPlace PlaceOnPart(const ClSlapPart& cPart, Length_t nX, Length_t nY)
{
    const Length_t nDx = nX - cPart.m_nTipX;
    const Length_t nDy = nY - cPart.m_nTipY;
    switch (cPart.m_ePointing)
    {
    case ClSlapPart::eRight: return {-nDy, -nDx};
    case ClSlapPart::eLeft: return {nDy, nDx};
    case ClSlapPart::eUp: break;
    }
    return {nDx, -nDy};
}

// How much a rounded end of radius nRound, or of height nRound and half-width nHalf, takes off the half-width at
// nDepth from that end.
Length_t RoundedEnd(Length_t nHalf, Length_t nRound, Length_t nDepth)
{
    if (nDepth >= nRound) return 0;
    const Length_t nRest = nRound - nDepth;
    return nHalf - nHalf * SquareRoot(nRound * nRound - nRest * nRest) / nRound;
}

// Half the width of the printed area at v, before its edge is roughened. A fingertip is widest above its middle, ends
// in half an ellipse at the tip and in rounded corners at the base; joints and palms are rounded rectangles.
Length_t HalfWidth(const ClSlapPart& cPart, Length_t v)
{
    const Length_t nHalf = cPart.m_nWidth / 2;
    const Length_t nLength = cPart.m_nLength;
    if (cPart.m_eKind != ClSlapPart::eFingertip)
    {
        const Length_t nCorner = cPart.m_eKind == ClSlapPart::ePalm ? 13000 : nHalf / 2;
        return nHalf - RoundedEnd(nCorner, nCorner, v) - RoundedEnd(nCorner, nCorner, nLength - v);
    }
    const Length_t nTip = nHalf * 5 / 4;
    const Length_t nCorner = nHalf * 3 / 5;
    const Length_t nTaper = v <= nTip ? 0 : nHalf * (v - nTip) * 14 / (100 * (nLength - nTip));
    return nHalf - nTaper - RoundedEnd(nHalf, nTip, v) - RoundedEnd(nCorner, nCorner, nLength - v);
}

// Ridges of a fingertip run where this field is constant. Above the core they are arcs, below it legs or closed
// rings, and near the base they run across the finger.
Length_t FingerField(const ClSlapPart& cPart, ClPlace cPlace)
{
    const Length_t nLength = cPart.m_nLength;
    const bool bArch = cPart.m_ePattern == ClSlapPart::eArch;
    const Length_t nDown = cPlace.v - nLength * (bArch ? 60 : 46) / 100; // below the core
    const Length_t nBase = nLength + 1500 - cPlace.v - cPlace.u * cPlace.u / 40000;
    if (cPart.m_ePattern == ClSlapPart::eWhorl)
    {
        const Length_t nRing = SquareRoot(cPlace.u * cPlace.u + nDown * nDown * 3 / 4);
        return SmoothMin(nRing, nBase + 2500, 900);
    }
    const Length_t nSlant = bArch ? 0 : cPart.m_ePattern == ClSlapPart::eLoopLeft ? -1 : 1;
    const Length_t nAside = cPlace.u - (nDown > 0 ? nSlant * nDown * 2 / 5 : 0);
    const Length_t nAbove = nDown > 0 ? 0 : nDown;
    // Half a period makes the innermost line a ridge.
    return SmoothMin(SquareRoot(nAside * nAside + nAbove * nAbove), nBase, 900) + nRidgePeriod / 2;
}

Length_t RidgeField(const ClSlapPart& cPart, ClPlace cPlace, std::uint32_t nSeed)
{
    const auto nPhase = static_cast<Length_t>(nSeed % 20000u);
    const ClPlace cBent = {cPlace.u + Sine<11000>(cPlace.v + nPhase) * 300 / nOne,
                           cPlace.v + Sine<8300>(cPlace.u + nPhase) * 250 / nOne};
    switch (cPart.m_eKind)
    {
    case ClSlapPart::eJoint: // across the finger, sagging
        return cBent.v + cBent.u * cBent.u / 22000 + Sine<17000>(cBent.u) / 2 + cBent.u / 4;
    case ClSlapPart::ePalm:
    { // wide arcs around the ball of the thumb
        const Length_t nX = cBent.u + cPart.m_nWidth * 2 / 3;
        const Length_t nY = cBent.v - cPart.m_nLength * 5 / 4;
        return SquareRoot(nX * nX + nY * nY);
    }
    case ClSlapPart::eFingertip: break;
    }
    return FingerField(cPart, cBent);
}

// Darkness of one point of a part, 0 to about 200 grey levels; 0 outside.
Length_t InkAt(const ClSlapPart& cPart, ClPlace cPlace, std::uint32_t nSeed)
{
    if (cPlace.v < 0 || cPlace.v >= cPart.m_nLength) return 0;
    const Length_t nAside = cPlace.u < 0 ? -cPlace.u : cPlace.u;
    const Length_t nEdge = HalfWidth(cPart, cPlace.v);
    if (nAside >= nEdge + nMostRough) return 0;
    const Length_t nRough = (SmoothNoise<2300>(cPlace.u, cPlace.v, nSeed) - nOne / 2) * 700 / nOne +
                            (SmoothNoise<300>(cPlace.u, cPlace.v, nSeed + 3) - nOne / 2) * 300 / nOne;
    const Length_t nInside = nEdge + nRough - nAside;
    if (nInside <= 0) return 0;
    const Length_t nFromEdge = std::min({nInside, cPlace.v, cPart.m_nLength - cPlace.v});

    // Pressure differs over the pad, and the fine grain breaks the ridges up a little.
    Length_t nPressure = 660 + SmoothNoise<3100>(cPlace.u, cPlace.v, nSeed + 1) * 260 / nOne +
                         SmoothNoise<240>(cPlace.u, cPlace.v, nSeed + 2) * 200 / nOne;
    if (nFromEdge < 900) nPressure = nPressure * (500 + nFromEdge * 524 / 900) / nOne;
    if (cPart.m_eKind == ClSlapPart::eJoint) nPressure = nPressure * 4 / 5;
    const Length_t nValley = 32;
    const Length_t nRidge = RidgeProfile(RidgeField(cPart, cPlace, nSeed)) * 165 / nOne;
    return (nValley + nRidge) * nPressure / nOne;
}

// Samples along one side of a pixel.
Length_t SamplesPerSide(int nPelsPerMetre)
{
    const Length_t nPitch = nMicrometresPerMetre / nPelsPerMetre;
    return nPitch / nSamplePitch + 1;
}

// The picture's samples in scene coordinates, with the lean taken back.
class ClSampleMap
{
public:
    explicit ClSampleMap(const ClSlapScene& cScene)
        : m_nSamples(SamplesPerSide(cScene.m_nPelsPerMetre)), m_nDivisor(2 * m_nSamples * cScene.m_nPelsPerMetre),
          m_nCentreX(cScene.m_nWidth / 2), m_nCentreY(cScene.m_nHeight / 2), m_cTurn(cScene.m_dLean)
    {
    }

    // The part's place under sample (nI, nJ) of pixel (nX, nY).
    ClPlace PlaceOf(const ClSlapPart& cPart, int nX, int nY, Length_t nI, Length_t nJ) const
    {
        const Length_t nDx = Micrometres(nX, nI) - m_nCentreX;
        const Length_t nDy = Micrometres(nY, nJ) - m_nCentreY;
        return PlaceOnPart(cPart, m_nCentreX + (nDx * m_cTurn.m_nCosine + nDy * m_cTurn.m_nSine) / nTurnOne,
                           m_nCentreY + (nDy * m_cTurn.m_nCosine - nDx * m_cTurn.m_nSine) / nTurnOne);
    }

    const Length_t m_nSamples;

private:
    Length_t Micrometres(int nPixel, Length_t nSample) const
    {
        return (2 * (nPixel * m_nSamples + nSample) + 1) * nMicrometresPerMetre / m_nDivisor;
    }

    const Length_t m_nDivisor;
    const Length_t m_nCentreX;
    const Length_t m_nCentreY;
    const ClSlapTurn m_cTurn;
};

// Half the diagonal of a part with its rough edge: no ink lies further from its centre, however it is turned.
Length_t ReachOf(const ClSlapPart& cPart)
{
    const Length_t nWidth = cPart.m_nWidth + 2 * nMostRough;
    const Length_t nLength = cPart.m_nLength;
    return SquareRoot(nWidth * nWidth + nLength * nLength) / 2 + 1;
}

// The pixels that can hold ink of the part: a square around its centre, half open and clipped to the picture.
ClSlapRect PixelsAround(const ClSlapScene& cScene, const ClSlapPart& cPart, int nWidth, int nHeight)
{
    const Length_t nHalf = cPart.m_nLength / 2;
    const bool bUp = cPart.m_ePointing == ClSlapPart::eUp;
    const bool bRight = cPart.m_ePointing == ClSlapPart::eRight;
    const Length_t nDx = cPart.m_nTipX + (bUp ? 0 : bRight ? -nHalf : nHalf) - cScene.m_nWidth / 2;
    const Length_t nDy = cPart.m_nTipY - (bUp ? nHalf : 0) - cScene.m_nHeight / 2;
    const ClSlapTurn cTurn(cScene.m_dLean);
    const Length_t nX = cScene.m_nWidth / 2 + (nDx * cTurn.m_nCosine - nDy * cTurn.m_nSine) / nTurnOne;
    const Length_t nY = cScene.m_nHeight / 2 + (nDy * cTurn.m_nCosine + nDx * cTurn.m_nSine) / nTurnOne;
    const Length_t nReach = ReachOf(cPart);
    const auto Pixel = [&cScene](Length_t nPlace, int nLimit)
    {
        const Length_t nPixel = nPlace * cScene.m_nPelsPerMetre / nMicrometresPerMetre;
        return static_cast<int>(std::clamp<Length_t>(nPixel, 0, nLimit));
    };
    ClSlapRect cRect;
    cRect.left = Pixel(nX - nReach, nWidth);
    cRect.right = Pixel(nX + nReach + nMicrometresPerMetre / cScene.m_nPelsPerMetre + 1, nWidth);
    cRect.bottom = Pixel(nY - nReach, nHeight);
    cRect.top = Pixel(nY + nReach + nMicrometresPerMetre / cScene.m_nPelsPerMetre + 1, nHeight);
    return cRect;
}

void Include(ClSlapRect& cRect, int nX, int nY)
{
    if (cRect.left == cRect.right)
    {
        cRect = {nX, nY + 1, nX + 1, nY};
        return;
    }
    cRect.left = std::min(cRect.left, nX);
    cRect.right = std::max(cRect.right, nX + 1);
    cRect.bottom = std::min(cRect.bottom, nY);
    cRect.top = std::max(cRect.top, nY + 1);
}

void CheckScene(const ClSlapScene& cScene)
{
    const auto OutOf = [](int n, int nMin, int nMax) { return n < nMin || n > nMax; };
    if (OutOf(cScene.m_nPelsPerMetre, nMinPelsPerMetre, nMaxPelsPerMetre))
        throw std::invalid_argument("the resolution must be 1000 to 80000 pels per metre");
    if (OutOf(cScene.m_nWidth, 1000, nMaxSide) || OutOf(cScene.m_nHeight, 1000, nMaxSide))
        throw std::invalid_argument("the sides of a scene must be 1 to 500 mm");
    if (!(cScene.m_dLean >= -0.8 && cScene.m_dLean <= 0.8))
        throw std::invalid_argument("the lean must be -0.8 to 0.8 radians");
    for (const ClSlapPart& cPart : cScene.m_aParts)
    {
        if (OutOf(cPart.m_nWidth, 2000, nMaxPart) || OutOf(cPart.m_nLength, cPart.m_nWidth / 3, nMaxPart) ||
            OutOf(cPart.m_nTipX, -nMaxSide, nMaxSide) || OutOf(cPart.m_nTipY, -nMaxSide, nMaxSide))
            throw std::invalid_argument("a part of the scene has an impossible size or place");
    }
}

void Put(std::vector<std::uint8_t>& aBytes, std::uint32_t nValue, int nBytes)
{
    for (int i = 0; i < nBytes; ++i) aBytes.push_back(static_cast<std::uint8_t>(nValue >> (8 * i) & 255u));
}
} // namespace

ClSlapTurn::ClSlapTurn(double dAngle)
{
    const auto nAngle = static_cast<std::int64_t>(dAngle * static_cast<double>(m_nOne));
    std::int64_t nTerm = m_nOne; // of the power series of both
    for (int i = 1; i <= 12; ++i)
    {
        nTerm = nTerm * nAngle / m_nOne / i;
        std::int64_t& nSum = i % 2 == 1 ? m_nSine : m_nCosine;
        nSum += i % 4 >= 2 ? -nTerm : nTerm;
    }
}

ClSlapPicture::ClSlapPicture(const ClSlapScene& cScene)
{
    CheckScene(cScene);
    m_nPelsPerMetre = cScene.m_nPelsPerMetre;
    const auto Pixels = [&cScene](int nMicrometres)
    { return static_cast<int>(Length_t{nMicrometres} * cScene.m_nPelsPerMetre / nMicrometresPerMetre); };
    m_nWidth = Pixels(cScene.m_nWidth);
    m_nHeight = Pixels(cScene.m_nHeight);
    DrawGround(cScene.m_nSeed);

    const std::vector<std::uint8_t> aGround = m_aPixels;
    std::uint32_t nPartSeed = cScene.m_nSeed;
    for (const ClSlapPart& cPart : cScene.m_aParts)
    {
        nPartSeed = NextRandom(nPartSeed);
        const ClSlapRect cRect = DrawPart(cScene, cPart, nPartSeed >> 8, aGround);
        (cPart.m_eKind == ClSlapPart::eFingertip ? m_aFingers : m_aOthers).push_back(cRect);
    }
    std::stable_sort(m_aFingers.begin(), m_aFingers.end(),
                     [](const ClSlapRect& cFirst, const ClSlapRect& cSecond)
                     { return cFirst.left + cFirst.right < cSecond.left + cSecond.right; });
}

void ClSlapPicture::DrawGround(unsigned nSeed)
{
    m_aPixels.resize(static_cast<std::size_t>(m_nWidth) * static_cast<std::size_t>(m_nHeight));
    std::uint32_t nState = nSeed;
    for (std::uint8_t& nPixel : m_aPixels)
    {
        nState = NextRandom(nState);
        nPixel = static_cast<std::uint8_t>(235u + (nState >> 28));
    }
}

// Darkens the picture where the part lies and returns the rectangle of the part's own ink. Where parts overlap the
// darker one shows, so ink of one part stays ink whatever is drawn over it.
ClSlapRect ClSlapPicture::DrawPart(const ClSlapScene& cScene, const ClSlapPart& cPart, unsigned nPartSeed,
                                   const std::vector<std::uint8_t>& aGround)
{
    const ClSampleMap cMap(cScene);
    const ClSlapRect cAround = PixelsAround(cScene, cPart, m_nWidth, m_nHeight);
    ClSlapRect cInk;
    for (int y = cAround.bottom; y < cAround.top; ++y)
    {
        const std::size_t nRow = static_cast<std::size_t>(y) * static_cast<std::size_t>(m_nWidth);
        for (int x = cAround.left; x < cAround.right; ++x)
        {
            Length_t nInk = 0;
            for (Length_t j = 0; j < cMap.m_nSamples; ++j)
                for (Length_t i = 0; i < cMap.m_nSamples; ++i)
                    nInk += InkAt(cPart, cMap.PlaceOf(cPart, x, y, i, j), nPartSeed);
            nInk /= cMap.m_nSamples * cMap.m_nSamples;
            if (nInk == 0) continue;

            const std::size_t nAt = nRow + static_cast<std::size_t>(x);
            const auto nGrey = static_cast<std::uint8_t>(std::max<Length_t>(aGround[nAt] - nInk, 0));
            m_aPixels[nAt] = std::min(m_aPixels[nAt], nGrey);
            if (nGrey < m_nInkLimit) Include(cInk, x, y);
        }
    }
    return cInk;
}

std::vector<std::uint8_t> ClSlapPicture::Block() const
{
    constexpr std::uint32_t nEntries = 256;
    const auto nWidth = static_cast<std::size_t>(m_nWidth);
    const auto nHeight = static_cast<std::size_t>(m_nHeight);
    const std::size_t nStride = (nWidth + 3) / 4 * 4;
    const auto nPels = static_cast<std::uint32_t>(m_nPelsPerMetre);

    std::vector<std::uint8_t> aBlock;
    aBlock.reserve(40 + 4 * nEntries + nStride * nHeight);
    Put(aBlock, 40, 4);                                            // size of this header
    Put(aBlock, static_cast<std::uint32_t>(m_nWidth), 4);          // columns
    Put(aBlock, static_cast<std::uint32_t>(m_nHeight), 4);         // rows, positive for bottom-up
    Put(aBlock, 1, 2);                                             // planes
    Put(aBlock, 8, 2);                                             // bits per pixel
    Put(aBlock, 0, 4);                                             // no compression
    Put(aBlock, static_cast<std::uint32_t>(nStride * nHeight), 4); // bytes of pixels
    Put(aBlock, nPels, 4);
    Put(aBlock, nPels, 4);
    Put(aBlock, nEntries, 4); // colour table
    Put(aBlock, nEntries, 4); // important entries of it
    for (std::uint32_t i = 0; i < nEntries; ++i) Put(aBlock, i * 0x010101u, 4);
    for (std::size_t y = 0; y < nHeight; ++y)
    {
        const auto pRow = m_aPixels.begin() + static_cast<std::ptrdiff_t>(y * nWidth);
        aBlock.insert(aBlock.end(), pRow, pRow + m_nWidth);
        aBlock.insert(aBlock.end(), nStride - nWidth, 0);
    }
    return aBlock;
}

std::vector<std::uint8_t> ClSlapPicture::BmpFile() const
{
    constexpr std::uint32_t nFileHeader = 14;
    constexpr std::uint32_t nHeaderAndTable = 40 + 4 * 256;
    const std::vector<std::uint8_t> aBlock = Block();
    std::vector<std::uint8_t> aFile;
    aFile.reserve(nFileHeader + aBlock.size());
    Put(aFile, 0x4D42u, 2); // the letters B and M
    Put(aFile, static_cast<std::uint32_t>(nFileHeader + aBlock.size()), 4);
    Put(aFile, 0, 4);
    Put(aFile, nFileHeader + nHeaderAndTable, 4); // where the pixels begin
    aFile.insert(aFile.end(), aBlock.begin(), aBlock.end());
    return aFile;
}
