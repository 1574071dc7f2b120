#pragma once

#include "RDTools/FpImage.hpp"
#include "RDTools/ProcessorBase.hpp"

/// Replaces every sample of an 8-bit image through a table of 256 entries, which a derived class calculates.
/// Input   8-bit samples, up to four planes, which all go through the same table.
/// Output  geometry, type, resolution and range of the input; may be the input, which then keeps its block. An output
///         of several planes is joined anew, with the range of its type.
/// Errors  ClException -37 without input or output, and -35 for five planes; -33 for samples of other than one byte;
///         -10 without pixels; -35 for planes whose content cannot be joined; ClExBadAlloc.
/// Cost    one look-up per sample.
class ClIpLookUpTableBase : public ClProcessorBase
{
public:
    static constexpr int nTableSize = 256;

    long ApplyParam(ClImage& cIn, ClImage& cOut);
    long ApplyParam(ClImage& cImage); ///< in place

    void SetParametersToDefault() override;
    using ClProcessorBase::QueryParameters;
    long Initialize() override;
    long Process() override;
    virtual long ProcessMultiPlane(); ///< the code of the join, which refuses some contents
    virtual void CalculateLuT();

    ClImage* m_pInImage = nullptr;  ///< not owned
    ClImage* m_pOutImage = nullptr; ///< not owned; may be the input
    bool m_bLuTValid = false;       ///< a table has been calculated or used
    unsigned char m_aLuT[nTableSize] = {};

protected:
    void CheckInput() const; ///< raises -37 without an input
};
