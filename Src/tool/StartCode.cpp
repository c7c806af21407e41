#include "tool/StartCode.h"

#include <cstring>

namespace Orbel::Wrapton
{

StartCode FindStartCode(std::span<const unsigned char> data, size_t from) noexcept
{
    const unsigned char* const bytes = data.data();
    const size_t size = data.size();
    // The byte 01 is rarer than 00 in coded data and ends every start code: look for it alone.
    for (size_t at = from + 2; at < size; ++at)
    {
        const void* const hit = std::memchr(bytes + at, 1, size - at);
        if (hit == nullptr) break;

        at = static_cast<size_t>(static_cast<const unsigned char*>(hit) - bytes);
        if (bytes[at - 1] != 0 || bytes[at - 2] != 0) continue;

        const bool long_form = at - 2 > from && bytes[at - 3] == 0;
        const size_t begin = long_form ? at - 3 : at - 2;
        // Four bytes must be left at the beginning, so "00 00 01" right at the end does not count.
        if (begin + 3 < size) return {begin, at + 1};
    }
    return {size, size};
}

}  // namespace Orbel::Wrapton
