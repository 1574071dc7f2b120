/// Velmarin Kormelin Segmentation for C++17: the functions of VelmarinKormelinSegmentation.h behind handles that free
/// themselves and exceptions that carry the number of the error. Header only; link the library as in C.
///
///     kormelin::Library cLibrary;                                // first, and until the last handle is made
///     kormelin::Segmentation cRun;
///     cRun.Run(aBitmapFile.data(), aBitmapFile.size());
///     for (const kormelin::Segment& cFinger : cRun.Segments())
///         Use(cFinger.X(), cFinger.Y(), cFinger.Picture());
///
/// Coordinates, resolutions, limits and the conditions of each error are those of the C header. Every function that
/// talks to the library throws kormelin::Error for a number other than 0; memory failure of the wrapper itself is
/// std::bad_alloc, of the library Error with FPC_ERROR_OUT_OF_MEMORY (-102).
/// Threads: different handles may be used on different threads at the same time, one handle on one thread at a time.
#ifndef VELMARINKORMELINSEGMENTATION_HPP
#define VELMARINKORMELINSEGMENTATION_HPP

#include "VelmarinKormelinSegmentation.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace kormelin
{
/// A failure of the library. what() is "FUNCTION: TEXT (NUMBER)".
class Error : public std::runtime_error
{
public:
    Error(const char* szFunction, long nCode)
        : std::runtime_error(std::string(szFunction) + ": " + KSGetErrorDescriptionA(nCode) + " (" +
                             std::to_string(nCode) + ")"),
          m_nCode(nCode)
    {
    }

    /// A number of the catalogue in the C header, below 0.
    long Code() const noexcept { return m_nCode; }

private:
    long m_nCode;
};

namespace detail
{
inline void Check(const char* szFunction, long nCode)
{
    if (nCode != FPC_SUCCESS) throw Error(szFunction, nCode);
}

/// Owns one handle, moves, does not copy. Empty after it was moved from: each call then throws -42.
class Handle
{
public:
    explicit Handle(long (*pCreate)(void**), const char* szFunction) { Check(szFunction, pCreate(&m_hHandle)); }
    ~Handle() { Destroy(); }
    Handle(Handle&& cOther) noexcept : m_hHandle(std::exchange(cOther.m_hHandle, nullptr)) {}
    Handle& operator=(Handle&& cOther) noexcept
    {
        if (this != &cOther)
        {
            Destroy();
            m_hHandle = std::exchange(cOther.m_hHandle, nullptr);
        }
        return *this;
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    void* Get() const noexcept { return m_hHandle; }

    long Long(const char* szName) const
    {
        long nValue = 0;
        Check(szName, KSGetPropertyLongA(m_hHandle, szName, &nValue));
        return nValue;
    }
    void SetLong(const char* szName, long nValue) { Check(szName, KSSetPropertyLongA(m_hHandle, szName, nValue)); }

private:
    // A handle that KSCreate... gave is freed without fail.
    void Destroy() noexcept
    {
        if (m_hHandle != nullptr) KSDestroyHandle(&m_hHandle);
    }

    void* m_hHandle = nullptr;
};
} // namespace detail

/// The library's version, for example "1.1.1407.3". Needs no Library.
inline std::string Version()
{
    char szVersion[64] = "";
    unsigned long nSize = sizeof szVersion;
    detail::Check("KSGetVersionA", KSGetVersionA(szVersion, &nSize));
    return szVersion;
}

/// One reference to the library: handles can be made while at least one exists. Handles that were made live on.
class Library
{
public:
    Library() { detail::Check("KSInitialize", KSInitialize(nullptr)); }
    ~Library() { KSUninitialize(); }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;
};

/// A grey picture, 8 bits a pixel, rows from the top of the picture down, without padding: pixel (x, y) is
/// m_aPixels[y * m_nWidth + x].
struct GreyPicture
{
    std::size_t m_nWidth = 0;
    std::size_t m_nHeight = 0;
    long m_nPelsPerMetre = 0; ///< 19685 is 500 pixels per inch
    std::vector<unsigned char> m_aPixels;
};

/// The packed bitmap (header, 256 greys, rows bottom-up) that KSSegmentBitmap takes, of rows of grey pixels.
/// pPixels: the first pixel of the top row. nStride: bytes from one row to the next, at least nWidth.
/// Throws std::invalid_argument for a side of 0, a picture over 2 GB, a stride below the width or pels per metre out of
/// the range of 32 bits.
inline std::vector<unsigned char> MakeBitmap(const unsigned char* pPixels, std::size_t nWidth, std::size_t nHeight,
                                             std::size_t nStride, long nPelsPerMetre)
{
    constexpr std::size_t nColours = 256;
    constexpr std::size_t nLimit = 0x7fffffff - sizeof(tagBITMAPINFOHEADER) - 4 * nColours;
    if (pPixels == nullptr || nWidth == 0 || nHeight == 0 || nStride < nWidth || nWidth > nLimit - 3 ||
        nHeight > nLimit / ((nWidth + 3) / 4 * 4) || nPelsPerMetre < 0 || nPelsPerMetre > 0x7fffffff)
        throw std::invalid_argument("kormelin::MakeBitmap: the picture cannot be a bitmap");

    const std::size_t nRow = (nWidth + 3) / 4 * 4;
    tagBITMAPINFOHEADER cHeader{};
    cHeader.biSize = sizeof cHeader;
    cHeader.biWidth = static_cast<std::int32_t>(nWidth);
    cHeader.biHeight = static_cast<std::int32_t>(nHeight);
    cHeader.biPlanes = 1;
    cHeader.biBitCount = 8;
    cHeader.biSizeImage = static_cast<std::uint32_t>(nRow * nHeight);
    cHeader.biXPelsPerMeter = static_cast<std::int32_t>(nPelsPerMetre);
    cHeader.biYPelsPerMeter = static_cast<std::int32_t>(nPelsPerMetre);

    std::vector<unsigned char> aBitmap(sizeof cHeader + 4 * nColours + nRow * nHeight);
    std::memcpy(aBitmap.data(), &cHeader, sizeof cHeader);
    unsigned char* pColour = aBitmap.data() + sizeof cHeader;
    for (std::size_t i = 0; i < nColours; ++i, pColour += 4) std::memset(pColour, static_cast<int>(i), 3);
    unsigned char* const pRows = pColour;
    for (std::size_t y = 0; y < nHeight; ++y)
        std::memcpy(pRows + (nHeight - 1 - y) * nRow, pPixels + y * nStride, nWidth);
    return aBitmap;
}

/// One finger: its rectangle in the input and its picture. Keeps both whatever becomes of the Segmentation.
class Segment
{
public:
    Segment() : m_cHandle(KSCreateSegmentHandle, "KSCreateSegmentHandle") {}

    long X() const { return m_cHandle.Long("x"); }
    /// The lower edge counted upward, or the upper edge counted downward: see Origin.
    long Y() const { return m_cHandle.Long("y"); }
    long Width() const { return m_cHandle.Long("Width"); }
    long Height() const { return m_cHandle.Long("Height"); }
    long FingerPosition() const { return m_cHandle.Long("FingerPosition"); }

    /// The packed bitmap: header, 256 greys, rows bottom-up.
    std::vector<unsigned char> Bitmap() const
    {
        unsigned long nSize = 0;
        const long nCode = KSGetBitmap(m_cHandle.Get(), nullptr, &nSize);
        if (nCode != FPC_ERROR_TEMPLATE_SIZE) detail::Check("KSGetBitmap", nCode);
        std::vector<unsigned char> aBitmap(nSize);
        detail::Check("KSGetBitmap",
                      KSGetBitmap(m_cHandle.Get(), reinterpret_cast<tagBITMAPINFOHEADER*>(aBitmap.data()), &nSize));
        return aBitmap;
    }

    /// The same picture as bare rows from the top down. At most 500 by 500 pixels.
    GreyPicture Picture() const
    {
        const std::vector<unsigned char> aBitmap = Bitmap();
        tagBITMAPINFOHEADER cHeader;
        std::memcpy(&cHeader, aBitmap.data(), sizeof cHeader);
        GreyPicture cPicture;
        cPicture.m_nWidth = static_cast<std::size_t>(cHeader.biWidth);
        cPicture.m_nHeight = static_cast<std::size_t>(cHeader.biHeight);
        cPicture.m_nPelsPerMetre = cHeader.biXPelsPerMeter;
        const std::size_t nRow = (cPicture.m_nWidth + 3) / 4 * 4;
        const unsigned char* const pEnd = aBitmap.data() + aBitmap.size();
        cPicture.m_aPixels.reserve(cPicture.m_nWidth * cPicture.m_nHeight);
        for (std::size_t y = 1; y <= cPicture.m_nHeight; ++y)
            cPicture.m_aPixels.insert(cPicture.m_aPixels.end(), pEnd - y * nRow, pEnd - y * nRow + cPicture.m_nWidth);
        return cPicture;
    }

    /// The handle, for the functions of the C header. Stays owned here.
    void* Get() const noexcept { return m_cHandle.Get(); }

private:
    detail::Handle m_cHandle;
};

enum class Mode : long
{
    eFingers = 0, ///< the fingers, at most two
    eBiggest = 1  ///< the biggest connected object, whatever it is
};

/// Which y a Segment reports.
enum class Origin : long
{
    eBottom = 0, ///< the lower edge, counted upward from the bottom row
    eTop = 1     ///< the upper edge, counted downward from the top row
};

/// Runs, and keeps the results of its last run.
class Segmentation
{
public:
    explicit Segmentation(Mode eMode = Mode::eFingers, Origin eOrigin = Origin::eTop)
        : m_cHandle(KSCreateSegmentationHandle, "KSCreateSegmentationHandle")
    {
        SetMode(eMode);
        SetOrigin(eOrigin);
    }

    void SetMode(Mode eMode) { m_cHandle.SetLong("SegmentationMode", static_cast<long>(eMode)); }
    void SetOrigin(Origin eOrigin) { m_cHandle.SetLong("CoordinateOrigin", static_cast<long>(eOrigin)); }

    /// A run on a packed bitmap or a whole BMP file in memory, which is read and not kept. Its size must be known: 0
    /// throws FPC_ERROR_TEMPLATE_SIZE (-21).
    void Run(const void* pBitmap, std::size_t nSize)
    {
        if (nSize == 0) throw Error("KSSegmentBitmap", FPC_ERROR_TEMPLATE_SIZE);
        detail::Check("KSSegmentBitmap",
                      KSSegmentBitmap(m_cHandle.Get(), static_cast<const tagBITMAPINFOHEADER*>(pBitmap), nSize));
    }

    /// A run on rows of grey pixels: see MakeBitmap.
    void Run(const unsigned char* pPixels, std::size_t nWidth, std::size_t nHeight, std::size_t nStride,
             long nPelsPerMetre)
    {
        const std::vector<unsigned char> aBitmap = MakeBitmap(pPixels, nWidth, nHeight, nStride, nPelsPerMetre);
        Run(aBitmap.data(), aBitmap.size());
    }

    void Run(const GreyPicture& cPicture)
    {
        if (cPicture.m_nWidth != 0 && cPicture.m_aPixels.size() / cPicture.m_nWidth < cPicture.m_nHeight)
            throw std::invalid_argument("kormelin::Segmentation::Run: fewer pixels than the sides tell");
        Run(cPicture.m_aPixels.data(), cPicture.m_nWidth, cPicture.m_nHeight, cPicture.m_nWidth,
            cPicture.m_nPelsPerMetre);
    }

    /// Segments of the last run, 0 before the first. After FPC_ERROR_PARAM_OUT_OF_RANGE (-35) the number of fingers,
    /// more than the two that can be had.
    std::size_t Count() const { return static_cast<std::size_t>(m_cHandle.Long("Count")); }

    Segment Get(std::size_t nIndex) const
    {
        // An index beyond int would wrap into a valid one.
        if (nIndex > static_cast<std::size_t>(std::numeric_limits<int>::max()))
            throw Error("KSGetSegment", FPC_ERROR_PARAM_OUT_OF_RANGE);
        Segment cSegment;
        detail::Check("KSGetSegment", KSGetSegment(m_cHandle.Get(), static_cast<int>(nIndex), cSegment.Get()));
        return cSegment;
    }

    std::vector<Segment> Segments() const
    {
        std::vector<Segment> aSegments;
        for (std::size_t i = 0; i < Count(); ++i) aSegments.push_back(Get(i));
        return aSegments;
    }

    /// The handle, for the functions of the C header. Stays owned here.
    void* Handle() const noexcept { return m_cHandle.Get(); }

private:
    detail::Handle m_cHandle;
};
} // namespace kormelin

#endif
