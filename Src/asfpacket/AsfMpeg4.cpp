#include "asfpacket/AsfMpeg4.h"

#include <cstddef>

#include "tool/StartCode.h"

namespace Orbel::Wrapton
{
namespace
{

// Last bytes of start codes, ISO/IEC 14496-2 table 6-3.
constexpr unsigned char kVideoObject = 0x00;
constexpr unsigned char kVop = 0xB6;

/// Where the first start code "00 00 01 @p type" at or behind @p from begins; the frame's size when
/// there is none.
size_t FindCode(std::span<const unsigned char> frame, size_t from, unsigned char type)
{
    constexpr size_t kPrefixLen = 3;
    StartCode code = FindStartCode(frame, from);
    while (code.unit < frame.size())
    {
        if (frame[code.unit] == type) return code.unit - kPrefixLen;
        code = FindStartCode(frame, code.unit);
    }
    return frame.size();
}

}  // namespace

Mpeg4Parts SplitMpeg4(std::span<const unsigned char> frame) noexcept
{
    const size_t object = FindCode(frame, 0, kVideoObject);
    const size_t begin = object < frame.size() ? object : 0;
    const size_t picture = FindCode(frame, begin, kVop);
    if (picture == frame.size()) return {{}, frame.subspan(begin)};
    return {frame.subspan(begin, picture - begin), frame.subspan(picture)};
}

}  // namespace Orbel::Wrapton
