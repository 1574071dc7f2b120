// What ClParameterInterface answers where a parameter lacks its value, its names or its place.

#include "ParameterInterfaceKinds.hpp"

TEST(ParameterInterfaceLimits, BehindTheLastParameterThereIsNone)
{
    const StAllKinds cKinds;
    const long nCount = 11; // with the comment
    EXPECT_NE(nullptr, cKinds.c.GetParameter(nCount - 1));
    for (const long nBehind : {nCount, nCount + 1, nCount + 100})
    {
        EXPECT_EQ(nullptr, cKinds.c.GetParameter(nBehind)) << nBehind;
    }
}

TEST(ParameterInterfaceLimits, WithoutAVariableThereIsNoGraph)
{
    StAllKinds cKinds;
    cKinds.pGraph = reinterpret_cast<ClGraph*>(&cKinds); // never looked at
    EXPECT_EQ(cKinds.pGraph, cKinds["Graph"].GetGraph());
    cKinds["Graph"].m_pValue = nullptr;
    EXPECT_EQ(nullptr, cKinds["Graph"].GetGraph());
}

TEST(ParameterInterfaceLimits, AValueWithoutATypeHasNoText)
{
    const long nValue = 7;
    Parameter cVoid;
    cVoid.m_eType = Interface::eVoid;
    EXPECT_STREQ("Unknown", cVoid.GetszValue(&nValue));
}

TEST(ParameterInterfaceLimits, WithoutNamesNoNumberHasOne)
{
    char szText[16];
    Parameter c;
    EXPECT_STREQ("Unknown", c.EnumToStr(1, nullptr, szText, sizeof szText));
    c.m_pnEnumValues = new long[1]{8}; // values but no names; the parameter deletes them
    EXPECT_STREQ("Unknown", c.EnumToStr(8, "eight\0", szText, sizeof szText));
}
