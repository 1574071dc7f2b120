#include "RDImageProcessing/IpBinarizeAutoThreshold.hpp"

#include "RDImageProcessing/Histogram.hpp"
#include "RDImageProcessing/IpBinarizeGlobal.hpp"
#include "RDTools/ParameterContainer.hpp"
#include "RDTools/SampleCast.hpp"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace
{
constexpr int nGreys = ClIpBinarizeAutoThreshold::nGreys;
constexpr int nShannon = 1;
constexpr int nYager = 2;
constexpr int nNoThreshold = 255;

constexpr double dPerGrey = 0.00392156862745098; // 1 / 255

/// What depends only on the distance of a grey value from its class's mean: 256 values instead of logarithms and
/// divisions for every pair of grey value and threshold.
struct StFuzziness
{
    StFuzziness()
    {
        for (int d = 0; d < nGreys; ++d)
        {
            const double x = 1.0 / (d * dPerGrey + 1.0);
            m_adShannon[d] = x > 0.0 && x < 1.0 ? -x * std::log(x) - (1.0 - x) * std::log(1.0 - x) : 0.0;
            m_adYager[d] = (x * (1.0 - x)) * (x * (1.0 - x));
        }
    }

    double m_adShannon[nGreys];
    double m_adYager[nGreys];
};

const StFuzziness& Fuzziness()
{
    static const StFuzziness cFuzziness;
    return cFuzziness;
}

/// Counts and sums of the grey values up to a threshold and above it.
struct StClasses
{
    explicit StClasses(const double* pdHistogram)
    {
        double dCount = 0.0;
        double dSum = 0.0;
        for (int t = 0; t < nGreys; ++t)
        {
            m_adCount[t] = dCount += pdHistogram[t];
            m_adSum[t] = dSum += t * pdHistogram[t];
        }
        // All are whole numbers, so the upper class is exact as a difference.
        for (int t = 0; t < nGreys; ++t)
        {
            m_adCountAbove[t] = dCount - m_adCount[t];
            m_adSumAbove[t] = dSum - m_adSum[t];
        }
    }

    int MeanBelow(int t) const { return CastSample<int>(m_adSum[t] / m_adCount[t] + 0.5); }
    int MeanAbove(int t) const { return CastSample<int>(m_adSumAbove[t] / m_adCountAbove[t] + 0.5); }

    double m_adCount[nGreys];
    double m_adSum[nGreys];
    double m_adCountAbove[nGreys];
    double m_adSumAbove[nGreys];
};

/// The grey value from nFrom to nTo that stands emptiest together with its two neighbours.
int EmptiestPlace(const double* pdHistogram, int nFrom, int nTo)
{
    int nResult = nNoThreshold;
    long nSmallest = 1000000;
    for (int t = nFrom; t <= nTo; ++t)
    {
        const long nCount = CastSample<long>(pdHistogram[t - 1] + pdHistogram[t] + pdHistogram[t + 1]);
        if (nCount < nSmallest)
        {
            nSmallest = nCount;
            nResult = t;
        }
    }
    return nResult;
}
} // namespace

ClIpBinarizeAutoThreshold::ClIpBinarizeAutoThreshold()
{
    EnableDataType(ClImage::eUInt8);
}

long ClIpBinarizeAutoThreshold::ApplyParam(ClImage& cIn, ClImage& cOut, eProcessingMode eMode)
{
    m_eProcessingMode = eMode;
    return ApplyParam(cIn, cOut);
}

void ClIpBinarizeAutoThreshold::SetParametersToDefault()
{
    NewIpBase::ClIp1to1Base::SetParametersToDefault();
    m_eProcessingMode = ModeFuzzyEntropy;
}

void ClIpBinarizeAutoThreshold::PublishParameters(ClParameterContainer& cContainer)
{
    NewIpBase::ClIp1to1Base::PublishParameters(cContainer);
    auto* pMode =
        cContainer.AddParam<TpParameterEnumPointer<eProcessingMode, ClParameter>>("ProcessingMode", &m_eProcessingMode);
    pMode->AddValue(ModeFuzzyEntropy, "ModeFuzzyEntropy");
    pMode->AddValue(ModeFuzzyYager, "ModeFuzzyYager");
    pMode->AddValue(ModeMovingAverages, "ModeMovingAverages");
    pMode->AddValue(ModeJohannsen, "ModeJohannsen");
    pMode->AddValue(ModeKapur, "ModeKapur");
    pMode->AddValue(ModePun, "ModePun");
    pMode->AddValue(ModeKapur, "ModeMinimumError"); // meant: by name this mode selects Kapur's method
    pMode->AddValue(ModeRelaxation, "ModeRelaxation");
}

ClProcessorBase* ClIpBinarizeAutoThreshold::Create()
{
    return NewProcessor<ClIpBinarizeAutoThreshold>();
}

const char* ClIpBinarizeAutoThreshold::Name() const
{
    return "ClIpBinarizeAutoThreshold";
}

bool ClIpBinarizeAutoThreshold::CanApply()
{
    return m_pInImage != nullptr && m_pInImage->m_nPlanes == 1 && NewIpBase::ClIp1to1Base::CanApply();
}

long ClIpBinarizeAutoThreshold::DoProcess(ClImage& cIn, ClImage& cOut)
{
    if (cIn.m_nPlanes != 1)
    {
        return FPC_ERROR_BITMAP_PLANE;
    }
    if (cIn.m_eDataType != ClImage::eUInt8)
    {
        return FPC_ERROR_INTERNAL;
    }
    return AutoBin<unsigned char>(cIn, cOut);
}

template <class T> long ClIpBinarizeAutoThreshold::AutoBin(ClImage& cIn, ClImage& cOut)
{
    m_nThreshold = -1;
    cOut.Resize(cIn, ClImage::eUInt8);
    switch (m_eProcessingMode)
    {
    case ModeFuzzyEntropy: m_nThreshold = thr_fuz(&cIn, nShannon); break;
    case ModeFuzzyYager: m_nThreshold = thr_fuz(&cIn, nYager); break;
    case ModeJohannsen: m_nThreshold = thr_joh(&cIn); break;
    case ModeKapur: m_nThreshold = thr_kapur(&cIn); break;
    case ModePun: m_nThreshold = thr_pun(&cIn); break;
    case ModeMinimumError: m_nThreshold = thr_me(&cIn); break;
    case ModeOtsu: m_nThreshold = thr_otsu(&cIn); break;
    case ModeMovingAverages:
        cOut = cIn;
        thrdd(&cOut);
        return FPC_SUCCESS;
    case ModeRelaxation:
        cOut = cIn;
        thr_relax(&cOut);
        return FPC_SUCCESS;
    default: return FPC_SUCCESS;
    }
    // No threshold, -1, becomes 255 here.
    ClIpBinarizeGlobal().ApplyParam(cIn, cOut, static_cast<double>(static_cast<T>(m_nThreshold)));
    return FPC_SUCCESS;
}

void ClIpBinarizeAutoThreshold::histogram(const ClImage* pImage, double* pdHistogram)
{
    ClHistogram cHistogram;
    cHistogram.Create(*pImage);
    std::copy_n(cHistogram.m_anBins, nGreys, pdHistogram);
}

double ClIpBinarizeAutoThreshold::Ux(int nGrey, int nMean0, int nMean1, int nThreshold)
{
    return 1.0 / (std::abs(nGrey - (nGrey <= nThreshold ? nMean0 : nMean1)) * dPerGrey + 1.0);
}

double ClIpBinarizeAutoThreshold::Yager(int nMean0, int nMean1, int nThreshold)
{
    const double* const pdTerm = Fuzziness().m_adYager;
    double dSum = 0.0;
    for (int g = 0; g < nGreys; ++g)
    {
        dSum += pdTerm[std::abs(g - (g <= nThreshold ? nMean0 : nMean1))];
    }
    return std::sqrt(dSum);
}

double ClIpBinarizeAutoThreshold::fuzzy(const double* pdHistogram, int nMean0, int nMean1, int nThreshold, int nType)
{
    if (nType != nShannon)
    {
        return Yager(nMean0, nMean1, nThreshold);
    }
    const double* const pdTerm = Fuzziness().m_adShannon;
    double dSum = 0.0;
    for (int g = 0; g < nGreys - 1; ++g) // white is left out on purpose
    {
        dSum += pdTerm[std::abs(g - (g <= nThreshold ? nMean0 : nMean1))] * pdHistogram[g];
    }
    return dSum;
}

int ClIpBinarizeAutoThreshold::thr_fuz(const ClImage* pImage, int nType)
{
    double adHistogram[nGreys];
    histogram(pImage, adHistogram);
    const StClasses cClasses(adHistogram);
    const double dPerPixel = 1.0 / (static_cast<double>(pImage->m_nWidth) * pImage->m_nHeight);
    double dLargest = 0.0;
    double dSmallest = 0.0;
    int nBest = -1;
    for (int t = 1; t < nGreys - 1; ++t)
    {
        if (adHistogram[t] == 0.0 || cClasses.m_adCount[t] == 0.0 || cClasses.m_adCountAbove[t] == 0.0)
        {
            continue;
        }
        const double dFuzziness =
            fuzzy(adHistogram, cClasses.MeanBelow(t), cClasses.MeanAbove(t), t, nType) * dPerPixel;
        dLargest = std::max(dLargest, dFuzziness);
        if (nBest == -1 || dFuzziness < dSmallest)
        {
            dSmallest = dFuzziness;
            nBest = t;
        }
    }
    if (nBest == -1)
    {
        return nNoThreshold;
    }
    // A value of fuzziness serves as a distance in grey values.
    const double dReach = (dLargest - dSmallest) * 0.05 + dSmallest;
    const int nFrom = std::max(CastSample<int>(nBest - dReach), 1);
    const int nTo = std::min(CastSample<int>(nBest + dReach), nGreys - 2);
    return nTo < nFrom ? nNoThreshold : EmptiestPlace(adHistogram, nFrom, nTo);
}
