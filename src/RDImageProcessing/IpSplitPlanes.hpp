#pragma once

#include "RDTools/FpImage.hpp"
#include "RDTools/ProcessorBase.hpp"

/// Takes an interleaved image apart into one image per plane.
/// Input   any sample type, up to four planes.
/// Output  m_apOutPlane[i] for each plane of the input, where it is set: one plane, type, size and resolution of the
///         input, the range of its type, samples as they stand. May be the input itself.
/// Errors  ClException -35 for more than four planes; -10 without input; ClExBadAlloc.
/// Cost    one pass over the input for each plane that is wanted.
class ClIpSplitPlanes : public ClProcessorBase
{
public:
    static constexpr int nMaxPlanes = 4;

    /// Any plane pointer may be null: that plane is passed over.
    long ApplyParam(ClImage& cIn, ClImage* pPlane0, ClImage* pPlane1, ClImage* pPlane2, ClImage* pPlane3);

    void SetParametersToDefault() override;
    void PublishParameters(ClParameterContainer& cContainer) override;
    using ClProcessorBase::QueryParameters;
    void QueryParameters(ClParameterInterface& cInterface) override;
    ClProcessorBase* Create() override;
    const char* Name() const override;
    long Process() override;

    ClImage* m_pInImage = nullptr;          ///< not owned
    ClImage* m_apOutPlane[nMaxPlanes] = {}; ///< not owned
};
