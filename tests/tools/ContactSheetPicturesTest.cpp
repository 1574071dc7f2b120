#include "ContactSheetPictures.hpp"

#include "TestTools.hpp"

#include <array>
#include <cmath>
#include <limits>
#include <set>

namespace
{
using Colour_t = std::array<int, 3>;
constexpr Colour_t cWhite{255, 255, 255};
constexpr Colour_t cBlack{0, 0, 0};
constexpr Colour_t cRed{255, 0, 0};

Colour_t At(const ClSheetPicture& cPicture, int nX, int nY)
{
    const std::uint8_t* pPixel = cPicture.At(nX, nY);
    return {pPixel[0], pPixel[1], pPixel[2]};
}

Colour_t Grey(int nValue)
{
    return {nValue, nValue, nValue};
}

/// Two columns and two rows, the lower row first.
template <class T> void Make(ClImage& cImage, unsigned char eType, std::array<T, 4> aSamples)
{
    cImage.NewWithType(eType, 2, 2, 1, 0, 0);
    for (int i = 0; i < 4; ++i) Row<T>(cImage, i / 2)[i % 2] = aSamples[static_cast<std::size_t>(i)];
}
} // namespace

TEST(ContactSheetPictures, TheLastRowOfAnImageIsTheUppermost)
{
    ClImage cImage;
    Make<unsigned char>(cImage, ClImage::eUInt8, {0, 10, 200, 255});
    const ClSheetPicture cPicture = ShowImage(cImage);
    EXPECT_EQ(Grey(200), At(cPicture, 0, 0));
    EXPECT_EQ(Grey(255), At(cPicture, 1, 0));
    EXPECT_EQ(Grey(0), At(cPicture, 0, 1));
    EXPECT_EQ(Grey(10), At(cPicture, 1, 1));
}

TEST(ContactSheetPictures, SignedBytesAreShown128Brighter)
{
    ClImage cImage;
    Make<signed char>(cImage, ClImage::eSInt8, {-128, -1, 0, 127});
    const ClSheetPicture cPicture = ShowImage(cImage);
    EXPECT_EQ(Grey(0), At(cPicture, 0, 1));
    EXPECT_EQ(Grey(127), At(cPicture, 1, 1));
    EXPECT_EQ(Grey(128), At(cPicture, 0, 0));
    EXPECT_EQ(Grey(255), At(cPicture, 1, 0));
}

TEST(ContactSheetPictures, OtherTypesAreStretchedFromTheSmallestToTheLargestSample)
{
    ClImage cImage;
    Make<int>(cImage, ClImage::eSInt32, {-1000, 1000, 0, -1000});
    EXPECT_EQ(cBlack, At(ShowImage(cImage), 0, 1));
    EXPECT_EQ(cWhite, At(ShowImage(cImage), 1, 1));
    EXPECT_EQ(Grey(128), At(ShowImage(cImage), 0, 0));
    Make<double>(cImage, ClImage::eDouble64, {0.5, std::nan(""), 1.5, 1.0});
    EXPECT_EQ(cBlack, At(ShowImage(cImage), 0, 1));
    EXPECT_EQ(cBlack, At(ShowImage(cImage), 1, 1)) << "what is not a number";
    EXPECT_EQ(cWhite, At(ShowImage(cImage), 0, 0));
    EXPECT_EQ(Grey(128), At(ShowImage(cImage), 1, 0));
    Make<double>(cImage, ClImage::eDouble64, {7, 7, 7, 7});
    EXPECT_EQ(cBlack, At(ShowImage(cImage), 0, 0));
    const float fInfinite = std::numeric_limits<float>::infinity();
    Make<float>(cImage, ClImage::eFloat32, {-fInfinite, fInfinite, 0, 1});
    EXPECT_EQ(2, ShowImage(cImage).m_nHeight);
}

TEST(ContactSheetPictures, PlanesAreBlueGreenAndRed)
{
    ClImage cImage;
    for (const int nPlanes : {2, 3, 4})
    {
        cImage.NewWithType(ClImage::eUInt8, 1, 1, nPlanes, 0, 0);
        for (int i = 0; i < nPlanes; ++i) Row<unsigned char>(cImage, 0)[i] = static_cast<unsigned char>(10 + i);
        EXPECT_EQ((Colour_t{nPlanes == 2 ? 0 : 12, 11, 10}), At(ShowImage(cImage), 0, 0)) << nPlanes;
    }
}

TEST(ContactSheetPictures, EachLabelHasAColourOfItsOwnAndTheBackgroundIsWhite)
{
    ClImage cImage;
    cImage.NewWithType(ClImage::eSInt32, 255, 1, 1, 0, 0);
    for (int x = 0; x < 255; ++x) Row<int>(cImage, 0)[x] = x;
    const ClSheetPicture cPicture = ShowLabels(cImage, 0);
    std::set<Colour_t> aColours;
    for (int x = 0; x < 255; ++x) aColours.insert(At(cPicture, x, 0));
    EXPECT_EQ(cWhite, At(cPicture, 0, 0));
    EXPECT_LE(250u, aColours.size());
    EXPECT_EQ(cWhite, At(ShowLabels(cImage, 200), 200, 0));
    EXPECT_EQ(At(cPicture, 7, 0), At(ShowLabels(cImage, 200), 7, 0)) << "whatever else is in the picture";
}

TEST(ContactSheetPictures, BoxesAreFramesAndEndAtThePicture)
{
    ClSheetPicture cPicture(6, 5);
    DrawBox(cPicture, {1, 0, 3, 2});
    DrawBox(cPicture, {5, 4, 90, 90});
    DrawBox(cPicture, {-9, -9, -1, 90});
    int nRed = 0;
    for (int y = 0; y < 5; ++y)
    {
        for (int x = 0; x < 6; ++x) nRed += At(cPicture, x, y) == cRed ? 1 : 0;
    }
    EXPECT_EQ(9, nRed) << "eight pixels around one, and a corner";
    EXPECT_EQ(cRed, At(cPicture, 1, 4)) << "row 0 is the lowest";
    EXPECT_EQ(cWhite, At(cPicture, 2, 3));
    EXPECT_EQ(cRed, At(cPicture, 5, 0));
}

TEST(ContactSheetPictures, HistogramColumnsReachAsHighAsTheirShareOfTheHighest)
{
    ClHistogram cHistogram;
    cHistogram.m_anBins[0] = 3;
    cHistogram.m_anBins[1] = 1;
    cHistogram.m_anBins[255] = 2;
    const ClSheetPicture cPicture = ShowHistogram(cHistogram, 101);
    ASSERT_EQ(128, cPicture.m_nWidth);
    EXPECT_EQ(cBlack, At(cPicture, 0, 0));
    EXPECT_EQ(cWhite, At(cPicture, 127, cPicture.m_nHeight / 2 - 1));
    EXPECT_EQ(cBlack, At(cPicture, 127, cPicture.m_nHeight / 2));
    EXPECT_EQ(cWhite, At(cPicture, 1, cPicture.m_nHeight - 1));
    EXPECT_EQ(cRed, At(cPicture, 50, 0));
    EXPECT_EQ(cWhite, At(ShowHistogram(ClHistogram(), 0), 1, 0)) << "an empty one";
}

TEST(ContactSheetPictures, DescriptionsNameSizeTypeRangeAndPlanes)
{
    ClImage cImage;
    Make<signed char>(cImage, ClImage::eSInt8, {-5, 0, 7, 1});
    EXPECT_EQ("2x2 s8 -5..7", DescribeImage(cImage));
    Make<float>(cImage, ClImage::eFloat32, {0.25f, 1.5f, std::nanf(""), 1.0f});
    EXPECT_EQ("2x2 f32 0.25..1.5", DescribeImage(cImage));
    cImage.NewWithType(ClImage::eUInt16, 1, 1, 3, 0, 0);
    for (int i = 0; i < 3; ++i) Row<unsigned short>(cImage, 0)[i] = static_cast<unsigned short>(300 + i);
    EXPECT_EQ("1x1 u16 300..302 p3", DescribeImage(cImage));
}

TEST(ContactSheetPictures, InputsAreWhatTheirNamesSay)
{
    const ClSheetInputs c;
    EXPECT_EQ(162, c.m_cHand.m_nWidth);
    EXPECT_EQ(3937, c.m_cHand.m_nXRes);
    int nBlack = 0, nWhite = 0;
    for (int y = 0; y < c.m_cBinaryHand.m_nHeight; ++y)
    {
        for (int x = 0; x < c.m_cBinaryHand.m_nWidth; ++x)
        {
            nBlack += Row<unsigned char>(c.m_cBinaryHand, y)[x] == 0 ? 1 : 0;
            nWhite += Row<unsigned char>(c.m_cBinaryHand, y)[x] == 255 ? 1 : 0;
        }
    }
    EXPECT_EQ(162 * 162, nBlack + nWhite);
    EXPECT_NEAR(0.41, double(nBlack) / (162 * 162), 0.1) << "two fingertips";
    for (int y = 0; y < 160; ++y)
    {
        for (int x = 0; x < 160; ++x)
        {
            EXPECT_EQ(Row<unsigned char>(c.m_cRidges, y)[x] - 128, Row<signed char>(c.m_cSigned, y)[x]);
            const int nDx = Row<signed char>(c.m_cDirectionX, y)[x];
            const int nDy = Row<signed char>(c.m_cDirectionY, y)[x];
            EXPECT_NEAR(127.0, std::hypot(nDx, nDy), 1.0);
            // At right angles to the line from the middle; the second component counts against the rows.
            EXPECT_NEAR(0.0, (x - 79.5) * nDx - (y - 79.5) * nDy, 120.0);
        }
    }
}
