// Audio packets and the audio clock.
#include "golden/asf/Pieces.h"

namespace GoldenAsf
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Audio;
using Support::Join;
using Support::Payload;

Recording& Begun(Recording& recording)
{
    recording.Input(Key(Payload(10)));
    recording.Fresh();
    return recording;
}

/// The time of the packet that a frame brings.
uint32_t TimeOf(Recording& recording, const Support::Frame& frame)
{
    recording.Input(frame);
    const Bytes packet = recording.Fresh();
    return packet.at(7) | static_cast<uint32_t>(packet.at(8)) << 8 |
           static_cast<uint32_t>(packet.at(9)) << 16 | static_cast<uint32_t>(packet.at(10)) << 24;
}

TEST(AsfAudio, IsCutIntoPacketsOfStream2)
{
    const Bytes samples = Payload(5000);
    Recording recording(SG_STREAM_TYPE_ASF);
    Begun(recording).Input(Pcm16(samples)).Input(Pcm16(Payload(1)));
    EXPECT_TRUE(
        Support::Same(recording.Fresh(),
                      Join({Packets(kSound, 0, 0, samples), Packets(kSound, 1, 312, Payload(1))})));
}

TEST(AsfAudio, IsTakenForTheEncodingsWithATagOnly)
{
    for (uint32_t encode = 0; encode <= 49; ++encode)
    {
        const bool tagged = encode == 8 || encode == 10 || encode == 11 || encode == 13 ||
                            encode == 14 || encode == 15 || encode == 16 || encode == 22 ||
                            encode == 23;
        for (const uint32_t type : {SG_STREAM_TYPE_ASF, SG_STREAM_TYPE_STREAM_ASF})
        {
            Recording recording(type);
            Begun(recording).Input(Audio(encode, Payload(10), 8000, 1, 16));
            EXPECT_EQ(recording.Fresh().empty(), !tagged) << encode;
        }
    }
}

TEST(AsfAudioClock, GrowsByPcmBytes)
{
    Recording recording(SG_STREAM_TYPE_ASF);
    Begun(recording);
    EXPECT_EQ(TimeOf(recording, Pcm16(Payload(320))), 0u);
    EXPECT_EQ(TimeOf(recording, Pcm16(Payload(320))), 20u);
    EXPECT_EQ(TimeOf(recording, Pcm16(Payload(15))), 40u);          // 0.9 ms count as none
    EXPECT_EQ(TimeOf(recording, Pcm16(Payload(16))), 40u);          // 1 ms
    EXPECT_EQ(TimeOf(recording, Pcm16(Payload(640), 44100)), 41u);  // 7.2 ms
    EXPECT_EQ(TimeOf(recording, Pcm16(Payload(1))), 48u);
}

TEST(AsfAudioClock, CountsPcmChannelsForNothing)
{
    Recording recording(SG_STREAM_TYPE_ASF);
    Begun(recording);
    EXPECT_EQ(TimeOf(recording, Pcm16(Payload(320), 8000, 2)), 0u);
    EXPECT_EQ(TimeOf(recording, Pcm16(Payload(320), 8000, 2)), 20u);
}

TEST(AsfAudioClock, GrowsTwiceByALawAndMuLawBytes)
{
    for (const uint32_t encode : {14u, 22u, 10u})
    {
        Recording recording(SG_STREAM_TYPE_ASF);
        Begun(recording);
        EXPECT_EQ(TimeOf(recording, Audio(encode, Payload(160), 8000, 1, 8)), 0u);
        EXPECT_EQ(TimeOf(recording, Audio(encode, Payload(160), 8000, 1, 8)), 40u);
        EXPECT_EQ(TimeOf(recording, Audio(encode, Payload(160), 8000, 1, 16)), 80u);
        EXPECT_EQ(TimeOf(recording, Audio(encode, Payload(160), 8000, 1, 16)), 100u) << encode;
    }
}

TEST(AsfAudioClock, DividesAsIntegers)
{
    Recording recording(SG_STREAM_TYPE_ASF);
    Begun(recording);
    EXPECT_EQ(TimeOf(recording, Pcm16(Payload(10), 15, 1, 1)), 0u);     // 15 / 8 = 1 byte a second
    EXPECT_EQ(TimeOf(recording, Pcm16(Payload(10), 8, 1, 1)), 10000u);  // 1
    EXPECT_EQ(TimeOf(recording, Pcm16(Payload(10), 0xFFFFFFFFu, 1, 0xFFFFFFFFu)), 20000u);
    EXPECT_EQ(TimeOf(recording, Pcm16(Payload(10))), 20000u);
}

TEST(AsfAudioClock, StandsStillWithoutABytePerSecond)
{
    const std::vector<std::pair<uint32_t, uint32_t>> rates = {
        {0, 16}, {8000, 0}, {7, 1}, {1, 7}, {0, 0}};
    for (const auto& [rate, bits] : rates)
    {
        for (const uint32_t encode : {16u, 14u, 22u})
        {
            Recording recording(SG_STREAM_TYPE_ASF);
            Begun(recording);
            recording.Input(Audio(encode, Payload(100), rate, 1, bits));
            EXPECT_TRUE(Support::Same(recording.Fresh(), Packets(kSound, 0, 0, Payload(100))));
            EXPECT_EQ(TimeOf(recording, Audio(encode, Payload(100), rate, 1, bits)), 0u);
        }
    }
}

TEST(AsfAudioClock, IsSetToTheVideoTimeByOtherTags)
{
    Recording recording(SG_STREAM_TYPE_ASF);
    Begun(recording);
    const Support::Frame g729 = Audio(SG_ENCODE_AUDIO_G729, Payload(10), 0, 0, 0);
    EXPECT_EQ(TimeOf(recording, g729), 0u);  // the clock is set behind the packets
    EXPECT_EQ(TimeOf(recording, g729), 40u);
    recording.Input(Inter(Payload(10)));
    recording.Fresh();
    EXPECT_EQ(TimeOf(recording, g729), 40u);
    EXPECT_EQ(TimeOf(recording, g729), 80u);
    // It can go back: PCM ran ahead of the video.
    EXPECT_EQ(TimeOf(recording, Pcm16(Payload(16000))), 80u);
    EXPECT_EQ(TimeOf(recording, g729), 1080u);
    EXPECT_EQ(TimeOf(recording, g729), 80u);
}

TEST(AsfAudioClock, AdvancesAheadOfTheFirstKeyFrame)
{
    for (const uint32_t type : {SG_STREAM_TYPE_ASF, SG_STREAM_TYPE_STREAM_ASF})
    {
        Recording recording(type);
        recording.Input(Pcm16(Payload(320)), 3);
        EXPECT_TRUE(recording.Blocks().empty());
        Begun(recording).Input(Pcm16(Payload(320)));
        // The frames ahead have no number.
        EXPECT_TRUE(Support::Same(recording.Fresh(), Packets(kSound, 0, 60, Payload(320))));
    }
}

TEST(AsfAudioClock, CountsALargeFrameAheadOfTheFirstKeyFrame)
{
    Recording recording(SG_STREAM_TYPE_ASF);
    recording.Input(Audio(SG_ENCODE_AUDIO_G711A, Bytes(4000000, 0x55), 8000, 1, 8));
    // 4000000 * 2000 does not fit in 32 bits.
    EXPECT_EQ(TimeOf(Begun(recording), Pcm16(Payload(10))), 1000000u);
}

TEST(AsfAudio, CountsInTheFileAndDataCounts)
{
    Recording recording(SG_STREAM_TYPE_ASF);
    Begun(recording).Input(Pcm16(Payload(5000))).Tailer();
    HeaderValues values;
    values.audio = AudioValues{};
    values.packets = 4;
    values.dataPackets = 4;
    values.fileSize = kDataStart + 4 * kPacketLen + 56;
    EXPECT_TRUE(Support::Same(recording.Masked(recording.Blocks().back()), Header(values)));
}

}  // namespace
}  // namespace GoldenAsf
