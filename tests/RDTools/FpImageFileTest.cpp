#include "FailingHeap.hpp"
#include "MemoryStream.hpp"
#include "RDTools/FileStream.hpp"
#include "RDTools/FpImage.hpp"
#include "RDTools/ImageChecks.hpp"
#include "RDTools/KrxRecords.hpp"
#include "TempFolder.hpp"
#include "TestTools.hpp"

#include <cstring>
#include <string>

namespace
{
using namespace KrxRecords;

TEST(FpImageFile, RecordStandsByteForByteInBothByteOrders)
{
    ClImage cImage;
    MakeImage(cImage, ClImage::eUInt16, 3, 2, 1, 1);
    for (const bool bBigEndian : {true, false})
    {
        ClMemoryStream cStream;
        cStream.SetBigEndian(bBigEndian);
        cImage.Store(cStream);
        EXPECT_EQ(RecordOf(cImage, bBigEndian).Made(), cStream.m_aBytes);
    }
}

TEST(FpImageFile, EveryTypeAndNumberOfPlanesComesBackInBothByteOrdersAndVersions)
{
    unsigned int nSeed = 0;
    for (const unsigned char eType : aTypes)
    {
        for (int nPlanes = 1; nPlanes <= 4; ++nPlanes)
        {
            for (const bool bBigEndian : {true, false})
            {
                ClImage cImage;
                ++nSeed;
                MakeImage(cImage, eType, 1 + static_cast<int>(nSeed * 7 % 23), 1 + static_cast<int>(nSeed % 5), nPlanes,
                          nSeed);
                ClMemoryStream cStream({}, nSeed % 3 != 0);
                cStream.SetBigEndian(bBigEndian);
                cStream.m_bCheckShort = true;
                cImage.Store(cStream);
                ASSERT_EQ(RecordOf(cImage, bBigEndian).Made(), cStream.m_aBytes) << "type " << +eType;
                cStream.Rewind();
                ClImage cLoaded(64, 64, 1, 0, 0);
                cLoaded.Load(cStream);
                EXPECT_TRUE(SameDescription(cImage, cLoaded));
                EXPECT_TRUE(SameBlock(cImage, cLoaded));
                EXPECT_EQ(cStream.m_aBytes.size(), cStream.m_nPos);

                ClRecord cOld = RecordOf(cImage, bBigEndian);
                cOld.m_nVersion = 0;
                ClMemoryStream cOldStream(cOld.Made());
                cOldStream.SetBigEndian(bBigEndian);
                cLoaded.Load(cOldStream);
                cImage.m_nAttribute = 0;
                EXPECT_TRUE(SameDescription(cImage, cLoaded));
                EXPECT_TRUE(SameBlock(cImage, cLoaded));
            }
        }
    }
}

TEST(FpImageFile, FilesHoldTheSameRecord)
{
    const ClTempFolder cFolder;
    const std::string sName = cFolder.File("image.krx");
    const long nOpen = OpenFiles();
    for (const unsigned char eType : aTypes)
    {
        ClImage cImage, cLoaded;
        MakeImage(cImage, eType, 13, 7, 3, eType);
        cImage.Store(sName.c_str());
        EXPECT_EQ(RecordOf(cImage, true).Made(), FileBytes(sName));
        EXPECT_EQ(0, std::memcmp("KRX", FileBytes(sName).data(), 4));
        cLoaded.Load(sName.c_str());
        EXPECT_TRUE(SameDescription(cImage, cLoaded));
        EXPECT_TRUE(SameBlock(cImage, cLoaded));

        ClFileStream cStream(sName.c_str(), "w+b");
        cStream.SetBigEndian(false);
        cStream.m_bCheckShort = true;
        cImage.Store(cStream);
        cImage.Store(cStream); // one behind the other
        EXPECT_EQ(0, cStream.Seek(0, 0));
        cLoaded.Load(cStream);
        cLoaded.Load(cStream);
        EXPECT_TRUE(SameDescription(cImage, cLoaded));
        EXPECT_TRUE(SameBlock(cImage, cLoaded));
        EXPECT_EQ(cStream.Size(), cStream.Pos());
    }
    EXPECT_EQ(nOpen, OpenFiles());
}

TEST(FpImageFile, PaddingOfTheRowsIsStored)
{
    ClImage cImage;
    ClMemoryStream cColour, cDeep;
    MakeImage(cImage, ClImage::eUInt8, 5, 2, 3, 1);
    EXPECT_EQ(16, cImage.Stride());
    cImage.Store(cColour);
    EXPECT_EQ(89u, cColour.m_aBytes.size());
    MakeImage(cImage, ClImage::eUInt16, 3, 2, 1, 1);
    EXPECT_EQ(8, cImage.Stride());
    cImage.Store(cDeep);
    EXPECT_EQ(nHeaderBytes + 2 * 4 * sizeof(short) + 4, cDeep.m_aBytes.size());
}

TEST(FpImageFile, RecordOfVersion0HasNoAttribute)
{
    ClRecord cRecord;
    cRecord.m_nVersion = 0;
    ClMemoryStream cStream(cRecord.Made());
    EXPECT_EQ(69u, cStream.m_aBytes.size());
    ClImage cImage(1, 1, 1, 0, 0);
    cImage.m_nAttribute = 5;
    cImage.Load(cStream);
    EXPECT_EQ(0, cImage.m_nAttribute);
    EXPECT_EQ(5, cImage.m_nWidth);
    EXPECT_EQ(0x11, cImage.Data()[15]);
}

TEST(FpImageFile, LaterVersionsAreRefusedBeforeAnythingElseIsRead)
{
    for (const std::uint32_t nVersion : {2u, 3u, 0x80000000u, 0xFFFFFFFFu})
    {
        ClRecord cRecord;
        cRecord.m_nVersion = nVersion;
        ClMemoryStream cStream(cRecord.Made());
        ClImage cImage(5, 2, 1, 0, 0);
        EXPECT_RAISES(cImage.Load(cStream), ClException, -101, szVersion);
        ExpectEmpty(cImage);
        EXPECT_EQ(8, cStream.Pos());
    }
}

TEST(FpImageFile, WrongMagicAtTheStartIsRefused)
{
    for (const std::uint32_t nWrong : {0u, nMagic + 1, 0x0058524Bu})
    {
        ClRecord cRecord;
        cRecord.m_nMagic = nWrong;
        ClMemoryStream cStream(cRecord.Made());
        ClImage cImage(5, 2, 1, 0, 0);
        EXPECT_RAISES(cImage.Load(cStream), ClException, -101, szNoStart);
        ExpectEmpty(cImage);
    }
    ClMemoryStream cOtherOrder(ClRecord().Made());
    cOtherOrder.SetBigEndian(false);
    EXPECT_RAISES(ClImage().Load(cOtherOrder), ClException, -101, szNoStart);
}

TEST(FpImageFile, WrongMagicAtTheEndLeavesAWholeImage)
{
    ClRecord cRecord;
    cRecord.m_nEndMagic = nMagic + 1;
    ClMemoryStream cStream(cRecord.Made());
    ClImage cImage;
    EXPECT_RAISES(cImage.Load(cStream), ClException, -101, szNoEnd);
    EXPECT_EQ(5, cImage.m_nWidth);
    EXPECT_EQ(77, cImage.m_nAttribute);
    EXPECT_EQ(16u * 0x11, SumOfBlock(cImage));
    EXPECT_TRUE(cImage.IsValid());
}

TEST(FpImageFile, ImageWithoutAreaHasNoSamples)
{
    for (const auto& [nWidth, nHeight] : {std::pair(0, 0), std::pair(0, 7), std::pair(7, 0)})
    {
        ClImage cImage(nWidth, nHeight, 1, 1, 2);
        ClMemoryStream cStream;
        cImage.Store(cStream);
        EXPECT_EQ(57u, cStream.m_aBytes.size());
        cStream.Rewind();
        ClImage cLoaded(5, 5, 1, 0, 0);
        cLoaded.Load(cStream);
        EXPECT_TRUE(SameDescription(cImage, cLoaded));
        EXPECT_EQ(nullptr, cLoaded.Data());
        EXPECT_TRUE(cLoaded.IsValid());
    }
}

TEST(FpImageFile, EmptyImageComesBackEmpty)
{
    ClMemoryStream cStream;
    ClImage().Store(cStream);
    EXPECT_EQ(57u, cStream.m_aBytes.size());
    cStream.Rewind();
    ClImage cLoaded(5, 5, 1, 0, 0);
    cLoaded.Load(cStream);
    EXPECT_TRUE(SameDescription(ClImage(), cLoaded));
    EXPECT_EQ(nullptr, cLoaded.Data());
}

TEST(FpImageFile, NegativeSizesAreStoredWithoutSamples)
{
    ClImage cImage(5, 2, 1, 0, 0);
    FillRandom(cImage, 1);
    EXPECT_RAISES_CODE(cImage.NewWithType(1, 5, -3, 1, 0, 0), -101);
    ClMemoryStream cStream;
    cImage.Store(cStream);
    EXPECT_EQ(57u, cStream.m_aBytes.size());
}

TEST(FpImageFile, AreaWithoutPixelsCannotBeStored)
{
    const ClTempFolder cFolder;
    ClImage cImage;
    cImage.Attach(nullptr, 1, 5, 2, 1, 0, 0);
    ClMemoryStream cStream;
    EXPECT_RAISES(cImage.Store(cStream), ClExVelmarin, -10, "The input image is not valid.");
    EXPECT_TRUE(cStream.m_aBytes.empty());
    EXPECT_RAISES_CODE(cImage.Store(cFolder.File("a").c_str()), -10);
    EXPECT_FALSE(std::filesystem::exists(cFolder.File("a")));
}

TEST(FpImageFile, PartlyUsedByteIsRefused)
{
    ClMemoryStream cStream;
    cStream.WriteBits(1, 1);
    ClImage cImage(5, 2, 1, 0, 0);
    FillRandom(cImage, 1);
    EXPECT_RAISES_CODE(cImage.Store(cStream), -39);
    EXPECT_RAISES_CODE(cImage.Load(cStream), -39);
    EXPECT_TRUE(cStream.m_aBytes.empty());
}

TEST(FpImageFile, LoadLeavesTheOldBlockToItsOtherHolders)
{
    unsigned char aOfCaller[16] = {};
    ClImage cShared(5, 2, 1, 0, 0), cImage;
    std::memset(cShared.Data(), 9, 16);
    ClMemoryStream cStream(ClRecord().Made());
    cImage.Attach(cShared);
    cImage.Load(cStream);
    EXPECT_EQ(16u * 9, SumOfBlock(cShared));
    cImage.Attach(aOfCaller, 1, 5, 2, 1, 0, 0);
    cStream.Rewind();
    cImage.Load(cStream);
    EXPECT_EQ(16u * 0x11, SumOfBlock(cImage));
    EXPECT_EQ(0, aOfCaller[0]);
}

TEST(FpImageFile, FileThatCannotBeOpenedLeavesTheImageAsItWas)
{
    const ClTempFolder cFolder;
    ClImage cImage(5, 2, 1, 0, 0);
    FillRandom(cImage, 1);
    EXPECT_RAISES_CODE(cImage.Load(cFolder.File("missing").c_str()), -200);
    EXPECT_EQ(5, cImage.m_nWidth);
    EXPECT_RAISES_CODE(cImage.Store((cFolder.File("no folder") + "/a").c_str()), -200);
    EXPECT_RAISES_CODE(cImage.Load(static_cast<const char*>(nullptr)), -44);
    EXPECT_RAISES_CODE(cImage.Store(static_cast<const char*>(nullptr)), -44);
    EXPECT_NE(nullptr, cImage.Data());
}

TEST(FpImageFile, FailuresLeaveNoOpenFile)
{
    const ClTempFolder cFolder;
    const std::string sName = cFolder.File("a");
    const long nOpen = OpenFiles();
    Bytes aBytes = ClRecord().Made();
    ClImage cImage;
    aBytes.pop_back();
    WriteFileBytes(sName, aBytes);
    EXPECT_RAISES(cImage.Load(sName.c_str()), ClException, -101, szNoEnd);
    EXPECT_EQ(16u * 0x11, SumOfBlock(cImage)) << "only the end is missing";
    aBytes.resize(nHeaderBytes + 15);
    WriteFileBytes(sName, aBytes);
    EXPECT_RAISES(cImage.Load(sName.c_str()), ClException, -101, szNoEnd);
    ExpectEmpty(cImage);
    aBytes[0] = 0;
    WriteFileBytes(sName, aBytes);
    EXPECT_RAISES(cImage.Load(sName.c_str()), ClException, -101, szNoStart);
    EXPECT_RAISES(cImage.Load(cFolder.Path().c_str()), ClException, -101, szNoStart); // a folder opens and reads empty

    for (const int nHeight : {2, 2000}) // what the C library holds back until the end, and what it does not
    {
        cImage.NewWithType(1, 500, nHeight, 1, 0, 0);
        FillRandom(cImage, 1);
        EXPECT_RAISES(cImage.Store("/dev/full"), ClExStream, -204,
                      "Unspecified I/O error.\nClFileStream::Close. Failed to Close");
    }
    EXPECT_EQ(nOpen, OpenFiles());
}

TEST(FpImageFile, EveryExhaustedHeapIsBadAlloc)
{
    const ClTempFolder cFolder;
    const std::string sName = cFolder.File("a");
    ClImage cImage(5, 2, 1, 0, 0);
    FillRandom(cImage, 1);
    const long nOpen = OpenFiles();
    EXPECT_GT(ExpectBadAllocAtEveryAllocation([&] { cImage.Store(sName.c_str()); }), 0);
    EXPECT_GT(ExpectBadAllocAtEveryAllocation([&] { ClImage().Load(sName.c_str()); }), 0);
    EXPECT_EQ(nOpen, OpenFiles());
}
} // namespace
