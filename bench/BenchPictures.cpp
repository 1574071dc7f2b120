#include "BenchPictures.hpp"

#include "SlapPicture.hpp"

#include "RDImageProcessing/IpBinarizeAutoThreshold.hpp"
#include "RDImageProcessing/IpFilterMid.hpp"

#include <algorithm>
#include <map>
#include <memory>

namespace
{
struct StPlace
{
    int nPels;
    int nX;
    int nY;
    int nWidth;
    int nHeight;
};

StPlace PlaceOf(int nWidth)
{
    switch (nWidth)
    {
    case 320: return {n100Ppi, 0, 0, 320, 300};
    case 500: return {n500Ppi, 400, 700, 500, 600};
    default: return {n500Ppi, 0, 0, 1600, 1500};
    }
}

using Images_t = std::map<int, std::unique_ptr<ClImage>>;

/// The image of a width; make(image) when it is new.
template <class Make> ClImage& Once(Images_t& aImages, int nWidth, Make&& make)
{
    std::unique_ptr<ClImage>& pImage = aImages[nWidth];
    if (pImage == nullptr)
    {
        pImage = std::make_unique<ClImage>();
        make(*pImage);
    }
    return *pImage;
}
} // namespace

ClSlapScene FourFingerScene(int nPelsPerMetre)
{
    ClSlapScene cHand = SlapScenes::FourFingers(SlapScenes::eRightHand, nPelsPerMetre);
    cHand.m_nHeight = 76240; // micrometres: 1500 rows at 500 pixels per inch
    return cHand;
}

ClImage& GreyOf(int nWidth)
{
    static Images_t aMade;
    return Once(aMade, nWidth,
                [nWidth](ClImage& cGrey)
                {
                    const StPlace c = PlaceOf(nWidth);
                    const ClSlapPicture cPicture(FourFingerScene(c.nPels));
                    cGrey.NewWithType(ClImage::eUInt8, c.nWidth, c.nHeight, 1, c.nPels, c.nPels);
                    for (int y = 0; y < c.nHeight; ++y)
                    {
                        const auto nFirst = static_cast<std::ptrdiff_t>(c.nY + y) * cPicture.m_nWidth + c.nX;
                        std::copy_n(cPicture.m_aPixels.begin() + nFirst, c.nWidth, Row<unsigned char>(cGrey, y));
                    }
                });
}

ClImage& ObjectsOf(int nWidth)
{
    static Images_t aMade;
    return Once(aMade, nWidth,
                [nWidth](ClImage& cObjects)
                {
                    ClImage cSmooth;
                    ClIpFilterMid().ApplyParam(GreyOf(nWidth), cSmooth, nWidth == 320 ? 5 : 20);
                    ClIpBinarizeAutoThreshold().ApplyParam(cSmooth, cObjects,
                                                           ClIpBinarizeAutoThreshold::ModeFuzzyEntropy);
                });
}

ClImage& ColourOf(int nWidth)
{
    static Images_t aMade;
    return Once(aMade, nWidth,
                [nWidth](ClImage& cColour)
                {
                    const ClImage& cGrey = GreyOf(nWidth);
                    cColour.NewWithType(ClImage::eUInt8, cGrey.m_nWidth, cGrey.m_nHeight, 3, cGrey.m_nXRes,
                                        cGrey.m_nYRes);
                    for (int y = 0; y < cGrey.m_nHeight; ++y)
                    {
                        unsigned char* p = Row<unsigned char>(cColour, y);
                        for (int x = 0; x < cGrey.m_nWidth; ++x, p += 3)
                        {
                            std::fill_n(p, 3, Row<unsigned char>(cGrey, y)[x]);
                        }
                    }
                });
}
