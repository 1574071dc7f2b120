#include "RDImageProcessing/IpFloodFill.hpp"

#include "RDImageProcessing/ByteRuns.hpp"
#include "RDImageProcessing/FillTools.hpp"
#include "RDImageProcessing/Ip1to1Base.hpp"
#include "RDTools/ParameterContainer.hpp"
#include "RDTools/ParameterInterface.hpp"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace
{
using StLinePart = ClIpFloodFill::StLinePart;
using ClLineParts = TpArrayDynamic<StLinePart, 100>;

/// Sets a run of at least one byte. Fine hatchings have one or two, which are not worth a call.
void PaintRun(unsigned char* pRun, long nLength, unsigned char nValue)
{
    pRun[0] = nValue;
    pRun[nLength - 1] = nValue;
    if (nLength > 2)
    {
        std::memset(pRun, nValue, static_cast<std::size_t>(nLength));
    }
}

/// Replaces one value by another over whole regions, run by run.
class ClRegionFill
{
public:
    ClRegionFill(ClImage& cImage, unsigned char nOld, unsigned char nNew, unsigned long nStackEntries)
        : m_nStride(cImage.Stride()), m_nWidth(cImage.m_nWidth), m_pFirstRow(cImage.Data()),
          m_pEnd(m_pFirstRow + m_nStride * cImage.m_nHeight), m_nOld(nOld), m_nNew(nNew)
    {
        m_aStack.New(nStackEntries);
        m_aStack.Clear();
    }

    /// fnRun(row, first column, last column) after each run that was filled.
    template <class Fn> void Fill(const StLinePart& cStart, Fn&& fnRun)
    {
        PushEntry(m_aStack, cStart);
        while (m_aStack.m_nUsed != 0)
        {
            const StLinePart cPart = PopEntry(m_aStack);
            if (cPart.pRow[cPart.nX] != m_nOld)
            {
                continue; // reached on another way
            }
            const long nFirst = StartOfRun(cPart.pRow, cPart.nX, m_nWidth, m_nOld);
            const long nEnd = EndOfRun(cPart.pRow, cPart.nX, m_nWidth, m_nOld);
            PaintRun(cPart.pRow + nFirst, nEnd - nFirst, m_nNew);
            if (cPart.pRow + m_nStride < m_pEnd)
            {
                PushRuns(cPart.pRow + m_nStride, nFirst, nEnd);
            }
            if (cPart.pRow > m_pFirstRow)
            {
                PushRuns(cPart.pRow - m_nStride, nFirst, nEnd);
            }
            fnRun(cPart.pRow, nFirst, nEnd - 1);
        }
    }

private:
    /// Puts one entry on the stack for each run of the old value above or below a run that was filled.
    void PushRuns(unsigned char* pRow, long nFirst, long nEnd)
    {
        if (nEnd - nFirst == 1) // as all are in a fine hatching
        {
            if (pRow[nFirst] == m_nOld)
            {
                PushEntry(m_aStack, StLinePart{pRow, nFirst});
            }
            return;
        }
        ForEachRun(pRow, m_nWidth, nFirst, nEnd, m_nOld,
                   [&](long nX, long) {
                       PushEntry(m_aStack, StLinePart{pRow, nX});
                   });
    }

    const std::ptrdiff_t m_nStride;
    const long m_nWidth;
    unsigned char* const m_pFirstRow;
    unsigned char* const m_pEnd; // behind the last row
    const unsigned char m_nOld;
    const unsigned char m_nNew; // another value: that ends the fill
    ClLineParts m_aStack;
};
} // namespace

void ClIpFloodFill::SetParametersToDefault()
{
    m_pInImage = nullptr;
    m_pOutImage = nullptr;
    m_nCountThresh = 0;
    m_nFillColor = 0;
    m_nStartX = 0;
    m_nStartY = 0;
}

void ClIpFloodFill::PublishParameters(ClParameterContainer& cContainer)
{
    cContainer.AddPointer("pInImage", &m_pInImage);
    cContainer.AddPointer("pOutImage", &m_pOutImage);
    cContainer.AddNumeric("CountThresh", &m_nCountThresh);
    cContainer.AddNumeric("FillColor", &m_nFillColor);
    cContainer.AddNumeric("StartX", &m_nStartX);
    cContainer.AddNumeric("StartY", &m_nStartY);
}

void ClIpFloodFill::QueryParameters(ClParameterInterface& cInterface)
{
    cInterface.AddParameter(&m_pInImage, "InImage", "In: Original Image", ClParameterInterface::eIn);
    cInterface.AddParameter(&m_pOutImage, "OutImage", "Out: Output Image", ClParameterInterface::eOut);
    cInterface.AddParameter(&m_nCountThresh, "CountThresh", "Nothing", ClParameterInterface::eIn, 0.0, 253.0);
    cInterface.AddParameter(&m_nFillColor, "FillColor", "In Fill Color", ClParameterInterface::eIn);
    cInterface.AddParameter(&m_nStartX, "StartX", "In Start Coordinate X", ClParameterInterface::eIn);
    cInterface.AddParameter(&m_nStartY, "StartY", "In Start Coordinate Y", ClParameterInterface::eIn);
}

ClProcessorBase* ClIpFloodFill::Create()
{
    return NewProcessor<ClIpFloodFill>();
}

const char* ClIpFloodFill::Name() const
{
    return "ClIpFloodFill";
}

long ClIpFloodFill::Initialize()
{
    return m_pInImage != nullptr ? FPC_SUCCESS : FPC_ERROR_BITMAP_PTR;
}

ClImage& ClIpFloodFill::PrepareImage()
{
    if (m_pOutImage == nullptr || m_pOutImage == m_pInImage)
    {
        return *m_pInImage;
    }
    *m_pOutImage = *m_pInImage;
    return *m_pOutImage;
}

long ClIpFloodFill::Process()
{
    ClImage& cImage = PrepareImage();
    if (m_pBoundingBox != nullptr)
    {
        BoundingBoxFill(cImage);
    }
    else if (m_nCountThresh != 0)
    {
        CountFill(cImage);
    }
    else
    {
        FloodFill(cImage);
    }
    return FPC_SUCCESS;
}

template <class Fn> void ClIpFloodFill::FillFromStart(ClImage& cImage, Fn&& fnRun)
{
    constexpr unsigned long nStackEntries = 200;
    if (!HasBytePerColumn(cImage) || m_nStartX < 0 || m_nStartX >= cImage.m_nWidth || m_nStartY < 0 ||
        m_nStartY >= cImage.m_nHeight)
    {
        return;
    }
    unsigned char* const pRow = Row<unsigned char>(cImage, static_cast<int>(m_nStartY));
    const unsigned char nOld = pRow[m_nStartX];
    if (nOld != m_nFillColor)
    {
        ClRegionFill(cImage, nOld, m_nFillColor, nStackEntries).Fill({pRow, m_nStartX}, fnRun);
    }
}

void ClIpFloodFill::FloodFill(ClImage& cImage)
{
    FillFromStart(cImage, [](unsigned char*, long, long) {});
}

void ClIpFloodFill::BoundingBoxFill(ClImage& cImage)
{
    StBoundingBox cUnwanted;
    StBoundingBox& cBox = m_pBoundingBox != nullptr ? *m_pBoundingBox : cUnwanted;
    cBox = {m_nStartX, m_nStartY, m_nStartX, m_nStartY, 1};
    FillFromStart(cImage,
                  [&](const unsigned char* pRow, long nFirst, long nLast)
                  {
                      const long nRow = (pRow - cImage.Data()) / cImage.Stride();
                      cBox.nMinX = std::min(cBox.nMinX, nFirst);
                      cBox.nMaxX = std::max(cBox.nMaxX, nLast);
                      cBox.nMinY = std::min(cBox.nMinY, nRow);
                      cBox.nMaxY = std::max(cBox.nMaxY, nRow);
                      cBox.nCount += nLast - nFirst + 1;
                  });
}

void ClIpFloodFill::CountFill(ClImage& cImage)
{
    constexpr unsigned long nStackEntries = 2600;
    constexpr unsigned char nWhite = 255;
    constexpr unsigned char nVisited = 254;
    if (!HasBytePerColumn(cImage))
    {
        return;
    }
    const long nThresh = std::min<long>(m_nCountThresh, nVisited);
    ClRegionFill cFill(cImage, nWhite, nVisited, nStackEntries);
    ClLineParts aEnds; // of the runs visited, two entries for each
    aEnds.New(nStackEntries);
    for (int y = 0; y < cImage.m_nHeight; ++y)
    {
        unsigned char* const pRow = Row<unsigned char>(cImage, y);
        for (int x = 0; (x = FindByte(pRow, x, cImage.m_nWidth, nWhite)) < cImage.m_nWidth; ++x)
        {
            long nCount = 0;
            aEnds.Clear();
            cFill.Fill({pRow, x},
                       [&](unsigned char* pRunRow, long nFirst, long nLast)
                       {
                           nCount += nLast - nFirst + 1;
                           if (nCount < nThresh) // else the region stays as it is, and its runs are not needed
                           {
                               PushEntry(aEnds, StLinePart{pRunRow, nFirst});
                               PushEntry(aEnds, StLinePart{pRunRow, nLast});
                           }
                       });
            for (unsigned long i = 0; nCount < nThresh && i < aEnds.Entries(); i += 2)
            {
                PaintRun(aEnds[i].pRow + aEnds[i].nX, aEnds[i + 1].nX - aEnds[i].nX + 1,
                         static_cast<unsigned char>(nCount));
            }
        }
    }
}
