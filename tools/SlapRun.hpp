#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// All that one run gives to an application, copied out of the handles.
struct ClSlapRunResult
{
    struct ClSegment
    {
        long m_nX = 0; // properties of the segment handle, pixels of the input
        long m_nY = 0; // as the coordinate origin of the run counts it
        long m_nWidth = 0;
        long m_nHeight = 0;
        std::vector<std::uint8_t> m_aBlock; // the bitmap: header, colour table, pixels
    };

    long m_nCode = 0;                   // what KSSegmentBitmap returned
    long m_nCount = 0;                  // "Count" after it
    std::vector<ClSegment> m_aSegments; // none after a code other than 0
};

/// Whether everything is the same, every byte of the bitmaps included.
bool operator==(const ClSlapRunResult& cLeft, const ClSlapRunResult& cRight);

/// Runs of the library on one segmentation handle and one segment handle, made of exported functions only, so that it
/// sees what an application sees. One thread at a time for each object; different objects do not touch.
/// Errors: std::runtime_error if a function fails that must not; a code of KSSegmentBitmap is a result.
class ClSlapRunner
{
public:
    /// The values of "SegmentationMode" and "CoordinateOrigin".
    explicit ClSlapRunner(long nMode, long nCoordinateOrigin = 0);
    ~ClSlapRunner();
    ClSlapRunner(const ClSlapRunner&) = delete;
    ClSlapRunner& operator=(const ClSlapRunner&) = delete;

    /// One run on a packed bitmap or a whole BMP file of nSize bytes, at any address.
    ClSlapRunResult Run(const void* pBlock, std::size_t nSize);
    ClSlapRunResult Run(const std::vector<std::uint8_t>& aBytes) { return Run(aBytes.data(), aBytes.size()); }

private:
    void Destroy();

    void* m_hSegmentation = nullptr;
    void* m_hSegment = nullptr;
    bool m_bInitialized = false;
};

/// The bytes of a file. Errors: std::runtime_error with the path if it cannot be read to its end.
std::vector<std::uint8_t> ReadWholeFile(const std::string& sPath);
