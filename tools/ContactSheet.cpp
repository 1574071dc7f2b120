// Runs every image operator in each of its modes on fixed pictures and draws the results side by side on one sheet.

#include "ContactSheetCells.hpp"

#include <gd.h>
#include <gdfonts.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <memory>
#include <stdexcept>

namespace
{
enum EExit
{
    eExitDone = 0,
    eExitFailed = 1,
    eExitUsage = 2
};

// In pixels; a line of text is 13 high and its letters are 6 wide.
constexpr int nColumns = 12;
constexpr int nMargin = 6;
constexpr int nLine = 13;
constexpr int nLines = 4;
constexpr int nCellWidth = nLongestSide + 2 * nMargin;
constexpr int nCellHeight = nLines * nLine + nLongestSide + 3 * nMargin;

struct ClImageDestroyer
{
    void operator()(gdImage* pImage) const { gdImageDestroy(pImage); }
};
using Sheet_t = std::unique_ptr<gdImage, ClImageDestroyer>;

void Write(gdImage* pSheet, int nX, int nY, std::string sText, int nColor)
{
    gdImageString(pSheet, gdFontGetSmall(), nX, nY, reinterpret_cast<unsigned char*>(sText.data()), nColor);
}

void DrawCell(gdImage* pSheet, int nX, int nY, const ClSheetCell& cCell)
{
    const int nBlack = gdTrueColor(0, 0, 0);
    const int nGrey = gdTrueColor(110, 110, 110);
    const int nResult = cCell.IsAsExpected() ? gdTrueColor(0, 0, 160) : gdTrueColor(220, 0, 0);
    Write(pSheet, nX, nY, cCell.m_sOperator, nBlack);
    Write(pSheet, nX, nY + nLine, cCell.m_sMode, nBlack);
    Write(pSheet, nX, nY + 2 * nLine, cCell.m_sArguments, nGrey);
    Write(pSheet, nX, nY + 3 * nLine, cCell.m_sResult, nResult);
    const ClSheetPicture& cPicture = cCell.m_cPicture;
    const int nTop = nY + nLines * nLine + nMargin;
    if (cPicture.m_nWidth == 0) return;
    gdImageRectangle(pSheet, nX - 1, nTop - 1, nX + cPicture.m_nWidth, nTop + cPicture.m_nHeight,
                     gdTrueColor(170, 200, 255));
    for (int y = 0; y < cPicture.m_nHeight; ++y)
    {
        for (int x = 0; x < cPicture.m_nWidth; ++x)
        {
            const std::uint8_t* pPixel = cPicture.At(x, y);
            gdImageSetPixel(pSheet, nX + x, nTop + y, gdTrueColor(pPixel[0], pPixel[1], pPixel[2]));
        }
    }
}

Sheet_t DrawSheet(const std::vector<ClSheetCell>& aCells)
{
    const int nRows = (static_cast<int>(aCells.size()) + nColumns - 1) / nColumns;
    Sheet_t pSheet(gdImageCreateTrueColor(nColumns * nCellWidth, nRows * nCellHeight));
    if (pSheet == nullptr) throw std::runtime_error("no memory for the sheet");
    gdImageFilledRectangle(pSheet.get(), 0, 0, gdImageSX(pSheet) - 1, gdImageSY(pSheet) - 1,
                           gdTrueColor(255, 255, 255));
    int nCell = 0;
    for (const ClSheetCell& cCell : aCells)
    {
        DrawCell(pSheet.get(), nCell % nColumns * nCellWidth + nMargin, nCell / nColumns * nCellHeight + nMargin,
                 cCell);
        ++nCell;
    }
    return pSheet;
}

bool WritePng(gdImage* pSheet, const char* szPath)
{
    std::FILE* pFile = std::fopen(szPath, "wb");
    if (pFile == nullptr) return false;
    gdImagePng(pSheet, pFile);
    const bool bWritten = std::ferror(pFile) == 0;
    return std::fclose(pFile) == 0 && bWritten;
}

int Run(const char* szPath)
{
    const std::vector<ClSheetCell> aCells = MakeSheetCells();
    const Sheet_t pSheet = DrawSheet(aCells);
    if (!WritePng(pSheet.get(), szPath))
    {
        std::fprintf(stderr, "contact-sheet: cannot write %s: %s\n", szPath, std::strerror(errno));
        return eExitFailed;
    }
    int nUnexpected = 0;
    for (const ClSheetCell& cCell : aCells)
    {
        if (cCell.IsAsExpected()) continue;
        ++nUnexpected;
        std::fprintf(stderr, "contact-sheet: %s %s, %s: %s\n", cCell.m_sOperator.c_str(), cCell.m_sMode.c_str(),
                     cCell.m_sArguments.c_str(), cCell.m_sResult.c_str());
    }
    std::printf("%s: %zu cells, %d of them not as expected\n", szPath, aCells.size(), nUnexpected);
    return nUnexpected == 0 ? eExitDone : eExitFailed;
}
} // namespace

int main(int nArguments, char** aszArguments)
{
    const bool bHelp = nArguments == 2 && std::strcmp(aszArguments[1], "--help") == 0;
    if (nArguments != 2 || bHelp)
    {
        std::fprintf(bHelp ? stdout : stderr,
                     "usage: contact-sheet OUT.png\n"
                     "Draws what every image operator makes of fixed pictures in each of its modes. Fails if a run\n"
                     "ends with a code that is not expected of it.\n");
        return bHelp ? eExitDone : eExitUsage;
    }
    try
    {
        return Run(aszArguments[1]);
    }
    catch (const std::exception& e)
    {
        std::fprintf(stderr, "contact-sheet: %s\n", e.what());
        return eExitFailed;
    }
}
