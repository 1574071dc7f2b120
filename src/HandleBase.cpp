#include "HandleBase.hpp"

#include "KormelinSegmentHandle.hpp"
#include "KormelinSegmentationHandle.hpp"

const char* const ClHandleBase::Signature_t::m_szSignatures[2] = {ClKormelinSegmentationHandle::m_szSignature,
                                                                  ClKormelinSegmentHandle::m_szSignature};
