#include "mp4packet/Mpeg4Config.h"

#include <cstddef>

namespace Orbel::Wrapton
{
namespace
{

constexpr unsigned char kVopStart = 0xB6;

/// Start codes of the headers ahead of a picture, ISO/IEC 14496-2 table 6-3.
constexpr bool IsHeaderStart(unsigned char code)
{
    return code < 0x02 ||   // video object
           code == 0x20 ||  // video object layer
           code == 0xB0 ||  // visual object sequence
           code == 0xB2 ||  // user data
           code == 0xB3 ||  // group of pictures
           code == 0xB5;    // visual object
}

/// Where the first start code at or behind @p from begins whose last byte passes @p wanted; the
/// frame's size when there is none.
template <class Wanted>
size_t FindStart(std::span<const unsigned char> frame, size_t from, Wanted wanted)
{
    for (size_t at = from; at + 4 <= frame.size(); ++at)
    {
        if (frame[at] == 0 && frame[at + 1] == 0 && frame[at + 2] == 1 && wanted(frame[at + 3]))
        {
            return at;
        }
    }
    return frame.size();
}

}  // namespace

std::span<const unsigned char> FindMpeg4Config(std::span<const unsigned char> frame) noexcept
{
    const size_t begin = FindStart(frame, 0, IsHeaderStart);
    const size_t end =
        FindStart(frame, begin, [](unsigned char code) { return code == kVopStart; });
    if (end == frame.size()) return {};
    return frame.subspan(begin, end - begin);
}

}  // namespace Orbel::Wrapton
