#include "RDImageProcessing/IpCutBiggestComponent.hpp"

#include "BinaryPictures.hpp"
#include "RDTools/Exception.hpp"
#include "RDTools/ParameterContainer.hpp"

#include <algorithm>
#include <memory>
#include <type_traits>

namespace
{
/// Box of the largest object of all pixels that are not pure white; of the first in raster order, if there are several.
/// False if there is no object.
bool BiggestByDefinition(const ClImage& cIn, int& nMinX, int& nMinY, int& nMaxX, int& nMaxY, int& nObjects)
{
    ClImage cBinary(cIn.m_nWidth, cIn.m_nHeight, 1, 0, 0);
    for (int y = 0; y < cIn.m_nHeight; ++y)
    {
        for (int x = 0; x < cIn.m_nWidth; ++x)
        {
            SetSample<unsigned char>(cBinary, x, y, 0, SampleAt<unsigned char>(cIn, x, y) < 255 ? 0 : 255);
        }
    }
    ClImage cLabels;
    nObjects = LabelByDefinition(cBinary, cLabels);
    std::size_t nLargest = 0;
    int nDone = 0;
    for (int y = 0; y < cIn.m_nHeight; ++y)
    {
        for (int x = 0; x < cIn.m_nWidth; ++x)
        {
            if (SampleAt<int>(cLabels, x, y) <= nDone)
            {
                continue;
            }
            ++nDone;
            const std::vector<Pixel> aRegion = RegionOf(cBinary, x, y);
            if (aRegion.size() <= nLargest)
            {
                continue;
            }
            nLargest = aRegion.size();
            nMinX = nMaxX = x;
            nMinY = nMaxY = y;
            for (const auto& [nX, nY] : aRegion)
            {
                nMinX = std::min(nMinX, nX);
                nMaxX = std::max(nMaxX, nX);
                nMinY = std::min(nMinY, nY);
                nMaxY = std::max(nMaxY, nY);
            }
        }
    }
    return nLargest != 0;
}

/// Columns and rows start at 0.
void ExpectCut(const ClImage& cIn, int nX0, int nY0, int nWidth, int nHeight, const ClImage& cOut)
{
    ClImage cExpected(nWidth, nHeight, 1, cIn.m_nXRes, cIn.m_nYRes);
    for (int y = 0; y < nHeight; ++y)
    {
        for (int x = 0; x < nWidth; ++x)
        {
            SetSample(cExpected, x, y, 0, SampleAt<unsigned char>(cIn, nX0 + x, nY0 + y));
        }
    }
    EXPECT_TRUE(SamePixels(cExpected, cOut));
    EXPECT_TRUE(SameDescription(cExpected, cOut));
}
} // namespace

TEST(IpCutBiggestComponent, CutsTheBoxOfTheLargestObjectWithoutItsLastColumnAndRow)
{
    int nCuts = 0;
    ForEachBinaryPicture(
        [&](ClImage& cIn)
        {
            // black becomes any grey that is not pure white
            ClTestRandom cRandom(static_cast<unsigned int>(cIn.m_nWidth));
            for (int y = 0; y < cIn.m_nHeight; ++y)
            {
                for (int x = 0; x < cIn.m_nWidth; ++x)
                {
                    if (SampleAt<unsigned char>(cIn, x, y) == 0)
                    {
                        SetSample(cIn, x, y, 0, static_cast<unsigned char>(cRandom.Below(255)));
                    }
                }
            }
            ClImage cOriginal;
            cOriginal = cIn;
            int nMinX = 0, nMinY = 0, nMaxX = 0, nMaxY = 0, nObjects = 0;
            const bool bFound = BiggestByDefinition(cIn, nMinX, nMinY, nMaxX, nMaxY, nObjects);
            ClImage cOut;
            ClIpCutBiggestComponent cCut;
            if (!bFound)
            {
                EXPECT_EQ(FPC_ERROR_INVALID_PARAMETER, cCut.ApplyParam(cIn, cOut));
                return;
            }
            if (nMaxX == nMinX || nMaxY == nMinY)
            {
                EXPECT_RAISES(cCut.ApplyParam(cIn, cOut), ClException, -35,
                              nMaxX == nMinX ? "One of the parameters is out of range.\n"
                                               "ClIpCut::Process. m_nDestWidth <= 0"
                                             : "One of the parameters is out of range.\n"
                                               "ClIpCut::Process. m_nDestHeight <= 0");
                return;
            }
            ASSERT_EQ(0, cCut.ApplyParam(cIn, cOut));
            EXPECT_TRUE(SamePixels(cOriginal, cIn)); // the input is only read
            if (nObjects > 16)
            {
                return; // ties are open; the largest object alone is checked elsewhere
            }
            ++nCuts;
            EXPECT_EQ(nMinX, cCut.m_nCutX0);
            EXPECT_EQ(nMinY, cCut.m_nCutY0);
            EXPECT_EQ(nMaxX - nMinX, cCut.m_nCutWidth);
            EXPECT_EQ(nMaxY - nMinY, cCut.m_nCutHeight);
            ExpectCut(cOriginal, nMinX, nMinY, nMaxX - nMinX, nMaxY - nMinY, cOut);
            ClImage cInPlace;
            cInPlace = cOriginal;
            ASSERT_EQ(0, ClIpCutBiggestComponent().ApplyParam(cInPlace));
            EXPECT_TRUE(SamePixels(cOut, cInPlace));
        });
    EXPECT_GE(nCuts, 10);
}

TEST(IpCutBiggestComponent, FindsTheLargestOfHundreds)
{
    ClImage cIn;
    FillBinary(cIn, 61, 47, 30, 5);
    for (int y = 20; y < 29; ++y)
    {
        for (int x = 30; x < 41; ++x)
        {
            const bool bRim = y == 20 || y == 28 || x == 30 || x == 40;
            SetSample<unsigned char>(cIn, x, y, 0, bRim ? 255 : 254);
        }
    }
    ClImage cOut;
    ClIpCutBiggestComponent cCut;
    ASSERT_EQ(0, cCut.ApplyParam(cIn, cOut));
    EXPECT_EQ(31, cCut.m_nCutX0);
    EXPECT_EQ(21, cCut.m_nCutY0);
    ExpectCut(cIn, 31, 21, 8, 6, cOut);
}

TEST(IpCutBiggestComponent, AmongUpToSixteenObjectsTheFirstOfTheLargestIsTaken)
{
    for (int nObjects = 2; nObjects <= 16; ++nObjects)
    {
        for (int nFirst = 0; nFirst < nObjects - 1; ++nFirst)
        {
            // objects of 2 by 2 in a row; those from nFirst on, in steps of two, have a third row
            ClImage cIn(3 * nObjects, 4, 1, 0, 0);
            std::memset(cIn.Data(), 255, static_cast<std::size_t>(cIn.Stride()) * 4);
            for (int i = 0; i < nObjects; ++i)
            {
                const int nRows = i >= nFirst && (i - nFirst) % 2 == 0 ? 3 : 2;
                for (int j = 0; j < 2 * nRows; ++j)
                {
                    SetSample<unsigned char>(cIn, 3 * i + j % 2, j / 2, 0, 7);
                }
            }
            ClImage cOut;
            ClIpCutBiggestComponent cCut;
            ASSERT_EQ(0, cCut.ApplyParam(cIn, cOut));
            EXPECT_EQ(3 * nFirst, cCut.m_nCutX0) << nObjects;
        }
    }
}

TEST(IpCutBiggestComponent, AWhiteImageHasNothingToCut)
{
    ClImage cIn(9, 9, 1, 0, 0);
    std::memset(cIn.Data(), 255, 12 * 9);
    ClImage cOut;
    EXPECT_EQ(-44, ClIpCutBiggestComponent().ApplyParam(cIn, cOut));
    EXPECT_EQ(-44, ClIpCutBiggestComponent().ApplyParam(cIn));
    EXPECT_EQ(255, SampleAt<unsigned char>(cIn, 8, 8)); // in place the image is as it was
}

TEST(IpCutBiggestComponent, AnImageWithoutPixelsIsRefusedByTheFrame)
{
    ClImage cNoRows(10, 0, 1, 0, 0), cEmpty, cOut;
    EXPECT_RAISES(ClIpCutBiggestComponent().ApplyParam(cNoRows, cOut), ClException, FPC_ERROR_BAD_POINTER,
                  "The pointer is bad or invalid.\nm_pInImage->Data() is not set");
    EXPECT_RAISES(ClIpCutBiggestComponent().ApplyParam(cEmpty, cOut), ClException, FPC_ERROR_FORMAT_NOTSUPPORTED,
                  "The required format is not supported.\nInput pixel type \"unknown\" not supported by processor.");
    EXPECT_EQ(nullptr, cOut.Data());
}

TEST(IpCutBiggestComponent, AnObjectOfOneColumnOrRowLeavesNothing)
{
    ClImage cIn;
    ClImage cOut;
    PaintText(cIn, {".#.", ".#.", "..."});
    EXPECT_RAISES(ClIpCutBiggestComponent().ApplyParam(cIn, cOut), ClException, -35,
                  "One of the parameters is out of range.\nClIpCut::Process. m_nDestWidth <= 0");
    PaintText(cIn, {"...", "##.", "..."});
    EXPECT_RAISES(ClIpCutBiggestComponent().ApplyParam(cIn, cOut), ClException, -35,
                  "One of the parameters is out of range.\nClIpCut::Process. m_nDestHeight <= 0");
    PaintText(cIn, {"...", ".#.", "..."}); // the width is looked at first
    EXPECT_RAISES(ClIpCutBiggestComponent().ApplyParam(cIn, cOut), ClException, -35,
                  "One of the parameters is out of range.\nClIpCut::Process. m_nDestWidth <= 0");
}

TEST(IpCutBiggestComponent, TwoImagesOnTheSameBlockAreKeptApart)
{
    ClImage cBlock;
    FillBinary(cBlock, 20, 15, 70, 3);
    ClImage cOriginal;
    cOriginal = cBlock;
    ClImage cIn;
    ClImage cOut;
    cIn.Attach(cBlock.Data(), cBlock);
    cOut.Attach(cBlock.Data(), cBlock);
    ClIpCutBiggestComponent cCut;
    ASSERT_EQ(0, cCut.ApplyParam(cIn, cOut));
    EXPECT_TRUE(SamePixels(cOriginal, cIn));
    ExpectCut(cOriginal, static_cast<int>(cCut.m_nCutX0), static_cast<int>(cCut.m_nCutY0),
              static_cast<int>(cCut.m_nCutWidth), static_cast<int>(cCut.m_nCutHeight), cOut);
}

TEST(IpCutBiggestComponent, OtherImagesAreReadOneBytePerColumn)
{
    // Three planes: the samples of the first columns stand for the pixels.
    ClImage cIn(9, 5, 3, 0, 0);
    std::memset(cIn.Data(), 255, static_cast<std::size_t>(cIn.Stride()) * 5);
    for (int y = 1; y < 4; ++y)
    {
        for (int nByte = 2; nByte < 6; ++nByte)
        {
            cIn.Data()[y * cIn.Stride() + nByte] = 9;
        }
        cIn.Data()[y * cIn.Stride() + 12] = 0; // beyond column 9
    }
    ClImage cOut;
    ClIpCutBiggestComponent cCut;
    ASSERT_EQ(0, cCut.ApplyParam(cIn, cOut));
    EXPECT_EQ(2, cCut.m_nCutX0);
    EXPECT_EQ(1, cCut.m_nCutY0);
    EXPECT_EQ(3, cOut.m_nWidth);
    EXPECT_EQ(2, cOut.m_nHeight);
    EXPECT_EQ(3, cOut.m_nPlanes);
}

TEST(IpCutBiggestComponent, CutsEveryTypeAndNumberOfPlanesByTheBytesOfItsBinaryImage)
{
    ClTestRandom cRandom(8);
    int nCuts = 0;
    ForEachRandomImage(
        4,
        [&](ClImage& cIn, auto cTag)
        {
            using T = typename decltype(cTag)::Type;
            if (std::is_floating_point_v<T>)
            {
                cIn.m_dBlack = 0.0;
                cIn.m_dWhite = 0.1 + 256.0; // a fraction whose bytes are not all 0
            }
            if (cIn.m_dWhite < 255.0)
            {
                return; // refused, as is told below
            }
            ClImage cBinary, cBytes(cIn.m_nWidth, cIn.m_nHeight, 1, 0, 0);
            cBinary = cIn;
            for (int y = 0; y < cIn.m_nHeight; ++y)
            {
                for (int x = 0; x < cIn.m_nWidth * cIn.m_nPlanes; ++x)
                {
                    const bool bWhite = (x - 3) * (x - 3) + 4 * (y - 2) * (y - 2) > 24 && cRandom.Below(100) > 1;
                    const T tSample = static_cast<T>(bWhite ? cIn.m_dWhite : 254);
                    SetSample(cIn, x / cIn.m_nPlanes, y, x % cIn.m_nPlanes, tSample);
                    SetSample(cBinary, x / cIn.m_nPlanes, y, x % cIn.m_nPlanes,
                              static_cast<T>(bWhite ? cIn.m_dWhite : cIn.m_dBlack));
                }
                for (int x = 0; x < cIn.m_nWidth; ++x)
                {
                    const unsigned char nByte = SampleAddress(cBinary, 0, y)[x];
                    SetSample<unsigned char>(cBytes, x, y, 0, nByte == 0 ? 0 : 255);
                }
            }
            int nMinX = 0, nMinY = 0, nMaxX = 0, nMaxY = 0, nObjects = 0;
            const bool bFound = BiggestByDefinition(cBytes, nMinX, nMinY, nMaxX, nMaxY, nObjects);
            if (!bFound || nMaxX == nMinX || nMaxY == nMinY || nObjects > 16)
            {
                return;
            }
            ++nCuts;
            ClImage cExpected, cOut;
            cExpected.NewWithType(cIn.m_eDataType, nMaxX - nMinX, nMaxY - nMinY, cIn.m_nPlanes, 19685, 3937);
            cExpected.m_nAttribute = cIn.m_nAttribute;
            cExpected.m_dBlack = cIn.m_dBlack;
            cExpected.m_dWhite = cIn.m_dWhite;
            for (int y = 0; y < cExpected.m_nHeight; ++y)
            {
                for (int x = 0; x < cExpected.m_nWidth; ++x)
                {
                    std::memcpy(SampleAddress(cExpected, x, y), SampleAddress(cIn, nMinX + x, nMinY + y),
                                sizeof(T) * static_cast<std::size_t>(cIn.m_nPlanes));
                }
            }
            ASSERT_EQ(0, ClIpCutBiggestComponent().ApplyParam(cIn, cOut));
            EXPECT_TRUE(SamePixels(cExpected, cOut));
            EXPECT_TRUE(SameDescription(cExpected, cOut));
        });
    EXPECT_LT(60, nCuts);
}

TEST(IpCutBiggestComponent, EveryTypeIsTakenWithoutReadingBeyondTheImage)
{
    ForEachRandomImage(4,
                       [](ClImage& cIn, auto)
                       {
                           ClImage cOut;
                           long nResult = 0;
                           try
                           {
                               nResult = ClIpCutBiggestComponent().ApplyParam(cIn, cOut);
                           }
                           catch (const ClException& cFault)
                           {
                               nResult = cFault.Number();
                           }
                           const bool bReaches255 = cIn.m_dWhite >= 255.0;
                           if (!bReaches255)
                           {
                               EXPECT_EQ(FPC_ERROR_PARAM_OUT_OF_RANGE, nResult);
                           }
                           else if (nResult == 0)
                           {
                               EXPECT_LT(cOut.m_nWidth, cIn.m_nWidth);
                               EXPECT_LT(cOut.m_nHeight, cIn.m_nHeight);
                           }
                           else
                           {
                               EXPECT_TRUE(nResult == -35 || nResult == -44) << nResult;
                           }
                       });
}

TEST(IpCutBiggestComponent, HasNoParametersOfItsOwn)
{
    ClIpCutBiggestComponent cCut;
    EXPECT_TRUE(cCut.m_bInPlace);
    EXPECT_EQ(0, cCut.m_nCutX0 + cCut.m_nCutY0 + cCut.m_nCutWidth + cCut.m_nCutHeight);
    for (const unsigned char eType : aEveryType)
    {
        EXPECT_TRUE(cCut.CheckIfTypeAllowed(static_cast<ClImage::EDataType>(eType)));
    }
    ClParameterContainer cContainer;
    cCut.QueryParameters(cContainer);
    EXPECT_EQ(2u, cContainer.m_aChildren.Entries());
    EXPECT_STREQ("ClIpCutBiggestComponent", cCut.Name());
    std::unique_ptr<ClProcessorBase> pOther(cCut.Create());
    EXPECT_NE(nullptr, dynamic_cast<ClIpCutBiggestComponent*>(pOther.get()));
}
