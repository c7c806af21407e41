// Which video frames are stored, and how H.264 is converted.
#include "golden/mp4/Recording.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Aac;
using Support::Frame;
using Support::H264I;
using Support::H264P;
using Support::Hex;
using Support::Join;
using Support::JpegI;
using Support::LengthNal;
using Support::Mpeg4I;
using Support::Msb32;
using Support::Nal;
using Support::Payload;
using Support::Same;
using Support::Text;
using Support::Video;

/// What a sample becomes in the file.
Bytes Stored(const Flavour& flavour, const Bytes& sample)
{
    return flavour.noSeek
               ? Join({Msb32(static_cast<uint32_t>(sample.size() + 8)), Text("mdat"), sample})
               : sample;
}

class VideoInput : public EveryFlavour
{
};
INSTANTIATE_FLAVOURS(VideoInput);

TEST_P(VideoInput, IsDroppedUpToTheFirstIFrame)
{
    const Flavour flavour = GetParam();
    Recording recording(flavour);
    recording.Header();
    recording.Sink().ForgetBlocks();
    recording.Input(H264P(kPFrame))
        .Input(H264P(kPFrame).As(SG_FRAME_SUB_TYPE_B))
        .Input(H264P(kIFrame).As(SG_FRAME_SUB_TYPE_UNKNOW));
    EXPECT_TRUE(recording.Blocks().empty());
    recording.Input(H264I(kIFrame)).Input(H264P(kPFrame));
    ASSERT_EQ(recording.Blocks().size(), 2u);
    const uint32_t start = flavour.DataStart();
    EXPECT_TRUE(IsBlock(recording.Blocks()[0], start, Stored(flavour, kISample)));
    EXPECT_TRUE(IsBlock(
        recording.Blocks()[1], start + 27 + flavour.SampleHeader(), Stored(flavour, kPSample)));
    recording.Tailer();
    EXPECT_TRUE(Same(recording.VideoTable("stsz"), Stsz({27, 7})));
}

TEST_P(VideoInput, OfAnEncodingThatTheContainerCannotHoldIsDropped)
{
    Recording recording(GetParam());
    recording.Header();
    recording.Sink().ForgetBlocks();
    for (const uint32_t encode : {0u, 5u, 6u, 7u, 8u, 9u, 11u, 12u, 26u, 35u, 129u, 0xFFFFFFFFu})
    {
        recording.Input(Video(encode, SG_FRAME_SUB_TYPE_I, kIFrame));
    }
    EXPECT_TRUE(recording.Blocks().empty());
    recording.Tailer();
    EXPECT_EQ(recording.Types("moov"), "mvhd");
}

TEST_P(VideoInput, OfAnotherEncodingThanTheTracksIsDropped)
{
    Recording recording(GetParam());
    recording.Header().Input(H264I(kIFrame));
    recording.Sink().ForgetBlocks();
    recording.Input(Video(SG_ENCODE_VIDEO_QV_H264, SG_FRAME_SUB_TYPE_I, kIFrame))
        .Input(Video(SG_ENCODE_VIDEO_QV_H264, SG_FRAME_SUB_TYPE_P, kPFrame))
        .Input(Mpeg4I(Payload(9)))
        .Input(JpegI(Payload(9)))
        .Input(Video(SG_ENCODE_VIDEO_STD_H264, SG_FRAME_SUB_TYPE_I, kIFrame));
    EXPECT_TRUE(recording.Blocks().empty());
    recording.Input(H264P(kPFrame)).Tailer();
    EXPECT_TRUE(Same(recording.VideoTable("stsz"), Stsz({27, 7})));
}

struct Conversion
{
    const char* annexB;
    const char* sample;
};

TEST(H264Conversion, PutsLengthsInPlaceOfStartCodes)
{
    for (const Conversion& c : {
             Conversion{"00 00 01 65 AA BB", "00 00 00 03 65 AA BB"},
             Conversion{"00 00 00 01 65 AA BB", "00 00 00 03 65 AA BB"},
             // Every unit is kept: delimiter, SEI, an unknown type.
             Conversion{"00 00 01 09 F0 00 00 01 06 05 00 00 00 01 1F 07",
                        "00 00 00 02 09 F0 00 00 00 02 06 05 00 00 00 02 1F 07"},
             // Bytes ahead of the first start code go.
             Conversion{"12 34 00 00 01 65 AA", "00 00 00 02 65 AA"},
             // A zero ahead of a 4-byte start code belongs to the unit.
             Conversion{"00 00 01 65 AA 00 00 00 00 01 41", "00 00 00 03 65 AA 00 00 00 00 01 41"},
             // A start code needs a byte behind it to be one.
             Conversion{"00 00 01 65 AA 00 00 01", "00 00 00 05 65 AA 00 00 01"},
             Conversion{"00 00 01 65 AA 00 00 01 41", "00 00 00 02 65 AA 00 00 00 01 41"},
             // Units of no bytes are kept, too.
             Conversion{"00 00 01 00 00 01 65 AA", "00 00 00 00 00 00 00 02 65 AA"},
             Conversion{"00 00 00 01", "00 00 00 00"},
             Conversion{"00 00 01 65", "00 00 00 01 65"},
         })
    {
        Recording recording(kMp4);
        recording.Header();
        recording.Sink().ForgetBlocks();
        recording.Input(H264I(Hex(c.annexB)));
        ASSERT_EQ(recording.Blocks().size(), 1u) << c.annexB;
        EXPECT_TRUE(IsBlock(recording.Blocks()[0], 48, Hex(c.sample))) << c.annexB;
    }
}

TEST(H264Conversion, OfAFrameWithoutUnitsOpensTheTrackAndDropsTheFrame)
{
    for (const char* const annexB :
         {"00", "00 00", "00 00 01", "11 22 33 44 55 66", "00 00 02 65 11", "11 00 00 01"})
    {
        Recording recording(kMp4);
        recording.Header();
        recording.Sink().ForgetBlocks();
        recording.Input(H264I(Hex(annexB)));
        EXPECT_TRUE(recording.Blocks().empty()) << annexB;
        recording.Input(H264P(kPFrame)).Input(Aac(Payload(9))).Tailer();
        EXPECT_EQ(recording.Types("moov"), "mvhd trak trak") << annexB;
        EXPECT_TRUE(Same(recording.VideoTable("stsz"), Stsz({7}))) << annexB;
        EXPECT_TRUE(Same(recording.VideoTable("stss"), Stss({}))) << annexB;
        EXPECT_TRUE(Same(recording.VideoTable("stco"), Stco({48}))) << annexB;
    }
}

TEST(H264Conversion, DropsLaterFramesWithoutUnitsFromTheTables)
{
    Recording recording(kMp4);
    recording.Header().Input(H264I(kIFrame));
    recording.Sink().ForgetBlocks();
    recording.Input(H264P(Payload(50))).Input(H264I({0x65}));
    EXPECT_TRUE(recording.Blocks().empty());
    recording.Input(H264I(kIFrame)).Tailer();
    EXPECT_TRUE(Same(recording.VideoTable("stsz"), Stsz({27, 27})));
    EXPECT_TRUE(Same(recording.VideoTable("stss"), Stss({1, 2})));
    EXPECT_TRUE(Same(recording.VideoTable("stco"), Stco({48, 75})));
}

TEST(VideoTrack, WithoutAnySampleHasEmptyTables)
{
    Recording recording(kMp4);
    recording.Header().Input(H264I({0x65})).Tailer();
    EXPECT_TRUE(Same(recording.MovieBox("mvhd"), Mvhd(0, 2)));
    EXPECT_TRUE(Same(recording.VideoTable("stts"), Stts(0, 3600)));
    EXPECT_TRUE(Same(recording.VideoTable("stss"), Stss({})));
    EXPECT_TRUE(Same(recording.VideoTable("stsz"), Stsz({})));
    EXPECT_TRUE(Same(recording.VideoTable("stco"), Stco({})));
}

}  // namespace
}  // namespace Golden
