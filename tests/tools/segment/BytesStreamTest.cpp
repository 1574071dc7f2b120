#include "BytesStream.hpp"

#include "PictureFiles.hpp"

#include <gtest/gtest.h>

#include <cstdio>

using namespace SegmentTool;

TEST(BytesStream, ReadsUpToTheEnd)
{
    const Bytes_t aFile = PictureFiles::FromText("abcdef");
    ClBytesStream cStream(aFile);
    EXPECT_TRUE(cStream.IsSeekable());
    EXPECT_EQ(6, cStream.Size());
    char aRead[8] = "";
    EXPECT_EQ(4u, cStream.ReadRaw(aRead, 4));
    EXPECT_STREQ("abcd", aRead);
    EXPECT_EQ(4, cStream.Pos());
    EXPECT_EQ(2u, cStream.ReadRaw(aRead, 8));
    EXPECT_EQ(0u, cStream.ReadRaw(aRead, 8));
    EXPECT_EQ(0u, cStream.WriteRaw("x", 1)) << "not into a file of someone else's";
}

TEST(BytesStream, SeeksInsideOnly)
{
    const Bytes_t aFile = PictureFiles::FromText("abcdef");
    ClBytesStream cStream(aFile);
    EXPECT_EQ(0, cStream.Seek(5, SEEK_SET));
    EXPECT_EQ(0, cStream.Seek(-3, SEEK_CUR));
    EXPECT_EQ(2, cStream.Pos());
    EXPECT_EQ(0, cStream.Seek(-1, SEEK_END));
    EXPECT_EQ(5, cStream.Pos());
    EXPECT_EQ(0, cStream.Seek(0, SEEK_END));
    EXPECT_NE(0, cStream.Seek(1, SEEK_END));
    EXPECT_NE(0, cStream.Seek(-1, SEEK_SET));
    EXPECT_NE(0, cStream.Seek(-7, SEEK_CUR));
    EXPECT_EQ(6, cStream.Pos());
}

TEST(BytesStream, WritesAtItsEnd)
{
    ClBytesStream cStream;
    EXPECT_EQ(3u, cStream.WriteRaw("abc", 3));
    EXPECT_EQ(2u, cStream.WriteRaw("de", 2));
    EXPECT_EQ(PictureFiles::FromText("abcde"), cStream.m_aWritten);
    EXPECT_EQ(5, cStream.Size());
    EXPECT_EQ(5, cStream.Pos());
}
