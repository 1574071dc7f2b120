#include "GoldenTools.hpp"

#include "RDImageProcessing/IpBinarizeAutoThreshold.hpp"
#include "RDImageProcessing/IpBinarizeGlobal.hpp"
#include "RDImageProcessing/IpConnectedComponent2.hpp"
#include "RDImageProcessing/IpFilterMid.hpp"
#include "RDImageProcessing/IpFilterMidRotating.hpp"
#include "RDImageProcessing/IpFloodFillLabeling.hpp"
#include "RDImageProcessing/IpGammaCorrection.hpp"
#include "RDImageProcessing/IpRescale.hpp"
#include "RDImageProcessing/IpRotate.hpp"
#include "RDImageProcessing/IpStretchRangeGlobalNoiseRemoving.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <map>

namespace
{
/// One line of the table: the operator, the random picture it gets, its arguments.
struct StCall
{
    explicit StCall(const std::string& sCall)
    {
        std::istringstream cText(sCall);
        int nWidth = 0;
        int nHeight = 0;
        std::uint32_t nState = 0;
        cText >> m_sName >> nWidth >> nHeight >> nState;
        for (double d = 0; cText >> d;)
        {
            m_adArgument.push_back(d);
        }
        m_cIn.NewWithType(ClImage::eUInt8, nWidth, nHeight, 1, 19685, 19685);
        for (int y = 0; y < nHeight; ++y)
        {
            for (int x = 0; x < nWidth; ++x)
            {
                nState = nState * 1664525u + 1013904223u;
                Row<unsigned char>(m_cIn, y)[x] = static_cast<unsigned char>(nState >> 24);
            }
        }
    }

    double Real(std::size_t n) const { return m_adArgument.at(n); }
    int Whole(std::size_t n) const { return static_cast<int>(m_adArgument.at(n)); }

    void MakeTwoLevel()
    {
        for (int y = 0; y < m_cIn.m_nHeight; ++y)
        {
            for (int x = 0; x < m_cIn.m_nWidth; ++x)
            {
                unsigned char& nPixel = Row<unsigned char>(m_cIn, y)[x];
                nPixel = nPixel < 128 ? 0 : 255;
            }
        }
    }

    std::string m_sName;
    std::vector<double> m_adArgument;
    ClImage m_cIn;
    ClImage m_cOut;
    std::string m_sExtra; ///< a threshold or a count of objects
};

long Binarize(StCall& c, ClIpBinarizeAutoThreshold::eProcessingMode eMode)
{
    ClIpBinarizeAutoThreshold cBinarize;
    const long nResult = cBinarize.ApplyParam(c.m_cIn, c.m_cOut, eMode);
    c.m_sExtra = " " + std::to_string(cBinarize.m_nThreshold);
    return nResult;
}

long Label(StCall& c)
{
    c.MakeTwoLevel();
    ClIpConnectedComponent2::ComponentsArray_t aComponents;
    ClIpConnectedComponent2 cLabel;
    cLabel.pInImage = &c.m_cIn;
    cLabel.m_pOutImage = &c.m_cOut;
    cLabel.m_pComponents = &aComponents;
    const long nResult = cLabel.Apply();
    c.m_sExtra = " " + std::to_string(aComponents.Entries());
    return nResult;
}

long FloodLabel(StCall& c)
{
    c.MakeTwoLevel();
    ClIpFloodFillLabeling cLabel;
    cLabel.m_pInImage = &c.m_cIn;
    cLabel.m_pOutImage = &c.m_cOut;
    const long nResult = cLabel.Apply();
    c.m_sExtra = " " + std::to_string(cLabel.m_aObjects.Entries());
    return nResult;
}

long Rotate(StCall& c)
{
    ClIpRotate cRotate;
    cRotate.m_nBackgroundColor = static_cast<unsigned char>(c.Whole(3));
    return cRotate.ApplyParam(c.m_cIn, c.m_cOut, ClVector(c.Real(4), c.Real(5)), c.Real(0), c.Whole(1) != 0,
                              c.Whole(2) != 0);
}

const std::map<std::string, std::function<long(StCall&)>> aOperators = {
    {"mid", [](StCall& c) { return ClIpFilterMid().ApplyParam(c.m_cIn, c.m_cOut, c.Whole(0)); }},
    {"rotating", [](StCall& c) { return ClIpFilterMidRotating().ApplyParam(c.m_cIn, c.m_cOut, c.Whole(0)); }},
    {"gamma",
     [](StCall& c)
     {
         c.m_cOut = c.m_cIn;
         return ClIpGammaCorrection().ApplyParam(c.m_cOut, c.Real(0));
     }},
    {"stretch", [](StCall& c)
     { return ClIpStretchRangeGlobalNoiseRemoving().ApplyParam(c.m_cIn, c.m_cOut, c.Real(0), c.Real(1)); }},
    {"fuzzyentropy", [](StCall& c) { return Binarize(c, ClIpBinarizeAutoThreshold::ModeFuzzyEntropy); }},
    {"fuzzyyager", [](StCall& c) { return Binarize(c, ClIpBinarizeAutoThreshold::ModeFuzzyYager); }},
    {"binarize", [](StCall& c) { return ClIpBinarizeGlobal().ApplyParam(c.m_cIn, c.m_cOut, c.Real(0)); }},
    {"rescale",
     [](StCall& c)
     {
         c.m_cIn.m_nXRes = c.Whole(1);
         c.m_cIn.m_nYRes = c.Whole(2);
         return ClIpRescale().ApplyParamPels(c.m_cIn, c.m_cOut, c.Whole(0), c.Whole(0), ClIpRescale::ModeBiLinear);
     }},
    {"rescalesize", [](StCall& c)
     { return ClIpRescale().ApplyParamSize(c.m_cIn, c.m_cOut, c.Whole(0), c.Whole(1), ClIpRescale::ModeBiLinear); }},
    {"rotate", Rotate},
    {"labels", Label},
    {"floodlabel", FloodLabel}};

/// Code, size, hash and, where there is one, the threshold or the number of objects.
std::string ResultOf(StCall& c)
{
    long nCode = 0;
    try
    {
        nCode = aOperators.at(c.m_sName)(c);
    }
    catch (const ClException& e)
    {
        nCode = e.Number();
    }
    std::string sResult = std::to_string(nCode);
    if (nCode == 0)
    {
        sResult += " " + std::to_string(c.m_cOut.m_nWidth) + "x" + std::to_string(c.m_cOut.m_nHeight) + " " +
                   Hex(HashOf(c.m_cOut));
    }
    return sResult + c.m_sExtra;
}
} // namespace

TEST(GoldenOperators, EveryCallOfTheTableGivesTheBitsOfTheIndependentProgram)
{
    const std::vector<std::string> asLine = GoldenLines("operators.txt");
    ASSERT_EQ(616u, asLine.size());
    for (const std::string& sLine : asLine)
    {
        const std::size_t nEquals = sLine.find(" = ");
        ASSERT_NE(std::string::npos, nEquals) << sLine;
        StCall cCall(sLine.substr(0, nEquals));
        EXPECT_EQ(sLine.substr(nEquals + 3), ResultOf(cCall)) << sLine;
    }
}
