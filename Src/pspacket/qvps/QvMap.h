#ifndef WRAPTON_PSPACKET_QVPS_QVMAP_H
#define WRAPTON_PSPACKET_QVPS_QVMAP_H

#include <cstdint>

#include "tool/ByteCursor.h"

namespace Orbel::Wrapton
{

constexpr uint32_t kQvMapLen = 64;

/// What the program stream map of the QV flavour says.
struct QvMap
{
    uint32_t video_encode = 0;  // SG_ENCODE_VIDEO_TYPE
    uint32_t frame_encode = 0;  // of the frame that carries the map
    uint32_t width = 0;
    uint32_t height = 0;
    uint32_t frame_rate = 0;
    uint32_t date = 0;        // packed date word
    uint32_t audio_date = 0;  // the same, or 0 when the frame carries no date
    uint32_t audio_encode = 0;
    uint32_t sample_rate = 0;
    uint32_t bit_per_sample = 0;
    uint32_t channels = 0;
};

void PutQvMap(CMsbCursor& w, const QvMap& map);

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_PSPACKET_QVPS_QVMAP_H
