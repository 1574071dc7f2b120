// Every operator on small images of every sample type. A wrong setting is a result, too: its code is hashed.

#include "BitHash.hpp"
#include "BitItems.hpp"

#include "RDImageProcessing/Histogram.hpp"
#include "RDImageProcessing/IpBinarizeAutoThreshold.hpp"
#include "RDImageProcessing/IpBinarizeGlobal.hpp"
#include "RDImageProcessing/IpConnectedComponent2.hpp"
#include "RDImageProcessing/IpConvertDataType.hpp"
#include "RDImageProcessing/IpCut.hpp"
#include "RDImageProcessing/IpCutBiggestComponent.hpp"
#include "RDImageProcessing/IpDelta.hpp"
#include "RDImageProcessing/IpFilterMid.hpp"
#include "RDImageProcessing/IpFilterMidRotating.hpp"
#include "RDImageProcessing/IpFloodFill.hpp"
#include "RDImageProcessing/IpFloodFillLabeling.hpp"
#include "RDImageProcessing/IpGammaCorrection.hpp"
#include "RDImageProcessing/IpJoinPlanes.hpp"
#include "RDImageProcessing/IpLabeling.hpp"
#include "RDImageProcessing/IpRescale.hpp"
#include "RDImageProcessing/IpRgbToGrey.hpp"
#include "RDImageProcessing/IpRotate.hpp"
#include "RDImageProcessing/IpSplitPlanes.hpp"
#include "RDImageProcessing/IpStretchRangeGlobal.hpp"
#include "RDImageProcessing/IpStretchRangeGlobalNoiseRemoving.hpp"
#include "RDTools/Exception.hpp"

#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>

namespace
{
constexpr unsigned char g_aeTypes[] = {ClImage::eUInt8,  ClImage::eSInt8,  ClImage::eUInt16,  ClImage::eSInt16,
                                       ClImage::eUInt32, ClImage::eSInt32, ClImage::eFloat32, ClImage::eDouble64};

enum EKind
{
    eNoise,  ///< all values of the type; of floating point -300 to 300 and now and then what cannot be converted
    eTwo,    ///< blobs of 0 and 255
    eSmooth, ///< a surface with a bit of noise, so that means and thresholds lie close to each other
    eKinds
};

struct ClRandom
{
    std::uint32_t Next() { return m_nState = m_nState * 1664525u + 1013904223u; }
    unsigned Byte() { return Next() >> 24; }

    std::uint32_t m_nState;
};

template <class T> T Sample(EKind eKind, int x, int y, ClRandom& cRandom)
{
    const unsigned nNoise = cRandom.Byte();
    if (eKind == eTwo) return static_cast<T>(((x / 5 + y / 7) % 3 == 0) != (nNoise < 12) ? 0 : 255);
    if (eKind == eSmooth) return static_cast<T>(40 + x / 2 + y + static_cast<int>(nNoise % 5));
    if constexpr (std::is_floating_point_v<T>)
    {
        const T aWild[] = {std::numeric_limits<T>::quiet_NaN(), std::numeric_limits<T>::infinity(),
                           -std::numeric_limits<T>::max(), static_cast<T>(3e9), static_cast<T>(-0.0)};
        const unsigned nWhich = cRandom.Byte();
        if (nWhich < 5) return aWild[nWhich];
        return static_cast<T>((static_cast<double>(cRandom.Next()) / 4294967296.0 - 0.5) * 600.0);
    }
    else
    {
        return static_cast<T>(cRandom.Next() >> (32 - 8 * sizeof(T)));
    }
}

void Fill(ClImage& cImage, EKind eKind, unsigned nSeed)
{
    ClRandom cRandom{nSeed};
    DispatchSampleType(cImage.m_eDataType, 0,
                       [&](auto cTag)
                       {
                           using T = typename decltype(cTag)::Type;
                           for (int y = 0; y < cImage.m_nHeight; ++y)
                               for (int x = 0; x < cImage.SamplesPerRow(); ++x)
                                   Row<T>(cImage, y)[x] = Sample<T>(eKind, x, y, cRandom);
                           return 0L;
                       });
}

/// The images of one item at one size, and the hash of what the operators make of them.
class ClRuns
{
public:
    ClRuns(ClBitHash& cHash, unsigned char eType, int nPlanes, EKind eKind, int nWidth, int nHeight) : m_cHash(cHash)
    {
        m_cIn.NewWithType(eType, nWidth, nHeight, nPlanes, 3937, 3937);
        m_cOther.NewWithType(eType, nWidth, nHeight, nPlanes, 3937, 3937);
        m_cDirection.NewWithType(ClImage::eSInt8, nWidth, nHeight, 1, 3937, 3937);
        m_cAcross.NewWithType(ClImage::eSInt8, nWidth, nHeight, 1, 3937, 3937);
        m_cColour.NewWithType(eType, nWidth / 2 + 1, nHeight, 3, 3937, 3937);
        Fill(m_cIn, eKind, 7);
        Fill(m_cOther, eSmooth, 8);
        Fill(m_cDirection, eNoise, 9);
        Fill(m_cAcross, eNoise, 10);
        Fill(m_cColour, eNoise, 11);
    }

    /// One run on a copy of the input: fnSet(operator, input, output) sets it up, fnTell(operator) adds to the hash.
    template <class Operator, class Set, class Tell> void Run(Set&& fnSet, Tell&& fnTell)
    {
        Operator cOperator;
        ClImage cIn;
        cIn = m_cIn;
        ClImage cOut;
        long nCode = 0;
        try
        {
            fnSet(cOperator, cIn, cOut);
            nCode = cOperator.Apply();
        }
        catch (const ClException& e)
        {
            nCode = e.Number();
        }
        m_cHash.Add({nCode});
        if (nCode != 0) return;
        m_cHash.AddImage(cOut);
        fnTell(cOperator);
    }
    template <class Operator, class Set> void Run(Set&& fnSet)
    {
        Run<Operator>(fnSet, [](const Operator&) {});
    }
    /// The same for operators with one input and one output, which have these names.
    template <class Operator, class Set> void RunOne(Set&& fnSet)
    {
        Run<Operator>(
            [&](Operator& c, ClImage& cIn, ClImage& cOut)
            {
                c.m_pInImage = &cIn;
                c.m_pOutImage = &cOut;
                fnSet(c);
            });
    }

    ClBitHash& m_cHash;
    ClImage m_cIn;
    ClImage m_cOther;     ///< of the same description
    ClImage m_cDirection; ///< one plane of bytes
    ClImage m_cAcross;
    ClImage m_cColour; ///< three planes, half as wide
};

void AutoThresholds(ClRuns& c)
{
    using Operator = ClIpBinarizeAutoThreshold;
    for (int nMode = Operator::ModeFuzzyEntropy; nMode <= Operator::ModeOtsu; ++nMode)
    {
        c.Run<Operator>(
            [&](Operator& cOperator, ClImage& cIn, ClImage& cOut)
            {
                cOperator.m_pInImage = &cIn;
                cOperator.m_pOutImage = &cOut;
                cOperator.m_eProcessingMode = static_cast<Operator::eProcessingMode>(nMode);
            },
            [&](const Operator& cOperator) { c.m_cHash.Add({cOperator.m_nThreshold}); });
    }
}

void GlobalThresholds(ClRuns& c)
{
    c.RunOne<ClIpBinarizeGlobal>([](ClIpBinarizeGlobal&) {});
    for (const double dThreshold : {-0.5, 0.25, 3.2, 100.0, 128.5})
        c.RunOne<ClIpBinarizeGlobal>([&](ClIpBinarizeGlobal& cOperator) { cOperator.m_dThreshold = dThreshold; });
}

void AddComponent(ClBitHash& cHash, const ClIpConnectedComponent2::ClComponent& c)
{
    cHash.Add({c.m_nLabel});
    for (const double d : {c.m_cCenter.m_dX, c.m_cCenter.m_dY, c.m_cMin.m_dX, c.m_cMin.m_dY, c.m_cMax.m_dX,
                           c.m_cMax.m_dY, c.m_cFirstPixel.m_dX, c.m_cFirstPixel.m_dY, c.m_dArea, c.m_dEccentricity,
                           c.m_dMeanGrey, c.m_dOrientation, c.m_dMomentXY, c.m_dMomentYY, c.m_dMomentXX})
        cHash.AddNumber(d);
}

void Components(ClRuns& c)
{
    ClIpConnectedComponent2::ComponentsArray_t aComponents;
    c.Run<ClIpConnectedComponent2>(
        [&](ClIpConnectedComponent2& cOperator, ClImage& cIn, ClImage& cOut)
        {
            cOperator.pInImage = &cIn;
            cOperator.m_pInImageGrey = &c.m_cOther;
            cOperator.m_pOutImage = &cOut;
            cOperator.m_pComponents = &aComponents;
        },
        [&](const ClIpConnectedComponent2&)
        {
            for (unsigned long i = 0; i < aComponents.Entries(); ++i) AddComponent(c.m_cHash, aComponents[i]);
        });
}

void Conversions(ClRuns& c)
{
    for (const unsigned char eType : g_aeTypes)
        c.RunOne<ClIpConvertDataType>([&](ClIpConvertDataType& cOperator) { cOperator.m_eOutImageType = eType; });
}

void Cuts(ClRuns& c)
{
    const long aanPlace[][4] = {{0, 0, 1, 1}, {1, 2, 3, 3}, {-2, -1, 20, 9}, {5, 5, 70, 50}, {0, 0, 0, 0}};
    for (const auto& anPlace : aanPlace)
    {
        c.RunOne<ClIpCut>(
            [&](ClIpCut& cOperator)
            {
                cOperator.m_nX0 = anPlace[0];
                cOperator.m_nY0 = anPlace[1];
                cOperator.m_nDestWidth = anPlace[2];
                cOperator.m_nDestHeight = anPlace[3];
            });
    }
    c.Run<ClIpCutBiggestComponent>(
        [](ClIpCutBiggestComponent& cOperator, ClImage& cIn, ClImage& cOut)
        {
            cOperator.m_pInImage = &cIn;
            cOperator.m_pOutImage = &cOut;
        },
        [&](const ClIpCutBiggestComponent& cCut) {
            c.m_cHash.Add({cCut.m_nCutX0, cCut.m_nCutY0, cCut.m_nCutWidth, cCut.m_nCutHeight});
        });
}

void Differences(ClRuns& c)
{
    for (const unsigned char eType : g_aeTypes)
    {
        for (const int nOffset : {0, 3, -2})
        {
            c.Run<ClIpDelta>(
                [&](ClIpDelta& cOperator, ClImage& cIn, ClImage& cOut)
                {
                    cOperator.m_pInImage1 = &cIn;
                    cOperator.m_pInImage2 = &c.m_cOther;
                    cOperator.m_pOutImage = &cOut;
                    cOperator.m_nOutImageType = eType;
                    cOperator.m_nOffsetX = nOffset;
                    cOperator.m_nOffsetY = -nOffset;
                });
        }
    }
}

void Means(ClRuns& c)
{
    using Operator = ClIpFilterMid;
    for (const long nMode :
         {Operator::eModeX, Operator::eModeY, Operator::eModeXY, Operator::eModeDirected, Operator::eModeDirectedOrtho})
    {
        for (const long nWidth : {1L, 3L, 5L, 9L, 21L})
        {
            c.RunOne<Operator>(
                [&](Operator& cOperator)
                {
                    cOperator.m_nMode = nMode;
                    cOperator.m_nFilterWidth = nWidth;
                    cOperator.m_pInDxImage = &c.m_cDirection;
                    cOperator.m_pInDyImage = &c.m_cAcross;
                });
        }
    }
}

void UniformMasks(ClRuns& c)
{
    using Operator = ClIpFilterMidRotating;
    for (int nMode = Operator::ModeLocalMinDistanceToAverage; nMode <= Operator::ModeLocalMaskDeviationFloat; ++nMode)
    {
        for (const long nWidth : {1L, 5L, 9L, 17L})
        {
            c.RunOne<Operator>(
                [&](Operator& cOperator)
                {
                    cOperator.m_eVarMode = static_cast<Operator::EVarianceMode>(nMode);
                    cOperator.m_nFilterWidth = nWidth;
                });
        }
    }
}

void Fills(ClRuns& c)
{
    for (const long nStart : {0L, 6L})
    {
        ClIpFloodFill::StBoundingBox cBox{};
        c.RunOne<ClIpFloodFill>(
            [&](ClIpFloodFill& cOperator)
            {
                cOperator.m_nStartX = cOperator.m_nStartY = nStart;
                cOperator.m_nFillColor = 77;
            });
        c.RunOne<ClIpFloodFill>(
            [&](ClIpFloodFill& cOperator)
            {
                cOperator.m_nStartX = cOperator.m_nStartY = nStart;
                cOperator.m_pBoundingBox = &cBox;
            });
        c.m_cHash.Add({cBox.nMinX, cBox.nMinY, cBox.nMaxX, cBox.nMaxY, cBox.nCount});
    }
    c.RunOne<ClIpFloodFill>([](ClIpFloodFill& cOperator) { cOperator.m_nCountThresh = 40; });
    c.RunOne<ClIpFloodFillLabeling>([](ClIpFloodFillLabeling&) {});
    c.Run<ClIpLabeling>(
        [](ClIpLabeling& cOperator, ClImage& cIn, ClImage& cOut)
        {
            cOperator.m_pInImage = &cIn;
            cOperator.m_pOutImage = &cOut;
        },
        [&](const ClIpLabeling& cOperator) { c.m_cHash.Add({cOperator.m_nLabels}); });
}

void GreyValues(ClRuns& c)
{
    for (const double dGamma : {0.3, 0.8, 1.0, 2.2, 5.0})
    {
        c.RunOne<ClIpGammaCorrection>([&](ClIpGammaCorrection& cOperator) { cOperator.m_dGamma = dGamma; });
        c.RunOne<ClIpGammaCorrection>(
            [&](ClIpGammaCorrection& cOperator)
            {
                cOperator.m_dGamma = dGamma;
                cOperator.m_nBlack = 60;
                cOperator.m_nWhite = 190;
            });
    }
    c.RunOne<ClIpStretchRangeGlobal>([](ClIpStretchRangeGlobal&) {});
    c.RunOne<ClIpStretchRangeGlobal>(
        [](ClIpStretchRangeGlobal& cOperator)
        {
            cOperator.m_nOldRangeFrom = 50;
            cOperator.m_nOldRangeTo = 97;
            cOperator.m_nNewRangeFrom = 10;
            cOperator.m_nNewRangeTo = 240;
        });
    for (const double dPart : {0.0, 0.02, 0.3})
    {
        c.RunOne<ClIpStretchRangeGlobalNoiseRemoving>(
            [&](ClIpStretchRangeGlobalNoiseRemoving& cOperator)
            {
                cOperator.m_dDarkNoisePart = dPart;
                cOperator.m_dBrightNoisePart = 0.07;
            });
    }
}

void Planes(ClRuns& c)
{
    for (int nMode = ClIpRgbToGrey::MaxRgb; nMode <= ClIpRgbToGrey::Lightness; ++nMode)
    {
        c.Run<ClIpRgbToGrey>(
            [&](ClIpRgbToGrey& cOperator, ClImage&, ClImage& cOut)
            {
                cOperator.m_pInImage = &c.m_cColour;
                cOperator.m_pOutImage = &cOut;
                cOperator.m_eMode = static_cast<ClIpRgbToGrey::eProcessingMode>(nMode);
            });
    }
    ClImage acPlane[3];
    c.Run<ClIpSplitPlanes>(
        [&](ClIpSplitPlanes& cOperator, ClImage&, ClImage&)
        {
            cOperator.m_pInImage = &c.m_cColour;
            for (int i = 0; i < 3; ++i) cOperator.m_apOutPlane[i] = &acPlane[i];
        });
    for (const ClImage& cPlane : acPlane) c.m_cHash.AddImage(cPlane);
    for (const ClImage::EContent eContent : {ClImage::eRGB, ClImage::eRGBA, ClImage::eHSV})
    {
        c.Run<ClIpJoinPlanes>(
            [&](ClIpJoinPlanes& cOperator, ClImage&, ClImage& cOut)
            {
                cOperator.m_apInPlane[0] = &acPlane[2];
                cOperator.m_apInPlane[2] = &acPlane[1];
                cOperator.m_adFillcolors[1] = 17.9;
                cOperator.m_eOutContent = eContent;
                cOperator.m_pOutImage = &cOut;
            });
    }
}

void Rescalings(ClRuns& c)
{
    using Operator = ClIpRescale;
    const int aanSize[][2] = {{1, 1}, {5, 3}, {16, 40}, {74, 46}, {113, 90}};
    for (int nMode = Operator::ModeWholeNumbered; nMode <= Operator::ModeBiLinearFantMar; ++nMode)
    {
        for (const auto& anSize : aanSize)
        {
            for (const double dKernel : {-0.75, 0.5})
            {
                c.RunOne<Operator>(
                    [&](Operator& cOperator)
                    {
                        cOperator.m_eMode = static_cast<Operator::eProcessingMode>(nMode);
                        cOperator.m_nNewWidth = anSize[0];
                        cOperator.m_nNewHeight = anSize[1];
                        cOperator.m_dConvParameter1 = dKernel;
                    });
            }
        }
        c.RunOne<Operator>(
            [&](Operator& cOperator)
            {
                cOperator.m_eMode = static_cast<Operator::eProcessingMode>(nMode);
                cOperator.m_nNewPelsX = cOperator.m_nNewPelsY = 5000;
            });
    }
}

void Rotations(ClRuns& c)
{
    for (const double dAngle : {0.0, 0.1, -0.35, 1.57, 2.5, -4.0})
    {
        for (int nWays = 0; nWays < 4; ++nWays)
        {
            c.RunOne<ClIpRotate>(
                [&](ClIpRotate& cOperator)
                {
                    cOperator.m_cCenter = ClVector(c.m_cIn.m_nWidth / 2.0, 3.25);
                    cOperator.m_dRotation = dAngle;
                    cOperator.m_bResizeOutImage = nWays % 2 != 0;
                    cOperator.m_bInterpolate = nWays / 2 != 0;
                });
        }
    }
}

void Histograms(ClRuns& c)
{
    ClHistogram cHistogram;
    try
    {
        cHistogram.Create(c.m_cIn);
        double adSlope[ClHistogram::nBins];
        double dDark = 0.0;
        double dBright = 0.0;
        cHistogram.CalcFirstDerivation(3, adSlope);
        c.m_cHash.Add({cHistogram.FirstValue(), cHistogram.LastValue(), cHistogram.GetColorCount(),
                       cHistogram.GetMid(0, 255), cHistogram.IsUnimodal(),
                       cHistogram.TwoMeansClustering(dDark, dBright)});
        for (const double d :
             {dDark, dBright, cHistogram.GetAverage(0.02, 0.07), cHistogram.GetGreyMid(), cHistogram.GetUniformity(),
              cHistogram.GetAverageDeviation(), cHistogram.GetStdDeviation(), cHistogram.GetCentreOfMass(20, 200)})
            c.m_cHash.AddNumber(d);
        for (const double d : adSlope) c.m_cHash.AddNumber(d);
    }
    catch (const ClException& e)
    {
        c.m_cHash.Add({e.Number()});
    }
}

struct ClFamily
{
    const char* m_szName;
    void (*m_pRun)(ClRuns&);
};
constexpr ClFamily g_aFamilies[] = {
    {"auto-threshold", AutoThresholds},
    {"threshold", GlobalThresholds},
    {"components", Components},
    {"convert", Conversions},
    {"cut", Cuts},
    {"delta", Differences},
    {"mid", Means},
    {"rotating", UniformMasks},
    {"fill", Fills},
    {"grey-values", GreyValues},
    {"planes", Planes},
    {"rescale", Rescalings},
    {"rotate", Rotations},
    {"histogram", Histograms},
};

const char* TypeName(unsigned char eType)
{
    switch (eType)
    {
#define RD_BITS_NAME(eCode, T)                                                                                         \
    case ClImage::eCode: return #eCode;
        RD_SAMPLE_TYPES(RD_BITS_NAME)
#undef RD_BITS_NAME
    default: return "";
    }
}

std::string HashOfFamily(const ClFamily& cFamily, unsigned char eType, int nPlanes)
{
    ClBitHash cHash;
    const int aanSize[][2] = {{1, 1}, {6, 5}, {37, 23}, {81, 60}};
    for (int nKind = eNoise; nKind < eKinds; ++nKind)
    {
        for (const auto& anSize : aanSize)
        {
            ClRuns cRuns(cHash, eType, nPlanes, static_cast<EKind>(nKind), anSize[0], anSize[1]);
            cFamily.m_pRun(cRuns);
        }
    }
    return cHash.Text();
}
} // namespace

void AddOperatorItems(BitItems_t& aItems)
{
    for (const ClFamily& cFamily : g_aFamilies)
    {
        for (const unsigned char eType : g_aeTypes)
        {
            for (const int nPlanes : {1, 3})
            {
                const std::string sName =
                    "operator/" + std::string(cFamily.m_szName) + "/" + TypeName(eType) + "/" + std::to_string(nPlanes);
                aItems.push_back({sName, [=, &cFamily]
                                  { return ClBitItem::Lines_t{sName + " " + HashOfFamily(cFamily, eType, nPlanes)}; }});
            }
        }
    }
}
