#include <array>
#include <limits>

#include "support/Bytes.h"
#include "tool/StreamTool.h"

namespace Orbel::Wrapton
{
namespace
{

using Support::Bytes;
using Support::Hex;

/// What a writer stored, judged by the number of bytes that it returned. Bytes behind them are
/// checked to be untouched.
template <class Writer, class Value>
Bytes Written(Writer writer, Value value)
{
    std::array<unsigned char, 24> room{};
    room.fill(0xEE);
    const uint32_t count = writer(room.data(), value);
    EXPECT_LE(count, room.size() - 4);
    for (std::size_t i = count; i < room.size(); ++i)
    {
        EXPECT_EQ(room[i], 0xEE) << "byte " << i << " was written";
    }
    return {room.begin(), room.begin() + count};
}

TEST(ByteWriters, StoreBigEndian)
{
    EXPECT_EQ(Written(MSB_uint8_to_memory, uint8_t{0xA5}), Hex("A5"));
    EXPECT_EQ(Written(MSB_uint16_to_memory, 0x0102u), Hex("01 02"));
    EXPECT_EQ(Written(MSB_uint24_to_memory, 0x010203u), Hex("01 02 03"));
    EXPECT_EQ(Written(MSB_uint32_to_memory, 0x01020304u), Hex("01 02 03 04"));
    EXPECT_EQ(Written(MSB_uint64_to_memory, uint64_t{0x0102030405060708}),
              Hex("01 02 03 04 05 06 07 08"));
}

TEST(ByteWriters, StoreLittleEndian)
{
    EXPECT_EQ(Written(LSB_uint8_to_memory, uint8_t{0xA5}), Hex("A5"));
    EXPECT_EQ(Written(LSB_uint16_to_memory, 0x0102u), Hex("02 01"));
    EXPECT_EQ(Written(LSB_uint32_to_memory, 0x01020304u), Hex("04 03 02 01"));
    EXPECT_EQ(Written(LSB_uint64_to_memory, uint64_t{0x0102030405060708}),
              Hex("08 07 06 05 04 03 02 01"));
}

TEST(ByteWriters, UseTheLowBitsOfAWiderValue)
{
    EXPECT_EQ(Written(MSB_uint16_to_memory, 0xAABBCCDDu), Hex("CC DD"));
    EXPECT_EQ(Written(MSB_uint24_to_memory, 0xAABBCCDDu), Hex("BB CC DD"));
    EXPECT_EQ(Written(LSB_uint16_to_memory, 0xAABBCCDDu), Hex("DD CC"));
}

TEST(ByteWriters, StoreTheirExtremes)
{
    EXPECT_EQ(Written(MSB_uint8_to_memory, uint8_t{0}), Hex("00"));
    EXPECT_EQ(Written(MSB_uint16_to_memory, 0xFFFFu), Hex("FF FF"));
    EXPECT_EQ(Written(MSB_uint32_to_memory, 0xFFFFFFFFu), Hex("FF FF FF FF"));
    EXPECT_EQ(Written(MSB_uint64_to_memory, ~uint64_t{0}), Hex("FF FF FF FF FF FF FF FF"));
    EXPECT_EQ(Written(LSB_uint64_to_memory, uint64_t{0x80}), Hex("80 00 00 00 00 00 00 00"));
    EXPECT_EQ(Written(MSB_uint64_to_memory, uint64_t{0x80}), Hex("00 00 00 00 00 00 00 80"));
}

TEST(ByteWriters, StoreADoubleAsItsBitPattern)
{
    EXPECT_EQ(Written(MSB_float64_to_memory, 1.0), Hex("3F F0 00 00 00 00 00 00"));
    EXPECT_EQ(Written(MSB_float64_to_memory, -2.0), Hex("C0 00 00 00 00 00 00 00"));
    EXPECT_EQ(Written(MSB_float64_to_memory, 0.1), Hex("3F B9 99 99 99 99 99 9A"));
    EXPECT_EQ(Written(MSB_float64_to_memory, 25.0), Hex("40 39 00 00 00 00 00 00"));
    EXPECT_EQ(Written(MSB_float64_to_memory, -0.0), Hex("80 00 00 00 00 00 00 00"));
    EXPECT_EQ(Written(MSB_float64_to_memory, std::numeric_limits<double>::infinity()),
              Hex("7F F0 00 00 00 00 00 00"));
}

TEST(ByteWriters, StoreAGuidInItsLittleEndianForm)
{
    constexpr _GUID kGuid = {
        0x75B22630, 0x668E, 0x11CF, {0xA6, 0xD9, 0x00, 0xAA, 0, 0x62, 0xCE, 1}};
    EXPECT_EQ(Written(LSB_guid_to_memory, kGuid),
              Hex("30 26 B2 75 "                // Data1
                  "8E 66 "                      // Data2
                  "CF 11 "                      // Data3
                  "A6 D9 00 AA 00 62 CE 01"));  // Data4, as it stands
}

TEST(CompactInt, PutsTheLowestGroupFirstWithoutAMark)
{
    EXPECT_EQ(Written(MSB_compact_int_to_memory, 0), Hex("00"));
    EXPECT_EQ(Written(MSB_compact_int_to_memory, 1), Hex("01"));
    EXPECT_EQ(Written(MSB_compact_int_to_memory, 127), Hex("7F"));
    EXPECT_EQ(Written(MSB_compact_int_to_memory, 128), Hex("00 81"));
    EXPECT_EQ(Written(MSB_compact_int_to_memory, 200), Hex("48 81"));
    EXPECT_EQ(Written(MSB_compact_int_to_memory, 16382), Hex("7E FF"));
    EXPECT_EQ(Written(MSB_compact_int_to_memory, 16383), Hex("7F FF"));
    EXPECT_EQ(Written(MSB_compact_int_to_memory, 16384), Hex("00 80 81"));
    EXPECT_EQ(Written(MSB_compact_int_to_memory, 0x1FFFFE), Hex("7E FF FF"));
    EXPECT_EQ(Written(MSB_compact_int_to_memory, 0x1FFFFF), Hex("7F FF FF"));
    EXPECT_EQ(Written(MSB_compact_int_to_memory, 0x200000), Hex("00 80 80 81"));
    EXPECT_EQ(Written(MSB_compact_int_to_memory, 0x0FFFFFFF), Hex("7F FF FF FF"));
}

TEST(CompactInt, LosesWhatStandsAboveItsFourGroups)
{
    EXPECT_EQ(Written(MSB_compact_int_to_memory, 0x10000000), Hex("00 80 80 80"));
    EXPECT_EQ(Written(MSB_compact_int_to_memory, std::numeric_limits<int32_t>::max()),
              Hex("7F FF FF FF"));
}

TEST(CompactInt, TakesOneByteForANegativeValue)
{
    EXPECT_EQ(Written(MSB_compact_int_to_memory, -1), Hex("7F"));
    EXPECT_EQ(Written(MSB_compact_int_to_memory, -128), Hex("00"));
    EXPECT_EQ(Written(MSB_compact_int_to_memory, std::numeric_limits<int32_t>::min()), Hex("00"));
}

TEST(CompactInt, IsTheSameInBothByteOrders)
{
    for (const int32_t value :
         {0, 127, 128, 200, 16383, 16384, 0x1FFFFF, 0x200000, 0x12345678, -1, -200})
    {
        EXPECT_EQ(Written(LSB_compact_int_to_memory, value),
                  Written(MSB_compact_int_to_memory, value));
        EXPECT_EQ(CompactIntSize(value), Written(MSB_compact_int_to_memory, value).size());
    }
}

TEST(ByteWriters, WriteNothingToNull)
{
    EXPECT_EQ(MSB_uint8_to_memory(nullptr, 1), 0u);
    EXPECT_EQ(MSB_uint16_to_memory(nullptr, 1), 0u);
    EXPECT_EQ(MSB_uint24_to_memory(nullptr, 1), 0u);
    EXPECT_EQ(MSB_uint32_to_memory(nullptr, 1), 0u);
    EXPECT_EQ(MSB_uint64_to_memory(nullptr, 1), 0u);
    EXPECT_EQ(MSB_float64_to_memory(nullptr, 1), 0u);
    EXPECT_EQ(MSB_compact_int_to_memory(nullptr, 1), 0u);
    EXPECT_EQ(LSB_uint8_to_memory(nullptr, 1), 0u);
    EXPECT_EQ(LSB_uint16_to_memory(nullptr, 1), 0u);
    EXPECT_EQ(LSB_uint32_to_memory(nullptr, 1), 0u);
    EXPECT_EQ(LSB_uint64_to_memory(nullptr, 1), 0u);
    EXPECT_EQ(LSB_compact_int_to_memory(nullptr, 1), 0u);
    EXPECT_EQ(LSB_guid_to_memory(nullptr, _GUID{}), 0u);
}

}  // namespace
}  // namespace Orbel::Wrapton
