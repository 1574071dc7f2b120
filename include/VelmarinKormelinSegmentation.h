/*
 * Velmarin Kormelin Segmentation: cuts an image of several fingers that lie on a scanner at the same time (a slap
 * image) into single fingers, a rectangle in the input and a bitmap for each. Plain C (C99) and C++.
 *
 * A run
 *     KSInitialize                    once or more; the calls count
 *     KSCreateSegmentationHandle      the object that runs, and keeps the results of its last run
 *     KSCreateSegmentHandle           a container for one finger; as many as are to be held at the same time
 *     KSSetPropertyLongA              "SegmentationMode", "CoordinateOrigin", if the defaults do not fit
 *     KSSegmentBitmap                 the run
 *     KSGetPropertyLongA              "Count" of the segmentation handle
 *     KSGetSegment                    for each index below "Count", into a segment handle
 *     KSGetPropertyLongA              "x", "y", "Width", "Height" of the segment handle
 *     KSGetBitmap                     twice: first for the size, then for the bitmap
 *     KSDestroyHandle                 each handle
 *     KSUninitialize                  as often as KSInitialize succeeded
 *
 * Results
 *     Every function but KSGetErrorDescriptionA returns FPC_SUCCESS (0) or a negative number of the catalogue below.
 *     Tests run in the order in which they are told; the first that fails ends the call.
 *     FPC_ERROR_OUT_OF_MEMORY (-102) can come from any function that allocates, and is told here only.
 *
 * Coordinates
 *     Pixels. The rows of a bitmap run bottom-up: row 0 is the first row in memory and the bottom line of the picture,
 *     and y grows towards the finger tips. A segment covers the columns "x" to "x" + "Width" - 1 and "Height" rows.
 *     "CoordinateOrigin" of the segmentation handle says which y KSGetSegment reports:
 *         0   the lower edge of the segment, counted upward from row 0 of the bitmap;
 *         1   its upper edge, counted downward from the top of the picture: image height minus the upper edge counted
 *             upward. The top row of the picture then has y 0.
 *     It is read by KSGetSegment, so that it may be set before or after the run.
 *
 * Resolutions are pels per metre: 19685 is 500 pixels per inch, 3937 is 100.
 *
 * Properties, by name; letter case does not matter
 *     both kinds      "Version"            text, read only
 *     segmentation    "Count"              int, read only: segments of the last run, 0 before the first
 *                     "CoordinateOrigin"   long 0 or 1, default 0
 *                     "SegmentationMode"   long 0 or 1, default 0. 0: finds the fingers, at most two. 1: cuts out the
 *                                          biggest connected object, whatever it is, as the one segment
 *     segment         "x", "y", "Height", "Width"   int, read only: the rectangle in the input, in pixels
 *                     "FingerPosition"              int, read only: 0 always
 *
 * Text results: the caller gives a buffer and its size in bytes, terminator included. The needed size always comes
 * back; too small a size is FPC_ERROR_TEMPLATE_SIZE (-21).
 *
 * Threads: different handles may be used on different threads at the same time, one handle on one thread at a time.
 * KSInitialize and KSUninitialize are serialised. No other function waits for another thread.
 *
 * Log: calls and errors are written to standard output if the environment variable VELMARIN_SDK_LOG is exactly "1"
 * when the library is loaded. VELMARIN_SDK_LOG_LEVEL (0 to 7, default 7) limits the lines: 3 writes errors only.
 */
#ifndef VELMARINKORMELINSEGMENTATION_H
#define VELMARINKORMELINSEGMENTATION_H

#include <stdint.h>

#define KS_VERSION_MAIN 1
#define KS_VERSION_INTERFACE 1
#define KS_VERSION_RELEASE 1407
#define KS_VERSION_BUGFIX 3
#define KS_VERSION_TEXT "1.1.1407.3" /* what KSGetVersionA gives, if library and header belong together */

#if defined(__GNUC__)
#define KS_API __attribute__((visibility("default")))
#else
#define KS_API
#endif

#ifndef KS_BITMAPINFOHEADER_DEFINED
#define KS_BITMAPINFOHEADER_DEFINED
/* Header of a device-independent bitmap, 40 bytes, little-endian. Colour table and pixels follow in the same block.
   A row of pixels takes biWidth * biBitCount bits, rounded up to a multiple of 4 bytes. */
#pragma pack(push, 1)
struct tagBITMAPINFOHEADER
{
    uint32_t biSize;         /* 40 */
    int32_t biWidth;         /* pixels in a row */
    int32_t biHeight;        /* rows; positive: bottom-up */
    uint16_t biPlanes;       /* 1 */
    uint16_t biBitCount;     /* bits of a pixel */
    uint32_t biCompression;  /* 0: plain pixels */
    uint32_t biSizeImage;    /* bytes of pixels */
    int32_t biXPelsPerMeter; /* horizontal resolution, pels per metre */
    int32_t biYPelsPerMeter; /* vertical resolution, pels per metre */
    uint32_t biClrUsed;      /* colour-table entries of 4 bytes, 0: all of the depth */
    uint32_t biClrImportant;
};
#pragma pack(pop)
#endif

#ifndef FPC_ERROR_CODES_DEFINED
#define FPC_ERROR_CODES_DEFINED
/* The error catalogue, shared by a family of biometric components: most of its numbers do not occur here. Four numbers
   have two names (-38, -39, -44, -206). KSGetErrorDescriptionA gives the texts. */
enum
{
    FPC_SUCCESS = 0,                              /* No errors occurred. */
    FPC_ERROR_INITIALIZED = -1,                   /* Multiple initialization. */
    FPC_ERROR_NOT_INITIALIZED = -2,               /* Prior initialization is necessary. */
    FPC_ERROR_NO_CB_ONEND = -4,                   /* The callback for the end of the operation is missing. */
    FPC_ERROR_NO_CB_ONERROR = -5,                 /* The callback for errors is missing. */
    FPC_ERROR_CODING_LOGGED = -6,                 /* A coding error occurred; see the log. */
    FPC_ERROR_BITMAP_PTR = -10,                   /* The input image is not valid. */
    FPC_ERROR_BITMAP_PLANE = -11,                 /* Number of image planes is invalid. (see documentation). */
    FPC_ERROR_BITMAP_BITCOUNT = -12,              /* Pixel depth is invalid (see documentation). */
    FPC_ERROR_BITMAP_PELS = -13,                  /* Pels are not in a valid range (see documentation). */
    FPC_ERROR_BITMAP_DIMENSION = -14,             /* The image is too small or too big. */
    FPC_ERROR_BITMAP_NO_FINGER = -15,             /* No Finger found in the image. */
    FPC_ERROR_INSUFFICIENT_MINUTIAE = -16,        /* The finger image does not hold enough minutiae. */
    FPC_ERROR_UNSPECIFIED_WARNING = -17,          /* Unspecified warning. */
    FPC_ERROR_TEMPLATE_PTR = -20,                 /* The template is not valid. */
    FPC_ERROR_TEMPLATE_SIZE = -21,                /* The size of the finger template is not valid. */
    FPC_ERROR_TEMPLATE_PTRPTR = -22,              /* The pointer to the template pointer is not valid. */
    FPC_ERROR_TEMPLATE_PTR_NULL = -23,            /* The template-pointer is not valid. */
    FPC_ERROR_TEMPLATE_SIZE_PTR = -24,            /* Pointer to template-size is not valid. */
    FPC_ERROR_TEMPLATE1_BAD = -25,                /* The first template is not valid. */
    FPC_ERROR_TEMPLATE2_BAD = -26,                /* The second template is not valid. */
    FPC_ERROR_ROTATIONS_RANGE = -27,              /* The range of rotations is not valid. */
    FPC_ERROR_MATCHER_INIT = -28,                 /* The matcher could not be initialized. */
    FPC_ERROR_MATCHER_PARAMS = -29,               /* The parameters of the matcher are not valid. */
    FPC_ERROR_IN_CB_FUNCTION = -30,               /* An error occurred in a callback function. */
    FPC_ERROR_BITMAP_COMPRESSION = -31,           /* The compression FOCC is not supported. */
    FPC_ERROR_BITMAP_HEADERSIZE = -32,            /* The header size of the Bitmap is unknown. */
    FPC_ERROR_FORMAT_NOTSUPPORTED = -33,          /* The required format is not supported. */
    FPC_ERROR_FORMAT_IS_TOO_NEW = -34,            /* The format is newer than this version supports. */
    FPC_ERROR_PARAM_OUT_OF_RANGE = -35,           /* One of the parameters is out of range. */
    FPC_ERROR_BITMAP_UNEXPECTED_FILEHEADER = -36, /* Fileheader found but expected bitmapinfoheader. */
    FPC_ERROR_PARAM_IS_MISSING = -37,             /* One of the required parameter is missing. */
    FPC_ERROR_CORRUPT_BYTECODE = -38,             /* The input is corrupt can be a memoryblock or a file. */
    FPC_ERROR_CURRUPT_BYTECODE = -38,             /* The input is corrupt can be a memoryblock or a file. */
    FPC_ERROR_CORRUPT_DATA = -39,                 /* The input is corrupt; it can be a memoryblock or a file. */
    FPC_ERROR_CURRUPT_DATA = -39,                 /* The input is corrupt; it can be a memoryblock or a file. */
    FPC_ERROR_UNEXPECTED_SIGNATURE = -40,         /* The signature of the input is not the expected one. */
    FPC_ERROR_PARAM_DIFFERES_IN_VALUES = -41,     /* A parameter is given more than once with different values. */
    FPC_ERROR_NO_HANDLE = -42,                    /* The handle parameter is set to NULL. */
    FPC_ERROR_INVALID_HANDLE = -43,               /* The handle parameter is not a valid handle for that function. */
    FPC_ERROR_INVALID_PARAMETER = -44,            /* One(or more) parameter(s) is(are) invalid. */
    FPC_ERROR_PARAM_INVALID = -44,                /* One(or more) parameter(s) is(are) invalid. */
    FPC_ERROR_INVALID_OPTIONS_SETTING = -45,      /* The setting of the options is not valid. */
    FPC_ERROR_PARAM_VALUE_DUPLICATE = -46, /* The given parameter is a duplicate of a previously given parameter. */
    FPC_ERROR_PARAM_IS_READONLY = -47,     /* The requested parameter is read only. */
    FPC_ERROR_PARAM_IS_WRITEONLY = -48,    /* The requested parameter is write only. */
    FPC_ERROR_LOGGING = -49,               /* An error occurred in the log function, maybe log full. */
    FPC_ERROR_INVALID_STATE = -50,         /* Function call is not possible in current state. */
    FPC_ERROR_EMPTY_HANDLE = -51,          /* The handle holds no data yet. */
    FPC_ERROR_DEVICE_DISCONNECTED = -60,   /* The device is disconnected. */
    FPC_ERROR_DEVICE_OPEN_FAIL = -61,      /* Failed to open the device. */
    FPC_ERROR_UNSPECIFIED_INTERNAL = -100, /* Unspecified internal error. */
    FPC_ERROR_INTERNAL = -101,             /* Internal error. */
    FPC_ERROR_OUT_OF_MEMORY = -102,        /* Memory allocation failed or given mem-block too small. */
    FPC_ERROR_UNSUPPORTED_FEATURE = -103,  /* The feature is currently not supported. */
    FPC_FATAL_ERROR_TERMINATION_NECESSARY = -104, /* A fatal error occurred; the process has to be terminated. */
    /* A error has occurred in a system function call. use the system errorfunction to get more info. */
    FPC_ERROR_FROM_SYSTEM_FUNCTION = -105,
    FPC_ERROR_NOT_IMPLEMENTED = -106,           /* The function is not available. */
    FPC_ERROR_FILE_OPEN_FAIL = -200,            /* Failed to open the specified file. */
    FPC_ERROR_UNEXPECTED_EOF = -201,            /* Unexpected end of file. */
    FPC_ERROR_WRITE_FAIL = -202,                /* Failed to write the data. */
    FPC_ERROR_READ_FAIL = -203,                 /* Failed to read the data. */
    FPC_ERROR_IO = -204,                        /* Unspecified I/O error. */
    FPC_ERROR_PATH_PTR_NULL = -205,             /* The pointer to the path is NULL. */
    FPC_ERROR_UNKNOWN_PARAMETER = -206,         /* A given parameter is unknown. */
    FPC_ERROR_PARAM_IS_UNKNOWN = -206,          /* A given parameter is unknown. */
    FPC_ERROR_UNKNOWN_CODEC = -207,             /* The image codec is unknown. */
    FPC_ERROR_VALUE_EXPECTED = -208,            /* A value for the parameter is expected. */
    FPC_ERROR_VALUE_WRONG = -209,               /* The value for the parameter is out of range. */
    FPC_ERROR_BMP_NO_SIGNATURE = -210,          /* No BMP signature found. */
    FPC_ERROR_BMP_FAILURE = -211,               /* The BMP codec failed. */
    FPC_ERROR_JPEG_NO_SIGNATURE = -220,         /* No JPEG signature found. */
    FPC_ERROR_JPEG_FAILURE = -221,              /* The JPEG codec failed. */
    FPC_ERROR_JPEG_WRONG_COLORSPACE = -222,     /* The color space of the JPEG image is not supported. */
    FPC_ERROR_JPEG_QUALITY_OUTOFRANGE = -223,   /* The JPEG quality is out of range. */
    FPC_ERROR_JPEG_SMOOTHING_OUTOFRANGE = -224, /* The JPEG smoothing is out of range. */
    FPC_ERROR_PNG_NO_SIGNATURE = -230,          /* No PNG signature found. */
    FPC_ERROR_PNG_FAILURE = -231,               /* The PNG codec failed. */
    FPC_ERROR_TIFF_NO_SIGNATURE = -240,         /* No TIFF signature found. */
    FPC_ERROR_TIFF_FAILURE = -241,              /* The TIFF codec failed. */
    FPC_ERROR_TIFF_WRONG_COLORSPACE = -242,     /* The color space of the TIFF image is not supported. */
    FPC_ERROR_TIFF_QUALITY_OUTOFRANGE = -243,   /* The TIFF quality is out of range. */
    FPC_ERROR_TIFF_PREDICTOR_OUTOFRANGE = -244, /* The TIFF predictor is out of range. */
    FPC_ERROR_TIFF_COMPRESSMODE_UNKNOWN = -245, /* The TIFF compression mode is unknown. */
    FPC_ERROR_WSQ_NO_CODEC = -250,              /* The WSQ codec is not available. */
    FPC_ERROR_WSQ_FAILURE = -251,               /* The WSQ codec failed. */
    FPC_ERROR_WSQ_WRONG_VERSION = -252,         /* The version of the WSQ codec is wrong. */
    FPC_ERROR_WSQ_GRAYSCALE_ONLY = -253,        /* The WSQ codec supports grayscale images only. */
    FPC_ERROR_WSQ_RATIO_OUTOFRANGE = -254,      /* The WSQ compression ratio is out of range. */
    FPC_ERROR_WSQ_CURRUPT_DATA = -255,          /* The WSQ data is corrupt. */
    FPC_ERROR_LURA_NO_CODEC = -260,             /* The LURA codec is not available. */
    FPC_ERROR_LURA_NO_SIGNATURE = -261,         /* No LURA signature found. */
    FPC_ERROR_LURA_FAILURE = -262,              /* The LURA codec failed. */
    FPC_ERROR_LURA_WRONG_COLORSPACE = -263,     /* The color space of the LURA image is not supported. */
    FPC_ERROR_JPEG2000_UNSUPORTED = -270,       /* The JPEG 2000 feature is not supported. */
    FPC_ERROR_JPEG2000_NO_SIGNATURE = -271,     /* No JPEG 2000 signature found. */
    FPC_ERROR_JPEG2000_FAILURE = -272,          /* The JPEG 2000 codec failed. */
    FPC_ERROR_JPEG2000_PARAMETER = -273,        /* A JPEG 2000 parameter is not valid. */
    FPC_ERROR_JPEG2000_WRONG_COLORSPACE = -274, /* The color space of the JPEG 2000 image is not supported. */
    /* The biometric information template does not describe a finger. */
    FPC_ERROR_ONCARDMATCHING_NOT_A_FINGER_BIT = -301,
    /* The format owner is missing in the biometric information template. */
    FPC_ERROR_ONCARDMATCHING_FORMAT_OWNER_MISSING = -302,
    /* The format type is missing in the biometric information template. */
    FPC_ERROR_ONCARDMATCHING_FORMAT_TYPE_MISSING = -303,
    /* The object identifier is missing in the biometric information template. */
    FPC_ERROR_ONCARDMATCHING_OID_MISSING = -304,
    /* The object identifier of the biometric information template is unknown. */
    FPC_ERROR_ONCARDMATCHING_OID_UNKNOWN = -305,
    /* The format of the biometric information template is not supported. */
    FPC_ERROR_ONCARDMATCHING_FORMAT_IS_NOT_SUPPORTED = -306,
    FPC_ERROR_ONCARDMATCHING_TAG_UNKNOWN = -307,        /* A tag of the biometric information template is unknown. */
    FPC_ERROR_ADVANCEDIMAGING_COMMAND_UNKNOWN = -501,   /* The imaging script holds an unknown command. */
    FPC_ERROR_ADVANCEDIMAGING_IMAGE_UNKNOWN = -502,     /* The imaging script names an unknown image. */
    FPC_ERROR_ADVANCEDIMAGING_PARAMETERS = -503,        /* The parameters of an imaging command are not valid. */
    FPC_ERROR_ADVANCEDIMAGING_PROCESSING = -504,        /* An imaging command failed. */
    FPC_ERROR_ADVANCEDIMAGING_READSCRIPT = -505,        /* Failed to read the imaging script. */
    FPC_ERROR_ADVANCEDIMAGING_SCRIPTCONTENT = -506,     /* The content of the imaging script is not valid. */
    FPC_ERROR_CALIBRATE_FAILED_TO_GENERATE = -600,      /* Failed to generate the calibration. */
    FPC_ERROR_BAD_POINTER = -701,                       /* The pointer is bad or invalid. */
    FPC_ERROR_SIZE_TOO_SMALL = -702,                    /* The given size is too small. */
    FPC_ERROR_BAD_FINGER_NUMBER = -703,                 /* The finger number is not valid. */
    FPC_ERROR_BAD_CAST = -704,                          /* A value could not be converted to the required type. */
    FPC_ERROR_BAD_POINTER_ALIGN4 = -705,                /* The pointer is not aligned to 4 bytes. */
    FPC_ERROR_BAD_POINTER_ALIGN8 = -706,                /* The pointer is not aligned to 8 bytes. */
    FPC_ERROR_BAD_POINTER_ALIGN16 = -707,               /* The pointer is not aligned to 16 bytes. */
    FPC_ERROR_LATENT_FINGERPOSITION_ALREADY_SET = -710, /* The finger position of the latent is already set. */
    FPC_ERROR_LATENT_FINGERPOSITION_NOT_FOUND = -711,   /* The finger position of the latent was not found. */
    FPC_ERROR_NO_ENTRY_FOR_GIVEN_CELL = -720,           /* There is no entry for the given cell. */
    FPC_ERROR_STD_EXCEPTION = -721,                     /* An exception of the standard library occurred. */
    FPC_ERROR_UNKNOWN_EXCEPTION = -722,                 /* An unknown exception occurred. */
    FPC_ERROR_NO_LATENT_FINGER_GIVEN_FOR_LATENT_MATCHING = -723, /* No latent finger is given for latent matching. */
    FPC_ERROR_LD_FINGERPRINT_TOO_SMALL = -768,                   /* The fingerprint is too small. */
    FPC_ERROR_LD_NO_FINGERPRINT_IN_LOWER_AREA = -769,            /* There is no fingerprint in the lower area. */
    FPC_ERROR_LD_FINGER_PLACED_SKEWLY = -770,                    /* The finger is placed skewly. */
    FPC_ERROR_LD_VIDEO_FRAME_INFO_ID_INVALID = -798,   /* The identifier of the video frame information is not valid. */
    FPC_ERROR_LD_ILLUMINATION_TOO_HIGH = -799,         /* The illumination is too high. */
    FPC_ERROR_ROLLED_SHIFTED = -801,                   /* The finger was shifted while it was rolled. */
    FPC_ERROR_ROLLED_TOO_FAST = -802,                  /* The finger was rolled too fast. */
    FPC_ERROR_ROLLED_BACKROLL = -803,                  /* The finger was rolled back. */
    FPC_ERROR_ROLLED_ROTATED = -804,                   /* The finger was rotated while it was rolled. */
    FPC_ERROR_ROLLED_SIZE_TOO_SMALL = -805,            /* The rolled fingerprint is too small. */
    FPC_ERROR_ICAO_NO_RESULT_IMAGE_AVAILABLE = -817,   /* No result image is available. */
    FPC_ERROR_ICAO_NO_FACE_POINTS_AVAILABLE = -818,    /* No face points are available. */
    FPC_ERROR_ICAO_INTERNAL_IMAGE_NULL = -819,         /* The portrait check was given no image. */
    FPC_ERROR_ICAO_INTERNAL_VALUE_OUT_OF_RANGE = -820, /* A value of the portrait check is out of range. */
    FPC_ERROR_ICAO_INTERNAL_DEPENDENCY_LOAD_FAILED = -821 /* A component of the portrait check could not be loaded. */
};
#endif

#ifdef __cplusplus
class ClClassCallProfile;
class ClProfileTimer;
#else
typedef struct tagBITMAPINFOHEADER tagBITMAPINFOHEADER;
typedef struct ClClassCallProfile ClClassCallProfile;
typedef struct ClProfileTimer ClProfileTimer;
#endif

/* Null, and never written by the library. A C++ program may set them before it calls; leave the profile null where runs
   take place on several threads. The object pointed to begins, as every object with virtual functions, with the address
   of its table of functions:
       class ClProfileTimer
       {
       public:
           virtual void TimerStart(const char* szFormat, ...);   // szFormat is null when a processor starts
           virtual void TimerStop(const char* szFormat, ...);    // printf-style: name and settings of the processor
           virtual ~ClProfileTimer();
       };
   ClClassCallProfile counts runs and seconds of each class of processors; it is for programs that are built with the
   sources of the library. */
extern KS_API ClClassCallProfile* g_pClassCallProfile;
extern KS_API ClProfileTimer* g_pProfileTimer;

/* clang-format off */
#ifdef __cplusplus
extern "C" {
#endif

/* ---- The library ---- */

/* Makes the library ready for the creation of handles and adds a reference; a repeated call is no error.
   szParameter: not used, may be null.
   Returns 0. */
KS_API long KSInitialize(const char* szParameter);

/* Takes one reference back. Handles stay usable after the last one, until they are destroyed.
   Returns 0; FPC_ERROR_NOT_INITIALIZED (-2), and nothing changes, if there is no reference. */
KS_API long KSUninitialize(void);

/* The version of the library, "1.1.1407.3". Works without initialisation.
   pszVersion: buffer, or null to measure. pnSize: in: its size in bytes; out: the size needed, terminator included.
   Returns, in order of the tests:
   FPC_ERROR_TEMPLATE_SIZE_PTR (-24)   pnSize is null
   FPC_ERROR_TEMPLATE_SIZE (-21)       *pnSize was too small; it now holds the size needed, the buffer is untouched */
KS_API long KSGetVersionA(char* pszVersion, unsigned long* pnSize);

/* The text of a number that a function returned, for people; "Unknown error code." for a number out of the catalogue.
   Works without initialisation and never fails. The text is constant and lives as long as the library. */
KS_API const char* KSGetErrorDescriptionA(long nError);

/* ---- Handles ---- */

/* Makes a segmentation handle, with no segments and all properties at their defaults.
   phHandle: receives the handle, which KSDestroyHandle frees.
   Returns, in order of the tests:
   FPC_ERROR_NOT_INITIALIZED (-2)   KSInitialize comes first; *phHandle is untouched
   FPC_ERROR_BAD_POINTER (-701)     phHandle is null
   On a later failure *phHandle is null. */
KS_API long KSCreateSegmentationHandle(void** phHandle);

/* Makes a segment handle, empty until KSGetSegment fills it. Argument and results: see KSCreateSegmentationHandle. */
KS_API long KSCreateSegmentHandle(void** phHandle);

/* Frees a handle of either kind and sets *phHandle to null. Copies of the handle must not be used any more.
   Returns, in order of the tests:
   FPC_ERROR_INVALID_PARAMETER (-44)   phHandle is null
   FPC_ERROR_NO_HANDLE (-42)           *phHandle is null
   FPC_ERROR_INVALID_HANDLE (-43)      *phHandle is no handle; it stays as it is */
KS_API long KSDestroyHandle(void** phHandle);

/* ---- Properties of a handle of either kind ----
   The results of all six functions begin with these tests, in this order:
   FPC_ERROR_NO_HANDLE (-42)           handle is null
   FPC_ERROR_INVALID_HANDLE (-43)      handle is no handle
   FPC_ERROR_INVALID_PARAMETER (-44)   szName is null
   FPC_ERROR_INTERNAL (-101)           szName, up to its end or its first point, has exactly 255 characters
   FPC_ERROR_UNKNOWN_PARAMETER (-206)  the handle has no property of this name */

/* The value of any property as text.
   pszValue: buffer, or null to measure. pnSize: in: its size in bytes; out: the size needed, terminator included. A
   buffer of at least 2 bytes holds an empty text after a failure behind the test of the handle, if pnSize is given.
   Further results, in order of the tests:
   FPC_ERROR_TEMPLATE_SIZE_PTR (-24)   pnSize is null
   FPC_ERROR_TEMPLATE_SIZE (-21)       *pnSize was too small; it now holds the size needed
   FPC_ERROR_BAD_POINTER (-701)        pszValue is null and *pnSize would suffice, for the text property "Version" */
KS_API long KSGetPropertyA(void* handle, const char* szName, char* pszValue, unsigned long* pnSize);

/* Sets any writable property from text: "1", "1.9" (truncated), "0x1".
   Further results, in order of the tests:
   FPC_ERROR_PARAM_IS_READONLY (-47)     the property cannot be set
   FPC_ERROR_INVALID_PARAMETER (-44)     szValue is null, or text is left over behind its number (an empty text counts as 0)
   FPC_ERROR_PARAM_OUT_OF_RANGE (-35)    the value is out of the property's range, the property keeps its value */
KS_API long KSSetPropertyA(void* handle, const char* szName, const char* szValue);

/* The value of an integer property. pnValue: receives it; it is not tested and must not be null.
   Further results:
   FPC_ERROR_INVALID_PARAMETER (-44)   the property is no integer ("Version") */
KS_API long KSGetPropertyLongA(void* handle, const char* szName, long* pnValue);

/* Sets an integer property.
   Further results, in order of the tests:
   FPC_ERROR_INVALID_PARAMETER (-44)    the property is no integer
   FPC_ERROR_PARAM_IS_READONLY (-47)    the property cannot be set
   FPC_ERROR_PARAM_OUT_OF_RANGE (-35)   the value is out of the property's range, the property keeps its value */
KS_API long KSSetPropertyLongA(void* handle, const char* szName, long nValue);

/* The value of a floating-point property. The two kinds of handle have none: integers are not converted.
   pdValue: receives it; it is not tested and must not be null.
   Further results:
   FPC_ERROR_INVALID_PARAMETER (-44)   the property is no floating-point number */
KS_API long KSGetPropertyDoubleA(void* handle, const char* szName, double* pdValue);

/* Sets a floating-point property. The two kinds of handle have none.
   Further results:
   FPC_ERROR_INVALID_PARAMETER (-44)   the property is no floating-point number */
KS_API long KSSetPropertyDoubleA(void* handle, const char* szName, double dValue);

/* ---- Segmentation ---- */

/* Cuts an image into single fingers ("SegmentationMode" 0), or cuts out its biggest object (1), where everything darker
   than 255 is object. The results replace those of the last run; "Count" tells their number. The handle stays usable
   after any failure.
   handle: a segmentation handle.
   pBitmap: a device-independent bitmap in one block: header, colour table, pixels; or a whole BMP file in memory. Grey,
   8 bits per pixel, not compressed, dark fingers on a light background. It is read and neither changed nor kept.
   nSize: bytes of the block; 0 if it is not known, and the sizes in the header are then trusted.
   Returns, in order of the tests:
   FPC_ERROR_NO_HANDLE (-42), FPC_ERROR_INVALID_HANDLE (-43)   handle is null, or no segmentation handle
   FPC_ERROR_BITMAP_PTR (-10)       pBitmap is null, or nSize is too small for the file header
   FPC_ERROR_TEMPLATE_SIZE (-21)    nSize is too small for the bitmap header
   FPC_ERROR_BITMAP_UNEXPECTED_FILEHEADER (-36)   a second file header
   FPC_ERROR_BITMAP_HEADERSIZE (-32)              biSize is not 40
   FPC_ERROR_BITMAP_PLANE (-11)                   biPlanes is not 1
   FPC_ERROR_BITMAP_COMPRESSION (-31)             biCompression is none of 0 to 3
   FPC_ERROR_BITMAP_BITCOUNT (-12)                biBitCount is none of 1, 4, 8, 16, 24, 32
   FPC_ERROR_TEMPLATE_SIZE (-21)    nSize is too small for the colour table or the pixels
   FPC_ERROR_BITMAP_BITCOUNT (-12)  plain pixels of 1, 4 or 16 bits
   FPC_ERROR_BITMAP_PLANE (-11)     pixels of 24 or 32 bits, or compressed ones
   FPC_ERROR_TEMPLATE_SIZE (-21)    the block ends before the pixels
   Up to here the results of the last run stay; but from the last two tests on, "CoordinateOrigin" 1 counts from the
   refused image's height. A later failure leaves no segments, and "Count" as it was; without memory (-102) for a
   segment, those before it and the new "Count" may stand.
   In mode 0:
   FPC_ERROR_BITMAP_PELS (-13)          a resolution below 3900 pels per metre
   FPC_ERROR_BITMAP_NO_FINGER (-15)     all pixels are alike
   FPC_ERROR_BITMAP_DIMENSION (-14)     width or height below 160
   FPC_ERROR_PARAM_OUT_OF_RANGE (-35)   more than two fingers; "Count" tells how many there are
   In mode 1:
   FPC_ERROR_PARAM_INVALID (-44)        no pixel is darker than 255
   FPC_ERROR_PARAM_OUT_OF_RANGE (-35)   the biggest object has a single row or column
   An image that is not uniform and in which mode 0 finds no finger is a success with "Count" 0. The rectangle of mode 1
   is one column and one row smaller than the box around the object: its last column and its top row are left out. */
KS_API long KSSegmentBitmap(void* handle, const struct tagBITMAPINFOHEADER* pBitmap, unsigned long nSize);

/* Copies a segment of the last run into a segment handle, whose former content is replaced. May be called in any order
   and repeatedly. The segment's rectangle is in pixels of the input; its bitmap can be smaller than the rectangle,
   because images of fingers are limited to 500 by 500 pixels.
   hSegmentation: a segmentation handle. nIndex: from 0, below "Count". hSegment: a segment handle.
   Returns, in order of the tests:
   FPC_ERROR_NO_HANDLE (-42), FPC_ERROR_INVALID_HANDLE (-43)   hSegmentation is null, or no segmentation handle
   FPC_ERROR_NO_HANDLE (-42), FPC_ERROR_INVALID_HANDLE (-43)   hSegment is null, or no segment handle
   FPC_ERROR_PARAM_OUT_OF_RANGE (-35)   there is no such segment; or the rectangle begins left of, below or (origin 1) above the image
                                        (hSegment then has the new bitmap and its former rectangle) */
KS_API long KSGetSegment(void* hSegmentation, int nIndex, void* hSegment);

/* The bitmap of a segment as one block: header, colour table of 256 greys, 8-bit pixels, rows bottom-up.
   handle: a segment handle.
   pBitmap: buffer, or null to measure. pnSize: in: its size in bytes; out: the size needed.
   Returns, in order of the tests:
   FPC_ERROR_NO_HANDLE (-42), FPC_ERROR_INVALID_HANDLE (-43)   handle is null, or no segment handle
   FPC_ERROR_PARAM_IS_MISSING (-37)   pnSize is null
   FPC_ERROR_EMPTY_HANDLE (-51)       KSGetSegment has not filled the handle yet
   FPC_ERROR_TEMPLATE_SIZE (-21)      *pnSize was too small; it now holds the size needed */
KS_API long KSGetBitmap(void* handle, struct tagBITMAPINFOHEADER* pBitmap, unsigned long* pnSize);

#ifdef __cplusplus
}
#endif
/* clang-format on */

#endif
