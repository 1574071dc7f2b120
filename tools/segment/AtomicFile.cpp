#include "AtomicFile.hpp"

#include "Escape.hpp"
#include "ImageFile.hpp"
#include "Result.hpp"
#include "SystemText.hpp"

#include "RDTools/ErrorCatalogue.hpp"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <filesystem>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace SegmentTool
{
namespace
{
[[noreturn]] void Fail(const std::string& sPath, int nError)
{
    if (nError == ENAMETOOLONG)
    {
        throw ClPictureError(FPC_ERROR_WRITE_FAIL, "the name " + sPath + " is too long for the file system");
    }
    throw ClRunError(eExitInternal, "cannot write " + EscapeText(sPath) + ": " + SystemText(nError));
}

std::string FolderOf(const std::string& sPath)
{
    const std::size_t nSlash = sPath.rfind('/');
    return nSlash == std::string::npos ? "." : sPath.substr(0, nSlash + 1);
}

// Hidden, beside the file, and of no other process or thread.
std::string TemporaryName(const std::string& sPath)
{
    static std::atomic<unsigned int> nCount{0};
    return FolderOf(sPath) + "/.kormelin-" + std::to_string(getpid()) + '-' + std::to_string(++nCount) + ".tmp";
}

class ClGrowingFile
{
public:
    explicit ClGrowingFile(const std::string& sPath) : m_sPath(sPath)
    {
        m_nFile = open(FolderOf(sPath).c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0666);
        if (m_nFile >= 0 && access(OwnName().c_str(), F_OK) == 0) return;
        if (m_nFile >= 0) close(m_nFile); // without /proc it could never get a name
        m_sTemporary = TemporaryName(sPath);
        m_nFile = open(m_sTemporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (m_nFile < 0)
        {
            m_sTemporary.clear();
            Fail(sPath, errno);
        }
    }
    ClGrowingFile(const ClGrowingFile&) = delete;
    ~ClGrowingFile()
    {
        if (m_nFile >= 0) close(m_nFile);
        if (!m_sTemporary.empty()) unlink(m_sTemporary.c_str());
    }

    void Write(const Bytes_t& aBytes)
    {
        std::size_t nWritten = 0;
        while (nWritten < aBytes.size())
        {
            const ssize_t nNow = write(m_nFile, aBytes.data() + nWritten, aBytes.size() - nWritten);
            if (nNow < 0 && errno != EINTR) Fail(m_sPath, errno);
            if (nNow > 0) nWritten += static_cast<std::size_t>(nNow);
        }
    }

    /// Gives the file its name, if no file has it. False if one has.
    bool Appear()
    {
        if (Link(m_sPath)) return true;
        if (errno == EEXIST) return false;
        if (m_sTemporary.empty()) Fail(m_sPath, errno);
        // A file system without links: between the look and the renaming another process could make the file.
        if (access(m_sPath.c_str(), F_OK) == 0) return false;
        Replace();
        return true;
    }

    /// Gives the file its name, whatever has it.
    void Replace()
    {
        if (m_sTemporary.empty())
        {
            const std::string sTemporary = TemporaryName(m_sPath);
            if (!Link(sTemporary)) Fail(m_sPath, errno);
            m_sTemporary = sTemporary;
        }
        if (rename(m_sTemporary.c_str(), m_sPath.c_str()) != 0) Fail(m_sPath, errno);
        m_sTemporary.clear();
    }

    void Close() // where a disk of another machine tells that it is full
    {
        const int nFile = m_nFile;
        m_nFile = -1;
        if (close(nFile) != 0 && errno != EINTR) Fail(m_sPath, errno);
    }

    bool HasName() const { return !m_sTemporary.empty(); }

private:
    std::string OwnName() const { return "/proc/self/fd/" + std::to_string(m_nFile); }

    bool Link(const std::string& sTo) const
    {
        const std::string sFrom = m_sTemporary.empty() ? OwnName() : m_sTemporary;
        return linkat(AT_FDCWD, sFrom.c_str(), AT_FDCWD, sTo.c_str(), AT_SYMLINK_FOLLOW) == 0;
    }

    std::string m_sPath;
    std::string m_sTemporary; ///< empty: the file has no name yet
    int m_nFile = -1;
};
} // namespace

void DemandMayWrite(const std::string& sPath, std::uint64_t nFingerprint)
{
    struct stat cStatus;
    if (lstat(sPath.c_str(), &cStatus) != 0 || HasFingerprint(sPath, nFingerprint)) return;
    throw ClPictureError(FPC_ERROR_WRITE_FAIL, sPath + " is there already and not of this picture; it was not "
                                                       "overwritten. --tree keeps pictures of one name apart");
}

void WriteAtomically(const std::string& sPath, const Bytes_t& aBytes, std::uint64_t nFingerprint)
{
    ClGrowingFile cFile(sPath);
    cFile.Write(aBytes);
    if (cFile.HasName()) cFile.Close();
    if (cFile.Appear()) return;
    DemandMayWrite(sPath, nFingerprint);
    cFile.Replace();
}

void MakeFolders(const std::string& sPath)
{
    std::error_code cError;
    std::filesystem::create_directories(sPath, cError);
    if (cError && !std::filesystem::is_directory(sPath))
    {
        throw ClRunError(eExitInternal,
                         "cannot make the folder " + EscapeText(sPath) + ": " + SystemText(cError.value()));
    }
}
} // namespace SegmentTool
