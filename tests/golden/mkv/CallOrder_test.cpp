// Calls out of order.
#include "golden/mkv/Recording.h"
#include "support/Allocators.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using Support::AllocatorLog;
using Support::Payload;

TEST(MkvCallOrder, FrameAheadOfTheHeaderIsRefusedAndItsBytesStay)
{
    Recording recording;
    Support::Frame frame = Support::H264I(Support::Nal(Support::Hex("65 01 02")));
    const Bytes before = frame.bytes;
    EXPECT_EQ(InputInPlace(recording.Calls().Handle(), frame), SG_ERR_PARAM_ERR);
    EXPECT_TRUE(Same(frame.bytes, before));
    EXPECT_TRUE(recording.Blocks().empty());
}

TEST(MkvCallOrder, TailerAheadOfTheHeaderIsRefused)
{
    Recording recording;
    EXPECT_EQ(recording.Calls().Tailer(), SG_ERR_PARAM_ERR);
    EXPECT_TRUE(recording.Blocks().empty());
}

TEST(MkvCallOrder, FramesBehindTheTailerGoOnWhereTheClustersEnded)
{
    Recording recording;
    recording.Header().Input(IFrame(10)).Tailer();
    recording.Sink().ForgetBlocks();
    recording.Input(PFrame(20));
    const auto& blocks = recording.Blocks();
    ASSERT_EQ(blocks.size(), 2u);
    EXPECT_TRUE(IsBlockAt(blocks[0], 1059 + 32, SimpleBlock(40, "00", Payload(20))));
    EXPECT_TRUE(IsBlockAt(blocks[1], 1063, Size8(4 + 16 + 26)));
}

// Kept: the sum over the clusters is added to the one before, so cues and size move on by it.
TEST(MkvCallOrder, SecondTailerAddsTheClustersOnceMore)
{
    Recording recording;
    recording.Header().Input(IFrame(10)).Tailer();
    recording.Input(PFrame(20));
    recording.Sink().ForgetBlocks();
    recording.Tailer();
    // The first tailer counted 32 bytes, the second 58 more.
    const uint32_t total = 32 + 58;
    const auto& blocks = recording.Blocks();
    ASSERT_EQ(blocks.size(), 7u);
    EXPECT_TRUE(IsBlockAt(blocks[0], 633, PlainEntry().Element()));
    EXPECT_TRUE(IsBlockAt(blocks[4], 64, Seeks(500, 562, 1000 + total)));
    EXPECT_TRUE(IsBlockAt(blocks[5], 1059 + total, Cues({{0, 1059, 4}})));
    EXPECT_TRUE(IsBlockAt(blocks[6], 51, Size8(total + 36 + 1000)));
}

TEST(MkvCallOrder, WithoutAWorkBufferEverythingIsRefused)
{
    AllocatorLog log;
    log.FailCall(1);
    Counter counter;
    SGCreateParam create = counter.Create();
    create.sg_malloc = &AllocatorLog::Malloc;
    create.sg_free = &AllocatorLog::Free;
    void* const handle = SG_CreateHandle(SG_STREAM_TYPE_MKV, &create);
    ASSERT_NE(handle, nullptr);
    ASSERT_EQ(log.Asked(), std::vector<int>{2097152});
    EXPECT_EQ(SG_CreateHeader(handle, nullptr), SG_ERR_PARAM_ERR);
    Support::Frame frame = IFrame(10);
    EXPECT_EQ(InputInPlace(handle, frame), SG_ERR_PARAM_ERR);
    EXPECT_EQ(SG_CreateTailer(handle, nullptr), SG_ERR_PARAM_ERR);
    EXPECT_EQ(SG_DestroyHandle(handle), SG_ERR_NOERR);
    EXPECT_EQ(counter.blocks, 0u);
}

TEST(MkvCallOrder, WorkBufferGoesBackWithItsSize)
{
    AllocatorLog log;
    SGCreateParam create{};
    create.sg_malloc = &AllocatorLog::Malloc;
    create.sg_free = &AllocatorLog::Free;
    void* const handle = SG_CreateHandle(SG_STREAM_TYPE_MKV, &create);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(SG_DestroyHandle(handle), SG_ERR_NOERR);
    EXPECT_EQ(log.Released(), std::vector<int>{2097152});
}

TEST(MkvCallOrder, BackupLeavesTheRecordAsItIs)
{
    Recording recording;
    recording.Header().Input(IFrame(10));
    unsigned char byte = 0;
    SGOutputData backup{};
    backup.data_pointer = &byte;
    backup.data_size = 7;
    backup.offset_type = 2;
    backup.offset_pos = 5;
    backup.offset_pos64 = 6;
    EXPECT_EQ(recording.Calls().Backup(backup), SG_ERR_NOERR);
    EXPECT_EQ(backup.data_pointer, &byte);
    EXPECT_EQ(backup.data_size, 7);
    EXPECT_EQ(backup.offset_type, 2);
    EXPECT_EQ(backup.offset_pos, 5u);
    EXPECT_EQ(backup.offset_pos64, 6);
    EXPECT_EQ(SG_GetBackup(recording.Calls().Handle(), nullptr), SG_ERR_NOERR);
}

}  // namespace
}  // namespace Golden
