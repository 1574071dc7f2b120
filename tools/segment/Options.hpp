#pragma once

#include "InputFile.hpp"
#include "Records.hpp"

#include <string>
#include <vector>

namespace SegmentTool
{
enum class EImageFormat
{
    ePng,
    eBmp
};

/// Where the pictures come from.
struct ClListOptions
{
    std::vector<std::string> m_aInputs;
    bool m_bRecursive = false;
    std::vector<std::string> m_aEndings; ///< of names, taken from folders; without the dot, in small letters; "*": all
    std::string m_sListFile;             ///< further names, "-" from standard input; empty: none
    bool m_bNullSeparated = false;       ///< names in that list end with a zero byte instead of a line end
    unsigned long m_nShard = 1;          ///< of m_nShards, from 1: takes pictures m_nShard, m_nShard + m_nShards, ...
    unsigned long m_nShards = 1;
};

/// What the command line asks for.
struct ClOptions
{
    ClListOptions m_cList;
    ClReading m_cReading;
    bool m_bBiggest = false;
    int m_nExpect = 0; ///< fewest fingers that are enough; 0: any
    ERecords m_eRecords = ERecords::eText;
    std::string m_sOutput; ///< file of the results; empty: standard output
    bool m_bResume = false;
    std::string m_sFolder; ///< of the fingers' pictures; empty: none
    EImageFormat m_eImageFormat = EImageFormat::ePng;
    bool m_bOverlay = false;
    bool m_bTree = false; ///< folders of the inputs below m_sFolder
    std::string m_sReport;
    int m_nJobs = 1;
    bool m_bQuiet = false;
};

/// What to do after reading the command line.
struct ClCommand
{
    bool m_bRun = false;
    std::string m_sOut;    ///< for standard output: help or version
    std::string m_sErrors; ///< for standard error, and exit code 2
    ClOptions m_cOptions;
};

/// Reads the command line; never ends the process.
ClCommand ParseCommandLine(int nArguments, const char* const* aszArguments);

/// "--version": the library's number and the formats that were built in.
std::string VersionText();
} // namespace SegmentTool
