#include "PictureFiles.hpp"

#include "TestTools.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

#if HAVE_PNG
#include <png.h>
#endif
#if HAVE_JPEG
#include <jpeglib.h>
#endif
#if HAVE_TIFF
#include <tiffio.h>
#endif
#if HAVE_OPENJPEG
#include <openjpeg.h>
#endif

namespace PictureFiles
{
namespace
{
// Rows of packed samples, the first one in the highest bits, 16 bits with the higher byte first.
[[maybe_unused]] Bytes_t PackedRow(const ClRaster& cRaster, int y)
{
    Bytes_t aRow;
    unsigned int nBuffer = 0;
    int nFilled = 0;
    for (int i = 0; i < cRaster.m_nWidth * cRaster.m_nChannels; ++i)
    {
        nBuffer = nBuffer << cRaster.m_nBits | cRaster.At(0, y, i);
        nFilled += cRaster.m_nBits;
        while (nFilled >= 8)
        {
            nFilled -= 8;
            aRow.push_back(static_cast<unsigned char>(nBuffer >> nFilled & 255u));
        }
    }
    if (nFilled > 0) aRow.push_back(static_cast<unsigned char>(nBuffer << (8 - nFilled) & 255u));
    return aRow;
}

[[maybe_unused]] void Demand(bool bDone, const char* szWhat)
{
    if (!bDone) throw std::runtime_error(szWhat);
}

Bytes_t BytesOf(const std::string& sPath)
{
    std::ifstream cFile(sPath, std::ios::binary);
    return Bytes_t(std::istreambuf_iterator<char>(cFile), std::istreambuf_iterator<char>());
}

void PutNumber(Bytes_t& aTo, std::uint32_t nValue, int nBytes)
{
    for (int i = nBytes - 1; i >= 0; --i) aTo.push_back(static_cast<unsigned char>(nValue >> (8 * i) & 255u));
}
} // namespace

ClRaster RandomRaster(int nWidth, int nHeight, int nChannels, int nBits, unsigned int nSeed)
{
    ClRaster cRaster{nWidth, nHeight, nChannels, nBits, {}};
    ClTestRandom cRandom(nSeed);
    for (int i = 0; i < nWidth * nHeight * nChannels; ++i)
    {
        cRaster.m_aSamples.push_back(static_cast<std::uint16_t>(cRandom.Below(1 << nBits)));
    }
    return cRaster;
}

ClRaster SmoothRaster(int nWidth, int nHeight, int nChannels)
{
    ClRaster cRaster{nWidth, nHeight, nChannels, 8, {}};
    for (int y = 0; y < nHeight; ++y)
    {
        for (int x = 0; x < nWidth; ++x)
        {
            for (int i = 0; i < nChannels; ++i)
            {
                cRaster.m_aSamples.push_back(
                    static_cast<std::uint16_t>(180 - 150 * y / nHeight + 60 * x / nWidth + 5 * i));
            }
        }
    }
    return cRaster;
}

#if HAVE_PNG
Bytes_t PngFile(const ClRaster& cRaster, const ClPngStyle& cStyle)
{
    Bytes_t aFile;
    png_structp pPng = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop pInfo = png_create_info_struct(pPng);
    png_set_write_fn(
        pPng, &aFile,
        [](png_structp p, png_bytep pBytes, png_size_t nSize)
        {
            auto* pTo = static_cast<Bytes_t*>(png_get_io_ptr(p));
            pTo->insert(pTo->end(), pBytes, pBytes + nSize);
        },
        nullptr);
    constexpr int anColour[] = {0, PNG_COLOR_TYPE_GRAY, PNG_COLOR_TYPE_GRAY_ALPHA, PNG_COLOR_TYPE_RGB,
                                PNG_COLOR_TYPE_RGB_ALPHA};
    const int nColour = cStyle.m_aTable.empty() ? anColour[cRaster.m_nChannels] : PNG_COLOR_TYPE_PALETTE;
    png_set_IHDR(pPng, pInfo, static_cast<png_uint_32>(cRaster.m_nWidth), static_cast<png_uint_32>(cRaster.m_nHeight),
                 cRaster.m_nBits, nColour, cStyle.m_bInterlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    if (cStyle.m_nPels != 0) png_set_pHYs(pPng, pInfo, cStyle.m_nPels, cStyle.m_nPels, PNG_RESOLUTION_METER);
    std::vector<png_color> aTable;
    for (std::size_t i = 0; i + 2 < cStyle.m_aTable.size(); i += 3)
    {
        aTable.push_back({cStyle.m_aTable[i], cStyle.m_aTable[i + 1], cStyle.m_aTable[i + 2]});
    }
    if (!aTable.empty()) png_set_PLTE(pPng, pInfo, aTable.data(), static_cast<int>(aTable.size()));
    std::vector<Bytes_t> aRows;
    std::vector<png_bytep> apRows;
    for (int y = 0; y < cRaster.m_nHeight; ++y) aRows.push_back(PackedRow(cRaster, y));
    for (Bytes_t& aRow : aRows) apRows.push_back(aRow.data());
    png_set_rows(pPng, pInfo, apRows.data());
    png_write_png(pPng, pInfo, PNG_TRANSFORM_IDENTITY, nullptr);
    png_destroy_write_struct(&pPng, &pInfo);
    return aFile;
}
#endif

#if HAVE_JPEG
Bytes_t JpegFile(const ClRaster& cRaster, int nUnit, unsigned int nDensity, bool bCmyk)
{
    jpeg_compress_struct cJpeg;
    jpeg_error_mgr cErrors;
    cJpeg.err = jpeg_std_error(&cErrors);
    jpeg_create_compress(&cJpeg);
    unsigned char* pBytes = nullptr;
    unsigned long nBytes = 0;
    jpeg_mem_dest(&cJpeg, &pBytes, &nBytes);
    cJpeg.image_width = static_cast<JDIMENSION>(cRaster.m_nWidth);
    cJpeg.image_height = static_cast<JDIMENSION>(cRaster.m_nHeight);
    cJpeg.input_components = cRaster.m_nChannels;
    cJpeg.in_color_space = bCmyk ? JCS_CMYK : cRaster.m_nChannels == 1 ? JCS_GRAYSCALE : JCS_RGB;
    jpeg_set_defaults(&cJpeg);
    jpeg_set_quality(&cJpeg, 100, TRUE);
    cJpeg.density_unit = static_cast<UINT8>(nUnit);
    cJpeg.X_density = static_cast<UINT16>(nDensity);
    cJpeg.Y_density = static_cast<UINT16>(nDensity);
    jpeg_start_compress(&cJpeg, TRUE);
    for (int y = 0; y < cRaster.m_nHeight; ++y)
    {
        Bytes_t aRow = PackedRow(cRaster, y);
        JSAMPROW pRow = aRow.data();
        jpeg_write_scanlines(&cJpeg, &pRow, 1);
    }
    jpeg_finish_compress(&cJpeg);
    jpeg_destroy_compress(&cJpeg);
    Bytes_t aFile(pBytes, pBytes + nBytes);
    std::free(pBytes);
    return aFile;
}
#endif

#if HAVE_TIFF
Bytes_t TiffFile(const ClRaster& cRaster, const ClTiffStyle& cStyle)
{
    const ClTempFolder cFolder;
    const std::string sPath = cFolder.Path("picture.tif");
    TIFF* pTiff = TIFFOpen(sPath.c_str(), "w");
    Demand(pTiff != nullptr, "TIFFOpen");
    TIFFSetField(pTiff, TIFFTAG_IMAGEWIDTH, cRaster.m_nWidth);
    TIFFSetField(pTiff, TIFFTAG_IMAGELENGTH, cRaster.m_nHeight);
    TIFFSetField(pTiff, TIFFTAG_BITSPERSAMPLE, cRaster.m_nBits);
    TIFFSetField(pTiff, TIFFTAG_SAMPLESPERPIXEL, cRaster.m_nChannels);
    TIFFSetField(pTiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(pTiff, TIFFTAG_ORIENTATION, cStyle.m_nOrientation);
    TIFFSetField(pTiff, TIFFTAG_PHOTOMETRIC,
                 cRaster.m_nChannels == 3 ? PHOTOMETRIC_RGB
                 : cStyle.m_bWhiteIsZero  ? PHOTOMETRIC_MINISWHITE
                                          : PHOTOMETRIC_MINISBLACK);
    TIFFSetField(pTiff, TIFFTAG_COMPRESSION, cStyle.m_bCompressed ? COMPRESSION_LZW : COMPRESSION_NONE);
    if (cStyle.m_fResolution > 0.0f)
    {
        TIFFSetField(pTiff, TIFFTAG_XRESOLUTION, cStyle.m_fResolution);
        TIFFSetField(pTiff, TIFFTAG_YRESOLUTION, cStyle.m_fResolution);
        TIFFSetField(pTiff, TIFFTAG_RESOLUTIONUNIT, cStyle.m_nUnit);
    }
    if (cStyle.m_bTiled)
    {
        constexpr int nSide = 16; // one tile, 8-bit grey
        TIFFSetField(pTiff, TIFFTAG_TILEWIDTH, nSide);
        TIFFSetField(pTiff, TIFFTAG_TILELENGTH, nSide);
        Bytes_t aTile(nSide * nSide);
        for (int y = 0; y < cRaster.m_nHeight; ++y)
        {
            const Bytes_t aRow = PackedRow(cRaster, y);
            std::copy(aRow.begin(), aRow.end(), aTile.begin() + nSide * y);
        }
        Demand(TIFFWriteTile(pTiff, aTile.data(), 0, 0, 0, 0) > 0, "TIFFWriteTile");
    }
    else
    {
        TIFFSetField(pTiff, TIFFTAG_ROWSPERSTRIP, 2);
        for (int y = 0; y < cRaster.m_nHeight; ++y)
        {
            Bytes_t aRow = PackedRow(cRaster, y);
            if (cRaster.m_nBits == 16) // libtiff takes the machine's order
            {
                for (std::size_t i = 0; i + 1 < aRow.size(); i += 2) std::swap(aRow[i], aRow[i + 1]);
            }
            Demand(TIFFWriteScanline(pTiff, aRow.data(), static_cast<std::uint32_t>(y), 0) == 1, "TIFFWriteScanline");
        }
    }
    TIFFClose(pTiff);
    return BytesOf(sPath);
}
#endif

#if HAVE_OPENJPEG
namespace
{
// Puts a resolution box at the end of the header box: capture resolution, vertical and horizontal.
void InsertResolution(Bytes_t& aFile, unsigned int nPels)
{
    const std::string sName = "jp2h";
    const auto itName = std::search(aFile.begin(), aFile.end(), sName.begin(), sName.end());
    const auto nBox = static_cast<std::size_t>(itName - aFile.begin()) - 4;
    std::uint32_t nLength = 0;
    for (std::size_t i = 0; i < 4; ++i) nLength = nLength << 8 | aFile[nBox + i];
    Bytes_t aBoxes;
    PutNumber(aBoxes, 26, 4);
    for (const char c : std::string("res ")) aBoxes.push_back(static_cast<unsigned char>(c));
    PutNumber(aBoxes, 18, 4);
    for (const char c : std::string("resc")) aBoxes.push_back(static_cast<unsigned char>(c));
    for (int i = 0; i < 2; ++i)
    {
        PutNumber(aBoxes, nPels, 2); // a fraction over 10, times ten to the power of 1
        PutNumber(aBoxes, 10, 2);
    }
    PutNumber(aBoxes, 1, 1);
    PutNumber(aBoxes, 1, 1);
    aFile.insert(aFile.begin() + static_cast<std::ptrdiff_t>(nBox + nLength), aBoxes.begin(), aBoxes.end());
    Bytes_t aLength;
    PutNumber(aLength, nLength + 26, 4);
    std::copy(aLength.begin(), aLength.end(), aFile.begin() + static_cast<std::ptrdiff_t>(nBox));
}
} // namespace

Bytes_t Jp2File(const ClRaster& cRaster, unsigned int nPels, bool bCodestream)
{
    const ClTempFolder cFolder;
    const std::string sPath = cFolder.Path("picture.jp2");
    opj_cparameters_t cParameters;
    opj_set_default_encoder_parameters(&cParameters);
    cParameters.numresolution = 1; // the pictures are small
    cParameters.tcp_numlayers = 1;
    cParameters.cp_disto_alloc = 1;
    std::vector<opj_image_cmptparm_t> aPlanes(static_cast<std::size_t>(cRaster.m_nChannels));
    for (opj_image_cmptparm_t& cPlane : aPlanes)
    {
        cPlane = {};
        cPlane.dx = cPlane.dy = 1;
        cPlane.w = static_cast<OPJ_UINT32>(cRaster.m_nWidth);
        cPlane.h = static_cast<OPJ_UINT32>(cRaster.m_nHeight);
        cPlane.prec = static_cast<OPJ_UINT32>(cRaster.m_nBits);
    }
    opj_image_t* pImage = opj_image_create(static_cast<OPJ_UINT32>(aPlanes.size()), aPlanes.data(),
                                           cRaster.m_nChannels == 3 ? OPJ_CLRSPC_SRGB : OPJ_CLRSPC_GRAY);
    pImage->x1 = static_cast<OPJ_UINT32>(cRaster.m_nWidth);
    pImage->y1 = static_cast<OPJ_UINT32>(cRaster.m_nHeight);
    for (int i = 0; i < cRaster.m_nChannels; ++i)
    {
        for (int y = 0; y < cRaster.m_nHeight; ++y)
        {
            for (int x = 0; x < cRaster.m_nWidth; ++x)
            {
                pImage->comps[i].data[y * cRaster.m_nWidth + x] = static_cast<OPJ_INT32>(cRaster.At(x, y, i));
            }
        }
    }
    opj_codec_t* pCodec = opj_create_compress(bCodestream ? OPJ_CODEC_J2K : OPJ_CODEC_JP2);
    Demand(opj_setup_encoder(pCodec, &cParameters, pImage) == OPJ_TRUE, "opj_setup_encoder");
    opj_stream_t* pStream = opj_stream_create_default_file_stream(sPath.c_str(), OPJ_FALSE);
    Demand(opj_start_compress(pCodec, pImage, pStream) == OPJ_TRUE, "opj_start_compress");
    Demand(opj_encode(pCodec, pStream) == OPJ_TRUE, "opj_encode");
    Demand(opj_end_compress(pCodec, pStream) == OPJ_TRUE, "opj_end_compress");
    opj_stream_destroy(pStream);
    opj_destroy_codec(pCodec);
    opj_image_destroy(pImage);
    Bytes_t aFile = BytesOf(sPath);
    if (nPels != 0 && !bCodestream) InsertResolution(aFile, nPels);
    return aFile;
}
#endif

Bytes_t BmpFile(const Bytes_t& aBlock)
{
    Bytes_t aFile = WithFileHeader(aBlock);
    const int nBits = aBlock[14];
    const int nStride = (nBits * (aBlock[4] + 256 * aBlock[5]) + 31) / 32 * 4;
    const int nHeight = aBlock[8] + 256 * aBlock[9];
    PutLong(aFile.data(), 10, static_cast<std::uint32_t>(aFile.size()) - static_cast<std::uint32_t>(nStride * nHeight));
    return aFile;
}

Bytes_t PnmFile(const ClRaster& cRaster)
{
    Bytes_t aFile =
        FromText((cRaster.m_nChannels == 3 ? "P6\n" : "P5\n") + std::to_string(cRaster.m_nWidth) + ' ' +
                 std::to_string(cRaster.m_nHeight) + '\n' + std::to_string((1 << cRaster.m_nBits) - 1) + '\n');
    for (const std::uint16_t nSample : cRaster.m_aSamples) PutNumber(aFile, nSample, cRaster.m_nBits > 8 ? 2 : 1);
    return aFile;
}

Bytes_t FromText(const std::string& sText)
{
    return Bytes_t(sText.begin(), sText.end());
}

ClTempFolder::ClTempFolder()
{
    std::string sName = (std::filesystem::temp_directory_path() / "kormelin-XXXXXX").string();
    if (mkdtemp(sName.data()) == nullptr) throw std::runtime_error("mkdtemp");
    m_cPath = sName;
}

ClTempFolder::~ClTempFolder()
{
    std::error_code cError;
    std::filesystem::remove_all(m_cPath, cError);
}

std::string ClTempFolder::Write(const std::string& sName, const Bytes_t& aBytes) const
{
    return Write(sName, std::string(aBytes.begin(), aBytes.end()));
}

std::string ClTempFolder::Write(const std::string& sName, const std::string& sText) const
{
    const std::filesystem::path cPath = m_cPath / sName;
    std::filesystem::create_directories(cPath.parent_path());
    std::ofstream(cPath, std::ios::binary) << sText;
    return cPath.string();
}

std::string ClTempFolder::Read(const std::string& sName) const
{
    const Bytes_t aBytes = BytesOf(Path(sName));
    return std::string(aBytes.begin(), aBytes.end());
}

std::vector<std::string> ClTempFolder::Names() const
{
    std::vector<std::string> aNames;
    for (const auto& cEntry : std::filesystem::recursive_directory_iterator(m_cPath))
    {
        aNames.push_back(std::filesystem::relative(cEntry.path(), m_cPath).string());
    }
    std::sort(aNames.begin(), aNames.end());
    return aNames;
}

std::vector<std::uint8_t> ExpectedGrey(const ClRaster& cRaster)
{
    const unsigned int nMost = (1u << cRaster.m_nBits) - 1u;
    const auto Reduce = [nMost](double dSample)
    { return static_cast<unsigned int>(std::floor(dSample * 255.0 / nMost + 0.5)); };
    std::vector<std::uint8_t> aGrey;
    for (int y = 0; y < cRaster.m_nHeight; ++y)
    {
        for (int x = 0; x < cRaster.m_nWidth; ++x)
        {
            unsigned int nGrey = Reduce(cRaster.At(x, y));
            if (cRaster.m_nChannels == 3)
            {
                nGrey = (Reduce(cRaster.At(x, y, 2)) * 4729u + Reduce(cRaster.At(x, y, 1)) * 46868u +
                         Reduce(cRaster.At(x, y)) * 13937u) /
                        65536u;
            }
            aGrey.push_back(static_cast<std::uint8_t>(nGrey));
        }
    }
    return aGrey;
}

std::vector<std::uint8_t> GreyOf(SegmentTool::ClPicture& cPicture)
{
    std::vector<std::uint8_t> aGrey;
    for (int y = 0; y < cPicture.Height(); ++y)
    {
        const unsigned char* pRow = cPicture.m_cImage.Data() + static_cast<std::ptrdiff_t>(cPicture.m_cImage.Stride()) *
                                                                   (cPicture.Height() - 1 - y);
        aGrey.insert(aGrey.end(), pRow, pRow + cPicture.Width());
    }
    return aGrey;
}
} // namespace PictureFiles
