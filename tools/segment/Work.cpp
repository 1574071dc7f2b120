#include "Work.hpp"

#include "Segmentation.hpp"

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

ClResult WorkOn(const ClInput& cInput, const ClOptions& cOptions)
{
    ClResult cResult;
    cResult.m_nIndex = cInput.m_nIndex;
    cResult.m_sInput = cInput.m_sPath;
    cResult.m_bBiggest = cOptions.m_bBiggest;
    if (!cInput.m_sFault.empty())
    {
        Refuse(cResult, EOutcome::eUnreadable, FPC_ERROR_FILE_OPEN_FAIL, cInput.m_sFault);
        return cResult;
    }
    ClPicture cPicture;
    FingerImages_t aImages;
    const bool bRead = Guard(cResult, true, [&] { ReadInput(cInput.m_sPath, cOptions.m_cReading, cPicture, nullptr); });
    if (bRead)
    {
        Guard(cResult, false, [&] { Segment(cPicture, cOptions.m_bBiggest, cOptions.m_nExpect, cResult, aImages); });
    }
    return cResult;
}
} // namespace SegmentTool
