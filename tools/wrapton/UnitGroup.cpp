#include "UnitGroup.h"

#include <cstddef>
#include <span>

#include "StartCodes.h"

namespace Orbel::Wrapton::Command
{
namespace
{

using Bytes = std::vector<unsigned char>;
using ByteSpan = std::span<const unsigned char>;

/// A PES_packet_length of 16 bits less three bytes of flags and two time stamps, ISO/IEC 13818-1
/// 2.4.3.7.
constexpr std::size_t kMostPayload = 65535 - 3 - 10;

bool SplitsWell(ByteSpan picture)
{
    bool split = false;
    std::size_t piece = 0;
    for (std::size_t at = FindStartCode(picture, 0); at < picture.size();
         at = FindStartCode(picture, at + kStartCode.size()))
    {
        if (!IsLongStartCode(picture, at)) continue;

        const std::size_t length = at - 1 - piece;
        if (split ? length > kMostPayload : length > 0) return false;
        split = true;
        piece = at - 1;
    }
    return true;
}

/// The unit without the zero bytes behind it, which belong to no unit.
ByteSpan WithoutTrailingZeros(ByteSpan unit)
{
    while (!unit.empty() && unit.back() == 0)
        unit = unit.first(unit.size() - 1);
    return unit;
}

Bytes AsOneGroup(ByteSpan picture)
{
    Bytes group = {0};
    group.reserve(picture.size() + 1);
    for (std::size_t at = FindStartCode(picture, 0); at < picture.size();)
    {
        const std::size_t next = FindStartCode(picture, at + kStartCode.size());
        const ByteSpan unit = WithoutTrailingZeros(picture.subspan(at, next - at));
        group.insert(group.end(), unit.begin(), unit.end());
        at = next;
    }
    return group;
}

}  // namespace

void GroupUnits(Bytes& picture)
{
    if (!SplitsWell(picture)) picture = AsOneGroup(picture);
}

}  // namespace Orbel::Wrapton::Command
