// Up to four fingers of a slap image, a BMP file, by the processor itself: for programs that link the static core and
// hold its objects.

#include "RDAfisTools/IpFourPrintSegmentation.hpp"
#include "RDTools/Bitmap.hpp"
#include "RDTools/Exception.hpp"
#include "RDTools/FpImage.hpp"

#include <fstream>
#include <iostream>
#include <iterator>
#include <vector>

int main(int nArguments, char** aszArguments)
{
    if (nArguments != 2)
    {
        std::cerr << "usage: four_fingers IMAGE.bmp\n";
        return 2;
    }
    std::ifstream cFile(aszArguments[1], std::ios::binary);
    std::vector<unsigned char> aFile{std::istreambuf_iterator<char>(cFile), {}};
    try
    {
        // Neither of the two copies pixels: aFile outlives them.
        ClBitmap cBitmap;
        cBitmap.Attach(aFile.data(), aFile.size());
        ClImage cSlap;
        if (!cSlap.Attach(cBitmap)) throw ClExVelmarin(FPC_ERROR_BITMAP_COMPRESSION, "four_fingers", __LINE__);

        ClIpFourPrintSegmentation cProcessor;
        cProcessor.m_pInImage = &cSlap;
        if (const long nError = cProcessor.Apply()) throw ClExVelmarin(nError, "four_fingers", __LINE__);
        const char* const aszHands[] = {"undecided", "right", "left", "thumbs"};
        std::cout << "hand: " << aszHands[cProcessor.m_nHand] << '\n';
        for (int i = 0; i < cProcessor.m_nFingers; ++i)
        {
            const tagRECT& cRect = cProcessor.m_aRects[i]; // y grows upwards
            std::cout << "finger: x " << cRect.left << " y " << cRect.bottom << " width " << cRect.right - cRect.left
                      << " height " << cRect.top - cRect.bottom << '\n';
        }
        return 0;
    }
    catch (const ClException& e)
    {
        std::cerr << aszArguments[1] << ": " << e.Number() << ' ' << e.what() << '\n';
        return 1;
    }
}
