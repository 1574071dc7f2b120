#pragma once

#include "RDImageProcessing/ObjectRuns.hpp"
#include "RDTools/FpImage.hpp"
#include "RDTools/ProcessorBase.hpp"

/// Gives every four-connected object of an image a number.
/// Input   8-bit, one plane; object pixels are 0. The type is not checked: of other images the first m_nWidth bytes of
///         each row count as the pixels.
/// Output  eSInt32, geometry, content and range of the input: 0 for background, the objects numbered from 1 in the
///         order of their first pixels, row 0 upwards, column 0 upwards.
/// Errors  ClException -37 without input or output, -44 if they are the same image; ClExBadAlloc.
/// Cost    of ClObjectRuns, and one pass that writes the labels.
class ClIpLabeling : public ClProcessorBase
{
public:
    /// A pixel from which a line piece is still to be filled.
    struct StPos
    {
        long nX;
        long nY;
    };
    class ClLineParts : public TpArrayDynamic<StPos, 100>
    {
    };

    using ClProcessorBase::QueryParameters;
    ClProcessorBase* Create() override;
    const char* Name() const override;
    long Process() override;

    /// Writes nLabel over the object that contains the pixel; a pixel outside of the image has none. Both images are
    /// set, the output as Process makes it. A scan-line fill over an explicit stack: the plain form of what Process
    /// does for all objects at once.
    void FloodFill(long nX, long nY, int nLabel);

    ClImage* m_pInImage = nullptr;  ///< not owned
    ClImage* m_pOutImage = nullptr; ///< not owned
    int m_nLabels = 0;              ///< objects found
    ClLineParts m_cStack;           ///< kept between fills, so that its storage is reused
    /// Not owned. If set, it receives the objects, and Process makes no label image where none is given.
    ClObjectRuns* m_pRuns = nullptr;

private:
    void CheckLabelImage() const;
    void FillSpan(long nX, long nY, int nLabel);
};
