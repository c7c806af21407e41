// Calls out of order, frames that are no frames, sinks and allocators of all kinds.
#include <array>
#include <climits>

#include "golden/ps/Pieces.h"
#include "support/Allocators.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using namespace Support;

const Bytes kUnit = Nal(Hex("65 88 84 21"));

class EveryPs : public ::testing::TestWithParam<uint32_t>
{
protected:
    /// Audio that every flavour takes at 16000 Hz.
    static Frame Sound() { return Mp2(Payload(40), 16000, 1); }

    /// A few frames of every kind; what came out, block by block.
    static std::vector<Block> Record(Recorder& recorder, Sink& sink)
    {
        sink.ForgetBlocks();
        for (const Frame& frame :
             {H264I(kUnit), Sound(), H264P(kUnit), H264P(Payload(70000)), Sound(), H264I(kUnit)})
        {
            EXPECT_EQ(recorder.Input(frame), 0);
        }
        return sink.Blocks();
    }

    static Bytes Contents(const std::vector<Block>& blocks)
    {
        Bytes all;
        for (const Block& block : blocks)
        {
            Append(all, block.data);
        }
        return all;
    }
};

INSTANTIATE_TEST_SUITE_P(
    Flavours,
    EveryPs,
    ::testing::Values(SG_STREAM_TYPE_PS, SG_STREAM_TYPE_QVPS, SG_STREAM_TYPE_GAYSPS),
    [](const auto& flavour) { return "Type" + std::to_string(flavour.param); });

TEST_P(EveryPs, EveryFrameIsOneBlockAppendedAtOffsetZero)
{
    AppendingSink sink;
    Recorder recorder(GetParam(), sink);
    const auto blocks = Record(recorder, sink);
    ASSERT_EQ(blocks.size(), 6u);
    for (const Block& block : blocks)
    {
        EXPECT_EQ(block.structSize, 40u);
        EXPECT_EQ(block.origin, 1);
        EXPECT_EQ(block.narrow, 0u);
        EXPECT_EQ(block.position, 0);
        EXPECT_EQ(static_cast<std::size_t>(block.size), block.data.size());
    }
}

TEST_P(EveryPs, HeaderAndTailerAnswerZeroAndEmitNothing)
{
    AppendingSink sink;
    Recorder recorder(GetParam(), sink);
    EXPECT_EQ(recorder.HeaderWith(nullptr), 0);
    EXPECT_EQ(recorder.Header(100), 0);
    EXPECT_EQ(recorder.Tailer(), 0);
    EXPECT_EQ(recorder.Tailer(), 0);
    EXPECT_TRUE(sink.Blocks().empty());
}

TEST_P(EveryPs, FramesNeedNoHeaderAndHeadersAndTailersChangeNothing)
{
    AppendingSink plain;
    Recorder without(GetParam(), plain);
    const Bytes first = Contents(Record(without, plain));
    const Bytes second = Contents(Record(without, plain));

    AppendingSink sink;
    Recorder recorder(GetParam(), sink);
    EXPECT_EQ(recorder.Header(), 0);
    EXPECT_TRUE(Same(Contents(Record(recorder, sink)), first));
    EXPECT_EQ(recorder.Header(), 0);
    EXPECT_EQ(recorder.Tailer(), 0);
    EXPECT_TRUE(Same(Contents(Record(recorder, sink)), second));
}

TEST_P(EveryPs, DestroyEmitsNothing)
{
    AppendingSink sink;
    Recorder recorder(GetParam(), sink);
    recorder.Input(H264I(kUnit));
    sink.ForgetBlocks();
    EXPECT_EQ(recorder.Destroy(), 0);
    EXPECT_TRUE(sink.Blocks().empty());
}

TEST_P(EveryPs, BackupAnswersZeroAndLeavesTheRecordAsItIs)
{
    AppendingSink sink;
    Recorder recorder(GetParam(), sink);
    recorder.Input(H264I(kUnit));
    unsigned char byte = 7;
    SGOutputData backup{1, &byte, 2, 3, 4, 5};
    EXPECT_EQ(recorder.Backup(backup), 0);
    EXPECT_EQ(backup.struct_size, 1u);
    EXPECT_EQ(backup.data_pointer, &byte);
    EXPECT_EQ(backup.data_size, 2);
    EXPECT_EQ(backup.offset_type, 3);
    EXPECT_EQ(backup.offset_pos, 4u);
    EXPECT_EQ(backup.offset_pos64, 5);
    EXPECT_EQ(SG_GetBackup(recorder.Handle(), nullptr), 0);
}

TEST_P(EveryPs, FramesWithoutDataOrOfNoKnownTypeAreRefused)
{
    AppendingSink sink;
    Recorder recorder(GetParam(), sink);
    Frame frame = H264I(kUnit);
    SGFrameInfo record = RecordOf(frame);
    EXPECT_EQ(SG_InputFrame(recorder.Handle(), &record), SG_ERR_PARAM_ERR);
    record.frame_pointer = frame.bytes.data();
    record.frame_size = 0;
    EXPECT_EQ(SG_InputFrame(recorder.Handle(), &record), SG_ERR_PARAM_ERR);
    EXPECT_EQ(SG_InputFrame(recorder.Handle(), nullptr), SG_ERR_PARAM_ERR);
    for (const uint32_t type : {0u, 3u, 4u, 0xFFFFFFFFu})
    {
        frame.type = type;
        EXPECT_EQ(recorder.Input(frame), SG_ERR_PARAM_ERR) << type;
    }
    EXPECT_TRUE(sink.Blocks().empty());
    // None of them opened the stream.
    EXPECT_EQ(recorder.Input(H264P(kUnit)), 0);
    EXPECT_TRUE(sink.Blocks().empty());
}

TEST_P(EveryPs, SinksThatAnswerWithAnotherSizeChangeNothing)
{
    AppendingSink plain;
    Recorder reference(GetParam(), plain);
    const Bytes expected = Contents(Record(reference, plain));
    for (const int32_t answer : {0, 1, -1, INT_MIN, INT_MAX})
    {
        ResizingSink sink([answer](std::size_t, int32_t) { return answer; });
        Recorder recorder(GetParam(), sink);
        EXPECT_TRUE(Same(Contents(Record(recorder, sink)), expected)) << answer;
    }
}

TEST_P(EveryPs, WorksWithoutAnyCreateRecord)
{
    void* const handle = SG_CreateHandle(GetParam(), nullptr);
    ASSERT_NE(handle, nullptr);
    Bytes bytes = kUnit;
    SGFrameInfo record = RecordOf(H264I(bytes));
    record.frame_pointer = bytes.data();
    EXPECT_EQ(SG_CreateHeader(handle, nullptr), 0);
    EXPECT_EQ(SG_InputFrame(handle, &record), 0);
    EXPECT_EQ(SG_DestroyHandle(handle), 0);
}

TEST_P(EveryPs, ParametersAreOfNoConcern)
{
    AppendingSink sink;
    Recorder recorder(GetParam(), sink);
    SGRtpPackageParam param{};
    unsigned int length = sizeof(param);
    EXPECT_EQ(SG_SetParam(recorder.Handle(), 0, &param, 0), 0);
    EXPECT_EQ(SG_GetParam(recorder.Handle(), 0, &param, &length), 0);
    EXPECT_EQ(length, 0u);
}

TEST_P(EveryPs, WorkBufferIsThreeMebibytesOfTheCallersAllocator)
{
    AllocatorLog log;
    AppendingSink sink;
    SGCreateParam create = CreateFor(sink);
    create.sg_malloc = &AllocatorLog::Malloc;
    create.sg_free = &AllocatorLog::Free;
    {
        Recorder recorder(GetParam(), create);
        Record(recorder, sink);
    }
    EXPECT_EQ(log.Asked(), std::vector<int>{0x300000});
    EXPECT_EQ(log.Released(), std::vector<int>{0x300000});
}

TEST_P(EveryPs, WithoutAWorkBufferEveryFrameIsRefused)
{
    AllocatorLog log;
    log.FailCall(1);
    AppendingSink sink;
    SGCreateParam create = CreateFor(sink);
    create.sg_malloc = &AllocatorLog::Malloc;
    create.sg_free = &AllocatorLog::Free;
    Recorder recorder(GetParam(), create);
    EXPECT_EQ(recorder.Header(), 0);
    EXPECT_EQ(recorder.Input(H264I(kUnit)), SG_ERR_PARAM_ERR);
    EXPECT_EQ(recorder.Input(H264P(kUnit)), SG_ERR_PARAM_ERR);
    EXPECT_EQ(recorder.Input(Sound()), SG_ERR_PARAM_ERR);
    EXPECT_EQ(recorder.Tailer(), 0);
    EXPECT_TRUE(sink.Blocks().empty());
    EXPECT_TRUE(log.Released().empty());
}

}  // namespace
}  // namespace Golden
