#pragma once

#include "RDImageProcessing/ByteMap.hpp"
#include "RDImageProcessing/ImageDataTypeCheck.hpp"
#include "RDTools/FpImage.hpp"
#include "RDTools/ProcessorBase.hpp"

#include <cstddef>
#include <type_traits>

class ClParameter;

namespace NewIpBase
{
/// A processor that checks the sample types of its images before it runs.
class ClIpProcessorBase : public ClProcessorBase, public ClImageDataTypeCheck
{
public:
    /// 0. Errors: those of CheckInOutImageTypes pass through.
    long Initialize() override;
    bool CanApply() override; ///< whether CheckInOutImageTypes raises nothing
};

/// Frame of the operators that make one image from one image, with the type and geometry of the input.
/// Output  Made here; may be the input itself. A class that works in place (m_bInPlace) then writes into it, any other
///         writes into a temporary, whose block replaces the image's.
/// Errors  ClException -701 without input, output or pixels, -33 for a sample type that is not enabled; ClExBadAlloc.
class ClIp1to1Base : public ClIpProcessorBase
{
public:
    long ApplyParam(ClImage& cImage); ///< in place
    long ApplyParam(ClImage& cIn, ClImage& cOut);

    void SetParametersToDefault() override; ///< leaves the images alone
    void PublishParameters(ClParameterContainer& cContainer) override;
    using ClIpProcessorBase::QueryParameters;
    void QueryParameters(ClParameterInterface& cInterface) override;

    long Process() override;
    /// Every sample through GetValue, whose result is truncated to the sample type and not saturated. An 8-bit input
    /// takes a table of 256 results if m_bUseLUT. Returns -101 for a type that is none of the eight.
    virtual long DoProcess(ClImage& cIn, ClImage& cOut);
    virtual void AllocateOutImage(ClImage& cOut);
    /// The operator as a pure function of a sample's value.
    virtual double GetValue(ClImage& cIn, ClImage& cOut, double dValue);
    void CheckInOutImageTypes() override;

    ClImage* m_pInImage = nullptr;  ///< not owned
    ClImage* m_pOutImage = nullptr; ///< not owned; may be the input
    bool m_bInPlace = false;        ///< DoProcess can read and write the same image
    bool m_bUseLUT = true;          ///< evaluate GetValue once for each of the 256 values of an 8-bit input
};
} // namespace NewIpBase

/// The older frame, in which the output's sample type may differ from the input's.
/// Errors  -10 without input, output or pixels; ClExBadAlloc.
class ClIp1to1Base : public ClProcessorBase
{
public:
    static constexpr unsigned char nTypeOfInput = 255;

    long ApplyParam(ClImage& cImage); ///< in place, type unchanged
    long ApplyParam(ClImage& cIn, ClImage& cOut, unsigned char eOutType);

    void SetParametersToDefault() override;
    void PublishParameters(ClParameterContainer& cContainer) override;
    using ClProcessorBase::QueryParameters;
    void QueryParameters(ClParameterInterface& cInterface) override;

    long Process() override;
    /// As in NewIpBase::ClIp1to1Base, with the two types independent.
    virtual long DoProcess(ClImage& cIn, ClImage& cOut);
    virtual double GetValue(ClImage& cIn, ClImage& cOut, double dValue);

    ClImage* m_pInImage = nullptr;                ///< not owned
    ClImage* m_pOutImage = nullptr;               ///< not owned; may be the input
    unsigned char m_eOutImageType = nTypeOfInput; ///< sample type of the output; 255: the input's
    bool m_bInPlace = false;
    bool m_bUseLUT = true;
};

/// fn(input samples, output samples, number) for every row; once for all rows where none has padding.
template <class TIn, class TOut, class Fn> void ForEachRowPair(const ClImage& cIn, ClImage& cOut, Fn&& fn)
{
    const std::ptrdiff_t nSamples = cIn.SamplesPerRow();
    if (nSamples < 1) return; // rows without samples can be two thousand million
    const bool bOneBlock = cIn.Stride() == nSamples * static_cast<std::ptrdiff_t>(sizeof(TIn)) &&
                           cOut.Stride() == nSamples * static_cast<std::ptrdiff_t>(sizeof(TOut));
    if (bOneBlock && cIn.m_nHeight > 0)
    {
        fn(Row<TIn>(cIn, 0), Row<TOut>(cOut, 0), nSamples * cIn.m_nHeight);
        return;
    }
    for (int y = 0; y < cIn.m_nHeight; ++y)
    {
        fn(Row<TIn>(cIn, y), Row<TOut>(cOut, y), nSamples);
    }
}

/// out = aTable[in] for every sample of an 8-bit image, all planes alike; padding is neither read nor written.
template <class TOut> void MapThroughTable(const ClImage& cIn, ClImage& cOut, const TOut* pTable)
{
    ForEachRowPair<unsigned char, TOut>(cIn, cOut,
                                        [pTable](const unsigned char* pIn, TOut* pOut, std::ptrdiff_t nSamples)
                                        {
                                            if constexpr (std::is_same_v<TOut, unsigned char>)
                                            {
                                                ByteMaps().pThroughTable(pIn, pOut, nSamples, pTable);
                                                return;
                                            }
                                            for (std::ptrdiff_t x = 0; x < nSamples; ++x)
                                            {
                                                pOut[x] = pTable[pIn[x]];
                                            }
                                        });
}

/// Adds "pInImage" (write only) and "pOutImage" (read only).
void PublishInOutImages(ClParameterContainer& cContainer, ClImage** ppInImage, ClImage** ppOutImage);
/// Adds "OutImageType", a sample type by its name in C or "default", 255.
ClParameter* PublishOutImageType(ClParameterContainer& cContainer, unsigned char* pnType);
/// The same for a description.
void DescribeOutImageType(ClParameterInterface& cInterface, unsigned char* pnType);
