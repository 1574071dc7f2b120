#pragma once

#include "RDTools/FpImage.hpp"
#include "RDTools/ProcessorBase.hpp"
#include "RDTools/Vector.hpp"

/// Turns an 8-bit image about a point. x is the column, y the row as stored; with rows bottom-up a positive angle turns
/// counterclockwise.
/// Input   8-bit samples, read as unsigned bytes; planes one by one, up to four.
/// Output  8-bit, the input's sign and resolution. With m_bResizeOutImage large enough for the whole turned picture,
///         which is shifted by the whole part of its smallest corner; without, the size of the input. May be the input.
/// Values  the nearest sample towards the origin, or bilinear, truncated; source positions have 12 fractional bits.
///         What has no source is background; the last row and column of the input are no source.
/// Errors  -10 without input or output; ClException -101 for a background other than 0 on samples of more than one
///         byte; ClExBadAlloc.
/// Cost    two additions a pixel: the span of each output row that has a source is found beforehand, by division.
class ClIpRotate : public ClProcessorBase
{
public:
    static constexpr int nMaxPlanes = 4;

    ClIpRotate();

    /// cCenter: the pivot in the input. dRotation: radians.
    long ApplyParam(ClImage& cIn, ClImage& cOut, ClVector cCenter, double dRotation, bool bResizeOutImage,
                    bool bInterpolate);

    void SetParametersToDefault() override;
    void PublishParameters(ClParameterContainer& cContainer) override;
    using ClProcessorBase::QueryParameters;
    void QueryParameters(ClParameterInterface& cInterface) override;
    ClProcessorBase* Create() override;
    const char* Name() const override;
    void ParameterString(char* szBuffer, unsigned long nSize) override;
    long Process() override;
    virtual void ProcessMultiPlane();

    ClVector Transform(ClVector v) const;        ///< from input to output coordinates, without the output's shift
    ClVector TransformInverse(ClVector v) const; ///< and back

    ClImage* m_pInImage = nullptr;  ///< not owned
    ClImage* m_pOutImage = nullptr; ///< not owned
    ClVector m_cCenter;             ///< the pivot in input coordinates
    double m_dRotation = 0.0;       ///< radians
    bool m_bResizeOutImage = true;
    bool m_bInterpolate = false;
    unsigned char m_nBackgroundColor = 128;
    bool m_bPlaneBackground = false;               ///< each plane of several has a background of its own
    unsigned char m_anPlaneBackground[nMaxPlanes]; ///< those
    ClVector m_cCenterOut;                         ///< the pivot in output coordinates, set by Process

private:
    struct StOutput;
    void TurnPlane();
    StOutput PlanOutput();
    void TurnRows(const ClImage& cIn, ClImage& cOut, const StOutput& cPlan) const;
};
