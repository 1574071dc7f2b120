#include "RDImageProcessing/IpRotate.hpp"

#include "RDImageProcessing/PlaneByPlane.hpp"
#include "RDTools/ParameterContainer.hpp"
#include "RDTools/ParameterInterface.hpp"
#include "RDTools/SampleCast.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace
{
constexpr int nFractionBits = 12;
constexpr int nOne = 1 << nFractionBits;
constexpr int nFraction = nOne - 1;
constexpr unsigned char nDefaultBackground = 128;
constexpr StEnumName aSwitchNames[] = {{0, "False"}, {1, "True"}};

/// Truncated, and held to a range in which the sums below cannot overflow; no picture is that large. Not a number: 0.
std::int64_t Truncate(double dValue)
{
    constexpr double dLimit = 1125899906842624.0; // 2 to the power of 50
    return std::isnan(dValue) ? 0 : static_cast<std::int64_t>(std::max(-dLimit, std::min(dValue, dLimit)));
}

std::int64_t ToFixed(double dValue)
{
    return Truncate(dValue * 4096.0);
}

std::int64_t FloorDivide(std::int64_t a, std::int64_t b) // b above 0
{
    return a >= 0 ? a / b : -((-a + b - 1) / b);
}

/// A column range, empty if the end is not behind the start.
struct StSpan
{
    std::int64_t nFrom;
    std::int64_t nEnd;

    /// Keeps the columns x with 0 <= nStart + x * nStep < nLimit.
    void Limit(std::int64_t nStart, std::int64_t nStep, std::int64_t nLimit)
    {
        if (nStep == 0)
        {
            nEnd = nStart >= 0 && nStart < nLimit ? nEnd : nFrom;
        }
        else if (nStep > 0)
        {
            nFrom = std::max(nFrom, -FloorDivide(nStart, nStep));
            nEnd = std::min(nEnd, FloorDivide(nLimit - 1 - nStart, nStep) + 1);
        }
        else
        {
            nFrom = std::max(nFrom, -FloorDivide(nLimit - 1 - nStart, -nStep));
            nEnd = std::min(nEnd, FloorDivide(nStart, -nStep) + 1);
        }
    }
};

/// The walk through the source along one output row, in 12-bit fixed point.
struct StWalk
{
    std::int64_t nX;
    std::int64_t nY;
    std::int64_t nStepX;
    std::int64_t nStepY;
};

/// Puts the background back when the planes are done, also if one of them raised.
struct StHeldBackground
{
    unsigned char& rnBackground;
    const unsigned char nBackground;
    ~StHeldBackground() { rnBackground = nBackground; }
};

void FillNearest(const unsigned char* pSource, std::ptrdiff_t nStride, StWalk c, unsigned char* pOut,
                 std::int64_t nCount)
{
    for (std::int64_t k = 0; k < nCount; ++k)
    {
        pOut[k] = pSource[(c.nY >> nFractionBits) * nStride + (c.nX >> nFractionBits)];
        c.nX += c.nStepX;
        c.nY += c.nStepY;
    }
}

void FillBilinear(const unsigned char* pSource, std::ptrdiff_t nStride, StWalk c, unsigned char* pOut,
                  std::int64_t nCount)
{
    for (std::int64_t k = 0; k < nCount; ++k)
    {
        const unsigned char* p = pSource + (c.nY >> nFractionBits) * nStride + (c.nX >> nFractionBits);
        const unsigned int wx = static_cast<unsigned int>(c.nX & nFraction);
        const unsigned int wy = static_cast<unsigned int>(c.nY & nFraction);
        const unsigned int vx = nOne - wx;
        const unsigned int vy = nOne - wy;
        // The weights add up to 2^24, so the sum stays below 2^32.
        pOut[k] = static_cast<unsigned char>(
            (vx * vy * p[0] + wx * vy * p[1] + wx * wy * p[nStride + 1] + vx * wy * p[nStride]) >> (2 * nFractionBits));
        c.nX += c.nStepX;
        c.nY += c.nStepY;
    }
}
} // namespace

/// Size of the output and the shift of the turned picture in it.
struct ClIpRotate::StOutput
{
    int nWidth;
    int nHeight;
    std::int64_t nShiftX;
    std::int64_t nShiftY;
};

ClIpRotate::ClIpRotate()
{
    std::fill_n(m_anPlaneBackground, nMaxPlanes, nDefaultBackground);
}

long ClIpRotate::ApplyParam(ClImage& cIn, ClImage& cOut, ClVector cCenter, double dRotation, bool bResizeOutImage,
                            bool bInterpolate)
{
    m_pInImage = &cIn;
    m_pOutImage = &cOut;
    m_cCenter = cCenter;
    m_dRotation = dRotation;
    m_bResizeOutImage = bResizeOutImage;
    m_bInterpolate = bInterpolate;
    return Apply();
}

void ClIpRotate::SetParametersToDefault()
{
    m_pInImage = nullptr;
    m_pOutImage = nullptr;
    m_dRotation = 0.0;
    m_bResizeOutImage = true;
    m_bInterpolate = false;
    m_nBackgroundColor = nDefaultBackground;
}

void ClIpRotate::PublishParameters(ClParameterContainer& cContainer)
{
    cContainer.AddPointer("pInImage", &m_pInImage);
    cContainer.AddPointer("pOutImage", &m_pOutImage);
    cContainer.AddNumeric("Rotation", &m_dRotation);
    const auto addSwitch = [&cContainer](const char* szName, bool* pbValue)
    {
        auto* pSwitch = cContainer.AddParam<TpParameterEnumPointer<bool, ClParameter>>(szName, pbValue);
        pSwitch->AddValues(aSwitchNames);
    };
    addSwitch("ResizeOutImage", &m_bResizeOutImage);
    addSwitch("Interpolate", &m_bInterpolate);
    cContainer.AddNumeric("BackgroundColor", &m_nBackgroundColor);
}

void ClIpRotate::QueryParameters(ClParameterInterface& cInterface)
{
    constexpr auto eIn = ClParameterInterface::eIn;
    cInterface.AddParameter(&m_pInImage, "InImage", "In: Original Image", eIn);
    cInterface.AddParameter(&m_pOutImage, "OutImage", "Out: Rotated Imaged", ClParameterInterface::eOut);
    cInterface.AddParameter(&m_dRotation, "Rotation", "In: Rotation Angle (rad)", eIn);
    cInterface.AddChoice(&m_bResizeOutImage, "ResizeOutImage", "In: Resize Out Image True/False", eIn, aSwitchNames);
    cInterface.AddChoice(&m_bInterpolate, "Interpolate", "In: Interpolate True/False", eIn, aSwitchNames);
    cInterface.AddParameter(&m_nBackgroundColor, "BackgroundColor", "In: Background Color For New Areas After Rotation",
                            eIn, 0.0, 255.0);
}

ClProcessorBase* ClIpRotate::Create()
{
    return NewProcessor<ClIpRotate>();
}

const char* ClIpRotate::Name() const
{
    return "ClIpRotate";
}

void ClIpRotate::ParameterString(char* szBuffer, unsigned long nSize)
{
    FormatSettings(szBuffer, nSize, "%1.3frad %s", m_dRotation,
                   m_bInterpolate ? "Interpolate" : (m_bResizeOutImage ? "Resize" : ""));
}

ClVector ClIpRotate::Transform(ClVector v) const
{
    const double dX = v.m_dX - m_cCenter.m_dX;
    const double dY = v.m_dY - m_cCenter.m_dY;
    return ClVector(std::cos(m_dRotation) * dX - std::sin(m_dRotation) * dY + m_cCenterOut.m_dX,
                    std::cos(m_dRotation) * dY + std::sin(m_dRotation) * dX + m_cCenterOut.m_dY);
}

ClVector ClIpRotate::TransformInverse(ClVector v) const
{
    const double dX = v.m_dX - m_cCenterOut.m_dX;
    const double dY = v.m_dY - m_cCenterOut.m_dY;
    return ClVector(std::cos(m_dRotation) * dX + std::sin(m_dRotation) * dY + m_cCenter.m_dX,
                    std::sin(-m_dRotation) * dX + std::cos(m_dRotation) * dY + m_cCenter.m_dY);
}

long ClIpRotate::Process()
{
    m_cCenterOut = m_cCenter;
    if (m_pInImage == nullptr || m_pOutImage == nullptr)
    {
        return FPC_ERROR_BITMAP_PTR;
    }
    if (m_dRotation == 0.0)
    {
        *m_pOutImage = *m_pInImage;
        return FPC_SUCCESS;
    }
    if (m_pInImage->m_nPlanes >= 2)
    {
        ProcessMultiPlane();
        return FPC_SUCCESS;
    }
    TurnPlane();
    return FPC_SUCCESS;
}

void ClIpRotate::TurnPlane()
{
    const ClImage& cIn = *m_pInImage;
    if (m_nBackgroundColor != 0 && ClImage::SampleSize(cIn.m_eDataType) != 1)
    {
        throw ClException("Image Type is not the assigned type", FPC_ERROR_INTERNAL, true, "RDImageProcessing/IpRotate",
                          __LINE__);
    }
    ClImage cTemporary;
    ClImage& cOut = m_pOutImage == m_pInImage ? cTemporary : *m_pOutImage;
    const StOutput cPlan = PlanOutput();
    cOut.NewWithType(ClImage::IsSignedType(cIn.m_eDataType) ? ClImage::eSInt8 : ClImage::eUInt8, cPlan.nWidth,
                     cPlan.nHeight, cIn.m_nPlanes, cIn.m_nXRes, cIn.m_nYRes);
    if (cOut.Data() != nullptr)
    {
        std::memset(cOut.Data(), m_nBackgroundColor,
                    static_cast<std::size_t>(cOut.Stride()) * static_cast<std::size_t>(cOut.m_nHeight));
        TurnRows(cIn, cOut, cPlan);
    }
    m_pOutImage->Swap(cOut);
}

ClIpRotate::StOutput ClIpRotate::PlanOutput()
{
    const double dLastX = m_pInImage->m_nWidth - 1;
    const double dLastY = m_pInImage->m_nHeight - 1;
    const ClVector acCorner[] = {Transform(ClVector(0, dLastY)), Transform(ClVector(dLastX, dLastY)),
                                 Transform(ClVector(0, 0)), Transform(ClVector(dLastX, 0))};
    double dMinX = acCorner[0].m_dX;
    double dMaxX = dMinX;
    double dMinY = acCorner[0].m_dY;
    double dMaxY = dMinY;
    for (const ClVector& c : acCorner)
    {
        dMinX = std::min(dMinX, c.m_dX);
        dMaxX = std::max(dMaxX, c.m_dX);
        dMinY = std::min(dMinY, c.m_dY);
        dMaxY = std::max(dMaxY, c.m_dY);
    }
    if (!m_bResizeOutImage)
    {
        return {m_pInImage->m_nWidth, m_pInImage->m_nHeight, 0, 0};
    }
    const StOutput cPlan{CastSample<int>(dMaxX + 1.0 - dMinX), CastSample<int>(dMaxY + 1.0 - dMinY), Truncate(-dMinX),
                         Truncate(-dMinY)};
    const int nMiddleX = cPlan.nWidth / 2;
    const int nMiddleY = cPlan.nHeight / 2;
    m_cCenterOut = ClVector(nMiddleX, nMiddleY);
    return cPlan;
}

/// For each output pixel the source position, turned back about the pivot after the shift is taken off.
void ClIpRotate::TurnRows(const ClImage& cIn, ClImage& cOut, const StOutput& cPlan) const
{
    if (cIn.Data() == nullptr)
    {
        return;
    }
    const double dCos = static_cast<double>(ToFixed(std::cos(m_dRotation)));
    const double dSinMinus = static_cast<double>(ToFixed(std::sin(-m_dRotation)));
    const double dSin = static_cast<double>(ToFixed(std::sin(m_dRotation)));
    const std::int64_t nPivotX = ToFixed(m_cCenter.m_dX);
    const std::int64_t nPivotY = ToFixed(m_cCenter.m_dY);
    const std::int64_t nLimitX = (static_cast<std::int64_t>(cIn.m_nWidth) << nFractionBits) - nOne;
    const std::int64_t nLimitY = (static_cast<std::int64_t>(cIn.m_nHeight) << nFractionBits) - nOne;
    const double dX = -m_cCenter.m_dX - static_cast<double>(cPlan.nShiftX); // column 0
    const auto fill = m_bInterpolate ? FillBilinear : FillNearest;
    for (int y = 0; y < cOut.m_nHeight; ++y)
    {
        const double dY = y - m_cCenter.m_dY - static_cast<double>(cPlan.nShiftY);
        StWalk cWalk{Truncate(dX * dCos) + Truncate(dY * dSin) + nPivotX,
                     Truncate(dX * dSinMinus) + Truncate(dY * dCos) + nPivotY, static_cast<std::int64_t>(dCos),
                     static_cast<std::int64_t>(dSinMinus)};
        StSpan cSpan{0, cOut.m_nWidth};
        cSpan.Limit(cWalk.nX, cWalk.nStepX, nLimitX);
        cSpan.Limit(cWalk.nY, cWalk.nStepY, nLimitY);
        if (cSpan.nFrom >= cSpan.nEnd)
        {
            continue;
        }
        cWalk.nX += cSpan.nFrom * cWalk.nStepX;
        cWalk.nY += cSpan.nFrom * cWalk.nStepY;
        fill(cIn.Data(), cIn.Stride(), cWalk, Row<unsigned char>(cOut, y) + cSpan.nFrom, cSpan.nEnd - cSpan.nFrom);
    }
}

void ClIpRotate::ProcessMultiPlane()
{
    const StHeldBackground cHeld{m_nBackgroundColor, m_nBackgroundColor};
    ProcessPlaneByPlane(*this, m_pInImage, m_pOutImage, nMaxPlanes,
                        [this](int nPlane)
                        {
                            if (m_bPlaneBackground)
                            {
                                m_nBackgroundColor = m_anPlaneBackground[nPlane];
                            }
                            Process();
                        });
}
