#include "RDTools/Exception.hpp"
#include "RDTools/FileStream.hpp"
#include "RDTools/FpImage.hpp"
#include "RDTools/Stream.hpp"

#include <cstdint>

namespace
{
constexpr char szModule[] = "RDTools/FpImageFile";

constexpr std::uint32_t nMagic = 0x4B525800; // in network order the letters K, R, X and a zero byte
constexpr std::uint32_t nWithoutAttribute = 0;
constexpr std::uint32_t nVersionWritten = 1;

constexpr char szNoEnd[] = "KRX end Magic is missing";

[[noreturn]] void ThrowDamaged(const char* szComment)
{
    throw ClException(szComment, FPC_ERROR_INTERNAL, false, "Unknown", -1);
}

/// A field that is cut off is 0: of the magic number the last byte is 0, and the three before it are not enough.
template <class T> T ReadField(ClStream& cStream)
{
    T value = {};
    return cStream.ReadAutoSwap(value) == sizeof value ? value : T();
}

/// Samples of a record, the padding of the rows among them. None for a sample size that is no number's, or a size that
/// no block has.
unsigned long SamplesOfRecord(unsigned char eType, int nWidth, int nHeight, int nPlanes)
{
    const int nSize = ClImage::SampleSize(eType);
    const int nStride = ClImage::RowBytes(nPlanes, nWidth, nSize);
    const bool bNumber = nSize == 1 || nSize == 2 || nSize == 4 || nSize == 8;
    return bNumber && nStride > 0 && nHeight > 0
               ? static_cast<unsigned long>(nHeight) * static_cast<unsigned long>(nStride / nSize)
               : 0;
}

unsigned long SamplesOfRecord(const ClImage& cImage)
{
    return SamplesOfRecord(cImage.m_eDataType, cImage.m_nWidth, cImage.m_nHeight, cImage.m_nPlanes);
}

void CheckBlock(const ClImage& cImage)
{
    if (cImage.Data() == nullptr && SamplesOfRecord(cImage) > 0)
    {
        throw ClExVelmarin(FPC_ERROR_BITMAP_PTR, szModule, __LINE__);
    }
}

/// Reads the samples into the block. An image that is not whole would hold bytes that nobody set: it is emptied.
void LoadSamples(ClStream& cStream, ClImage& cImage, unsigned long nSamples)
{
    if (nSamples == 0)
    {
        return;
    }
    const auto nSize = static_cast<unsigned long>(ClImage::SampleSize(cImage.m_eDataType));
    unsigned long nMoved = 0;
    try
    {
        nMoved = static_cast<unsigned long>(cStream.ReadNumericArray(cImage.Data(), nSamples, nSize));
    }
    catch (...)
    {
        cImage.Delete();
        throw;
    }
    if (nMoved < nSamples * nSize)
    {
        cImage.Delete();
        ThrowDamaged(szNoEnd);
    }
}
} // namespace

void ClImage::Store(ClStream& cStream) const
{
    CheckBlock(*this);
    cStream.WriteAutoSwap(nMagic);
    cStream.WriteAutoSwap(nVersionWritten);
    cStream.WriteAutoSwap(m_eDataType);
    cStream.WriteAutoSwap(m_nWidth);
    cStream.WriteAutoSwap(m_nHeight);
    cStream.WriteAutoSwap(m_nPlanes);
    cStream.WriteAutoSwap(m_nXRes);
    cStream.WriteAutoSwap(m_nYRes);
    cStream.WriteAutoSwap(m_eContent);
    cStream.WriteAutoSwap(m_dWhite);
    cStream.WriteAutoSwap(m_dBlack);
    cStream.WriteAutoSwap(m_nAttribute);
    cStream.WriteNumericArray(Data(), SamplesOfRecord(*this), static_cast<unsigned long>(SampleSize(m_eDataType)));
    cStream.WriteAutoSwap(nMagic);
}

void ClImage::Store(const char* szName) const
{
    CheckBlock(*this);
    ClFileStream cStream(szName, "wb");
    Store(cStream);
    cStream.Close();
}

void ClImage::Load(ClStream& cStream)
{
    Delete();
    if (ReadField<std::uint32_t>(cStream) != nMagic)
    {
        ThrowDamaged("KRX Magic is missing");
    }
    const auto nVersion = ReadField<std::uint32_t>(cStream);
    if (nVersion > nVersionWritten)
    {
        ThrowDamaged("Wrong KRX version");
    }
    const auto eType = ReadField<unsigned char>(cStream);
    const auto nWidth = ReadField<int>(cStream);
    const auto nHeight = ReadField<int>(cStream);
    const auto nPlanes = ReadField<int>(cStream);
    const auto nXRes = ReadField<int>(cStream);
    const auto nYRes = ReadField<int>(cStream);
    const auto eContent = ReadField<EContent>(cStream);
    const auto dWhite = ReadField<double>(cStream);
    const auto dBlack = ReadField<double>(cStream);
    const int nAttribute = nVersion == nWithoutAttribute ? 0 : ReadField<int>(cStream);

    const unsigned long nSamples = SamplesOfRecord(eType, nWidth, nHeight, nPlanes);
    const unsigned long nBytes = nSamples * static_cast<unsigned long>(SampleSize(eType));
    const unsigned long nAhead = cStream.BytesAhead();
    if (nAhead < nBytes && RowFits(nPlanes, nWidth, SampleSize(eType)))
    {
        cStream.CheckMoved(nAhead, nBytes);
        ThrowDamaged(szNoEnd); // the samples that are missing would have stood before it
    }
    NewWithType(eType, nWidth, nHeight, nPlanes, nXRes, nYRes);
    m_dWhite = dWhite;
    m_dBlack = dBlack;
    m_eContent = eContent;
    m_nAttribute = nAttribute;
    LoadSamples(cStream, *this, nSamples);
    if (ReadField<std::uint32_t>(cStream) != nMagic)
    {
        ThrowDamaged(szNoEnd);
    }
}

void ClImage::Load(const char* szName)
{
    ClFileStream cStream(szName, "rb");
    Load(cStream);
    cStream.Close();
}
