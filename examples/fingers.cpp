// Prints the fingers of a slap image, a BMP file, and writes each as a PGM file. C++17 on the public headers alone.

#include "VelmarinKormelinSegmentation.hpp"

#include <exception>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

namespace
{
std::vector<char> ReadWholeFile(const char* szName)
{
    std::ifstream cFile(szName, std::ios::binary);
    std::vector<char> aBytes{std::istreambuf_iterator<char>(cFile), {}};
    if (!cFile || aBytes.empty()) throw std::runtime_error(std::string(szName) + ": cannot be read, or is empty");
    return aBytes;
}

void WritePgm(const std::string& sName, const kormelin::GreyPicture& cPicture)
{
    std::ofstream cFile(sName, std::ios::binary);
    cFile << "P5\n" << cPicture.m_nWidth << ' ' << cPicture.m_nHeight << "\n255\n";
    cFile.write(reinterpret_cast<const char*>(cPicture.m_aPixels.data()),
                static_cast<std::streamsize>(cPicture.m_aPixels.size()));
    cFile.close();
    if (!cFile) throw std::runtime_error(sName + ": cannot be written");
}
} // namespace

int main(int nArguments, char** aszArguments)
{
    if (nArguments != 3)
    {
        std::cerr << "usage: fingers IMAGE.bmp OUTPUT_PREFIX\n";
        return 2;
    }
    try
    {
        const std::vector<char> aFile = ReadWholeFile(aszArguments[1]);
        const kormelin::Library cLibrary;
        kormelin::Segmentation cRun; // y counts from the top of the picture
        cRun.Run(aFile.data(), aFile.size());
        int nFinger = 0;
        for (const kormelin::Segment& cFinger : cRun.Segments())
        {
            const std::string sName = aszArguments[2] + std::to_string(nFinger++) + ".pgm";
            WritePgm(sName, cFinger.Picture());
            std::cout << "x " << cFinger.X() << " y " << cFinger.Y() << " width " << cFinger.Width() << " height "
                      << cFinger.Height() << " -> " << sName << '\n';
        }
        return 0;
    }
    catch (const std::exception& e)
    {
        std::cerr << aszArguments[1] << ": " << e.what() << '\n';
        return 1;
    }
}
