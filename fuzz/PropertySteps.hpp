#pragma once

#include "ByteSource.hpp"

/// What the properties of a handle must say.
struct StHandleModel
{
    enum EKind
    {
        eNone, ///< a null handle
        eSegmentation,
        eSegment
    };

    EKind m_eKind = eNone;
    long m_nCount = 0;
    long m_nOrigin = 0;
    long m_nMode = 0;
    long m_nX = 0;
    long m_nY = 0;
    long m_nHeight = 0;
    long m_nWidth = 0;
};

/// One of the six exported property calls with a name and a value as the bytes say. Code, value, size and buffer must
/// be what the model gives; a value that is taken is taken into the model.
void PropertyStep(void* hHandle, StHandleModel& cModel, ClByteSource& cBytes);

/// The same for the operations that a handle has beside the exported ones: enumeration, types, access, ranges, blobs.
void InnerPropertyStep(void* hHandle, StHandleModel& cModel, ClByteSource& cBytes);
