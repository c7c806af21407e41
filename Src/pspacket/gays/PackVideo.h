#ifndef WRAPTON_PSPACKET_GAYS_PACKVIDEO_H
#define WRAPTON_PSPACKET_GAYS_PACKVIDEO_H

#include <cstdint>
#include <span>

#include "tool/ByteCursor.h"

namespace Orbel::Wrapton
{

/// Kind of frame, ps_pack_param::frame_type.
constexpr uint8_t kGaysIFrame = 0;
constexpr uint8_t kGaysPFrame = 1;

/// One chunk of a frame in the GAYS flavour.
struct ps_pack_param
{
    int64_t scr = 0;  // 33 bits
    int32_t width = 0;
    int32_t height = 0;
    int32_t frame_rate = 0;
    uint16_t payload_len = 0;
    bool first_packet_of_frame = false;
    uint8_t encode_type = 0;
    uint8_t frame_type = kGaysIFrame;
};

/// Writes a chunk and what stands ahead of it: for the first one of a frame a pack header, for the
/// first one of an I frame also the system header and then the map.
void ps_pack_video(CMsbCursor& w, const ps_pack_param& param, const unsigned char* payload);

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_PSPACKET_GAYS_PACKVIDEO_H
