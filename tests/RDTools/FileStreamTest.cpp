#include "RDTools/FileStream.hpp"

#include "FailingHeap.hpp"
#include "TempFolder.hpp"
#include "TestTools.hpp"

#include <cerrno>
#include <cstring>
#include <string>
#include <sys/stat.h>

namespace
{
using Bytes = std::vector<unsigned char>;

const std::string sInvalid = "One(or more) parameter(s) is(are) invalid.\n";
const std::string sNoFile = "Unspecified I/O error.\nNo file open";
const std::string sNotClosed = "Unspecified I/O error.\nClFileStream::Close. Failed to Close";

/// A device on which no byte can be written.
constexpr char szFullDevice[] = "/dev/full";

TEST(FileStream, WritesAndReadsBack)
{
    const ClTempFolder cFolder;
    const std::string sName = cFolder.File("numbers");
    ClFileStream cStream(sName.c_str(), "wb");
    EXPECT_TRUE(cStream.IsSeekable());
    EXPECT_STREQ(sName.c_str(), cStream.Name());
    EXPECT_EQ(4u, cStream.WriteAutoSwap(1u));
    cStream.SetBigEndian(false);
    EXPECT_EQ(4u, cStream.WriteAutoSwap(1u));
    EXPECT_EQ(8, cStream.Pos());
    cStream.Close();
    EXPECT_EQ(nullptr, cStream.m_pFile);
    EXPECT_EQ((Bytes{0, 0, 0, 1, 1, 0, 0, 0}), FileBytes(sName));

    cStream.Open(sName.c_str(), "rb");
    unsigned int nValue = 0;
    EXPECT_EQ(4u, cStream.ReadAutoSwap(nValue));
    EXPECT_EQ(0x01000000u, nValue);
    EXPECT_EQ(4u, cStream.ReadAutoSwap(nValue));
    EXPECT_EQ(1u, nValue);
    EXPECT_EQ(0u, cStream.ReadAutoSwap(nValue));
}

TEST(FileStream, TellsItsSizeWithoutMoving)
{
    const ClTempFolder cFolder;
    WriteFileBytes(cFolder.File("a"), Bytes{1, 2, 3, 4, 5});
    ClFileStream cStream(cFolder.File("a").c_str(), "r+b");
    EXPECT_EQ(0, cStream.Seek(2, 0));
    EXPECT_EQ(5, cStream.Size());
    EXPECT_EQ(2, cStream.Pos());
    EXPECT_EQ(3u, cStream.BytesAhead());
    EXPECT_EQ(0, cStream.Seek(-1, 2));
    EXPECT_EQ(4, cStream.Pos());
    EXPECT_EQ(0, cStream.Seek(-2, 1));
    EXPECT_EQ(2, cStream.Pos());
    EXPECT_NE(0, cStream.Seek(-1, 0));
    EXPECT_NE(0, cStream.Seek(0, 7));
    EXPECT_EQ(2, cStream.Pos());
    cStream.Seek(0, 2);
    EXPECT_EQ(3u, cStream.WriteRaw("abc", 3));
    EXPECT_EQ(8, cStream.Size());
}

TEST(FileStream, ReadingAndWritingMayAlternate)
{
    const ClTempFolder cFolder;
    WriteFileBytes(cFolder.File("a"), Bytes{1, 2, 3, 4});
    {
        ClFileStream cStream(cFolder.File("a").c_str(), "r+b");
        unsigned char cRead = 0;
        EXPECT_EQ(1u, cStream.ReadRaw(&cRead, 1));
        EXPECT_EQ(1u, cStream.WriteRaw("x", 1));
        EXPECT_EQ(1u, cStream.ReadRaw(&cRead, 1));
        EXPECT_EQ(3, cRead);
        EXPECT_EQ(1u, cStream.WriteRaw("y", 1));
    }
    EXPECT_EQ((Bytes{1, 'x', 3, 'y'}), FileBytes(cFolder.File("a")));
}

TEST(FileStream, BitsOfANewFileAreFilledUpAndOfAnOldOneMerged)
{
    const ClTempFolder cFolder;
    const std::string sName = cFolder.File("bits");
    {
        ClFileStream cStream(sName.c_str(), "wb"); // cannot read what stands in the file
        cStream.WriteBits(5, 3);
        cStream.BitFlush();
        EXPECT_EQ(1, cStream.Pos());
    }
    EXPECT_EQ(Bytes{0xA0}, FileBytes(sName));
    WriteFileBytes(sName, Bytes{0xFF, 0xFF, 0x0F});
    {
        ClFileStream cStream(sName.c_str(), "r+b");
        cStream.WriteBits(0, 11); // the destructor flushes
    }
    EXPECT_EQ((Bytes{0x00, 0x1F, 0x0F}), FileBytes(sName));
    {
        ClFileStream cStream(sName.c_str(), "r+b");
        EXPECT_EQ(0, cStream.BitSeek(13, 0));
        cStream.WriteBits(0, 9);
        cStream.Flush();
        EXPECT_EQ((Bytes{0x00, 0x18, 0x03}), FileBytes(sName));
        EXPECT_EQ(0, cStream.BitSeek(11, 0));
        unsigned int nValue = 0;
        cStream.ReadBits(nValue, 13);
        EXPECT_EQ(0x1803u, nValue);
    }
}

TEST(FileStream, BitsAreReadAndSoughtInAFileThatCannotBeWritten)
{
    const ClTempFolder cFolder;
    WriteFileBytes(cFolder.File("bits"), Bytes{0xA5, 0x3C});
    ClFileStream cStream(cFolder.File("bits").c_str(), "rb");
    unsigned int nValue = 0;
    cStream.ReadBits(nValue, 3);
    EXPECT_EQ(0, cStream.BitSeek(5, 0));
    cStream.ReadBits(nValue, 6);
    EXPECT_EQ(0x29u, nValue);
    cStream.Close();
}

TEST(FileStream, NullArgumentsAreRefused)
{
    ClFileStream cStream;
    EXPECT_RAISES(cStream.Open(nullptr, "rb"), ClException, -44, (sInvalid + "szName is NULL").c_str());
    EXPECT_RAISES(cStream.Open("a", nullptr), ClException, -44, (sInvalid + "szMode is NULL").c_str());
    const wchar_t* wszNone = nullptr;
    EXPECT_RAISES(cStream.Open(wszNone, L"rb"), ClException, -44,
                  (sInvalid + "the szName parameter is invalid.").c_str());
    EXPECT_RAISES(cStream.Open(L"a", wszNone), ClException, -44,
                  (sInvalid + "the szMode parameter is invalid.").c_str());
    EXPECT_RAISES_CODE(ClFileStream(static_cast<const char*>(nullptr), "rb"), -44);
    EXPECT_RAISES_CODE(ClFileStream(wszNone, L"rb"), -44);
}

TEST(FileStream, FileThatCannotBeOpenedIsNamed)
{
    const ClTempFolder cFolder;
    const std::string sName = cFolder.File("missing");
    const std::string sExpected = std::strerror(ENOENT) + ("\n" + sName);
    EXPECT_RAISES(ClFileStream(sName.c_str(), "rb"), ClExFilesystem, -200, sExpected.c_str());
    const std::string sBackslashed = cFolder.Path() + "\\missing";
    EXPECT_RAISES(ClFileStream(sBackslashed.c_str(), "rb"), ClExFilesystem, -200,
                  (std::strerror(ENOENT) + ("\n" + sBackslashed)).c_str());
    EXPECT_RAISES_CODE(ClFileStream(sName.c_str(), "no mode"), -200);
}

TEST(FileStream, NamesAreNormalised)
{
    const ClTempFolder cFolder;
    ClFileStream((cFolder.Path() + "\\a").c_str(), "wb").WriteRaw("x", 1);
    EXPECT_EQ(Bytes{'x'}, FileBytes(cFolder.File("a")));
}

TEST(FileStream, WideNamesAreConverted)
{
    const ClTempFolder cFolder;
    const std::string sName = cFolder.File("\xC3\xA4\xE2\x82\xAC");
    const std::wstring sWide = std::wstring(cFolder.Path().begin(), cFolder.Path().end()) + L"/\u00E4\u20AC";
    ClFileStream cStream(sWide.c_str(), L"wb");
    EXPECT_STREQ(sName.c_str(), cStream.Name());
    cStream.WriteRaw("x", 1);
    cStream.Close();
    EXPECT_EQ(Bytes{'x'}, FileBytes(sName));
    cStream.Open(sWide.c_str(), L"rb");
    EXPECT_EQ(1, cStream.Size());
}

TEST(FileStream, WithoutAFileOperationsTellSo)
{
    ClFileStream cStream;
    EXPECT_STREQ("Unknown Stream", cStream.Name());
    char cByte = 0;
    EXPECT_RAISES(cStream.ReadRaw(&cByte, 1), ClExStream, -204, sNoFile.c_str());
    EXPECT_RAISES(cStream.WriteRaw(&cByte, 1), ClExStream, -204, sNoFile.c_str());
    EXPECT_RAISES(cStream.Pos(), ClExStream, -204, sNoFile.c_str());
    EXPECT_RAISES(cStream.Size(), ClExStream, -204, sNoFile.c_str());
    EXPECT_RAISES(cStream.Seek(0, 0), ClExStream, -204, sNoFile.c_str());
    EXPECT_RAISES(cStream.Flush(), ClExStream, -204, sNoFile.c_str());
    EXPECT_RAISES(cStream.WriteAutoSwap(cByte), ClExStream, -204, sNoFile.c_str());
    cStream.Close(); // nothing to close is no failure
    cStream.WriteBits(1, 1);
    EXPECT_RAISES(cStream.Close(), ClExStream, -204, sNoFile.c_str());
    cStream.WriteBits(1, 1); // and the destructor keeps silent
}

TEST(FileStream, OpeningAgainClosesTheOldFileAndForgetsItsBits)
{
    const ClTempFolder cFolder;
    const long nOpen = OpenFiles();
    {
        ClFileStream cStream(cFolder.File("a").c_str(), "wb");
        cStream.WriteBits(1, 1);
        cStream.Open(cFolder.File("b").c_str(), "w+b");
        EXPECT_EQ(nOpen + 1, OpenFiles());
        EXPECT_EQ(1u, cStream.WriteAutoSwap('x'));
        cStream.Open(cStream.Name(), "rb"); // by its own name
        unsigned int nValue = 0;
        cStream.ReadBits(nValue, 3);
        cStream.Open(cFolder.File("a").c_str(), "rb");
        unsigned char cRead = 0;
        EXPECT_EQ(1u, cStream.ReadAutoSwap(cRead));
        EXPECT_EQ(0x80, cRead);
        EXPECT_RAISES_CODE(cStream.Open(cFolder.File("missing").c_str(), "rb"), -200);
        EXPECT_EQ(nullptr, cStream.m_pFile);
    }
    EXPECT_EQ(nOpen, OpenFiles());
    EXPECT_EQ(Bytes{'x'}, FileBytes(cFolder.File("b")));
}

TEST(FileStream, WhatCannotBeWrittenIsToldByCloseAndLeavesNoOpenFile)
{
    const long nOpen = OpenFiles();
    ClFileStream cStream(szFullDevice, "wb");
    EXPECT_EQ(1u, cStream.WriteRaw("x", 1)) << "the C library holds it back";
    EXPECT_RAISES(cStream.Close(), ClExStream, -204, sNotClosed.c_str());
    EXPECT_EQ(nullptr, cStream.m_pFile);
    EXPECT_EQ(nOpen, OpenFiles());

    const Bytes aMuch(1 << 20);
    cStream.Open(szFullDevice, "wb");
    EXPECT_GT(aMuch.size(), cStream.WriteRaw(aMuch.data(), aMuch.size()));
    EXPECT_RAISES(cStream.Close(), ClExStream, -204, sNotClosed.c_str());
    cStream.Close();

    cStream.Open(szFullDevice, "wb");
    cStream.WriteRaw("x", 1);
    EXPECT_RAISES_CODE(cStream.Flush(), -202);
    EXPECT_RAISES_CODE(cStream.Close(), -204);
    EXPECT_EQ(nOpen, OpenFiles());
}

TEST(FileStream, BitsThatCannotBeWrittenLeaveNoOpenFile)
{
    const ClTempFolder cFolder;
    WriteFileBytes(cFolder.File("a"), Bytes{1});
    const long nOpen = OpenFiles();
    ClFileStream cStream(cFolder.File("a").c_str(), "rb");
    cStream.WriteBits(1, 1);
    EXPECT_RAISES(cStream.Close(), ClExStreamFailToWrite, -202,
                  "Failed to write the data.\nFail to write BitBuffer into stream");
    EXPECT_EQ(nullptr, cStream.m_pFile);
    EXPECT_EQ(nOpen, OpenFiles());
}

TEST(FileStream, DestructorClosesAndKeepsSilent)
{
    const long nOpen = OpenFiles();
    {
        ClFileStream cStream(szFullDevice, "wb");
        cStream.WriteRaw("x", 1);
        cStream.WriteBits(1, 1);
    }
    EXPECT_EQ(nOpen, OpenFiles());
}

TEST(FileStream, PipeTellsNeitherPositionNorSize)
{
    const ClTempFolder cFolder;
    const std::string sName = cFolder.File("pipe");
    ASSERT_EQ(0, mkfifo(sName.c_str(), S_IRUSR | S_IWUSR));
    ClFileStream cStream(sName.c_str(), "r+b");
    EXPECT_EQ(-1, cStream.Pos());
    EXPECT_EQ(-1, cStream.Size());
    EXPECT_NE(0, cStream.Seek(0, 0));
    EXPECT_EQ(~0ul, cStream.BytesAhead());
}

TEST(FileStream, WithoutMemoryOpensNothing)
{
    const ClTempFolder cFolder;
    const std::string sName = cFolder.File("a");
    WriteFileBytes(sName, Bytes{1});
    const long nOpen = OpenFiles();
    EXPECT_GT(ExpectBadAllocAtEveryAllocation([&] { ClFileStream(sName.c_str(), "rb").Close(); }), 0);
    EXPECT_EQ(nOpen, OpenFiles());
}
} // namespace
