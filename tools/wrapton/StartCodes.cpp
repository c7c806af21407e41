#include "StartCodes.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace Orbel::Wrapton::Command
{

std::vector<unsigned char> WithLongStartCodes(const std::vector<unsigned char>& stream)
{
    static constexpr std::array<unsigned char, 3> kStartCode = {0, 0, 1};

    std::vector<unsigned char> result;
    result.reserve(stream.size() + stream.size() / 64 + 16);
    auto from = stream.begin();
    while (true)
    {
        const auto code = std::search(from, stream.end(), kStartCode.begin(), kStartCode.end());
        result.insert(result.end(), from, code);
        if (code == stream.end()) return result;

        // A unit ends with no zero of its own (B.1.2), so one ahead of the code belongs to it.
        const bool is_long = code != stream.begin() && *std::prev(code) == 0;
        if (!is_long) result.push_back(0);
        from = std::next(code, kStartCode.size());
        result.insert(result.end(), kStartCode.begin(), kStartCode.end());
    }
}

}  // namespace Orbel::Wrapton::Command
