#include "RDTools/ParameterEnum.hpp"

#include "FailingHeap.hpp"
#include "RDTools/FpImage.hpp"
#include "TestTools.hpp"

#include <cstdio>
#include <memory>
#include <string>

namespace
{
enum class EShade
{
    eDark = -3,
    eMiddle = 0,
    eBright = 7
};
using Shade_t = TpParameterEnumPointer<EShade, ClParameter>;
using Long_t = TpParameterEnumPointer<long, ClParameter>;
using Byte_t = TpParameterEnumPointer<unsigned char, ClParameter>;
using Bool_t = TpParameterEnumPointer<bool, ClParameter>;
using Chars_t = TpParameterEnumPointer<char*, ClParameter>;
using Image_t = TpParameterEnumPointer<ClImage*, ClParameter>;

constexpr char szRange[] = "One of the parameters is out of range.\n";

std::string TextOf(ClParameter& cParameter)
{
    return cParameter.GetValue();
}

/// "Shade" with a table of three names, bound to m_eShade.
class ParameterEnum : public testing::Test
{
protected:
    ParameterEnum()
    {
        m_cShade.SetName("Shade");
        m_cShade.Bind(&m_eShade);
        m_cShade.AddValue(EShade::eDark, "Dark");
        m_cShade.AddValue(EShade::eMiddle, "Middle");
        m_cShade.AddValue(EShade::eBright, "Bright");
    }

    EShade m_eShade = EShade::eMiddle;
    Shade_t m_cShade;
};
} // namespace

TEST_F(ParameterEnum, NamesAreFoundWithoutRegardToCase)
{
    m_cShade.SetValue("bright");
    EXPECT_EQ(EShade::eBright, m_eShade);
    m_cShade.SetValue("DARK");
    EXPECT_EQ(EShade::eDark, m_eShade);
    EXPECT_EQ("Dark", TextOf(m_cShade));
    EXPECT_EQ("Middle", m_cShade.GetDefaultValue());
}

TEST_F(ParameterEnum, AWholeTableKeepsItsOrder)
{
    static constexpr StEnumName aMore[] = {{7, "Glaring"}, {2, "Dim"}};
    m_cShade.AddValues(aMore);
    ASSERT_EQ(5u, m_cShade.GetValueNameCount());
    EXPECT_STREQ("Glaring", m_cShade.m_aMap[3].m_szName);
    EXPECT_STREQ("Dim", m_cShade.m_aMap[4].m_szName);
    m_cShade.SetValue("dim");
    EXPECT_EQ(static_cast<EShade>(2), m_eShade);
    EXPECT_RAISES(m_cShade.AddValues(aMore), ClExVelmarin, FPC_ERROR_PARAM_VALUE_DUPLICATE,
                  ClExVelmarin(FPC_ERROR_PARAM_VALUE_DUPLICATE, "", 0).What());
}

TEST_F(ParameterEnum, TextsOutsideTheTableAreRefused)
{
    EXPECT_RAISES(m_cShade.SetValue("Grey"), ClExRange, FPC_ERROR_PARAM_OUT_OF_RANGE,
                  (std::string(szRange) + "Value \"Grey\" out of range for parameter \"Shade\"").c_str());
    EXPECT_RAISES_CODE(m_cShade.SetValue("7"), -35); // the value of a name, but not a name
    EXPECT_RAISES_CODE(m_cShade.SetValue(""), -35);
    EXPECT_RAISES_CODE(m_cShade.SetValue(static_cast<const char*>(nullptr)), -35);
    EXPECT_EQ(EShade::eMiddle, m_eShade);
}

TEST_F(ParameterEnum, NumbersMustBeInTheTable)
{
    m_cShade.SetValue(7L);
    EXPECT_EQ(EShade::eBright, m_eShade);
    m_cShade.SetValue(EShade::eDark);
    EXPECT_EQ(EShade::eDark, m_eShade);
    EXPECT_EQ(-3, m_cShade.GetEnumInterface()->GetValue());
    EXPECT_RAISES(m_cShade.SetValue(1L), ClExRange, FPC_ERROR_PARAM_OUT_OF_RANGE,
                  (std::string(szRange) + "Value \"1\" out of range for parameter \"Shade\"").c_str());
    EXPECT_RAISES(m_cShade.SetValue(static_cast<EShade>(-4)), ClExRange, FPC_ERROR_PARAM_OUT_OF_RANGE,
                  (std::string(szRange) + "Value \"-4\" out of range for parameter \"Shade\"").c_str());
    EXPECT_RAISES_CODE(m_cShade.SetValue(7L + (1L << 32)), -35); // not 7, its low half
    EXPECT_EQ(EShade::eDark, m_eShade);
}

TEST_F(ParameterEnum, AValueWithoutANameHasNoText)
{
    m_eShade = static_cast<EShade>(5);
    char szBuffer[32];
    unsigned long nSize = sizeof szBuffer;
    EXPECT_RAISES(m_cShade.GetValue(szBuffer, nSize), ClExRange, FPC_ERROR_PARAM_OUT_OF_RANGE,
                  (std::string(szRange) + "Parameter \"Shade\" out of range using value \"5\"").c_str());
    EXPECT_EQ("Middle", m_cShade.GetDefaultValue());
    m_cShade.m_Default = static_cast<EShade>(-9);
    EXPECT_RAISES(m_cShade.GetDefaultValue(szBuffer, nSize), ClExRange, FPC_ERROR_PARAM_OUT_OF_RANGE,
                  (std::string(szRange) + "Parameter \"Shade\" out of range using value \"-9\"").c_str());
}

TEST_F(ParameterEnum, TextsFollowTheTextConvention)
{
    char szBuffer[8] = "#";
    unsigned long nSize = 6;
    EXPECT_FALSE(m_cShade.GetValue(szBuffer, nSize));
    EXPECT_EQ(7u, nSize);
    EXPECT_STREQ("#", szBuffer);
    EXPECT_TRUE(m_cShade.GetValue(szBuffer, nSize));
    EXPECT_STREQ("Middle", szBuffer);
    EXPECT_TRUE(m_cShade.GetValue(nullptr, nSize));
    nSize = 0;
    EXPECT_FALSE(m_cShade.GetDefaultValue(nullptr, nSize));
    EXPECT_EQ(7u, nSize);
}

TEST_F(ParameterEnum, DuplicateNamesAreRefused)
{
    EXPECT_RAISES(m_cShade.AddValue(static_cast<EShade>(1), "MIDDLE"), ClExVelmarin, FPC_ERROR_PARAM_VALUE_DUPLICATE,
                  "The given parameter is a duplicate of a previously given parameter.");
    EXPECT_EQ(3u, m_cShade.GetValueNameCount());
    m_cShade.AddValue(EShade::eMiddle, "Other"); // a value may have two names; the first one is its text
    EXPECT_EQ("Middle", TextOf(m_cShade));
    m_cShade.SetValue("other");
    EXPECT_EQ(EShade::eMiddle, m_eShade);
}

TEST_F(ParameterEnum, RemovingShiftsTheLaterNamesDown)
{
    const auto names = [this]
    {
        std::string sNames;
        for (unsigned long i = 0; i < m_cShade.GetValueNameCount(); ++i)
        {
            char szName[16];
            m_cShade.GetValueName(i, szName, sizeof szName);
            sNames += std::string(szName) + "=" + std::to_string(static_cast<int>(m_cShade.m_aMap[i].m_Value)) + " ";
        }
        return sNames;
    };
    m_cShade.RemoveValue("nothing");
    m_cShade.RemoveValue(static_cast<EShade>(99));
    EXPECT_EQ("Dark=-3 Middle=0 Bright=7 ", names());
    m_cShade.RemoveValue("DARK");
    EXPECT_EQ("Middle=0 Bright=7 ", names());
    m_cShade.AddValue(EShade::eBright, "Shining");
    m_cShade.RemoveValue(EShade::eBright); // the first of two
    EXPECT_EQ("Middle=0 Shining=7 ", names());
    m_cShade.RemoveValue("Shining");
    m_cShade.RemoveValue("Middle");
    EXPECT_EQ("", names());
    EXPECT_FALSE(m_cShade.IsEnum());
}

TEST_F(ParameterEnum, RemovingNeedsNoMemory)
{
    {
        const ClFailingHeap cHeap(0);
        m_cShade.RemoveValue("Dark");
    }
    ASSERT_EQ(2u, m_cShade.GetValueNameCount());
    EXPECT_STREQ("Middle", m_cShade.m_aMap[0].m_szName);
    EXPECT_STREQ("Bright", m_cShade.m_aMap[1].m_szName);
    m_cShade.SetValue("Bright");
    EXPECT_EQ(EShade::eBright, m_eShade);
    m_cShade.AddValue(EShade::eDark, "Night");
    EXPECT_STREQ("Night", m_cShade.m_aMap[2].m_szName);
}

TEST_F(ParameterEnum, ValueNamesAreCopiedIfTheyFit)
{
    char szName[16] = "#";
    EXPECT_EQ(6u, m_cShade.GetValueName(1, nullptr, 0));
    EXPECT_EQ(6u, m_cShade.GetValueName(1, szName, 0));
    EXPECT_STREQ("#", szName);
    EXPECT_EQ(6u, m_cShade.GetValueName(1, szName, 7));
    EXPECT_STREQ("Middle", szName);
    EXPECT_EQ(6u, m_cShade.GetValueName(1, szName, 6));
    EXPECT_STREQ("", szName);
}

TEST_F(ParameterEnum, CloneHasATableOfItsOwn)
{
    const std::unique_ptr<ClParameterBase> pClone(m_cShade.Clone());
    auto* pTyped = dynamic_cast<Shade_t*>(pClone.get());
    ASSERT_NE(nullptr, pTyped);
    pTyped->RemoveValue("Dark");
    EXPECT_EQ(3u, m_cShade.GetValueNameCount());
    EXPECT_EQ(2u, pTyped->GetValueNameCount());
    pTyped->SetValue("Bright");
    EXPECT_EQ(EShade::eBright, m_eShade);
}

TEST_F(ParameterEnum, ARowMayBeAssignedToItself)
{
    auto& cRow = m_cShade.m_aMap[2];
    const auto& cSame = cRow;
    const char* szName = cRow.m_szName;
    cRow = cSame;
    EXPECT_EQ(szName, cRow.m_szName) << "nothing is copied";
    EXPECT_STREQ("Bright", cRow.m_szName);
}

TEST_F(ParameterEnum, TablesGrowBeyondTheirStep)
{
    for (int i = 100; i < 125; ++i)
    {
        m_cShade.AddValue(static_cast<EShade>(i), ("Level" + std::to_string(i)).c_str());
    }
    EXPECT_EQ(28u, m_cShade.GetValueNameCount());
    m_cShade.SetValue("level124");
    EXPECT_EQ(124, static_cast<int>(m_eShade));
    m_cShade.SetValue("Dark");
    EXPECT_EQ(EShade::eDark, m_eShade);
}

TEST(ParameterEnumTable, ANullNameIsAnEmptyOne)
{
    long nValue = 3;
    Long_t cLong;
    cLong.Bind(&nValue);
    cLong.AddValue(3, nullptr);
    cLong.AddValue(4, "Four");
    EXPECT_EQ("", TextOf(cLong));
    cLong.SetValue("four");
    EXPECT_EQ(4, nValue);
}

TEST(ParameterEnumTable, AnEmptyTableAcceptsEveryValueAndNoText)
{
    long nValue = 3;
    Long_t cLong;
    cLong.Bind(&nValue);
    EXPECT_FALSE(cLong.IsEnum());
    cLong.SetValue(-123456789L);
    EXPECT_EQ(-123456789, nValue);
    EXPECT_EQ("-123456789", TextOf(cLong));
    EXPECT_EQ("3", cLong.GetDefaultValue());
    EXPECT_RAISES_CODE(cLong.SetValue("3"), -35);
    cLong.AddValue(1, "One");
    EXPECT_TRUE(cLong.IsEnum());
}

TEST(ParameterEnumTable, SmallTypesAreNumbersWithoutATable)
{
    unsigned char nByte = 200;
    Byte_t cByte;
    cByte.Bind(&nByte);
    EXPECT_EQ("200", TextOf(cByte));
    EXPECT_EQ(200, cByte.GetValue());

    bool bFlag = true;
    Bool_t cBool;
    cBool.Bind(&bFlag);
    EXPECT_EQ("1", TextOf(cBool));
    cBool.AddValue(false, "False");
    cBool.AddValue(true, "True");
    EXPECT_EQ("True", TextOf(cBool));
    cBool.SetValue("false");
    EXPECT_FALSE(bFlag);
    EXPECT_TRUE(*cBool.m_pTypeInfo == typeid(bool));
}

TEST(ParameterEnumTable, PointersAreTexts)
{
    ClImage cImage;
    ClImage* pImage = nullptr;
    Image_t cParameter;
    cParameter.Bind(&pImage);
    cParameter.m_bPointer = true;
    EXPECT_EQ("NULL", TextOf(cParameter));
    cParameter.SetValue(&cImage);
    EXPECT_EQ(&cImage, pImage);
    char szExpected[32];
    std::snprintf(szExpected, sizeof szExpected, "%p", static_cast<void*>(&cImage));
    EXPECT_EQ(szExpected, TextOf(cParameter));
    EXPECT_EQ(reinterpret_cast<long>(&cImage), cParameter.GetValue());
    EXPECT_TRUE(cParameter.IsPointer());
    cParameter.SetValue(0L);
    EXPECT_EQ(nullptr, pImage);

    const std::unique_ptr<ClParameterBase> pClone(cParameter.Clone());
    EXPECT_TRUE(pClone->IsPointer());
}

TEST(ParameterEnumTable, CharacterPointersAreComparedByAddress)
{
    char szOne[] = "same";
    char szTwo[] = "same";
    char* szValue = szOne;
    Chars_t cParameter;
    cParameter.Bind(&szValue);
    cParameter.AddValue(szOne, "One");
    cParameter.AddValue(szTwo, "Two");
    EXPECT_EQ("One", TextOf(cParameter));
    cParameter.SetValue("two");
    EXPECT_EQ(szTwo, szValue);
    EXPECT_FALSE(cParameter.IsDefault());
}
