// Refused calls, missing memory and frames around the size of the work buffer.
#include "golden/asf/Pieces.h"
#include "support/Allocators.h"

namespace GoldenAsf
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Join;
using Support::Payload;

/// How many packets the work buffer of 2 MiB holds, alone and behind the header.
constexpr std::size_t kMost = 0x200000 / 2076;
constexpr std::size_t kMostBehindHeader = (0x200000 - 818) / 2076;
static_assert(kMost == 1010 && kMostBehindHeader == 1009);

int InputSpoiled(Recording& recording, const Support::Frame& frame, void (*spoil)(SGFrameInfo&))
{
    Support::Frame copy = frame;
    SGFrameInfo record = Support::RecordOf(copy);
    record.frame_pointer = copy.bytes.data();
    spoil(record);
    return SG_InputFrame(recording.Calls().Handle(), &record);
}

TEST(AsfFrameArgument, IsRefusedWhenItIsNoFrame)
{
    Recording recording(SG_STREAM_TYPE_ASF);
    const Support::Frame frame = Key(Payload(10));
    EXPECT_EQ(SG_InputFrame(recording.Calls().Handle(), nullptr), SG_ERR_PARAM_ERR);
    EXPECT_EQ(InputSpoiled(recording, frame, [](SGFrameInfo& r) { r.struct_size = 113; }),
              SG_ERR_PARAM_ERR);
    EXPECT_EQ(InputSpoiled(recording, frame, [](SGFrameInfo& r) { r.frame_pointer = nullptr; }),
              SG_ERR_PARAM_ERR);
    EXPECT_EQ(InputSpoiled(recording, frame, [](SGFrameInfo& r) { r.frame_size = 0; }),
              SG_ERR_PARAM_ERR);
    for (const uint32_t type : {0u, 3u, 4u, 0xFFFFFFFFu})
    {
        Support::Frame other = frame;
        other.type = type;
        EXPECT_EQ(recording.Calls().Input(other), SG_ERR_PARAM_ERR) << type;
    }
    EXPECT_TRUE(recording.Blocks().empty());
}

TEST(AsfMemory, IsOneBufferOf2MiBThatIsGivenBack)
{
    Support::AllocatorLog log;
    Support::SeekingSink sink;
    SGCreateParam create = Support::CreateFor(sink);
    create.sg_malloc = &Support::AllocatorLog::Malloc;
    create.sg_free = &Support::AllocatorLog::Free;
    Support::Recorder recorder(SG_STREAM_TYPE_ASF, create);
    recorder.Input(Key(Payload(10)));
    recorder.Input(Key(Payload(10)));
    recorder.Input(Pcm16(Payload(10)));
    recorder.Tailer();
    EXPECT_EQ(log.Asked(), std::vector<int>{0x200000});
    recorder.Destroy();
    EXPECT_EQ(log.Released(), std::vector<int>{0x200000});
}

TEST(AsfMemory, MissingRefusesFramesAndEmitsNothing)
{
    for (const uint32_t type : {SG_STREAM_TYPE_ASF, SG_STREAM_TYPE_STREAM_ASF})
    {
        Support::AllocatorLog log;
        Support::SeekingSink sink;
        SGCreateParam create = Support::CreateFor(sink);
        create.sg_malloc = &Support::AllocatorLog::Malloc;
        create.sg_free = &Support::AllocatorLog::Free;
        log.FailCall(1);
        Support::Recorder recorder(type, create);
        EXPECT_EQ(recorder.Header(), SG_ERR_NOERR);
        EXPECT_EQ(recorder.Input(Support::H264P(Payload(10))), SG_ERR_MEMORY_OUT);
        EXPECT_EQ(recorder.Input(Key(Payload(10))), SG_ERR_MEMORY_OUT);
        EXPECT_EQ(recorder.Input(Pcm16(Payload(10))), SG_ERR_MEMORY_OUT);
        Support::Frame other = Key(Payload(10));
        other.type = SG_FRAME_TYPE_EXT;
        EXPECT_EQ(recorder.Input(other), SG_ERR_PARAM_ERR);
        EXPECT_EQ(recorder.Tailer(), SG_ERR_NOERR);
        EXPECT_TRUE(sink.Blocks().empty());
        EXPECT_EQ(recorder.Destroy(), SG_ERR_NOERR);
        EXPECT_TRUE(log.Released().empty());
    }
}

TEST(AsfLimit, IsAFirstFrameThatFillsTheWorkBufferBehindTheHeader)
{
    const Bytes most = Payload(2048 * kMostBehindHeader);
    Recording full(SG_STREAM_TYPE_ASF);
    full.Input(Key(most));
    EXPECT_TRUE(Support::Same(full.Fresh(), Join({Header({}), Packets(kKey, 0, 0, most)})));

    Recording recording(SG_STREAM_TYPE_ASF);
    recording.Input(Key(Payload(2048 * kMostBehindHeader + 1)).Sized(1, 1).AtRate(1));
    EXPECT_TRUE(recording.Blocks().empty());
    // Nothing of the dropped frame counts.
    recording.Input(Inter(Payload(10)));
    EXPECT_TRUE(IsAt(recording.Blocks().back(), 0, 0));
    recording.Input(Key(Payload(10))).Input(Inter(Payload(10)));
    EXPECT_TRUE(Support::Same(
        recording.Fresh(),
        Join({Header({}), Packets(kKey, 0, 0, Payload(10)), Packets(kInter, 1, 40, Payload(10))})));
}

TEST(AsfLimit, IsALaterFrameThatFillsTheWorkBuffer)
{
    const Bytes most = Payload(2048 * kMost);
    Recording recording(SG_STREAM_TYPE_ASF);
    recording.Input(Key(Payload(10)));
    recording.Fresh();
    recording.Input(Inter(most));
    EXPECT_TRUE(Support::Same(recording.Fresh(), Packets(kInter, 1, 40, most)));
    recording.Input(Key(Payload(2048 * kMost + 1)).AtRate(1));
    recording.Input(Key(Payload(4 << 20)));
    EXPECT_TRUE(recording.Fresh().empty());
    // Neither clock nor number nor interval nor key frame moved.
    recording.Input(Inter(Payload(10))).Input(Inter(Payload(10)));
    EXPECT_TRUE(Support::Same(
        recording.Fresh(),
        Join({Packets(kInter, 2, 80, Payload(10)), Packets(kInter, 3, 120, Payload(10))})));
    recording.Tailer();
    EXPECT_TRUE(Support::Same(Support::Slice(recording.Fresh(), 0, 62), Index({{0, 1}})));
}

TEST(AsfLimit, CountsWhatIsLeftOfAnMpeg4Frame)
{
    const Bytes object = Join({Support::Hex("00 00 01 00"), Payload(3 << 20)});
    const Bytes picture = Support::Hex("00 00 01 B6 10");
    Recording recording(SG_STREAM_TYPE_ASF);
    recording.Input(Support::Mpeg4I(Join({object, picture})));
    HeaderValues values;
    values.compression = Support::Text("M4S2");
    values.config = Support::Slice(object, 0, 64);
    EXPECT_TRUE(
        Support::Same(recording.Fresh(), Join({Header(values), Packets(kKey, 0, 0, picture)})));
}

TEST(AsfLimit, IsAudioThatFillsTheWorkBuffer)
{
    const Bytes most = Payload(2048 * kMost);
    Recording recording(SG_STREAM_TYPE_ASF);
    recording.Input(Key(Payload(10)));
    recording.Fresh();
    recording.Input(Pcm16(Payload(2048 * kMost + 1), 44100, 2, 8));
    EXPECT_TRUE(recording.Fresh().empty());
    recording.Input(Pcm16(most)).Input(Pcm16(Payload(10)));
    EXPECT_TRUE(Support::Same(
        recording.Fresh(),
        Join({Packets(kSound, 0, 0, most), Packets(kSound, 1, 129280, Payload(10))})));
    recording.Tailer();
    HeaderValues values;
    values.audio = AudioValues{};  // the dropped frame's parameters are not declared
    values.packets = 2 + kMost;
    values.dataPackets = 2 + kMost;
    values.fileSize = kDataStart + (2 + kMost) * kPacketLen + 56;
    EXPECT_TRUE(Support::Same(recording.Masked(recording.Blocks().back()), Header(values)));
}

}  // namespace
}  // namespace GoldenAsf
