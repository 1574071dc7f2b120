#include "RDTools/SafeHandle.hpp"

#include "TestTools.hpp"

#include <cstring>

namespace
{
class ClThing
{
public:
    ClThing()
    {
        if (m_nThrow == 1)
        {
            throw std::bad_alloc();
        }
        if (m_nThrow == 2)
        {
            throw ClExVelmarin(-35, "SafeHandleTest", __LINE__);
        }
        ++m_nAlive;
    }
    ~ClThing() { --m_nAlive; }

    static const char m_szSignature[8];
    static const char m_szOther[8];
    static int m_nAlive;
    static int m_nThrow;
};

const char ClThing::m_szSignature[8] = "THING";
const char ClThing::m_szOther[8] = "THINGS7"; // all eight bytes used
int ClThing::m_nAlive = 0;
int ClThing::m_nThrow = 0;

using Handle = TpSafeHandle<ClThing, &ClThing::m_szSignature, &ClThing::m_szSignature>;
using OtherHandle = TpSafeHandle<ClThing, &ClThing::m_szOther, &ClThing::m_szOther>;
using MixedHandle = TpSafeHandle<ClThing, &ClThing::m_szSignature, &ClThing::m_szOther>;

constexpr char szInvalid[] = "The handle parameter is not a valid handle for that function.";
constexpr char szNull[] = "The handle parameter is set to NULL.";

/// A handle that lives for one test.
class SafeHandle : public testing::Test
{
protected:
    SafeHandle() { EXPECT_EQ(0, Handle::CreateHandle(&m_pHandle)); }
    ~SafeHandle() override
    {
        if (m_pHandle != nullptr)
        {
            Handle::DeleteHandle(m_pHandle);
        }
        EXPECT_EQ(0, ClThing::m_nAlive);
    }

    ClHandleRecord& Record() { return *static_cast<ClHandleRecord*>(m_pHandle); }

    void* m_pHandle = nullptr;
    ClThing* m_pObject = nullptr;
};
} // namespace

TEST_F(SafeHandle, RecordIsStampObjectStamp)
{
    EXPECT_EQ(24u, sizeof(ClHandleRecord));
    EXPECT_EQ(0, std::memcmp("THING\0\0", m_pHandle, 8));
    EXPECT_EQ(0, std::memcmp("THING\0\0", static_cast<char*>(m_pHandle) + 16, 8));
    Handle::CheckHandle(m_pHandle, &m_pObject);
    EXPECT_EQ(0, std::memcmp(&m_pObject, static_cast<char*>(m_pHandle) + 8, sizeof m_pObject));
    EXPECT_NE(nullptr, m_pObject);
}

TEST_F(SafeHandle, CreateRefusesANullReference)
{
    EXPECT_RAISES(Handle::CreateHandle(nullptr), ClExVelmarin, -44, "One(or more) parameter(s) is(are) invalid.");
}

TEST_F(SafeHandle, CreateWithoutMemoryForTheObjectLeavesThePointerAlone)
{
    void* pOther = &m_pObject;
    ClThing::m_nThrow = 1;
    EXPECT_RAISES(Handle::CreateHandle(&pOther), ClExBadAlloc, -102,
                  "Memory allocation failed or given mem-block too small.\nMemory allocation failed");
    ClThing::m_nThrow = 2;
    EXPECT_RAISES(Handle::CreateHandle(&pOther), ClExVelmarin, -35, "One of the parameters is out of range.");
    ClThing::m_nThrow = 0;
    EXPECT_EQ(&m_pObject, pOther);
}

TEST_F(SafeHandle, CheckRefusesNullAndLeavesTheObjectAlone)
{
    ClThing* const pBefore = reinterpret_cast<ClThing*>(this);
    m_pObject = pBefore;
    EXPECT_RAISES(Handle::CheckHandle(nullptr, &m_pObject), ClExVelmarin, -42, szNull);
    EXPECT_EQ(pBefore, m_pObject);
}

TEST_F(SafeHandle, CheckRefusesADamagedStamp)
{
    for (char* szStamp : {Record().m_szFirst, Record().m_szSecond})
    {
        for (int i = 0; i < 6; ++i) // the terminator included
        {
            const char cBefore = szStamp[i];
            szStamp[i] = 'Q';
            m_pObject = reinterpret_cast<ClThing*>(this);
            EXPECT_RAISES(Handle::CheckHandle(m_pHandle, &m_pObject), ClExVelmarin, -43, szInvalid);
            EXPECT_EQ(nullptr, m_pObject);
            EXPECT_FALSE(ClHandleRecord::IsStamped(m_pHandle, ClThing::m_szSignature));
            szStamp[i] = cBefore;
        }
        szStamp[6] = 'Q'; // behind the terminator nothing counts
        EXPECT_NO_THROW(Handle::CheckHandle(m_pHandle, &m_pObject));
        EXPECT_TRUE(ClHandleRecord::IsStamped(m_pHandle, ClThing::m_szSignature));
    }
}

TEST_F(SafeHandle, CheckRefusesANullObject)
{
    void* const pBefore = Record().m_pObject;
    Record().m_pObject = nullptr;
    EXPECT_RAISES(Handle::CheckHandle(m_pHandle, &m_pObject), ClExVelmarin, -43, szInvalid);
    Record().m_pObject = pBefore;
}

TEST_F(SafeHandle, CheckTellsKindsApart)
{
    void* pOther = nullptr;
    ASSERT_EQ(0, OtherHandle::CreateHandle(&pOther));
    EXPECT_RAISES(Handle::CheckHandle(pOther, &m_pObject), ClExVelmarin, -43, szInvalid);
    EXPECT_RAISES(OtherHandle::CheckHandle(m_pHandle, &m_pObject), ClExVelmarin, -43, szInvalid);
    EXPECT_RAISES(MixedHandle::CheckHandle(m_pHandle, &m_pObject), ClExVelmarin, -43, szInvalid);
    EXPECT_RAISES(MixedHandle::CheckHandle(pOther, &m_pObject), ClExVelmarin, -43, szInvalid);
    EXPECT_NO_THROW(OtherHandle::CheckHandle(pOther, &m_pObject));
    OtherHandle::DeleteHandle(pOther);
}

TEST_F(SafeHandle, TwoStampsMayDiffer)
{
    void* pMixed = nullptr;
    ASSERT_EQ(0, MixedHandle::CreateHandle(&pMixed));
    EXPECT_EQ(0, std::memcmp("THING", pMixed, 6));
    EXPECT_EQ(0, std::memcmp("THINGS7", static_cast<char*>(pMixed) + 16, 8));
    EXPECT_NO_THROW(MixedHandle::CheckHandle(pMixed, &m_pObject));
    MixedHandle::DeleteHandle(pMixed);
}

TEST_F(SafeHandle, CheckReadsNoFurtherThanTheFirstByteThatDiffers)
{
    for (const char* szBegin : {"", "T", "THIN", "THINGS"})
    {
        const ClGuardedBytes cMemory(szBegin, std::strlen(szBegin) + 1); // ends where memory ends
        EXPECT_RAISES(Handle::CheckHandle(cMemory.Data(), &m_pObject), ClExVelmarin, -43, szInvalid);
    }
}

TEST_F(SafeHandle, CheckReadsAnOddAddress)
{
    char acMemory[32] = {};
    std::memcpy(acMemory + 1, m_pHandle, 24);
    Handle::CheckHandle(acMemory + 1, &m_pObject);
    EXPECT_EQ(Record().m_pObject, m_pObject);
}

TEST_F(SafeHandle, DeleteFreesAndClearsTheVariable)
{
    EXPECT_EQ(0, Handle::DeleteHandle(&m_pHandle));
    EXPECT_EQ(nullptr, m_pHandle);
    EXPECT_EQ(0, ClThing::m_nAlive);
    EXPECT_EQ(-42, Handle::DeleteHandle(&m_pHandle));
    EXPECT_RAISES(Handle::DeleteHandle(m_pHandle), ClExVelmarin, -42, szNull);
}

TEST_F(SafeHandle, FailedDeleteKeepsTheVariable)
{
    const ClGuardedBytes cMemory("THING\0\0\0\0\0\0\0\0\0\0\0THINK\0\0", 24);
    void* pNoHandle = cMemory.Data();
    EXPECT_EQ(-43, Handle::DeleteHandle(&pNoHandle));
    EXPECT_EQ(cMemory.Data(), pNoHandle);
    EXPECT_EQ(1, ClThing::m_nAlive);
}

TEST(GuardHandleCheck, PassesStandardExceptionsAndReplacesOthers)
{
    EXPECT_EQ(7, GuardHandleCheck([] { return 7; }));
    EXPECT_THROW(GuardHandleCheck([] { throw std::bad_alloc(); }), std::bad_alloc);
    EXPECT_RAISES(GuardHandleCheck([] { throw ClExVelmarin(-42, "SafeHandleTest", __LINE__); }), ClExVelmarin, -42,
                  szNull);
    EXPECT_RAISES(GuardHandleCheck([] { throw 5; }), ClExVelmarin, -43, szInvalid);
}
