#include "ContactSheetPictures.hpp"

#include "SlapPicture.hpp"

#include "RDImageProcessing/IpBinarizeAutoThreshold.hpp"
#include "RDImageProcessing/IpBinarizeGlobal.hpp"
#include "RDImageProcessing/IpFilterMid.hpp"
#include "RDImageProcessing/IpFilterMidRotating.hpp"
#include "RDImageProcessing/IpGammaCorrection.hpp"
#include "RDImageProcessing/IpRescale.hpp"
#include "RDImageProcessing/IpStretchRangeGlobalNoiseRemoving.hpp"
#include "RDTools/Exception.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <stdexcept>

namespace
{
constexpr int nSide = 160; // pixels of a picture in full resolution
constexpr int nFullPels = 19685;
constexpr int nWorkingPels = 3937;

/// Samples as doubles; row 0 is the lower edge.
class ClSamples
{
public:
    explicit ClSamples(const ClImage& cImage)
        : m_nPerRow(static_cast<std::size_t>(cImage.m_nWidth) * static_cast<std::size_t>(cImage.m_nPlanes)),
          m_nPlanes(static_cast<std::size_t>(cImage.m_nPlanes))
    {
        DispatchSampleType(cImage.m_eDataType, 0,
                           [&](auto cTag)
                           {
                               for (int y = 0; y < cImage.m_nHeight; ++y)
                               {
                                   const auto* pRow = Row<typename decltype(cTag)::Type>(cImage, y);
                                   m_adSamples.insert(m_adSamples.end(), pRow, pRow + m_nPerRow);
                               }
                               return 0L;
                           });
    }
    double At(int nX, int nY, int nPlane) const
    {
        return m_adSamples[static_cast<std::size_t>(nY) * m_nPerRow + static_cast<std::size_t>(nX) * m_nPlanes +
                           static_cast<std::size_t>(nPlane)];
    }
    /// Smallest and largest number; 0 and 0 if there is none.
    void Range(double& dMin, double& dMax) const
    {
        dMin = std::numeric_limits<double>::infinity();
        dMax = -dMin;
        for (const double d : m_adSamples)
        {
            dMin = d < dMin ? d : dMin;
            dMax = d > dMax ? d : dMax;
        }
        if (!(dMin <= dMax)) dMin = dMax = 0.0;
    }

private:
    std::size_t m_nPerRow;
    std::size_t m_nPlanes;
    std::vector<double> m_adSamples;
};

/// A byte from a share of white; black for what is not a number.
std::uint8_t Shade(double dShare)
{
    if (!(dShare > 0.0)) return 0;
    return static_cast<std::uint8_t>(std::min(dShare, 1.0) * 255.0 + 0.5);
}

/// Neighbouring numbers lie far apart on the colour circle; red, green and blue in three phases of it.
void PaintLabel(long nLabel, std::uint8_t* pPixel)
{
    constexpr double dGoldenAngle = 2.399963229728653; // radians
    for (int nChannel = 0; nChannel < 3; ++nChannel)
    {
        const double dPhase = static_cast<double>(nLabel) * dGoldenAngle + nChannel * 2.0943951023931953;
        pPixel[nChannel] = Shade(0.42 + 0.4 * std::cos(dPhase));
    }
}

void Require(long nCode, const char* szWhat)
{
    if (nCode != FPC_SUCCESS) throw std::runtime_error(std::string("cannot prepare ") + szWhat);
}

void MakeGrey(ClImage& cImage, int nWidth, int nHeight, unsigned char eType = ClImage::eUInt8)
{
    cImage.NewWithType(eType, nWidth, nHeight, 1, nFullPels, nFullPels);
}

/// Every pixel of a one-plane image of bytes from its column and row.
template <class T, class Fn> void Paint(ClImage& cImage, Fn&& fnValue)
{
    for (int y = 0; y < cImage.m_nHeight; ++y)
    {
        T* pRow = Row<T>(cImage, y);
        for (int x = 0; x < cImage.m_nWidth; ++x)
        {
            pRow[x] = static_cast<T>(fnValue(x, y));
        }
    }
}

int ByteAt(const ClImage& cImage, int nX, int nY)
{
    return Row<unsigned char>(cImage, nY)[nX];
}
} // namespace

ClSheetPicture::ClSheetPicture(int nWidth, int nHeight)
    : m_nWidth(nWidth), m_nHeight(nHeight),
      m_aPixels(3 * static_cast<std::size_t>(nWidth) * static_cast<std::size_t>(nHeight), 255)
{
}

std::uint8_t* ClSheetPicture::At(int nX, int nY)
{
    return m_aPixels.data() +
           3 * (static_cast<std::size_t>(nY) * static_cast<std::size_t>(m_nWidth) + static_cast<std::size_t>(nX));
}

const std::uint8_t* ClSheetPicture::At(int nX, int nY) const
{
    return const_cast<ClSheetPicture*>(this)->At(nX, nY);
}

ClSheetPicture ShowImage(const ClImage& cImage)
{
    const ClSamples cSamples(cImage);
    double dMin = 0.0, dMax = 255.0;
    if (ClImage::SampleSize(cImage.m_eDataType) != 1)
    {
        cSamples.Range(dMin, dMax);
    }
    else if (ClImage::IsSignedType(cImage.m_eDataType))
    {
        dMin -= 128.0;
        dMax -= 128.0;
    }
    const double dSpan = dMax > dMin ? dMax - dMin : 1.0;
    ClSheetPicture cPicture(cImage.m_nWidth, cImage.m_nHeight);
    for (int y = 0; y < cImage.m_nHeight; ++y)
    {
        for (int x = 0; x < cImage.m_nWidth; ++x)
        {
            std::uint8_t* pPixel = cPicture.At(x, cImage.m_nHeight - 1 - y);
            for (int nChannel = 0; nChannel < 3; ++nChannel)
            {
                const int nPlane = cImage.m_nPlanes == 1 ? 0 : 2 - nChannel;
                const bool bThere = nPlane < cImage.m_nPlanes;
                pPixel[nChannel] = bThere ? Shade((cSamples.At(x, y, nPlane) - dMin) / dSpan) : std::uint8_t(0);
            }
        }
    }
    return cPicture;
}

ClSheetPicture ShowLabels(const ClImage& cImage, long nBackground)
{
    const ClSamples cSamples(cImage);
    ClSheetPicture cPicture(cImage.m_nWidth, cImage.m_nHeight);
    for (int y = 0; y < cImage.m_nHeight; ++y)
    {
        for (int x = 0; x < cImage.m_nWidth; ++x)
        {
            const long nLabel = std::lround(cSamples.At(x, y, 0));
            if (nLabel != nBackground) PaintLabel(nLabel, cPicture.At(x, cImage.m_nHeight - 1 - y));
        }
    }
    return cPicture;
}

ClSheetPicture ShowHistogram(const ClHistogram& cHistogram, int nMarked)
{
    constexpr int nColumns = ClHistogram::nBins / 2;
    ClSheetPicture cPicture(nColumns, nSide);
    std::vector<double> adHeights;
    for (int n = 0; n < nColumns; ++n)
    {
        adHeights.push_back(static_cast<double>(cHistogram.m_anBins[2 * n]) + cHistogram.m_anBins[2 * n + 1]);
    }
    const double dHighest = std::max(1.0, *std::max_element(adHeights.begin(), adHeights.end()));
    for (int x = 0; x < nColumns; ++x)
    {
        const bool bMarked = x == nMarked / 2;
        for (int y = 0; y < nSide; ++y)
        {
            const bool bFull = (nSide - 1 - y) * dHighest < adHeights[static_cast<std::size_t>(x)] * nSide;
            std::uint8_t* pPixel = cPicture.At(x, y);
            if (bFull || bMarked) pPixel[1] = pPixel[2] = 0;
            if (bFull && !bMarked) pPixel[0] = 0;
        }
    }
    return cPicture;
}

void DrawBox(ClSheetPicture& cPicture, const ClSheetBox& cBox)
{
    for (int y = 0; y < cPicture.m_nHeight; ++y)
    {
        const long nRow = cPicture.m_nHeight - 1 - y;
        for (int x = 0; x < cPicture.m_nWidth; ++x)
        {
            const bool bInside = x >= cBox.m_nMinX && x <= cBox.m_nMaxX && nRow >= cBox.m_nMinY && nRow <= cBox.m_nMaxY;
            const bool bEdge = x == cBox.m_nMinX || x == cBox.m_nMaxX || nRow == cBox.m_nMinY || nRow == cBox.m_nMaxY;
            if (bInside && bEdge)
            {
                std::uint8_t* pPixel = cPicture.At(x, y);
                pPixel[0] = 255;
                pPixel[1] = pPixel[2] = 0;
            }
        }
    }
}

std::string DescribeImage(const ClImage& cImage)
{
    double dMin, dMax;
    ClSamples(cImage).Range(dMin, dMax);
    const char* const szKind = ClImage::IsFloatType(cImage.m_eDataType)    ? "f"
                               : ClImage::IsSignedType(cImage.m_eDataType) ? "s"
                                                                           : "u";
    char szText[128];
    std::snprintf(szText, sizeof(szText), "%dx%d %s%d %.4g..%.4g", cImage.m_nWidth, cImage.m_nHeight, szKind,
                  8 * ClImage::SampleSize(cImage.m_eDataType), dMin, dMax);
    return cImage.m_nPlanes == 1 ? szText : szText + (" p" + std::to_string(cImage.m_nPlanes));
}

ClSheetInputs::ClSheetInputs()
{
    const ClSlapPicture cSlap(SlapScenes::TwoFingers(nFullPels));
    ClImage cFull;
    MakeGrey(cFull, cSlap.m_nWidth, cSlap.m_nHeight);
    Paint<unsigned char>(
        cFull,
        [&](int x, int y)
        {
            return cSlap.m_aPixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(cSlap.m_nWidth) +
                                   static_cast<std::size_t>(x)];
        });
    Require(ClIpRescale().ApplyParamPels(cFull, m_cHand, nWorkingPels, nWorkingPels, ClIpRescale::ModeBiLinear),
            "the hand");

    // The fingertip with a little ground above it and to its sides.
    const ClSlapRect& cFinger = cSlap.m_aFingers.front();
    const int nLeft = std::clamp((cFinger.left + cFinger.right - nSide) / 2, 0, cSlap.m_nWidth - nSide);
    const int nBottom = std::clamp(cFinger.top + 20 - nSide, 0, cSlap.m_nHeight - nSide);
    MakeGrey(m_cRidges, nSide, nSide);
    Paint<unsigned char>(m_cRidges, [&](int x, int y) { return ByteAt(cFull, nLeft + x, nBottom + y); });
    MakeGrey(m_cSmall, 64, 64);
    Paint<unsigned char>(m_cSmall, [&](int x, int y) { return ByteAt(m_cRidges, 70 + x, 60 + y); });

    MakeGrey(m_cDots, nSide, nSide);
    Paint<unsigned char>(m_cDots, [](int x, int y) { return x % 20 / 2 == 5 && y % 20 / 2 == 5 ? 0 : 255; });
    MakeGrey(m_cSigned, nSide, nSide, ClImage::eSInt8);
    Paint<signed char>(m_cSigned, [&](int x, int y) { return ByteAt(m_cRidges, x, y) - 128; });
    MakeGrey(m_cDull, nSide, nSide);
    Paint<unsigned char>(m_cDull, [&](int x, int y) { return 88 + ByteAt(m_cRidges, x, y) / 4; });

    m_cColour.NewWithType(ClImage::eUInt8, m_cHand.m_nWidth, m_cHand.m_nHeight, 3, nWorkingPels, nWorkingPels);
    for (int y = 0; y < m_cHand.m_nHeight; ++y)
    {
        unsigned char* pPixel = Row<unsigned char>(m_cColour, y);
        for (int x = 0; x < m_cHand.m_nWidth; ++x, pPixel += 3)
        {
            pPixel[0] = static_cast<unsigned char>(ByteAt(m_cHand, x, y));
            pPixel[1] = static_cast<unsigned char>(ByteAt(m_cHand, m_cHand.m_nWidth - 1 - x, y));
            pPixel[2] = static_cast<unsigned char>(x * 255 / (m_cHand.m_nWidth - 1));
        }
    }

    MakeBinaryHand();
    Require(ClIpBinarizeGlobal().ApplyParam(m_cRidges, m_cBinaryRidges, 150.0), "the binary ridges");

    MakeGrey(m_cDirectionX, nSide, nSide, ClImage::eSInt8);
    MakeGrey(m_cDirectionY, nSide, nSide, ClImage::eSInt8);
    // In the middle of 160 pixels the distance is never 0. The vector from the middle, turned by a right angle, has the
    // components -y and x; its second one against the row order is -x.
    const auto unit = [](int x, int y, double dTimes)
    { return std::lround(127.0 * dTimes / std::hypot(x - (nSide - 1) / 2.0, y - (nSide - 1) / 2.0)); };
    Paint<signed char>(m_cDirectionX, [&](int x, int y) { return unit(x, y, (nSide - 1) / 2.0 - y); });
    Paint<signed char>(m_cDirectionY, [&](int x, int y) { return unit(x, y, (nSide - 1) / 2.0 - x); });
}

/// The road of every picture that is searched for fingers.
void ClSheetInputs::MakeBinaryHand()
{
    ClImage cGamma, cSmooth, cUniform;
    cGamma = m_cHand;
    long nCode = ClIpGammaCorrection().ApplyParam(cGamma, 0.8);
    if (nCode == FPC_SUCCESS) nCode = ClIpFilterMid().ApplyParam(cGamma, cSmooth, 5);
    if (nCode == FPC_SUCCESS) nCode = ClIpFilterMidRotating().ApplyParam(cSmooth, cUniform, 9);
    if (nCode == FPC_SUCCESS) nCode = ClIpFilterMid().ApplyParam(cUniform, cSmooth, 5);
    if (nCode == FPC_SUCCESS)
        nCode = ClIpStretchRangeGlobalNoiseRemoving().ApplyParam(cSmooth, m_cStretched, 0.02, 0.07);
    using Binarize = ClIpBinarizeAutoThreshold;
    if (nCode == FPC_SUCCESS) nCode = Binarize().ApplyParam(m_cStretched, m_cBinaryHand, Binarize::ModeFuzzyYager);
    Require(nCode, "the binary hand");
}
