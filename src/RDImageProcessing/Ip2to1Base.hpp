#pragma once

#include "RDTools/FpImage.hpp"
#include "RDTools/ProcessorBase.hpp"
#include "RDTools/SampleCast.hpp"
#include "RDTools/TpArrayStatic.hpp"

/// The overlap of two images and its place in the three, as DoProcess is told of it. Offsets and row lengths in
/// samples.
struct StOverlap
{
    long nWidth; ///< pixels; without area nothing is read or written
    long nHeight;
    long nPlanes1;
    long nPlanes2;
    long nIn1Offset; ///< first sample of the overlap
    long nIn1Row;    ///< samples from row to row
    long nIn2Offset;
    long nIn2Row;
    long nOutOffset;
    long nOutRow;
};

/// Frame of the operators that make one image from two, which may differ in sample type and size and be shifted against
/// each other.
/// Input   any of the eight sample types each. OffsetX and OffsetY place input 2 on input 1, in pixels.
/// Output  a canvas for both with the planes and resolution of input 1, of any sample type and with that type's range;
///         may be an input. Where the inputs do not overlap it shows them, input 2 on top, elsewhere the fill colour.
/// Overlap as wide as the narrower input less the offset, also where the inputs have more in common. Samples are
///         combined one to one if the planes are equal, and each of three planes of input 1 with the one of input 2.
///         With other planes the overlap shows the inputs, and input 2 only if its planes fit.
/// Values  what GetValue returns, truncated to the sample type and not saturated.
/// Errors  -37 without images or pixels; -44 if the sizes must be equal and are not, or there is an offset; -101 for a
///         type that is none of the eight; ClException -101 for a negative area; ClExBadAlloc, also for a canvas or a
///         row that 32 bits cannot hold.
/// Thread  the overlap is state of the run: one object, one thread.
class ClIp2to1Base : public ClProcessorBase
{
public:
    static constexpr unsigned char nTypeOfInput1 = 255;

    long ApplyParam(ClImage& cIn1, ClImage& cIn2, ClImage& cOut, unsigned char nOutImageType);

    void SetParametersToDefault() override; ///< all but the images
    void PublishParameters(ClParameterContainer& cContainer) override;
    using ClProcessorBase::QueryParameters;
    void QueryParameters(ClParameterInterface& cInterface) override;

    bool CanApply() override; ///< all images are given, and the inputs have pixels
    long Initialize() override;
    long Process() override;
    /// Combines the overlap; the arguments are those of StOverlap, in its order. With two eUInt8 inputs and m_bUseLUT
    /// GetValue is called once for each pair of values within the inputs' ranges, else for each pair of samples.
    virtual long DoProcess(ClImage& cIn1, ClImage& cIn2, ClImage& cOut, long nWidth, long nHeight, long nPlanes1,
                           long nPlanes2, long nIn1Offset, long nIn1Row, long nIn2Offset, long nIn2Row, long nOutOffset,
                           long nOutRow);
    /// The operator as a pure function of two samples.
    virtual double GetValue(ClImage& cIn1, ClImage& cIn2, ClImage& cOut, double dValue1, double dValue2);

    ClImage* m_pInImage1 = nullptr;                ///< not owned
    ClImage* m_pInImage2 = nullptr;                ///< not owned
    ClImage* m_pOutImage = nullptr;                ///< not owned; may be an input
    unsigned char m_nOutImageType = nTypeOfInput1; ///< sample type of the output; 255: that of input 1
    bool m_bSizeMustBeEqual = true;
    double m_dFillColor = 0.0; ///< in all planes, where the canvas shows no input
    int m_nOffsetX = 0;        ///< pixels, of image 2 to image 1
    int m_nOffsetY = 0;
    // Set by the preparation: the overlap in pixels, and its first sample in each image.
    long m_nOverlapWidth = 0;
    long m_nOverlapHeight = 0;
    long m_nOutOffset = 0;
    long m_nIn1Offset = 0;
    long m_nIn2Offset = 0;
    bool m_bUseLUT = false; ///< two 8-bit inputs take the table of all pairs

protected:
    /// The overlap of two 8-bit images through a table of 65536 results, of the output's type.
    template <class T1, class T2> long DispatchLUT(ClImage& cIn1, ClImage& cIn2, ClImage& cOut, const StOverlap& c);

private:
    template <class T1> long Dispatch1(ClImage& cIn1, ClImage& cIn2, ClImage& cOut);
    template <class T1, class T2> long Dispatch2(ClImage& cIn1, ClImage& cIn2, ClImage& cOut);
    template <class T1, class T2, class TOut>
    long ProcessOverlayPreparations(ClImage& cIn1, ClImage& cIn2, ClImage& cOut);
    template <class T1> long DispatchDefault(ClImage& cIn1, ClImage& cIn2, ClImage& cOut, const StOverlap& c);
    template <class T1, class T2>
    long DispatchDefault2(ClImage& cIn1, ClImage& cIn2, ClImage& cOut, const StOverlap& c);
    template <class T1, class T2, class TOut>
    long Default(ClImage& cIn1, ClImage& cIn2, ClImage& cOut, const StOverlap& c);
    template <class T1, class T2, class TOut>
    long ProcessLUT(ClImage& cIn1, ClImage& cIn2, ClImage& cOut, const StOverlap& c);

    bool MakeCanvas(const ClImage& cIn1, const ClImage& cIn2, ClImage& cOut);
    void LocateOverlap(const ClImage& cIn1, const ClImage& cIn2, const ClImage& cOut);
};

/// The rows of an overlap as pairs of samples, whatever the planes. A sample of input 2 that has three partners stands
/// three times in a row made for it. Out of line: 512 loops use it.
class ClOverlapRows
{
public:
    /// Errors: ClExBadAlloc.
    [[gnu::noinline]] ClOverlapRows(const ClImage& cIn1, const ClImage& cIn2, ClImage& cOut, const StOverlap& c);

    long Height() const { return m_nHeight; } ///< 0 if there is nothing to combine
    long Count() const { return m_nCount; }   ///< samples of a row
    const void* In1(long y) const { return m_pIn1 + y * m_nBytes1; }
    [[gnu::noinline]] const void* In2(long y); ///< good until the next row is asked for
    void* Out(long y) const { return m_pOut + y * m_nBytesOut; }

private:
    const unsigned char* m_pIn1; ///< first sample of the overlap
    const unsigned char* m_pIn2;
    unsigned char* m_pOut;
    long m_nBytes1; ///< from row to row
    long m_nBytes2;
    long m_nBytesOut;
    long m_nSize2; ///< bytes of a sample of input 2
    long m_nHeight = 0;
    long m_nCount = 0;
    TpArrayStatic<unsigned char> m_anSpread; ///< empty if the planes are equal
};

/// out = combine(a, b) for the samples of the overlap.
template <class T1, class T2, class TOut, class Combine>
void CombineOverlap(ClOverlapRows&& cRows, const Combine combine)
{
    const long nCount = cRows.Count();
    for (long y = 0; y < cRows.Height(); ++y)
    {
        const T1* p1 = static_cast<const T1*>(cRows.In1(y));
        const T2* p2 = static_cast<const T2*>(cRows.In2(y));
        TOut* pOut = static_cast<TOut*>(cRows.Out(y));
        for (long x = 0; x < nCount; ++x)
        {
            pOut[x] = combine(p1[x], p2[x]);
        }
    }
}
