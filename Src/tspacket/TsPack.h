#ifndef WRAPTON_TSPACKET_TSPACK_H
#define WRAPTON_TSPACKET_TSPACK_H

#include <cstddef>
#include <cstdint>
#include <span>

#include "tool/ByteCursor.h"

namespace Orbel::Wrapton
{

/// What a conversion works on; spelled so in the interface.
enum TS_TYPE
{
    PLK_BK_VIDEO = 1,
    PLY_BK_MPEG4 = 2,   // MPEG-4 video
    PLY_BK_H264 = 3,    // any other video
    PLK_BK_AUDIO = 10,  // a PES packet of audio
    PLY_BK_MPEG2 = 11,  // transport packets of audio
    PLY_BK_AAC = 12
};

/// Header and adaptation field of a transport packet, ISO/IEC 13818-1 tables 2-2 and 2-6.
struct TS_pack
{
    uint32_t sync_byte = 0;
    uint32_t transport_error_indicator = 0;
    uint32_t payload_unit_start_indicator = 0;
    uint32_t transport_priority = 0;
    uint32_t PID = 0;
    uint32_t transport_scrambling_control = 0;
    uint32_t adaptation_field_control = 0;
    uint32_t continuity_counter = 0;
    uint32_t adaptation_field_length = 0;
    uint32_t discontinuity_indicator = 0;
    uint32_t random_access_indicator = 0;
    uint32_t elementary_stream_priority_indicator = 0;
    uint32_t PCR_flag = 0;
    uint32_t OPCR_flag = 0;
    uint32_t splicing_point_flag = 0;
    uint32_t transport_private_data_flag = 0;
    uint32_t adaptation_field_extension_flag = 0;
};

/// A PES packet: what is told ahead of the frame, and the frame.
struct TsPes
{
    TS_TYPE type = PLY_BK_H264;
    uint32_t packet_len = 0;  // PES_packet_length; 0 leaves it open
    uint32_t time = 0;        // 90 kHz
    size_t lead_len = 0;      // bytes ahead of the frame
    std::span<const unsigned char> frame;

    [[nodiscard]] size_t Size() const { return lead_len + frame.size(); }
};

/// The header that every packet is made from: a unit starts, payload only, PID 0, counter 0.
void TsPaskInit(TS_pack& pack);

/// CRC-32 of ISO/IEC 13818-1 annex A.
uint32_t CRC_encode(std::span<const unsigned char> section);

/// A packet with the program association table.
void Pat2Ts(CMsbCursor& w);

/// A packet with the program map table. Any type but PLY_BK_MPEG4 makes it a program with H.264.
void Pmt2Ts(CMsbCursor& w, TS_TYPE type);

/// The PES packet of a frame, stamped with @p clock (90 kHz). @p type is one of video, or
/// PLK_BK_AUDIO.
TsPes FrameData2Pes(std::span<const unsigned char> frame, int64_t clock, TS_TYPE type);

/// What stands ahead of the frame: the PES header and, of H.264, an access unit delimiter.
void PutPesLead(CMsbCursor& w, const TsPes& pes);

/**
 * Cuts a PES packet into transport packets, at every tenth behind PAT and PMT.
 *
 * @param type PLY_BK_MPEG2 for audio
 * @param frame_counter frames of the stream modulo 10
 * @param continuity_counter of the stream's next packet
 */
void Pes2Ts(CMsbCursor& w,
            const TsPes& pes,
            int64_t clock,
            int32_t& frame_counter,
            int32_t& continuity_counter,
            TS_TYPE type);

/// The bytes that a frame of @p size becomes; @p type as for FrameData2Pes().
size_t TsLength(size_t size, int32_t frame_counter, TS_TYPE type);

/**
 * Converts a picture. The clock advances by the frame rate, or by the last one that was known.
 *
 * @param length in: the bytes at @p out; out: the bytes written, 0 when the frame does not fit
 * @return 0; -1 when nothing was written. The clock has moved then, unless there was no frame
 */
int Video2Ts(unsigned char* out,
             int32_t& length,
             const unsigned char* data,
             uint32_t size,
             int64_t& clock,
             uint32_t frame_rate,
             uint32_t& last_rate,
             int32_t& frame_counter,
             int32_t& continuity_counter,
             TS_TYPE type);

/// Converts a frame of audio, which has the time of the last picture. @p length and result as for
/// Video2Ts().
int Audio2Ts(unsigned char* out,
             int32_t& length,
             const unsigned char* data,
             uint32_t size,
             int64_t clock,
             int32_t& frame_counter,
             int32_t& continuity_counter);

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_TSPACKET_TSPACK_H
