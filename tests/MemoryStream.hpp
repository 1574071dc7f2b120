#pragma once

#include "RDTools/Stream.hpp"

#include <cstddef>
#include <limits>
#include <vector>

/// A stream over bytes in memory, for tests. Writing at or behind the end makes it grow; a gap is filled with zeroes.
/// Without seeking it behaves as a pipe does: Pos, Size and Seek are those of ClStream, and tests go back by Rewind.
class ClMemoryStream : public ClStream
{
public:
    explicit ClMemoryStream(std::vector<unsigned char> aBytes = {}, bool bSeekable = true);

    long Pos() const override;
    long Size() const override;
    int Seek(long nOffset, int nOrigin) override; ///< 22 for another origin or a place before the start
    const char* Name() const override { return "Memory Stream"; }
    bool IsSeekable() const override { return m_bSeekable; }
    unsigned long WriteRaw(const void* pData, unsigned long nSize) override;
    unsigned long ReadRaw(void* pData, unsigned long nSize) override;

    void Rewind() { m_nPos = 0; } ///< to the first byte, in any mode
    /// No byte from nByte on can be read or written: counts come out short.
    void ShortAt(std::size_t nByte);
    /// An access that reaches byte nByte moves what lies before it and raises ClExStreamFailToRead -203 or
    /// ClExStreamFailToWrite -202.
    void FailAt(std::size_t nByte);

    std::vector<unsigned char> m_aBytes;
    std::size_t m_nPos = 0;
    unsigned long m_nReads = 0;  ///< calls of ReadRaw
    unsigned long m_nWrites = 0; ///< calls of WriteRaw

private:
    unsigned long Reachable(unsigned long nSize) const;

    bool m_bSeekable;
    bool m_bThrow = false;
    std::size_t m_nLimit = std::numeric_limits<std::size_t>::max();
};
