// Audio tags: which frames are taken, their flags and times.
#include "golden/flv/Pieces.h"

namespace GoldenFlv
{
namespace
{

using namespace Orbel::Wrapton;
using Support::H264I;
using Support::H264P;
using Support::Hex;
using Support::Join;

/// A recording that video has begun.
Recording& Begun(Recording& recording)
{
    recording.Input(H264I(kIFrame));
    recording.Fresh();
    return recording;
}

/// The flags byte of the tag for a frame with these attributes.
uint32_t FlagsOf(uint32_t sampleRate, uint32_t channels, uint32_t bits)
{
    Recording recording(SG_STREAM_TYPE_FLV);
    Begun(recording).Input(Pcm16(Hex("11 22"), sampleRate, channels, bits));
    return recording.Fresh().at(11);
}

TEST(FlvAudio, TakesPcm16AndPcmAlone)
{
    Recording recording(SG_STREAM_TYPE_FLV);
    Begun(recording);
    for (uint32_t encode = 0; encode <= 48; ++encode)
    {
        recording.Input(Support::Audio(encode, Hex("11 22"), 8000, 1, 16));
        const bool taken = encode == SG_ENCODE_AUDIO_PCM16 || encode == SG_ENCODE_AUDIO_PCM;
        EXPECT_EQ(recording.Fresh().empty(), !taken) << encode;
    }
}

TEST(FlvAudio, CarriesTheBytesUnchanged)
{
    Recording recording(SG_STREAM_TYPE_FLV);
    Begun(recording);
    for (const std::size_t size : {1u, 2u, 3u, 65535u, 65536u})
    {
        const Bytes samples = Support::Payload(size);
        recording.Input(H264P(kPFrame));
        recording.Fresh();
        recording.Input(Pcm16(samples));
        const Bytes tag = recording.Fresh();
        EXPECT_TRUE(
            Support::Same(Support::Slice(tag, 0, 4),
                          Join({Hex("08"), Support::Msb24(static_cast<uint32_t>(size) + 1)})));
        EXPECT_TRUE(Support::Same(Support::Slice(tag, 12, size), samples));
        EXPECT_TRUE(Support::Same(Support::Slice(tag, 12 + size, tag.size() - 12 - size),
                                  Support::Msb32(static_cast<uint32_t>(size) + 12)));
    }
}

TEST(FlvAudio, HasRateBitsForFourRoundNumbersOnly)
{
    EXPECT_EQ(FlagsOf(5500, 1, 8), 0x30u);
    EXPECT_EQ(FlagsOf(11000, 1, 8), 0x34u);
    EXPECT_EQ(FlagsOf(22000, 1, 8), 0x38u);
    EXPECT_EQ(FlagsOf(44000, 1, 8), 0x3Cu);
    for (const uint32_t rate : {5499u,
                                5501u,
                                8000u,
                                10999u,
                                11001u,
                                11025u,
                                16000u,
                                21999u,
                                22001u,
                                22050u,
                                43999u,
                                44001u,
                                44100u,
                                48000u,
                                0u,
                                0xFFFFFFFFu})
    {
        EXPECT_EQ(FlagsOf(rate, 1, 8), 0x30u) << rate;
    }
}

TEST(FlvAudio, HasTheSizeBitFor16BitSamplesOnly)
{
    EXPECT_EQ(FlagsOf(8000, 1, 16), 0x32u);
    for (const uint32_t bits : {0u, 8u, 15u, 17u, 24u, 32u, 0xFFFFFFFFu})
    {
        EXPECT_EQ(FlagsOf(8000, 1, bits), 0x30u) << bits;
    }
}

TEST(FlvAudio, HasTheStereoBitForTwoChannelsOnly)
{
    EXPECT_EQ(FlagsOf(8000, 2, 16), 0x33u);
    for (const uint32_t channels : {0u, 1u, 3u, 6u, 0xFFFFFFFFu})
    {
        EXPECT_EQ(FlagsOf(8000, channels, 16), 0x32u) << channels;
    }
    EXPECT_EQ(FlagsOf(44000, 2, 16), 0x3Fu);
}

TEST(FlvAudio, BuildsTheFlagsOfEachTagAfresh)
{
    Recording recording(SG_STREAM_TYPE_FLV);
    Begun(recording).Input(Pcm16(Hex("11"), 44000, 2, 16));
    EXPECT_EQ(recording.Fresh().at(11), 0x3Fu);
    recording.Input(Pcm16(Hex("11"), 8000, 6, 8));
    EXPECT_EQ(recording.Fresh().at(11), 0x30u);
}

/// The closing metadata after audio frames with these channel counts.
Meta ClosingMeta(std::initializer_list<uint32_t> channelCounts, uint32_t stereo)
{
    Meta meta;
    meta.duration = 1 / 25.0;
    meta.sampleRate = 8000;
    meta.sampleSize = 16;
    meta.audioCodec = 3;
    meta.stereo = stereo;
    meta.fileSize = 279 + 39 + 43 + 17.0 * static_cast<double>(channelCounts.size()) + 20;
    return meta;
}

void ExpectStereo(std::initializer_list<uint32_t> channelCounts, uint32_t stereo)
{
    Recording recording(SG_STREAM_TYPE_FLV);
    Begun(recording);
    for (const uint32_t channels : channelCounts)
    {
        recording.Input(Pcm16(Hex("11"), 8000, channels));
    }
    recording.Tailer();
    EXPECT_TRUE(IsAppended(recording.Blocks().back(),
                           Join({FileHeader(5), MetaTag(ClosingMeta(channelCounts, stereo))})));
}

TEST(FlvAudio, KeepsTheStereoValueOverOtherChannelCounts)
{
    ExpectStereo({1}, 0);
    ExpectStereo({2}, 1);
    ExpectStereo({2, 1}, 0);
    ExpectStereo({3}, 0);
    ExpectStereo({2, 3}, 1);
    ExpectStereo({2, 0, 6}, 1);
    ExpectStereo({2, 1, 3}, 0);
}

TEST(FlvAudio, IsTimedByItsBytesAs16BitMonoFromTheLastVideoTag)
{
    Recording recording(SG_STREAM_TYPE_FLV);
    const Bytes samples = Support::Payload(320);
    Begun(recording);
    for (const uint32_t video : {0u, 40u, 80u})
    {
        recording.Input(Pcm16(samples)).Input(Pcm16(samples));
        EXPECT_TRUE(Support::Same(
            recording.Fresh(),
            Join({AudioTag(video, 0x32, samples), AudioTag(video + 20, 0x32, samples)})));
        recording.Input(H264P(kPFrame));
        recording.Fresh();
    }
}

TEST(FlvAudio, IsTimedAlikeWhateverItsFormat)
{
    Recording recording(SG_STREAM_TYPE_FLV);
    const Bytes samples = Support::Payload(320);
    Begun(recording);
    recording.Input(Support::Audio(SG_ENCODE_AUDIO_PCM, samples, 8000, 2, 8));
    EXPECT_TRUE(Support::Same(recording.Fresh(), AudioTag(0, 0x31, samples)));
    recording.Input(Pcm16(samples, 8000, 2));
    EXPECT_TRUE(Support::Same(recording.Fresh(), AudioTag(20, 0x33, samples)));
    // The new rate counts for all bytes since the video tag: 640 * 1000 / (2 * 22050) = 14.5.
    recording.Input(Pcm16(samples, 22050, 2));
    EXPECT_TRUE(Support::Same(recording.Fresh(), AudioTag(14, 0x33, samples)));
}

TEST(FlvAudio, IsTimedBeyond32BitsOfBytesTimes1000)
{
    Recording recording(SG_STREAM_TYPE_FLV);
    Begun(recording);
    const Bytes large = Support::Payload(2000000);
    recording.Input(Pcm16(large), 3);
    recording.Fresh();
    recording.Input(Pcm16(Hex("11 22")));  // 6000000 * 1000 / 16000
    EXPECT_TRUE(Support::Same(recording.Fresh(), AudioTag(375000, 0x32, Hex("11 22"))));
    recording.Input(Pcm16(Hex("11 22"), 1));  // 6000002 * 1000 / 2, low 24 bits
    EXPECT_TRUE(
        Support::Same(recording.Fresh(), AudioTag(3000001000u & 0xFFFFFFu, 0x32, Hex("11 22"))));
}

TEST(FlvAudio, HasTime0WithoutASampleRate)
{
    Recording recording(SG_STREAM_TYPE_FLV);
    Begun(recording).Input(H264P(kPFrame)).Input(Pcm16(Hex("11 22")));
    recording.Fresh();
    recording.Input(Pcm16(Hex("11 22"), 0));
    EXPECT_TRUE(Support::Same(recording.Fresh(), AudioTag(0, 0x32, Hex("11 22"))));
    // The bytes count all the same: 4 * 1000 / 2000 behind the P frame.
    recording.Input(Pcm16(Hex("11 22"), 1000));
    EXPECT_TRUE(Support::Same(recording.Fresh(), AudioTag(42, 0x32, Hex("11 22"))));
}

TEST(FlvAudio, DroppedAheadOfVideoLeavesNoTrace)
{
    Recording recording(SG_STREAM_TYPE_FLV);
    recording.Input(Pcm16(Support::Payload(320), 44000, 2)).Input(H264I(kIFrame));
    recording.Input(Pcm16(Hex("11 22"))).Tailer();
    Recording plain(SG_STREAM_TYPE_FLV);
    plain.Input(H264I(kIFrame)).Input(Pcm16(Hex("11 22"))).Tailer();
    EXPECT_TRUE(Support::Same(recording.File(), plain.File()));
}

}  // namespace
}  // namespace GoldenFlv
