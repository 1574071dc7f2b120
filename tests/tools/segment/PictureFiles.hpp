#pragma once

#include "Picture.hpp"

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

/// Files of pictures for the tests, made by the formats' own libraries.
namespace PictureFiles
{
using SegmentTool::Bytes_t;

/// Samples as a viewer shows them: row 0 is the uppermost, red before green before blue.
struct ClRaster
{
    int m_nWidth = 0;
    int m_nHeight = 0;
    int m_nChannels = 1; ///< grey; 2: and opacity; 3: red, green, blue; 4: and opacity
    int m_nBits = 8;
    std::vector<std::uint16_t> m_aSamples;

    unsigned int At(int x, int y, int nChannel = 0) const
    {
        return m_aSamples[static_cast<std::size_t>((y * m_nWidth + x) * m_nChannels + nChannel)];
    }
};

/// Every sample random, all values of the depth possible.
ClRaster RandomRaster(int nWidth, int nHeight, int nChannels = 1, int nBits = 8, unsigned int nSeed = 1);
/// Changes slowly, so that a lossy format comes near to it; bright above, dark below, and brighter to the right.
ClRaster SmoothRaster(int nWidth, int nHeight, int nChannels = 1);

struct ClPngStyle
{
    unsigned int m_nPels = 19685; ///< 0: no resolution
    bool m_bInterlaced = false;
    /// If not empty, the samples are indices into it: red, green, blue of each entry.
    std::vector<std::uint8_t> m_aTable;
};
Bytes_t PngFile(const ClRaster& cRaster, const ClPngStyle& cStyle = {});

/// nUnit: 0 no resolution, 1 per inch, 2 per centimetre.
Bytes_t JpegFile(const ClRaster& cRaster, int nUnit = 1, unsigned int nDensity = 500, bool bCmyk = false);

struct ClTiffStyle
{
    float m_fResolution = 500.0f; ///< 0: none
    int m_nUnit = 2;              ///< 1 none, 2 inch, 3 centimetre
    int m_nOrientation = 1;
    bool m_bWhiteIsZero = false;
    bool m_bTiled = false;
    bool m_bCompressed = false;
};
Bytes_t TiffFile(const ClRaster& cRaster, const ClTiffStyle& cStyle = {});

/// Without loss. A bare codestream has no place for a resolution; nPels 0 leaves it out of the file, too.
Bytes_t Jp2File(const ClRaster& cRaster, unsigned int nPels = 19685, bool bCodestream = false);

/// A packed bitmap as it stands in a file, the pixels' place told as it is.
Bytes_t BmpFile(const Bytes_t& aBlock);

/// P5 or P6; 16 bits as two bytes, the higher one first.
Bytes_t PnmFile(const ClRaster& cRaster);

/// The raster as a text of a file's bytes.
Bytes_t FromText(const std::string& sText);

/// A folder of its own that goes with the object.
class ClTempFolder
{
public:
    ClTempFolder();
    ClTempFolder(const ClTempFolder&) = delete;
    ~ClTempFolder();

    std::string Path(const std::string& sName) const { return (m_cPath / sName).string(); }
    /// Writes a file, its folders included, and returns its path.
    std::string Write(const std::string& sName, const Bytes_t& aBytes) const;
    std::string Write(const std::string& sName, const std::string& sText) const;
    std::string Read(const std::string& sName) const;
    std::vector<std::string> Names() const; ///< of everything in it, hidden files included, in order

    std::filesystem::path m_cPath;
};

/// The grey picture that the raster's samples should become, by the rules for each kind: row 0 the uppermost.
std::vector<std::uint8_t> ExpectedGrey(const ClRaster& cRaster);
/// The picture's samples, row 0 the uppermost.
std::vector<std::uint8_t> GreyOf(SegmentTool::ClPicture& cPicture);
} // namespace PictureFiles
