#pragma once

#include "RDImageProcessing/Ip1to1Base.hpp"

/// Changes the sample type.
/// Input   any sample type and number of planes.
/// Output  the type m_eOutImageType with that type's range; 255, the default, is the type of the input. The input's
/// type
///         asked for by its own code gives a deep copy, range included. May be the input itself.
/// Values  the number converted as CastSample does: not scaled to the new range, not clamped, not rounded.
/// Errors  those of the frame; -101 for a type that is none of the eight.
class ClIpConvertDataType : public ClIp1to1Base
{
public:
    using ClIp1to1Base::ApplyParam;
    /// nType: an EDataType.
    long ApplyParam(ClImage& cIn, ClImage& cOut, unsigned char nType);
    long ApplyParam(ClImage& cImage, unsigned char nType); ///< in place

    ClProcessorBase* Create() override;
    const char* Name() const override;
    long DoProcess(ClImage& cIn, ClImage& cOut) override;
};
