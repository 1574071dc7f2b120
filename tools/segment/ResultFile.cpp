#include "ResultFile.hpp"

#include "Escape.hpp"
#include "Result.hpp"
#include "Stop.hpp"
#include "SystemText.hpp"

#include <cerrno>

#include <fcntl.h>
#include <poll.h>
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
    if (fcntl(m_nFile, F_GETFD) < 0) Fail(errno);
}

void ClResultFile::Open(const std::string& sPath, bool bKeep)
{
    m_sName = sPath;
    m_nFile = open(sPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOCTTY | (bKeep ? 0 : O_TRUNC), 0666);
    // What cannot be read, such as a terminal's or a pipe's other end, can be written all the same.
    if (m_nFile < 0 && !bKeep) m_nFile = open(sPath.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NOCTTY | O_TRUNC, 0666);
    if (m_nFile < 0) Fail(errno);
    m_bOwned = true;
}

void ClResultFile::Write(std::string_view sText)
{
    while (!sText.empty())
    {
        const ssize_t nWritten = write(m_nFile, sText.data(), sText.size());
        if (nWritten < 0 && (errno == EINTR || errno == EAGAIN))
        {
            WaitForRoom();
            continue;
        }
        if (nWritten < 0) Fail(errno);
        sText.remove_prefix(static_cast<std::size_t>(nWritten));
    }
}

// A pipe whose reader has gone to sleep must not keep a run from stopping.
void ClResultFile::WaitForRoom() const
{
    if (const int nSignal = ClStop::Signal()) throw ClRunError(eExitSignal + nSignal, "stopped");
    pollfd aWaits[] = {{m_nFile, POLLOUT, 0}, {ClStop::Descriptor(), POLLIN, 0}};
    poll(aWaits, 2, -1);
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
