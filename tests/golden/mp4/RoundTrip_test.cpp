// Real streams in, read back by the reader and compared sample by sample.
#include <algorithm>
#include <array>
#include <tuple>

#include "golden/mp4/Recording.h"
#include "readers/Mp4Reader.h"
#include "support/Streams.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Frame;

/// A frame to hand in and the sample that must come back.
struct Item
{
    Frame frame;
    Bytes sample;
    bool sync = true;
};

struct Stream
{
    std::vector<Item> items;
    uint32_t timescale = 0;
    uint32_t duration = 0;  ///< of a sample
    std::string entry;
};

Bytes WithLengths(const Bytes& accessUnit)
{
    Bytes sample;
    for (const Bytes& unit : Support::NalUnits(accessUnit))
    {
        Support::Append(sample, Support::LengthNal(unit));
    }
    return sample;
}

Stream H264Stream(const char* file, uint32_t width, uint32_t height, uint32_t rate)
{
    Stream stream{{}, 90000, 90000 / rate, "avc1"};
    for (const Bytes& unit : Support::AccessUnits(Support::Media(file)))
    {
        const bool sync = Support::IsIdr(unit);
        const Frame frame = (sync ? Support::H264I(unit) : Support::H264P(unit));
        stream.items.push_back({frame.Sized(width, height).AtRate(rate), WithLengths(unit), sync});
    }
    return stream;
}

Stream JpegStream()
{
    Stream stream{{}, 90000, 7500, "jpeg"};
    for (const Bytes& picture : Support::JpegPictures(Support::Media("qvga_320x240_12fps.mjpeg")))
    {
        stream.items.push_back({Support::JpegI(picture).Sized(320, 240).AtRate(12), picture, true});
    }
    return stream;
}

/// Bytes ahead of the picture's own start code, which an I frame loses at its end.
std::size_t HeaderBytes(const Bytes& picture)
{
    static constexpr std::array<unsigned char, 4> kVopStart = {0, 0, 1, 0xB6};
    return static_cast<std::size_t>(
        std::search(picture.begin(), picture.end(), kVopStart.begin(), kVopStart.end()) -
        picture.begin());
}

Stream Mpeg4Stream()
{
    Stream stream{{}, 90000, 3600, "mp4v"};
    for (const Bytes& picture : Support::Mpeg4Pictures(Support::Media("cif_352x288_25fps.m4v")))
    {
        const bool sync = Support::IsMpeg4Intra(picture);
        const Frame frame = (sync ? Support::Mpeg4I(picture) : Support::Mpeg4P(picture));
        const std::size_t lost = sync ? HeaderBytes(picture) : 0;
        stream.items.push_back({frame.Sized(352, 288).AtRate(25),
                                Support::Slice(picture, 0, picture.size() - lost),
                                sync});
    }
    return stream;
}

Stream AacStream(const char* file, uint32_t rate, uint32_t channels)
{
    constexpr std::size_t kAdtsHeader = 7;
    Stream stream{{}, rate, 1024, "mp4a"};
    for (const Bytes& frame : Support::AdtsFrames(Support::Media(file)))
    {
        stream.items.push_back({Support::Aac(frame, rate, channels),
                                Support::Slice(frame, kAdtsHeader, frame.size() - kAdtsHeader),
                                true});
    }
    return stream;
}

Stream Layer2Stream(const char* file, uint32_t rate, uint32_t channels)
{
    Stream stream{{}, rate, 1152, "mp4a"};
    for (const Bytes& frame : Support::Layer2Frames(Support::Media(file)))
    {
        stream.items.push_back({Support::Mp2(frame, rate, channels), frame, true});
    }
    return stream;
}

/// Hands both streams in, interleaved by time, video first.
void Interleave(Recording& recording, const Stream& video, const Stream& audio)
{
    std::size_t v = 0;
    std::size_t a = 0;
    while (v < video.items.size() || a < audio.items.size())
    {
        const uint64_t videoTime = v * uint64_t{video.duration} * audio.timescale;
        const uint64_t audioTime = a * uint64_t{audio.duration} * video.timescale;
        const bool takeVideo =
            a == audio.items.size() || (v < video.items.size() && videoTime <= audioTime);
        recording.Input(takeVideo ? video.items[v++].frame : audio.items[a++].frame);
    }
}

/// The file without the closing block of the no-seek flavour, which lands on its beginning.
Bytes Playable(const Flavour& flavour, Recording& recording)
{
    Bytes file = recording.Sink().Image();
    if (flavour.noSeek)
    {
        const Bytes& first = recording.Blocks().front().data;
        std::copy(first.begin(), first.end(), file.begin());
    }
    return file;
}

void ExpectTrack(const Readers::Mp4Track& track, const Stream& stream, const Bytes& file)
{
    EXPECT_EQ(track.entry, stream.entry);
    EXPECT_EQ(track.timescale, stream.timescale);
    EXPECT_EQ(track.mediaDuration, stream.items.size() * stream.duration);
    ASSERT_EQ(track.samples.size(), stream.items.size());
    for (std::size_t i = 0; i < stream.items.size(); ++i)
    {
        const Readers::Mp4Sample& sample = track.samples[i];
        const Item& item = stream.items[i];
        ASSERT_TRUE(Support::Same(Support::Slice(file, sample.offset, sample.size), item.sample))
            << "sample " << i;
        ASSERT_EQ(sample.sync, item.sync) << i;
        ASSERT_EQ(sample.duration, stream.duration) << i;
    }
}

void ExpectStreams(const Flavour& flavour,
                   uint32_t reserve,
                   const Stream& video,
                   const Stream& audio)
{
    Recording recording(flavour);
    recording.Header(reserve);
    Interleave(recording, video, audio);
    recording.Tailer();
    const Bytes file = Playable(flavour, recording);
    const Readers::Mp4Movie movie = Readers::ReadMp4(file);

    EXPECT_EQ(movie.brand, flavour.quickTime ? "qt  " : "isom");
    EXPECT_EQ(movie.timescale, 90000u);
    EXPECT_EQ(movie.nextTrack, audio.items.empty() ? 2u : 3u);
    if (!flavour.noSeek)
    {
        EXPECT_EQ(Readers::TypesOf(movie.boxes),
                  reserve == 0 ? "ftyp free mdat moov" : "ftyp free moov mdat");
    }
    ASSERT_EQ(movie.tracks.size(), audio.items.empty() ? 1u : 2u);
    EXPECT_EQ(movie.tracks[0].id, 1u);
    EXPECT_EQ(movie.tracks[0].handler, "vide");
    EXPECT_EQ(movie.tracks[0].width, video.items[0].frame.width);
    EXPECT_EQ(movie.tracks[0].height, video.items[0].frame.height);
    ExpectTrack(movie.tracks[0], video, file);
    if (video.entry == "avc1")
    {
        ASSERT_TRUE(movie.tracks[0].avc.has_value());
        EXPECT_EQ(movie.tracks[0].avc->lengthSize, 4u);
        const std::vector<Bytes> units = Support::NalUnits(video.items[0].frame.bytes);
        EXPECT_EQ(movie.tracks[0].avc->sps, std::vector<Bytes>{units.at(0)});
        EXPECT_EQ(movie.tracks[0].avc->pps, std::vector<Bytes>{units.at(1)});
    }
    if (video.entry == "mp4v")
    {
        ASSERT_TRUE(movie.tracks[0].esds.has_value());
        // Each I frame brings its headers anew; the last ones stay.
        const auto last = std::find_if(
            video.items.rbegin(), video.items.rend(), [](const Item& item) { return item.sync; });
        const Bytes& picture = last->frame.bytes;
        EXPECT_EQ(movie.tracks[0].esds->objectType, 0x20u);
        EXPECT_TRUE(Support::Same(movie.tracks[0].esds->specificInfo,
                                  Support::Slice(picture, 0, HeaderBytes(picture))));
    }
    if (audio.items.empty())
    {
        return;
    }
    EXPECT_EQ(movie.tracks[1].id, 2u);
    EXPECT_EQ(movie.tracks[1].handler, "soun");
    EXPECT_EQ(movie.tracks[1].sampleRate, audio.timescale);
    EXPECT_EQ(movie.tracks[1].channels, audio.items[0].frame.channels);
    ASSERT_TRUE(movie.tracks[1].esds.has_value());
    EXPECT_EQ(movie.tracks[1].esds->objectType, audio.duration == 1024 ? 0x40u : 0x69u);
    ExpectTrack(movie.tracks[1], audio, file);
}

/// The five flavours, without a reserve and with one that is large enough.
class RoundTrip : public ::testing::TestWithParam<std::tuple<Flavour, uint32_t>>
{
protected:
    static void Expect(const Stream& video, const Stream& audio)
    {
        const auto& [flavour, reserve] = GetParam();
        ExpectStreams(flavour, reserve, video, audio);
    }
};
INSTANTIATE_TEST_SUITE_P(All,
                         RoundTrip,
                         ::testing::Combine(::testing::ValuesIn(kFlavours),
                                            ::testing::Values(0u, 100000u)),
                         [](const auto& test)
                         {
                             return std::string(std::get<0>(test.param).name) +
                                    (std::get<1>(test.param) == 0 ? "" : "Reserved");
                         });

TEST_P(RoundTrip, OfBaselineVideoAndAac)
{
    const Stream video = H264Stream("camera_640x360_25fps_baseline.h264", 640, 360, 25);
    Expect(video, AacStream("tone_8000_mono.aac", 8000, 1));
    Expect(video, {});
}

TEST_P(RoundTrip, OfVideoWithBFramesAndLayerII)
{
    Expect(H264Stream("film_1280x720_30fps_bframes.h264", 1280, 720, 30),
           Layer2Stream("tone_48000_stereo.mp2", 48000, 2));
}

TEST_P(RoundTrip, OfMpeg4VideoAndAac)
{
    const Stream video = Mpeg4Stream();
    Expect(video, AacStream("tone_44100_stereo.aac", 44100, 2));
    Expect(video, {});
}

TEST_P(RoundTrip, OfMotionJpegAndLayerII)
{
    const Stream video = JpegStream();
    Expect(video, Layer2Stream("tone_16000_mono.mp2", 16000, 1));
    Expect(video, {});
}

}  // namespace
}  // namespace Golden
