#include "mp4packet/Adts.h"

#include <cstddef>

namespace Orbel::Wrapton
{
namespace
{

constexpr size_t kHeaderLen = 7;

}  // namespace

std::span<const unsigned char> StripAdts(std::span<const unsigned char> frame) noexcept
{
    if (frame.size() < kHeaderLen) return frame;
    if (frame[0] != 0xFF || frame[1] != 0xF1) return frame;

    // aac_frame_length: 13 bits across bytes 3 to 5, the header included
    const size_t length = static_cast<size_t>(frame[3] & 0x03) << 11 |  //
                          static_cast<size_t>(frame[4]) << 3 |          //
                          static_cast<size_t>(frame[5]) >> 5;
    if (length < kHeaderLen || length > frame.size()) return frame;
    return frame.subspan(kHeaderLen, length - kHeaderLen);
}

}  // namespace Orbel::Wrapton
