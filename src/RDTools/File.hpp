#pragma once

#include <cstdio>

/// A C file that closes itself, for work on whole files; m_pFile serves all functions of the C library. Names pass
/// through FileSystem::NormalizeFilename.
/// Errors: a file that cannot be opened ClExFilesystem -200 with its name, a null argument ClException -44; a function
/// of the C library that fails, as all do while no file is open, ClExSystem -105 with its name.
class ClFile
{
public:
    ClFile(const char* szName, const char* szMode);
    ClFile(const wchar_t* szName, const wchar_t* szMode);
    ClFile(const ClFile&) = delete;
    ClFile& operator=(const ClFile&) = delete;
    virtual ~ClFile(); ///< closes; has nobody to tell if that fails

    void Open(const char* szName, const char* szMode); ///< closes what was open first
    void Close();                                      ///< no effect if no file is open; none is open afterwards
    void Flush();
    bool Eof() const; ///< whether a read met the end
    void Seek(long nOffset, int nOrigin);
    long Tell() const;
    long Size(); ///< bytes; the position stays

    /// Whether two files hold the same bytes. As texts: whether they do so but for line ends, CR LF counting as LF.
    static bool Compare(const char* szFirst, const char* szSecond, bool bText);

    std::FILE* m_pFile = nullptr; ///< null while no file is open
};

/// Refuses what no file can be opened by: ClException -44 with the argument's name, from szModule.
void CheckOpenArguments(const char* szName, const char* szMode, const char* szModule);
void CheckOpenArguments(const wchar_t* szName, const wchar_t* szMode, const char* szModule);
