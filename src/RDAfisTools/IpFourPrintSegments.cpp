#include "RDAfisTools/IpFourPrintSegmentation.hpp"

#include "RDImageProcessing/IpConvertDataType.hpp"
#include "RDImageProcessing/IpRotate.hpp"
#include "RDTools/SampleCast.hpp"

namespace
{
using Component = ClIpConnectedComponent2::ClComponent;
using Components = ClIpConnectedComponent2::ComponentsArray_t;

constexpr double dVoterArea = 1600.0; // pixels; smaller, round or lying objects have no vote on the angle
constexpr double dVoterEccentricity = 0.05;
constexpr double dVoterFrom = 0.75; // radians
constexpr double dVoterTo = 2.4;
constexpr int nEnoughVoters = 3;
constexpr double dUprightFrom = 1.4; // radians: a hand within these limits is left as it stands
constexpr double dUprightTo = 1.75;

constexpr double dCutArea = 8000.0; // pixels; a smaller object is never cut
constexpr int nTall = 150;
constexpr int nVeryTall = 200;
constexpr int nWide = 100;

constexpr unsigned char nBackground = 255;

struct StSpan
{
    int nWidth;
    int nHeight;
};

/// Distance between the outer pixels of a component.
StSpan SpanOf(const Component& cComponent)
{
    return {CastSample<int>(cComponent.m_cMax.m_dX - cComponent.m_cMin.m_dX),
            CastSample<int>(cComponent.m_cMax.m_dY - cComponent.m_cMin.m_dY)};
}

/// Fills less than half of a tall box, or is simply very tall: more than one finger on top of one another.
bool NeedsHorizontalCut(const Component& cComponent, StSpan cSpan)
{
    const bool bSparse = WrapMultiply(cSpan.nWidth, cSpan.nHeight) > 2.0 * cComponent.m_dArea;
    return (bSparse && cSpan.nHeight > nTall) || cSpan.nHeight > nVeryTall;
}

/// As wide as it is tall: two fingers side by side.
bool NeedsVerticalCut(const Component& cComponent, StSpan cSpan)
{
    return cSpan.nWidth > nWide &&
           (cSpan.nWidth > 0.8 * cSpan.nHeight ||
            WrapMultiply(cSpan.nHeight, cSpan.nWidth) > CastSample<int>(cComponent.m_dArea * 1.5));
}

/// Paints background over one component's pixels along lines; labels beyond 255 have no byte and find no pixel.
class ClCutter
{
public:
    ClCutter(ClImage& cImage, const ClImage& cLabels) : m_cImage(cImage), m_cLabels(cLabels) {}

    void AlongRow(int y, unsigned long nLabel)
    {
        m_bCut = true;
        for (int x = 0; HasByte(nLabel) && x < m_cImage.m_nWidth; ++x)
        {
            Paint(x, y, nLabel);
        }
    }

    void AlongColumn(int x, unsigned long nLabel)
    {
        m_bCut = true;
        for (int y = 0; HasByte(nLabel) && y < m_cImage.m_nHeight; ++y)
        {
            Paint(x, y, nLabel);
        }
    }

    bool m_bCut = false;
    bool m_bPainted = false;

private:
    static bool HasByte(unsigned long nLabel) { return nLabel <= 255; }

    void Paint(int x, int y, unsigned long nLabel)
    {
        if (Row<unsigned char>(m_cLabels, y)[x] == nLabel)
        {
            Row<unsigned char>(m_cImage, y)[x] = nBackground;
            m_bPainted = true;
        }
    }

    ClImage& m_cImage;
    const ClImage& m_cLabels;
};

void CutLargeComponents(const Components& aComponents, ClCutter& cCutter)
{
    for (unsigned long i = 0; i < aComponents.Entries(); ++i)
    {
        const Component& cComponent = aComponents[i];
        const StSpan cSpan = SpanOf(cComponent);
        if (cComponent.m_dArea > dCutArea && NeedsHorizontalCut(cComponent, cSpan))
        {
            const int nUp = cSpan.nHeight / 3; // a third of the way up from the lower end
            cCutter.AlongRow(CastSample<int>(cComponent.m_cMin.m_dY + nUp), i + 1);
        }
    }
    for (unsigned long i = 0; i < aComponents.Entries(); ++i)
    {
        const Component& cComponent = aComponents[i];
        const StSpan cSpan = SpanOf(cComponent);
        if (cComponent.m_dArea > dCutArea && NeedsVerticalCut(cComponent, cSpan))
        {
            const int nAcross = cSpan.nWidth / 2;
            cCutter.AlongColumn(CastSample<int>(cComponent.m_cMin.m_dX + nAcross), i + 1);
        }
    }
}

/// Mean orientation of the objects that look like fingers; 0 if there are too few or they stand upright.
double LeaningAngle(const Components& aComponents)
{
    int nVoters = 0;
    double dSum = 0.0;
    for (unsigned long i = 0; i < aComponents.Entries(); ++i)
    {
        const Component& c = aComponents[i];
        if (c.m_dArea > dVoterArea && c.m_dEccentricity > dVoterEccentricity && c.m_dOrientation > dVoterFrom &&
            c.m_dOrientation < dVoterTo)
        {
            ++nVoters;
            dSum += c.m_dOrientation;
        }
    }
    if (nVoters < nEnoughVoters)
    {
        return 0.0;
    }
    const double dMean = dSum / nVoters;
    return dMean >= dUprightFrom && dMean <= dUprightTo ? 0.0 : dMean;
}
} // namespace

double ClIpFourPrintSegmentation::Overlapping1D(double dFrom1, double dTo1, double dFrom2, double dTo2)
{
    if (!(dFrom1 > dFrom2))
    {
        if (dFrom2 < dTo1)
        {
            return dTo2 > dTo1 ? dTo1 - dFrom2 : dTo2 - dFrom2;
        }
        if (dFrom1 < dFrom2)
        {
            return 0.0;
        }
    }
    if (!(dFrom1 < dTo2))
    {
        return 0.0;
    }
    return dTo2 < dTo1 ? dTo2 - dFrom1 : dTo1 - dFrom1;
}

bool ClIpFourPrintSegmentation::OverlappingComponents(ClIpConnectedComponent2::ClComponent& cFirst,
                                                      ClIpConnectedComponent2::ClComponent& cSecond, double& dOverlapX,
                                                      double& dOverlapY)
{
    dOverlapX = Overlapping1D(cFirst.m_cMin.m_dX, cFirst.m_cMax.m_dX, cSecond.m_cMin.m_dX, cSecond.m_cMax.m_dX);
    dOverlapY = Overlapping1D(cFirst.m_cMin.m_dY, cFirst.m_cMax.m_dY, cSecond.m_cMin.m_dY, cSecond.m_cMax.m_dY);
    return dOverlapX != 0.0 && dOverlapY != 0.0;
}

void ClIpFourPrintSegmentation::InitBoundingboxes(Boxes_t& aBoxes, int nCount, float fRed, float fGreen, float fBlue,
                                                  float fAlpha)
{
    aBoxes.New(static_cast<unsigned long>(nCount));
    for (unsigned long i = 0; i < aBoxes.Entries(); ++i)
    {
        cBoundingboxes& cBox = aBoxes[i];
        cBox.Reset();
        cBox.m_fRed = fRed;
        cBox.m_fGreen = fGreen;
        cBox.m_fBlue = fBlue;
        cBox.m_fAlpha = fAlpha;
        cBox.m_bMarked = false;
    }
}

long ClIpFourPrintSegmentation::FindInitialFingerSegments(ClImage& cImage, Components_t& aComponents, double& dAngle)
{
    bool bAngleOpen = true;
    for (;;)
    {
        aComponents.New(0);
        ClImage cLabels;
        ClIpConnectedComponent2 cObjects;
        cObjects.pInImage = &cImage;
        cObjects.m_pOutImage = &cLabels;
        cObjects.m_pComponents = &aComponents;
        if (const long nResult = cObjects.Apply())
        {
            return nResult;
        }
        if (bAngleOpen && dAngle == 0.0)
        {
            dAngle = LeaningAngle(aComponents);
            bAngleOpen = false;
            if (dAngle != 0.0)
            {
                ClImage cRotated;
                ClIpRotate cRotate;
                cRotate.m_nBackgroundColor = nBackground;
                if (const long nResult =
                        cRotate.ApplyParam(cImage, cRotated, ClVector(0, 0), dUpright - dAngle, true, false))
                {
                    return nResult;
                }
                cImage.Swap(cRotated);
                continue;
            }
        }
        ClIpConvertDataType().ApplyParam(cLabels, ClImage::eUInt8);
        ClCutter cCutter(cImage, cLabels);
        CutLargeComponents(aComponents, cCutter);
        // A pass that cuts but finds no pixel to paint would go on for ever: the picture stays the same.
        if (!cCutter.m_bCut || !cCutter.m_bPainted)
        {
            return FPC_SUCCESS;
        }
    }
}
