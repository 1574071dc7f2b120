#include "RDTools/FileSystem.hpp"

#include "FailingHeap.hpp"
#include "PathTestTools.hpp"
#include "TestTools.hpp"

#include <functional>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace fs = std::filesystem;

namespace
{
constexpr char szInvalid[] = "One(or more) parameter(s) is(are) invalid.\n";
const std::string sEmptyName = std::string(szInvalid) + "the szFileName is empty";
const std::string sOnlyPath = std::string(szInvalid) + "the szFileName has only path information";

} // namespace

TEST(FileSystem, NormalizedNamesHoldSlashesOnly)
{
    EXPECT_EQ("data/slap 1/a.bmp", FileSystem::NormalizeFilename("data\\slap 1/a.bmp"));
    EXPECT_EQ("//a//../b/", FileSystem::NormalizeFilename("\\\\a\\/..\\b\\"));
    EXPECT_EQ("a.bmp", FileSystem::NormalizeFilename("a.bmp"));
    EXPECT_EQ("", FileSystem::NormalizeFilename(""));
    EXPECT_EQ("\xC3\xA4/\xFF", FileSystem::NormalizeFilename("\xC3\xA4\\\xFF")); // any bytes are a name
}

TEST(FileSystem, NormalizedWideNamesAreTheSameInWide)
{
    const ClEnvironment cHome("HOME", "/users/\xC3\xA4");
    EXPECT_EQ(L"data/\u00E4/a.bmp", FileSystem::NormalizeFilename(L"data\\\u00E4\\a.bmp"));
    EXPECT_EQ(L"/users/\u00E4/a.bmp", FileSystem::NormalizeFilename(L"~\\a.bmp"));
    EXPECT_EQ(L"", FileSystem::NormalizeFilename(L""));
    const wchar_t anSurrogate[] = {static_cast<wchar_t>(0xD800), 0};
    EXPECT_RAISES(FileSystem::NormalizeFilename(anSurrogate), ClExSystem, -105,
                  "Invalid or incomplete multibyte or wide character\nConversions Error");
}

TEST(FileSystem, ATildeAsFirstComponentIsTheHomeDirectory)
{
    const ClEnvironment cHome("HOME", "/users/me");
    EXPECT_EQ("/users/me", FileSystem::NormalizeFilename("~"));
    EXPECT_EQ("/users/me/a.bmp", FileSystem::NormalizeFilename("~/a.bmp"));
    EXPECT_EQ("/users/me/a.bmp", FileSystem::NormalizeFilename("~\\a.bmp"));
    EXPECT_EQ("~other/a.bmp", FileSystem::NormalizeFilename("~other/a.bmp"));
    EXPECT_EQ("./~/a.bmp", FileSystem::NormalizeFilename("./~/a.bmp"));
}

TEST(FileSystem, ATildeStaysWithoutAHomeDirectory)
{
    for (const char* szHome : {static_cast<const char*>(nullptr), ""})
    {
        const ClEnvironment cHome("HOME", szHome);
        EXPECT_EQ("~/a.bmp", FileSystem::NormalizeFilename("~/a.bmp"));
    }
}

TEST(FileSystem, NormalizingRefusesNull)
{
    EXPECT_RAISES(FileSystem::NormalizeFilename(static_cast<const char*>(nullptr)), ClException, -44,
                  sEmptyName.c_str());
    EXPECT_RAISES(FileSystem::NormalizeFilename(static_cast<const wchar_t*>(nullptr)), ClException, -44,
                  sEmptyName.c_str());
}

TEST(FileSystem, NormalizingWithAnExhaustedHeapComesOutAsBadAlloc)
{
    const ClEnvironment cHome("HOME", "/users/with/a/name/that/no/short/text/can/hold");
    EXPECT_GE(ExpectBadAllocAtEveryAllocation([] { FileSystem::NormalizeFilename("~/a.bmp"); }), 1);
    EXPECT_GE(ExpectBadAllocAtEveryAllocation([] { FileSystem::NormalizeFilename(L"~/a.bmp"); }), 2);
}

TEST(FileSystem, ANameIsTakenApart)
{
    struct StCase
    {
        const char* m_szName;
        const char* m_szPath;
        const char* m_szFile;
        const char* m_szWithoutExt;
        const char* m_szPathAndName;
    };
    const StCase acCases[] = {
        {"data/slap.1/a.b.bmp", "data/slap.1/", "a.b.bmp", "a.b", "data/slap.1/a.b"},
        {"C:\\data\\a.bmp", "C:/data/", "a.bmp", "a", "C:/data/a"},
        {"a.bmp", "", "a.bmp", "a", "a"},
        {"/a", "/", "a", "a", "/a"},
        {"slap.1/a", "slap.1/", "a", "a", "slap.1/a"}, // the point belongs to the path
        {".profile", "", ".profile", ".profile", ".profile"},
        {"x/.profile.bak", "x/", ".profile.bak", ".profile", "x/.profile"},
        {"a.", "", "a.", "a", "a"},
        {".", "", ".", ".", "."},
        {"x/..", "x/", "..", "..", "x/.."},
        {"~/a.bmp", "~/", "a.bmp", "a", "~/a"},
    };
    for (const StCase& cCase : acCases)
    {
        EXPECT_EQ(cCase.m_szPath, FileSystem::GetPath(cCase.m_szName)) << cCase.m_szName;
        EXPECT_EQ(cCase.m_szFile, FileSystem::GetFileName(cCase.m_szName)) << cCase.m_szName;
        EXPECT_EQ(cCase.m_szWithoutExt, FileSystem::GetFileNameWithoutExt(cCase.m_szName)) << cCase.m_szName;
        EXPECT_EQ(cCase.m_szPathAndName, FileSystem::GetPathAndName(cCase.m_szName)) << cCase.m_szName;
    }
}

TEST(FileSystem, TheExtensionIsChangedAddedOrRemoved)
{
    EXPECT_EQ("x.1/a.krx", FileSystem::ChangeExtension("x.1\\a.bmp", "krx"));
    EXPECT_EQ("x.1/a.krx", FileSystem::ChangeExtension("x.1/a.bmp", ".krx"));
    EXPECT_EQ("x.1/a.krx", FileSystem::ChangeExtension("x.1/a", "krx"));
    EXPECT_EQ("a.b.krx", FileSystem::ChangeExtension("a.b.bmp", ".krx"));
    EXPECT_EQ("x.1/a", FileSystem::ChangeExtension("x.1/a.bmp", ""));
    EXPECT_EQ("x.1/a", FileSystem::ChangeExtension("x.1/a.bmp", nullptr));
    EXPECT_EQ(".profile.bak", FileSystem::ChangeExtension(".profile", "bak"));
}

TEST(FileSystem, TakingApartRefusesEmptyNamesAndNamesWithoutAFile)
{
    for (const char* szName : {static_cast<const char*>(nullptr), ""})
    {
        EXPECT_RAISES(FileSystem::GetPath(szName), ClException, -44, sEmptyName.c_str());
        EXPECT_RAISES(FileSystem::GetFileName(szName), ClException, -44, sEmptyName.c_str());
        EXPECT_RAISES(FileSystem::GetFileNameWithoutExt(szName), ClException, -44, sEmptyName.c_str());
        EXPECT_RAISES(FileSystem::GetPathAndName(szName), ClException, -44, sEmptyName.c_str());
        EXPECT_RAISES(FileSystem::ChangeExtension(szName, "bmp"), ClException, -44, sEmptyName.c_str());
    }
    for (const char* szName : {"data/", "data\\", "/"})
    {
        EXPECT_EQ(szName[0] == '/' ? "/" : "data/", FileSystem::GetPath(szName));
        EXPECT_RAISES(FileSystem::GetFileName(szName), ClException, -44, sOnlyPath.c_str());
        EXPECT_RAISES(FileSystem::GetFileNameWithoutExt(szName), ClException, -44, sOnlyPath.c_str());
        EXPECT_RAISES(FileSystem::GetPathAndName(szName), ClException, -44, sOnlyPath.c_str());
        EXPECT_RAISES(FileSystem::ChangeExtension(szName, "bmp"), ClException, -44, sOnlyPath.c_str());
    }
}

TEST(FileSystem, PathsAreJoinedWithOneSlash)
{
    EXPECT_EQ("a/b", FileSystem::AddPath("a", "b"));
    EXPECT_EQ("a/b", FileSystem::AddPath("a/", "b"));
    EXPECT_EQ("a/b", FileSystem::AddPath("a", "/b"));
    EXPECT_EQ("a/b/", FileSystem::AddPath("a\\", "\\b\\"));
    EXPECT_EQ("/b", FileSystem::AddPath("/", "b"));
    EXPECT_EQ("a/", FileSystem::AddPath("a", "//"));
    EXPECT_EQ("/b", FileSystem::AddPath("", "\\b"));
    EXPECT_EQ("a", FileSystem::AddPath("a", ""));
    EXPECT_EQ("", FileSystem::AddPath("", ""));
    EXPECT_RAISES(FileSystem::AddPath(nullptr, nullptr), ClException, -44,
                  "One(or more) parameter(s) is(are) invalid.\nszPath is NULL.");
    EXPECT_RAISES(FileSystem::AddPath("a", nullptr), ClException, -44,
                  "One(or more) parameter(s) is(are) invalid.\nszAppend is NULL.");
}

TEST(FileSystem, AbsoluteAndRelativePathsLeadToEachOther)
{
    const ClEnvironment cHome("HOME", "/users/me");
    const char* const aszCases[][3] = {
        // root, absolute, relative
        {"/data/slaps/", "/data/slaps/a.bmp", "a.bmp"},
        {"/data/slaps/", "/data/slaps/x/a.bmp", "x/a.bmp"},
        {"/data/slaps/", "/data/a.bmp", "../a.bmp"},
        {"/data/slaps/", "/data/slaps2/a.bmp", "../slaps2/a.bmp"},
        {"/data/slaps/", "/a.bmp", "../../a.bmp"},
        {"/data/slaps/", "/", "../../"},
        {"/data/slaps/", "/data/", "../"},
        {"/data/slaps/", "/data/slaps/", "./"},
        {"/data/slaps/", "/data/slaps/x/", "x/"},
        {"/data/slaps/", "/data/slaps/~/a.bmp", "./~/a.bmp"},
        {"/data/slaps/", "/data/slaps/C:/a.bmp", "./C:/a.bmp"},
        {"/", "/data/a.bmp", "data/a.bmp"},
        {"C:/data/", "C:/data/x/a.bmp", "x/a.bmp"},
        {"C:/data/", "C:/a.bmp", "../a.bmp"},
        {"C:/", "C:/a.bmp", "a.bmp"},
    };
    for (const auto& [szRoot, szAbsolute, szRelative] : aszCases)
    {
        EXPECT_EQ(szRelative, FileSystem::MakeRelativePath(szRoot, szAbsolute)) << szRoot;
        EXPECT_EQ(szAbsolute, FileSystem::MakeAbsolutePath(szRoot, szRelative)) << szRoot;
        EXPECT_EQ(szAbsolute, FileSystem::MakeAbsolutePath(szRoot, szAbsolute)) << szRoot;
    }
}

TEST(FileSystem, AbsoluteAndRelativePathsAreNormalizedFirst)
{
    const ClEnvironment cHome("HOME", "/users/me");
    EXPECT_EQ("x/a.bmp", FileSystem::MakeRelativePath("/data/y/..//slaps\\", "\\data/./slaps/x\\a.bmp"));
    EXPECT_EQ("x/a.bmp", FileSystem::MakeRelativePath("c:\\data\\", "C:/data/x/a.bmp")); // one drive in either case
    EXPECT_EQ("../me/a.bmp", FileSystem::MakeRelativePath("/users/you/", "~/a.bmp"));
    EXPECT_EQ("/data/a.bmp", FileSystem::MakeAbsolutePath("//data/", "a.bmp"));
    EXPECT_EQ("a.bmp", FileSystem::MakeRelativePath("//data/", "/data//a.bmp"));
    EXPECT_EQ("./", FileSystem::MakeRelativePath("/data/", "/data"));
    EXPECT_EQ("./", FileSystem::MakeRelativePath("/", "/.."));
    EXPECT_EQ("..", FileSystem::MakeRelativePath("/data/slaps/", "/data"));
    EXPECT_EQ("/data/a.bmp", FileSystem::MakeAbsolutePath("/data/slaps/", ".\\..//a.bmp"));
    EXPECT_EQ("/a.bmp", FileSystem::MakeAbsolutePath("/data/", "../../../a.bmp")); // the root is above itself
    EXPECT_EQ("/users/me/a.bmp", FileSystem::MakeAbsolutePath("/data/", "~/a.bmp"));
    EXPECT_EQ("/users/me/x/a.bmp", FileSystem::MakeAbsolutePath("~/x/", "a.bmp"));
    EXPECT_EQ("D:/b.bmp", FileSystem::MakeAbsolutePath("C:/data/", "D:\\x\\..\\b.bmp"));
    EXPECT_EQ("/data/1:/b.bmp", FileSystem::MakeAbsolutePath("/data/", "1:/b.bmp")); // a drive is a letter
}

TEST(FileSystem, RootsMustBeDirectoriesAndAbsolute)
{
    const std::string sNoSeparator = std::string(szInvalid) + "szRootPath is not end with a dir separator";
    const std::string sNotAbsolute = std::string(szInvalid) + "szRootPath is not a absolute path";
    for (const char* szRoot : {static_cast<const char*>(nullptr), "", "/data", "data", "C:", "C:/x"})
    {
        EXPECT_RAISES(FileSystem::MakeAbsolutePath(szRoot, nullptr), ClException, -44, sNoSeparator.c_str());
        EXPECT_RAISES(FileSystem::MakeRelativePath(szRoot, nullptr), ClException, -44, sNoSeparator.c_str());
    }
    for (const char* szRoot : {"data/", "./", "..\\", "1:/"})
    {
        EXPECT_RAISES(FileSystem::MakeAbsolutePath(szRoot, nullptr), ClException, -44, sNotAbsolute.c_str());
        EXPECT_RAISES(FileSystem::MakeRelativePath(szRoot, nullptr), ClException, -44, sNotAbsolute.c_str());
    }
}

TEST(FileSystem, RelativePathsNeedAnAbsoluteNameOnTheSameDrive)
{
    for (const char* szName :
         {static_cast<const char*>(nullptr), "", "a.bmp", "../a.bmp", "C:a.bmp", "@:/a", "[:/a", "`:/a", "{:/a"})
    {
        EXPECT_RAISES(FileSystem::MakeRelativePath("/data/", szName), ClException, -44,
                      "One(or more) parameter(s) is(are) invalid.\nszAbsolutePath is not a absolute path");
    }
    for (const std::string sRoot : {"A:/", "Z:/", "a:/", "z:/"})
    {
        EXPECT_EQ("a.bmp", FileSystem::MakeRelativePath(sRoot.c_str(), (sRoot + "a.bmp").c_str()));
    }
    const char* const szDrive =
        "One(or more) parameter(s) is(are) invalid.\nthe absolute paths dont have the same drive";
    EXPECT_RAISES(FileSystem::MakeRelativePath("C:/data/", "D:/data/a.bmp"), ClException, -44, szDrive);
    EXPECT_RAISES(FileSystem::MakeRelativePath("/data/", "D:/data/a.bmp"), ClException, -44, szDrive);
    EXPECT_RAISES(FileSystem::MakeRelativePath("C:/data/", "/data/a.bmp"), ClException, -44, szDrive);
    for (const char* szName : {static_cast<const char*>(nullptr), ""})
    {
        EXPECT_RAISES(FileSystem::MakeAbsolutePath("/data/", szName), ClException, -44, sEmptyName.c_str());
    }
}

TEST(FileSystem, OperationsOnNamesWithAnExhaustedHeapComeOutAsBadAlloc)
{
    const std::string sPath = "/data/" + std::string(60, 'x') + "/";
    const std::string sName = sPath + "y/" + std::string(60, 'z') + ".bmp";
    const std::vector<std::string (*)(const char*)> apfnParts = {
        FileSystem::GetPath, FileSystem::GetFileName, FileSystem::GetFileNameWithoutExt, FileSystem::GetPathAndName};
    for (const auto pfnPart : apfnParts)
    {
        EXPECT_GE(ExpectBadAllocAtEveryAllocation([&] { pfnPart(sName.c_str()); }), 2);
    }
    const auto change = [&] { FileSystem::ChangeExtension(sName.c_str(), "krx"); };
    const auto join = [&] { FileSystem::AddPath(sPath.c_str(), sName.c_str()); };
    const auto absolute = [&] { FileSystem::MakeAbsolutePath(sPath.c_str(), "a.bmp"); };
    const auto relative = [&] { FileSystem::MakeRelativePath(sPath.c_str(), sName.c_str()); };
    EXPECT_GE(ExpectBadAllocAtEveryAllocation(change), 2);
    EXPECT_GE(ExpectBadAllocAtEveryAllocation(join), 2);
    EXPECT_GE(ExpectBadAllocAtEveryAllocation(absolute), 4);
    EXPECT_GE(ExpectBadAllocAtEveryAllocation(relative), 4);
}

TEST(FileSystem, WorkingAndTemporaryDirectoryEndInASlash)
{
    const ClTestTree cFolder;
    const fs::path cReal = fs::canonical(cFolder.Path());
    {
        const ClWorkingDirectory cWork(cFolder.Path());
        EXPECT_EQ(cReal.string() + "/", FileSystem::GetCurrentWorkingDirectory());
    }
    {
        const ClWorkingDirectory cWork("/");
        EXPECT_EQ("/", FileSystem::GetCurrentWorkingDirectory());
    }
    const ClEnvironment cTemp("TMPDIR", cReal.c_str());
    EXPECT_EQ(cReal.string() + "/", FileSystem::GetTempFileDir());
    EXPECT_GE(ExpectBadAllocAtEveryAllocation([] { FileSystem::GetTempFileDir(); }), 1);
    EXPECT_GE(ExpectBadAllocAtEveryAllocation([] { FileSystem::GetCurrentWorkingDirectory(); }), 1);
}

TEST(FileSystem, AWorkingOrTemporaryDirectoryThatHasGoneIsAnError)
{
    const ClTestTree cFolder;
    const std::string sGone = cFolder / "gone";
    fs::create_directory(sGone);
    const ClWorkingDirectory cWork(sGone);
    fs::remove(sGone);
    EXPECT_RAISES(FileSystem::GetCurrentWorkingDirectory(), ClExSystem, -105,
                  "No such file or directory\nGetCurrentWorkingDirectory");
    const ClEnvironment cTemp("TMPDIR", sGone.c_str());
    EXPECT_RAISES(FileSystem::GetTempFileDir(), ClExSystem, -105, "No such file or directory\nGetTempFileDir");
    const std::string sFile = cFolder.Write("file", "");
    const ClEnvironment cNoDirectory("TMPDIR", sFile.c_str());
    EXPECT_RAISES(FileSystem::GetTempFileDir(), ClExSystem, -105, "Not a directory\nGetTempFileDir");
}

TEST(FileSystem, ADirectoryIsMadeAloneOrWithThoseAboveIt)
{
    const ClTestTree cFolder;
    FileSystem::CreateDirectory((cFolder / "a").c_str(), false);
    EXPECT_TRUE(fs::is_directory(cFolder / "a"));
    FileSystem::CreateDirectory((cFolder / "b\\c\\d\\").c_str(), true);
    EXPECT_TRUE(fs::is_directory(cFolder / "b/c/d"));
    EXPECT_FALSE(fs::exists(cFolder / "b\\c\\d"));
    EXPECT_NO_THROW(FileSystem::CreateDirectory((cFolder / "b/c").c_str(), true));
    const ClEnvironment cHome("HOME", cFolder.Path().c_str());
    FileSystem::CreateDirectory("~/e", false);
    EXPECT_TRUE(fs::is_directory(cFolder / "e"));
}

TEST(FileSystem, ADirectoryThatCannotBeMadeIsAnError)
{
    const ClTestTree cFolder;
    const std::string sFile = cFolder.Write("file", "");
    for (const char* szPath : {static_cast<const char*>(nullptr), ""})
    {
        EXPECT_RAISES(FileSystem::CreateDirectory(szPath, true), ClException, -44,
                      "One(or more) parameter(s) is(are) invalid.\nInvalid Pathname in FileSystem::CreateDirectory.");
    }
    const std::string sThere = cFolder / "there";
    const std::string sBelowNone = cFolder / "none/a";
    FileSystem::CreateDirectory(sThere.c_str(), false);
    EXPECT_RAISES(FileSystem::CreateDirectory(sThere.c_str(), false), ClExFilesystem, -204,
                  ("File exists\n" + sThere).c_str());
    EXPECT_RAISES(FileSystem::CreateDirectory(sBelowNone.c_str(), false), ClExFilesystem, -204,
                  ("No such file or directory\n" + sBelowNone).c_str());
    EXPECT_RAISES(FileSystem::CreateDirectory(sFile.c_str(), true), ClExFilesystem, -204,
                  ("Not a directory\n" + sFile).c_str());
    EXPECT_RAISES_CODE(FileSystem::CreateDirectory((sFile + "/a/b").c_str(), true), -204);
}

TEST(FileSystem, AnEmptyDirectoryIsRemovedAFullOneOnlyRecursively)
{
    const ClTestTree cFolder;
    fs::create_directory(cFolder / "empty");
    FileSystem::RemoveDirectory((cFolder / "empty//").c_str(), false);
    EXPECT_FALSE(fs::exists(cFolder / "empty"));
    cFolder.Write("full/a/b/c.bmp", "x");
    cFolder.Write("full/back\\slash", "x"); // found in the directory, so it is one name
    EXPECT_RAISES(FileSystem::RemoveDirectory((cFolder / "full").c_str(), false), ClExSystem, -105,
                  "Directory not empty\nRemoveDirectory");
    EXPECT_TRUE(fs::exists(cFolder / "full/a/b/c.bmp"));
    FileSystem::RemoveDirectory((cFolder / "full\\").c_str(), true);
    EXPECT_FALSE(fs::exists(cFolder / "full"));
}

TEST(FileSystem, RemovingATreeLeavesWhatItsSymbolicLinksLeadTo)
{
    const ClTestTree cFolder;
    const std::string sKept = cFolder.Write("outside/kept.bmp", "x");
    cFolder.Write("tree/a.bmp", "x");
    fs::create_directory_symlink("../outside", cFolder / "tree/relative");
    fs::create_directory_symlink(cFolder / "outside", cFolder / "tree/absolute");
    fs::create_directory_symlink("..", cFolder / "tree/up");
    fs::create_symlink("../outside/kept.bmp", cFolder / "tree/file");
    fs::create_symlink("nothing", cFolder / "tree/broken");
    FileSystem::RemoveDirectory((cFolder / "tree").c_str(), true);
    EXPECT_FALSE(fs::exists(fs::symlink_status(cFolder / "tree")));
    EXPECT_EQ("x", cFolder.Read("outside/kept.bmp"));
}

TEST(FileSystem, ALinkToADirectoryIsNotRemovedAsOne)
{
    const ClTestTree cFolder;
    cFolder.Write("outside/kept.bmp", "x");
    fs::create_directory_symlink("outside", cFolder / "link");
    for (const bool bRecursive : {false, true})
    {
        for (const char* szName : {"link", "link/", "link\\", "link//", "outside/kept.bmp"})
        {
            EXPECT_RAISES(FileSystem::RemoveDirectory((cFolder / szName).c_str(), bRecursive), ClExSystem, -105,
                          "Not a directory\nRemoveDirectory");
        }
        for (const char* szName : {"link/.", "link/..", "outside/./", "link/sub/../"})
        {
            EXPECT_RAISES(FileSystem::RemoveDirectory((cFolder / szName).c_str(), bRecursive), ClExSystem, -105,
                          "Invalid argument\nRemoveDirectory");
        }
    }
    EXPECT_TRUE(fs::is_symlink(cFolder / "link"));
    EXPECT_EQ("x", cFolder.Read("outside/kept.bmp"));
}

TEST(FileSystem, RemovingRefusesNullNothingAndTheRoot)
{
    const ClTestTree cFolder;
    const ClWorkingDirectory cWork(cFolder.Path());
    for (const bool bRecursive : {false, true})
    {
        EXPECT_RAISES(FileSystem::RemoveDirectory(nullptr, bRecursive), ClException, -44,
                      "One(or more) parameter(s) is(are) invalid.\nszPath is NULL.");
        EXPECT_RAISES(FileSystem::RemoveDirectory("", bRecursive), ClExSystem, -105,
                      "No such file or directory\nRemoveDirectory");
        EXPECT_RAISES(FileSystem::RemoveDirectory("none", bRecursive), ClExSystem, -105,
                      "No such file or directory\nRemoveDirectory");
        EXPECT_RAISES(FileSystem::RemoveDirectory(".", bRecursive), ClExSystem, -105,
                      "Invalid argument\nRemoveDirectory");
    }
    EXPECT_RAISES(FileSystem::RemoveDirectory("//", false), ClExSystem, -105,
                  "Device or resource busy\nRemoveDirectory");
}

TEST(FileSystem, FilesExistDirectoriesAreNone)
{
    const ClTestTree cFolder;
    cFolder.Write("a/b.bmp", "");
    fs::create_symlink("a/b.bmp", cFolder / "link");
    fs::create_symlink("none", cFolder / "broken");
    EXPECT_TRUE(FileSystem::IsFileExistent((cFolder / "a\\b.bmp").c_str()));
    EXPECT_TRUE(FileSystem::IsFileExistent((cFolder / "link").c_str()));
    EXPECT_TRUE(FileSystem::IsFileExistent("/dev/null"));
    EXPECT_FALSE(FileSystem::IsFileExistent((cFolder / "a").c_str()));
    EXPECT_FALSE(FileSystem::IsFileExistent((cFolder / "broken").c_str()));
    EXPECT_FALSE(FileSystem::IsFileExistent((cFolder / "a/b.bmp/c").c_str()));
    EXPECT_FALSE(FileSystem::IsFileExistent(std::string(10000, 'x').c_str()));
}

TEST(FileSystem, ATemporaryFileIsNewEmptyAndItsOwnersAlone)
{
    const ClTestTree cFolder;
    const ClEnvironment cTemp("TMPDIR", cFolder.Path().c_str());
    const long nOpen = OpenFiles();
    const std::string sFirst = FileSystem::MakeTempFileName(nullptr, "slap-");
    const std::string sSecond = FileSystem::MakeTempFileName(nullptr, "slap-");
    const std::string sPlain = FileSystem::MakeTempFileName(cFolder.Path().c_str(), nullptr);
    EXPECT_EQ(nOpen, OpenFiles());
    EXPECT_NE(sFirst, sSecond);
    EXPECT_EQ((cFolder / "slap-").size() + 6, sFirst.size());
    EXPECT_EQ(cFolder / "slap-", sFirst.substr(0, sFirst.size() - 6));
    EXPECT_EQ(cFolder.Path().size() + 6, sPlain.size());
    for (const std::string& sName : {sFirst, sSecond, sPlain})
    {
        struct stat cStatus;
        ASSERT_EQ(0, stat(sName.c_str(), &cStatus)) << sName;
        EXPECT_EQ(0, cStatus.st_size);
        EXPECT_EQ(mode_t(S_IFREG | 0600), cStatus.st_mode);
    }
    const std::string sNone = cFolder / "none/";
    try
    {
        FileSystem::MakeTempFileName(sNone.c_str(), "x");
        ADD_FAILURE() << "no error";
    }
    catch (const ClExFilesystem& cRaised)
    {
        EXPECT_EQ(-200, cRaised.Number());
        EXPECT_EQ("No such file or directory\n" + sNone + "x",
                  std::string(cRaised.What()).substr(0, sNone.size() + 27));
    }
}

TEST(FileSystem, AFileIsRemovedItsLinksTargetStays)
{
    const ClTestTree cFolder;
    cFolder.Write("a.bmp", "x");
    fs::create_symlink("a.bmp", cFolder / "link");
    FileSystem::RemoveFile((cFolder / "link").c_str());
    EXPECT_FALSE(fs::is_symlink(cFolder / "link"));
    FileSystem::RemoveFile((cFolder / "a.bmp").c_str());
    EXPECT_FALSE(fs::exists(cFolder / "a.bmp"));
    const std::string sGone = cFolder / "a.bmp";
    const std::string sDirectory = cFolder / "empty";
    fs::create_directory(sDirectory);
    EXPECT_RAISES(FileSystem::RemoveFile(sGone.c_str()), ClExFilesystem, -204,
                  ("No such file or directory\n" + sGone).c_str());
    EXPECT_RAISES(FileSystem::RemoveFile(sDirectory.c_str()), ClExFilesystem, -204,
                  ("Is a directory\n" + sDirectory).c_str());
    EXPECT_TRUE(fs::is_directory(sDirectory));
}

TEST(FileSystem, RenamingReplacesAFile)
{
    const ClTestTree cFolder;
    const std::string sOld = cFolder.Write("old.bmp", "old");
    const std::string sNew = cFolder.Write("x/new.bmp", "new");
    FileSystem::RenameFile(sOld.c_str(), (cFolder / "x\\new.bmp").c_str());
    EXPECT_EQ("old", cFolder.Read("x/new.bmp"));
    EXPECT_FALSE(fs::exists(sOld));
    EXPECT_RAISES(FileSystem::RenameFile(sOld.c_str(), sNew.c_str()), ClExFilesystem, -204,
                  ("No such file or directory\n" + sOld).c_str());
    EXPECT_RAISES(FileSystem::RenameFile(sNew.c_str(), cFolder.Path().c_str()), ClExFilesystem, -204,
                  ("Not a directory\n" + sNew).c_str());
    EXPECT_EQ("old", cFolder.Read("x/new.bmp"));
}

TEST(FileSystem, ACopyHasTheContentAndTheRights)
{
    const ClTestTree cFolder;
    std::string sContent(300000, '\0');
    ClTestRandom cRandom(3);
    for (char& c : sContent)
    {
        c = static_cast<char>(cRandom.Below(256));
    }
    const std::string sSource = cFolder.Write("a.bmp", sContent);
    ASSERT_EQ(0, chmod(sSource.c_str(), 0640));
    const std::string sDest = cFolder.Write("b.bmp", "what was there before");
    FileSystem::CopyFile(sSource.c_str(), sDest.c_str());
    EXPECT_TRUE(sContent == cFolder.Read("b.bmp"));
    struct stat cStatus;
    ASSERT_EQ(0, stat(sDest.c_str(), &cStatus));
    EXPECT_EQ(mode_t(S_IFREG | 0640), cStatus.st_mode);
    cFolder.Write("empty", "");
    FileSystem::CopyFile((cFolder / "empty").c_str(), sDest.c_str());
    EXPECT_EQ("", cFolder.Read("b.bmp"));
    EXPECT_TRUE(sContent == cFolder.Read("a.bmp"));
}

TEST(FileSystem, WhatCannotBeCopiedIsAnErrorAndStaysAsItIs)
{
    const ClTestTree cFolder;
    const std::string sFile = cFolder.Write("a.bmp", "x");
    EXPECT_RAISES(FileSystem::CopyFile((cFolder / "none").c_str(), (cFolder / "b").c_str()), ClExSystem, -105,
                  "No such file or directory\nCopyFile");
    EXPECT_FALSE(fs::exists(cFolder / "b"));
    EXPECT_RAISES(FileSystem::CopyFile(sFile.c_str(), (cFolder / "none/b").c_str()), ClExSystem, -105,
                  "No such file or directory\nCopyFile");
    EXPECT_RAISES_CODE(FileSystem::CopyFile(sFile.c_str(), cFolder.Path().c_str()), -105);
    EXPECT_RAISES_CODE(FileSystem::CopyFile(cFolder.Path().c_str(), (cFolder / "b").c_str()), -105);
    EXPECT_RAISES(FileSystem::CopyFile(sFile.c_str(), (cFolder / "./a.bmp").c_str()), ClExSystem, -105,
                  "File exists\nCopyFile");
    EXPECT_EQ("x", cFolder.Read("a.bmp"));
}

TEST(FileSystem, AFileIsSearchedInTheDirectoriesInTurn)
{
    const ClTestTree cFolder;
    const std::string sFirst = cFolder.Write("1/a.bmp", "");
    const std::string sSecond = cFolder.Write("2/a.bmp", "");
    const std::string sOther = cFolder.Write("2/b.bmp", "");
    fs::create_directory(cFolder / "1/b.bmp"); // a directory is no file
    const std::string sList = cFolder / "none:" + cFolder.Path() + "1:" + cFolder.Path() + "2/";
    EXPECT_EQ(sFirst, FileSystem::SearchPath("a.bmp", sList.c_str()));
    EXPECT_EQ(sOther, FileSystem::SearchPath("b.bmp", sList.c_str()));
    EXPECT_EQ("", FileSystem::SearchPath("c.bmp", sList.c_str()));
    {
        const ClEnvironment cPath("PATH", (cFolder / "2").c_str());
        EXPECT_EQ(sSecond, FileSystem::SearchPath("a.bmp", nullptr));
    }
    const ClEnvironment cPath("PATH", nullptr);
    EXPECT_EQ("", FileSystem::SearchPath("a.bmp", nullptr));
    const ClWorkingDirectory cWork(cFolder / "2");
    EXPECT_EQ("./a.bmp", FileSystem::SearchPath("a.bmp", ""));
    EXPECT_EQ("./a.bmp", FileSystem::SearchPath("a.bmp", "none:"));
    EXPECT_EQ("../1/a.bmp", FileSystem::SearchPath("a.bmp", "..\\1::"));
}

TEST(FileSystem, AFileWithAPathIsNotSearchedFor)
{
    const ClTestTree cFolder;
    const std::string sName = cFolder.Write("1/a.bmp", "");
    EXPECT_EQ(sName, FileSystem::SearchPath(sName.c_str(), "none"));
    EXPECT_EQ("", FileSystem::SearchPath("1/a.bmp", cFolder.Path().c_str()));
    const ClWorkingDirectory cWork(cFolder.Path());
    EXPECT_EQ("1/a.bmp", FileSystem::SearchPath("1\\a.bmp", "none"));
    EXPECT_RAISES(FileSystem::SearchPath("1/", "."), ClException, -44, sOnlyPath.c_str());
}

TEST(FileSystem, FilesNeedAName)
{
    for (const char* szName : {static_cast<const char*>(nullptr), ""})
    {
        EXPECT_RAISES(FileSystem::IsFileExistent(szName), ClException, -44, sEmptyName.c_str());
        EXPECT_RAISES(FileSystem::RemoveFile(szName), ClException, -44, sEmptyName.c_str());
        EXPECT_RAISES(FileSystem::RenameFile(szName, "a"), ClException, -44, sEmptyName.c_str());
        EXPECT_RAISES(FileSystem::RenameFile("a", szName), ClException, -44, sEmptyName.c_str());
        EXPECT_RAISES(FileSystem::CopyFile(szName, "a"), ClException, -44, sEmptyName.c_str());
        EXPECT_RAISES(FileSystem::CopyFile("a", szName), ClException, -44, sEmptyName.c_str());
        EXPECT_RAISES(FileSystem::SearchPath(szName, "."), ClException, -44, sEmptyName.c_str());
    }
    EXPECT_RAISES(FileSystem::MakeTempFileName("", "a"), ClException, -44, sEmptyName.c_str());
}

TEST(FileSystem, OperationsOnFilesWithAnExhaustedHeapComeOutAsBadAlloc)
{
    const ClTestTree cFolder;
    const std::string sDirectory = cFolder / std::string(60, 'd');
    const std::string sFile = sDirectory + "/a.bmp";
    const std::string sCopy = sDirectory + "/b.bmp";
    const std::string sBelow = sDirectory + "/x/y/z";
    const auto exists = [&] { FileSystem::IsFileExistent(sFile.c_str()); };
    const auto create = [&] { FileSystem::CreateDirectory(sBelow.c_str(), true); };
    const auto make = [&] { FileSystem::MakeTempFileName(sDirectory.c_str(), "x"); };
    const auto copy = [&] { FileSystem::CopyFile(sFile.c_str(), sCopy.c_str()); };
    const auto search = [&] { FileSystem::SearchPath("a.bmp", sDirectory.c_str()); };
    const auto rename = [&] { FileSystem::RenameFile(sFile.c_str(), sFile.c_str()); };
    const auto remove = [&] { FileSystem::RemoveFile(sCopy.c_str()); };
    const auto clear = [&] { FileSystem::RemoveDirectory(sDirectory.c_str(), true); };
    EXPECT_GE(ExpectBadAllocAtEveryAllocation(create), 1);
    cFolder.Write(std::string(60, 'd') + "/a.bmp", "x");
    for (const auto& fn : std::vector<std::function<void()>>{exists, make, copy, search, rename, remove})
    {
        EXPECT_GE(ExpectBadAllocAtEveryAllocation(fn), 1);
    }
    EXPECT_TRUE(fs::is_directory(sBelow));
    EXPECT_GE(ExpectBadAllocAtEveryAllocation(clear), 2);
    EXPECT_FALSE(fs::exists(sDirectory));
}
