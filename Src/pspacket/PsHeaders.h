#ifndef WRAPTON_PSPACKET_PSHEADERS_H
#define WRAPTON_PSPACKET_PSHEADERS_H

#include <cstddef>
#include <cstdint>
#include <span>

#include "tool/ByteCursor.h"

namespace Orbel::Wrapton
{

constexpr uint32_t kPackHeaderLen = 14;
constexpr uint32_t kSystemHeaderLen = 18;
/// PES headers with a PTS, and with a PTS and a DTS.
constexpr uint32_t kPtsHeaderLen = 14;
constexpr uint32_t kPtsDtsHeaderLen = 19;

/// Longer video is cut into PES payloads of this length.
constexpr uint32_t kPesChunkLen = 61440;
/// No PES packet is longer, header included; what is beyond is cut off.
constexpr uint32_t kPesCapacity = 0x100000;

/// stream_id, ISO/IEC 13818-1 table 2-22.
constexpr uint32_t kVideoStreamId = 0xE0;
constexpr uint32_t kAudioStreamId = 0xC0;

/// stream_type, ISO/IEC 13818-1 table 2-34.
constexpr uint32_t kStreamTypeMpeg4 = 0x10;
constexpr uint32_t kStreamTypeH264 = 0x1B;

/// program_mux_rate of the flavours that split frames at start codes, in 50 bytes/s.
constexpr uint32_t kMuxRate = 6150;

/// What a map of 36 bytes says of its program.
struct PsMap
{
    uint32_t length = 30;  // program_stream_map_length
    uint32_t video_stream_type = kStreamTypeH264;
    uint32_t frame_rate = 0;
    uint32_t width = 0;
    uint32_t height = 0;
};

/// Pack header without stuffing, 14 bytes. @p scr has 33 bits.
void PutPackHeader(CMsbCursor& w, uint64_t scr, uint32_t mux_rate);

/// System header, 18 bytes.
void PutSystemHeader(CMsbCursor& w);

/// Program stream map, 36 bytes.
void PutStreamMap(CMsbCursor& w, const PsMap& map);

/// PES header with a PTS, 14 bytes. Kept: of a payload that is too long for the length field, the
/// field has the low 16 bits.
void PutPtsHeader(CMsbCursor& w, uint32_t stream_id, uint32_t payload_len, uint64_t pts);

/// PES header of the same length without a PTS: five bytes that look like one fill its place.
void PutStuffedHeader(CMsbCursor& w, uint32_t stream_id, uint32_t payload_len);

/// PES header of video with PTS and DTS, 19 bytes.
void PutPtsDtsHeader(CMsbCursor& w, uint32_t payload_len, uint64_t pts, uint64_t dts);

/// PES packet of audio: header and as much of @p payload as the capacity leaves room for.
void PutAudioPes(CMsbCursor& w, std::span<const unsigned char> payload, uint64_t pts);

/// The 90 kHz ticks of one frame; 0 when the rate is not known.
uint32_t FrameTicks(uint32_t frame_rate);

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_PSPACKET_PSHEADERS_H
