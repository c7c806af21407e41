// moov down to the data reference: mvhd, tkhd, mdhd, hdlr, vmhd, smhd, dinf, dref, url.
#include <chrono>
#include <thread>

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
using Support::Msb16;
using Support::Payload;
using Support::ReadMsb32;
using Support::Same;
using Support::Slice;

class MovieHeader : public EveryFlavour
{
};
INSTANTIATE_FLAVOURS(MovieHeader);

TEST_P(MovieHeader, HoldsOnlyMvhdWithoutTracks)
{
    Recording recording(GetParam());
    recording.Header().Tailer();
    EXPECT_TRUE(Same(recording.Movie(), Box(116, "moov", {Mvhd(0, 1)})));
}

TEST_P(MovieHeader, HasOneTrackOfVideoAlone)
{
    Recording recording(GetParam());
    recording.Header().Input(H264I(kIFrame)).Tailer();
    EXPECT_EQ(recording.Types("moov"), "mvhd trak");
    EXPECT_TRUE(Same(recording.MovieBox("mvhd"), Mvhd(3600, 2)));
}

TEST_P(MovieHeader, HasVideoAheadOfAudio)
{
    Recording recording(GetParam());
    recording.Header().Input(H264I(kIFrame)).Input(Aac(Payload(20))).Tailer();
    EXPECT_EQ(recording.Types("moov"), "mvhd trak trak");
    // 1024 samples at 8000 Hz are 11520 units of the movie, more than one picture's 3600.
    EXPECT_TRUE(Same(recording.MovieBox("mvhd"), Mvhd(11520, 3)));
    EXPECT_EQ(recording.Types("moov/trak"), "tkhd mdia");
    EXPECT_EQ(recording.Types("moov/trak/mdia"), "mdhd hdlr minf");
    EXPECT_EQ(recording.Types("moov/trak/mdia/minf"), "vmhd dinf stbl");
    EXPECT_EQ(recording.Types("moov/trak[1]"), "tkhd mdia");
    EXPECT_EQ(recording.Types("moov/trak[1]/mdia"), "mdhd hdlr minf");
    EXPECT_EQ(recording.Types("moov/trak[1]/mdia/minf"), "smhd dinf stbl");
}

TEST_P(MovieHeader, OfTheVideoTrackIsTheStandardsTable)
{
    Recording recording(GetParam());
    recording.Header().Input(H264I(kIFrame).Sized(1280, 720)).Input(H264P(kPFrame)).Tailer();
    const Bytes tkhd = recording.MovieBox("trak/tkhd");
    EXPECT_TRUE(Same(tkhd, TkhdVideo(7200, 1280, 720)));
    EXPECT_TRUE(Same(Slice(tkhd, 84, 8), Support::Hex("05 00 00 00 02 D0 00 00")));
    EXPECT_TRUE(Same(recording.MovieBox("trak/mdia/mdhd"), Mdhd(90000, 7200)));
    EXPECT_TRUE(Same(recording.MovieBox("trak/mdia/hdlr"), HdlrVideo()));
    EXPECT_TRUE(Same(recording.MovieBox("trak/mdia/minf/vmhd"), Vmhd()));
    EXPECT_TRUE(Same(recording.MovieBox("trak/mdia/minf/dinf"), Dinf()));
}

TEST_P(MovieHeader, OfTheAudioTrackIsTheStandardsTable)
{
    Recording recording(GetParam());
    recording.Header().Input(H264I(kIFrame)).Input(Mp2(Payload(40)), 2).Tailer();
    // 2304 samples at 48000 Hz
    EXPECT_TRUE(Same(recording.MovieBox("trak[1]/tkhd"), TkhdAudio(4320)));
    EXPECT_TRUE(Same(recording.MovieBox("trak[1]/mdia/mdhd"), Mdhd(48000, 2304)));
    EXPECT_TRUE(Same(recording.MovieBox("trak[1]/mdia/hdlr"), HdlrAudio()));
    EXPECT_TRUE(Same(recording.MovieBox("trak[1]/mdia/minf/smhd"), Smhd()));
    EXPECT_TRUE(Same(recording.MovieBox("trak[1]/mdia/minf/dinf"), Dinf()));
}

TEST(TrackHeader, KeepsPictureSizeOfTheFirstIFrame)
{
    Recording recording(kMp4);
    recording.Header()
        .Input(H264P(kPFrame).Sized(100, 50))
        .Input(H264I(kIFrame).Sized(320, 240))
        .Input(H264I(kIFrame).Sized(1920, 1080))
        .Tailer();
    EXPECT_TRUE(Same(recording.MovieBox("trak/tkhd"), TkhdVideo(7200, 320, 240)));
    EXPECT_TRUE(Same(Slice(recording.VideoTable("stsd/avc1"), 32, 4),
                     Support::Join({Msb16(320), Msb16(240)})));
}

TEST(TrackHeader, KeepsTheLow16BitsOfThePictureSize)
{
    for (const uint32_t width : {65535u, 65536u, 65537u})
    {
        Recording recording(kMp4);
        recording.Header().Input(JpegI(Payload(9)).Sized(width, 0)).Tailer();
        EXPECT_TRUE(Same(recording.MovieBox("trak/tkhd"), TkhdVideo(3600, width, 0))) << width;
        EXPECT_TRUE(Same(recording.VideoTable("stsd/jpeg"), Jpeg(width, 0))) << width;
    }
}

TEST(TrackHeader, TakesItsTimesWhenTheTrackOpens)
{
    Recording recording(kMp4);
    recording.Header();
    std::this_thread::sleep_for(std::chrono::milliseconds(1100));
    recording.Input(H264I(kIFrame)).Tailer();
    const Support::Block& block = recording.Blocks().at(recording.Blocks().size() - 2);
    ASSERT_TRUE(IsMovie(block));
    const auto boxes = Readers::ReadBoxes(block.data);
    const auto timeOf = [&](const char* path)
    { return ReadMsb32(block.data, Readers::FindBox(boxes, path)->offset + 12); };
    EXPECT_EQ(timeOf("moov/trak/mdia/mdhd"), timeOf("moov/mvhd"));
    EXPECT_GT(timeOf("moov/trak/tkhd"), timeOf("moov/mvhd"));
}

}  // namespace
}  // namespace Golden
