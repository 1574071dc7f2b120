#include "InputFile.hpp"

#include "PictureFiles.hpp"
#include "Result.hpp"

#include "RDTools/ErrorCatalogue.hpp"

#include <gtest/gtest.h>

#include <filesystem>

#include <sys/stat.h>
#include <unistd.h>

using namespace SegmentTool;
using namespace PictureFiles;

namespace
{
template <class Fn> std::pair<long, std::string> Refusal(Fn&& fn)
{
    try
    {
        fn();
    }
    catch (const ClPictureError& cError)
    {
        return {cError.m_nCode, cError.what()};
    }
    return {0, ""};
}

std::pair<long, std::string> ReadRefusal(const std::string& sPath, const ClReading& cReading = {})
{
    ClPicture cPicture;
    return Refusal([&] { ReadInput(sPath, cReading, cPicture, nullptr); });
}
} // namespace

TEST(InputFile, TheBytesOfAFileComeOut)
{
    const ClTempFolder cFolder;
    EXPECT_EQ(FromText("some bytes"), ReadWholeFile(cFolder.Write("a", std::string("some bytes"))));
}

TEST(InputFile, WhatIsNoFileIsRefusedWithTheReason)
{
    const ClTempFolder cFolder;
    const auto Check = [](const std::string& sPath, long nCode, const char* szText)
    {
        const auto [nRefused, sText] = Refusal([&] { ReadWholeFile(sPath); });
        EXPECT_EQ(nCode, nRefused) << sPath;
        EXPECT_NE(std::string::npos, sText.find(szText)) << sText;
    };
    Check(cFolder.Path("missing"), FPC_ERROR_FILE_OPEN_FAIL, "No such file");
    Check(cFolder.Path(""), FPC_ERROR_FILE_OPEN_FAIL, "--recursive");
    Check("/dev/null", FPC_ERROR_FILE_OPEN_FAIL, "not a file");
    Check(cFolder.Write("empty", std::string()), FPC_ERROR_UNEXPECTED_EOF, "empty");
    const std::string sPipe = cFolder.Path("pipe"); // without a writer, which a reader would wait for
    ASSERT_EQ(0, mkfifo(sPipe.c_str(), 0600));
    Check(sPipe, FPC_ERROR_FILE_OPEN_FAIL, "not a file");
    const std::string sHuge = cFolder.Write("huge", std::string("x"));
    std::filesystem::resize_file(sHuge, nMostFileBytes + 1); // no blocks of it exist
    Check(sHuge, FPC_ERROR_READ_FAIL, "larger");
    if (geteuid() != 0)
    {
        const std::string sLocked = cFolder.Write("locked", std::string("x"));
        ASSERT_EQ(0, chmod(sLocked.c_str(), 0));
        Check(sLocked, FPC_ERROR_FILE_OPEN_FAIL, "Permission denied");
    }
}

TEST(InputFile, AWronglyNamedPictureIsReadByItsContent)
{
    const ClTempFolder cFolder;
    const ClRaster cRaster = RandomRaster(5, 4);
    ClReading cReading;
    cReading.m_dPpi = 500;
    ClPicture cPicture;
    ReadInput(cFolder.Write("picture.bmp", PnmFile(cRaster)), cReading, cPicture, nullptr);
    EXPECT_EQ(ExpectedGrey(cRaster), GreyOf(cPicture));
    EXPECT_EQ(19685, cPicture.m_cImage.m_nXRes);
}

TEST(InputFile, WithoutAResolutionNothingIsRead)
{
    const ClTempFolder cFolder;
    const std::string sPath = cFolder.Write("a.pgm", PnmFile(RandomRaster(5, 4)));
    const auto [nCode, sText] = ReadRefusal(sPath);
    EXPECT_EQ(FPC_ERROR_BITMAP_PELS, nCode);
    EXPECT_NE(std::string::npos, sText.find("--ppi")) << sText;
}

TEST(InputFile, TheDecoderGetsOnlyWhatNothingElseReads)
{
    const ClTempFolder cFolder;
    const ClRaster cRaster = RandomRaster(5, 4);
    const std::string sPicture = cFolder.Write("decoded", PnmFile(cRaster));
    ClReading cReading;
    cReading.m_dPpi = 500;
    cReading.m_dDecoderSeconds = 30;
    cReading.m_sDecoder = "grep -q '^a secret format$' \"$1\" && cat '" + sPicture + "'";
    ClPicture cPicture;
    ReadInput(cFolder.Write("a.wsq", std::string("a secret format\n")), cReading, cPicture, nullptr);
    EXPECT_EQ(ExpectedGrey(cRaster), GreyOf(cPicture));

    cReading.m_sDecoder = "exit 1";
    EXPECT_EQ(0, ReadRefusal(sPicture, cReading).first);
    cReading.m_sDecoder = "echo no picture";
    const auto [nCode, sText] = ReadRefusal(cFolder.Path("a.wsq"), cReading);
    EXPECT_EQ(FPC_ERROR_UNKNOWN_CODEC, nCode);
    EXPECT_NE(std::string::npos, sText.find("PGM")) << sText;
}

TEST(InputFile, TheFingerprintTellsContentsApart)
{
    EXPECT_EQ(ContentFingerprint(FromText("a picture of some bytes")),
              ContentFingerprint(FromText("a picture of some bytes")));
    EXPECT_NE(ContentFingerprint(FromText("a picture of some bytes")),
              ContentFingerprint(FromText("a picture of sume bytes")));
    EXPECT_NE(ContentFingerprint({}), ContentFingerprint({0})) << "the length counts";
    EXPECT_NE(ContentFingerprint({1, 0}), ContentFingerprint({1}));
    // One word: the offset basis xor the bytes, times the prime, then the same with the length.
    const std::uint64_t nPrime = 1099511628211u;
    EXPECT_EQ(((14695981039346656037u ^ 0x0201u) * nPrime ^ 2u) * nPrime, ContentFingerprint({1, 2}));
}
