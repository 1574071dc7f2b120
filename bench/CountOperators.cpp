// Runs every operator of a run once, each in a function of its own whose name begins with counted_, after it has run
// once without: what callgrind counts in these functions does not depend on the noise of a machine. It needs nothing
// but operators and exported functions that every state of the library with the whole road has, so that older states
// can be counted with it.

#include "VelmarinKormelinSegmentation.h"

#include "RDImageProcessing/Histogram.hpp"
#include "RDImageProcessing/IpBinarizeAutoThreshold.hpp"
#include "RDImageProcessing/IpBinarizeGlobal.hpp"
#include "RDImageProcessing/IpConnectedComponent2.hpp"
#include "RDImageProcessing/IpConvertDataType.hpp"
#include "RDImageProcessing/IpCut.hpp"
#include "RDImageProcessing/IpCutBiggestComponent.hpp"
#include "RDImageProcessing/IpDelta.hpp"
#include "RDImageProcessing/IpFilterMid.hpp"
#include "RDImageProcessing/IpFilterMidRotating.hpp"
#include "RDImageProcessing/IpFloodFillLabeling.hpp"
#include "RDImageProcessing/IpGammaCorrection.hpp"
#include "RDImageProcessing/IpRescale.hpp"
#include "RDImageProcessing/IpRgbToGrey.hpp"
#include "RDImageProcessing/IpRotate.hpp"
#include "RDImageProcessing/IpStretchRangeGlobalNoiseRemoving.hpp"
#include "RDTools/Bitmap.hpp"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

namespace
{
using File_t = std::vector<std::uint8_t>;

File_t ReadFile(const char* szPath)
{
    std::ifstream cFile(szPath, std::ios::binary);
    File_t aBytes((std::istreambuf_iterator<char>(cFile)), std::istreambuf_iterator<char>());
    if (aBytes.size() < 54) throw std::runtime_error(std::string(szPath) + ": no bitmap");
    return aBytes;
}

/// A slap of 500 pixels per inch and what a run makes of it.
struct StPictures
{
    StPictures(const char* szUpright, const char* szLeaning)
        : aUpright(ReadFile(szUpright)), aLeaning(ReadFile(szLeaning))
    {
        constexpr unsigned long nFileHeader = 14;
        ClBitmap cBitmap;
        cBitmap.Attach(aUpright.data() + nFileHeader, static_cast<unsigned long>(aUpright.size()) - nFileHeader);
        cSlap.Attach(cBitmap);
        Reduce(cHand);
        ClIpCut().ApplyParam(cSlap, 400, 700, 500, 600, cFinger);
        Objects(cHand, 5, cHandObjects);
        Objects(cFinger, 20, cFingerObjects);
        ClIpFilterMid().ApplyParam(cHand, cSmoothHand, 5);
        Components(cHandObjects, &cHandLabels);
        InColour();
    }

    void Reduce(ClImage& cOut) { ClIpRescale().ApplyParamPels(cSlap, cOut, 3937, 3937, ClIpRescale::ModeBiLinear); }
    void Turn(ClImage& cOut, bool bInterpolate)
    {
        ClIpRotate().ApplyParam(cSlap, cOut, ClVector(cSlap.m_nWidth / 2, cSlap.m_nHeight / 2), 0.35, false,
                                bInterpolate);
    }
    static void Threshold(ClImage& cIn, ClImage& cOut, ClIpBinarizeAutoThreshold::eProcessingMode eMode)
    {
        ClIpBinarizeAutoThreshold().ApplyParam(cIn, cOut, eMode);
    }
    static void Components(ClImage& cIn, ClImage* pLabels = nullptr)
    {
        ClIpConnectedComponent2::ComponentsArray_t aComponents;
        ClIpConnectedComponent2 cMeasure;
        cMeasure.pInImage = &cIn;
        cMeasure.m_pOutImage = pLabels;
        cMeasure.m_pComponents = &aComponents;
        cMeasure.Apply();
    }
    static void Labels(ClImage& cIn, ClImage& cOut)
    {
        ClIpFloodFillLabeling cLabeling;
        cLabeling.m_pInImage = &cIn;
        cLabeling.m_pOutImage = &cOut;
        cLabeling.Apply();
    }
    static void Segment(const File_t& aFile, long nMode)
    {
        void* hSegmentation = nullptr;
        KSCreateSegmentationHandle(&hSegmentation);
        KSSetPropertyLongA(hSegmentation, "SegmentationMode", nMode);
        KSSegmentBitmap(hSegmentation, static_cast<const tagBITMAPINFOHEADER*>(static_cast<const void*>(aFile.data())),
                        aFile.size());
        KSDestroyHandle(&hSegmentation);
    }

    File_t aUpright;
    File_t aLeaning;
    ClImage cSlap;
    ClImage cHand;   ///< at the working resolution
    ClImage cFinger; ///< 500 by 600 pixels
    ClImage cHandObjects;
    ClImage cFingerObjects;
    ClImage cHandLabels;
    ClImage cSmoothHand;
    ClImage cColourSlap; ///< the slap in three planes

private:
    static void Objects(ClImage& cIn, int nSmoothing, ClImage& cOut)
    {
        ClImage cSmooth;
        ClIpFilterMid().ApplyParam(cIn, cSmooth, nSmoothing);
        Threshold(cSmooth, cOut, ClIpBinarizeAutoThreshold::ModeFuzzyEntropy);
    }
    void InColour()
    {
        cColourSlap.NewWithType(ClImage::eUInt8, cSlap.m_nWidth, cSlap.m_nHeight, 3, cSlap.m_nXRes, cSlap.m_nYRes);
        for (int y = 0; y < cSlap.m_nHeight; ++y)
        {
            const unsigned char* pGrey = Row<unsigned char>(cSlap, y);
            unsigned char* p = Row<unsigned char>(cColourSlap, y);
            for (int x = 0; x < cSlap.m_nWidth; ++x, p += 3) std::fill_n(p, 3, pGrey[x]);
        }
    }
};

using Threshold_t = ClIpBinarizeAutoThreshold;
} // namespace

// Name, and what is done with the pictures c and an empty image cOut.
#define OPERATORS(X)                                                                                                   \
    X(Grey_slap, ClIpRgbToGrey().ApplyParam(c.cColourSlap, cOut, ClIpRgbToGrey::Luminance))                            \
    X(Reduce5_slap, c.Reduce(cOut))                                                                                    \
    X(Gamma_hand, ClIpGammaCorrection().ApplyParam(c.cHand, cOut, 0, 255, 0.8))                                        \
    X(Box5_hand, ClIpFilterMid().ApplyParam(c.cHand, cOut, 5))                                                         \
    X(Rotating9_hand, ClIpFilterMidRotating().ApplyParam(c.cHand, cOut, 9))                                            \
    X(Stretch_hand, ClIpStretchRangeGlobalNoiseRemoving().ApplyParam(c.cHand, cOut, 0.02, 0.07))                       \
    X(AutoThresholdYager_hand, c.Threshold(c.cHand, cOut, Threshold_t::ModeFuzzyYager))                                \
    X(Components_hand, c.Components(c.cHandObjects))                                                                   \
    X(Convert_hand, ClIpConvertDataType().ApplyParam(c.cHandLabels, cOut, ClImage::eUInt8))                            \
    X(Delta_hand, ClIpDelta().ApplyParam(c.cSmoothHand, c.cHand, cOut, 255))                                           \
    X(Histogram_hand, ClHistogram().Create(c.cHand))                                                                   \
    X(TurnNearest_slap, c.Turn(cOut, false))                                                                           \
    X(TurnBilinear_slap, c.Turn(cOut, true))                                                                           \
    X(Cut_finger, ClIpCut().ApplyParam(c.cSlap, 400, 700, 500, 600, cOut))                                             \
    X(Box21_finger, ClIpFilterMid().ApplyParam(c.cFinger, cOut, 20))                                                   \
    X(AutoThresholdEntropy_finger, c.Threshold(c.cFinger, cOut, Threshold_t::ModeFuzzyEntropy))                        \
    X(Threshold_finger, ClIpBinarizeGlobal().ApplyParam(c.cFinger, cOut, 200.0))                                       \
    X(Components_finger, c.Components(c.cFingerObjects))                                                               \
    X(FloodFillLabeling_finger, c.Labels(c.cFingerObjects, cOut))                                                      \
    X(CutBiggestComponent_slap, ClIpCutBiggestComponent().ApplyParam(c.cSlap, cOut))                                   \
    X(Run_mode0_upright, c.Segment(c.aUpright, 0))                                                                     \
    X(Run_mode0_leaning, c.Segment(c.aLeaning, 0))                                                                     \
    X(Run_mode1_upright, c.Segment(c.aUpright, 1))

#define DEFINE(name, call)                                                                                             \
    static inline void name(StPictures& c)                                                                             \
    {                                                                                                                  \
        ClImage cOut;                                                                                                  \
        static_cast<void>(c);                                                                                          \
        call;                                                                                                          \
    }                                                                                                                  \
    extern "C" [[gnu::noinline, gnu::used]] void counted_##name(StPictures& c)                                         \
    {                                                                                                                  \
        name(c);                                                                                                       \
    }
OPERATORS(DEFINE)

int main(int nArguments, char** aszArguments)
{
    if (nArguments != 3)
    {
        std::fprintf(stderr, "usage: count-operators UPRIGHT.bmp LEANING.bmp\n"
                             "Two slaps of four fingers at 500 pixels per inch, of at least 900 by 1300 pixels.\n");
        return 2;
    }
    try
    {
        KSInitialize(nullptr);
        StPictures c(aszArguments[1], aszArguments[2]);
#define RUN(name, call)                                                                                                \
    name(c);                                                                                                           \
    counted_##name(c);
        OPERATORS(RUN)
        KSUninitialize();
        return 0;
    }
    catch (const std::exception& e)
    {
        std::fprintf(stderr, "count-operators: %s\n", e.what());
        return 1;
    }
}
