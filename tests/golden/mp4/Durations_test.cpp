// Durations in mdhd (media units), tkhd and mvhd (90000 per second, single precision).
#include "golden/mp4/Recording.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Aac;
using Support::H264I;
using Support::H264P;
using Support::JpegI;
using Support::Mp2;
using Support::Payload;
using Support::Same;

/// A recording of one I frame and P frames up to @p count at @p rate.
void RecordVideo(Recording& recording, uint32_t rate, int count)
{
    recording.Header()
        .Input(H264I(kIFrame).AtRate(rate))
        .Input(H264P(kPFrame).AtRate(rate), count - 1)
        .Tailer();
}

void ExpectVideo(const Recording& recording, uint32_t media, uint32_t movie)
{
    EXPECT_TRUE(Same(recording.MovieBox("trak/mdia/mdhd"), Mdhd(90000, media)));
    EXPECT_TRUE(Same(recording.MovieBox("trak/tkhd"), TkhdVideo(movie, 640, 360)));
    EXPECT_TRUE(Same(recording.MovieBox("mvhd"), Mvhd(movie, 2)));
}

void ExpectAudio(const Recording& recording, uint32_t rate, uint32_t media, uint32_t movie)
{
    EXPECT_TRUE(Same(recording.MovieBox("trak[1]/mdia/mdhd"), Mdhd(rate, media)));
    EXPECT_TRUE(Same(recording.MovieBox("trak[1]/tkhd"), TkhdAudio(movie)));
}

class Durations : public EveryFlavour
{
};
INSTANTIATE_FLAVOURS(Durations);

TEST_P(Durations, Of250PicturesAt25PerSecondAreTenSeconds)
{
    Recording recording(GetParam());
    RecordVideo(recording, 25, 250);
    ExpectVideo(recording, 900000, 900000);
}

TEST_P(Durations, Of100AacFramesAt8000HzAre102400Samples)
{
    Recording recording(GetParam());
    recording.Header().Input(H264I(kIFrame)).Input(Aac(Payload(9)), 100).Tailer();
    ExpectAudio(recording, 8000, 102400, 1152000);
    EXPECT_TRUE(Same(recording.MovieBox("mvhd"), Mvhd(1152000, 3)));
}

TEST(MovieDuration, IsThatOfTheLongestTrack)
{
    Recording video(kMp4);
    video.Header().Input(H264I(kIFrame), 4).Input(Aac(Payload(9))).Tailer();
    EXPECT_TRUE(Same(video.MovieBox("mvhd"), Mvhd(14400, 3)));
    Recording audio(kMp4);
    audio.Header().Input(H264I(kIFrame), 3).Input(Aac(Payload(9))).Tailer();
    EXPECT_TRUE(Same(audio.MovieBox("mvhd"), Mvhd(11520, 3)));
}

TEST(SinglePrecision, ShowsFrom53PicturesAt25PerSecondOn)
{
    Recording before(kMp4);
    RecordVideo(before, 25, 52);
    ExpectVideo(before, 187200, 187200);
    Recording at(kMp4);
    RecordVideo(at, 25, 53);
    ExpectVideo(at, 190800, 190799);
}

TEST(SinglePrecision, ShowsAt39PicturesAt30PerSecond)
{
    Recording recording(kMp4);
    RecordVideo(recording, 30, 39);
    ExpectVideo(recording, 117000, 116999);
}

TEST(SinglePrecision, RoundsUpToo)
{
    // 8949 * 7500 needs 27 bits; of its quotient and product 24 are kept each time.
    Recording recording(kMp4);
    RecordVideo(recording, 12, 8949);
    ExpectVideo(recording, 67117500, 67117504);
}

TEST(SinglePrecision, HoldsForTheProductToo)
{
    // With the product in double precision these would be 420048 and 11531520.
    Recording at44100(kMp4);
    at44100.Header().Input(H264I(kIFrame)).Input(Aac(Payload(9), 44100, 2), 201).Tailer();
    ExpectAudio(at44100, 44100, 205824, 420049);
    Recording at8000(kMp4);
    at8000.Header().Input(H264I(kIFrame)).Input(Aac(Payload(9)), 1001).Tailer();
    ExpectAudio(at8000, 8000, 1025024, 11531521);
}

TEST(SinglePrecision, CutsTheFractionOff)
{
    // 1024 samples at 44100 Hz are 2089.8 units.
    Recording recording(kMp4);
    recording.Header().Input(H264I(kIFrame)).Input(Aac(Payload(9), 44100, 2)).Tailer();
    ExpectAudio(recording, 44100, 1024, 2089);
}

TEST(LongRecording, HasItsMovieDurationsHeldAt32Bits)
{
    // One AAC frame at 1 Hz lasts 1024 s: 46 frames fit 32 bits at 90000 units, 47 do not.
    struct Case
    {
        int count;
        uint32_t media;
        uint32_t movie;
    };
    for (const Case& c : {Case{45, 46080, 4147200000},
                          Case{46, 47104, 4239360000},
                          Case{47, 48128, 0xFFFFFFFF},
                          Case{48, 49152, 0xFFFFFFFF}})
    {
        Recording recording(kMp4);
        recording.Header().Input(H264I(kIFrame)).Input(Aac(Payload(9), 1, 1), c.count).Tailer();
        ExpectAudio(recording, 1, c.media, c.movie);
        EXPECT_TRUE(Same(recording.MovieBox("mvhd"), Mvhd(c.movie, 3)));
    }
}

TEST(LongRecording, OfVideoWrapsItsTracksButNotTheMovie)
{
    // 47721 s are the last that 32 bits hold; the movie keeps the largest duration it ever had.
    Recording recording(kMp4);
    recording.Header().Input(JpegI({0x55}).AtRate(1), 47721).Input(JpegI({0x55})).Tailer();
    EXPECT_TRUE(Same(recording.MovieBox("trak/mdia/mdhd"), Mdhd(90000, 12704)));
    EXPECT_TRUE(Same(recording.MovieBox("trak/tkhd"), TkhdVideo(12704, 640, 360)));
    EXPECT_TRUE(Same(recording.MovieBox("mvhd"), Mvhd(4294889984, 2)));
}

TEST(SampleRateZero, LeavesTheTrackWithoutMovieDuration)
{
    Recording recording(kMp4);
    recording.Header().Input(H264I(kIFrame)).Input(Mp2(Payload(9), 0, 2), 3).Tailer();
    ExpectAudio(recording, 0, 3456, 0);
    EXPECT_TRUE(Same(recording.MovieBox("mvhd"), Mvhd(3600, 3)));
}

TEST(PictureRate, IsThatOfTheFirstIFrame)
{
    Recording recording(kMp4);
    recording.Header()
        .Input(H264P(kPFrame).AtRate(50))
        .Input(H264I(kIFrame).AtRate(10))
        .Input(H264I(kIFrame).AtRate(30))
        .Tailer();
    ExpectVideo(recording, 18000, 18000);
}

TEST(PictureRate, Above90000GivesPicturesWithoutDuration)
{
    Recording recording(kMp4);
    RecordVideo(recording, 90001, 5);
    ExpectVideo(recording, 0, 0);
}

}  // namespace
}  // namespace Golden
