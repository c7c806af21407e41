#include <array>

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
