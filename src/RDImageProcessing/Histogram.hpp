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

    unsigned int m_anBins[nBins];
    int m_nOffset; ///< what is added to a sample to get its bin: 0, or 128 for a signed image
};
