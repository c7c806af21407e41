// Clusters and blocks.
#include <array>

#include "golden/mkv/Recording.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Frame;
using Support::Payload;
using Support::Slice;

TEST(MkvClusters, OpenWithThreeBlocksAndGetTheirSizeAfterEveryBlock)
{
    Recording recording;
    recording.Header();
    recording.Sink().ForgetBlocks();
    recording.Input(IFrame(10, 1)).Input(PFrame(20, 2));
    const auto& blocks = recording.Blocks();
    ASSERT_EQ(blocks.size(), 7u);
    EXPECT_TRUE(IsBlockAt(blocks[0], 1059, ClusterId()));
    EXPECT_TRUE(IsBlockAt(blocks[1], 1063, Support::Zero(8)));
    EXPECT_TRUE(IsBlockAt(blocks[2], 1071, Timecode(0)));
    EXPECT_TRUE(IsBlockAt(blocks[3], 1075, SimpleBlock(0, "80", Payload(10, 1))));
    EXPECT_TRUE(IsBlockAt(blocks[4], 1063, Size8(4 + 16)));
    EXPECT_TRUE(IsBlockAt(blocks[5], 1091, SimpleBlock(40, "00", Payload(20, 2))));
    EXPECT_TRUE(IsBlockAt(blocks[6], 1063, Size8(4 + 16 + 26)));
}

TEST(MkvClusters, BFramesCarryTheKeyFlag)
{
    Recording recording;
    recording.Header().Input(IFrame(3)).Input(BFrame(3)).Input(PFrame(3));
    EXPECT_TRUE(Same(recording.Clusters(),
                     Cluster(0,
                             {SimpleBlock(0, "80", Payload(3)),
                              SimpleBlock(40, "80", Payload(3)),
                              SimpleBlock(80, "00", Payload(3))})));
}

TEST(MkvClusters, BeginAtFrames0And25And50At25FramesPerSecond)
{
    Recording recording;
    recording.Header().Input(IFrame(2)).Input(PFrame(2), 59);
    Bytes expected;
    for (uint32_t cluster = 0; cluster < 3; ++cluster)
    {
        std::vector<Bytes> blocks;
        for (uint32_t frame = 0; frame < (cluster == 2 ? 10u : 25u); ++frame)
        {
            const bool key = cluster == 0 && frame == 0;
            blocks.push_back(SimpleBlock(frame * 40, key ? "80" : "00", Payload(2)));
        }
        Support::Append(expected, Cluster(cluster * 1000, blocks));
    }
    EXPECT_TRUE(Same(recording.Clusters(), expected));
}

// A block of 123 bytes has a size of 127, which takes the longer form; 16379 and 2097147 likewise.
TEST(MkvClusters, BlockSizesTakeTheLongerFormAheadOfAllOnes)
{
    const std::array<std::pair<std::size_t, Bytes>, 6> cases = {{
        {122, Support::Hex("A3 FE 81 00 00 80")},
        {123, Support::Hex("A3 40 7F 81 00 00 80")},
        {16378, Support::Hex("A3 7F FE 81 00 00 80")},
        {16379, Support::Hex("A3 20 3F FF 81 00 00 80")},
        {65535, Support::Hex("A3 21 00 03 81 00 00 80")},
        {1, Support::Hex("A3 85 81 00 00 80")},
    }};
    for (const auto& [size, head] : cases)
    {
        Recording recording;
        recording.Header().Input(IFrame(size));
        EXPECT_TRUE(Same(Slice(recording.Clusters(), kClusterHead, head.size() + size),
                         Join({head, Payload(size)})));
    }
}

TEST(MkvClusters, TimesOfClustersWrapAfterThe66th)
{
    Recording recording;
    recording.Header().Input(IFrame(1).AtRate(1)).Input(PFrame(1).AtRate(1), 66);
    const Bytes clusters = recording.Clusters();
    constexpr std::size_t kLength = kClusterHead + 7;
    EXPECT_TRUE(Same(Slice(clusters, 65 * kLength + 12, 4), Timecode(65000)));
    EXPECT_TRUE(Same(Slice(clusters, 66 * kLength + 12, 4), Timecode(464)));  // 66000 - 65536
}

TEST(MkvClusters, EveryFrameCountsWithItsOwnRate)
{
    Recording recording;
    recording.Header().Input(IFrame(1)).Input(PFrame(1), 9);
    // Frame 10: a multiple of 10 opens cluster 1.
    recording.Input(PFrame(1).AtRate(10));
    // Frame 11, cluster 1: (11 - 25) * 1000 = 0xFFFFC950 in 32 bits; by 25: 171798131 = 0xA3D6E73.
    recording.Input(PFrame(1));
    // Frame 12: a multiple of 4 opens cluster 2 and counts from 8.
    recording.Input(PFrame(1).AtRate(4));
    // Frame 13 without a rate stands at the beginning of its cluster.
    recording.Input(PFrame(1).AtRate(0));
    // Frame 14: (14 - 2 * 100) * 1000 = -186000 = 0xFFFD2970; by 100: 42947812 = 0x28F54E4.
    recording.Input(PFrame(1).AtRate(100));

    const Bytes one = Payload(1);
    std::vector<Bytes> first = {SimpleBlock(0, "80", one)};
    for (uint32_t frame = 1; frame < 10; ++frame)
    {
        first.push_back(SimpleBlock(frame * 40, "00", one));
    }
    EXPECT_TRUE(Same(recording.Clusters(),
                     Join({Cluster(0, first),
                           Cluster(1000,
                                   {SimpleBlock(0, "00", one),  // (10 - 10) * 1000 / 10
                                    SimpleBlock(0x6E73, "00", one)}),
                           Cluster(2000,
                                   {SimpleBlock(1000, "00", one),  // (12 - 8) * 1000 / 4
                                    SimpleBlock(0, "00", one),
                                    SimpleBlock(0x54E4, "00", one)})})));
}

TEST(MkvClusters, RatesAtTheEndsOfTheirRange)
{
    Recording recording;
    recording.Header().Input(IFrame(1).AtRate(UINT32_MAX)).Input(PFrame(1).AtRate(UINT32_MAX));
    recording.Input(PFrame(1).AtRate(1));
    const Bytes one = Payload(1);
    EXPECT_TRUE(Same(recording.Clusters(),
                     Join({Cluster(0, {SimpleBlock(0, "80", one), SimpleBlock(0, "00", one)}),
                           // Frame 2 of cluster 1: (2 - 1) * 1000 / 1
                           Cluster(1000, {SimpleBlock(1000, "00", one)})})));
}

TEST(MkvClusters, PositionsDoNotFollowWhatTheCallbackAnswers)
{
    Recording whole;
    whole.Header().Input(IFrame(101)).Input(PFrame(10), 30).Tailer();
    for (const int32_t answer : {-1, 0, 3, INT32_MAX})
    {
        Support::ResizingSink sink([answer](std::size_t, int32_t) { return answer; });
        Support::Recorder recorder(SG_STREAM_TYPE_MKV, sink);
        EXPECT_EQ(recorder.Header(), SG_ERR_NOERR);
        EXPECT_EQ(recorder.Input(IFrame(101)), SG_ERR_NOERR);
        for (int frame = 0; frame < 30; ++frame)
        {
            EXPECT_EQ(recorder.Input(PFrame(10)), SG_ERR_NOERR);
        }
        EXPECT_EQ(recorder.Tailer(), SG_ERR_NOERR);
        ASSERT_EQ(sink.Blocks().size(), whole.Blocks().size());
        for (std::size_t at = 0; at < sink.Blocks().size(); ++at)
        {
            EXPECT_EQ(sink.Blocks()[at].position, whole.Blocks()[at].position) << at;
            EXPECT_EQ(sink.Blocks()[at].size, whole.Blocks()[at].size) << at;
        }
    }
}

}  // namespace
}  // namespace Golden
