#pragma once

#include "RDImageProcessing/PlaneByPlane.hpp"
#include "RDTools/FpImage.hpp"
#include "RDTools/ProcessorBase.hpp"

/// Frame of the neighbourhood filters: width and direction of the neighbourhood, planes one by one, and one operation
/// for each direction and signedness.
/// Input   One plane for the operations of a derived class; of a colour image the first three planes, one by one.
/// Output  Made by the operation; never the input itself, but for a colour image and for a width of 1 or less.
/// Errors  -10 if output is input; -33 for a direction that the filter does not offer; ClExVelmarin -10 without input
///         or output and -35 for an unknown mode.
/// Thread  One object, one thread.
class ClIpFilterBase : public ClProcessorBase
{
public:
    /// Values of m_nMode; the first two are the bits of the third.
    enum EMode : long
    {
        eModeX = 1,
        eModeY = 2,
        eModeXY = 3,
        eModeDirected = 8,
        eModeDirectedOrtho = 16
    };

    long ApplyParam(ClImage& cIn, ClImage& cOut, long nWidth, long nMode);

    void SetParametersToDefault() override;
    void PublishParameters(ClParameterContainer& cContainer) override;
    using ClProcessorBase::QueryParameters;
    void QueryParameters(ClParameterInterface& cInterface) override;
    /// "W[5] M[XY] S[Unsigned]". Errors: ClException -101 if the buffer is too small.
    void ParameterString(char* szBuffer, unsigned long nSize) override;
    /// A width of 1 or less copies; planes run one by one; everything else is DoProcess.
    long Process() override;

    /// Splits the input, runs Process() on the third, second and first plane, and joins the results to the content of
    /// the input; a fourth plane comes out as 0 (floating point: not a number). What a run returns is not looked at.
    /// May work in place.
    virtual void ProcessMultiPlane();
    virtual long DoProcess();
    virtual long ProcessX();
    virtual long ProcessY();
    virtual long ProcessXY(); ///< X, then Y on its result
    virtual long ProcessSignedX();
    virtual long ProcessSignedY();
    virtual long ProcessSignedXY();
    virtual long ProcessDirected(bool bOrtho); ///< along a direction per pixel, or across it
    virtual long ProcessSignedDirected(bool bOrtho);

    ClImage* m_pInImage = nullptr;   ///< not owned
    ClImage* m_pOutImage = nullptr;  ///< not owned
    long m_nFilterWidth = 3;         ///< pixels, the full width of the neighbourhood
    long m_nMode = eModeXY;          ///< a value of EMode
    ClImage* m_pInDxImage = nullptr; ///< not owned; x components of the directions, read by the directed modes
    ClImage* m_pInDyImage = nullptr; ///< not owned; y components

protected:
    /// Runs two passes, the second on the result of the first. A pass that fails ends the run with its code.
    template <class First, class Second> long InTwoPasses(First&& first, Second&& second)
    {
        ClImage cBetween;
        const ClHeldImages cHeld(m_pInImage, m_pOutImage);
        m_pOutImage = &cBetween;
        if (const long nFailure = first())
        {
            return nFailure;
        }
        m_pInImage = &cBetween;
        m_pOutImage = cHeld.m_pOut;
        return second();
    }
};
