// The QV flavour: its map, its audio clock, and what it takes.
#include <cstdlib>
#include <ctime>

#include "golden/ps/Pieces.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using namespace Support;

const Bytes kIdr = Nal(Hex("65 88 84 21"));
const Bytes kSlice = Nal(Hex("41 9A 02 33"));

constexpr uint32_t kDate = 1709618828;  // 2024-03-05 06:07:08 UTC
// 24 << 26, month 3 << 22, day 5 << 17, hour 6 << 12, minute 7 << 6, second 8
constexpr uint32_t kPackedDate = 0x60CA61C8;
// 1970 is 34 in the six bits of a year since 2000; January 1st, 00:00:00.
constexpr uint32_t kPacked1970 = 34u << 26 | 1u << 22 | 1u << 17;

/// The fields of the 64-byte map.
struct MapFields
{
    uint32_t videoType = 0x1B;
    uint32_t frameEncode = SG_ENCODE_VIDEO_HI_H264;
    uint32_t width = 640;
    uint32_t height = 360;
    uint32_t rate10 = 250;
    uint32_t date = kPackedDate;
    uint32_t audioType = 0x04;
    uint32_t audioEncode = 0;
    uint32_t sampleRate = 16000;
    uint32_t bits = 16;
    uint32_t channels = 1;
    uint32_t secondDate = kPackedDate;
};

Bytes QvMap(const MapFields& fields)
{
    return Join({
        Hex("00 00 01 BC"),             // map_stream_id
        Hex("00 3A"),                   // length 58
        Hex("E1 FF"),                   // current, version 1
        Hex("00 00"),                   // program_stream_info_length
        Hex("00 30"),                   // elementary_stream_map_length 48
        U8(fields.videoType),           // stream_type
        Hex("E0"),                      // elementary_stream_id
        Hex("00 14"),                   // 20 bytes of descriptor
        Text("QVES"),                   //
        Hex("00 01 00"),                //
        U8(fields.frameEncode),         //
        Msb16(fields.width + 0x1234),   //
        Msb16(fields.height + 0x1234),  //
        Msb16(fields.rate10),           //
        Hex("00 0A"),                   //
        Lsb32(fields.date),             //
        U8(fields.audioType),           // stream_type
        Hex("C0"),                      // elementary_stream_id
        Hex("00 14"),                   // 20 bytes of descriptor
        Text("QVES"),                   //
        Hex("00 01"),                   //
        Msb16(fields.audioEncode),      //
        Msb32(fields.sampleRate + 0x1234),
        Msb16(fields.bits + 0x1234),
        Msb16(fields.channels + 0x1234),
        Lsb32(fields.secondDate),  //
        Hex("00 00 00 00"),        // CRC, left zero
    });
}

class QvPs : public ::testing::Test
{
protected:
    QvPs()
    {
        setenv("TZ", "UTC", 1);
        tzset();
    }

    Bytes Output(Frame frame, uint32_t date = kDate)
    {
        frame.date = date;
        return m_stream.Output(frame);
    }

    /// The map of an I frame, or of the first audio frame.
    Bytes MapOf(const Frame& frame, uint32_t date = kDate)
    {
        const Bytes block = Output(frame, date);
        return block.size() < 78 ? block : Slice(block, 14, 64);
    }

    Stream m_stream{SG_STREAM_TYPE_QVPS};
};

TEST_F(QvPs, FirstIFrameIsPackMapSystemHeaderAndPes)
{
    const Bytes expected = Join({
        Hex("00 00 01 BA 44 00 04 70 84 01 00 60 1B F8"),  // SCR 3600

        Hex("00 00 01 BC 00 3A E1 FF 00 00 00 30"),  //
        Hex("1B E0 00 14 51 56 45 53 00 01 00 02"),  // "QVES", encoding 2
        Hex("17 34"),                                // 1280 + 1234 hex
        Hex("15 04"),                                // 720 + 1234 hex
        Hex("00 FA 00 0A"),                          // 25 frames per second, ten times
        Hex("C8 61 CA 60"),                          // the date
        Hex("04 C0 00 14 51 56 45 53 00 01 00 00"),  // "QVES", no audio yet
        Hex("00 00 50 B4"),                          // 16000 + 1234 hex
        Hex("12 44"),                                // 16 + 1234 hex
        Hex("12 35"),                                // 1 + 1234 hex
        Hex("C8 61 CA 60"),                          // the date again
        Hex("00 00 00 00"),                          // CRC

        Hex("00 00 01 BB 00 0C 80 CC F5 04 E1 7F E0 E0 E8 C0 C0 20"),

        Hex("00 00 01 E0"),     // video
        Hex("00 15"),           // 8 bytes of payload + 13
        Hex("80 C0 0A"),        // PTS and DTS
        Hex("31 00 03 F0 E1"),  // PTS 63600
        Hex("11 00 03 D4 C1"),  // DTS 60000
        Hex("00 00 00 01 65 88 84 21"),
    });
    EXPECT_TRUE(Same(Output(H264I(kIdr).Sized(1280, 720)), expected));
}

TEST_F(QvPs, PFrameIsPackAndPesOneStepLater)
{
    Output(H264I(kIdr));
    EXPECT_TRUE(Same(Output(H264P(kSlice)), Join({Pack(7200), VideoPes(67200, kSlice)})));
}

TEST_F(QvPs, MapTellsTheVideoEncodingByItsStreamType)
{
    const auto type = [](uint32_t encode) -> uint32_t
    {
        switch (encode)
        {
            case 2:
            case 4:
                return 0x1B;
            case 1:
                return 0x10;
            case 9:
                return 0x02;
            case 11:
                return 0x80;
            case 129:
                return 0xB0;
            case 3:
                return 0xB1;
            default:
                return 0x24;
        }
    };
    for (uint32_t encode = 0; encode < 140; ++encode)
    {
        MapFields fields;
        fields.videoType = type(encode);
        fields.frameEncode = encode;
        EXPECT_TRUE(Same(MapOf(Video(encode, SG_FRAME_SUB_TYPE_I, kIdr)), QvMap(fields))) << encode;
    }
}

TEST_F(QvPs, MapFieldsKeepTheirLowBits)
{
    MapFields fields;
    fields.frameEncode = 0x02;
    fields.width = 0x10;
    fields.height = 0xFFFF;
    fields.rate10 = 7000 * 10 & 0xFFFF;
    const Frame frame = Video(0x10002, SG_FRAME_SUB_TYPE_I, kIdr).Sized(0x10010, 0xFFFF);
    EXPECT_TRUE(Same(MapOf(frame.AtRate(7000)), QvMap(fields)));
    for (const uint32_t rate : {0u, 0x80000000u, 0xFFFFFFFFu})
    {
        fields.rate10 = rate * 10 & 0xFFFF;
        EXPECT_TRUE(Same(MapOf(frame.AtRate(rate)), QvMap(fields))) << rate;
    }
}

TEST_F(QvPs, RateZeroLeavesTheClocks)
{
    Output(H264I(kIdr).AtRate(0));
    EXPECT_TRUE(Same(Output(H264P(kSlice)), Join({Pack(0), VideoPes(60000, kSlice)})));
}

TEST_F(QvPs, DateComesFromTheFramesTimeWhenItHasNoDate)
{
    MapFields fields;
    fields.secondDate = 0;
    fields.date = kPacked1970 | 3;
    Frame frame = H264I(kIdr);
    frame.time = 3999;  // milliseconds
    EXPECT_TRUE(Same(MapOf(frame, 0), QvMap(fields)));
    frame.time = 3723000;  // 01:02:03
    fields.date = kPacked1970 | 1 << 12 | 2 << 6 | 3;
    EXPECT_TRUE(Same(MapOf(frame, 0), QvMap(fields)));
}

TEST_F(QvPs, DateComesFromThePicturesCountedWhenThereIsNoTimeEither)
{
    MapFields fields;
    fields.secondDate = 0;
    fields.rate10 = 20;
    const Frame frame = H264I(kIdr).AtRate(2);
    Output(frame);
    // A refused picture and audio do not count.
    Output(H264P(Payload(0x100000)));
    Output(H264I(Payload(0x100000)));
    Output(Aac(Payload(9)));
    fields.audioType = 0x0F;
    fields.audioEncode = 26;
    fields.sampleRate = 8000;
    fields.date = kPacked1970 | 1;  // picture 2 of 2 a second
    EXPECT_TRUE(Same(MapOf(frame, 0), QvMap(fields)));
    Output(H264P(kSlice));
    fields.date = kPacked1970 | 2;  // picture 4
    EXPECT_TRUE(Same(MapOf(frame, 0), QvMap(fields)));
    EXPECT_TRUE(Same(MapOf(frame, 0), QvMap(fields)));  // picture 5
}

TEST_F(QvPs, AudioMapIsDatedByTheRateOfTheLastIFrame)
{
    Output(H264I(kIdr).AtRate(1));
    Output(H264P(kSlice));
    MapFields fields;
    fields.frameEncode = 26;
    fields.rate10 = 10;
    fields.audioType = 0x0F;
    fields.audioEncode = 26;
    fields.sampleRate = 8000;
    fields.date = kPacked1970 | 2;
    fields.secondDate = 0;
    EXPECT_TRUE(Same(MapOf(Aac(Payload(9)), 0), QvMap(fields)));
}

TEST_F(QvPs, FirstAudioFrameIsPackMapAndPes)
{
    const Bytes sound = Payload(30);
    MapFields fields;
    fields.videoType = 0x24;  // no picture has told an encoding
    fields.frameEncode = 26;
    fields.width = 352;
    fields.height = 288;
    fields.audioType = 0x0F;
    fields.audioEncode = 26;
    fields.sampleRate = 48000;
    fields.channels = 2;
    // 2048 bytes at 48000 Hz, 16 bits and 2 channels are 960 ticks.
    EXPECT_TRUE(
        Same(Output(Aac(sound, 48000, 2)), Join({Pack(0), QvMap(fields), AudioPes(60960, sound)})));
}

TEST_F(QvPs, AudioClockRunsOnItsOwnAndThePackRepeatsTheVideoClock)
{
    const Bytes sound = Payload(30);
    Output(H264I(kIdr));
    Output(Aac(sound, 16000, 1));
    EXPECT_TRUE(Same(Output(Aac(sound, 16000, 1)), Join({Pack(3600), AudioPes(71520, sound)})));
    EXPECT_TRUE(Same(Output(Mp2(sound, 16000, 1)), Join({Pack(3600), AudioPes(78000, sound)})));
    // A frame that says too little has no duration.
    EXPECT_TRUE(Same(Output(Aac(sound, 0, 1)), Join({Pack(3600), AudioPes(78000, sound)})));
    EXPECT_TRUE(
        Same(Output(Aac(sound, 0x10000000, 1)), Join({Pack(3600), AudioPes(78000, sound)})));
    EXPECT_TRUE(Same(Output(H264P(kSlice)), Join({Pack(7200), VideoPes(67200, kSlice)})));
}

TEST_F(QvPs, Every25thAudioFrameCarriesTheMap)
{
    for (int frame = 1; frame <= 76; ++frame)
    {
        const bool expected = frame % 25 == 1;
        EXPECT_EQ(Output(Aac(Hex("21"))).size(), 14u + (expected ? 64 : 0) + 14 + 1) << frame;
        // Refused frames do not count.
        EXPECT_TRUE(Output(Audio(SG_ENCODE_AUDIO_G711A, Hex("D5"), 8000, 1, 16)).empty());
    }
}

TEST_F(QvPs, MapOfAVideoFrameTellsTheLastAudioFrame)
{
    Output(Mp2(Payload(9), 16000, 1));
    Frame odd = Aac(Payload(9), 0x12345678, 0x10002);
    odd.bits = 0x10018;
    Output(odd);
    MapFields fields;
    fields.audioType = 0x0F;
    fields.audioEncode = 26;
    fields.sampleRate = 0x12345678;  // 32 bits of it
    fields.bits = 0x18;
    fields.channels = 2;
    EXPECT_TRUE(Same(MapOf(H264I(kIdr)), QvMap(fields)));
    // A refused one tells nothing.
    Output(Mp2(Payload(9), 44100, 2));
    EXPECT_TRUE(Same(MapOf(H264I(kIdr)), QvMap(fields)));
}

TEST_F(QvPs, Layer2MapHasTheTypeOfMpegAudio)
{
    MapFields fields;
    fields.videoType = 0x24;
    fields.frameEncode = 31;
    fields.width = 352;
    fields.height = 288;
    fields.audioEncode = 31;
    EXPECT_TRUE(Same(MapOf(Mp2(Payload(9), 16000, 1)), QvMap(fields)));
}

TEST_F(QvPs, TakesAacOfAnyRateAndLayer2Of16000HzOnly)
{
    for (const uint32_t rate : {8000u, 44100u, 48000u, 1u})
    {
        EXPECT_FALSE(Output(Aac(Payload(9), rate, 2)).empty()) << rate;
    }
    EXPECT_FALSE(Output(Mp2(Payload(9), 16000, 2)).empty());
    for (const uint32_t rate : {0u, 15999u, 16001u, 44100u})
    {
        EXPECT_TRUE(Output(Mp2(Payload(9), rate, 2)).empty()) << rate;
    }
    for (uint32_t encode = 0; encode < 64; ++encode)
    {
        if (encode == SG_ENCODE_AUDIO_AAC || encode == SG_ENCODE_AUDIO_MP2) continue;
        EXPECT_TRUE(Output(Audio(encode, Payload(9), 16000, 1, 16)).empty()) << encode;
    }
}

TEST_F(QvPs, RefusedAudioOpensTheStreamAllTheSame)
{
    EXPECT_TRUE(Output(H264P(kSlice)).empty());
    EXPECT_TRUE(Output(Audio(SG_ENCODE_AUDIO_G711A, Payload(9), 8000, 1, 16)).empty());
    EXPECT_TRUE(Same(Output(H264P(kSlice)), Join({Pack(3600), VideoPes(63600, 60000, kSlice)})));
}

}  // namespace
}  // namespace Golden
