#include "ImageFile.hpp"

#include "Formats.hpp"
#include "PictureFiles.hpp"
#include "TestTools.hpp"

#include <cmath>
#include <memory>

using namespace SegmentTool;
using namespace PictureFiles;

namespace
{
constexpr std::uint64_t nFingerprint = 0x0123456789abcdefu;

std::vector<EImageFormat> Formats()
{
    return HAVE_PNG != 0 ? std::vector<EImageFormat>{EImageFormat::ePng, EImageFormat::eBmp}
                         : std::vector<EImageFormat>{EImageFormat::eBmp};
}

std::unique_ptr<ClPicture> Read(const Bytes_t& aFile)
{
    auto pPicture = std::make_unique<ClPicture>();
    ReadPicture(FormatOf(aFile), aFile, *pPicture);
    return pPicture;
}

// The rows as they are, from the top.
std::vector<unsigned char> AllRows(const ClImageRows& cRows)
{
    const auto nRow = static_cast<std::size_t>(cRows.m_nWidth * cRows.m_nChannels);
    std::vector<unsigned char> aAll(nRow * static_cast<std::size_t>(cRows.m_nHeight));
    for (int y = 0; y < cRows.m_nHeight; ++y) cRows.m_Row(y, aAll.data() + nRow * static_cast<std::size_t>(y));
    return aAll;
}
} // namespace

TEST(ImageFile, GreyPixelsAndResolutionComeBack)
{
    ClImage cImage;
    FillRandom8(cImage, 13, 7, 5);
    cImage.m_nXRes = 19685;
    cImage.m_nYRes = 39370;
    for (const EImageFormat eFormat : Formats())
    {
        const auto pPicture = Read(EncodeImage(eFormat, RowsOf(cImage), nFingerprint));
        EXPECT_TRUE(std::equal(cImage.Data(), cImage.Data() + 13, pPicture->m_cImage.Data())) << EndingOf(eFormat);
        EXPECT_EQ(AllRows(RowsOf(cImage)), GreyOf(*pPicture));
        EXPECT_EQ(19685, std::lround(pPicture->m_dXPels));
        EXPECT_EQ(39370, std::lround(pPicture->m_dYPels));
    }
}

TEST(ImageFile, ColoursKeepTheirOrder)
{
    ClImageRows cRows;
    cRows.m_nWidth = 3;
    cRows.m_nHeight = 1;
    cRows.m_nChannels = 3;
    cRows.m_nXPels = cRows.m_nYPels = 19685;
    cRows.m_Row = [](int, unsigned char* p)
    {
        const unsigned char aRow[] = {255, 0, 0, 0, 255, 0, 0, 0, 255}; // blue, green, red
        std::copy(std::begin(aRow), std::end(aRow), p);
    };
    const std::vector<std::uint8_t> aExpected = {255 * 4729 >> 16, 255 * 46868 >> 16, 255 * 13937 >> 16};
    for (const EImageFormat eFormat : Formats())
    {
        EXPECT_EQ(aExpected, GreyOf(*Read(EncodeImage(eFormat, cRows, 1)))) << EndingOf(eFormat);
    }
}

TEST(ImageFile, TheSamePictureGivesTheSameBytes)
{
    ClImage cImage;
    FillRandom8(cImage, 5, 7, 5);
    for (const EImageFormat eFormat : Formats())
    {
        ClImage cCopy;
        cCopy = cImage;
        cCopy.FillAligment(77); // behind the rows
        EXPECT_EQ(EncodeImage(eFormat, RowsOf(cImage), 1), EncodeImage(eFormat, RowsOf(cCopy), 1));
    }
}

TEST(ImageFile, CarriesTheFingerprint)
{
    const ClTempFolder cFolder;
    ClImage cImage;
    FillRandom8(cImage, 40, 40, 5);
    for (const EImageFormat eFormat : Formats())
    {
        const std::string sPath = cFolder.Write("a", EncodeImage(eFormat, RowsOf(cImage), nFingerprint));
        EXPECT_TRUE(HasFingerprint(sPath, nFingerprint)) << EndingOf(eFormat);
        EXPECT_FALSE(HasFingerprint(sPath, nFingerprint + 1));
    }
    EXPECT_FALSE(HasFingerprint(cFolder.Path("missing"), nFingerprint));
    EXPECT_FALSE(HasFingerprint(cFolder.Path(""), nFingerprint));
    for (const char* szOther : {"", "BM", "some text", "kormelin:0123456789abcdef"})
    {
        EXPECT_FALSE(HasFingerprint(cFolder.Write("b", std::string(szOther)), nFingerprint)) << szOther;
    }
}

TEST(ImageFile, AFrameRunsInsideItsRectangle)
{
    ClPicture cPicture;
    cPicture.Create(40, 30);
    cPicture.m_cImage.m_nXRes = 19685; // two pixels thick
    ClFinger cFinger;
    cFinger.m_nX = 5;
    cFinger.m_nSeenY = 10;
    cFinger.m_nWidth = 20;
    cFinger.m_nHeight = 12;
    const std::vector<unsigned char> aRows = AllRows(RowsWithFrames(cPicture, {cFinger}));
    for (int y = 0; y < 30; ++y)
    {
        for (int x = 0; x < 40; ++x)
        {
            const bool bInside = x >= 5 && x < 25 && y >= 10 && y < 22;
            const bool bMiddle = x >= 7 && x < 23 && y >= 12 && y < 20;
            const unsigned char* p = aRows.data() + 3 * (40 * y + x);
            const bool bWhite = p[0] == 255 && p[1] == 255 && p[2] == 255;
            ASSERT_EQ(bInside && !bMiddle, !bWhite) << x << ", " << y;
        }
    }
}

TEST(ImageFile, FramesBeyondThePictureHarmNothing)
{
    ClPicture cPicture;
    cPicture.Create(10, 10);
    std::vector<ClFinger> aFingers(6);
    const int aanRectangles[6][4] = {{-5, -5, 30, 30}, {8, 8, 100, 100},          {50, 50, 5, 5},
                                     {3, 3, -2, -2},   {-2000000, 0, 4000000, 5}, {0, 0, 1, 1}};
    for (std::size_t i = 0; i < 6; ++i)
    {
        aFingers[i].m_nX = aanRectangles[i][0];
        aFingers[i].m_nSeenY = aanRectangles[i][1];
        aFingers[i].m_nWidth = aanRectangles[i][2];
        aFingers[i].m_nHeight = aanRectangles[i][3];
    }
    const ClImageRows cRows = RowsWithFrames(cPicture, aFingers);
    const ClGuardedBytes cRow(30);
    for (int y = 0; y < 10; ++y) cRows.m_Row(y, cRow.Data());
    EXPECT_NE(255, cRow.Data()[27] & cRow.Data()[28] & cRow.Data()[29]) << "the second one reaches the corner";
}
