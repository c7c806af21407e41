#include "pspacket/PsHeaders.h"

#include <algorithm>

#include "tool/PesTime.h"

namespace Orbel::Wrapton
{
namespace
{

constexpr uint32_t kStartCodePrefix = 0x000001;
constexpr uint32_t kSystemClock = 90000;  // Hz

constexpr uint32_t kRateBound = 26234;  // 50 bytes/s
constexpr uint32_t kVideoBufferSize = 232;
constexpr uint32_t kAudioBufferSize = 32;

constexpr uint32_t kAvcTimingAndHrd = 0x2A;      // descriptor_tag
constexpr uint32_t kAudioStreamTypeG711 = 0x90;  // user private

/// num_units_in_tick of a field at the frame rate.
uint32_t FieldTicks(uint32_t frame_rate)
{
    // The product of the largest rates does not fit 32 bits.
    return frame_rate == 0 ? 0 : static_cast<uint32_t>(kSystemClock / (uint64_t{2} * frame_rate));
}

/// PES_packet_length.
uint32_t PesPacketLen(uint32_t header_data_len, uint32_t payload_len)
{
    constexpr uint32_t kFlagBytes = 3;
    return kFlagBytes + header_data_len + payload_len;
}

}  // namespace

/// ISO/IEC 13818-1 table 2-39.
void PutPackHeader(CMsbCursor& out, uint64_t scr, uint32_t mux_rate)
{
    const auto layout = [=](CMsbCursor& w)
    {
        w.Bits<32>(Field<24>(kStartCodePrefix), Field<8>(0xBA));
        w.Bits<48>(Field<2>(1),  // MPEG-2
                   Field<3>(static_cast<uint32_t>(scr >> 30)),
                   Field<1>(1),  // marker
                   Field<15>(static_cast<uint32_t>(scr >> 15)),
                   Field<1>(1),
                   Field<15>(static_cast<uint32_t>(scr)),
                   Field<1>(1),
                   Field<9>(0),  // extension
                   Field<1>(1));
        w.Bits<32>(Field<22>(mux_rate),
                   Field<2>(3),   // both markers
                   Field<5>(31),  // reserved
                   Field<3>(0));  // no stuffing
    };
    PutWhole<kPackHeaderLen>(out, layout);
}

/// ISO/IEC 13818-1 table 2-40.
void PutSystemHeader(CMsbCursor& w)
{
    w.U24(kStartCodePrefix);
    w.U8(0xBB);
    w.U16(kSystemHeaderLen - 6);
    w.Bits<24>(Field<1>(1), Field<22>(kRateBound), Field<1>(1));
    w.Bits<8>(Field<6>(1),   // audio_bound
              Field<1>(0),   // fixed_flag
              Field<1>(0));  // CSPS_flag
    w.Bits<8>(Field<1>(1),   // system_audio_lock_flag
              Field<1>(1),   // system_video_lock_flag
              Field<1>(1),   // marker
              Field<5>(1));  // video_bound
    w.U8(0x7F);              // packet_rate_restriction_flag 0, reserved ones
    w.U8(kVideoStreamId);
    w.Bits<16>(Field<2>(3), Field<1>(1), Field<13>(kVideoBufferSize));  // in units of 1024 bytes
    w.U8(kAudioStreamId);
    w.Bits<16>(Field<2>(3), Field<1>(0), Field<13>(kAudioBufferSize));  // in units of 128 bytes
}

/// ISO/IEC 13818-1 table 2-41, with an AVC timing and HRD descriptor (2.6.66) that is followed by
/// three bytes of this format's own. Kept: the map lengths count the CRC, which is left zero.
void PutStreamMap(CMsbCursor& w, const PsMap& map)
{
    w.U24(kStartCodePrefix);
    w.U8(0xBC);
    w.U16(map.length);
    w.U8(0xE1);  // current, version 1
    w.U8(0xFF);
    w.U16(0);   // program_stream_info_length
    w.U16(24);  // elementary_stream_map_length

    w.U8(map.video_stream_type);
    w.U8(kVideoStreamId);
    w.U16(12);
    w.U8(kAvcTimingAndHrd);
    w.U8(10);
    w.U8(0x7F);  // no HRD management, timing present
    w.U8(0xFF);  // ticks of 90 kHz
    w.U32(FieldTicks(map.frame_rate));
    w.U8(0x1F);  // no fixed frame rate
    w.U8(0xFE);
    w.U8(map.width >> 3);
    w.U8(map.height >> 3);

    w.U8(kAudioStreamTypeG711);
    w.U8(kAudioStreamId);
    w.U16(0);
    w.U32(0);  // CRC
}

void PutPtsHeader(CMsbCursor& out, uint32_t stream_id, uint32_t payload_len, uint64_t pts)
{
    const auto layout = [=](CMsbCursor& w)
    {
        PutPesStart(w, stream_id, PesPacketLen(5, payload_len), 2, 5);
        PutPesTime(w, PesTime::kPtsAlone, pts);
    };
    PutWhole<kPtsHeaderLen>(out, layout);
}

void PutStuffedHeader(CMsbCursor& w, uint32_t stream_id, uint32_t payload_len)
{
    PutPesStart(w, stream_id, PesPacketLen(5, payload_len), 0, 5);
    PutPesTime(w, PesTime::kPtsAlone, 0);
}

void PutPtsDtsHeader(CMsbCursor& w, uint32_t payload_len, uint64_t pts, uint64_t dts)
{
    PutPesStart(w, kVideoStreamId, PesPacketLen(10, payload_len), 3, 10);
    PutPesTime(w, PesTime::kPtsBeforeDts, pts);
    PutPesTime(w, PesTime::kDts, dts);
}

void PutAudioPes(CMsbCursor& w, std::span<const unsigned char> payload, uint64_t pts)
{
    const size_t length = std::min<size_t>(payload.size(), kPesCapacity - kPtsHeaderLen);
    PutPtsHeader(w, kAudioStreamId, static_cast<uint32_t>(length), pts);
    w.Bytes(payload.first(length));
}

uint32_t FrameTicks(uint32_t frame_rate)
{
    return frame_rate == 0 ? 0 : kSystemClock / frame_rate;
}

}  // namespace Orbel::Wrapton
