// Writes a synthetic slap picture as a BMP file and tells where its fingers are.

#include "SlapPicture.hpp"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <memory>
#include <string>

namespace
{
enum EExit
{
    eExitDone = 0,
    eExitFailed = 1,
    eExitUsage = 2
};

void PrintUsage(std::FILE* pTo)
{
    std::fprintf(pTo, "usage: make-slap SCENE PELS OUT.bmp\n"
                      "Draws a slap picture with PELS pels per metre (19685 is 500 pixels per inch) and prints the\n"
                      "rectangle of each fingertip, rows counted upward from the lower edge.\n\nScenes:\n");
    for (const SlapScenes::ClNamedScene& cScene : SlapScenes::All())
        std::fprintf(pTo, "  %-20s %s\n", cScene.m_szName, cScene.m_szDescription);
}

// The whole text as a number from 1000 to 80000, else 0.
int ParsePels(const char* szText)
{
    char* pEnd = nullptr;
    errno = 0;
    const long nValue = std::strtol(szText, &pEnd, 10);
    if (pEnd == szText || *pEnd != '\0' || errno != 0 || nValue < 1000 || nValue > 80000) return 0;
    return static_cast<int>(nValue);
}

bool WriteFile(const char* szPath, const std::vector<std::uint8_t>& aBytes)
{
    std::FILE* pFile = std::fopen(szPath, "wb");
    if (pFile == nullptr) return false;
    const bool bWritten = std::fwrite(aBytes.data(), 1, aBytes.size(), pFile) == aBytes.size();
    return std::fclose(pFile) == 0 && bWritten;
}

int Run(const SlapScenes::ClNamedScene& cScene, int nPels, const char* szPath)
{
    const ClSlapPicture cPicture(cScene.m_pMake(nPels));
    if (!WriteFile(szPath, cPicture.BmpFile()))
    {
        std::fprintf(stderr, "make-slap: cannot write %s: %s\n", szPath, std::strerror(errno));
        return eExitFailed;
    }
    std::printf("%s: %d x %d pixels\n", szPath, cPicture.m_nWidth, cPicture.m_nHeight);
    for (std::size_t i = 0; i < cPicture.m_aFingers.size(); ++i)
    {
        const ClSlapRect& cRect = cPicture.m_aFingers[i];
        std::printf("finger %zu: x %d y %d width %d height %d\n", i, cRect.left, cRect.bottom, cRect.right - cRect.left,
                    cRect.top - cRect.bottom);
    }
    return eExitDone;
}
} // namespace

int main(int nArguments, char** aszArguments)
{
    if (nArguments == 2 && std::strcmp(aszArguments[1], "--help") == 0)
    {
        PrintUsage(stdout);
        return eExitDone;
    }
    if (nArguments != 4)
    {
        PrintUsage(stderr);
        return eExitUsage;
    }
    const SlapScenes::ClNamedScene* pScene = SlapScenes::Find(aszArguments[1]);
    const int nPels = ParsePels(aszArguments[2]);
    if (pScene == nullptr || nPels == 0)
    {
        std::fprintf(stderr, "make-slap: %s\n",
                     pScene == nullptr ? "no such scene; --help lists them" : "PELS must be 1000 to 80000");
        return eExitUsage;
    }
    try
    {
        return Run(*pScene, nPels, aszArguments[3]);
    }
    catch (const std::exception& e)
    {
        std::fprintf(stderr, "make-slap: %s\n", e.what());
        return eExitFailed;
    }
}
