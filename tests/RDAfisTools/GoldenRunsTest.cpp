#include "GoldenTools.hpp"

#include "RDAfisTools/IpFourPrintSegmentation.hpp"
#include "RDImageProcessing/IpCutBiggestComponent.hpp"
#include "SlapPicture.hpp"

#include <gtest/gtest.h>

namespace
{
std::string Listed(std::initializer_list<long> anValue)
{
    std::string sList;
    for (const long n : anValue)
    {
        sList += (sList.empty() ? "" : ",") + std::to_string(n);
    }
    return sList;
}

std::string Described(const ClImage& cImage)
{
    return Listed({cImage.m_nWidth, cImage.m_nHeight}) + "," + Hex(HashOf(cImage));
}

/// Everything that a run leaves behind, in the words of the table.
std::string ResultOf(ClImage& cInput)
{
    ClIpFourPrintSegmentation c;
    ClImage cBinary;
    const long nCode = c.ApplyParam(cInput, cBinary);
    std::string s = "input " + Hex(HashOf(cInput)) + " code " + std::to_string(nCode) + " binary " +
                    Described(cBinary) + " hand " + std::to_string(c.m_nHand) + " slots ";
    for (const bool bSlot : c.m_abFingerSlots)
    {
        s += bSlot ? "1" : "0";
    }
    for (unsigned long i = 0; i < c.m_aRects.Entries(); ++i)
    {
        const tagRECT& r = c.m_aRects[i];
        s += " finger " + Listed({r.left, r.top, r.right, r.bottom}) + " " + Described(c.m_aImages[i]);
    }
    ClIpCutBiggestComponent cCut;
    ClImage cBiggest;
    EXPECT_EQ(0, cCut.ApplyParam(cInput, cBiggest));
    return s + " biggest " + Listed({cCut.m_nCutX0, cCut.m_nCutY0, cCut.m_nCutWidth, cCut.m_nCutHeight}) + " " +
           Described(cBiggest);
}
} // namespace

TEST(GoldenRuns, EverySceneOfTheTableGivesTheBitsOfTheIndependentProgram)
{
    const std::vector<std::string> asLine = GoldenLines("runs.txt");
    ASSERT_EQ(48u, asLine.size());
    for (const std::string& sLine : asLine)
    {
        std::istringstream cText(sLine);
        std::string sScene;
        int nPels = 0;
        cText >> sScene >> nPels;
        const SlapScenes::ClNamedScene* pScene = SlapScenes::Find(sScene);
        ASSERT_NE(nullptr, pScene) << sScene;
        const ClSlapPicture cPicture(pScene->m_pMake(nPels));
        ClImage cInput(cPicture.m_nWidth, cPicture.m_nHeight, 1, nPels, nPels);
        for (int y = 0; y < cPicture.m_nHeight; ++y)
        {
            std::copy_n(cPicture.m_aPixels.begin() + static_cast<std::ptrdiff_t>(y) * cPicture.m_nWidth,
                        cPicture.m_nWidth, Row<unsigned char>(cInput, y));
        }
        EXPECT_EQ(sLine, sScene + " " + std::to_string(nPels) + " " + ResultOf(cInput));
    }
}
