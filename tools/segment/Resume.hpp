#pragma once

#include "Records.hpp"
#include "Result.hpp"

#include <cstdint>
#include <functional>
#include <string>

namespace SegmentTool
{
/// What an earlier run has written to its file of results.
struct ClDone
{
    std::uint64_t m_nPictures = 0;
    std::uint64_t m_nBytes = 0; ///< up to here the results are whole; what follows was cut off by the end of that run
    ClTally m_cTally;
};

/// Reads results back, in the memory of one line. For each picture that is told whole it calls onPicture with the index
/// and the input as they stand there. A file that is not there, and one that ends within its header, hold nothing.
/// Errors: ClRunError, exit code 2 for what are no results of this form, 4 for a file that cannot be read.
ClDone ReadResults(const std::string& sPath, ERecords eRecords,
                   const std::function<void(std::uint64_t nIndex, const std::string& sInput)>& onPicture);

/// An input as ReadResults gives it back: JSON replaces bytes that are no UTF-8.
std::string InputAsWritten(ERecords eRecords, const std::string& sInput);
} // namespace SegmentTool
