#include "HandleBase.hpp"

#include "KormelinSegmentHandle.hpp"
#include "KormelinSegmentationHandle.hpp"
#include "TestTools.hpp"

#include <iterator>

TEST(HandleBase, ListsTheStampsOfBothKinds)
{
    ASSERT_EQ(2u, std::size(ClHandleBase::Signature_t::m_szSignatures));
    EXPECT_STREQ("KS", ClHandleBase::Signature_t::m_szSignatures[0]);
    EXPECT_STREQ("SEGMENT", ClHandleBase::Signature_t::m_szSignatures[1]);
}

TEST(HandleBase, FindsTheObjectOfEitherKind)
{
    ASSERT_EQ(0, ClKormelinSegmentation::Initialize(nullptr));
    void* hSegmentation = nullptr;
    void* hSegment = nullptr;
    ClKormelinSegmentationHandle::CreateHandle(&hSegmentation);
    ClKormelinSegmentHandle::CreateHandle(&hSegment);
    EXPECT_NE(nullptr, dynamic_cast<ClKormelinSegmentationHandle*>(ClHandleBase::GetClassBase(hSegmentation)));
    EXPECT_NE(nullptr, dynamic_cast<ClKormelinSegmentHandle*>(ClHandleBase::GetClassBase(hSegment)));
    ClHandleBase::DestroyHandle(&hSegmentation);
    ClHandleBase::DestroyHandle(&hSegment);
    EXPECT_EQ(0, ClKormelinSegmentation::Uninitialize());
}

TEST(HandleBase, EveryHandleShowsTheVersionOfTheLibrary)
{
    EXPECT_STREQ(ClKormelinSegmentation::m_szVersion, ClHandleBase::m_szpVersion);
}
