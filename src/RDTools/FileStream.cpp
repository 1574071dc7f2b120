#include "RDTools/FileStream.hpp"

#include "RDTools/File.hpp"
#include "RDTools/FileSystem.hpp"
#include "RDTools/IgnoreFailure.hpp"
#include "RDTools/TpArrayStatic.hpp"
#include "RDTools/XChar.hpp"

#include <cstring>
#include <memory>
#include <utility>

namespace
{
constexpr char szModule[] = "RDTools/FileStream";
} // namespace

ClFileStream::ClFileStream(const char* szName, const char* szMode)
{
    Open(szName, szMode);
}

ClFileStream::ClFileStream(const wchar_t* szName, const wchar_t* szMode)
{
    Open(szName, szMode);
}

ClFileStream::~ClFileStream()
{
    IgnoreFailure([this] { Close(); }); // the file is closed all the same
    delete[] m_szName;
}

void ClFileStream::Open(const char* szName, const char* szMode)
{
    CheckOpenArguments(szName, szMode, szModule);
    Close();
    const std::string sFile = FileSystem::NormalizeFilename(szName);
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> pFile(std::fopen(sFile.c_str(), szMode), std::fclose);
    if (pFile == nullptr)
    {
        throw ClExFilesystem(szName, FPC_ERROR_FILE_OPEN_FAIL, szModule, __LINE__);
    }
    SetName(szName);
    m_pFile = pFile.release();
    m_eAccess = eNone;
}

void ClFileStream::Open(const wchar_t* szName, const wchar_t* szMode)
{
    CheckOpenArguments(szName, szMode, szModule);
    Open(SBCSFromWideChar(szName).c_str(), SBCSFromWideChar(szMode).c_str());
}

void ClFileStream::Close()
{
    try
    {
        ClStream::Close();
    }
    catch (...)
    {
        CloseFile();
        throw;
    }
    if (!CloseFile())
    {
        throw ClExStream("ClFileStream::Close. Failed to Close", FPC_ERROR_IO, true, szModule, __LINE__);
    }
}

/// Whether all that was to be written could be written.
bool ClFileStream::CloseFile() noexcept
{
    std::FILE* pFile = std::exchange(m_pFile, nullptr);
    const bool bLost = std::exchange(m_bLost, false);
    return pFile == nullptr || (std::fclose(pFile) == 0 && !bLost);
}

std::FILE* ClFileStream::OpenOne() const
{
    if (m_pFile == nullptr)
    {
        throw ClExStream("No file open", FPC_ERROR_IO, true, szModule, __LINE__);
    }
    return m_pFile;
}

std::FILE* ClFileStream::OpenOneFor(EAccess eAccess)
{
    std::FILE* pFile = OpenOne();
    if (m_eAccess != eNone && m_eAccess != eAccess)
    {
        std::fseek(pFile, 0, SEEK_CUR);
    }
    m_eAccess = eAccess;
    return pFile;
}

long ClFileStream::Pos() const
{
    return std::ftell(OpenOne());
}

long ClFileStream::Size() const
{
    std::FILE* pFile = OpenOne();
    const long nPos = std::ftell(pFile);
    if (nPos < 0 || std::fseek(pFile, 0, SEEK_END) != 0)
    {
        return -1;
    }
    const long nSize = std::ftell(pFile);
    return std::fseek(pFile, nPos, SEEK_SET) == 0 ? nSize : -1;
}

void ClFileStream::Flush()
{
    ClStream::Flush();
    if (std::fflush(OpenOne()) != 0)
    {
        m_bLost = true; // the C library forgets it
        throw ClExStreamFailToWrite("ClFileStream::Flush. Failed to Flush", FPC_ERROR_WRITE_FAIL, true, szModule,
                                    __LINE__);
    }
}

int ClFileStream::Seek(long nOffset, int nOrigin)
{
    std::FILE* pFile = OpenOne();
    m_eAccess = eNone;
    return std::fseek(pFile, nOffset, nOrigin);
}

const char* ClFileStream::Name() const
{
    return m_szName == nullptr ? ClStream::Name() : m_szName;
}

unsigned long ClFileStream::WriteRaw(const void* pData, unsigned long nSize)
{
    const unsigned long nMoved = std::fwrite(pData, 1, nSize, OpenOneFor(eWriting));
    m_bLost = m_bLost || nMoved < nSize;
    return nMoved;
}

unsigned long ClFileStream::ReadRaw(void* pData, unsigned long nSize)
{
    return std::fread(pData, 1, nSize, OpenOneFor(eReading));
}

void ClFileStream::SetName(const char* szName)
{
    char* szCopy = nullptr;
    if (szName != nullptr)
    {
        const std::size_t nSize = std::strlen(szName) + 1;
        szCopy = NewArray<char>(nSize);
        std::memcpy(szCopy, szName, nSize);
    }
    delete[] m_szName; // last: szName may be the old name
    m_szName = szCopy;
}
