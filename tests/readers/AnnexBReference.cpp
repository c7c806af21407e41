#include "readers/AnnexBReference.h"

namespace Readers
{
namespace
{

using ByteSpan = std::span<const unsigned char>;

/// Positions are looked at while four bytes are left.
bool InBound(ByteSpan data, std::size_t at)
{
    return at + 3 < data.size();
}

bool ThreeByteCode(ByteSpan data, std::size_t at)
{
    return data[at] == 0 && data[at + 1] == 0 && data[at + 2] == 1;
}

bool FourByteCode(ByteSpan data, std::size_t at)
{
    return data[at] == 0 && data[at + 1] == 0 && data[at + 2] == 0 && data[at + 3] == 1;
}

/// Where the unit ends whose start code was found at @p code.
std::size_t EndOfUnit(ByteSpan data, std::size_t code)
{
    for (std::size_t at = code + 3; InBound(data, at); ++at)
    {
        if (FourByteCode(data, at) || ThreeByteCode(data, at)) return at;
    }
    return data.size();
}

void Append(std::vector<unsigned char>& to, ByteSpan data, std::size_t from, std::size_t end)
{
    for (std::size_t at = from; at < end; ++at)
    {
        to.push_back(data[at]);
    }
}

}  // namespace

ReferenceResult ReferenceParameterSet(ByteSpan data, unsigned type, std::size_t capacity)
{
    ReferenceResult found;
    for (std::size_t at = 0; InBound(data, at); ++at)
    {
        if (!ThreeByteCode(data, at)) continue;
        if ((data[at + 3] & 0x1Fu) != type) continue;

        const std::size_t begin = at + 3;
        const std::size_t end = EndOfUnit(data, at);
        if (end - begin > capacity) return found;
        Append(found.written, data, begin, end);
        found.result = static_cast<int32_t>(end - begin);
        return found;
    }
    return found;
}

ReferenceResult ReferenceH264ToAvc(ByteSpan data, std::size_t capacity)
{
    ReferenceResult converted;
    std::size_t at = 0;
    while (InBound(data, at))
    {
        std::size_t begin = 0;
        if (ThreeByteCode(data, at))
        {
            begin = at + 3;
        }
        else if (FourByteCode(data, at))
        {
            begin = at + 4;
        }
        else
        {
            ++at;
            continue;
        }
        const std::size_t end = EndOfUnit(data, at);
        const std::size_t length = end - begin;
        if (4 + length > capacity - converted.written.size()) break;
        for (int shift = 24; shift >= 0; shift -= 8)
        {
            converted.written.push_back(static_cast<unsigned char>(length >> shift));
        }
        Append(converted.written, data, begin, end);
        at = end;
    }
    converted.result = static_cast<int32_t>(converted.written.size());
    return converted;
}

std::vector<ByteSpan> ReferenceUnits(ByteSpan data)
{
    std::vector<ByteSpan> units;
    std::size_t at = 0;
    while (InBound(data, at))
    {
        const bool three = ThreeByteCode(data, at);
        if (!three && !FourByteCode(data, at))
        {
            ++at;
            continue;
        }
        const std::size_t begin = at + (three ? 3 : 4);
        at = EndOfUnit(data, at);
        units.push_back(data.subspan(begin, at - begin));
    }
    if (units.empty()) units.push_back(data);
    return units;
}

}  // namespace Readers
