#ifndef WRAPTON_MP4PACKET_MPEG4CONFIG_H
#define WRAPTON_MP4PACKET_MPEG4CONFIG_H

#include <span>

namespace Orbel::Wrapton
{

/// The configuration in front of a coded picture of MPEG-4 video, ISO/IEC 14496-2 6.2.1: from the
/// first header start code up to the first picture behind it. Empty when either is missing.
std::span<const unsigned char> FindMpeg4Config(std::span<const unsigned char> frame) noexcept;

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MP4PACKET_MPEG4CONFIG_H
