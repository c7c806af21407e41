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

size_t Scan(const ScanRange& range)
{
    return HasAvx2() ? ScanAvx2<false>(range, nullptr) : ScanSse2<false>(range, nullptr);
}

size_t ScanAndCopy(const ScanRange& range, unsigned char* to)
{
    return HasAvx2() ? ScanAvx2<true>(range, to) : ScanSse2<true>(range, to);
}

/// @p size bytes of @p data from @p from on, or as many as there are.
ScanRange RangeOf(std::span<const unsigned char> data, size_t from, size_t size)
{
    const size_t rest = data.size() - from;
    const size_t length = std::min(size, rest);
    return {data.data() + from, length, std::min(kStartCodeAhead, rest - length)};
}

/// Scans a part that stays in the first-level cache and copies it then: frames that come from
/// memory are copied faster by memcpy(), which knows how to fetch ahead, than by the loop that
/// scans.
size_t ScanAndCopyParts(const ScanRange& range, unsigned char* to)
{
    constexpr size_t kPart = 4096;

    const std::span<const unsigned char> seen(range.data, range.size + range.ahead);
    for (size_t at = 0; at < range.size;)
    {
        const ScanRange part = RangeOf(seen, at, std::min(kPart, range.size - at));
        const size_t length = Scan(part);
        if (length != 0) std::memcpy(to + at, part.data, length);
        at += length;
        if (length != part.size) return at;
    }
    return range.size;
}

/// What a scan of @p range, which begins at @p from, found at @p place.
StartCode At(const ScanRange& range, size_t from, size_t place)
{
    const size_t begin = from + place;
    if (place == range.size) return {begin, begin};
    return {begin, begin + (range.data[place + 2] == 1 ? 3u : 4u)};
}

}  // namespace

StartCode FindStartCode(std::span<const unsigned char> data, size_t from, size_t most) noexcept
{
    const ScanRange range = RangeOf(data, from, most);
    // Most frames begin with one, which is seen sooner than a vector is loaded.
    const bool at_once =
        range.size != 0 && range.size + range.ahead > kStartCodeAhead && IsStartCode(range.data);
    return At(range, from, at_once ? 0 : Scan(range));
}

StartCode CopyToStartCode(std::span<const unsigned char> data,
                          size_t from,
                          unsigned char* to,
                          size_t most) noexcept
{
    constexpr size_t kLarge = 256u << 10;  // frames that no cache near the processor holds

    const ScanRange range = RangeOf(data, from, most);
    const bool large = data.size() - from >= kLarge;
    return At(range, from, large ? ScanAndCopyParts(range, to) : ScanAndCopy(range, to));
}

}  // namespace Orbel::Wrapton
