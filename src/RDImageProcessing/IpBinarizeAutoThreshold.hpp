#pragma once

#include "RDImageProcessing/Ip1to1Base.hpp"

/// Turns a grey image into a black and white one, finding the threshold from the image itself.
/// Input   eUInt8, one plane.
/// Output  the input's geometry, resolution, content and range; black of that range below the threshold, white from it
///         on (moving averages and relaxation: 0 and 255). A range without the threshold leaves the samples
///         undetermined, with a result of 0.
/// Values  The fuzzy methods search the threshold at which the fuzziness of the membership of all pixels in a dark and
///         a bright class is smallest, measured by Shannon's entropy or by Yager's measure, and then take the emptiest
///         three neighbouring grey values near it (L. K. Huang and M. J. Wang, Image thresholding by minimizing the
///         measures of fuzziness, Pattern Recognition 28, 1995).
///         Johannsen, Kapur and Pun compare the entropies of the two classes, the minimum error method (J. Kittler and
///         J. Illingworth, 1986) two normal distributions, Otsu's the variances within the classes. Moving averages
///         follow a serpentine walk, and relaxation lets neighbours decide together; these two have no threshold.
/// Modes   A mode that is none of these leaves the samples undetermined, with a result of 0 and a threshold of -1.
/// Errors  -11 for several planes; ClException -33 for another sample type and -701 without images or pixels;
///         ClExBadAlloc.
/// Cost    one pass for the histogram, a search over 256 values, one pass for the result. Relaxation costs 441 samples
///         per pixel and up to 100 passes over four matrices of doubles.
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
        ModeRelaxation = 7,
        ModeOtsu = 8 ///< has no name among the parameters
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

    // The methods that search the histogram. Each gives a threshold, 255 or -1 if it finds none.
    int thr_fuz(const ClImage* pImage, int nType); ///< nType 1: Shannon's entropy, other: Yager's measure
    int thr_joh(const ClImage* pImage);
    int thr_kapur(const ClImage* pImage);
    int thr_pun(const ClImage* pImage);
    int thr_me(const ClImage* pImage);   ///< the minimum error
    int thr_otsu(const ClImage* pImage); ///< of two values the middle plus 1, of one the value minus 1

    // The methods that overwrite the image with their decisions.
    /// Compares each pixel with 85 per cent of a running mean, which follows the rows there and back and spans an
    /// eighth of the width; not meaningful below a width of 8. The last pixel of the walk keeps its grey value.
    void thrdd(ClImage* pImage);
    /// Relaxation. Pixels without any contrast to their neighbourhood and to the image's first pixel become white.
    void thr_relax(ClImage* pImage);

    /// Membership of a grey value in its class: 1 on the class's mean, one half 255 away from it.
    static double Ux(int nGrey, int nMean0, int nMean1, int nThreshold);
    static double Yager(int nMean0, int nMean1, int nThreshold);
    static double fuzzy(const double* pdHistogram, int nMean0, int nMean1, int nThreshold, int nType);
    /// A threshold with the means, 0 to 255, of the grey values up to it and above it.
    struct StThreshold
    {
        int m_nThreshold;
        int m_nMean0;
        int m_nMean1;
    };
    /// The same for nCount thresholds, which do not fall, to the last bit: several sums side by side, each in its
    /// order.
    static void fuzzy(const double* pdHistogram, const StThreshold* pcThreshold, int nCount, int nType,
                      double* pdFuzziness);
    static void histogram(const ClImage* pImage, double* pdHistogram);

    eProcessingMode m_eProcessingMode = ModeFuzzyEntropy;
    int m_nThreshold = -1; ///< of the last run; -1 if its method found or has none

private:
    template <class T> long AutoBin(ClImage& cIn, ClImage& cOut);
};
