#include "RDTools/Exception.hpp"

#include "FailingHeap.hpp"

#include <cerrno>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

namespace
{
TEST(Exception, NumberAloneSaysTheCataloguesTextWithoutACopy)
{
    const ClExVelmarin cException(-43, "Folder/Module", 12);
    EXPECT_EQ(GetErrorDescriptionIntern(-43), cException.What());
    EXPECT_EQ(cException.What(), cException.what());
    EXPECT_EQ(-43, cException.Number());
    EXPECT_EQ(-43, cException.m_nNumber);
    EXPECT_STREQ("Folder/Module", cException.m_szFile);
    EXPECT_EQ(12, cException.m_nLine);
    EXPECT_FALSE(cException.m_bOwnComment);

    const ClException cCopied(-43, true, "Unknown", -1);
    EXPECT_NE(GetErrorDescriptionIntern(-43), cCopied.What());
    EXPECT_STREQ(GetErrorDescriptionIntern(-43), cCopied.What());
    EXPECT_STREQ("Unknown error code.", ClExVelmarin(5, "", 0).What());
}

TEST(Exception, CommentFollowsTheDescriptionInACopyOfItsOwn)
{
    for (const bool bOwn : {false, true})
    {
        char szComment[] = "x";
        const ClException cException(szComment, -2, bOwn, "Unknown", -1);
        szComment[0] = 'y';
        EXPECT_STREQ("Prior initialization is necessary.\nx", cException.What());
        EXPECT_TRUE(cException.m_bOwnComment);
    }
    EXPECT_STREQ("Prior initialization is necessary.\n", ClException("", -2, false, "Unknown", -1).What());
    EXPECT_STREQ("Prior initialization is necessary.\n", ClException(nullptr, -2, false, "Unknown", -1).What());
    EXPECT_STREQ("Prior initialization is necessary.\n100%s", ClException("100%s", -2, false, "Unknown", -1).What());
}

TEST(Exception, CopyOwnsItsTextIfTheOriginalDoes)
{
    const ClException cOwner("x", -2, false, "Module", 7);
    const ClException cCopy(cOwner);
    EXPECT_NE(cOwner.What(), cCopy.What());
    EXPECT_STREQ(cOwner.What(), cCopy.What());
    EXPECT_EQ(-2, cCopy.Number());
    EXPECT_STREQ("Module", cCopy.m_szFile);
    EXPECT_EQ(7, cCopy.m_nLine);

    const ClExVelmarin cShared(-2, "Module", 7);
    const ClException cSecond(cShared);
    EXPECT_EQ(cShared.What(), cSecond.What());
    EXPECT_FALSE(cSecond.m_bOwnComment);
}

TEST(Exception, SetCommentCopiesOnlyForAnOwner)
{
    static const char szText[] = "text";
    ClExVelmarin cSharing(-2, "", 0);
    cSharing.SetComment(szText);
    EXPECT_EQ(szText, cSharing.What());
    cSharing.SetComment(nullptr);
    EXPECT_EQ(nullptr, cSharing.What());

    ClException cOwner(-2, true, "", 0);
    cOwner.SetComment(szText);
    EXPECT_NE(szText, cOwner.What());
    EXPECT_STREQ(szText, cOwner.What());
    cOwner.SetComment(cOwner.What() + 2); // a part of the text that is replaced
    EXPECT_STREQ("xt", cOwner.What());
    cOwner.SetComment(nullptr);
    EXPECT_EQ(nullptr, cOwner.What());
    EXPECT_TRUE(cOwner.m_bOwnComment);
}

TEST(Exception, FormattedCommentIsAlwaysOwnedAndOfAnyLength)
{
    ClExVelmarin cException(-2, "", 0);
    cException.SetCommentV("%s is %d", "nine", 9);
    EXPECT_STREQ("nine is 9", cException.What());
    EXPECT_TRUE(cException.m_bOwnComment);
    cException.SetCommentV("%s, %s", cException.What(), "again"); // from the text that is replaced
    EXPECT_STREQ("nine is 9, again", cException.What());
    const std::string sLong(100000, 'z');
    cException.SetCommentV("<%s>", sLong.c_str());
    EXPECT_EQ("<" + sLong + ">", cException.What());
    cException.SetCommentV("%s", "");
    EXPECT_EQ(nullptr, cException.What());
}

template <class Exception> void ExpectSecondForm()
{
    const Exception cException("more", -2, false, "Module", 3);
    EXPECT_STREQ("Prior initialization is necessary.\nmore", cException.What());
    EXPECT_EQ(-2, cException.Number());
    const ClException cOther("other", -12, false, "Elsewhere", 4);
    const Exception cConverted(cOther);
    EXPECT_STREQ(cOther.What(), cConverted.What());
    EXPECT_EQ(-12, cConverted.Number());
    EXPECT_THROW(throw Exception("more", -2, false, "Module", 3), Exception);
    EXPECT_THROW(throw Exception("more", -2, false, "Module", 3), ClException);
    EXPECT_THROW(throw Exception("more", -2, false, "Module", 3), Vlm::ClVelmarinException);
    EXPECT_THROW(throw Exception("more", -2, false, "Module", 3), std::exception);
}

TEST(Exception, DerivedClassesTakeACommentOrAnyOtherException)
{
    ExpectSecondForm<ClExBadAlloc>();
    ExpectSecondForm<ClExRange>();
    ExpectSecondForm<ClExInvalid>();
    ExpectSecondForm<ClExStack>();
    ExpectSecondForm<ClCodingException>();
    ExpectSecondForm<ClExStream>();
    ExpectSecondForm<ClExStreamFailToRead>();
    ExpectSecondForm<ClExStreamFailToWrite>();
    ExpectSecondForm<ClExStreamUnexpectedEnd>();
    ExpectSecondForm<ClExStreamOpen>();
    static_assert(std::is_base_of_v<ClExStream, ClExStreamFailToRead>);
    static_assert(std::is_base_of_v<ClExStream, ClExStreamFailToWrite>);
    static_assert(std::is_base_of_v<ClExStream, ClExStreamUnexpectedEnd>);
    static_assert(std::is_base_of_v<ClExStream, ClExStreamOpen>);
    static_assert(!std::is_convertible_v<ClExStreamOpen*, ClExStreamFailToRead*>);
}

TEST(Exception, FailedSystemCallSaysTheSystemsTextInsteadOfTheCatalogues)
{
    errno = ENOENT;
    const ClExSystem cSystem("while opening", "Module", 5);
    EXPECT_EQ(std::string(std::strerror(ENOENT)) + "\nwhile opening", cSystem.What());
    EXPECT_EQ(-105, cSystem.Number());
    errno = EACCES;
    const ClExFilesystem cFile("while listing", -200, "Module", 6);
    EXPECT_EQ(std::string(std::strerror(EACCES)) + "\nwhile listing", cFile.What());
    EXPECT_EQ(-200, cFile.Number());
    EXPECT_EQ(6, cFile.m_nLine);
    const ClExFilesystem cConverted(cSystem);
    EXPECT_STREQ(cSystem.What(), cConverted.What());
    EXPECT_EQ(-105, cConverted.Number());
    EXPECT_THROW(throw cFile, ClExSystem);
}

TEST(Exception, SystemExceptionDescribesItself)
{
    const Vlm::CXSystemException cException(13, "no such luck");
    EXPECT_EQ(13, cException.GetErrorNumber());
    EXPECT_STREQ("no such luck", cException.GetDescription());
    EXPECT_STREQ("no such luck", cException.What());
    EXPECT_STREQ("no such luck", cException.what());
    EXPECT_THROW(throw Vlm::CXSystemException(13, ""), Vlm::CXException);
    EXPECT_THROW(throw Vlm::CXSystemException(13, ""), Vlm::ClVelmarinException);
}

class ClThrowing : public ClException
{
public:
    ClThrowing() : ClException(-2, false, "", 0) {}
    const char* What() const override { throw 1; }
};

class ClThrowingDescription : public Vlm::CXException
{
public:
    const char* GetDescription() const override { throw 1; }
};

TEST(ExceptionDeathTest, ATextThatRaisesEndsTheProcess)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    static_assert(noexcept(std::declval<const ClException&>().what()));
    EXPECT_DEATH(ClThrowing().what(), "");
    EXPECT_DEATH(ClThrowingDescription().what(), "");
    EXPECT_THROW(ClThrowing().What(), int);
}

TEST(Exception, ExhaustedHeapComesOutInOneForm)
{
    const auto expectBadAlloc = [](auto&& fn)
    {
        try
        {
            fn();
            ADD_FAILURE() << "nothing raised";
        }
        catch (const ClExBadAlloc& cRaised)
        {
            EXPECT_STREQ("Memory allocation failed or given mem-block too small.\nMemory allocation failed",
                         cRaised.What());
            EXPECT_EQ(-102, cRaised.Number());
            EXPECT_STREQ("Unknown", cRaised.m_szFile);
            EXPECT_EQ(-1, cRaised.m_nLine);
        }
    };
    expectBadAlloc([] { ThrowBadAlloc(); });
    expectBadAlloc([] { ConvertBadAlloc([] { throw std::bad_alloc(); }); });
    expectBadAlloc([] { ConvertBadAlloc([] { throw std::bad_array_new_length(); }); });
    EXPECT_EQ(3, ConvertBadAlloc([] { return 3; }));
    int nValue = 0;
    ConvertBadAlloc([&nValue]() -> int& { return nValue; }) = 5;
    EXPECT_EQ(5, nValue);
    EXPECT_THROW(ConvertBadAlloc([] { throw ClExVelmarin(-2, "", 0); }), ClExVelmarin);
    int* volatile pAllocated = nullptr; // an allocation that nobody sees may be left out by the compiler
    EXPECT_EQ(1, ExpectBadAllocAtEveryAllocation([&] { ConvertBadAlloc([&] { pAllocated = new int; }); }));
    delete pAllocated;
}
} // namespace
