#include "MemoryStream.hpp"

#include "TestTools.hpp"

namespace
{
using Bytes = std::vector<unsigned char>;

TEST(MemoryStream, GrowsWhereItIsWrittenAndFillsGapsWithZeroes)
{
    ClMemoryStream cStream({1, 2, 3});
    EXPECT_EQ(2u, cStream.WriteRaw("ab", 2));
    EXPECT_EQ(0, cStream.Seek(2, 2));
    EXPECT_EQ(1u, cStream.WriteRaw("c", 1));
    EXPECT_EQ((Bytes{'a', 'b', 3, 0, 0, 'c'}), cStream.m_aBytes);
    EXPECT_EQ(6, cStream.Pos());
    EXPECT_EQ(6, cStream.Size());
    EXPECT_EQ(0, cStream.Seek(-6, 1));
    EXPECT_EQ(0, cStream.Pos());
    EXPECT_EQ(22, cStream.Seek(-1, 0));
    EXPECT_EQ(22, cStream.Seek(0, 3));
}

TEST(MemoryStream, ReadsNothingBehindItsEnd)
{
    ClMemoryStream cStream({1, 2, 3});
    unsigned char aRead[4] = {9, 9, 9, 9};
    EXPECT_EQ(3u, cStream.ReadRaw(aRead, 4));
    EXPECT_EQ(9, aRead[3]);
    EXPECT_EQ(0, cStream.Seek(10, 0));
    EXPECT_EQ(0u, cStream.ReadRaw(aRead, 4));
}

TEST(MemoryStream, IsShortOrFailsFromTheByteThatTheTestNames)
{
    unsigned char aRead[4] = {};
    ClMemoryStream cShort({1, 2, 3, 4});
    cShort.ShortAt(3);
    EXPECT_EQ(3u, cShort.ReadRaw(aRead, 4));
    EXPECT_EQ(0u, cShort.WriteRaw(aRead, 1));
    EXPECT_EQ((Bytes{1, 2, 3, 4}), cShort.m_aBytes);

    ClMemoryStream cFailing({1, 2, 3, 4});
    cFailing.FailAt(3);
    EXPECT_EQ(3u, cFailing.ReadRaw(aRead, 3));
    EXPECT_RAISES_CODE(cFailing.ReadRaw(aRead, 1), -203);
    EXPECT_RAISES_CODE(cFailing.WriteRaw(aRead, 1), -202);
    cFailing.Rewind();
    EXPECT_RAISES_CODE(cFailing.WriteRaw("abcd", 4), -202);
    EXPECT_EQ((Bytes{'a', 'b', 'c', 4}), cFailing.m_aBytes);
}

TEST(MemoryStream, WithoutSeekingTellsNeitherPositionNorSize)
{
    ClMemoryStream cStream({1, 2, 3}, false);
    unsigned char cRead = 0;
    EXPECT_FALSE(cStream.IsSeekable());
    EXPECT_EQ(1u, cStream.ReadRaw(&cRead, 1));
    EXPECT_EQ(0, cStream.Seek(2, 0));
    EXPECT_EQ(0, cStream.Pos());
    EXPECT_EQ(0, cStream.Size());
    EXPECT_EQ(1u, cStream.ReadRaw(&cRead, 1));
    EXPECT_EQ(2, cRead);
}
} // namespace
