#include "RDTools/ParameterString.hpp"

#include "TestTools.hpp"

#include <memory>

namespace
{
using Text_t = TpParameterString<char*, ClParameter, 0>;
constexpr char szNullPointer[] = "The pointer is bad or invalid.\nPoint is Null";

/// A text parameter over a buffer of capacity 4.
class ParameterString : public testing::Test
{
protected:
    ParameterString()
    {
        m_cText.Bind(&m_pBuffer);
        m_cText.m_nCapacity = sizeof m_szBuffer;
    }

    char m_szBuffer[4] = "ok";
    char* m_pBuffer = m_szBuffer;
    Text_t m_cText;
};
} // namespace

TEST_F(ParameterString, TakesATextThatFitsWithItsTerminator)
{
    m_cText.SetValue("abc");
    EXPECT_STREQ("abc", m_szBuffer);
    m_cText.SetValue("");
    EXPECT_STREQ("", m_szBuffer);
    EXPECT_TRUE(m_cText.IsString());
}

TEST_F(ParameterString, RefusesALongerTextAndKeepsTheOldOne)
{
    EXPECT_RAISES(m_cText.SetValue("abcd"), ClException, FPC_ERROR_TEMPLATE_SIZE,
                  "The size of the finger template is not valid.\nString memory ar too small");
    EXPECT_STREQ("ok", m_szBuffer);
}

TEST_F(ParameterString, RefusesANullText)
{
    EXPECT_RAISES(m_cText.SetValue(nullptr), ClException, FPC_ERROR_BAD_POINTER, szNullPointer);
    EXPECT_STREQ("ok", m_szBuffer);
}

TEST_F(ParameterString, GivesItsTextIfTheBufferIsLargeEnough)
{
    char szOut[8] = "#";
    unsigned long nSize = 2;
    EXPECT_FALSE(m_cText.GetValue(szOut, nSize));
    EXPECT_EQ(3u, nSize);
    EXPECT_STREQ("#", szOut);
    EXPECT_TRUE(m_cText.GetValue(szOut, nSize));
    EXPECT_STREQ("ok", szOut);
    EXPECT_EQ("ok", static_cast<ClParameter&>(m_cText).GetValue());
}

TEST_F(ParameterString, ANullBufferMeasuresOnlyWithTooSmallASize)
{
    unsigned long nSize = 2;
    EXPECT_FALSE(m_cText.GetValue(nullptr, nSize));
    EXPECT_EQ(3u, nSize);
    EXPECT_RAISES(m_cText.GetValue(nullptr, nSize), ClException, FPC_ERROR_BAD_POINTER, szNullPointer);
}

TEST_F(ParameterString, DefaultIsAPlainText)
{
    char szDefault[] = "none";
    m_cText.m_Default = szDefault;
    char szOut[8] = "#";
    unsigned long nSize = 4;
    EXPECT_FALSE(m_cText.GetDefaultValue(szOut, nSize));
    EXPECT_EQ(5u, nSize);
    EXPECT_STREQ("#", szOut);
    EXPECT_TRUE(m_cText.GetDefaultValue(szOut, nSize));
    EXPECT_STREQ("none", szOut);
    EXPECT_TRUE(m_cText.GetDefaultValue(nullptr, nSize));
    m_cText.m_Default = nullptr;
    EXPECT_EQ("", static_cast<ClParameter&>(m_cText).GetDefaultValue());
}

TEST_F(ParameterString, CloneWritesTheSameBufferWithinTheSameCapacity)
{
    const std::unique_ptr<ClParameterBase> pClone(m_cText.Clone());
    ClParameter* pParameter = pClone->GetParameterInterface();
    EXPECT_TRUE(pClone->IsString());
    pParameter->SetValue("abc");
    EXPECT_STREQ("abc", m_szBuffer);
    EXPECT_RAISES_CODE(pParameter->SetValue("abcd"), -21);
}
