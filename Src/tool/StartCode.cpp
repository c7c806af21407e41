#include "tool/StartCode.h"

#include <algorithm>
#include <cstring>

#include "tool/StartCodeScan.h"

namespace Orbel::Wrapton
{
namespace
{

/// Asked for at every call: it is one load, and there is no order of initialisation to get wrong.
bool HasAvx2()
{
    return __builtin_cpu_supports("avx2") != 0;
}

size_t Scan(const unsigned char* data, size_t size)
{
    return HasAvx2() ? ScanAvx2<false>(data, size, nullptr) : ScanSse2<false>(data, size, nullptr);
}

size_t ScanAndCopy(const unsigned char* data, size_t size, unsigned char* to)
{
    return HasAvx2() ? ScanAvx2<true>(data, size, to) : ScanSse2<true>(data, size, to);
}

/// Scans a part that stays in the first-level cache and copies it then: frames that come from
/// memory are copied faster by memcpy(), which knows how to fetch ahead, than by the loop that
/// scans.
size_t ScanAndCopyParts(const unsigned char* data, size_t size, unsigned char* to)
{
    constexpr size_t kPart = 4096;
    constexpr size_t kOverlap = 3;  // a start code that begins in a part may end in the next

    for (size_t at = 0; at < size;)
    {
        const size_t part = std::min(kPart, size - at);
        const size_t seen = std::min(kPart + kOverlap, size - at);
        const size_t place = Scan(data + at, seen);
        const bool found = place != seen;
        const size_t length = found ? place : part;
        if (length != 0) std::memcpy(to + at, data + at, length);
        if (found) return at + place;
        at += part;
    }
    return size;
}

StartCode At(std::span<const unsigned char> data, size_t begin)
{
    if (begin == data.size()) return {begin, begin};
    return {begin, begin + (data[begin + 2] == 1 ? 3u : 4u)};
}

}  // namespace

StartCode FindStartCode(std::span<const unsigned char> data, size_t from) noexcept
{
    return At(data, from + Scan(data.data() + from, data.size() - from));
}

StartCode CopyToStartCode(std::span<const unsigned char> data,
                          size_t from,
                          unsigned char* to) noexcept
{
    constexpr size_t kLarge = 256u << 10;  // frames that no cache near the processor holds

    const size_t size = data.size() - from;
    const unsigned char* const begin = data.data() + from;
    return At(
        data,
        from + (size < kLarge ? ScanAndCopy(begin, size, to) : ScanAndCopyParts(begin, size, to)));
}

}  // namespace Orbel::Wrapton
