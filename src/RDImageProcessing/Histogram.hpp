#pragma once

#include "RDTools/FpImage.hpp"

/// Counts the grey values of a one-plane image in 256 bins.
/// Input   one plane; a sample counts as one byte. Of an image with larger samples the first bytes of each row count,
///         so the counts mean something for 8-bit images only. A signed sample counts in the bin of its value plus 128.
/// Errors  ClException -101 for other than one plane, and for a rectangle without area before it is clipped.
class ClHistogram
{
public:
    static constexpr int nBins = 256;

    ClHistogram();
    virtual ~ClHistogram();

    void Reset(); ///< clears all bins
    /// Counts columns nLeft to nRight - 1 of the rows nTop to nBottom - 1, clipped to the image.
    void Create(const ClImage& cImage, int nLeft, int nTop, int nRight, int nBottom);
    void Create(const ClImage& cImage);

    int FirstValue() const; ///< the lowest bin that is not empty; 255 if all are
    int LastValue() const;  ///< the highest one; 0 if all are empty
    unsigned int MinCount() const;
    unsigned int MaxCount() const;
    /// The range that remains when the fraction dLow of the pixels is cut from the dark end and dHigh from the bright
    /// one; a fraction of 1 or more cuts nothing. An empty histogram gives the reversed pair 255 and 0.
    void GetNoiseFreeRange(double dLow, double dHigh, unsigned char& nLow, unsigned char& nHigh) const;
    /// Create, then GetNoiseFreeRange.
    void GetRange(ClImage& cImage, double dLow, double dHigh, unsigned char& nLow, unsigned char& nHigh);

    // Statistics beyond those that the operators need. Grey values are bins 0 to 255 here; of a signed image the sample
    // is the bin minus m_nOffset. h(i) is the count of bin i, N the sum of all counts, mu the mean. Sums are taken in
    // 64 bits. Nothing fails on an empty histogram: where there is no pixel to average a mean is 0 and so is a measure
    // of spread, and a position is the middle of the bins asked for.

    /// The mean, sum(i h(i)) / sum(h(i)) over the bins that GetNoiseFreeRange leaves; 0 if the two cuts meet.
    double GetAverage(double dLow, double dHigh) const;
    double GetGreyMid() const;    ///< halfway between FirstValue and LastValue
    int GetColorCount() const;    ///< bins that are not empty
    double GetUniformity() const; ///< sum((h(i) / N)^2), the energy: 1 for one grey value, 1 / 256 if all are alike
    double GetAverageDeviation() const; ///< mean absolute deviation, sum(|i - mu| h(i)) / N
    double GetStdDeviation() const;     ///< of the pixels as a whole population, sqrt(sum((i - mu)^2 h(i)) / N)

    // Of the bins nPos1 to nPos2, both included. Errors: ClException -101 if nPos2 is below nPos1.
    double GetCentreOfMass(unsigned char nPos1, unsigned char nPos2) const; ///< sum(i h(i)) / sum(h(i))
    /// The median: the first bin up to which at least half of the pixels between nPos1 and nPos2 lie.
    unsigned char GetMid(unsigned char nPos1, unsigned char nPos2) const;
    unsigned char GetLocalMin(unsigned char nPos1, unsigned char nPos2) const; ///< the first bin of the smallest count
    unsigned char GetLocalMax(unsigned char nPos1, unsigned char nPos2) const; ///< the first bin of the greatest count

    /// Walks from bin nStart to the top of its hill: always to the greater of the two neighbouring counts, of equal
    /// ones to the lower bin, until none is greater. Equal counts in a row are level ground, which is crossed if it
    /// goes on upward behind. Where the top is flat, the bin where the walk met it.
    unsigned char Climb(unsigned char nStart) const;
    unsigned char Descend(unsigned char nStart) const; ///< the same downward, to the bottom of the valley
    /// Whether the counts rise to one peak and fall from there; level stretches do not matter. False without a pixel.
    bool IsUnimodal() const;

    /// Replaces every count by the rounded mean of the nWidth bins around it, or of those that exist near the two ends.
    /// An even width runs as the next odd one, a width below 2 changes nothing; without a width it is 3, the smoothing
    /// step of J. M. S. Prewitt and M. L. Mendelsohn, The analysis of cell images, Annals of the New York Academy of
    /// Sciences 128, 1966.
    void LowPass(int nWidth);
    void LowPass();
    /// pdDerivation receives 256 slopes in pixels per grey value, (h(b) - h(a)) / (b - a) with a = i - nDistance and
    /// b = i + nDistance kept inside 0 to 255; a distance below 1 runs as 1. Errors: ClException -101 for null.
    void CalcFirstDerivation(int nDistance, double* pdDerivation) const;

    /// The mean of the nPixels darkest or brightest pixels, 0 of no pixels. Errors: ClException -101 if there are
    /// fewer.
    double GetDarkestAvrg(unsigned int nPixels) const;
    double GetBrightestAvrg(unsigned int nPixels) const;

    /// Splits the pixels into a dark and a bright cluster, each pixel belonging to the nearer of the two means and
    /// those halfway between to the bright one (J. MacQueen, Some methods for classification and analysis of
    /// multivariate observations, 5th Berkeley Symposium, 1967; as a threshold T. W. Ridler and S. Calvard, Picture
    /// thresholding using an iterative selection method, IEEE Transactions on Systems, Man, and Cybernetics 8, 1978).
    /// The means begin at the lowest and at the highest bin that is not empty. Returns the first bin of the bright
    /// cluster: every value below it is dark. Of one grey value the bin and both means are that value, without a pixel
    /// the middle of the bins.
    unsigned char TwoMeansClustering() const;
    unsigned char TwoMeansClustering(double& dDark, double& dBright) const;
    /// The same of the bins nPos1 to nPos2 alone. Errors: ClException -101 if nPos2 is below nPos1.
    unsigned char TwoMeansClustering(unsigned char nPos1, unsigned char nPos2, double& dDark, double& dBright) const;

    unsigned int m_anBins[nBins];
    int m_nOffset; ///< what is added to a sample to get its bin: 0, or 128 for a signed image

private:
    struct StSums;
    StSums SumsOf(int nFirst, int nLast) const;
    double AverageFrom(int nBin, int nStep, unsigned int nPixels) const;
    int NextOtherCount(int nBin, int nStep) const;
    template <class Better> unsigned char Walk(int nBin, Better better) const;
};
