#pragma once

#include "Picture.hpp"

#include "RDTools/Stream.hpp"

namespace SegmentTool
{
/// A file in memory: reads one that is there, or writes one that grows at its end.
class ClBytesStream : public ClStream
{
public:
    ClBytesStream() = default;
    explicit ClBytesStream(const Bytes_t& aFile) : m_pFile(&aFile) {} ///< which outlives the stream

    long Pos() const override { return static_cast<long>(m_nNext); }
    long Size() const override { return static_cast<long>(m_pFile->size()); }
    int Seek(long nOffset, int nOrigin) override; ///< stays where the place would lie outside
    bool IsSeekable() const override { return true; }
    unsigned long WriteRaw(const void* pData, unsigned long nSize) override; ///< only to its own file; std::bad_alloc
    unsigned long ReadRaw(void* pData, unsigned long nSize) override;

    Bytes_t m_aWritten;

private:
    const Bytes_t* m_pFile = &m_aWritten;
    std::size_t m_nNext = 0;
};
} // namespace SegmentTool
