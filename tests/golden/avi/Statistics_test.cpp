// What the header list counts.
#include "golden/avi/Recording.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Payload;

TEST(AviStatistics, CountFramesBytesAndLargestFrames)
{
    Recording recording;
    recording.Header(VideoAndAudioHeader());
    recording.Input(IFrame(1001)).Input(PFrame(50)).Input(Sound(160), 3).Tailer();
    Avih avih = VideoAndAudioAvih();
    avih.maxBytesPerSec = 13137;  // 25 * 1051 / 2
    avih.totalFrames = 2;
    avih.suggestedBufferSize = 1001;
    VideoStrl video = VideoStream();
    video.length = 2;
    video.suggestedBufferSize = 1001;
    AudioStrl audio = AudioStream();
    audio.length = 3;
    audio.suggestedBufferSize = 160;
    EXPECT_TRUE(
        Same(recording.HeaderList(), Hdrl({avih.Chunk(), video.List(), audio.List(), Junk(1730)})));
}

TEST(AviStatistics, SuggestedBufferTakesTheLargerOfBothStreams)
{
    Recording recording;
    recording.Header(VideoAndAudioHeader()).Input(Sound(500)).Tailer();
    Avih avih = VideoAndAudioAvih();
    avih.suggestedBufferSize = 500;
    VideoStrl video = VideoStream();
    video.suggestedBufferSize = 0;  // brought up to date although no picture came
    AudioStrl audio = AudioStream();
    audio.length = 1;
    audio.suggestedBufferSize = 500;
    EXPECT_TRUE(
        Same(recording.HeaderList(), Hdrl({avih.Chunk(), video.List(), audio.List(), Junk(1730)})));
}

TEST(AviStatistics, FrameOfAnotherTypeBringsThemUpToDateWithoutCounting)
{
    Recording recording;
    recording.Header(VideoAndAudioHeader()).Input(Support::Ext(Payload(900))).Tailer();
    VideoStrl video = VideoStream();
    video.suggestedBufferSize = 0;
    AudioStrl audio = AudioStream();
    audio.suggestedBufferSize = 0;
    EXPECT_TRUE(Same(recording.HeaderList(),
                     Hdrl({VideoAndAudioAvih().Chunk(), video.List(), audio.List(), Junk(1730)})));
}

TEST(AviStatistics, DroppedPicturesCount)
{
    Recording recording;
    recording.NoHeader().Input(PFrame(30), 4).Tailer();
    // Without a stream there is no rate either.
    const Avih avih{.totalFrames = 4, .suggestedBufferSize = 30};
    EXPECT_TRUE(Same(recording.HeaderList(), Hdrl({avih.Chunk(), Junk(4020)})));
}

TEST(AviStatistics, DroppedSoundCountsAlthoughItHasNoStream)
{
    Recording recording;
    recording.Header(VideoHeader()).Input(Support::Aac(Payload(77))).Tailer();
    Avih avih = VideoAvih();
    avih.suggestedBufferSize = 77;
    VideoStrl video = VideoStream();
    video.suggestedBufferSize = 0;
    EXPECT_TRUE(Same(recording.HeaderList(), Hdrl({avih.Chunk(), video.List(), Junk(2864)})));

    // The stream that a later frame brings has the count of all.
    recording.Input(Sound(5)).Tailer();
    avih.streams = 2;
    AudioStrl audio = AudioStream();
    audio.length = 2;
    audio.suggestedBufferSize = 77;
    EXPECT_TRUE(
        Same(recording.HeaderList(), Hdrl({avih.Chunk(), video.List(), audio.List(), Junk(1730)})));
}

TEST(AviStatistics, PicturesOfEverySubTypeCount)
{
    Recording recording;
    recording.Header(VideoHeader()).Input(IFrame(4)).Input(BFrame(6));
    recording.Input(Support::JpegI(Payload(8)).As(SG_FRAME_SUB_TYPE_JPEG_FRAME));
    recording.Input(PFrame(2).As(SG_FRAME_SUB_TYPE_UNKNOW)).Tailer();
    Avih avih = VideoAvih();
    avih.maxBytesPerSec = 125;  // 25 * 20 / 4
    avih.totalFrames = 4;
    avih.suggestedBufferSize = 8;
    VideoStrl video = VideoStream();
    video.length = 4;
    video.suggestedBufferSize = 8;
    EXPECT_TRUE(Same(recording.HeaderList(), Hdrl({avih.Chunk(), video.List(), Junk(2864)})));
}

TEST(AviStatistics, FramesWithoutBytesCount)
{
    Recording recording;
    recording.Header(VideoHeader()).Input(IFrame(0), 3).Tailer();
    Avih avih = VideoAvih();
    avih.totalFrames = 3;
    VideoStrl video = VideoStream();
    video.length = 3;
    video.suggestedBufferSize = 0;
    EXPECT_TRUE(Same(recording.HeaderList(), Hdrl({avih.Chunk(), video.List(), Junk(2864)})));
}

TEST(AviStatistics, BytesPerSecondWrapAheadOfTheDivision)
{
    SGHeaderInfo header = VideoHeader();
    header.video.framerate = 0x01000000;
    Recording recording;
    recording.Header(header).Input(IFrame(300)).Input(PFrame(257)).Tailer();
    Avih avih = VideoAvih();
    avih.microSecPerFrame = 0;
    avih.maxBytesPerSec = 0x2D000000 / 2;  // 0x1000000 * 557 = 0x2_2D00_0000
    avih.totalFrames = 2;
    avih.suggestedBufferSize = 300;
    EXPECT_TRUE(Same(Support::Slice(recording.HeaderList(), 12, 64), avih.Chunk()));
}

}  // namespace
}  // namespace Golden
