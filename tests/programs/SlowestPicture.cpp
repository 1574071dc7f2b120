// usage: SlowestPicture SECONDS
// Runs pictures that could take long through both modes: those that show no finger, and patterns that make as much work
// for their size as a stranger could find. Prints the slowest run of each group. Fails if a run takes more processor
// time than SECONDS.

#include "FingerlessPictures.hpp"
#include "SegmentationModes.hpp"

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>

namespace
{
constexpr int n100Ppi = 3937; // pels per metre
constexpr int n500Ppi = 19685;

double ProcessorSeconds()
{
    timespec cTime = {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &cTime);
    return static_cast<double>(cTime.tv_sec) + 1e-9 * static_cast<double>(cTime.tv_nsec);
}

/// The slowest run of a group.
class ClSlowest
{
public:
    explicit ClSlowest(const char* szGroup) : m_szGroup(szGroup) {}

    void Run(const ClFingerlessPicture& cPicture)
    {
        const ClReadOnlyBytes cBlock(cPicture.Block());
        for (const long nMode : {ClModeHandle::nFingers, ClModeHandle::nBiggestObject})
        {
            ClModeHandle cHandle(nMode);
            const double dStart = ProcessorSeconds();
            const long nCode = cHandle.Segment(cBlock);
            const double dSeconds = ProcessorSeconds() - dStart;
            ++m_nRuns;
            if (dSeconds > m_dSeconds)
            {
                m_dSeconds = dSeconds;
                m_sName = cPicture.m_sName + ", " + std::to_string(cPicture.m_nWidth) + " by " +
                          std::to_string(cPicture.m_nHeight) + " pixels, mode " + std::to_string(nMode) + ", code " +
                          std::to_string(nCode);
            }
        }
    }

    bool Report(double dLimit) const
    {
        std::printf("%-16s %5d runs, slowest %7.4f s: %s\n", m_szGroup, m_nRuns, m_dSeconds, m_sName.c_str());
        return m_dSeconds <= dLimit;
    }

private:
    const char* m_szGroup;
    int m_nRuns = 0;
    double m_dSeconds = 0.0;
    std::string m_sName;
};

struct ClPattern
{
    const char* m_szName;
    std::function<bool(int, int)> m_fnInk; ///< at column, row
};

ClFingerlessPicture Picture(const ClPattern& cPattern, int nWidth, int nHeight, int nPelsPerMetre)
{
    ClFingerlessPicture cPicture{cPattern.m_szName, nWidth, nHeight, nPelsPerMetre, {}};
    cPicture.m_aPixels.reserve(static_cast<std::size_t>(nWidth) * static_cast<std::size_t>(nHeight));
    for (int y = 0; y < nHeight; ++y)
    {
        for (int x = 0; x < nWidth; ++x)
        {
            cPicture.m_aPixels.push_back(cPattern.m_fnInk(x, y) ? 20 : 255);
        }
    }
    return cPicture;
}

bool IsOdd(int nNumber)
{
    return nNumber % 2 != 0;
}

/// The distance to the next side of a square of 1500 pixels.
int Depth(int nX, int nY)
{
    return std::min(std::min(nX, nY), std::min(1499 - nX, 1499 - nY));
}

const ClPattern g_aPatterns[] = {
    {"checkerboard of single pixels", [](int x, int y) { return IsOdd(x + y); }},
    {"single pixels", [](int x, int y) { return IsOdd(x) && IsOdd(y); }},
    {"columns of one pixel", [](int x, int) { return IsOdd(x); }},
    {"rows of one pixel", [](int, int y) { return IsOdd(y); }},
    {"comb of one pixel", [](int x, int y) { return y < 2 || IsOdd(x); }},
    {"comb of 12 pixels", [](int x, int y) { return y < 12 || IsOdd(x / 12); }},
    {"nested frames of one pixel", [](int x, int y) { return !IsOdd(Depth(x, y)); }},
    {"nested frames of 10 pixels", [](int x, int y) { return !IsOdd(Depth(x, y) / 10); }},
    {"spiral of one pixel", [](int x, int y) { return IsOdd(Depth(x, y)) == (x == y + 1 && x < 750); }},
    {"spiral of 10 pixels", [](int x, int y) { return IsOdd(Depth(x, y) / 10) == (x / 10 == y / 10 + 1 && x < 750); }},
    {"dots of 16 pixels", [](int x, int y) { return x % 32 < 16 && y % 32 < 16; }},
    {"dots of 24 pixels", [](int x, int y) { return x % 48 < 24 && y % 48 < 24; }},
    {"bars of 24 by 120 pixels", [](int x, int y) { return x % 48 < 24 && y % 144 < 120; }},
    {"bars at two heights", [](int x, int y) { return x % 48 < 24 && (y + 30 * (x / 48 % 2)) % 150 < 90; }},
};

/// Thousands of fingers in one row, 25 m of them, of which four stay.
const ClPattern g_aCrowds[] = {
    {"bars of one height", [](int x, int y) { return x % 48 < 24 && y >= 10 && y < 90; }},
    {"bars of two heights", [](int x, int y) { return x % 48 < 24 && y >= 10 + x / 48 % 2 && y < 90 + x / 48 % 2; }},
};
} // namespace

int main(int nArguments, char** aszArguments)
{
    const double dLimit = nArguments == 2 ? std::atof(aszArguments[1]) : 0.0;
    if (dLimit <= 0.0)
    {
        std::fprintf(stderr, "usage: SlowestPicture SECONDS\n");
        return 2;
    }
    bool bInTime = true;
    for (const ClFingerlessKind& cKind : FingerlessKinds())
    {
        ClSlowest cSlowest(cKind.m_szName);
        for (int i = 0; i < cKind.m_nPictures; ++i)
        {
            cSlowest.Run(FingerlessPicture(cKind, i));
        }
        bInTime = cSlowest.Report(dLimit) && bInTime;
    }
    struct ClSize
    {
        const char* m_szName;
        int m_nWidth;
        int m_nHeight;
        int m_nPelsPerMetre;
    };
    for (const ClSize& cSize : {ClSize{"slap", 1600, 1500, n500Ppi}, ClSize{"slap of 100 ppi", 1600, 1500, n100Ppi},
                                ClSize{"wide", 40000, 160, n100Ppi}, ClSize{"tall", 160, 40000, n100Ppi},
                                ClSize{"one row", 1000000, 1, n100Ppi}, ClSize{"one column", 1, 1000000, n100Ppi}})
    {
        ClSlowest cSlowest(cSize.m_szName);
        for (const ClPattern& cPattern : g_aPatterns)
        {
            cSlowest.Run(Picture(cPattern, cSize.m_nWidth, cSize.m_nHeight, cSize.m_nPelsPerMetre));
        }
        bInTime = cSlowest.Report(dLimit) && bInTime;
    }
    ClSlowest cSlowest("crowd");
    for (const ClPattern& cPattern : g_aCrowds)
    {
        cSlowest.Run(Picture(cPattern, 100000, 160, n100Ppi));
    }
    return cSlowest.Report(dLimit) && bInTime ? 0 : 1;
}
