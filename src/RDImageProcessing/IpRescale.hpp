#pragma once

#include "RDTools/FpImage.hpp"
#include "RDTools/ProcessorBase.hpp"
#include "RDTools/TpArrayStatic.hpp"

#include <cstdint>

/// Resizes an 8-bit image to a new size in pixels or to a new resolution in pels per metre.
/// Input   8-bit samples, read as unsigned bytes; of a colour image up to three planes, one by one.
/// Output  8-bit, the input's sign, size and resolution in force; may be the input. An equal size is a plain copy.
/// Values  ModeBiLinear, in 12-bit fixed point, truncated: a direction that shrinks takes the mean of the source span
///         that a pixel covers, one that grows interpolates between pixel centres. ModeNearestNeighbour takes the
///         sample at or before a pixel's place. ModeWholeNumbered repeats samples or takes means of them by the whole
///         factors nearest to the ratios of the resolutions, and so makes its own size. ModeBiCubic weighs 4 by 4
///         samples, ModeBiLinearFantMar is Fant's resampling, rows first. A size that follows from resolutions is
///         rounded up.
/// Errors  -10 without input, output or pixels; -13 pels asked for without a resolution; -35 no size; -101 no size and
///         no resolution asked for, no resolution for whole numbers, or planes of unknown content; ClExBadAlloc.
/// Cost    each source sample is read once in a direction that shrinks, four times in one that grows; bicubic 16 square
///         roots for each output pixel, and 8 bytes of memory for each source sample.
class ClIpRescale : public ClProcessorBase
{
public:
    enum eProcessingMode : int
    {
        ModeWholeNumbered = 0,
        ModeNearestNeighbour = 1,
        ModeBiLinear = 2,
        ModeBiCubic = 3,
        ModeBiLinearFantMar = 4
    };

    static constexpr int nMaxPlanes = 3;

    long ApplyParam(ClImage& cIn, ClImage& cOut, eProcessingMode eMode);
    /// Size in pixels. The resolutions in force follow from it.
    long ApplyParamSize(ClImage& cIn, ClImage& cOut, int nWidth, int nHeight, eProcessingMode eMode);
    /// Resolution in pels per metre. The size follows from it.
    long ApplyParamPels(ClImage& cIn, ClImage& cOut, int nPelsX, int nPelsY, eProcessingMode eMode);

    void SetParametersToDefault() override;
    void PublishParameters(ClParameterContainer& cContainer) override;
    using ClProcessorBase::QueryParameters;
    void QueryParameters(ClParameterInterface& cInterface) override;
    ClProcessorBase* Create() override;
    const char* Name() const override;
    void ParameterString(char* szBuffer, unsigned long nSize) override;
    long Initialize() override;
    long Process() override;
    virtual void ProcessMultiPlane();

    // The passes, each from *m_pInImage to *m_pOutImage, two different one-plane images.
    void ProcessXBiLinearIntegrating();
    void ProcessYBiLinearIntegrating();
    void ProcessBiLinear();
    /// A row whose source row lies beyond the image stays as it is; in a new block it is 0.
    void ProcessNearestNeighbour();
    void ProcessWholeNumbered();
    void ProcessXWholeNumberedResize(int nFactor); ///< repeats each sample
    void ProcessYWholeNumberedResize(int nFactor);
    void ProcessXWholeNumberedSubsample(int nFactor); ///< each nFactor samples become their mean; fewer are dropped
    void ProcessYWholeNumberedSubsample(int nFactor); ///< unless there are no others
    void ProcessBiCubic(); ///< a positive kernel parameter takes the fast form and is negated, for good
    void ProcessBiCubicExact();
    void ProcessBiCubicFast(); ///< the same with the columns' taps worked out once
    void ProcessBiLinearFant();

    // The steps of the last one. A plain picture has no gaps between its rows; the sizes given are 1 and more.
    void ConvertImageToPlain(TpArrayStatic<unsigned char>& aOut) const; ///< from *m_pInImage
    void ConvertPlainToImage(const TpArrayStatic<unsigned char>& aIn);  ///< of the size in force, to *m_pOutImage
    /// Resizes nRows rows of nWidth samples: a pixel is the mean of the span it covers, interpolated piece by piece
    /// (K. M. Fant, A nonaliasing, real-time spatial transform technique, IEEE Computer Graphics and Applications 6,
    /// 1986). In 12-bit fixed point, truncated.
    void BilinearResample(const TpArrayStatic<unsigned char>& aIn, int nWidth, int nRows, int nNewWidth,
                          TpArrayStatic<unsigned char>& aOut);
    /// The same in floating point with a table of positions; held in reserve.
    void BilinearResample2(const TpArrayStatic<double>& aIn, int nWidth, int nRows, int nNewWidth,
                           TpArrayStatic<double>& aOut);
    /// Rows become columns.
    void FlipXY(const TpArrayStatic<unsigned char>& aIn, int nWidth, int nHeight,
                TpArrayStatic<unsigned char>& aOut) const;

    ClImage* m_pInImage = nullptr;  ///< not owned
    ClImage* m_pOutImage = nullptr; ///< not owned
    int m_nNewWidth = 0;
    int m_nNewHeight = 0;
    int m_nNewPelsX = 0;
    int m_nNewPelsY = 0;
    eProcessingMode m_eMode = ModeBiLinear;
    double m_dConvParameter1 = -0.75; ///< kernel parameter of the bicubic modes
    int m_nActWidth = 0;              ///< size and resolution in force, from Initialize
    int m_nActHeight = 0;
    int m_nActPelsX = 0;
    int m_nActPelsY = 0;

private:
    void ProcessOnePlane();
    void BiLinear();
    void ShrinkBoth();
    std::int64_t SpanX() const;
    std::int64_t SpanY() const;
    template <class Pass> void OnResult(Pass&& pass);
    template <class Columns> void BiCubic(Columns&& columns);
    void MakeOutput(int nWidth, int nHeight, int nPelsX, int nPelsY);
};
