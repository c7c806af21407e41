// The stream lists: codec codes, rates, sizes, and how streams come into being from frames.
#include <array>
#include <utility>

#include "golden/avi/Recording.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Frame;
using Support::Slice;
using Support::Text;
using Support::Zero;

// Places in the file, counted from the layout: avih at 24, the video list at 88 and, behind it, the
// audio list at 1244. In a list strh begins at 12, its fields at 20, and strf at 76.
constexpr std::size_t kMicroSecPerFrame = 24 + 8;
constexpr std::size_t kVideoHandler = 88 + 20 + 4;
constexpr std::size_t kVideoRect = 88 + 76 - 4;
constexpr std::size_t kCompression = 88 + 76 + 24;
constexpr std::size_t kSizeImage = 88 + 76 + 28;
constexpr std::size_t kAudioRate = 1244 + 20 + 24;
constexpr std::size_t kWaveFormat = 1244 + 76 + 8;

uint32_t WordAt(const Bytes& file, std::size_t at)
{
    return file.at(at) | static_cast<uint32_t>(file.at(at + 1)) << 8 |
           static_cast<uint32_t>(file.at(at + 2)) << 16 |
           static_cast<uint32_t>(file.at(at + 3)) << 24;
}

TEST(AviVideoList, CodecCodeIsHandlerAndCompression)
{
    const std::array<std::pair<int32_t, Bytes>, 7> codes = {{
        {SG_ENCODE_VIDEO_MPEG4, Text("XVID")},
        {SG_ENCODE_VIDEO_HI_H264, Text("H264")},
        {SG_ENCODE_VIDEO_JPEG, Text("MJPG")},
        {SG_ENCODE_VIDEO_QV_H264, Text("H264")},
        {SG_ENCODE_VIDEO_STD_H264, Zero(4)},
        {SG_ENCODE_VIDEO_UNKNOWN, Zero(4)},
        {-1, Zero(4)},
    }};
    for (const auto& [encode, code] : codes)
    {
        SGHeaderInfo header = VideoHeader();
        header.video.videoencode = encode;
        Recording recording;
        recording.Header(header);
        EXPECT_TRUE(Same(Slice(recording.File(), kVideoHandler, 4), code)) << encode;
        EXPECT_TRUE(Same(Slice(recording.File(), kCompression, 4), code)) << encode;
    }
}

TEST(AviVideoList, TimePerFrameIsDividedDown)
{
    const std::array<std::pair<int32_t, uint32_t>, 6> cases = {{
        {30, 33333},
        {1, 1000000},
        {1000000, 1},
        {1000001, 0},
        {0, 0},
        {-1, 0},  // 4294967295 frames per second
    }};
    for (const auto& [rate, microseconds] : cases)
    {
        SGHeaderInfo header = VideoHeader();
        header.video.framerate = rate;
        Recording recording;
        recording.Header(header);
        EXPECT_EQ(WordAt(recording.File(), kMicroSecPerFrame), microseconds) << rate;
    }
}

TEST(AviVideoList, RectangleKeepsTheLow16BitsAndTheImageSizeWraps)
{
    SGHeaderInfo header = VideoHeader();
    header.video.width = 0x12345;
    header.video.height = 0x10002;
    Recording recording;
    recording.Header(header);
    EXPECT_TRUE(Same(Slice(recording.File(), kVideoRect, 4),
                     Support::Hex("45 23 "      // right
                                  "02 00 ")));  // bottom
    // 0x12345 * 0x10002 * 24 = 0x1B_4EAE9CF0, of which the low 32 bits are divided by 8.
    EXPECT_EQ(WordAt(recording.File(), kSizeImage), 0x4EAE9CF0u / 8);
}

struct AudioCase
{
    int32_t encode;
    uint32_t tag;
    int32_t sampleRate;
    uint32_t rate;
};

TEST(AviAudioList, RateDependsOnTheFormatTag)
{
    const std::array<AudioCase, 9> cases = {{
        {SG_ENCODE_AUDIO_PCM16, 1, 16000, 32000},
        {SG_ENCODE_AUDIO_PCM16, 1, -1, 0xFFFFFFFE},  // wraps
        {SG_ENCODE_AUDIO_G711A, 6, 16000, 16000},
        {SG_ENCODE_AUDIO_G711A, 6, -1, 0x7FFFFFFF},  // 31 bits
        {SG_ENCODE_AUDIO_G711U, 7, -1, 0x7FFFFFFF},
        {SG_ENCODE_PCM_MULAW, 7, 8000, 8000},
        {SG_ENCODE_MS_ADPCM, 2, 8000, 0},
        {SG_ENCODE_AUDIO_AMR, 0x4201, 8000, 0},
        {SG_ENCODE_AUDIO_G729, 0x44, 8000, 0},
    }};
    for (const AudioCase& one : cases)
    {
        SGHeaderInfo header = VideoAndAudioHeader();
        header.audio.audioencode = one.encode;
        header.audio.samplerate = one.sampleRate;
        Recording recording;
        recording.Header(header);
        EXPECT_EQ(WordAt(recording.File(), kAudioRate), one.rate) << one.encode;
        EXPECT_EQ(WordAt(recording.File(), kWaveFormat) & 0xFFFF, one.tag) << one.encode;
    }
}

TEST(AviAudioList, ChannelsEnterNeitherBytesPerSecondNorAlignment)
{
    SGHeaderInfo header = VideoAndAudioHeader();
    header.audio = {.bAudio = 1,
                    .audioencode = SG_ENCODE_AUDIO_PCM16,
                    .channels = 2,
                    .sampledepth = 16,
                    .samplerate = 44100};
    Recording recording;
    recording.Header(header);
    AudioStrl audio{.rate = 88200,
                    .width = 640,
                    .height = 360,
                    .formatTag = 1,
                    .channels = 2,
                    .samplesPerSec = 44100,
                    .avgBytesPerSec = 88200,
                    .blockAlign = 2,
                    .bitsPerSample = 16};
    EXPECT_TRUE(
        Same(recording.HeaderList(),
             Hdrl({VideoAndAudioAvih().Chunk(), VideoStream().List(), audio.List(), Junk(1730)})));
}

TEST(AviAudioList, BytesPerSecondWrapAheadOfTheDivision)
{
    SGHeaderInfo header = VideoAndAudioHeader();
    header.audio.sampledepth = 0x10000;
    header.audio.samplerate = 0x10008;
    Recording recording;
    recording.Header(header);
    // 0x10000 * 0x10008 = 0x1_0008_0000
    EXPECT_EQ(WordAt(recording.File(), kWaveFormat + 8), 0x00080000u / 8);
}

TEST(AviStreamsFromFrames, FirstIFrameBringsTheVideoList)
{
    Recording recording;
    recording.NoHeader().Input(PFrame(8)).Input(IFrame(10)).Tailer();
    Avih avih = VideoAvih();
    avih.maxBytesPerSec = 225;  // 25 * (8 + 10) / 2
    avih.totalFrames = 2;
    avih.suggestedBufferSize = 10;
    VideoStrl video = VideoStream();
    video.length = 2;
    video.suggestedBufferSize = 10;
    EXPECT_TRUE(Same(recording.HeaderList(), Hdrl({avih.Chunk(), video.List(), Junk(2864)})));
    EXPECT_TRUE(
        Same(recording.Data(), Join({Chunk("00dc", IFrame(10).bytes), Idx1({{"00dc", 16, 4}})})));
}

TEST(AviStreamsFromFrames, JpegOfAnySubTypeBringsTheVideoList)
{
    Recording recording;
    const Frame picture = Support::JpegI(Support::Payload(10)).As(SG_FRAME_SUB_TYPE_P);
    recording.NoHeader().Input(picture).Tailer();
    EXPECT_TRUE(Same(Slice(recording.File(), kVideoHandler, 4), Text("MJPG")));
    EXPECT_TRUE(
        Same(recording.Data(), Join({Chunk("00dc", picture.bytes), Idx1({{"00dc", 0, 4}})})));
}

TEST(AviStreamsFromFrames, SoundAheadOfTheFirstPictureIsDropped)
{
    Recording recording;
    recording.NoHeader().Input(Sound(6)).Input(IFrame(10)).Input(Sound(4)).Tailer();
    Avih avih = VideoAndAudioAvih();
    avih.maxBytesPerSec = 250;
    avih.totalFrames = 1;
    avih.suggestedBufferSize = 10;
    VideoStrl video = VideoStream();
    video.length = 1;
    video.suggestedBufferSize = 10;
    AudioStrl audio = AudioStream();
    audio.length = 2;  // the dropped frame counts
    audio.suggestedBufferSize = 6;
    EXPECT_TRUE(
        Same(recording.HeaderList(), Hdrl({avih.Chunk(), video.List(), audio.List(), Junk(1730)})));
    EXPECT_TRUE(Same(recording.Data(),
                     Join({Chunk("00dc", IFrame(10).bytes),
                           Chunk("01wb", Sound(4).bytes),
                           Idx1({{"00dc", 16, 4}, {"01wb", 16, 22}})})));
}

TEST(AviStreamsFromFrames, AbandonedSoundIsTriedAgainWithTheNextFrame)
{
    Recording recording;
    recording.Header(VideoHeader()).Input(IFrame(10));
    recording.Input(Support::Aac(Support::Payload(7))).Input(Sound(4)).Tailer();
    EXPECT_TRUE(Same(recording.Data(),
                     Join({Chunk("00dc", IFrame(10).bytes),
                           Chunk("01wb", Sound(4).bytes),
                           Idx1({{"00dc", 16, 4}, {"01wb", 16, 22}})})));
    EXPECT_EQ(WordAt(recording.File(), kWaveFormat) & 0xFFFF, 6u);
}

TEST(AviStreamsFromFrames, HeaderRecordSettlesTheStreamWhateverTheFramesSay)
{
    SGHeaderInfo header = VideoHeader();
    header.video.bVideo = 0;
    Recording recording;
    recording.Header(header).Input(IFrame(10)).Tailer();
    EXPECT_TRUE(Same(Slice(recording.File(), kVideoHandler, 4), Zero(4)));
    EXPECT_EQ(WordAt(recording.File(), kMicroSecPerFrame), 0u);
}

TEST(AviStreamsFromFrames, SoundOfAnyEncodingIsStoredInAListWithoutAFormat)
{
    SGHeaderInfo header = VideoHeader();
    header.audio.bAudio = 0;
    Recording recording;
    recording.Header(header).Input(Support::Aac(Support::Payload(7))).Tailer();
    const Bytes stored = Support::Aac(Support::Payload(7)).bytes;
    EXPECT_TRUE(Same(recording.Data(), Join({Chunk("01wb", stored), Idx1({{"01wb", 16, 4}})})));
    EXPECT_TRUE(Same(Slice(recording.File(), kWaveFormat, 18), Zero(18)));
}

TEST(AviStreamsFromFrames, HeaderListIsNotRewrittenAheadOfTheTailer)
{
    Recording recording;
    recording.NoHeader().Input(IFrame(10));
    ASSERT_EQ(recording.Blocks().size(), 4u);
    EXPECT_TRUE(Same(recording.HeaderList(), Hdrl({Avih{}.Chunk(), Junk(4020)})));
}

}  // namespace
}  // namespace Golden
