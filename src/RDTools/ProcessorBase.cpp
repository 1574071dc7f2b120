#include "RDTools/ProcessorBase.hpp"

#include <cstdarg>
#include <cstdio>

ClClassCallProfile* g_pClassCallProfile = nullptr;
ClProfileTimer* g_pProfileTimer = nullptr;

void ClProfileTimer::TimerStart(const char*, ...) {}

void ClProfileTimer::TimerStop(const char*, ...) {}

ClProfileTimer::~ClProfileTimer() = default;

ClClassCallProfile::~ClClassCallProfile() = default;

void ClClassCallProfile::TraceTimes() {}

void ClClassCallProfile::Clear()
{
    m_aEntries.New(0);
}

void ClClassCallProfile::AddRun(const std::type_info& cType, double dSeconds)
{
    for (unsigned long i = 0; i < m_aEntries.Entries(); ++i)
    {
        ClEntry& cEntry = m_aEntries[i];
        if (cEntry.m_pType == &cType)
        {
            ++cEntry.m_nCalls;
            cEntry.m_dSeconds += dSeconds;
            return;
        }
    }
    m_aEntries.Add(ClEntry{&cType, dSeconds, 1});
}

namespace Vlm
{
CXStopWatch::CXStopWatch()
{
    gettimeofday(&m_cStart, nullptr);
}

CXStopWatch::~CXStopWatch() = default;

double CXStopWatch::Seconds() const
{
    timeval cEnd;
    gettimeofday(&cEnd, nullptr);
    timeval cElapsed;
    timersub(&cEnd, &m_cStart, &cElapsed); // borrows the microseconds
    return static_cast<double>(cElapsed.tv_sec) + 1e-06 * static_cast<double>(cElapsed.tv_usec);
}
} // namespace Vlm

ClProcessorBase::ClProcessorBase() : m_pTimer(g_pProfileTimer) {}

void ClProcessorBase::QueryParameters(ClParameterInterface&) {}

void ClProcessorBase::SetParametersToDefault() {}

void ClProcessorBase::PublishParameters(ClParameterContainer&) {}

const char* ClProcessorBase::Name() const
{
    return "ProcessorBase";
}

bool ClProcessorBase::CanApply()
{
    return true;
}

void ClProcessorBase::ParameterString(char* szBuffer, unsigned long nSize)
{
    if (nSize == 0)
    {
        throw ClException("Unexpected zero-length string", FPC_ERROR_INTERNAL, false, "Unknown", -1);
    }
    szBuffer[0] = '\0';
}

void ClProcessorBase::QueryParameters(ClParameterContainer& cContainer)
{
    ClParameterProvider::QueryParameters(cContainer);
}

void ClProcessorBase::Timer(bool bEnable)
{
    m_pTimer = bEnable ? g_pProfileTimer : nullptr;
}

long ClProcessorBase::Initialize()
{
    return FPC_SUCCESS;
}

long ClProcessorBase::Finalize(long)
{
    return FPC_SUCCESS;
}

long ClProcessorBase::Apply()
{
    TimerStart(nullptr);
    const Vlm::CXStopWatch cWatch;
    if (const long nFailure = Initialize())
    {
        return nFailure;
    }
    const long nResult = Process();
    if (const long nFailure = Finalize(nResult))
    {
        throw ClException("Finalization failed", nFailure, true, "RDTools/ProcessorBase", __LINE__);
    }
    if (g_pClassCallProfile != nullptr)
    {
        g_pClassCallProfile->AddRun(typeid(*this), cWatch.Seconds());
    }
    TimerStop(nullptr);
    return nResult;
}

void ClProcessorBase::TimerStart(const char* szText)
{
    if (m_pTimer != nullptr)
    {
        m_pTimer->TimerStart(szText);
    }
}

void ClProcessorBase::TimerStop(const char* szText)
{
    if (m_pTimer == nullptr)
    {
        return;
    }
    if (szText != nullptr)
    {
        m_pTimer->TimerStop(szText);
        return;
    }
    char szSettings[512];
    ParameterString(szSettings, sizeof szSettings);
    m_pTimer->TimerStop("%s %s", Name(), szSettings);
}

void ClProcessorBase::FormatSettings(char* szBuffer, unsigned long nSize, const char* szFormat, ...)
{
    va_list args;
    va_start(args, szFormat);
    const int nLength = std::vsnprintf(szBuffer, nSize, szFormat, args);
    va_end(args);
    if (nLength < 0 || static_cast<unsigned long>(nLength) >= nSize)
    {
        throw ClException("String-Length exceeded available size", FPC_ERROR_INTERNAL, true, "RDTools/ProcessorBase",
                          __LINE__);
    }
}
