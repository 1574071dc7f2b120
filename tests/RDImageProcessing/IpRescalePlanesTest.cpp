// ClIpRescale on images of several planes and of every sample type.

#include "RDImageProcessing/IpRescale.hpp"

#include "RescaleDefinitions.hpp"

#include <cstring>
#include <string>

using namespace RescaleDefinitions;

namespace
{
/// The first bytes of each row of a plane, one for each column, as an image of its own with the sign of the input.
void BytesOfPlane(const ClImage& cIn, int nPlane, ClImage& cBytes)
{
    const std::size_t nSize = cIn.m_eDataType & 31;
    cBytes.NewWithType((cIn.m_eDataType & 128) != 0 ? ClImage::eSInt8 : ClImage::eUInt8, cIn.m_nWidth, cIn.m_nHeight, 1,
                       cIn.m_nXRes, cIn.m_nYRes);
    std::vector<unsigned char> aRow(nSize * static_cast<std::size_t>(cIn.m_nWidth));
    for (int y = 0; y < cIn.m_nHeight; ++y)
    {
        for (int x = 0; x < cIn.m_nWidth; ++x)
        {
            std::memcpy(&aRow[nSize * static_cast<std::size_t>(x)], SampleAddress(cIn, x, y, nPlane), nSize);
        }
        for (int x = 0; x < cIn.m_nWidth; ++x)
        {
            SetSample(cBytes, x, y, 0, aRow[static_cast<std::size_t>(x)]);
        }
    }
}

/// Up to three planes one by one; what the content has more is black. nPlanes: those of the content.
void PlanesByDefinition(const ClImage& cIn, const StForce& c, Mode_t eMode, double a, int nPlanes, ClImage& cOut)
{
    for (int i = 0; i < std::min(cIn.m_nPlanes, 3); ++i)
    {
        ClImage cBytes, cPlane;
        BytesOfPlane(cIn, i, cBytes);
        ScaleByDefinition(cBytes, c, eMode, a, cPlane);
        if (i == 0)
        {
            cOut.NewWithType(cPlane.m_eDataType, cPlane.m_nWidth, cPlane.m_nHeight, nPlanes, cPlane.m_nXRes,
                             cPlane.m_nYRes);
            std::memset(cOut.Data(), 0, static_cast<std::size_t>(cOut.Stride()) * std::size_t(cOut.m_nHeight));
        }
        for (int y = 0; y < cOut.m_nHeight && i < nPlanes; ++y)
        {
            for (int x = 0; x < cOut.m_nWidth; ++x)
            {
                SetSample(cOut, x, y, i, static_cast<unsigned char>(At(cPlane, x, y)));
            }
        }
    }
    if (cIn.m_nPlanes > 1)
    {
        cOut.m_eContent = cIn.m_eContent;
        cOut.m_nAttribute = cIn.m_nAttribute;
    }
}

struct ClTestContent
{
    ClImage::EContent eContent;
    int nPlanes;
};

/// Contents for images of two planes and more.
constexpr ClTestContent aContents[] = {
    {ClImage::eRGB, 3}, {ClImage::eRGBA, 4}, {ClImage::eHSV, 3}, {ClImage::eGrayscale, 1}, {ClImage::eCIELUV, 3}};
} // namespace

TEST(IpRescale, EveryModeScalesEveryTypeAndNumberOfPlanes)
{
    const std::pair<int, int> aPels[] = {{8000, 1500}, {8000, 9000}, {40000, 1500}, {30000, 9000}, {19685, 2000}};
    unsigned int n = 0;
    ForEachRandomImage(4,
                       [&](ClImage& cIn, auto)
                       {
                           for (const Mode_t eMode : aModes)
                           {
                               const ClTestContent cContent = cIn.m_nPlanes > 1 ? aContents[n % std::size(aContents)]
                                                                                : ClTestContent{ClImage::eGrayscale, 1};
                               const auto [nPelsX, nPelsY] = aPels[n / 2 % std::size(aPels)];
                               const double a = n % 3 == 0 ? 0.6 : -0.75;
                               const bool bInPlace = n++ % 4 == 0;
                               SCOPED_TRACE("mode " + std::to_string(eMode) + ", content " +
                                            std::to_string(cContent.eContent) + ", " + std::to_string(nPelsX) + " by " +
                                            std::to_string(nPelsY));
                               cIn.m_eContent = cContent.eContent;
                               ClImage cSource, cOut, cExpected;
                               cSource = cIn;
                               const StForce c = ForceOfPels(cIn, nPelsX, nPelsY);
                               if (c.nWidth == cIn.m_nWidth && c.nHeight == cIn.m_nHeight)
                               {
                                   cExpected = cIn;
                               }
                               else
                               {
                                   PlanesByDefinition(cIn, c, eMode, a > 0.0 ? -a : a, cContent.nPlanes, cExpected);
                               }
                               ClIpRescale cRescale;
                               cRescale.m_dConvParameter1 = a;
                               ClImage& cTarget = bInPlace ? cSource : cOut;
                               ASSERT_EQ(0, cRescale.ApplyParamPels(cSource, cTarget, nPelsX, nPelsY, eMode));
                               ExpectImage(cExpected, cTarget);
                               ASSERT_TRUE(bInPlace || SamePixels(cIn, cSource));
                           }
                       });
}

TEST(IpRescale, SizesOfPlanesWithoutAResolution)
{
    for (const Mode_t eMode : {ClIpRescale::ModeNearestNeighbour, ClIpRescale::ModeBiLinear, ClIpRescale::ModeBiCubic,
                               ClIpRescale::ModeBiLinearFantMar})
    {
        for (const auto& [nWidth, nHeight] : {std::pair(9, 7), std::pair(9, 30), std::pair(40, 7), std::pair(40, 30)})
        {
            ClImage cIn(17, 16, 3, 0, 0), cOut;
            FillRandom(cIn, 31);
            cIn.m_nAttribute = 2;
            ASSERT_EQ(0, ClIpRescale().ApplyParamSize(cIn, cOut, nWidth, nHeight, eMode));
            for (int i = 0; i < 3; ++i)
            {
                ClImage cPlane, cScaled, cActual;
                cIn.GetPlane(i, cPlane);
                cOut.GetPlane(i, cActual);
                ASSERT_EQ(0, ClIpRescale().ApplyParamSize(cPlane, cScaled, nWidth, nHeight, eMode));
                ExpectImage(cScaled, cActual);
            }
            EXPECT_EQ(2, cOut.m_nAttribute);
        }
    }
}

TEST(IpRescale, PlanesThatCannotBeJoinedLeaveTheOutputAlone)
{
    for (const ClImage::EContent eContent : {ClImage::eXYZ, ClImage::eCIELab})
    {
        ClImage cIn(17, 16, 3, 19685, 19685), cOut, cBefore;
        FillRandom(cIn, 32);
        cIn.m_eContent = eContent;
        FillRandom8(cOut, 5, 4, 33);
        cOut.m_nAttribute = cIn.m_nAttribute;
        cBefore = cOut;
        EXPECT_EQ(0, ClIpRescale().ApplyParamPels(cIn, cOut, 7874, 7874, ClIpRescale::ModeBiLinear));
        ExpectImage(cBefore, cOut);
    }
}
