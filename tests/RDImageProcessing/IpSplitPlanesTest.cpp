#include "RDImageProcessing/IpSplitPlanes.hpp"

#include "RDTools/Exception.hpp"
#include "RDTools/ParameterContainer.hpp"
#include "SampleAccess.hpp"
#include "TestTools.hpp"

#include <memory>

TEST(IpSplitPlanes, GathersEveryPlaneOfEveryType)
{
    ForEachRandomImage(4,
                       [](ClImage& cIn, auto cTag)
                       {
                           using T = typename decltype(cTag)::Type;
                           ClImage acOut[4];
                           acOut[0].m_nAttribute = 3;
                           ClIpSplitPlanes cSplit;
                           ASSERT_EQ(0, cSplit.ApplyParam(cIn, &acOut[0], &acOut[1], &acOut[2], &acOut[3]));
                           for (int i = 0; i < 4; ++i)
                           {
                               if (i >= cIn.m_nPlanes)
                               {
                                   EXPECT_EQ(nullptr, acOut[i].Data());
                                   EXPECT_EQ(0, acOut[i].m_nWidth);
                                   continue;
                               }
                               ClImage cExpected;
                               cExpected.NewWithType(cIn.m_eDataType, cIn.m_nWidth, cIn.m_nHeight, 1, 19685, 3937);
                               cExpected.m_nAttribute = i == 0 ? 3 : 0;
                               for (int y = 0; y < cIn.m_nHeight; ++y)
                               {
                                   for (int x = 0; x < cIn.m_nWidth; ++x)
                                   {
                                       SetSample(cExpected, x, y, 0, SampleAt<T>(cIn, x, y, i));
                                   }
                               }
                               EXPECT_TRUE(SamePixels(cExpected, acOut[i]));
                               EXPECT_TRUE(SameDescription(cExpected, acOut[i]));
                           }
                       });
}

TEST(IpSplitPlanes, PassesOverPlanesThatAreNotSet)
{
    ClImage cIn(5, 3, 3, 0, 0);
    FillRandom(cIn, 5);
    ClImage cLast;
    ClIpSplitPlanes cSplit;
    ASSERT_EQ(0, cSplit.ApplyParam(cIn, nullptr, nullptr, &cLast, nullptr));
    for (int y = 0; y < 3; ++y)
    {
        for (int x = 0; x < 5; ++x)
        {
            EXPECT_EQ(SampleAt<unsigned char>(cIn, x, y, 2), SampleAt<unsigned char>(cLast, x, y));
        }
    }
}

TEST(IpSplitPlanes, TheInputMayBeOneOfTheOutputs)
{
    ClImage cIn(5, 3, 3, 0, 0);
    FillRandom(cIn, 6);
    ClImage cSame;
    cSame = cIn;
    cSame.m_nAttribute = 9;
    ClImage cOther;
    ClIpSplitPlanes cSplit;
    ASSERT_EQ(0, cSplit.ApplyParam(cSame, &cSame, &cOther, nullptr, nullptr));
    ASSERT_EQ(1, cSame.m_nPlanes);
    EXPECT_EQ(9, cSame.m_nAttribute);
    for (int y = 0; y < 3; ++y)
    {
        for (int x = 0; x < 5; ++x)
        {
            EXPECT_EQ(SampleAt<unsigned char>(cIn, x, y, 0), SampleAt<unsigned char>(cSame, x, y));
            EXPECT_EQ(SampleAt<unsigned char>(cIn, x, y, 1), SampleAt<unsigned char>(cOther, x, y));
        }
    }
}

TEST(IpSplitPlanes, RefusesMoreThanFourPlanes)
{
    ClImage cIn(2, 2, 5, 0, 0);
    ClImage cOut;
    ClIpSplitPlanes cSplit;
    EXPECT_RAISES(cSplit.ApplyParam(cIn, &cOut, nullptr, nullptr, nullptr), ClException, FPC_ERROR_PARAM_OUT_OF_RANGE,
                  "One of the parameters is out of range.\nImage has more than 4 planes.");
    EXPECT_EQ(0, cOut.m_nWidth);
}

TEST(IpSplitPlanes, WithoutInputReportsTheMissingImage)
{
    EXPECT_EQ(FPC_ERROR_BITMAP_PTR, ClIpSplitPlanes().Apply());
}

TEST(IpSplitPlanes, PublishesTheInputAndFourOutputs)
{
    ClIpSplitPlanes cSplit;
    for (ClImage* pPlane : cSplit.m_apOutPlane)
    {
        EXPECT_EQ(nullptr, pPlane);
    }
    ClParameterContainer cContainer;
    cSplit.QueryParameters(cContainer);
    const char* aszNames[] = {"pInImage", "pOutPlane[0]", "pOutPlane[1]", "pOutPlane[2]", "pOutPlane[3]"};
    ASSERT_EQ(5u, cContainer.m_aChildren.Entries());
    for (unsigned long i = 0; i < 5; ++i)
    {
        EXPECT_STREQ(aszNames[i], cContainer.m_aChildren[i]->GetName());
        EXPECT_TRUE(cContainer.m_aChildren[i]->IsPointer());
        EXPECT_EQ(3, cContainer.m_aChildren[i]->m_nFlags);
    }
    EXPECT_EQ(static_cast<void*>(&cSplit.m_apOutPlane[3]), cContainer.m_aChildren[4]->GetParameterPtr());
}

TEST(IpSplitPlanes, CreateMakesAnotherOfItsClass)
{
    ClIpSplitPlanes cSplit;
    EXPECT_STREQ("ClIpSplitPlanes", cSplit.Name());
    std::unique_ptr<ClProcessorBase> pOther(cSplit.Create());
    EXPECT_NE(nullptr, dynamic_cast<ClIpSplitPlanes*>(pOther.get()));
}
