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

/// A term of a sum of fuzziness, which depends only on the distance of a grey value from its class's mean: 256 values
/// instead of logarithms and divisions for every pair of grey value and threshold.
class ClTerms
{
public:
    /// The terms of the grey values from 0 on, if this is their mean.
    const double* FromMean(int nMean) const { return m_adTerm + nGreys - 1 - nMean; }
    double& OfDistance(int nDistance) { return m_adTerm[nGreys - 1 + nDistance]; }

private:
    double m_adTerm[2 * nGreys - 1]; // of the distances from -255 to 255
};

struct StFuzziness
{
    StFuzziness()
    {
        for (int d = 0; d < nGreys; ++d)
        {
            const double x = 1.0 / (d * dPerGrey + 1.0);
            const double dShannon = x > 0.0 && x < 1.0 ? -x * std::log(x) - (1.0 - x) * std::log(1.0 - x) : 0.0;
            m_cShannon.OfDistance(d) = m_cShannon.OfDistance(-d) = dShannon;
            m_cYager.OfDistance(d) = m_cYager.OfDistance(-d) = (x * (1.0 - x)) * (x * (1.0 - x));
        }
    }

    ClTerms m_cShannon;
    ClTerms m_cYager;
};

const StFuzziness& Fuzziness()
{
    static const StFuzziness cFuzziness;
    return cFuzziness;
}

/// The weights of the terms: the histogram, or none.
struct StByCount
{
    static constexpr int nEnd = nGreys - 1; // white is left out on purpose
    const double* pdHistogram;
    double Of(double dTerm, int g) const { return dTerm * pdHistogram[g]; }
};

struct StUnweighted
{
    static constexpr int nEnd = nGreys;
    double Of(double dTerm, int) const { return dTerm; }
};

/// The sum of one threshold, from the darkest grey value to the brightest.
template <class Weight> double Sum(const ClTerms& cTerms, const Weight& cWeight, int nMean0, int nMean1, int nThreshold)
{
    const double* const pdDark = cTerms.FromMean(nMean0);
    const double* const pdBright = cTerms.FromMean(nMean1);
    double dSum = 0.0;
    for (int g = 0; g < Weight::nEnd; ++g)
    {
        dSum += cWeight.Of((g <= nThreshold ? pdDark : pdBright)[g], g);
    }
    return dSum;
}

constexpr int nSideBySide = 8; // hides how long an addition takes

/// The sums of nSideBySide thresholds, which do not fall. One after the other they pass from the dark class to the
/// bright one.
template <class Weight>
void SumSideBySide(const ClTerms& cTerms, const Weight& cWeight, const ClIpBinarizeAutoThreshold::StThreshold* pc,
                   double* pdSum)
{
    const double* apdTerm[nSideBySide];
    double adSum[nSideBySide] = {};
    for (int i = 0; i < nSideBySide; ++i)
    {
        apdTerm[i] = cTerms.FromMean(pc[i].m_nMean0);
    }
    int g = 0;
    for (int n = 0; n <= nSideBySide; ++n)
    {
        const int nEnd = n < nSideBySide ? std::min(pc[n].m_nThreshold + 1, Weight::nEnd) : Weight::nEnd;
        for (; g < nEnd; ++g)
        {
            for (int i = 0; i < nSideBySide; ++i)
            {
                adSum[i] += cWeight.Of(apdTerm[i][g], g);
            }
        }
        if (n < nSideBySide)
        {
            apdTerm[n] = cTerms.FromMean(pc[n].m_nMean1);
        }
    }
    std::copy_n(adSum, nSideBySide, pdSum);
}

/// The sums of any number of thresholds. The last group ends with the last threshold again and again.
template <class Weight>
void SumAll(const ClTerms& cTerms, const Weight& cWeight, const ClIpBinarizeAutoThreshold::StThreshold* pc, int nCount,
            double* pdSum)
{
    for (int i = 0; i < nCount; i += nSideBySide)
    {
        ClIpBinarizeAutoThreshold::StThreshold acGroup[nSideBySide];
        double adSum[nSideBySide];
        for (int k = 0; k < nSideBySide; ++k)
        {
            acGroup[k] = pc[std::min(i + k, nCount - 1)];
        }
        SumSideBySide(cTerms, cWeight, acGroup, adSum);
        std::copy_n(adSum, std::min(nSideBySide, nCount - i), pdSum + i);
    }
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
    return std::sqrt(Sum(Fuzziness().m_cYager, StUnweighted(), nMean0, nMean1, nThreshold));
}

double ClIpBinarizeAutoThreshold::fuzzy(const double* pdHistogram, int nMean0, int nMean1, int nThreshold, int nType)
{
    return nType == nShannon ? Sum(Fuzziness().m_cShannon, StByCount{pdHistogram}, nMean0, nMean1, nThreshold)
                             : Yager(nMean0, nMean1, nThreshold);
}

void ClIpBinarizeAutoThreshold::fuzzy(const double* pdHistogram, const StThreshold* pcThreshold, int nCount, int nType,
                                      double* pdFuzziness)
{
    if (nType == nShannon)
    {
        SumAll(Fuzziness().m_cShannon, StByCount{pdHistogram}, pcThreshold, nCount, pdFuzziness);
        return;
    }
    SumAll(Fuzziness().m_cYager, StUnweighted(), pcThreshold, nCount, pdFuzziness);
    std::transform(pdFuzziness, pdFuzziness + nCount, pdFuzziness, [](double dSum) { return std::sqrt(dSum); });
}

int ClIpBinarizeAutoThreshold::thr_fuz(const ClImage* pImage, int nType)
{
    double adHistogram[nGreys];
    histogram(pImage, adHistogram);
    const StClasses cClasses(adHistogram);
    StThreshold acThreshold[nGreys];
    int nCount = 0;
    for (int t = 1; t < nGreys - 1; ++t)
    {
        if (adHistogram[t] != 0.0 && cClasses.m_adCount[t] != 0.0 && cClasses.m_adCountAbove[t] != 0.0)
        {
            acThreshold[nCount++] = {t, cClasses.MeanBelow(t), cClasses.MeanAbove(t)};
        }
    }
    if (nCount == 0)
    {
        return nNoThreshold;
    }
    double adFuzziness[nGreys];
    fuzzy(adHistogram, acThreshold, nCount, nType, adFuzziness);
    const double dPerPixel = 1.0 / (static_cast<double>(pImage->m_nWidth) * pImage->m_nHeight);
    std::transform(adFuzziness, adFuzziness + nCount, adFuzziness, [dPerPixel](double d) { return d * dPerPixel; });
    const double* const pdSmallest = std::min_element(adFuzziness, adFuzziness + nCount);
    const double dLargest = std::max(0.0, *std::max_element(adFuzziness, adFuzziness + nCount));
    // A value of fuzziness serves as a distance in grey values.
    const double dReach = (dLargest - *pdSmallest) * 0.05 + *pdSmallest;
    const int nBest = acThreshold[pdSmallest - adFuzziness].m_nThreshold;
    const int nFrom = std::max(CastSample<int>(nBest - dReach), 1);
    const int nTo = std::min(CastSample<int>(nBest + dReach), nGreys - 2);
    return nTo < nFrom ? nNoThreshold : EmptiestPlace(adHistogram, nFrom, nTo);
}
