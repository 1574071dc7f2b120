#pragma once

#include "RDTools/Stream.hpp"

#include <cstdio>

/// The stream on a C file. Names pass through FileSystem::NormalizeFilename. Reading and writing may alternate as the
/// mode of the file allows it.
/// Errors: an operation without a file ClExStream "No file open" -204; those of ClStream.
class ClFileStream : public ClStream
{
public:
    ClFileStream() = default;
    /// Both open at once.
    ClFileStream(const char* szName, const char* szMode);
    ClFileStream(const wchar_t* szName, const wchar_t* szMode);
    ~ClFileStream() override; ///< closes; has nobody to tell if that fails

    /// Opens a file by a mode of fopen; what was open is closed first. Errors: a null argument ClException -44; a file
    /// that cannot be opened ClExFilesystem -200 with the name; those of Close; a wide text that is none ClExSystem
    /// -105.
    void Open(const char* szName, const char* szMode);
    void Open(const wchar_t* szName, const wchar_t* szMode);
    /// Writes what is pending; no effect if no file is open, and none is open afterwards, whatever happens.
    /// Errors: pending bits that cannot be written ClExStreamFailToWrite -202; other data, now or in an earlier write,
    /// ClExStream -204.
    void Close() override;
    long Pos() const override;  ///< -1 if the file cannot tell, as a pipe
    long Size() const override; ///< -1 if the file cannot tell; the position stays
    void Flush() override;      ///< writes all that is pending. Errors: ClExStreamFailToWrite -202
    int Seek(long nOffset, int nOrigin) override;
    const char* Name() const override; ///< as it was given to Open; it stays after Close
    bool IsSeekable() const override { return true; }
    unsigned long WriteRaw(const void* pData, unsigned long nSize) override;
    unsigned long ReadRaw(void* pData, unsigned long nSize) override;

    void SetName(const char* szName); ///< keeps a copy. Errors: ClExBadAlloc -102

    std::FILE* m_pFile = nullptr; ///< null while no file is open
    char* m_szName = nullptr;     ///< owned, by array-new

private:
    enum EAccess : unsigned char
    {
        eNone,
        eReading,
        eWriting
    };

    std::FILE* OpenOne() const;
    std::FILE* OpenOneFor(EAccess eAccess);
    bool CloseFile() noexcept;

    EAccess m_eAccess = eNone; ///< of the last access; C wants a seek in between
    bool m_bLost = false;      ///< a write came out short
};
