#pragma once

#include "RDTools/FpImage.hpp"
#include "TestTools.hpp"

#include <functional>
#include <string>
#include <vector>

/// The classes of 8-bit pictures on which a fast kernel must agree with its plain form.
struct StGreyClass
{
    std::string sName;
    std::function<int(int x, int y)> value; ///< called row by row
};

inline const std::vector<StGreyClass>& GreyClasses()
{
    static ClTestRandom cRandom(77);
    static const std::vector<StGreyClass> aClasses = {
        {"random", [](int, int) { return cRandom.Below(256); }},
        {"few values", [](int, int) { return 100 + 50 * cRandom.Below(3); }},
        {"black", [](int, int) { return 0; }},
        {"white", [](int, int) { return 255; }},
        {"grey", [](int, int) { return 127; }},
        {"almost flat", [](int, int) { return 200 + cRandom.Below(2); }},
        {"black or white", [](int, int) { return 255 * cRandom.Below(2); }},
        {"chequered", [](int x, int y) { return (x + y) % 2 != 0 ? 255 : 0; }},
        {"step across", [](int x, int) { return x < 11 ? 240 : 30; }},
        {"step up", [](int, int y) { return y < 7 ? 3 : 255; }},
        {"stairs", [](int x, int y) { return (x / 4 + y / 3) * 16 % 256; }},
        {"single points", [](int, int) { return cRandom.Below(40) == 0 ? 255 : 0; }},
    };
    return aClasses;
}

/// A picture of a class whose last row ends where readable memory ends.
class ClGuardedPicture
{
public:
    ClGuardedPicture(int nWidth, int nHeight)
        : m_cBytes(static_cast<std::size_t>(ClImage::RowBytes(1, nWidth, 1)) * static_cast<std::size_t>(nHeight))
    {
        m_cImage.Attach(m_cBytes.Data(), ClImage::eUInt8, nWidth, nHeight, 1, 0, 0);
    }
    ClGuardedPicture(int nWidth, int nHeight, const StGreyClass& cClass) : ClGuardedPicture(nWidth, nHeight)
    {
        for (int y = 0; y < nHeight; ++y)
        {
            for (int x = 0; x < nWidth; ++x)
            {
                Row<unsigned char>(m_cImage, y)[x] = static_cast<unsigned char>(cClass.value(x, y));
            }
        }
    }

    ClImage& Image() { return m_cImage; }

private:
    ClGuardedBytes m_cBytes;
    ClImage m_cImage;
};

/// What a fast kernel is asked for: plain code, and the vectors that not every processor has, where this one has them.
inline std::vector<bool> VectorChoices(bool bHasWide)
{
    return bHasWide ? std::vector<bool>{false, true} : std::vector<bool>{false};
}
