// Real streams, frame for frame through an independent reader.
#include <functional>
#include <string>
#include <vector>

#include "golden/omf/Native.h"
#include "readers/OmfFrames.h"
#include "support/Streams.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Hex;
using Support::Same;

struct VideoStream
{
    const char* name;
    uint32_t encode;
    uint32_t width;
    uint32_t height;
    uint32_t rate;
    std::vector<Bytes> (*cut)(const Bytes&);
    bool (*isKey)(const Bytes&);
    Bytes described;  ///< extension headers ahead of the data check
    uint32_t keyType;
    uint32_t otherType;
};

struct AudioStream
{
    const char* name;
    uint32_t encode;
    uint32_t rate;
    uint32_t channels;
    std::vector<Bytes> (*cut)(const Bytes&);
    Bytes described;
};

bool EveryPicture(const Bytes& /*picture*/)
{
    return true;
}

std::vector<VideoStream> VideoStreams()
{
    return {{"camera_640x360_25fps_baseline.h264",
             SG_ENCODE_VIDEO_HI_H264,
             640,
             360,
             25,
             Support::AccessUnits,
             Support::IsIdr,
             Hex("80 02 50 2D 81 00 02 19"),
             0xFD,
             0xFC},
            {"film_1280x720_30fps_bframes.h264",
             SG_ENCODE_VIDEO_QV_H264,
             1280,
             720,
             30,
             Support::AccessUnits,
             Support::IsIdr,
             Hex("80 02 A0 5A 81 00 08 1E"),
             0xFD,
             0xFC},
            {"cif_352x288_25fps.m4v",
             SG_ENCODE_VIDEO_MPEG4,
             352,
             288,
             25,
             Support::Mpeg4Pictures,
             Support::IsMpeg4Intra,
             Hex("80 02 2C 24 81 00 01 19"),
             0xFD,
             0xFC},
            {"qvga_320x240_12fps.mjpeg",
             SG_ENCODE_VIDEO_JPEG,
             320,
             240,
             12,
             Support::JpegPictures,
             EveryPicture,
             Hex("80 02 28 1E 81 00 05 0C"),
             0xFB,
             0xFB}};
}

std::vector<AudioStream> AudioStreams()
{
    return {{"tone_8000_mono.aac",
             SG_ENCODE_AUDIO_AAC,
             8000,
             1,
             Support::AdtsFrames,
             Hex("83 01 1A 02")},
            {"tone_44100_stereo.aac",
             SG_ENCODE_AUDIO_AAC,
             44100,
             2,
             Support::AdtsFrames,
             Hex("83 02 1A 08")},
            {"tone_16000_mono.mp2",
             SG_ENCODE_AUDIO_MP2,
             16000,
             1,
             Support::Layer2Frames,
             Hex("83 01 1F 04")},
            {"tone_48000_stereo.mp2",
             SG_ENCODE_AUDIO_MP2,
             48000,
             2,
             Support::Layer2Frames,
             Hex("83 02 1F 09")}};
}

Bytes Described(const Readers::OmfFrame& frame)
{
    Bytes bytes;
    for (const Readers::OmfExHeader& header : frame.exHeaders)
    {
        if (header[0] != 0x88) Support::Append(bytes, header);
    }
    return bytes;
}

void Interleave(const VideoStream& video, const AudioStream& audio)
{
    const auto pictures = video.cut(Support::Media(video.name));
    const auto sounds = audio.cut(Support::Media(audio.name));
    ASSERT_FALSE(pictures.empty());
    ASSERT_FALSE(sounds.empty());
    Native native;
    for (std::size_t i = 0; i < std::max(pictures.size(), sounds.size()); ++i)
    {
        if (i < pictures.size())
        {
            SGFrameInfo record = Picture(
                video.isKey(pictures[i]) ? SG_FRAME_SUB_TYPE_I : SG_FRAME_SUB_TYPE_P, video.encode);
            record.width = video.width;
            record.heigth = video.height;
            record.frame_rate = video.rate;
            native.Give(record, pictures[i]);
        }
        if (i < sounds.size())
        {
            SGFrameInfo record = Sound();
            record.frame_encode = audio.encode;
            record.sample_rate = audio.rate;
            record.channels = audio.channels;
            native.Give(record, sounds[i]);
        }
    }
    ASSERT_EQ(native.Calls().Tailer(), SG_ERR_NOERR);

    uint32_t picture = 0;
    uint32_t sound = 0;
    for (const Readers::OmfFrame& frame : Readers::ReadOmf(native.Sink().Image()))
    {
        EXPECT_EQ(frame.date, PackedDate(kDate));
        // Sound follows the stamp of the picture before it.
        const uint32_t counted = frame.type == 0xF0 ? picture : picture + 1;
        EXPECT_EQ(frame.stamp, counted * 1000 / video.rate) << "at " << frame.offset;
        if (frame.type == 0xF0)
        {
            ASSERT_LT(sound, sounds.size());
            EXPECT_TRUE(Same(frame.payload, sounds[sound]));
            EXPECT_TRUE(Same(Described(frame), audio.described));
            EXPECT_EQ(frame.number, ++sound);
            continue;
        }
        ASSERT_LT(picture, pictures.size());
        EXPECT_TRUE(Same(frame.payload, pictures[picture]));
        EXPECT_TRUE(Same(Described(frame), video.described));
        EXPECT_EQ(frame.type, video.isKey(pictures[picture]) ? video.keyType : video.otherType);
        EXPECT_EQ(frame.number, ++picture);
    }
    EXPECT_EQ(picture, pictures.size());
    EXPECT_EQ(sound, sounds.size());
}

TEST(OmfStreams, EveryFrameComesBackAsItWentIn)
{
    for (const VideoStream& video : VideoStreams())
    {
        for (const AudioStream& audio : AudioStreams())
        {
            SCOPED_TRACE(std::string(video.name) + " with " + audio.name);
            Interleave(video, audio);
        }
    }
}

}  // namespace
}  // namespace Golden
