#include "StartCodes.h"

#include <algorithm>

namespace Orbel::Wrapton::Command
{

std::size_t FindStartCode(std::span<const unsigned char> stream, std::size_t from)
{
    const auto behind = stream.subspan(from);
    const auto found =
        std::search(behind.begin(), behind.end(), kStartCode.begin(), kStartCode.end());
    return from + static_cast<std::size_t>(found - behind.begin());
}

bool IsLongStartCode(std::span<const unsigned char> stream, std::size_t at)
{
    return at != 0 && stream[at - 1] == 0;
}

std::vector<unsigned char> WithLongStartCodes(std::span<const unsigned char> stream)
{
    std::vector<unsigned char> result;
    result.reserve(stream.size() + stream.size() / 64 + 16);
    std::size_t from = 0;
    while (true)
    {
        const std::size_t at = FindStartCode(stream, from);
        const auto unit = stream.subspan(from, at - from);
        result.insert(result.end(), unit.begin(), unit.end());
        if (at == stream.size()) return result;

        // A unit ends with no zero of its own (B.1.2), so one ahead of the code belongs to it.
        if (!IsLongStartCode(stream, at)) result.push_back(0);
        result.insert(result.end(), kStartCode.begin(), kStartCode.end());
        from = at + kStartCode.size();
    }
}

}  // namespace Orbel::Wrapton::Command
