#include "Thumbnail.hpp"

#include "Formats.hpp"
#include "PictureFiles.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>

using namespace SegmentTool;
using namespace PictureFiles;

namespace
{
Bytes_t FromBase64(const std::string& sText)
{
    const std::string sDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    Bytes_t aBytes;
    unsigned int nBuffer = 0;
    int nBits = 0;
    for (const char c : sText)
    {
        if (c == '=') break;
        nBuffer = nBuffer << 6 | static_cast<unsigned int>(sDigits.find(c));
        nBits += 6;
        if (nBits < 8) continue;
        nBits -= 8;
        aBytes.push_back(static_cast<unsigned char>(nBuffer >> nBits & 255u));
    }
    return aBytes;
}

std::unique_ptr<ClPicture> Thumbnail(ClPicture& cPicture)
{
    const std::string sUri = ThumbnailUri(cPicture);
    EXPECT_EQ(0u, sUri.find("data:image/")) << sUri.substr(0, 30);
    const Bytes_t aFile = FromBase64(sUri.substr(sUri.find(',') + 1));
    auto pThumbnail = std::make_unique<ClPicture>();
    ReadPicture(FormatOf(aFile), aFile, *pThumbnail);
    return pThumbnail;
}
} // namespace

TEST(Base64, IsThatOfTheStandard)
{
    const std::pair<const char*, const char*> aszCases[] = {{"", ""},
                                                            {"f", "Zg=="},
                                                            {"fo", "Zm8="},
                                                            {"foo", "Zm9v"},
                                                            {"foob", "Zm9vYg=="},
                                                            {"fooba", "Zm9vYmE="},
                                                            {"foobar", "Zm9vYmFy"}};
    for (const auto& [szText, szExpected] : aszCases) EXPECT_EQ(szExpected, Base64(FromText(szText)));
    EXPECT_EQ("+/+/", Base64({0xfb, 0xff, 0xbf}));
}

TEST(Thumbnail, ALargePictureShrinksInProportion)
{
    ClPicture cPicture;
    cPicture.Create(1000, 500);
    for (int y = 0; y < 250; ++y) std::memset(cPicture.RowFromTop(y), 60, 1000); // the upper half is dark
    const auto pThumbnail = Thumbnail(cPicture);
    EXPECT_EQ(320, pThumbnail->Width());
    EXPECT_EQ(160, pThumbnail->Height());
    EXPECT_NEAR(60, pThumbnail->RowFromTop(10)[100], 6);
    EXPECT_NEAR(255, pThumbnail->RowFromTop(150)[100], 6);
}

TEST(Thumbnail, ASmallPictureKeepsItsSize)
{
    ClPicture cPicture;
    cPicture.Create(320, 7);
    EXPECT_EQ(320, Thumbnail(cPicture)->Width());
    EXPECT_EQ(7, Thumbnail(cPicture)->Height());
    ClPicture cPixel;
    cPixel.Create(1, 1);
    EXPECT_EQ(1, Thumbnail(cPixel)->Width());
}

TEST(Thumbnail, ANarrowPictureKeepsAPixel)
{
    ClPicture cPicture;
    cPicture.Create(2, 20000);
    EXPECT_EQ(1, Thumbnail(cPicture)->Width());
    EXPECT_EQ(320, Thumbnail(cPicture)->Height());
}
