#include "Formats.hpp"

#include "PictureFiles.hpp"
#include "Result.hpp"
#include "TestTools.hpp"

#include "RDTools/Exception.hpp"

#include <algorithm>
#include <memory>

using namespace SegmentTool;
using namespace PictureFiles;

namespace
{
std::unique_ptr<ClPicture> Read(const Bytes_t& aFile)
{
    auto pPicture = std::make_unique<ClPicture>();
    ReadPicture(FormatOf(aFile), aFile, *pPicture);
    return pPicture;
}

// The catalogue number that reading ends with; 0 if it succeeds.
long CodeOf(const Bytes_t& aFile, std::string* psText = nullptr)
{
    ClPicture cPicture;
    try
    {
        ReadPicture(FormatOf(aFile), aFile, cPicture);
    }
    catch (const ClPictureError& cError)
    {
        if (psText != nullptr) *psText = cError.what();
        return cError.m_nCode;
    }
    catch (const ClException& cError)
    {
        return cError.Number();
    }
    return 0;
}

// No prefix of the file may pass, crash or raise anything but a refusal.
void ExpectNoPrefixPasses(const Bytes_t& aFile, std::size_t nLast)
{
    for (std::size_t nSize = 0; nSize < nLast; ++nSize)
    {
        const Bytes_t aPrefix(aFile.begin(), aFile.begin() + static_cast<std::ptrdiff_t>(nSize));
        EXPECT_LT(CodeOf(aPrefix), 0) << nSize << " of " << aFile.size() << " bytes";
    }
}

// Whatever byte is changed, the file is read or refused.
void ExpectNoByteHarms(const Bytes_t& aFile)
{
    for (std::size_t i = 0; i < aFile.size(); ++i)
    {
        for (const int nFlip : {0x01, 0x80, 0xff})
        {
            Bytes_t aChanged = aFile;
            aChanged[i] = static_cast<unsigned char>(aChanged[i] ^ nFlip);
            EXPECT_LE(CodeOf(aChanged), 0);
        }
    }
}

void ExpectPels(double dExpected, const ClPicture& cPicture, double dMargin = 0.01)
{
    EXPECT_NEAR(dExpected, cPicture.m_dXPels, dMargin);
    EXPECT_NEAR(dExpected, cPicture.m_dYPels, dMargin);
}
} // namespace

TEST(Formats, AreToldByTheContentAndNotByTheName)
{
    EXPECT_EQ(EFormat::eBmp, FormatOf(BmpFile(PackedBitmap(4, 4, 8))));
    EXPECT_EQ(EFormat::ePnm, FormatOf(FromText("P5 1 1 255\n ")));
    EXPECT_EQ(EFormat::ePnm, FormatOf(FromText("P2\n#")));
    EXPECT_EQ(EFormat::eUnknown, FormatOf(FromText("P7\nWIDTH 1")));
    EXPECT_EQ(EFormat::eUnknown, FormatOf(FromText("PDF, not a picture")));
    EXPECT_EQ(EFormat::eUnknown, FormatOf({}));
    EXPECT_EQ(EFormat::eUnknown, FormatOf({'P', '5', 0}));
}

TEST(Formats, OfNoKnownKindNameTheWayOut)
{
    std::string sText;
    EXPECT_EQ(FPC_ERROR_UNKNOWN_CODEC, CodeOf(FromText("some text"), &sText));
    EXPECT_NE(std::string::npos, sText.find("--decoder"));
}

TEST(FormatsBmp, GreyRowsAndResolutionComeOut)
{
    const Bytes_t aBlock = PackedBitmap(5, 3, 8);
    const auto pPicture = Read(BmpFile(aBlock));
    ExpectPels(19685, *pPicture);
    std::vector<std::uint8_t> aExpected;
    for (int y = 2; y >= 0; --y)
    {
        const auto* pRow = aBlock.data() + 40 + 1024 + 8 * y;
        aExpected.insert(aExpected.end(), pRow, pRow + 5);
    }
    EXPECT_EQ(aExpected, GreyOf(*pPicture));
}

TEST(FormatsBmp, AColourTableOfGreysIsLookedUp)
{
    Bytes_t aBlock = PackedBitmap(5, 3, 8);
    for (std::size_t i = 0; i < 256; ++i)
        PutLong(aBlock.data(), 40 + 4 * i, static_cast<std::uint32_t>(255 - i) * 0x10101u);
    const auto pPicture = Read(BmpFile(aBlock));
    EXPECT_EQ(255 - aBlock[40 + 1024], pPicture->RowFromTop(2)[0]);
}

TEST(FormatsBmp, ColoursAreFoldedToGrey)
{
    const Bytes_t aBlock = PackedBitmap(2, 1, 24);
    const auto pPicture = Read(BmpFile(aBlock));
    const unsigned char* p = aBlock.data() + 40;
    EXPECT_EQ((p[0] * 4729u + p[1] * 46868u + p[2] * 13937u) >> 16, pPicture->RowFromTop(0)[0]);
}

TEST(FormatsBmp, EveryDepthIsRead)
{
    for (const int nBits : {1, 4, 8, 16, 24, 32})
    {
        const auto pPicture = Read(BmpFile(PackedBitmap(13, 9, nBits)));
        EXPECT_EQ(13, pPicture->Width()) << nBits;
        EXPECT_EQ(9, pPicture->Height()) << nBits;
    }
}

TEST(FormatsBmp, LongerHeadersAndGapsInFrontOfThePixelsAreTheSamePicture)
{
    for (const int nBits : {4, 8, 24, 32})
    {
        const Bytes_t aFile = BmpFile(PackedBitmap(5, 3, nBits));
        const std::vector<std::uint8_t> aExpected = GreyOf(*Read(aFile));
        for (const unsigned int nHeader : {40u, 52u, 56u, 108u, 124u})
        {
            for (const unsigned int nGap : {0u, 6u})
            {
                Bytes_t aLonger = aFile;
                const std::size_t nPixels = aLonger[10] + 256u * aLonger[11];
                aLonger.insert(aLonger.begin() + static_cast<std::ptrdiff_t>(nPixels), nGap, 7);
                aLonger.insert(aLonger.begin() + 54, nHeader - 40, 9);
                PutLong(aLonger.data(), 10, static_cast<std::uint32_t>(nPixels + nHeader - 40 + nGap));
                PutLong(aLonger.data(), 14, nHeader);
                EXPECT_EQ(aExpected, GreyOf(*Read(aLonger)))
                    << nBits << " bits, header " << nHeader << ", gap " << nGap;
            }
        }
    }
}

TEST(FormatsBmp, MasksInALongerHeaderAreFound)
{
    const Bytes_t aFile = BmpFile(PackedBitmap(5, 3, 16, 3));
    Bytes_t aLonger = aFile;
    aLonger.insert(aLonger.begin() + 66, 108 - 52, 9); // behind the masks
    PutLong(aLonger.data(), 10, 14 + 108);
    PutLong(aLonger.data(), 14, 108);
    EXPECT_EQ(GreyOf(*Read(aFile)), GreyOf(*Read(aLonger)));
}

TEST(FormatsBmp, RowsFromTheTopAreTurned)
{
    Bytes_t aFile = BmpFile(PackedBitmap(5, 3, 8));
    const std::vector<std::uint8_t> aUp = GreyOf(*Read(aFile));
    PutLong(aFile.data(), 22, static_cast<std::uint32_t>(-3));
    const std::vector<std::uint8_t> aDown = GreyOf(*Read(aFile));
    EXPECT_TRUE(std::equal(aUp.begin(), aUp.begin() + 5, aDown.begin() + 10));
}

TEST(FormatsBmp, TruncatedAndChangedFilesAreRefusedOrRead)
{
    const Bytes_t aFile = BmpFile(PackedBitmap(5, 3, 8, 0, 4));
    ExpectNoPrefixPasses(aFile, aFile.size());
    ExpectNoByteHarms(aFile);
}

TEST(FormatsBmp, AHugeSizeIsRefusedBeforeMemoryIsAskedFor)
{
    Bytes_t aBlock = PackedBitmap(4, 4, 8);
    PutLong(aBlock.data(), 4, 2000000000);
    PutLong(aBlock.data(), 8, 1);
    EXPECT_LT(CodeOf(BmpFile(aBlock)), 0);
    EXPECT_NE(FPC_ERROR_OUT_OF_MEMORY, CodeOf(BmpFile(aBlock)));
}

#if HAVE_PNG
TEST(FormatsPng, EveryKindBecomesGrey)
{
    for (const int nChannels : {1, 3})
    {
        for (const int nBits : {1, 2, 4, 8, 16})
        {
            if (nChannels == 3 && nBits < 8) continue;
            for (const bool bInterlaced : {false, true})
            {
                const ClRaster cRaster = RandomRaster(13, 9, nChannels, nBits);
                ClPngStyle cStyle;
                cStyle.m_bInterlaced = bInterlaced;
                const auto pPicture = Read(PngFile(cRaster, cStyle));
                EXPECT_EQ(ExpectedGrey(cRaster), GreyOf(*pPicture)) << nChannels << " channels of " << nBits << " bits";
                ExpectPels(19685, *pPicture);
            }
        }
    }
}

TEST(FormatsPng, TransparencyShowsWhite)
{
    for (const int nBits : {8, 16})
    {
        const auto nMost = static_cast<std::uint16_t>((1 << nBits) - 1);
        const auto nDark = static_cast<std::uint16_t>(nMost / 5); // 51 of 255
        ClRaster cGrey{3, 1, 2, nBits, {nDark, nMost, nDark, 0, 0, static_cast<std::uint16_t>(nMost / 5)}};
        const std::vector<std::uint8_t> aGrey = GreyOf(*Read(PngFile(cGrey)));
        EXPECT_EQ(51, aGrey[0]);
        EXPECT_EQ(255, aGrey[1]);
        EXPECT_NEAR(204, aGrey[2], 1);
        ClRaster cColour{1, 1, 4, nBits, {0, 0, 0, 0}};
        EXPECT_EQ(254, GreyOf(*Read(PngFile(cColour)))[0]) << "white by the weights of the colours";
    }
}

TEST(FormatsPng, ATableOfGreysIsLookedUpAndOneOfColoursFolded)
{
    const ClRaster cRaster{4, 1, 1, 2, {0, 1, 2, 3}};
    ClPngStyle cStyle;
    cStyle.m_aTable = {255, 255, 255, 200, 200, 200, 100, 100, 100, 7, 7, 7};
    EXPECT_EQ((std::vector<std::uint8_t>{255, 200, 100, 7}), GreyOf(*Read(PngFile(cRaster, cStyle))));
    cStyle.m_aTable[0] = 0; // a colour
    EXPECT_EQ((255u * 46868u + 255u * 4729u) >> 16, GreyOf(*Read(PngFile(cRaster, cStyle)))[0]);
}

TEST(FormatsPng, WithoutAResolutionTellsNone)
{
    ClPngStyle cStyle;
    cStyle.m_nPels = 0;
    ExpectPels(0, *Read(PngFile(RandomRaster(3, 3), cStyle)));
}

TEST(FormatsPng, TruncatedAndChangedFilesAreRefused)
{
    const Bytes_t aFile = PngFile(RandomRaster(9, 7));
    ExpectNoPrefixPasses(aFile, aFile.size());
    ExpectNoByteHarms(aFile);
}

TEST(FormatsPng, AHugeSizeIsRefusedBeforeMemoryIsAskedFor)
{
    std::string sText;
    EXPECT_EQ(FPC_ERROR_BITMAP_DIMENSION, CodeOf(PngFile(RandomRaster(20001, 1)), &sText));
    EXPECT_NE(std::string::npos, sText.find("20001 by 1")) << sText;
    EXPECT_EQ(0, CodeOf(PngFile(RandomRaster(20000, 1))));
}
#endif

#if HAVE_JPEG
TEST(FormatsJpeg, GreyComesOutNearly)
{
    const ClRaster cRaster = SmoothRaster(40, 24);
    const std::vector<std::uint8_t> aGrey = GreyOf(*Read(JpegFile(cRaster)));
    for (std::size_t i = 0; i < aGrey.size(); ++i) ASSERT_NEAR(cRaster.m_aSamples[i], aGrey[i], 3) << i;
}

TEST(FormatsJpeg, ColoursAreFoldedToGrey)
{
    const ClRaster cRaster = SmoothRaster(40, 24, 3);
    const std::vector<std::uint8_t> aExpected = ExpectedGrey(cRaster);
    const std::vector<std::uint8_t> aGrey = GreyOf(*Read(JpegFile(cRaster)));
    for (std::size_t i = 0; i < aGrey.size(); ++i) ASSERT_NEAR(aExpected[i], aGrey[i], 5) << i;
}

TEST(FormatsJpeg, ResolutionIsPerInchOrPerCentimetreOrNotTold)
{
    const ClRaster cRaster = SmoothRaster(8, 8);
    ExpectPels(500 / 0.0254, *Read(JpegFile(cRaster, 1, 500)));
    ExpectPels(19700, *Read(JpegFile(cRaster, 2, 197)));
    ExpectPels(0, *Read(JpegFile(cRaster, 0, 1)));
}

TEST(FormatsJpeg, ColoursForPrintAreRefused)
{
    std::string sText;
    EXPECT_EQ(FPC_ERROR_JPEG_WRONG_COLORSPACE, CodeOf(JpegFile(SmoothRaster(8, 8, 4), 1, 500, true), &sText));
}

TEST(FormatsJpeg, TruncatedAndChangedFilesAreRefused)
{
    const Bytes_t aFile = JpegFile(SmoothRaster(24, 16));
    ExpectNoPrefixPasses(aFile, aFile.size() - 2); // behind the last row only the mark of the end is missing
    ExpectNoByteHarms(aFile);
}
#endif

#if HAVE_TIFF
TEST(FormatsTiff, EveryKindBecomesGrey)
{
    for (const int nBits : {1, 2, 4, 8, 16})
    {
        const ClRaster cRaster = RandomRaster(13, 9, 1, nBits);
        for (const bool bCompressed : {false, true})
        {
            ClTiffStyle cStyle;
            cStyle.m_bCompressed = bCompressed;
            const auto pPicture = Read(TiffFile(cRaster, cStyle));
            EXPECT_EQ(ExpectedGrey(cRaster), GreyOf(*pPicture)) << nBits << " bits";
            ExpectPels(500 / 0.0254, *pPicture);
        }
    }
    const ClRaster cColours = RandomRaster(13, 9, 3);
    EXPECT_EQ(ExpectedGrey(cColours), GreyOf(*Read(TiffFile(cColours))));
}

TEST(FormatsTiff, TilesComeOutAsRowsDo)
{
    const ClRaster cRaster = RandomRaster(13, 9);
    ClTiffStyle cStyle;
    cStyle.m_bTiled = true;
    EXPECT_EQ(ExpectedGrey(cRaster), GreyOf(*Read(TiffFile(cRaster, cStyle))));
}

TEST(FormatsTiff, WhereZeroIsWhiteItComesOutWhite)
{
    const ClRaster cRaster{2, 1, 1, 8, {0, 200}};
    ClTiffStyle cStyle;
    cStyle.m_bWhiteIsZero = true;
    EXPECT_EQ((std::vector<std::uint8_t>{255, 55}), GreyOf(*Read(TiffFile(cRaster, cStyle))));
}

TEST(FormatsTiff, RowsAndColumnsFollowTheOrientation)
{
    const ClRaster cRaster{2, 2, 1, 8, {1, 2, 3, 4}};
    const std::vector<std::uint8_t> aaExpected[] = {{1, 2, 3, 4}, {2, 1, 4, 3}, {4, 3, 2, 1}, {3, 4, 1, 2}};
    ClTiffStyle cStyle;
    for (int i = 0; i < 4; ++i)
    {
        cStyle.m_nOrientation = i + 1;
        EXPECT_EQ(aaExpected[i], GreyOf(*Read(TiffFile(cRaster, cStyle)))) << i + 1;
    }
    cStyle.m_nOrientation = 6; // turned by a quarter
    EXPECT_EQ(FPC_ERROR_TIFF_FAILURE, CodeOf(TiffFile(cRaster, cStyle)));
}

TEST(FormatsTiff, ResolutionIsPerInchOrPerCentimetreOrNotTold)
{
    const ClRaster cRaster = RandomRaster(3, 3);
    ClTiffStyle cStyle;
    cStyle.m_nUnit = 3;
    cStyle.m_fResolution = 197.0f;
    ExpectPels(19700, *Read(TiffFile(cRaster, cStyle)));
    cStyle.m_nUnit = 1;
    ExpectPels(0, *Read(TiffFile(cRaster, cStyle)));
    cStyle.m_fResolution = 0.0f;
    ExpectPels(0, *Read(TiffFile(cRaster, cStyle)));
}

TEST(FormatsTiff, TruncatedAndChangedFilesAreRefusedOrRead)
{
    const Bytes_t aFile = TiffFile(RandomRaster(9, 7));
    ExpectNoPrefixPasses(aFile, aFile.size() - 40); // the list of tags stands at the end; a tag less may do no harm
    ExpectNoByteHarms(aFile);
}
#endif

#if HAVE_OPENJPEG
TEST(FormatsJp2, EveryKindBecomesGrey)
{
    for (const int nChannels : {1, 3})
    {
        for (const int nBits : {8, 16})
        {
            for (const bool bCodestream : {false, true})
            {
                const ClRaster cRaster = RandomRaster(13, 9, nChannels, nBits);
                const auto pPicture = Read(Jp2File(cRaster, 19685, bCodestream));
                EXPECT_EQ(ExpectedGrey(cRaster), GreyOf(*pPicture)) << nChannels << " channels of " << nBits << " bits";
                ExpectPels(bCodestream ? 0 : 19685, *pPicture);
            }
        }
    }
    ExpectPels(0, *Read(Jp2File(RandomRaster(3, 3), 0)));
}

TEST(FormatsJp2, WithoutTheScannersResolutionThatForShowingCounts)
{
    Bytes_t aFile = Jp2File(RandomRaster(3, 3), 12345);
    const Bytes_t aName = FromText("resc");
    const auto itName = std::search(aFile.begin(), aFile.end(), aName.begin(), aName.end());
    ASSERT_NE(aFile.end(), itName);
    itName[3] = 'd';
    ExpectPels(12345, *Read(aFile));
    itName[-5] = 0; // no room for the whole box
    EXPECT_EQ(0, CodeOf(aFile)) << "the pixels are there all the same";
}

TEST(FormatsJp2, AnotherNumberOfPlanesIsRefused)
{
    EXPECT_EQ(FPC_ERROR_JPEG2000_WRONG_COLORSPACE, CodeOf(Jp2File(RandomRaster(5, 5, 2))));
}

TEST(FormatsJp2, TruncatedAndChangedFilesAreRefusedOrRead)
{
    const Bytes_t aFile = Jp2File(RandomRaster(9, 7));
    ExpectNoPrefixPasses(aFile, aFile.size() - 2); // without the mark of the end everything is there
    ExpectNoByteHarms(aFile);
}

TEST(FormatsJp2, AHugeSizeIsRefusedBeforeMemoryIsAskedFor)
{
    EXPECT_EQ(FPC_ERROR_BITMAP_DIMENSION, CodeOf(Jp2File(RandomRaster(20001, 1))));
}
#endif

TEST(FormatsPnm, BinarySamplesOfEachDepthBecomeGrey)
{
    for (const int nChannels : {1, 3})
    {
        for (const int nBits : {1, 5, 8, 16})
        {
            const ClRaster cRaster = RandomRaster(7, 5, nChannels, nBits);
            const auto pPicture = Read(PnmFile(cRaster));
            EXPECT_EQ(ExpectedGrey(cRaster), GreyOf(*pPicture)) << nChannels << " channels of " << nBits << " bits";
            ExpectPels(0, *pPicture);
        }
    }
}

TEST(FormatsPnm, PlainNumbersWithCommentsAreRead)
{
    EXPECT_EQ((std::vector<std::uint8_t>{0, 255, 102, 51}),
              GreyOf(*Read(FromText("P2 # grey\n2 2#columns and rows\n5\n0 5\n# between\n2 1\n"))));
    EXPECT_EQ((std::vector<std::uint8_t>{0, 255, 255, 0}), GreyOf(*Read(FromText("P1\n2 2\n10\n0 1"))));
    EXPECT_EQ((std::vector<std::uint8_t>{static_cast<std::uint8_t>(255u * 13937u >> 16)}),
              GreyOf(*Read(FromText("P3 1 1 255 255 0 0"))));
}

TEST(FormatsPnm, BitsBeginInTheHighestAndRowsInANewByte)
{
    EXPECT_EQ((std::vector<std::uint8_t>{0, 255, 255, 255, 255, 255, 255, 255, 0, 255, 255, 255, 255, 255, 255, 255,
                                         255, 255}),
              GreyOf(*Read(FromText("P4 9 2\n\x80\x80" + std::string("\0\0", 2)))));
}

TEST(FormatsPnm, DamagedFilesAreRefused)
{
    for (const char* szText :
         {"P5 ", "P5 3", "P5 3 3", "P5 3 3 0 ", "P5 3 3 65536 ", "P5 99999999999 1 255 ", "P5 3 x 255 ",
          "P5 3 3 255 12345678", "P2 1 1 5 6", "P2 1 1 5", "P1 1 1 2", "P5 2 1 5 \x05\x06"})
    {
        EXPECT_EQ(FPC_ERROR_CORRUPT_DATA, CodeOf(FromText(szText))) << szText;
    }
    EXPECT_EQ(FPC_ERROR_BITMAP_DIMENSION, CodeOf(FromText("P5 0 3 255 ")));
    EXPECT_EQ(FPC_ERROR_BITMAP_DIMENSION, CodeOf(FromText("P5 20001 3 255 ")));
}
