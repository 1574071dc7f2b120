#include "RDAfisTools/IpFourPrintSegmentation.hpp"

#include "RDImageProcessing/IpBinarizeAutoThreshold.hpp"
#include "RDImageProcessing/IpFilterMid.hpp"
#include "RDImageProcessing/IpFilterMidRotating.hpp"
#include "RDImageProcessing/IpGammaCorrection.hpp"
#include "RDImageProcessing/IpRescale.hpp"
#include "RDImageProcessing/IpRgbToGrey.hpp"
#include "RDImageProcessing/IpStretchRangeGlobalNoiseRemoving.hpp"

#include <algorithm>
#include <cstdint>

namespace
{
constexpr int nWorkingPels = 3937; // pels per metre: 100 pixels per inch
constexpr int nMinPels = 3900;     // pels per metre
constexpr int nMinSide = 160;      // pixels of the input, before any rescaling

constexpr double dScalePerPel = 0.000254; // 1 / 3937, rounded as it stands here
constexpr double dScaleFrom = 0.98;       // an input this near the working resolution is taken as it is
constexpr double dScaleTo = 1.02;

constexpr double dGamma = 0.8;      // darkens the middle tones
constexpr int nSmoothWidth = 5;     // pixels
constexpr int nRotatingWidth = 9;   // pixels
constexpr double dDarkNoise = 0.02; // share of the pixels
constexpr double dBrightNoise = 0.07;

/// Runs the operators in turn; the first result that is not 0 ends the chain and is its result.
template <class... Steps> long RunChain(Steps&&... steps)
{
    long nResult = FPC_SUCCESS;
    static_cast<void>((((nResult = steps()) == FPC_SUCCESS) && ...));
    return nResult;
}
} // namespace

long ClIpFourPrintSegmentation::ValidateInput()
{
    if (m_pInImage == nullptr)
    {
        return FPC_ERROR_BITMAP_PTR;
    }
    if (m_pInImage->m_nXRes < nMinPels || m_pInImage->m_nYRes < nMinPels)
    {
        return FPC_ERROR_BITMAP_PELS;
    }
    if (m_bDebugImages && (m_pDebugScaled == nullptr || m_pDebugFiltered == nullptr || m_pDebugStretched == nullptr))
    {
        return FPC_ERROR_BITMAP_PTR;
    }
    if (IsUni(*m_pInImage))
    {
        return FPC_ERROR_BITMAP_NO_FINGER;
    }
    if (m_pInImage->m_nWidth < nMinSide || m_pInImage->m_nHeight < nMinSide)
    {
        return FPC_ERROR_BITMAP_DIMENSION;
    }
    return FPC_SUCCESS;
}

bool ClIpFourPrintSegmentation::IsUni(ClImage& image)
{
    const std::int64_t nBytes = static_cast<std::int64_t>(image.m_nPlanes) * image.m_nWidth;
    if (image.m_nHeight < 1 || nBytes < 1 || image.Data() == nullptr)
    {
        return true;
    }
    const unsigned char nReference = *Row<unsigned char>(image, image.m_nHeight - 1);
    for (int y = image.m_nHeight - 1; y >= 0; --y)
    {
        const unsigned char* pRow = Row<unsigned char>(image, y);
        if (std::any_of(pRow, pRow + nBytes, [nReference](unsigned char nByte) { return nByte != nReference; }))
        {
            return false;
        }
    }
    return true;
}

long ClIpFourPrintSegmentation::PrepareInputImage(ClImage& cGrey, ClImage& cScaled)
{
    long nResult = FPC_SUCCESS;
    if (m_pInImage->m_nPlanes == 3)
    {
        nResult = ClIpRgbToGrey().ApplyParam(*m_pInImage, cGrey, ClIpRgbToGrey::Luminance);
    }
    else
    {
        cGrey.Attach(*m_pInImage); // nothing writes to it, so the input need not be copied
    }
    m_dScale = cGrey.m_nXRes * dScalePerPel; // the vertical resolution plays no part
    if (m_dScale > dScaleFrom && m_dScale < dScaleTo)
    {
        m_dScale = 1.0;
        cScaled = cGrey;
    }
    else
    {
        nResult = ClIpRescale().ApplyParamPels(cGrey, cScaled, nWorkingPels, nWorkingPels, ClIpRescale::ModeBiLinear);
    }
    if (m_bDebugImages)
    {
        *m_pDebugScaled = cScaled;
    }
    return nResult;
}

long ClIpFourPrintSegmentation::BinarizeImage(ClImage& cScaled, ClImage& cBinary)
{
    ClIpFilterMid cSmooth;
    ClIpBinarizeAutoThreshold cBinarize;
    cBinarize.m_pInImage = &cScaled;
    cBinarize.m_pOutImage = &cBinary;
    cBinarize.m_eProcessingMode = ClIpBinarizeAutoThreshold::ModeFuzzyYager;
    const auto debugCopy = [this, &cScaled](ClImage* pCopy)
    {
        if (m_bDebugImages)
        {
            *pCopy = cScaled;
        }
        return FPC_SUCCESS;
    };
    const long nResult = RunChain(
        [&] { return ClIpGammaCorrection().ApplyParam(cScaled, dGamma); },
        [&] { return cSmooth.ApplyParam(cScaled, cBinary, nSmoothWidth); },
        [&] { return ClIpFilterMidRotating().ApplyParam(cBinary, cScaled, nRotatingWidth); },
        [&] { return debugCopy(m_pDebugFiltered); }, [&] { return cSmooth.ApplyParam(cScaled, cBinary, nSmoothWidth); },
        [&] { return ClIpStretchRangeGlobalNoiseRemoving().ApplyParam(cBinary, cScaled, dDarkNoise, dBrightNoise); },
        [&] { return debugCopy(m_pDebugStretched); }, [&] { return cBinarize.Apply(); });
    if (nResult == FPC_SUCCESS && m_bDebugImages)
    {
        m_nDebugThreshold = cBinarize.m_nThreshold;
    }
    return nResult;
}
