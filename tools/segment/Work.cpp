#include "Work.hpp"

#include "AtomicFile.hpp"
#include "ImageFile.hpp"
#include "OutputNames.hpp"
#include "Segmentation.hpp"
#include "Thumbnail.hpp"

#include "RDTools/ErrorCatalogue.hpp"
#include "RDTools/Exception.hpp"

#include <new>

namespace SegmentTool
{
namespace
{
void Refuse(ClResult& cResult, EOutcome eOutcome, long nCode, const std::string& sMessage)
{
    cResult.m_eOutcome = eOutcome;
    cResult.m_nCode = nCode;
    cResult.m_sMessage = sMessage;
    cResult.m_eHand = EHand::eUndecided;
    cResult.m_aFingers.clear();
}

// Runs fn; whatever it throws becomes the outcome.
template <class Fn> bool Guard(ClResult& cResult, bool bReading, Fn&& fn)
{
    try
    {
        fn();
        return true;
    }
    catch (const ClPictureError& cError)
    {
        Refuse(cResult, FailureOutcome(cError.m_nCode, bReading, cResult.m_bBiggest), cError.m_nCode, cError.what());
    }
    catch (const ClExBadAlloc&)
    {
        Refuse(cResult, EOutcome::eFailed, FPC_ERROR_OUT_OF_MEMORY, "not enough memory for this picture");
    }
    catch (const std::bad_alloc&)
    {
        Refuse(cResult, EOutcome::eFailed, FPC_ERROR_OUT_OF_MEMORY, "not enough memory for this picture");
    }
    catch (const ClException& cError)
    {
        Refuse(cResult, FailureOutcome(cError.Number(), bReading, cResult.m_bBiggest), cError.Number(),
               GetErrorDescriptionIntern(cError.Number()));
    }
    catch (const std::exception& cError)
    {
        Refuse(cResult, EOutcome::eFailed, FPC_ERROR_STD_EXCEPTION, cError.what());
    }
    return false;
}
} // namespace

namespace
{
void MakeFiles(const ClOptions& cOptions, ClPicture& cPicture, const FingerImages_t& aImages, ClWork& cWork)
{
    ClResult& cResult = cWork.m_cResult;
    NameFiles(cOptions, cResult);
    for (std::size_t i = 0; i < cResult.m_aFingers.size(); ++i)
    {
        const std::string& sFile = cResult.m_aFingers[i].m_sFile;
        if (sFile.empty()) continue;
        cWork.m_aFiles.push_back(
            {sFile, EncodeImage(cOptions.m_eImageFormat, RowsOf(aImages[i]), cWork.m_nFingerprint)});
    }
    if (cResult.m_sOverlay.empty()) return;
    cWork.m_aFiles.push_back(
        {cResult.m_sOverlay,
         EncodeImage(cOptions.m_eImageFormat, RowsWithFrames(cPicture, cResult.m_aFingers), cWork.m_nFingerprint)});
}

void ForgetFiles(ClWork& cWork)
{
    cWork.m_aFiles.clear();
    cWork.m_cResult.m_sOverlay.clear();
    for (ClFinger& cFinger : cWork.m_cResult.m_aFingers) cFinger.m_sFile.clear();
}
} // namespace

ClWork WorkOn(const ClInput& cInput, const ClOptions& cOptions)
{
    ClWork cWork;
    ClResult& cResult = cWork.m_cResult;
    cResult.m_nIndex = cInput.m_nIndex;
    cResult.m_sInput = cInput.m_sPath;
    cResult.m_bBiggest = cOptions.m_bBiggest;
    if (!cInput.m_sFault.empty())
    {
        Refuse(cResult, EOutcome::eUnreadable, FPC_ERROR_FILE_OPEN_FAIL, cInput.m_sFault);
        return cWork;
    }
    ClPicture cPicture;
    FingerImages_t aImages;
    std::uint64_t* pnFingerprint = cOptions.m_sFolder.empty() ? nullptr : &cWork.m_nFingerprint;
    if (!Guard(cResult, true, [&] { ReadInput(cInput.m_sPath, cOptions.m_cReading, cPicture, pnFingerprint); }))
    {
        return cWork;
    }
    Guard(cResult, false, [&] { Segment(cPicture, cOptions.m_bBiggest, cOptions.m_nExpect, cResult, aImages); });
    if (!Guard(cResult, false, [&] { MakeFiles(cOptions, cPicture, aImages, cWork); })) ForgetFiles(cWork);
    if (!cOptions.m_sReport.empty())
    {
        if (!Guard(cResult, false, [&] { cWork.m_sThumbnailUri = ThumbnailUri(cPicture); })) ForgetFiles(cWork);
    }
    return cWork;
}

void WriteFiles(const ClOptions& cOptions, ClWork& cWork)
{
    if (cWork.m_aFiles.empty()) return;
    try
    {
        for (const ClMadeFile& cFile : cWork.m_aFiles) DemandMayWrite(cFile.m_sPath, cWork.m_nFingerprint);
        MakeFolders(FolderOfFingers(cOptions, cWork.m_cResult.m_sInput));
        for (const ClMadeFile& cFile : cWork.m_aFiles)
        {
            WriteAtomically(cFile.m_sPath, cFile.m_aBytes, cWork.m_nFingerprint);
        }
    }
    catch (const ClPictureError& cError)
    {
        cWork.m_cResult.m_eOutcome = EOutcome::eNotWritten;
        cWork.m_cResult.m_nCode = cError.m_nCode;
        cWork.m_cResult.m_sMessage = cError.what();
        ForgetFiles(cWork);
    }
}
} // namespace SegmentTool
