// Calls out of order.
#include "golden/avi/Recording.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Payload;
using Support::Slice;

TEST(AviCallOrder, TailerWithoutAHeaderEmitsNothing)
{
    Recording recording;
    recording.Tailer().Tailer();
    EXPECT_TRUE(recording.Blocks().empty());
}

// Kept: nothing but the storing of a frame needs the header.
TEST(AviCallOrder, FramesAheadOfTheHeaderAreNotStoredButBringTheirStreamsAndCount)
{
    Recording recording;
    recording.Input(PFrame(7)).Input(Sound(3)).Input(IFrame(100)).Input(Sound(50));
    EXPECT_TRUE(recording.Blocks().empty());
    recording.Tailer();
    EXPECT_TRUE(recording.Blocks().empty());

    recording.NoHeader();
    Avih avih = VideoAndAudioAvih();
    avih.maxBytesPerSec = 1337;  // 25 * 107 / 2
    avih.totalFrames = 2;
    avih.suggestedBufferSize = 100;
    VideoStrl video = VideoStream();
    video.length = 2;
    video.suggestedBufferSize = 100;
    AudioStrl audio = AudioStream();
    audio.length = 2;
    audio.suggestedBufferSize = 50;
    const auto& blocks = recording.Blocks();
    ASSERT_EQ(blocks.size(), 3u);
    EXPECT_TRUE(
        IsBlockAt(blocks[1], 12, Hdrl({avih.Chunk(), video.List(), audio.List(), Junk(1730)})));

    // The first chunk behind the header is the first of the file.
    recording.Input(PFrame(10)).Tailer();
    EXPECT_TRUE(Same(recording.Data(), Join({Chunk("00dc", Payload(10)), Idx1({{"00dc", 0, 4}})})));
}

TEST(AviCallOrder, HeaderRecordReplacesTheStreamsOfEarlierFramesWithoutCountingThemTwice)
{
    Recording recording;
    recording.Input(IFrame(100).Sized(16, 8).AtRate(5)).Input(Sound(50));
    recording.Header(VideoAndAudioHeader());
    Avih avih = VideoAndAudioAvih();
    avih.maxBytesPerSec = 500;  // of the frame's own rate
    avih.totalFrames = 1;
    avih.suggestedBufferSize = 100;
    VideoStrl video = VideoStream();
    video.length = 1;
    AudioStrl audio = AudioStream();
    audio.length = 1;
    EXPECT_TRUE(
        Same(recording.HeaderList(), Hdrl({avih.Chunk(), video.List(), audio.List(), Junk(1730)})));
}

// Kept: the time per frame stays, since a rate of 0 gives none.
TEST(AviCallOrder, HeaderRecordWithoutFlagsZeroesTheStreamsOfEarlierFrames)
{
    Recording recording;
    recording.Input(IFrame(100).Sized(16, 8).AtRate(5)).Input(Sound(50));
    recording.Header(SGHeaderInfo{});
    Avih avih;
    avih.microSecPerFrame = 200000;
    avih.maxBytesPerSec = 500;  // of the frame's own rate, until the next frame
    avih.totalFrames = 1;
    avih.streams = 2;
    avih.suggestedBufferSize = 100;
    VideoStrl video;
    video.length = 1;
    AudioStrl audio;
    audio.length = 1;
    EXPECT_TRUE(
        Same(recording.HeaderList(), Hdrl({avih.Chunk(), video.List(), audio.List(), Junk(1730)})));
}

TEST(AviCallOrder, SecondTailerRewritesTheHeadersButNotTheIndex)
{
    Recording recording;
    recording.Header(VideoHeader()).Input(IFrame(3)).Tailer();
    const Bytes file = recording.File();
    recording.Sink().ForgetBlocks();
    recording.Tailer();
    const auto& blocks = recording.Blocks();
    ASSERT_EQ(blocks.size(), 3u);
    EXPECT_TRUE(IsBlockAt(blocks[0], 0, Slice(file, 0, 12)));
    EXPECT_TRUE(IsBlockAt(blocks[1], 4116, Slice(file, 4116, 12)));
    EXPECT_TRUE(IsBlockAt(blocks[2], 12, Slice(file, 12, 4104)));
}

TEST(AviCallOrder, FramesBehindTheTailerStandBehindTheIndexWithoutEnteringIt)
{
    Recording recording;
    recording.Header(VideoHeader()).Input(IFrame(4)).Tailer();
    recording.Sink().ForgetBlocks();
    recording.Input(PFrame(6)).Tailer();
    const auto& blocks = recording.Blocks();
    ASSERT_EQ(blocks.size(), 4u);
    // The first chunk has 12 bytes, the index 24.
    EXPECT_TRUE(IsBlockAt(blocks[0], 4164, Chunk("00dc", Payload(6))));
    EXPECT_TRUE(IsBlockAt(blocks[1], 0, RiffHeader(4128 + 12 + 24 + 14, "AVI ")));
    EXPECT_TRUE(IsBlockAt(blocks[2], 4116, MoviHeader(4 + 12 + 14)));
    EXPECT_TRUE(Same(Slice(recording.Data(), 12, 24), Idx1({{"00dc", 16, 4}})));
}

TEST(AviCallOrder, HandleWithoutACallbackRunsAndDiscards)
{
    void* const handle = SG_CreateHandle(SG_STREAM_TYPE_AVI, nullptr);
    ASSERT_NE(handle, nullptr);
    SGHeaderInfo header = VideoHeader();
    EXPECT_EQ(SG_CreateHeader(handle, &header), SG_ERR_NOERR);
    Bytes bytes = Payload(10);
    SGFrameInfo record = Support::RecordOf(IFrame(10));
    record.frame_pointer = bytes.data();
    EXPECT_EQ(SG_InputFrame(handle, &record), SG_ERR_NOERR);
    EXPECT_EQ(SG_CreateTailer(handle, nullptr), SG_ERR_NOERR);
    EXPECT_EQ(SG_DestroyHandle(handle), SG_ERR_NOERR);
}

TEST(AviCallOrder, BackupIsEmpty)
{
    Recording recording;
    recording.Header(VideoHeader()).Input(IFrame(10));
    unsigned char byte = 0;
    SGOutputData backup{};
    backup.data_pointer = &byte;
    backup.data_size = 1;
    EXPECT_EQ(recording.Calls().Backup(backup), SG_ERR_NOERR);
    EXPECT_EQ(backup.data_pointer, nullptr);
    EXPECT_EQ(backup.data_size, 0);
}

}  // namespace
}  // namespace Golden
