// The road of a picture: through the exported functions in both modes, and once more through the processor, whose
// members tell what the functions do not.

#include "BitHash.hpp"
#include "BitItems.hpp"
#include "GuardedSlapRunner.hpp"

#include "RDAfisTools/IpFourPrintSegmentation.hpp"
#include "RDTools/Bitmap.hpp"
#include "RDTools/Exception.hpp"
#include "SlapPicture.hpp"

#include <algorithm>
#include <cstdint>
#include <filesystem>

namespace
{
using Bytes_t = std::vector<std::uint8_t>;

std::string ThroughTheFunctions(const ClReadOnlyBytes& cBlock, long nMode)
{
    ClGuardedSlapRunner cRunner(nMode, 1);
    const ClSlapRunResult cResult = cRunner.Run(cBlock);
    ClBitHash cHash;
    cHash.Add({cResult.m_nCode, cResult.m_nCount});
    for (const ClSlapRunResult::ClSegment& c : cResult.m_aSegments)
    {
        cHash.Add({c.m_nX, c.m_nY, c.m_nWidth, c.m_nHeight});
        cHash.Add(c.m_aBlock.data(), c.m_aBlock.size());
    }
    return cHash.Text();
}

void AddBoxes(ClBitHash& cHash, const ClIpFourPrintSegmentation::Boxes_t& aBoxes)
{
    for (unsigned long i = 0; i < aBoxes.Entries(); ++i)
    {
        cHash.Add({aBoxes[i].m_nMinX, aBoxes[i].m_nMaxX, aBoxes[i].m_nMinY, aBoxes[i].m_nMaxY, aBoxes[i].m_bMarked});
    }
}

void AddVectors(ClBitHash& cHash, const TpArrayDynamic<ClVector, 10>& aVectors)
{
    for (unsigned long i = 0; i < aVectors.Entries(); ++i)
    {
        cHash.AddNumber(aVectors[i].m_dX);
        cHash.AddNumber(aVectors[i].m_dY);
    }
}

std::string ThroughTheProcessor(const ClReadOnlyBytes& cBlock)
{
    ClBitHash cHash;
    try
    {
        ClBitmap cBitmap;
        cBitmap.Attach(cBlock.Data(), static_cast<unsigned long>(cBlock.Size()));
        ClImage cIn;
        cIn.Attach(cBitmap);
        ClImage cBinary;
        ClIpFourPrintSegmentation c;
        cHash.Add({c.ApplyParam(cIn, cBinary), c.m_nFingers, c.m_nHand, c.m_nRotationDelta, c.m_bReverseOrder});
        cHash.AddImage(cBinary);
        cHash.AddNumber(c.m_dScale);
        cHash.AddNumber(c.m_dRotation);
        for (const bool bSlot : c.m_abFingerSlots) cHash.Add({bSlot});
        AddVectors(cHash, c.m_aCenters);
        AddVectors(cHash, c.m_aShapes);
        AddBoxes(cHash, c.m_aBoxes);
        AddBoxes(cHash, c.m_aResultBoxes);
        AddBoxes(cHash, c.m_aOriginBoxes);
        for (unsigned long i = 0; i < c.m_aRects.Entries(); ++i)
        {
            const tagRECT& cRect = c.m_aRects[i];
            cHash.Add({cRect.left, cRect.top, cRect.right, cRect.bottom});
        }
        for (unsigned long i = 0; i < c.m_aImages.Entries(); ++i) cHash.AddImage(c.m_aImages[i]);
        for (unsigned long i = 0; i < c.m_aCutImages.Entries(); ++i) cHash.AddImage(c.m_aCutImages[i]);
    }
    catch (const ClException& e)
    {
        cHash.Add({e.Number()});
    }
    return cHash.Text();
}

ClBitItem::Lines_t RoadOf(const std::string& sName, const Bytes_t& aBlock)
{
    const ClMovingInput cInput(aBlock);
    return {sName + "/fingers " + ThroughTheFunctions(cInput.Place(0), 0),
            sName + "/biggest " + ThroughTheFunctions(cInput.Place(1), 1),
            sName + "/processor " + ThroughTheProcessor(cInput.Place(0))};
}

/// What is done to a picture before its run.
using Change_t = void (*)(ClSlapPicture&);

void Keep(ClSlapPicture&) {}

/// Every fiftieth pixel or so takes any value.
void Sprinkle(ClSlapPicture& cPicture)
{
    std::uint32_t nState = 12345;
    for (std::uint8_t& nPixel : cPicture.m_aPixels)
    {
        nState = nState * 1664525u + 1013904223u;
        if (nState >> 16 < 1300) nPixel = static_cast<std::uint8_t>(nState >> 8);
    }
}

/// A quarter of the contrast.
void Fade(ClSlapPicture& cPicture)
{
    for (std::uint8_t& nPixel : cPicture.m_aPixels) nPixel = static_cast<std::uint8_t>(150 + nPixel / 4);
}

void AddScene(BitItems_t& aItems, const std::string& sName, const ClSlapScene& cScene, Change_t pChange = Keep)
{
    aItems.push_back({sName, [=]
                      {
                          ClSlapPicture cPicture(cScene);
                          pChange(cPicture);
                          return RoadOf(sName, cPicture.Block());
                      }});
}

/// A picture without fingers: its grey is a function of the place.
void AddPattern(BitItems_t& aItems, const char* szName, int nPels, std::uint8_t (*pGrey)(unsigned, unsigned))
{
    const std::string sName = "pattern/" + std::string(szName) + "/" + std::to_string(nPels);
    aItems.push_back({sName, [=]
                      {
                          ClSlapScene cScene;
                          cScene.m_nPelsPerMetre = nPels;
                          cScene.m_nWidth = 52000;
                          cScene.m_nHeight = 47000;
                          ClSlapPicture cPicture(cScene);
                          std::size_t i = 0;
                          for (int y = 0; y < cPicture.m_nHeight; ++y)
                              for (int x = 0; x < cPicture.m_nWidth; ++x)
                                  cPicture.m_aPixels[i++] = pGrey(static_cast<unsigned>(x), static_cast<unsigned>(y));
                          return RoadOf(sName, cPicture.Block());
                      }});
}

void AddPatterns(BitItems_t& aItems)
{
    for (const int nPels : {3900, 3937, 7874})
    {
        AddPattern(aItems, "white", nPels, [](unsigned, unsigned) -> std::uint8_t { return 255; });
        AddPattern(aItems, "black", nPels, [](unsigned, unsigned) -> std::uint8_t { return 0; });
        AddPattern(aItems, "slope", nPels,
                   [](unsigned x, unsigned y) { return static_cast<std::uint8_t>((x + y) / 3); });
        AddPattern(aItems, "stripes", nPels, [](unsigned x, unsigned) -> std::uint8_t { return x / 9 % 2 ? 240 : 30; });
        AddPattern(aItems, "squares", nPels,
                   [](unsigned x, unsigned y) -> std::uint8_t { return (x / 40 + y / 55) % 2 ? 250 : 20; });
        AddPattern(aItems, "noise", nPels,
                   [](unsigned x, unsigned y)
                   {
                       const std::uint32_t n = (x * 2654435761u) ^ (y * 2246822519u);
                       return static_cast<std::uint8_t>((n * 3266489917u) >> 24);
                   });
    }
}
} // namespace

void AddDrawnItems(BitItems_t& aItems, bool bLarge)
{
    for (const int nPels : {3937, 4016, 7874, 11811, 19685})
        for (const SlapScenes::ClNamedScene& c : SlapScenes::All())
            AddScene(aItems, "drawn/" + std::string(c.m_szName) + "/" + std::to_string(nPels), c.m_pMake(nPels));
    for (const int nPercent : {-80, -60, -40, -20, -10, -5, 5, 10, 20, 40, 60, 80})
    {
        AddScene(aItems, "leaning/pair/" + std::to_string(nPercent), SlapScenes::LeaningPair(nPercent / 100.0, 7874));
        AddScene(aItems, "leaning/hand/" + std::to_string(nPercent), SlapScenes::LeaningHand(nPercent / 100.0, 7874));
    }
    for (const SlapScenes::ClNamedScene& c : SlapScenes::All())
    {
        ClSlapScene cScene = c.m_pMake(5906);
        AddScene(aItems, "sprinkled/" + std::string(c.m_szName), cScene, Sprinkle);
        AddScene(aItems, "faded/" + std::string(c.m_szName), cScene, Fade);
        cScene.m_nSeed = 77;
        AddScene(aItems, "reseeded/" + std::string(c.m_szName), cScene);
    }
    AddPatterns(aItems);
    if (!bLarge) return;
    for (const char* szScene : {"two-fingers", "leaning-pair", "four-fingers-right", "two-flat-thumbs"})
        AddScene(aItems, "large/" + std::string(szScene), SlapScenes::Find(szScene)->m_pMake(39370));
}

void AddFileItems(BitItems_t& aItems, const std::string& sFolder)
{
    std::vector<std::filesystem::path> aFiles;
    for (const auto& cEntry : std::filesystem::directory_iterator(sFolder))
        if (cEntry.path().extension() == ".bmp") aFiles.push_back(cEntry.path());
    std::sort(aFiles.begin(), aFiles.end());
    for (const std::filesystem::path& cFile : aFiles)
    {
        const std::string sName = "file/" + cFile.stem().string();
        aItems.push_back({sName, [=] { return RoadOf(sName, ReadWholeFile(cFile.string())); }});
    }
}
