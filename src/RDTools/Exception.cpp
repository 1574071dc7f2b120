#include "RDTools/Exception.hpp"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace
{
/// Formatted text in a block of exactly its size; null for an empty text. Returns false if there is no memory.
bool FormatOwned(char*& szResult, const char* szFormat, va_list args)
{
    va_list measure;
    va_copy(measure, args);
    const int nLength = std::vsnprintf(nullptr, 0, szFormat, measure);
    va_end(measure);
    szResult = nullptr;
    if (nLength <= 0)
    {
        return true;
    }
    const size_t nSize = static_cast<size_t>(nLength) + 1;
    szResult = static_cast<char*>(std::malloc(nSize));
    if (szResult == nullptr)
    {
        return false;
    }
    std::vsnprintf(szResult, nSize, szFormat, args);
    return true;
}

bool FormatOwned(char*& szResult, const char* szFormat, ...) __attribute__((format(printf, 2, 3)));

bool FormatOwned(char*& szResult, const char* szFormat, ...)
{
    va_list args;
    va_start(args, szFormat);
    const bool bDone = FormatOwned(szResult, szFormat, args);
    va_end(args);
    return bDone;
}

const char* TextOrEmpty(const char* szText)
{
    return szText == nullptr ? "" : szText;
}
} // namespace

ClException::ClException(long nNumber, bool bOwnComment, const char* szFile, long nLine)
    : m_szFile(szFile), m_nLine(nLine), m_nNumber(nNumber), m_bOwnComment(bOwnComment)
{
    SetComment(GetErrorDescriptionIntern(nNumber));
}

ClException::ClException(const char* szComment, long nNumber, bool bOwnComment, const char* szFile, long nLine)
    : m_szFile(szFile), m_nLine(nLine), m_nNumber(nNumber), m_bOwnComment(bOwnComment)
{
    const char* szDescription = GetErrorDescriptionIntern(nNumber);
    char* szCopy = nullptr;
    if (FormatOwned(szCopy, "%s\n%s", szDescription, TextOrEmpty(szComment)))
    {
        Own(szCopy);
        return;
    }
    if (nNumber != FPC_ERROR_OUT_OF_MEMORY)
    {
        ThrowBadAlloc();
    }
    // No memory to tell that there is no memory: the constant text must do.
    m_bOwnComment = false;
    SetComment(szDescription);
}

ClException::ClException(const ClException& cOther)
    : Vlm::ClVelmarinException(cOther), m_szFile(cOther.m_szFile), m_nLine(cOther.m_nLine), m_nNumber(cOther.m_nNumber),
      m_bOwnComment(cOther.m_bOwnComment)
{
    SetComment(cOther.m_szComment);
}

ClException::~ClException()
{
    if (m_bOwnComment)
    {
        std::free(m_szComment);
    }
}

const char* ClException::what() const noexcept
{
    return What();
}

const char* ClException::What() const
{
    return m_szComment;
}

long ClException::Number() const
{
    return m_nNumber;
}

void ClException::SetComment(const char* szComment)
{
    if (!m_bOwnComment)
    {
        m_szComment = const_cast<char*>(szComment); // never written through while it is not owned
        return;
    }
    char* szCopy = nullptr;
    if (szComment != nullptr && (szCopy = strdup(szComment)) == nullptr)
    {
        if (m_nNumber != FPC_ERROR_OUT_OF_MEMORY)
        {
            ThrowBadAlloc();
        }
        std::free(m_szComment);
        m_bOwnComment = false;
        m_szComment = const_cast<char*>(GetErrorDescriptionIntern(m_nNumber));
        return;
    }
    Own(szCopy);
}

void ClException::SetCommentV(const char* szFormat, ...)
{
    char* szCopy = nullptr;
    va_list args;
    va_start(args, szFormat);
    const bool bDone = FormatOwned(szCopy, szFormat, args);
    va_end(args);
    if (!bDone)
    {
        ThrowBadAlloc();
    }
    Own(szCopy);
}

void ClException::Own(char* szCopy)
{
    if (m_bOwnComment)
    {
        std::free(m_szComment);
    }
    m_bOwnComment = true;
    m_szComment = szCopy;
}

ClExSystem::ClExSystem(const char* szComment, const char* szFile, long nLine)
    : ClExSystem(szComment, FPC_ERROR_FROM_SYSTEM_FUNCTION, szFile, nLine)
{
}

ClExSystem::ClExSystem(const char* szComment, long nNumber, const char* szFile, long nLine)
    : ClException(nNumber, false, szFile, nLine) // allocates nothing, so errno is still the failed call's
{
    SetCommentV("%s\n%s", std::strerror(errno), TextOrEmpty(szComment));
}

ClExFilesystem::ClExFilesystem(const char* szComment, long nNumber, const char* szFile, long nLine)
    : ClExSystem(szComment, nNumber, szFile, nLine)
{
}

namespace Vlm
{
const char* CXException::what() const noexcept
{
    return What();
}

const char* CXException::What() const
{
    return GetDescription();
}

const char* CXSystemException::GetDescription() const
{
    return m_szDescription;
}

int CXSystemException::GetErrorNumber() const
{
    return m_nErrorNumber;
}
} // namespace Vlm

void ThrowBadAlloc()
{
    throw ClExBadAlloc("Memory allocation failed", FPC_ERROR_OUT_OF_MEMORY, false, "Unknown", -1);
}
