#include "Formats.hpp"

#if HAVE_JPEG

#include "Result.hpp"

#include "RDTools/ErrorCatalogue.hpp"

#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <string>

#include <jpeglib.h>

#include <jerror.h>

// libjpeg ends a call that fails by calling back; what it calls leaves by longjmp, which destroys nothing on its way.
// So each call stands in a function of its own whose only locals are numbers and pointers.
namespace SegmentTool
{
namespace
{
struct ClErrors
{
    jpeg_error_mgr m_cBase; // first: libjpeg hands back a pointer to it
    std::jmp_buf m_aBack;
    bool m_bDamaged;
    char m_szFault[JMSG_LENGTH_MAX];
};

ClErrors* ErrorsOf(j_common_ptr pJpeg)
{
    return reinterpret_cast<ClErrors*>(pJpeg->err);
}

[[noreturn]] void OnError(j_common_ptr pJpeg)
{
    ClErrors* pErrors = ErrorsOf(pJpeg);
    pJpeg->err->format_message(pJpeg, pErrors->m_szFault);
    std::longjmp(pErrors->m_aBack, 1);
}

// Level -1 is a warning: libjpeg makes up what is missing and goes on. A picture with made-up parts is a damaged one.
void OnMessage(j_common_ptr pJpeg, int nLevel)
{
    if (nLevel >= 0) return;
    switch (pJpeg->err->msg_code)
    {
    case JWRN_EXTRANEOUS_DATA: // the pixels are whole in spite of these
    case JWRN_ADOBE_XFORM:
    case JWRN_JFIF_MAJOR:
    case JWRN_BOGUS_PROGRESSION: return;
    default: break;
    }
    ClErrors* pErrors = ErrorsOf(pJpeg);
    if (!pErrors->m_bDamaged) pJpeg->err->format_message(pJpeg, pErrors->m_szFault);
    pErrors->m_bDamaged = true;
}

void OnOutput(j_common_ptr) {}

// A file of many scans of a few bytes each would take hours: every scan is a pass over the whole picture.
void OnProgress(j_common_ptr pJpeg)
{
    constexpr int nMostScans = 200;
    if (pJpeg->is_decompressor && reinterpret_cast<j_decompress_ptr>(pJpeg)->input_scan_number > nMostScans)
    {
        std::strncpy(ErrorsOf(pJpeg)->m_szFault, "more scans than any encoder writes", JMSG_LENGTH_MAX - 1);
        std::longjmp(ErrorsOf(pJpeg)->m_aBack, 1);
    }
}

class ClJpegReader
{
public:
    explicit ClJpegReader(const Bytes_t& aFile) : m_aFile(aFile)
    {
        m_cJpeg.err = jpeg_std_error(&m_cErrors.m_cBase);
        m_cErrors.m_cBase.error_exit = OnError;
        m_cErrors.m_cBase.emit_message = OnMessage;
        m_cErrors.m_cBase.output_message = OnOutput;
    }
    ClJpegReader(const ClJpegReader&) = delete;
    ~ClJpegReader() { jpeg_destroy_decompress(&m_cJpeg); }

    void Read(ClPicture& cPicture)
    {
        Demand(ReadHeader());
        cPicture.Create(m_cJpeg.image_width, m_cJpeg.image_height);
        const double dScale = m_cJpeg.density_unit == 1   ? 1.0 / dMetresPerInch
                              : m_cJpeg.density_unit == 2 ? 100.0
                                                          : 0.0;
        if (m_cJpeg.saw_JFIF_marker)
        {
            cPicture.m_dXPels = m_cJpeg.X_density * dScale;
            cPicture.m_dYPels = m_cJpeg.Y_density * dScale;
        }
        const bool bGrey = m_cJpeg.jpeg_color_space == JCS_GRAYSCALE;
        if (!bGrey && m_cJpeg.jpeg_color_space != JCS_YCbCr && m_cJpeg.jpeg_color_space != JCS_RGB)
        {
            throw ClPictureError(FPC_ERROR_JPEG_WRONG_COLORSPACE,
                                 "the JPEG file has colours for print; convert it to grey");
        }
        Demand(Start(bGrey ? JCS_GRAYSCALE : JCS_EXT_BGR));
        Bytes_t aRow(static_cast<std::size_t>(cPicture.Width()) * 3);
        for (int y = 0; y < cPicture.Height(); ++y)
        {
            Demand(ReadRow(bGrey ? cPicture.RowFromTop(y) : aRow.data()));
            if (!bGrey) cPicture.PutColourRow(y, aRow.data());
        }
        Demand(Finish());
    }

private:
    bool ReadHeader()
    {
        if (setjmp(m_cErrors.m_aBack) != 0) return false;
        jpeg_create_decompress(&m_cJpeg);
        m_cProgress.progress_monitor = OnProgress;
        m_cJpeg.progress = &m_cProgress;
        jpeg_mem_src(&m_cJpeg, m_aFile.data(), m_aFile.size());
        jpeg_read_header(&m_cJpeg, TRUE);
        return true;
    }

    bool Start(J_COLOR_SPACE eSpace)
    {
        if (setjmp(m_cErrors.m_aBack) != 0) return false;
        m_cJpeg.out_color_space = eSpace;
        m_cJpeg.dct_method = JDCT_ISLOW; // the same result on every machine
        jpeg_start_decompress(&m_cJpeg);
        return true;
    }

    bool ReadRow(unsigned char* pRow)
    {
        if (setjmp(m_cErrors.m_aBack) != 0) return false;
        return jpeg_read_scanlines(&m_cJpeg, &pRow, 1) == 1 && !m_cErrors.m_bDamaged;
    }

    bool Finish()
    {
        if (setjmp(m_cErrors.m_aBack) != 0) return false;
        jpeg_finish_decompress(&m_cJpeg);
        return !m_cErrors.m_bDamaged;
    }

    void Demand(bool bDone) const
    {
        if (bDone) return;
        throw ClPictureError(FPC_ERROR_JPEG_FAILURE, std::string("the JPEG file is damaged: ") + m_cErrors.m_szFault);
    }

    const Bytes_t& m_aFile;
    ClErrors m_cErrors{};
    jpeg_progress_mgr m_cProgress{};
    jpeg_decompress_struct m_cJpeg{};
};
} // namespace

void ReadJpeg(const Bytes_t& aFile, ClPicture& cPicture)
{
    ClJpegReader(aFile).Read(cPicture);
}
} // namespace SegmentTool

#endif
