#include "TestTools.hpp"

namespace
{
TEST(TestTools, RandomNumbersDependOnTheSeedAlone)
{
    ClTestRandom cFirst(1), cSecond(1), cOther(2);
    const std::uint32_t nFirst = cFirst.Next();
    EXPECT_EQ(nFirst, cSecond.Next());
    EXPECT_NE(nFirst, cOther.Next());
    for (int i = 0; i < 1000; ++i)
    {
        const int n = cFirst.Below(7);
        ASSERT_TRUE(n >= 0 && n < 7);
    }
}

TEST(TestTools, SamePixelsNamesWhatDiffersAndIgnoresPadding)
{
    ClImage cFirst, cSecond;
    FillRandom8(cFirst, 5, 3, 1);
    cSecond = cFirst;
    Row<unsigned char>(cSecond, 1)[5] = static_cast<unsigned char>(~Row<unsigned char>(cSecond, 1)[5]);
    EXPECT_TRUE(SamePixels(cFirst, cSecond));

    Row<unsigned char>(cFirst, 2)[4] = 7;
    Row<unsigned char>(cSecond, 2)[4] = 9;
    const testing::AssertionResult cResult = SamePixels(cFirst, cSecond);
    EXPECT_FALSE(cResult);
    EXPECT_STREQ("\n  x 4, y 2, plane 0: expected 7, got 9\n  1 samples of 5 by 3 by 1 differ", cResult.message());

    FillRandom8(cSecond, 6, 3, 1);
    EXPECT_FALSE(SamePixels(cFirst, cSecond));
}

template <class T> void ExpectLastSampleCompared(ClImage::EDataType eType)
{
    ClImage cFirst, cSecond;
    cFirst.NewWithType(eType, 5, 4, 3, 0, 0);
    FillRandom(cFirst, 3);
    cSecond = cFirst;
    EXPECT_TRUE(SamePixels(cFirst, cSecond)) << +eType;
    T& tLast = Row<T>(cSecond, 3)[14];
    tLast = static_cast<T>(tLast == T{1} ? 2 : 1);
    EXPECT_FALSE(SamePixels(cFirst, cSecond)) << +eType;
}

TEST(TestTools, SamePixelsComparesEverySampleType)
{
#define RD_COMPARE(eCode, T) ExpectLastSampleCompared<T>(ClImage::eCode);
    RD_SAMPLE_TYPES(RD_COMPARE)
#undef RD_COMPARE
}

TEST(TestTools, SameDescriptionTakesTwoMissingRangesAsEqual)
{
    ClImage cFirst, cSecond;
    EXPECT_TRUE(SameDescription(cFirst, cSecond));
    cSecond.m_nAttribute = 1;
    EXPECT_FALSE(SameDescription(cFirst, cSecond));
}
} // namespace
