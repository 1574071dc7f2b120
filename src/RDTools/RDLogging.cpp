#include "RDTools/RDLogging.hpp"

#include "RDTools/Exception.hpp"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <iterator>
#include <sys/time.h>

namespace
{
constexpr char szModule[] = "RDTools/RDLogging";

constexpr int nTimeTextSize = 80;

/// Local time as "2024-Feb-29 23:59:01.000250", in English whatever the locale is; the fraction is left out when it is
/// 0. Needs no memory, so that a line about a failed allocation can be written.
void FormatTime(const timeval& cNow, char (&szText)[nTimeTextSize])
{
    static const char* const aszMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                            "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    tm cLocal = {};
    localtime_r(&cNow.tv_sec, &cLocal);
    const int nLength =
        std::snprintf(szText, sizeof szText, "%04d-%s-%02d %02d:%02d:%02d", cLocal.tm_year + 1900,
                      aszMonths[cLocal.tm_mon], cLocal.tm_mday, cLocal.tm_hour, cLocal.tm_min, cLocal.tm_sec);
    if (cNow.tv_usec != 0)
    {
        std::snprintf(szText + nLength, sizeof szText - static_cast<std::size_t>(nLength), ".%06ld",
                      static_cast<long>(cNow.tv_usec));
    }
}
} // namespace

const char* LogLevelName(VlmLogLevels eLevel)
{
    static const char* const aszNames[] = {"Emergency", "Alert",  "Critical", "Error",
                                           "Warning",   "Notice", "Info",     "Debug"};
    const bool bKnown = eLevel >= eLogEmergency && eLevel <= eLogDebug;
    return bKnown ? aszNames[eLevel] : "Unknown";
}

void FormatLogMessage(char (&szBuffer)[nLogBufferSize], const char* szFormat, va_list args)
{
    if (szFormat == nullptr)
    {
        throw ClException("szFormat == NULL", FPC_ERROR_LOGGING, true, szModule, __LINE__);
    }
    const int nLength = std::vsnprintf(szBuffer, nLogBufferSize, szFormat, args);
    if (nLength < 0)
    {
        throw ClException(std::strerror(errno), FPC_ERROR_LOGGING, true, szModule, __LINE__);
    }
    // Only this one length is refused; a longer message goes on without its end.
    if (nLength == nLogBufferSize)
    {
        throw ClException("Logging Message bigger than 1024 bytes.", FPC_ERROR_LOGGING, true, szModule, __LINE__);
    }
}

void WriteLogLine(VlmLogLevels eLevel, const char* szMessage)
{
    timeval cNow = {};
    gettimeofday(&cNow, nullptr);
    char szTime[nTimeTextSize];
    FormatTime(cNow, szTime);
    std::printf("%s [%s] - %s\n", szTime, LogLevelName(eLevel), szMessage);
}

template <class Policy> TpImmortal<Policy> TpLogging<Policy>::m_oRoom;
template <class Policy> Policy& TpLogging<Policy>::m_oFallbackLogger = m_oRoom.m_object;

template <class Policy> void TpLogging<Policy>::LogF(VlmLogLevels eLevel, const char* szFormat, ...)
{
    struct ClArguments // ends the list on every path
    {
        va_list m_args;
        ~ClArguments() { va_end(m_args); }
    } cArguments;
    va_start(cArguments.m_args, szFormat);
    LogV(eLevel, szFormat, cArguments.m_args);
}

template <class Policy> void TpLogging<Policy>::LogV(VlmLogLevels eLevel, const char* szFormat, va_list args)
{
    char szBuffer[nLogBufferSize];
    FormatLogMessage(szBuffer, szFormat, args);
    m_oFallbackLogger.Write(eLevel, szBuffer);
}

template <class Policy> TpLoggingConsole<Policy>::TpLoggingConsole()
{
    const char* szLevel = std::getenv("VELMARIN_SDK_LOG_LEVEL");
    const int nLevel = szLevel != nullptr ? std::atoi(szLevel) : -1;
    if (nLevel >= eLogEmergency && nLevel <= eLogDebug)
    {
        m_nLevel = nLevel;
    }
}

template <class Policy> void TpLoggingConsole<Policy>::Write(VlmLogLevels eLevel, const char* szMessage)
{
    if (eLevel <= m_nLevel)
    {
        WriteLogLine(eLevel, szMessage);
    }
    TpLogging<Policy>::Write(eLevel, szMessage);
}

template <class Policy> TpLoggingConfigurator<Policy>::TpLoggingConfigurator()
{
    const char* szLog = std::getenv("VELMARIN_SDK_LOG");
    m_bEnabled = szLog != nullptr && std::strcmp(szLog, "1") == 0;
}

template <class Policy> void TpLoggingConfigurator<Policy>::Write(VlmLogLevels eLevel, const char* szMessage)
{
    if (m_bEnabled)
    {
        TpLogging<Policy>::Write(eLevel, szMessage);
    }
}

template class TpLogging<ClLoggingNone>;
template class TpLoggingConsole<ClLoggingNone>;
template class TpLogging<TpLoggingConsole<ClLoggingNone>>;
template class TpLoggingDebugOut<TpLoggingConsole<ClLoggingNone>>;
template class TpLogging<TpLoggingDebugOut<TpLoggingConsole<ClLoggingNone>>>;
template class TpLoggingConfigurator<TpLoggingDebugOut<TpLoggingConsole<ClLoggingNone>>>;
template class TpLogging<TpLoggingConfigurator<TpLoggingDebugOut<TpLoggingConsole<ClLoggingNone>>>>;
