#pragma once

/// Raising what the system reported: nError is the value of errno, taken where the call failed, so that nothing in
/// between can change it. ENOMEM becomes ClExBadAlloc (-102).

/// ClExSystem (-105): the system's text, a line break, szFunction.
[[noreturn]] void ThrowSystemError(int nError, const char* szFunction, const char* szFile, long nLine);

/// ClExFilesystem with nNumber: the system's text, a line break, the name concerned.
[[noreturn]] void ThrowFilesystemError(int nError, const char* szName, long nNumber, const char* szFile, long nLine);
