#include "RDTools/FileSystem.hpp"

#include "RDTools/Exception.hpp"
#include "RDTools/XChar.hpp"

#include <algorithm>
#include <cstdlib>

namespace
{
constexpr char szModule[] = "RDTools/FileSystem";

[[noreturn]] void ThrowInvalid(const char* szMessage, long nLine)
{
    throw ClException(szMessage, FPC_ERROR_INVALID_PARAMETER, true, szModule, nLine);
}

/// The name with slashes for backslashes; szPath is not null.
std::string WithSlashes(const char* szPath)
{
    std::string sPath(szPath);
    std::replace(sPath.begin(), sPath.end(), '\\', '/');
    return sPath;
}

/// Whether the name starts with the component "~".
bool StartsAtHome(const std::string& sPath)
{
    return !sPath.empty() && sPath[0] == '~' && (sPath.size() == 1 || sPath[1] == '/');
}
} // namespace

std::string FileSystem::NormalizeFilename(const char* szFileName)
{
    if (szFileName == nullptr)
    {
        ThrowInvalid("the szFileName is empty", __LINE__);
    }
    return ConvertBadAlloc(
        [&]
        {
            std::string sName = WithSlashes(szFileName);
            const char* szHome = std::getenv("HOME");
            if (StartsAtHome(sName) && szHome != nullptr && szHome[0] != '\0')
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
        ThrowInvalid("the szFileName is empty", __LINE__);
    }
    return WideCharFromSBCS(NormalizeFilename(SBCSFromWideChar(szFileName).c_str()).c_str());
}
