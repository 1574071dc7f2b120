#include "BitHash.hpp"

#include <cinttypes>
#include <cstdio>

template <class T> void ClBitHash::AddNumbers(const ClImage& cImage)
{
    for (int y = 0; y < cImage.m_nHeight; ++y)
    {
        const T* pRow = Row<T>(cImage, y);
        for (std::ptrdiff_t x = 0; x < cImage.SamplesPerRow(); ++x) AddNumber(pRow[x]);
    }
}

void ClBitHash::AddImage(const ClImage& cImage)
{
    Add({cImage.m_eDataType, cImage.m_nWidth, cImage.m_nHeight, cImage.m_nPlanes, cImage.m_nXRes, cImage.m_nYRes,
         cImage.m_eContent});
    AddNumber(cImage.m_dBlack);
    AddNumber(cImage.m_dWhite);
    if (cImage.Data() == nullptr) return;
    if (cImage.m_eDataType == ClImage::eFloat32) return AddNumbers<float>(cImage);
    if (cImage.m_eDataType == ClImage::eDouble64) return AddNumbers<double>(cImage);
    const auto nBytes = static_cast<std::size_t>(cImage.SamplesPerRow()) *
                        static_cast<std::size_t>(ClImage::SampleSize(cImage.m_eDataType));
    for (int y = 0; y < cImage.m_nHeight; ++y) Add(Row<unsigned char>(cImage, y), nBytes);
}

std::string ClBitHash::Text() const
{
    char szText[20];
    std::snprintf(szText, sizeof szText, "%016" PRIx64, m_nHash);
    return szText;
}
