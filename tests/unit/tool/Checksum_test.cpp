#include <algorithm>
#include <memory>
#include <string_view>

#include "support/Bytes.h"
#include "tool/StreamTool.h"

namespace Orbel::Wrapton
{
namespace
{

using Support::Bytes;
using Support::Hex;

uint32_t Crc(std::string_view text)
{
    return GetCRC32(reinterpret_cast<const unsigned char*>(text.data()),
                    static_cast<int32_t>(text.size()));
}

uint32_t Crc(const Bytes& bytes)
{
    return GetCRC32(bytes.data(), static_cast<int32_t>(bytes.size()));
}

TEST(GetCRC32, GivesThePublishedCheckValues)
{
    EXPECT_EQ(Crc("123456789"), 0xCBF43926u);
    EXPECT_EQ(Crc("a"), 0xE8B7BE43u);
    EXPECT_EQ(Crc("abc"), 0x352441C2u);
    EXPECT_EQ(Crc("message digest"), 0x20159D7Fu);
    EXPECT_EQ(Crc("abcdefghijklmnopqrstuvwxyz"), 0x4C2750BDu);
    EXPECT_EQ(Crc("The quick brown fox jumps over the lazy dog"), 0x414FA339u);
}

TEST(GetCRC32, GivesThePublishedValuesOfConstantAndRisingBytes)
{
    EXPECT_EQ(Crc(Bytes(32, 0x00)), 0x190A55ADu);
    EXPECT_EQ(Crc(Bytes(32, 0xFF)), 0xFF6CAB0Bu);
    Bytes rising(32);
    for (std::size_t i = 0; i < rising.size(); ++i)
    {
        rising[i] = static_cast<unsigned char>(i);
    }
    EXPECT_EQ(Crc(rising), 0x91267E8Au);
}

TEST(GetCRC32, GivesZeroForNothing)
{
    const unsigned char byte = 1;
    EXPECT_EQ(GetCRC32(nullptr, 10), 0u);
    EXPECT_EQ(GetCRC32(nullptr, 0), 0u);
    EXPECT_EQ(GetCRC32(&byte, 0), 0u);
    EXPECT_EQ(GetCRC32(&byte, -1), 0u);
}

uint32_t PlainSum32(const Bytes& bytes)
{
    uint32_t sum = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i)
    {
        sum += static_cast<uint32_t>(bytes[i]) << (8 * (i % 4));
    }
    return sum;
}

TEST(GetSum32, AddsLittleEndianWordsAndAMaskedTail)
{
    const Bytes bytes = Hex("01 02 03 04 10 20 30 40 AA BB CC");
    EXPECT_EQ(GetSum32(bytes.data(), 4), 0x04030201u);
    EXPECT_EQ(GetSum32(bytes.data(), 8), 0x44332211u);
    EXPECT_EQ(GetSum32(bytes.data(), 9), 0x443322BBu);             // + 0x000000AA
    EXPECT_EQ(GetSum32(bytes.data(), 10), 0x44332211u + 0xBBAAu);  // + two bytes
    EXPECT_EQ(GetSum32(bytes.data(), 11), 0x44332211u + 0xCCBBAAu);
    EXPECT_EQ(GetSum32(bytes.data(), 1), 0x01u);
    EXPECT_EQ(GetSum32(bytes.data(), 2), 0x0201u);
    EXPECT_EQ(GetSum32(bytes.data(), 3), 0x030201u);
}

TEST(GetSum32, WrapsModulo32Bits)
{
    const Bytes bytes = Hex("FF FF FF FF FF FF FF FF 03");
    EXPECT_EQ(GetSum32(bytes.data(), 8), 0xFFFFFFFEu);
    EXPECT_EQ(GetSum32(bytes.data(), 9), 1u);

    const Bytes ones(1000, 0xFF);
    EXPECT_EQ(GetSum32(ones.data(), 1000), 0u - 250u);
}

TEST(GetSum32, ReadsNothingBehindTheDataAtAnyLengthAndAlignment)
{
    for (std::size_t alignment = 0; alignment < 16; ++alignment)
    {
        for (std::size_t length = 0; length <= 200; ++length)
        {
            // The data ends where the allocation ends.
            const auto room = std::make_unique<unsigned char[]>(alignment + length);
            const Bytes bytes =
                Support::Payload(length, static_cast<uint32_t>(1000 * alignment + length));
            std::copy(bytes.begin(), bytes.end(), room.get() + alignment);
            EXPECT_EQ(GetSum32(room.get() + alignment, static_cast<int32_t>(length)),
                      PlainSum32(bytes))
                << "length " << length << ", alignment " << alignment;
        }
    }
}

TEST(GetSum32, GivesZeroForNothing)
{
    const unsigned char byte = 1;
    EXPECT_EQ(GetSum32(nullptr, 8), 0u);
    EXPECT_EQ(GetSum32(&byte, 0), 0u);
    EXPECT_EQ(GetSum32(&byte, -4), 0u);
}

TEST(GetSum8, AddsModulo256)
{
    const Bytes bytes = Hex("01 FF 80 81 02");
    EXPECT_EQ(GetSum8(bytes.data(), 1), 0x01);
    EXPECT_EQ(GetSum8(bytes.data(), 2), 0x00);
    EXPECT_EQ(GetSum8(bytes.data(), 4), 0x01);
    EXPECT_EQ(GetSum8(bytes.data(), 5), 0x03);
    EXPECT_EQ(GetSum8(bytes.data(), 0), 0);
    EXPECT_EQ(GetSum8(bytes.data(), -1), 0);
    EXPECT_EQ(GetSum8(nullptr, 5), 0);
}

TEST(GetXor32, XorsTheBytesButNotASingleOne)
{
    const Bytes bytes = Hex("F0 0F AA AA 01");
    EXPECT_EQ(GetXor32(bytes.data(), 2), 0xFFu);
    EXPECT_EQ(GetXor32(bytes.data(), 3), 0x55u);
    EXPECT_EQ(GetXor32(bytes.data(), 4), 0xFFu);
    EXPECT_EQ(GetXor32(bytes.data(), 5), 0xFEu);
    EXPECT_EQ(GetXor32(bytes.data(), 1), 0u);
    EXPECT_EQ(GetXor32(bytes.data(), 0), 0u);
    EXPECT_EQ(GetXor32(bytes.data(), -1), 0u);
    EXPECT_EQ(GetXor32(nullptr, 5), 0u);
}

}  // namespace
}  // namespace Orbel::Wrapton
