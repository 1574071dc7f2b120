#pragma once

#include "KormelinSegmentation.hpp"
#include "RDTools/SDKHandleBase.hpp"

/// A handle of this library, of either kind.
class ClHandleBase : public TSDKHandleInterface<ClHandleBase, ClKormelinSegmentation>
{
public:
    /// The stamps of both kinds.
    struct Signature_t
    {
        static const char* const m_szSignatures[2];
    };
};
