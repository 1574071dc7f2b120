#include "RDImageProcessing/IpCut.hpp"

#include "FailingHeap.hpp"
#include "RDTools/ParameterContainer.hpp"
#include "SampleAccess.hpp"
#include "TestTools.hpp"

#include <limits>
#include <memory>
#include <string>
#include <utility>

namespace
{
constexpr long nLongMax = std::numeric_limits<long>::max();
constexpr long nLongMin = std::numeric_limits<long>::min();

template <class T> void CutByDefinition(const ClImage& cIn, int nX0, int nY0, int nWidth, int nHeight, ClImage& cOut)
{
    cOut.NewWithType(cIn.m_eDataType, nWidth, nHeight, cIn.m_nPlanes, cIn.m_nXRes, cIn.m_nYRes);
    cOut.m_dBlack = cIn.m_dBlack;
    cOut.m_dWhite = cIn.m_dWhite;
    cOut.m_nAttribute = cIn.m_nAttribute;
    for (int y = 0; y < nHeight; ++y)
    {
        for (int x = 0; x < nWidth; ++x)
        {
            for (int i = 0; i < cIn.m_nPlanes; ++i)
            {
                SetSample(cOut, x, y, i, SampleAt<T>(cIn, nX0 + x, nY0 + y, i));
            }
        }
    }
}

/// Cuts from an 8-bit image of 10 by 6 pixels; the text of the failure, or "".
std::string FaultOf(long nX0, long nY0, long nWidth, long nHeight)
{
    ClImage cIn;
    FillRandom8(cIn, 10, 6, 1);
    ClImage cOut;
    try
    {
        EXPECT_EQ(0, ClIpCut().ApplyParam(cIn, nX0, nY0, nWidth, nHeight, cOut));
    }
    catch (const ClException& cFault)
    {
        EXPECT_EQ(FPC_ERROR_PARAM_OUT_OF_RANGE, cFault.Number());
        return cFault.What();
    }
    return "";
}

std::string Fault(const char* szCondition)
{
    return std::string("One of the parameters is out of range.\nClIpCut::Process. ") + szCondition;
}
} // namespace

TEST(IpCut, CopiesTheRectangleOfEveryType)
{
    ClTestRandom cRandom(4);
    ForEachRandomImage(4,
                       [&](ClImage& cIn, auto cTag)
                       {
                           using T = typename decltype(cTag)::Type;
                           if (cIn.m_eDataType != ClImage::eUInt8 && cIn.m_eDataType != ClImage::eSInt8)
                           {
                               cIn.m_dBlack = 10.0; // the range is the image's own
                               cIn.m_dWhite = 20.0;
                           }
                           for (int i = 0; i < 5; ++i)
                           {
                               const int nX0 = cRandom.Below(cIn.m_nWidth);
                               const int nY0 = cRandom.Below(cIn.m_nHeight);
                               const int nWidth = 1 + cRandom.Below(cIn.m_nWidth - nX0);
                               const int nHeight = 1 + cRandom.Below(cIn.m_nHeight - nY0);
                               ClImage cExpected;
                               CutByDefinition<T>(cIn, nX0, nY0, nWidth, nHeight, cExpected);
                               ClImage cOut;
                               ASSERT_EQ(0, ClIpCut().ApplyParam(cIn, nX0, nY0, nWidth, nHeight, cOut));
                               EXPECT_TRUE(SamePixels(cExpected, cOut));
                               EXPECT_TRUE(SameDescription(cExpected, cOut));
                           }
                       });
}

TEST(IpCut, AnImageCanBeCutInPlace)
{
    ClImage cImage;
    FillRandom8(cImage, 13, 11, 2);
    ClImage cExpected;
    CutByDefinition<unsigned char>(cImage, 3, 4, 9, 5, cExpected);
    ASSERT_EQ(0, ClIpCut().ApplyParam(cImage, 3, 4, 9, 5, cImage));
    EXPECT_TRUE(SamePixels(cExpected, cImage));
}

TEST(IpCut, TheContentOfTheOutputFollowsItsPlanes)
{
    ClImage cIn(4, 4, 3, 0, 0);
    FillRandom(cIn, 1);
    cIn.m_eContent = ClImage::eHSV;
    ClImage cOut;
    ASSERT_EQ(0, ClIpCut().ApplyParam(cIn, 0, 0, 2, 2, cOut));
    EXPECT_EQ(ClImage::eRGB, cOut.m_eContent);
}

TEST(IpCut, TheFullWidthPassesAndOneColumnMoreIsRefused)
{
    EXPECT_EQ("", FaultOf(0, 0, 10, 6));
    EXPECT_EQ(Fault("m_nX0+m_nDestWidth > m_pInImage->Width()"), FaultOf(0, 0, 11, 6));
    EXPECT_EQ(Fault("m_nY0+m_nDestHeight > m_pInImage->Height()"), FaultOf(0, 0, 10, 7));
    EXPECT_EQ("", FaultOf(9, 5, 1, 1));
    EXPECT_EQ(Fault("m_nX0+m_nDestWidth > m_pInImage->Width()"), FaultOf(9, 5, 2, 1));
    EXPECT_EQ(Fault("m_nY0+m_nDestHeight > m_pInImage->Height()"), FaultOf(9, 5, 1, 2));
}

TEST(IpCut, TheFirstBrokenConditionIsReported)
{
    // Each call breaks one condition and all that can be broken behind it.
    EXPECT_EQ(Fault("m_nX0 < 0"), FaultOf(-1, -1, 0, 0));
    EXPECT_EQ(Fault("m_nY0 < 0"), FaultOf(10, -1, 0, 0));
    EXPECT_EQ(Fault("m_nX0>=m_pInImage->Width()"), FaultOf(10, 6, 0, 0));
    EXPECT_EQ(Fault("m_nY0>=m_pInImage->Height()"), FaultOf(9, 6, 0, 0));
    EXPECT_EQ(Fault("m_nDestWidth <= 0"), FaultOf(9, 5, 0, 0));
    EXPECT_EQ(Fault("m_nDestHeight <= 0"), FaultOf(9, 5, 2, 0));
    EXPECT_EQ(Fault("m_nX0+m_nDestWidth > m_pInImage->Width()"), FaultOf(9, 5, 2, 2));
    EXPECT_EQ(Fault("m_nY0+m_nDestHeight > m_pInImage->Height()"), FaultOf(9, 5, 1, 2));
}

TEST(IpCut, AnImageWithoutPixelsIsRefusedByTheFrame)
{
    ClImage cNoRows(10, 0, 1, 0, 0), cEmpty, cOut;
    EXPECT_RAISES(ClIpCut().ApplyParam(cNoRows, cOut), ClException, FPC_ERROR_BAD_POINTER,
                  "The pointer is bad or invalid.\nm_pInImage->Data() is not set");
    EXPECT_RAISES(ClIpCut().ApplyParam(cEmpty, cOut), ClException, FPC_ERROR_FORMAT_NOTSUPPORTED,
                  "The required format is not supported.\nInput pixel type \"unknown\" not supported by processor.");
    EXPECT_EQ(nullptr, cOut.Data());
}

TEST(IpCut, HugeNumbersDoNotWrapIntoTheImage)
{
    EXPECT_EQ(Fault("m_nX0+m_nDestWidth > m_pInImage->Width()"), FaultOf(1, 1, nLongMax, 1));
    EXPECT_EQ(Fault("m_nY0+m_nDestHeight > m_pInImage->Height()"), FaultOf(1, 1, 1, nLongMax));
    EXPECT_EQ(Fault("m_nX0+m_nDestWidth > m_pInImage->Width()"), FaultOf(1, 1, (1L << 32) + 2, 1));
    EXPECT_EQ(Fault("m_nX0>=m_pInImage->Width()"), FaultOf(1L << 32, 0, 1, 1));
    EXPECT_EQ(Fault("m_nDestWidth <= 0"), FaultOf(0, 0, nLongMin, 1));
    EXPECT_EQ(Fault("m_nX0 < 0"), FaultOf(nLongMin, 0, 1, 1));
}

TEST(IpCut, ABorderIsCutFromAllFourSides)
{
    ClImage cIn;
    FillRandom8(cIn, 11, 9, 3);
    ClImage cExpected;
    CutByDefinition<unsigned char>(cIn, 2, 2, 7, 5, cExpected);
    ClImage cOut;
    ClIpCut cCut;
    ASSERT_EQ(0, cCut.ApplyParam(cIn, 2, cOut));
    EXPECT_TRUE(SamePixels(cExpected, cOut));
    EXPECT_EQ(2, cCut.m_nX0);
    EXPECT_EQ(7, cCut.m_nDestWidth);
    EXPECT_EQ(5, cCut.m_nDestHeight);
    ASSERT_EQ(0, cCut.ApplyParam(cIn, 0, cOut));
    EXPECT_TRUE(SamePixels(cIn, cOut));
}

TEST(IpCut, ABorderThatLeavesNothingIsRefused)
{
    ClImage cIn;
    FillRandom8(cIn, 12, 10, 3);
    ClImage cOut;
    ClIpCut cCut;
    EXPECT_RAISES(cCut.ApplyParam(cIn, 6, cOut), ClException, -35, Fault("m_nDestWidth <= 0").c_str());
    EXPECT_RAISES(cCut.ApplyParam(cIn, 5, cOut), ClException, -35, Fault("m_nDestHeight <= 0").c_str());
    EXPECT_RAISES(cCut.ApplyParam(cIn, -1, cOut), ClException, -35, Fault("m_nX0 < 0").c_str());
    EXPECT_RAISES(cCut.ApplyParam(cIn, nLongMin, cOut), ClException, -35, Fault("m_nX0 < 0").c_str());
    EXPECT_RAISES(cCut.ApplyParam(cIn, nLongMax, cOut), ClException, -35, Fault("m_nX0>=m_pInImage->Width()").c_str());
}

TEST(IpCut, PublishesTheRectangleBehindTheImages)
{
    ClIpCut cCut;
    cCut.m_nX0 = 5;
    cCut.m_nDestHeight = 6;
    ClParameterContainer cContainer;
    cCut.QueryParameters(cContainer);
    const char* aszNames[] = {"pInImage", "pOutImage", "nDestHeight", "nDestWidth", "nX0", "nY0"};
    long* apField[] = {&cCut.m_nDestHeight, &cCut.m_nDestWidth, &cCut.m_nX0, &cCut.m_nY0};
    ASSERT_EQ(6u, cContainer.m_aChildren.Entries());
    for (unsigned long i = 0; i < 6; ++i)
    {
        ClParameter* pParameter = cContainer.m_aChildren[i];
        EXPECT_STREQ(aszNames[i], pParameter->GetName());
        EXPECT_EQ(i == 0 ? 1 : i == 1 ? 2 : 3, pParameter->m_nFlags);
        if (i >= 2)
        {
            EXPECT_EQ(apField[i - 2], pParameter->GetParameterPtr());
            EXPECT_EQ(0.0, pParameter->GetNumericInterface()->GetDefault());
        }
    }
    EXPECT_EQ(5, cCut.m_nX0);
    EXPECT_EQ(6, cCut.m_nDestHeight);
}

TEST(IpCut, CreateMakesAnotherOfItsClass)
{
    ClIpCut cCut;
    EXPECT_STREQ("ClIpCut", cCut.Name());
    std::unique_ptr<ClProcessorBase> pOther(cCut.Create());
    EXPECT_NE(nullptr, dynamic_cast<ClIpCut*>(pOther.get()));
}

TEST(IpCut, ImagesThatBorrowTheSameMemoryAreCutRowByRow)
{
    unsigned char acPixel[48];
    ClImage cIn;
    cIn.Attach(acPixel, ClImage::eUInt8, 8, 6, 1, 0, 0);
    FillRandom(cIn, 5);
    ClImage cExpected;
    ASSERT_EQ(0, ClIpCut().ApplyParam(cIn, 2, 0, 5, 6, cExpected));
    ClImage cOut;
    cOut.Attach(acPixel, ClImage::eUInt8, 8, 6, 1, 0, 0);
    ASSERT_EQ(0, ClIpCut().ApplyParam(cIn, 2, 0, 5, 6, cOut));
    EXPECT_TRUE(SamePixels(cExpected, cOut));
}

TEST(IpCut, AsksForNoMoreMemoryThanTheRectangleTakes)
{
    ClImage cIn;
    FillRandom8(cIn, 400, 300, 6);
    ClImage cExpected;
    CutByDefinition<unsigned char>(cIn, 100, 50, 40, 30, cExpected);
    ClImage cOut;
    std::size_t nGreatest = 0;
    {
        const ClLimitedHeap cHeap(400 * 300);
        ASSERT_EQ(0, ClIpCut().ApplyParam(cIn, 100, 50, 40, 30, cOut));
        nGreatest = ClLimitedHeap::Greatest();
    }
    EXPECT_TRUE(SamePixels(cExpected, cOut));
    EXPECT_LE(nGreatest, 40u * 30u + 8u);
}

TEST(IpCut, KeepsTheOutputsBlockOnlyWhereItHasTheSizeOfInputAndCut)
{
    for (const int nWidth : {5, 6, 7, 8}) // rows of 8 bytes all
    {
        unsigned char acPixel[24] = {};
        ClImage cIn;
        FillRandom8(cIn, 8, 3, 1);
        ClImage cOut;
        cOut.Attach(acPixel, ClImage::eUInt8, 7, 3, 1, 0, 0);
        ASSERT_EQ(0, ClIpCut().ApplyParam(cIn, 8 - nWidth, 0, nWidth, 3, cOut));
        EXPECT_EQ(acPixel, cOut.Data());
        EXPECT_EQ(SampleAt<unsigned char>(cIn, 7, 2), acPixel[16 + nWidth - 1]);
        cOut.Attach(acPixel, ClImage::eUInt8, 4, 3, 1, 0, 0);
        ASSERT_EQ(0, ClIpCut().ApplyParam(cIn, 0, 0, 4, 3, cOut));
        EXPECT_NE(acPixel, cOut.Data());
    }
}

TEST(IpCut, ACutThatIsRefusedLeavesAnOutputOfTheInputsSize)
{
    ClImage cIn;
    FillRandom8(cIn, 8, 3, 1);
    ClImage cOut;
    EXPECT_RAISES_CODE(ClIpCut().ApplyParam(cIn, 7, 0, 2, 3, cOut), -35);
    EXPECT_TRUE(SameDescription(cIn, cOut));
    for (const auto& [nY0, nHeight] : {std::pair(-1L, 2L), std::pair(3L, 1L), std::pair(1L, 0L), std::pair(2L, 2L)})
    {
        ClImage cOther;
        EXPECT_RAISES_CODE(ClIpCut().ApplyParam(cIn, 0, nY0, 8, nHeight, cOther), -35);
        EXPECT_TRUE(SameDescription(cIn, cOther)) << nY0 << ", " << nHeight;
    }
}

TEST(IpCut, PixelsOfNoPlaneHaveNothingToCopy)
{
    unsigned char anUntouched[12] = {1, 2, 3, 4};
    ClImage cIn, cOut;
    cIn.Attach(anUntouched, ClImage::eUInt8, 5, 3, 0, 7, 9);
    ASSERT_EQ(0, ClIpCut().ApplyParam(cIn, 1, 1, 3, 2, cOut));
    EXPECT_EQ(3, cOut.m_nWidth);
    EXPECT_EQ(2, cOut.m_nHeight);
    EXPECT_EQ(0, cOut.m_nPlanes);
    EXPECT_EQ(nullptr, cOut.Data());
    EXPECT_EQ(1, anUntouched[0]);
}
