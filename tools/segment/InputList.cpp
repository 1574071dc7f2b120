#include "InputList.hpp"

#include "Escape.hpp"
#include "Result.hpp"
#include "Stop.hpp"
#include "SystemText.hpp"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>

#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace SegmentTool
{
/// Names out of a list file.
class ClInputList::ClNames
{
public:
    ClNames(const std::string& sFile, char cEnd) : m_sFile(sFile), m_cEnd(cEnd)
    {
        m_nFile = sFile == "-" ? STDIN_FILENO : open(sFile.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY);
        if (m_nFile < 0) Fail(eExitUsage, errno);
    }
    ClNames(const ClNames&) = delete;
    ~ClNames()
    {
        if (m_nFile > STDIN_FILENO) close(m_nFile);
    }

    /// The next name that is not empty. False at the end.
    bool Next(std::string& sName)
    {
        for (;;)
        {
            const std::size_t nEnd = m_sBuffer.find(m_cEnd, m_nSearched);
            if (nEnd != std::string::npos || (m_bEnd && m_nFirst < m_sBuffer.size()))
            {
                sName = m_sBuffer.substr(m_nFirst, nEnd == std::string::npos ? nEnd : nEnd - m_nFirst);
                m_nFirst = nEnd == std::string::npos ? m_sBuffer.size() : nEnd + 1;
                m_nSearched = m_nFirst;
                if (m_cEnd == '\n' && !sName.empty() && sName.back() == '\r') sName.pop_back();
                if (!sName.empty()) return true;
                continue;
            }
            if (m_bEnd) return false;
            m_nSearched = m_sBuffer.size();
            if (!ReadMore()) return false;
        }
    }

private:
    // False if a signal came.
    bool ReadMore()
    {
        constexpr std::size_t nLongestName = 1u << 20; // no system has such names: this is no list
        m_sBuffer.erase(0, m_nFirst);
        m_nSearched -= m_nFirst;
        m_nFirst = 0;
        if (m_sBuffer.size() > nLongestName)
        {
            throw ClRunError(eExitUsage, EscapeText(m_sFile) + " is no list of names");
        }
        char aBytes[16384];
        for (;;)
        {
            pollfd aWaits[] = {{m_nFile, POLLIN, 0}, {ClStop::Descriptor(), POLLIN, 0}};
            poll(aWaits, 2, -1);
            if (ClStop::IsAsked()) return false;
            if (aWaits[0].revents == 0) continue;
            const ssize_t nRead = read(m_nFile, aBytes, sizeof aBytes);
            if (nRead < 0 && (errno == EINTR || errno == EAGAIN)) continue;
            if (nRead < 0) Fail(errno == EISDIR ? eExitUsage : eExitInternal, errno);
            m_bEnd = nRead == 0;
            m_sBuffer.append(aBytes, static_cast<std::size_t>(nRead));
            return true;
        }
    }

    [[noreturn]] void Fail(EExit eExit, int nError) const
    {
        throw ClRunError(eExit, "cannot read the list " + EscapeText(m_sFile) + ": " + SystemText(nError));
    }

    std::string m_sFile;
    char m_cEnd;
    int m_nFile = -1;
    std::string m_sBuffer;
    std::size_t m_nFirst = 0;    ///< of the next name
    std::size_t m_nSearched = 0; ///< no end of a name before
    bool m_bEnd = false;
};

ClInputList::ClInputList(const ClListOptions& cOptions, const std::string& sFolderOfFingers) : m_cOptions(cOptions)
{
    if (!cOptions.m_sListFile.empty())
    {
        m_pNames = std::make_unique<ClNames>(cOptions.m_sListFile, cOptions.m_bNullSeparated ? '\0' : '\n');
    }
    struct stat cStatus;
    if (!sFolderOfFingers.empty() && stat(sFolderOfFingers.c_str(), &cStatus) == 0)
    {
        m_nSkipDevice = cStatus.st_dev;
        m_nSkipFile = cStatus.st_ino;
    }
}

ClInputList::~ClInputList() = default;

bool ClInputList::Next(ClInput& cInput)
{
    while (NextOfAll(cInput))
    {
        cInput.m_nIndex = ++m_nCount;
        if (m_nCount % m_cOptions.m_nShards == m_cOptions.m_nShard % m_cOptions.m_nShards) return true;
    }
    return false;
}

bool ClInputList::NextOfAll(ClInput& cInput)
{
    for (;;)
    {
        if (!m_aFolders.empty())
        {
            if (NextBelow(cInput)) return true;
            continue;
        }
        std::string sName;
        if (m_nNextInput < m_cOptions.m_aInputs.size())
            sName = m_cOptions.m_aInputs[m_nNextInput++];
        else if (m_pNames == nullptr || !m_pNames->Next(sName))
            return false;
        if (TakeName(sName, cInput)) return true;
    }
}

// A name of the list: a picture, or a folder whose pictures come next. False in the second case.
bool ClInputList::TakeName(const std::string& sName, ClInput& cInput)
{
    cInput.m_sPath = sName;
    cInput.m_sFault.clear();
    struct stat cStatus;
    if (!m_cOptions.m_bRecursive || stat(sName.c_str(), &cStatus) != 0 || !S_ISDIR(cStatus.st_mode)) return true;
    m_sTopFolder = sName;
    m_bFound = false;
    return Enter(sName, cInput);
}

// Reads the names of a folder. True if it cannot be read: that is a place in the list, too.
bool ClInputList::Enter(const std::string& sPath, ClInput& cInput)
{
    DIR* pFolder = opendir(sPath.c_str());
    if (pFolder == nullptr)
    {
        m_bFound = true;
        cInput.m_sPath = sPath;
        cInput.m_sFault = "cannot read the folder: " + SystemText(errno);
        return true;
    }
    ClFolder cFolder;
    cFolder.m_sPath = sPath;
    errno = 0;
    while (const dirent* pEntry = readdir(pFolder))
    {
        if (pEntry->d_name[0] != '.') cFolder.m_aNames.emplace_back(pEntry->d_name); // hidden ones are not meant
    }
    const int nError = errno;
    closedir(pFolder);
    std::sort(cFolder.m_aNames.begin(), cFolder.m_aNames.end(), std::greater<>());
    m_aFolders.push_back(std::move(cFolder));
    if (nError == 0) return false;
    m_bFound = true;
    cInput.m_sPath = sPath;
    cInput.m_sFault = "cannot read the whole folder: " + SystemText(nError);
    return true;
}

// The next picture of the folders on the way down. False if the last of them is done, or a new one was entered.
bool ClInputList::NextBelow(ClInput& cInput)
{
    cInput.m_sFault.clear();
    ClFolder& cFolder = m_aFolders.back();
    if (cFolder.m_aNames.empty())
    {
        m_aFolders.pop_back();
        if (!m_aFolders.empty() || m_bFound) return false;
        cInput.m_sPath = m_sTopFolder;
        cInput.m_sFault = "there is no picture in this folder (--endings tells which files are taken)";
        return true;
    }
    const std::string sName = std::move(cFolder.m_aNames.back());
    cFolder.m_aNames.pop_back();
    const std::string sPath = cFolder.m_sPath + (cFolder.m_sPath.back() == '/' ? "" : "/") + sName;
    struct stat cStatus;
    if (lstat(sPath.c_str(), &cStatus) != 0) return false; // it has gone in the meantime
    if (S_ISDIR(cStatus.st_mode))
    {
        if (cStatus.st_ino == m_nSkipFile && cStatus.st_dev == m_nSkipDevice) return false;
        return Enter(sPath, cInput);
    }
    // Links to folders are not followed: they can lead in circles.
    if (!IsTaken(sName) || (S_ISLNK(cStatus.st_mode) && stat(sPath.c_str(), &cStatus) == 0 && S_ISDIR(cStatus.st_mode)))
    {
        return false;
    }
    m_bFound = true;
    cInput.m_sPath = sPath;
    return true;
}

bool ClInputList::IsTaken(const std::string& sName) const
{
    const std::size_t nDot = sName.rfind('.');
    std::string sEnding = nDot == std::string::npos ? "" : sName.substr(nDot + 1);
    std::transform(sEnding.begin(), sEnding.end(), sEnding.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return std::any_of(m_cOptions.m_aEndings.begin(), m_cOptions.m_aEndings.end(),
                       [&sEnding](const std::string& s) { return s == "*" || s == sEnding; });
}

std::uint64_t CountInputs(const ClListOptions& cOptions, const std::string& sFolderOfFingers)
{
    struct stat cStatus;
    if (!cOptions.m_sListFile.empty() &&
        (cOptions.m_sListFile == "-" || stat(cOptions.m_sListFile.c_str(), &cStatus) != 0 || !S_ISREG(cStatus.st_mode)))
    {
        return 0;
    }
    ClInputList cList(cOptions, sFolderOfFingers);
    ClInput cInput;
    std::uint64_t nCount = 0;
    while (!ClStop::IsAsked() && cList.Next(cInput)) ++nCount;
    return nCount;
}
} // namespace SegmentTool
