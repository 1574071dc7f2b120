#pragma once

#include "RDTools/ParameterProvider.hpp"
#include "RDTools/TpArrayDynamic.hpp"

#include <sys/time.h>
#include <typeinfo>

/// Receives the start and the stop of each run. An application that wants timing sets g_pProfileTimer to an object of a
/// derived class before processors are created.
class ClProfileTimer
{
public:
    virtual void TimerStart(const char* szFormat, ...);
    virtual void TimerStop(const char* szFormat, ...);
    virtual ~ClProfileTimer();
};

/// Counts the runs and sums up the running times of each class of processors.
class ClClassCallProfile
{
public:
    struct ClEntry
    {
        const std::type_info* m_pType; ///< identified by its address
        double m_dSeconds;             ///< total running time
        long m_nCalls;                 ///< number of runs
    };

    virtual ~ClClassCallProfile();
    virtual void TraceTimes();
    void Clear(); ///< releases the entries
    /// Errors: ClExBadAlloc.
    void AddRun(const std::type_info& cType, double dSeconds);

    TpArrayDynamic<ClEntry, 10> m_aEntries;
};

// Both are null at load time and written by applications only. They are not locked: an application that runs processors
// on several threads leaves the profile alone.
extern __attribute__((visibility("default"))) ClClassCallProfile* g_pClassCallProfile;
extern __attribute__((visibility("default"))) ClProfileTimer* g_pProfileTimer;

namespace Vlm
{
/// Holds the time of its making.
class CXStopWatch
{
public:
    CXStopWatch();
    virtual ~CXStopWatch();
    double Seconds() const; ///< since it was made

    timeval m_cStart;
};
} // namespace Vlm

/// One step of image processing: set up through its parameters, run by Apply(), which fixes the order of the phases.
/// An object serves one run at a time on one thread.
class ClProcessorBase : public ClParameterProvider
{
public:
    ClProcessorBase();

    void QueryParameters(ClParameterInterface& cInterface) override;
    void SetParametersToDefault() override;
    void PublishParameters(ClParameterContainer& cContainer) override;
    virtual ClProcessorBase* Create() = 0; ///< a new processor of the same class, owned by the caller
    virtual const char* Name() const = 0;  ///< the class's name; this body says "ProcessorBase"
    virtual bool CanApply();
    /// The present settings as a text for the timer; here an empty one. Errors: nSize 0 ClException -101.
    virtual void ParameterString(char* szBuffer, unsigned long nSize);
    virtual void QueryParameters(ClParameterContainer& cContainer);
    virtual void Timer(bool bEnable);
    virtual long Initialize();
    virtual long Finalize(long nResult);
    virtual long Process() = 0;

    /// Initialize(), Process(), Finalize(). Process runs only after an Initialize that returned 0; Finalize runs
    /// exactly when Process returned. Returns Initialize's failure or Process's result. Errors: a failing Finalize
    /// raises ClException with its value; exceptions of Initialize and Process pass through, and nothing further is
    /// run.
    long Apply();

    void TimerStart(const char* szText);
    void TimerStop(const char* szText); ///< without a text: the name and the parameter string
    bool IsTimerEnabled() const { return m_pTimer != nullptr; }

    ClProfileTimer* m_pTimer; ///< not owned; g_pProfileTimer at construction

protected:
    /// Formats into a settings text. Errors: nSize 0, or a text that does not fit, ClException -101.
    static void FormatSettings(char* szBuffer, unsigned long nSize, const char* szFormat, ...)
        __attribute__((format(printf, 3, 4)));
};

/// A new object of a processor's class, for Create(). Errors: ClExBadAlloc.
template <class Processor> Processor* NewProcessor()
{
    return ConvertBadAlloc([] { return new Processor; });
}
