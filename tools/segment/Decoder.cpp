#include "Decoder.hpp"

#include "InputFile.hpp"
#include "Result.hpp"
#include "Stop.hpp"
#include "SystemText.hpp"

#include "RDTools/ErrorCatalogue.hpp"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace SegmentTool
{
namespace
{
using Clock_t = std::chrono::steady_clock;

constexpr std::size_t nMostErrorText = 300; // the end of what the command complains about
constexpr int nPause = 5;                   // milliseconds between looks at a command that has closed its output
constexpr int nLongPause = 100; // and at one that has not, but may have ended and left the output to a child

// Who ends a whole job, such as a batch system, signals all of its processes, and may reach the command first.
constexpr int nAwaitedStop = 2000; // milliseconds

[[noreturn]] void CannotStart(int nError)
{
    throw ClPictureError(FPC_ERROR_FROM_SYSTEM_FUNCTION, "the decoder cannot be started: " + SystemText(nError));
}

struct ClPipe
{
    ClPipe()
    {
        int anEnds[2];
        if (pipe2(anEnds, O_CLOEXEC) != 0) CannotStart(errno);
        m_nRead = anEnds[0];
        m_nWrite = anEnds[1];
        fcntl(m_nRead, F_SETFL, O_NONBLOCK);
    }
    ClPipe(const ClPipe&) = delete;
    ~ClPipe()
    {
        CloseRead();
        CloseWrite();
    }
    void CloseRead() { Close(m_nRead); }
    void CloseWrite() { Close(m_nWrite); }

    int m_nRead = -1;
    int m_nWrite = -1;

private:
    static void Close(int& nEnd)
    {
        if (nEnd >= 0) close(nEnd);
        nEnd = -1;
    }
};

struct ClSpawnSettings
{
    ClSpawnSettings(const ClPipe& cOutput, const ClPipe& cErrors)
    {
        posix_spawn_file_actions_init(&m_cFiles);
        posix_spawn_file_actions_addopen(&m_cFiles, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_adddup2(&m_cFiles, cOutput.m_nWrite, STDOUT_FILENO);
        posix_spawn_file_actions_adddup2(&m_cFiles, cErrors.m_nWrite, STDERR_FILENO);
        posix_spawnattr_init(&m_cAttributes);
        posix_spawnattr_setpgroup(&m_cAttributes, 0); // a group of its own
        sigset_t cNone;
        sigset_t cDefaults;
        sigemptyset(&cNone);
        sigemptyset(&cDefaults);
        for (const int nSignal : {SIGPIPE, SIGXFSZ, SIGINT, SIGTERM, SIGHUP}) sigaddset(&cDefaults, nSignal);
        posix_spawnattr_setsigmask(&m_cAttributes, &cNone);
        posix_spawnattr_setsigdefault(&m_cAttributes, &cDefaults);
        posix_spawnattr_setflags(&m_cAttributes,
                                 POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    ClSpawnSettings(const ClSpawnSettings&) = delete;
    ~ClSpawnSettings()
    {
        posix_spawn_file_actions_destroy(&m_cFiles);
        posix_spawnattr_destroy(&m_cAttributes);
    }

    posix_spawn_file_actions_t m_cFiles;
    posix_spawnattr_t m_cAttributes;
};

// The command and all that it has started; nothing of it is left behind.
class ClGroup
{
public:
    ClGroup(const std::string& sCommand, const std::string& sFile, const ClPipe& cOutput, const ClPipe& cErrors)
    {
        const ClSpawnSettings cSettings(cOutput, cErrors);
        const char* aszArguments[] = {"sh", "-c", sCommand.c_str(), "sh", sFile.c_str(), nullptr};
        const int nError = posix_spawn(&m_nProcess, "/bin/sh", &cSettings.m_cFiles, &cSettings.m_cAttributes,
                                       const_cast<char* const*>(aszArguments), environ);
        if (nError != 0) CannotStart(nError);
    }
    ClGroup(const ClGroup&) = delete;
    ~ClGroup()
    {
        if (!m_bCollected) Collect();
    }

    /// Whether the command has ended, without collecting it: its number stays taken.
    bool HasEnded() const
    {
        siginfo_t cInfo = {};
        return waitid(P_PID, static_cast<id_t>(m_nProcess), &cInfo, WEXITED | WNOHANG | WNOWAIT) == 0 &&
               cInfo.si_pid == m_nProcess;
    }

    int Collect()
    {
        kill(-m_nProcess, SIGKILL); // what the command left running: its leader keeps the number taken until collected
        while (waitpid(m_nProcess, &m_nStatus, 0) < 0 && errno == EINTR)
        {
        }
        m_bCollected = true;
        return m_nStatus;
    }

private:
    pid_t m_nProcess = -1;
    int m_nStatus = 0;
    bool m_bCollected = false;
};

// Reads what there is. False at the end.
bool ReadSome(int nFile, Bytes_t& aTo)
{
    unsigned char aBuffer[65536];
    for (;;)
    {
        const ssize_t nRead = read(nFile, aBuffer, sizeof aBuffer);
        if (nRead > 0)
        {
            aTo.insert(aTo.end(), aBuffer, aBuffer + nRead);
            return true;
        }
        if (nRead == 0) return false;
        if (errno == EAGAIN) return true;
        if (errno != EINTR) return false;
    }
}

// The end of a complaint tells what went wrong.
void KeepEnd(Bytes_t& aErrors)
{
    if (aErrors.size() > nMostErrorText) aErrors.erase(aErrors.begin(), aErrors.end() - nMostErrorText);
}

std::string Complaint(const Bytes_t& aErrors)
{
    std::string sText(aErrors.begin(), aErrors.end());
    while (!sText.empty() && (sText.back() == '\n' || sText.back() == '\r')) sText.pop_back();
    return sText.empty() ? "" : ": " + sText;
}

// Milliseconds until then, for poll(): 0 if it is over, and at least 1 before.
int MillisecondsUntil(Clock_t::time_point cEnd)
{
    const auto nLeft = std::chrono::duration_cast<std::chrono::milliseconds>(cEnd - Clock_t::now()).count();
    return cEnd <= Clock_t::now() ? 0 : static_cast<int>(std::clamp<long long>(nLeft, 1, 1000000));
}

[[noreturn]] void TooLong(double dSeconds)
{
    char szSeconds[40];
    std::snprintf(szSeconds, sizeof szSeconds, "%g", dSeconds);
    throw ClPictureError(FPC_ERROR_READ_FAIL,
                         std::string("the decoder took longer than ") + szSeconds + " s (--decoder-timeout)");
}

void CheckStop()
{
    if (ClStop::IsAsked()) throw ClPictureError(FPC_ERROR_READ_FAIL, "the run was stopped");
}

// A command that somebody has ended tells nothing about its picture if this process is about to be ended, too.
void CheckStopBehind(int nStatus)
{
    // Shells tell by their own status what ended the command they ran.
    const int nSignal = WIFSIGNALED(nStatus) ? WTERMSIG(nStatus) : WEXITSTATUS(nStatus) - 128;
    if (nSignal != SIGHUP && nSignal != SIGINT && nSignal != SIGKILL && nSignal != SIGTERM) return;
    pollfd cWait = {ClStop::Descriptor(), POLLIN, 0};
    poll(&cWait, 1, nAwaitedStop);
    CheckStop();
}
} // namespace

Bytes_t Decode(const std::string& sCommand, const std::string& sFile, double dSeconds)
{
    const auto cEnd =
        Clock_t::now() + std::chrono::duration_cast<Clock_t::duration>(std::chrono::duration<double>(dSeconds));
    ClPipe cOutput;
    ClPipe cErrors;
    ClGroup cGroup(sCommand, sFile, cOutput, cErrors);
    cOutput.CloseWrite();
    cErrors.CloseWrite();

    Bytes_t aPicture;
    Bytes_t aErrors;
    bool bOpen = true;
    while (bOpen || !cGroup.HasEnded())
    {
        const int nLeft = MillisecondsUntil(cEnd);
        if (nLeft == 0) TooLong(dSeconds);
        CheckStop();
        pollfd aWaits[] = {
            {bOpen ? cOutput.m_nRead : -1, POLLIN, 0}, {cErrors.m_nRead, POLLIN, 0}, {ClStop::Descriptor(), POLLIN, 0}};
        if (poll(aWaits, 3, std::min(nLeft, bOpen ? nLongPause : nPause)) < 0 && errno != EINTR) CannotStart(errno);
        if (aWaits[0].revents != 0) bOpen = ReadSome(cOutput.m_nRead, aPicture);
        if (aWaits[1].revents != 0 && !ReadSome(cErrors.m_nRead, aErrors)) cErrors.CloseRead();
        if (aPicture.size() > nMostFileBytes)
        {
            throw ClPictureError(FPC_ERROR_READ_FAIL, "the decoder writes more than any picture has");
        }
        KeepEnd(aErrors);
        if (bOpen && cGroup.HasEnded())
        {
            // Something that the command started holds the output open. What it has written is there now.
            while (ReadSome(cOutput.m_nRead, aPicture))
            {
                pollfd cWait = {cOutput.m_nRead, POLLIN, 0};
                if (poll(&cWait, 1, 0) <= 0 || aPicture.size() > nMostFileBytes) break;
            }
            bOpen = false;
        }
    }
    for (pollfd cRest = {cErrors.m_nRead, POLLIN, 0}; cErrors.m_nRead >= 0 && poll(&cRest, 1, 0) > 0;)
    {
        if (!ReadSome(cErrors.m_nRead, aErrors)) break;
        KeepEnd(aErrors);
    }

    const int nStatus = cGroup.Collect();
    CheckStopBehind(nStatus);
    if (WIFSIGNALED(nStatus))
    {
        throw ClPictureError(FPC_ERROR_UNKNOWN_CODEC, "the decoder was ended by signal " +
                                                          std::to_string(WTERMSIG(nStatus)) + Complaint(aErrors));
    }
    if (WEXITSTATUS(nStatus) != 0)
    {
        throw ClPictureError(FPC_ERROR_UNKNOWN_CODEC, "the decoder failed with status " +
                                                          std::to_string(WEXITSTATUS(nStatus)) + Complaint(aErrors));
    }
    if (aPicture.empty())
        throw ClPictureError(FPC_ERROR_UNKNOWN_CODEC, "the decoder wrote nothing" + Complaint(aErrors));
    return aPicture;
}
} // namespace SegmentTool
