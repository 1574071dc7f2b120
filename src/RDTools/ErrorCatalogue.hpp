#pragma once

/// The error catalogue: every failure of the system carries one number from this single list, which also gives its
/// text and its symbolic name. The list is the shared vocabulary of a family of biometric components, so most rows are
/// never raised here. The table is not sorted; look-ups take the first match. Four numbers have two rows each, under
/// two names (-38, -39, -44, -206): the row that this system raises stands first.

// clang-format off
#define FPC_ERROR_CATALOGUE(X) \
    X(FPC_SUCCESS, 0, "No errors occurred.") \
    X(FPC_ERROR_INITIALIZED, -1, "Multiple initialization.") \
    X(FPC_ERROR_NOT_INITIALIZED, -2, "Prior initialization is necessary.") \
    X(FPC_ERROR_NO_CB_ONEND, -4, "The callback for the end of the operation is missing.") \
    X(FPC_ERROR_NO_CB_ONERROR, -5, "The callback for errors is missing.") \
    X(FPC_ERROR_CODING_LOGGED, -6, "A coding error occurred; see the log.") \
    X(FPC_ERROR_BITMAP_PTR, -10, "The input image is not valid.") \
    X(FPC_ERROR_BITMAP_PLANE, -11, "Number of image planes is invalid. (see documentation).") \
    X(FPC_ERROR_BITMAP_BITCOUNT, -12, "Pixel depth is invalid (see documentation).") \
    X(FPC_ERROR_BITMAP_PELS, -13, "Pels are not in a valid range (see documentation).") \
    X(FPC_ERROR_BITMAP_DIMENSION, -14, "The image is too small or too big.") \
    X(FPC_ERROR_BITMAP_NO_FINGER, -15, "No Finger found in the image.") \
    X(FPC_ERROR_INSUFFICIENT_MINUTIAE, -16, "The finger image does not hold enough minutiae.") \
    X(FPC_ERROR_UNSPECIFIED_WARNING, -17, "Unspecified warning.") \
    X(FPC_ERROR_TEMPLATE_PTR, -20, "The template is not valid.") \
    X(FPC_ERROR_TEMPLATE_SIZE, -21, "The size of the finger template is not valid.") \
    X(FPC_ERROR_TEMPLATE_PTRPTR, -22, "The pointer to the template pointer is not valid.") \
    X(FPC_ERROR_TEMPLATE_PTR_NULL, -23, "The template-pointer is not valid.") \
    X(FPC_ERROR_TEMPLATE_SIZE_PTR, -24, "Pointer to template-size is not valid.") \
    X(FPC_ERROR_TEMPLATE1_BAD, -25, "The first template is not valid.") \
    X(FPC_ERROR_TEMPLATE2_BAD, -26, "The second template is not valid.") \
    X(FPC_ERROR_ROTATIONS_RANGE, -27, "The range of rotations is not valid.") \
    X(FPC_ERROR_MATCHER_INIT, -28, "The matcher could not be initialized.") \
    X(FPC_ERROR_MATCHER_PARAMS, -29, "The parameters of the matcher are not valid.") \
    X(FPC_ERROR_IN_CB_FUNCTION, -30, "An error occurred in a callback function.") \
    X(FPC_ERROR_BITMAP_COMPRESSION, -31, "The compression FOCC is not supported.") \
    X(FPC_ERROR_BITMAP_HEADERSIZE, -32, "The header size of the Bitmap is unknown.") \
    X(FPC_ERROR_FORMAT_NOTSUPPORTED, -33, "The required format is not supported.") \
    X(FPC_ERROR_FORMAT_IS_TOO_NEW, -34, "The format is newer than this version supports.") \
    X(FPC_ERROR_PARAM_OUT_OF_RANGE, -35, "One of the parameters is out of range.") \
    X(FPC_ERROR_BITMAP_UNEXPECTED_FILEHEADER, -36, "Fileheader found but expected bitmapinfoheader.") \
    X(FPC_ERROR_PARAM_IS_MISSING, -37, "One of the required parameter is missing.") \
    X(FPC_ERROR_CORRUPT_BYTECODE, -38, "The input is corrupt can be a memoryblock or a file.") \
    X(FPC_ERROR_CURRUPT_BYTECODE, -38, "The input is corrupt can be a memoryblock or a file.") \
    X(FPC_ERROR_CORRUPT_DATA, -39, "The input is corrupt; it can be a memoryblock or a file.") \
    X(FPC_ERROR_CURRUPT_DATA, -39, "The input is corrupt; it can be a memoryblock or a file.") \
    X(FPC_ERROR_UNEXPECTED_SIGNATURE, -40, "The signature of the input is not the expected one.") \
    X(FPC_ERROR_PARAM_DIFFERES_IN_VALUES, -41, "A parameter is given more than once with different values.") \
    X(FPC_ERROR_NO_HANDLE, -42, "The handle parameter is set to NULL.") \
    X(FPC_ERROR_INVALID_HANDLE, -43, "The handle parameter is not a valid handle for that function.") \
    X(FPC_ERROR_INVALID_PARAMETER, -44, "One(or more) parameter(s) is(are) invalid.") \
    X(FPC_ERROR_PARAM_INVALID, -44, "One(or more) parameter(s) is(are) invalid.") \
    X(FPC_ERROR_INVALID_OPTIONS_SETTING, -45, "The setting of the options is not valid.") \
    X(FPC_ERROR_PARAM_VALUE_DUPLICATE, -46, "The given parameter is a duplicate of a previously given parameter.") \
    X(FPC_ERROR_PARAM_IS_READONLY, -47, "The requested parameter is read only.") \
    X(FPC_ERROR_PARAM_IS_WRITEONLY, -48, "The requested parameter is write only.") \
    X(FPC_ERROR_LOGGING, -49, "An error occurred in the log function, maybe log full.") \
    X(FPC_ERROR_INVALID_STATE, -50, "Function call is not possible in current state.") \
    X(FPC_ERROR_EMPTY_HANDLE, -51, "The handle holds no data yet.") \
    X(FPC_ERROR_DEVICE_DISCONNECTED, -60, "The device is disconnected.") \
    X(FPC_ERROR_DEVICE_OPEN_FAIL, -61, "Failed to open the device.") \
    X(FPC_ERROR_UNSPECIFIED_INTERNAL, -100, "Unspecified internal error.") \
    X(FPC_ERROR_INTERNAL, -101, "Internal error.") \
    X(FPC_ERROR_OUT_OF_MEMORY, -102, "Memory allocation failed or given mem-block too small.") \
    X(FPC_ERROR_UNSUPPORTED_FEATURE, -103, "The feature is currently not supported.") \
    X(FPC_FATAL_ERROR_TERMINATION_NECESSARY, -104, "A fatal error occurred; the process has to be terminated.") \
    X(FPC_ERROR_FROM_SYSTEM_FUNCTION, -105, "A error has occurred in a system function call. use the system errorfunction to get more info.") \
    X(FPC_ERROR_NOT_IMPLEMENTED, -106, "The function is not available.") \
    X(FPC_ERROR_FILE_OPEN_FAIL, -200, "Failed to open the specified file.") \
    X(FPC_ERROR_UNEXPECTED_EOF, -201, "Unexpected end of file.") \
    X(FPC_ERROR_WRITE_FAIL, -202, "Failed to write the data.") \
    X(FPC_ERROR_READ_FAIL, -203, "Failed to read the data.") \
    X(FPC_ERROR_IO, -204, "Unspecified I/O error.") \
    X(FPC_ERROR_PATH_PTR_NULL, -205, "The pointer to the path is NULL.") \
    X(FPC_ERROR_UNKNOWN_PARAMETER, -206, "A given parameter is unknown.") \
    X(FPC_ERROR_PARAM_IS_UNKNOWN, -206, "A given parameter is unknown.") \
    X(FPC_ERROR_UNKNOWN_CODEC, -207, "The image codec is unknown.") \
    X(FPC_ERROR_VALUE_EXPECTED, -208, "A value for the parameter is expected.") \
    X(FPC_ERROR_VALUE_WRONG, -209, "The value for the parameter is out of range.") \
    X(FPC_ERROR_BMP_NO_SIGNATURE, -210, "No BMP signature found.") \
    X(FPC_ERROR_BMP_FAILURE, -211, "The BMP codec failed.") \
    X(FPC_ERROR_JPEG_NO_SIGNATURE, -220, "No JPEG signature found.") \
    X(FPC_ERROR_JPEG_FAILURE, -221, "The JPEG codec failed.") \
    X(FPC_ERROR_JPEG_WRONG_COLORSPACE, -222, "The color space of the JPEG image is not supported.") \
    X(FPC_ERROR_JPEG_QUALITY_OUTOFRANGE, -223, "The JPEG quality is out of range.") \
    X(FPC_ERROR_JPEG_SMOOTHING_OUTOFRANGE, -224, "The JPEG smoothing is out of range.") \
    X(FPC_ERROR_PNG_NO_SIGNATURE, -230, "No PNG signature found.") \
    X(FPC_ERROR_PNG_FAILURE, -231, "The PNG codec failed.") \
    X(FPC_ERROR_TIFF_NO_SIGNATURE, -240, "No TIFF signature found.") \
    X(FPC_ERROR_TIFF_FAILURE, -241, "The TIFF codec failed.") \
    X(FPC_ERROR_TIFF_WRONG_COLORSPACE, -242, "The color space of the TIFF image is not supported.") \
    X(FPC_ERROR_TIFF_QUALITY_OUTOFRANGE, -243, "The TIFF quality is out of range.") \
    X(FPC_ERROR_TIFF_PREDICTOR_OUTOFRANGE, -244, "The TIFF predictor is out of range.") \
    X(FPC_ERROR_TIFF_COMPRESSMODE_UNKNOWN, -245, "The TIFF compression mode is unknown.") \
    X(FPC_ERROR_WSQ_NO_CODEC, -250, "The WSQ codec is not available.") \
    X(FPC_ERROR_WSQ_FAILURE, -251, "The WSQ codec failed.") \
    X(FPC_ERROR_WSQ_WRONG_VERSION, -252, "The version of the WSQ codec is wrong.") \
    X(FPC_ERROR_WSQ_GRAYSCALE_ONLY, -253, "The WSQ codec supports grayscale images only.") \
    X(FPC_ERROR_WSQ_RATIO_OUTOFRANGE, -254, "The WSQ compression ratio is out of range.") \
    X(FPC_ERROR_WSQ_CURRUPT_DATA, -255, "The WSQ data is corrupt.") \
    X(FPC_ERROR_LURA_NO_CODEC, -260, "The LURA codec is not available.") \
    X(FPC_ERROR_LURA_NO_SIGNATURE, -261, "No LURA signature found.") \
    X(FPC_ERROR_LURA_FAILURE, -262, "The LURA codec failed.") \
    X(FPC_ERROR_LURA_WRONG_COLORSPACE, -263, "The color space of the LURA image is not supported.") \
    X(FPC_ERROR_JPEG2000_UNSUPORTED, -270, "The JPEG 2000 feature is not supported.") \
    X(FPC_ERROR_JPEG2000_NO_SIGNATURE, -271, "No JPEG 2000 signature found.") \
    X(FPC_ERROR_JPEG2000_FAILURE, -272, "The JPEG 2000 codec failed.") \
    X(FPC_ERROR_JPEG2000_PARAMETER, -273, "A JPEG 2000 parameter is not valid.") \
    X(FPC_ERROR_JPEG2000_WRONG_COLORSPACE, -274, "The color space of the JPEG 2000 image is not supported.") \
    X(FPC_ERROR_ONCARDMATCHING_NOT_A_FINGER_BIT, -301, "The biometric information template does not describe a finger.") \
    X(FPC_ERROR_ONCARDMATCHING_FORMAT_OWNER_MISSING, -302, "The format owner is missing in the biometric information template.") \
    X(FPC_ERROR_ONCARDMATCHING_FORMAT_TYPE_MISSING, -303, "The format type is missing in the biometric information template.") \
    X(FPC_ERROR_ONCARDMATCHING_OID_MISSING, -304, "The object identifier is missing in the biometric information template.") \
    X(FPC_ERROR_ONCARDMATCHING_OID_UNKNOWN, -305, "The object identifier of the biometric information template is unknown.") \
    X(FPC_ERROR_ONCARDMATCHING_FORMAT_IS_NOT_SUPPORTED, -306, "The format of the biometric information template is not supported.") \
    X(FPC_ERROR_ONCARDMATCHING_TAG_UNKNOWN, -307, "A tag of the biometric information template is unknown.") \
    X(FPC_ERROR_ADVANCEDIMAGING_COMMAND_UNKNOWN, -501, "The imaging script holds an unknown command.") \
    X(FPC_ERROR_ADVANCEDIMAGING_IMAGE_UNKNOWN, -502, "The imaging script names an unknown image.") \
    X(FPC_ERROR_ADVANCEDIMAGING_PARAMETERS, -503, "The parameters of an imaging command are not valid.") \
    X(FPC_ERROR_ADVANCEDIMAGING_PROCESSING, -504, "An imaging command failed.") \
    X(FPC_ERROR_ADVANCEDIMAGING_READSCRIPT, -505, "Failed to read the imaging script.") \
    X(FPC_ERROR_ADVANCEDIMAGING_SCRIPTCONTENT, -506, "The content of the imaging script is not valid.") \
    X(FPC_ERROR_CALIBRATE_FAILED_TO_GENERATE, -600, "Failed to generate the calibration.") \
    X(FPC_ERROR_BAD_POINTER, -701, "The pointer is bad or invalid.") \
    X(FPC_ERROR_SIZE_TOO_SMALL, -702, "The given size is too small.") \
    X(FPC_ERROR_BAD_FINGER_NUMBER, -703, "The finger number is not valid.") \
    X(FPC_ERROR_BAD_CAST, -704, "A value could not be converted to the required type.") \
    X(FPC_ERROR_BAD_POINTER_ALIGN4, -705, "The pointer is not aligned to 4 bytes.") \
    X(FPC_ERROR_BAD_POINTER_ALIGN8, -706, "The pointer is not aligned to 8 bytes.") \
    X(FPC_ERROR_BAD_POINTER_ALIGN16, -707, "The pointer is not aligned to 16 bytes.") \
    X(FPC_ERROR_LATENT_FINGERPOSITION_ALREADY_SET, -710, "The finger position of the latent is already set.") \
    X(FPC_ERROR_LATENT_FINGERPOSITION_NOT_FOUND, -711, "The finger position of the latent was not found.") \
    X(FPC_ERROR_NO_ENTRY_FOR_GIVEN_CELL, -720, "There is no entry for the given cell.") \
    X(FPC_ERROR_STD_EXCEPTION, -721, "An exception of the standard library occurred.") \
    X(FPC_ERROR_UNKNOWN_EXCEPTION, -722, "An unknown exception occurred.") \
    X(FPC_ERROR_NO_LATENT_FINGER_GIVEN_FOR_LATENT_MATCHING, -723, "No latent finger is given for latent matching.") \
    X(FPC_ERROR_LD_FINGERPRINT_TOO_SMALL, -768, "The fingerprint is too small.") \
    X(FPC_ERROR_LD_NO_FINGERPRINT_IN_LOWER_AREA, -769, "There is no fingerprint in the lower area.") \
    X(FPC_ERROR_LD_FINGER_PLACED_SKEWLY, -770, "The finger is placed skewly.") \
    X(FPC_ERROR_LD_VIDEO_FRAME_INFO_ID_INVALID, -798, "The identifier of the video frame information is not valid.") \
    X(FPC_ERROR_LD_ILLUMINATION_TOO_HIGH, -799, "The illumination is too high.") \
    X(FPC_ERROR_ROLLED_SHIFTED, -801, "The finger was shifted while it was rolled.") \
    X(FPC_ERROR_ROLLED_TOO_FAST, -802, "The finger was rolled too fast.") \
    X(FPC_ERROR_ROLLED_BACKROLL, -803, "The finger was rolled back.") \
    X(FPC_ERROR_ROLLED_ROTATED, -804, "The finger was rotated while it was rolled.") \
    X(FPC_ERROR_ROLLED_SIZE_TOO_SMALL, -805, "The rolled fingerprint is too small.") \
    X(FPC_ERROR_ICAO_NO_RESULT_IMAGE_AVAILABLE, -817, "No result image is available.") \
    X(FPC_ERROR_ICAO_NO_FACE_POINTS_AVAILABLE, -818, "No face points are available.") \
    X(FPC_ERROR_ICAO_INTERNAL_IMAGE_NULL, -819, "The portrait check was given no image.") \
    X(FPC_ERROR_ICAO_INTERNAL_VALUE_OUT_OF_RANGE, -820, "A value of the portrait check is out of range.") \
    X(FPC_ERROR_ICAO_INTERNAL_DEPENDENCY_LOAD_FAILED, -821, "A component of the portrait check could not be loaded.")
// clang-format on

// The public header gives applications the same constants; whichever header comes first defines them.
#ifndef FPC_ERROR_CODES_DEFINED
#define FPC_ERROR_CODES_DEFINED
#define FPC_CATALOGUE_CONSTANT(name, code, text) name = code,
enum
{
    FPC_ERROR_CATALOGUE(FPC_CATALOGUE_CONSTANT)
};
#undef FPC_CATALOGUE_CONSTANT
#endif

/// One row of the catalogue.
struct ST_ErrorMapEntry
{
    long nCode;                    ///< 0 for success, negative for errors, 2147483647 for a number out of the catalogue
    const char* szDescription;     ///< text for people
    const wchar_t* wszDescription; ///< the same text, wide
    const char* szName;            ///< the constant's name
    const wchar_t* wszName;        ///< the same name, wide
};

/// Row of a number (long), of a name (const char*) or of a wide name (const wchar_t*). Never fails: what is not in the
/// catalogue gives the row "Unknown error code." with the number 2147483647.
template <class Key> const ST_ErrorMapEntry& GetErrorInfoT(Key key);

const ST_ErrorMapEntry& GetVlmErrorInfo(long nCode);
const ST_ErrorMapEntry& GetVlmErrorInfo(const char* szName);
const ST_ErrorMapEntry& GetVlmErrorInfo(const wchar_t* wszName);

/// Text of a number; "Unknown error code." for a number out of the catalogue.
const char* GetErrorDescriptionIntern(long nCode);
const wchar_t* GetErrorDescriptionInternW(long nCode);
