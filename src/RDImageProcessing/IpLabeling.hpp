#pragma once

#include "RDTools/FpImage.hpp"
#include "RDTools/ProcessorBase.hpp"

/// Gives every four-connected object of an image a number.
/// Input   8-bit, one plane; object pixels are 0. The type is not checked: of other images the first m_nWidth bytes of
///         each row count as the pixels.
/// Output  eSInt32, geometry, content and range of the input: 0 for background, the objects numbered from 1 in the
///         order of their first pixels, row 0 upwards, column 0 upwards.
/// Errors  ClException -37 without input or output, -44 if they are the same image; ClExBadAlloc.
/// Cost    linear in the pixels: a scan-line fill over an explicit stack, no recursion.
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
    /// set, the output as Process makes it.
    void FloodFill(long nX, long nY, int nLabel);

    ClImage* m_pInImage = nullptr;  ///< not owned
    ClImage* m_pOutImage = nullptr; ///< not owned
    int m_nLabels = 0;              ///< objects found
    ClLineParts m_cStack;           ///< kept between fills, so that its storage is reused

private:
    void FillSpan(long nX, long nY, int nLabel);
};
