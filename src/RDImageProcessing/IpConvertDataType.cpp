#include "RDImageProcessing/IpConvertDataType.hpp"

#include "RDTools/Exception.hpp"
#include "RDTools/SampleCast.hpp"

namespace
{
template <class TIn, class TOut> void Convert(const ClImage& cIn, ClImage& cOut)
{
    const int nSamples = cIn.SamplesPerRow();
    for (int y = 0; y < cIn.m_nHeight; ++y)
    {
        const TIn* pIn = Row<TIn>(cIn, y);
        TOut* pOut = Row<TOut>(cOut, y);
        for (int x = 0; x < nSamples; ++x)
        {
            pOut[x] = CastSample<TOut>(pIn[x]);
        }
    }
}

template <class TIn> long Dispatch(const ClImage& cIn, ClImage& cOut)
{
    return DispatchSampleType(cOut.m_eDataType, FPC_ERROR_INTERNAL,
                              [&](auto cTag)
                              {
                                  Convert<TIn, typename decltype(cTag)::Type>(cIn, cOut);
                                  return long(FPC_SUCCESS);
                              });
}
} // namespace

long ClIpConvertDataType::ApplyParam(ClImage& cIn, ClImage& cOut, unsigned char nType)
{
    return ClIp1to1Base::ApplyParam(cIn, cOut, nType);
}

long ClIpConvertDataType::ApplyParam(ClImage& cImage, unsigned char nType)
{
    return ClIp1to1Base::ApplyParam(cImage, cImage, nType);
}

ClProcessorBase* ClIpConvertDataType::Create()
{
    return NewProcessor<ClIpConvertDataType>();
}

const char* ClIpConvertDataType::Name() const
{
    return "ClIpConvertDataType";
}

long ClIpConvertDataType::DoProcess(ClImage& cIn, ClImage& cOut)
{
    if (m_eOutImageType == cIn.m_eDataType)
    {
        cOut = cIn;
        return FPC_SUCCESS;
    }
    return DispatchSampleType(cIn.m_eDataType, FPC_ERROR_INTERNAL,
                              [&](auto cTag) { return Dispatch<typename decltype(cTag)::Type>(cIn, cOut); });
}
