#ifndef WRAPTON_MP4PACKET_BOX_MOVIETIME_H
#define WRAPTON_MP4PACKET_BOX_MOVIETIME_H

#include <cstdint>

namespace Orbel::Wrapton
{

/// Units per second of movie and track headers, and of the media of a video track.
inline constexpr uint32_t kMovieTimeScale = 90000;

/**
 * A duration in movie units.
 *
 * Kept: computed in single precision, so long recordings lose exactness. A duration past 32 bits
 * (13 h 15 min) becomes 0xFFFFFFFF.
 *
 * @param total in media units
 * @param timescale media units per second, not 0
 */
uint32_t ToMovieUnits(uint32_t total, uint32_t timescale) noexcept;

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MP4PACKET_BOX_MOVIETIME_H
