#include "RDImageProcessing/IpConnectedComponent2.hpp"

#include "BinaryPictures.hpp"
#include "RDTools/ParameterContainer.hpp"

#include <cmath>
#include <cstdlib>
#include <limits>
#include <memory>
#include <vector>

namespace
{
using ClComponent = ClIpConnectedComponent2::ClComponent;
using Components = ClIpConnectedComponent2::ComponentsArray_t;

void MeasureImage(ClImage& cIn, Components& aComponents, ClImage* pGrey = nullptr, ClImage* pLabels = nullptr)
{
    ClIpConnectedComponent2 cMeasure;
    cMeasure.pInImage = &cIn;
    cMeasure.m_pInImageGrey = pGrey;
    cMeasure.m_pOutImage = pLabels;
    cMeasure.m_pComponents = &aComponents;
    EXPECT_TRUE(cMeasure.CanApply());
    EXPECT_EQ(0, cMeasure.Apply());
}

/// The only object of a picture.
ClComponent ComponentOf(std::initializer_list<const char*> aRows)
{
    ClImage cIn;
    PaintText(cIn, aRows);
    Components aComponents;
    MeasureImage(cIn, aComponents);
    EXPECT_EQ(1u, aComponents.Entries());
    return aComponents[0];
}

void MomentsByDefinition(const std::vector<Pixel>& aPixels, ClComponent& c)
{
    for (const auto& [x, y] : aPixels)
    {
        const double dx = x - c.m_cCenter.m_dX;
        const double dy = y - c.m_cCenter.m_dY;
        c.m_dMomentXY = c.m_dMomentXY + dx * dy;
        c.m_dMomentYY = c.m_dMomentYY + dy * dy;
        c.m_dMomentXX = c.m_dMomentXX + dx * dx;
    }
    const double xx = c.m_dMomentXX;
    const double yy = c.m_dMomentYY;
    const double xy = c.m_dMomentXY;
    if (aPixels.size() > 1)
    {
        c.m_dEccentricity = ((xx - yy) * (xx - yy) + 4 * xy * xy) / ((xx + yy) * (xx + yy));
    }
    const double t1 = 0.5 * std::atan(2 * xy / (xx - yy));
    const double t2 = t1 + 1.5707963267948966;
    double adSpread[2];
    for (int i = 0; i < 2; ++i)
    {
        const double dCos = std::cos(i == 0 ? t1 : t2);
        const double dSin = std::sin(i == 0 ? t1 : t2);
        adSpread[i] = dCos * dCos * yy - dCos * dSin * xy + dSin * dSin * xx;
    }
    c.m_dOrientation = adSpread[1] < adSpread[0] ? t2 : t1;
}

/// A component from its pixels in raster order.
ClComponent ComponentByDefinition(const std::vector<Pixel>& aPixels, int nLabel, const ClImage& cGrey)
{
    ClComponent c;
    c.m_nLabel = nLabel;
    c.m_dArea = static_cast<double>(aPixels.size());
    long nSumX = 0;
    long nSumY = 0;
    long nSumGrey = 0;
    int nMinX = aPixels[0].first, nMaxX = nMinX, nMinY = aPixels[0].second, nMaxY = nMinY;
    for (const auto& [x, y] : aPixels)
    {
        nSumX += x;
        nSumY += y;
        nSumGrey += SampleAt<unsigned char>(cGrey, x, y);
        nMinX = std::min(nMinX, x);
        nMaxX = std::max(nMaxX, x);
        nMinY = std::min(nMinY, y);
        nMaxY = std::max(nMaxY, y);
    }
    c.m_cCenter = ClVector(static_cast<double>(nSumX) / c.m_dArea, static_cast<double>(nSumY) / c.m_dArea);
    c.m_cMin = ClVector(nMinX, nMinY);
    c.m_cMax = ClVector(nMaxX, nMaxY);
    c.m_cFirstPixel = ClVector(aPixels[0].first, aPixels[0].second);
    c.m_dMeanGrey = static_cast<double>(nSumGrey) / c.m_dArea;
    MomentsByDefinition(aPixels, c);
    return c;
}

std::vector<ClComponent> ComponentsByDefinition(const ClImage& cIn, const ClImage& cGrey)
{
    ClImage cLabels;
    const int nLabels = LabelByDefinition(cIn, cLabels);
    std::vector<std::vector<Pixel>> aPixels(static_cast<std::size_t>(nLabels));
    for (int y = 0; y < cIn.m_nHeight; ++y)
    {
        for (int x = 0; x < cIn.m_nWidth; ++x)
        {
            if (const int nLabel = SampleAt<int>(cLabels, x, y))
            {
                aPixels[static_cast<std::size_t>(nLabel - 1)].emplace_back(x, y);
            }
        }
    }
    std::vector<ClComponent> aComponents;
    for (int i = 0; i < nLabels; ++i)
    {
        aComponents.push_back(ComponentByDefinition(aPixels[static_cast<std::size_t>(i)], i + 1, cGrey));
    }
    return aComponents;
}

/// The same to the bit; any two that are not numbers are the same.
void ExpectSameValue(double dExpected, double dActual, const char* szField)
{
    EXPECT_TRUE(dExpected == dActual || (std::isnan(dExpected) && std::isnan(dActual)))
        << szField << ": expected " << dExpected << ", got " << dActual;
}

void ExpectSame(const ClComponent& c, const ClComponent& d)
{
    SCOPED_TRACE("label " + std::to_string(c.m_nLabel));
    ExpectSameValue(c.m_cCenter.m_dX, d.m_cCenter.m_dX, "centre x");
    ExpectSameValue(c.m_cCenter.m_dY, d.m_cCenter.m_dY, "centre y");
    ExpectSameValue(c.m_cMin.m_dX, d.m_cMin.m_dX, "min x");
    ExpectSameValue(c.m_cMin.m_dY, d.m_cMin.m_dY, "min y");
    ExpectSameValue(c.m_cMax.m_dX, d.m_cMax.m_dX, "max x");
    ExpectSameValue(c.m_cMax.m_dY, d.m_cMax.m_dY, "max y");
    ExpectSameValue(c.m_cFirstPixel.m_dX, d.m_cFirstPixel.m_dX, "first x");
    ExpectSameValue(c.m_cFirstPixel.m_dY, d.m_cFirstPixel.m_dY, "first y");
    ExpectSameValue(c.m_dArea, d.m_dArea, "area");
    ExpectSameValue(c.m_dEccentricity, d.m_dEccentricity, "eccentricity");
    ExpectSameValue(c.m_dMeanGrey, d.m_dMeanGrey, "mean grey");
    ExpectSameValue(c.m_dOrientation, d.m_dOrientation, "orientation");
    ExpectSameValue(c.m_dMomentXY, d.m_dMomentXY, "moment xy");
    ExpectSameValue(c.m_dMomentYY, d.m_dMomentYY, "moment yy");
    ExpectSameValue(c.m_dMomentXX, d.m_dMomentXX, "moment xx");
    EXPECT_EQ(c.m_nLabel, d.m_nLabel);
}
} // namespace

TEST(IpConnectedComponent2, MeasuresEveryObjectToTheBit)
{
    ForEachBinaryPicture(
        [](ClImage& cIn)
        {
            ClImage cGrey;
            FillRandom8(cGrey, cIn.m_nWidth, cIn.m_nHeight, 99);
            const std::vector<ClComponent> aExpected = ComponentsByDefinition(cIn, cGrey);
            ClImage cLabels;
            Components aComponents;
            MeasureImage(cIn, aComponents, &cGrey, &cLabels);
            ASSERT_EQ(aExpected.size(), aComponents.Entries());
            for (std::size_t i = 0; i < aExpected.size(); ++i)
            {
                ExpectSame(aExpected[i], aComponents[i]);
            }
            ClImage cExpectedLabels;
            LabelByDefinition(cIn, cExpectedLabels);
            EXPECT_TRUE(SamePixels(cExpectedLabels, cLabels));
        });
}

TEST(IpConnectedComponent2, MomentsOnDemandAreThoseOfAWholeMeasurement)
{
    ForEachBinaryPicture(
        [](ClImage& cIn)
        {
            Components aExpected;
            MeasureImage(cIn, aExpected);
            Components aComponents;
            ClIpConnectedComponent2 cMeasure;
            cMeasure.pInImage = &cIn;
            cMeasure.m_pComponents = &aComponents;
            cMeasure.m_bMomentsOnDemand = true;
            ASSERT_EQ(0, cMeasure.Apply());
            ASSERT_EQ(aExpected.Entries(), aComponents.Entries());
            for (unsigned long i = 0; i < aExpected.Entries(); ++i)
            {
                EXPECT_EQ(0.0, aComponents[i].m_dMomentXX);
                EXPECT_EQ(0.0, aComponents[i].m_dOrientation);
                cMeasure.MeasureMoments(i);
                ExpectSame(aExpected[i], aComponents[i]);
            }
        });
}

TEST(IpConnectedComponent2, SumsThatLeaveTheWholeNumbersOfADoubleRoundAtEachPixel)
{
    constexpr int nWidth = (1 << 27) + 54321; // one row; the columns add up to more than 2^53
    struct ClFree
    {
        void operator()(unsigned char* p) const { std::free(p); }
    };
    // All pixels are objects. Pages that are only read take no memory.
    const std::unique_ptr<unsigned char, ClFree> pRow(static_cast<unsigned char*>(std::calloc(nWidth + 3, 1)));
    ASSERT_NE(nullptr, pRow);
    ClImage cIn;
    cIn.Attach(pRow.get(), ClImage::eUInt8, nWidth, 1, 1, 0, 0);
    Components aComponents;
    ClIpConnectedComponent2 cMeasure;
    cMeasure.pInImage = &cIn;
    cMeasure.m_pComponents = &aComponents;
    cMeasure.m_bMomentsOnDemand = true;
    ASSERT_EQ(0, cMeasure.Apply());
    double dSum = 0.0;
    for (int x = 0; x < nWidth; ++x)
    {
        dSum += x;
    }
    EXPECT_GT(dSum, 9007199254740992.0);
    EXPECT_NE((nWidth - 1) * 0.5, dSum / nWidth); // the exact mean
    ASSERT_EQ(1u, aComponents.Entries());
    EXPECT_EQ(dSum / nWidth, aComponents[0].m_cCenter.m_dX);
    EXPECT_EQ(nWidth, aComponents[0].m_dArea);
    EXPECT_EQ(nWidth - 1, aComponents[0].m_cMax.m_dX);
    EXPECT_EQ(0.0, aComponents[0].m_cMin.m_dX);
    EXPECT_EQ(0.0, aComponents[0].m_cFirstPixel.m_dX);
}

TEST(IpConnectedComponent2, WithoutAGreyImageTheMeanIsZero)
{
    ClImage cIn;
    FillBinary(cIn, 20, 20, 50, 1);
    Components aComponents;
    MeasureImage(cIn, aComponents);
    ASSERT_NE(0u, aComponents.Entries());
    for (unsigned long i = 0; i < aComponents.Entries(); ++i)
    {
        EXPECT_EQ(0.0, aComponents[i].m_dMeanGrey);
    }
}

TEST(IpConnectedComponent2, AWhiteImageGivesAnEmptyArray)
{
    ClImage cIn;
    FillBinary(cIn, 9, 9, 0, 1);
    Components aComponents;
    aComponents.New(3);
    MeasureImage(cIn, aComponents);
    EXPECT_EQ(0u, aComponents.Entries());
}

TEST(IpConnectedComponent2, AnImageWithoutPixelsGivesAnEmptyArray)
{
    ClImage cIn;
    Components aComponents;
    MeasureImage(cIn, aComponents, &cIn);
    EXPECT_EQ(0u, aComponents.Entries());
}

TEST(IpConnectedComponent2, ASinglePixelHasNoOrientation)
{
    const ClComponent c = ComponentOf({"....", "..#.", "...."});
    EXPECT_EQ(1.0, c.Area());
    EXPECT_EQ(0.0, c.m_dEccentricity);
    EXPECT_TRUE(std::isnan(c.m_dOrientation));
    for (const ClVector& cPoint : {c.m_cMin, c.m_cMax, c.m_cCenter, c.m_cFirstPixel})
    {
        EXPECT_EQ(2.0, cPoint.m_dX);
        EXPECT_EQ(1.0, cPoint.m_dY);
    }
}

TEST(IpConnectedComponent2, EqualMomentsGiveADiagonal)
{
    const ClComponent c = ComponentOf({".#..", "###.", ".###", "..#."});
    EXPECT_EQ(6.0, c.m_dMomentXX);
    EXPECT_EQ(6.0, c.m_dMomentYY);
    EXPECT_EQ(3.0, c.m_dMomentXY);
    EXPECT_EQ(0.5 * std::atan(std::numeric_limits<double>::infinity()), c.m_dOrientation);
    EXPECT_NEAR(0.7853981633974483, c.m_dOrientation, 1e-15);
    const ClComponent cMirrored = ComponentOf({"..#.", ".###", "###.", ".#.."});
    EXPECT_EQ(-3.0, cMirrored.m_dMomentXY);
    EXPECT_NEAR(-0.7853981633974483, cMirrored.m_dOrientation, 1e-15);
}

TEST(IpConnectedComponent2, LinesHaveTheirDirections)
{
    const ClComponent cAcross = ComponentOf({"#####"});
    EXPECT_EQ(0.0, cAcross.m_dOrientation);
    EXPECT_EQ(1.0, cAcross.m_dEccentricity);
    const ClComponent cUp = ComponentOf({"#", "#", "#", "#"});
    EXPECT_EQ(1.5707963267948966, cUp.m_dOrientation);
    EXPECT_EQ(1.0, cUp.m_dEccentricity);
}

TEST(IpConnectedComponent2, AnArrayThatIsInUseCarriesItsSumsOn)
{
    ClImage cIn;
    PaintText(cIn, {"##", ".."});
    ClImage cGrey(2, 2, 1, 0, 0);
    std::memset(cGrey.Data(), 10, 8);
    Components aComponents;
    MeasureImage(cIn, aComponents, &cGrey);
    EXPECT_EQ(0.5, aComponents[0].m_dMomentXX);
    PaintText(cIn, {"..", "##"});
    MeasureImage(cIn, aComponents, &cGrey);
    ASSERT_EQ(1u, aComponents.Entries());
    EXPECT_EQ(1.0, aComponents[0].m_dMomentXX);
    EXPECT_EQ(15.0, aComponents[0].m_dMeanGrey);       // (10 + 10 + 10) / 2
    EXPECT_EQ(0.0, aComponents[0].m_cFirstPixel.m_dY); // of the first run
    EXPECT_EQ(2.0, aComponents[0].m_dArea);
    EXPECT_EQ(1.0, aComponents[0].m_cCenter.m_dY);
    EXPECT_EQ(1.0, aComponents[0].m_cMin.m_dY);
}

TEST(IpConnectedComponent2, AMeanWithAFractionIsCarriedOn)
{
    ClImage cIn, cGrey(2, 2, 1, 0, 0);
    PaintText(cIn, {"##", ".."});
    std::memset(cGrey.Data(), 0, 8);
    SetSample<unsigned char>(cGrey, 0, 0, 0, 10);
    SetSample<unsigned char>(cGrey, 1, 0, 0, 11);
    Components aComponents;
    MeasureImage(cIn, aComponents, &cGrey);
    ASSERT_EQ(10.5, aComponents[0].m_dMeanGrey);
    MeasureImage(cIn, aComponents, &cGrey);
    EXPECT_EQ((10.5 + 10 + 11) / 2, aComponents[0].m_dMeanGrey);
    // From a negative sum and from one that no grey image could reach.
    for (const double dSum : {-4.0, 9007199254740992.0})
    {
        aComponents[0].m_dMeanGrey = dSum;
        MeasureImage(cIn, aComponents, &cGrey);
        EXPECT_EQ((dSum + 10 + 11) / 2, aComponents[0].m_dMeanGrey);
    }
}

TEST(IpConnectedComponent2, AnArrayInUseGrowsAndKeepsItsEntries)
{
    ClImage cIn;
    PaintText(cIn, {"##."});
    Components aComponents;
    MeasureImage(cIn, aComponents);
    PaintText(cIn, {"##.#.#.#.#.#.#.#.#.#.#.#.#"});
    MeasureImage(cIn, aComponents);
    ASSERT_EQ(13u, aComponents.Entries());
    EXPECT_EQ(1.0, aComponents[0].m_dMomentXX);
    for (unsigned long i = 1; i < 13; ++i)
    {
        EXPECT_EQ(0.0, aComponents[i].m_dMomentXX);
        EXPECT_EQ(static_cast<int>(i + 1), aComponents[i].m_nLabel);
        EXPECT_EQ(static_cast<double>(2 * i + 1), aComponents[i].m_cFirstPixel.m_dX);
    }
    PaintText(cIn, {"#.#"});
    MeasureImage(cIn, aComponents);
    EXPECT_EQ(2u, aComponents.Entries());
}

TEST(IpConnectedComponent2, AClearedArrayIsAsGoodAsNew)
{
    ClImage cFirst;
    FillBinary(cFirst, 12, 12, 50, 1);
    ClImage cSecond;
    FillBinary(cSecond, 12, 12, 50, 2);
    ClImage cGrey(12, 12, 1, 0, 0);
    FillRandom(cGrey, 1);
    Components aComponents;
    MeasureImage(cFirst, aComponents, &cGrey);
    aComponents.Clear();
    MeasureImage(cSecond, aComponents, &cGrey);
    const std::vector<ClComponent> aExpected = ComponentsByDefinition(cSecond, cGrey);
    ASSERT_EQ(aExpected.size(), aComponents.Entries());
    for (std::size_t i = 0; i < aExpected.size(); ++i)
    {
        ExpectSame(aExpected[i], aComponents[i]);
    }
}

TEST(IpConnectedComponent2, ReportsWhatIsMissingOrDoesNotFit)
{
    ClImage cIn(3, 2, 1, 0, 0);
    ClImage cGrey(2, 3, 1, 0, 0);
    Components aComponents;
    ClIpConnectedComponent2 cMeasure;
    EXPECT_FALSE(cMeasure.CanApply());
    EXPECT_RAISES(cMeasure.Apply(), ClException, -37,
                  "One of the required parameter is missing.\nObjectimage is missing");
    cMeasure.pInImage = &cIn;
    EXPECT_FALSE(cMeasure.CanApply());
    EXPECT_RAISES(cMeasure.Apply(), ClException, -37,
                  "One of the required parameter is missing.\nOutput object array is missing");
    cMeasure.m_pComponents = &aComponents;
    EXPECT_TRUE(cMeasure.CanApply());
    cMeasure.m_pInImageGrey = &cGrey;
    EXPECT_FALSE(cMeasure.CanApply());
    EXPECT_RAISES(cMeasure.Apply(), ClException, -44,
                  "One(or more) parameter(s) is(are) invalid.\nthe given grayimage has not the same size as the object "
                  "image");
    cGrey.NewWithType(ClImage::eUInt8, 3, 3, 1, 0, 0);
    EXPECT_FALSE(cMeasure.CanApply());
    cGrey.NewWithType(ClImage::eUInt8, 3, 2, 1, 0, 0);
    EXPECT_TRUE(cMeasure.CanApply());
    cMeasure.m_pInImageGrey = nullptr;
    cMeasure.m_pOutImage = &cIn;
    EXPECT_RAISES_CODE(cMeasure.Apply(), -44);
}

TEST(IpConnectedComponent2, OtherImagesAreReadOneBytePerColumn)
{
    ClImage cColour(6, 4, 3, 0, 0);
    std::memset(cColour.Data(), 0, 20 * 4);
    ClImage cGrey;
    cGrey.NewWithType(ClImage::eUInt16, 6, 4, 1, 0, 0);
    std::memset(cGrey.Data(), 8, 12 * 4);
    Components aComponents;
    MeasureImage(cColour, aComponents, &cGrey);
    ASSERT_EQ(1u, aComponents.Entries());
    EXPECT_EQ(24.0, aComponents[0].m_dArea);
    EXPECT_EQ(8.0, aComponents[0].m_dMeanGrey);
}

TEST(IpConnectedComponent2, ComponentsAreComparedByWhatIdentifiesThem)
{
    ClComponent c;
    EXPECT_EQ(0.0, c.m_cCenter.m_dX);
    EXPECT_EQ(-1.0, c.m_cFirstPixel.m_dX);
    EXPECT_EQ(-1.0, c.m_cFirstPixel.m_dY);
    EXPECT_EQ(0, c.m_nLabel);
    const auto differs = [&c](auto&& change)
    {
        ClComponent d(c);
        EXPECT_TRUE(c == d);
        change(d);
        return !(c == d);
    };
    EXPECT_TRUE(differs([](ClComponent& d) { d.m_cCenter.m_dX += 1e-6; }));
    EXPECT_FALSE(differs([](ClComponent& d) { d.m_cCenter.m_dX += 0.9e-7; }));
    EXPECT_TRUE(differs([](ClComponent& d) { d.m_cCenter.m_dX += ClVector::m_cdEpsilon; }));
    EXPECT_TRUE(differs([](ClComponent& d) { d.m_cCenter.m_dY -= 1e-6; }));
    EXPECT_TRUE(differs([](ClComponent& d) { d.m_cFirstPixel.m_dX += 1e-6; }));
    EXPECT_TRUE(differs([](ClComponent& d) { d.m_cFirstPixel.m_dY += 1e-6; }));
    EXPECT_TRUE(differs([](ClComponent& d) { d.m_cMin.m_dX += 1e-6; }));
    EXPECT_TRUE(differs([](ClComponent& d) { d.m_cMin.m_dY += 1e-6; }));
    EXPECT_TRUE(differs([](ClComponent& d) { d.m_cMax.m_dX += 1e-6; }));
    EXPECT_TRUE(differs([](ClComponent& d) { d.m_cMax.m_dY += 1e-6; }));
    EXPECT_FALSE(differs([](ClComponent& d) { d.m_cMax.m_dY += 1e-8; }));
    EXPECT_TRUE(differs([](ClComponent& d) { d.m_dArea += 1e-12; }));
    EXPECT_TRUE(differs([](ClComponent& d) { d.m_dEccentricity += 1e-12; }));
    EXPECT_TRUE(differs([](ClComponent& d) { d.m_dMeanGrey += 1e-12; }));
    EXPECT_TRUE(differs([](ClComponent& d) { d.m_nLabel = 1; }));
    EXPECT_FALSE(differs([](ClComponent& d) { d.m_dOrientation = 1.0; }));
    EXPECT_FALSE(differs([](ClComponent& d) { d.m_dMomentXX = 1.0; }));
    EXPECT_FALSE(differs([](ClComponent& d) { d.m_dMomentXY = 1.0; }));
    EXPECT_FALSE(differs([](ClComponent& d) { d.m_dMomentYY = 1.0; }));
}

TEST(IpConnectedComponent2, OrdersTheLargestFirst)
{
    using Order = ClIpConnectedComponent2::TpSortDescending<&ClComponent::Area, ClIpConnectedComponent2::ClSortNone>;
    ClComponent cSmall;
    cSmall.m_dArea = 1.0;
    ClComponent cLarge;
    cLarge.m_dArea = 2.0;
    EXPECT_TRUE(Order::Compare(cLarge, cSmall));
    EXPECT_FALSE(Order::Compare(cSmall, cLarge));
    EXPECT_FALSE(Order::Compare(cSmall, cSmall));
    EXPECT_TRUE(Order()(cLarge, cSmall));
    struct ClSortAlways
    {
        static bool Compare(const ClComponent&, const ClComponent&) { return true; }
    };
    using Deferring = ClIpConnectedComponent2::TpSortDescending<&ClComponent::Area, ClSortAlways>;
    EXPECT_TRUE(Deferring::Compare(cSmall, cSmall));
    EXPECT_FALSE(Deferring::Compare(cSmall, cLarge));
}

TEST(IpConnectedComponent2, ItsTimerFlagCountsForTheLabellingToo)
{
    ClRunCounter cCounter;
    ClImage cIn;
    PaintText(cIn, {"#.#"});
    Components aComponents;
    ClIpConnectedComponent2 cMeasure;
    cMeasure.pInImage = &cIn;
    cMeasure.m_pComponents = &aComponents;
    cMeasure.Apply();
    EXPECT_EQ(2, cCounter.m_nRuns);
    cMeasure.Timer(false);
    cMeasure.Apply();
    EXPECT_EQ(2, cCounter.m_nRuns);
}

TEST(IpConnectedComponent2, PublishesThreePointers)
{
    ClIpConnectedComponent2 cMeasure;
    EXPECT_EQ(nullptr, cMeasure.pInImage);
    EXPECT_EQ(nullptr, cMeasure.m_pInImageGrey);
    EXPECT_EQ(nullptr, cMeasure.m_pOutImage);
    EXPECT_EQ(nullptr, cMeasure.m_pComponents);
    ClParameterContainer cContainer;
    cMeasure.QueryParameters(cContainer);
    const char* aszNames[] = {"pInImage", "m_pInImageGrey", "m_pOutImage"};
    const int anFlags[] = {1, 5, 6};
    ASSERT_EQ(3u, cContainer.m_aChildren.Entries());
    for (unsigned long i = 0; i < 3; ++i)
    {
        EXPECT_STREQ(aszNames[i], cContainer.m_aChildren[i]->GetName());
        EXPECT_EQ(anFlags[i], cContainer.m_aChildren[i]->m_nFlags);
        EXPECT_TRUE(cContainer.m_aChildren[i]->IsPointer());
    }
}

TEST(IpConnectedComponent2, CreateMakesAnotherOfItsClass)
{
    ClIpConnectedComponent2 cMeasure;
    EXPECT_STREQ("ClIpConnectedComponent2", cMeasure.Name());
    std::unique_ptr<ClProcessorBase> pOther(cMeasure.Create());
    EXPECT_NE(nullptr, dynamic_cast<ClIpConnectedComponent2*>(pOther.get()));
}
