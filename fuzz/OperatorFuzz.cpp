// Every operator with parameters and images as the bytes say: small images of every type, with and without pixels, up
// to five planes, parameters set through their texts. Nothing but the library's own exceptions comes out.

#include "ByteSource.hpp"

#include "RDImageProcessing/IpBinarizeAutoThreshold.hpp"
#include "RDImageProcessing/IpBinarizeGlobal.hpp"
#include "RDImageProcessing/IpConnectedComponent2.hpp"
#include "RDImageProcessing/IpConvertDataType.hpp"
#include "RDImageProcessing/IpCut.hpp"
#include "RDImageProcessing/IpCutBiggestComponent.hpp"
#include "RDImageProcessing/IpDelta.hpp"
#include "RDImageProcessing/IpFilterMid.hpp"
#include "RDImageProcessing/IpFilterMidRotating.hpp"
#include "RDImageProcessing/IpFloodFill.hpp"
#include "RDImageProcessing/IpFloodFillLabeling.hpp"
#include "RDImageProcessing/IpGammaCorrection.hpp"
#include "RDImageProcessing/IpJoinPlanes.hpp"
#include "RDImageProcessing/IpLabeling.hpp"
#include "RDImageProcessing/IpRescale.hpp"
#include "RDImageProcessing/IpRgbToGrey.hpp"
#include "RDImageProcessing/IpRotate.hpp"
#include "RDImageProcessing/IpSplitPlanes.hpp"
#include "RDImageProcessing/IpStretchRangeGlobal.hpp"
#include "RDImageProcessing/IpStretchRangeGlobalNoiseRemoving.hpp"
#include "RDTools/Exception.hpp"
#include "RDTools/ParameterContainer.hpp"

#include <cstring>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

namespace
{
template <class Operator> std::unique_ptr<ClProcessorBase> Make()
{
    return std::make_unique<Operator>();
}

using Maker_t = std::unique_ptr<ClProcessorBase> (*)();
const Maker_t g_aMakers[] = {
    Make<ClIpBinarizeAutoThreshold>,
    Make<ClIpBinarizeGlobal>,
    Make<ClIpConnectedComponent2>,
    Make<ClIpConvertDataType>,
    Make<ClIpCut>,
    Make<ClIpCutBiggestComponent>,
    Make<ClIpDelta>,
    Make<ClIpFilterMid>,
    Make<ClIpFilterMidRotating>,
    Make<ClIpFloodFill>,
    Make<ClIpFloodFillLabeling>,
    Make<ClIpGammaCorrection>,
    Make<ClIpJoinPlanes>,
    Make<ClIpLabeling>,
    Make<ClIpRescale>,
    Make<ClIpRgbToGrey>,
    Make<ClIpRotate>,
    Make<ClIpSplitPlanes>,
    Make<ClIpStretchRangeGlobal>,
    Make<ClIpStretchRangeGlobalNoiseRemoving>,
};

constexpr unsigned char g_aeTypes[] = {ClImage::eUInt8,  ClImage::eSInt8,  ClImage::eUInt16,  ClImage::eSInt16,
                                       ClImage::eUInt32, ClImage::eSInt32, ClImage::eFloat32, ClImage::eDouble64};

void Fill(ClImage& cImage, ClByteSource& cBytes)
{
    // Two thirds of the images are what the road works on.
    const bool bPlain = cBytes.Byte() % 3 != 0;
    const unsigned char eType = bPlain ? static_cast<unsigned char>(ClImage::eUInt8) : g_aeTypes[cBytes.Byte() % 8];
    const int nPlanes = bPlain ? 1 : cBytes.Between(0, 5);
    const int nWidth = cBytes.Between(bPlain ? 1 : 0, 70), nHeight = cBytes.Between(bPlain ? 1 : 0, 40);
    const int nRes = cBytes.Byte() % 4 == 0 ? cBytes.Between(-1, 60000) : 3937;
    cImage.NewWithType(eType, nWidth, nHeight, nPlanes, nRes, nRes);
    if (cImage.Data() == nullptr) return;
    const auto nBytes = static_cast<std::size_t>(cImage.Stride()) * static_cast<std::size_t>(nHeight);
    std::uint32_t nState = static_cast<std::uint32_t>(cBytes.Bits(2));
    const unsigned nKind = cBytes.Byte() % 3; // noise, two values, bytes of the input
    for (std::size_t i = 0; i < nBytes; ++i)
    {
        nState = nState * 1664525u + 1013904223u;
        const auto nNoise = static_cast<unsigned char>(nState >> 24);
        cImage.Data()[i] = nKind == 0 ? nNoise : nKind == 1 ? (nNoise < 100 ? 0 : 255) : cBytes.Byte();
    }
    if (cBytes.Byte() % 8 == 0)
    {
        cImage.m_dBlack = static_cast<double>(cBytes.Number());
        cImage.m_dWhite = static_cast<double>(cBytes.Number());
    }
}

void SetParameters(ClParameterContainer& cParameters, std::vector<ClImage>& aImages, ClByteSource& cBytes)
{
    for (ClParameter* p = cParameters.GetFirstParameter(); p != nullptr; p = cParameters.GetNextParameter(p))
    {
        // Few parameters are set at a time, or hardly a run would pass the first check.
        if (p->IsPointer())
        {
            const std::size_t nImage = cBytes.Byte() % (aImages.size() + 1);
            *static_cast<ClImage**>(p->GetParameterPtr()) =
                nImage < aImages.size() ? &aImages[nImage] : (cBytes.Byte() % 8 == 0 ? nullptr : &aImages[0]);
            continue;
        }
        if (cBytes.Byte() % 4 != 0) continue;
        const std::string sValue = cBytes.Byte() % 8 == 0   ? std::string("nan")
                                   : cBytes.Byte() % 2 == 0 ? std::to_string(cBytes.Between(0, 9))
                                   : cBytes.Byte() % 2 == 0 ? std::to_string(cBytes.Byte() / 100.0)
                                                            : std::to_string(cBytes.Number());
        try
        {
            p->SetValue(sValue.c_str());
        }
        catch (const ClException&)
        {
            // Refused: the setting stays.
        }
    }
}

/// Sides that a rescaling would multiply into gigabytes are not what this target is after.
bool IsModest(const ClIpRescale& cRescale)
{
    constexpr double dMost = 2000.0;
    if (cRescale.m_nNewWidth > dMost || cRescale.m_nNewHeight > dMost) return false;
    const ClImage* const pIn = cRescale.m_pInImage;
    if (pIn == nullptr || pIn->m_nXRes <= 0 || pIn->m_nYRes <= 0) return true;
    return 1.0 * pIn->m_nWidth * cRescale.m_nNewPelsX / pIn->m_nXRes <= dMost &&
           1.0 * pIn->m_nHeight * cRescale.m_nNewPelsY / pIn->m_nYRes <= dMost;
}
} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    ClByteSource cBytes(pData, nSize);
    const auto pOperator = g_aMakers[cBytes.Byte() % std::size(g_aMakers)]();
    std::vector<ClImage> aImages(4);
    ClParameterContainer cParameters;
    pOperator->QueryParameters(cParameters);
    for (int i = 0; i < 2; ++i)
    {
        try
        {
            for (ClImage& cImage : aImages) Fill(cImage, cBytes);
            SetParameters(cParameters, aImages, cBytes);
            const auto* pRescale = dynamic_cast<ClIpRescale*>(pOperator.get());
            if (pRescale != nullptr && !IsModest(*pRescale)) return 0;
            char szSettings[256];
            pOperator->CanApply();
            pOperator->Apply();
            pOperator->ParameterString(szSettings, sizeof szSettings);
            Promise(std::memchr(szSettings, 0, sizeof szSettings) != nullptr, "a settings text ends");
        }
        catch (const ClException& e)
        {
            Promise(e.Number() < 0 && e.What() != nullptr, "a code and a text");
        }
    }
    return 0;
}
