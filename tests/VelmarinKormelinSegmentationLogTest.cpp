// What the exported functions write while the log is on.

#include "LibraryFixture.hpp"
#include "VelmarinKormelinSegmentation.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <string>

namespace
{
std::string Format(const char* szFormat, ...) __attribute__((format(printf, 1, 2)));
std::string Format(const char* szFormat, ...)
{
    char szText[512];
    va_list args;
    va_start(args, szFormat);
    std::vsnprintf(szText, sizeof szText, szFormat, args);
    va_end(args);
    return szText;
}

std::string Success(const std::string& sHead)
{
    return "[Debug] - " + sHead + " Enter\n[Debug] - " + sHead + " Leave\n";
}

std::string Failure(const std::string& sHead, int nCode, const char* szText)
{
    return "[Debug] - " + sHead + " Enter\n[Error] - " + sHead + Format(" Error(%d): %s\n", nCode, szText);
}
} // namespace

TEST(LibraryLog, InitialisationLines)
{
    EXPECT_EQ(Failure("KSUninitialize(void)", -2, "Prior initialization is necessary."),
              Logged(7, [] { KSUninitialize(); }));
    const char* szText = "text";
    EXPECT_EQ(Success(Format("KSInitialize(%p)", static_cast<const void*>(szText))),
              Logged(7, [&] { KSInitialize(szText); }));
    EXPECT_EQ(Success("KSUninitialize(void)"), Logged(7, [] { KSUninitialize(); }));
    EXPECT_EQ("", Logged(7, [] { KSGetErrorDescriptionA(-2); }));
}

TEST(LibraryLog, LevelThreeShowsErrorsOnly)
{
    EXPECT_EQ("[Error] - KSUninitialize(void) Error(-2): Prior initialization is necessary.\n",
              Logged(3, [] { KSUninitialize(); }));
    EXPECT_EQ("", Logged(3, [] { KSInitialize(nullptr); }));
    EXPECT_EQ("", Logged(3, [] { KSUninitialize(); }));
    EXPECT_EQ("", Logged(2, [] { KSUninitialize(); }));
}

TEST(LibraryLog, VersionLines)
{
    char szVersion[11];
    unsigned long nSize = 0;
    const std::string sHead =
        Format("KSGetVersionA(%p, %p)", static_cast<void*>(szVersion), static_cast<void*>(&nSize));
    EXPECT_EQ(Failure(sHead, -21, "The size of the finger template is not valid."),
              Logged(7, [&] { KSGetVersionA(szVersion, &nSize); }));
    EXPECT_EQ(Success(sHead), Logged(7, [&] { KSGetVersionA(szVersion, &nSize); }));
}

TEST_F(VelmarinKormelinSegmentation, LogLinesOfCreateAndDestroy)
{
    void* hHandle = nullptr;
    void* const pAddress = &hHandle;
    EXPECT_EQ(Success(Format("KSCreateSegmentationHandle(%p)", pAddress)),
              Logged(7, [&] { KSCreateSegmentationHandle(&hHandle); }));
    EXPECT_EQ(Success(Format("KSDestroyHandle(%p)", pAddress)), Logged(7, [&] { KSDestroyHandle(&hHandle); }));
    EXPECT_EQ(Failure(Format("KSDestroyHandle(%p)", pAddress), -42, "The handle parameter is set to NULL."),
              Logged(7, [&] { KSDestroyHandle(&hHandle); }));
    EXPECT_EQ(Success(Format("KSCreateSegmentHandle(%p)", pAddress)),
              Logged(7, [&] { KSCreateSegmentHandle(&hHandle); }));
    EXPECT_EQ(Failure("KSCreateSegmentHandle((nil))", -701, "The pointer is bad or invalid."),
              Logged(7, [&] { KSCreateSegmentHandle(nullptr); }));
    KSDestroyHandle(&hHandle);
}

TEST_F(VelmarinKormelinSegmentation, LogLinesOfTextProperties)
{
    const char* szName = "SegmentationMode";
    const void* pName = szName;
    char szText[8] = "1";
    void* const pText = szText;
    unsigned long nSize = sizeof szText;
    void* const pSize = &nSize;
    EXPECT_EQ(Success(Format("KSSetPropertyA(%p, %p, %p)", m_hSegmentation, pName, pText)),
              Logged(7, [&] { KSSetPropertyA(m_hSegmentation, szName, szText); }));
    const std::string sHead = Format("KSGetPropertyA(%p, %p, %p, %p)", m_hSegmentation, pName, pText, pSize);
    EXPECT_EQ(Success(sHead), Logged(7, [&] { KSGetPropertyA(m_hSegmentation, szName, szText, &nSize); }));
    nSize = 0;
    EXPECT_EQ(Failure(sHead, -21, "The size of the finger template is not valid."),
              Logged(7, [&] { KSGetPropertyA(m_hSegmentation, szName, szText, &nSize); }));
    EXPECT_EQ(Failure("KSSetPropertyA((nil), (nil), (nil))", -42, "The handle parameter is set to NULL."),
              Logged(7, [] { KSSetPropertyA(nullptr, nullptr, nullptr); }));
}

TEST_F(VelmarinKormelinSegmentation, LogLinesOfNumbers)
{
    const char* szName = "SegmentationMode";
    const void* pName = szName;
    long nValue = 0;
    double dValue = 0.0;
    void* const pnValue = &nValue;
    void* const pdValue = &dValue;
    EXPECT_EQ(Success(Format("KSGetPropertyLongA(%p, %p, %p)", m_hSegmentation, pName, pnValue)),
              Logged(7, [&] { KSGetPropertyLongA(m_hSegmentation, szName, &nValue); }));
    EXPECT_EQ(Success(Format("KSSetPropertyLongA(%p, %p, 1)", m_hSegmentation, pName)),
              Logged(7, [&] { KSSetPropertyLongA(m_hSegmentation, szName, 1); }));
    EXPECT_EQ(Failure(Format("KSSetPropertyLongA(%p, %p, -9223372036854775808)", m_hSegmentation, pName), -35,
                      "One of the parameters is out of range."),
              Logged(7, [&] { KSSetPropertyLongA(m_hSegmentation, szName, LONG_MIN); }));
    EXPECT_EQ(Failure(Format("KSGetPropertyDoubleA(%p, %p, %p)", m_hSegmentation, pName, pdValue), -44,
                      "One(or more) parameter(s) is(are) invalid."),
              Logged(7, [&] { KSGetPropertyDoubleA(m_hSegmentation, szName, &dValue); }));
    EXPECT_EQ(Failure(Format("KSSetPropertyDoubleA(%p, %p, 1.500000)", m_hSegmentation, pName), -44,
                      "One(or more) parameter(s) is(are) invalid."),
              Logged(7, [&] { KSSetPropertyDoubleA(m_hSegmentation, szName, 1.5); }));
}

TEST_F(VelmarinKormelinSegmentation, LogLinesOfSegmentation)
{
    SetLong("SegmentationMode", 1);
    const ClReadOnlyBytes cBlock(OneObject());
    const void* pBlock = cBlock.Data();
    EXPECT_EQ(Success(Format("KSSegmentBitmap(%p, %p, %zu)", m_hSegmentation, pBlock, cBlock.Size())),
              Logged(7, [&] { SegmentReadOnly(m_hSegmentation, cBlock); }));
    EXPECT_EQ(Failure(Format("KSSegmentBitmap(%p, (nil), 18446744073709551615)", m_hSegmentation), -10,
                      "The input image is not valid."),
              Logged(7, [&] { KSSegmentBitmap(m_hSegmentation, nullptr, ULONG_MAX); }));
    // The segment handle as a number, and a fourth value that no argument stands for.
    const auto nSegment = reinterpret_cast<std::size_t>(m_hSegment);
    EXPECT_EQ(Success(Format("KSGetSegment(%p, 0, %zu, (nil))", m_hSegmentation, nSegment)),
              Logged(7, [&] { KSGetSegment(m_hSegmentation, 0, m_hSegment); }));
    EXPECT_EQ(Failure(Format("KSGetSegment(%p, 1, %zu, (nil))", m_hSegmentation, nSegment), -35,
                      "One of the parameters is out of range."),
              Logged(7, [&] { KSGetSegment(m_hSegmentation, 1, m_hSegment); }));
    unsigned long nSize = ULONG_MAX;
    void* const pSize = &nSize;
    EXPECT_EQ(Success(Format("KSGetBitmap(%p, (nil), %p)", m_hSegment, pSize)),
              Logged(7, [&] { KSGetBitmap(m_hSegment, nullptr, &nSize); }));
    EXPECT_EQ(
        Failure(Format("KSGetBitmap(%p, (nil), (nil))", m_hSegment), -37, "One of the required parameter is missing."),
        Logged(7, [&] { KSGetBitmap(m_hSegment, nullptr, nullptr); }));
}
