#ifndef WRAPTON_MP4PACKET_ADTS_H
#define WRAPTON_MP4PACKET_ADTS_H

#include <span>

namespace Orbel::Wrapton
{

/**
 * The AAC data behind an ADTS header, ISO/IEC 14496-3 1.A.2.2.
 *
 * Only the header of MPEG-4 audio without checksum (FF F1) is taken off. Its length field decides
 * where the data ends; a field that does not fit the frame leaves the frame as it is, as does any
 * other beginning.
 */
std::span<const unsigned char> StripAdts(std::span<const unsigned char> frame) noexcept;

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MP4PACKET_ADTS_H
