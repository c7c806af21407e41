// Long recordings: the ends of the tables, and files past 4 GiB.
#include "golden/mkv/Recording.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;

constexpr uint32_t kMaxClusters = 102400;
constexpr uint32_t kMaxCues = 102400;

/// Many small frames from one allocation.
class Feeder
{
public:
    explicit Feeder(Counter& counter, std::size_t largest = 1) : m_bytes(largest, 0x55)
    {
        SGCreateParam create = counter.Create();
        m_handle = SG_CreateHandle(SG_STREAM_TYPE_MKV, &create);
        EXPECT_EQ(SG_CreateHeader(m_handle, nullptr), SG_ERR_NOERR);
        counter.Forget();
    }
    Feeder(const Feeder&) = delete;
    Feeder& operator=(const Feeder&) = delete;
    ~Feeder() { SG_DestroyHandle(m_handle); }

    int Input(uint32_t subType, uint32_t rate)
    {
        SGFrameInfo record = Support::RecordOf(IFrame(0));
        record.frame_pointer = m_bytes.data();
        record.frame_size = static_cast<uint32_t>(m_bytes.size());
        record.frame_sub_type = subType;
        record.frame_rate = rate;
        return SG_InputFrame(m_handle, &record);
    }
    int Tailer() { return SG_CreateTailer(m_handle, nullptr); }

private:
    Bytes m_bytes;
    void* m_handle;
};

TEST(MkvLimits, FrameThatWouldOpenTheClusterBehindTheLastIsRefusedAndOthersGoOn)
{
    Counter counter;
    Feeder feeder(counter);
    for (uint32_t frame = 0; frame < kMaxClusters; ++frame)
    {
        ASSERT_EQ(feeder.Input(frame == 0 ? SG_FRAME_SUB_TYPE_I : SG_FRAME_SUB_TYPE_P, 1),
                  SG_ERR_NOERR);
    }
    // Each cluster has 16 bytes and a block of 7.
    EXPECT_EQ(counter.end, kFirstCluster + uint64_t{23} * kMaxClusters);
    EXPECT_EQ(counter.blocks, uint64_t{5} * kMaxClusters);

    counter.Forget();
    EXPECT_EQ(feeder.Input(SG_FRAME_SUB_TYPE_P, 1), SG_ERR_PARAM_ERR);
    EXPECT_EQ(feeder.Input(SG_FRAME_SUB_TYPE_I, 25), SG_ERR_PARAM_ERR);  // 102400 = 25 * 4096
    EXPECT_EQ(counter.blocks, 0u);

    // Frames that open none go into the last cluster.
    EXPECT_EQ(feeder.Input(SG_FRAME_SUB_TYPE_P, 3), SG_ERR_NOERR);
    EXPECT_EQ(counter.blocks, 2u);
    EXPECT_EQ(counter.end, kFirstCluster + uint64_t{23} * kMaxClusters + 7);

    EXPECT_EQ(feeder.Tailer(), SG_ERR_NOERR);
    EXPECT_TRUE(Same(counter.last, Size8(23 * uint64_t{kMaxClusters} + 7 + 36 + 1000)));
}

TEST(MkvLimits, KeyFramesPastTheCueTableAreStoredWithoutACueAndCuesLeaveInPieces)
{
    Counter counter;
    Feeder feeder(counter);
    for (uint32_t frame = 0; frame < kMaxCues + 2; ++frame)
    {
        ASSERT_EQ(feeder.Input(SG_FRAME_SUB_TYPE_I, 1000), SG_ERR_NOERR);
    }
    // 103 clusters of 16 bytes, and blocks of 7.
    const uint64_t total = 103 * 16 + uint64_t{7} * (kMaxCues + 2);
    EXPECT_EQ(counter.end, kFirstCluster + total);

    counter.Forget();
    EXPECT_EQ(feeder.Tailer(), SG_ERR_NOERR);
    const uint64_t cues = 12 + uint64_t{24} * kMaxCues;  // 2457612: more than 2 MiB
    EXPECT_EQ(counter.blocks, 8u);
    EXPECT_EQ(counter.end, kFirstCluster + total + cues);
    EXPECT_TRUE(Same(counter.last, Size8(total + cues + 1000)));
}

TEST(MkvLimits, PiecesOfTheCuesJoin)
{
    Support::SeekingSink sink;
    Support::Recorder recorder(SG_STREAM_TYPE_MKV, sink);
    ASSERT_EQ(recorder.Header(), SG_ERR_NOERR);
    constexpr uint32_t kCount = 90000;  // 2160012 bytes of cues
    unsigned char byte = 0x55;
    SGFrameInfo record = Support::RecordOf(IFrame(1));
    record.frame_pointer = &byte;
    record.frame_size = 1;
    record.frame_rate = 100000;
    for (uint32_t frame = 0; frame < kCount; ++frame)
    {
        ASSERT_EQ(SG_InputFrame(recorder.Handle(), &record), SG_ERR_NOERR);
    }
    sink.ForgetBlocks();
    ASSERT_EQ(recorder.Tailer(), SG_ERR_NOERR);

    std::vector<CuePoint> points;
    for (uint32_t frame = 0; frame < kCount; ++frame)
    {
        // One cluster; behind its first block the length so far counts its head, too.
        const uint32_t relative = frame == 0 ? 4 : 7 * frame + 16 + 4;
        points.push_back({frame / 100, kFirstCluster, relative & 0xFFFF});
    }
    const Bytes expected = Cues(points);
    const std::size_t place = kFirstCluster + 16 + std::size_t{7} * kCount;
    EXPECT_TRUE(Same(Support::Slice(sink.Image(), place, expected.size()), expected));
    ASSERT_EQ(sink.Blocks().size(), 8u);
    EXPECT_EQ(sink.Blocks()[5].size, 2097152);
    EXPECT_EQ(sink.Blocks()[5].position, static_cast<int64_t>(place));
    EXPECT_EQ(sink.Blocks()[6].size, static_cast<int32_t>(expected.size() - 2097152));
    EXPECT_EQ(sink.Blocks()[6].position, static_cast<int64_t>(place + 2097152));
}

TEST(MkvLimits, PositionsPast4GiBGoOnAndElementsKeepTheirLow32Bits)
{
    constexpr uint32_t kSize = 2097152 - 8;  // a block of 2 MiB
    Counter counter;
    Feeder feeder(counter, kSize);
    for (uint32_t frame = 0; frame < 2049; ++frame)
    {
        ASSERT_EQ(feeder.Input(frame == 0 ? SG_FRAME_SUB_TYPE_I : SG_FRAME_SUB_TYPE_P, 1024),
                  SG_ERR_NOERR);
        // Whatever is emitted belongs to the clusters.
        ASSERT_GE(counter.lowest, kFirstCluster);
    }
    // Two clusters of 2 GiB and 16 bytes, and one block in the third.
    const uint64_t third = kFirstCluster + 2 * ((uint64_t{2} << 30) + 16);
    EXPECT_EQ(counter.end, third + 16 + 2097152);

    EXPECT_EQ(feeder.Input(SG_FRAME_SUB_TYPE_I, 1024), SG_ERR_NOERR);
    const uint64_t end = third + 16 + 2 * 2097152;
    EXPECT_EQ(counter.end, end);
    counter.Forget();
    EXPECT_EQ(feeder.Tailer(), SG_ERR_NOERR);
    EXPECT_EQ(counter.end, end + 12 + 2 * 24);
    EXPECT_TRUE(Same(counter.last, Size8(end - kFirstCluster + 60 + 1000)));
    // 4 GiB + 1091, and a block of 2 MiB with 20 bytes.
    EXPECT_TRUE(Same(counter.previous, Cues({{0, 1059, 4}, {2000, 1091, 20}})));
    EXPECT_TRUE(Same(counter.seeks, Seeks(500, 562, static_cast<uint32_t>(end - 59))));
}

}  // namespace
}  // namespace Golden
