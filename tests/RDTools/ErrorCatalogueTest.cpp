#include "RDTools/ErrorCatalogue.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <cwchar>
#include <set>
#include <string>

namespace
{
struct ClRaised
{
    long m_nCode;
    const char* m_szName;
    const char* m_szText;
};

// clang-format off
// The rows that the system raises: applications show these texts.
constexpr ClRaised aRaised[] = {
    {0, "FPC_SUCCESS", "No errors occurred."},
    {-1, "FPC_ERROR_INITIALIZED", "Multiple initialization."},
    {-2, "FPC_ERROR_NOT_INITIALIZED", "Prior initialization is necessary."},
    {-10, "FPC_ERROR_BITMAP_PTR", "The input image is not valid."},
    {-11, "FPC_ERROR_BITMAP_PLANE", "Number of image planes is invalid. (see documentation)."},
    {-12, "FPC_ERROR_BITMAP_BITCOUNT", "Pixel depth is invalid (see documentation)."},
    {-13, "FPC_ERROR_BITMAP_PELS", "Pels are not in a valid range (see documentation)."},
    {-14, "FPC_ERROR_BITMAP_DIMENSION", "The image is too small or too big."},
    {-15, "FPC_ERROR_BITMAP_NO_FINGER", "No Finger found in the image."},
    {-20, "FPC_ERROR_TEMPLATE_PTR", "The template is not valid."},
    {-21, "FPC_ERROR_TEMPLATE_SIZE", "The size of the finger template is not valid."},
    {-23, "FPC_ERROR_TEMPLATE_PTR_NULL", "The template-pointer is not valid."},
    {-24, "FPC_ERROR_TEMPLATE_SIZE_PTR", "Pointer to template-size is not valid."},
    {-31, "FPC_ERROR_BITMAP_COMPRESSION", "The compression FOCC is not supported."},
    {-32, "FPC_ERROR_BITMAP_HEADERSIZE", "The header size of the Bitmap is unknown."},
    {-33, "FPC_ERROR_FORMAT_NOTSUPPORTED", "The required format is not supported."},
    {-35, "FPC_ERROR_PARAM_OUT_OF_RANGE", "One of the parameters is out of range."},
    {-36, "FPC_ERROR_BITMAP_UNEXPECTED_FILEHEADER", "Fileheader found but expected bitmapinfoheader."},
    {-37, "FPC_ERROR_PARAM_IS_MISSING", "One of the required parameter is missing."},
    {-38, "FPC_ERROR_CORRUPT_BYTECODE", "The input is corrupt can be a memoryblock or a file."},
    {-39, "FPC_ERROR_CORRUPT_DATA", "The input is corrupt; it can be a memoryblock or a file."},
    {-42, "FPC_ERROR_NO_HANDLE", "The handle parameter is set to NULL."},
    {-43, "FPC_ERROR_INVALID_HANDLE", "The handle parameter is not a valid handle for that function."},
    {-44, "FPC_ERROR_INVALID_PARAMETER", "One(or more) parameter(s) is(are) invalid."},
    {-46, "FPC_ERROR_PARAM_VALUE_DUPLICATE", "The given parameter is a duplicate of a previously given parameter."},
    {-47, "FPC_ERROR_PARAM_IS_READONLY", "The requested parameter is read only."},
    {-49, "FPC_ERROR_LOGGING", "An error occurred in the log function, maybe log full."},
    {-50, "FPC_ERROR_INVALID_STATE", "Function call is not possible in current state."},
    {-101, "FPC_ERROR_INTERNAL", "Internal error."},
    {-102, "FPC_ERROR_OUT_OF_MEMORY", "Memory allocation failed or given mem-block too small."},
    {-103, "FPC_ERROR_UNSUPPORTED_FEATURE", "The feature is currently not supported."},
    {-105, "FPC_ERROR_FROM_SYSTEM_FUNCTION", "A error has occurred in a system function call. use the system errorfunction to get more info."},
    {-200, "FPC_ERROR_FILE_OPEN_FAIL", "Failed to open the specified file."},
    {-201, "FPC_ERROR_UNEXPECTED_EOF", "Unexpected end of file."},
    {-202, "FPC_ERROR_WRITE_FAIL", "Failed to write the data."},
    {-204, "FPC_ERROR_IO", "Unspecified I/O error."},
    {-206, "FPC_ERROR_UNKNOWN_PARAMETER", "A given parameter is unknown."},
    {-209, "FPC_ERROR_VALUE_WRONG", "The value for the parameter is out of range."},
    {-210, "FPC_ERROR_BMP_NO_SIGNATURE", "No BMP signature found."},
    {-701, "FPC_ERROR_BAD_POINTER", "The pointer is bad or invalid."},
};

struct ClNamed
{
    long m_nCode;
    const char* m_szName;
};

// The vocabulary that other components of the family share.
constexpr ClNamed aNamed[] = {
    {-4, "FPC_ERROR_NO_CB_ONEND"},
    {-5, "FPC_ERROR_NO_CB_ONERROR"},
    {-6, "FPC_ERROR_CODING_LOGGED"},
    {-16, "FPC_ERROR_INSUFFICIENT_MINUTIAE"},
    {-17, "FPC_ERROR_UNSPECIFIED_WARNING"},
    {-22, "FPC_ERROR_TEMPLATE_PTRPTR"},
    {-25, "FPC_ERROR_TEMPLATE1_BAD"},
    {-26, "FPC_ERROR_TEMPLATE2_BAD"},
    {-27, "FPC_ERROR_ROTATIONS_RANGE"},
    {-28, "FPC_ERROR_MATCHER_INIT"},
    {-29, "FPC_ERROR_MATCHER_PARAMS"},
    {-30, "FPC_ERROR_IN_CB_FUNCTION"},
    {-34, "FPC_ERROR_FORMAT_IS_TOO_NEW"},
    {-38, "FPC_ERROR_CURRUPT_BYTECODE"},
    {-39, "FPC_ERROR_CURRUPT_DATA"},
    {-40, "FPC_ERROR_UNEXPECTED_SIGNATURE"},
    {-41, "FPC_ERROR_PARAM_DIFFERES_IN_VALUES"},
    {-44, "FPC_ERROR_PARAM_INVALID"},
    {-45, "FPC_ERROR_INVALID_OPTIONS_SETTING"},
    {-48, "FPC_ERROR_PARAM_IS_WRITEONLY"},
    {-51, "FPC_ERROR_EMPTY_HANDLE"},
    {-60, "FPC_ERROR_DEVICE_DISCONNECTED"},
    {-61, "FPC_ERROR_DEVICE_OPEN_FAIL"},
    {-100, "FPC_ERROR_UNSPECIFIED_INTERNAL"},
    {-104, "FPC_FATAL_ERROR_TERMINATION_NECESSARY"},
    {-106, "FPC_ERROR_NOT_IMPLEMENTED"},
    {-203, "FPC_ERROR_READ_FAIL"},
    {-205, "FPC_ERROR_PATH_PTR_NULL"},
    {-206, "FPC_ERROR_PARAM_IS_UNKNOWN"},
    {-207, "FPC_ERROR_UNKNOWN_CODEC"},
    {-208, "FPC_ERROR_VALUE_EXPECTED"},
    {-211, "FPC_ERROR_BMP_FAILURE"},
    {-220, "FPC_ERROR_JPEG_NO_SIGNATURE"},
    {-221, "FPC_ERROR_JPEG_FAILURE"},
    {-222, "FPC_ERROR_JPEG_WRONG_COLORSPACE"},
    {-223, "FPC_ERROR_JPEG_QUALITY_OUTOFRANGE"},
    {-224, "FPC_ERROR_JPEG_SMOOTHING_OUTOFRANGE"},
    {-230, "FPC_ERROR_PNG_NO_SIGNATURE"},
    {-231, "FPC_ERROR_PNG_FAILURE"},
    {-240, "FPC_ERROR_TIFF_NO_SIGNATURE"},
    {-241, "FPC_ERROR_TIFF_FAILURE"},
    {-242, "FPC_ERROR_TIFF_WRONG_COLORSPACE"},
    {-243, "FPC_ERROR_TIFF_QUALITY_OUTOFRANGE"},
    {-244, "FPC_ERROR_TIFF_PREDICTOR_OUTOFRANGE"},
    {-245, "FPC_ERROR_TIFF_COMPRESSMODE_UNKNOWN"},
    {-250, "FPC_ERROR_WSQ_NO_CODEC"},
    {-251, "FPC_ERROR_WSQ_FAILURE"},
    {-252, "FPC_ERROR_WSQ_WRONG_VERSION"},
    {-253, "FPC_ERROR_WSQ_GRAYSCALE_ONLY"},
    {-254, "FPC_ERROR_WSQ_RATIO_OUTOFRANGE"},
    {-255, "FPC_ERROR_WSQ_CURRUPT_DATA"},
    {-260, "FPC_ERROR_LURA_NO_CODEC"},
    {-261, "FPC_ERROR_LURA_NO_SIGNATURE"},
    {-262, "FPC_ERROR_LURA_FAILURE"},
    {-263, "FPC_ERROR_LURA_WRONG_COLORSPACE"},
    {-270, "FPC_ERROR_JPEG2000_UNSUPORTED"},
    {-271, "FPC_ERROR_JPEG2000_NO_SIGNATURE"},
    {-272, "FPC_ERROR_JPEG2000_FAILURE"},
    {-273, "FPC_ERROR_JPEG2000_PARAMETER"},
    {-274, "FPC_ERROR_JPEG2000_WRONG_COLORSPACE"},
    {-301, "FPC_ERROR_ONCARDMATCHING_NOT_A_FINGER_BIT"},
    {-302, "FPC_ERROR_ONCARDMATCHING_FORMAT_OWNER_MISSING"},
    {-303, "FPC_ERROR_ONCARDMATCHING_FORMAT_TYPE_MISSING"},
    {-304, "FPC_ERROR_ONCARDMATCHING_OID_MISSING"},
    {-305, "FPC_ERROR_ONCARDMATCHING_OID_UNKNOWN"},
    {-306, "FPC_ERROR_ONCARDMATCHING_FORMAT_IS_NOT_SUPPORTED"},
    {-307, "FPC_ERROR_ONCARDMATCHING_TAG_UNKNOWN"},
    {-501, "FPC_ERROR_ADVANCEDIMAGING_COMMAND_UNKNOWN"},
    {-502, "FPC_ERROR_ADVANCEDIMAGING_IMAGE_UNKNOWN"},
    {-503, "FPC_ERROR_ADVANCEDIMAGING_PARAMETERS"},
    {-504, "FPC_ERROR_ADVANCEDIMAGING_PROCESSING"},
    {-505, "FPC_ERROR_ADVANCEDIMAGING_READSCRIPT"},
    {-506, "FPC_ERROR_ADVANCEDIMAGING_SCRIPTCONTENT"},
    {-600, "FPC_ERROR_CALIBRATE_FAILED_TO_GENERATE"},
    {-702, "FPC_ERROR_SIZE_TOO_SMALL"},
    {-703, "FPC_ERROR_BAD_FINGER_NUMBER"},
    {-704, "FPC_ERROR_BAD_CAST"},
    {-705, "FPC_ERROR_BAD_POINTER_ALIGN4"},
    {-706, "FPC_ERROR_BAD_POINTER_ALIGN8"},
    {-707, "FPC_ERROR_BAD_POINTER_ALIGN16"},
    {-710, "FPC_ERROR_LATENT_FINGERPOSITION_ALREADY_SET"},
    {-711, "FPC_ERROR_LATENT_FINGERPOSITION_NOT_FOUND"},
    {-720, "FPC_ERROR_NO_ENTRY_FOR_GIVEN_CELL"},
    {-721, "FPC_ERROR_STD_EXCEPTION"},
    {-722, "FPC_ERROR_UNKNOWN_EXCEPTION"},
    {-723, "FPC_ERROR_NO_LATENT_FINGER_GIVEN_FOR_LATENT_MATCHING"},
    {-768, "FPC_ERROR_LD_FINGERPRINT_TOO_SMALL"},
    {-769, "FPC_ERROR_LD_NO_FINGERPRINT_IN_LOWER_AREA"},
    {-770, "FPC_ERROR_LD_FINGER_PLACED_SKEWLY"},
    {-798, "FPC_ERROR_LD_VIDEO_FRAME_INFO_ID_INVALID"},
    {-799, "FPC_ERROR_LD_ILLUMINATION_TOO_HIGH"},
    {-801, "FPC_ERROR_ROLLED_SHIFTED"},
    {-802, "FPC_ERROR_ROLLED_TOO_FAST"},
    {-803, "FPC_ERROR_ROLLED_BACKROLL"},
    {-804, "FPC_ERROR_ROLLED_ROTATED"},
    {-805, "FPC_ERROR_ROLLED_SIZE_TOO_SMALL"},
    {-817, "FPC_ERROR_ICAO_NO_RESULT_IMAGE_AVAILABLE"},
    {-818, "FPC_ERROR_ICAO_NO_FACE_POINTS_AVAILABLE"},
    {-819, "FPC_ERROR_ICAO_INTERNAL_IMAGE_NULL"},
    {-820, "FPC_ERROR_ICAO_INTERNAL_VALUE_OUT_OF_RANGE"},
    {-821, "FPC_ERROR_ICAO_INTERNAL_DEPENDENCY_LOAD_FAILED"},
};
// clang-format on

constexpr const char* aszCatalogueNames[] = {
#define FPC_NAME(name, code, text) #name,
    FPC_ERROR_CATALOGUE(FPC_NAME)
#undef FPC_NAME
};

std::wstring Widened(const char* szText)
{
    return std::wstring(szText, szText + std::strlen(szText)); // plain ASCII
}

void ExpectUnknown(const ST_ErrorMapEntry& cRow)
{
    EXPECT_EQ(2147483647, cRow.nCode);
    EXPECT_STREQ("Unknown error code.", cRow.szDescription);
    EXPECT_STREQ(L"Unknown error code.", cRow.wszDescription);
    EXPECT_STREQ("FPC_ERROR_UNKOWN_ERROR_CODE", cRow.szName);
    EXPECT_STREQ(L"FPC_ERROR_UNKOWN_ERROR_CODE", cRow.wszName);
}

TEST(ErrorCatalogue, RaisedRowsHaveTheirNumbersNamesAndTexts)
{
    for (const ClRaised& cExpected : aRaised)
    {
        const ST_ErrorMapEntry& cRow = GetVlmErrorInfo(cExpected.m_nCode);
        EXPECT_EQ(cExpected.m_nCode, cRow.nCode);
        EXPECT_STREQ(cExpected.m_szName, cRow.szName) << cExpected.m_nCode;
        EXPECT_STREQ(cExpected.m_szText, cRow.szDescription) << cExpected.m_nCode;
        EXPECT_EQ(&cRow, &GetVlmErrorInfo(cExpected.m_szName));
    }
}

TEST(ErrorCatalogue, VocabularyRowsAreFoundByNameWithATextOfTheirOwn)
{
    for (const ClNamed& cExpected : aNamed)
    {
        const ST_ErrorMapEntry& cRow = GetVlmErrorInfo(cExpected.m_szName);
        EXPECT_EQ(cExpected.m_nCode, cRow.nCode) << cExpected.m_szName;
        EXPECT_STREQ(cExpected.m_szName, cRow.szName);
        EXPECT_LT(0u, std::strlen(cRow.szDescription)) << cExpected.m_szName;
        EXPECT_EQ(cExpected.m_nCode, GetVlmErrorInfo(cExpected.m_nCode).nCode);
    }
}

TEST(ErrorCatalogue, HoldsTheseRowsAndNoOthers)
{
    std::set<std::string> aExpected, aNames(std::begin(aszCatalogueNames), std::end(aszCatalogueNames));
    for (const ClRaised& cRow : aRaised)
    {
        aExpected.insert(cRow.m_szName);
    }
    for (const ClNamed& cRow : aNamed)
    {
        aExpected.insert(cRow.m_szName);
    }
    EXPECT_EQ(aExpected, aNames);
    EXPECT_EQ(aExpected.size(), std::size(aszCatalogueNames)) << "a name stands twice";
}

TEST(ErrorCatalogue, NumberWithTwoRowsGivesTheFirstAndEitherName)
{
    EXPECT_STREQ("FPC_ERROR_CORRUPT_BYTECODE", GetVlmErrorInfo(-38).szName);
    EXPECT_STREQ("FPC_ERROR_CORRUPT_DATA", GetVlmErrorInfo(-39).szName);
    EXPECT_STREQ("FPC_ERROR_INVALID_PARAMETER", GetVlmErrorInfo(-44).szName);
    EXPECT_STREQ("FPC_ERROR_UNKNOWN_PARAMETER", GetVlmErrorInfo(-206).szName);
    EXPECT_EQ(-44, GetVlmErrorInfo("FPC_ERROR_PARAM_INVALID").nCode);
    EXPECT_EQ(-206, GetVlmErrorInfo(L"FPC_ERROR_PARAM_IS_UNKNOWN").nCode);
}

TEST(ErrorCatalogue, WideFormsSayTheSame)
{
    for (const char* szName : aszCatalogueNames)
    {
        const ST_ErrorMapEntry& cRow = GetVlmErrorInfo(szName);
        EXPECT_EQ(Widened(cRow.szDescription), cRow.wszDescription);
        EXPECT_EQ(Widened(szName), cRow.wszName);
        EXPECT_EQ(&cRow, &GetVlmErrorInfo(cRow.wszName));
        EXPECT_EQ(&cRow, &GetErrorInfoT<const char*>(szName));
        EXPECT_EQ(&cRow, &GetErrorInfoT<const wchar_t*>(cRow.wszName));
        EXPECT_EQ(&GetVlmErrorInfo(cRow.nCode), &GetErrorInfoT<long>(cRow.nCode));
        EXPECT_EQ(GetVlmErrorInfo(cRow.nCode).szDescription, GetErrorDescriptionIntern(cRow.nCode));
        EXPECT_EQ(GetVlmErrorInfo(cRow.nCode).wszDescription, GetErrorDescriptionInternW(cRow.nCode));
    }
}

TEST(ErrorCatalogue, WhatIsNotInItIsUnknown)
{
    for (const long nCode : {1l, -3l, -401l, -410l, -420l, -436l, -1000000l, 2147483647l, -2147483648l * 4})
    {
        ExpectUnknown(GetVlmErrorInfo(nCode));
        EXPECT_STREQ("Unknown error code.", GetErrorDescriptionIntern(nCode));
        EXPECT_STREQ(L"Unknown error code.", GetErrorDescriptionInternW(nCode));
    }
    ExpectUnknown(GetVlmErrorInfo("FPC_ERROR"));
    ExpectUnknown(GetVlmErrorInfo("fpc_success"));
    ExpectUnknown(GetVlmErrorInfo(""));
    ExpectUnknown(GetVlmErrorInfo(L"FPC_ERROR"));
    ExpectUnknown(GetVlmErrorInfo("FPC_ERROR_UNKOWN_ERROR_CODE"));
    ExpectUnknown(GetVlmErrorInfo(static_cast<const char*>(nullptr)));
    ExpectUnknown(GetVlmErrorInfo(static_cast<const wchar_t*>(nullptr)));
}

TEST(ErrorCatalogue, EachKindOfLookUpHasAnUnknownRowOfItsOwn)
{
    const ST_ErrorMapEntry* pNumber = &GetVlmErrorInfo(1);
    const ST_ErrorMapEntry* pName = &GetVlmErrorInfo("none");
    const ST_ErrorMapEntry* pWide = &GetVlmErrorInfo(L"none");
    EXPECT_NE(pNumber, pName);
    EXPECT_NE(pName, pWide);
    EXPECT_NE(pNumber, pWide);
}
} // namespace
