#include "RDImageProcessing/PlaneByPlane.hpp"

#include "SampleAccess.hpp"
#include "TestTools.hpp"

#include <vector>

namespace
{
/// An operator for one plane: adds the number of the run to every byte, and writes down what it sees.
class ClAddRun : public ClProcessorBase
{
public:
    ClProcessorBase* Create() override { return NewProcessor<ClAddRun>(); }
    const char* Name() const override { return "ClAddRun"; }
    long Process() override
    {
        ++m_nRun;
        *m_pOut = *m_pIn;
        for (int y = 0; y < m_pOut->m_nHeight; ++y)
        {
            for (int x = 0; x < m_pOut->m_nWidth; ++x)
            {
                const int nValue = SampleAt<unsigned char>(*m_pIn, x, y) + m_nRun;
                SetSample(*m_pOut, x, y, 0, static_cast<unsigned char>(nValue));
            }
        }
        return 0;
    }

    long PlaneByPlane(int nMostPlanes, bool bLastFirst)
    {
        const auto process = [this](int nPlane)
        {
            m_anPlanes.push_back(nPlane);
            EXPECT_EQ(1, m_pIn->m_nPlanes);
            EXPECT_EQ(nullptr, m_pOut->Data());
            Process();
        };
        return ProcessPlaneByPlane(*this, m_pIn, m_pOut, nMostPlanes, process, bLastFirst);
    }

    ClImage* m_pIn = nullptr;
    ClImage* m_pOut = nullptr;
    int m_nRun = 0;
    std::vector<int> m_anPlanes;
};

void MakePlanes(ClImage& cImage, int nPlanes)
{
    cImage.NewWithType(ClImage::eUInt8, 7, 5, nPlanes, 19685, 3937);
    FillRandom(cImage, static_cast<unsigned int>(nPlanes));
}
} // namespace

TEST(PlaneByPlane, PlanesRunInTheirOrderOrBackwards)
{
    for (int nPlanes = 2; nPlanes <= 4; ++nPlanes)
    {
        for (int nMost = 3; nMost <= 4; ++nMost)
        {
            for (const bool bLastFirst : {false, true})
            {
                ClImage cIn, cOut, cBefore;
                MakePlanes(cIn, nPlanes);
                cBefore = cIn;
                ClAddRun cAdd;
                cAdd.m_pIn = &cIn;
                cAdd.m_pOut = &cOut;
                EXPECT_EQ(0, cAdd.PlaneByPlane(nMost, bLastFirst));
                EXPECT_EQ(&cIn, cAdd.m_pIn);
                EXPECT_EQ(&cOut, cAdd.m_pOut);
                EXPECT_TRUE(SamePixels(cBefore, cIn));
                const int nTaken = std::min(nPlanes, nMost);
                ASSERT_EQ(nTaken, static_cast<int>(cAdd.m_anPlanes.size()));
                ASSERT_EQ(nPlanes, cOut.m_nPlanes); // four are RGBA, whatever was taken
                EXPECT_EQ(cIn.m_eContent, cOut.m_eContent);
                EXPECT_EQ(3937, cOut.m_nYRes);
                for (int i = 0; i < nPlanes; ++i)
                {
                    const int nRun = bLastFirst ? nTaken - i : i + 1;
                    const int nExpected = (SampleAt<unsigned char>(cIn, 6, 4, i) + nRun) % 256;
                    EXPECT_EQ(i < nTaken ? nExpected : 0, SampleAt<unsigned char>(cOut, 6, 4, i));
                    if (i < nTaken)
                    {
                        EXPECT_EQ(i, cAdd.m_anPlanes[static_cast<std::size_t>(nRun - 1)]);
                    }
                }
            }
        }
    }
}

TEST(PlaneByPlane, TheContentOfTheInputDecidesOnThePlanesOfTheOutput)
{
    const struct
    {
        ClImage::EContent eContent;
        int nPlanes;
        long nResult;
    } aCases[] = {{ClImage::eUnknown, 2, 0}, {ClImage::eGrayscale, 1, 0}, {ClImage::eRGB, 3, 0},
                  {ClImage::eRGBA, 4, 0},    {ClImage::eHSV, 3, 0},       {ClImage::eCIELUV, 3, 0},
                  {ClImage::eXYZ, 0, -35},   {ClImage::eCIELab, 0, -35}};
    for (const auto& c : aCases)
    {
        SCOPED_TRACE(c.eContent);
        ClImage cIn, cOut;
        MakePlanes(cIn, 2);
        cIn.m_eContent = c.eContent;
        ClAddRun cAdd;
        cAdd.m_pIn = &cIn;
        cAdd.m_pOut = &cOut;
        EXPECT_EQ(c.nResult, cAdd.PlaneByPlane(3, false));
        ASSERT_EQ(c.nPlanes, cOut.m_nPlanes);
        for (int i = 0; i < c.nPlanes; ++i) // what the input has not is black
        {
            EXPECT_EQ(i < 2 ? (SampleAt<unsigned char>(cIn, 0, 3, i) + i + 1) % 256 : 0,
                      SampleAt<unsigned char>(cOut, 0, 3, i));
        }
    }
}

TEST(PlaneByPlane, TheOutputMayBeTheInput)
{
    ClImage cImage, cExpected;
    MakePlanes(cImage, 3);
    ClAddRun cAdd;
    cAdd.m_pIn = &cImage;
    cAdd.m_pOut = &cExpected;
    EXPECT_EQ(0, cAdd.PlaneByPlane(3, false));
    cAdd.m_nRun = 0;
    cAdd.m_pOut = &cImage;
    EXPECT_EQ(0, cAdd.PlaneByPlane(3, false));
    EXPECT_TRUE(SamePixels(cExpected, cImage));
    EXPECT_EQ(&cImage, cAdd.m_pOut);
}

TEST(PlaneByPlane, APlaneThatRaisesLeavesImagesAndPointersAsTheyWere)
{
    ClImage cIn, cOut, cBefore;
    MakePlanes(cIn, 3);
    cBefore = cIn;
    ClAddRun cAdd;
    cAdd.m_pIn = &cIn;
    cAdd.m_pOut = &cOut;
    const auto fails = [&](int nPlane)
    {
        if (nPlane == 1)
        {
            throw ClExVelmarin(FPC_ERROR_BITMAP_DIMENSION, "PlaneByPlaneTest", __LINE__);
        }
        cAdd.Process();
    };
    EXPECT_RAISES_CODE(ProcessPlaneByPlane(cAdd, cAdd.m_pIn, cAdd.m_pOut, 3, fails), FPC_ERROR_BITMAP_DIMENSION);
    EXPECT_EQ(&cIn, cAdd.m_pIn);
    EXPECT_EQ(&cOut, cAdd.m_pOut);
    EXPECT_TRUE(SamePixels(cBefore, cIn));
    EXPECT_EQ(nullptr, cOut.Data());
    MakePlanes(cIn, 5);
    EXPECT_RAISES_CODE(cAdd.PlaneByPlane(4, false), FPC_ERROR_PARAM_OUT_OF_RANGE);
    EXPECT_EQ(&cIn, cAdd.m_pIn);
}

TEST(PlaneByPlane, TheTimerFlagOfTheOperatorCountsForItsHelpers)
{
    ClRunCounter cCounter;
    ClImage cIn, cOut;
    MakePlanes(cIn, 3);
    ClAddRun cAdd;
    cAdd.m_pIn = &cIn;
    cAdd.m_pOut = &cOut;
    cAdd.PlaneByPlane(3, false);
    EXPECT_EQ(2, cCounter.m_nRuns); // splitting and joining
    cAdd.Timer(false);
    cAdd.PlaneByPlane(3, false);
    EXPECT_EQ(2, cCounter.m_nRuns);
}

TEST(PlaneByPlane, EveryPlaneIsShownAndASingleOneAsItIs)
{
    for (int nPlanes = 1; nPlanes <= 4; ++nPlanes)
    {
        ClImage cIn;
        MakePlanes(cIn, nPlanes);
        int nSeen = 0;
        ForEachPlane(cIn,
                     [&](const ClImage& cPlane)
                     {
                         EXPECT_EQ(nPlanes == 1, &cPlane == &cIn);
                         ASSERT_EQ(1, cPlane.m_nPlanes);
                         EXPECT_EQ(SampleAt<unsigned char>(cIn, 5, 2, nSeen), SampleAt<unsigned char>(cPlane, 5, 2));
                         ++nSeen;
                     });
        EXPECT_EQ(nPlanes, nSeen);
    }
}
