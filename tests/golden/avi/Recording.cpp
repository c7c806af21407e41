#include "golden/avi/Recording.h"

namespace Golden
{

using namespace Orbel::Wrapton;
using Support::Frame;
using Support::Payload;

SGHeaderInfo VideoHeader()
{
    SGHeaderInfo header{};
    header.video = {.bVideo = 1,
                    .videoencode = SG_ENCODE_VIDEO_HI_H264,
                    .width = 640,
                    .height = 360,
                    .framerate = 25};
    header.audio.bAudio = 1;  // with an encoding that has no format tag: no audio stream
    header.audio.audioencode = SG_ENCODE_AUDIO_AAC;
    return header;
}

SGHeaderInfo VideoAndAudioHeader()
{
    SGHeaderInfo header = VideoHeader();
    header.audio = {.bAudio = 1,
                    .audioencode = SG_ENCODE_AUDIO_G711A,
                    .channels = 1,
                    .sampledepth = 8,
                    .samplerate = 8000};
    return header;
}

Frame IFrame(std::size_t size, uint32_t seed)
{
    return Support::H264I(Payload(size, seed));
}

Frame PFrame(std::size_t size, uint32_t seed)
{
    return Support::H264P(Payload(size, seed));
}

Frame BFrame(std::size_t size, uint32_t seed)
{
    return PFrame(size, seed).As(SG_FRAME_SUB_TYPE_B);
}

Frame Sound(std::size_t size, uint32_t seed)
{
    return Support::Audio(SG_ENCODE_AUDIO_G711A, Payload(size, seed), 8000, 1, 8);
}

Avih VideoAvih()
{
    return {.microSecPerFrame = 40000, .streams = 1, .width = 640, .height = 360};
}

Avih VideoAndAudioAvih()
{
    Avih avih = VideoAvih();
    avih.streams = 2;
    return avih;
}

VideoStrl VideoStream()
{
    return {.code = Support::Text("H264"),
            .rate = 25,
            .width = 640,
            .height = 360,
            .sizeImage = 691200};  // 640 * 360 * 3
}

AudioStrl AudioStream()
{
    return {.rate = 8000,
            .width = 640,
            .height = 360,
            .formatTag = 6,
            .channels = 1,
            .samplesPerSec = 8000,
            .avgBytesPerSec = 8000,
            .blockAlign = 1,
            .bitsPerSample = 8};
}

Recording& Recording::Header(SGHeaderInfo header)
{
    EXPECT_EQ(m_recorder.HeaderWith(&header), SG_ERR_NOERR);
    return *this;
}

Recording& Recording::NoHeader()
{
    EXPECT_EQ(m_recorder.HeaderWith(nullptr), SG_ERR_NOERR);
    return *this;
}

Recording& Recording::Input(const Frame& frame, int times)
{
    for (int time = 0; time < times; ++time)
    {
        EXPECT_EQ(m_recorder.Input(frame), SG_ERR_NOERR);
    }
    return *this;
}

Recording& Recording::Tailer()
{
    EXPECT_EQ(m_recorder.Tailer(), SG_ERR_NOERR);
    return *this;
}

Bytes Recording::HeaderList() const
{
    return Support::Slice(File(), 12, 4104);
}

Bytes Recording::Data() const
{
    return Support::Slice(File(), kFirstChunk, File().size() - kFirstChunk);
}

}  // namespace Golden
