// The same frames through the components and straight into the packagers: the same blocks.
#include <cstdlib>
#include <functional>
#include <memory>

#include "PackageImpl.h"
#include "mp4packet/Mp4Packet.h"
#include "support/Components.h"
#include "support/Recorder.h"
#include "support/Streams.h"
#include "support/TemporaryDirectory.h"
#include "tool/Clock.h"
#include "tspacket/TsPacket.h"

namespace Orbel::Wrapton
{
namespace
{

using namespace Support;

// 2026-11-21 08:09:10 as keys, in seconds and as a packed word.
const FrameAttributes kDate = {
    {"year", 26}, {"month", 11}, {"day", 21}, {"hour", 8}, {"minute", 9}, {"second", 10}};
constexpr uint32_t kDateSeconds = 1795248550;
constexpr uint32_t kDatePacked = 26u << 26 | 11u << 22 | 21u << 17 | 8u << 12 | 9u << 6 | 10;

enum class Sound
{
    kNone,
    kAac,
    kMp2,
    kPcm16,
    kAlaw
};

std::vector<Frame> Sounds(Sound sound)
{
    std::vector<Frame> frames;
    const auto raw = [&](const char* name, uint32_t encode, std::size_t size, uint32_t bits)
    {
        const Bytes stream = Media(name);
        for (std::size_t at = 0; at + size <= stream.size(); at += size)
        {
            frames.push_back(Audio(encode, Slice(stream, at, size), 8000, 1, bits));
        }
    };
    switch (sound)
    {
        case Sound::kNone:
            break;
        case Sound::kAac:
            for (const Bytes& bytes : AdtsFrames(Media("tone_44100_stereo.aac")))
                frames.push_back(Aac(bytes, 44100, 2));
            break;
        case Sound::kMp2:
            for (const Bytes& bytes : Layer2Frames(Media("tone_48000_stereo.mp2")))
                frames.push_back(Mp2(bytes));
            break;
        case Sound::kPcm16:
            raw("tone_8000_mono.s16le", SG_ENCODE_AUDIO_PCM16, 640, 16);
            break;
        case Sound::kAlaw:
            raw("tone_8000_mono.alaw", SG_ENCODE_AUDIO_G711A, 320, 8);
            break;
    }
    return frames;
}

std::vector<Frame> Pictures(const std::string& name)
{
    std::vector<Frame> frames;
    if (name.ends_with(".h264"))
    {
        for (const Bytes& unit : AccessUnits(Media(name)))
            frames.push_back(IsIdr(unit) ? H264I(unit) : H264P(unit));
    }
    else if (name.ends_with(".m4v"))
    {
        for (const Bytes& picture : Mpeg4Pictures(Media(name)))
            frames.push_back(IsMpeg4Intra(picture) ? Mpeg4I(picture) : Mpeg4P(picture));
    }
    else if (name.ends_with(".mjpeg"))
    {
        for (const Bytes& picture : JpegPictures(Media(name)))
            frames.push_back(JpegI(picture));
    }
    return frames;
}

/// Two frames of sound ahead of the pictures, then one and one, each with its time.
std::vector<Frame> Interleaved(const std::string& pictures, Sound sound)
{
    const std::vector<Frame> video = Pictures(pictures);
    const std::vector<Frame> audio = Sounds(sound);
    std::vector<Frame> frames;
    std::size_t heard = 0;
    const auto hear = [&]
    {
        if (heard < audio.size()) frames.push_back(audio[heard++]);
    };
    hear();
    hear();
    uint32_t time = 0;
    for (const Frame& picture : video)
    {
        frames.push_back(picture);
        hear();
        frames.back().time = time += 40;
    }
    while (video.empty() && heard < audio.size())
        hear();
    return frames;
}

/// Clock, zone and chance stand still.
class SameAsFlat : public ::testing::Test
{
protected:
    SameAsFlat()
    {
        setenv("TZ", "UTC0", 1);
        tzset();
        InstallSources(&m_sources);
    }
    ~SameAsFlat() override { InstallSources(nullptr); }
    SameAsFlat(const SameAsFlat&) = delete;
    SameAsFlat& operator=(const SameAsFlat&) = delete;

    Sources m_sources{[]() noexcept { return int64_t{1'700'000'000}; },
                      [](int64_t time, std::tm& date) noexcept
                      {
                          const std::time_t seconds = time;
                          return gmtime_r(&seconds, &date) != nullptr;
                      },
                      []() noexcept { return 0x12345678u; }};
};

FrameAttributes Dated(const Frame& frame)
{
    FrameAttributes attrs = AttributesOf(frame);
    attrs.insert(kDate.begin(), kDate.end());
    return attrs;
}

/// A packager as the flat interface has it, or its class where that does not offer it.
std::unique_ptr<CPackage> Packager(uint32_t type, SGCreateParam create)
{
    if (type == SG_STREAM_TYPE_TS) return std::make_unique<CTsPacket>(&create);
    if (type == SG_STREAM_TYPE_3GP) return std::make_unique<CMp4Packet>(type, &create);
    return CreatePackage(type, &create);
}

int InputTo(CPackage& package, const Frame& frame, uint32_t date, PacketBuffer* packet = nullptr)
{
    Bytes bytes = frame.bytes;
    SGFrameInfo record = RecordOf(frame);
    record.frame_pointer = bytes.data();
    record.frame_data = date;
    return packet != nullptr ? package.InputData(&record, *packet) : package.InputData(&record, 0);
}

struct Format
{
    const char* name;
    uint32_t type;
    const char* pictures;
    Sound sound;
};

void PrintTo(const Format& format, std::ostream* out)
{
    *out << format.name << " of " << format.pictures;
}

constexpr const char* kCamera = "camera_640x360_25fps_baseline.h264";
constexpr const char* kSlices = "slices_320x240_25fps.h264";
constexpr const char* kMpeg4 = "cif_352x288_25fps.m4v";
constexpr const char* kJpeg = "qvga_320x240_12fps.mjpeg";

class StreamsSameAsFlat : public SameAsFlat, public ::testing::WithParamInterface<Format>
{
};

TEST_P(StreamsSameAsFlat, FrameByFrame)
{
    const Format& format = GetParam();
    SeekingSink sink;
    const auto flat = Packager(format.type, CreateFor(sink));
    const Stream stream = MakeStream(format.name);
    std::size_t given = 0;
    for (const Frame& frame : Interleaved(format.pictures, format.sound))
    {
        sink.ForgetBlocks();
        setLastError(0);
        const int code = InputTo(*flat, frame, kDateSeconds);
        const FrameAttributes attrs = Dated(frame);
        const auto size = static_cast<unsigned int>(frame.bytes.size());
        EXPECT_EQ(stream->inputFrame(frame.bytes.data(), size, attrs), code == 0);
        EXPECT_EQ(getLastError(), code == 0 ? 0u : 4u);

        SharedPtr<IWraptonData> block;
        ASSERT_EQ(stream->getPacket(block), !sink.Blocks().empty());
        if (block == nullptr) continue;
        ++given;
        ASSERT_TRUE(Same(BytesOf(*block), sink.Blocks().back().data));
        EXPECT_FALSE(stream->getPacket(block));
        EXPECT_EQ(getLastError(), 10u);
    }
    // Transport streams go into packets only.
    EXPECT_EQ(given > 5, format.type != SG_STREAM_TYPE_TS);
}

TEST_P(StreamsSameAsFlat, PacketByPacket)
{
    const Format& format = GetParam();
    SeekingSink sink;
    const auto flat = Packager(format.type, CreateFor(sink));
    const Stream stream = MakeStream(format.name);
    PacketBuffer expected(100);
    PacketBuffer packet(100);
    const bool emits = format.type != SG_STREAM_TYPE_TS &&
                       format.type != SG_STREAM_TYPE_STREAM_ASF &&
                       format.type != SG_STREAM_TYPE_STREAM_FLV;
    std::size_t given = 0;
    for (const Frame& frame : Interleaved(format.pictures, format.sound))
    {
        sink.ForgetBlocks();
        const int code = InputTo(*flat, frame, kDatePacked, &expected);
        const FrameAttributes attrs = Dated(frame);
        const auto size = static_cast<unsigned int>(frame.bytes.size());
        EXPECT_EQ(stream->inputFrameEx(frame.bytes.data(), size, attrs, packet), code == 0);
        ASSERT_TRUE(Same(BytesOf(packet), BytesOf(expected)));

        SharedPtr<IWraptonData> block;
        ASSERT_EQ(stream->getPacket(block), !sink.Blocks().empty());
        if (block == nullptr) continue;
        ++given;
        packet.Resize(packet.Size() + 100000);  // the block does not depend on the packet
        packet = PacketBuffer(100);
        expected = PacketBuffer(100);
        ASSERT_TRUE(Same(BytesOf(*block), sink.Blocks().back().data));
    }
    EXPECT_EQ(given > 5, emits);
}

INSTANTIATE_TEST_SUITE_P(
    AllTypes,
    StreamsSameAsFlat,
    ::testing::Values(Format{"asf", SG_STREAM_TYPE_STREAM_ASF, kCamera, Sound::kAlaw},
                      Format{"ASF", SG_STREAM_TYPE_STREAM_ASF, kMpeg4, Sound::kPcm16},
                      Format{"flv", SG_STREAM_TYPE_STREAM_FLV, kCamera, Sound::kPcm16},
                      Format{"FLV", SG_STREAM_TYPE_STREAM_FLV, kSlices, Sound::kNone},
                      Format{"omf", SG_STREAM_TYPE_OMF, kCamera, Sound::kAac},
                      Format{"OMF", SG_STREAM_TYPE_OMF, kJpeg, Sound::kAlaw},
                      Format{"rtp", SG_STREAM_TYPE_RTP, kCamera, Sound::kAac},
                      Format{"RTP", SG_STREAM_TYPE_RTP, kJpeg, Sound::kMp2},
                      Format{"ts", SG_STREAM_TYPE_TS, kCamera, Sound::kAac},
                      Format{"TS", SG_STREAM_TYPE_TS, kMpeg4, Sound::kMp2},
                      Format{"ps", SG_STREAM_TYPE_PS, kCamera, Sound::kMp2},
                      Format{"PS", SG_STREAM_TYPE_PS, kMpeg4, Sound::kAac},
                      Format{"qvps", SG_STREAM_TYPE_QVPS, kCamera, Sound::kAac},
                      Format{"QVPS", SG_STREAM_TYPE_QVPS, kMpeg4, Sound::kMp2},
                      Format{"gaysps", SG_STREAM_TYPE_GAYSPS, kCamera, Sound::kAlaw},
                      Format{"GAYSPS", SG_STREAM_TYPE_GAYSPS, kMpeg4, Sound::kAlaw}));

class FilesSameAsFlat : public SameAsFlat, public ::testing::WithParamInterface<Format>
{
protected:
    /// Blocks and image of the recording, through the packager.
    void RecordFlat(SeekingSink& sink)
    {
        const auto flat = Packager(GetParam().type, CreateFor(sink));
        ASSERT_EQ(flat->Init(), 0);
        ASSERT_EQ(flat->CreateHeader(nullptr, 0), 0);
        for (const Frame& frame : Frames())
            m_codes.push_back(InputTo(*flat, frame, kDatePacked));
        ASSERT_EQ(flat->CreateTailer(nullptr, 0), 0);
        ASSERT_EQ(flat->Deinit(), 0);
    }

    void RecordFrames(IFilePackage& file)
    {
        std::size_t number = 0;
        for (const Frame& frame : Frames())
        {
            const FrameAttributes attrs = Dated(frame);
            const auto size = static_cast<unsigned int>(frame.bytes.size());
            ASSERT_EQ(file.inputFrame(frame.bytes.data(), size, attrs), m_codes.at(number) == 0);
            ++number;
        }
        EXPECT_EQ(number, m_codes.size());
        EXPECT_TRUE(file.close());
    }

    const std::vector<Frame>& Frames()
    {
        if (m_frames.empty()) m_frames = Interleaved(GetParam().pictures, GetParam().sound);
        return m_frames;
    }

private:
    std::vector<Frame> m_frames;
    std::vector<int> m_codes;
};

TEST_P(FilesSameAsFlat, OnDisk)
{
    SeekingSink sink;
    RecordFlat(sink);
    const TemporaryDirectory directory;
    const std::string path = directory.Path("file");
    setLastError(0);
    {
        const File file = MakeFile(GetParam().name);
        ASSERT_TRUE(file->open(path.c_str()));
        RecordFrames(*file);
    }
    EXPECT_NE(getLastError(), kErrorWrite);
    EXPECT_GT(sink.Image().size(), 20000u);
    EXPECT_TRUE(Same(ReadFile(path), sink.Image()));
}

TEST_P(FilesSameAsFlat, BlockByBlock)
{
    SeekingSink sink;
    RecordFlat(sink);
    std::vector<Block> blocks;
    const File file = MakeFile(GetParam().name);
    ASSERT_TRUE(file->open(
        [&](FrameAttributes& info, IWraptonData& data)
        {
            Block block;
            EXPECT_EQ(info.size(), 2u);
            block.position = info.at("fileoffset");
            block.origin = static_cast<int32_t>(info.at("offsettype"));
            block.data = BytesOf(data);
            blocks.push_back(block);
            return false;  // the answer is not looked at
        }));
    RecordFrames(*file);
    ASSERT_EQ(blocks.size(), sink.Blocks().size());
    for (std::size_t i = 0; i < blocks.size(); ++i)
    {
        ASSERT_EQ(blocks[i].position, sink.Blocks()[i].position) << i;
        ASSERT_EQ(blocks[i].origin, sink.Blocks()[i].origin) << i;
        ASSERT_TRUE(Same(blocks[i].data, sink.Blocks()[i].data)) << i;
    }
}

INSTANTIATE_TEST_SUITE_P(
    AllTypes,
    FilesSameAsFlat,
    ::testing::Values(Format{"mov64", SG_STREAM_TYPE_MOV_64, kCamera, Sound::kAac},
                      Format{"MOV64", SG_STREAM_TYPE_MOV_64, kMpeg4, Sound::kMp2},
                      Format{"mp464", SG_STREAM_TYPE_MP4_64, kCamera, Sound::kAac},
                      Format{"MP464", SG_STREAM_TYPE_MP4_64, kJpeg, Sound::kMp2},
                      Format{"mp4noseek", SG_STREAM_TYPE_MP4_NOSEEK, kCamera, Sound::kAac},
                      Format{"MP4NOSEEK", SG_STREAM_TYPE_MP4_NOSEEK, kMpeg4, Sound::kMp2},
                      Format{"mp4", SG_STREAM_TYPE_MP4, kCamera, Sound::kAac},
                      Format{"MP4", SG_STREAM_TYPE_MP4, kMpeg4, Sound::kMp2},
                      Format{"3gp", SG_STREAM_TYPE_3GP, kCamera, Sound::kAac},
                      Format{"3GP", SG_STREAM_TYPE_3GP, kMpeg4, Sound::kAac},
                      Format{"mov", SG_STREAM_TYPE_MOV, kCamera, Sound::kAac},
                      Format{"MOV", SG_STREAM_TYPE_MOV, kJpeg, Sound::kNone},
                      Format{"asf", SG_STREAM_TYPE_ASF, kCamera, Sound::kAlaw},
                      Format{"ASF", SG_STREAM_TYPE_ASF, kMpeg4, Sound::kPcm16},
                      Format{"mkv", SG_STREAM_TYPE_MKV, kCamera, Sound::kAac},
                      Format{"MKV", SG_STREAM_TYPE_MKV, kMpeg4, Sound::kNone},
                      Format{"avi", SG_STREAM_TYPE_AVI, kCamera, Sound::kAlaw},
                      Format{"AVI", SG_STREAM_TYPE_AVI, kJpeg, Sound::kPcm16},
                      Format{"omf", SG_STREAM_TYPE_OMF, kCamera, Sound::kAac},
                      Format{"OMF", SG_STREAM_TYPE_OMF, kMpeg4, Sound::kAlaw},
                      Format{"flv", SG_STREAM_TYPE_FLV, kCamera, Sound::kPcm16},
                      Format{"FLV", SG_STREAM_TYPE_FLV, kSlices, Sound::kNone},
                      Format{"wav", SG_STREAM_TYPE_WAV, "", Sound::kPcm16},
                      Format{"WAV", SG_STREAM_TYPE_WAV, "", Sound::kAlaw}));

}  // namespace
}  // namespace Orbel::Wrapton
