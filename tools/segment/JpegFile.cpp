#include "ImageFile.hpp"

#if HAVE_JPEG

#include "RDTools/ErrorCatalogue.hpp"

#include <csetjmp>
#include <cstdio>
#include <cstdlib>

#include <jpeglib.h>

// As in ReadJpeg.cpp: each call that can fail stands in a function whose only locals are numbers and pointers.
namespace SegmentTool
{
namespace
{
constexpr int nQuality = 75; // ridges stay ridges, in a tenth of the bytes

struct ClErrors
{
    jpeg_error_mgr m_cBase; // first: libjpeg hands back a pointer to it
    std::jmp_buf m_aBack;
    char m_szFault[JMSG_LENGTH_MAX];
};

[[noreturn]] void OnError(j_common_ptr pJpeg)
{
    auto* pErrors = reinterpret_cast<ClErrors*>(pJpeg->err);
    pJpeg->err->format_message(pJpeg, pErrors->m_szFault);
    std::longjmp(pErrors->m_aBack, 1);
}

class ClJpegWriter
{
public:
    ClJpegWriter()
    {
        m_cJpeg.err = jpeg_std_error(&m_cErrors.m_cBase);
        m_cErrors.m_cBase.error_exit = OnError;
    }
    ClJpegWriter(const ClJpegWriter&) = delete;
    ~ClJpegWriter()
    {
        jpeg_destroy_compress(&m_cJpeg);
        std::free(m_pBytes);
    }

    Bytes_t Write(const ClImageRows& cRows)
    {
        Demand(Start(cRows.m_nWidth, cRows.m_nHeight));
        Bytes_t aRow(static_cast<std::size_t>(cRows.m_nWidth));
        for (int y = 0; y < cRows.m_nHeight; ++y)
        {
            cRows.m_Row(y, aRow.data());
            Demand(WriteRow(aRow.data()));
        }
        Demand(Finish());
        return Bytes_t(m_pBytes, m_pBytes + m_nBytes);
    }

private:
    bool Start(int nWidth, int nHeight)
    {
        if (setjmp(m_cErrors.m_aBack) != 0) return false;
        jpeg_create_compress(&m_cJpeg);
        jpeg_mem_dest(&m_cJpeg, &m_pBytes, &m_nBytes);
        m_cJpeg.image_width = static_cast<JDIMENSION>(nWidth);
        m_cJpeg.image_height = static_cast<JDIMENSION>(nHeight);
        m_cJpeg.input_components = 1;
        m_cJpeg.in_color_space = JCS_GRAYSCALE;
        jpeg_set_defaults(&m_cJpeg);
        jpeg_set_quality(&m_cJpeg, nQuality, TRUE);
        m_cJpeg.dct_method = JDCT_ISLOW; // the same bytes on every machine
        jpeg_start_compress(&m_cJpeg, TRUE);
        return true;
    }

    bool WriteRow(unsigned char* pRow)
    {
        if (setjmp(m_cErrors.m_aBack) != 0) return false;
        return jpeg_write_scanlines(&m_cJpeg, &pRow, 1) == 1;
    }

    bool Finish()
    {
        if (setjmp(m_cErrors.m_aBack) != 0) return false;
        jpeg_finish_compress(&m_cJpeg);
        return true;
    }

    void Demand(bool bDone) const
    {
        if (bDone) return;
        throw ClPictureError(FPC_ERROR_JPEG_FAILURE,
                             std::string("the JPEG file cannot be made: ") + m_cErrors.m_szFault);
    }

    ClErrors m_cErrors{};
    jpeg_compress_struct m_cJpeg{};
    unsigned char* m_pBytes = nullptr;
    unsigned long m_nBytes = 0;
};
} // namespace

Bytes_t EncodeJpeg(const ClImageRows& cRows)
{
    return ClJpegWriter().Write(cRows);
}
} // namespace SegmentTool

#endif
