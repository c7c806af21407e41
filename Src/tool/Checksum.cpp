#include <emmintrin.h>

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

uint32_t SumOfLanes(__m128i lanes)
{
    lanes = _mm_add_epi32(lanes, _mm_srli_si128(lanes, 8));
    lanes = _mm_add_epi32(lanes, _mm_srli_si128(lanes, 4));
    return static_cast<uint32_t>(_mm_cvtsi128_si32(lanes));
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

    // Four sums side by side: one alone would wait for each addition instead of for the memory.
    constexpr size_t kStep = 4 * sizeof(__m128i);
    __m128i first = _mm_setzero_si128();
    __m128i second = first;
    __m128i third = first;
    __m128i fourth = first;
    const size_t size = static_cast<size_t>(len);
    size_t at = 0;
    for (; size - at >= kStep; at += kStep)
    {
        const auto* block = reinterpret_cast<const __m128i*>(data + at);
        first = _mm_add_epi32(first, _mm_loadu_si128(block));
        second = _mm_add_epi32(second, _mm_loadu_si128(block + 1));
        third = _mm_add_epi32(third, _mm_loadu_si128(block + 2));
        fourth = _mm_add_epi32(fourth, _mm_loadu_si128(block + 3));
    }
    uint32_t sum = SumOfLanes(_mm_add_epi32(_mm_add_epi32(first, second),  //
                                            _mm_add_epi32(third, fourth)));
    for (; size - at >= 4; at += 4)
    {
        sum += Word(data + at, 4);
    }
    // The tail is put together from its own bytes: the caller's buffer may end right behind them.
    return sum + Word(data + at, size - at);
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
