#pragma once

#include "RDImageProcessing/IpJoinPlanes.hpp"
#include "RDImageProcessing/IpSplitPlanes.hpp"
#include "RDTools/FpImage.hpp"

#include <algorithm>

/// fn(plane) for each plane of an image as an image of its own; of a one-plane image for the image itself.
template <class Fn> void ForEachPlane(const ClImage& cImage, Fn&& fn)
{
    if (cImage.m_nPlanes <= 1)
    {
        fn(cImage);
        return;
    }
    for (int i = 0; i < cImage.m_nPlanes; ++i)
    {
        ClImage cPlane;
        cImage.GetPlane(i, cPlane);
        fn(cPlane);
    }
}

/// Puts an operator's image pointers back when a step that has set others is over, also if it raised.
class ClHeldImages
{
public:
    ClHeldImages(ClImage*& pIn, ClImage*& pOut) : m_pIn(pIn), m_pOut(pOut), m_rIn(pIn), m_rOut(pOut) {}
    ClHeldImages(const ClHeldImages&) = delete;
    ClHeldImages& operator=(const ClHeldImages&) = delete;
    ~ClHeldImages() { PutBack(); }
    void PutBack()
    {
        m_rIn = m_pIn;
        m_rOut = m_pOut;
    }

    ClImage* const m_pIn;
    ClImage* const m_pOut;

private:
    ClImage*& m_rIn;
    ClImage*& m_rOut;
};

/// Lets an operator for one plane work on an image of several: the input is taken apart, process(i) runs with plane i
/// as *pIn and an empty image as *pOut, and what it leaves there is joined into the output with the input's content. At
/// most nMostPlanes planes are taken, the last one first if so wanted. The operator's image pointers are as before
/// afterwards, also if process raises.
template <class Fn>
long ProcessPlaneByPlane(const ClProcessorBase& cOwner, ClImage*& pIn, ClImage*& pOut, int nMostPlanes, Fn&& process,
                         bool bLastFirst = false)
{
    ClHeldImages cHeld(pIn, pOut);
    const int nPlanes = std::min({cHeld.m_pIn->m_nPlanes, nMostPlanes, ClIpSplitPlanes::nMaxPlanes});
    ClImage acPlane[ClIpSplitPlanes::nMaxPlanes];
    ClImage* apPlane[ClIpSplitPlanes::nMaxPlanes] = {};
    for (int i = 0; i < nPlanes; ++i)
    {
        apPlane[i] = &acPlane[i];
    }
    ClIpSplitPlanes cSplit;
    cSplit.Timer(cOwner.IsTimerEnabled());
    cSplit.ApplyParam(*cHeld.m_pIn, apPlane[0], apPlane[1], apPlane[2], apPlane[3]);
    for (int n = 0; n < nPlanes; ++n)
    {
        const int i = bLastFirst ? nPlanes - 1 - n : n;
        ClImage cResult;
        pIn = apPlane[i];
        pOut = &cResult;
        process(i);
        acPlane[i].Swap(cResult);
    }
    cHeld.PutBack();
    ClIpJoinPlanes cJoin;
    cJoin.Timer(cOwner.IsTimerEnabled());
    cJoin.m_eOutContent = cHeld.m_pIn->m_eContent;
    cJoin.m_nOutPlanes = nPlanes;
    return cJoin.ApplyParam(*cHeld.m_pOut, apPlane[0], apPlane[1], apPlane[2], apPlane[3]);
}
