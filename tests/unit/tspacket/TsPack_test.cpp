// Tables, PES packets and the conversions, byte by byte.
#include "tspacket/TsPack.h"

#include "support/Bytes.h"

namespace Orbel::Wrapton
{
namespace
{

using namespace Support;

template <class Write>
Bytes Written(Write write)
{
    Bytes room(100000, 0xEE);
    CMsbCursor w(room);
    write(w);
    EXPECT_FALSE(w.Overrun());
    return Slice(room, 0, w.Produced());
}

Bytes LeadOf(const TsPes& pes)
{
    Bytes lead(pes.lead_len);
    CMsbCursor w(lead);
    PutPesLead(w, pes);
    EXPECT_EQ(w.Produced(), pes.lead_len);
    return lead;
}

TEST(TsPaskInit, IsAStartingPacketWithPayloadOnly)
{
    TS_pack pack;
    pack.continuity_counter = 5;
    pack.PCR_flag = 1;
    TsPaskInit(pack);
    EXPECT_EQ(pack.sync_byte, 0x47u);
    EXPECT_EQ(pack.transport_error_indicator, 0u);
    EXPECT_EQ(pack.payload_unit_start_indicator, 1u);
    EXPECT_EQ(pack.transport_priority, 0u);
    EXPECT_EQ(pack.PID, 0u);
    EXPECT_EQ(pack.transport_scrambling_control, 0u);
    EXPECT_EQ(pack.adaptation_field_control, 1u);
    EXPECT_EQ(pack.continuity_counter, 0u);
    EXPECT_EQ(pack.adaptation_field_length, 0u);
    EXPECT_EQ(pack.PCR_flag, 0u);
}

TEST(CRC_encode, IsTheMpegCrc32)
{
    // The catalogue's check value of CRC-32/MPEG-2.
    EXPECT_EQ(CRC_encode(Text("123456789")), 0x0376E6E7u);
    EXPECT_EQ(CRC_encode({}), 0xFFFFFFFFu);
}

TEST(Pat2Ts, NamesTheMapOfProgramOne)
{
    const Bytes expected = Join({
        Hex("47"),           // sync_byte
        Hex("40 00"),        // payload_unit_start_indicator, PID 0
        Hex("10"),           // payload only, counter 0
        Hex("00"),           // pointer_field
        Hex("00"),           // table_id
        Hex("B0 0D"),        // section_length 13
        Hex("00 01"),        // transport_stream_id
        Hex("C1"),           // version 0, current
        Hex("00 00"),        // section 0 of 0
        Hex("00 01"),        // program_number
        Hex("E0 10"),        // program_map_PID
        Hex("76 F1 44 D1"),  // CRC_32, by long division
        Bytes(188 - 21, 0xFF),
    });
    EXPECT_TRUE(Same(Written([](CMsbCursor& w) { Pat2Ts(w); }), expected));
}

Bytes PmtOf(TS_TYPE type)
{
    return Written([type](CMsbCursor& w) { Pmt2Ts(w, type); });
}

Bytes ExpectedPmt(const char* streamType, const char* crc)
{
    return Join({
        Hex("47 40 10 10"),  // PID 0x10, payload only, counter 0
        Hex("00"),           // pointer_field
        Hex("02"),           // table_id
        Hex("B0 17"),        // section_length 23
        Hex("00 01"),        // program_number
        Hex("C1 00 00"),     // version 0, current, section 0 of 0
        Hex("E0 12"),        // PCR_PID
        Hex("F0 00"),        // program_info_length
        Hex(streamType),
        Hex("E0 12"),  // elementary_PID
        Hex("F0 00"),  // ES_info_length
        Hex("03"),     // audio
        Hex("E0 13"),
        Hex("F0 00"),
        Hex(crc),  // by long division
        Bytes(188 - 31, 0xFF),
    });
}

TEST(Pmt2Ts, IsAProgramWithMpeg4ForThatTypeAlone)
{
    EXPECT_TRUE(Same(PmtOf(PLY_BK_MPEG4), ExpectedPmt("10", "D2 D0 B5 32")));
    for (const TS_TYPE type : {PLK_BK_VIDEO, PLY_BK_H264, PLK_BK_AUDIO, PLY_BK_MPEG2, PLY_BK_AAC})
    {
        EXPECT_TRUE(Same(PmtOf(type), ExpectedPmt("1B", "40 21 3D C8"))) << type;
    }
}

TEST(FrameData2Pes, OfH264HasPtsDtsAndADelimiter)
{
    const Bytes frame = Payload(1000);
    const TsPes pes = FrameData2Pes(frame, 3600, PLY_BK_H264);
    EXPECT_TRUE(Same(LeadOf(pes),
                     Join({
                         Hex("00 00 01 E0"),
                         Hex("03 FB"),              // 1019
                         Hex("80 C0 0A"),           // PTS and DTS
                         Hex("31 00 01 1C 21"),     // PTS 3600
                         Hex("11 00 01 1C 21"),     // DTS 3600
                         Hex("00 00 00 01 09 F0"),  // access unit delimiter
                     })));
    EXPECT_EQ(pes.Size(), 1025u);
    EXPECT_EQ(pes.frame.data(), frame.data());
    EXPECT_EQ(pes.frame.size(), frame.size());
}

TEST(FrameData2Pes, OfMpeg4HasNoDelimiter)
{
    const TsPes pes = FrameData2Pes(Payload(1000), 3600, PLY_BK_MPEG4);
    EXPECT_TRUE(Same(LeadOf(pes),
                     Join({
                         Hex("00 00 01 E0 03 F5 80 C0 0A"),  // 1000 + 10 + 3
                         Hex("31 00 01 1C 21 11 00 01 1C 21"),
                     })));
}

TEST(FrameData2Pes, OfAudioHasThePtsAloneAndTheStreamIdOfVideo)
{
    const TsPes pes = FrameData2Pes(Payload(1000), 3600, PLK_BK_AUDIO);
    EXPECT_TRUE(Same(LeadOf(pes), Hex("00 00 01 E0 03 F0 80 80 05 21 00 01 1C 21")));
}

TEST(FrameData2Pes, Uses32BitsOfTheClock)
{
    const TsPes pes = FrameData2Pes(Payload(9), 0x1'FFFFFFFF, PLK_BK_AUDIO);
    // Bits 32 to 30 are 011.
    EXPECT_TRUE(Same(Slice(LeadOf(pes), 9, 5), Hex("27 FF FF FF FF")));
}

TEST(FrameData2Pes, LeavesTheLengthOpenFrom65501WithoutTheDelimiter)
{
    const auto length = [](std::size_t size, TS_TYPE type)
    { return ReadMsb16(LeadOf(FrameData2Pes(Payload(size), 0, type)), 4); };
    EXPECT_EQ(length(65500 - 13, PLY_BK_MPEG4), 65500u);
    EXPECT_EQ(length(65501 - 13, PLY_BK_MPEG4), 0u);
    EXPECT_EQ(length(65500 - 13, PLY_BK_H264), 65506u);
    EXPECT_EQ(length(65501 - 13, PLY_BK_H264), 0u);
    EXPECT_EQ(length(65500 - 8, PLK_BK_AUDIO), 65500u);
    EXPECT_EQ(length(65501 - 8, PLK_BK_AUDIO), 0u);
}

/// Packets of a frame without tables; PTS alone, so that 14 bytes stand ahead of it.
Bytes AudioPackets(std::size_t size, int32_t& continuity)
{
    int32_t frames = 1;
    const Bytes frame = Payload(size);
    return Written(
        [&](CMsbCursor& w)
        {
            Pes2Ts(w,
                   FrameData2Pes(frame, 0x1'23456789, PLK_BK_AUDIO),
                   0x1'23456789,
                   frames,
                   continuity,
                   PLY_BK_MPEG2);
        });
}

TEST(Pes2Ts, FillsTheOnlyPacketOfAShortFrameBehindThePcr)
{
    int32_t continuity = 9;
    EXPECT_TRUE(
        Same(AudioPackets(100, continuity),
             Join({
                 Hex("47 40 13"),  // payload_unit_start_indicator, PID 0x13
                 Hex("39"),        // adaptation field and payload, counter 9
                 U8(183 - 114),    // adaptation_field_length
                 Hex("10"),        // PCR_flag
                 // base 1 2345 6789 hex: shifted right by one, then its last bit ahead of six ones
                 Hex("91 A2 B3 C4 FE 00"),
                 Bytes(183 - 114 - 7, 0xFF),
                 // bits 32 (not kept) to 30: 000, then 29 to 15 and 14 to 0
                 Hex("00 00 01 E0 00 6C 80 80 05 21 8D 15 CF 13"),
                 Payload(100),
             })));
    EXPECT_EQ(continuity, 10);
}

TEST(Pes2Ts, Carries176BytesInTheFirstAnd182InOtherPackets)
{
    struct Case
    {
        std::size_t pes;
        std::vector<uint32_t> adaptation;
    };
    for (const Case& c : {Case{15, {168}},
                          Case{175, {8}},
                          Case{176, {7}},
                          Case{177, {7, 182}},
                          Case{176 + 181, {7, 2}},
                          Case{176 + 182, {7, 1}},
                          Case{176 + 183, {7, 1, 182}}})
    {
        int32_t continuity = 0;
        const Bytes packets = AudioPackets(c.pes - 14, continuity);
        ASSERT_EQ(packets.size(), 188 * c.adaptation.size()) << c.pes;
        for (std::size_t i = 0; i < c.adaptation.size(); ++i)
        {
            EXPECT_EQ(packets[188 * i + 1], i == 0 ? 0x40 : 0);
            EXPECT_EQ(packets[188 * i + 3], 0x30 + i);
            EXPECT_EQ(packets[188 * i + 4], c.adaptation[i]) << c.pes;
            EXPECT_EQ(packets[188 * i + 5], i == 0 ? 0x10 : 0);
        }
    }
}

TEST(Pes2Ts, StuffsALaterPacketBehindItsFlags)
{
    int32_t continuity = 15;
    const Bytes packets = AudioPackets(177 - 14, continuity);
    EXPECT_EQ(packets[3], 0x3F);
    EXPECT_TRUE(Same(Slice(packets, 188, 188),
                     Join({
                         Hex("47 00 13"),  // no unit starts
                         Hex("30"),        // the counter begins again
                         Hex("B6"),        // adaptation_field_length 182
                         Hex("00"),        // no flags
                         Bytes(181, 0xFF),
                         Slice(Payload(163), 162, 1),
                     })));
    EXPECT_EQ(continuity, 1);
}

TEST(Pes2Ts, WritesTablesAheadOfEveryTenthFrame)
{
    int32_t frames = 0;
    int32_t continuity = 0;
    for (int frame = 0; frame < 21; ++frame)
    {
        const Bytes packets = Written(
            [&](CMsbCursor& w) {
                Pes2Ts(w,
                       FrameData2Pes(Payload(9), 0, PLY_BK_MPEG4),
                       0,
                       frames,
                       continuity,
                       PLY_BK_MPEG4);
            });
        const bool tables = frame % 10 == 0;
        ASSERT_EQ(packets.size(), tables ? 3u * 188 : 188u) << frame;
        EXPECT_EQ(frames, (frame + 1) % 10);
        EXPECT_EQ(packets[packets.size() - 188 + 3], 0x30 + frame % 16);
        if (!tables) continue;
        EXPECT_TRUE(Same(Slice(packets, 0, 188), Written([](CMsbCursor& w) { Pat2Ts(w); })));
        EXPECT_TRUE(Same(Slice(packets, 188, 188), PmtOf(PLY_BK_MPEG4)));
    }
}

/// What Video2Ts() keeps between frames.
struct VideoState
{
    int64_t clock = 0;
    uint32_t lastRate = 0;
    int32_t frames = 0;
    int32_t continuity = 0;

    int Convert(Bytes& out, int32_t& length, const Bytes& frame, uint32_t rate)
    {
        return Video2Ts(out.data(),
                        length,
                        frame.data(),
                        static_cast<uint32_t>(frame.size()),
                        clock,
                        rate,
                        lastRate,
                        frames,
                        continuity,
                        PLY_BK_H264);
    }
};

TEST(Video2Ts, RefusesAByteTooLittleAndMovesTheClockOnly)
{
    VideoState state;
    const Bytes frame = Payload(1000);
    Bytes out(8 * 188, 0xEE);  // two tables and six packets
    int32_t length = 8 * 188 - 1;
    EXPECT_EQ(state.Convert(out, length, frame, 30), -1);
    EXPECT_EQ(length, 0);
    EXPECT_TRUE(Same(out, Bytes(8 * 188, 0xEE)));
    EXPECT_EQ(state.clock, 2970);
    EXPECT_EQ(state.lastRate, 30u);
    EXPECT_EQ(state.frames, 0);
    EXPECT_EQ(state.continuity, 0);

    length = 8 * 188;
    EXPECT_EQ(state.Convert(out, length, frame, 0), 0);
    EXPECT_EQ(length, 8 * 188);
    EXPECT_EQ(state.clock, 2 * 2970);
    EXPECT_EQ(state.frames, 1);
    EXPECT_EQ(state.continuity, 6);
}

TEST(Video2Ts, WithoutFrameOrRoomWritesNothing)
{
    VideoState state;
    Bytes out(1000);
    int32_t length = 1000;
    EXPECT_EQ(state.Convert(out, length, {}, 25), -1);
    EXPECT_EQ(length, 0);
    EXPECT_EQ(state.clock, 0);
    length = -1;
    EXPECT_EQ(state.Convert(out, length, Payload(9), 25), -1);
    EXPECT_EQ(length, 0);
    Bytes none;
    length = 1000;
    EXPECT_EQ(state.Convert(none, length, Payload(9), 25), -1);
    EXPECT_EQ(length, 0);
    EXPECT_EQ(state.continuity, 0);
}

TEST(Audio2Ts, RefusesWhatVideoRefuses)
{
    int32_t frames = 1;
    int32_t continuity = 0;
    const Bytes frame = Payload(100);
    Bytes out(188);
    int32_t length = 187;
    EXPECT_EQ(Audio2Ts(out.data(), length, frame.data(), 100, 5, frames, continuity), -1);
    EXPECT_EQ(length, 0);
    length = 188;
    EXPECT_EQ(Audio2Ts(out.data(), length, nullptr, 100, 5, frames, continuity), -1);
    EXPECT_EQ(length, 0);
    EXPECT_EQ(frames, 1);
    EXPECT_EQ(continuity, 0);
    length = 188;
    EXPECT_EQ(Audio2Ts(out.data(), length, frame.data(), 100, 5, frames, continuity), 0);
    EXPECT_EQ(length, 188);
    EXPECT_EQ(frames, 2);
    EXPECT_EQ(continuity, 1);
}

}  // namespace
}  // namespace Orbel::Wrapton
