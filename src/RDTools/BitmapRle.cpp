#include "RDTools/BitmapRle.hpp"

#include <algorithm>

namespace
{
constexpr int nMostIdleDeltas = 65536;

enum EMark : unsigned char
{
    eEndOfLine,
    eEndOfBitmap,
    eDelta
};

[[noreturn]] void RaiseCorrupt(long nLine)
{
    throw ClException("ClBitmap::Load. RLE Encoding corrupt", FPC_ERROR_CORRUPT_BYTECODE, true, "RDTools/Bitmap",
                      nLine);
}
} // namespace

void ClBitmapRle::Decode(ClStream& cStream)
{
    for (;;)
    {
        unsigned char aPair[2] = {0, eEndOfBitmap};
        cStream.ReadNumericArray(aPair, sizeof aPair, 1);
        if (aPair[0] > 0)
        {
            for (int i = 0; i < aPair[0]; ++i)
            {
                Put(aPair[1]);
            }
            continue;
        }
        switch (aPair[1])
        {
        case eEndOfLine:
            if (!StepLines(1))
            {
                return;
            }
            m_nX = 0;
            break;
        case eEndOfBitmap: return;
        case eDelta: TakeDelta(cStream); break;
        default:
            for (;;) // ends behind the last line
            {
                unsigned char nValue = 0;
                cStream.ReadAutoSwap(nValue);
                Put(nValue);
            }
        }
    }
}

/// False, and nothing moved, if there is no such line.
bool ClBitmapRle::StepLines(int nLines)
{
    if (nLines >= m_nLines - m_nLine)
    {
        return false;
    }
    m_nLine += nLines;
    m_pLine += nLines * m_nStep;
    return true;
}

void ClBitmapRle::Put(unsigned char nValue)
{
    if (m_nX >= m_nWidth)
    {
        if (!StepLines(1))
        {
            RaiseCorrupt(__LINE__);
        }
        m_nX = 0;
    }
    if (m_nLine >= m_nLines || m_nWidth <= 0)
    {
        RaiseCorrupt(__LINE__); // there is no line at all
    }
    m_pLine[m_nX++] = nValue;
}

void ClBitmapRle::TakeDelta(ClStream& cStream)
{
    unsigned char aMove[2] = {0, 0};
    cStream.ReadNumericArray(aMove, sizeof aMove, 1);
    // Right of the line is right of the line: how far does not matter, and the sum cannot leave its type.
    const int nX = std::min(m_nX + aMove[0], std::max(m_nWidth, 0));
    if (!StepLines(aMove[1]) || (nX == m_nX && aMove[1] == 0 && ++m_nIdleDeltas > nMostIdleDeltas))
    {
        RaiseCorrupt(__LINE__);
    }
    m_nX = nX;
}
