// Bytes as a BMP file and as a KRX record, from streams that can seek and from pipes: the same bytes load as the same
// picture over whatever memory, all of its pixels can be had and set, and what loads can be stored and loads again as
// it was.

#include "ByteSource.hpp"
#include "Promise.hpp"

#include "MemoryStream.hpp"
#include "RDTools/Bitmap.hpp"
#include "RDTools/Exception.hpp"
#include "RDTools/FpImage.hpp"

#include <algorithm>
#include <memory>

namespace
{
constexpr long nMostPixels = 3000;  // that are looked at one by one
constexpr long nMostBytes = 100000; // that are looked at at all

/// 0, or the number of the library's own exception.
template <class Fn> long CodeOf(Fn&& fn)
{
    try
    {
        fn();
        return FPC_SUCCESS;
    }
    catch (const ClException& e)
    {
        Promise(e.Number() < 0 && e.What() != nullptr && *e.What() != '\0', "a code and a text");
        PromiseCode(e.Number());
        return e.Number();
    }
}

/// The packed form, in a block of exactly its size.
std::uint64_t SumOf(const ClBitmap& cBitmap)
{
    const auto& c = cBitmap.Header();
    const auto nPixels = static_cast<std::size_t>(cBitmap.Stride()) * static_cast<std::size_t>(c.biHeight);
    const std::size_t nBytes = 40 + 4 * cBitmap.PalSize(&c) + nPixels;
    const std::unique_ptr<unsigned char[]> pPacked(new unsigned char[nBytes]);
    cBitmap.CopyTo(pPacked.get());
    ClBitmap cAttached;
    cAttached.Attach(pPacked.get(), nBytes);
    Promise(nPixels == 0 || cAttached == cBitmap, "the packed form is the bitmap");
    ClDigest cDigest;
    cDigest.AddBytes(pPacked.get(), nBytes);
    return cDigest.Sum();
}

/// Setting a pixel to its own colour changes no colour.
void TouchPixels(ClBitmap& cBitmap)
{
    const auto& c = cBitmap.Header();
    for (const long y : {-1L, long{c.biHeight}}) Promise(cBitmap.GetPixel(0, y) == 0xffffffffu, "no pixel outside");
    if (c.biHeight > nMostPixels || 1L * c.biWidth * c.biHeight > nMostPixels) return;
    for (long y = 0; y < c.biHeight; ++y)
    {
        for (long x = 0; x < c.biWidth; ++x)
        {
            const unsigned int nColour = cBitmap.GetPixel(x, y);
            cBitmap.SetPixel(x, y, nColour);
            if (c.biCompression == 0) Promise(cBitmap.GetPixel(x, y) == nColour, "a pixel's own colour");
        }
    }
}

/// Channels as images, and back.
void TouchChannels(ClBitmap& cBitmap)
{
    const auto& c = cBitmap.Header();
    ClImage acChannel[4], acPlane[3], cImage;
    if (CodeOf([&] { cBitmap.GetImage(cImage); }) != FPC_SUCCESS) return;
    Promise(cImage.m_nWidth == c.biWidth && cImage.m_nHeight == c.biHeight, "an image of the bitmap's size");
    Promise(cImage.m_nXRes == c.biXPelsPerMeter && cImage.m_nYRes == c.biYPelsPerMeter, "and of its resolution");
    for (int i = 0; i < 4; ++i)
        Promise(CodeOf([&] { cBitmap.GetChannel(i, acChannel[i]); }) == FPC_SUCCESS, "a channel");
    cBitmap.SplitChannels(acPlane[0], acPlane[1], acPlane[2]);
    for (int i = 0; i < 3; ++i)
    {
        acPlane[i].m_nXRes = acChannel[i].m_nXRes;
        acPlane[i].m_nYRes = acChannel[i].m_nYRes;
        ClDigest cChannel, cPlane;
        cChannel.Add(acChannel[i]);
        cPlane.Add(acPlane[i]);
        Promise(cChannel.Sum() == cPlane.Sum(), "one channel alone is as with the others");
    }
    const auto join = [&] { cBitmap.JoinChannels(acChannel[0], acChannel[1], acChannel[2]); };
    Promise(CodeOf(join) == FPC_SUCCESS, "channels go back where they came from");
    if (c.biBitCount > 8) return;
    ClImage cAgain;
    cBitmap.GetImage(cAgain);
    ClDigest cBefore, cAfter;
    cBefore.Add(cImage);
    cAfter.Add(cAgain);
    Promise(cBefore.Sum() == cAfter.Sum(), "colours that go back change nothing");
}

/// A bitmap is stored as the same bytes each time, and loads again with its pixels unless it has a table that is not
/// written.
void StoreAndLoad(ClBitmap& cBitmap)
{
    ClMemoryStream cStored, cTwice, cThird;
    const bool bLosesTable = cBitmap.Header().biBitCount > 8 && cBitmap.Header().biClrUsed != 0;
    if (CodeOf([&] { cBitmap.Store(cStored); }) != FPC_SUCCESS) return;
    cBitmap.Store(cTwice);
    if (!bLosesTable) Promise(cStored.m_aBytes == cTwice.m_aBytes, "a bitmap is stored as the same bytes each time");
    cTwice.Rewind();
    ClBitmap cAgain;
    const long nCode = CodeOf([&] { cAgain.Load(cTwice); });
    if (nCode != FPC_SUCCESS) return;
    Promise(cAgain.IsEqualSize(cBitmap), "a stored bitmap loads with its size");
    cAgain.Store(cThird);
    Promise(cThird.m_aBytes == cTwice.m_aBytes, "and is stored as the same bytes then");
}

/// Loads the bytes, looks at everything and gives the sum of what was loaded.
std::uint64_t AsBitmap(const std::vector<unsigned char>& aBytes, bool bSeekable)
{
    ClMemoryStream cFile(aBytes, bSeekable);
    ClBitmap cBitmap;
    ClDigest cDigest;
    const long nCode = CodeOf([&] { cBitmap.Load(cFile); });
    cDigest.Add(static_cast<std::uint64_t>(nCode));
    if (nCode != FPC_SUCCESS)
    {
        Promise(cBitmap.m_pBIH.get() == nullptr, "a bitmap that does not load is empty");
        return cDigest.Sum();
    }
    const auto& c = cBitmap.Header();
    Promise(c.biHeight >= 0 && c.biPlanes == 1 && (c.biCompression == 0 || c.biCompression == 3), "a decoded bitmap");
    if (1L * cBitmap.Stride() * c.biHeight > nMostBytes) return cDigest.Sum(); // a few bytes can stand for many pixels
    cDigest.Add(SumOf(cBitmap));
    cDigest.Add(std::uint64_t{cBitmap.IsGray(false)});
    cDigest.Add(std::uint64_t{cBitmap.IsGray(true)});
    TouchPixels(cBitmap);
    TouchChannels(cBitmap);
    cDigest.Add(SumOf(cBitmap));
    StoreAndLoad(cBitmap);
    return cDigest.Sum();
}

std::uint64_t AsRecord(const std::vector<unsigned char>& aBytes, bool bSeekable, bool bShort)
{
    ClMemoryStream cFile(aBytes, bSeekable);
    cFile.m_bCheckShort = bShort;
    ClImage cImage;
    ClDigest cDigest;
    const long nCode = CodeOf([&] { cImage.Load(cFile); });
    cDigest.Add(static_cast<std::uint64_t>(nCode));
    const int nSize = ClImage::SampleSize(cImage.m_eDataType);
    if (nSize != 1 && nSize != 2 && nSize != 4 && nSize != 8) cImage.m_pData.reset(); // no samples, so none are read
    cDigest.Add(cImage);
    cImage.IsValid();
    if (nCode != FPC_SUCCESS || cImage.Data() == nullptr) return cDigest.Sum();
    ClMemoryStream cStored, cTwice;
    Promise(CodeOf([&] { cImage.Store(cStored); }) == FPC_SUCCESS, "an image with pixels can be stored");
    cStored.Rewind();
    ClImage cAgain;
    Promise(CodeOf([&] { cAgain.Load(cStored); }) == FPC_SUCCESS, "a stored image loads");
    Promise(cAgain.m_nAttribute == cImage.m_nAttribute, "with its attribute");
    cAgain.Store(cTwice);
    Promise(cTwice.m_aBytes == cStored.m_aBytes, "a stored image loads as it was");
    return cDigest.Sum();
}
} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    if (nSize == 0) return 0;
    const unsigned nHow = pData[0];
    const std::vector<unsigned char> aBytes(pData + 1, pData + nSize);
    LimitNewMemory(nHow / 8 == 17 ? 1 << 26 : 1 << 17); // large pictures cost time, and are refused in the same way
    std::uint64_t anSum[2];
    for (int i = 0; i < 2; ++i)
    {
        FillNewMemory(i == 0 ? 0x00 : 0xff);
        anSum[i] = nHow % 2 == 0 ? AsBitmap(aBytes, nHow % 4 == 0) : AsRecord(aBytes, nHow % 4 == 1, nHow % 8 < 4);
    }
    FillNewMemory(0);
    LimitNewMemory(1 << 26);
    Promise(anSum[0] == anSum[1], "the same bytes load as the same picture");
    return 0;
}
