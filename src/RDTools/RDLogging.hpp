#pragma once

#include <cstdarg>

/// Level of a log message, after the numbering of syslog.
enum VlmLogLevels : int
{
    eLogEmergency = 0,
    eLogAlert = 1,
    eLogCritical = 2,
    eLogError = 3,
    eLogWarning = 4,
    eLogNotice = 5,
    eLogInfo = 6,
    eLogDebug = 7
};

/// Bytes of a message's buffer, terminator included.
constexpr int nLogBufferSize = 1024;

/// "Emergency" to "Debug"; "Unknown" for any other level.
const char* LogLevelName(VlmLogLevels eLevel);
/// Formats into szBuffer. A message of more than 1024 characters is cut to 1023; one of exactly 1024 is an error.
/// Errors: ClException -49 for a null format, a failed formatting and a message of exactly 1024 characters.
void FormatLogMessage(char (&szBuffer)[nLogBufferSize], const char* szFormat, va_list args);
/// Writes "TIME [LEVEL] - MESSAGE" and a line break to standard output, which is not flushed. Errors: ClExBadAlloc.
void WriteLogLine(VlmLogLevels eLevel, const char* szMessage);

/// Room for an object that is made at load time and never destroyed.
template <class T> union TpImmortal
{
    TpImmortal() : m_object() {}
    ~TpImmortal() {} // NOLINT(modernize-use-equals-default): the default would want to destroy the object

    T m_object;
};

/// The end of the chain of loggers: forgets the message.
class ClLoggingNone
{
public:
    virtual ~ClLoggingNone() = default;
    void Write(VlmLogLevels, const char*) {}
};

/// A link of the chain: hands the messages on to its one logger of class Policy. The links make the logger of the
/// system: it is switched on by the configurator and written by the console. All of it is set up at load time and only
/// read afterwards, so any thread may log, also one that still runs when the process ends.
template <class Policy> class TpLogging
{
public:
    virtual ~TpLogging() = default;

    /// printf-style. The message is formatted, and can fail, whether it is written or not.
    /// Errors: those of FormatLogMessage and WriteLogLine.
    static void LogF(VlmLogLevels eLevel, const char* szFormat, ...) __attribute__((format(printf, 2, 3)));
    static void LogV(VlmLogLevels eLevel, const char* szFormat, va_list args);

    void Write(VlmLogLevels eLevel, const char* szMessage) { m_oFallbackLogger.Write(eLevel, szMessage); }

    static Policy& m_oFallbackLogger;

private:
    static TpImmortal<Policy> m_oRoom;
};

/// Writes to standard output what is not above its level.
template <class Policy> class TpLoggingConsole : public TpLogging<Policy>
{
public:
    /// The level is VELMARIN_SDK_LOG_LEVEL of the environment, if that is 0 to 7.
    TpLoggingConsole();

    void Write(VlmLogLevels eLevel, const char* szMessage);

    int m_nLevel = eLogDebug; ///< highest level written
};

/// The place of a debugger's window: this platform has none.
template <class Policy> class TpLoggingDebugOut : public TpLogging<Policy>
{
};

/// Switches the log on and off.
template <class Policy> class TpLoggingConfigurator : public TpLogging<Policy>
{
public:
    /// On if VELMARIN_SDK_LOG of the environment is exactly "1".
    TpLoggingConfigurator();

    void Write(VlmLogLevels eLevel, const char* szMessage);

    bool m_bEnabled = false;
};

/// The logger of the system.
using ClSystemLogging = TpLogging<TpLoggingConfigurator<TpLoggingDebugOut<TpLoggingConsole<ClLoggingNone>>>>;

extern template class TpLogging<ClLoggingNone>;
extern template class TpLoggingConsole<ClLoggingNone>;
extern template class TpLogging<TpLoggingConsole<ClLoggingNone>>;
extern template class TpLoggingDebugOut<TpLoggingConsole<ClLoggingNone>>;
extern template class TpLogging<TpLoggingDebugOut<TpLoggingConsole<ClLoggingNone>>>;
extern template class TpLoggingConfigurator<TpLoggingDebugOut<TpLoggingConsole<ClLoggingNone>>>;
extern template class TpLogging<TpLoggingConfigurator<TpLoggingDebugOut<TpLoggingConsole<ClLoggingNone>>>>;
