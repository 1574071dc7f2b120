#pragma once

#include <string>

namespace FileSystem
{
/// Names by pattern: a star stands for any characters or none, a question mark for one character that is no point.
/// Case counts, every other character stands for itself. The time is at most the product of both lengths.
class ClWildCard
{
public:
    /// Keeps a copy of the pattern. Errors: ClExVelmarin -44 for null, ClExBadAlloc.
    explicit ClWildCard(const char* szPattern);

    /// Errors: ClExVelmarin -44 for null.
    bool Match(const char* szName) const;                        ///< against the pattern kept
    bool Match(const char* szPattern, const char* szName) const; ///< against a pattern of its own

private:
    std::string m_sPattern;
};
} // namespace FileSystem
