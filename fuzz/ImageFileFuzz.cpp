// Bytes as a BMP file and as a KRX record: what loads can be stored and loads again as the same.

#include "ByteSource.hpp"

#include "MemoryStream.hpp"
#include "RDTools/Bitmap.hpp"
#include "RDTools/Exception.hpp"
#include "RDTools/FpImage.hpp"

#include <cstring>

namespace
{
/// False if the bytes are refused, by an exception of the library's own.
template <class Picture> bool Loads(Picture& cPicture, ClStream& cStream)
{
    try
    {
        cPicture.Load(cStream);
        return true;
    }
    catch (const ClException&)
    {
        return false;
    }
}

void AsBitmap(const std::vector<unsigned char>& aBytes, bool bSeekable)
{
    ClMemoryStream cFile(aBytes, bSeekable);
    ClBitmap cBitmap;
    if (!Loads(cBitmap, cFile)) return;
    const auto& cHeader = *cBitmap.m_pBIH;
    for (const long y : {0L, cHeader.biHeight - 1L})
        for (const long x : {0L, cHeader.biWidth - 1L}) cBitmap.GetPixel(x, y);
    cBitmap.IsGray(true);
    try
    {
        ClImage cImage;
        cBitmap.GetImage(cImage);
        ClMemoryStream cStored;
        cBitmap.Store(cStored);
        cStored.Rewind();
        ClBitmap cAgain;
        cAgain.Load(cStored);
        Promise(cAgain.IsEqualSize(cBitmap), "a stored bitmap loads with its size");
    }
    catch (const ClException&)
    {
        // A deep bitmap with a colour table is stored without it, and cannot be loaded.
    }
}

void AsRecord(const std::vector<unsigned char>& aBytes, bool bSeekable, bool bShort)
{
    ClMemoryStream cFile(aBytes, bSeekable);
    cFile.m_bCheckShort = bShort;
    ClImage cImage;
    if (!Loads(cImage, cFile)) return;
    if ((cImage.m_eDataType & 31) == 0 || cImage.Data() == nullptr) return;
    ClMemoryStream cStored;
    cImage.Store(cStored);
    cStored.Rewind();
    ClImage cAgain;
    cAgain.Load(cStored);
    Promise(cAgain.m_nWidth == cImage.m_nWidth && cAgain.m_nHeight == cImage.m_nHeight &&
                cAgain.m_eDataType == cImage.m_eDataType && cAgain.m_nPlanes == cImage.m_nPlanes &&
                cAgain.m_nAttribute == cImage.m_nAttribute,
            "a stored image loads as it was");
}
} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    if (nSize == 0) return 0;
    const unsigned nHow = pData[0];
    const std::vector<unsigned char> aBytes(pData + 1, pData + nSize);
    if (nHow % 2 == 0)
        AsBitmap(aBytes, nHow % 4 == 0);
    else
        AsRecord(aBytes, nHow % 4 == 1, nHow % 8 < 4);
    return 0;
}
