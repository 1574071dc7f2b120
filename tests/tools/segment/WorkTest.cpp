#include "Work.hpp"

#include "Formats.hpp"
#include "PictureFiles.hpp"
#include "SlapPicture.hpp"

#include "RDTools/ErrorCatalogue.hpp"

#include <gtest/gtest.h>

using namespace SegmentTool;
using namespace PictureFiles;

namespace
{
Bytes_t Slap(const ClSlapScene& cScene)
{
    return ClSlapPicture(cScene).BmpFile();
}

ClInput InputOf(const std::string& sPath)
{
    ClInput cInput;
    cInput.m_nIndex = 5;
    cInput.m_sPath = sPath;
    return cInput;
}

ClOptions Into(const ClTempFolder& cFolder)
{
    ClOptions cOptions;
    cOptions.m_sFolder = cFolder.Path("out");
    cOptions.m_eImageFormat = EImageFormat::eBmp;
    return cOptions;
}
} // namespace

TEST(Work, ASegmentedPictureHasAFileForEachFingerAndTheOverlay)
{
    const ClTempFolder cFolder;
    const std::string sSlap = cFolder.Write("slap.bmp", Slap(SlapScenes::FourFingers(SlapScenes::eRightHand, 10000)));
    ClOptions cOptions = Into(cFolder);
    cOptions.m_bOverlay = true;
    ClWork cWork = WorkOn(InputOf(sSlap), cOptions);
    EXPECT_EQ(5u, cWork.m_cResult.m_nIndex);
    EXPECT_EQ(sSlap, cWork.m_cResult.m_sInput);
    EXPECT_EQ(EOutcome::eSegmented, cWork.m_cResult.m_eOutcome) << cWork.m_cResult.m_sMessage;
    ASSERT_EQ(5u, cWork.m_aFiles.size());
    EXPECT_EQ(std::vector<std::string>{"slap.bmp"}, cFolder.Names()) << "nothing is written yet";

    WriteFiles(cOptions, cWork);
    EXPECT_EQ((std::vector<std::string>{"out", "out/slap_2.bmp", "out/slap_3.bmp", "out/slap_4.bmp", "out/slap_5.bmp",
                                        "out/slap_overlay.bmp", "slap.bmp"}),
              cFolder.Names());
    ClPicture cFinger;
    ReadBmp(FromText(cFolder.Read("out/slap_3.bmp")), cFinger);
    EXPECT_EQ(cWork.m_cResult.m_aFingers[1].m_nCutWidth, cFinger.Width());
    EXPECT_EQ(cWork.m_cResult.m_aFingers[1].m_nCutHeight, cFinger.Height());
    EXPECT_EQ(10000.0, cFinger.m_dXPels);
}

TEST(Work, WithoutAFolderNothingIsMade)
{
    const ClTempFolder cFolder;
    const std::string sSlap = cFolder.Write("slap.bmp", Slap(SlapScenes::OneFinger(10000)));
    ClWork cWork = WorkOn(InputOf(sSlap), ClOptions());
    EXPECT_EQ(1u, cWork.m_cResult.m_aFingers.size());
    EXPECT_TRUE(cWork.m_aFiles.empty());
    WriteFiles(ClOptions(), cWork);
    EXPECT_EQ(std::vector<std::string>{"slap.bmp"}, cFolder.Names());
}

TEST(Work, WhateverIsWrongWithAPictureIsItsResult)
{
    const ClTempFolder cFolder;
    const ClWork cMissing = WorkOn(InputOf(cFolder.Path("missing")), Into(cFolder));
    EXPECT_EQ(EOutcome::eUnreadable, cMissing.m_cResult.m_eOutcome);
    EXPECT_EQ(FPC_ERROR_FILE_OPEN_FAIL, cMissing.m_cResult.m_nCode);
    EXPECT_TRUE(cMissing.m_aFiles.empty());

    ClInput cFault = InputOf("folder");
    cFault.m_sFault = "cannot read the folder";
    const ClWork cFolderWork = WorkOn(cFault, Into(cFolder));
    EXPECT_EQ(EOutcome::eUnreadable, cFolderWork.m_cResult.m_eOutcome);
    EXPECT_EQ("cannot read the folder", cFolderWork.m_cResult.m_sMessage);

    ClOptions cPpi = Into(cFolder);
    cPpi.m_cReading.m_dPpi = 500;
    ClRaster cGrey = RandomRaster(200, 200);
    std::fill(cGrey.m_aSamples.begin(), cGrey.m_aSamples.end(), std::uint16_t{200});
    const ClWork cUniform = WorkOn(InputOf(cFolder.Write("uniform.pgm", PnmFile(cGrey))), cPpi);
    EXPECT_EQ(EOutcome::eNoFinger, cUniform.m_cResult.m_eOutcome);
    EXPECT_EQ(FPC_ERROR_BITMAP_NO_FINGER, cUniform.m_cResult.m_nCode);
    EXPECT_EQ(200, cUniform.m_cResult.m_nWidth);
}

TEST(Work, FilesOfAnotherPictureStayAndTheResultTellsIt)
{
    const ClTempFolder cFolder;
    const ClOptions cOptions = Into(cFolder);
    const std::string sFirst = cFolder.Write("a/slap.bmp", Slap(SlapScenes::FourFingers(SlapScenes::eRightHand, 8000)));
    const std::string sSecond =
        cFolder.Write("b/slap.bmp", Slap(SlapScenes::FourFingers(SlapScenes::eRightHand, 10000)));
    ClWork cFirst = WorkOn(InputOf(sFirst), cOptions);
    WriteFiles(cOptions, cFirst);
    EXPECT_EQ(EOutcome::eSegmented, cFirst.m_cResult.m_eOutcome);
    const std::vector<std::string> aNames = cFolder.Names();

    ClWork cSecond = WorkOn(InputOf(sSecond), cOptions);
    EXPECT_EQ(4u, cSecond.m_aFiles.size());
    WriteFiles(cOptions, cSecond);
    EXPECT_EQ(EOutcome::eNotWritten, cSecond.m_cResult.m_eOutcome);
    EXPECT_EQ(FPC_ERROR_WRITE_FAIL, cSecond.m_cResult.m_nCode);
    EXPECT_NE(std::string::npos, cSecond.m_cResult.m_sMessage.find("--tree"));
    EXPECT_EQ(4u, cSecond.m_cResult.m_aFingers.size()) << "they are known all the same";
    EXPECT_EQ("", cSecond.m_cResult.m_aFingers[0].m_sFile);
    EXPECT_EQ(aNames, cFolder.Names()) << "not even those that would not clash";

    ClWork cAgain = WorkOn(InputOf(sFirst), cOptions); // such as after a run that was killed
    WriteFiles(cOptions, cAgain);
    EXPECT_EQ(EOutcome::eSegmented, cAgain.m_cResult.m_eOutcome);

    ClOptions cTree = cOptions;
    cTree.m_bTree = true;
    ClWork cApart = WorkOn(InputOf(sSecond), cTree);
    WriteFiles(cTree, cApart);
    EXPECT_EQ(EOutcome::eSegmented, cApart.m_cResult.m_eOutcome) << cApart.m_cResult.m_sMessage;
}
