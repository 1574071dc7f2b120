#include "VelmarinKormelinSegmentation.hpp"

#include "SlapPicture.hpp"
#include "TestTools.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <optional>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace
{
using kormelin::Error;
using kormelin::GreyPicture;
using kormelin::Library;
using kormelin::Mode;
using kormelin::Origin;
using kormelin::Segment;
using kormelin::Segmentation;

/// The number of the kormelin::Error that body throws, 0 if none.
template <class Body> long CodeOf(Body&& body)
{
    try
    {
        body();
        return 0;
    }
    catch (const Error& e)
    {
        return e.Code();
    }
}

/// A white picture of 41 by 50 pixels, rows from the top, with a dark rectangle of 10 by 20 whose upper left pixel is
/// at column 6, row 19. Each pixel of it tells its row.
GreyPicture OneObject()
{
    GreyPicture cPicture{41, 50, 3937, std::vector<unsigned char>(41 * 50, 255)};
    for (std::size_t y = 19; y < 39; ++y) std::memset(&cPicture.m_aPixels[y * 41 + 6], static_cast<int>(y), 10);
    return cPicture;
}
} // namespace

TEST(CppInterface, HandlesMoveAndDoNotCopy)
{
    static_assert(std::is_nothrow_move_constructible_v<Segment> && std::is_nothrow_move_assignable_v<Segment>);
    static_assert(std::is_nothrow_move_constructible_v<Segmentation>);
    static_assert(!std::is_copy_constructible_v<Segment> && !std::is_copy_assignable_v<Segmentation>);
    static_assert(!std::is_copy_constructible_v<Library> && !std::is_move_constructible_v<Library>);

    const Library cLibrary;
    Segment cFirst, cSecond;
    void* const hFirst = cFirst.Get();
    cSecond = std::move(cFirst);
    EXPECT_EQ(hFirst, cSecond.Get());
    EXPECT_EQ(FPC_ERROR_NO_HANDLE, CodeOf([&] { cFirst.X(); })); // NOLINT(bugprone-use-after-move): it is defined
    EXPECT_EQ(0, CodeOf([&] { cSecond.X(); }));
}

TEST(CppInterface, HandlesNeedTheLibraryWhenTheyAreMadeAndNotAfterwards)
{
    EXPECT_EQ(FPC_ERROR_NOT_INITIALIZED, CodeOf([] { Segment(); }));
    EXPECT_EQ(FPC_ERROR_NOT_INITIALIZED, CodeOf([] { Segmentation(); }));
    std::optional<Segmentation> cRun;
    {
        const Library cOuter, cInner;
        cRun.emplace();
    }
    EXPECT_EQ(FPC_ERROR_NOT_INITIALIZED, CodeOf([] { Segment(); }));
    EXPECT_EQ(0u, cRun->Count());
}

TEST(CppInterface, ErrorTellsFunctionTextAndNumber)
{
    const Library cLibrary;
    try
    {
        Segmentation().Get(0);
        FAIL() << "nothing thrown";
    }
    catch (const Error& e)
    {
        EXPECT_EQ(FPC_ERROR_PARAM_OUT_OF_RANGE, e.Code());
        EXPECT_EQ(std::string("KSGetSegment: ") + KSGetErrorDescriptionA(e.Code()) + " (-35)", e.what());
    }
}

TEST(CppInterface, VersionIsThatOfTheHeader)
{
    EXPECT_EQ(std::to_string(KS_VERSION_MAIN) + "." + std::to_string(KS_VERSION_INTERFACE) + "." +
                  std::to_string(KS_VERSION_RELEASE) + "." + std::to_string(KS_VERSION_BUGFIX),
              kormelin::Version());
}

TEST(CppInterface, BiggestObjectComesBackAsTheRowsThatWentIn)
{
    const Library cLibrary;
    const GreyPicture cInput = OneObject();
    Segmentation cRun(Mode::eBiggest);
    cRun.Run(cInput);
    ASSERT_EQ(1u, cRun.Count());
    const Segment cObject = std::move(cRun.Segments().front());

    // The rectangle leaves out the object's last column and its top row.
    EXPECT_EQ(6, cObject.X());
    EXPECT_EQ(20, cObject.Y());
    EXPECT_EQ(9, cObject.Width());
    EXPECT_EQ(19, cObject.Height());
    EXPECT_EQ(0, cObject.FingerPosition());
    const GreyPicture cPicture = cObject.Picture();
    ASSERT_EQ(9u, cPicture.m_nWidth);
    ASSERT_EQ(19u, cPicture.m_nHeight);
    EXPECT_EQ(3937, cPicture.m_nPelsPerMetre);
    for (std::size_t y = 0; y < 19; ++y)
        for (std::size_t x = 0; x < 9; ++x) ASSERT_EQ(20 + y, cPicture.m_aPixels[y * 9 + x]) << x << ", " << y;

    cRun.SetOrigin(Origin::eBottom);
    EXPECT_EQ(11, cRun.Get(0).Y());
}

TEST(CppInterface, RowsWithAStrideAndAPackedBitmapGiveTheSame)
{
    const Library cLibrary;
    const GreyPicture cInput = OneObject();
    std::vector<unsigned char> aWide(49 * 64 + 41, 77); // the last row ends with its pixels
    for (std::size_t y = 0; y < 50; ++y) std::memcpy(&aWide[y * 64], &cInput.m_aPixels[y * 41], 41);
    const ClReadOnlyBytes cWide(aWide);
    const ClReadOnlyBytes cBitmap(kormelin::MakeBitmap(cWide.Data(), 41, 50, 64, 3937));
    EXPECT_EQ(40u + 1024 + 44 * 50, cBitmap.Size());

    Segmentation cStrided(Mode::eBiggest), cPacked(Mode::eBiggest);
    cStrided.Run(cWide.Data(), 41, 50, 64, 3937);
    cPacked.Run(cBitmap.Data(), cBitmap.Size());
    EXPECT_EQ(cStrided.Get(0).Bitmap(), cPacked.Get(0).Bitmap());
    EXPECT_EQ(cStrided.Get(0).Picture().m_aPixels, cPacked.Get(0).Picture().m_aPixels);
}

TEST(CppInterface, FingersLieAroundTheDrawnOnes)
{
    const Library cLibrary;
    const ClSlapPicture cPicture(SlapScenes::TwoFingers(19685));
    const ClReadOnlyBytes cFile(cPicture.BmpFile());
    Segmentation cRun(Mode::eFingers, Origin::eBottom);
    cRun.Run(cFile.Data(), cFile.Size());
    const auto aSegments = cRun.Segments();
    ASSERT_EQ(cPicture.m_aFingers.size(), aSegments.size());
    for (std::size_t i = 0; i < aSegments.size(); ++i)
    {
        const auto& cDrawn = cPicture.m_aFingers[i];
        EXPECT_LE(aSegments[i].X(), (cDrawn.left + cDrawn.right) / 2);
        EXPECT_GE(aSegments[i].X() + aSegments[i].Width(), (cDrawn.left + cDrawn.right) / 2);
        EXPECT_LE(aSegments[i].Y(), (cDrawn.bottom + cDrawn.top) / 2);
        EXPECT_GE(aSegments[i].Y() + aSegments[i].Height(), (cDrawn.bottom + cDrawn.top) / 2);
    }
}

TEST(CppInterface, PicturesThatAreNoneAreRefusedBeforeTheLibrary)
{
    const Library cLibrary;
    Segmentation cRun;
    const unsigned char aPixels[4] = {};
    const auto make = [&](std::size_t nWidth, std::size_t nHeight, std::size_t nStride, long nPels)
    { kormelin::MakeBitmap(aPixels, nWidth, nHeight, nStride, nPels); };
    EXPECT_NO_THROW(make(2, 2, 2, 0));
    EXPECT_THROW(make(0, 2, 2, 3937), std::invalid_argument);
    EXPECT_THROW(make(2, 0, 2, 3937), std::invalid_argument);
    EXPECT_THROW(make(2, 2, 1, 3937), std::invalid_argument);
    EXPECT_THROW(make(2, 2, 2, -1), std::invalid_argument);
    EXPECT_THROW(make(2, 2, 2, 0x80000000L), std::invalid_argument);
    EXPECT_THROW(make(0x10000, 0x8000, 0x10000, 3937), std::invalid_argument);
    EXPECT_THROW(make(~std::size_t{0}, 1, ~std::size_t{0}, 3937), std::invalid_argument);
    EXPECT_THROW(kormelin::MakeBitmap(nullptr, 2, 2, 2, 3937), std::invalid_argument);
    EXPECT_THROW(cRun.Run(GreyPicture{2, 3, 3937, {1, 2, 3, 4, 5}}), std::invalid_argument);
    EXPECT_EQ(FPC_ERROR_TEMPLATE_SIZE, CodeOf([&] { cRun.Run(aPixels, 0); }));
    EXPECT_EQ(FPC_ERROR_BITMAP_PTR, CodeOf([&] { cRun.Run(nullptr, 100); }));
    EXPECT_EQ(FPC_ERROR_PARAM_OUT_OF_RANGE, CodeOf([&] { cRun.Get(std::size_t{1} << 32); }));
    EXPECT_EQ(FPC_ERROR_EMPTY_HANDLE, CodeOf([] { Segment().Bitmap(); }));
}
