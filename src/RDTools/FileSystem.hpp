#pragma once

#include <string>

/// Operations on file names and files. Names are UTF-8; a backslash is a separator like the slash, and results hold
/// slashes only. Texts are returned as owned strings. Every operation may raise ClExBadAlloc (-102).
namespace FileSystem
{
/// The name as fopen and the like take it: slashes for backslashes, and the value of the environment variable "HOME"
/// for a tilde that is the whole first component. Without that variable the tilde stays; an empty name stays empty.
/// Errors: ClException "the szFileName is empty" (-44) for null. The wide form moreover: ClExSystem (-105) for a name
/// that is not text.
std::string NormalizeFilename(const char* szFileName);
std::wstring NormalizeFilename(const wchar_t* szFileName);
} // namespace FileSystem
