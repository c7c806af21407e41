#include "support/Bytes.h"

#include <stdexcept>

namespace Support
{
namespace
{

TEST(Hex, ReadsPairsOfDigitsAndSkipsBlanks)
{
    EXPECT_EQ(Hex("47 40 12"), (Bytes{0x47, 0x40, 0x12}));
    EXPECT_EQ(Hex(" aBCd  09 "), (Bytes{0xAB, 0xCD, 0x09}));
    EXPECT_EQ(Hex(""), Bytes());
}

TEST(Hex, RefusesHalfAByteAndOtherCharacters)
{
    EXPECT_THROW(Hex("4"), std::invalid_argument);
    EXPECT_THROW(Hex("4 7"), std::invalid_argument);
    EXPECT_THROW(Hex("4G"), std::invalid_argument);
}

TEST(Numbers, StandInTheirByteOrder)
{
    EXPECT_EQ(Msb16(0x0102), Hex("01 02"));
    EXPECT_EQ(Msb24(0x010203), Hex("01 02 03"));
    EXPECT_EQ(Msb32(0x01020304), Hex("01 02 03 04"));
    EXPECT_EQ(Msb64(0x0102030405060708), Hex("01 02 03 04 05 06 07 08"));
    EXPECT_EQ(Lsb16(0x0102), Hex("02 01"));
    EXPECT_EQ(Lsb32(0x01020304), Hex("04 03 02 01"));
    EXPECT_EQ(Lsb64(0x0102030405060708), Hex("08 07 06 05 04 03 02 01"));
    EXPECT_EQ(ReadMsb32(Hex("FF 01 02 03 04"), 1), 0x01020304u);
    EXPECT_THROW(ReadMsb32(Hex("01 02 03"), 0), std::out_of_range);
}

TEST(Payload, NeverLooksLikeAStartCode)
{
    for (const unsigned char byte : Payload(10000))
    {
        ASSERT_GE(byte, 0x10);
    }
    EXPECT_NE(Payload(100, 1), Payload(100, 2));
}

TEST(Slice, StaysInsideTheBytes)
{
    EXPECT_EQ(Slice(Hex("01 02 03"), 1, 2), Hex("02 03"));
    EXPECT_THROW(Slice(Hex("01 02 03"), 1, 3), std::out_of_range);
    EXPECT_THROW(Slice(Hex("01 02 03"), 4, 0), std::out_of_range);
}

TEST(Same, TellsWhereBytesDiffer)
{
    EXPECT_TRUE(Same(Hex("01 02"), Hex("01 02")));
    const ::testing::AssertionResult result = Same(Hex("01 02"), Hex("01 03"));
    EXPECT_FALSE(result);
    EXPECT_NE(std::string(result.message()).find("difference at 1"), std::string::npos);
    EXPECT_FALSE(Same(Hex("01 02"), Hex("01")));
    EXPECT_FALSE(Same({}, Hex("01")));
}

}  // namespace
}  // namespace Support
