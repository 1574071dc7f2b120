#include "RDImageProcessing/ImageDataTypeCheck.hpp"

#include "RDTools/Exception.hpp"
#include "SampleAccess.hpp"
#include "TestTools.hpp"

#include <string>

namespace
{
class ClCheck : public NewIpBase::ClImageDataTypeCheck
{
public:
    void CheckInOutImageTypes() override {}
};

/// What() of the failure for an image of this type.
std::string Refusal(unsigned char eType)
{
    ClCheck cCheck;
    ClImage cImage;
    cImage.m_eDataType = static_cast<ClImage::EDataType>(eType);
    try
    {
        cCheck.CheckTypeAllowed(&cImage);
    }
    catch (const ClException& cRaised)
    {
        EXPECT_EQ(FPC_ERROR_FORMAT_NOTSUPPORTED, cRaised.Number());
        return cRaised.What();
    }
    return "nothing";
}

std::string Message(const char* szType)
{
    return std::string("The required format is not supported.\nInput pixel type \"") + szType +
           "\" not supported by processor.";
}
} // namespace

TEST(ImageDataTypeCheck, AnEmptyListAcceptsNothing)
{
    ClCheck cCheck;
    EXPECT_EQ(0u, cCheck.m_aAllowedTypes.Entries());
    for (const unsigned char eType : aEveryType)
    {
        EXPECT_FALSE(cCheck.CheckIfTypeAllowed(static_cast<ClImage::EDataType>(eType)));
    }
    EXPECT_FALSE(cCheck.CheckIfTypeAllowed(static_cast<ClImage::EDataType>(0)));
}

TEST(ImageDataTypeCheck, AcceptsTheEnabledTypesOnly)
{
    ClCheck cCheck;
    cCheck.EnableDataType(ClImage::eSInt16);
    ClImage cImage(4, 4, 1, 0, 0);
    EXPECT_RAISES(cCheck.CheckTypeAllowed(&cImage), ClException, FPC_ERROR_FORMAT_NOTSUPPORTED,
                  Message("uint8").c_str());
    cImage.m_eDataType = ClImage::eSInt16;
    EXPECT_TRUE(cCheck.CheckTypeAllowed(&cImage));
    EXPECT_FALSE(cCheck.CheckIfTypeAllowed(ClImage::eUInt16));
}

TEST(ImageDataTypeCheck, ATypeIsListedOnce)
{
    ClCheck cCheck;
    const ClImage::EDataType aeTypes[] = {ClImage::eUInt8, ClImage::eFloat32, ClImage::eUInt8};
    cCheck.EnableDataType(aeTypes, 3);
    cCheck.EnableDataType(ClImage::eFloat32);
    cCheck.EnableDataType(ClImage::eDouble64);
    ASSERT_EQ(3u, cCheck.m_aAllowedTypes.Entries());
    EXPECT_EQ(ClImage::eUInt8, cCheck.m_aAllowedTypes[0]);
    EXPECT_EQ(ClImage::eFloat32, cCheck.m_aAllowedTypes[1]);
    EXPECT_EQ(ClImage::eDouble64, cCheck.m_aAllowedTypes[2]);
    cCheck.EnableDataType(aeTypes, 0);
    EXPECT_EQ(3u, cCheck.m_aAllowedTypes.Entries());
}

TEST(ImageDataTypeCheck, AllTypesAreTheEight)
{
    ClCheck cCheck;
    cCheck.EnableAllDataTypes();
    EXPECT_EQ(8u, cCheck.m_aAllowedTypes.Entries());
    for (const unsigned char eType : aEveryType)
    {
        EXPECT_TRUE(cCheck.CheckIfTypeAllowed(static_cast<ClImage::EDataType>(eType)));
    }
}

TEST(ImageDataTypeCheck, TheFailureNamesTheType)
{
    EXPECT_EQ(Message("uint8"), Refusal(1));
    EXPECT_EQ(Message("uint16"), Refusal(2));
    EXPECT_EQ(Message("uint32"), Refusal(4));
    EXPECT_EQ(Message("int8"), Refusal(129));
    EXPECT_EQ(Message("int16"), Refusal(130));
    EXPECT_EQ(Message("int32"), Refusal(132));
    EXPECT_EQ(Message("float32"), Refusal(196));
    EXPECT_EQ(Message("double64"), Refusal(200));
    EXPECT_EQ(Message("default"), Refusal(255));
    EXPECT_EQ(Message("unknown"), Refusal(0));
    EXPECT_EQ(Message("not valid"), Refusal(3));
    EXPECT_EQ(Message("not valid"), Refusal(254));
}
