#include "readers/FrameReference.h"

#include <algorithm>

namespace Readers
{
namespace
{

using ByteSpan = std::span<const unsigned char>;

}  // namespace

std::optional<std::size_t> FindCode(ByteSpan frame,
                                    std::initializer_list<unsigned> codes,
                                    std::size_t from)
{
    for (std::size_t at = from; at + 4 <= frame.size(); ++at)
    {
        if (frame[at] != 0 || frame[at + 1] != 0 || frame[at + 2] != 1) continue;
        if (std::find(codes.begin(), codes.end(), frame[at + 3]) != codes.end()) return at;
    }
    return std::nullopt;
}

ByteSpan ReferenceAacData(ByteSpan frame)
{
    const bool header = frame.size() >= 7 && frame[0] == 0xFF && frame[1] == 0xF1;
    const std::size_t length =
        header ? (frame[3] & 3u) << 11 | frame[4] * 8u | static_cast<unsigned>(frame[5] >> 5) : 0;
    const bool fits = header && length >= 7 && length <= frame.size();
    return fits ? frame.subspan(7, length - 7) : frame;
}

ByteSpan ReferenceMpeg4Config(ByteSpan frame)
{
    const auto begin = FindCode(frame, {0x00, 0x01, 0x20, 0xB0, 0xB2, 0xB3, 0xB5}, 0);
    const auto end = begin ? FindCode(frame, {0xB6}, *begin) : std::nullopt;
    return end ? frame.subspan(*begin, *end - *begin) : ByteSpan();
}

}  // namespace Readers
