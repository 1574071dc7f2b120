#pragma once

#include <string>

/// Operations on file names and files.
/// Names      are bytes, by custom UTF-8. A backslash is a separator like the slash, never a character of a name; names
///            in results hold slashes. Operations that reach the file system take every name through
///            NormalizeFilename.
/// Results    are owned texts. The name of a directory that an operation makes up ends in a slash.
/// Extension  is the text from the last point of the file name; a point that begins the name begins no extension.
/// Errors     ClException (-44) with the texts below for arguments, ClExSystem or ClExFilesystem where the system
///            refuses: their text is the system's, a line break, and the function or the name concerned. ClExBadAlloc
///            (-102) everywhere.
namespace FileSystem
{
/// The name as fopen and the like take it: slashes for backslashes, and the value of the environment variable "HOME"
/// for a tilde that is the whole first component. Without that variable the tilde stays; an empty name stays empty.
/// Errors: "the szFileName is empty" for null. The wide form moreover: ClExSystem "Conversions Error" (-105) for a name
/// that is not text.
std::string NormalizeFilename(const char* szFileName);
std::wstring NormalizeFilename(const wchar_t* szFileName);

// --- Parts of a name. They look at the text alone: "a/b.bmp" has the path "a/", the name "b.bmp".
// Errors of these: "the szFileName is empty" for null or no text; for all but GetPath "the szFileName has only path
// information" for a name that ends in a separator.

std::string GetPath(const char* szFileName);               ///< up to and with the last separator, or empty
std::string GetFileName(const char* szFileName);           ///< what follows the last separator
std::string GetFileNameWithoutExt(const char* szFileName); ///< the same without the extension
std::string GetPathAndName(const char* szFileName);        ///< everything but the extension

/// The name with another extension, given with or without its point; null or "" leaves the name without one.
std::string ChangeExtension(const char* szFileName, const char* szExtension);

/// szPath and szAppend with one slash between them, however they end and begin; if one of them is empty, the other.
/// Errors: "szPath is NULL.", "szAppend is NULL.".
std::string AddPath(const char* szPath, const char* szAppend);

// --- Absolute and relative names. They, too, look at the text alone: "." and ".." are resolved without asking what is
// a symbolic link. A name is absolute if it starts with a separator, or with a drive, "C:/", as lists from other
// systems hold them; case does not tell drives apart.
// Errors, in this order: "szRootPath is not end with a dir separator", "szRootPath is not a absolute path"; null is as
// good as no text.

/// szFileName as seen from the directory szRootPath; an absolute one is only normalised. Errors: as above, then "the
/// szFileName is empty".
std::string MakeAbsolutePath(const char* szRootPath, const char* szFileName);

/// The way from szRootPath to szAbsolutePath, "./" if they are the same: MakeAbsolutePath leads back. Errors: as above,
/// then "szAbsolutePath is not a absolute path", "the absolute paths dont have the same drive".
std::string MakeRelativePath(const char* szRootPath, const char* szAbsolutePath);

// --- Directories.

/// Errors: ClExSystem "GetCurrentWorkingDirectory" (-105).
std::string GetCurrentWorkingDirectory();

/// The directory for files that nobody keeps: the environment variable "TMPDIR", or the system's own. Errors:
/// ClExSystem "GetTempFileDir" (-105) if that is no directory.
std::string GetTempFileDir();

/// Makes a directory; bParents: makes those above it, too, and is content if it is there already. Errors: "Invalid
/// Pathname in FileSystem::CreateDirectory." for null or no text; ClExFilesystem with the name (-204).
void CreateDirectory(const char* szPath, bool bParents);

/// Removes an empty directory; bRecursive: with all that is in it. Symbolic links in it are removed, what they lead to
/// stays. After a failure a part of the tree may be gone. Errors: "szPath is NULL."; ClExSystem "RemoveDirectory"
/// (-105), also for a symbolic link and, as nobody can mean them, the root and names that end in "." or "..".
void RemoveDirectory(const char* szPath, bool bRecursive);

// --- Files. Errors of these: "the szFileName is empty" for null or no text.

/// Whether there is such a file, or a device or the like; directories do not count, symbolic links stand for what they
/// lead to. A name that cannot be reached is none.
bool IsFileExistent(const char* szFileName);

/// Makes a new, empty file which only its owner may open, and returns its name: szPrefix and six characters, in the
/// directory szPath, or in that of GetTempFileDir for null; a null szPrefix is none. The file stays until it is
/// removed. Errors: ClExFilesystem with the name (-200).
std::string MakeTempFileName(const char* szPath, const char* szPrefix);

/// Removes a file; a symbolic link itself, not what it leads to. Errors: ClExFilesystem with the name (-204), also for
/// a directory.
void RemoveFile(const char* szFileName);

/// Renames a file or directory within its file system; a file szNewName is replaced in one step. Errors: ClExFilesystem
/// with the old name (-204).
void RenameFile(const char* szOldName, const char* szNewName);

/// Copies the content and the access rights of a file; a file szDest is overwritten. Errors: ClExSystem "CopyFile"
/// (-105), also if one of them is no regular file or both are the same.
void CopyFile(const char* szSource, const char* szDest);

/// The first file of that name in the directories of szPathList, which a colon separates; null takes the environment
/// variable "PATH". An empty directory is the current one, "./". A szFileName with a path of its own is not searched
/// for, only looked at. Returns the name with its directory, or an empty text if there is none. Errors: as above, and
/// "the szFileName has only path information".
std::string SearchPath(const char* szFileName, const char* szPathList);
} // namespace FileSystem
