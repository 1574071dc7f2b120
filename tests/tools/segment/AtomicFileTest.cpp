#include "AtomicFile.hpp"

#include "ImageFile.hpp"
#include "PictureFiles.hpp"
#include "TestTools.hpp"

#include "RDTools/ErrorCatalogue.hpp"

#include <filesystem>

#include <sys/stat.h>
#include <unistd.h>

using namespace SegmentTool;
using namespace PictureFiles;

namespace
{
Bytes_t FileOf(std::uint64_t nFingerprint, unsigned int nSeed = 1)
{
    ClImage cImage;
    FillRandom8(cImage, 20, 10, nSeed);
    return EncodeBmp(RowsOf(cImage), nFingerprint);
}

template <class Fn> int RunExit(Fn&& fn, std::string* psText = nullptr)
{
    try
    {
        fn();
    }
    catch (const ClRunError& cError)
    {
        if (psText != nullptr) *psText = cError.what();
        return cError.m_nExit;
    }
    return 0;
}
} // namespace

TEST(AtomicFile, AppearsAsAWholeWithUsualRights)
{
    const ClTempFolder cFolder;
    const std::string sPath = cFolder.Path("a.bmp");
    WriteAtomically(sPath, FileOf(1), 1);
    EXPECT_EQ(FileOf(1), FromText(cFolder.Read("a.bmp")));
    EXPECT_EQ(std::vector<std::string>{"a.bmp"}, cFolder.Names());
    const mode_t nMask = umask(0);
    umask(nMask);
    struct stat cStatus;
    ASSERT_EQ(0, stat(sPath.c_str(), &cStatus));
    EXPECT_EQ(0666u & ~nMask, cStatus.st_mode & 0777u);
}

TEST(AtomicFile, ReplacesItsOwnAndNoOther)
{
    const ClTempFolder cFolder;
    const std::string sPath = cFolder.Path("a.bmp");
    WriteAtomically(sPath, FileOf(1, 1), 1);
    EXPECT_NO_THROW(DemandMayWrite(sPath, 1));
    WriteAtomically(sPath, FileOf(1, 2), 1);
    EXPECT_EQ(FileOf(1, 2), FromText(cFolder.Read("a.bmp")));
    for (const auto& fn : {std::function<void()>([&] { DemandMayWrite(sPath, 3); }),
                           std::function<void()>([&] { WriteAtomically(sPath, FileOf(3), 3); })})
    {
        try
        {
            fn();
            ADD_FAILURE();
        }
        catch (const ClPictureError& cError)
        {
            EXPECT_EQ(FPC_ERROR_WRITE_FAIL, cError.m_nCode);
            EXPECT_NE(std::string::npos, std::string(cError.what()).find(sPath));
        }
    }
    EXPECT_EQ(FileOf(1, 2), FromText(cFolder.Read("a.bmp")));
    EXPECT_EQ(std::vector<std::string>{"a.bmp"}, cFolder.Names()) << "nothing is left of the refused one";
}

TEST(AtomicFile, EvenALinkToNowhereIsNotReplaced)
{
    const ClTempFolder cFolder;
    std::filesystem::create_symlink("nowhere", cFolder.m_cPath / "a.bmp");
    EXPECT_THROW(DemandMayWrite(cFolder.Path("a.bmp"), 1), ClPictureError);
    EXPECT_THROW(WriteAtomically(cFolder.Path("a.bmp"), FileOf(1), 1), ClPictureError);
    EXPECT_EQ(std::vector<std::string>{"a.bmp"}, cFolder.Names());
}

TEST(AtomicFile, FoldersThatCannotBeWrittenEndTheRun)
{
    const ClTempFolder cFolder;
    std::string sText;
    EXPECT_EQ(eExitInternal, RunExit([&] { WriteAtomically(cFolder.Path("no/a.bmp"), FileOf(1), 1); }, &sText));
    EXPECT_NE(std::string::npos, sText.find("No such file")) << sText;
    cFolder.Write("file", std::string("x"));
    EXPECT_EQ(eExitInternal, RunExit([&] { WriteAtomically(cFolder.Path("file/a.bmp"), FileOf(1), 1); }));
    EXPECT_EQ(eExitInternal, RunExit([&] { MakeFolders(cFolder.Path("file/sub")); }, &sText));
    EXPECT_NE(std::string::npos, sText.find("file/sub")) << sText;
    EXPECT_EQ(0, RunExit([&] { MakeFolders(cFolder.Path("a/b/c")); }));
    EXPECT_EQ(0, RunExit([&] { MakeFolders(cFolder.Path("a/b/c/")); })) << "it is there";
}

TEST(AtomicFile, ANameThatIsTooLongConcernsThePictureAlone)
{
    const ClTempFolder cFolder;
    EXPECT_THROW(WriteAtomically(cFolder.Path(std::string(300, 'x')), FileOf(1), 1), ClPictureError);
    EXPECT_TRUE(cFolder.Names().empty());
}
