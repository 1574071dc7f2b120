#pragma once

#include "RDImageProcessing/Ip1to1Base.hpp"

/// Copies a rectangle.
/// Input   any sample type and number of planes. The rectangle lies inside the image and has an area.
/// Output  type, planes, resolution and range of the input, the size of the rectangle. May be the input itself.
/// Errors  ClException -35 with the first condition that the rectangle breaks; those of the frame; ClExBadAlloc.
/// Cost    one block copy per row.
class ClIpCut : public NewIpBase::ClIp1to1Base
{
public:
    ClIpCut();

    using NewIpBase::ClIp1to1Base::ApplyParam;
    long ApplyParam(ClImage& cIn, long nX0, long nY0, long nDestWidth, long nDestHeight, ClImage& cOut);
    /// Cuts a border of nBorder pixels from all four sides.
    long ApplyParam(ClImage& cIn, long nBorder, ClImage& cOut);

    void SetParametersToDefault() override;
    void PublishParameters(ClParameterContainer& cContainer) override;
    using NewIpBase::ClIp1to1Base::QueryParameters;
    void QueryParameters(ClParameterInterface& cInterface) override;
    ClProcessorBase* Create() override;
    const char* Name() const override;
    void AllocateOutImage(ClImage& cOut) override; ///< where it may, leaves the making of the output to DoProcess
    long DoProcess(ClImage& cIn, ClImage& cOut) override;

    long m_nX0 = 0;         ///< first column
    long m_nY0 = 0;         ///< first row as stored
    long m_nDestWidth = 0;  ///< columns
    long m_nDestHeight = 0; ///< rows

private:
    bool IsInside(const ClImage& cIn) const;
    void CheckRectangle(const ClImage& cIn) const;
};
