// What becomes of whole runs of the processor when their allocations fail.

#include "AllocationFailures.hpp"
#include "FourPrintTestTools.hpp"
#include "TestTools.hpp"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace
{
/// Sets up a processor; may keep images for it.
struct StSetting
{
    const char* m_szName;
    std::function<void(ClIpFourPrintSegmentation&, ClImage (&)[4])> m_fnSet;
};

const std::vector<StSetting> aSettings = {
    {"images only", [](auto& c, auto&) { c.m_pOutImage = nullptr; }},
    {"with the binary image", [](auto& c, auto& acImage) { c.m_pOutImage = &acImage[0]; }},
    {"boxes alone", [](auto& c, auto&) { c.m_bCutFingers = false; }},
    {"without refinement", [](auto& c, auto&) { c.m_bRefineFingers = false; }},
    {"with the images of the stages",
     [](auto& c, auto& acImage)
     {
         c.m_bDebugImages = true;
         c.m_pDebugScaled = &acImage[1];
         c.m_pDebugFiltered = &acImage[2];
         c.m_pDebugStretched = &acImage[3];
     }},
};

template <class T> void Append(std::vector<unsigned char>& aSeen, T value)
{
    const auto* p = reinterpret_cast<const unsigned char*>(&value);
    aSeen.insert(aSeen.end(), p, p + sizeof value);
}

void AppendImage(std::vector<unsigned char>& aSeen, const ClImage& cImage)
{
    Append(aSeen, cImage.m_nWidth);
    Append(aSeen, cImage.m_nHeight);
    for (int y = 0; y < cImage.m_nHeight && cImage.Data() != nullptr; ++y)
    {
        const auto* pRow = Row<unsigned char>(cImage, y);
        aSeen.insert(aSeen.end(), pRow, pRow + cImage.SamplesPerRow() * ClImage::SampleSize(cImage.m_eDataType));
    }
}

/// A run of a new processor. A processor serves one run, so it is another one that does it again.
class ClRunCase
{
public:
    ClRunCase(const StSetting& cSetting, ClImage& cInput) : m_cSetting(cSetting), m_cInput(cInput)
    {
        m_cBefore = cInput;
    }
    long Call()
    {
        m_pProcessor = nullptr;
        m_pProcessor = ConvertBadAlloc([] { return std::make_unique<ClIpFourPrintSegmentation>(); });
        m_cSetting.m_fnSet(*m_pProcessor, m_acImage);
        m_pProcessor->m_pInImage = &m_cInput;
        return m_pProcessor->Apply();
    }
    std::vector<unsigned char> See()
    {
        std::vector<unsigned char> aSeen;
        if (m_pProcessor == nullptr)
        {
            return aSeen;
        }
        const ClIpFourPrintSegmentation& c = *m_pProcessor;
        Append(aSeen, c.m_nFingers);
        Append(aSeen, c.m_nHand);
        for (unsigned long i = 0; i < c.m_aRects.Entries(); ++i)
        {
            Append(aSeen, c.m_aRects[i]);
        }
        for (unsigned long i = 0; c.m_aImages.m_pData != nullptr && i < c.m_aImages.Entries(); ++i)
        {
            AppendImage(aSeen, c.m_aImages[i]);
        }
        for (const ClImage& cImage : m_acImage)
        {
            AppendImage(aSeen, cImage);
        }
        return aSeen;
    }
    bool Kept() const { return SamePixels(m_cBefore, m_cInput) && SameDescription(m_cBefore, m_cInput); }

private:
    const StSetting& m_cSetting;
    ClImage& m_cInput;
    ClImage m_cBefore;
    ClImage m_acImage[4];
    std::unique_ptr<ClIpFourPrintSegmentation> m_pProcessor;
};

long FailEveryAllocationOf(const StSetting& cSetting, ClImage& cInput)
{
    SCOPED_TRACE(cSetting.m_szName);
    return FailEveryAllocation(EUnderFailure::eRaises, [&] { return ClRunCase(cSetting, cInput); });
}

/// The grey picture with three equal planes.
void MakeColour(const ClImage& cGrey, ClImage& cColour)
{
    cColour.NewWithType(ClImage::eUInt8, cGrey.m_nWidth, cGrey.m_nHeight, 3, cGrey.m_nXRes, cGrey.m_nYRes);
    for (int y = 0; y < cGrey.m_nHeight; ++y)
    {
        for (int x = 0; x < cGrey.m_nWidth; ++x)
        {
            std::fill_n(Row<unsigned char>(cColour, y) + 3 * x, 3, Row<unsigned char>(cGrey, y)[x]);
        }
    }
}

class IpFourPrintMemory : public testing::Test
{
protected:
    void TearDown() override { RecordProperty("AllocationFailures", std::to_string(m_nFailures)); }

    long m_nFailures = 0; ///< calls of this test that met one
};
} // namespace

TEST_F(IpFourPrintMemory, EverySettingTellsAndPasses)
{
    ClImage cGrey;
    MakeImage(ClSlapPicture(SlapScenes::TwoFingers(3937)), cGrey);
    for (const StSetting& cSetting : aSettings)
    {
        m_nFailures += FailEveryAllocationOf(cSetting, cGrey);
    }
    ClImage cColour;
    MakeColour(cGrey, cColour);
    m_nFailures += FailEveryAllocationOf(aSettings[1], cColour);
    EXPECT_LT(1500, m_nFailures);
}

// Hands that lean, thumbs that are turned, pictures that are reduced first.
TEST_F(IpFourPrintMemory, EveryRoadTellsAndPasses)
{
    for (const ClSlapScene& cScene :
         {SlapScenes::LeaningHand(0.5, 3937), SlapScenes::TwoFlatThumbs(5000), SlapScenes::TouchingFingers(3937)})
    {
        ClImage cInput;
        MakeImage(ClSlapPicture(cScene), cInput);
        m_nFailures += FailEveryAllocationOf(aSettings[1], cInput);
    }
    EXPECT_LT(1000, m_nFailures);
}

TEST_F(IpFourPrintMemory, TheDemonstrationPictureTellsAndPasses)
{
    ClImage cInput;
    MakeImage(ClSlapPicture(SlapScenes::TwoFingers(3937)), cInput);
    ClIpFourPrintSegmentation cProcessor;
    cProcessor.m_pInImage = &cInput;
    ASSERT_EQ(0, cProcessor.Apply());
    struct StCase
    {
        const ClIpFourPrintSegmentation& m_cProcessor;
        ClImage m_cPicture;

        long Call() { return m_cProcessor.CreateDemoPicture(&m_cPicture, 1.2); }
        std::vector<unsigned char> See() const
        {
            std::vector<unsigned char> aSeen;
            AppendImage(aSeen, m_cPicture);
            return aSeen;
        }
        bool Kept() const { return true; }
    };
    m_nFailures = FailEveryAllocation(EUnderFailure::eRaises, [&] { return StCase{cProcessor, {}}; });
    EXPECT_LT(50, m_nFailures);
}

// The profile of an application grows within the run.
TEST_F(IpFourPrintMemory, TheProfileOfCallsTellsAndPasses)
{
    ClImage cInput;
    MakeImage(ClSlapPicture(SlapScenes::OneFinger(3937)), cInput);
    struct StProfiledCase : ClRunCase
    {
        using ClRunCase::ClRunCase;
        ~StProfiledCase() { g_pClassCallProfile = nullptr; }
        long Call()
        {
            g_pClassCallProfile = &m_cProfile;
            const long nResult = ClRunCase::Call();
            g_pClassCallProfile = nullptr;
            return nResult;
        }
        ClClassCallProfile m_cProfile;
    };
    m_nFailures = FailEveryAllocation(EUnderFailure::eRaises, [&] { return StProfiledCase(aSettings[0], cInput); });
    EXPECT_LT(200, m_nFailures);
}
