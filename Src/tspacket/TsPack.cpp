#include "tspacket/TsPack.h"

#include <algorithm>
#include <cassert>

#include "tool/PesTime.h"
#include "tspacket/TsCut.h"

namespace Orbel::Wrapton
{
namespace
{

constexpr size_t kPacketLen = kTsPacketLen;
constexpr size_t kHeaderLen = 4;
constexpr size_t kPcrLen = 6;
/// Adaptation field length and payload together.
constexpr size_t kBodyLen = kPacketLen - kHeaderLen - 1;
constexpr size_t kFirstPayloadLen = kBodyLen - 1 - kPcrLen;
constexpr size_t kPayloadLen = kBodyLen - 1;
static_assert(kFirstPayloadLen == 176 && kPayloadLen == 182);
static_assert(kPayloadLen == kTsFullPayloadLen);

constexpr uint32_t kPmtPid = 0x0010;
constexpr uint32_t kVideoPid = 0x0012;  // also of the PCR
constexpr uint32_t kAudioPid = 0x0013;
constexpr uint32_t kProgram = 1;
constexpr uint32_t kTransportStream = 1;

constexpr uint32_t kPayloadOnly = 1;
constexpr uint32_t kAdaptationAndPayload = 3;

constexpr int32_t kFramesPerTables = 10;
constexpr int32_t kContinuityCycle = 16;
constexpr size_t kTableBytes = 2 * kPacketLen;

constexpr size_t kPtsHeaderLen = 14;
constexpr size_t kPtsDtsHeaderLen = 19;
constexpr size_t kDelimiterLen = 6;
static_assert(kPtsDtsHeaderLen + kDelimiterLen <= kFirstPayloadLen);

/// What each value of the highest byte does to a CRC when it is shifted out.
constexpr std::array<uint32_t, 256> kCrcTable = []
{
    constexpr uint32_t kPolynomial = 0x04C11DB7;
    constexpr uint32_t kHighBit = 0x80000000;

    std::array<uint32_t, 256> table{};
    for (uint32_t i = 0; i < table.size(); ++i)
    {
        uint32_t crc = i << 24;
        for (int bit = 0; bit < 8; ++bit)
        {
            crc = (crc & kHighBit) != 0 ? crc << 1 ^ kPolynomial : crc << 1;
        }
        table[i] = crc;
    }
    return table;
}();
static_assert(kCrcTable[1] == 0x04C11DB7);

size_t LeadLen(TS_TYPE type)
{
    if (type == PLK_BK_AUDIO) return kPtsHeaderLen;
    return kPtsDtsHeaderLen + (type == PLY_BK_H264 ? kDelimiterLen : 0);
}

/// PES_header_data_length: a PTS, of pictures also a DTS.
uint32_t HeaderDataLen(TS_TYPE type)
{
    return type == PLK_BK_AUDIO ? 5 : 10;
}

/// PES_packet_length of a frame; 0 leaves it open. Kept: the delimiter counts in the length, but
/// not where the limit is concerned.
uint32_t PesPacketLength(size_t frame_size, size_t header_data_len, TS_TYPE type)
{
    constexpr size_t kOpenFrom = 65501;

    const size_t length = frame_size + header_data_len + 3;
    if (length >= kOpenFrom) return 0;
    return static_cast<uint32_t>(length + (type == PLY_BK_H264 ? kDelimiterLen : 0));
}

/// Header of a transport packet, table 2-2.
constexpr uint32_t TsHeader(const TS_pack& pack)
{
    return static_cast<uint32_t>(WordOf(Field<8>(pack.sync_byte),
                                        Field<1>(pack.transport_error_indicator),
                                        Field<1>(pack.payload_unit_start_indicator),
                                        Field<1>(pack.transport_priority),
                                        Field<13>(pack.PID),
                                        Field<2>(pack.transport_scrambling_control),
                                        Field<2>(pack.adaptation_field_control),
                                        Field<4>(pack.continuity_counter)));
}

/// Adaptation field, table 2-6, with stuffing to its length.
void PutAdaptationField(CMsbCursor& w, const TS_pack& pack, int64_t clock)
{
    w.Bits<16>(Field<8>(pack.adaptation_field_length),
               Field<1>(pack.discontinuity_indicator),
               Field<1>(pack.random_access_indicator),
               Field<1>(pack.elementary_stream_priority_indicator),
               Field<1>(pack.PCR_flag),
               Field<1>(pack.OPCR_flag),
               Field<1>(pack.splicing_point_flag),
               Field<1>(pack.transport_private_data_flag),
               Field<1>(pack.adaptation_field_extension_flag));
    size_t stuffing = pack.adaptation_field_length - 1;
    if (pack.PCR_flag != 0)
    {
        const auto base = static_cast<uint64_t>(clock);
        w.Bits<48>(Field<1>(static_cast<uint32_t>(base >> 32)),
                   Field<32>(static_cast<uint32_t>(base)),
                   Field<6>(0x3F),  // reserved
                   Field<9>(0));    // extension
        stuffing -= kPcrLen;
    }
    w.Fill(stuffing, 0xFF);
}

using Packet = std::array<unsigned char, kPacketLen>;

/// A packet with a section that begins in it, filled up behind it.
template <size_t Size>
Packet SectionPacket(uint32_t pid, const std::array<unsigned char, Size>& section)
{
    TS_pack pack;
    TsPaskInit(pack);
    pack.PID = pid;

    Packet packet;
    CMsbCursor w(packet);
    w.U32(TsHeader(pack));
    w.U8(0);  // pointer_field
    w.Bytes(section);
    w.U32(CRC_encode(section));
    w.Fill(packet.size() - w.Produced(), 0xFF);
    return packet;
}

/// The eight bytes that sections of both kinds begin with.
void PutSectionStart(CMsbCursor& w, uint32_t table_id, uint32_t length, uint32_t id)
{
    w.U8(table_id);
    w.Bits<16>(Field<1>(1),  // section_syntax_indicator
               Field<1>(0),
               Field<2>(3),  // reserved
               Field<12>(length));
    w.U16(id);
    w.Bits<8>(Field<2>(3),   // reserved
              Field<5>(0),   // version_number
              Field<1>(1));  // current_next_indicator
    w.U8(0);                 // section_number
    w.U8(0);                 // last_section_number
}

void PutPid(CMsbCursor& w, uint32_t pid)
{
    w.Bits<16>(Field<3>(7), Field<13>(pid));
}

/// Length of descriptors: there are none.
void PutNoDescriptors(CMsbCursor& w)
{
    w.Bits<16>(Field<4>(15), Field<12>(0));
}

/// ISO/IEC 13818-1 table 2-30.
Packet PatPacket()
{
    std::array<unsigned char, 12> section{};
    CMsbCursor s(section);
    PutSectionStart(s, 0x00, 13, kTransportStream);
    s.U16(kProgram);
    PutPid(s, kPmtPid);
    assert(s.Produced() == section.size());
    return SectionPacket(0, section);
}

/// ISO/IEC 13818-1 table 2-33.
Packet PmtPacket(uint32_t video_stream_type)
{
    std::array<unsigned char, 22> section{};
    CMsbCursor s(section);
    PutSectionStart(s, 0x02, 23, kProgram);
    PutPid(s, kVideoPid);  // PCR_PID
    PutNoDescriptors(s);
    s.U8(video_stream_type);
    PutPid(s, kVideoPid);
    PutNoDescriptors(s);
    s.U8(0x03);  // MPEG-1 audio, whatever it is
    PutPid(s, kAudioPid);
    PutNoDescriptors(s);
    assert(s.Produced() == section.size());
    return SectionPacket(kPmtPid, section);
}

/// Bytes of a PES packet from @p at on. What stands ahead of the frame is never cut in two.
void PutPesBytes(CMsbCursor& w, const TsPes& pes, size_t at, size_t length)
{
    if (at == 0)
    {
        PutPesLead(w, pes);
        w.Bytes(pes.frame.first(length - pes.lead_len));
        return;
    }
    w.Bytes(pes.frame.subspan(at - pes.lead_len, length));
}

/// The header of the packets behind the first one, with the counter 0.
uint32_t FollowingHeader(uint32_t pid)
{
    TS_pack pack;
    TsPaskInit(pack);
    pack.PID = pid;
    pack.payload_unit_start_indicator = 0;
    pack.adaptation_field_control = kAdaptationAndPayload;
    return TsHeader(pack);
}

/// The clock's step at a frame rate. Kept: whole milliseconds, so 0 above 1000.
uint32_t Step(uint32_t frame_rate)
{
    return 1000 / frame_rate * 90;
}

std::span<unsigned char> Room(unsigned char* out, int32_t length)
{
    if (out == nullptr || length < 0) return {};
    return {out, static_cast<size_t>(length)};
}

/// Both conversions, once the clock stands. @p pes_type is that of the PES, @p type that of the
/// transport packets. Flat, so that the cursor lives in registers.
[[gnu::flatten]] int Frame2Ts(std::span<unsigned char> out,
                              int32_t& length,
                              std::span<const unsigned char> frame,
                              int64_t clock,
                              int32_t& frame_counter,
                              int32_t& continuity_counter,
                              TS_TYPE pes_type,
                              TS_TYPE type)
{
    const size_t needed = TsLength(frame.size(), frame_counter, pes_type);
    if (needed > out.size()) return -1;

    CMsbCursor w(out);
    Pes2Ts(
        w, FrameData2Pes(frame, clock, pes_type), clock, frame_counter, continuity_counter, type);
    assert(w.Produced() == needed);
    length = static_cast<int32_t>(needed);
    return 0;
}

}  // namespace

void TsPaskInit(TS_pack& pack)
{
    pack = {};
    pack.sync_byte = 0x47;
    pack.payload_unit_start_indicator = 1;
    pack.adaptation_field_control = kPayloadOnly;
}

uint32_t CRC_encode(std::span<const unsigned char> section)
{
    uint32_t crc = 0xFFFFFFFF;
    for (const unsigned char byte : section)
    {
        crc = crc << 8 ^ kCrcTable[crc >> 24 ^ byte];
    }
    return crc;
}

// Sections never change, and are made once.

void Pat2Ts(CMsbCursor& w)
{
    static const Packet kPat = PatPacket();
    w.Bytes(kPat);
}

void Pmt2Ts(CMsbCursor& w, TS_TYPE type)
{
    static const Packet kMpeg4 = PmtPacket(0x10);
    static const Packet kH264 = PmtPacket(0x1B);
    w.Bytes(type == PLY_BK_MPEG4 ? kMpeg4 : kH264);
}

TsPes FrameData2Pes(std::span<const unsigned char> frame, int64_t clock, TS_TYPE type)
{
    return {.type = type,
            .packet_len = PesPacketLength(frame.size(), HeaderDataLen(type), type),
            .time = static_cast<uint32_t>(clock),  // 32 bits of it
            .lead_len = LeadLen(type),
            .frame = frame};
}

/// ISO/IEC 13818-1 table 2-21.
void PutPesLead(CMsbCursor& w, const TsPes& pes)
{
    constexpr uint32_t kVideoStreamId = 0xE0;  // kept: of audio, too

    const bool audio = pes.type == PLK_BK_AUDIO;
    PutPesStart(w, kVideoStreamId, pes.packet_len, audio ? 2 : 3, HeaderDataLen(pes.type));
    if (audio)
    {
        PutPesTime(w, PesTime::kPtsAlone, pes.time);
        return;
    }
    PutPesTime(w, PesTime::kPtsBeforeDts, pes.time);
    PutPesTime(w, PesTime::kDts, pes.time);
    if (pes.type == PLY_BK_H264)
    {
        // Access unit delimiter with any slice type, ISO/IEC 14496-10 7.3.2.4.
        w.U32(0x00000001);
        w.U16(0x09F0);
    }
}

void Pes2Ts(CMsbCursor& w,
            const TsPes& pes,
            int64_t clock,
            int32_t& frame_counter,
            int32_t& continuity_counter,
            TS_TYPE type)
{
    if (frame_counter == 0)
    {
        // Kept: both have the counter 0 each time.
        Pat2Ts(w);
        Pmt2Ts(w, type);
    }
    frame_counter = (frame_counter + 1) % kFramesPerTables;

    TS_pack pack;
    TsPaskInit(pack);
    pack.PID = type == PLY_BK_MPEG2 ? kAudioPid : kVideoPid;
    pack.adaptation_field_control = kAdaptationAndPayload;
    for (size_t at = 0; at < pes.Size();)
    {
        const bool first = at == 0;
        const size_t full = first ? 0 : (pes.Size() - at) / kPayloadLen;
        if (full != 0)
        {
            const size_t bytes = full * kPayloadLen;
            CutFullPackets(w.Claimed(full * kPacketLen),
                           pes.frame.subspan(at - pes.lead_len, bytes),
                           FollowingHeader(pack.PID),
                           static_cast<uint32_t>(continuity_counter));
            continuity_counter = static_cast<int32_t>(
                (static_cast<size_t>(continuity_counter) + full) % kContinuityCycle);
            at += bytes;
            continue;
        }
        const size_t length = std::min(pes.Size() - at, first ? kFirstPayloadLen : kPayloadLen);
        pack.payload_unit_start_indicator = first ? 1 : 0;
        pack.PCR_flag = first ? 1 : 0;
        pack.adaptation_field_length = static_cast<uint32_t>(kBodyLen - length);
        pack.continuity_counter = static_cast<uint32_t>(continuity_counter);
        w.U32(TsHeader(pack));
        PutAdaptationField(w, pack, clock);
        PutPesBytes(w, pes, at, length);
        continuity_counter = (continuity_counter + 1) % kContinuityCycle;
        at += length;
    }
}

size_t TsLength(size_t size, int32_t frame_counter, TS_TYPE type)
{
    const size_t pes_len = LeadLen(type) + size;
    const size_t rest = pes_len - std::min(pes_len, kFirstPayloadLen);
    const size_t packets = 1 + (rest + kPayloadLen - 1) / kPayloadLen;
    return packets * kPacketLen + (frame_counter == 0 ? kTableBytes : 0);
}

int Video2Ts(unsigned char* out,
             int32_t& length,
             const unsigned char* data,
             uint32_t size,
             int64_t& clock,
             uint32_t frame_rate,
             uint32_t& last_rate,
             int32_t& frame_counter,
             int32_t& continuity_counter,
             TS_TYPE type)
{
    constexpr uint32_t kDefaultStep = 3600;

    const std::span room = Room(out, length);
    length = 0;
    if (data == nullptr || size == 0) return -1;

    if (frame_rate != 0) last_rate = frame_rate;
    clock += last_rate != 0 ? Step(last_rate) : kDefaultStep;
    return Frame2Ts(
        room, length, {data, size}, clock, frame_counter, continuity_counter, type, type);
}

int Audio2Ts(unsigned char* out,
             int32_t& length,
             const unsigned char* data,
             uint32_t size,
             int64_t clock,
             int32_t& frame_counter,
             int32_t& continuity_counter)
{
    const std::span room = Room(out, length);
    length = 0;
    if (data == nullptr || size == 0) return -1;

    return Frame2Ts(room,
                    length,
                    {data, size},
                    clock,
                    frame_counter,
                    continuity_counter,
                    PLK_BK_AUDIO,
                    PLY_BK_MPEG2);
}

}  // namespace Orbel::Wrapton
