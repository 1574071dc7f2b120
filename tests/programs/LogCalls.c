/* An application that makes three calls, for tests that read its log: one that succeeds, one that fails, one that fails
   in a handle. Exits with 0 if the calls answered as they must. */
#include "VelmarinKormelinSegmentation.h"

#include <stddef.h>

int main(void)
{
    char szVersion[16];
    unsigned long nSize = sizeof szVersion;
    long nValue = 0;
    const long nVersion = KSGetVersionA(szVersion, &nSize);
    const long nUninitialize = KSUninitialize();
    const long nProperty = KSGetPropertyLongA(NULL, "Count", &nValue);
    const int bAsExpected = nVersion == FPC_SUCCESS && nSize == sizeof KS_VERSION_TEXT &&
                            nUninitialize == FPC_ERROR_NOT_INITIALIZED && nProperty == FPC_ERROR_NO_HANDLE;
    return bAsExpected ? 0 : 1;
}
