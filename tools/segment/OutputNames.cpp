#include "OutputNames.hpp"

#include "ImageFile.hpp"

#include <algorithm>

namespace SegmentTool
{
namespace
{
std::string WithSlash(const std::string& sFolder)
{
    return sFolder.empty() || sFolder.back() == '/' ? sFolder : sFolder + '/';
}

// The name behind the last slash, without its ending; a name that is all ending is kept.
std::string Stem(const std::string& sPath)
{
    const std::size_t nSlash = sPath.rfind('/');
    const std::string sName = nSlash == std::string::npos ? sPath : sPath.substr(nSlash + 1);
    const std::size_t nDot = sName.rfind('.');
    return nDot == std::string::npos || nDot == 0 ? sName : sName.substr(0, nDot);
}
} // namespace

std::string FolderOfFingers(const ClOptions& cOptions, const std::string& sInput)
{
    std::string sFolder = WithSlash(cOptions.m_sFolder);
    if (!cOptions.m_bTree) return sFolder;
    std::size_t nFirst = 0;
    for (std::size_t nSlash = sInput.find('/'); nSlash != std::string::npos; nSlash = sInput.find('/', nFirst))
    {
        const std::string sPart = sInput.substr(nFirst, nSlash - nFirst);
        if (!sPart.empty() && sPart != "." && sPart != "..") sFolder += sPart + '/';
        nFirst = nSlash + 1;
    }
    return sFolder;
}

void NameFiles(const ClOptions& cOptions, ClResult& cResult)
{
    if (cOptions.m_sFolder.empty()) return;
    const std::string sBegin = FolderOfFingers(cOptions, cResult.m_sInput) + Stem(cResult.m_sInput) + '_';
    const std::string sEnd = std::string(".") + EndingOf(cOptions.m_eImageFormat);
    const auto nUndecided = std::count_if(cResult.m_aFingers.begin(), cResult.m_aFingers.end(),
                                          [](const ClFinger& cFinger) { return cFinger.m_nPosition == 0; });
    int nCount = 0;
    for (ClFinger& cFinger : cResult.m_aFingers)
    {
        cFinger.m_sFile = sBegin + std::to_string(cFinger.m_nPosition);
        if (cFinger.m_nPosition == 0 && nUndecided > 1) cFinger.m_sFile += '-' + std::to_string(++nCount);
        cFinger.m_sFile += sEnd;
    }
    const bool bLookedAt = cResult.m_eOutcome <= EOutcome::eNoFinger;
    if (cOptions.m_bOverlay && bLookedAt) cResult.m_sOverlay = sBegin + "overlay" + sEnd;
}
} // namespace SegmentTool
