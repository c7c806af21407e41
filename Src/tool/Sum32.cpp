#include "tool/Sum32.h"

#include <immintrin.h>

#include <algorithm>
#include <bit>
#include <cstring>

#include "tool/StreamTool.h"

// Four sums run side by side: a single one would wait for each addition instead of for the memory.
// Copying adds nothing but the stores of what is loaded already.

namespace Orbel::Wrapton
{
namespace
{

bool HasAvx2()
{
    return __builtin_cpu_supports("avx2") != 0;
}

uint32_t Sum(const unsigned char* data, size_t size)
{
    return HasAvx2() ? SumAvx2<false>(data, size, nullptr) : SumSse2<false>(data, size, nullptr);
}

uint32_t SumAndCopy(const unsigned char* data, size_t size, unsigned char* to)
{
    return HasAvx2() ? SumAvx2<true>(data, size, to) : SumSse2<true>(data, size, to);
}

uint32_t SumOfLanes(__m128i lanes)
{
    lanes = _mm_add_epi32(lanes, _mm_srli_si128(lanes, 8));
    lanes = _mm_add_epi32(lanes, _mm_srli_si128(lanes, 4));
    return static_cast<uint32_t>(_mm_cvtsi128_si32(lanes));
}

__m128i Load128(const unsigned char* from)
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
}

void Store128(unsigned char* to, __m128i bytes)
{
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), bytes);
}

[[gnu::target("avx2")]] inline __m256i Load256(const unsigned char* from)
{
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
}

[[gnu::target("avx2")]] inline void Store256(unsigned char* to, __m256i bytes)
{
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), bytes);
}

}  // namespace

template <bool kCopies>
uint32_t SumPlain(const unsigned char* data, size_t size, unsigned char* to) noexcept
{
    static_assert(std::endian::native == std::endian::little);
    constexpr size_t kWord = sizeof(uint32_t);

    uint32_t sum = 0;
    size_t at = 0;
    for (; size - at >= kWord; at += kWord)
    {
        uint32_t word;
        std::memcpy(&word, data + at, kWord);
        if (kCopies) std::memcpy(to + at, &word, kWord);
        sum += word;
    }
    // The last word is put together from its own bytes: the buffer may end right behind them.
    for (unsigned shift = 0; at < size; ++at, shift += 8)
    {
        sum += static_cast<uint32_t>(data[at]) << shift;
        if (kCopies) to[at] = data[at];
    }
    return sum;
}

template <bool kCopies>
uint32_t SumSse2(const unsigned char* data, size_t size, unsigned char* to) noexcept
{
    constexpr size_t kVector = sizeof(__m128i);
    constexpr size_t kBlock = 4 * kVector;

    __m128i sum1 = _mm_setzero_si128();
    __m128i sum2 = sum1;
    __m128i sum3 = sum1;
    __m128i sum4 = sum1;
    size_t at = 0;
    for (; size - at >= kBlock; at += kBlock)
    {
        const __m128i first = Load128(data + at);
        const __m128i second = Load128(data + at + kVector);
        const __m128i third = Load128(data + at + 2 * kVector);
        const __m128i fourth = Load128(data + at + 3 * kVector);
        sum1 = _mm_add_epi32(sum1, first);
        sum2 = _mm_add_epi32(sum2, second);
        sum3 = _mm_add_epi32(sum3, third);
        sum4 = _mm_add_epi32(sum4, fourth);
        if (kCopies)
        {
            Store128(to + at, first);
            Store128(to + at + kVector, second);
            Store128(to + at + 2 * kVector, third);
            Store128(to + at + 3 * kVector, fourth);
        }
    }
    for (; size - at >= kVector; at += kVector)
    {
        const __m128i bytes = Load128(data + at);
        sum1 = _mm_add_epi32(sum1, bytes);
        if (kCopies) Store128(to + at, bytes);
    }
    const __m128i all = _mm_add_epi32(_mm_add_epi32(sum1, sum2), _mm_add_epi32(sum3, sum4));
    return SumOfLanes(all) + SumPlain<kCopies>(data + at, size - at, kCopies ? to + at : nullptr);
}

template <bool kCopies>
[[gnu::target("avx2")]] uint32_t SumAvx2(const unsigned char* data,
                                         size_t size,
                                         unsigned char* to) noexcept
{
    constexpr size_t kVector = sizeof(__m256i);
    constexpr size_t kBlock = 4 * kVector;

    __m256i sum1 = _mm256_setzero_si256();
    __m256i sum2 = sum1;
    __m256i sum3 = sum1;
    __m256i sum4 = sum1;
    size_t at = 0;
    for (; size - at >= kBlock; at += kBlock)
    {
        const __m256i first = Load256(data + at);
        const __m256i second = Load256(data + at + kVector);
        const __m256i third = Load256(data + at + 2 * kVector);
        const __m256i fourth = Load256(data + at + 3 * kVector);
        sum1 = _mm256_add_epi32(sum1, first);
        sum2 = _mm256_add_epi32(sum2, second);
        sum3 = _mm256_add_epi32(sum3, third);
        sum4 = _mm256_add_epi32(sum4, fourth);
        if (kCopies)
        {
            Store256(to + at, first);
            Store256(to + at + kVector, second);
            Store256(to + at + 2 * kVector, third);
            Store256(to + at + 3 * kVector, fourth);
        }
    }
    for (; size - at >= kVector; at += kVector)
    {
        const __m256i bytes = Load256(data + at);
        sum1 = _mm256_add_epi32(sum1, bytes);
        if (kCopies) Store256(to + at, bytes);
    }
    const __m256i all =
        _mm256_add_epi32(_mm256_add_epi32(sum1, sum2), _mm256_add_epi32(sum3, sum4));
    const __m128i half =
        _mm_add_epi32(_mm256_castsi256_si128(all), _mm256_extracti128_si256(all, 1));
    return SumOfLanes(half) + SumSse2<kCopies>(data + at, size - at, kCopies ? to + at : nullptr);
}

template uint32_t SumPlain<false>(const unsigned char*, size_t, unsigned char*) noexcept;
template uint32_t SumPlain<true>(const unsigned char*, size_t, unsigned char*) noexcept;
template uint32_t SumSse2<false>(const unsigned char*, size_t, unsigned char*) noexcept;
template uint32_t SumSse2<true>(const unsigned char*, size_t, unsigned char*) noexcept;
template uint32_t SumAvx2<false>(const unsigned char*, size_t, unsigned char*) noexcept;
template uint32_t SumAvx2<true>(const unsigned char*, size_t, unsigned char*) noexcept;

uint32_t GetSum32(const unsigned char* data, int32_t len) noexcept
{
    if (data == nullptr) return 0;
    if (len <= 0) return 0;
    return Sum(data, static_cast<size_t>(len));
}

uint32_t CopyAndSum32(std::span<const unsigned char> data, unsigned char* to) noexcept
{
    constexpr size_t kLarge = 256u << 10;
    constexpr size_t kPart = 4096;  // whole words

    if (data.size() < kLarge) return SumAndCopy(data.data(), data.size(), to);

    // Frames that come from memory are copied faster by memcpy(), which knows how to fetch ahead: a
    // part is added up, and is in the first-level cache when it is copied.
    uint32_t sum = 0;
    for (size_t at = 0; at < data.size();)
    {
        const size_t part = std::min(kPart, data.size() - at);
        sum += Sum(data.data() + at, part);
        std::memcpy(to + at, data.data() + at, part);
        at += part;
    }
    return sum;
}

}  // namespace Orbel::Wrapton
