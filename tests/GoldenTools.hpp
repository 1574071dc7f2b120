#pragma once

#include "RDTools/FpImage.hpp"

#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

// Golden tables: results of an independent, slow and plain program that follows the definition of each operator and
// stage. It shares no line with the library, and the library has never written them.

/// FNV-1a over the samples of an image, row by row, without padding (G. Fowler, L. C. Noll, K.-P. Vo).
inline std::uint64_t HashOf(const ClImage& cImage)
{
    std::uint64_t nHash = 14695981039346656037u;
    const int nBytes = cImage.m_nWidth * ClImage::SampleSize(cImage.m_eDataType);
    for (int y = 0; y < cImage.m_nHeight; ++y)
    {
        const unsigned char* pRow = Row<unsigned char>(cImage, y);
        for (int x = 0; x < nBytes; ++x)
        {
            nHash = (nHash ^ pRow[x]) * 1099511628211u;
        }
    }
    return nHash;
}

inline std::string Hex(std::uint64_t nValue)
{
    char szText[20];
    std::snprintf(szText, sizeof szText, "%016" PRIx64, nValue);
    return szText;
}

/// The lines of a table of tests/golden; lines that begin with # are comments.
inline std::vector<std::string> GoldenLines(const char* szName)
{
    std::ifstream cFile(std::string(KORMELIN_SOURCE_FOLDER "/tests/golden/") + szName);
    std::vector<std::string> asLine;
    for (std::string sLine; std::getline(cFile, sLine);)
    {
        if (!sLine.empty() && sLine[0] != '#')
        {
            asLine.push_back(sLine);
        }
    }
    return asLine;
}
