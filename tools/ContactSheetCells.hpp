#pragma once

#include "ContactSheetPictures.hpp"

#include <functional>
#include <string>
#include <vector>

/// In pixels. The pictures are chosen so that no result is larger, and a sheet shows them pixel by pixel.
constexpr int nLongestSide = 210;

/// One run of an operator: what it was, and what came of it.
struct ClSheetCell
{
    bool IsAsExpected() const { return m_nCode == m_nExpectedCode; }

    std::string m_sOperator;   ///< the operator's Name(); "input" for the pictures that the others work on
    std::string m_sMode;       ///< enumerator of the operator's mode, empty if it has none
    std::string m_sArguments;  ///< input and parameters
    std::string m_sResult;     ///< size, sample type and range of the result and what else was found, or the code
    long m_nCode = 0;          ///< what the run returned or raised, a number of the error catalogue
    long m_nExpectedCode = 0;  ///< 0, or the code of what the operator is to refuse
    ClSheetPicture m_cPicture; ///< empty after a failure
};

/// What a run leaves behind.
struct ClSheetRun
{
    ClImage m_cOut;
    std::string m_sFound;             ///< numbers worth telling beside the picture
    std::vector<ClSheetBox> m_aBoxes; ///< are drawn into the picture
    bool m_bLabels = false;           ///< the samples are labels
    long m_nBackground = 0;           ///< the label of no object
};

/// The cells of a sheet, gathered one after the other.
class ClSheetCells
{
public:
    /// Runs fnRun(Operator&, ClSheetRun&), which returns the operator's code; that of a ClException counts, too.
    template <class Operator, class Fn>
    void Add(const std::string& sMode, const std::string& sArguments, Fn&& fnRun, long nExpectedCode = 0)
    {
        Operator cOperator;
        Record(cOperator.Name(), sMode, sArguments, nExpectedCode,
               [&](ClSheetRun& cRun) { return fnRun(cOperator, cRun); });
    }
    void AddPicture(const std::string& sOperator, const std::string& sArguments, const std::string& sResult,
                    ClSheetPicture cPicture);

    ClSheetInputs m_cInputs;
    std::vector<ClSheetCell> m_aCells;

private:
    void Record(const char* szOperator, const std::string& sMode, const std::string& sArguments, long nExpectedCode,
                const std::function<long(ClSheetRun&)>& fnRun);
};

/// Every operator in each of its modes, always in the same order.
/// Errors: std::runtime_error if the inputs cannot be prepared; std::bad_alloc. What an operator raises is in its cell.
std::vector<ClSheetCell> MakeSheetCells();

// The groups, in the order of the sheet.
void AddThresholdCells(ClSheetCells& cCells);
void AddObjectCells(ClSheetCells& cCells);
void AddFilterCells(ClSheetCells& cCells);
void AddRescaleCells(ClSheetCells& cCells);
void AddRotateCells(ClSheetCells& cCells);
void AddGreyValueCells(ClSheetCells& cCells);
void AddPlaneAndTypeCells(ClSheetCells& cCells);
void AddTwoImageCells(ClSheetCells& cCells);

/// A mode under its name in the code.
template <class Mode> struct StSheetMode
{
    const char* m_szName;
    Mode m_eMode;
};
#define SHEET_MODE(Class, eMode)                                                                                       \
    {                                                                                                                  \
#eMode, Class::eMode                                                                                           \
    }
