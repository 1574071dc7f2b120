// The stages of the processor on slaps of four fingers of 500 pixels per inch, upright and leaning: each stage of the
// detection by itself, on what the stage before it made, and runs that end earlier and earlier, whose differences are
// the stages after the detection. An item is a pixel of the input.

#include "BenchPictures.hpp"
#include "SlapPicture.hpp"

#include "RDAfisTools/IpFourPrintSegmentation.hpp"
#include "RDImageProcessing/IpRotate.hpp"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <map>
#include <memory>
#include <string>

namespace
{
using Processor = ClIpFourPrintSegmentation;

/// A slap and what each stage of the detection made of it.
struct ClStages
{
    explicit ClStages(double dLean)
    {
        const ClSlapPicture cPicture(dLean == 0.0 ? FourFingerScene(n500Ppi) : SlapScenes::LeaningHand(dLean, n500Ppi));
        m_cIn.NewWithType(ClImage::eUInt8, cPicture.m_nWidth, cPicture.m_nHeight, 1, n500Ppi, n500Ppi);
        for (int y = 0; y < cPicture.m_nHeight; ++y)
        {
            const auto nFirst = static_cast<std::ptrdiff_t>(y) * cPicture.m_nWidth;
            std::copy_n(cPicture.m_aPixels.begin() + nFirst, cPicture.m_nWidth, Row<unsigned char>(m_cIn, y));
        }
        Processor cProcessor;
        cProcessor.m_pInImage = &m_cIn;
        cProcessor.PrepareInputImage(m_cGrey, m_cScaled);
        m_dScale = cProcessor.m_dScale;
        ClImage cScaled;
        cScaled = m_cScaled;
        cProcessor.BinarizeImage(cScaled, m_cBinary);
        m_cObjects = m_cBinary;
        cProcessor.FindInitialFingerSegments(m_cObjects, m_aComponents, m_dAngle);
    }

    ClImage m_cIn;
    ClImage m_cGrey;
    ClImage m_cScaled;
    ClImage m_cBinary;
    ClImage m_cObjects; ///< the binary image, upright
    Processor::Components_t m_aComponents;
    double m_dScale = 0.0;
    double m_dAngle = 0.0;
};

using Stage_t = long (*)(Processor& cProcessor, ClStages& c);

void Repeat(benchmark::State& cState, double dLean, Stage_t pStage)
{
    static std::map<double, std::unique_ptr<ClStages>> aMade;
    std::unique_ptr<ClStages>& pStages = aMade[dLean];
    if (pStages == nullptr) pStages = std::make_unique<ClStages>(dLean);
    for (auto _ : cState)
    {
        Processor cProcessor;
        cProcessor.m_pInImage = &pStages->m_cIn;
        cProcessor.m_dScale = pStages->m_dScale;
        if (pStage(cProcessor, *pStages) != FPC_SUCCESS)
        {
            cState.SkipWithError("a stage failed");
            break;
        }
        benchmark::ClobberMemory();
    }
    cState.SetItemsProcessed(cState.iterations() * pStages->m_cIn.m_nWidth * pStages->m_cIn.m_nHeight);
}

long Validate(Processor& cProcessor, ClStages&)
{
    return cProcessor.ValidateInput();
}

long Prepare(Processor& cProcessor, ClStages&)
{
    ClImage cGrey, cScaled;
    return cProcessor.PrepareInputImage(cGrey, cScaled);
}

// What a stage changes is copied for it.

long Binarize(Processor& cProcessor, ClStages& c)
{
    ClImage cScaled, cBinary;
    cScaled = c.m_cScaled;
    return cProcessor.BinarizeImage(cScaled, cBinary);
}

long FindSegments(Processor& cProcessor, ClStages& c)
{
    ClImage cBinary;
    cBinary = c.m_cBinary;
    Processor::Components_t aComponents;
    double dAngle = 0.0;
    return cProcessor.FindInitialFingerSegments(cBinary, aComponents, dAngle);
}

long ApplyRules(Processor& cProcessor, ClStages& c)
{
    Processor::Components_t aComponents;
    for (unsigned long i = 0; i < c.m_aComponents.Entries(); ++i) aComponents.Add(c.m_aComponents[i]);
    Processor::Marks_t aSelected;
    return cProcessor.ApplyRulesToGetRightFingerSegments(aComponents, c.m_cObjects, aSelected);
}

long UntilBoxes(Processor& cProcessor, ClStages&)
{
    cProcessor.m_bCutFingers = false;
    return cProcessor.Apply();
}

long UntilCuts(Processor& cProcessor, ClStages&)
{
    cProcessor.m_bRefineFingers = false;
    return cProcessor.Apply();
}

long Whole(Processor& cProcessor, ClStages&)
{
    return cProcessor.Apply();
}

bool RegisterAll()
{
    const struct
    {
        const char* szName;
        Stage_t pStage;
    } aStages[] = {{"1-validate", Validate},          {"2-reduce", Prepare},   {"3-binarize", Binarize},
                   {"4-find-segments", FindSegments}, {"5-rules", ApplyRules}, {"until-boxes", UntilBoxes},
                   {"until-cuts", UntilCuts},         {"whole", Whole}};
    for (const auto& [szHand, dLean] : {std::pair("upright", 0.0), std::pair("leaning", 0.35)})
    {
        for (const auto& cStage : aStages)
        {
            const std::string sName = std::string("Stage/") + szHand + "/" + cStage.szName;
            benchmark::RegisterBenchmark(sName.c_str(), Repeat, dLean, cStage.pStage)->Unit(benchmark::kMicrosecond);
        }
    }
    return true;
}

const bool g_bRegistered = RegisterAll();
} // namespace
