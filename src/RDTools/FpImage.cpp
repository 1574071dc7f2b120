#include "RDTools/FpImage.hpp"

#include "RDTools/Bitmap.hpp"
#include "RDTools/Exception.hpp"
#include "RDTools/TpArrayStatic.hpp"

#include <cstdint>
#include <cstring>
#include <limits>
#include <utility>

namespace
{
constexpr char szModule[] = "RDTools/FpImage";

/// The range of an image whose type is none of the eight.
const double dNoRange = std::numeric_limits<double>::quiet_NaN();

/// Bytes of a row without wrapping.
std::int64_t HonestRowBytes(int nPlanes, int nWidth, int nSampleSize)
{
    const std::int64_t nSamples = static_cast<std::int64_t>(nPlanes) * nWidth;
    constexpr std::int64_t nLimit = std::int64_t(1) << 40;
    if (nSamples > nLimit || nSamples < -nLimit)
    {
        return nSamples; // already more than any 32-bit stride; the sample size could leave 64 bits
    }
    return (nSamples * nSampleSize + 3) & ~std::int64_t(3);
}

std::int64_t BlockBytes(int nStride, int nHeight)
{
    return static_cast<std::int64_t>(nStride) * nHeight;
}

template <class T> void GatherPlane(const ClImage& cIn, int nPlane, ClImage& cOut)
{
    for (int y = 0; y < cIn.m_nHeight; ++y)
    {
        const T* pIn = Row<T>(cIn, y) + nPlane;
        T* pOut = Row<T>(cOut, y);
        for (int x = 0; x < cIn.m_nWidth; ++x)
        {
            pOut[x] = pIn[static_cast<std::ptrdiff_t>(x) * cIn.m_nPlanes];
        }
    }
}
} // namespace

ClImage::ClImage()
{
    Initialize();
}

ClImage::ClImage(int nWidth, int nHeight, int nPlanes, int nXRes, int nYRes)
{
    Initialize();
    NewWithType(eUInt8, nWidth, nHeight, nPlanes, nXRes, nYRes);
}

// The reference to the block drops with the member. Nothing is made anew, so a destructor never needs memory.
ClImage::~ClImage() = default;

void ClImage::ClearFields()
{
    m_eDataType = static_cast<EDataType>(0);
    m_eContent = eUnknown;
    m_nWidth = 0;
    m_nHeight = 0;
    m_nXRes = 0;
    m_nYRes = 0;
    m_nPlanes = 0;
    m_dBlack = dNoRange;
    m_dWhite = dNoRange;
    m_nAttribute = 0;
}

void ClImage::Initialize()
{
    ClearFields();
    m_pData.reset(); // first, so that a failure below leaves an empty image
    ResetBlock(nullptr, boost::checked_array_deleter<unsigned char>());
}

void ClImage::Delete()
{
    Initialize();
}

void ClImage::Detach()
{
    Initialize();
}

template <class Deleter> void ClImage::ResetBlock(unsigned char* pData, Deleter deleter)
{
    // Without memory for the count the deleter has run on pData, and the old block is still held.
    ConvertBadAlloc([&] { m_pData.reset(pData, deleter); });
}

void ClImage::Describe(const ClImage& cModel)
{
    m_eDataType = cModel.m_eDataType;
    m_eContent = cModel.m_eContent;
    m_nWidth = cModel.m_nWidth;
    m_nHeight = cModel.m_nHeight;
    m_nXRes = cModel.m_nXRes;
    m_nYRes = cModel.m_nYRes;
    m_nPlanes = cModel.m_nPlanes;
    m_dBlack = cModel.m_dBlack;
    m_dWhite = cModel.m_dWhite;
    m_nAttribute = cModel.m_nAttribute;
}

/// Whether a 32-bit stride holds the row as it is.
bool ClImage::RowFits(int nPlanes, int nWidth, int nSampleSize)
{
    return HonestRowBytes(nPlanes, nWidth, nSampleSize) == RowBytes(nPlanes, nWidth, nSampleSize);
}

void ClImage::NewWithType(unsigned char eType, int nWidth, int nHeight, int nPlanes, int nXRes, int nYRes)
{
    // After a refusal two negative sizes may stand, whose product is no size of the block.
    const std::int64_t nOldBytes = m_nHeight < 0 && Stride() < 0 ? -1 : BlockBytes(Stride(), m_nHeight);

    m_eDataType = static_cast<EDataType>(eType);
    m_nWidth = nWidth;
    m_nHeight = nHeight;
    m_nPlanes = nPlanes;
    m_nXRes = nXRes;
    m_nYRes = nYRes;
    ContentFromPlanes(nPlanes);
    BlackWhiteFromType(eType);

    const int nStride = Stride();
    // Of no rows, however wide, there are no bytes.
    const bool bRowFits = nHeight == 0 || RowFits(nPlanes, nWidth, SampleSize(eType));
    // Compared in 64 bits: two sizes that are equal only after wrapping are not the same block.
    if (m_pData.use_count() == 1 && bRowFits && nOldBytes == BlockBytes(nStride, nHeight))
    {
        return;
    }
    if (nHeight < 0 || nStride < 0)
    {
        throw ClException("Image area must be positive", FPC_ERROR_INTERNAL, false, "Unknown", -1);
    }
    try
    {
        if (!bRowFits)
        {
            ThrowBadAlloc();
        }
        const bool bArea = nHeight != 0 && nStride != 0;
        const std::size_t nBytes = (static_cast<std::size_t>(BlockBytes(nStride, nHeight)) + 7) & ~std::size_t(7);
        ResetBlock(bArea ? NewArray<unsigned char>(nBytes) : nullptr, boost::checked_array_deleter<unsigned char>());
    }
    catch (const ClExBadAlloc&)
    {
        Initialize();
        throw;
    }
}

void ClImage::NewWithType(const ClImage& cModel, unsigned char eType)
{
    if (&cModel == this)
    {
        throw ClException("this function dose not work on the same image.", FPC_ERROR_INVALID_PARAMETER, true, szModule,
                          __LINE__);
    }
    NewWithType(eType, cModel.m_nWidth, cModel.m_nHeight, cModel.m_nPlanes, cModel.m_nXRes, cModel.m_nYRes);
    m_eContent = cModel.m_eContent;
    m_nAttribute = cModel.m_nAttribute;
}

void ClImage::New(const ClImage& cModel)
{
    if (&cModel == this)
    {
        return;
    }
    NewWithType(cModel.m_eDataType, cModel.m_nWidth, cModel.m_nHeight, cModel.m_nPlanes, cModel.m_nXRes,
                cModel.m_nYRes);
    m_eContent = cModel.m_eContent;
    m_nAttribute = cModel.m_nAttribute;
    m_dBlack = cModel.m_dBlack;
    m_dWhite = cModel.m_dWhite;
}

void ClImage::Resize(const ClImage& cModel, unsigned char eType)
{
    if (&cModel == this)
    {
        throw ClException("Resize image with im self is senseless.", FPC_ERROR_INVALID_PARAMETER, true, szModule,
                          __LINE__);
    }
    NewWithType(eType, cModel.m_nWidth, cModel.m_nHeight, cModel.m_nPlanes, cModel.m_nXRes, cModel.m_nYRes);
    m_eContent = cModel.m_eContent;
    m_dBlack = cModel.m_dBlack;
    m_dWhite = cModel.m_dWhite;
}

ClImage& ClImage::operator=(const ClImage& cOther)
{
    if (&cOther == this)
    {
        return *this;
    }
    New(cOther);
    const std::int64_t nBytes = BlockBytes(Stride(), m_nHeight);
    if (nBytes > 0 && Data() != nullptr && cOther.Data() != nullptr)
    {
        std::memmove(Data(), cOther.Data(), static_cast<std::size_t>(nBytes)); // both may borrow the same memory
    }
    return *this;
}

ClImage& ClImage::operator=(const ClBitmap& cBitmap)
{
    ClImage cTemporary;
    try
    {
        if (cTemporary.Attach(cBitmap))
        {
            return *this = cTemporary;
        }
    }
    catch (const ClException&)
    {
        Initialize();
        throw;
    }
    Initialize();
    return *this;
}

void ClImage::Attach(const ClImage& cOther)
{
    Delete();
    Describe(cOther);
    m_pData = cOther.m_pData;
}

void ClImage::Attach(void* pData, const ClImage& cModel)
{
    ClImage cDescription;
    cDescription.Describe(cModel); // the model may be this image
    Delete();
    ResetBlock(static_cast<unsigned char*>(pData), void_deleter()); // first: without memory the image stays empty
    Describe(cDescription);
}

void ClImage::Attach(void* pData, unsigned char eType, int nWidth, int nHeight, int nPlanes, int nXRes, int nYRes)
{
    Delete();
    ResetBlock(static_cast<unsigned char*>(pData), void_deleter());
    m_eDataType = static_cast<EDataType>(eType);
    m_nWidth = nWidth;
    m_nHeight = nHeight;
    m_nPlanes = nPlanes;
    m_nXRes = nXRes;
    m_nYRes = nYRes;
    ContentFromPlanes(nPlanes);
    BlackWhiteFromType(eType);
}

bool ClImage::Attach(const ClBitmap& cBitmap)
{
    Delete();
    if (cBitmap.m_pBIH.get() == nullptr)
    {
        throw ClExVelmarin(FPC_ERROR_BITMAP_PTR, szModule, __LINE__);
    }
    const tagBITMAPINFOHEADER& cHeader = *cBitmap.m_pBIH;
    if (cHeader.biCompression != 0)
    {
        Initialize();
        return false;
    }
    switch (cHeader.biBitCount)
    {
    case 8: m_nPlanes = 1; break;
    case 24: m_nPlanes = 3; break;
    case 32: m_nPlanes = 4; break;
    default: throw ClException("bitmap bit depth not supported\n", FPC_ERROR_BITMAP_BITCOUNT, true, szModule, __LINE__);
    }
    m_eDataType = eUInt8;
    m_nHeight = cHeader.biHeight;
    m_nWidth = cHeader.biWidth;
    m_nXRes = cHeader.biXPelsPerMeter;
    m_nYRes = cHeader.biYPelsPerMeter;
    m_pData = cBitmap.m_pPixels;
    ContentFromPlanes(m_nPlanes);
    BlackWhiteFromType(m_eDataType);
    return true;
}

const char* ClImage::RangeFault() const
{
    if (m_nWidth < 0 || m_nHeight < 0 || m_nXRes < 0 || m_nYRes < 0)
    {
        return "ClImage::IsValid. Wrong width, height or dpi";
    }
    if (m_dBlack > m_dWhite)
    {
        return "ClImage::IsValid. value of Black should be < than value of White";
    }
    if (!(m_dBlack >= 0.0) && !IsSignedType(m_eDataType)) // not a number fails here
    {
        return "ClImage::IsValid. Unsigned require data range >= 0";
    }
    if (m_eDataType == eUInt8 && !(m_dBlack == 0.0 && m_dWhite == 255.0))
    {
        return "ClImage::IsValid. Char require data range 0...255";
    }
    if (m_eDataType == eSInt8 && !(m_dBlack == -128.0 && m_dWhite == 127.0))
    {
        return "ClImage::IsValid. Signed Char require data range -128...127";
    }
    return nullptr;
}

bool ClImage::IsValid() const
{
    if (RangeFault() != nullptr)
    {
        return false;
    }
    if (static_cast<unsigned int>(m_nWidth) * static_cast<unsigned int>(m_nHeight) == 0)
    {
        return true;
    }
    return m_nPlanes >= 1 && m_nPlanes <= 4;
}

bool ClImage::CheckValid() const
{
    if (const char* szFault = RangeFault())
    {
        throw ClException(szFault, FPC_ERROR_INTERNAL, false, "Unknown", -1);
    }
    return true;
}

void ClImage::BlackWhiteFromType(unsigned char eType)
{
    m_dBlack = dNoRange;
    m_dWhite = dNoRange;
    DispatchSampleType(eType, 0,
                       [this](auto cTag)
                       {
                           using T = typename decltype(cTag)::Type;
                           const bool bFloat = std::numeric_limits<T>::is_iec559;
                           m_dBlack = bFloat ? -1.0 : static_cast<double>(std::numeric_limits<T>::lowest());
                           m_dWhite = bFloat ? 1.0 : static_cast<double>(std::numeric_limits<T>::max());
                           return 0L;
                       });
}

void ClImage::ContentFromPlanes(int nPlanes)
{
    m_eContent = nPlanes == 1 ? eGrayscale : nPlanes == 3 ? eRGB : nPlanes == 4 ? eRGBA : eUnknown;
}

void ClImage::Swap(ClImage& cOther)
{
    if (&cOther == this)
    {
        return;
    }
    std::swap(m_eDataType, cOther.m_eDataType);
    std::swap(m_eContent, cOther.m_eContent);
    std::swap(m_nWidth, cOther.m_nWidth);
    std::swap(m_nHeight, cOther.m_nHeight);
    std::swap(m_nXRes, cOther.m_nXRes);
    std::swap(m_nYRes, cOther.m_nYRes);
    m_pData.swap(cOther.m_pData);
    std::swap(m_nPlanes, cOther.m_nPlanes);
    std::swap(m_dBlack, cOther.m_dBlack);
    std::swap(m_dWhite, cOther.m_dWhite);
    std::swap(m_nAttribute, cOther.m_nAttribute);
}

void ClImage::GetPlane(int nPlane, ClImage& cOut) const
{
    if (&cOut == this)
    {
        ClImage cSource;
        cSource.Attach(*this); // keeps the pixels while the image is made anew
        cSource.GetPlane(nPlane, cOut);
        return;
    }
    DispatchSampleType(m_eDataType, 0,
                       [&](auto cTag)
                       {
                           cOut.NewWithType(m_eDataType, m_nWidth, m_nHeight, 1, m_nXRes, m_nYRes);
                           if (cOut.Data() == nullptr || Data() == nullptr)
                           {
                               return 0L;
                           }
                           GatherPlane<typename decltype(cTag)::Type>(*this, nPlane, cOut);
                           return 0L;
                       });
}

void ClImage::FillAligment(int nValue)
{
    const int nStride = Stride();
    if (Data() == nullptr || m_nWidth < 0 || m_nWidth >= nStride)
    {
        return;
    }
    for (int y = 0; y < m_nHeight; ++y)
    {
        std::memset(Row<unsigned char>(*this, y) + m_nWidth, nValue, static_cast<std::size_t>(nStride - m_nWidth));
    }
}
