// The C++ interface when allocations fail, its own and those of the library.

#include "AllocationFailures.hpp"
#include "GuardedBytes.hpp"
#include "SlapPicture.hpp"
#include "VelmarinKormelinSegmentation.hpp"

#include <new>
#include <string>
#include <vector>

namespace
{
/// An application's whole use of the library. Either failure, the wrapper's own and the library's, counts as one.
class ClApplicationCase
{
public:
    ClApplicationCase(const ClMovingInput& cBitmap, kormelin::Mode eMode) : m_cBitmap(cBitmap), m_eMode(eMode) {}
    long Call()
    {
        m_aSeen.clear();
        try
        {
            Use();
        }
        catch (const kormelin::Error& cFailure)
        {
            return cFailure.Code();
        }
        catch (const std::bad_alloc&)
        {
            return FPC_ERROR_OUT_OF_MEMORY;
        }
        return 0;
    }
    std::vector<unsigned char> See() const { return m_aSeen; }
    bool Kept() const { return true; }

private:
    void Use()
    {
        const kormelin::Library cLibrary;
        kormelin::Segmentation cRun(m_eMode, kormelin::Origin::eTop);
        const ClReadOnlyBytes& cBitmap = m_cBitmap.Place(m_nCalls++);
        cRun.Run(cBitmap.Data(), cBitmap.Size());
        std::vector<unsigned char> aSeen;
        for (const kormelin::Segment& cSegment : cRun.Segments())
        {
            const kormelin::GreyPicture cPicture = cSegment.Picture();
            aSeen.push_back(static_cast<unsigned char>(cSegment.X()));
            aSeen.push_back(static_cast<unsigned char>(cSegment.Y()));
            aSeen.insert(aSeen.end(), cPicture.m_aPixels.begin(), cPicture.m_aPixels.end());
        }
        const std::string sVersion = kormelin::Version();
        aSeen.insert(aSeen.end(), sVersion.begin(), sVersion.end());
        m_aSeen.swap(aSeen);
    }

    const ClMovingInput& m_cBitmap;
    long m_nCalls = 0; ///< of the library with the bitmap
    kormelin::Mode m_eMode;
    std::vector<unsigned char> m_aSeen;
};

long FailEveryAllocationOf(const std::vector<unsigned char>& aBitmap, kormelin::Mode eMode)
{
    const ClMovingInput cBitmap(aBitmap);
    return FailEveryAllocation(EUnderFailure::eReturns, [&] { return ClApplicationCase(cBitmap, eMode); });
}

class CppInterfaceMemory : public testing::Test
{
protected:
    void TearDown() override { RecordProperty("AllocationFailures", std::to_string(m_nFailures)); }

    long m_nFailures = 0; ///< calls of this test that met one
};
} // namespace

TEST_F(CppInterfaceMemory, AnApplicationIsToldAndLeavesNothingBehind)
{
    const std::vector<unsigned char> aFingers = ClSlapPicture(SlapScenes::TwoFingers(3937)).Block();
    m_nFailures = FailEveryAllocationOf(aFingers, kormelin::Mode::eFingers) +
                  FailEveryAllocationOf(aFingers, kormelin::Mode::eBiggest);
    EXPECT_LT(400, m_nFailures);
}

TEST_F(CppInterfaceMemory, ErrorsThatAreNotForWantOfMemory)
{
    const std::vector<unsigned char> aThree = ClSlapPicture(SlapScenes::ThreeFingers(3937)).Block();
    const std::vector<unsigned char> aCut(aThree.begin(), aThree.end() - 1);
    m_nFailures = FailEveryAllocationOf(aThree, kormelin::Mode::eFingers) +
                  FailEveryAllocationOf(aCut, kormelin::Mode::eFingers) +
                  FailEveryAllocationOf({}, kormelin::Mode::eFingers);
    EXPECT_LT(400, m_nFailures);
}
