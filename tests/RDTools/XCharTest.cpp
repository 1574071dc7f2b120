#include "RDTools/XChar.hpp"

#include "FailingHeap.hpp"
#include "TestTools.hpp"

#include <cstring>
#include <limits>
#include <string>

namespace
{
constexpr wchar_t szWide[] = L"a\u00E4\u20AC\U0001F590";             // one, two, three and four bytes
constexpr char szNarrow[] = "a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x96\x90"; // the same in UTF-8

constexpr char szIllegal[] = "Invalid or incomplete multibyte or wide character\nConversions Error";
constexpr char szTooLong[] = "Argument list too long\nConversions Error"; // the system's text for a buffer too short
constexpr char szInvalid[] = "Invalid argument\nConversions Error";
} // namespace

TEST(XChar, WideCharactersBecomeUtf8OfEveryLength)
{
    const ClGuardedBytes cOut(10);
    EXPECT_EQ(10u, ConvertWideCharToSBCS(szWide, 4, reinterpret_cast<char*>(cOut.Data()), 10));
    EXPECT_EQ(0, std::memcmp(szNarrow, cOut.Data(), 10));
    EXPECT_EQ(szNarrow, SBCSFromWideChar(szWide));
}

TEST(XChar, Utf8BecomesWideCharacters)
{
    wchar_t anOut[5] = {1, 1, 1, 1, 1};
    EXPECT_EQ(4u, ConvertSBCSToWidechar(szNarrow, 10, anOut, 5));
    EXPECT_EQ(0, std::wmemcmp(szWide, anOut, 4));
    EXPECT_EQ(1, anOut[4]);
    EXPECT_EQ(szWide, WideCharFromSBCS(szNarrow));
}

TEST(XChar, TheTerminatorIsConvertedWhereItIsCounted)
{
    char szOut[8];
    std::memset(szOut, 'x', sizeof szOut);
    EXPECT_EQ(3u, ConvertWideCharToSBCS(L"ab", 3, szOut, sizeof szOut));
    EXPECT_EQ(0, std::memcmp("ab\0xxxxx", szOut, sizeof szOut));
    wchar_t szWideOut[3] = {L'x', L'x', L'x'};
    EXPECT_EQ(2u, ConvertSBCSToWidechar("a", 2, szWideOut, 3));
    EXPECT_EQ(0, std::wmemcmp(L"a\0x", szWideOut, 3));
}

TEST(XChar, NothingBecomesNothing)
{
    char cOut = 'x';
    wchar_t cWideOut = L'x';
    EXPECT_EQ(0u, ConvertWideCharToSBCS(L"a", 0, &cOut, 1));
    EXPECT_EQ(0u, ConvertWideCharToSBCS(nullptr, 0, nullptr, 0));
    EXPECT_EQ(0u, ConvertSBCSToWidechar("a", 0, &cWideOut, 1));
    EXPECT_EQ(0u, ConvertSBCSToWidechar(nullptr, 0, nullptr, 0));
    EXPECT_EQ('x', cOut);
    EXPECT_EQ(L'x', cWideOut);
    EXPECT_EQ("", SBCSFromWideChar(L""));
    EXPECT_EQ(L"", WideCharFromSBCS(""));
}

TEST(XChar, ABufferTooShortIsAnErrorAndNothingIsWrittenBehindIt)
{
    const ClGuardedBytes cOut(9);
    EXPECT_RAISES(ConvertWideCharToSBCS(szWide, 4, reinterpret_cast<char*>(cOut.Data()), 9), ClExSystem, -105,
                  szTooLong);
    EXPECT_RAISES(ConvertWideCharToSBCS(szWide, 4, nullptr, 0), ClExSystem, -105, szTooLong);
    wchar_t anOut[4] = {1, 1, 1, 1};
    EXPECT_RAISES(ConvertSBCSToWidechar(szNarrow, 10, anOut, 3), ClExSystem, -105, szTooLong);
    EXPECT_EQ(1, anOut[3]);
}

TEST(XChar, WhatIsNoTextIsAnError)
{
    char szOut[16];
    wchar_t anOut[16];
    EXPECT_RAISES(ConvertSBCSToWidechar("a\xFFz", 3, anOut, 16), ClExSystem, -105, szIllegal);
    EXPECT_RAISES(ConvertSBCSToWidechar("\xC0\xAF", 2, anOut, 16), ClExSystem, -105, szIllegal); // an overlong slash
    EXPECT_RAISES(ConvertSBCSToWidechar("\xE2\x82", 2, anOut, 16), ClExSystem, -105, szInvalid); // cut off
    const wchar_t anSurrogate[] = {L'a', static_cast<wchar_t>(0xD800)};
    EXPECT_RAISES(ConvertWideCharToSBCS(anSurrogate, 2, szOut, 16), ClExSystem, -105, szIllegal);
    const wchar_t anNegative[] = {static_cast<wchar_t>(-1)};
    EXPECT_RAISES(ConvertWideCharToSBCS(anNegative, 1, szOut, 16), ClExSystem, -105, szIllegal);
}

TEST(XChar, LargestWideCharacterFitsTheRoomOfAWholeText)
{
    for (const long nCharacter : {0x10FFFFL, 0x110000L, 0x7FFFFFFFL})
    {
        const wchar_t anText[] = {static_cast<wchar_t>(nCharacter), static_cast<wchar_t>(nCharacter), 0};
        try
        {
            EXPECT_LE(SBCSFromWideChar(anText).size(), 12u);
        }
        catch (const ClExSystem& cRaised) // whether it is a character at all is the system's to say
        {
            EXPECT_STREQ(szIllegal, cRaised.What());
        }
    }
}

TEST(XChar, NullPointersAndCountsBeyondMemoryAreErrors)
{
    char szOut[4];
    wchar_t anOut[4];
    constexpr unsigned long nMax = std::numeric_limits<unsigned long>::max();
    EXPECT_RAISES(ConvertWideCharToSBCS(nullptr, 1, szOut, 4), ClExSystem, -105, szInvalid);
    EXPECT_RAISES(ConvertWideCharToSBCS(L"a", 1, nullptr, 1), ClExSystem, -105, szInvalid);
    EXPECT_RAISES(ConvertWideCharToSBCS(L"a", nMax / 4 + 1, szOut, 4), ClExSystem, -105, szInvalid);
    EXPECT_RAISES(ConvertSBCSToWidechar(nullptr, 1, anOut, 4), ClExSystem, -105, szInvalid);
    EXPECT_RAISES(ConvertSBCSToWidechar("a", 1, nullptr, 1), ClExSystem, -105, szInvalid);
    EXPECT_RAISES(ConvertSBCSToWidechar("a", 1, anOut, nMax / 4 + 1), ClExSystem, -105, szInvalid);
}

TEST(XChar, AnExhaustedHeapComesOutAsBadAlloc)
{
    const std::string sLong(1000, 'x');
    const std::wstring sWideLong(1000, L'x');
    EXPECT_GE(ExpectBadAllocAtEveryAllocation([&] { EXPECT_EQ(sLong, SBCSFromWideChar(sWideLong.c_str())); }), 1);
    EXPECT_GE(ExpectBadAllocAtEveryAllocation([&] { EXPECT_EQ(sWideLong, WideCharFromSBCS(sLong.c_str())); }), 1);
}
