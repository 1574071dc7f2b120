#include "RDTools/FindFile.hpp"

#include "RDTools/Exception.hpp"
#include "RDTools/FileSystem.hpp"
#include "RDTools/SystemError.hpp"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <utility>

namespace
{
constexpr char szModule[] = "RDTools/FindFile";

/// The file type bits of an entry; 0 if it cannot be asked. nFlags: those of fstatat.
mode_t FileType(DIR* pDirectory, const std::string& sName, int nFlags)
{
    struct stat cStatus;
    if (pDirectory == nullptr || sName.empty() || fstatat(dirfd(pDirectory), sName.c_str(), &cStatus, nFlags) != 0)
    {
        return 0;
    }
    return cStatus.st_mode & S_IFMT;
}
} // namespace

FileSystem::ClFindFile::ClFindFile(const char* szPattern)
{
    try
    {
        First(szPattern);
    }
    catch (...)
    {
        Close(); // no destructor runs
        throw;
    }
}

FileSystem::ClFindFile::~ClFindFile()
{
    CloseDirectory();
}

bool FileSystem::ClFindFile::First(const char* szFileName)
{
    Close();
    return ConvertBadAlloc(
        [&]
        {
            std::string sPattern = NormalizeFilename(szFileName == nullptr ? "" : szFileName);
            const std::size_t nName = sPattern.rfind('/') + 1;
            if (nName == 0)
            {
                throw ClException("ClFindFile::First: the szFileName must include a path!", FPC_ERROR_INVALID_PARAMETER,
                                  true, szModule, __LINE__);
            }
            m_cPattern = ClWildCard(sPattern.c_str() + nName);
            sPattern.resize(nName);
            m_pDirectory = opendir(sPattern.c_str());
            if (m_pDirectory == nullptr)
            {
                ThrowFilesystemError(errno, sPattern.c_str(), FPC_ERROR_FILE_OPEN_FAIL, szModule, __LINE__);
            }
            m_sDirectory = std::move(sPattern);
            return Next();
        });
}

bool FileSystem::ClFindFile::Next()
{
    m_sName.clear();
    if (m_pDirectory == nullptr)
    {
        return false;
    }
    for (;;)
    {
        errno = 0;
        const dirent* pEntry = readdir(m_pDirectory);
        if (pEntry == nullptr)
        {
            const int nError = errno;
            CloseDirectory();
            if (nError != 0)
            {
                ThrowFilesystemError(nError, m_sDirectory.c_str(), FPC_ERROR_IO, szModule, __LINE__);
            }
            return false;
        }
        if (m_cPattern.Match(pEntry->d_name))
        {
            ConvertBadAlloc([&] { m_sName = pEntry->d_name; });
            return true;
        }
    }
}

void FileSystem::ClFindFile::Close()
{
    CloseDirectory();
    m_sDirectory.clear();
    m_sName.clear();
}

void FileSystem::ClFindFile::CloseDirectory()
{
    if (m_pDirectory != nullptr)
    {
        closedir(m_pDirectory);
        m_pDirectory = nullptr;
    }
}

const char* FileSystem::ClFindFile::Name() const
{
    return m_sName.c_str();
}

const char* FileSystem::ClFindFile::GetDirectoryName() const
{
    return m_sDirectory.c_str();
}

bool FileSystem::ClFindFile::IsDirectory() const
{
    return FileType(m_pDirectory, m_sName, 0) == S_IFDIR;
}

bool FileSystem::ClFindFile::IsSubDirectory() const
{
    return FileType(m_pDirectory, m_sName, AT_SYMLINK_NOFOLLOW) == S_IFDIR && m_sName != "." && m_sName != "..";
}

bool FileSystem::ClFindFile::IsSystemFile() const
{
    switch (FileType(m_pDirectory, m_sName, 0))
    {
    case S_IFBLK:
    case S_IFCHR:
    case S_IFIFO:
    case S_IFSOCK: return true;
    default: return false;
    }
}

void FileSystem::ClFindFile::ReplaceBackSlashes(char* szText)
{
    if (szText != nullptr)
    {
        std::replace(szText, szText + std::strlen(szText), '\\', '/');
    }
}
