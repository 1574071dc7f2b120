#include "RDTools/File.hpp"

#include "FailingHeap.hpp"
#include "TempFolder.hpp"
#include "TestTools.hpp"

#include <cerrno>
#include <cstring>
#include <sys/stat.h>

namespace
{
using Bytes = std::vector<unsigned char>;

std::string SystemText(int nError, const std::string& sComment)
{
    return std::strerror(nError) + ("\n" + sComment);
}

TEST(File, SeeksTellsAndFindsTheEnd)
{
    const ClTempFolder cFolder;
    WriteFileBytes(cFolder.File("a"), Bytes{1, 2, 3, 4, 5});
    ClFile cFile(cFolder.File("a").c_str(), "rb");
    ASSERT_NE(nullptr, cFile.m_pFile);
    EXPECT_EQ(0, cFile.Tell());
    EXPECT_EQ(5, cFile.Size());
    EXPECT_EQ(0, cFile.Tell());
    cFile.Seek(-2, 2);
    cFile.Seek(1, 1);
    EXPECT_EQ(4, cFile.Tell());
    EXPECT_EQ(5, cFile.Size());
    EXPECT_EQ(4, cFile.Tell());
    EXPECT_EQ(5, std::getc(cFile.m_pFile));
    EXPECT_FALSE(cFile.Eof());
    EXPECT_EQ(EOF, std::getc(cFile.m_pFile));
    EXPECT_TRUE(cFile.Eof());
    cFile.Seek(0, 0);
    EXPECT_FALSE(cFile.Eof());
}

TEST(File, FlushWritesWhatTheLibraryHoldsBack)
{
    const ClTempFolder cFolder;
    ClFile cFile(cFolder.File("a").c_str(), "wb");
    std::fputc('x', cFile.m_pFile);
    cFile.Flush();
    EXPECT_EQ(Bytes{'x'}, FileBytes(cFolder.File("a")));
}

TEST(File, FileThatCannotBeOpenedIsGivenByItsNormalisedName)
{
    const ClTempFolder cFolder;
    const std::string sExpected = SystemText(ENOENT, cFolder.File("missing"));
    EXPECT_RAISES(ClFile((cFolder.Path() + "\\missing").c_str(), "rb"), ClExFilesystem, -200, sExpected.c_str());
}

TEST(File, NullArgumentsAreRefused)
{
    const std::string sInvalid = "One(or more) parameter(s) is(are) invalid.\n";
    const char* szNone = nullptr;
    const wchar_t* wszNone = nullptr;
    EXPECT_RAISES(ClFile(szNone, "rb"), ClException, -44, (sInvalid + "szName is NULL").c_str());
    EXPECT_RAISES(ClFile("a", szNone), ClException, -44, (sInvalid + "szMode is NULL").c_str());
    EXPECT_RAISES(ClFile(wszNone, L"rb"), ClException, -44, (sInvalid + "the szName parameter is invalid.").c_str());
    EXPECT_RAISES(ClFile(L"a", wszNone), ClException, -44, (sInvalid + "the szMode parameter is invalid.").c_str());
}

TEST(File, WideNamesAreConverted)
{
    const ClTempFolder cFolder;
    WriteFileBytes(cFolder.File("\xC3\xA4"), Bytes{1, 2, 3});
    const std::wstring sWide(cFolder.Path().begin(), cFolder.Path().end());
    EXPECT_EQ(3, ClFile((sWide + L"/\u00E4").c_str(), L"rb").Size());
}

TEST(File, OpeningAgainClosesTheOldFile)
{
    const ClTempFolder cFolder;
    const long nOpen = OpenFiles();
    {
        ClFile cFile(cFolder.File("a").c_str(), "wb");
        cFile.Open(cFolder.File("b").c_str(), "wb");
        EXPECT_EQ(nOpen + 1, OpenFiles());
        EXPECT_RAISES_CODE(cFile.Open(cFolder.File("missing").c_str(), "rb"), -200);
        EXPECT_EQ(nullptr, cFile.m_pFile);
        EXPECT_EQ(nOpen, OpenFiles());
        cFile.Open(cFolder.File("b").c_str(), "rb");
    }
    EXPECT_EQ(nOpen, OpenFiles());
}

TEST(File, FailingCallsAreNamed)
{
    const ClTempFolder cFolder;
    const std::string sPipe = cFolder.File("pipe");
    ASSERT_EQ(0, mkfifo(sPipe.c_str(), S_IRUSR | S_IWUSR));
    ClFile cPipe(sPipe.c_str(), "r+b");
    EXPECT_RAISES(cPipe.Seek(0, 0), ClExSystem, -105, SystemText(ESPIPE, "fseek").c_str());
    EXPECT_RAISES(cPipe.Tell(), ClExSystem, -105, SystemText(ESPIPE, "ftell").c_str());
    EXPECT_RAISES(cPipe.Size(), ClExSystem, -105, SystemText(ESPIPE, "ftell").c_str());

    const long nOpen = OpenFiles();
    ClFile cFull("/dev/full", "wb");
    std::fputc('x', cFull.m_pFile);
    EXPECT_RAISES(cFull.Flush(), ClExSystem, -105, SystemText(ENOSPC, "fflush").c_str());
    std::fputc('x', cFull.m_pFile);
    EXPECT_RAISES(cFull.Close(), ClExSystem, -105, SystemText(ENOSPC, "fclose").c_str());
    EXPECT_EQ(nullptr, cFull.m_pFile);
    EXPECT_EQ(nOpen, OpenFiles());
    cFull.Open("/dev/full", "wb");
    std::fputc('x', cFull.m_pFile);
    EXPECT_RAISES(cFull.Open(sPipe.c_str(), "r+b"), ClExSystem, -105, SystemText(ENOSPC, "fclose").c_str());
    cFull.Open("/dev/full", "wb");
    std::fputc('x', cFull.m_pFile); // and the destructor keeps silent
}

TEST(File, WithoutAFileEveryCallFails)
{
    const ClTempFolder cFolder;
    ClFile cFile(cFolder.File("a").c_str(), "wb");
    cFile.Close();
    cFile.Close();
    EXPECT_RAISES(cFile.Flush(), ClExSystem, -105, SystemText(EBADF, "fflush").c_str());
    EXPECT_RAISES(cFile.Eof(), ClExSystem, -105, SystemText(EBADF, "feof").c_str());
    EXPECT_RAISES(cFile.Seek(0, 0), ClExSystem, -105, SystemText(EBADF, "fseek").c_str());
    EXPECT_RAISES(cFile.Tell(), ClExSystem, -105, SystemText(EBADF, "ftell").c_str());
    EXPECT_RAISES(cFile.Size(), ClExSystem, -105, SystemText(EBADF, "ftell").c_str());
}

TEST(File, CompareTellsWhetherTwoFilesHoldTheSame)
{
    const ClTempFolder cFolder;
    const auto same = [&](const std::string& sFirst, const std::string& sSecond, bool bText)
    {
        WriteFileBytes(cFolder.File("a"), Bytes(sFirst.begin(), sFirst.end()));
        WriteFileBytes(cFolder.File("b"), Bytes(sSecond.begin(), sSecond.end()));
        const bool bSame = ClFile::Compare(cFolder.File("a").c_str(), cFolder.File("b").c_str(), bText);
        EXPECT_EQ(bSame, ClFile::Compare(cFolder.File("b").c_str(), cFolder.File("a").c_str(), bText));
        return bSame;
    };
    for (const bool bText : {false, true})
    {
        EXPECT_TRUE(same("", "", bText));
        EXPECT_TRUE(same("hand\r\n\xFF", "hand\r\n\xFF", bText));
        EXPECT_FALSE(same("hand", "hands", bText));
        EXPECT_FALSE(same("hand", "hang", bText));
        EXPECT_FALSE(same("\xFF", "", bText));
        EXPECT_EQ(bText, same("a\r\nb\r\n", "a\nb\r\n", bText));
        EXPECT_FALSE(same("a\rb", "a\nb", bText));
        EXPECT_FALSE(same("a\r", "a", bText));
        EXPECT_FALSE(same("a\r", "a\n", bText));
        EXPECT_FALSE(same("\r\r\n", "\r\n", bText)) << "of two carriage returns the first stays";
    }
}

TEST(File, CompareRaisesWhatItCannotRead)
{
    const ClTempFolder cFolder;
    WriteFileBytes(cFolder.File("a"), Bytes{1});
    const long nOpen = OpenFiles();
    const std::string sFile = cFolder.File("a");
    EXPECT_RAISES_CODE(ClFile::Compare(sFile.c_str(), cFolder.File("missing").c_str(), false), -200);
    EXPECT_RAISES(ClFile::Compare(cFolder.Path().c_str(), sFile.c_str(), false), ClExSystem, -105,
                  SystemText(EISDIR, "getc").c_str());
    EXPECT_EQ(nOpen, OpenFiles());
}

TEST(File, WithoutMemoryOpensNothing)
{
    const ClTempFolder cFolder;
    const std::string sName = cFolder.File("a");
    WriteFileBytes(sName, Bytes{1});
    const long nOpen = OpenFiles();
    EXPECT_GT(ExpectBadAllocAtEveryAllocation([&] { ClFile(sName.c_str(), "rb").Close(); }), 0);
    EXPECT_EQ(nOpen, OpenFiles());
}
} // namespace
