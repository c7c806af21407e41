// Real streams, read back by another reader and compared frame by frame.
#include "golden/avi/Recording.h"
#include "readers/AviReader.h"
#include "support/Streams.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Frame;

/// Codes and data that the chunks of a recording of @p frames must have.
void ExpectReadBack(const std::vector<Frame>& frames)
{
    Recording recording;
    recording.NoHeader();
    for (const Frame& frame : frames)
        recording.Input(frame);
    recording.Tailer();

    const Readers::AviFile file = Readers::ReadAvi(recording.File());
    ASSERT_EQ(file.chunks.size(), frames.size());
    for (std::size_t at = 0; at < frames.size(); ++at)
    {
        const bool video = frames[at].type == SG_FRAME_TYPE_VIDEO;
        EXPECT_EQ(file.chunks[at].code, video ? "00dc" : "01wb");
        EXPECT_TRUE(Same(file.chunks[at].data, frames[at].bytes)) << at;
    }
    EXPECT_EQ(file.rest, std::vector<std::string>{"idx1"});
    ASSERT_FALSE(file.streams.empty());
    EXPECT_EQ(file.streams[0].type, "vids");
    EXPECT_EQ(file.streams[0].scale, 1u);
    EXPECT_EQ(file.streams[0].rate, 25u);
    EXPECT_EQ(file.streams[0].length, file.totalFrames);
}

TEST(AviReadBack, H264AndSoundInterleaved)
{
    std::vector<Frame> frames;
    const Bytes stream = Support::Media("camera_640x360_25fps_baseline.h264");
    for (const Bytes& unit : Support::AccessUnits(stream))
    {
        frames.push_back(Support::IsIdr(unit) ? Support::H264I(unit) : Support::H264P(unit));
        frames.push_back(Sound(320, static_cast<uint32_t>(frames.size())));
    }
    ExpectReadBack(frames);
}

TEST(AviReadBack, Mpeg4)
{
    std::vector<Frame> frames;
    for (const Bytes& picture : Support::Mpeg4Pictures(Support::Media("cif_352x288_25fps.m4v")))
    {
        frames.push_back(Support::IsMpeg4Intra(picture) ? Support::Mpeg4I(picture)
                                                        : Support::Mpeg4P(picture));
    }
    ExpectReadBack(frames);
}

TEST(AviReadBack, Jpeg)
{
    std::vector<Frame> frames;
    for (const Bytes& picture : Support::JpegPictures(Support::Media("qvga_320x240_12fps.mjpeg")))
    {
        frames.push_back(Support::JpegI(picture));
    }
    ExpectReadBack(frames);
}

}  // namespace
}  // namespace Golden
