// Whole WAV files and the blocks that make them.
#include "golden/wav/Recording.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using Support::AppendingSink;
using Support::Bytes;
using Support::Join;
using Support::Payload;
using Support::Recorder;
using Support::Same;
using Support::SeekingSink;

constexpr uint32_t kWav = SG_STREAM_TYPE_WAV;

TEST(WavFile, HasSamplesFromTheSecondFrameOnBehindFinalSizes)
{
    SeekingSink sink;
    Recorder recorder(kWav, sink);
    EXPECT_EQ(recorder.Header(), 0);
    EXPECT_EQ(recorder.Input(Pcm16(Payload(320, 1))), 0);
    EXPECT_EQ(recorder.Input(Pcm16(Payload(320, 2))), 0);
    EXPECT_EQ(recorder.Input(Pcm16(Payload(320, 3))), 0);
    EXPECT_EQ(recorder.Tailer(), 0);
    EXPECT_EQ(sink.Image().size(), 684u);
    EXPECT_TRUE(Same(sink.Image(), Join({WavHeader(676, 640), Payload(320, 2), Payload(320, 3)})));
}

TEST(WavFile, ComesInTheseBlocks)
{
    SeekingSink sink;
    Recorder recorder(kWav, sink);
    const auto& blocks = sink.Blocks();

    recorder.Header();
    ASSERT_EQ(blocks.size(), 1u);  // written while the output is still empty
    EXPECT_TRUE(IsBlock(blocks[0], 0, WavHeader(0xFFFFFFF8, 0xFFFFFFD4)));

    recorder.Input(Pcm16(Payload(10, 1)));
    ASSERT_EQ(blocks.size(), 2u);  // in the place of the first frame
    EXPECT_TRUE(IsBlock(blocks[1], 0, WavHeader(36, 0)));

    recorder.Input(Pcm16(Payload(7, 2)));
    ASSERT_EQ(blocks.size(), 3u);
    EXPECT_TRUE(IsBlock(blocks[2], 44, Payload(7, 2)));

    recorder.Input(Alaw(Payload(1, 3)));
    ASSERT_EQ(blocks.size(), 4u);
    EXPECT_TRUE(IsBlock(blocks[3], 51, Payload(1, 3)));

    recorder.Tailer();
    ASSERT_EQ(blocks.size(), 5u);
    EXPECT_TRUE(IsBlock(blocks[4], 0, WavHeader(44, 8)));

    EXPECT_EQ(recorder.Destroy(), 0);
    EXPECT_EQ(blocks.size(), 5u);
}

TEST(WavFile, HasThreeHeadersInARowForASinkThatAppends)
{
    AppendingSink sink;
    Recorder recorder(kWav, sink);
    recorder.Header();
    recorder.Input(Alaw(Payload(20, 1)));
    recorder.Input(Alaw(Payload(20, 2)));
    recorder.Tailer();
    EXPECT_TRUE(Same(sink.Image(),
                     Join({WavHeader(0xFFFFFFF8, 0xFFFFFFD4),
                           WavHeader(36, 0),
                           Payload(20, 2),
                           WavHeader(56, 20)})));
}

TEST(WavFile, WithoutFramesIsABareHeader)
{
    SeekingSink sink;
    Recorder recorder(kWav, sink);
    recorder.Header();
    EXPECT_EQ(recorder.Tailer(), 0);
    EXPECT_TRUE(Same(sink.Image(), WavHeader(36, 0)));
}

TEST(WavFile, OfOneFrameIsABareHeader)
{
    SeekingSink sink;
    Recorder recorder(kWav, sink);
    recorder.Header();
    recorder.Input(Pcm16(Payload(1000)));
    recorder.Tailer();
    EXPECT_TRUE(Same(sink.Image(), WavHeader(36, 0)));
}

/// Sizes around everything that could be a limit inside.
class WavFrameSize : public ::testing::TestWithParam<uint32_t>
{
};
INSTANTIATE_TEST_SUITE_P(Sizes,
                         WavFrameSize,
                         ::testing::Values(1, 2, 3, 43, 44, 45, 16383, 16384, 16385, 4000000));

TEST_P(WavFrameSize, ArrivesUnchanged)
{
    const Bytes frame = Payload(GetParam());
    SeekingSink sink;
    Recorder recorder(kWav, sink);
    recorder.Header();
    recorder.Input(Pcm16({1, 2}));
    recorder.Input(Pcm16(frame));
    recorder.Tailer();
    EXPECT_TRUE(Same(sink.Image(), Join({WavHeader(36 + GetParam(), GetParam()), frame})));
}

TEST(WavHeaderBytes, DoNotDependOnWhatIsSaidOfTheStreams)
{
    SGHeaderInfo header{};
    header.video = {.bVideo = 1, .videoencode = 2, .width = 640, .height = 360, .framerate = 25};
    header.audio = {
        .bAudio = 1, .audioencode = 14, .channels = 2, .sampledepth = 8, .samplerate = 44100};
    header.pre_header_len = 5000;
    header.struct_size = 3;

    SeekingSink told;
    Recorder recorder(kWav, told);
    EXPECT_EQ(recorder.HeaderWith(&header), 0);
    recorder.Input(Support::Audio(SG_ENCODE_AUDIO_G711A, Payload(8), 44100, 2, 8));
    recorder.Input(Support::Audio(SG_ENCODE_AUDIO_G711A, Payload(8), 44100, 2, 8));
    recorder.Tailer();
    EXPECT_TRUE(Same(told.Image(), Join({WavHeader(44, 8), Payload(8)})));

    SeekingSink untold;
    Recorder other(kWav, untold);
    EXPECT_EQ(other.HeaderWith(nullptr), 0);
    EXPECT_TRUE(Same(untold.Image(), WavHeader(0xFFFFFFF8, 0xFFFFFFD4)));
}

TEST(WavSizes, WrapPast4GiB)
{
    // The sink looks at no payload, so a record may claim more bytes than there are.
    Support::DiscardingSink sink;
    Recorder recorder(kWav, sink);
    recorder.Header();
    recorder.Input(Pcm16({1}));
    sink.ForgetBlocks();

    constexpr uint32_t kClaimed = 0x7FFFFFFF;
    Bytes bytes(65536);
    SGFrameInfo record = Support::RecordOf(Pcm16({}));
    record.frame_pointer = bytes.data();
    record.frame_size = kClaimed;
    for (int i = 0; i < 3; ++i)
    {
        ASSERT_EQ(SG_InputFrame(recorder.Handle(), &record), 0);
    }
    recorder.Tailer();
    const auto& blocks = sink.Blocks();
    ASSERT_EQ(blocks.size(), 4u);
    EXPECT_EQ(blocks[0].position, 44);
    EXPECT_EQ(blocks[1].position, int64_t{44} + kClaimed);
    EXPECT_EQ(blocks[2].position, 42);  // 44 + 2 × 0x7FFFFFFF, less 2^32
    EXPECT_EQ(blocks[2].size, 0x7FFFFFFF);
    // 42 + 0x7FFFFFFF bytes by now.
    EXPECT_TRUE(IsBlock(blocks[3], 0, WavHeader(0x80000029 - 8, 0x80000029 - 44)));
}

}  // namespace
}  // namespace Golden
