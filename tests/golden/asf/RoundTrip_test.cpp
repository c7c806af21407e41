// Real streams, packaged and read back by a reader of the format.
#include "golden/asf/Pieces.h"
#include "readers/AsfReader.h"
#include "support/Streams.h"

namespace GoldenAsf
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Payload;

std::vector<Support::Frame> H264Frames()
{
    std::vector<Support::Frame> frames;
    for (const Bytes& unit :
         Support::AccessUnits(Support::Media("camera_640x360_25fps_baseline.h264")))
    {
        frames.push_back(Support::IsIdr(unit) ? Key(unit) : Inter(unit));
    }
    return frames;
}

std::vector<Support::Frame> Mpeg4Frames()
{
    std::vector<Support::Frame> frames;
    for (const Bytes& picture : Support::Mpeg4Pictures(Support::Media("cif_352x288_25fps.m4v")))
    {
        frames.push_back(Support::IsMpeg4Intra(picture) ? Support::Mpeg4I(picture)
                                                        : Support::Mpeg4P(picture));
    }
    return frames;
}

std::vector<Support::Frame> JpegFrames()
{
    std::vector<Support::Frame> frames;
    for (const Bytes& picture : Support::JpegPictures(Support::Media("qvga_320x240_12fps.mjpeg")))
    {
        frames.push_back(Support::JpegI(picture));
    }
    return frames;
}

/// The frame as the packets hold it: a key frame of MPEG-4 begins at its picture.
Bytes PassedOn(const Support::Frame& frame)
{
    if (frame.encode != SG_ENCODE_VIDEO_MPEG4 || frame.subType != SG_FRAME_SUB_TYPE_I)
    {
        return frame.bytes;
    }
    const Bytes vop = Support::Hex("00 00 01 B6");
    const auto at = std::search(frame.bytes.begin(), frame.bytes.end(), vop.begin(), vop.end());
    return {at, frame.bytes.end()};
}

const Bytes kSound = Payload(640);

/// Packages the frames with 640 bytes of PCM behind each, and checks what comes back.
Readers::AsfFile RoundTrip(uint32_t type, const std::vector<Support::Frame>& frames)
{
    Recording recording(type);
    for (const Support::Frame& frame : frames)
    {
        recording.Input(frame).Input(Pcm16(kSound));
    }
    recording.Tailer();
    const Bytes bytes = recording.File();
    Readers::AsfFile file = Readers::ReadAsf(bytes);

    EXPECT_EQ(file.frames.size(), 2 * frames.size());
    for (std::size_t i = 0; i < frames.size() && 2 * i + 1 < file.frames.size(); ++i)
    {
        const Readers::AsfFrame& video = file.frames[2 * i];
        EXPECT_EQ(video.stream, 1u);
        EXPECT_EQ(video.number, i % 256);
        EXPECT_EQ(video.time, 40 * i);
        EXPECT_EQ(video.key, frames[i].subType == SG_FRAME_SUB_TYPE_I);
        EXPECT_TRUE(Support::Same(video.bytes, PassedOn(frames[i])));
        const Readers::AsfFrame& audio = file.frames[2 * i + 1];
        EXPECT_EQ(audio.stream, 2u);
        EXPECT_EQ(audio.time, 40 * i);
        EXPECT_TRUE(Support::Same(audio.bytes, kSound));
    }
    return file;
}

/// The entry of second @p second is the last key frame up to the first frame behind it.
void ExpectSeekable(const Readers::AsfFile& file)
{
    ASSERT_TRUE(file.hasIndex);
    ASSERT_FALSE(file.index.empty());
    for (std::size_t second = 0; second < file.index.size(); ++second)
    {
        const Readers::AsfFrame* last = nullptr;
        for (const Readers::AsfFrame& frame : file.frames)
        {
            if (frame.stream == 1 && frame.key && frame.time <= 1000 * second + 40) last = &frame;
        }
        ASSERT_NE(last, nullptr);
        EXPECT_EQ(file.index[second], std::make_pair(last->firstPacket, last->packets)) << second;
    }
}

TEST(AsfRoundTrip, GivesH264Back)
{
    const auto frames = H264Frames();
    const Readers::AsfFile file = RoundTrip(SG_STREAM_TYPE_ASF, frames);
    ASSERT_EQ(file.streams.size(), 2u);
    EXPECT_EQ(file.streams[0].compression, "H264");
    EXPECT_EQ(file.streams[0].width, 640u);
    EXPECT_EQ(file.streams[0].height, 360u);
    EXPECT_EQ(file.streams[1].tag, 1u);
    EXPECT_EQ(file.streams[1].bits, 16u);
    EXPECT_EQ(file.duration, (frames.size() - 1) * 400000);
    EXPECT_EQ(file.index.size(), (frames.size() - 1) * 40 / 1000 + 1);
    ExpectSeekable(file);
}

TEST(AsfRoundTrip, GivesMpeg4Back)
{
    const auto frames = Mpeg4Frames();
    const Readers::AsfFile file = RoundTrip(SG_STREAM_TYPE_ASF, frames);
    EXPECT_EQ(file.streams.at(0).compression, "M4S2");
    ASSERT_GE(file.streams[0].config.size(), 4u);
    EXPECT_TRUE(
        Support::Same(Support::Slice(file.streams[0].config, 0, 4), Support::Hex("00 00 01 00")));
    ExpectSeekable(file);
}

TEST(AsfRoundTrip, GivesMotionJpegBack)
{
    const Readers::AsfFile file = RoundTrip(SG_STREAM_TYPE_ASF, JpegFrames());
    EXPECT_EQ(file.streams.at(0).compression, "MJPG");
    EXPECT_EQ(file.index.size(), 1u);
}

TEST(AsfRoundTrip, GivesTheStreamVariantBack)
{
    const Readers::AsfFile file = RoundTrip(SG_STREAM_TYPE_STREAM_ASF, H264Frames());
    EXPECT_TRUE(file.broadcast);
    EXPECT_FALSE(file.hasIndex);
    ASSERT_EQ(file.streams.size(), 2u);
    EXPECT_EQ(file.streams[1].tag, 0u);
}

}  // namespace
}  // namespace GoldenAsf
