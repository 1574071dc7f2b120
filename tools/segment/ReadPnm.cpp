#include "Formats.hpp"

#include "Result.hpp"

#include "RDTools/ErrorCatalogue.hpp"

#include <string>

namespace SegmentTool
{
namespace
{
constexpr unsigned int nMostSample = 65535;

class ClPnmReader
{
public:
    explicit ClPnmReader(const Bytes_t& aFile) : m_aFile(aFile) {}

    void Read(ClPicture& cPicture)
    {
        const int nKind = m_aFile[1] - '0';
        m_nNext = 2;
        const unsigned int nWidth = Number();
        const unsigned int nHeight = Number();
        const bool bBits = nKind == 1 || nKind == 4;
        m_nMost = bBits ? 1 : Number();
        if (m_nMost < 1 || m_nMost > nMostSample) Damaged("the largest sample is not 1 to 65535");
        m_bPlain = nKind <= 3;
        m_nChannels = nKind == 3 || nKind == 6 ? 3 : 1;
        cPicture.Create(nWidth, nHeight);
        if (!m_bPlain) ++m_nNext; // one white space

        Bytes_t aColours(static_cast<std::size_t>(cPicture.Width()) * 3);
        for (int y = 0; y < cPicture.Height(); ++y)
        {
            unsigned char* pRow = m_nChannels == 1 ? cPicture.RowFromTop(y) : aColours.data();
            if (bBits)
                ReadBits(pRow, cPicture.Width());
            else
                ReadSamples(pRow, cPicture.Width());
            if (m_nChannels == 3) cPicture.PutColourRow(y, pRow);
        }
    }

private:
    [[noreturn]] static void Damaged(const char* szWhy)
    {
        throw ClPictureError(FPC_ERROR_CORRUPT_DATA, std::string("the PNM file is damaged: ") + szWhy);
    }

    static bool IsSpace(unsigned char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

    unsigned char Byte()
    {
        if (m_nNext >= m_aFile.size()) Damaged("it ends too early");
        return m_aFile[m_nNext++];
    }

    // White space and comments, which reach from # to the end of a line.
    void SkipSpace()
    {
        for (;; ++m_nNext)
        {
            if (m_nNext < m_aFile.size() && m_aFile[m_nNext] == '#')
            {
                while (m_nNext < m_aFile.size() && m_aFile[m_nNext] != '\n' && m_aFile[m_nNext] != '\r') ++m_nNext;
            }
            if (m_nNext >= m_aFile.size() || !IsSpace(m_aFile[m_nNext])) return;
        }
    }

    unsigned int Number()
    {
        SkipSpace();
        const std::size_t nFirst = m_nNext;
        unsigned int nValue = 0;
        while (m_nNext < m_aFile.size() && m_aFile[m_nNext] >= '0' && m_aFile[m_nNext] <= '9')
        {
            nValue = nValue * 10 + (m_aFile[m_nNext] - static_cast<unsigned int>('0'));
            if (nValue > 1000000000) Damaged("a number is too large");
            ++m_nNext;
        }
        if (m_nNext == nFirst) Damaged(m_nNext < m_aFile.size() ? "a number is missing" : "it ends too early");
        return nValue;
    }

    unsigned char Sample()
    {
        unsigned int nSample = 0;
        if (m_bPlain)
            nSample = Number();
        else if (m_nMost < 256)
            nSample = Byte();
        else
        {
            nSample = Byte() * 256u;
            nSample += Byte();
        }
        if (nSample > m_nMost) Damaged("a sample is larger than the largest");
        return ReduceSample(nSample, m_nMost);
    }

    void ReadSamples(unsigned char* pRow, int nWidth)
    {
        for (int x = 0; x < nWidth; ++x, pRow += m_nChannels)
        {
            for (int i = m_nChannels - 1; i >= 0; --i) pRow[i] = Sample(); // red comes first in the file
        }
    }

    // 1 is black. Plain digits need no space between them.
    void ReadBits(unsigned char* pRow, int nWidth)
    {
        unsigned int nByte = 0;
        for (int x = 0; x < nWidth; ++x)
        {
            bool bBlack = false;
            if (m_bPlain)
            {
                SkipSpace();
                const unsigned char c = Byte();
                if (c != '0' && c != '1') Damaged("a bit is neither 0 nor 1");
                bBlack = c == '1';
            }
            else
            {
                if (x % 8 == 0) nByte = Byte();
                bBlack = (nByte >> (7 - x % 8) & 1) != 0;
            }
            pRow[x] = bBlack ? 0 : 255;
        }
    }

    const Bytes_t& m_aFile;
    std::size_t m_nNext = 0;
    unsigned int m_nMost = 255;
    int m_nChannels = 1;
    bool m_bPlain = false;
};
} // namespace

void ReadPnm(const Bytes_t& aFile, ClPicture& cPicture)
{
    ClPnmReader(aFile).Read(cPicture);
}
} // namespace SegmentTool
