#include "MemoryStream.hpp"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

ClMemoryStream::ClMemoryStream(std::vector<unsigned char> aBytes, bool bSeekable)
    : m_aBytes(std::move(aBytes)), m_bSeekable(bSeekable)
{
}

long ClMemoryStream::Pos() const
{
    return m_bSeekable ? static_cast<long>(m_nPos) : ClStream::Pos();
}

long ClMemoryStream::Size() const
{
    return m_bSeekable ? static_cast<long>(m_aBytes.size()) : ClStream::Size();
}

int ClMemoryStream::Seek(long nOffset, int nOrigin)
{
    if (!m_bSeekable)
    {
        return ClStream::Seek(nOffset, nOrigin);
    }
    const long nFrom = nOrigin == SEEK_CUR ? Pos() : nOrigin == SEEK_END ? Size() : 0;
    if (nOrigin < SEEK_SET || nOrigin > SEEK_END || nOffset < -nFrom)
    {
        return EINVAL;
    }
    m_nPos = static_cast<std::size_t>(nFrom) + static_cast<std::size_t>(nOffset);
    return 0;
}

unsigned long ClMemoryStream::WriteRaw(const void* pData, unsigned long nSize)
{
    ++m_nWrites;
    const unsigned long nNow = Reachable(nSize);
    if (nNow > 0)
    {
        ConvertBadAlloc([&] { m_aBytes.resize(std::max(m_aBytes.size(), m_nPos + nNow)); });
        std::memcpy(m_aBytes.data() + m_nPos, pData, nNow);
        m_nPos += nNow;
    }
    if (m_bThrow && nNow < nSize)
    {
        throw ClExStreamFailToWrite("the test wants it", FPC_ERROR_WRITE_FAIL, false, "MemoryStream", __LINE__);
    }
    return nNow;
}

unsigned long ClMemoryStream::ReadRaw(void* pData, unsigned long nSize)
{
    ++m_nReads;
    const unsigned long nReachable = Reachable(nSize);
    const unsigned long nThere = m_aBytes.size() - std::min(m_nPos, m_aBytes.size());
    const unsigned long nNow = std::min(nReachable, nThere);
    if (nNow > 0)
    {
        std::memcpy(pData, m_aBytes.data() + m_nPos, nNow);
        m_nPos += nNow;
    }
    if (m_bThrow && nReachable < nSize && nNow == nReachable)
    {
        throw ClExStreamFailToRead("the test wants it", FPC_ERROR_READ_FAIL, false, "MemoryStream", __LINE__);
    }
    return nNow;
}

void ClMemoryStream::ShortAt(std::size_t nByte)
{
    m_nLimit = nByte;
    m_bThrow = false;
}

void ClMemoryStream::FailAt(std::size_t nByte)
{
    m_nLimit = nByte;
    m_bThrow = true;
}

/// How much of an access of nSize bytes lies before the limit.
unsigned long ClMemoryStream::Reachable(unsigned long nSize) const
{
    return std::min(nSize, m_nLimit - std::min(m_nPos, m_nLimit));
}
