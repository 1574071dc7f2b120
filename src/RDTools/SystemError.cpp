#include "RDTools/SystemError.hpp"

#include "RDTools/Exception.hpp"

#include <cerrno>

namespace
{
/// The exceptions read errno when they are made.
void GiveToException(int nError)
{
    if (nError == ENOMEM)
    {
        ThrowBadAlloc();
    }
    errno = nError;
}
} // namespace

void ThrowSystemError(int nError, const char* szFunction, const char* szFile, long nLine)
{
    GiveToException(nError);
    throw ClExSystem(szFunction, szFile, nLine);
}

void ThrowFilesystemError(int nError, const char* szName, long nNumber, const char* szFile, long nLine)
{
    GiveToException(nError);
    throw ClExFilesystem(szName, nNumber, szFile, nLine);
}
