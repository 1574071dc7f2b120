#include "VelmarinKormelinSegmentation.h"

#include "KormelinSegmentHandle.hpp"
#include "KormelinSegmentation.hpp"
#include "KormelinSegmentationHandle.hpp"
#include "LibraryFixture.hpp"
#include "SlapPicture.hpp"
#include "TestTools.hpp"

#include <climits>
#include <cstring>
#include <functional>
#include <new>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace
{
Block TwoFingers()
{
    return ClSlapPicture(SlapScenes::TwoFingers(3937)).Block();
}

/// The segments of the last run: rectangle and bitmap of each, as an application gets them.
struct ClSegments
{
    std::vector<std::vector<long>> m_aRectangles;
    std::vector<Block> m_aBitmaps;

    bool operator==(const ClSegments& cOther) const
    {
        return m_aRectangles == cOther.m_aRectangles && m_aBitmaps == cOther.m_aBitmaps;
    }
};

ClSegments SegmentsOf(void* hSegmentation)
{
    ClSegments cSegments;
    void* hSegment = nullptr;
    long nCount = 0;
    EXPECT_EQ(0, KSGetPropertyLongA(hSegmentation, "Count", &nCount));
    EXPECT_EQ(0, KSCreateSegmentHandle(&hSegment));
    for (int i = 0; i < nCount; ++i)
    {
        EXPECT_EQ(0, KSGetSegment(hSegmentation, i, hSegment));
        std::vector<long> anRectangle;
        for (const char* szName : {"x", "y", "Width", "Height"})
        {
            long nValue = -77;
            EXPECT_EQ(0, KSGetPropertyLongA(hSegment, szName, &nValue));
            anRectangle.push_back(nValue);
        }
        cSegments.m_aRectangles.push_back(anRectangle);
        unsigned long nSize = 0;
        EXPECT_EQ(-21, KSGetBitmap(hSegment, nullptr, &nSize));
        Block aBitmap(nSize);
        EXPECT_EQ(0, KSGetBitmap(hSegment, reinterpret_cast<tagBITMAPINFOHEADER*>(aBitmap.data()), &nSize));
        cSegments.m_aBitmaps.push_back(aBitmap);
    }
    EXPECT_EQ(0, KSDestroyHandle(&hSegment));
    return cSegments;
}

} // namespace

// ---- the library as a whole

TEST(Library, DescribesEveryCodeOfTheCatalogueAndNoOther)
{
#define CATALOGUE_CODE(name, code, text) code,
    const long anCodes[] = {FPC_ERROR_CATALOGUE(CATALOGUE_CODE)};
#undef CATALOGUE_CODE
    for (const long nCode : anCodes)
    {
        EXPECT_STRNE("Unknown error code.", KSGetErrorDescriptionA(nCode)) << nCode;
    }
    EXPECT_STREQ("No errors occurred.", KSGetErrorDescriptionA(0));
    EXPECT_STREQ("The handle parameter is set to NULL.", KSGetErrorDescriptionA(-42));
    EXPECT_STREQ("The input is corrupt can be a memoryblock or a file.", KSGetErrorDescriptionA(-38));
    for (const long nUnknown : {1L, -3L, -401L, -436L, LONG_MAX, LONG_MIN, 2147483647L})
    {
        EXPECT_STREQ("Unknown error code.", KSGetErrorDescriptionA(nUnknown)) << nUnknown;
    }
}

TEST(Library, CountsItsInitialisations)
{
    EXPECT_EQ(-2, KSUninitialize());
    EXPECT_EQ(0, KSInitialize(nullptr));
    EXPECT_EQ(0, KSInitialize("ignored"));
    EXPECT_EQ(0, KSUninitialize());
    EXPECT_EQ(0, KSUninitialize());
    EXPECT_EQ(-2, KSUninitialize());
    EXPECT_EQ(0, KSInitialize(nullptr)); // and again from the beginning
    EXPECT_EQ(0, KSUninitialize());
}

TEST(Library, GivesItsVersionWithoutInitialisation)
{
    unsigned long nSize = 0;
    EXPECT_EQ(-21, KSGetVersionA(nullptr, &nSize));
    EXPECT_EQ(11u, nSize);
    EXPECT_EQ(0, KSGetVersionA(nullptr, &nSize));
    EXPECT_EQ(11u, nSize);
    const ClGuardedBytes cBuffer(11);
    char* szVersion = reinterpret_cast<char*>(cBuffer.Data());
    EXPECT_EQ(0, KSGetVersionA(szVersion, &nSize));
    EXPECT_STREQ(KS_VERSION_TEXT, szVersion);

    char acShort[10];
    std::memset(acShort, 'z', sizeof acShort);
    nSize = sizeof acShort;
    EXPECT_EQ(-21, KSGetVersionA(acShort, &nSize));
    EXPECT_EQ(11u, nSize);
    EXPECT_EQ(0, std::memcmp("zzzzzzzzzz", acShort, sizeof acShort));
    EXPECT_EQ(-24, KSGetVersionA(acShort, nullptr));
    EXPECT_EQ(-24, KSGetVersionA(nullptr, nullptr));
}

TEST(Library, MakesHandlesOnlyWhileItIsInitialised)
{
    int nAny = 0;
    void* hHandle = &nAny;
    EXPECT_EQ(-2, KSCreateSegmentationHandle(&hHandle));
    EXPECT_EQ(-2, KSCreateSegmentHandle(&hHandle));
    EXPECT_EQ(-2, KSCreateSegmentHandle(nullptr)); // tested before the pointer
    EXPECT_EQ(&nAny, hHandle);
    ASSERT_EQ(0, KSInitialize(nullptr));
    EXPECT_EQ(-701, KSCreateSegmentationHandle(nullptr));
    EXPECT_EQ(-701, KSCreateSegmentHandle(nullptr));
    EXPECT_EQ(0, KSCreateSegmentHandle(&hHandle));
    EXPECT_EQ(0, KSUninitialize());

    void* hLate = nullptr;
    EXPECT_EQ(-2, KSCreateSegmentHandle(&hLate));
    EXPECT_EQ(-2, KSCreateSegmentationHandle(&hLate));
    EXPECT_EQ(nullptr, hLate);
    long nValue = -77;
    EXPECT_EQ(0, KSGetPropertyLongA(hHandle, "x", &nValue)); // made in time
    EXPECT_EQ(0, nValue);
    EXPECT_EQ(0, KSDestroyHandle(&hHandle));
    EXPECT_EQ(nullptr, hHandle);
}

// ---- handles

TEST_F(VelmarinKormelinSegmentation, DestroyClearsTheCallersVariable)
{
    EXPECT_EQ(-44, KSDestroyHandle(nullptr));
    void* hNull = nullptr;
    EXPECT_EQ(-42, KSDestroyHandle(&hNull));
    for (void** phHandle : {&m_hSegmentation, &m_hSegment})
    {
        EXPECT_EQ(0, KSDestroyHandle(phHandle));
        EXPECT_EQ(nullptr, *phHandle);
        EXPECT_EQ(-42, KSDestroyHandle(phHandle));
    }
    char acNoHandle[24] = {};
    void* hNoHandle = acNoHandle;
    EXPECT_EQ(-43, KSDestroyHandle(&hNoHandle));
    EXPECT_EQ(acNoHandle, hNoHandle);
}

TEST_F(VelmarinKormelinSegmentation, EveryFunctionChecksItsHandle)
{
    char acNoHandle[24] = "KS"; // one stamp is not enough
    long nValue = 0;
    double dValue = 0.0;
    unsigned long nSize = 0;
    for (const auto& [handle, nCode] : {std::pair<void*, long>(nullptr, -42), std::pair<void*, long>(acNoHandle, -43)})
    {
        EXPECT_EQ(nCode, KSGetPropertyA(handle, nullptr, nullptr, nullptr));
        EXPECT_EQ(nCode, KSSetPropertyA(handle, nullptr, nullptr));
        EXPECT_EQ(nCode, KSGetPropertyLongA(handle, "Count", &nValue));
        EXPECT_EQ(nCode, KSSetPropertyLongA(handle, "Count", 1));
        EXPECT_EQ(nCode, KSGetPropertyDoubleA(handle, "Count", &dValue));
        EXPECT_EQ(nCode, KSSetPropertyDoubleA(handle, "Count", 1.0));
        EXPECT_EQ(nCode, KSSegmentBitmap(handle, nullptr, 0));
        EXPECT_EQ(nCode, KSGetSegment(handle, 0, nullptr));
        EXPECT_EQ(nCode, KSGetSegment(m_hSegmentation, 0, handle));
        EXPECT_EQ(nCode, KSGetBitmap(handle, nullptr, nullptr));
        EXPECT_EQ(nCode, KSGetBitmap(handle, nullptr, &nSize));
    }
}

TEST_F(VelmarinKormelinSegmentation, DamagedStampsAreNoticed)
{
    for (const std::size_t nOffset : {0u, 16u})
    {
        char& cByte = static_cast<char*>(m_hSegmentation)[nOffset];
        const char cBefore = cByte;
        cByte = 'X';
        long nValue = 0;
        EXPECT_EQ(-43, KSGetPropertyLongA(m_hSegmentation, "Count", &nValue));
        EXPECT_EQ(-43, KSSegmentBitmap(m_hSegmentation, nullptr, 0));
        EXPECT_EQ(-43, KSDestroyHandle(&m_hSegmentation));
        cByte = cBefore;
    }
    EXPECT_EQ(0, Long(m_hSegmentation, "Count"));
}

TEST_F(VelmarinKormelinSegmentation, TypedFunctionsRefuseTheOtherKind)
{
    unsigned long nSize = 0;
    EXPECT_EQ(-43, KSSegmentBitmap(m_hSegment, Header(OneObject()), 0));
    EXPECT_EQ(-43, KSGetSegment(m_hSegment, 0, m_hSegment));
    EXPECT_EQ(-43, KSGetSegment(m_hSegment, 0, m_hSegmentation));
    EXPECT_EQ(-43, KSGetSegment(m_hSegmentation, 0, m_hSegmentation));
    EXPECT_EQ(-43, KSGetBitmap(m_hSegmentation, nullptr, &nSize));
    EXPECT_EQ(0, Long(m_hSegmentation, "Count")); // the property functions take both
    EXPECT_EQ(0, Long(m_hSegment, "x"));
}

// ---- properties

TEST_F(VelmarinKormelinSegmentation, PropertiesTestNameThenTypeThenAccess)
{
    char szText[16];
    unsigned long nSize = sizeof szText;
    long nValue = 0;
    double dValue = 0.0;
    for (const auto& [szName, nCode] : {std::pair<const char*, long>(nullptr, -44), {"Nothing", -206}})
    {
        for (void* handle : {m_hSegmentation, m_hSegment})
        {
            EXPECT_EQ(nCode, KSGetPropertyA(handle, szName, szText, &nSize));
            EXPECT_EQ(nCode, KSGetPropertyA(handle, szName, szText, nullptr));
            EXPECT_EQ(nCode, KSSetPropertyA(handle, szName, "1"));
            EXPECT_EQ(nCode, KSGetPropertyLongA(handle, szName, &nValue));
            EXPECT_EQ(nCode, KSSetPropertyLongA(handle, szName, 1));
            EXPECT_EQ(nCode, KSGetPropertyDoubleA(handle, szName, &dValue));
            EXPECT_EQ(nCode, KSSetPropertyDoubleA(handle, szName, 1.0));
        }
    }
    EXPECT_EQ(-44, KSGetPropertyLongA(m_hSegmentation, "Version", &nValue));
    EXPECT_EQ(-44, KSSetPropertyLongA(m_hSegmentation, "Version", 1));
    EXPECT_EQ(-44, KSGetPropertyDoubleA(m_hSegmentation, "Count", &dValue));
    EXPECT_EQ(-44, KSSetPropertyDoubleA(m_hSegmentation, "SegmentationMode", 1.0));
    EXPECT_EQ(-44, KSSetPropertyDoubleA(m_hSegment, "x", 1.0));
    EXPECT_EQ(-47, KSSetPropertyLongA(m_hSegmentation, "Count", 1));
    EXPECT_EQ(-47, KSSetPropertyLongA(m_hSegment, "FingerPosition", 1));
    EXPECT_EQ(-47, KSSetPropertyA(m_hSegmentation, "Version", "1"));
    EXPECT_EQ(-35, KSSetPropertyLongA(m_hSegmentation, "SegmentationMode", 2));
    EXPECT_EQ(-35, KSSetPropertyA(m_hSegmentation, "CoordinateOrigin", "-1"));
    EXPECT_EQ(-44, KSSetPropertyA(m_hSegmentation, "CoordinateOrigin", "one"));
    EXPECT_EQ(-44, KSSetPropertyA(m_hSegmentation, "CoordinateOrigin", nullptr));
    EXPECT_EQ(0, Long(m_hSegmentation, "SegmentationMode"));
    EXPECT_EQ(0, Long(m_hSegmentation, "CoordinateOrigin"));
}

TEST_F(VelmarinKormelinSegmentation, PropertiesAreReadAndWritten)
{
    EXPECT_EQ(0, KSSetPropertyLongA(m_hSegmentation, "segmentationmode", 1));
    EXPECT_EQ(1, Long(m_hSegmentation, "SegmentationMode"));
    EXPECT_EQ(0, KSSetPropertyA(m_hSegmentation, "CoordinateOrigin", "0x1"));
    EXPECT_EQ(1, Long(m_hSegmentation, "CoordinateOrigin"));
    for (void* handle : {m_hSegmentation, m_hSegment})
    {
        char szText[16] = "before";
        unsigned long nSize = sizeof szText;
        EXPECT_EQ(0, KSGetPropertyA(handle, "Version", szText, &nSize));
        EXPECT_STREQ("1.1.1407.3", szText);
        EXPECT_EQ(11u, nSize);
    }
    char szText[2] = {'z', 'z'};
    unsigned long nSize = 2;
    EXPECT_EQ(0, KSGetPropertyA(m_hSegmentation, "SegmentationMode", szText, &nSize));
    EXPECT_STREQ("1", szText);
    EXPECT_EQ(2u, nSize);
    EXPECT_EQ(-24, KSGetPropertyA(m_hSegmentation, "SegmentationMode", szText, nullptr));
    nSize = 1;
    EXPECT_EQ(-21, KSGetPropertyA(m_hSegmentation, "SegmentationMode", szText, &nSize));
    EXPECT_EQ(2u, nSize);
    EXPECT_EQ('1', szText[0]);
    nSize = 2;
    EXPECT_EQ(-21, KSGetPropertyA(m_hSegmentation, "Version", szText, &nSize));
    EXPECT_EQ(11u, nSize);
    EXPECT_EQ('\0', szText[0]);
}

// ---- segmentation

TEST_F(VelmarinKormelinSegmentation, CutsTheBiggestObject)
{
    SetLong("SegmentationMode", 1);
    ASSERT_EQ(0, Segment(m_hSegmentation, OneObject()));
    EXPECT_EQ(1, Long(m_hSegmentation, "Count"));
    ClSegments cSegments = SegmentsOf(m_hSegmentation);
    ASSERT_EQ(1u, cSegments.m_aRectangles.size());
    EXPECT_EQ((std::vector<long>{6, 11, 9, 19}), cSegments.m_aRectangles[0]);
    ASSERT_EQ(1064u + 12u * 19u, cSegments.m_aBitmaps[0].size());
    for (std::size_t y = 0; y < 19; ++y)
    {
        for (std::size_t x = 0; x < 9; ++x)
        {
            ASSERT_EQ(y + 11, cSegments.m_aBitmaps[0][1064 + 12 * y + x]);
        }
    }
    SetLong("CoordinateOrigin", 1);
    EXPECT_EQ((std::vector<long>{6, 50 - 30, 9, 19}), SegmentsOf(m_hSegmentation).m_aRectangles[0]);
    EXPECT_EQ(-35, KSGetSegment(m_hSegmentation, 1, m_hSegment));
    EXPECT_EQ(-35, KSGetSegment(m_hSegmentation, -1, m_hSegment));
}

TEST_F(VelmarinKormelinSegmentation, CutsTwoFingers)
{
    const ClSlapPicture cPicture(SlapScenes::TwoFingers(19685));
    ASSERT_EQ(0, Segment(m_hSegmentation, cPicture.Block()));
    EXPECT_EQ(2, Long(m_hSegmentation, "Count"));
    const ClSegments cSegments = SegmentsOf(m_hSegmentation);
    ASSERT_EQ(2u, cSegments.m_aRectangles.size());
    for (std::size_t i = 0; i < 2; ++i) // each rectangle holds the middle of its finger
    {
        const std::vector<long>& anFound = cSegments.m_aRectangles[i];
        const ClSlapRect& cTrue = cPicture.m_aFingers[i];
        const long nX = (cTrue.left + cTrue.right) / 2;
        const long nY = (cTrue.bottom + cTrue.top) / 2;
        EXPECT_TRUE(anFound[0] <= nX && nX < anFound[0] + anFound[2]) << i;
        EXPECT_TRUE(anFound[1] <= nY && nY < anFound[1] + anFound[3]) << i;
    }
    ASSERT_EQ(0, KSGetSegment(m_hSegmentation, 1, m_hSegment));
    EXPECT_EQ(0, Long(m_hSegment, "FingerPosition"));
}

TEST_F(VelmarinKormelinSegmentation, SegmentsComeInAnyOrderAndReplaceOneAnother)
{
    ASSERT_EQ(0, Segment(m_hSegmentation, TwoFingers()));
    const ClSegments cSegments = SegmentsOf(m_hSegmentation);
    ASSERT_EQ(2u, cSegments.m_aBitmaps.size());
    EXPECT_NE(cSegments.m_aRectangles[0], cSegments.m_aRectangles[1]);
    for (const int nIndex : {1, 0, 0, 1})
    {
        ASSERT_EQ(0, KSGetSegment(m_hSegmentation, nIndex, m_hSegment));
        unsigned long nSize = ULONG_MAX;
        EXPECT_EQ(0, KSGetBitmap(m_hSegment, nullptr, &nSize));
        const Block& aExpected = cSegments.m_aBitmaps[static_cast<std::size_t>(nIndex)];
        ASSERT_EQ(aExpected.size(), nSize);
        const ClGuardedBytes cBuffer(nSize);
        EXPECT_EQ(0, KSGetBitmap(m_hSegment, reinterpret_cast<tagBITMAPINFOHEADER*>(cBuffer.Data()), &nSize));
        EXPECT_EQ(0, std::memcmp(aExpected.data(), cBuffer.Data(), nSize));
    }
}

TEST_F(VelmarinKormelinSegmentation, HandleStaysUsableAfterEveryFailure)
{
    Block aUniform = OneObject();
    std::memset(aUniform.data() + 1064, 200, aUniform.size() - 1064);
    Block aCoarse = OneObject();
    PutLong(aCoarse.data(), 24, 3899);
    const Block aGood = TwoFingers();
    ASSERT_EQ(0, Segment(m_hSegmentation, aGood));
    const ClSegments cExpected = SegmentsOf(m_hSegmentation);

    const std::pair<Block, long> aFailures[] = {{PackedBitmap(20, 20, 24), -11},
                                                {PackedBitmap(20, 20, 1), -12},
                                                {Block(aGood.begin(), aGood.begin() + 1064), -21},
                                                {Block(aGood.begin(), aGood.begin() + 30), -21},
                                                {aCoarse, -13},
                                                {aUniform, -15},
                                                {OneObject(), -14},
                                                {ClSlapPicture(SlapScenes::ThreeFingers(3937)).Block(), -35}};
    for (const auto& [aBlock, nCode] : aFailures)
    {
        EXPECT_EQ(nCode, Segment(m_hSegmentation, aBlock));
        EXPECT_EQ(-10, KSSegmentBitmap(m_hSegmentation, nullptr, 0));
        ASSERT_EQ(0, Segment(m_hSegmentation, aGood)) << "after " << nCode;
        EXPECT_TRUE(cExpected == SegmentsOf(m_hSegmentation)) << "after " << nCode;
    }
}

TEST_F(VelmarinKormelinSegmentation, RunsLeaveNoTraceInOneAnother)
{
    const Block aFingers = TwoFingers();
    ASSERT_EQ(0, Segment(m_hSegmentation, aFingers));
    const ClSegments cFingers = SegmentsOf(m_hSegmentation);
    SetLong("SegmentationMode", 1);
    ASSERT_EQ(0, Segment(m_hSegmentation, OneObject()));
    const ClSegments cObject = SegmentsOf(m_hSegmentation);
    EXPECT_EQ(1u, cObject.m_aBitmaps.size());
    SetLong("SegmentationMode", 0);
    ASSERT_EQ(0, Segment(m_hSegmentation, aFingers));
    EXPECT_TRUE(cFingers == SegmentsOf(m_hSegmentation));
    SetLong("SegmentationMode", 1);
    ASSERT_EQ(0, Segment(m_hSegmentation, OneObject()));
    EXPECT_TRUE(cObject == SegmentsOf(m_hSegmentation));
}

TEST_F(VelmarinKormelinSegmentation, ASegmentOutlivesEverythingElse)
{
    SetLong("SegmentationMode", 1);
    ASSERT_EQ(0, Segment(m_hSegmentation, OneObject()));
    ASSERT_EQ(0, KSGetSegment(m_hSegmentation, 0, m_hSegment));
    const ClSegments cSegments = SegmentsOf(m_hSegmentation);
    ASSERT_EQ(0, KSDestroyHandle(&m_hSegmentation));
    ASSERT_EQ(0, KSUninitialize());
    EXPECT_EQ(6, Long(m_hSegment, "x"));
    unsigned long nSize = ULONG_MAX;
    EXPECT_EQ(0, KSGetBitmap(m_hSegment, nullptr, &nSize));
    Block aBitmap(nSize);
    EXPECT_EQ(0, KSGetBitmap(m_hSegment, reinterpret_cast<tagBITMAPINFOHEADER*>(aBitmap.data()), &nSize));
    EXPECT_EQ(cSegments.m_aBitmaps[0], aBitmap);
}

TEST_F(VelmarinKormelinSegmentation, EmptySegmentHandleHasNoBitmap)
{
    unsigned long nSize = 77;
    EXPECT_EQ(-37, KSGetBitmap(m_hSegment, nullptr, nullptr));
    EXPECT_EQ(-51, KSGetBitmap(m_hSegment, nullptr, &nSize));
    EXPECT_EQ(-35, KSGetSegment(m_hSegmentation, 0, m_hSegment));
    EXPECT_EQ(-51, KSGetBitmap(m_hSegment, nullptr, &nSize));
    EXPECT_EQ(77u, nSize);
}

// ---- what a body may raise

namespace
{
/// Raises what it is told to from within a call.
class ClRaising : public ClKormelinSegmentationHandle
{
public:
    explicit ClRaising(std::function<void()> fnRaise) : m_fnRaise(std::move(fnRaise))
    {
        std::memcpy(m_cRecord.m_szFirst, m_szSignature, sizeof m_szSignature);
        std::memcpy(m_cRecord.m_szSecond, m_szSignature, sizeof m_szSignature);
        m_cRecord.m_pObject = static_cast<ClKormelinSegmentationHandle*>(this);
    }
    void OnQueryPropertys(ClParameterContainer&) override { m_fnRaise(); }

    long Call()
    {
        long nValue = 0;
        return KSGetPropertyLongA(&m_cRecord, "Count", &nValue);
    }

    std::function<void()> m_fnRaise;
    ClHandleRecord m_cRecord;
};
} // namespace

TEST(CallFrame, TurnsExceptionsOfTheLibraryIntoTheirNumbers)
{
    EXPECT_EQ(-35, ClRaising([] { throw ClExRange("text", -35, true, "here", 1); }).Call());
    EXPECT_EQ(-46, ClRaising([] { throw ClExVelmarin(-46, "here", 1); }).Call());
    EXPECT_EQ(2147483647L, ClRaising([] { throw ClException(2147483647L, false, "here", 1); }).Call());
}

TEST(CallFrame, TurnsAFailedAllocationOfTheStandardLibraryIntoOutOfMemory)
{
    ClRaising cRaising([] { throw std::bad_alloc(); });
    const std::string sLines = Logged(3, [&] { EXPECT_EQ(-102, cRaising.Call()); });
    EXPECT_NE(std::string::npos, sLines.find(" Error(-102): Memory allocation failed or given mem-block too small.\n"));
}

TEST(CallFrame, LetsOtherExceptionsPass)
{
    EXPECT_THROW(ClRaising([] { throw std::runtime_error("not of the library"); }).Call(), std::runtime_error);
    EXPECT_THROW(ClRaising([] { throw 5; }).Call(), int);
}

// ---- threads

TEST_F(VelmarinKormelinSegmentation, HandlesRunOnThreadsOfTheirOwn)
{
    const Block aFingers = TwoFingers();
    const Block aObject = OneObject();
    ASSERT_EQ(0, Segment(m_hSegmentation, aFingers));
    const ClSegments cFingers = SegmentsOf(m_hSegmentation);
    SetLong("SegmentationMode", 1);
    ASSERT_EQ(0, Segment(m_hSegmentation, aObject));
    const ClSegments cObject = SegmentsOf(m_hSegmentation);

    const auto fnWork = [](long nMode, const Block& aBlock, const ClSegments& cExpected)
    {
        for (int i = 0; i < 3; ++i)
        {
            void* hOwn = nullptr;
            EXPECT_EQ(0, KSInitialize(nullptr));
            EXPECT_EQ(0, KSCreateSegmentationHandle(&hOwn));
            EXPECT_EQ(0, KSSetPropertyLongA(hOwn, "SegmentationMode", nMode));
            EXPECT_EQ(0, Segment(hOwn, aBlock));
            EXPECT_TRUE(cExpected == SegmentsOf(hOwn));
            EXPECT_EQ(0, KSDestroyHandle(&hOwn));
            EXPECT_EQ(0, KSUninitialize());
        }
    };
    std::thread cFirst([&] { fnWork(0, aFingers, cFingers); });
    std::thread cSecond([&] { fnWork(0, aFingers, cFingers); }); // the same picture, read by both
    std::thread cThird([&] { fnWork(1, aObject, cObject); });
    cFirst.join();
    cSecond.join();
    cThird.join();
}
