// The index of the first RIFF.
#include "golden/avi/Recording.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Hex;
using Support::Payload;
using Support::Slice;

// The code takes 8 bytes, which pushes flags and offset one field back and the length out: readers
// that go by AVIOLDINDEX take the flags for the offset and the offset for the length.
TEST(AviIdx1, EntryHasCodeZerosFlagsAndOffsetAndNoLength)
{
    Recording recording;
    recording.Header(VideoHeader()).Input(IFrame(3)).Tailer();
    EXPECT_TRUE(Same(recording.Data(),
                     Join({Chunk("00dc", Payload(3)),
                           Hex("69 64 78 31 "        // idx1
                               "10 00 00 00 "        // one entry
                               "30 30 64 63 "        // 00dc
                               "00 00 00 00 "        //
                               "10 00 00 00 "        // AVIIF_KEYFRAME
                               "04 00 00 00 ")})));  // offset of the chunk behind "movi"
}

TEST(AviIdx1, OnlyIFramesAndSoundAreKeyFrames)
{
    Recording recording;
    recording.Header(VideoAndAudioHeader());
    recording.Input(IFrame(2)).Input(PFrame(2)).Input(BFrame(2)).Input(Sound(2));
    recording.Input(IFrame(2).As(SG_FRAME_SUB_TYPE_JPEG_FRAME)).Tailer();
    EXPECT_TRUE(Same(Slice(recording.Data(), 50, 88),
                     Idx1({{"00dc", 16, 4},
                           {"00dc", 0, 14},
                           {"00dc", 0, 24},
                           {"01wb", 16, 34},
                           {"00dc", 0, 44}})));
}

TEST(AviIdx1, StandsEmptyBehindNoChunks)
{
    Recording recording;
    recording.Header(VideoHeader()).Tailer();
    EXPECT_TRUE(Same(recording.Data(), Hex("69 64 78 31 00 00 00 00")));
}

// The buffer of the index starts at 4096 bytes, header included: 255 entries.
TEST(AviIdx1, GrowsAtThe256thChunkWithoutLosingAnEntry)
{
    for (const uint32_t count : {255u, 256u, 257u, 20000u})
    {
        Support::SeekingSink sink;
        Support::Recorder recorder(SG_STREAM_TYPE_AVI, sink);
        SGHeaderInfo header = VideoHeader();
        ASSERT_EQ(recorder.HeaderWith(&header), SG_ERR_NOERR);
        for (uint32_t at = 0; at < count; ++at)
        {
            ASSERT_EQ(recorder.Input(IFrame(2, at)), SG_ERR_NOERR);
        }
        ASSERT_EQ(recorder.Tailer(), SG_ERR_NOERR);

        Bytes index = Support::Join({Support::Text("idx1"), Support::Lsb32(16 * count)});
        for (uint32_t at = 0; at < count; ++at)
        {
            Support::Append(index, Slice(Idx1({{"00dc", 16, 4 + 10 * at}}), 8, 16));
        }
        const std::size_t place = kFirstChunk + 10 * std::size_t{count};
        EXPECT_TRUE(Same(Slice(sink.Image(), place, sink.Image().size() - place), index)) << count;
    }
}

}  // namespace
}  // namespace Golden
