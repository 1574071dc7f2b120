#include "RDImageProcessing/Ip1to1Base.hpp"

#include "RDTools/ParameterContainer.hpp"
#include "RDTools/ParameterInterface.hpp"
#include "RDTools/SampleCast.hpp"

namespace
{
constexpr StEnumName aTypeNames[] = {
    {ClImage::eUInt8, "unsigned char"}, {ClImage::eSInt8, "signed char"},   {ClImage::eUInt16, "unsigned short"},
    {ClImage::eSInt16, "signed short"}, {ClImage::eUInt32, "unsigned int"}, {ClImage::eSInt32, "signed int"},
    {ClImage::eFloat32, "float"},       {ClImage::eDouble64, "double"},     {ClIp1to1Base::nTypeOfInput, "default"}};

constexpr char szModule[] = "RDImageProcessing/Ip1to1Base";
constexpr int nTableSize = 256;

/// Every sample of cIn through the processor's GetValue: a virtual call each.
template <class TIn, class TOut, class Processor> long MapByValue(Processor& cProcessor, ClImage& cIn, ClImage& cOut)
{
    const int nSamples = cIn.SamplesPerRow();
    for (int y = 0; y < cIn.m_nHeight; ++y)
    {
        const TIn* pIn = Row<TIn>(cIn, y);
        TOut* pOut = Row<TOut>(cOut, y);
        for (int x = 0; x < nSamples; ++x)
        {
            pOut[x] = CastSample<TOut>(cProcessor.GetValue(cIn, cOut, static_cast<double>(pIn[x])));
        }
    }
    return FPC_SUCCESS;
}

/// The same for 8-bit samples with 256 calls in all.
template <class TOut, class Processor> long MapByTable(Processor& cProcessor, ClImage& cIn, ClImage& cOut)
{
    TpArrayStatic<TOut> aTable(nTableSize);
    for (unsigned long i = 0; i < nTableSize; ++i)
    {
        aTable[i] = CastSample<TOut>(cProcessor.GetValue(cIn, cOut, static_cast<double>(i)));
    }
    MapThroughTable(cIn, cOut, aTable.m_pData);
    return FPC_SUCCESS;
}

template <class TIn, class TOut, class Processor> long MapSamples(Processor& cProcessor, ClImage& cIn, ClImage& cOut)
{
    if (std::is_same_v<TIn, unsigned char> && cProcessor.m_bUseLUT)
    {
        return MapByTable<TOut>(cProcessor, cIn, cOut);
    }
    return MapByValue<TIn, TOut>(cProcessor, cIn, cOut);
}

void DescribeInOutImages(ClParameterInterface& cInterface, ClImage** ppInImage, ClImage** ppOutImage)
{
    cInterface.AddParameter(ppInImage, "InImage", "In: Original Image", ClParameterInterface::eIn);
    cInterface.AddParameter(ppOutImage, "OutImage", "Out: Output Image", ClParameterInterface::eOut);
}
} // namespace

void PublishInOutImages(ClParameterContainer& cContainer, ClImage** ppInImage, ClImage** ppOutImage)
{
    cContainer.AddPointer("pInImage", ppInImage)->m_nFlags = ClParameter::eWritable;
    cContainer.AddPointer("pOutImage", ppOutImage)->m_nFlags = ClParameter::eReadable;
}

ClParameter* PublishOutImageType(ClParameterContainer& cContainer, unsigned char* pnType)
{
    auto* pType = cContainer.AddParam<TpParameterEnumPointer<unsigned char, ClParameter>>("OutImageType", pnType);
    pType->AddValues(aTypeNames);
    return pType;
}

void DescribeOutImageType(ClParameterInterface& cInterface, unsigned char* pnType)
{
    cInterface.AddParameter(pnType, "OutImageType", "In: OutImage Datatype", ClParameterInterface::eIn, 0.0, 255.0)
        ->SetEnumList(aTypeNames);
}

namespace NewIpBase
{
long ClIpProcessorBase::Initialize()
{
    CheckInOutImageTypes();
    return FPC_SUCCESS;
}

bool ClIpProcessorBase::CanApply()
{
    try
    {
        CheckInOutImageTypes();
        return true;
    }
    catch (const ClException&)
    {
        return false;
    }
}

long ClIp1to1Base::ApplyParam(ClImage& cImage)
{
    return ApplyParam(cImage, cImage);
}

long ClIp1to1Base::ApplyParam(ClImage& cIn, ClImage& cOut)
{
    m_pInImage = &cIn;
    m_pOutImage = &cOut;
    return Apply();
}

void ClIp1to1Base::SetParametersToDefault() {}

void ClIp1to1Base::PublishParameters(ClParameterContainer& cContainer)
{
    PublishInOutImages(cContainer, &m_pInImage, &m_pOutImage);
}

void ClIp1to1Base::QueryParameters(ClParameterInterface& cInterface)
{
    DescribeInOutImages(cInterface, &m_pInImage, &m_pOutImage);
}

void ClIp1to1Base::CheckInOutImageTypes()
{
    if (m_pInImage == nullptr)
    {
        throw ClException("Input image not assigned", FPC_ERROR_BAD_POINTER, true, szModule, __LINE__);
    }
    CheckTypeAllowed(m_pInImage);
}

void ClIp1to1Base::AllocateOutImage(ClImage& cOut)
{
    cOut.New(*m_pInImage);
}

double ClIp1to1Base::GetValue(ClImage&, ClImage&, double)
{
    return 0.0;
}

long ClIp1to1Base::Process()
{
    if (m_pInImage == nullptr)
    {
        throw ClException("m_pInImage is not set", FPC_ERROR_BAD_POINTER, true, szModule, __LINE__);
    }
    if (m_pOutImage == nullptr)
    {
        throw ClException("m_pOutImage is not set", FPC_ERROR_BAD_POINTER, true, szModule, __LINE__);
    }
    if (m_pInImage->Data() == nullptr)
    {
        throw ClException("m_pInImage->Data() is not set", FPC_ERROR_BAD_POINTER, true, szModule, __LINE__);
    }
    if (m_bInPlace)
    {
        if (m_pOutImage == m_pInImage)
        {
            return DoProcess(*m_pOutImage, *m_pOutImage);
        }
        AllocateOutImage(*m_pOutImage);
        return DoProcess(*m_pInImage, *m_pOutImage);
    }
    ClImage cTemporary;
    ClImage& cTarget = m_pOutImage == m_pInImage ? cTemporary : *m_pOutImage;
    AllocateOutImage(cTarget);
    const long nResult = DoProcess(*m_pInImage, cTarget);
    m_pOutImage->Swap(cTarget);
    return nResult;
}

long ClIp1to1Base::DoProcess(ClImage& cIn, ClImage& cOut)
{
    return DispatchSampleType(cIn.m_eDataType, FPC_ERROR_INTERNAL,
                              [&](auto cTag)
                              {
                                  using T = typename decltype(cTag)::Type;
                                  return MapSamples<T, T>(*this, cIn, cOut);
                              });
}
} // namespace NewIpBase

long ClIp1to1Base::ApplyParam(ClImage& cImage)
{
    return ApplyParam(cImage, cImage, nTypeOfInput);
}

long ClIp1to1Base::ApplyParam(ClImage& cIn, ClImage& cOut, unsigned char eOutType)
{
    m_pInImage = &cIn;
    m_pOutImage = &cOut;
    m_eOutImageType = eOutType;
    return Apply();
}

void ClIp1to1Base::SetParametersToDefault()
{
    m_pInImage = nullptr;
    m_pOutImage = nullptr;
    m_eOutImageType = nTypeOfInput;
}

void ClIp1to1Base::PublishParameters(ClParameterContainer& cContainer)
{
    PublishInOutImages(cContainer, &m_pInImage, &m_pOutImage);
    PublishOutImageType(cContainer, &m_eOutImageType)->m_nFlags = ClParameter::eWritable;
}

void ClIp1to1Base::QueryParameters(ClParameterInterface& cInterface)
{
    DescribeInOutImages(cInterface, &m_pInImage, &m_pOutImage);
    DescribeOutImageType(cInterface, &m_eOutImageType);
}

double ClIp1to1Base::GetValue(ClImage&, ClImage&, double)
{
    return 0.0;
}

long ClIp1to1Base::Process()
{
    if (m_pInImage == nullptr || m_pInImage->Data() == nullptr || m_pOutImage == nullptr)
    {
        return FPC_ERROR_BITMAP_PTR;
    }
    if (m_bInPlace && m_eOutImageType == nTypeOfInput)
    {
        if (m_pOutImage != m_pInImage)
        {
            m_pOutImage->New(*m_pInImage);
        }
        return DoProcess(*m_pInImage, *m_pOutImage);
    }
    ClImage cTemporary;
    ClImage& cTarget = m_pOutImage == m_pInImage ? cTemporary : *m_pOutImage;
    cTarget.NewWithType(*m_pInImage, m_eOutImageType == nTypeOfInput ? m_pInImage->m_eDataType
                                                                     : ClImage::EDataType(m_eOutImageType));
    const long nResult = DoProcess(*m_pInImage, cTarget);
    m_pOutImage->Swap(cTarget);
    return nResult;
}

long ClIp1to1Base::DoProcess(ClImage& cIn, ClImage& cOut)
{
    return DispatchSampleType(cIn.m_eDataType, FPC_ERROR_INTERNAL,
                              [&](auto cTagIn)
                              {
                                  return DispatchSampleType(cOut.m_eDataType, FPC_ERROR_INTERNAL,
                                                            [&](auto cTagOut)
                                                            {
                                                                using TIn = typename decltype(cTagIn)::Type;
                                                                using TOut = typename decltype(cTagOut)::Type;
                                                                return MapSamples<TIn, TOut>(*this, cIn, cOut);
                                                            });
                              });
}
