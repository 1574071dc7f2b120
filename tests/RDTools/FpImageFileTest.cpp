#include "FailingHeap.hpp"
#include "MemoryStream.hpp"
#include "RDTools/FileStream.hpp"
#include "RDTools/FpImage.hpp"
#include "TempFolder.hpp"
#include "TestTools.hpp"

#include <cstring>
#include <limits>
#include <string>

namespace
{
using Bytes = std::vector<unsigned char>;

constexpr char szNoStart[] = "Internal error.\nKRX Magic is missing";
constexpr char szVersion[] = "Internal error.\nWrong KRX version";
constexpr char szNoEnd[] = "Internal error.\nKRX end Magic is missing";
constexpr char szArea[] = "Internal error.\nImage area must be positive";
constexpr char szShort[] = "Unexpected end of file.\nUnexpected end of stream";
constexpr char szMemory[] = "Memory allocation failed or given mem-block too small.\nMemory allocation failed";

constexpr std::size_t nHeaderBytes = 53;
constexpr std::uint32_t nMagic = 1263687680;

#define ONE_TYPE(eCode, T) ClImage::eCode,
constexpr unsigned char aTypes[] = {RD_SAMPLE_TYPES(ONE_TYPE)};
#undef ONE_TYPE

/// A record put together field by field.
struct ClRecord
{
    std::uint32_t m_nMagic = nMagic;
    std::uint32_t m_nVersion = 1;
    unsigned char m_eType = 1;
    int m_nWidth = 5;
    int m_nHeight = 2;
    int m_nPlanes = 1;
    int m_nXRes = 3937;
    int m_nYRes = 19685;
    int m_eContent = 1;
    double m_dWhite = 255;
    double m_dBlack = 0;
    int m_nAttribute = 77;
    Bytes m_aSamples = Bytes(16, 0x11); // as they stand in the file
    std::uint32_t m_nEndMagic = nMagic;
    bool m_bBigEndian = true;

    Bytes Made() const
    {
        Bytes aBytes;
        Put(aBytes, m_nMagic);
        Put(aBytes, m_nVersion);
        Put(aBytes, m_eType);
        Put(aBytes, m_nWidth);
        Put(aBytes, m_nHeight);
        Put(aBytes, m_nPlanes);
        Put(aBytes, m_nXRes);
        Put(aBytes, m_nYRes);
        Put(aBytes, m_eContent);
        Put(aBytes, m_dWhite);
        Put(aBytes, m_dBlack);
        if (m_nVersion != 0)
        {
            Put(aBytes, m_nAttribute);
        }
        aBytes.insert(aBytes.end(), m_aSamples.begin(), m_aSamples.end());
        Put(aBytes, m_nEndMagic);
        return aBytes;
    }

private:
    template <class T> void Put(Bytes& aBytes, T value) const
    {
        unsigned char aValue[sizeof(T)];
        std::memcpy(aValue, &value, sizeof(T));
        for (std::size_t i = 0; i < sizeof(T); ++i)
        {
            aBytes.push_back(aValue[m_bBigEndian ? sizeof(T) - 1 - i : i]);
        }
    }
};

/// The record of an image by the definition of the format.
ClRecord RecordOf(const ClImage& cImage, bool bBigEndian)
{
    ClRecord cRecord;
    cRecord.m_eType = cImage.m_eDataType;
    cRecord.m_nWidth = cImage.m_nWidth;
    cRecord.m_nHeight = cImage.m_nHeight;
    cRecord.m_nPlanes = cImage.m_nPlanes;
    cRecord.m_nXRes = cImage.m_nXRes;
    cRecord.m_nYRes = cImage.m_nYRes;
    cRecord.m_eContent = cImage.m_eContent;
    cRecord.m_dWhite = cImage.m_dWhite;
    cRecord.m_dBlack = cImage.m_dBlack;
    cRecord.m_nAttribute = cImage.m_nAttribute;
    cRecord.m_bBigEndian = bBigEndian;
    const std::size_t nSample = cImage.m_eDataType & 31u;
    const std::size_t nBytes = static_cast<std::size_t>(cImage.Stride()) * static_cast<std::size_t>(cImage.m_nHeight);
    cRecord.m_aSamples.assign(cImage.Data(), cImage.Data() + nBytes);
    for (std::size_t i = 0; bBigEndian && i < nBytes; ++i)
    {
        cRecord.m_aSamples[i] = cImage.Data()[i / nSample * nSample + nSample - 1 - i % nSample];
    }
    return cRecord;
}

/// An image that differs from what NewWithType alone makes in every field.
void MakeImage(ClImage& cImage, unsigned char eType, int nWidth, int nHeight, int nPlanes, unsigned int nSeed)
{
    cImage.NewWithType(eType, nWidth, nHeight, nPlanes, 3937 + nWidth, 19685 + nHeight);
    FillRandom(cImage, nSeed);
    cImage.m_dBlack = -3.25;
    cImage.m_dWhite = 1e300;
    cImage.m_eContent = ClImage::eHSV;
    cImage.m_nAttribute = -123456789;
}

testing::AssertionResult SameBlock(const ClImage& cExpected, const ClImage& cActual)
{
    const int nBytes = cExpected.Stride() * cExpected.m_nHeight;
    const bool bSame = cActual.Data() != nullptr &&
                       std::memcmp(cExpected.Data(), cActual.Data(), static_cast<std::size_t>(nBytes)) == 0;
    return bSame ? testing::AssertionSuccess() : testing::AssertionFailure() << "the rows or their padding differ";
}

void ExpectEmpty(const ClImage& cImage)
{
    EXPECT_EQ(0, cImage.m_eDataType);
    EXPECT_EQ(0, cImage.m_nWidth);
    EXPECT_EQ(0, cImage.m_nHeight);
    EXPECT_EQ(nullptr, cImage.Data());
}

/// Reads every byte of the block, for a sanitizer to see.
unsigned int SumOfBlock(const ClImage& cImage)
{
    unsigned int nSum = 0;
    const long nBytes = static_cast<long>(cImage.Stride()) * cImage.m_nHeight;
    for (long i = 0; cImage.Data() != nullptr && i < nBytes; ++i)
    {
        nSum += cImage.Data()[i];
    }
    return nSum;
}

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

TEST(FpImageFile, RecordCutAtAnyByteIsAFailure)
{
    for (const unsigned char eType : {ClImage::eUInt8, ClImage::eSInt16, ClImage::eDouble64})
    {
        ClImage cImage;
        MakeImage(cImage, eType, 3, 2, 2, 1);
        const Bytes aWhole = RecordOf(cImage, true).Made();
        for (std::size_t nThere = 0; nThere < aWhole.size(); ++nThere)
        {
            for (const bool bSeekable : {true, false})
            {
                ClMemoryStream cStream(Bytes(aWhole.begin(), aWhole.begin() + static_cast<long>(nThere)), bSeekable);
                ClImage cLoaded(9, 9, 1, 0, 0);
                EXPECT_RAISES(cLoaded.Load(cStream), ClException, -101, nThere < 4 ? szNoStart : szNoEnd);
                const bool bSamplesThere = nThere >= aWhole.size() - 4;
                EXPECT_EQ(bSamplesThere, cLoaded.Data() != nullptr) << nThere << " bytes";
                cStream.m_bCheckShort = true;
                cStream.Rewind();
                EXPECT_RAISES(cLoaded.Load(cStream), ClExStreamUnexpectedEnd, -201, szShort);
                EXPECT_EQ(bSamplesThere, cLoaded.Data() != nullptr) << nThere << " bytes";
                if (bSamplesThere)
                {
                    EXPECT_TRUE(SameBlock(cImage, cLoaded));
                }
            }
        }
    }
}

TEST(FpImageFile, StreamThatFailsAtAnyByteIsNotHidden)
{
    const Bytes aWhole = ClRecord().Made();
    for (std::size_t nByte = 0; nByte < aWhole.size(); ++nByte)
    {
        ClMemoryStream cStream(aWhole);
        cStream.FailAt(nByte);
        ClImage cImage;
        EXPECT_RAISES_CODE(cImage.Load(cStream), -203);
        EXPECT_EQ(nByte >= aWhole.size() - 4, cImage.Data() != nullptr);
        cImage.NewWithType(1, 5, 2, 1, 0, 0);
        FillRandom(cImage, 1);
        cStream.Rewind();
        EXPECT_RAISES_CODE(cImage.Store(cStream), -202);
    }
}

TEST(FpImageFile, ShortWriteIsAFailureIfTheStreamSaysSo)
{
    ClImage cImage;
    MakeImage(cImage, ClImage::eSInt32, 3, 2, 2, 1);
    const std::size_t nWhole = RecordOf(cImage, true).Made().size();
    for (std::size_t nByte = 0; nByte < nWhole; ++nByte)
    {
        ClMemoryStream cStream;
        cStream.ShortAt(nByte);
        cImage.Store(cStream);
        EXPECT_EQ(nByte, cStream.m_aBytes.size());
        cStream.m_bCheckShort = true;
        cStream.Rewind();
        EXPECT_RAISES(cImage.Store(cStream), ClExStreamUnexpectedEnd, -201, szShort);
    }
}

/// Loads whatever the bytes are: an image that can be read to its last byte, or one of the failures of the format.
void LoadAnything(const Bytes& aBytes, bool bSeekable, bool bCheckShort)
{
    constexpr std::size_t nLargest = 1 << 20;
    ClMemoryStream cStream(aBytes, bSeekable);
    cStream.m_bCheckShort = bCheckShort;
    ClImage cImage;
    try
    {
        const ClLimitedHeap cHeap(nLargest);
        cImage.Load(cStream);
    }
    catch (const ClExBadAlloc& cRaised)
    {
        EXPECT_STREQ(szMemory, cRaised.What());
        ExpectEmpty(cImage);
    }
    catch (const ClExStreamUnexpectedEnd& cRaised)
    {
        EXPECT_TRUE(bCheckShort);
        EXPECT_STREQ(szShort, cRaised.What());
    }
    catch (const ClException& cRaised)
    {
        const std::string sWhat = cRaised.What();
        EXPECT_TRUE(sWhat == szNoStart || sWhat == szVersion || sWhat == szNoEnd || sWhat == szArea) << sWhat;
        EXPECT_EQ(-101, cRaised.Number());
    }
    SumOfBlock(cImage);
}

TEST(FpImageFile, AnyFlippedBitIsAnImageOrAFailureOfTheFormat)
{
    for (const unsigned char eType : aTypes)
    {
        ClImage cImage;
        MakeImage(cImage, eType, 3, 2, 3, 1);
        Bytes aBytes = RecordOf(cImage, true).Made();
        for (std::size_t i = 0; i < aBytes.size(); ++i)
        {
            const unsigned char cWhole = aBytes[i];
            for (const unsigned int nMask : {1u, 2u, 4u, 8u, 16u, 32u, 64u, 128u, 255u})
            {
                aBytes[i] = static_cast<unsigned char>(cWhole ^ nMask);
                for (const bool bSeekable : {true, false})
                {
                    LoadAnything(aBytes, bSeekable, true);
                    LoadAnything(aBytes, bSeekable, false);
                }
            }
            aBytes[i] = cWhole;
        }
    }
}

TEST(FpImageFile, SizesOfAnyKindAreAnImageOrAFailureOfTheFormat)
{
    constexpr int anSizes[] = {0,          1,          5,          65536,
                               -1,         -65536,     0x10000001, 0x20000000,
                               0x40000001, 0x55555556, 0x7FFFFFFF, std::numeric_limits<int>::min()};
    ClRecord cRecord;
    for (const int nType : {0, 1, 31, 130, 200})
    {
        cRecord.m_eType = static_cast<unsigned char>(nType);
        for (const int nWidth : anSizes)
        {
            cRecord.m_nWidth = nWidth;
            for (const int nHeight : anSizes)
            {
                cRecord.m_nHeight = nHeight;
                for (const int nPlanes : anSizes)
                {
                    cRecord.m_nPlanes = nPlanes;
                    const Bytes aBytes = cRecord.Made();
                    LoadAnything(aBytes, true, true);
                    LoadAnything(aBytes, false, false);
                }
            }
        }
    }
}

TEST(FpImageFile, NegativeSizesAreRefused)
{
    for (const bool bSeekable : {true, false})
    {
        ClRecord cRecord;
        cRecord.m_nHeight = -2;
        ClMemoryStream cHeight(cRecord.Made(), bSeekable);
        EXPECT_RAISES(ClImage().Load(cHeight), ClException, -101, szArea);
        cRecord.m_nHeight = 2;
        cRecord.m_nWidth = -5;
        ClMemoryStream cWidth(cRecord.Made(), bSeekable);
        EXPECT_RAISES(ClImage().Load(cWidth), ClException, -101, szArea);
        cRecord.m_nHeight = -2;
        ClMemoryStream cBoth(cRecord.Made(), bSeekable);
        EXPECT_RAISES(ClImage().Load(cBoth), ClException, -101, szArea);
    }
}

TEST(FpImageFile, RowsThatWrapIn32BitsAreBadAlloc)
{
    for (const bool bSeekable : {true, false})
    {
        ClRecord cRecord;
        cRecord.m_eType = ClImage::eUInt32;
        cRecord.m_nWidth = 0x40000001; // 4 bytes after wrapping
        ClMemoryStream cWidth(cRecord.Made(), bSeekable);
        ClImage cImage;
        EXPECT_RAISES(cImage.Load(cWidth), ClExBadAlloc, -102, szMemory);
        ExpectEmpty(cImage);
        cRecord.m_eType = ClImage::eUInt8;
        cRecord.m_nWidth = 65536;
        cRecord.m_nPlanes = 65536; // 0 bytes after wrapping
        ClMemoryStream cPlanes(cRecord.Made(), bSeekable);
        EXPECT_RAISES(cImage.Load(cPlanes), ClExBadAlloc, -102, szMemory);
        ExpectEmpty(cImage);
    }
}

TEST(FpImageFile, MoreThanTheFileHoldsIsRefusedBeforeItIsAllocated)
{
    ClRecord cRecord;
    cRecord.m_nWidth = 30000;
    cRecord.m_nHeight = 30000;
    const ClLimitedHeap cHeap(1 << 20);
    ClImage cImage(5, 2, 1, 0, 0);
    ClMemoryStream cStream(cRecord.Made());
    cStream.m_bCheckShort = true;
    EXPECT_RAISES(cImage.Load(cStream), ClExStreamUnexpectedEnd, -201, szShort);
    ExpectEmpty(cImage);
    cStream.m_bCheckShort = false;
    cStream.Rewind();
    EXPECT_RAISES(cImage.Load(cStream), ClException, -101, szNoEnd);
    ExpectEmpty(cImage);
    EXPECT_GT(1000u, ClLimitedHeap::Greatest());
    ClMemoryStream cPipe(cRecord.Made(), false); // which cannot tell
    EXPECT_RAISES(cImage.Load(cPipe), ClExBadAlloc, -102, szMemory);
    ExpectEmpty(cImage);
}

TEST(FpImageFile, StreamThatSeeksButTellsNoSizeIsBelieved)
{
    class ClSizelessStream : public ClMemoryStream
    {
    public:
        using ClMemoryStream::ClMemoryStream;
        long Size() const override { return ClStream::Size(); }
    };
    ClSizelessStream cStream(ClRecord().Made());
    ClImage cImage;
    cImage.Load(cStream);
    EXPECT_EQ(16u * 0x11, SumOfBlock(cImage));
}

TEST(FpImageFile, EveryTypeCodeLoadsWithTheSamplesThatItsSizeSays)
{
    for (int nCode = 0; nCode < 256; ++nCode)
    {
        const int nSize = nCode & 31;
        const bool bNumber = nSize == 1 || nSize == 2 || nSize == 4 || nSize == 8;
        ClRecord cRecord;
        cRecord.m_eType = static_cast<unsigned char>(nCode);
        cRecord.m_nWidth = 4;
        cRecord.m_aSamples.assign(bNumber ? 4u * 2u * static_cast<unsigned int>(nSize) : 0, 0x22);
        ClMemoryStream cStream(cRecord.Made());
        cStream.m_bCheckShort = true;
        ClImage cImage;
        cImage.Load(cStream);
        EXPECT_EQ(nCode, cImage.m_eDataType);
        EXPECT_EQ(cStream.Size(), cStream.Pos()) << "type code " << nCode;
        ClMemoryStream cAgain;
        cImage.Store(cAgain);
        EXPECT_EQ(cRecord.Made(), cAgain.m_aBytes) << "type code " << nCode;
    }
}

TEST(FpImageFile, PlanesContentAndRangeAreTakenAsTheyCome)
{
    ClRecord cRecord;
    cRecord.m_nPlanes = 1001;
    cRecord.m_nWidth = 2;
    cRecord.m_eContent = -7;
    cRecord.m_nXRes = -1;
    cRecord.m_dBlack = std::numeric_limits<double>::infinity();
    cRecord.m_dWhite = std::numeric_limits<double>::quiet_NaN();
    cRecord.m_aSamples.assign(2 * 2004, 0x33);
    ClMemoryStream cStream(cRecord.Made());
    ClImage cImage;
    cImage.Load(cStream);
    EXPECT_EQ(1001, cImage.m_nPlanes);
    EXPECT_EQ(-7, cImage.m_eContent);
    EXPECT_EQ(cRecord.m_dBlack, cImage.m_dBlack);
    EXPECT_NE(cImage.m_dWhite, cImage.m_dWhite);
    EXPECT_FALSE(cImage.IsValid());
    EXPECT_EQ(2u * 2004 * 0x33, SumOfBlock(cImage));
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
