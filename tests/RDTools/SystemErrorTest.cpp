#include "RDTools/SystemError.hpp"

#include "RDTools/Exception.hpp"
#include "TestTools.hpp"

#include <cerrno>

TEST(SystemError, TheErrorGivenIsToldWhateverErrnoSaysMeanwhile)
{
    errno = EIO;
    EXPECT_RAISES(ThrowSystemError(ENOENT, "fopen", "Module", 3), ClExSystem, -105, "No such file or directory\nfopen");
    errno = EIO;
    EXPECT_RAISES(ThrowFilesystemError(EACCES, "a.bmp", -200, "Module", 3), ClExFilesystem, -200,
                  "Permission denied\na.bmp");
}

TEST(SystemError, TheRaisingPlaceIsKept)
{
    try
    {
        ThrowFilesystemError(EACCES, "a.bmp", -200, "Folder/Module", 12);
    }
    catch (const ClException& cRaised)
    {
        EXPECT_STREQ("Folder/Module", cRaised.m_szFile);
        EXPECT_EQ(12, cRaised.m_nLine);
    }
}

TEST(SystemError, NoMemoryIsBadAlloc)
{
    EXPECT_THROW(ThrowSystemError(ENOMEM, "fopen", "Module", 3), ClExBadAlloc);
    EXPECT_RAISES_CODE(ThrowFilesystemError(ENOMEM, "a.bmp", -200, "Module", 3), -102);
}
