#include "FailingHeap.hpp"
#include "MemoryStream.hpp"
#include "RDTools/FpImage.hpp"
#include "RDTools/ImageChecks.hpp"
#include "RDTools/KrxRecords.hpp"
#include "TestTools.hpp"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>

// KRX records that are damaged, unusual or made to do harm, and streams that fail.

namespace
{
using namespace KrxRecords;

TEST(FpImageFileDamage, RecordCutAtAnyByteIsAFailure)
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

TEST(FpImageFileDamage, StreamThatFailsAtAnyByteIsNotHidden)
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

TEST(FpImageFileDamage, ShortWriteIsAFailureIfTheStreamSaysSo)
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

/// Bytes of the samples as the record's header says, in network order; without wrapping.
double HonestBytes(const Bytes& aBytes)
{
    const auto longAt = [&aBytes](std::size_t nAt)
    {
        std::uint32_t nValue = 0;
        for (std::size_t i = nAt; i < nAt + 4; ++i)
        {
            nValue = nValue << 8 | aBytes[i];
        }
        return static_cast<double>(static_cast<std::int32_t>(nValue));
    };
    const double dRow = longAt(9) * longAt(17) * (aBytes[8] & 31) + 4;
    return std::fabs(dRow * longAt(13)) + 8;
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
        EXPECT_TRUE(cImage.Data() == nullptr ||
                    static_cast<double>(ClLimitedHeap::Greatest()) <= 2 * HonestBytes(aBytes));
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

TEST(FpImageFileDamage, AnyFlippedBitIsAnImageOrAFailureOfTheFormat)
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

TEST(FpImageFileDamage, SizesOfAnyKindAreAnImageOrAFailureOfTheFormat)
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

TEST(FpImageFileDamage, NegativeSizesAreRefused)
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

TEST(FpImageFileDamage, RowsThatWrapIn32BitsAreBadAlloc)
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

TEST(FpImageFileDamage, MoreThanTheFileHoldsIsRefusedBeforeItIsAllocated)
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

TEST(FpImageFileDamage, StreamThatSeeksButTellsNoSizeIsBelieved)
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

TEST(FpImageFileDamage, EveryTypeCodeLoadsWithTheSamplesThatItsSizeSays)
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

TEST(FpImageFileDamage, PlanesContentAndRangeAreTakenAsTheyCome)
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
} // namespace
