#include "RDTools/FileSystem.hpp"

#include "FailingHeap.hpp"
#include "TestTools.hpp"

#include <cstdlib>
#include <optional>
#include <string>

namespace
{
/// Sets an environment variable, or removes it for null, while it lives.
class ClEnvironment
{
public:
    ClEnvironment(const char* szName, const char* szValue) : m_szName(szName)
    {
        if (const char* szOld = std::getenv(szName))
        {
            m_sOld = szOld;
        }
        Set(szValue);
    }
    ClEnvironment(const ClEnvironment&) = delete;
    ClEnvironment& operator=(const ClEnvironment&) = delete;
    ~ClEnvironment() { Set(m_sOld ? m_sOld->c_str() : nullptr); }

private:
    void Set(const char* szValue) { szValue != nullptr ? setenv(m_szName, szValue, 1) : unsetenv(m_szName); }

    const char* m_szName;
    std::optional<std::string> m_sOld;
};

constexpr char szEmptyName[] = "One(or more) parameter(s) is(are) invalid.\nthe szFileName is empty";
} // namespace

TEST(FileSystem, NormalizedNamesHoldSlashesOnly)
{
    EXPECT_EQ("data/slap 1/a.bmp", FileSystem::NormalizeFilename("data\\slap 1/a.bmp"));
    EXPECT_EQ("//a//../b/", FileSystem::NormalizeFilename("\\\\a\\/..\\b\\"));
    EXPECT_EQ("a.bmp", FileSystem::NormalizeFilename("a.bmp"));
    EXPECT_EQ("", FileSystem::NormalizeFilename(""));
    EXPECT_EQ("\xC3\xA4/\xFF", FileSystem::NormalizeFilename("\xC3\xA4\\\xFF")); // any bytes are a name
}

TEST(FileSystem, NormalizedWideNamesAreTheSameInWide)
{
    const ClEnvironment cHome("HOME", "/users/\xC3\xA4");
    EXPECT_EQ(L"data/\u00E4/a.bmp", FileSystem::NormalizeFilename(L"data\\\u00E4\\a.bmp"));
    EXPECT_EQ(L"/users/\u00E4/a.bmp", FileSystem::NormalizeFilename(L"~\\a.bmp"));
    EXPECT_EQ(L"", FileSystem::NormalizeFilename(L""));
    const wchar_t anSurrogate[] = {static_cast<wchar_t>(0xD800), 0};
    EXPECT_RAISES(FileSystem::NormalizeFilename(anSurrogate), ClExSystem, -105,
                  "Invalid or incomplete multibyte or wide character\nConversions Error");
}

TEST(FileSystem, ATildeAsFirstComponentIsTheHomeDirectory)
{
    const ClEnvironment cHome("HOME", "/users/me");
    EXPECT_EQ("/users/me", FileSystem::NormalizeFilename("~"));
    EXPECT_EQ("/users/me/a.bmp", FileSystem::NormalizeFilename("~/a.bmp"));
    EXPECT_EQ("/users/me/a.bmp", FileSystem::NormalizeFilename("~\\a.bmp"));
    EXPECT_EQ("~other/a.bmp", FileSystem::NormalizeFilename("~other/a.bmp"));
    EXPECT_EQ("./~/a.bmp", FileSystem::NormalizeFilename("./~/a.bmp"));
}

TEST(FileSystem, ATildeStaysWithoutAHomeDirectory)
{
    for (const char* szHome : {static_cast<const char*>(nullptr), ""})
    {
        const ClEnvironment cHome("HOME", szHome);
        EXPECT_EQ("~/a.bmp", FileSystem::NormalizeFilename("~/a.bmp"));
    }
}

TEST(FileSystem, NormalizingRefusesNull)
{
    EXPECT_RAISES(FileSystem::NormalizeFilename(static_cast<const char*>(nullptr)), ClException, -44, szEmptyName);
    EXPECT_RAISES(FileSystem::NormalizeFilename(static_cast<const wchar_t*>(nullptr)), ClException, -44, szEmptyName);
}

TEST(FileSystem, NormalizingWithAnExhaustedHeapComesOutAsBadAlloc)
{
    const ClEnvironment cHome("HOME", "/users/with/a/name/that/no/short/text/can/hold");
    EXPECT_GE(ExpectBadAllocAtEveryAllocation([] { FileSystem::NormalizeFilename("~/a.bmp"); }), 1);
    EXPECT_GE(ExpectBadAllocAtEveryAllocation([] { FileSystem::NormalizeFilename(L"~/a.bmp"); }), 2);
}
