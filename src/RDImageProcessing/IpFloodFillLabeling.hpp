#pragma once

#include "RDImageProcessing/IpFloodFill.hpp"

/// Numbers the black objects of a binary image in the image itself and lists their boxes.
/// Input   8-bit, one plane, objects 0 and background 255; four-connected. Background that is not above the number of
///         objects counts as one of them.
/// Output  as of ClIpFloodFill; objects hold their labels, from 1 in the order of their first pixels. The scan goes on
///         in row 1 after the first object, also if that was found in row 0: other objects that lie in row 0 alone stay
///         0.
/// Values  A label is one byte. With 255 objects the list is empty, with more labels are used again, and the list has
///         as many entries as the last label's byte tells.
/// Errors  -10 without input; ClExBadAlloc.
/// Cost    linear in pixels and objects.
class ClIpFloodFillLabeling : public ClIpFloodFill
{
public:
    ClProcessorBase* Create() override;
    const char* Name() const override;
    long Process() override;

    void FloodFill(ClImage& cImage); ///< numbers the objects of an image in place

    TpArrayStatic<StBoundingBox> m_aObjects; ///< entry i is the box of label i + 1

private:
    unsigned char LabelObjects(ClImage& cImage);
    void ListObjects(const ClImage& cImage, unsigned long nObjects);
};
