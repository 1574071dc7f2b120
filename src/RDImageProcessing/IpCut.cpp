#include "RDImageProcessing/IpCut.hpp"

#include "RDTools/ParameterContainer.hpp"
#include "RDTools/ParameterInterface.hpp"

#include <cstring>

namespace
{
void Require(bool bHolds, const char* szBroken, long nLine)
{
    if (!bHolds)
    {
        throw ClException(szBroken, FPC_ERROR_PARAM_OUT_OF_RANGE, true, "RDImageProcessing/IpCut", nLine);
    }
}

/// nSize - 2 * nBorder without a border that could overflow: that one fails as an origin outside of the image.
long WithoutBorders(int nSize, long nBorder)
{
    return static_cast<long>(static_cast<unsigned long>(nSize) - 2ul * static_cast<unsigned long>(nBorder));
}
} // namespace

ClIpCut::ClIpCut()
{
    EnableAllDataTypes();
}

long ClIpCut::ApplyParam(ClImage& cIn, long nX0, long nY0, long nDestWidth, long nDestHeight, ClImage& cOut)
{
    m_nX0 = nX0;
    m_nY0 = nY0;
    m_nDestWidth = nDestWidth;
    m_nDestHeight = nDestHeight;
    return ApplyParam(cIn, cOut);
}

long ClIpCut::ApplyParam(ClImage& cIn, long nBorder, ClImage& cOut)
{
    return ApplyParam(cIn, nBorder, nBorder, WithoutBorders(cIn.m_nWidth, nBorder),
                      WithoutBorders(cIn.m_nHeight, nBorder), cOut);
}

void ClIpCut::SetParametersToDefault()
{
    NewIpBase::ClIp1to1Base::SetParametersToDefault();
    m_nX0 = 0;
    m_nY0 = 0;
    m_nDestWidth = 0;
    m_nDestHeight = 0;
}

void ClIpCut::PublishParameters(ClParameterContainer& cContainer)
{
    NewIpBase::ClIp1to1Base::PublishParameters(cContainer);
    cContainer.AddNumeric("nDestHeight", &m_nDestHeight);
    cContainer.AddNumeric("nDestWidth", &m_nDestWidth);
    cContainer.AddNumeric("nX0", &m_nX0);
    cContainer.AddNumeric("nY0", &m_nY0);
}

void ClIpCut::QueryParameters(ClParameterInterface& cInterface)
{
    cInterface.AddParameter(&m_pInImage, "InImage", "In: Original Image", ClParameterInterface::eIn);
    cInterface.AddParameter(&m_pOutImage, "OutImage", "Out: Clipping", ClParameterInterface::eOut);
    cInterface.AddParameter(&m_nDestHeight, "DestHeight", "In: Cut Height", ClParameterInterface::eIn);
    cInterface.AddParameter(&m_nDestWidth, "DestWidth", "In: Cut Width", ClParameterInterface::eIn);
    cInterface.AddParameter(&m_nX0, "X0", "In: Start X", ClParameterInterface::eIn);
    cInterface.AddParameter(&m_nY0, "Y0", "In: Start Y", ClParameterInterface::eIn);
}

ClProcessorBase* ClIpCut::Create()
{
    return NewProcessor<ClIpCut>();
}

const char* ClIpCut::Name() const
{
    return "ClIpCut";
}

void ClIpCut::CheckRectangle(const ClImage& cIn) const
{
    Require(m_nX0 >= 0, "ClIpCut::Process. m_nX0 < 0", __LINE__);
    Require(m_nY0 >= 0, "ClIpCut::Process. m_nY0 < 0", __LINE__);
    Require(m_nX0 < cIn.m_nWidth, "ClIpCut::Process. m_nX0>=m_pInImage->Width()", __LINE__);
    Require(m_nY0 < cIn.m_nHeight, "ClIpCut::Process. m_nY0>=m_pInImage->Height()", __LINE__);
    Require(m_nDestWidth > 0, "ClIpCut::Process. m_nDestWidth <= 0", __LINE__);
    Require(m_nDestHeight > 0, "ClIpCut::Process. m_nDestHeight <= 0", __LINE__);
    // Written as differences: the sums could leave 64 bits.
    Require(m_nDestWidth <= cIn.m_nWidth - m_nX0, "ClIpCut::Process. m_nX0+m_nDestWidth > m_pInImage->Width()",
            __LINE__);
    Require(m_nDestHeight <= cIn.m_nHeight - m_nY0, "ClIpCut::Process. m_nY0+m_nDestHeight > m_pInImage->Height()",
            __LINE__);
}

bool ClIpCut::IsInside(const ClImage& cIn) const
{
    return m_nX0 >= 0 && m_nX0 < cIn.m_nWidth && m_nDestWidth > 0 && m_nDestWidth <= cIn.m_nWidth - m_nX0 &&
           m_nY0 >= 0 && m_nY0 < cIn.m_nHeight && m_nDestHeight > 0 && m_nDestHeight <= cIn.m_nHeight - m_nY0;
}

/// The frame would make a block of the input's size, which only a cut of that size fills. Without it the output loses
/// the block that it had, as it would there.
void ClIpCut::AllocateOutImage(ClImage& cOut)
{
    const ClImage& cIn = *m_pInImage;
    const int nRowBytes =
        ClImage::RowBytes(cIn.m_nPlanes, static_cast<int>(m_nDestWidth), ClImage::SampleSize(cIn.m_eDataType));
    if (!IsInside(cIn) || (nRowBytes == cIn.Stride() && m_nDestHeight == cIn.m_nHeight))
    {
        NewIpBase::ClIp1to1Base::AllocateOutImage(cOut);
        return;
    }
    if (&cOut != &cIn)
    {
        cOut.Initialize();
        cOut.m_nAttribute = cIn.m_nAttribute;
    }
}

long ClIpCut::DoProcess(ClImage& cIn, ClImage& cOut)
{
    CheckRectangle(cIn);
    cOut.NewWithType(cIn.m_eDataType, static_cast<int>(m_nDestWidth), static_cast<int>(m_nDestHeight), cIn.m_nPlanes,
                     cIn.m_nXRes, cIn.m_nYRes);
    cOut.m_dBlack = cIn.m_dBlack;
    cOut.m_dWhite = cIn.m_dWhite;
    const std::size_t nPixelBytes =
        static_cast<std::size_t>(cIn.m_nPlanes) * static_cast<std::size_t>(ClImage::SampleSize(cIn.m_eDataType));
    const std::size_t nRowBytes = static_cast<std::size_t>(m_nDestWidth) * nPixelBytes;
    const std::size_t nFirst = static_cast<std::size_t>(m_nX0) * nPixelBytes;
    for (int y = 0; nRowBytes != 0 && y < cOut.m_nHeight; ++y)
    {
        // Both images may borrow the same memory.
        std::memmove(Row<unsigned char>(cOut, y), Row<unsigned char>(cIn, static_cast<int>(m_nY0) + y) + nFirst,
                     nRowBytes);
    }
    return FPC_SUCCESS;
}
