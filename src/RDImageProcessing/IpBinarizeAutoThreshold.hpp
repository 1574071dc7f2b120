#pragma once

#include "RDImageProcessing/Ip1to1Base.hpp"

/// Turns a grey image into a black and white one, finding the threshold from the image itself.
/// Input   eUInt8, one plane.
/// Output  the input's geometry, resolution, content and range; 0 below the threshold, 255 from it on.
/// Values  The fuzzy methods search the threshold at which the fuzziness of the membership of all pixels in a dark and
/// a
///         bright class is smallest, measured by Shannon's entropy or by Yager's measure, and then take the emptiest
///         three neighbouring grey values near it (L. K. Huang and M. J. Wang, Image thresholding by minimizing the
///         measures of fuzziness, Pattern Recognition 28, 1995).
/// Errors  -11 for several planes; ClException -33 for another sample type; -103 for a mode that is not available;
///         ClExBadAlloc.
/// Cost    one pass for the histogram, a search over pairs of grey values, one pass for the result.
class ClIpBinarizeAutoThreshold : public NewIpBase::ClIp1to1Base
{
public:
    enum eProcessingMode : int
    {
        ModeFuzzyEntropy = 0,
        ModeFuzzyYager = 1,
        ModeMovingAverages = 2,
        ModeJohannsen = 3,
        ModeKapur = 4,
        ModePun = 5,
        ModeMinimumError = 6,
        ModeRelaxation = 7
    };

    ClIpBinarizeAutoThreshold();

    using NewIpBase::ClIp1to1Base::ApplyParam;
    long ApplyParam(ClImage& cIn, ClImage& cOut, eProcessingMode eMode);

    void SetParametersToDefault() override;
    void PublishParameters(ClParameterContainer& cContainer) override;
    using NewIpBase::ClIp1to1Base::QueryParameters;
    ClProcessorBase* Create() override;
    const char* Name() const override;
    bool CanApply() override;
    long DoProcess(ClImage& cIn, ClImage& cOut) override;

    static constexpr int nGreys = 256;

    // The methods. Each gives a threshold, 255 or -1 if it finds none.
    int thr_fuz(const ClImage* pImage, int nType); ///< nType 1: Shannon's entropy, other: Yager's measure
    /// Membership of a grey value in its class: 1 on the class's mean, one half 255 away from it.
    static double Ux(int nGrey, int nMean0, int nMean1, int nThreshold);
    static double Yager(int nMean0, int nMean1, int nThreshold);
    static double fuzzy(const double* pdHistogram, int nMean0, int nMean1, int nThreshold, int nType);
    static void histogram(const ClImage* pImage, double* pdHistogram);

    eProcessingMode m_eProcessingMode = ModeFuzzyEntropy;
    int m_nThreshold = -1; ///< of the last run

private:
    template <class T> long AutoBin(ClImage& cIn, ClImage& cOut);
};
