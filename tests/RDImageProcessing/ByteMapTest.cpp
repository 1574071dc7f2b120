#include "RDImageProcessing/ByteMap.hpp"

#include "TestTools.hpp"

#include <cstring>
#include <vector>

namespace
{
/// fn(form, input, number of bytes) for every form that runs here and rows of 0 to 200 bytes, each of which ends where
/// readable memory ends.
template <class Fn> void ForEachFormAndRow(Fn&& fn)
{
    for (const StByteMaps* pMaps : {&g_cByteMapsAnywhere, &ByteMaps()})
    {
        for (int nBytes = 0; nBytes <= 200; ++nBytes)
        {
            SCOPED_TRACE(std::to_string(nBytes) + (pMaps == &g_cByteMapsAnywhere ? " anywhere" : " here"));
            ClTestRandom cRandom(static_cast<unsigned int>(nBytes));
            ClGuardedBytes cIn(static_cast<std::size_t>(nBytes));
            for (int i = 0; i < nBytes; ++i)
            {
                cIn.Data()[i] = static_cast<unsigned char>(cRandom.Next());
            }
            fn(*pMaps, cIn.Data(), nBytes);
        }
    }
}

/// run(in, out) writes what is expected to another row, which lies between bytes that stay, and in place.
template <class Run>
void ExpectMapped(const std::vector<unsigned char>& aExpected, const unsigned char* pIn, int nBytes, Run&& run)
{
    std::vector<unsigned char> aOut(static_cast<std::size_t>(nBytes) + 2, 99);
    run(pIn, aOut.data() + 1);
    EXPECT_EQ(99, aOut.front());
    EXPECT_EQ(99, aOut.back());
    EXPECT_EQ(aExpected, std::vector<unsigned char>(aOut.begin() + 1, aOut.end() - 1));
    const ClGuardedBytes cInPlace(pIn, static_cast<std::size_t>(nBytes));
    run(cInPlace.Data(), cInPlace.Data());
    EXPECT_EQ(aExpected, std::vector<unsigned char>(cInPlace.Data(), cInPlace.Data() + nBytes));
}
} // namespace

TEST(ByteMap, EveryByteGoesThroughTheTable)
{
    ForEachFormAndRow(
        [](const StByteMaps& cMaps, const unsigned char* pIn, int nBytes)
        {
            ClTestRandom cRandom(77);
            unsigned char anTable[256];
            for (unsigned char& n : anTable)
            {
                n = static_cast<unsigned char>(cRandom.Next());
            }
            std::vector<unsigned char> aExpected;
            for (int i = 0; i < nBytes; ++i)
            {
                aExpected.push_back(anTable[pIn[i]]);
            }
            ExpectMapped(aExpected, pIn, nBytes,
                         [&](const unsigned char* p, unsigned char* pOut)
                         { cMaps.pThroughTable(p, pOut, nBytes, anTable); });
        });
}

TEST(ByteMap, EveryEntryOfATableIsUsed)
{
    unsigned char anAll[256];
    unsigned char anTable[256];
    for (int i = 0; i < 256; ++i)
    {
        anAll[i] = static_cast<unsigned char>(i);
        anTable[i] = static_cast<unsigned char>(i * 167 + 41);
    }
    for (const StByteMaps* pMaps : {&g_cByteMapsAnywhere, &ByteMaps()})
    {
        unsigned char anOut[256];
        pMaps->pThroughTable(anAll, anOut, 256, anTable);
        EXPECT_EQ(0, std::memcmp(anTable, anOut, 256));
    }
}

TEST(ByteMap, AStepDividesTheBytesAtEveryValue)
{
    ForEachFormAndRow(
        [](const StByteMaps& cMaps, const unsigned char* pIn, int nBytes)
        {
            for (int nLastLow = nBytes % 7; nLastLow < 256; nLastLow += nBytes % 16 == 0 ? 3 : 29)
            {
                std::vector<unsigned char> aExpected;
                for (int i = 0; i < nBytes; ++i)
                {
                    aExpected.push_back(pIn[i] <= nLastLow ? 12 : 201);
                }
                ExpectMapped(aExpected, pIn, nBytes,
                             [&](const unsigned char* p, unsigned char* pOut)
                             { cMaps.pStep(p, pOut, nBytes, static_cast<unsigned char>(nLastLow), 12, 201); });
            }
        });
}
