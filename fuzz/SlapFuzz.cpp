// Pictures that look like slaps, drawn as the bytes say near the working resolution or above it, through the whole
// road: twice, over memory that differs, with the same result, with boxes inside the picture and the input as it was.

#include "Picture.hpp"
#include "Promise.hpp"

#include "RDAfisTools/IpFourPrintSegmentation.hpp"
#include "RDTools/Exception.hpp"

#include <cstring>

namespace
{
constexpr int nPels = 3937;

void Draw(ClImage& cImage, ClByteSource& cBytes)
{
    const unsigned nKind = cBytes.Byte();
    const int nMost = nKind % 8 == 0 ? 400 : 80; // most pictures are small: more of them run
    const int nWidth = 160 + cBytes.Byte() * nMost / 255, nHeight = 160 + cBytes.Byte() * nMost / 255;
    const int nXRes = nKind / 8 % 8 == 0 ? cBytes.Between(3890, 9000) : nPels;
    const int nYRes = nKind / 8 % 16 == 0 ? cBytes.Between(3890, 9000) : nXRes;
    cImage.NewWithType(ClImage::eUInt8, nWidth, nHeight, 1, nXRes, nYRes);
    DrawPicture({cImage.Data(), nWidth, nHeight, cImage.Stride()}, cBytes);
}

/// The rectangles that leave the library. Rows are scaled as columns are, and the picture in which a leaning hand
/// stands upright is higher than the input: a finger may come to lie above the input, whose last row limits the top
/// alone.
void PromiseRectangle(const ClImage& cInput, double dRotation, const tagRECT& cRect)
{
    Promise(cRect.left >= 0 && cRect.bottom >= 0, "a rectangle begins inside the picture");
    Promise(cRect.right < cInput.m_nWidth && cRect.top < cInput.m_nHeight, "a rectangle ends inside the picture");
    Promise(cRect.left <= cRect.right, "a rectangle's sides are in order");
    Promise(cRect.bottom <= cRect.top || cInput.m_nXRes != cInput.m_nYRes || dRotation != 0.0,
            "a rectangle's top is above its bottom");
}

void AddFingers(ClDigest& cDigest, const ClIpFourPrintSegmentation& cProcessor, const ClImage& cInput)
{
    const auto nFingers = static_cast<unsigned long>(cProcessor.m_nFingers);
    Promise(nFingers <= 4 || !cProcessor.m_bCutFingers, "at most four fingers");
    Promise(cProcessor.m_nHand >= 0 && cProcessor.m_nHand <= 3, "a hand or none");
    cDigest.Add(nFingers);
    cDigest.Add(static_cast<std::uint64_t>(cProcessor.m_nHand));
    for (const bool bSlot : cProcessor.m_abFingerSlots) cDigest.Add(std::uint64_t{bSlot});
    if (!cProcessor.m_bCutFingers) return;
    Promise(cProcessor.m_aRects.Entries() == cProcessor.m_aImages.Entries(), "an image for each rectangle");
    for (unsigned long i = 0; i < cProcessor.m_aRects.Entries(); ++i)
    {
        const tagRECT& cRect = cProcessor.m_aRects[i];
        const ClImage& cFinger = cProcessor.m_aImages[i];
        PromiseRectangle(cInput, cProcessor.m_dRotation, cRect);
        Promise(cFinger.m_nWidth <= 500 && cFinger.m_nHeight <= 500, "images of at most 500 by 500");
        Promise(cFinger.m_nXRes == cInput.m_nXRes && cFinger.m_nYRes == cInput.m_nYRes, "the input's resolution");
        Promise(cFinger.Data() != nullptr && cFinger.m_nPlanes == 1, "an image of each finger");
        cDigest.AddBytes(&cRect, sizeof cRect);
        cDigest.Add(cFinger);
    }
}

/// Code or fingers, and everything that tells them apart.
std::uint64_t Results(ClImage& cImage, unsigned nHow, unsigned char nMemory)
{
    FillNewMemory(nMemory);
    ClIpFourPrintSegmentation cProcessor;
    ClImage cBinary;
    cProcessor.m_pInImage = &cImage;
    if (nHow % 4 == 1) cProcessor.m_pOutImage = &cBinary;
    cProcessor.m_bReverseOrder = nHow % 16 == 5;
    cProcessor.m_bKeepOrder = nHow % 32 == 5;
    cProcessor.m_bRefineFingers = nHow % 32 != 7;
    cProcessor.m_bCutFingers = nHow % 32 != 11;
    ClDigest cDigest;
    try
    {
        const long nCode = cProcessor.Apply();
        PromiseCode(nCode);
        cDigest.Add(static_cast<std::uint64_t>(nCode));
        if (nCode != FPC_SUCCESS) return cDigest.Sum();
        AddFingers(cDigest, cProcessor, cImage);
        cDigest.Add(cBinary);
        if (nHow % 8 == 3)
        {
            ClImage cPicture;
            PromiseCode(cProcessor.CreateDemoPicture(&cPicture, cProcessor.m_dRotation));
            cDigest.Add(cPicture);
        }
    }
    catch (const ClException& e)
    {
        PromiseCode(e.Number());
        cDigest.Add(static_cast<std::uint64_t>(e.Number()));
    }
    return cDigest.Sum();
}
} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    ClByteSource cBytes(pData, nSize);
    const unsigned nHow = cBytes.Byte();
    ClImage cImage;
    Draw(cImage, cBytes);
    ClImage cBefore;
    cBefore = cImage;
    const std::uint64_t nFirst = Results(cImage, nHow, 0x00);
    Promise(std::memcmp(cBefore.Data(), cImage.Data(),
                        static_cast<std::size_t>(cImage.m_nHeight) * static_cast<std::size_t>(cImage.Stride())) == 0,
            "the input is never written to");
    Promise(nFirst == Results(cImage, nHow, 0xff), "the same input gives the same result");
    FillNewMemory(0);
    return 0;
}
