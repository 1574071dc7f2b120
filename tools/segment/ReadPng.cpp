#include "Formats.hpp"

#if HAVE_PNG

#include "Result.hpp"

#include "RDTools/ErrorCatalogue.hpp"

#include <algorithm>
#include <cstring>
#include <string>

#include <png.h>

// libpng leaves a call that fails by longjmp, which destroys nothing on its way. So each call stands in a function of
// its own whose only locals are numbers and pointers.
namespace SegmentTool
{
namespace
{
struct ClSource
{
    const unsigned char* m_pNext = nullptr;
    std::size_t m_nLeft = 0;
    char m_szFault[160] = "";
};

void ReadBytes(png_structp pPng, png_bytep pTo, std::size_t nSize)
{
    auto* pSource = static_cast<ClSource*>(png_get_io_ptr(pPng));
    if (nSize > pSource->m_nLeft) png_error(pPng, "the file ends too early");
    std::memcpy(pTo, pSource->m_pNext, nSize);
    pSource->m_pNext += nSize;
    pSource->m_nLeft -= nSize;
}

[[noreturn]] void OnError(png_structp pPng, png_const_charp szText)
{
    auto* pSource = static_cast<ClSource*>(png_get_error_ptr(pPng));
    std::strncpy(pSource->m_szFault, szText, sizeof pSource->m_szFault - 1);
    png_longjmp(pPng, 1);
}

void OnWarning(png_structp, png_const_charp) {} // such as an unknown chunk: the pixels are whole

class ClPngReader
{
public:
    explicit ClPngReader(const Bytes_t& aFile)
    {
        m_cSource.m_pNext = aFile.data();
        m_cSource.m_nLeft = aFile.size();
        m_pPng = png_create_read_struct(PNG_LIBPNG_VER_STRING, &m_cSource, OnError, OnWarning);
        if (m_pPng != nullptr) m_pInfo = png_create_info_struct(m_pPng);
    }
    ClPngReader(const ClPngReader&) = delete;
    ~ClPngReader() { png_destroy_read_struct(&m_pPng, &m_pInfo, nullptr); }

    void Read(ClPicture& cPicture)
    {
        if (m_pPng == nullptr || m_pInfo == nullptr) throw std::bad_alloc();
        Demand(ReadHeader());
        cPicture.Create(png_get_image_width(m_pPng, m_pInfo), png_get_image_height(m_pPng, m_pInfo));
        Resolution(cPicture);
        Demand(SetUp());
        const std::size_t nRow = png_get_rowbytes(m_pPng, m_pInfo);
        m_nChannels = png_get_channels(m_pPng, m_pInfo);
        if (m_nPasses == 1)
        {
            m_aRows.resize(nRow);
            for (int y = 0; y < cPicture.Height(); ++y)
            {
                Demand(ReadRow(m_aRows.data()));
                PutRow(cPicture, y, m_aRows.data());
            }
        }
        else
        {
            // Interlaced: each pass completes the rows of the one before.
            m_aRows.resize(nRow * static_cast<std::size_t>(cPicture.Height()));
            for (int nPass = 0; nPass < m_nPasses; ++nPass)
            {
                for (int y = 0; y < cPicture.Height(); ++y)
                {
                    Demand(ReadRow(m_aRows.data() + nRow * static_cast<std::size_t>(y)));
                }
            }
            for (int y = 0; y < cPicture.Height(); ++y)
            {
                PutRow(cPicture, y, m_aRows.data() + nRow * static_cast<std::size_t>(y));
            }
        }
        Demand(ReadEnd());
    }

private:
    bool ReadHeader()
    {
        if (setjmp(png_jmpbuf(m_pPng)) != 0) return false;
        png_set_read_fn(m_pPng, &m_cSource, ReadBytes);
        png_set_user_limits(m_pPng, 0x7fffffff, 0x7fffffff); // ours is tested, and told, in ClPicture
        png_read_info(m_pPng, m_pInfo);
        return true;
    }

    // Asks for one or three samples of 8 bits, and one of opacity if the file has any.
    bool SetUp()
    {
        if (setjmp(png_jmpbuf(m_pPng)) != 0) return false;
        const int nColour = png_get_color_type(m_pPng, m_pInfo);
        png_set_expand(m_pPng); // colour tables, transparency, 1, 2 and 4 bits
        png_set_scale_16(m_pPng);
        png_set_bgr(m_pPng);
        m_bGreyTable = nColour == PNG_COLOR_TYPE_PALETTE && HasGreyTable();
        m_nPasses = png_set_interlace_handling(m_pPng);
        png_read_update_info(m_pPng, m_pInfo);
        return true;
    }

    bool HasGreyTable() const
    {
        png_colorp pTable = nullptr;
        int nEntries = 0;
        if (png_get_PLTE(m_pPng, m_pInfo, &pTable, &nEntries) == 0) return false;
        return std::all_of(pTable, pTable + nEntries,
                           [](const png_color& c) { return c.red == c.green && c.green == c.blue; });
    }

    bool ReadRow(unsigned char* pRow)
    {
        if (setjmp(png_jmpbuf(m_pPng)) != 0) return false;
        png_read_row(m_pPng, pRow, nullptr);
        return true;
    }

    bool ReadEnd()
    {
        if (setjmp(png_jmpbuf(m_pPng)) != 0) return false;
        png_read_end(m_pPng, nullptr);
        return true;
    }

    void Resolution(ClPicture& cPicture)
    {
        png_uint_32 nX = 0;
        png_uint_32 nY = 0;
        int nUnit = PNG_RESOLUTION_UNKNOWN;
        if (png_get_pHYs(m_pPng, m_pInfo, &nX, &nY, &nUnit) == 0 || nUnit != PNG_RESOLUTION_METER) return;
        cPicture.m_dXPels = nX;
        cPicture.m_dYPels = nY;
    }

    // What is not opaque shows white.
    void PutRow(ClPicture& cPicture, int y, unsigned char* pRow)
    {
        const int nOpacity = m_nChannels % 2 == 0 ? 1 : 0;
        const int nColours = m_nChannels - nOpacity;
        if (nOpacity != 0)
        {
            for (int x = 0; x < cPicture.Width(); ++x)
            {
                const unsigned char* pIn = pRow + static_cast<std::ptrdiff_t>(x) * m_nChannels;
                unsigned char* pOut = pRow + static_cast<std::ptrdiff_t>(x) * nColours;
                const unsigned int nOpaque = pIn[nColours];
                for (int i = 0; i < nColours; ++i)
                    pOut[i] = ReduceSample(pIn[i] * nOpaque + 255u * (255u - nOpaque), 255 * 255);
            }
        }
        if (nColours == 3 && !m_bGreyTable)
        {
            cPicture.PutColourRow(y, pRow);
            return;
        }
        unsigned char* pOut = cPicture.RowFromTop(y);
        for (int x = 0; x < cPicture.Width(); ++x) pOut[x] = pRow[x * nColours];
    }

    void Demand(bool bDone) const
    {
        if (bDone) return;
        throw ClPictureError(FPC_ERROR_PNG_FAILURE, std::string("the PNG file is damaged: ") + m_cSource.m_szFault);
    }

    ClSource m_cSource;
    png_structp m_pPng = nullptr;
    png_infop m_pInfo = nullptr;
    int m_nPasses = 1;
    int m_nChannels = 1;
    bool m_bGreyTable = false;
    Bytes_t m_aRows;
};
} // namespace

void ReadPng(const Bytes_t& aFile, ClPicture& cPicture)
{
    ClPngReader(aFile).Read(cPicture);
}
} // namespace SegmentTool

#endif
