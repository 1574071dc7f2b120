#include "RDImageProcessing/IpLabeling.hpp"

#include "BinaryPictures.hpp"
#include "FailingHeap.hpp"
#include "RDTools/Exception.hpp"
#include "RDTools/ParameterContainer.hpp"

#include <gmock/gmock.h>

#include <memory>

namespace
{
int Label(ClImage& cIn, ClImage& cOut)
{
    ClIpLabeling cLabeling;
    cLabeling.m_pInImage = &cIn;
    cLabeling.m_pOutImage = &cOut;
    EXPECT_EQ(0, cLabeling.Apply());
    return cLabeling.m_nLabels;
}

/// The labels as text, one character each, rows from 0 upwards divided by "/".
std::string LabelText(std::initializer_list<const char*> aRows)
{
    ClImage cIn;
    PaintText(cIn, aRows);
    ClImage cOut;
    Label(cIn, cOut);
    std::string sText;
    for (int y = 0; y < cIn.m_nHeight; ++y)
    {
        sText += y == 0 ? "" : "/";
        for (int x = 0; x < cIn.m_nWidth; ++x)
        {
            const int nLabel = SampleAt<int>(cOut, x, y);
            sText += nLabel == 0 ? '.' : static_cast<char>('0' + nLabel);
        }
    }
    return sText;
}
} // namespace

TEST(IpLabeling, NumbersTheObjectsInTheOrderOfTheirFirstPixels)
{
    ForEachBinaryPicture(
        [](ClImage& cIn)
        {
            ClImage cExpected;
            const int nLabels = LabelByDefinition(cIn, cExpected);
            ClImage cOut;
            EXPECT_EQ(nLabels, Label(cIn, cOut));
            EXPECT_TRUE(SamePixels(cExpected, cOut));
        });
}

TEST(IpLabeling, OnlyZeroIsObject)
{
    EXPECT_EQ(".1.", LabelText({"1#2"}));
    EXPECT_EQ("1.2", LabelText({"#1#"}));
}

TEST(IpLabeling, AWhiteImageHasNoLabels)
{
    ClImage cIn;
    FillBinary(cIn, 7, 5, 0, 1);
    ClImage cOut;
    EXPECT_EQ(0, Label(cIn, cOut));
    for (int y = 0; y < 5; ++y)
    {
        for (int x = 0; x < 7; ++x)
        {
            EXPECT_EQ(0, SampleAt<int>(cOut, x, y));
        }
    }
}

TEST(IpLabeling, PixelsThatTouchAtACornerStayApart)
{
    EXPECT_EQ("1./.2", LabelText({"#.", ".#"}));
    EXPECT_EQ(".1/2.", LabelText({".#", "#."}));
}

TEST(IpLabeling, AUShapeIsOneObject)
{
    EXPECT_EQ("1.1/1.1/111", LabelText({"#.#", "#.#", "###"}));
    EXPECT_EQ("111/1.1/1.1", LabelText({"###", "#.#", "#.#"}));
    EXPECT_EQ("111/..1/111/1../111", LabelText({"###", "..#", "###", "#..", "###"}));
}

TEST(IpLabeling, ObjectsOnTheFirstAndTheLastRowEndThere)
{
    EXPECT_EQ("1.22/..../33.4", LabelText({"#.##", "....", "##.#"}));
    EXPECT_EQ("1111", LabelText({"####"}));
    EXPECT_EQ("1/1/1", LabelText({"#", "#", "#"}));
}

TEST(IpLabeling, TheOutputIsDescribedAsTheInput)
{
    ClImage cIn;
    FillBinary(cIn, 7, 5, 50, 1);
    cIn.m_eContent = ClImage::eCIELab;
    ClImage cOut;
    cOut.m_nAttribute = 5;
    Label(cIn, cOut);
    ClImage cExpected;
    cExpected.NewWithType(ClImage::eSInt32, 7, 5, 1, 3937, 3937);
    cExpected.m_eContent = ClImage::eCIELab;
    cExpected.m_dBlack = 0.0;
    cExpected.m_dWhite = 255.0;
    cExpected.m_nAttribute = 5;
    EXPECT_TRUE(SameDescription(cExpected, cOut));
}

TEST(IpLabeling, TwoRunsGiveTheSame)
{
    ClImage cIn;
    FillBinary(cIn, 31, 17, 60, 4);
    ClImage cFirst;
    ClImage cSecond;
    ClIpLabeling cLabeling;
    cLabeling.m_pInImage = &cIn;
    cLabeling.m_pOutImage = &cFirst;
    cLabeling.Apply();
    const int nLabels = cLabeling.m_nLabels;
    cLabeling.m_pOutImage = &cSecond;
    cLabeling.Apply();
    EXPECT_EQ(nLabels, cLabeling.m_nLabels);
    EXPECT_TRUE(SamePixels(cFirst, cSecond));
}

TEST(IpLabeling, AFinelyHatchedPictureIsOneObject)
{
    // Bars with teeth between them: each bar puts every tooth on the stack, many thousands in all.
    ClImage cIn;
    FillBinary(cIn, 301, 301, 100, 1);
    for (int y = 1; y < 301; y += 2)
    {
        for (int x = 1; x < 301; x += 2)
        {
            SetSample<unsigned char>(cIn, x, y, 0, 255);
        }
    }
    ClImage cExpected;
    EXPECT_EQ(1, LabelByDefinition(cIn, cExpected));
    ClImage cOut;
    EXPECT_EQ(1, Label(cIn, cOut));
    EXPECT_TRUE(SamePixels(cExpected, cOut));
}

TEST(IpLabeling, OtherImagesAreReadOneBytePerColumn)
{
    // The first bytes of each row of a colour image, of a 16-bit image; nothing is read or written behind the blocks.
    for (const auto& [eType, nPlanes] :
         {std::pair(ClImage::eUInt8, 3), std::pair(ClImage::eUInt16, 1), std::pair(ClImage::eDouble64, 2)})
    {
        const int nStride = ClImage::RowBytes(nPlanes, 5, ClImage::SampleSize(eType));
        ClGuardedBytes cBytes(static_cast<std::size_t>(nStride) * 4);
        ClTestRandom cRandom(3);
        for (std::size_t i = 0; i < cBytes.Size(); ++i)
        {
            cBytes.Data()[i] = static_cast<unsigned char>(cRandom.Below(2));
        }
        ClImage cIn;
        cIn.Attach(cBytes.Data(), static_cast<unsigned char>(eType), 5, 4, nPlanes, 0, 0);
        ClImage cBytePicture(5, 4, 1, 0, 0);
        for (int y = 0; y < 4; ++y)
        {
            std::memcpy(SampleAddress(cBytePicture, 0, y), cBytes.Data() + y * nStride, 5);
        }
        ClImage cExpected;
        const int nLabels = LabelByDefinition(cBytePicture, cExpected);
        ClImage cOut;
        EXPECT_EQ(nLabels, Label(cIn, cOut));
        EXPECT_EQ(nPlanes, cOut.m_nPlanes);
        for (int y = 0; y < 4; ++y)
        {
            for (int x = 0; x < 5; ++x)
            {
                int nLabel;
                std::memcpy(&nLabel, cOut.Data() + y * nPlanes * 20 + x * 4, sizeof nLabel);
                EXPECT_EQ(SampleAt<int>(cExpected, x, y), nLabel);
            }
        }
    }
}

TEST(IpLabeling, AnImageWithoutPixelsHasNoLabels)
{
    ClImage cIn;
    ClImage cOut;
    EXPECT_EQ(0, Label(cIn, cOut));
    cIn.NewWithType(ClImage::eUInt8, 5, 4, 0, 0, 0); // no planes
    EXPECT_EQ(0, Label(cIn, cOut));
    cIn.NewWithType(ClImage::eUInt8, 0, 4, 1, 0, 0);
    EXPECT_EQ(0, Label(cIn, cOut));
    cIn.Attach(nullptr, ClImage::eUInt8, 5, 4, 1, 0, 0);
    EXPECT_EQ(0, Label(cIn, cOut));
    EXPECT_EQ(0, SampleAt<int>(cOut, 4, 3));
}

TEST(IpLabeling, AFillWritesTheLabelOverOneObject)
{
    ClImage cIn;
    PaintText(cIn, {"##.#", ".#.#", "###."});
    ClImage cOut;
    ClIpLabeling cLabeling;
    cLabeling.m_pInImage = &cIn;
    cLabeling.m_pOutImage = &cOut;
    cLabeling.Apply();
    std::memset(cOut.Data(), 0, 4 * 4 * 3);
    cLabeling.FloodFill(1, 2, 9);
    for (int y = 0; y < 3; ++y)
    {
        for (int x = 0; x < 4; ++x)
        {
            EXPECT_EQ(x < 3 && SampleAt<unsigned char>(cIn, x, y) == 0 ? 9 : 0, SampleAt<int>(cOut, x, y));
        }
    }
}

TEST(IpLabeling, AFillRemembersRunsNotPixels)
{
    ClImage cIn(40000, 3, 1, 0, 0);
    std::memset(cIn.Data(), 0, static_cast<std::size_t>(cIn.Stride()) * 3);
    ClImage cOut;
    cOut.NewWithType(ClImage::eSInt32, 40000, 3, 1, 0, 0);
    std::memset(cOut.Data(), 0, static_cast<std::size_t>(cOut.Stride()) * 3);
    ClIpLabeling cLabeling;
    cLabeling.m_pInImage = &cIn;
    cLabeling.m_pOutImage = &cOut;
    cLabeling.FloodFill(20000, 1, 9);
    EXPECT_EQ(9, Row<int>(cOut, 2)[39999]);
    EXPECT_LE(cLabeling.m_cStack.m_nEntries, 100u);
}

TEST(IpLabeling, AFillAfterOneThatFoundNoMemoryFillsItsOwnObjectOnly)
{
    // A comb with more teeth than the stack has room for at first, and a line apart from it.
    ClImage cIn, cOut;
    cIn.NewWithType(ClImage::eUInt8, 600, 4, 1, 0, 0);
    cOut.NewWithType(ClImage::eSInt32, 600, 4, 1, 0, 0);
    for (int x = 0; x < 600; ++x)
    {
        for (int y = 0; y < 4; ++y)
        {
            SetSample<unsigned char>(cIn, x, y, 0, y == 0 || y == 3 || (y == 1 && x % 2 == 0) ? 0 : 255);
            SetSample<int>(cOut, x, y, 0, 0);
        }
    }
    ClIpLabeling cLabeling;
    cLabeling.m_pInImage = &cIn;
    cLabeling.m_pOutImage = &cOut;
    {
        const ClFailingHeap cHeap(1);
        EXPECT_THROW(cLabeling.FloodFill(0, 0, 1), ClExBadAlloc);
    }
    cLabeling.FloodFill(0, 3, 9);
    for (int x = 0; x < 600; ++x)
    {
        EXPECT_NE(9, SampleAt<int>(cOut, x, 0));
        EXPECT_NE(9, SampleAt<int>(cOut, x, 1));
        EXPECT_EQ(9, SampleAt<int>(cOut, x, 3));
    }
}

TEST(IpLabeling, AFillFromOutsideOfTheImageDoesNothing)
{
    // Two rows of object, and as much of it in front of them and behind.
    unsigned char aBlock[6][4] = {};
    int aLabels[6][4] = {};
    ClImage cIn, cOut;
    cIn.Attach(aBlock[2], ClImage::eUInt8, 4, 2, 1, 0, 0);
    cOut.Attach(aLabels[2], ClImage::eSInt32, 4, 2, 1, 0, 0);
    ClIpLabeling cLabeling;
    cLabeling.m_pInImage = &cIn;
    cLabeling.m_pOutImage = &cOut;
    for (const auto& [nX, nY] : {std::pair(-1L, 0L), std::pair(-1L, 1L), std::pair(4L, 0L), std::pair(4L, 1L),
                                 std::pair(0L, -1L), std::pair(0L, 2L), std::pair(-5000000000L, 5000000000L)})
    {
        cLabeling.FloodFill(nX, nY, 9);
    }
    for (const auto& aRow : aLabels)
    {
        EXPECT_THAT(aRow, testing::Each(0));
    }
    cLabeling.FloodFill(0, 0, 9);
    EXPECT_THAT(aLabels[1], testing::Each(0));
    EXPECT_THAT(aLabels[3], testing::Each(9));
    EXPECT_THAT(aLabels[4], testing::Each(0));
}

TEST(IpLabeling, TheFillOfEveryFirstPixelGivesTheSameLabels)
{
    // The plain form of the labelling: a fill from each object pixel that has no label yet.
    ForEachBinaryPicture(
        [](ClImage& cIn)
        {
            ClImage cExpected;
            const int nLabels = Label(cIn, cExpected);
            ClImage cOut;
            cOut.Resize(cIn, ClImage::eSInt32);
            std::memset(cOut.Data(), 0,
                        static_cast<std::size_t>(cOut.Stride()) * static_cast<std::size_t>(cOut.m_nHeight));
            ClIpLabeling cLabeling;
            cLabeling.m_pInImage = &cIn;
            cLabeling.m_pOutImage = &cOut;
            int nFills = 0;
            for (int y = 0; y < cIn.m_nHeight; ++y)
            {
                for (int x = 0; x < cIn.m_nWidth; ++x)
                {
                    if (SampleAt<unsigned char>(cIn, x, y) == 0 && SampleAt<int>(cOut, x, y) == 0)
                    {
                        cLabeling.FloodFill(x, y, ++nFills);
                    }
                }
            }
            EXPECT_EQ(nLabels, nFills);
            EXPECT_TRUE(SamePixels(cExpected, cOut));
        });
}

TEST(IpLabeling, GivesTheObjectsAsRunsWithOrWithoutALabelImage)
{
    ForEachBinaryPicture(
        [](ClImage& cIn)
        {
            ClImage cExpected;
            const int nLabels = Label(cIn, cExpected);
            for (const bool bImage : {false, true})
            {
                ClObjectRuns cRuns;
                ClImage cOut;
                ClIpLabeling cLabeling;
                cLabeling.m_pInImage = &cIn;
                cLabeling.m_pOutImage = bImage ? &cOut : nullptr;
                cLabeling.m_pRuns = &cRuns;
                EXPECT_EQ(0, cLabeling.Apply());
                EXPECT_EQ(nLabels, cLabeling.m_nLabels);
                EXPECT_TRUE(!bImage || SamePixels(cExpected, cOut));
                ClImage cPainted;
                cPainted.Resize(cIn, ClImage::eSInt32);
                cRuns.Paint(cPainted);
                EXPECT_TRUE(SamePixels(cExpected, cPainted));
            }
        });
}

TEST(IpLabeling, AnImageForWhichThereIsNoLabelImageFailsWithoutOneToo)
{
    // Rows of 2^31 bytes and more, sides and planes that are none.
    unsigned char anPixels[8] = {};
    const struct
    {
        int nWidth;
        int nHeight;
        int nPlanes;
        long nCode;
    } aCases[] = {{0x20000000, 1, 1, -101},
                  {0x10000000, 1, 2, -101},
                  {0x40000001, 1, 1, -102},
                  {-9, 2, 1, -101},
                  {9, -2, 1, -101},
                  {9, 2, -1, -101},
                  {-9, 0, 1, 0},
                  {9, 0, 1, 0}};
    for (const auto& cCase : aCases)
    {
        SCOPED_TRACE(std::to_string(cCase.nWidth) + " by " + std::to_string(cCase.nHeight));
        ClImage cIn;
        cIn.Attach(anPixels, ClImage::eUInt8, 1, 1, 1, 0, 0);
        cIn.m_nWidth = cCase.nWidth;
        cIn.m_nHeight = cCase.nHeight;
        cIn.m_nPlanes = cCase.nPlanes;
        long anNumber[2] = {};
        for (const bool bImage : {false, true})
        {
            ClObjectRuns cRuns;
            ClImage cOut;
            ClIpLabeling cLabeling;
            cLabeling.m_pInImage = &cIn;
            cLabeling.m_pOutImage = bImage ? &cOut : nullptr;
            cLabeling.m_pRuns = &cRuns;
            try
            {
                cLabeling.Apply();
                EXPECT_EQ(0, cLabeling.m_nLabels);
            }
            catch (const ClException& cRaised)
            {
                anNumber[bImage ? 1 : 0] = cRaised.Number();
            }
        }
        EXPECT_EQ(anNumber[1], anNumber[0]);
        EXPECT_EQ(cCase.nCode, anNumber[0]);
    }
}

TEST(IpLabeling, ReportsWhatIsMissing)
{
    ClImage cImage(2, 2, 1, 0, 0);
    ClIpLabeling cLabeling;
    EXPECT_RAISES(cLabeling.Apply(), ClException, -37,
                  "One of the required parameter is missing.\nInputimage is missing");
    cLabeling.m_pInImage = &cImage;
    EXPECT_RAISES(cLabeling.Apply(), ClException, -37,
                  "One of the required parameter is missing.\nOutputimage is missing");
    cLabeling.m_pOutImage = &cImage;
    EXPECT_RAISES(cLabeling.Apply(), ClException, -44,
                  "One(or more) parameter(s) is(are) invalid.\nResize image with im self is senseless.");
}

TEST(IpLabeling, PublishesNothing)
{
    ClIpLabeling cLabeling;
    ClParameterContainer cContainer;
    cLabeling.QueryParameters(cContainer);
    EXPECT_EQ(0u, cContainer.m_aChildren.Entries());
    EXPECT_STREQ("ClIpLabeling", cLabeling.Name());
    std::unique_ptr<ClProcessorBase> pOther(cLabeling.Create());
    EXPECT_NE(nullptr, dynamic_cast<ClIpLabeling*>(pOther.get()));
}
