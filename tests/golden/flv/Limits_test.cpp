// Refused calls, missing memory and frames around the size of the work buffer.
#include <string_view>

#include "golden/flv/Pieces.h"
#include "support/Allocators.h"

namespace GoldenFlv
{
namespace
{

using namespace Orbel::Wrapton;
using Support::H264I;
using Support::H264P;
using Support::Hex;
using Support::Join;
using Support::LengthNal;
using Support::Nal;

constexpr std::size_t kWork = 0x200000;
constexpr std::size_t kAudioFrame = 11 + 1 + 4;      // around the samples
constexpr std::size_t kVideoFrame = 11 + 5 + 4 + 4;  // around a single unit
constexpr std::size_t kEmptyStart = 279 + 11 + 16 + 4;

int InputSpoiled(Recording& recording, const Support::Frame& frame, void (*spoil)(SGFrameInfo&))
{
    Support::Frame copy = frame;
    SGFrameInfo record = Support::RecordOf(copy);
    record.frame_pointer = copy.bytes.data();
    spoil(record);
    return SG_InputFrame(recording.Calls().Handle(), &record);
}

TEST(FlvFrameArgument, IsRefusedWhenItIsNoFrame)
{
    Recording recording(SG_STREAM_TYPE_FLV);
    const Support::Frame frame = H264I(kIFrame);
    EXPECT_EQ(SG_InputFrame(recording.Calls().Handle(), nullptr), SG_ERR_PARAM_ERR);
    EXPECT_EQ(InputSpoiled(recording, frame, [](SGFrameInfo& r) { r.struct_size = 111; }),
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
    recording.Input(frame);
    EXPECT_EQ(recording.Blocks().size(), 1u);
}

TEST(FlvMemory, IsOneBufferOf2MiBThatIsGivenBack)
{
    Support::AllocatorLog log;
    Support::AppendingSink sink;
    SGCreateParam create = Support::CreateFor(sink);
    create.sg_malloc = &Support::AllocatorLog::Malloc;
    create.sg_free = &Support::AllocatorLog::Free;
    Support::Recorder recorder(SG_STREAM_TYPE_FLV, create);
    recorder.Input(H264I(kIFrame));
    recorder.Input(Pcm16(Hex("11 22")));
    recorder.Tailer();
    EXPECT_EQ(log.Asked(), std::vector<int>{0x200000});
    recorder.Destroy();
    EXPECT_EQ(log.Released(), std::vector<int>{0x200000});
}

TEST(FlvMemory, MissingRefusesFramesAndTheTailer)
{
    for (const uint32_t type : {SG_STREAM_TYPE_FLV, SG_STREAM_TYPE_STREAM_FLV})
    {
        Support::AllocatorLog log;
        Support::AppendingSink sink;
        SGCreateParam create = Support::CreateFor(sink);
        create.sg_malloc = &Support::AllocatorLog::Malloc;
        create.sg_free = &Support::AllocatorLog::Free;
        log.FailCall(1);
        Support::Recorder recorder(type, create);
        EXPECT_EQ(recorder.Header(), SG_ERR_NOERR);
        EXPECT_EQ(recorder.Input(H264I(kIFrame)), SG_ERR_MEMORY_OUT);
        EXPECT_EQ(recorder.Input(Pcm16(Hex("11"))), SG_ERR_MEMORY_OUT);
        Support::Frame other = H264I(kIFrame);
        other.type = SG_FRAME_TYPE_EXT;
        EXPECT_EQ(recorder.Input(other), SG_ERR_PARAM_ERR);
        EXPECT_EQ(recorder.Tailer(), type == SG_STREAM_TYPE_FLV ? SG_ERR_PARAM_ERR : SG_ERR_NOERR);
        EXPECT_TRUE(sink.Blocks().empty());
        EXPECT_EQ(recorder.Destroy(), SG_ERR_NOERR);
        EXPECT_TRUE(log.Released().empty());
    }
}

TEST(FlvLimit, IsAudioThatFillsTheWorkBuffer)
{
    Recording recording(SG_STREAM_TYPE_FLV);
    recording.Input(H264I(kIFrame));
    recording.Fresh();
    for (const std::size_t size : {kWork - kAudioFrame - 1, kWork - kAudioFrame})
    {
        const Bytes samples = Support::Payload(size);
        recording.Input(H264P(kPFrame));
        const Bytes picture = recording.Fresh();
        recording.Input(Pcm16(samples));
        EXPECT_TRUE(Support::Same(
            recording.Fresh(), AudioTag(Support::ReadMsb32(picture, 3) & 0xFFFFFF, 0x32, samples)));
    }
    EXPECT_EQ(recording.Blocks().back().size, static_cast<int32_t>(kWork));
    recording.Input(Pcm16(Support::Payload(kWork - kAudioFrame + 1)));
    EXPECT_TRUE(recording.Fresh().empty());
}

TEST(FlvLimit, DroppedAudioLeavesNoTrace)
{
    Recording plain(SG_STREAM_TYPE_FLV);
    plain.Input(H264I(kIFrame)).Tailer();
    Recording recording(SG_STREAM_TYPE_FLV);
    recording.Input(H264I(kIFrame));
    recording.Input(Pcm16(Support::Payload(kWork), 44000, 2)).Tailer();
    EXPECT_TRUE(Support::Same(recording.File(), plain.File()));
}

TEST(FlvLimit, IsAFirstFrameThatFillsTheWorkBufferWithTheStart)
{
    const std::size_t most = kWork - kEmptyStart - kVideoFrame;
    for (const std::size_t size : {most - 1, most})
    {
        const Bytes slice = Support::Payload(size);
        Recording recording(SG_STREAM_TYPE_FLV);
        recording.Input(H264I(Nal(slice)));
        EXPECT_TRUE(Support::Same(recording.File(),
                                  Join({FileHeader(1),
                                        MetaTag({}),
                                        SequenceHeader({}, {}),
                                        VideoTag(0, true, LengthNal(slice))})));
    }
    Recording recording(SG_STREAM_TYPE_FLV);
    recording.Input(H264I(Nal(Support::Payload(most + 1))).Sized(1, 1).AtRate(1));
    EXPECT_TRUE(recording.Blocks().empty());
    // Nothing of the dropped frame counts: the next one begins the recording.
    recording.Input(H264P(kPFrame)).Input(Pcm16(Hex("11")));
    EXPECT_TRUE(recording.Blocks().empty());
    recording.Input(H264I(kIFrame));
    EXPECT_TRUE(Support::Same(recording.Fresh(), Join({Start(1), VideoTag(0, true, kIUnits)})));
}

TEST(FlvLimit, IsALaterFrameThatFillsTheWorkBuffer)
{
    const std::size_t most = kWork - kVideoFrame;
    Recording recording(SG_STREAM_TYPE_FLV);
    recording.Input(H264I(kIFrame));
    recording.Fresh();
    uint32_t time = 40;
    for (const std::size_t size : {most - 1, most})
    {
        const Bytes slice = Support::Payload(size);
        recording.Input(H264P(Nal(slice)));
        EXPECT_TRUE(Support::Same(recording.Fresh(), VideoTag(time, false, LengthNal(slice))));
        time += 40;
    }
    recording.Input(Pcm16(Support::Payload(16)));
    recording.Fresh();
    recording.Input(H264P(Nal(Support::Payload(most + 1))));
    recording.Input(H264P(Nal(Support::Payload(2 * most))));
    EXPECT_TRUE(recording.Fresh().empty());
    // Neither the picture number nor the audio count moved.
    recording.Input(Pcm16(Hex("11 22"))).Input(H264P(kPFrame));
    EXPECT_TRUE(
        Support::Same(recording.Fresh(),
                      Join({AudioTag(81, 0x32, Hex("11 22")), VideoTag(time, false, kPUnits)})));
}

TEST(FlvLimit, DropsAFrameWhoseLaterUnitsDoNotFit)
{
    Recording recording(SG_STREAM_TYPE_FLV);
    recording.Input(H264I(kIFrame));
    recording.Fresh();
    const std::size_t most = kWork - kVideoFrame;
    recording.Input(H264P(Join({Nal(Support::Payload(most - 8)), Nal(Support::Payload(5))})));
    EXPECT_TRUE(recording.Fresh().empty());
    const Bytes first = Support::Payload(most - 8);
    const Bytes second = Support::Payload(4);
    recording.Input(H264P(Join({Nal(first), Nal(second)})));
    EXPECT_TRUE(Support::Same(recording.Fresh(),
                              VideoTag(40, false, Join({LengthNal(first), LengthNal(second)}))));
}

TEST(FlvLimit, KeepsAFrameWhoseLargeUnitIsBeyondItsCapacityAnyway)
{
    // 200 short units grow by 200 bytes: the large one behind them misses the capacity, which is
    // the frame's size and 100, so that what is left fits the work buffer easily.
    Bytes frame;
    Bytes units;
    for (int i = 0; i < 200; ++i)
    {
        Support::Append(frame, Hex("00 00 01 41"));
        Support::Append(units, Hex("00 00 00 01 41"));
    }
    Support::Append(frame, Hex("00 00 01"));
    Support::Append(frame, Support::Payload(kWork));
    Recording recording(SG_STREAM_TYPE_FLV);
    recording.Input(H264I(kIFrame));
    recording.Fresh();
    recording.Input(H264P(frame));
    EXPECT_TRUE(Support::Same(recording.Fresh(), VideoTag(40, false, units)));
}

}  // namespace
}  // namespace GoldenFlv
