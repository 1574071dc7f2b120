// Prints a hash of all that the library makes of pictures: real ones from a folder, and drawn ones. Two builds whose
// lines are the same give the same bits.

#include "SlapPicture.hpp"
#include "SlapRun.hpp"

#include "RDAfisTools/IpFourPrintSegmentation.hpp"
#include "RDTools/Bitmap.hpp"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <string>
#include <type_traits>
#include <vector>

namespace
{
/// FNV-1a of 64 bits over everything that is put in.
class ClHash
{
public:
    void Bytes(const void* pBytes, std::size_t nBytes)
    {
        const auto* p = static_cast<const unsigned char*>(pBytes);
        for (std::size_t i = 0; i < nBytes; ++i) m_nHash = (m_nHash ^ p[i]) * 1099511628211u;
    }
    /// A number, every bit of it.
    template <class T> void Value(T tValue)
    {
        static_assert(std::is_arithmetic_v<T> || std::is_enum_v<T>);
        Bytes(&tValue, sizeof tValue);
    }
    void Image(const ClImage& c)
    {
        Value(c.m_eDataType);
        Value(c.m_eContent);
        for (const int n : {c.m_nWidth, c.m_nHeight, c.m_nXRes, c.m_nYRes, c.m_nPlanes, c.m_nAttribute}) Value(n);
        Value(c.m_dBlack);
        Value(c.m_dWhite);
        if (c.Data() == nullptr) return;
        const auto nRow =
            static_cast<std::size_t>(c.SamplesPerRow()) * static_cast<std::size_t>(ClImage::SampleSize(c.m_eDataType));
        for (int y = 0; y < c.m_nHeight; ++y) Bytes(Row<unsigned char>(c, y), nRow);
    }
    void Result(const ClSlapRunResult& c)
    {
        Value(c.m_nCode);
        Value(c.m_nCount);
        for (const ClSlapRunResult::ClSegment& cSegment : c.m_aSegments)
        {
            for (const long n : {cSegment.m_nX, cSegment.m_nY, cSegment.m_nWidth, cSegment.m_nHeight}) Value(n);
            Bytes(cSegment.m_aBlock.data(), cSegment.m_aBlock.size());
        }
    }
    unsigned long long Get() const { return m_nHash; }

private:
    unsigned long long m_nHash = 14695981039346656037u;
};

using Processor = ClIpFourPrintSegmentation;

void PutBoxes(ClHash& cHash, const Processor::Boxes_t& aBoxes)
{
    cHash.Value(aBoxes.Entries());
    for (unsigned long i = 0; i < aBoxes.Entries(); ++i)
    {
        const Processor::cBoundingboxes& c = aBoxes[i];
        for (const int n : {c.m_nMinX, c.m_nMaxX, c.m_nMinY, c.m_nMaxY}) cHash.Value(n);
    }
}

void PutVectors(ClHash& cHash, const TpArrayDynamic<ClVector, 10>& aVectors)
{
    cHash.Value(aVectors.Entries());
    for (unsigned long i = 0; i < aVectors.Entries(); ++i)
    {
        cHash.Value(aVectors[i].m_dX);
        cHash.Value(aVectors[i].m_dY);
    }
}

void PutImages(ClHash& cHash, const Processor::Images_t& aImages)
{
    cHash.Value(aImages.Entries());
    for (unsigned long i = 0; i < aImages.Entries(); ++i) cHash.Image(aImages[i]);
}

/// The picture after each stage of the processor, and its lists.
unsigned long long StagesOf(std::vector<std::uint8_t>& aFile)
{
    constexpr std::size_t nFileHeader = 14;
    ClBitmap cBitmap;
    cBitmap.Attach(aFile.data() + nFileHeader, static_cast<unsigned long>(aFile.size() - nFileHeader));
    ClImage cIn, cOut, cScaled, cFiltered, cStretched, cDemo;
    cIn.Attach(cBitmap);
    Processor cProcessor;
    cProcessor.m_bDebugImages = true;
    cProcessor.m_pDebugScaled = &cScaled;
    cProcessor.m_pDebugFiltered = &cFiltered;
    cProcessor.m_pDebugStretched = &cStretched;
    ClHash cHash;
    cHash.Value(cProcessor.ApplyParam(cIn, cOut));
    for (const ClImage* pImage : {&cIn, &cScaled, &cFiltered, &cStretched, &cOut}) cHash.Image(*pImage);
    for (const int n : {cProcessor.m_nDebugThreshold, cProcessor.m_nFingers, cProcessor.m_nHand,
                        cProcessor.m_nRotationDelta, int(cProcessor.m_bReverseOrder), int(cProcessor.m_bSuccess)})
        cHash.Value(n);
    for (const bool b : cProcessor.m_abFingerSlots) cHash.Value(b);
    cHash.Value(cProcessor.m_dScale);
    cHash.Value(cProcessor.m_dRotation);
    PutVectors(cHash, cProcessor.m_aCenters);
    PutVectors(cHash, cProcessor.m_aShapes);
    for (const Processor::Boxes_t* pBoxes :
         {&cProcessor.m_aBoxes, &cProcessor.m_aResultBoxes, &cProcessor.m_aOriginBoxes})
        PutBoxes(cHash, *pBoxes);
    PutImages(cHash, cProcessor.m_aCutImages);
    PutImages(cHash, cProcessor.m_aImages);
    for (unsigned long i = 0; i < cProcessor.m_aRects.Entries(); ++i)
    {
        const tagRECT& c = cProcessor.m_aRects[i];
        for (const int n : {c.left, c.top, c.right, c.bottom}) cHash.Value(n);
    }
    cHash.Value(cProcessor.CreateDemoPicture(&cDemo, cProcessor.m_dRotation));
    cHash.Image(cDemo);
    return cHash.Get();
}

/// A line for a picture: both modes with both origins of coordinates, and the stages.
void PrintPicture(const std::string& sName, std::vector<std::uint8_t> aFile, ClHash& cAll)
{
    std::string sLine = sName;
    const auto put = [&](unsigned long long nHash)
    {
        char szHash[20];
        std::snprintf(szHash, sizeof szHash, " %016llx", nHash);
        sLine += szHash;
    };
    for (const long nMode : {0L, 1L})
    {
        ClHash cHash;
        for (const long nOrigin : {0L, 1L}) cHash.Result(ClSlapRunner(nMode, nOrigin).Run(aFile));
        put(cHash.Get());
    }
    put(StagesOf(aFile));
    cAll.Bytes(sLine.data(), sLine.size());
    std::printf("%s\n", sLine.c_str());
}

/// Every ready-made scene in turn, each time with another resolution, noise and lean.
ClSlapScene DrawnScene(int nNumber, std::string& sName)
{
    constexpr int anPels[] = {19685, 19685, 11811, 19685, 19685, 3937, 19685, 15748, 19685, 39370, 19685, 7874, 19685};
    constexpr double adLean[] = {0.0, 0.0, 0.25, -0.25, 0.0, 0.1, -0.4};
    const auto nScene = static_cast<std::size_t>(nNumber);
    const SlapScenes::ClNamedScene& cNamed = SlapScenes::All()[nScene % SlapScenes::All().size()];
    ClSlapScene cScene = cNamed.m_pMake(anPels[nScene % std::size(anPels)]);
    cScene.m_nSeed = static_cast<unsigned>(nNumber + 1);
    cScene.m_dLean = std::max(-0.8, std::min(cScene.m_dLean + adLean[nScene % std::size(adLean)], 0.8));
    sName = "drawn-" + std::to_string(nNumber) + "-" + cNamed.m_szName;
    return cScene;
}

int Run(const std::string& sFolder, int nDrawn)
{
    ClHash cAll;
    std::vector<std::string> asPath;
    if (!sFolder.empty())
    {
        for (const auto& cEntry : std::filesystem::directory_iterator(sFolder))
        {
            if (cEntry.path().extension() == ".bmp") asPath.push_back(cEntry.path().string());
        }
        std::sort(asPath.begin(), asPath.end());
    }
    for (const std::string& sPath : asPath)
        PrintPicture(std::filesystem::path(sPath).filename().string(), ReadWholeFile(sPath), cAll);
    for (int i = 0; i < nDrawn; ++i)
    {
        std::string sName;
        const ClSlapPicture cPicture(DrawnScene(i, sName));
        PrintPicture(sName, cPicture.BmpFile(), cAll);
    }
    std::printf("all %zu %016llx\n", asPath.size() + static_cast<std::size_t>(nDrawn), cAll.Get());
    return 0;
}
} // namespace

int main(int nArguments, char** aszArguments)
{
    const int nDrawn = nArguments >= 2 ? std::atoi(aszArguments[1]) : 0;
    if (nArguments < 2 || nArguments > 3 || nDrawn < 0 || (nDrawn == 0 && nArguments == 2))
    {
        std::fprintf(stderr,
                     "usage: hash-runs COUNT [FOLDER]\n"
                     "Cuts the BMP files of FOLDER and COUNT drawn slaps and prints a line for each: its name and\n"
                     "hashes of the results in both modes and of the images and lists of every stage; then a hash\n"
                     "of all lines.\n");
        return 2;
    }
    try
    {
        return Run(nArguments == 3 ? aszArguments[2] : "", nDrawn);
    }
    catch (const std::exception& e)
    {
        std::fprintf(stderr, "hash-runs: %s\n", e.what());
        return 1;
    }
}
