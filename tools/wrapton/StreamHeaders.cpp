#include "StreamHeaders.h"

#include <algorithm>
#include <array>

namespace Orbel::Wrapton::Command
{
namespace
{

using Bytes = std::span<const unsigned char>;

constexpr std::array<unsigned char, 3> kStartCode = {0, 0, 1};

/// The place of the next start code of three bytes, or the end.
std::size_t NextCode(Bytes bytes, std::size_t from)
{
    const auto found = std::search(bytes.begin() + static_cast<std::ptrdiff_t>(from),
                                   bytes.end(),
                                   kStartCode.begin(),
                                   kStartCode.end());
    return static_cast<std::size_t>(found - bytes.begin());
}

/// ISO/IEC 14496-10 table 7-1.
bool IsParameterSet(unsigned char first)
{
    constexpr unsigned char kSequence = 7;
    constexpr unsigned char kPicture = 8;
    return (first & 31) == kSequence || (first & 31) == kPicture;
}

std::vector<unsigned char> ParameterSets(Bytes picture)
{
    std::vector<unsigned char> sets;
    std::size_t code = NextCode(picture, 0);
    while (code + kStartCode.size() < picture.size())
    {
        const std::size_t begin = code + kStartCode.size();
        code = NextCode(picture, begin);
        if (!IsParameterSet(picture[begin])) continue;
        // A zero ahead of the next start code is the first byte of its longer form.
        const bool is_long = code < picture.size() && picture[code - 1] == 0;
        const Bytes unit = picture.subspan(begin, code - begin - (is_long ? 1 : 0));
        sets.insert(sets.end(), {0, 0, 0, 1});
        sets.insert(sets.end(), unit.begin(), unit.end());
    }
    return sets;
}

/// ISO/IEC 14496-2 6.2.1: a video object layer is what must not miss; B3 and B6 begin the picture.
std::vector<unsigned char> ObjectLayer(Bytes picture)
{
    constexpr unsigned char kFirstLayer = 0x20;
    constexpr unsigned char kLastLayer = 0x2F;
    constexpr unsigned char kGroup = 0xB3;
    constexpr unsigned char kPicture = 0xB6;

    bool has_layer = false;
    for (std::size_t code = NextCode(picture, 0); code + kStartCode.size() < picture.size();
         code = NextCode(picture, code + kStartCode.size()))
    {
        const unsigned char kind = picture[code + kStartCode.size()];
        if (kind == kGroup || kind == kPicture)
        {
            const Bytes headers = picture.first(has_layer ? code : 0);
            return {headers.begin(), headers.end()};
        }
        has_layer = has_layer || (kind >= kFirstLayer && kind <= kLastLayer);
    }
    return {};
}

}  // namespace

std::vector<unsigned char> StreamHeaders::HeadersIn(Bytes picture) const
{
    if (m_codec == Codec::kH264) return ParameterSets(picture);
    if (m_codec == Codec::kMpeg4) return ObjectLayer(picture);
    return {};
}

void StreamHeaders::Note(Bytes picture)
{
    std::vector<unsigned char> headers = HeadersIn(picture);
    if (!headers.empty()) m_headers = std::move(headers);
}

void StreamHeaders::Complete(std::vector<unsigned char>& picture) const
{
    if (m_headers.empty() || !HeadersIn(picture).empty()) return;
    picture.insert(picture.begin(), m_headers.begin(), m_headers.end());
}

}  // namespace Orbel::Wrapton::Command
