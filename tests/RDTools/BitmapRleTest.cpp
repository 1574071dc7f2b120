#include "RDTools/BitmapRle.hpp"

#include "MemoryStream.hpp"
#include "TestTools.hpp"

#include <cstring>

namespace
{
using Bytes_t = ClGuardedVector;

constexpr char szCorrupt[] = "The input is corrupt can be a memoryblock or a file.\n"
                             "ClBitmap::Load. RLE Encoding corrupt";

/// Lines of nStride bytes each, in a block that ends where writable memory ends.
class ClCanvas
{
public:
    ClCanvas(int nWidth, int nHeight, int nStride)
        : m_nWidth(nWidth), m_nHeight(nHeight), m_nStride(nStride),
          m_cBytes(static_cast<std::size_t>(nHeight * nStride))
    {
        std::memset(m_cBytes.Data(), 0xee, m_cBytes.Size());
    }
    void Decode(const Bytes_t& aCode)
    {
        ClMemoryStream cStream(aCode);
        cStream.m_bCheckShort = true;
        ClBitmapRle(m_cBytes.Data(), m_nStride, m_nWidth, m_nHeight).Decode(cStream);
        m_nTaken = cStream.m_nPos;
    }
    Bytes_t Line(int nY) const
    {
        return {m_cBytes.Data() + nY * m_nStride, m_cBytes.Data() + nY * m_nStride + m_nWidth};
    }
    bool IsPaddingUntouched() const
    {
        for (int y = 0; y < m_nHeight; ++y)
        {
            for (int x = m_nWidth; x < m_nStride; ++x)
            {
                if (m_cBytes.Data()[y * m_nStride + x] != 0xee)
                {
                    return false;
                }
            }
        }
        return true;
    }

    std::size_t m_nTaken = 0; ///< bytes of the code

private:
    int m_nWidth;
    int m_nHeight;
    int m_nStride;
    ClGuardedBytes m_cBytes;
};

TEST(BitmapRle, RunsLineMarksAndTheEndOfTheBitmap)
{
    ClCanvas cCanvas(5, 3, 8);
    cCanvas.Decode({3, 7, 2, 8, 0, 0, 1, 9, 0, 0, 5, 1, 0, 1, 99, 99});
    EXPECT_EQ((Bytes_t{7, 7, 7, 8, 8}), cCanvas.Line(0));
    EXPECT_EQ((Bytes_t{9, 0xee, 0xee, 0xee, 0xee}), cCanvas.Line(1));
    EXPECT_EQ((Bytes_t{1, 1, 1, 1, 1}), cCanvas.Line(2));
    EXPECT_TRUE(cCanvas.IsPaddingUntouched());
    EXPECT_EQ(14u, cCanvas.m_nTaken);
}

TEST(BitmapRle, ARunGoesOnAtTheNextLine)
{
    ClCanvas cCanvas(5, 3, 8);
    cCanvas.Decode({12, 4, 3, 5, 0, 1});
    EXPECT_EQ((Bytes_t{4, 4, 4, 4, 4}), cCanvas.Line(1));
    EXPECT_EQ((Bytes_t{4, 4, 5, 5, 5}), cCanvas.Line(2));
    EXPECT_TRUE(cCanvas.IsPaddingUntouched());
}

TEST(BitmapRle, ALineMarkBehindAFullLineIsNoEmptyLine)
{
    ClCanvas cCanvas(2, 3, 4);
    cCanvas.Decode({2, 1, 0, 0, 2, 2, 0, 0, 2, 3, 0, 0});
    EXPECT_EQ((Bytes_t{3, 3}), cCanvas.Line(2));
    EXPECT_EQ(12u, cCanvas.m_nTaken) << "the mark behind the last line ends the picture";
}

TEST(BitmapRle, LineMarksAloneEndAPicture)
{
    ClCanvas cCanvas(5, 3, 8);
    cCanvas.Decode({0, 0, 0, 0, 0, 0, 1, 1});
    EXPECT_EQ(6u, cCanvas.m_nTaken);
    EXPECT_EQ(Bytes_t(5, 0xee), cCanvas.Line(0));
}

TEST(BitmapRle, DeltasMoveRightAndForward)
{
    ClCanvas cCanvas(5, 4, 8);
    cCanvas.Decode({1, 1, 0, 2, 2, 0, 1, 2, 0, 2, 0, 2, 1, 3, 0, 1});
    EXPECT_EQ((Bytes_t{1, 0xee, 0xee, 2, 0xee}), cCanvas.Line(0));
    EXPECT_EQ(Bytes_t(5, 0xee), cCanvas.Line(1));
    EXPECT_EQ((Bytes_t{0xee, 0xee, 0xee, 0xee, 3}), cCanvas.Line(2));
}

TEST(BitmapRle, ADeltaRightOfTheLineLetsTheNextRunBeginALine)
{
    ClCanvas cCanvas(5, 3, 8);
    cCanvas.Decode({0, 2, 255, 0, 0, 2, 255, 0, 2, 6, 0, 1});
    EXPECT_EQ(Bytes_t(5, 0xee), cCanvas.Line(0));
    EXPECT_EQ((Bytes_t{6, 6, 0xee, 0xee, 0xee}), cCanvas.Line(1));
    EXPECT_TRUE(cCanvas.IsPaddingUntouched());
}

TEST(BitmapRle, WhatLeavesTheLinesIsCorrupt)
{
    for (const Bytes_t& aCode : {Bytes_t{255, 1}, Bytes_t{10, 1, 1, 1}, Bytes_t{0, 2, 0, 2}, Bytes_t{0, 2, 0, 255},
                                 Bytes_t{0, 0, 0, 2, 0, 1}, Bytes_t{0, 0, 5, 1, 1, 1}})
    {
        ClCanvas cCanvas(5, 2, 8);
        EXPECT_RAISES(cCanvas.Decode(aCode), ClException, -38, szCorrupt);
        EXPECT_TRUE(cCanvas.IsPaddingUntouched());
    }
}

TEST(BitmapRle, AbsoluteModeReadsOnUntilTheLinesAreFull)
{
    for (const unsigned char nCount : Bytes_t{3, 4, 255})
    {
        Bytes_t aCode{0, nCount, 1, 2, 3, 4, 5, 6};
        ClCanvas cShort(3, 2, 4), cFull(3, 2, 4);
        EXPECT_RAISES(cShort.Decode(aCode), ClExStreamUnexpectedEnd, -201,
                      "Unexpected end of file.\nUnexpected end of stream");
        aCode.push_back(7);
        EXPECT_RAISES(cFull.Decode(aCode), ClException, -38, szCorrupt);
        EXPECT_EQ((Bytes_t{4, 5, 6}), cFull.Line(1)) << "no byte is skipped";
        EXPECT_TRUE(cFull.IsPaddingUntouched());
    }
}

TEST(BitmapRle, ACodeThatEndsEarlyIsToldByTheStream)
{
    const Bytes_t aCode{3, 7, 0, 2, 1, 1, 1, 9, 0, 0, 0, 1};
    for (std::size_t nBytes = 0; nBytes < aCode.size(); ++nBytes)
    {
        ClCanvas cCanvas(5, 3, 8);
        EXPECT_RAISES_CODE(cCanvas.Decode({aCode.begin(), aCode.begin() + static_cast<std::ptrdiff_t>(nBytes)}), -201);
    }
    ClCanvas cWhole(5, 3, 8);
    EXPECT_NO_THROW(cWhole.Decode(aCode));
}

TEST(BitmapRle, NothingIsWrittenWithoutLinesOrWidth)
{
    for (const auto& [nWidth, nHeight] : {std::pair(5, 0), std::pair(0, 0), std::pair(0, 3), std::pair(-3, 0)})
    {
        unsigned char nByte = 77;
        const auto decode = [&, nWidth = nWidth, nHeight = nHeight](const Bytes_t& aCode)
        {
            ClMemoryStream cStream(aCode);
            cStream.m_bCheckShort = true;
            ClBitmapRle(&nByte, 0, nWidth, nHeight).Decode(cStream);
        };
        EXPECT_NO_THROW(decode({0, 1}));
        EXPECT_NO_THROW(decode({0, 0, 0, 0, 0, 0}));
        EXPECT_RAISES_CODE(decode({1, 1}), -38);
        EXPECT_RAISES_CODE(decode({0, 3, 1}), -38);
        EXPECT_EQ(77, nByte);
    }
}

TEST(BitmapRle, DeltasThatMoveNothingDoNotGoOnForever)
{
    for (const unsigned char nRight : Bytes_t{0, 1, 255})
    {
        Bytes_t aCode;
        for (int i = 0; i < 70000; ++i)
        {
            aCode.insert(aCode.end(), {0, 2, nRight, 0});
        }
        ClCanvas cCanvas(5, 2, 8);
        EXPECT_RAISES_CODE(cCanvas.Decode(aCode), -38);
        aCode.resize(4 * 60000);
        aCode.insert(aCode.end(), {0, 1});
        EXPECT_NO_THROW(cCanvas.Decode(aCode));
    }
}

/// Any code leaves no byte outside the lines touched, and ends.
TEST(BitmapRle, RandomCodesStayWithinTheirLines)
{
    ClTestRandom cRandom(4);
    int nDecoded = 0;
    for (int i = 0; i < 3000; ++i)
    {
        Bytes_t aCode(2000);
        for (unsigned char& nByte : aCode)
        {
            nByte = static_cast<unsigned char>(cRandom.Below(4) == 0 ? cRandom.Below(256) : cRandom.Below(3));
        }
        const int nWidth = 1 + cRandom.Below(20);
        ClCanvas cCanvas(nWidth, 1 + cRandom.Below(20), (nWidth + 3) / 4 * 4);
        try
        {
            cCanvas.Decode(aCode);
            ++nDecoded;
        }
        catch (const ClException& cRaised)
        {
            EXPECT_TRUE(cRaised.Number() == -38 || cRaised.Number() == -201);
        }
        ASSERT_TRUE(cCanvas.IsPaddingUntouched());
    }
    EXPECT_LT(100, nDecoded);
}
} // namespace
