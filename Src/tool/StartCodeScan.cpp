#include "tool/StartCodeScan.h"

#include <immintrin.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

// How the vector loops work. A start code has two zero bytes side by side, and coded data rarely
// have: a block is or-ed with itself one byte on, which makes a zero of every such pair, and one
// comparison of the minimum over all vectors of a block tells whether there is any. Only then the
// pairs are looked at one by one. Looking for the byte 01 or for single zeros would stop in every
// second block.
//
// Copying adds nothing but the stores of what is loaded already. A block with a start code is not
// stored: bytes behind the start code are not the caller's to have.
//
// The last positions are handled by one more block that ends where the data end and reaches back
// over positions that are done: looking at them twice is cheaper than a loop over single bytes.

namespace Orbel::Wrapton
{
namespace
{

constexpr size_t kAhead = kStartCodeAhead;
constexpr size_t kNone = SIZE_MAX;

/// The first start code among the pairs of zeros that the bits of @p pairs stand for, the lowest
/// for the one at @p at.
size_t FirstOf(uint64_t pairs, const unsigned char* data, size_t at)
{
    for (; pairs != 0; pairs &= pairs - 1)
    {
        const size_t place = at + static_cast<size_t>(std::countr_zero(pairs));
        if (IsStartCode(data + place)) return place;
    }
    return kNone;
}

/// Ends a scan at @p end, with the bytes from @p done on still to be copied.
template <bool kCopies>
size_t Finish(const unsigned char* data, size_t done, size_t end, unsigned char* to)
{
    if (kCopies && end != done) std::memcpy(to + done, data + done, end - done);
    return end;
}

__m128i Load128(const unsigned char* from)
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
}

void Store128(unsigned char* to, __m128i bytes)
{
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), bytes);
}

/// @p bytes, which stand at @p from, with a zero for every pair of zeros.
__m128i Pairs128(__m128i bytes, const unsigned char* from)
{
    return _mm_or_si128(bytes, Load128(from + 1));
}

/// A bit for every zero byte.
uint64_t Zeros128(__m128i bytes)
{
    const __m128i zeros = _mm_cmpeq_epi8(bytes, _mm_setzero_si128());
    return static_cast<uint32_t>(_mm_movemask_epi8(zeros));
}

[[gnu::target("avx2")]] inline __m256i Load256(const unsigned char* from)
{
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
}

[[gnu::target("avx2")]] inline void Store256(unsigned char* to, __m256i bytes)
{
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), bytes);
}

[[gnu::target("avx2")]] inline __m256i Pairs256(__m256i bytes, const unsigned char* from)
{
    return _mm256_or_si256(bytes, Load256(from + 1));
}

[[gnu::target("avx2")]] inline uint64_t Zeros256(__m256i bytes)
{
    const __m256i zeros = _mm256_cmpeq_epi8(bytes, _mm256_setzero_si256());
    return static_cast<uint32_t>(_mm256_movemask_epi8(zeros));
}

}  // namespace

template <bool kCopies>
size_t ScanPlain(const ScanRange& range, unsigned char* to) noexcept
{
    const size_t seen = range.size + range.ahead;
    for (size_t at = 0; at + kAhead < seen; ++at)
    {
        if (IsStartCode(range.data + at)) return Finish<kCopies>(range.data, 0, at, to);
    }
    return Finish<kCopies>(range.data, 0, range.size, to);
}

template <bool kCopies>
size_t ScanSse2(const ScanRange& range, unsigned char* to) noexcept
{
    constexpr size_t kVector = sizeof(__m128i);
    constexpr size_t kBlock = 4 * kVector;

    const unsigned char* const data = range.data;
    const size_t seen = range.size + range.ahead;
    if (seen < kVector + kAhead) return ScanPlain<kCopies>(range, to);

    size_t at = 0;
    for (; seen - at >= kBlock + kAhead; at += kBlock)
    {
        const unsigned char* const from = data + at;
        const __m128i first = Load128(from);
        const __m128i second = Load128(from + kVector);
        const __m128i third = Load128(from + 2 * kVector);
        const __m128i fourth = Load128(from + 3 * kVector);
        const __m128i pairs1 = Pairs128(first, from);
        const __m128i pairs2 = Pairs128(second, from + kVector);
        const __m128i pairs3 = Pairs128(third, from + 2 * kVector);
        const __m128i pairs4 = Pairs128(fourth, from + 3 * kVector);
        const __m128i least =
            _mm_min_epu8(_mm_min_epu8(pairs1, pairs2), _mm_min_epu8(pairs3, pairs4));
        if (Zeros128(least) != 0) [[unlikely]]
        {
            const uint64_t pairs = Zeros128(pairs1) | Zeros128(pairs2) << 16 |
                                   Zeros128(pairs3) << 32 | Zeros128(pairs4) << 48;
            const size_t place = FirstOf(pairs, data, at);
            if (place != kNone) return Finish<kCopies>(data, at, place, to);
        }
        if (kCopies)
        {
            Store128(to + at, first);
            Store128(to + at + kVector, second);
            Store128(to + at + 2 * kVector, third);
            Store128(to + at + 3 * kVector, fourth);
        }
    }
    while (seen - at > kAhead)
    {
        const size_t back = std::min(at, seen - kVector - kAhead);
        const __m128i bytes = Load128(data + back);
        const size_t place = FirstOf(Zeros128(Pairs128(bytes, data + back)), data, back);
        if (place != kNone) return Finish<kCopies>(data, at, place, to);

        if (kCopies) Store128(to + back, bytes);
        at = back + kVector;
    }
    return Finish<kCopies>(data, at, range.size, to);
}

template <bool kCopies>
[[gnu::target("avx2")]] size_t ScanAvx2(const ScanRange& range, unsigned char* to) noexcept
{
    constexpr size_t kVector = sizeof(__m256i);
    constexpr size_t kBlock = 4 * kVector;
    constexpr size_t kFetchAhead =
        1024;  // the stores keep the processor from looking as far itself

    const unsigned char* const data = range.data;
    const size_t seen = range.size + range.ahead;
    if (seen < kVector + kAhead) return ScanSse2<kCopies>(range, to);

    size_t at = 0;
    for (; seen - at >= kBlock + kAhead; at += kBlock)
    {
        const unsigned char* const from = data + at;
        if (kCopies && seen - at > kFetchAhead)
        {
            _mm_prefetch(reinterpret_cast<const char*>(from + kFetchAhead), _MM_HINT_T0);
            _mm_prefetch(reinterpret_cast<const char*>(from + kFetchAhead + 64), _MM_HINT_T0);
        }
        const __m256i first = Load256(from);
        const __m256i second = Load256(from + kVector);
        const __m256i third = Load256(from + 2 * kVector);
        const __m256i fourth = Load256(from + 3 * kVector);
        const __m256i pairs1 = Pairs256(first, from);
        const __m256i pairs2 = Pairs256(second, from + kVector);
        const __m256i pairs3 = Pairs256(third, from + 2 * kVector);
        const __m256i pairs4 = Pairs256(fourth, from + 3 * kVector);
        const __m256i least =
            _mm256_min_epu8(_mm256_min_epu8(pairs1, pairs2), _mm256_min_epu8(pairs3, pairs4));
        if (Zeros256(least) != 0) [[unlikely]]
        {
            size_t place = FirstOf(Zeros256(pairs1) | Zeros256(pairs2) << 32, data, at);
            if (place == kNone)
            {
                const uint64_t pairs = Zeros256(pairs3) | Zeros256(pairs4) << 32;
                place = FirstOf(pairs, data, at + 2 * kVector);
            }
            if (place != kNone) return Finish<kCopies>(data, at, place, to);
        }
        if (kCopies)
        {
            Store256(to + at, first);
            Store256(to + at + kVector, second);
            Store256(to + at + 2 * kVector, third);
            Store256(to + at + 3 * kVector, fourth);
        }
    }
    while (seen - at > kAhead)
    {
        const size_t back = std::min(at, seen - kVector - kAhead);
        const __m256i bytes = Load256(data + back);
        const size_t place = FirstOf(Zeros256(Pairs256(bytes, data + back)), data, back);
        if (place != kNone) return Finish<kCopies>(data, at, place, to);

        if (kCopies) Store256(to + back, bytes);
        at = back + kVector;
    }
    return Finish<kCopies>(data, at, range.size, to);
}

template size_t ScanPlain<false>(const ScanRange&, unsigned char*) noexcept;
template size_t ScanPlain<true>(const ScanRange&, unsigned char*) noexcept;
template size_t ScanSse2<false>(const ScanRange&, unsigned char*) noexcept;
template size_t ScanSse2<true>(const ScanRange&, unsigned char*) noexcept;
template size_t ScanAvx2<false>(const ScanRange&, unsigned char*) noexcept;
template size_t ScanAvx2<true>(const ScanRange&, unsigned char*) noexcept;

}  // namespace Orbel::Wrapton
