#ifndef WRAPTON_ASFPACKET_ASFMPEG4_H
#define WRAPTON_ASFPACKET_ASFMPEG4_H

#include <span>

namespace Orbel::Wrapton
{

/// A key frame of MPEG-4 video in two parts.
struct Mpeg4Parts
{
    std::span<const unsigned char> config;   // for the header; may be empty
    std::span<const unsigned char> picture;  // for the packets
};

/// Splits a key frame where its picture begins, ISO/IEC 14496-2 6.2.1. What stands ahead of the
/// first video object is in neither part; without a video object the configuration begins with the
/// frame, and without a picture there is none.
Mpeg4Parts SplitMpeg4(std::span<const unsigned char> frame) noexcept;

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_ASFPACKET_ASFMPEG4_H
