#include "RDImageProcessing/IpFloodFillLabeling.hpp"

#include "BinaryPictures.hpp"
#include "RDTools/ErrorCatalogue.hpp"
#include "RDTools/ParameterContainer.hpp"

#include <algorithm>
#include <memory>

namespace
{
using Box = ClIpFloodFill::StBoundingBox;

/// The first pixel of value 0 from the start of a row on; false if there is none.
bool FindBlack(const ClImage& cImage, int nFromRow, int& nX, int& nY)
{
    for (nY = nFromRow; nY < cImage.m_nHeight; ++nY)
    {
        for (nX = 0; nX < cImage.m_nWidth; ++nX)
        {
            if (SampleAt<unsigned char>(cImage, nX, nY) == 0)
            {
                return true;
            }
        }
    }
    return false;
}

/// The scan as it is defined: after each object it begins again, at the start of row 1. Returns the first label that
/// was not given.
int LabelWithRestarts(ClImage& cImage)
{
    int nLabel = 1;
    int nX = 0;
    int nY = 0;
    int nFromRow = 0;
    while (FindBlack(cImage, nFromRow, nX, nY))
    {
        for (const auto& [x, y] : RegionOf(cImage, nX, nY))
        {
            SetSample(cImage, x, y, 0, static_cast<unsigned char>(nLabel % 256));
        }
        ++nLabel;
        nFromRow = 1;
    }
    return nLabel;
}

std::vector<Box> BoxesByDefinition(const ClImage& cImage, int nNextLabel)
{
    std::vector<Box> aBoxes;
    for (int i = 1; i < nNextLabel % 256; ++i)
    {
        aBoxes.push_back(Box{cImage.m_nWidth - 1, cImage.m_nHeight - 1, 0, 0, 0});
    }
    for (int y = 0; y < cImage.m_nHeight; ++y)
    {
        for (int x = 0; x < cImage.m_nWidth; ++x)
        {
            const std::size_t nLabel = SampleAt<unsigned char>(cImage, x, y);
            if (nLabel >= 1 && nLabel <= aBoxes.size())
            {
                Box& cBox = aBoxes[nLabel - 1];
                cBox.nMinX = std::min<long>(cBox.nMinX, x);
                cBox.nMinY = std::min<long>(cBox.nMinY, y);
                cBox.nMaxX = std::max<long>(cBox.nMaxX, x);
                cBox.nMaxY = std::max<long>(cBox.nMaxY, y);
                ++cBox.nCount;
            }
        }
    }
    return aBoxes;
}

void ExpectSameBoxes(const std::vector<Box>& aExpected, const TpArrayStatic<Box>& aActual)
{
    ASSERT_EQ(aExpected.size(), aActual.Entries());
    for (std::size_t i = 0; i < aExpected.size(); ++i)
    {
        SCOPED_TRACE("object " + std::to_string(i));
        EXPECT_EQ(aExpected[i].nMinX, aActual[i].nMinX);
        EXPECT_EQ(aExpected[i].nMinY, aActual[i].nMinY);
        EXPECT_EQ(aExpected[i].nMaxX, aActual[i].nMaxX);
        EXPECT_EQ(aExpected[i].nMaxY, aActual[i].nMaxY);
        EXPECT_EQ(aExpected[i].nCount, aActual[i].nCount);
    }
}

/// Labels a copy both ways. Returns the first label that was not given.
int ExpectAsWithRestarts(ClImage& cImage)
{
    ClImage cExpected;
    cExpected = cImage;
    const int nNextLabel = LabelWithRestarts(cExpected);
    ClImage cOut;
    ClIpFloodFillLabeling cLabeling;
    cLabeling.m_pInImage = &cImage;
    cLabeling.m_pOutImage = &cOut;
    EXPECT_EQ(0, cLabeling.Apply());
    EXPECT_TRUE(SamePixels(cExpected, cOut));
    EXPECT_TRUE(SameDescription(cExpected, cOut));
    ExpectSameBoxes(BoxesByDefinition(cExpected, nNextLabel), cLabeling.m_aObjects);
    return nNextLabel;
}

/// nObjects single black pixels, none of them in row 0.
void PaintDots(ClImage& cImage, int nObjects)
{
    cImage.NewWithType(ClImage::eUInt8, 41, 41, 1, 0, 0);
    std::memset(cImage.Data(), 255, 44 * 41);
    for (int i = 0; i < nObjects; ++i)
    {
        SetSample<unsigned char>(cImage, i % 20 * 2, 1 + i / 20 * 2, 0, 0);
    }
}
} // namespace

TEST(IpFloodFillLabeling, LabelsAsIfTheScanBeganAgainAtRowOneAfterEachObject)
{
    int nMostLabels = 0;
    int nLeftInRowZero = 0;
    ForEachBinaryPicture(
        [&](ClImage& cImage)
        {
            nMostLabels = std::max(nMostLabels, ExpectAsWithRestarts(cImage));
            LabelWithRestarts(cImage);
            int nX = 0;
            int nY = 0;
            nLeftInRowZero += FindBlack(cImage, 0, nX, nY) ? 1 : 0;
        });
    EXPECT_GT(nMostLabels, 257); // labels were used again
    EXPECT_GT(nLeftInRowZero, 5);
}

TEST(IpFloodFillLabeling, ImagesOfOneAndTwoRowsToo)
{
    for (unsigned int nSeed = 0; nSeed < 40; ++nSeed)
    {
        for (const int nHeight : {1, 2})
        {
            ClImage cImage;
            FillBinary(cImage, 12, nHeight, 40, nSeed);
            SCOPED_TRACE(std::to_string(nSeed) + ", " + std::to_string(nHeight));
            ExpectAsWithRestarts(cImage);
        }
    }
}

TEST(IpFloodFillLabeling, GreyValuesThatAreNotAboveTheNumberOfObjectsCountAsTheirs)
{
    for (unsigned int nSeed = 0; nSeed < 10; ++nSeed)
    {
        ClImage cImage;
        FillRandom8(cImage, 23, 19, nSeed);
        for (int i = 0; i < 24 * 19; ++i)
        {
            cImage.Data()[i] = static_cast<unsigned char>(cImage.Data()[i] % 6 / 2 * 2); // 0, 2 and 4
        }
        ExpectAsWithRestarts(cImage);
    }
}

TEST(IpFloodFillLabeling, OfSeveralObjectsInRowZeroAloneOnlyTheFirstIsLabelled)
{
    ClImage cImage;
    PaintText(cImage, {".#.##.#", "......#", ".##...."});
    ClIpFloodFillLabeling cLabeling;
    cLabeling.FloodFill(cImage);
    ClImage cExpected;
    PaintText(cExpected, {".1.##.2", "......2", ".33...."});
    EXPECT_TRUE(SamePixels(cExpected, cImage));
    ExpectSameBoxes({{1, 0, 1, 0, 1}, {6, 0, 6, 1, 2}, {1, 2, 2, 2, 2}}, cLabeling.m_aObjects);
}

TEST(IpFloodFillLabeling, ABlackObjectThatBeginsInRowZeroIsLabelledWhole)
{
    ClImage cImage;
    PaintText(cImage, {"..#..", ".###.", "..#.."});
    ClIpFloodFillLabeling cLabeling;
    cLabeling.m_pInImage = &cImage;
    EXPECT_EQ(0, cLabeling.Apply()); // in place
    ClImage cExpected;
    PaintText(cExpected, {"..1..", ".111.", "..1.."});
    EXPECT_TRUE(SamePixels(cExpected, cImage));
    ExpectSameBoxes({{1, 0, 3, 2, 5}}, cLabeling.m_aObjects);
}

TEST(IpFloodFillLabeling, AWhiteImageGivesAnEmptyList)
{
    ClImage cImage;
    PaintText(cImage, {"#"});
    ClIpFloodFillLabeling cLabeling;
    EXPECT_EQ(0u, cLabeling.m_aObjects.Entries());
    cLabeling.FloodFill(cImage);
    EXPECT_EQ(1u, cLabeling.m_aObjects.Entries());
    PaintText(cImage, {"...", "..."});
    cLabeling.FloodFill(cImage);
    EXPECT_EQ(0u, cLabeling.m_aObjects.Entries()); // the old list is gone
    EXPECT_EQ(nullptr, cLabeling.m_aObjects.m_pData);
}

TEST(IpFloodFillLabeling, TheLabelIsOneByte)
{
    const struct
    {
        int nObjects;
        unsigned long nEntries;
    } aCases[] = {{1, 1},   {253, 253}, {254, 254}, {255, 0}, // the next label's byte is 0
                  {256, 1},                                   // label 256 fills nothing, 257 is 1 again
                  {257, 2}, {400, 145}};
    for (const auto& cCase : aCases)
    {
        SCOPED_TRACE(cCase.nObjects);
        ClImage cImage;
        PaintDots(cImage, cCase.nObjects);
        ExpectAsWithRestarts(cImage);
        ClIpFloodFillLabeling cLabeling;
        cLabeling.FloodFill(cImage);
        EXPECT_EQ(cCase.nEntries, cLabeling.m_aObjects.Entries());
        if (cCase.nObjects >= 256)
        {
            EXPECT_EQ(2, cLabeling.m_aObjects[0].nCount); // the first object and that of label 257
        }
    }
}

TEST(IpFloodFillLabeling, OtherImagesAreReadOneBytePerColumn)
{
    ClGuardedBytes cBytes(16 * 3);
    ClImage cImage;
    cImage.Attach(cBytes.Data(), ClImage::eUInt8, 5, 3, 3, 0, 0);
    ClIpFloodFillLabeling cLabeling;
    cLabeling.FloodFill(cImage);
    for (int i = 0; i < 48; ++i)
    {
        EXPECT_EQ(i % 16 < 5 ? 1 : 0, cBytes.Data()[i]);
    }
    ExpectSameBoxes({{0, 0, 4, 2, 15}}, cLabeling.m_aObjects);
}

TEST(IpFloodFillLabeling, AnImageWithoutPixelsGivesAnEmptyList)
{
    ClImage cImage;
    ClIpFloodFillLabeling cLabeling;
    cLabeling.m_pInImage = &cImage;
    EXPECT_EQ(0, cLabeling.Apply());
    cImage.NewWithType(ClImage::eUInt8, 5, 4, 0, 0, 0); // no planes
    EXPECT_EQ(0, cLabeling.Apply());
    EXPECT_EQ(0u, cLabeling.m_aObjects.Entries());
}

TEST(IpFloodFillLabeling, WithoutInputReportsTheMissingImage)
{
    EXPECT_EQ(FPC_ERROR_BITMAP_PTR, ClIpFloodFillLabeling().Apply());
}

TEST(IpFloodFillLabeling, ItsTimerFlagCountsForTheFillsToo)
{
    ClRunCounter cCounter;
    ClImage cImage;
    PaintText(cImage, {"...", "#.#"});
    ClIpFloodFillLabeling cLabeling;
    cLabeling.FloodFill(cImage);
    EXPECT_EQ(2, cCounter.m_nRuns); // one fill for each object
    PaintText(cImage, {"...", "#.#"});
    cLabeling.Timer(false);
    cLabeling.FloodFill(cImage);
    EXPECT_EQ(2, cCounter.m_nRuns);
}

TEST(IpFloodFillLabeling, IsAFloodFillWithItsParameters)
{
    ClIpFloodFillLabeling cLabeling;
    ClParameterContainer cContainer;
    cLabeling.QueryParameters(cContainer);
    EXPECT_EQ(6u, cContainer.m_aChildren.Entries());
    EXPECT_STREQ("ClIpFloodFillLabeling", cLabeling.Name());
    std::unique_ptr<ClProcessorBase> pOther(cLabeling.Create());
    EXPECT_NE(nullptr, dynamic_cast<ClIpFloodFillLabeling*>(pOther.get()));
}
