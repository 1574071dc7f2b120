/* The public header as a C99 compiler sees it. PublicHeaderTest.cpp compares. */
#include "VelmarinKormelinSegmentation.h"

#include <stddef.h>

unsigned long PublicHeaderInC_BitmapHeaderSize(void);
unsigned long PublicHeaderInC_BitmapHeaderOffset(int nField);
int PublicHeaderInC_DataIsNull(void);

unsigned long PublicHeaderInC_BitmapHeaderSize(void)
{
    return (unsigned long)sizeof(tagBITMAPINFOHEADER);
}

unsigned long PublicHeaderInC_BitmapHeaderOffset(int nField)
{
    static const size_t anOffsets[] = {
        offsetof(struct tagBITMAPINFOHEADER, biSize),          offsetof(struct tagBITMAPINFOHEADER, biWidth),
        offsetof(struct tagBITMAPINFOHEADER, biHeight),        offsetof(struct tagBITMAPINFOHEADER, biPlanes),
        offsetof(struct tagBITMAPINFOHEADER, biBitCount),      offsetof(struct tagBITMAPINFOHEADER, biCompression),
        offsetof(struct tagBITMAPINFOHEADER, biSizeImage),     offsetof(struct tagBITMAPINFOHEADER, biXPelsPerMeter),
        offsetof(struct tagBITMAPINFOHEADER, biYPelsPerMeter), offsetof(struct tagBITMAPINFOHEADER, biClrUsed),
        offsetof(struct tagBITMAPINFOHEADER, biClrImportant)};
    return (unsigned long)anOffsets[nField];
}

int PublicHeaderInC_DataIsNull(void)
{
    return g_pClassCallProfile == NULL && g_pProfileTimer == NULL;
}
