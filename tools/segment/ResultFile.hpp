#pragma once

#include <string>
#include <string_view>

namespace SegmentTool
{
/// Where results are written, without a buffer: what Write returns from is with the system.
/// Errors: ClRunError with exit code 4 and the reason: a full disk, a closed pipe, no rights; with 128 and its number
/// if a signal comes while the reader of a pipe lets the run wait.
class ClResultFile
{
public:
    ClResultFile() = default;
    ClResultFile(const ClResultFile&) = delete;
    ~ClResultFile();

    void OpenStandardOutput();
    /// Makes the file, or empties it; with bKeep leaves what is in it. Errors moreover: another run has it.
    void Open(const std::string& sPath, bool bKeep);
    void Write(std::string_view sText);
    void Truncate(unsigned long long nSize); ///< and goes on there
    void Close();                            ///< the last place where an error can show

private:
    void WaitForRoom() const;
    [[noreturn]] void Fail(int nError) const;

    int m_nFile = -1;
    bool m_bOwned = false;
    bool m_bMayWait = false; ///< a pipe, a terminal: someone must read
    std::string m_sName;
};
} // namespace SegmentTool
