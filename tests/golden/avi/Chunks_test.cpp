// Data chunks, and frames that become none.
#include <array>
#include <climits>

#include "golden/avi/Recording.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Frame;
using Support::Payload;

TEST(AviChunk, LeavesAsOneBlockBehindTheOneBefore)
{
    Recording recording;
    recording.Header(VideoAndAudioHeader());
    recording.Sink().ForgetBlocks();
    recording.Input(IFrame(5, 1)).Input(Sound(4, 2)).Input(PFrame(1, 3));
    const auto& blocks = recording.Blocks();
    ASSERT_EQ(blocks.size(), 3u);
    EXPECT_TRUE(IsBlockAt(blocks[0], 4128, Chunk("00dc", Payload(5, 1))));
    EXPECT_TRUE(IsBlockAt(blocks[1], 4142, Chunk("01wb", Payload(4, 2))));
    EXPECT_TRUE(IsBlockAt(blocks[2], 4154, Chunk("00dc", Payload(1, 3))));
}

TEST(AviChunk, IsPaddedToAnEvenLengthWithoutCountingThePadding)
{
    const std::array<std::size_t, 9> sizes = {0, 1, 2, 3, 4, 126, 127, 128, 100001};
    for (const std::size_t size : sizes)
    {
        Recording recording;
        recording.Header(VideoHeader()).Input(IFrame(size)).Input(PFrame(2, 9)).Tailer();
        const auto padded = static_cast<uint32_t>(size + size % 2);
        EXPECT_TRUE(Same(recording.Data(),
                         Join({Chunk("00dc", Payload(size)),
                               Chunk("00dc", Payload(2, 9)),
                               Idx1({{"00dc", 16, 4}, {"00dc", 0, 4 + 8 + padded}})})))
            << size;
    }
}

TEST(AviChunk, FramesWithoutDataAreIgnored)
{
    Recording recording;
    recording.Header(VideoAndAudioHeader());
    recording.Sink().ForgetBlocks();
    SGFrameInfo record = Support::RecordOf(IFrame(10));
    EXPECT_EQ(SG_InputFrame(recording.Calls().Handle(), &record), SG_ERR_NOERR);
    record = Support::RecordOf(Sound(10));
    EXPECT_EQ(SG_InputFrame(recording.Calls().Handle(), &record), SG_ERR_NOERR);
    EXPECT_TRUE(recording.Blocks().empty());

    recording.Tailer();
    // Nor do they enter the statistics: the buffer sizes are still those of the creation.
    EXPECT_TRUE(Same(recording.HeaderList(),
                     Hdrl({VideoAndAudioAvih().Chunk(),
                           VideoStream().List(),
                           AudioStream().List(),
                           Junk(1730)})));
}

TEST(AviChunk, FramesOfOtherTypesAreNotStored)
{
    Recording recording;
    recording.Header(VideoAndAudioHeader());
    recording.Sink().ForgetBlocks();
    for (const uint32_t type : {0u, 3u, 4u, UINT32_MAX})
    {
        Frame frame = IFrame(10);
        frame.type = type;
        recording.Input(frame);
    }
    EXPECT_TRUE(recording.Blocks().empty());
}

TEST(AviChunk, PicturesOfEveryEncodingAreStored)
{
    Recording recording;
    recording.Header(VideoHeader());
    recording.Sink().ForgetBlocks();
    for (const uint32_t encode : {0u, 1u, 3u, 12u, 130u, UINT32_MAX})
    {
        recording.Input(Support::Video(encode, SG_FRAME_SUB_TYPE_UNKNOW, Payload(3)));
    }
    EXPECT_EQ(recording.Blocks().size(), 6u);
}

// The frame's bytes are not looked at: a size that no block can hold is refused first.
TEST(AviChunk, SizesWhoseChunkPasses31BitsAreRefusedAndLeaveNoTrace)
{
    Recording recording;
    recording.Header(VideoHeader()).Input(IFrame(10));
    unsigned char byte = 0;
    for (const uint32_t type : {1u, 2u, 3u})
    {
        for (const uint32_t size : {uint32_t{INT_MAX} - 8, uint32_t{INT_MAX}, UINT32_MAX})
        {
            SGFrameInfo record = Support::RecordOf(IFrame(1));
            record.frame_type = type;
            record.frame_pointer = &byte;
            record.frame_size = size;
            EXPECT_EQ(SG_InputFrame(recording.Calls().Handle(), &record), SG_ERR_PARAM_ERR);
        }
    }
    recording.Input(PFrame(4)).Tailer();

    Recording undisturbed;
    undisturbed.Header(VideoHeader()).Input(IFrame(10)).Input(PFrame(4)).Tailer();
    EXPECT_TRUE(Same(recording.File(), undisturbed.File()));
}

TEST(AviChunk, PositionsDoNotFollowWhatTheCallbackAnswers)
{
    Recording whole;
    whole.Header(VideoHeader()).Input(IFrame(101)).Input(PFrame(10)).Tailer();

    for (const int32_t answer : {-1, 0, 7, INT32_MAX})
    {
        Support::ResizingSink sink([answer](std::size_t, int32_t) { return answer; });
        Support::Recorder recorder(SG_STREAM_TYPE_AVI, sink);
        SGHeaderInfo header = VideoHeader();
        EXPECT_EQ(recorder.HeaderWith(&header), SG_ERR_NOERR);
        EXPECT_EQ(recorder.Input(IFrame(101)), SG_ERR_NOERR);
        EXPECT_EQ(recorder.Input(PFrame(10)), SG_ERR_NOERR);
        EXPECT_EQ(recorder.Tailer(), SG_ERR_NOERR);
        ASSERT_EQ(sink.Blocks().size(), whole.Blocks().size());
        for (std::size_t at = 0; at < sink.Blocks().size(); ++at)
        {
            const Block& due = whole.Blocks()[at];
            EXPECT_TRUE(
                IsBlockAt(sink.Blocks()[at], static_cast<uint64_t>(due.position), due.data));
        }
    }
}

}  // namespace
}  // namespace Golden
