#include "RDTools/FileSystem.hpp"

#include "RDTools/Exception.hpp"
#include "RDTools/SystemError.hpp"
#include "RDTools/XChar.hpp"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace
{
constexpr char szModule[] = "RDTools/FileSystem";
constexpr char szEmptyName[] = "the szFileName is empty";

[[noreturn]] void ThrowInvalid(const char* szMessage, long nLine)
{
    throw ClException(szMessage, FPC_ERROR_INVALID_PARAMETER, true, szModule, nLine);
}

void Check(const std::error_code& cError, const char* szFunction, long nLine)
{
    if (cError)
    {
        ThrowSystemError(cError.value(), szFunction, szModule, nLine);
    }
}

bool IsEmpty(const char* szText)
{
    return szText == nullptr || szText[0] == '\0';
}

const char* TextOrEmpty(const char* szText)
{
    return szText == nullptr ? "" : szText;
}

/// The name with slashes for backslashes; szPath is not null.
std::string WithSlashes(const char* szPath)
{
    std::string sPath(szPath);
    std::replace(sPath.begin(), sPath.end(), '\\', '/');
    return sPath;
}

/// The directory's name with a slash at its end; the empty name stays empty.
std::string WithSlashAtEnd(std::string sDirectory)
{
    if (!sDirectory.empty() && sDirectory.back() != '/')
    {
        sDirectory += '/';
    }
    return sDirectory;
}

/// Whether the name starts with the component "~".
bool StartsAtHome(const std::string& sPath)
{
    return !sPath.empty() && sPath[0] == '~' && (sPath.size() == 1 || sPath[1] == '/');
}

/// A name that is there, for the system's functions.
std::string CheckedName(const char* szFileName)
{
    if (IsEmpty(szFileName))
    {
        ThrowInvalid(szEmptyName, __LINE__);
    }
    return FileSystem::NormalizeFilename(szFileName);
}

/// A name divided at the places that matter.
struct ClDividedName
{
    std::string m_sName;      ///< all of it, slashes for backslashes
    std::size_t m_nFile;      ///< where the file name begins
    std::size_t m_nExtension; ///< where its extension begins, with the point; the end if it has none
};

ClDividedName Divide(const char* szFileName)
{
    if (IsEmpty(szFileName))
    {
        ThrowInvalid(szEmptyName, __LINE__);
    }
    ClDividedName cName{WithSlashes(szFileName), 0, 0};
    cName.m_nFile = cName.m_sName.rfind('/') + 1; // 0 if there is none
    const std::size_t nPoint = cName.m_sName.rfind('.');
    const bool bExtension = nPoint != std::string::npos && nPoint > cName.m_nFile &&
                            cName.m_sName.compare(cName.m_nFile, std::string::npos, "..") != 0;
    cName.m_nExtension = bExtension ? nPoint : cName.m_sName.size();
    return cName;
}

/// The same for a name that must be that of a file.
ClDividedName DivideFile(const char* szFileName)
{
    ClDividedName cName = Divide(szFileName);
    if (cName.m_nFile == cName.m_sName.size())
    {
        ThrowInvalid("the szFileName has only path information", __LINE__);
    }
    return cName;
}

/// Length of the drive that an absolute name starts with: 2, or 0 if there is none.
std::size_t DriveLength(const std::string& sPath)
{
    const bool bDrive = sPath.size() >= 3 && sPath[1] == ':' && sPath[2] == '/' &&
                        ((sPath[0] >= 'a' && sPath[0] <= 'z') || (sPath[0] >= 'A' && sPath[0] <= 'Z'));
    return bDrive ? 2 : 0;
}

bool IsAbsolute(const std::string& sPath)
{
    return DriveLength(sPath) != 0 || (!sPath.empty() && sPath[0] == '/');
}

/// The letter of an absolute name's drive, small; 0 if it has none.
int DriveLetter(const std::string& sPath)
{
    return DriveLength(sPath) == 0 ? 0 : sPath[0] | ('a' - 'A');
}

/// What follows the drive of an absolute name, without "." and "..".
std::filesystem::path BelowDrive(const std::string& sPath)
{
    return std::filesystem::path(sPath.substr(DriveLength(sPath))).lexically_normal();
}

std::string CheckedRoot(const char* szRootPath)
{
    std::string sRoot = FileSystem::NormalizeFilename(TextOrEmpty(szRootPath));
    if (sRoot.empty() || sRoot.back() != '/')
    {
        ThrowInvalid("szRootPath is not end with a dir separator", __LINE__);
    }
    if (!IsAbsolute(sRoot))
    {
        ThrowInvalid("szRootPath is not a absolute path", __LINE__);
    }
    return sRoot;
}

/// Whether the name is that of something other than a directory.
bool IsFile(const std::string& sName)
{
    struct stat cStatus;
    return stat(sName.c_str(), &cStatus) == 0 && !S_ISDIR(cStatus.st_mode);
}

/// 0 if sPath, without separators at its end, may be removed with all that is in it; otherwise the error.
int RefusalToRemove(const std::string& sPath)
{
    const std::string sLast = sPath.substr(sPath.rfind('/') + 1);
    if (sLast == "." || sLast == "..")
    {
        return EINVAL;
    }
    struct stat cStatus;
    if (lstat(sPath.c_str(), &cStatus) != 0)
    {
        return errno;
    }
    return S_ISDIR(cStatus.st_mode) ? 0 : ENOTDIR;
}
} // namespace

std::string FileSystem::NormalizeFilename(const char* szFileName)
{
    if (szFileName == nullptr)
    {
        ThrowInvalid(szEmptyName, __LINE__);
    }
    return ConvertBadAlloc(
        [&]
        {
            std::string sName = WithSlashes(szFileName);
            const char* szHome = std::getenv("HOME");
            if (StartsAtHome(sName) && !IsEmpty(szHome))
            {
                sName.replace(0, 1, szHome);
            }
            return sName;
        });
}

std::wstring FileSystem::NormalizeFilename(const wchar_t* szFileName)
{
    if (szFileName == nullptr)
    {
        ThrowInvalid(szEmptyName, __LINE__);
    }
    return WideCharFromSBCS(NormalizeFilename(SBCSFromWideChar(szFileName).c_str()).c_str());
}

std::string FileSystem::GetPath(const char* szFileName)
{
    return ConvertBadAlloc(
        [&]
        {
            const ClDividedName cName = Divide(szFileName);
            return cName.m_sName.substr(0, cName.m_nFile);
        });
}

std::string FileSystem::GetFileName(const char* szFileName)
{
    return ConvertBadAlloc(
        [&]
        {
            const ClDividedName cName = DivideFile(szFileName);
            return cName.m_sName.substr(cName.m_nFile);
        });
}

std::string FileSystem::GetFileNameWithoutExt(const char* szFileName)
{
    return ConvertBadAlloc(
        [&]
        {
            const ClDividedName cName = DivideFile(szFileName);
            return cName.m_sName.substr(cName.m_nFile, cName.m_nExtension - cName.m_nFile);
        });
}

std::string FileSystem::GetPathAndName(const char* szFileName)
{
    return ConvertBadAlloc(
        [&]
        {
            const ClDividedName cName = DivideFile(szFileName);
            return cName.m_sName.substr(0, cName.m_nExtension);
        });
}

std::string FileSystem::ChangeExtension(const char* szFileName, const char* szExtension)
{
    return ConvertBadAlloc(
        [&]
        {
            std::string sName = GetPathAndName(szFileName);
            if (!IsEmpty(szExtension))
            {
                sName += szExtension[0] == '.' ? "" : ".";
                sName += szExtension;
            }
            return sName;
        });
}

std::string FileSystem::AddPath(const char* szPath, const char* szAppend)
{
    if (szPath == nullptr)
    {
        ThrowInvalid("szPath is NULL.", __LINE__);
    }
    if (szAppend == nullptr)
    {
        ThrowInvalid("szAppend is NULL.", __LINE__);
    }
    return ConvertBadAlloc(
        [&]
        {
            const std::string sAppend = WithSlashes(szAppend);
            if (szPath[0] == '\0' || sAppend.empty())
            {
                return WithSlashes(szPath) + sAppend;
            }
            const std::size_t nStart = std::min(sAppend.find_first_not_of('/'), sAppend.size());
            return WithSlashAtEnd(WithSlashes(szPath)).append(sAppend, nStart);
        });
}

std::string FileSystem::MakeAbsolutePath(const char* szRootPath, const char* szFileName)
{
    return ConvertBadAlloc(
        [&]
        {
            const std::string sRoot = CheckedRoot(szRootPath);
            const std::string sName = CheckedName(szFileName);
            const std::string sFull = IsAbsolute(sName) ? sName : sRoot + sName;
            return sFull.substr(0, DriveLength(sFull)) + BelowDrive(sFull).string();
        });
}

std::string FileSystem::MakeRelativePath(const char* szRootPath, const char* szAbsolutePath)
{
    return ConvertBadAlloc(
        [&]
        {
            const std::string sRoot = CheckedRoot(szRootPath);
            const std::string sPath = NormalizeFilename(TextOrEmpty(szAbsolutePath));
            if (!IsAbsolute(sPath))
            {
                ThrowInvalid("szAbsolutePath is not a absolute path", __LINE__);
            }
            if (DriveLetter(sRoot) != DriveLetter(sPath))
            {
                ThrowInvalid("the absolute paths dont have the same drive", __LINE__);
            }
            const std::filesystem::path cBelow = BelowDrive(sPath);
            std::string sRelative = cBelow.lexically_relative(BelowDrive(sRoot)).string();
            if (sRelative == "." || cBelow == "/")
            {
                sRelative += '/';
            }
            // A directory called "~" or "C:" must not be taken for what it is not on the way back.
            return StartsAtHome(sRelative) || IsAbsolute(sRelative) ? "./" + sRelative : sRelative;
        });
}

std::string FileSystem::GetCurrentWorkingDirectory()
{
    return ConvertBadAlloc(
        []
        {
            std::error_code cError;
            const std::filesystem::path cPath = std::filesystem::current_path(cError);
            Check(cError, "GetCurrentWorkingDirectory", __LINE__);
            return WithSlashAtEnd(cPath.string());
        });
}

std::string FileSystem::GetTempFileDir()
{
    return ConvertBadAlloc(
        []
        {
            std::error_code cError;
            const std::filesystem::path cPath = std::filesystem::temp_directory_path(cError);
            Check(cError, "GetTempFileDir", __LINE__);
            return WithSlashAtEnd(cPath.string());
        });
}

void FileSystem::CreateDirectory(const char* szPath, bool bParents)
{
    if (IsEmpty(szPath))
    {
        ThrowInvalid("Invalid Pathname in FileSystem::CreateDirectory.", __LINE__);
    }
    const std::string sPath = NormalizeFilename(szPath);
    std::error_code cError;
    if (bParents)
    {
        ConvertBadAlloc([&] { std::filesystem::create_directories(sPath, cError); });
    }
    else if (mkdir(sPath.c_str(), ACCESSPERMS) != 0)
    {
        cError.assign(errno, std::generic_category());
    }
    if (cError)
    {
        ThrowFilesystemError(cError.value(), sPath.c_str(), FPC_ERROR_IO, szModule, __LINE__);
    }
}

void FileSystem::RemoveDirectory(const char* szPath, bool bRecursive)
{
    if (szPath == nullptr)
    {
        ThrowInvalid("szPath is NULL.", __LINE__);
    }
    // With a separator at its end the name of a link would stand for the directory that it leads to.
    std::string sPath = NormalizeFilename(szPath);
    while (sPath.size() > 1 && sPath.back() == '/')
    {
        sPath.pop_back();
    }
    if (sPath == "/")
    {
        ThrowSystemError(EBUSY, "RemoveDirectory", szModule, __LINE__);
    }
    ConvertBadAlloc(
        [&]
        {
            std::error_code cError(RefusalToRemove(sPath), std::generic_category());
            if (!cError && bRecursive)
            {
                std::filesystem::remove_all(sPath, cError);
            }
            else if (!cError && rmdir(sPath.c_str()) != 0)
            {
                cError.assign(errno, std::generic_category());
            }
            Check(cError, "RemoveDirectory", __LINE__);
        });
}

bool FileSystem::IsFileExistent(const char* szFileName)
{
    return IsFile(CheckedName(szFileName));
}

std::string FileSystem::MakeTempFileName(const char* szPath, const char* szPrefix)
{
    return ConvertBadAlloc(
        [&]
        {
            const std::string sDirectory = szPath == nullptr ? GetTempFileDir() : CheckedName(szPath);
            std::string sName = WithSlashAtEnd(sDirectory) + WithSlashes(TextOrEmpty(szPrefix)) + "XXXXXX";
            const int nFile = mkostemp(sName.data(), O_CLOEXEC);
            if (nFile < 0 || close(nFile) != 0)
            {
                ThrowFilesystemError(errno, sName.c_str(), FPC_ERROR_FILE_OPEN_FAIL, szModule, __LINE__);
            }
            return sName;
        });
}

void FileSystem::RemoveFile(const char* szFileName)
{
    const std::string sName = CheckedName(szFileName);
    if (unlink(sName.c_str()) != 0)
    {
        ThrowFilesystemError(errno, sName.c_str(), FPC_ERROR_IO, szModule, __LINE__);
    }
}

void FileSystem::RenameFile(const char* szOldName, const char* szNewName)
{
    const std::string sOld = CheckedName(szOldName);
    const std::string sNew = CheckedName(szNewName);
    if (std::rename(sOld.c_str(), sNew.c_str()) != 0)
    {
        ThrowFilesystemError(errno, sOld.c_str(), FPC_ERROR_IO, szModule, __LINE__);
    }
}

void FileSystem::CopyFile(const char* szSource, const char* szDest)
{
    const std::string sSource = CheckedName(szSource);
    const std::string sDest = CheckedName(szDest);
    ConvertBadAlloc(
        [&]
        {
            std::error_code cError;
            std::filesystem::copy_file(sSource, sDest, std::filesystem::copy_options::overwrite_existing, cError);
            Check(cError, "CopyFile", __LINE__);
        });
}

std::string FileSystem::SearchPath(const char* szFileName, const char* szPathList)
{
    return ConvertBadAlloc(
        [&]() -> std::string
        {
            const ClDividedName cName = DivideFile(szFileName);
            if (cName.m_nFile > 0)
            {
                std::string sName = NormalizeFilename(szFileName);
                return IsFile(sName) ? sName : std::string();
            }
            const char* szList = szPathList != nullptr ? szPathList : std::getenv("PATH");
            if (szList == nullptr)
            {
                return std::string();
            }
            const std::string sList(szList);
            for (std::size_t nStart = 0; nStart <= sList.size();)
            {
                const std::size_t nEnd = std::min(sList.find(':', nStart), sList.size());
                const std::string sDirectory = nEnd == nStart ? "." : sList.substr(nStart, nEnd - nStart);
                std::string sName = WithSlashAtEnd(NormalizeFilename(sDirectory.c_str())) + cName.m_sName;
                if (IsFile(sName))
                {
                    return sName;
                }
                nStart = nEnd + 1;
            }
            return std::string();
        });
}
