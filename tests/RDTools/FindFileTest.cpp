#include "RDTools/FindFile.hpp"

#include "FailingHeap.hpp"
#include "PathTestTools.hpp"
#include "TestTools.hpp"

#include <cstring>
#include <fcntl.h>
#include <set>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;
using FileSystem::ClFindFile;

namespace
{
constexpr char szNoPath[] = "One(or more) parameter(s) is(are) invalid.\n"
                            "ClFindFile::First: the szFileName must include a path!";

/// All names that a search gives; each may come only once.
std::set<std::string> AllOf(const std::string& sPattern)
{
    std::set<std::string> aNames;
    ClFindFile cFind;
    for (bool bFound = cFind.First(sPattern.c_str()); bFound; bFound = cFind.Next())
    {
        EXPECT_TRUE(aNames.insert(cFind.Name()).second) << cFind.Name();
    }
    return aNames;
}

using Names = std::set<std::string>;
} // namespace

TEST(FindFile, GivesTheEntriesThatMeetThePattern)
{
    const ClTestTree cFolder;
    for (const char* szName : {"a.bmp", "b.bmp", "c.BMP", "d.krx", ".hidden.bmp", "sub/e.bmp"})
    {
        cFolder.Write(szName, "");
    }
    EXPECT_EQ(Names({"a.bmp", "b.bmp", ".hidden.bmp"}), AllOf(cFolder / "*.bmp"));
    EXPECT_EQ(Names({"a.bmp", "b.bmp"}), AllOf(cFolder / "?.bmp"));
    EXPECT_EQ(Names({"d.krx"}), AllOf(cFolder / "d.krx"));
    EXPECT_EQ(Names({"e.bmp"}), AllOf(cFolder / "sub\\*.bmp"));
    EXPECT_EQ(Names({".", "..", "e.bmp"}), AllOf(cFolder / "sub/*"));
    EXPECT_EQ(Names(), AllOf(cFolder / "x*"));
    EXPECT_EQ(Names(), AllOf(cFolder.Path()));
}

TEST(FindFile, ThePathIsTakenLiterally)
{
    const ClTestTree cFolder;
    cFolder.Write("*/a.bmp", "");
    cFolder.Write("x/b.bmp", "");
    EXPECT_EQ(Names({"a.bmp"}), AllOf(cFolder / "*/*.bmp"));
    const ClEnvironment cHome("HOME", (cFolder / "x").c_str());
    EXPECT_EQ(Names({"b.bmp"}), AllOf("~/*.bmp"));
    const ClWorkingDirectory cWork(cFolder / "x");
    EXPECT_EQ(Names({"b.bmp"}), AllOf("./*.bmp"));
}

TEST(FindFile, DirectoryAndNameTogetherNameTheEntry)
{
    const ClTestTree cFolder;
    cFolder.Write("sub/a.bmp", "");
    const ClFindFile cFind((cFolder / "sub\\*.bmp").c_str());
    EXPECT_STREQ("a.bmp", cFind.Name());
    EXPECT_EQ(cFolder / "sub/", cFind.GetDirectoryName());
}

TEST(FindFile, ANameWithoutPathIsRefused)
{
    ClFindFile cFind;
    for (const char* szPattern : {static_cast<const char*>(nullptr), "", "*.bmp"})
    {
        EXPECT_RAISES(cFind.First(szPattern), ClException, -44, szNoPath);
        EXPECT_RAISES(ClFindFile{szPattern}, ClException, -44, szNoPath);
    }
}

TEST(FindFile, ADirectoryThatCannotBeOpenedIsAnError)
{
    const ClTestTree cFolder;
    cFolder.Write("file", "");
    ClFindFile cFind;
    EXPECT_RAISES(cFind.First((cFolder / "none/*").c_str()), ClExFilesystem, -200,
                  ("No such file or directory\n" + (cFolder / "none/")).c_str());
    EXPECT_RAISES(cFind.First((cFolder / "file/*").c_str()), ClExFilesystem, -200,
                  ("Not a directory\n" + (cFolder / "file/")).c_str());
    EXPECT_STREQ("", cFind.GetDirectoryName());
    EXPECT_FALSE(cFind.Next());
}

TEST(FindFile, WithoutASearchThereIsNothing)
{
    const ClTestTree cFolder;
    cFolder.Write("a.bmp", "");
    ClFindFile cFind;
    const auto expectNothing = [&]
    {
        EXPECT_FALSE(cFind.Next());
        EXPECT_STREQ("", cFind.Name());
        EXPECT_FALSE(cFind.IsDirectory());
        EXPECT_FALSE(cFind.IsSubDirectory());
        EXPECT_FALSE(cFind.IsSystemFile());
    };
    expectNothing();
    cFind.Close();
    expectNothing();
    ASSERT_TRUE(cFind.First((cFolder / "*.bmp").c_str()));
    expectNothing(); // behind the only entry
    EXPECT_EQ(cFolder.Path(), cFind.GetDirectoryName());
    ASSERT_TRUE(cFind.First((cFolder / "*.bmp").c_str()));
    cFind.Close();
    expectNothing();
    EXPECT_STREQ("", cFind.GetDirectoryName());
}

TEST(FindFile, ANewSearchReplacesTheOneBefore)
{
    const ClTestTree cFolder;
    cFolder.Write("1/a.bmp", "");
    cFolder.Write("1/b.bmp", "");
    cFolder.Write("2/c.bmp", "");
    ClFindFile cFind;
    ASSERT_TRUE(cFind.First((cFolder / "1/*.bmp").c_str()));
    ASSERT_TRUE(cFind.First((cFolder / "2/*.bmp").c_str()));
    EXPECT_STREQ("c.bmp", cFind.Name());
    EXPECT_EQ(cFolder / "2/", cFind.GetDirectoryName());
    EXPECT_FALSE(cFind.Next());
    EXPECT_FALSE(cFind.First((cFolder / "2/*.krx").c_str()));
    EXPECT_STREQ("", cFind.Name());
}

TEST(FindFile, TellsTheKindsOfEntries)
{
    const ClTestTree cFolder;
    cFolder.Write("file", "");
    fs::create_directory(cFolder / "sub");
    fs::create_directory_symlink("sub", cFolder / "linktosub");
    fs::create_symlink("none", cFolder / "broken");
    ASSERT_EQ(0, mkfifo((cFolder / "pipe").c_str(), 0600));
    fs::create_symlink("pipe", cFolder / "linktopipe");
    Names aDirectories, aSubDirectories, aSystemFiles;
    ClFindFile cFind;
    for (bool bFound = cFind.First((cFolder / "*").c_str()); bFound; bFound = cFind.Next())
    {
        if (cFind.IsDirectory()) aDirectories.insert(cFind.Name());
        if (cFind.IsSubDirectory()) aSubDirectories.insert(cFind.Name());
        if (cFind.IsSystemFile()) aSystemFiles.insert(cFind.Name());
    }
    EXPECT_EQ(Names({".", "..", "sub", "linktosub"}), aDirectories);
    EXPECT_EQ(Names({"sub"}), aSubDirectories);
    EXPECT_EQ(Names({"pipe", "linktopipe"}), aSystemFiles);
}

TEST(FindFile, AnEntryThatHasGoneIsOfNoKind)
{
    const ClTestTree cFolder;
    fs::create_directory(cFolder / "sub");
    const ClFindFile cFind((cFolder / "s*").c_str());
    EXPECT_TRUE(cFind.IsSubDirectory());
    fs::remove(cFolder / "sub");
    EXPECT_STREQ("sub", cFind.Name());
    EXPECT_FALSE(cFind.IsDirectory());
    EXPECT_FALSE(cFind.IsSubDirectory());
}

TEST(FindFile, AReadErrorIsNotTheEndOfTheDirectory)
{
    const ClTestTree cFolder;
    cFolder.Write("a.bmp", "");
    const long nOpen = OpenFiles();
    {
        ClFindFile cFind;
        const int nDirectory = dup(0); // the lowest free number, which the directory gets, too
        ASSERT_EQ(0, close(nDirectory));
        ASSERT_TRUE(cFind.First((cFolder / "*.bmp").c_str()));
        // What stands in the place of the directory from now on has no entries to be read.
        const int nFile = open((cFolder / "a.bmp").c_str(), O_RDONLY | O_CLOEXEC);
        ASSERT_EQ(nDirectory, dup2(nFile, nDirectory));
        EXPECT_RAISES(while (cFind.Next()){}, ClExFilesystem, -204,
                      (std::string("Not a directory\n") + (cFolder / "")).c_str());
        EXPECT_STREQ("", cFind.Name());
        EXPECT_FALSE(cFind.Next()) << "the search has ended";
        EXPECT_EQ(0, close(nFile));
    }
    EXPECT_EQ(nOpen, OpenFiles());
}

TEST(FindFile, BackslashesBecomeSlashesInPlace)
{
    char szText[] = "\\\\a\\b/c\\";
    ClFindFile::ReplaceBackSlashes(szText);
    EXPECT_STREQ("//a/b/c/", szText);
    char szNothing[] = "";
    ClFindFile::ReplaceBackSlashes(szNothing);
    EXPECT_STREQ("", szNothing);
    ClFindFile::ReplaceBackSlashes(nullptr);
}

TEST(FindFile, NoSearchKeepsItsDirectoryOpen)
{
    const ClTestTree cFolder;
    cFolder.Write("a.bmp", "");
    cFolder.Write("b.bmp", "");
    const long nOpen = OpenFiles();
    {
        ClFindFile cFind((cFolder / "*.bmp").c_str());
        EXPECT_EQ(nOpen + 1, OpenFiles());
        cFind.First((cFolder / "*.bmp").c_str());
        EXPECT_EQ(nOpen + 1, OpenFiles());
        EXPECT_THROW(cFind.First("*.bmp"), ClException);
        EXPECT_EQ(nOpen, OpenFiles());
        cFind.First((cFolder / "*.bmp").c_str());
    }
    EXPECT_EQ(nOpen, OpenFiles());
    EXPECT_EQ(Names({"a.bmp", "b.bmp"}), AllOf(cFolder / "*.bmp"));
    EXPECT_EQ(nOpen, OpenFiles());
}

TEST(FindFile, AnExhaustedHeapComesOutAsBadAlloc)
{
    const ClTestTree cFolder;
    const std::string sName(60, 'x');
    cFolder.Write("sub/" + sName, "");
    const std::string sPattern = cFolder / ("sub/" + std::string(60, '?'));
    const auto search = [&] { EXPECT_EQ(sName, ClFindFile(sPattern.c_str()).Name()); };
    const long nOpen = OpenFiles();
    EXPECT_GE(ExpectBadAllocAtEveryAllocation(search), 3);
    EXPECT_EQ(nOpen, OpenFiles());
}
