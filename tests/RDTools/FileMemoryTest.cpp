// What becomes of files, streams and pictures in memory when allocations fail, those of the C library among them.

#include "AllocationFailures.hpp"
#include "BmpFiles.hpp"
#include "MemoryStream.hpp"
#include "RDTools/Bitmap.hpp"
#include "RDTools/FileStream.hpp"
#include "RDTools/FileSystem.hpp"
#include "RDTools/FindFile.hpp"
#include "RDTools/FpImage.hpp"
#include "RDTools/XChar.hpp"
#include "TempFolder.hpp"
#include "TestTools.hpp"

#include <cerrno>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

namespace
{
/// A call that is made anew each time: fnCall does it and leaves what it gave in the text.
class ClPlainCase
{
public:
    using Call_t = std::function<void(std::string&)>;

    explicit ClPlainCase(const Call_t& fnCall) : m_fnCall(fnCall) {}
    long Call()
    {
        m_sSeen.clear();
        try
        {
            m_fnCall(m_sSeen);
        }
        catch (const ClExSystem& cFailure)
        {
            // The C library's want of memory is told as any other reason why a file cannot be opened: in its words.
            EXPECT_EQ(FPC_ERROR_FILE_OPEN_FAIL, cFailure.Number());
            EXPECT_NE(nullptr, std::strstr(cFailure.What(), std::strerror(ENOMEM))) << cFailure.What();
            ThrowBadAlloc();
        }
        return 0;
    }
    std::string See() const { return m_sSeen; }
    bool Kept() const { return true; }

private:
    const Call_t& m_fnCall;
    std::string m_sSeen;
};

class FileMemory : public testing::Test
{
protected:
    void TearDown() override
    {
        RecordProperty("AllocationFailures", std::to_string(m_nFailures));
        EXPECT_EQ(m_nOpen, OpenFiles());
    }

    void FailEveryAllocationOf(const char* szName, const ClPlainCase::Call_t& fnCall)
    {
        SCOPED_TRACE(szName);
        const long nFailures = FailEveryAllocation(EUnderFailure::eRaises, [&] { return ClPlainCase(fnCall); });
        EXPECT_LT(0, nFailures);
        m_nFailures += nFailures;
    }

    long m_nFailures = 0; ///< calls of this test that met one
    long m_nOpen = OpenFiles();
    const ClTempFolder m_cFolder;
};

/// Texts grow outside of the calls under test: room for all that they leave.
void Give(std::string& sSeen, const void* pBytes, std::size_t nBytes)
{
    ConvertBadAlloc([&] { sSeen.append(static_cast<const char*>(pBytes), nBytes); });
}

void Give(std::string& sSeen, const ClBitmap& cBitmap)
{
    Give(sSeen, &cBitmap.Header(), sizeof(tagBITMAPINFOHEADER));
    Give(sSeen, cBitmap.m_pPixels.get(), static_cast<std::size_t>(cBitmap.Stride() * cBitmap.Header().biHeight));
}

void Give(std::string& sSeen, const ClImage& cImage)
{
    Give(sSeen, cImage.Data(), static_cast<std::size_t>(cImage.Stride() * cImage.m_nHeight));
}

const std::vector<unsigned char>& RunLengthFile()
{
    static const std::vector<unsigned char> aFile = BmpFileOfCode(5, 2, {5, 1, 0, 0, 3, 2, 2, 3, 0, 1});
    return aFile;
}

std::vector<unsigned char> Plain(int nBitCount)
{
    const std::vector<unsigned char> aPacked = PackedBitmap(9, 7, nBitCount);
    return BmpFile(aPacked, 40 + (nBitCount > 8 ? 0u : 4u << nBitCount));
}
} // namespace

TEST_F(FileMemory, BmpFiles)
{
    const std::string sName = m_cFolder.File("picture.bmp");
    for (const auto& aFile : {Plain(1), Plain(8), Plain(24), RunLengthFile()})
    {
        WriteFileBytes(sName, aFile);
        FailEveryAllocationOf("reading a file",
                              [&](std::string& sSeen)
                              {
                                  ClBitmap cBitmap;
                                  cBitmap.Load(sName.c_str());
                                  Give(sSeen, cBitmap);
                              });
        ClMemoryStream cStream(aFile);
        FailEveryAllocationOf("reading a stream",
                              [&](std::string& sSeen)
                              {
                                  cStream.Rewind();
                                  ClBitmap cBitmap;
                                  cBitmap.Load(cStream);
                                  Give(sSeen, cBitmap);
                              });
    }
    const ClBitmap cStored(5, 3, 8, 0);
    FailEveryAllocationOf("writing a file", [&](std::string&) { cStored.Store(sName.c_str()); });
    EXPECT_LT(100, m_nFailures);
}

TEST_F(FileMemory, FailedLoadLeavesAnEmptyBitmapWhichLoadsTheNext)
{
    const std::vector<unsigned char> aFile = Plain(8);
    struct StCase
    {
        explicit StCase(const std::vector<unsigned char>& aFile) : m_cStream(aFile) { m_cBitmap.Create(3, 2, 24, 0); }
        long Call()
        {
            m_cStream.Rewind();
            m_cBitmap.Load(m_cStream);
            return 0;
        }
        std::string See() const
        {
            std::string sSeen;
            if (m_cBitmap.m_pBIH.get() != nullptr)
            {
                Give(sSeen, m_cBitmap);
            }
            return sSeen;
        }
        bool Kept() const
        {
            return m_cBitmap.m_pBIH.get() == nullptr && m_cBitmap.m_pPixels.get() == nullptr &&
                   m_cBitmap.m_pPalette == nullptr;
        }
        ClMemoryStream m_cStream;
        ClBitmap m_cBitmap;
    };
    m_nFailures = FailEveryAllocation(EUnderFailure::eRaises, [&] { return StCase(aFile); });
    EXPECT_LT(5, m_nFailures);
}

TEST_F(FileMemory, KrxFiles)
{
    const std::string sName = m_cFolder.File("image.krx");
    for (const unsigned char eType : {ClImage::eUInt8, ClImage::eDouble64})
    {
        ClImage cImage;
        cImage.NewWithType(eType, 9, 7, 3, 0, 0);
        FillRandom(cImage, 3);
        FailEveryAllocationOf("writing a file", [&](std::string&) { cImage.Store(sName.c_str()); });
        FailEveryAllocationOf("reading a file",
                              [&](std::string& sSeen)
                              {
                                  ClImage cLoaded;
                                  cLoaded.Load(sName.c_str());
                                  Give(sSeen, cLoaded);
                              });
        ClMemoryStream cStream(FileBytes(sName));
        FailEveryAllocationOf("reading a stream",
                              [&](std::string& sSeen)
                              {
                                  cStream.Rewind();
                                  ClImage cLoaded;
                                  cLoaded.Load(cStream);
                                  Give(sSeen, cLoaded);
                              });
    }
}

TEST_F(FileMemory, StreamsAndTheirTexts)
{
    const std::string sName = m_cFolder.File("texts");
    {
        ClFileStream cStream(sName.c_str(), "wb");
        cStream.WriteString("a text");
        cStream.WriteString(std::string(5000, 'b').c_str());
        cStream.WriteBits(5, 3);
    }
    FailEveryAllocationOf("reading texts",
                          [&](std::string& sSeen)
                          {
                              char* szText = nullptr;
                              const struct StOwner
                              {
                                  ~StOwner() { delete[] m_szText; }
                                  char*& m_szText;
                              } cOwner{szText};
                              ClFileStream cStream(sName.c_str(), "rb");
                              for (int i = 0; i < 2; ++i)
                              {
                                  cStream.ReadString(&szText);
                                  Give(sSeen, szText, std::strlen(szText));
                              }
                          });
    FailEveryAllocationOf("opening by a wide name",
                          [&](std::string& sSeen)
                          {
                              ClFileStream cStream(WideCharFromSBCS(sName.c_str()).c_str(), L"rb");
                              const long nSize = cStream.Size();
                              Give(sSeen, &nSize, sizeof nSize);
                          });
}

TEST_F(FileMemory, FoldersAndNames)
{
    WriteFileBytes(m_cFolder.File("one.bmp"), {1});
    FailEveryAllocationOf("looking for files",
                          [&](std::string& sSeen)
                          {
                              const std::string sPattern = ConvertBadAlloc([&] { return m_cFolder.File("*.bmp"); });
                              FileSystem::ClFindFile cFind(sPattern.c_str());
                              Give(sSeen, cFind.Name(), std::strlen(cFind.Name()));
                          });
    FailEveryAllocationOf("making and removing folders",
                          [&](std::string&)
                          {
                              const std::string sFolder = ConvertBadAlloc([&] { return m_cFolder.File("a/b/c"); });
                              const std::string sTop = ConvertBadAlloc([&] { return m_cFolder.File("a"); });
                              FileSystem::CreateDirectory(sFolder.c_str(), true);
                              FileSystem::RemoveDirectory(sTop.c_str(), true);
                          });
    FailEveryAllocationOf("taking names apart",
                          [&](std::string& sSeen)
                          {
                              const std::string sName =
                                  FileSystem::MakeRelativePath("/one/two/", "/one/three/a picture of some length.bmp");
                              Give(sSeen, sName.data(), sName.size());
                          });
}

TEST_F(FileMemory, PicturesInMemory)
{
    std::vector<unsigned char> aBlock = PackedBitmap(9, 7, 8);
    FailEveryAllocationOf("wrapping, copying and converting",
                          [&](std::string& sSeen)
                          {
                              ClBitmap cBitmap;
                              cBitmap.Attach(aBlock.data(), aBlock.size());
                              ClImage cImage;
                              cImage.Attach(cBitmap);
                              ClBitmap cCopy;
                              cCopy = cImage;
                              cBitmap.CopyFrom(cCopy, true);
                              ClImage cRed, cGreen, cBlue;
                              cCopy.SplitChannels(cRed, cGreen, cBlue);
                              cCopy.JoinChannels(cRed, cGreen, cBlue);
                              delete[] cBitmap.DetachThis();
                              Give(sSeen, cCopy);
                              Give(sSeen, cImage);
                          });
}
