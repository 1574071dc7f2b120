#include "RDImageProcessing/IpJoinPlanes.hpp"

#include "RDTools/ParameterContainer.hpp"
#include "RDTools/SampleCast.hpp"
#include "SampleAccess.hpp"
#include "TestTools.hpp"

#include <cmath>
#include <limits>
#include <memory>
#include <string>

namespace
{
/// Random one-plane images of one type and size.
void MakePlanes(ClImage (&acPlane)[4], const ClImage& cModel)
{
    for (unsigned int i = 0; i < 4; ++i)
    {
        acPlane[i].NewWithType(cModel.m_eDataType, cModel.m_nWidth, cModel.m_nHeight, 1, 19685, 3937);
        FillRandom(acPlane[i], 100 + i);
    }
}
} // namespace

TEST(IpJoinPlanes, InterleavesPlanesOfEveryTypeAndFillsTheMissingOnes)
{
    ForEachRandomImage(1,
                       [](ClImage& cModel, auto cTag)
                       {
                           using T = typename decltype(cTag)::Type;
                           ClImage acPlane[4];
                           MakePlanes(acPlane, cModel);
                           for (unsigned int nSet = 1; nSet < 16; ++nSet) // which planes are there
                           {
                               ClIpJoinPlanes cJoin;
                               cJoin.m_eOutContent = ClImage::eRGBA;
                               const double adColors[] = {3.9, 5.0, 6.2, 100.7};
                               std::copy(std::begin(adColors), std::end(adColors), cJoin.m_adFillcolors);
                               ClImage* apPlane[4];
                               for (unsigned int i = 0; i < 4; ++i)
                               {
                                   apPlane[i] = (nSet >> i & 1) != 0 ? &acPlane[i] : nullptr;
                               }
                               ClImage cExpected;
                               cExpected.NewWithType(cModel.m_eDataType, cModel.m_nWidth, cModel.m_nHeight, 4, 19685,
                                                     3937);
                               cExpected.m_eContent = ClImage::eRGBA;
                               for (int y = 0; y < cModel.m_nHeight; ++y)
                               {
                                   for (int x = 0; x < cModel.m_nWidth; ++x)
                                   {
                                       for (int i = 0; i < 4; ++i)
                                       {
                                           SetSample(cExpected, x, y, i,
                                                     apPlane[i] != nullptr ? SampleAt<T>(acPlane[i], x, y)
                                                                           : static_cast<T>(adColors[i]));
                                       }
                                   }
                               }
                               ClImage cOut;
                               ASSERT_EQ(0, cJoin.ApplyParam(cOut, apPlane[0], apPlane[1], apPlane[2], apPlane[3]));
                               EXPECT_TRUE(SamePixels(cExpected, cOut));
                               EXPECT_TRUE(SameDescription(cExpected, cOut));
                           }
                       });
}

TEST(IpJoinPlanes, RgbWithOnlyTheFirstPlaneHoldsTheFillInTheOthers)
{
    ClImage cPlane;
    FillRandom8(cPlane, 5, 4, 3);
    ClIpJoinPlanes cJoin;
    cJoin.m_eOutContent = ClImage::eRGB;
    cJoin.m_adFillcolors[1] = 17.0;
    cJoin.m_adFillcolors[2] = 300.7; // not clamped: the low byte of 300
    ClImage cOut;
    ASSERT_EQ(0, cJoin.ApplyParam(cOut, &cPlane, nullptr, nullptr, nullptr));
    for (int y = 0; y < 4; ++y)
    {
        for (int x = 0; x < 5; ++x)
        {
            EXPECT_EQ(SampleAt<unsigned char>(cPlane, x, y), SampleAt<unsigned char>(cOut, x, y, 0));
            EXPECT_EQ(17, SampleAt<unsigned char>(cOut, x, y, 1));
            EXPECT_EQ(44, SampleAt<unsigned char>(cOut, x, y, 2));
        }
    }
}

TEST(IpJoinPlanes, AFillColourThatIsNotGivenIsZeroInIntegersAndNotANumberInFloats)
{
    for (const unsigned char eType : {ClImage::eUInt8, ClImage::eSInt32, ClImage::eFloat32})
    {
        ClImage cPlane;
        cPlane.NewWithType(eType, 3, 2, 1, 0, 0);
        FillRandom(cPlane, 3);
        ClIpJoinPlanes cJoin;
        cJoin.m_eOutContent = ClImage::eRGB;
        ClImage cOut;
        ASSERT_EQ(0, cJoin.ApplyParam(cOut, nullptr, &cPlane, nullptr, nullptr));
        if (eType == ClImage::eFloat32)
        {
            EXPECT_TRUE(std::isnan(SampleAt<float>(cOut, 2, 1, 2)));
        }
        else
        {
            EXPECT_EQ(0,
                      eType == ClImage::eUInt8 ? SampleAt<unsigned char>(cOut, 2, 1, 2) : SampleAt<int>(cOut, 2, 1, 2));
        }
    }
}

TEST(IpJoinPlanes, WithoutFillingTheMissingPlanesKeepWhatTheBlockHolds)
{
    ClImage cPlane;
    FillRandom8(cPlane, 5, 4, 3);
    ClImage cOut(5, 4, 3, 0, 0); // the block has the right size and is kept
    std::memset(cOut.Data(), 77, 16 * 4);
    ClIpJoinPlanes cJoin;
    cJoin.m_eOutContent = ClImage::eRGB;
    cJoin.m_bFillEmptyPlanes = false;
    ASSERT_EQ(0, cJoin.ApplyParam(cOut, nullptr, nullptr, &cPlane, nullptr));
    EXPECT_EQ(77, SampleAt<unsigned char>(cOut, 4, 3, 0));
    EXPECT_EQ(77, SampleAt<unsigned char>(cOut, 0, 0, 1));
    EXPECT_EQ(SampleAt<unsigned char>(cPlane, 4, 3), SampleAt<unsigned char>(cOut, 4, 3, 2));
}

TEST(IpJoinPlanes, TheContentSetsTheNumberOfPlanes)
{
    const struct
    {
        int nContent;
        int nOutPlanes;
        long nResult;
        int nPlanes;
        int nContentOfResult;
    } aCases[] = {{ClImage::eUnknown, 2, 0, 2, ClImage::eUnknown},
                  {ClImage::eUnknown, 3, 0, 3, ClImage::eRGB}, // three planes are RGB by themselves
                  {ClImage::eUnknown, 4, 0, 4, ClImage::eRGBA},
                  {ClImage::eUnknown, 0, 0, 0, 0}, // nothing is done
                  {ClImage::eUnknown, -1, 0, 0, 0},
                  {ClImage::eUnknown, 5, FPC_ERROR_PARAM_OUT_OF_RANGE, 0, 0},
                  {ClImage::eGrayscale, 0, 0, 1, ClImage::eGrayscale},
                  {ClImage::eRGB, 2, 0, 3, ClImage::eRGB},
                  {ClImage::eRGBA, 0, 0, 4, ClImage::eRGBA},
                  {ClImage::eHSV, 0, 0, 3, ClImage::eHSV},
                  {ClImage::eXYZ, 0, FPC_ERROR_PARAM_OUT_OF_RANGE, 0, 0},
                  {ClImage::eCIELab, 0, FPC_ERROR_PARAM_OUT_OF_RANGE, 0, 0},
                  {ClImage::eCIELUV, 0, 0, 3, ClImage::eCIELUV},
                  {8, 3, FPC_ERROR_PARAM_OUT_OF_RANGE, 0, 0},
                  {-1, 3, FPC_ERROR_PARAM_OUT_OF_RANGE, 0, 0}};
    for (const auto& cCase : aCases)
    {
        SCOPED_TRACE("content " + std::to_string(cCase.nContent) + ", planes " + std::to_string(cCase.nOutPlanes));
        ClImage cPlane(3, 2, 1, 0, 0);
        FillRandom(cPlane, 1);
        ClIpJoinPlanes cJoin;
        cJoin.m_eOutContent = static_cast<ClImage::EContent>(cCase.nContent);
        cJoin.m_nOutPlanes = cCase.nOutPlanes;
        ClImage cOut;
        EXPECT_EQ(cCase.nResult, cJoin.ApplyParam(cOut, &cPlane, &cPlane, &cPlane, &cPlane));
        EXPECT_EQ(cCase.nPlanes, cOut.m_nPlanes);
        EXPECT_EQ(cCase.nContentOfResult, cOut.m_eContent);
        for (int i = 0; i < cOut.m_nPlanes; ++i)
        {
            EXPECT_EQ(SampleAt<unsigned char>(cPlane, 2, 1), SampleAt<unsigned char>(cOut, 2, 1, i));
        }
    }
}

TEST(IpJoinPlanes, PlanesBeyondTheContentDoNotCount)
{
    ClImage cPlane(3, 2, 1, 0, 0);
    ClImage cOut;
    ClIpJoinPlanes cJoin;
    cJoin.m_eOutContent = ClImage::eRGB;
    EXPECT_EQ(FPC_ERROR_BITMAP_PTR, cJoin.ApplyParam(cOut, nullptr, nullptr, nullptr, &cPlane));
    EXPECT_EQ(0, cOut.m_nWidth);
}

TEST(IpJoinPlanes, WithoutOutputReportsTheMissingImage)
{
    ClImage cPlane(3, 2, 1, 0, 0);
    ClIpJoinPlanes cJoin;
    cJoin.m_eOutContent = ClImage::eRGB;
    cJoin.m_apInPlane[0] = &cPlane;
    EXPECT_EQ(FPC_ERROR_BITMAP_PTR, cJoin.Apply());
}

TEST(IpJoinPlanes, ATypeThatIsNoneOfTheEightIsAnInternalError)
{
    ClImage cPlane;
    cPlane.NewWithType(3, 3, 2, 1, 0, 0);
    ClImage cOut;
    ClIpJoinPlanes cJoin;
    cJoin.m_eOutContent = ClImage::eRGB;
    EXPECT_EQ(FPC_ERROR_INTERNAL, cJoin.ApplyParam(cOut, &cPlane, nullptr, nullptr, nullptr));
}

TEST(IpJoinPlanes, TheOutputMayBeOneOfThePlanes)
{
    ClImage cPlane;
    FillRandom8(cPlane, 5, 3, 8);
    cPlane.m_nAttribute = 4;
    ClImage cBoth;
    cBoth = cPlane;
    ClImage cOther;
    FillRandom8(cOther, 5, 3, 9);
    ClIpJoinPlanes cJoin;
    cJoin.m_nOutPlanes = 2;
    ASSERT_EQ(0, cJoin.ApplyParam(cBoth, &cOther, &cBoth, nullptr, nullptr));
    ASSERT_EQ(2, cBoth.m_nPlanes);
    EXPECT_EQ(4, cBoth.m_nAttribute);
    for (int x = 0; x < 5; ++x)
    {
        EXPECT_EQ(SampleAt<unsigned char>(cOther, x, 2), SampleAt<unsigned char>(cBoth, x, 2, 0));
        EXPECT_EQ(SampleAt<unsigned char>(cPlane, x, 2), SampleAt<unsigned char>(cBoth, x, 2, 1));
    }
}

TEST(IpJoinPlanes, OfAPlaneThatIsTooSmallOnlyWhatItHasIsRead)
{
    ClImage cBig;
    FillRandom8(cBig, 8, 4, 1);
    ClGuardedBytes cBytes(8); // two rows of four
    ClImage cSmall;
    cSmall.Attach(cBytes.Data(), ClImage::eUInt8, 4, 2, 1, 0, 0);
    FillRandom(cSmall, 2);
    ClImage cWithoutPixels;
    ClIpJoinPlanes cJoin;
    cJoin.m_eOutContent = ClImage::eRGB;
    cJoin.m_adFillcolors[1] = 77.0;
    ClImage cOut;
    ASSERT_EQ(0, cJoin.ApplyParam(cOut, &cBig, &cSmall, &cWithoutPixels, nullptr));
    for (int y = 0; y < 4; ++y)
    {
        for (int x = 0; x < 8; ++x)
        {
            const bool bSmall = x < 4 && y < 2;
            EXPECT_EQ(SampleAt<unsigned char>(cBig, x, y), SampleAt<unsigned char>(cOut, x, y, 0));
            EXPECT_EQ(bSmall ? SampleAt<unsigned char>(cSmall, x, y) : 77, SampleAt<unsigned char>(cOut, x, y, 1));
            EXPECT_EQ(0, SampleAt<unsigned char>(cOut, x, y, 2)) << "no fill colour";
        }
    }
}

TEST(IpJoinPlanes, AnOutputThatHasSizesButNoPixelsIsNoTrap)
{
    ClImage cPlane, cOut;
    FillRandom8(cPlane, 4, 4, 7);
    cOut.Attach(static_cast<void*>(nullptr), ClImage::eUInt8, 4, 4, 3, cPlane.m_nXRes, cPlane.m_nYRes);
    ClIpJoinPlanes cJoin;
    cJoin.m_eOutContent = ClImage::eRGB;
    EXPECT_EQ(0, cJoin.ApplyParam(cOut, &cPlane, &cPlane, &cPlane, nullptr));
    EXPECT_EQ(0, cJoin.ApplyParam(cOut, &cPlane, nullptr, &cPlane, nullptr));
    EXPECT_EQ(nullptr, cOut.Data());
}

TEST(IpJoinPlanes, ThePaddingOfANarrowPlaneIsNoSample)
{
    ClImage cBig, cNarrow, cOut;
    FillRandom8(cBig, 8, 2, 3);
    cNarrow.NewWithType(ClImage::eUInt8, 5, 2, 1, 0, 0);
    FillRandom(cNarrow, 4);
    cNarrow.FillAligment(200);
    ClIpJoinPlanes cJoin;
    cJoin.m_nOutPlanes = 2;
    cJoin.m_adFillcolors[1] = 9.0;
    ASSERT_EQ(0, cJoin.ApplyParam(cOut, &cBig, &cNarrow, nullptr, nullptr));
    for (int x = 0; x < 8; ++x)
    {
        EXPECT_EQ(x < 5 ? SampleAt<unsigned char>(cNarrow, x, 1) : 9, SampleAt<unsigned char>(cOut, x, 1, 1)) << x;
    }
}

TEST(IpJoinPlanes, APlaneOfAnotherTypeHoldsItsFillColour)
{
    ClImage cBytes, cWords, cOut;
    FillRandom8(cBytes, 4, 2, 5);
    cWords.NewWithType(ClImage::eUInt16, 4, 2, 1, 0, 0);
    FillRandom(cWords, 6);
    ClIpJoinPlanes cJoin;
    cJoin.m_nOutPlanes = 2;
    cJoin.m_adFillcolors[1] = 13.0;
    ASSERT_EQ(0, cJoin.ApplyParam(cOut, &cBytes, &cWords, nullptr, nullptr));
    EXPECT_EQ(SampleAt<unsigned char>(cBytes, 3, 1), SampleAt<unsigned char>(cOut, 3, 1, 0));
    EXPECT_EQ(13, SampleAt<unsigned char>(cOut, 3, 1, 1));
}

TEST(IpJoinPlanes, PublishesItsParametersWithTheirDefaults)
{
    ClIpJoinPlanes cJoin;
    cJoin.m_adFillcolors[2] = 5.0;
    cJoin.m_eOutContent = ClImage::eHSV;
    cJoin.m_bFillEmptyPlanes = 0;
    cJoin.m_nOutPlanes = 3;
    ClParameterContainer cContainer;
    cJoin.QueryParameters(cContainer);
    EXPECT_EQ(3, cJoin.m_nOutPlanes) << "what is not published is left alone";
    const char* aszNames[] = {"pInPlane[0]",      "pInPlane[1]",      "pInPlane[2]",      "pInPlane[3]",
                              "dInFillcolors[0]", "dInFillcolors[1]", "dInFillcolors[2]", "dInFillcolors[3]",
                              "pOutImage",        "eOutContent",      "bFillEmptyPlanes"};
    ASSERT_EQ(std::size(aszNames), cContainer.m_aChildren.Entries());
    for (unsigned long i = 0; i < std::size(aszNames); ++i)
    {
        EXPECT_STREQ(aszNames[i], cContainer.m_aChildren[i]->GetName());
        EXPECT_EQ(ClParameter::eWritable | ClParameter::eReadable, int(cContainer.m_aChildren[i]->m_nFlags));
    }
    EXPECT_TRUE(cContainer.Find("dInFillcolors[1]")->IsDefault());
    EXPECT_TRUE(std::isnan(cContainer.Find("dInFillcolors[2]")->GetNumericInterface()->GetDefault()));
    EXPECT_EQ(5.0, cJoin.m_adFillcolors[2]);
    EXPECT_EQ("eHSV", cContainer.Find("eOutContent")->GetValue());
    EXPECT_EQ("eUnknown", cContainer.Find("eOutContent")->GetDefaultValue());
    EXPECT_EQ("False", cContainer.Find("bFillEmptyPlanes")->GetValue());
    EXPECT_EQ("True", cContainer.Find("bFillEmptyPlanes")->GetDefaultValue());
    const char* aszContents[] = {"eUnknown", "eGrayscale", "eRGB", "eRGBA", "eHSV", "eXYZ", "eCIELab", "eCIELUV"};
    for (int i = 0; i < 8; ++i)
    {
        cContainer.Find("eOutContent")->SetValue(aszContents[i]);
        EXPECT_EQ(i, cJoin.m_eOutContent);
    }
}

TEST(IpJoinPlanes, CreateMakesAnotherOfItsClass)
{
    ClIpJoinPlanes cJoin;
    EXPECT_STREQ("ClIpJoinPlanes", cJoin.Name());
    std::unique_ptr<ClProcessorBase> pOther(cJoin.Create());
    EXPECT_NE(nullptr, dynamic_cast<ClIpJoinPlanes*>(pOther.get()));
}
