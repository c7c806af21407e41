#include <array>
#include <cstring>

#include "tool/StreamTool.h"

namespace Orbel::Wrapton
{
namespace
{

constexpr std::array<uint32_t, 256> kCrcTable = []
{
    std::array<uint32_t, 256> table{};
    for (uint32_t i = 0; i < table.size(); ++i)
    {
        uint32_t value = i;
        for (int bit = 0; bit < 8; ++bit)
        {
            value = (value & 1) != 0 ? (value >> 1) ^ 0xEDB88320u : value >> 1;
        }
        table[i] = value;
    }
    return table;
}();
static_assert(kCrcTable[255] == 0x2D02EF8D);

uint32_t Word(const unsigned char* bytes, size_t count)
{
    static_assert(std::endian::native == std::endian::little);
    uint32_t word = 0;
    std::memcpy(&word, bytes, count);
    return word;
}

}  // namespace

uint32_t GetCRC32(const unsigned char* data, int32_t len) noexcept
{
    if (data == nullptr) return 0;

    uint32_t crc = 0xFFFFFFFF;
    for (int32_t i = 0; i < len; ++i)
    {
        crc = (crc >> 8) ^ kCrcTable[(crc ^ data[i]) & 0xFF];
    }
    return ~crc;
}

uint32_t GetSum32(const unsigned char* data, int32_t len) noexcept
{
    if (data == nullptr) return 0;
    if (len <= 0) return 0;

    const size_t size = static_cast<size_t>(len);
    const size_t whole = size - size % 4;
    uint32_t sum = 0;
    for (size_t i = 0; i < whole; i += 4)
    {
        sum += Word(data + i, 4);
    }
    // The tail is put together from its own bytes: the caller's buffer may end right behind them.
    return sum + Word(data + whole, size % 4);
}

uint8_t GetSum8(const unsigned char* data, int32_t len) noexcept
{
    if (data == nullptr) return 0;

    uint8_t sum = 0;
    for (int32_t i = 0; i < len; ++i)
    {
        sum = static_cast<uint8_t>(sum + data[i]);
    }
    return sum;
}

uint32_t GetXor32(const unsigned char* data, int32_t len) noexcept
{
    if (data == nullptr) return 0;
    if (len < 2) return 0;

    uint32_t value = 0;
    for (int32_t i = 0; i < len; ++i)
    {
        value ^= data[i];
    }
    return value;
}

}  // namespace Orbel::Wrapton
