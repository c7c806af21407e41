// What the header tells of the streams, first and at the tailer.
#include "golden/asf/Pieces.h"

namespace GoldenAsf
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Hex;
using Support::Join;
using Support::Payload;

/// The header that the first key frame brings.
Bytes FirstHeader(const Support::Frame& frame, uint32_t type = SG_STREAM_TYPE_ASF)
{
    Recording recording(type);
    recording.Input(frame);
    return Support::Slice(recording.File(), 0, kDataStart);
}

/// The header that the tailer rewrites.
Bytes ClosingHeader(Recording& recording)
{
    recording.Tailer();
    return recording.Masked(recording.Blocks().back());
}

TEST(AsfHeader, NamesTheEncodingByItsFourCharacters)
{
    const std::vector<std::pair<uint32_t, Bytes>> codes = {
        {SG_ENCODE_VIDEO_MPEG4, Support::Text("M4S2")},
        {SG_ENCODE_VIDEO_HI_H264, Support::Text("H264")},
        {SG_ENCODE_VIDEO_QV_H264, Support::Text("H264")},
        {SG_ENCODE_VIDEO_JPEG, Support::Text("MJPG")},
        {SG_ENCODE_VIDEO_UNKNOWN, Hex("00 00 00 00")},
        {SG_ENCODE_VIDEO_STD_H264, Hex("00 00 00 00")},
        {SG_ENCODE_VIDEO_QV_H265, Hex("00 00 00 00")},
        {0xFFFFFFFFu, Hex("00 00 00 00")},
    };
    for (const auto& [encode, compression] : codes)
    {
        HeaderValues values;
        values.compression = compression;
        EXPECT_TRUE(Support::Same(
            FirstHeader(Support::Video(encode, SG_FRAME_SUB_TYPE_I, Payload(10))), Header(values)))
            << encode;
    }
}

TEST(AsfHeader, TellsSizeAndTimePerFrame)
{
    HeaderValues values;
    values.width = 4294967295u;
    values.height = 1;
    values.timePerFrame = 10000000 / 30;
    EXPECT_TRUE(Support::Same(FirstHeader(Key(Payload(10)).Sized(4294967295u, 1).AtRate(30)),
                              Header(values)));
    values.timePerFrame = 0;
    for (const uint32_t rate : {0u, 10000001u, 0xFFFFFFFFu})
    {
        EXPECT_TRUE(Support::Same(FirstHeader(Key(Payload(10)).Sized(4294967295u, 1).AtRate(rate)),
                                  Header(values)));
    }
    values.timePerFrame = 1;
    EXPECT_TRUE(Support::Same(FirstHeader(Key(Payload(10)).Sized(4294967295u, 1).AtRate(10000000)),
                              Header(values)));
}

TEST(AsfHeader, RewrittenRepeatsWhatTheFirstHeaderInitialised)
{
    const Bytes object = Hex("00 00 01 00 00 00 01 20 AA");
    const Bytes picture = Hex("00 00 01 B6 10");
    Recording recording(SG_STREAM_TYPE_ASF);
    recording.Input(Support::Mpeg4I(Join({object, picture})));
    recording.Input(Pcm16(Payload(10)));
    recording.Input(Support::JpegI(Payload(10)).Sized(8, 8).AtRate(50));
    recording.Input(Support::Mpeg4I(Join({Hex("00 00 01 00 77"), picture})).Sized(9, 9).AtRate(5));
    recording.Input(Support::Audio(SG_ENCODE_AUDIO_G711A, Payload(10), 16000, 2, 8));
    HeaderValues values;
    values.compression = Support::Text("M4S2");
    values.config = object;
    values.audio = AudioValues{};
    values.packets = 5;
    values.dataPackets = 5;
    values.duration = 60 * 10000;  // 40 ms behind the first frame, 20 behind the second
    values.fileSize = kDataStart + 5 * kPacketLen + 62;
    EXPECT_TRUE(Support::Same(ClosingHeader(recording), Header(values)));
}

TEST(AsfHeader, DeclaresAudioThatCameAheadOfTheFirstKeyFrame)
{
    const Support::Frame alaw = Support::Audio(SG_ENCODE_AUDIO_G711A, Payload(80), 16000, 2, 8);
    Recording file(SG_STREAM_TYPE_ASF);
    file.Input(Pcm16(Payload(80))).Input(alaw);
    EXPECT_TRUE(file.Blocks().empty());
    file.Input(Key(Payload(10)));
    HeaderValues values;
    values.audio = AudioValues{};  // the first of the two
    EXPECT_TRUE(
        Support::Same(file.Fresh(), Join({Header(values), Packets(kKey, 0, 0, Payload(10))})));

    Recording stream(SG_STREAM_TYPE_STREAM_ASF);
    stream.Input(Pcm16(Payload(80))).Input(alaw);
    EXPECT_TRUE(stream.Blocks().empty());
    stream.Input(Key(Payload(10)));
    const AudioValues stored{6, 2, 16000, 16000, 8};  // the last of the two
    EXPECT_TRUE(Support::Same(stream.Fresh(),
                              Join({Header(Broadcast(stored)), Packets(kKey, 0, 0, Payload(10))})));
}

TEST(AsfHeader, DeclaresLaterAudioInTheRewrittenHeaderOnly)
{
    Recording recording(SG_STREAM_TYPE_ASF);
    recording.Input(Key(Payload(10)));
    EXPECT_TRUE(
        Support::Same(recording.Fresh(), Join({Header({}), Packets(kKey, 0, 0, Payload(10))})));
    recording.Input(Support::Audio(SG_ENCODE_AUDIO_G711U, Payload(10), 8000, 1, 8));
    HeaderValues values;
    values.audio = AudioValues{7, 1, 8000, 8000, 8};
    values.packets = 2;
    values.dataPackets = 2;
    values.fileSize = kDataStart + 2 * kPacketLen + 56;
    EXPECT_TRUE(Support::Same(ClosingHeader(recording), Header(values)));
}

TEST(AsfHeader, OfTheStreamVariantAlwaysDeclaresAudio)
{
    EXPECT_TRUE(Support::Same(FirstHeader(Key(Payload(10)), SG_STREAM_TYPE_STREAM_ASF),
                              Header(Broadcast())));
}

TEST(AsfHeader, IgnoresAudioWithoutATag)
{
    for (const uint32_t encode : {7u, 9u, 12u, 25u, 26u, 31u, 33u, 0xFFFFFFFFu})
    {
        Recording recording(SG_STREAM_TYPE_ASF);
        recording.Input(Support::Audio(encode, Payload(80), 8000, 1, 16));
        recording.Input(Key(Payload(10)));
        recording.Input(Support::Audio(encode, Payload(80), 8000, 1, 16));
        EXPECT_TRUE(
            Support::Same(recording.Fresh(), Join({Header({}), Packets(kKey, 0, 0, Payload(10))})))
            << encode;

        Recording stream(SG_STREAM_TYPE_STREAM_ASF);
        stream.Input(Pcm16(Payload(80))).Input(Support::Audio(encode, Payload(80), 44100, 2, 8));
        stream.Input(Key(Payload(10)));
        EXPECT_TRUE(Support::Same(Support::Slice(stream.File(), 0, kDataStart),
                                  Header(Broadcast(AudioValues{}))))
            << encode;
    }
}

TEST(AsfHeader, CutsAudioValuesToTheirFields)
{
    Recording recording(SG_STREAM_TYPE_ASF);
    recording.Input(Pcm16(Payload(8), 0xFFFFFFFFu, 0x10003, 0x20010));
    recording.Input(Key(Payload(10)));
    HeaderValues values;
    // 0xFFFFFFFF * 0x20010 / 8 = 0x4001 FFFFBFFE
    values.audio = AudioValues{1, 3, 0xFFFFFFFFu, 0xFFFFBFFEu, 0x10};
    EXPECT_TRUE(Support::Same(Support::Slice(recording.File(), 0, kDataStart), Header(values)));
}

/// The configuration in the first header of an MPEG-4 frame, and the frame in the packets.
void ExpectSplit(const Bytes& frame, const Bytes& config, const Bytes& passedOn)
{
    for (const uint32_t type : {SG_STREAM_TYPE_ASF, SG_STREAM_TYPE_STREAM_ASF})
    {
        Recording recording(type);
        recording.Input(Support::Mpeg4I(frame));
        HeaderValues values = type == SG_STREAM_TYPE_ASF ? HeaderValues{} : Broadcast();
        values.compression = Support::Text("M4S2");
        values.config = config;
        EXPECT_TRUE(
            Support::Same(recording.File(), Join({Header(values), Packets(kKey, 0, 0, passedOn)})));
    }
}

TEST(AsfMpeg4, MovesTheConfigurationIntoTheHeader)
{
    const Bytes object = Hex("00 00 01 00 00 00 01 20 AA BB");
    const Bytes picture = Hex("00 00 01 B6 10 11");
    ExpectSplit(Join({object, picture}), object, picture);
    ExpectSplit(Join({Hex("00 00 01 B0 03"), object, picture}), object, picture);
}

TEST(AsfMpeg4, BeginsTheConfigurationWithTheFrameWithoutAVideoObject)
{
    const Bytes headers = Hex("00 00 01 20 AA BB");
    const Bytes picture = Hex("00 00 01 B6 10 11");
    ExpectSplit(Join({headers, picture}), headers, picture);
    ExpectSplit(picture, {}, picture);
}

TEST(AsfMpeg4, HasNoConfigurationWithoutAPicture)
{
    const Bytes object = Hex("00 00 01 00 00 00 01 20 AA BB");
    ExpectSplit(object, {}, object);
    ExpectSplit(Join({Hex("11 22"), object}), {}, object);
    ExpectSplit(Hex("11 22 33"), {}, Hex("11 22 33"));
    ExpectSplit(Hex("11"), {}, Hex("11"));
}

TEST(AsfMpeg4, CountsACodeInTheVeryLastFourBytes)
{
    const Bytes object = Hex("00 00 01 00 AA");
    ExpectSplit(Join({object, Hex("00 00 01 B6")}), object, Hex("00 00 01 B6"));
    ExpectSplit(Join({object, Hex("00 00 01")}), {}, Join({object, Hex("00 00 01")}));
    ExpectSplit(Hex("11 00 00 01 00"), {}, Hex("00 00 01 00"));
}

TEST(AsfMpeg4, LooksForThePictureBehindTheVideoObject)
{
    const Bytes early = Hex("00 00 01 B6 77");
    const Bytes object = Hex("00 00 01 00 AA");
    const Bytes picture = Hex("00 00 01 B6 10");
    ExpectSplit(Join({early, object, picture}), object, picture);
    ExpectSplit(Join({early, object}), {}, object);
}

TEST(AsfMpeg4, Keeps64BytesOfConfigurationAndAHeaderOf768)
{
    const Bytes picture = Hex("00 00 01 B6 10");
    for (const std::size_t size : {63u, 64u, 65u, 5000u})
    {
        const Bytes object = Join({Hex("00 00 01 00"), Payload(size - 4)});
        ExpectSplit(Join({object, picture}),
                    Support::Slice(object, 0, std::min<std::size_t>(size, 64)),
                    picture);
    }
    // With an audio stream beside it there is padding left.
    const Bytes object = Join({Hex("00 00 01 00"), Payload(60)});
    Recording recording(SG_STREAM_TYPE_ASF);
    recording.Input(Pcm16(Payload(10))).Input(Support::Mpeg4I(Join({object, picture})));
    HeaderValues values;
    values.compression = Support::Text("M4S2");
    values.config = object;
    values.audio = AudioValues{};
    EXPECT_TRUE(
        Support::Same(recording.File(), Join({Header(values), Packets(kKey, 0, 0, picture)})));
}

TEST(AsfMpeg4, SplitsEveryKeyFrameAndNoOther)
{
    const Bytes object = Hex("00 00 01 00 AA");
    const Bytes picture = Hex("00 00 01 B6 10");
    const Bytes whole = Join({object, picture});
    Recording recording(SG_STREAM_TYPE_ASF);
    recording.Input(Support::Mpeg4I(whole));
    recording.Fresh();
    recording.Input(Support::Mpeg4I(whole));
    EXPECT_TRUE(Support::Same(recording.Fresh(), Packets(kKey, 1, 40, picture)));
    recording.Input(Support::Mpeg4P(whole));
    EXPECT_TRUE(Support::Same(recording.Fresh(), Packets(kInter, 2, 80, whole)));
    recording.Input(Support::Mpeg4I(whole).As(SG_FRAME_SUB_TYPE_JPEG_FRAME));
    EXPECT_TRUE(Support::Same(recording.Fresh(), Packets(kKey, 3, 120, picture)));
    recording.Input(Key(whole));
    EXPECT_TRUE(Support::Same(recording.Fresh(), Packets(kKey, 4, 160, whole)));
}

}  // namespace
}  // namespace GoldenAsf
