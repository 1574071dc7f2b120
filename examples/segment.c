/* Cuts slap images into single fingers: one BMP file per finger found. Plain C on the public interface alone. */

#include "VelmarinKormelinSegmentation.h"

#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

enum
{
    STATUS_DONE = 0,
    STATUS_IMAGE_FAILED = 1,
    STATUS_WRONG_USAGE = 2,
    FILE_HEADER_SIZE = 14
};

/* What the command line asks for; nFirstImage is the index of the first image in the argument list. */
struct Options
{
    const char* szFolder;
    long nMode; /* property "SegmentationMode": 0 fingers, 1 the biggest object */
    int nFirstImage;
};

static void PrintUsage(FILE* pTo)
{
    fputs("usage: segment [-o DIR] [--biggest] IMAGE.bmp ...\n"
          "Cuts each 8-bit grey slap image into its fingers, at most two, and writes finger N of INPUT.bmp as\n"
          "INPUT-N.bmp into DIR, over a file of that name. Prints index, x, y, width and height of each finger in\n"
          "pixels, y being the lower edge counted upward from the lower edge of the image.\n"
          "  -o DIR      folder of the fingers, default the current one\n"
          "  --biggest   cut out the biggest object of each image, whatever it is\n"
          "  --help      this text\n"
          "Exit status: 0 all images done, 1 an image failed, 2 wrong usage.\n",
          pTo);
}

/* Says which call failed on which file. Returns 0, the result of a function that failed. */
static int ReportError(const char* szFile, const char* szCall, long nCode)
{
    fprintf(stderr, "%s: %s: error %ld: %s\n", szFile, szCall, nCode, KSGetErrorDescriptionA(nCode));
    return 0;
}

static int ReportSystemError(const char* szFile, const char* szWhat)
{
    fprintf(stderr, "%s: %s: %s\n", szFile, szWhat, errno != 0 ? strerror(errno) : "unknown reason");
    return 0;
}

/* Reads to the end, doubling the memory, so that pipes do as well as files. Null on failure; the caller frees. */
static unsigned char* ReadOpenFile(const char* szFile, FILE* pFile, size_t* pnSize)
{
    size_t nCapacity = 1u << 20;
    size_t nSize = 0;
    unsigned char* pData = malloc(nCapacity);
    while (pData != NULL)
    {
        unsigned char* pMore;
        nSize += fread(pData + nSize, 1, nCapacity - nSize, pFile);
        if (ferror(pFile))
        {
            ReportSystemError(szFile, "cannot read");
            free(pData);
            return NULL;
        }
        if (nSize < nCapacity)
        {
            *pnSize = nSize;
            return pData;
        }
        if (nCapacity > (size_t)-1 / 2) break;
        nCapacity *= 2;
        pMore = realloc(pData, nCapacity);
        if (pMore == NULL) break;
        pData = pMore;
    }
    free(pData);
    fprintf(stderr, "%s: not enough memory for the image\n", szFile);
    return NULL;
}

static unsigned char* ReadWholeFile(const char* szFile, size_t* pnSize)
{
    unsigned char* pData;
    FILE* pFile;
    errno = 0;
    pFile = fopen(szFile, "rb");
    if (pFile == NULL)
    {
        ReportSystemError(szFile, "cannot open");
        return NULL;
    }
    pData = ReadOpenFile(szFile, pFile, pnSize);
    fclose(pFile); /* opened for reading: nothing can be lost here */
    return pData;
}

static void PutLittleEndian(unsigned char* pTo, unsigned long nValue)
{
    int i;
    for (i = 0; i < 4; ++i) pTo[i] = (unsigned char)(nValue >> (8 * i) & 255ul);
}

/* Bytes in front of the pixels of a device-independent bitmap: header and colour table. */
static unsigned long OffsetOfPixels(const struct tagBITMAPINFOHEADER* pBitmap)
{
    unsigned long nEntries = pBitmap->biClrUsed;
    if (nEntries == 0 && pBitmap->biBitCount <= 8) nEntries = 1ul << pBitmap->biBitCount;
    return pBitmap->biSize + 4 * nEntries;
}

/* A file header and the block behind it. A file that could not be completed is removed. */
static int WriteBmpFile(const char* szFile, const struct tagBITMAPINFOHEADER* pBitmap, unsigned long nSize)
{
    unsigned char aHeader[FILE_HEADER_SIZE] = {'B', 'M'};
    FILE* pFile;
    int bWritten;

    /* The file header counts in 32 bits. */
    if (nSize > 0xFFFFFFFFul - FILE_HEADER_SIZE)
    {
        fprintf(stderr, "%s: too big for a BMP file\n", szFile);
        return 0;
    }
    PutLittleEndian(aHeader + 2, FILE_HEADER_SIZE + nSize);
    PutLittleEndian(aHeader + 10, FILE_HEADER_SIZE + OffsetOfPixels(pBitmap));

    errno = 0;
    pFile = fopen(szFile, "wb");
    if (pFile == NULL) return ReportSystemError(szFile, "cannot create");
    bWritten = fwrite(aHeader, 1, sizeof aHeader, pFile) == sizeof aHeader && fwrite(pBitmap, 1, nSize, pFile) == nSize;
    if (fclose(pFile) != 0) bWritten = 0;
    if (!bWritten)
    {
        ReportSystemError(szFile, "cannot write");
        remove(szFile);
    }
    return bWritten;
}

/* The bitmap of a filled segment handle in memory of our own, or null; the caller frees. */
static struct tagBITMAPINFOHEADER* CopyBitmap(const char* szFile, void* hSegment, unsigned long* pnSize)
{
    struct tagBITMAPINFOHEADER* pBitmap;
    long nResult;

    /* The first call only asks for the size, and a size of 0 is too small by design. */
    *pnSize = 0;
    nResult = KSGetBitmap(hSegment, NULL, pnSize);
    if (nResult != FPC_ERROR_TEMPLATE_SIZE)
    {
        ReportError(szFile, "KSGetBitmap", nResult);
        return NULL;
    }
    pBitmap = malloc(*pnSize);
    if (pBitmap == NULL)
    {
        fprintf(stderr, "%s: not enough memory for a finger\n", szFile);
        return NULL;
    }
    nResult = KSGetBitmap(hSegment, pBitmap, pnSize);
    if (nResult != FPC_SUCCESS)
    {
        ReportError(szFile, "KSGetBitmap", nResult);
        free(pBitmap);
        return NULL;
    }
    return pBitmap;
}

/* DIR/INPUT-N.bmp, INPUT being the image's name without folder and extension. Null without memory; the caller frees. */
static char* NameOfSegment(const char* szFolder, const char* szImage, long nIndex)
{
    const char* szSlash = strrchr(szImage, '/');
    const char* szName = szSlash != NULL ? szSlash + 1 : szImage;
    const char* szDot = strrchr(szName, '.');
    const size_t nName = szDot != NULL && szDot != szName ? (size_t)(szDot - szName) : strlen(szName);
    const size_t nSize = strlen(szFolder) + nName + 32;
    char* szPath = malloc(nSize);
    if (szPath != NULL) snprintf(szPath, nSize, "%s/%.*s-%ld.bmp", szFolder, (int)nName, szName, nIndex);
    return szPath;
}

static int GetPlace(const char* szFile, void* hSegment, long aPlace[4])
{
    static const char* const aszNames[4] = {"x", "y", "Width", "Height"};
    int i;
    for (i = 0; i < 4; ++i)
    {
        const long nResult = KSGetPropertyLongA(hSegment, aszNames[i], &aPlace[i]);
        if (nResult != FPC_SUCCESS) return ReportError(szFile, aszNames[i], nResult);
    }
    return 1;
}

/* Writes segment nIndex of the last run and prints its line. */
static int SaveSegment(const char* szImage, const struct Options* pOptions, void* hSegmentation, void* hSegment,
                       long nIndex)
{
    struct tagBITMAPINFOHEADER* pBitmap;
    unsigned long nSize;
    long aPlace[4];
    char* szPath;
    int bDone;
    const long nResult = KSGetSegment(hSegmentation, (int)nIndex, hSegment);
    if (nResult != FPC_SUCCESS) return ReportError(szImage, "KSGetSegment", nResult);
    if (!GetPlace(szImage, hSegment, aPlace)) return 0;
    pBitmap = CopyBitmap(szImage, hSegment, &nSize);
    if (pBitmap == NULL) return 0;

    szPath = NameOfSegment(pOptions->szFolder, szImage, nIndex);
    bDone = szPath != NULL && WriteBmpFile(szPath, pBitmap, nSize);
    if (szPath == NULL) fprintf(stderr, "%s: not enough memory for a file name\n", szImage);
    if (bDone)
    {
        printf("%s: %ld: x %ld y %ld width %ld height %ld -> %s\n", szImage, nIndex, aPlace[0], aPlace[1], aPlace[2],
               aPlace[3], szPath);
    }
    free(szPath);
    free(pBitmap);
    return bDone;
}

/* A slap of more than two fingers is refused as a whole; "Count" then still tells how many there are. */
static int ReportRefusal(const char* szImage, void* hSegmentation, long nCode)
{
    long nCount = 0;
    ReportError(szImage, "KSSegmentBitmap", nCode);
    if (nCode == FPC_ERROR_PARAM_OUT_OF_RANGE && KSGetPropertyLongA(hSegmentation, "Count", &nCount) == FPC_SUCCESS &&
        nCount > 2)
    {
        fprintf(stderr, "%s: the image shows %ld fingers (Count %ld), and this interface takes at most two\n", szImage,
                nCount, nCount);
    }
    return 0;
}

/* A size of 0 would mean "unknown" to the library, and it takes a block that ends with its colour table. Both would
   send it reading behind our memory, so they stop here; all other damage it finds itself. */
static int HasPixels(const unsigned char* pData, size_t nSize)
{
    struct tagBITMAPINFOHEADER cHeader;
    const size_t nSkip = nSize >= 2 && pData[0] == 'B' && pData[1] == 'M' ? FILE_HEADER_SIZE : 0;
    if (nSize < nSkip + sizeof cHeader) return nSize != 0;
    memcpy(&cHeader, pData + nSkip, sizeof cHeader); /* behind a file header it is not aligned */
    return nSize != nSkip + OffsetOfPixels(&cHeader);
}

static int SegmentImage(const char* szImage, const struct Options* pOptions, void* hSegmentation, void* hSegment)
{
    size_t nSize = 0;
    long nCount = 0;
    long nResult;
    long i;
    int bDone = 1;
    unsigned char* pData;

    nResult = KSSetPropertyLongA(hSegmentation, "SegmentationMode", pOptions->nMode);
    if (nResult != FPC_SUCCESS) return ReportError(szImage, "SegmentationMode", nResult);
    pData = ReadWholeFile(szImage, &nSize);
    if (pData == NULL) return 0;
    if (!HasPixels(pData, nSize))
    {
        free(pData);
        fprintf(stderr, "%s: the file holds no pixels\n", szImage);
        return 0;
    }

    /* The file goes over as it is: the library skips the file header itself. It keeps copies, so the file's bytes may
       go right after the call. */
    nResult = KSSegmentBitmap(hSegmentation, (const struct tagBITMAPINFOHEADER*)(const void*)pData, nSize);
    free(pData);
    if (nResult != FPC_SUCCESS) return ReportRefusal(szImage, hSegmentation, nResult);

    nResult = KSGetPropertyLongA(hSegmentation, "Count", &nCount);
    if (nResult != FPC_SUCCESS) return ReportError(szImage, "Count", nResult);
    if (nCount == 0) printf("%s: no finger found\n", szImage);
    for (i = 0; i < nCount; ++i)
    {
        if (!SaveSegment(szImage, pOptions, hSegmentation, hSegment, i)) bDone = 0;
    }
    return bDone;
}

/* Handles of its own for each image, so that nothing of one image can be taken for a result of the next. */
static int ProcessImage(const char* szImage, const struct Options* pOptions)
{
    void* hSegmentation = NULL;
    void* hSegment = NULL;
    int bDone = 0;
    long nResult = KSCreateSegmentationHandle(&hSegmentation);
    if (nResult != FPC_SUCCESS) return ReportError(szImage, "KSCreateSegmentationHandle", nResult);

    nResult = KSCreateSegmentHandle(&hSegment);
    if (nResult == FPC_SUCCESS)
    {
        bDone = SegmentImage(szImage, pOptions, hSegmentation, hSegment);
        nResult = KSDestroyHandle(&hSegment);
        if (nResult != FPC_SUCCESS) bDone = ReportError(szImage, "KSDestroyHandle", nResult);
    }
    else
    {
        ReportError(szImage, "KSCreateSegmentHandle", nResult);
    }
    nResult = KSDestroyHandle(&hSegmentation);
    if (nResult != FPC_SUCCESS) bDone = ReportError(szImage, "KSDestroyHandle", nResult);
    return bDone;
}

/* True if there is work to do; the options end at the first image or behind "--". */
static int ParseArguments(int nArguments, char** aszArguments, struct Options* pOptions)
{
    int i = 1;
    for (; i < nArguments && aszArguments[i][0] == '-' && aszArguments[i][1] != '\0'; ++i)
    {
        if (strcmp(aszArguments[i], "--") == 0)
        {
            ++i;
            break;
        }
        if (strcmp(aszArguments[i], "--biggest") == 0)
        {
            pOptions->nMode = 1;
        }
        else if (strcmp(aszArguments[i], "-o") == 0 && i + 1 < nArguments)
        {
            pOptions->szFolder = aszArguments[++i];
        }
        else
        {
            return 0;
        }
    }
    pOptions->nFirstImage = i;
    return i < nArguments && pOptions->szFolder[0] != '\0';
}

int main(int nArguments, char** aszArguments)
{
    struct Options cOptions = {".", 0, 0};
    int nExit = STATUS_DONE;
    long nResult;
    int i;

    if (nArguments == 2 && strcmp(aszArguments[1], "--help") == 0)
    {
        PrintUsage(stdout);
        return STATUS_DONE;
    }
    if (!ParseArguments(nArguments, aszArguments, &cOptions))
    {
        PrintUsage(stderr);
        return STATUS_WRONG_USAGE;
    }

    nResult = KSInitialize(NULL);
    if (nResult != FPC_SUCCESS)
    {
        ReportError("segment", "KSInitialize", nResult);
        return STATUS_IMAGE_FAILED;
    }
    for (i = cOptions.nFirstImage; i < nArguments; ++i)
    {
        if (!ProcessImage(aszArguments[i], &cOptions)) nExit = STATUS_IMAGE_FAILED;
    }
    nResult = KSUninitialize();
    if (nResult != FPC_SUCCESS)
    {
        ReportError("segment", "KSUninitialize", nResult);
        nExit = STATUS_IMAGE_FAILED;
    }
    if (fflush(stdout) != 0 || ferror(stdout)) nExit = STATUS_IMAGE_FAILED;
    return nExit;
}
