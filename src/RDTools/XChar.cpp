#include "RDTools/XChar.hpp"

#include "RDTools/Exception.hpp"
#include "RDTools/SystemError.hpp"

#include <cerrno>
#include <cstring>
#include <cwchar>
#include <iconv.h>
#include <limits>

namespace
{
constexpr char szModule[] = "RDTools/XChar";
constexpr char szUtf8[] = "UTF-8";
constexpr char szWide[] = "WCHAR_T";

/// UTF-8 bytes of one wide character at most: glibc also writes the long forms above U+10FFFF.
constexpr std::size_t nMaxBytesPerWide = 6;

[[noreturn]] void ThrowConversionError(int nError)
{
    ThrowSystemError(nError, "Conversions Error", szModule, __LINE__);
}

/// One descriptor, closed on every way out.
class ClConverter
{
public:
    ClConverter(const char* szTo, const char* szFrom) : m_hConverter(iconv_open(szTo, szFrom))
    {
        if (m_hConverter == reinterpret_cast<iconv_t>(-1))
        {
            ThrowConversionError(errno);
        }
    }
    ClConverter(const ClConverter&) = delete;
    ClConverter& operator=(const ClConverter&) = delete;
    ~ClConverter() { iconv_close(m_hConverter); }

    /// Sizes in bytes; returns the bytes written.
    std::size_t Run(char* pIn, std::size_t nIn, char* pOut, std::size_t nOut)
    {
        std::size_t nLeft = nOut;
        if (iconv(m_hConverter, &pIn, &nIn, &pOut, &nLeft) == static_cast<std::size_t>(-1))
        {
            ThrowConversionError(errno);
        }
        return nOut - nLeft;
    }

private:
    iconv_t m_hConverter;
};

template <class In, class Out>
unsigned long Convert(const char* szFrom, const In* szIn, unsigned long nIn, const char* szTo, Out* szOut,
                      unsigned long nOut)
{
    constexpr unsigned long nLimit = std::numeric_limits<unsigned long>::max();
    if ((szIn == nullptr && nIn > 0) || (szOut == nullptr && nOut > 0) || nIn > nLimit / sizeof(In) ||
        nOut > nLimit / sizeof(Out))
    {
        ThrowConversionError(EINVAL);
    }
    if (nIn == 0)
    {
        return 0;
    }
    Out anNone[1]; // iconv ends the process over a null output, even one of size 0
    char* pIn = reinterpret_cast<char*>(const_cast<In*>(szIn)); // iconv takes its input so, and only reads it
    char* pOut = reinterpret_cast<char*>(nOut == 0 ? anNone : szOut);
    return ClConverter(szTo, szFrom).Run(pIn, nIn * sizeof(In), pOut, nOut * sizeof(Out)) / sizeof(Out);
}
} // namespace

unsigned long ConvertWideCharToSBCS(const wchar_t* szIn, unsigned long nIn, char* szOut, unsigned long nOut)
{
    return Convert(szWide, szIn, nIn, szUtf8, szOut, nOut);
}

unsigned long ConvertSBCSToWidechar(const char* szIn, unsigned long nIn, wchar_t* szOut, unsigned long nOut)
{
    return Convert(szUtf8, szIn, nIn, szWide, szOut, nOut);
}

std::string SBCSFromWideChar(const wchar_t* szIn)
{
    return ConvertBadAlloc(
        [&]
        {
            const std::size_t nLength = std::wcslen(szIn);
            std::string sResult(nLength * nMaxBytesPerWide, '\0');
            sResult.resize(ConvertWideCharToSBCS(szIn, nLength, sResult.data(), sResult.size()));
            return sResult;
        });
}

std::wstring WideCharFromSBCS(const char* szIn)
{
    return ConvertBadAlloc(
        [&]
        {
            std::wstring sResult(std::strlen(szIn), L'\0'); // no character has less than one byte
            sResult.resize(ConvertSBCSToWidechar(szIn, sResult.size(), sResult.data(), sResult.size()));
            return sResult;
        });
}
