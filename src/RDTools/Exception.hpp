#pragma once

#include "RDTools/ErrorCatalogue.hpp"

#include <exception>
#include <new>
#include <utility>

namespace Vlm
{
/// Root of all exceptions of the system.
class ClVelmarinException : public std::exception
{
public:
    ~ClVelmarinException() override = default;
    const char* what() const noexcept override = 0;
    virtual const char* What() const = 0;

protected:
    ClVelmarinException() = default;
    ClVelmarinException(const ClVelmarinException&) = default;
};
} // namespace Vlm

/// A failure with its catalogue number. What() is the catalogue's description, or, where the raising place had more to
/// say, the description, a line break and the comment. File and line serve diagnostics only: nothing reads them.
class ClException : public Vlm::ClVelmarinException
{
public:
    /// The comment is the catalogue's description of nNumber, copied only if bOwnComment.
    ClException(long nNumber, bool bOwnComment, const char* szFile, long nLine);
    /// The comment is description, line break, szComment: always a private copy. Without memory for that copy a
    /// ClExBadAlloc is raised in its place; an out-of-memory exception falls back to the catalogue's text.
    ClException(const char* szComment, long nNumber, bool bOwnComment, const char* szFile, long nLine);
    ClException(const ClException& cOther);
    ClException& operator=(const ClException&) = delete;
    ~ClException() override;

    const char* what() const noexcept override; // a throwing What() ends the process here
    const char* What() const override;
    long Number() const;

    void SetComment(const char* szComment);
    void SetCommentV(const char* szFormat, ...) __attribute__((format(printf, 2, 3)));

    char* m_szComment = nullptr; ///< the text; owned if m_bOwnComment, null if empty
    const char* m_szFile;        ///< source file of the raising place, or "Unknown"
    long m_nLine;                ///< its source line, or -1
    long m_nNumber;              ///< the catalogue number
    bool m_bOwnComment;          ///< the comment is a private copy

private:
    void Own(char* szCopy);
};

/// A failed check that has only a code to tell; the usual way of raising.
class ClExVelmarin : public ClException
{
public:
    ClExVelmarin(long nNumber, const char* szFile, long nLine) : ClException(nNumber, false, szFile, nLine) {}
};

/// Out of memory, -102.
class ClExBadAlloc : public ClException
{
public:
    ClExBadAlloc(const char* szComment, long nNumber, bool bOwnComment, const char* szFile, long nLine)
        : ClException(szComment, nNumber, bOwnComment, szFile, nLine)
    {
    }
    ClExBadAlloc(const ClExBadAlloc&) = default;
    ClExBadAlloc(const ClException& cOther) : ClException(cOther) {}
};

/// Value out of range.
class ClExRange : public ClException
{
public:
    ClExRange(const char* szComment, long nNumber, bool bOwnComment, const char* szFile, long nLine)
        : ClException(szComment, nNumber, bOwnComment, szFile, nLine)
    {
    }
    ClExRange(const ClExRange&) = default;
    ClExRange(const ClException& cOther) : ClException(cOther) {}
};

/// Invalid value.
class ClExInvalid : public ClException
{
public:
    ClExInvalid(const char* szComment, long nNumber, bool bOwnComment, const char* szFile, long nLine)
        : ClException(szComment, nNumber, bOwnComment, szFile, nLine)
    {
    }
    ClExInvalid(const ClExInvalid&) = default;
    ClExInvalid(const ClException& cOther) : ClException(cOther) {}
};

/// Stack misuse.
class ClExStack : public ClException
{
public:
    ClExStack(const char* szComment, long nNumber, bool bOwnComment, const char* szFile, long nLine)
        : ClException(szComment, nNumber, bOwnComment, szFile, nLine)
    {
    }
    ClExStack(const ClExStack&) = default;
    ClExStack(const ClException& cOther) : ClException(cOther) {}
};

/// Error in the calling code.
class ClCodingException : public ClException
{
public:
    ClCodingException(const char* szComment, long nNumber, bool bOwnComment, const char* szFile, long nLine)
        : ClException(szComment, nNumber, bOwnComment, szFile, nLine)
    {
    }
    ClCodingException(const ClCodingException&) = default;
    ClCodingException(const ClException& cOther) : ClException(cOther) {}
};

/// Stream failure; the derived classes tell its kind.
class ClExStream : public ClException
{
public:
    ClExStream(const char* szComment, long nNumber, bool bOwnComment, const char* szFile, long nLine)
        : ClException(szComment, nNumber, bOwnComment, szFile, nLine)
    {
    }
    ClExStream(const ClExStream&) = default;
    ClExStream(const ClException& cOther) : ClException(cOther) {}
};

class ClExStreamFailToRead : public ClExStream
{
public:
    using ClExStream::ClExStream;
    ClExStreamFailToRead(const ClException& cOther) : ClExStream(cOther) {}
};

class ClExStreamFailToWrite : public ClExStream
{
public:
    using ClExStream::ClExStream;
    ClExStreamFailToWrite(const ClException& cOther) : ClExStream(cOther) {}
};

class ClExStreamUnexpectedEnd : public ClExStream
{
public:
    using ClExStream::ClExStream;
    ClExStreamUnexpectedEnd(const ClException& cOther) : ClExStream(cOther) {}
};

class ClExStreamOpen : public ClExStream
{
public:
    using ClExStream::ClExStream;
    ClExStreamOpen(const ClException& cOther) : ClExStream(cOther) {}
};

/// A failed system call: the comment is the text of errno at construction, a line break, szComment.
class ClExSystem : public ClException
{
public:
    ClExSystem(const char* szComment, const char* szFile, long nLine); ///< number -105

protected:
    ClExSystem(const char* szComment, long nNumber, const char* szFile, long nLine);
};

/// A failed file system call, with a number of its own.
class ClExFilesystem : public ClExSystem
{
public:
    ClExFilesystem(const char* szComment, long nNumber, const char* szFile, long nLine);
    ClExFilesystem(const ClExSystem& cOther) : ClExSystem(cOther) {}
};

namespace Vlm
{
/// Exception that describes itself through the virtual GetDescription().
class CXException : public ClVelmarinException
{
public:
    const char* what() const noexcept override;
    const char* What() const override;
    virtual const char* GetDescription() const = 0;
};

/// A system error: its number and a text, which the caller keeps alive.
class CXSystemException : public CXException
{
public:
    CXSystemException(int nErrorNumber, const char* szDescription)
        : m_nErrorNumber(nErrorNumber), m_szDescription(szDescription)
    {
    }
    const char* GetDescription() const override;
    virtual int GetErrorNumber() const;

    int m_nErrorNumber;
    const char* m_szDescription;
};
} // namespace Vlm

/// Raises the one form of "out of memory": "Memory allocation failed", -102.
[[noreturn]] void ThrowBadAlloc();

/// Runs fn; a failed allocation of the standard library comes out as ClExBadAlloc.
template <class Fn> decltype(auto) ConvertBadAlloc(Fn&& fn)
{
    try
    {
        return std::forward<Fn>(fn)();
    }
    catch (const std::bad_alloc&)
    {
        ThrowBadAlloc();
    }
}
