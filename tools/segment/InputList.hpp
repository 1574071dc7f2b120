#pragma once

#include "Options.hpp"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace SegmentTool
{
/// A place in the list.
struct ClInput
{
    std::uint64_t m_nIndex = 0; ///< from 1, in the whole list whatever the shard
    std::string m_sPath;
    std::string m_sFault; ///< why there is no picture here, such as a folder that cannot be read; else empty
};

/// The pictures of a run, one after another: those named, then those of the list file; a folder is replaced by what is
/// below it, each folder in the order of its names' bytes. Of names only the command line's, one buffer of the list
/// file and those of the folders on the way down are in memory. A folder of fingers is left out where it lies below an
/// input. Errors: ClRunError, exit code 2 for a list file that cannot be opened, 4 for one that cannot be read on.
class ClInputList
{
public:
    ClInputList(const ClListOptions& cOptions, const std::string& sFolderOfFingers);
    ClInputList(const ClInputList&) = delete;
    ~ClInputList();

    /// The next one of the shard. False at the end, and when a signal came while waiting for a name.
    bool Next(ClInput& cInput);

private:
    struct ClFolder
    {
        std::string m_sPath;
        std::vector<std::string> m_aNames; ///< in reverse order: the next one is the last
    };

    bool NextOfAll(ClInput& cInput);
    bool NextBelow(ClInput& cInput);
    bool TakeName(const std::string& sName, ClInput& cInput);
    bool Enter(const std::string& sPath, ClInput& cInput);
    bool IsTaken(const std::string& sName) const;

    const ClListOptions& m_cOptions;
    std::size_t m_nNextInput = 0;
    std::uint64_t m_nCount = 0;
    std::vector<ClFolder> m_aFolders; ///< the way down
    bool m_bFound = false;            ///< something in the folder that was named
    std::string m_sTopFolder;

    class ClNames;
    std::unique_ptr<ClNames> m_pNames; ///< of the list file
    unsigned long long m_nSkipDevice = 0;
    unsigned long long m_nSkipFile = 0;
};

/// How many pictures the list has, by going through it; 0 if it can be gone through only once.
std::uint64_t CountInputs(const ClListOptions& cOptions, const std::string& sFolderOfFingers);
} // namespace SegmentTool
