#include "InputList.hpp"

#include "PictureFiles.hpp"
#include "Result.hpp"

#include <gtest/gtest.h>

#include <filesystem>

#include <unistd.h>

using namespace SegmentTool;
using namespace PictureFiles;

namespace
{
struct ClListed
{
    std::vector<std::string> m_aPaths; ///< a fault behind "!"
    std::vector<std::uint64_t> m_anIndices;
};

ClListed All(const ClListOptions& cOptions, const std::string& sFolderOfFingers = "")
{
    ClInputList cList(cOptions, sFolderOfFingers);
    ClListed cListed;
    ClInput cInput;
    while (cList.Next(cInput))
    {
        cListed.m_aPaths.push_back(cInput.m_sPath + (cInput.m_sFault.empty() ? "" : "!" + cInput.m_sFault));
        cListed.m_anIndices.push_back(cInput.m_nIndex);
    }
    return cListed;
}

ClListOptions Inputs(const std::vector<std::string>& aInputs)
{
    ClListOptions cOptions;
    cOptions.m_aInputs = aInputs;
    cOptions.m_aEndings = {"bmp", "png"};
    return cOptions;
}
} // namespace

TEST(InputList, NamesComeInTheirOrderWhateverTheyAre)
{
    const ClListed cListed = All(Inputs({"b", "a.txt", "b"}));
    EXPECT_EQ((std::vector<std::string>{"b", "a.txt", "b"}), cListed.m_aPaths);
    EXPECT_EQ((std::vector<std::uint64_t>{1, 2, 3}), cListed.m_anIndices);
}

TEST(InputList, AListFileFollowsWithItsLines)
{
    const ClTempFolder cFolder;
    ClListOptions cOptions = Inputs({"first"});
    cOptions.m_sListFile = cFolder.Write("list", std::string("a b\n\nc\r\n\xff\nlast"));
    EXPECT_EQ((std::vector<std::string>{"first", "a b", "c", "\xff", "last"}), All(cOptions).m_aPaths);
    cOptions.m_bNullSeparated = true;
    cOptions.m_sListFile = cFolder.Write("list0", std::string("a\nb\0c\r\0", 7));
    EXPECT_EQ((std::vector<std::string>{"first", "a\nb", "c\r"}), All(cOptions).m_aPaths);
    cOptions.m_sListFile = cFolder.Write("empty", std::string());
    EXPECT_EQ((std::vector<std::string>{"first"}), All(cOptions).m_aPaths);
}

TEST(InputList, ALongListComesOutWhole)
{
    const ClTempFolder cFolder;
    std::string sList;
    std::vector<std::string> aExpected;
    for (int i = 0; i < 20000; ++i)
    {
        aExpected.push_back("folder/picture-" + std::to_string(i));
        sList += aExpected.back() + '\n';
    }
    ClListOptions cOptions = Inputs({});
    cOptions.m_sListFile = cFolder.Write("list", sList);
    EXPECT_EQ(aExpected, All(cOptions).m_aPaths);
}

TEST(InputList, AListThatCannotBeReadEndsTheRun)
{
    const ClTempFolder cFolder;
    ClListOptions cOptions = Inputs({});
    for (const std::string& sList : {cFolder.Path("missing"), cFolder.Path("")})
    {
        cOptions.m_sListFile = sList;
        try
        {
            All(cOptions);
            ADD_FAILURE() << sList;
        }
        catch (const ClRunError& cError)
        {
            EXPECT_EQ(eExitUsage, cError.m_nExit);
            EXPECT_NE(std::string::npos, std::string(cError.what()).find(sList));
        }
    }
    cOptions.m_sListFile = cFolder.Write("no list", std::string(3 << 20, 'x'));
    EXPECT_THROW(All(cOptions), ClRunError);
}

TEST(InputList, ShardsTakeTurnsAndKeepTheIndicesOfTheWholeList)
{
    ClListOptions cOptions = Inputs({"a", "b", "c", "d", "e"});
    cOptions.m_nShards = 2;
    EXPECT_EQ((std::vector<std::string>{"a", "c", "e"}), All(cOptions).m_aPaths);
    cOptions.m_nShard = 2;
    EXPECT_EQ((std::vector<std::string>{"b", "d"}), All(cOptions).m_aPaths);
    EXPECT_EQ((std::vector<std::uint64_t>{2, 4}), All(cOptions).m_anIndices);
    cOptions.m_nShards = 7;
    cOptions.m_nShard = 7;
    EXPECT_TRUE(All(cOptions).m_aPaths.empty());
}

TEST(InputList, FoldersAreWalkedInTheOrderOfTheirNames)
{
    const ClTempFolder cFolder;
    for (const char* szName : {"b.bmp", "a.PNG", "sub/z.bmp", "sub/deep/y.png", "sub.bmp", "notes.txt", ".hidden.bmp",
                               ".git/x.bmp", "noending", "Z.bmp"})
    {
        cFolder.Write(szName, std::string("x"));
    }
    ClListOptions cOptions = Inputs({cFolder.m_cPath.string(), "single"});
    EXPECT_EQ((std::vector<std::string>{cFolder.m_cPath.string(), "single"}), All(cOptions).m_aPaths) << "only with -r";
    cOptions.m_bRecursive = true;
    std::vector<std::string> aExpected;
    for (const char* szName : {"Z.bmp", "a.PNG", "b.bmp", "sub/deep/y.png", "sub/z.bmp", "sub.bmp"})
    {
        aExpected.push_back(cFolder.Path(szName));
    }
    aExpected.emplace_back("single");
    EXPECT_EQ(aExpected, All(cOptions).m_aPaths);
    cOptions.m_aEndings = {"*"};
    EXPECT_EQ(9u, All(cOptions).m_aPaths.size());
    cOptions.m_aInputs = {cFolder.m_cPath.string() + "/"};
    EXPECT_EQ(cFolder.m_cPath.string() + "/Z.bmp", All(cOptions).m_aPaths[0]) << "no second slash";
}

TEST(InputList, AFolderWithoutPicturesIsAPlaceOfItsOwn)
{
    const ClTempFolder cFolder;
    cFolder.Write("sub/notes.txt", std::string("x"));
    ClListOptions cOptions = Inputs({cFolder.m_cPath.string(), "b"});
    cOptions.m_bRecursive = true;
    const ClListed cListed = All(cOptions);
    ASSERT_EQ(2u, cListed.m_aPaths.size());
    EXPECT_EQ(0u, cListed.m_aPaths[0].find(cFolder.m_cPath.string() + "!there is no picture"));
    EXPECT_EQ("b", cListed.m_aPaths[1]);
}

TEST(InputList, LinksToFoldersAndTheFolderOfFingersAreLeftOut)
{
    const ClTempFolder cFolder;
    cFolder.Write("a.bmp", std::string("x"));
    cFolder.Write("fingers/a_2.png", std::string("x"));
    std::filesystem::create_directory_symlink(cFolder.m_cPath, cFolder.m_cPath / "circle.bmp");
    std::filesystem::create_symlink("a.bmp", cFolder.m_cPath / "link.bmp");
    std::filesystem::create_symlink("nowhere", cFolder.m_cPath / "lost.bmp");
    ClListOptions cOptions = Inputs({cFolder.m_cPath.string()});
    cOptions.m_bRecursive = true;
    EXPECT_EQ((std::vector<std::string>{cFolder.Path("a.bmp"), cFolder.Path("link.bmp"), cFolder.Path("lost.bmp")}),
              All(cOptions, cFolder.Path("fingers")).m_aPaths);
}

TEST(InputList, AFolderThatCannotBeReadIsAPlaceOfItsOwn)
{
    if (geteuid() == 0) GTEST_SKIP() << "nothing is closed to root";
    const ClTempFolder cFolder;
    cFolder.Write("sub/a.bmp", std::string("x"));
    std::filesystem::permissions(cFolder.m_cPath / "sub", std::filesystem::perms::none);
    ClListOptions cOptions = Inputs({cFolder.m_cPath.string()});
    cOptions.m_bRecursive = true;
    const ClListed cListed = All(cOptions);
    std::filesystem::permissions(cFolder.m_cPath / "sub", std::filesystem::perms::owner_all);
    ASSERT_EQ(1u, cListed.m_aPaths.size());
    EXPECT_NE(std::string::npos, cListed.m_aPaths[0].find("Permission denied"));
}
