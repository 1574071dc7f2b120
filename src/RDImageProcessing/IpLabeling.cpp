#include "RDImageProcessing/IpLabeling.hpp"

#include "RDImageProcessing/FillTools.hpp"

#include <cstdint>
#include <limits>

namespace
{
constexpr char szModule[] = "RDImageProcessing/IpLabeling";

/// The row above or below a span: finds the places from which its unlabelled object pixels are to be filled.
struct ClNeighbourRow
{
    const unsigned char* m_pIn;
    const int* m_pLabel;
    long m_nY;
    bool m_bInRun = false; ///< the pixel before was unlabelled object: the run has its entry

    void Visit(long nX, ClIpLabeling::ClLineParts& cStack)
    {
        const bool bOpen = m_pIn[nX] == 0 && m_pLabel[nX] == 0;
        if (bOpen && !m_bInRun)
        {
            PushEntry(cStack, ClIpLabeling::StPos{nX, m_nY});
        }
        m_bInRun = bOpen;
    }
};

ClNeighbourRow NeighbourRow(const ClImage& cIn, const ClImage& cLabels, long nY)
{
    const int y = static_cast<int>(nY);
    return {Row<unsigned char>(cIn, y), Row<int>(cLabels, y), nY};
}
} // namespace

ClProcessorBase* ClIpLabeling::Create()
{
    return NewProcessor<ClIpLabeling>();
}

const char* ClIpLabeling::Name() const
{
    return "ClIpLabeling";
}

long ClIpLabeling::Process()
{
    if (m_pInImage == nullptr)
    {
        throw ClException("Inputimage is missing", FPC_ERROR_PARAM_IS_MISSING, true, szModule, __LINE__);
    }
    if (m_pOutImage == nullptr && m_pRuns == nullptr)
    {
        throw ClException("Outputimage is missing", FPC_ERROR_PARAM_IS_MISSING, true, szModule, __LINE__);
    }
    ClObjectRuns cLocalRuns;
    ClObjectRuns& cRuns = m_pRuns != nullptr ? *m_pRuns : cLocalRuns;
    cRuns.Clear();
    m_nLabels = 0;
    if (m_pOutImage != nullptr)
    {
        m_pOutImage->Resize(*m_pInImage, ClImage::eSInt32); // refuses the input itself
    }
    else
    {
        CheckLabelImage();
    }
    if (HasBytePerColumn(*m_pInImage) && m_pInImage->m_nHeight > 0)
    {
        m_nLabels = cRuns.Find(*m_pInImage);
    }
    if (m_pOutImage != nullptr && m_pOutImage->Data() != nullptr)
    {
        cRuns.Paint(*m_pOutImage);
    }
    return FPC_SUCCESS;
}

/// Fails where a label image would fail by its size alone.
void ClIpLabeling::CheckLabelImage() const
{
    const std::int64_t nSamples = std::int64_t{m_pInImage->m_nWidth} * m_pInImage->m_nPlanes;
    constexpr std::int64_t nMostSamples = std::numeric_limits<int>::max() / 4;
    if (m_pInImage->m_nWidth < 0 || m_pInImage->m_nHeight < 0 || nSamples < 0 || nSamples > nMostSamples)
    {
        ClImage().Resize(*m_pInImage, ClImage::eSInt32);
    }
}

void ClIpLabeling::FloodFill(long nX, long nY, int nLabel)
{
    if (nX < 0 || nX >= m_pInImage->m_nWidth || nY < 0 || nY >= m_pInImage->m_nHeight)
    {
        return;
    }
    m_cStack.Clear();
    FillSpan(nX, nY, nLabel);
    while (m_cStack.m_nUsed != 0)
    {
        const StPos cPos = PopEntry(m_cStack);
        // The pixel was unlabelled when it was put there. If it has the label now, its span was reached on another
        // way and is filled, with all its neighbours: walking it again would cost time and change nothing.
        if (Row<int>(*m_pOutImage, static_cast<int>(cPos.nY))[cPos.nX] != nLabel)
        {
            FillSpan(cPos.nX, cPos.nY, nLabel);
        }
    }
}

void ClIpLabeling::FillSpan(long nX, long nY, int nLabel)
{
    const long nWidth = m_pInImage->m_nWidth;
    const int y = static_cast<int>(nY);
    const unsigned char* pIn = Row<unsigned char>(*m_pInImage, y);
    int* pLabel = Row<int>(*m_pOutImage, y);
    const bool bBelow = nY < m_pInImage->m_nHeight - 1;
    const bool bAbove = nY >= 1;
    ClNeighbourRow cBelow = NeighbourRow(*m_pInImage, *m_pOutImage, bBelow ? nY + 1 : nY);
    ClNeighbourRow cAbove = NeighbourRow(*m_pInImage, *m_pOutImage, bAbove ? nY - 1 : nY);
    while (nX >= 0 && pIn[nX] == 0)
    {
        --nX;
    }
    for (++nX; nX < nWidth && pIn[nX] == 0; ++nX)
    {
        if (bBelow)
        {
            cBelow.Visit(nX, m_cStack);
        }
        if (bAbove)
        {
            cAbove.Visit(nX, m_cStack);
        }
        pLabel[nX] = nLabel;
    }
}
