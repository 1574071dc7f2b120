#pragma once

#include "RDTools/FloatingPoint.hpp"

#include <boost/checked_delete.hpp>
#include <boost/noncopyable.hpp>
#include <boost/shared_ptr.hpp>

#include <cstddef>

class ClBitmap;
class ClStream;

/// The one pixel container of the system: a raster of samples of one of eight numeric types, with one to four
/// interleaved planes, a resolution in pels per metre and the range of its sample values.
///
/// Layout   The samples of a pixel stand next to one another, rows follow one another from m_pData, each on a 4-byte
///          boundary (the row rule of a device-independent bitmap, whose pixels therefore serve without a copy).
///          Row 0 is the first row in memory: of a bottom-up bitmap, the bottom scan line; y grows upwards.
/// Pixels   A reference-counted block: owned (array-delete), borrowed from a caller (void_deleter) or shared with
///          another image or a bitmap. Assignment copies deeply, Attach shares, Swap moves.
/// Errors   ClException -101, -44, -12 and ClExBadAlloc -102, told at each operation.
/// Thread   An image belongs to one thread; only the reference count is atomic.
class ClImage : private boost::noncopyable
{
public:
    /// Low five bits: bytes of a sample. Bit 7: signed. Bit 6: floating point.
    enum EDataType : unsigned char
    {
        eUInt8 = 1,
        eUInt16 = 2,
        eUInt32 = 4,
        eSInt8 = 129,
        eSInt16 = 130,
        eSInt32 = 132,
        eFloat32 = 196,
        eDouble64 = 200
    };

    /// What the planes mean.
    enum EContent : int
    {
        eUnknown = 0,
        eGrayscale = 1,
        eRGB = 2,
        eRGBA = 3,
        eHSV = 4,
        eXYZ = 5,
        eCIELab = 6,
        eCIELUV = 7
    };

    /// Frees nothing: the memory stays the caller's, who keeps it alive as long as an image refers to it.
    struct void_deleter
    {
        void operator()(const void*) const noexcept {}
    };

    ClImage(); ///< an empty image, not valid
    /// An image of eUInt8 samples, as by NewWithType.
    ClImage(int nWidth, int nHeight, int nPlanes, int nXRes, int nYRes);
    virtual ~ClImage();

    void Initialize(); ///< empties the image; its block loses one reference
    void Delete();     ///< Initialize, by an owner
    void Detach();     ///< Initialize, by a borrower

    /// Gives the image this type and geometry; the pixels are not initialised. A sole holder whose block already has
    /// the byte size keeps it, a borrowed one included; an image without area has a null block. m_nAttribute stays.
    /// Errors: negative height or stride ClException -101, the new fields stand and the old block is held; no memory,
    /// or a size that a 32-bit row cannot hold, ClExBadAlloc, the image is empty.
    void NewWithType(unsigned char eType, int nWidth, int nHeight, int nPlanes, int nXRes, int nYRes);
    /// Geometry, resolution, content and attribute of cModel with another type and that type's range. Errors: the model
    /// is this image -44; those above.
    void NewWithType(const ClImage& cModel, unsigned char eType);
    /// Everything of cModel but its pixels. No effect on itself.
    void New(const ClImage& cModel);
    /// Geometry, resolution, content and range of cModel with another type; keeps the attribute. Errors as above.
    void Resize(const ClImage& cModel, unsigned char eType);

    ClImage& operator=(const ClImage& cOther);   ///< deep copy
    ClImage& operator=(const ClBitmap& cBitmap); ///< deep copy; empty, whatever is raised, if it cannot be attached

    void Attach(const ClImage& cOther);              ///< shares the pixels; attaching to itself empties the image
    void Attach(void* pData, const ClImage& cModel); ///< borrows pData, described as cModel
    /// Borrows pData: nHeight rows of the aligned row length.
    void Attach(void* pData, unsigned char eType, int nWidth, int nHeight, int nPlanes, int nXRes, int nYRes);
    /// Shares the pixels of an 8, 24 or 32-bit bitmap, rows and samples as they stand there (blue, green, red). False,
    /// and an empty image, if the bitmap is compressed. Errors: another depth -12, an empty bitmap -10.
    bool Attach(const ClBitmap& cBitmap);

    EDataType DataType() const { return m_eDataType; }
    EContent Content() const { return m_eContent; }
    int Width() const { return m_nWidth; }
    int Height() const { return m_nHeight; }
    int XRes() const { return m_nXRes; }
    int YRes() const { return m_nYRes; }
    int Planes() const { return m_nPlanes; }
    double Black() const { return m_dBlack; }
    double White() const { return m_dWhite; }
    int Attribute() const { return m_nAttribute; }
    unsigned char* Data() const { return m_pData.get(); }

    /// Bytes of a sample of a type.
    static constexpr int SampleSize(unsigned char eType) { return eType & 31; }
    static constexpr bool IsSignedType(unsigned char eType) { return (eType & 128) != 0; }
    static constexpr bool IsFloatType(unsigned char eType) { return (eType & 64) != 0; }
    /// Bytes from one row to the next, in 32-bit arithmetic that wraps: the one stride formula of images.
    static constexpr int RowBytes(int nPlanes, int nWidth, int nSampleSize)
    {
        return static_cast<int>((static_cast<unsigned int>(nPlanes) * static_cast<unsigned int>(nWidth) *
                                     static_cast<unsigned int>(nSampleSize) +
                                 3u) &
                                ~3u);
    }
    int Stride() const { return RowBytes(m_nPlanes, m_nWidth, SampleSize(m_eDataType)); }
    /// Samples of a row without its padding, wrapping as the stride does.
    int SamplesPerRow() const
    {
        return static_cast<int>(static_cast<unsigned int>(m_nPlanes) * static_cast<unsigned int>(m_nWidth));
    }

    /// Whether resolution, size, range and planes make sense; an empty image is not valid.
    bool IsValid() const;
    /// The same without the planes, raising ClException -101 with what is wrong.
    bool CheckValid() const;
    /// The range of a type: 0 or the lowest value to the highest, -1 to 1 for floating point, NaN for no type.
    void BlackWhiteFromType(unsigned char eType);
    /// 1 plane is grey, 3 are RGB, 4 are RGBA, anything else is unknown.
    void ContentFromPlanes(int nPlanes);
    /// Exchanges everything; no pixels move.
    void Swap(ClImage& cOther);
    /// Copies the samples of one plane (below m_nPlanes, not checked) into a one-plane image with its type's range.
    void GetPlane(int nPlane, ClImage& cOut) const;
    /// Writes nValue into each row from byte m_nWidth to the end of the stride. The offset counts pixels, not bytes: it
    /// fills exactly the padding of a one-plane 8-bit image, for which callers use it.
    void FillAligment(int nValue);

    /// The image as a KRX record, the system's own format: a magic number, version 1, every field, the rows with their
    /// padding, the magic number again; in the stream's byte order. The image is not checked; of a type without samples
    /// of 1, 2, 4 or 8 bytes, or with a negative size, no samples are written. Errors: area but no pixels
    /// ClExVelmarin -10; those of the stream, which counts a short write as one only if its m_bCheckShort is set.
    void Store(ClStream& cStream) const;
    /// The same into a new file, big-endian. Errors: those of ClFileStream, -200 and -204; -10, no file is made then.
    void Store(const char* szName) const;
    /// Reads a KRX record of version 0, which has no attribute, or 1, from where the stream stands. The type, the
    /// planes, the content and the range are taken as they come: IsValid tells whether they make sense.
    /// Errors: no magic number at the start or at the end, a version above 1, ClException -101; sizes as for
    /// NewWithType -101 or ClExBadAlloc -102; a record that is cut off ClExStreamUnexpectedEnd -201 if the stream's
    /// m_bCheckShort is set, otherwise -101 as for what is missing at the end. An image whose samples are not all
    /// there is left empty, without making room for them where the stream can tell; with a wrong end it is complete.
    void Load(ClStream& cStream);
    /// The same from a big-endian file. Errors: moreover -200, the image is as it was.
    void Load(const char* szName);

    EDataType m_eDataType;
    EContent m_eContent;
    int m_nWidth;                             ///< pixels in a row
    int m_nHeight;                            ///< rows
    int m_nXRes;                              ///< pels per metre
    int m_nYRes;                              ///< pels per metre
    boost::shared_ptr<unsigned char> m_pData; ///< first byte of row 0, or null; always holds a count
    int m_nPlanes;                            ///< samples per pixel, 1 to 4
    double m_dBlack;                          ///< sample value that stands for black
    double m_dWhite;                          ///< sample value that stands for white
    int m_nAttribute;                         ///< travels with the image, interpreted by nothing

private:
    void ClearFields();
    void Describe(const ClImage& cModel);
    static bool RowFits(int nPlanes, int nWidth, int nSampleSize);
    template <class Deleter> void ResetBlock(unsigned char* pData, Deleter deleter);
    const char* RangeFault() const;
};

/// The one list of the eight sample types.
#define RD_SAMPLE_TYPES(X)                                                                                             \
    X(eUInt8, unsigned char)                                                                                           \
    X(eUInt16, unsigned short)                                                                                         \
    X(eUInt32, unsigned int)                                                                                           \
    X(eSInt8, signed char)                                                                                             \
    X(eSInt16, short)                                                                                                  \
    X(eSInt32, int)                                                                                                    \
    X(eFloat32, float)                                                                                                 \
    X(eDouble64, double)

/// Hands a sample type to a generic lambda, which takes it from the type of its argument.
template <class T> struct TpSampleTag
{
    using Type = T;
};

/// Returns fn(tag of eType's sample type). Any other code: nUnknown, fn is not called.
template <class Fn> long DispatchSampleType(unsigned char eType, long nUnknown, Fn&& fn)
{
    switch (eType)
    {
#define RD_SAMPLE_CASE(eCode, T)                                                                                       \
    case ClImage::eCode: return fn(TpSampleTag<T>());
        RD_SAMPLE_TYPES(RD_SAMPLE_CASE)
#undef RD_SAMPLE_CASE
    default: return nUnknown;
    }
}

/// First sample of row nY.
template <class T> inline T* Row(ClImage& cImage, int nY)
{
    return reinterpret_cast<T*>(cImage.Data() + static_cast<std::ptrdiff_t>(nY) * cImage.Stride());
}

template <class T> inline const T* Row(const ClImage& cImage, int nY)
{
    return reinterpret_cast<const T*>(cImage.Data() + static_cast<std::ptrdiff_t>(nY) * cImage.Stride());
}
