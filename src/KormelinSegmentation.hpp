#pragma once

#include "RDTools/SDKBase.hpp"

/// The library: one object while it is initialised, without data of its own. What counts is the number of references,
/// which decides whether handles may be made, and the version.
class ClKormelinSegmentation : public TpSDKBase<ClKormelinSegmentation>
{
public:
    void OnInitialize() override;
    void OnUninitialize() override;

    static const int m_nMainVersionNumber;
    static const int m_nInterfaceVersionNumber;
    static const int m_nRelease;
    static const int m_nBugfixVersionNumber;
    static const char m_szVersion[];     ///< the "Version" of every handle
    static const char m_szLongVersion[]; ///< product, version and owner; KSGetVersionA finds the version in it
};
