#include "Batch.hpp"

#include "Stop.hpp"

#include <chrono>
#include <condition_variable>
#include <csignal>
#include <exception>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace SegmentTool
{
namespace
{
constexpr std::size_t nAheadPerJob = 4;
constexpr std::chrono::milliseconds cLook{50}; // between looks at a signal, which wakes no thread

// Signals go to the thread that commits.
class ClBlockedSignals
{
public:
    ClBlockedSignals()
    {
        sigset_t cAll;
        sigfillset(&cAll);
        pthread_sigmask(SIG_SETMASK, &cAll, &m_cBefore);
    }
    ClBlockedSignals(const ClBlockedSignals&) = delete;
    ~ClBlockedSignals() { pthread_sigmask(SIG_SETMASK, &m_cBefore, nullptr); }

private:
    sigset_t m_cBefore;
};

class ClBatch
{
public:
    ClBatch(int nJobs, const ClBatchSteps& cSteps)
        : m_cSteps(cSteps), m_aSlots(static_cast<std::size_t>(nJobs) * nAheadPerJob)
    {
        const ClBlockedSignals cBlocked;
        try
        {
            for (int i = 0; i < nJobs; ++i) m_aThreads.emplace_back([this] { WorkThread(); });
        }
        catch (...)
        {
            Join();
            throw;
        }
    }
    ClBatch(const ClBatch&) = delete;
    ~ClBatch() { Join(); }

    void Run()
    {
        while (std::optional<ClWork> cWork = Wait()) m_cSteps.m_Commit(*cWork);
    }

private:
    struct ClSlot
    {
        std::optional<ClWork> m_cWork;
        std::exception_ptr m_pError;
    };

    ClSlot& Slot(std::size_t nPlace) { return m_aSlots[nPlace % m_aSlots.size()]; }

    // The next one to be committed; none at the end, and when the run is to stop.
    std::optional<ClWork> Wait()
    {
        std::unique_lock<std::mutex> cLock(m_cMutex);
        ClSlot& cSlot = Slot(m_nCommitted);
        while (!cSlot.m_cWork && cSlot.m_pError == nullptr)
        {
            if (ClStop::IsAsked()) return std::nullopt;
            if (m_bListEnded && m_nCommitted == m_nHandedOut) return std::nullopt;
            m_cDone.wait_for(cLock, cLook);
        }
        if (cSlot.m_pError != nullptr) std::rethrow_exception(cSlot.m_pError);
        if (ClStop::IsAsked()) return std::nullopt;
        std::optional<ClWork> cWork = std::move(cSlot.m_cWork);
        cSlot.m_cWork.reset();
        ++m_nCommitted;
        m_cRoom.notify_one();
        return cWork;
    }

    void WorkThread()
    {
        for (;;)
        {
            std::size_t nPlace = 0;
            ClInput cInput;
            if (!Take(cInput, nPlace)) return;
            std::optional<ClWork> cWork;
            std::exception_ptr pError;
            try
            {
                cWork = m_cSteps.m_Work(cInput);
            }
            catch (...)
            {
                pError = std::current_exception();
            }
            const std::lock_guard<std::mutex> cLock(m_cMutex);
            Slot(nPlace).m_cWork = std::move(cWork);
            Slot(nPlace).m_pError = pError;
            m_cDone.notify_one();
        }
    }

    bool Take(ClInput& cInput, std::size_t& nPlace)
    {
        // One thread after another asks the list, and waits there for room, so that the places are in the list's order
        // and a list that comes slowly does not keep the others from handing in what they have.
        const std::lock_guard<std::mutex> cTurn(m_cListMutex);
        {
            std::unique_lock<std::mutex> cLock(m_cMutex);
            while (m_nHandedOut - m_nCommitted >= m_aSlots.size() && !m_bStop) m_cRoom.wait(cLock);
            if (m_bStop || m_bListEnded || ClStop::IsAsked()) return false;
        }
        bool bTaken = false;
        std::exception_ptr pError;
        try
        {
            bTaken = m_cSteps.m_Next(cInput);
        }
        catch (...)
        {
            pError = std::current_exception();
        }
        const std::lock_guard<std::mutex> cLock(m_cMutex);
        m_bListEnded = !bTaken;
        if (pError != nullptr) Slot(m_nHandedOut).m_pError = pError;
        m_cDone.notify_one();
        if (bTaken) nPlace = m_nHandedOut++;
        return bTaken;
    }

    void Join()
    {
        {
            const std::lock_guard<std::mutex> cLock(m_cMutex);
            m_bStop = true;
            if (!m_bListEnded || m_nCommitted != m_nHandedOut) ClStop::Ask(); // such as decoders
        }
        m_cRoom.notify_all();
        for (std::thread& cThread : m_aThreads) cThread.join();
        m_aThreads.clear();
    }

    const ClBatchSteps& m_cSteps;
    std::mutex m_cListMutex;
    std::mutex m_cMutex; // of everything below
    std::condition_variable m_cDone;
    std::condition_variable m_cRoom;
    std::vector<ClSlot> m_aSlots; // of the places from m_nCommitted on
    std::size_t m_nHandedOut = 0;
    std::size_t m_nCommitted = 0;
    bool m_bListEnded = false;
    bool m_bStop = false;
    std::vector<std::thread> m_aThreads;
};
} // namespace

void RunBatch(int nJobs, const ClBatchSteps& cSteps)
{
    ClBatch(nJobs, cSteps).Run();
}
} // namespace SegmentTool
