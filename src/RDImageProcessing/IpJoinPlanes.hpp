#pragma once

#include "RDTools/FpImage.hpp"
#include "RDTools/ProcessorBase.hpp"

/// Puts one-plane images together to one interleaved image.
/// Input   m_apInPlane, of one type and size, which is not checked; the first plane that is set counts. Of a smaller
///         plane only what it has is read.
/// Output  type, size and resolution of the first plane, the range of its type; as many planes as m_eOutContent has,
///         or m_nOutPlanes if it is eUnknown. May be one of the input planes.
/// Values  samples as they stand. A plane that is not set holds its fill colour, truncated to the sample type, and so
///         do the samples that a smaller plane has not.
/// Errors  -35 for an unknown content, for eXYZ and eCIELab, and for more than four planes; -10 without output or
///         without any plane; -101 for a type that is none of the eight; ClExBadAlloc.
class ClIpJoinPlanes : public ClProcessorBase
{
public:
    static constexpr int nMaxPlanes = 4;

    /// Any plane pointer may be null.
    long ApplyParam(ClImage& cOut, ClImage* pPlane0, ClImage* pPlane1, ClImage* pPlane2, ClImage* pPlane3);

    ClIpJoinPlanes();
    void SetParametersToDefault() override;
    void PublishParameters(ClParameterContainer& cContainer) override;
    using ClProcessorBase::QueryParameters;
    void QueryParameters(ClParameterInterface& cInterface) override;
    ClProcessorBase* Create() override;
    const char* Name() const override;
    long Process() override;

    ClImage* m_apInPlane[nMaxPlanes] = {}; ///< not owned
    double m_adFillcolors[nMaxPlanes];     ///< sample values for what planes have not; NaN by default
    ClImage* m_pOutImage = nullptr;        ///< not owned
    ClImage::EContent m_eOutContent = ClImage::eUnknown;
    int m_bFillEmptyPlanes = 1; ///< a truth value; 0 leaves missing samples as the new block has them
    int m_nOutPlanes = 0;       ///< planes of an image of unknown content; below 1 nothing is done

private:
    long Join(ClImage& cOut, const ClImage& cModel, int nPlanes) const;
};
