#include "ResultFile.hpp"

#include "Escape.hpp"
#include "Result.hpp"
#include "Stop.hpp"
#include "SystemText.hpp"

#include <cerrno>
#include <climits>

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace SegmentTool
{
ClResultFile::~ClResultFile()
{
    if (m_bOwned && m_nFile >= 0) close(m_nFile);
}

void ClResultFile::OpenStandardOutput()
{
    m_sName = "standard output";
    m_nFile = STDOUT_FILENO;
    struct stat cStatus;
    if (fstat(m_nFile, &cStatus) != 0) Fail(errno);
    m_bMayWait = !S_ISREG(cStatus.st_mode);
}

void ClResultFile::Open(const std::string& sPath, bool bKeep)
{
    m_sName = sPath;
    m_nFile = open(sPath.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NOCTTY, 0666);
    if (m_nFile < 0) Fail(errno);
    m_bOwned = true;
    // Two runs that write to one file would mix their lines. Where a file system has no locks there is no such test.
    if (flock(m_nFile, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK)
    {
        throw ClRunError(eExitInternal, "another run is writing to " + EscapeText(sPath));
    }
    struct stat cStatus;
    if (fstat(m_nFile, &cStatus) != 0) Fail(errno);
    m_bMayWait = !S_ISREG(cStatus.st_mode);
    if (!bKeep && !m_bMayWait) Truncate(0);
}

void ClResultFile::Write(std::string_view sText)
{
    while (!sText.empty())
    {
        std::string_view sNow = sText;
        if (m_bMayWait)
        {
            WaitForRoom();
            sNow = sNow.substr(0, PIPE_BUF); // for which there is room then
        }
        const ssize_t nWritten = write(m_nFile, sNow.data(), sNow.size());
        if (nWritten < 0 && (errno == EINTR || errno == EAGAIN)) continue;
        if (nWritten < 0) Fail(errno);
        sText.remove_prefix(static_cast<std::size_t>(nWritten));
    }
}

// A pipe whose reader has gone to sleep must not keep a run from stopping.
void ClResultFile::WaitForRoom() const
{
    for (;;)
    {
        pollfd aWaits[] = {{m_nFile, POLLOUT, 0}, {ClStop::Descriptor(), POLLIN, 0}};
        if (poll(aWaits, 2, -1) < 0 && errno != EINTR) Fail(errno);
        if (aWaits[0].revents != 0) return; // errors, too: the writing tells them
        if (const int nSignal = ClStop::Signal()) throw ClRunError(eExitSignal + nSignal, "stopped");
    }
}

void ClResultFile::Truncate(unsigned long long nSize)
{
    if (ftruncate(m_nFile, static_cast<off_t>(nSize)) != 0) Fail(errno);
    if (lseek(m_nFile, static_cast<off_t>(nSize), SEEK_SET) < 0) Fail(errno);
}

void ClResultFile::Close()
{
    if (!m_bOwned || m_nFile < 0) return;
    const int nFile = m_nFile;
    m_nFile = -1;
    if (close(nFile) != 0 && errno != EINTR) Fail(errno);
}

void ClResultFile::Fail(int nError) const
{
    throw ClRunError(eExitInternal, "cannot write " + EscapeText(m_sName) + ": " + SystemText(nError));
}
} // namespace SegmentTool
