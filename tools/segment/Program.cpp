#include "Program.hpp"

#include "AtomicFile.hpp"
#include "Batch.hpp"
#include "Escape.hpp"
#include "InputList.hpp"
#include "Options.hpp"
#include "Progress.hpp"
#include "Records.hpp"
#include "Report.hpp"
#include "ResultFile.hpp"
#include "Resume.hpp"
#include "Stop.hpp"
#include "Work.hpp"

#include <cstdio>
#include <cstring>
#include <exception>
#include <memory>
#include <new>

#include <fcntl.h>
#include <unistd.h>

namespace SegmentTool
{
namespace
{
// Without these a file that is opened later would take their place and receive what is meant for people.
void OpenStandardInputAndErrors()
{
    for (const int nFile : {STDIN_FILENO, STDERR_FILENO})
    {
        if (fcntl(nFile, F_GETFD) >= 0) continue;
        const int nNull = open("/dev/null", O_RDWR);
        if (nNull >= 0 && nNull != nFile)
        {
            dup2(nNull, nFile);
            close(nNull);
        }
    }
}

std::string SignalName(int nSignal)
{
    const char* szName = sigabbrev_np(nSignal);
    return szName != nullptr ? std::string("SIG") + szName : "signal " + std::to_string(nSignal);
}

/// A run: the list, the results, the messages.
class ClRun
{
public:
    explicit ClRun(const ClOptions& cOptions)
        : m_cOptions(cOptions), m_cMessages(cOptions.m_bQuiet), m_pWriter(ClRecordWriter::Create(cOptions.m_eRecords))
    {
    }
    ClRun(const ClRun&) = delete;
    ~ClRun() { m_cReport.Abandon(IsResumable()); } // has no effect on a page that is whole

    int Run()
    {
        if (!m_cOptions.m_sFolder.empty()) MakeFolders(m_cOptions.m_sFolder);
        m_pList = std::make_unique<ClInputList>(m_cOptions.m_cList, m_cOptions.m_sFolder);
        const std::uint64_t nTotal =
            m_cMessages.ShowsProgress() ? CountInputs(m_cOptions.m_cList, m_cOptions.m_sFolder) : 0;
        OpenResults();
        if (!m_cOptions.m_sReport.empty()) m_cReport.Open(m_cOptions.m_sReport, m_cTally.Total());
        m_cMessages.Start(nTotal == 1 ? 0 : nTotal, m_cTally);
        const ClBatchSteps cSteps = {[this](ClInput& cInput) { return m_pList->Next(cInput); },
                                     [this](const ClInput& cInput) { return WorkOn(cInput, m_cOptions); },
                                     [this](ClWork& cWork) { Commit(cWork); }};
        RunBatch(m_cOptions.m_nJobs, cSteps);
        m_cMessages.End();
        if (const int nSignal = ClStop::Signal()) return Stopped(nSignal);
        m_cOutput.Close();
        m_cReport.Finish(m_cTally);
        if (m_cTally.Total() != 1) m_cMessages.Tell(m_cTally.Summary());
        return m_cTally.Exit();
    }

private:
    void OpenResults()
    {
        if (m_cOptions.m_sOutput.empty())
            m_cOutput.OpenStandardOutput();
        else
            m_cOutput.Open(m_cOptions.m_sOutput, m_cOptions.m_bResume);
        std::uint64_t nBytes = 0;
        if (m_cOptions.m_bResume)
        {
            const ClDone cDone =
                ReadResults(m_cOptions.m_sOutput, m_cOptions.m_eRecords,
                            [this](std::uint64_t nIndex, const std::string& sInput) { Skip(nIndex, sInput); });
            nBytes = cDone.m_nBytes;
            m_cTally = cDone.m_cTally;
            m_cOutput.Truncate(nBytes);
        }
        if (nBytes == 0) m_cOutput.Write(m_pWriter->Header());
    }

    // A picture that has its result already must be the next one of the list.
    void Skip(std::uint64_t nIndex, const std::string& sInput)
    {
        ClInput cInput;
        const bool bListed = m_pList->Next(cInput);
        if (bListed && cInput.m_nIndex == nIndex && InputAsWritten(m_cOptions.m_eRecords, cInput.m_sPath) == sInput)
            return;
        throw ClRunError(eExitUsage, EscapeText(m_cOptions.m_sOutput) + " is not of this list: there, picture " +
                                         std::to_string(nIndex) + " is " + EscapeText(sInput) + ", and " +
                                         (bListed ? "here, picture " + std::to_string(cInput.m_nIndex) + " is " +
                                                        EscapeText(cInput.m_sPath)
                                                  : "the list has ended"));
    }

    void Commit(ClWork& cWork)
    {
        WriteFiles(m_cOptions, cWork);
        const ClResult& cResult = cWork.m_cResult;
        // In this order, so that what has a result has everything else, whenever the run ends.
        if (m_cReport.IsOpen()) m_cReport.Add(ReportCard(cResult, cWork.m_sThumbnailUri));
        m_cOutput.Write(m_pWriter->Record(cResult));
        m_cTally.Add(cResult.m_eOutcome);
        if (cResult.m_eOutcome != EOutcome::eSegmented && !m_bResultsSeen)
        {
            m_cMessages.Tell(EscapeText(cResult.m_sInput) + ": " + EscapeText(cResult.m_sMessage));
        }
        m_cMessages.Step(m_cTally);
    }

    bool IsResumable() const { return !m_cOptions.m_sOutput.empty() && m_cOptions.m_eRecords != ERecords::eText; }

    int Stopped(int nSignal)
    {
        m_cMessages.Tell("ended by " + SignalName(nSignal) + " behind " + std::to_string(m_cTally.Total()) +
                         (IsResumable() ? " pictures; the same with --resume goes on there" : " pictures"));
        return eExitSignal + nSignal;
    }

    const ClOptions& m_cOptions;
    // People who read the results as they come need not be told twice.
    const bool m_bResultsSeen = m_cOptions.m_eRecords == ERecords::eText && m_cOptions.m_sOutput.empty() &&
                                isatty(STDOUT_FILENO) != 0 && isatty(STDERR_FILENO) != 0;
    ClMessages m_cMessages;
    std::unique_ptr<ClRecordWriter> m_pWriter;
    std::unique_ptr<ClInputList> m_pList;
    ClResultFile m_cOutput;
    ClReport m_cReport;
    ClTally m_cTally;
};
} // namespace

int RunProgram(int nArguments, const char* const* aszArguments)
{
    try
    {
        OpenStandardInputAndErrors();
        const ClCommand cCommand = ParseCommandLine(nArguments, aszArguments);
        if (!cCommand.m_sErrors.empty())
        {
            std::fputs(cCommand.m_sErrors.c_str(), stderr);
            return eExitUsage;
        }
        ClStop::Install();
        if (cCommand.m_bRun) return ClRun(cCommand.m_cOptions).Run();
        ClResultFile cOut;
        cOut.OpenStandardOutput();
        cOut.Write(cCommand.m_sOut);
        return eExitDone;
    }
    catch (const ClRunError& cError)
    {
        TellAlways(cError.what());
        return cError.m_nExit;
    }
    catch (const std::bad_alloc&)
    {
        TellAlways("not enough memory");
    }
    catch (const std::exception& cError)
    {
        TellAlways(std::string("internal fault: ") + cError.what());
    }
    return eExitInternal;
}
} // namespace SegmentTool
