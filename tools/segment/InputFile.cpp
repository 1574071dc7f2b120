#include "InputFile.hpp"

#include "Decoder.hpp"
#include "Formats.hpp"
#include "Result.hpp"
#include "SystemText.hpp"

#include "RDTools/ErrorCatalogue.hpp"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace SegmentTool
{
namespace
{
class ClOpenFile
{
public:
    explicit ClOpenFile(const std::string& sPath)
        // A pipe without a writer must not make a batch wait.
        : m_nFile(open(sPath.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY))
    {
    }
    ClOpenFile(const ClOpenFile&) = delete;
    ~ClOpenFile()
    {
        if (m_nFile >= 0) close(m_nFile);
    }
    const int m_nFile;
};
} // namespace

Bytes_t ReadWholeFile(const std::string& sPath)
{
    const ClOpenFile cFile(sPath);
    if (cFile.m_nFile < 0) throw ClPictureError(FPC_ERROR_FILE_OPEN_FAIL, "cannot open: " + SystemText(errno));
    struct stat cStatus;
    if (fstat(cFile.m_nFile, &cStatus) != 0)
    {
        throw ClPictureError(FPC_ERROR_FILE_OPEN_FAIL, "cannot open: " + SystemText(errno));
    }
    if (S_ISDIR(cStatus.st_mode))
    {
        throw ClPictureError(FPC_ERROR_FILE_OPEN_FAIL, "this is a folder; --recursive takes the pictures in it");
    }
    if (!S_ISREG(cStatus.st_mode)) throw ClPictureError(FPC_ERROR_FILE_OPEN_FAIL, "this is not a file");
    const auto nSize = static_cast<std::uint64_t>(cStatus.st_size);
    if (nSize == 0) throw ClPictureError(FPC_ERROR_UNEXPECTED_EOF, "the file is empty");
    if (nSize > nMostFileBytes)
    {
        throw ClPictureError(FPC_ERROR_READ_FAIL, "the file is larger than any picture of " +
                                                      std::to_string(nMostSide) + " by " + std::to_string(nMostSide) +
                                                      " pixels");
    }
    Bytes_t aBytes(nSize);
    std::size_t nRead = 0;
    while (nRead < aBytes.size())
    {
        const ssize_t nNow = read(cFile.m_nFile, aBytes.data() + nRead, aBytes.size() - nRead);
        if (nNow < 0 && errno == EINTR) continue;
        if (nNow < 0) throw ClPictureError(FPC_ERROR_READ_FAIL, "cannot read: " + SystemText(errno));
        if (nNow == 0) break; // it has become shorter
        nRead += static_cast<std::size_t>(nNow);
    }
    aBytes.resize(nRead);
    return aBytes;
}

void ReadInput(const std::string& sPath, const ClReading& cReading, ClPicture& cPicture, std::uint64_t* pnFingerprint)
{
    Bytes_t aFile = ReadWholeFile(sPath);
    if (pnFingerprint != nullptr) *pnFingerprint = ContentFingerprint(aFile);
    EFormat eFormat = FormatOf(aFile);
    if (!CanRead(eFormat) && !cReading.m_sDecoder.empty())
    {
        aFile = Decode(cReading.m_sDecoder, sPath, cReading.m_dDecoderSeconds);
        eFormat = FormatOf(aFile);
        if (eFormat != EFormat::ePnm)
        {
            throw ClPictureError(FPC_ERROR_UNKNOWN_CODEC, "the decoder did not write a PGM picture");
        }
    }
    ReadPicture(eFormat, aFile, cPicture);
    SetResolution(cPicture, cReading.m_dPpi);
}

std::uint64_t ContentFingerprint(const Bytes_t& aFile)
{
    std::uint64_t nHash = 14695981039346656037u;
    const auto Mix = [&nHash](std::uint64_t nWord) { nHash = (nHash ^ nWord) * 1099511628211u; };
    for (std::size_t nFirst = 0; nFirst < aFile.size(); nFirst += 8)
    {
        std::uint64_t nWord = 0;
        const std::size_t nBytes = std::min<std::size_t>(8, aFile.size() - nFirst);
        for (std::size_t i = 0; i < nBytes; ++i) nWord |= std::uint64_t{aFile[nFirst + i]} << (8 * i);
        Mix(nWord);
    }
    Mix(aFile.size());
    return nHash;
}
} // namespace SegmentTool
