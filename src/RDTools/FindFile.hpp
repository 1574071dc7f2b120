#pragma once

#include "RDTools/WildCard.hpp"

#include <dirent.h>
#include <string>

namespace FileSystem
{
/// Searches one directory for entries by pattern:
///     ClFindFile cFind;
///     for (bool bFound = cFind.First("data/*.bmp"); bFound; bFound = cFind.Next()) ...
/// The entries come in the order of the directory; "." and ".." are among them if the pattern meets them.
class ClFindFile
{
public:
    ClFindFile() = default;
    explicit ClFindFile(const char* szPattern); ///< starts the search, as First does; Name() tells what was found
    ClFindFile(const ClFindFile&) = delete;
    ClFindFile& operator=(const ClFindFile&) = delete;
    ~ClFindFile();

    /// Starts a search and goes to the first entry. The pattern is a path, taken literally through NormalizeFilename,
    /// and behind its last separator a pattern of ClWildCard. False if nothing meets it.
    /// Errors: ClException "ClFindFile::First: the szFileName must include a path!" (-44), also for null;
    /// ClExFilesystem with the directory: -200 if it cannot be opened, -204 if it cannot be read; ClExBadAlloc.
    bool First(const char* szFileName);

    /// Goes to the next entry; false if there is none, or no search. Errors as of reading above.
    bool Next();

    /// Ends the search. Without one nothing happens.
    void Close();

    /// The entry's name without its directory; empty if the search stands on none.
    const char* Name() const;

    /// The directory searched, with a slash at its end, until Close() or the next First(); otherwise empty.
    const char* GetDirectoryName() const;

    // Of the entry that the search stands on; without one, or if it has gone meanwhile, false.
    bool IsDirectory() const;    ///< a directory, or a symbolic link to one
    bool IsSubDirectory() const; ///< one to descend into: neither "." nor ".." nor a symbolic link
    bool IsSystemFile() const;   ///< a device, pipe or socket, or a symbolic link to one

    /// Makes slashes of the backslashes of a text, in place; null is left alone.
    static void ReplaceBackSlashes(char* szText);

private:
    void CloseDirectory();

    DIR* m_pDirectory = nullptr; ///< open while there may be more entries
    std::string m_sDirectory;
    ClWildCard m_cPattern{""};
    std::string m_sName;
};
} // namespace FileSystem
