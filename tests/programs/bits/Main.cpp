// Prints one hash for each result of the library over a fixed set of inputs, or compares them with those of a file.
// Every build on every machine must give the same.

#include "BitItems.hpp"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <map>
#include <mutex>
#include <stdexcept>
#include <thread>

#include <sys/wait.h>
#include <unistd.h>

namespace
{
enum EExit
{
    eExitDone = 0,
    eExitFailed = 1,
    eExitUsage = 2
};

constexpr long nMostTold = 25; ///< differences of one comparison

struct ClOptions
{
    BitItems_t m_aItems;
    std::string m_sExpected; ///< file of the expected lines; empty: print
    std::string m_sOnly;     ///< beginning of the names of the items to run
    long m_nThreads = 1;
    long m_nRepeats = 1;
    bool m_bFork = false;
};

using Hashes_t = std::map<std::string, std::string>; ///< by name

void PrintUsage(std::FILE* pTo)
{
    std::fputs("usage: kormelin_bits [--operators] [--drawn] [--large] [--files FOLDER] [--only BEGINNING]\n"
               "                     [--threads N] [--repeat N] [--fork] [--expected FILE]\n"
               "Runs the operators on pseudo-random images, the road on drawn slaps (with --large also those of 1000\n"
               "pixels per inch) or on the BMP files of a folder, and prints a line of name and hash for each result.\n"
               "--only takes those whose name begins so. --threads shares them among so many threads; --repeat runs\n"
               "all so often and compares each time with the first; --fork runs all in a child process, after some\n"
               "of them in its parent. --expected compares with a file instead of printing: lines that begin with #\n"
               "are comments, and of its lines those that the run did not make are passed over.\n"
               "Exit status: 0 the same everywhere; 1 differences, or a failure; 2 wrong usage.\n",
               pTo);
}

/// Runs all items, shared among the threads.
Hashes_t RunAll(const BitItems_t& aItems, long nThreads)
{
    Hashes_t aHashes;
    std::string sFailure;
    std::mutex cMutex;
    std::atomic<std::size_t> nNext{0};
    const auto fnWork = [&]
    {
        for (std::size_t i = nNext++; i < aItems.size(); i = nNext++)
        {
            ClBitItem::Lines_t aLines;
            std::string sProblem;
            try
            {
                aLines = aItems[i].m_fnRun();
            }
            catch (const std::exception& e)
            {
                sProblem = aItems[i].m_sName + ": " + e.what();
            }
            const std::lock_guard<std::mutex> cLock(cMutex);
            if (!sProblem.empty()) sFailure = sProblem;
            for (const std::string& sLine : aLines)
            {
                const std::size_t nBlank = sLine.find(' ');
                aHashes[sLine.substr(0, nBlank)] = sLine.substr(nBlank + 1);
            }
        }
    };
    std::vector<std::thread> aThreads;
    for (long n = 1; n < nThreads; ++n) aThreads.emplace_back(fnWork);
    fnWork();
    for (std::thread& cThread : aThreads) cThread.join();
    if (!sFailure.empty()) throw std::runtime_error(sFailure);
    return aHashes;
}

Hashes_t ReadExpected(const std::string& sPath)
{
    std::ifstream cFile(sPath);
    Hashes_t aHashes;
    for (std::string sLine; std::getline(cFile, sLine);)
    {
        const std::size_t nBlank = sLine.find(' ');
        if (sLine.empty() || sLine[0] == '#' || nBlank == std::string::npos) continue;
        aHashes[sLine.substr(0, nBlank)] = sLine.substr(nBlank + 1);
    }
    if (aHashes.empty()) throw std::runtime_error(sPath + ": holds no hashes");
    return aHashes;
}

/// Tells the first differences; returns their number. Every result of the run must be expected.
long Compare(const Hashes_t& aFound, const Hashes_t& aExpected)
{
    long nDifferences = 0;
    for (const auto& [sName, sHash] : aFound)
    {
        const auto it = aExpected.find(sName);
        if (it != aExpected.end() && it->second == sHash) continue;
        if (++nDifferences > nMostTold) continue;
        std::printf("%s: %s, expected %s\n", sName.c_str(), sHash.c_str(),
                    it == aExpected.end() ? "nothing" : it->second.c_str());
    }
    return nDifferences;
}

int RunAndCompare(const ClOptions& cOptions)
{
    const Hashes_t aFirst = RunAll(cOptions.m_aItems, cOptions.m_nThreads);
    long nDifferences = 0;
    if (cOptions.m_sExpected.empty())
        for (const auto& [sName, sHash] : aFirst) std::printf("%s %s\n", sName.c_str(), sHash.c_str());
    else
        nDifferences = Compare(aFirst, ReadExpected(cOptions.m_sExpected));
    for (long n = 1; n < cOptions.m_nRepeats; ++n)
        nDifferences += Compare(RunAll(cOptions.m_aItems, cOptions.m_nThreads), aFirst);
    if (!cOptions.m_sExpected.empty())
        std::printf("%zu results, %ld times on %ld threads: %ld differences\n", aFirst.size(), cOptions.m_nRepeats,
                    cOptions.m_nThreads, nDifferences);
    std::fflush(stdout);
    return nDifferences == 0 ? eExitDone : eExitFailed;
}

/// In a child of a process that has used the library already.
int RunInChild(const ClOptions& cOptions)
{
    const BitItems_t& aItems = cOptions.m_aItems;
    RunAll(BitItems_t(aItems.begin(),
                      aItems.begin() + static_cast<std::ptrdiff_t>(std::min<std::size_t>(30, aItems.size()))),
           cOptions.m_nThreads);
    const pid_t nChild = fork();
    if (nChild == 0) std::_Exit(RunAndCompare(cOptions));
    int nStatus = 0;
    if (nChild < 0 || waitpid(nChild, &nStatus, 0) != nChild || !WIFEXITED(nStatus))
        throw std::runtime_error("the child did not end by itself");
    return WEXITSTATUS(nStatus);
}

// The whole text as a number from 1 to 1000000, else 0.
long ParseCount(const char* szText)
{
    char* pEnd = nullptr;
    const long nValue = std::strtol(szText, &pEnd, 10);
    return pEnd == szText || *pEnd != '\0' || nValue < 1 || nValue > 1000000 ? 0 : nValue;
}

/// False for what is no option.
bool Parse(int nArguments, char** aszArguments, ClOptions& cOptions)
{
    bool bDrawn = false;
    bool bLarge = false;
    for (int i = 1; i < nArguments; ++i)
    {
        const std::string sOption = aszArguments[i];
        const bool bMore = i + 1 < nArguments;
        if (sOption == "--operators")
            AddOperatorItems(cOptions.m_aItems);
        else if (sOption == "--drawn")
            bDrawn = true;
        else if (sOption == "--large")
            bLarge = true;
        else if (sOption == "--fork")
            cOptions.m_bFork = true;
        else if (sOption == "--files" && bMore)
            AddFileItems(cOptions.m_aItems, aszArguments[++i]);
        else if (sOption == "--only" && bMore)
            cOptions.m_sOnly = aszArguments[++i];
        else if (sOption == "--expected" && bMore)
            cOptions.m_sExpected = aszArguments[++i];
        else if (sOption == "--threads" && bMore)
            cOptions.m_nThreads = ParseCount(aszArguments[++i]);
        else if (sOption == "--repeat" && bMore)
            cOptions.m_nRepeats = ParseCount(aszArguments[++i]);
        else
            return false;
    }
    if (bDrawn || bLarge) AddDrawnItems(cOptions.m_aItems, bLarge);
    BitItems_t& aItems = cOptions.m_aItems;
    const auto fnOther = [&](const ClBitItem& c) { return c.m_sName.rfind(cOptions.m_sOnly, 0) != 0; };
    aItems.erase(std::remove_if(aItems.begin(), aItems.end(), fnOther), aItems.end());
    return !aItems.empty() && cOptions.m_nThreads > 0 && cOptions.m_nRepeats > 0;
}
} // namespace

int main(int nArguments, char** aszArguments)
{
    try
    {
        ClOptions cOptions;
        if (!Parse(nArguments, aszArguments, cOptions))
        {
            PrintUsage(stderr);
            return eExitUsage;
        }
        return cOptions.m_bFork ? RunInChild(cOptions) : RunAndCompare(cOptions);
    }
    catch (const std::exception& e)
    {
        std::fprintf(stderr, "kormelin_bits: %s\n", e.what());
        return eExitFailed;
    }
}
