#include "Program.hpp"

#include "AtomicFile.hpp"
#include "Escape.hpp"
#include "InputList.hpp"
#include "Options.hpp"
#include "Records.hpp"
#include "ResultFile.hpp"
#include "Stop.hpp"
#include "Work.hpp"

#include <cstdio>
#include <exception>
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

void Tell(const std::string& sText)
{
    std::fprintf(stderr, "kormelin-segment: %s\n", sText.c_str());
}

int Run(const ClOptions& cOptions)
{
    ClResultFile cOutput;
    if (cOptions.m_sOutput.empty())
        cOutput.OpenStandardOutput();
    else
        cOutput.Open(cOptions.m_sOutput, false);
    const std::unique_ptr<ClRecordWriter> pWriter = ClRecordWriter::Create(cOptions.m_eRecords);
    cOutput.Write(pWriter->Header());

    if (!cOptions.m_sFolder.empty()) MakeFolders(cOptions.m_sFolder);
    ClInputList cList(cOptions.m_cList, cOptions.m_sFolder);
    ClTally cTally;
    ClInput cInput;
    while (ClStop::Signal() == 0 && cList.Next(cInput))
    {
        ClWork cWork = WorkOn(cInput, cOptions);
        WriteFiles(cOptions, cWork);
        const ClResult& cResult = cWork.m_cResult;
        cOutput.Write(pWriter->Record(cResult));
        cTally.Add(cResult.m_eOutcome);
        if (!cOptions.m_bQuiet && cResult.m_eOutcome != EOutcome::eSegmented)
        {
            Tell(EscapeText(cResult.m_sInput) + ": " + EscapeText(cResult.m_sMessage));
        }
    }
    if (const int nSignal = ClStop::Signal()) return eExitSignal + nSignal;
    cOutput.Close();
    if (!cOptions.m_bQuiet && cTally.Total() > 1) Tell(cTally.Summary());
    return cTally.Exit();
}
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
        if (cCommand.m_bRun) return Run(cCommand.m_cOptions);
        ClResultFile cOut;
        cOut.OpenStandardOutput();
        cOut.Write(cCommand.m_sOut);
        return eExitDone;
    }
    catch (const ClRunError& cError)
    {
        Tell(cError.what());
        return cError.m_nExit;
    }
    catch (const std::bad_alloc&)
    {
        Tell("not enough memory");
    }
    catch (const std::exception& cError)
    {
        Tell(std::string("internal fault: ") + cError.what());
    }
    return eExitInternal;
}
} // namespace SegmentTool
