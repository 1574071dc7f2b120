#include "RDImageProcessing/IpFloodFill.hpp"

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

/// Replaces one value by another over whole regions.
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
            if (cPart.nX >= 0 && cPart.pRow[cPart.nX] == m_nOld)
            {
                const long nFirst = Walk(cPart.pRow, cPart.nX, -1) + 1;
                const long nLast = Walk(cPart.pRow, cPart.nX + 1, 1) - 1;
                fnRun(cPart.pRow, nFirst, nLast);
            }
        }
    }

private:
    /// Fills from a column on, to the left or to the right, and puts one entry on the stack for each run of the old
    /// value above and below. Returns the column where it stopped.
    long Walk(unsigned char* pRow, long nX, long nStep)
    {
        unsigned char* const pBelow = pRow + m_nStride < m_pEnd ? pRow + m_nStride : nullptr;
        unsigned char* const pAbove = pRow > m_pFirstRow ? pRow - m_nStride : nullptr;
        bool bInRunBelow = false;
        bool bInRunAbove = false;
        for (; nX >= 0 && nX < m_nWidth && pRow[nX] == m_nOld; nX += nStep)
        {
            Visit(pBelow, nX, bInRunBelow);
            Visit(pAbove, nX, bInRunAbove);
            pRow[nX] = m_nNew;
        }
        return nX;
    }

    void Visit(unsigned char* pRow, long nX, bool& bInRun)
    {
        if (pRow != nullptr)
        {
            const bool bOpen = pRow[nX] == m_nOld;
            if (bOpen && !bInRun)
            {
                PushEntry(m_aStack, StLinePart{pRow, nX});
            }
            bInRun = bOpen;
        }
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
        for (int x = 0; x < cImage.m_nWidth; ++x)
        {
            if (pRow[x] != nWhite)
            {
                continue;
            }
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
                const long nLength = aEnds[i + 1].nX - aEnds[i].nX + 1;
                std::memset(aEnds[i].pRow + aEnds[i].nX, static_cast<int>(nCount), static_cast<std::size_t>(nLength));
            }
        }
    }
}
