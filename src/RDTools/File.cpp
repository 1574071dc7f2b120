#include "RDTools/File.hpp"

#include "RDTools/Exception.hpp"
#include "RDTools/FileSystem.hpp"
#include "RDTools/XChar.hpp"

#include <cerrno>
#include <utility>

namespace
{
constexpr char szFile[] = "RDTools/File";

void CheckCall(bool bDone, const char* szFunction)
{
    if (!bDone)
    {
        throw ClExSystem(szFunction, szFile, __LINE__);
    }
}

std::FILE* OpenOne(std::FILE* pFile, const char* szFunction)
{
    if (pFile == nullptr)
    {
        errno = EBADF;
    }
    CheckCall(pFile != nullptr, szFunction);
    return pFile;
}

void CheckArgument(bool bGiven, const char* szComment, const char* szModule)
{
    if (!bGiven)
    {
        throw ClException(szComment, FPC_ERROR_INVALID_PARAMETER, true, szModule, __LINE__);
    }
}

/// The next character of a file or EOF; in a text CR LF is LF.
int NextCharacter(std::FILE* pFile, bool bText)
{
    int nCharacter = std::getc(pFile);
    if (bText && nCharacter == '\r')
    {
        nCharacter = std::getc(pFile);
        if (nCharacter != '\n')
        {
            std::ungetc(nCharacter, pFile); // no effect at the end of the file
            nCharacter = '\r';
        }
    }
    CheckCall(nCharacter != EOF || std::ferror(pFile) == 0, "getc");
    return nCharacter;
}
} // namespace

void CheckOpenArguments(const char* szName, const char* szMode, const char* szModule)
{
    CheckArgument(szName != nullptr, "szName is NULL", szModule);
    CheckArgument(szMode != nullptr, "szMode is NULL", szModule);
}

void CheckOpenArguments(const wchar_t* szName, const wchar_t* szMode, const char* szModule)
{
    CheckArgument(szName != nullptr, "the szName parameter is invalid.", szModule);
    CheckArgument(szMode != nullptr, "the szMode parameter is invalid.", szModule);
}

ClFile::ClFile(const char* szName, const char* szMode)
{
    Open(szName, szMode);
}

ClFile::ClFile(const wchar_t* szName, const wchar_t* szMode)
{
    CheckOpenArguments(szName, szMode, szFile);
    Open(SBCSFromWideChar(szName).c_str(), SBCSFromWideChar(szMode).c_str());
}

ClFile::~ClFile()
{
    if (m_pFile != nullptr)
    {
        std::fclose(m_pFile);
    }
}

void ClFile::Open(const char* szName, const char* szMode)
{
    CheckOpenArguments(szName, szMode, szFile);
    Close();
    const std::string sName = FileSystem::NormalizeFilename(szName);
    m_pFile = std::fopen(sName.c_str(), szMode);
    if (m_pFile == nullptr)
    {
        throw ClExFilesystem(sName.c_str(), FPC_ERROR_FILE_OPEN_FAIL, szFile, __LINE__);
    }
}

void ClFile::Close()
{
    if (std::FILE* pFile = std::exchange(m_pFile, nullptr))
    {
        CheckCall(std::fclose(pFile) == 0, "fclose");
    }
}

void ClFile::Flush()
{
    CheckCall(std::fflush(OpenOne(m_pFile, "fflush")) == 0, "fflush");
}

bool ClFile::Eof() const
{
    return std::feof(OpenOne(m_pFile, "feof")) != 0;
}

void ClFile::Seek(long nOffset, int nOrigin)
{
    CheckCall(std::fseek(OpenOne(m_pFile, "fseek"), nOffset, nOrigin) == 0, "fseek");
}

long ClFile::Tell() const
{
    const long nPos = std::ftell(OpenOne(m_pFile, "ftell"));
    CheckCall(nPos >= 0, "ftell");
    return nPos;
}

long ClFile::Size()
{
    const long nPos = Tell();
    Seek(0, SEEK_END);
    const long nSize = Tell();
    Seek(nPos, SEEK_SET);
    return nSize;
}

bool ClFile::Compare(const char* szFirst, const char* szSecond, bool bText)
{
    const ClFile cFirst(szFirst, "rb");
    const ClFile cSecond(szSecond, "rb");
    int nFirst = 0;
    int nSecond = 0;
    do {
        nFirst = NextCharacter(cFirst.m_pFile, bText);
        nSecond = NextCharacter(cSecond.m_pFile, bText);
    } while (nFirst == nSecond && nFirst != EOF);
    return nFirst == nSecond;
}
