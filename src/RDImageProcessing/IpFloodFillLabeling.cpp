#include "RDImageProcessing/IpFloodFillLabeling.hpp"

#include "RDImageProcessing/ByteRuns.hpp"
#include "RDImageProcessing/FillTools.hpp"

#include <algorithm>

ClProcessorBase* ClIpFloodFillLabeling::Create()
{
    return NewProcessor<ClIpFloodFillLabeling>();
}

const char* ClIpFloodFillLabeling::Name() const
{
    return "ClIpFloodFillLabeling";
}

long ClIpFloodFillLabeling::Process()
{
    FloodFill(PrepareImage());
    return FPC_SUCCESS;
}

void ClIpFloodFillLabeling::FloodFill(ClImage& cImage)
{
    m_aObjects.Clear();
    if (!HasBytePerColumn(cImage))
    {
        return;
    }
    const unsigned char nNextLabel = LabelObjects(cImage);
    if (nNextLabel > 1)
    {
        ListObjects(cImage, nNextLabel - 1u);
    }
}

/// Returns the low byte of the first label that was not given.
unsigned char ClIpFloodFillLabeling::LabelObjects(ClImage& cImage)
{
    ClIpFloodFill cFill;
    cFill.Timer(IsTimerEnabled());
    cFill.m_pInImage = &cImage;
    unsigned int nLabel = 1;
    for (int y = 0; y < cImage.m_nHeight; ++y)
    {
        const unsigned char* pRow = Row<unsigned char>(cImage, y);
        for (int x = 0; (x = FindByte(pRow, x, cImage.m_nWidth, 0)) < cImage.m_nWidth;)
        {
            cFill.m_nFillColor = static_cast<unsigned char>(nLabel);
            cFill.m_nStartX = x;
            cFill.m_nStartY = y;
            cFill.Apply();
            ++nLabel;
            // From here on the scan is meant to begin again at row 1. All that lies before this pixel in the rows from
            // 1 on is not 0, and a fill makes nothing 0: the scan goes on where it stands, and leaves only row 0. It
            // does not step over the pixel, for a label whose low byte is 0 has left it as it was.
            if (y == 0)
            {
                break;
            }
        }
    }
    return static_cast<unsigned char>(nLabel);
}

void ClIpFloodFillLabeling::ListObjects(const ClImage& cImage, unsigned long nObjects)
{
    m_aObjects.New(nObjects);
    for (unsigned long i = 0; i < nObjects; ++i)
    {
        m_aObjects[i] = {cImage.m_nWidth - 1, cImage.m_nHeight - 1, 0, 0, 0};
    }
    for (int y = 0; y < cImage.m_nHeight; ++y)
    {
        const unsigned char* pRow = Row<unsigned char>(cImage, y);
        for (long x = 0, nEnd = 0; x < cImage.m_nWidth; x = nEnd)
        {
            nEnd = EndOfRun(pRow, x, cImage.m_nWidth, pRow[x]);
            const unsigned char nIndex = static_cast<unsigned char>(pRow[x] - 1); // 0 becomes 255, which is no index
            if (nIndex < nObjects)
            {
                StBoundingBox& cBox = m_aObjects[nIndex];
                cBox.nMinX = std::min<long>(cBox.nMinX, x);
                cBox.nMinY = std::min<long>(cBox.nMinY, y);
                cBox.nMaxX = std::max<long>(cBox.nMaxX, nEnd - 1);
                cBox.nMaxY = std::max<long>(cBox.nMaxY, y);
                cBox.nCount += nEnd - x;
            }
        }
    }
}
