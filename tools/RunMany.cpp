// Measures the memory of the library: many runs on one picture with one handle, through the exported functions.

#include "SlapRun.hpp"

#include "VelmarinKormelinSegmentation.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <fstream>
#include <stdexcept>
#include <string>

#include <malloc.h>
#include <sys/resource.h>
#include <unistd.h>

namespace
{
enum EExit
{
    eExitDone = 0,
    eExitFailed = 1,
    eExitUsage = 2
};

constexpr double dMostBytesPerPixel = 4.0; // of the input, at the peak, the picture itself not counted
constexpr long nSettledRun = 10;           // memory that is kept from run to run is there by then

struct ClOptions
{
    std::string m_sImage;
    long m_nRuns = 100;
    long m_nMode = 0;
};

void PrintUsage(std::FILE* pTo)
{
    std::fprintf(
        pTo,
        "usage: run-many IMAGE.bmp [--runs N] [--mode 0|1]\n"
        "Cuts the image into its segments N times on one handle, 11 to 1000000 times, by default 100, and\n"
        "prints a table of one row: the largest peak of resident memory in a run beyond what was resident before\n"
        "it, in kilobytes and in bytes per pixel of the picture, and the bytes of the heap in use after\n"
        "run %ld and after the last. Mode is the \"SegmentationMode\", by default 0.\n"
        "Exit status: 0 within the limits; 1 if more heap is in use at the end than after run %ld, if the\n"
        "peak is above %.0f bytes per pixel, if a run fails or differs from the first; 2 wrong usage.\n",
        nSettledRun, nSettledRun, dMostBytesPerPixel);
}

// The whole text as a number between the limits, else -1.
long ParseNumber(const char* szText, long nLowest, long nHighest)
{
    char* pEnd = nullptr;
    errno = 0;
    const long nValue = std::strtol(szText, &pEnd, 10);
    if (pEnd == szText || *pEnd != '\0' || errno != 0 || nValue < nLowest || nValue > nHighest) return -1;
    return nValue;
}

bool ParseArguments(int nArguments, char** aszArguments, ClOptions& cOptions)
{
    for (int i = 1; i < nArguments; ++i)
    {
        const std::string sArgument = aszArguments[i];
        if ((sArgument == "--runs" || sArgument == "--mode") && i + 1 < nArguments)
        {
            long& nOption = sArgument == "--runs" ? cOptions.m_nRuns : cOptions.m_nMode;
            nOption = sArgument == "--runs" ? ParseNumber(aszArguments[++i], nSettledRun + 1, 1000000)
                                            : ParseNumber(aszArguments[++i], 0, 1);
            if (nOption < 0) return false;
        }
        else if (sArgument.empty() || sArgument[0] == '-' || !cOptions.m_sImage.empty())
        {
            return false;
        }
        else
        {
            cOptions.m_sImage = sArgument;
        }
    }
    return !cOptions.m_sImage.empty();
}

// Resident memory of this process in bytes, now.
double ResidentBytes()
{
    std::ifstream cFile("/proc/self/statm");
    double dTotalPages = 0.0;
    double dResidentPages = 0.0;
    if (!(cFile >> dTotalPages >> dResidentPages)) throw std::runtime_error("/proc/self/statm: cannot be read");
    return dResidentPages * static_cast<double>(sysconf(_SC_PAGESIZE));
}

// Sets the high-water mark of resident memory to what is resident now. Where the kernel does not allow it, the mark
// stays that of the whole process, which can only be higher.
void ResetPeak()
{
    std::ofstream("/proc/self/clear_refs") << "5";
}

// The high-water mark in bytes.
double PeakBytes()
{
    std::ifstream cFile("/proc/self/status");
    std::string sLine;
    while (std::getline(cFile, sLine))
    {
        if (sLine.compare(0, 6, "VmHWM:") == 0) return std::strtod(sLine.c_str() + 6, nullptr) * 1024.0;
    }
    rusage cUsage{};
    if (getrusage(RUSAGE_SELF, &cUsage) != 0) throw std::runtime_error("the peak of memory cannot be read");
    return static_cast<double>(cUsage.ru_maxrss) * 1024.0;
}

// Bytes handed out by the allocator and not given back, those with mappings of their own included.
std::size_t HeapInUse()
{
    const struct mallinfo2 cInfo = mallinfo2();
    return cInfo.uordblks + cInfo.hblkhd;
}

double PixelsOf(const std::vector<std::uint8_t>& aFile)
{
    tagBITMAPINFOHEADER cHeader;
    constexpr std::size_t nFileHeader = 14;
    if (aFile.size() < nFileHeader + sizeof cHeader) return 0.0;
    std::memcpy(&cHeader, aFile.data() + nFileHeader, sizeof cHeader);
    return static_cast<double>(cHeader.biWidth) * cHeader.biHeight;
}

// Returns the peak of resident memory beyond what was resident before, in bytes. The segments of the run before, which
// the handles keep, are not counted again; what the allocator holds back is given to the system first. Only code and
// count come back: copies of the bitmaps, kept for longer, would count as memory of the library.
double RunOnce(ClSlapRunner& cRunner, const std::vector<std::uint8_t>& aFile, long& nCode, long& nCount)
{
    malloc_trim(0);
    ResetPeak();
    const double dBefore = ResidentBytes();
    const ClSlapRunResult cResult = cRunner.Run(aFile);
    nCode = cResult.m_nCode;
    nCount = cResult.m_nCount;
    return PeakBytes() - dBefore;
}

int Measure(const ClOptions& cOptions)
{
    const std::vector<std::uint8_t> aFile = ReadWholeFile(cOptions.m_sImage);
    const double dPixels = PixelsOf(aFile);
    ClSlapRunner(cOptions.m_nMode).Run(aFile); // pages of code that are first needed are no memory of a run
    ClSlapRunner cRunner(cOptions.m_nMode);
    long nCode = 0;
    long nCount = 0;
    double dPeak = RunOnce(cRunner, aFile, nCode, nCount);
    // More than two fingers is a whole run, too: the library finds and cuts them before it refuses them.
    if (nCode != FPC_SUCCESS && !(nCode == FPC_ERROR_PARAM_OUT_OF_RANGE && nCount > 2))
    {
        std::fprintf(stderr, "run-many: %s: error %ld: %s\n", cOptions.m_sImage.c_str(), nCode,
                     KSGetErrorDescriptionA(nCode));
        return eExitFailed;
    }
    std::size_t nSettled = 0;
    bool bSame = true;
    for (long nRun = 2; nRun <= cOptions.m_nRuns; ++nRun)
    {
        long nNextCode = 0;
        long nNextCount = 0;
        dPeak = std::max(dPeak, RunOnce(cRunner, aFile, nNextCode, nNextCount));
        bSame = bSame && nNextCode == nCode && nNextCount == nCount;
        if (nRun == nSettledRun) nSettled = HeapInUse();
    }
    const std::size_t nLast = HeapInUse();

    const std::string sName = cOptions.m_sImage.substr(cOptions.m_sImage.find_last_of('/') + 1);
    std::printf("%-24s %4s %7s %4s %5s %10s %11s %12s %12s\n", "picture", "mode", "runs", "code", "Count", "peak kB",
                "bytes/pixel", "heap 10", "heap last");
    std::printf("%-24s %4ld %7ld %4ld %5ld %10.0f %11.2f %12zu %12zu\n", sName.c_str(), cOptions.m_nMode,
                cOptions.m_nRuns, nCode, nCount, dPeak / 1024.0, dPeak / dPixels, nSettled, nLast);
    const bool bGrown = nLast > nSettled;
    const bool bHigh = dPeak > dMostBytesPerPixel * dPixels;
    if (!bSame) std::fprintf(stderr, "run-many: a run differs from the first\n");
    if (bGrown) std::fprintf(stderr, "run-many: the heap in use has grown\n");
    if (bHigh) std::fprintf(stderr, "run-many: the peak is above the limit\n");
    return bSame && !bGrown && !bHigh ? eExitDone : eExitFailed;
}
} // namespace

int main(int nArguments, char** aszArguments)
{
    ClOptions cOptions;
    if (nArguments == 2 && std::strcmp(aszArguments[1], "--help") == 0)
    {
        PrintUsage(stdout);
        return eExitDone;
    }
    if (!ParseArguments(nArguments, aszArguments, cOptions))
    {
        PrintUsage(stderr);
        return eExitUsage;
    }
    // Large blocks go back to the system as soon as they are freed, so that what is resident is what is in use.
    mallopt(M_MMAP_THRESHOLD, 128 * 1024);
    try
    {
        return Measure(cOptions);
    }
    catch (const std::exception& e)
    {
        std::fprintf(stderr, "run-many: %s\n", e.what());
        return eExitFailed;
    }
}
