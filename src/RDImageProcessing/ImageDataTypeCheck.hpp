#pragma once

#include "RDTools/FpImage.hpp"
#include "RDTools/TpArrayDynamic.hpp"

namespace NewIpBase
{
/// The list of sample types that a processor accepts. It starts empty, and an empty list accepts nothing.
class ClImageDataTypeCheck
{
public:
    virtual ~ClImageDataTypeCheck();
    virtual void CheckInOutImageTypes() = 0;

    void EnableDataType(ClImage::EDataType eType); ///< no effect on a type that is in the list
    void EnableDataType(const ClImage::EDataType* pTypes, unsigned long nCount);
    void EnableAllDataTypes();
    bool CheckIfTypeAllowed(ClImage::EDataType eType);
    /// True. Errors: ClException -33 naming the image's type if it is not in the list.
    bool CheckTypeAllowed(const ClImage* pImage);

    TpArrayDynamic<ClImage::EDataType, 8> m_aAllowedTypes;

protected:
    ClImageDataTypeCheck() = default;
};
} // namespace NewIpBase
