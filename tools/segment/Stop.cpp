#include "Stop.hpp"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <initializer_list>

#include <sys/eventfd.h>
#include <unistd.h>

namespace SegmentTool
{
namespace
{
std::atomic<int> nCame{0};
std::atomic<bool> bAsked{false};
std::atomic<int> nEvent{-1};
static_assert(std::atomic<int>::is_always_lock_free, "the handler of a signal must not wait for a lock");

void SetAsked()
{
    bAsked = true;
    const std::uint64_t nOne = 1;
    if (write(nEvent, &nOne, sizeof nOne) < 0) // nobody waits then; the flag is seen anyway
    {
    }
}

void OnSignal(int nSignal)
{
    const int nError = errno;
    nCame = nSignal;
    SetAsked();
    errno = nError;
}
} // namespace

void ClStop::Install()
{
    if (nEvent < 0) nEvent = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    struct sigaction cAction = {};
    cAction.sa_handler = OnSignal;
    sigemptyset(&cAction.sa_mask);
    cAction.sa_flags = static_cast<int>(SA_RESETHAND); // and waits come back to be asked whether to go on
    for (const int nSignal : {SIGINT, SIGTERM, SIGHUP})
    {
        struct sigaction cOld = {};
        sigaction(nSignal, nullptr, &cOld);
        if (cOld.sa_handler != SIG_IGN) sigaction(nSignal, &cAction, nullptr); // as under nohup
    }
    signal(SIGPIPE, SIG_IGN);
    signal(SIGXFSZ, SIG_IGN);
}

int ClStop::Signal()
{
    return nCame;
}

void ClStop::Ask()
{
    SetAsked();
}

bool ClStop::IsAsked()
{
    return bAsked;
}

int ClStop::Descriptor()
{
    return nEvent;
}

void ClStop::Reset()
{
    nCame = 0;
    bAsked = false;
    std::uint64_t nCount = 0;
    if (nEvent >= 0 && read(nEvent, &nCount, sizeof nCount) < 0) // there was nothing to forget
    {
    }
}
} // namespace SegmentTool
