#include "golden/ps/Pieces.h"

namespace Golden
{

using namespace Support;

namespace
{

/// Table 2-39, with @p muxRate as it stands in three bytes, markers included.
Bytes PackWith(uint64_t scr, uint32_t muxRate)
{
    const uint64_t high = (scr >> 30) & 0x7;
    const uint64_t middle = (scr >> 15) & 0x7FFF;
    const uint64_t low = scr & 0x7FFF;
    const uint64_t word = uint64_t{1} << 46    // '01'
                          | high << 43         // system_clock_reference_base 32..30
                          | uint64_t{1} << 42  // marker
                          | middle << 27       // 29..15
                          | uint64_t{1} << 26  // marker
                          | low << 11          // 14..0
                          | uint64_t{1} << 10  // marker
                          | uint64_t{0} << 1   // system_clock_reference_extension
                          | 1;                 // marker
    return Join({
        Hex("00 00 01 BA"),                        // pack_start_code
        Msb16(static_cast<uint32_t>(word >> 32)),  //
        Msb32(static_cast<uint32_t>(word)),        //
        Msb24(muxRate),                            // program_mux_rate, two markers
        Hex("F8"),                                 // reserved, no stuffing
    });
}

Bytes MapOf(uint32_t length, uint32_t type, uint32_t ticks, uint32_t width8, uint32_t height8)
{
    return Join({
        Hex("00 00 01 BC"),  // map_stream_id
        Msb16(length),       // program_stream_map_length
        Hex("E1"),           // current_next_indicator, version 1
        Hex("FF"),           // reserved, marker
        Hex("00 00"),        // program_stream_info_length
        Hex("00 18"),        // elementary_stream_map_length
        U8(type),            // stream_type
        Hex("E0"),           // elementary_stream_id
        Hex("00 0C"),        // elementary_stream_info_length
        Hex("2A 0A"),        // AVC timing and HRD descriptor, 10 bytes
        Hex("7F FF"),        // timing present, 90 kHz
        Msb32(ticks),        // num_units_in_tick
        Hex("1F"),           // fixed_frame_rate_flag 0
        Hex("FE"),           // private
        U8(width8),          //
        U8(height8),         //
        Hex("90"),           // stream_type of audio
        Hex("C0"),           // elementary_stream_id
        Hex("00 00"),        // elementary_stream_info_length
        Hex("00 00 00 00"),  // CRC_32, left zero
    });
}

Bytes Pes(const char* streamId, const Bytes& header, const Bytes& payload)
{
    return Join({
        Hex("00 00 01"),  // packet_start_code_prefix
        Hex(streamId),
        Msb16(static_cast<uint32_t>(header.size() + payload.size())),  // PES_packet_length
        header,
        payload,
    });
}

}  // namespace

Bytes Pack(uint64_t scr)
{
    return PackWith(scr, 0x00601B);  // 6150
}

Bytes GaysPack(uint64_t scr)
{
    return PackWith(scr, 0x005F6B);  // 6106
}

Bytes System()
{
    return Join({
        Hex("00 00 01 BB"),  // system_header_start_code
        Hex("00 0C"),        // header_length
        Hex("80 CC F5"),     // marker, rate_bound 26234, marker
        Hex("04"),           // audio_bound 1, not fixed, not CSPS
        Hex("E1"),           // audio and video locked, marker, video_bound 1
        Hex("7F"),           // no packet rate restriction
        Hex("E0 E0 E8"),     // video: scale 1024, 232
        Hex("C0 C0 20"),     // audio: scale 128, 32
    });
}

Bytes Map(uint32_t videoType, uint32_t ticks, uint32_t width8, uint32_t height8)
{
    return MapOf(30, videoType, ticks, width8, height8);
}

Bytes GaysMap(uint32_t videoType, uint32_t ticks, uint32_t width8, uint32_t height8)
{
    return MapOf(32, videoType, ticks, width8, height8);
}

Bytes Time(uint32_t prefix, uint64_t time)
{
    const uint64_t high = (time >> 30) & 0x7;
    const uint64_t middle = (time >> 15) & 0x7FFF;
    const uint64_t low = time & 0x7FFF;
    return Join({
        U8(static_cast<uint32_t>(prefix << 4 | high << 1 | 1)),  // prefix, 32..30, marker
        Msb16(static_cast<uint32_t>(middle << 1 | 1)),           // 29..15, marker
        Msb16(static_cast<uint32_t>(low << 1 | 1)),              // 14..0, marker
    });
}

Bytes VideoPes(uint64_t pts, const Bytes& payload)
{
    return Pes("E0", Join({Hex("80 80 05"), Time(2, pts)}), payload);
}

Bytes VideoPes(uint64_t pts, uint64_t dts, const Bytes& payload)
{
    return Pes("E0", Join({Hex("80 C0 0A"), Time(3, pts), Time(1, dts)}), payload);
}

Bytes AudioPes(uint64_t pts, const Bytes& payload)
{
    return Pes("C0", Join({Hex("80 80 05"), Time(2, pts)}), payload);
}

Stream::Stream(uint32_t type) : m_recorder(type, m_sink)
{
    EXPECT_EQ(m_recorder.Header(), 0);
}

Bytes Stream::Output(const Frame& frame)
{
    m_sink.ForgetBlocks();
    EXPECT_EQ(m_recorder.Input(frame), 0);
    if (m_sink.Blocks().empty()) return {};
    EXPECT_EQ(m_sink.Blocks().size(), 1u);
    return m_sink.Blocks().front().data;
}

}  // namespace Golden
