#include "BytesStream.hpp"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace SegmentTool
{
int ClBytesStream::Seek(long nOffset, int nOrigin)
{
    const long nBase = nOrigin == SEEK_SET ? 0 : nOrigin == SEEK_CUR ? Pos() : Size();
    if (nOffset < -nBase || nOffset > Size() - nBase) return -1;
    m_nNext = static_cast<std::size_t>(nBase + nOffset);
    return 0;
}

unsigned long ClBytesStream::WriteRaw(const void* pData, unsigned long nSize)
{
    if (m_pFile != &m_aWritten || m_nNext != m_aWritten.size()) return 0;
    const auto* pBytes = static_cast<const unsigned char*>(pData);
    m_aWritten.insert(m_aWritten.end(), pBytes, pBytes + nSize);
    m_nNext = m_aWritten.size();
    return nSize;
}

unsigned long ClBytesStream::ReadRaw(void* pData, unsigned long nSize)
{
    const std::size_t nRead = std::min<std::size_t>(nSize, m_pFile->size() - m_nNext);
    if (nRead != 0) std::memcpy(pData, m_pFile->data() + m_nNext, nRead);
    m_nNext += nRead;
    return nRead;
}
} // namespace SegmentTool
