// Pictures for which there is no memory. Nothing of them is there but the header and their last row, by which they are
// told from uniform ones: all other pixels are pages that cannot be touched.

#include "SegmentationModes.hpp"
#include "TestTools.hpp"

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstring>
#include <iterator>

#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define KORMELIN_OWN_ADDRESS_SPACE 0 // the sanitizer needs more of it than any limit allows
#else
#define KORMELIN_OWN_ADDRESS_SPACE 1
#endif

namespace
{
constexpr int n100Ppi = 3937; // pels per metre
constexpr int n500Ppi = 19685;

/// A packed bitmap in address space without memory behind it.
class ClHollowBitmap
{
public:
    ClHollowBitmap(int nWidth, int nHeight, int nPelsPerMetre)
    {
        const auto nPage = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
        const std::size_t nRow = (static_cast<std::size_t>(nWidth) + 3) / 4 * 4;
        m_nSize = 1064 + nRow * static_cast<std::size_t>(nHeight);
        m_nMap = (m_nSize + nPage - 1) / nPage * nPage;
        void* pMap = mmap(nullptr, m_nMap, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        if (pMap == MAP_FAILED)
        {
            return;
        }
        m_pBytes = static_cast<unsigned char*>(pMap);
        const std::size_t nLastRow = m_nSize - nRow;
        Open(0, nPage);
        Open(nLastRow / nPage * nPage, nPage);
        const ClGuardedVector aHeader = PackedBitmap(1, 1, 8);
        std::memcpy(m_pBytes, aHeader.data(), 1064);
        PutLong(m_pBytes, 4, static_cast<std::uint32_t>(nWidth));
        PutLong(m_pBytes, 8, static_cast<std::uint32_t>(nHeight));
        PutLong(m_pBytes, 24, static_cast<std::uint32_t>(nPelsPerMetre));
        PutLong(m_pBytes, 28, static_cast<std::uint32_t>(nPelsPerMetre));
        m_pBytes[nLastRow] = 1; // the next one is 0
    }
    ClHollowBitmap(const ClHollowBitmap&) = delete;
    ClHollowBitmap& operator=(const ClHollowBitmap&) = delete;
    ~ClHollowBitmap()
    {
        if (m_pBytes != nullptr)
        {
            munmap(m_pBytes, m_nMap);
        }
    }

    unsigned char* m_pBytes = nullptr; ///< null where there is not even the address space
    std::size_t m_nSize = 0;

private:
    void Open(std::size_t nFrom, std::size_t nBytes)
    {
        if (mprotect(m_pBytes + nFrom, std::min(nBytes, m_nMap - nFrom), PROT_READ | PROT_WRITE) != 0)
        {
            ADD_FAILURE() << "pages cannot be opened";
        }
    }

    std::size_t m_nMap = 0;
};

/// Bytes of address space in use.
unsigned long AddressSpace()
{
    unsigned long nPages = 0;
    if (FILE* pFile = std::fopen("/proc/self/statm", "r"))
    {
        EXPECT_EQ(1, std::fscanf(pFile, "%lu", &nPages));
        std::fclose(pFile);
    }
    return nPages * static_cast<unsigned long>(sysconf(_SC_PAGESIZE));
}

/// The limit of the address space that this process was given.
rlim_t LimitOfTheProcess()
{
    rlimit cLimit = {};
    EXPECT_EQ(0, getrlimit(RLIMIT_AS, &cLimit));
    return cLimit.rlim_cur;
}

/// Runs fn in a process of its own, with nMore bytes of address space beside those in use, if it may have them, and two
/// seconds of processor time. The result of fn, 0 to 100; what ended the process otherwise, above 100.
template <class Fn> int WithinLimits(unsigned long nMore, Fn&& fn)
{
    const rlim_t nSpace = std::min<rlim_t>(AddressSpace() + nMore, LimitOfTheProcess());
    const pid_t nChild = fork();
    if (nChild == 0)
    {
        const rlimit cSpace = {nSpace, nSpace};
        const rlimit cTime = {2, 2};
        _exit(setrlimit(RLIMIT_AS, &cSpace) != 0 || setrlimit(RLIMIT_CPU, &cTime) != 0 ? 101 : fn());
    }
    int nStatus = 0;
    EXPECT_EQ(nChild, waitpid(nChild, &nStatus, 0));
    return WIFEXITED(nStatus) ? WEXITSTATUS(nStatus) : 1000 + WTERMSIG(nStatus);
}

struct ClSize
{
    int m_nWidth;
    int m_nHeight;
    int m_nPelsPerMetre;
};

TEST(Limits, SizesWhoseBuffersCannotBeHadAreOutOfMemoryAtOnce)
{
    if (!KORMELIN_OWN_ADDRESS_SPACE)
    {
        GTEST_SKIP() << "no limit of the address space under this sanitizer";
    }
    // The first one has room in most address spaces that are limited already.
    const ClSize aSizes[] = {{12000, 12000, n100Ppi},     {60000, 60000, n100Ppi},     {60000, 60000, n500Ppi},
                             {1000000, 1000000, n100Ppi}, {1000000, 1000000, n500Ppi}, {160, INT_MAX, n100Ppi},
                             {160, INT_MAX, n500Ppi},     {0x7ffffffc, 160, n100Ppi},  {0x7ffffffc, 160, n500Ppi}};
    std::size_t nTried = 0;
    const ClGuardedVector aGood = PackedBitmap(200, 200, 8);
    for (const ClSize& cSize : aSizes)
    {
        const ClHollowBitmap cBitmap(cSize.m_nWidth, cSize.m_nHeight, cSize.m_nPelsPerMetre);
        if (cBitmap.m_pBytes == nullptr)
        {
            continue; // beyond the limit of the process, see below
        }
        ++nTried;
        for (const long nMode : {ClModeHandle::nFingers, ClModeHandle::nBiggestObject})
        {
            const int nResult = WithinLimits(64ul << 20,
                                             [&]
                                             {
                                                 ClModeHandle cHandle(nMode);
                                                 const long nCode =
                                                     cHandle.SegmentAddress(cBitmap.m_pBytes, cBitmap.m_nSize);
                                                 if (nCode != FPC_ERROR_OUT_OF_MEMORY)
                                                 {
                                                     return static_cast<int>(-nCode);
                                                 }
                                                 return cHandle.SegmentCopy(aGood) == FPC_SUCCESS ? 100 : 99;
                                             });
            EXPECT_EQ(100, nResult) << cSize.m_nWidth << " by " << cSize.m_nHeight << ", " << cSize.m_nPelsPerMetre
                                    << " pels per metre, mode " << nMode;
        }
    }
    EXPECT_LE(LimitOfTheProcess() == RLIM_INFINITY ? std::size(aSizes) : 1u, nTried);
}
} // namespace
