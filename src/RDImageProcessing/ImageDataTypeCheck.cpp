#include "RDImageProcessing/ImageDataTypeCheck.hpp"

#include "RDTools/Exception.hpp"

#include <cstdio>

namespace
{
const char* TypeName(int nType)
{
    switch (nType)
    {
    case ClImage::eUInt8: return "uint8";
    case ClImage::eUInt16: return "uint16";
    case ClImage::eUInt32: return "uint32";
    case ClImage::eSInt8: return "int8";
    case ClImage::eSInt16: return "int16";
    case ClImage::eSInt32: return "int32";
    case ClImage::eFloat32: return "float32";
    case ClImage::eDouble64: return "double64";
    case 255: return "default";
    default: return nType <= 0 ? "unknown" : "not valid";
    }
}
} // namespace

namespace NewIpBase
{
ClImageDataTypeCheck::~ClImageDataTypeCheck() = default;

void ClImageDataTypeCheck::EnableDataType(ClImage::EDataType eType)
{
    if (!CheckIfTypeAllowed(eType))
    {
        m_aAllowedTypes.Add(eType);
    }
}

void ClImageDataTypeCheck::EnableDataType(const ClImage::EDataType* pTypes, unsigned long nCount)
{
    for (unsigned long i = 0; i < nCount; ++i)
    {
        EnableDataType(pTypes[i]);
    }
}

void ClImageDataTypeCheck::EnableAllDataTypes()
{
#define RD_ENABLE(eCode, T) EnableDataType(ClImage::eCode);
    RD_SAMPLE_TYPES(RD_ENABLE)
#undef RD_ENABLE
}

bool ClImageDataTypeCheck::CheckIfTypeAllowed(ClImage::EDataType eType)
{
    return m_aAllowedTypes.Find(eType, 0) < m_aAllowedTypes.Entries();
}

bool ClImageDataTypeCheck::CheckTypeAllowed(const ClImage* pImage)
{
    if (!CheckIfTypeAllowed(pImage->m_eDataType))
    {
        char szText[80];
        std::snprintf(szText, sizeof szText, "Input pixel type \"%s\" not supported by processor.",
                      TypeName(pImage->m_eDataType));
        throw ClException(szText, FPC_ERROR_FORMAT_NOTSUPPORTED, true, "RDImageProcessing/ImageDataTypeCheck",
                          __LINE__);
    }
    return true;
}
} // namespace NewIpBase
