#include "RDImageProcessing/BoxQuotient.hpp"

#include <algorithm>

ClBoxCounts::ClBoxCounts(int nWidth, int nHalf, Reciprocal_t pReciprocal)
    : m_anCount(static_cast<unsigned long>(nWidth)), m_anReciprocal(static_cast<unsigned long>(nWidth)),
      m_nWidth(nWidth), m_nHalf(nHalf), m_pReciprocal(pReciprocal)
{
}

void ClBoxCounts::SetRows(int nRows)
{
    if (nRows == m_nRows)
    {
        return;
    }
    m_nRows = nRows;
    Fill(m_nHalf, m_nWidth - m_nHalf, 2 * m_nHalf + 1);
    for (int i = 0; i < m_nHalf; ++i)
    {
        Fill(i, i + 1, m_nHalf + 1 + i);
        Fill(m_nWidth - 1 - i, m_nWidth - i, m_nHalf + 1 + i);
    }
}

void ClBoxCounts::Fill(int nFrom, int nEnd, int nColumns)
{
    const auto nCount = static_cast<std::uint32_t>(nColumns * m_nRows);
    std::fill(m_anCount.m_pData + nFrom, m_anCount.m_pData + nEnd, static_cast<std::uint16_t>(nCount));
    std::fill(m_anReciprocal.m_pData + nFrom, m_anReciprocal.m_pData + nEnd, m_pReciprocal(nCount));
}
