// Closing a file.
#include "golden/mkv/Recording.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Payload;

TEST(MkvTailer, GivesTracksVoidSeekPositionsCuesAndTheSegmentSize)
{
    Recording recording;
    recording.Header().Input(IFrame(10)).Input(PFrame(20), 24).Input(IFrame(30));
    recording.Sink().ForgetBlocks();
    recording.Tailer();

    const Bytes entry = PlainEntry().Element();
    const auto length = static_cast<uint32_t>(entry.size());
    ASSERT_EQ(length, 65u);
    // Blocks have 6 bytes ahead of the frame: 16 + 16 + 24 * 26 and 16 + 36 bytes of clusters.
    const uint32_t second = 1059 + 656;
    const uint32_t cues = second + 52;
    const auto& blocks = recording.Blocks();
    ASSERT_EQ(blocks.size(), 7u);
    EXPECT_TRUE(IsBlockAt(blocks[0], 633, entry));
    EXPECT_TRUE(IsBlockAt(blocks[1], 625, Size8(length)));
    EXPECT_TRUE(IsBlockAt(blocks[2], 633 + length, Support::Hex("EC")));
    EXPECT_TRUE(IsBlockAt(blocks[3], 634 + length, Size8(417 - length)));
    EXPECT_TRUE(IsBlockAt(blocks[4], 64, Seeks(500, 562, cues - 59)));
    // An I frame that opens a cluster stands at 4 in it.
    const Bytes cue_bytes = Cues({{0, 1059, 4}, {1000, second, 4}});
    EXPECT_TRUE(IsBlockAt(blocks[5], cues, cue_bytes));
    EXPECT_TRUE(IsBlockAt(blocks[6], 51, Size8(656 + 52 + cue_bytes.size() + 1000)));
}

TEST(MkvTailer, VoidReachesExactlyToTheFirstCluster)
{
    Recording recording;
    recording.Header().Input(IFrame(10)).Tailer();
    const std::size_t at = kEntriesAt + PlainEntry().Element().size();
    EXPECT_TRUE(Same(Support::Slice(recording.File(), at, 9),
                     VoidHead(static_cast<uint32_t>(kFirstCluster - at - 9))));
    // What is between was never written.
    EXPECT_TRUE(Same(Support::Slice(recording.File(), at + 9, kFirstCluster - at - 9),
                     Support::Zero(kFirstCluster - at - 9)));
}

TEST(MkvTailer, SegmentSizeLeadsExactlyToTheEnd)
{
    Recording recording;
    recording.Header().Input(IFrame(10)).Input(PFrame(500), 70).Tailer();
    EXPECT_TRUE(Same(Support::Slice(recording.File(), kSegmentSize, 8),
                     Size8(recording.File().size() - 59)));
}

TEST(MkvTailer, StreamWithoutAnIFrameGivesAnEmptyTracksElementAndNoCluster)
{
    Recording recording;
    recording.Header().Input(PFrame(10), 30);
    recording.Sink().ForgetBlocks();
    recording.Tailer();
    const auto& blocks = recording.Blocks();
    ASSERT_EQ(blocks.size(), 6u);  // no empty block for the entries
    EXPECT_TRUE(IsBlockAt(blocks[0], 625, Size8(0)));
    EXPECT_TRUE(IsBlockAt(blocks[1], 633, Support::Hex("EC")));
    EXPECT_TRUE(IsBlockAt(blocks[2], 634, Size8(417)));
    EXPECT_TRUE(IsBlockAt(blocks[3], 64, Seeks(500, 562, 1000)));
    EXPECT_TRUE(IsBlockAt(blocks[4], 1059, Cues({})));
    EXPECT_TRUE(IsBlockAt(blocks[5], 51, Size8(1012)));
}

// Kept: positions are those in the file, and counted from the length of the cluster so far.
TEST(MkvTailer, CueOfAnIFrameInsideAClusterCountsFromTheWholeLengthSoFar)
{
    Recording recording;
    recording.Header().Input(IFrame(10)).Input(PFrame(20)).Input(IFrame(30)).Tailer();
    // 16 + 26 bytes of blocks, and 16 of the cluster's head: 58, and 4.
    const Bytes cues = Cues({{0, 1059, 4}, {80, 1059, 62}});
    EXPECT_TRUE(
        Same(Support::Slice(recording.File(), 1059 + 16 + 16 + 26 + 36, cues.size()), cues));
}

// Kept: the time of a block has a sign, and its cue goes back with it.
TEST(MkvTailer, CueTimeFollowsANegativeBlockTime)
{
    Recording recording;
    recording.Header().Input(IFrame(1).AtRate(1)).Input(PFrame(1).AtRate(1));
    // Frame 2 is no multiple of 100, so it belongs to cluster 1 and counts from 100 on:
    // (2 - 100) * 1000 = 0xFFFE8130 in 32 bits; by 100: 42948692 = 0x28F5854.
    recording.Input(IFrame(1).AtRate(100));
    // Frame 3: (3 - 70) * 1000 = 0xFFFEFA48; by 70: 61355718 = 0x3A836C6.
    recording.Input(IFrame(1).AtRate(70));
    // Frame 4: (4 - 6) * 1000 = 0xFFFFF830; by 6: 715827549 = 0x2AAAA95D, of which 0xA95D is
    // negative: -22179.
    recording.Input(IFrame(1).AtRate(6)).Tailer();
    const Bytes one = Payload(1);
    const Bytes first = Cluster(0, {SimpleBlock(0, "80", one)});
    const Bytes second = Cluster(1000,
                                 {SimpleBlock(0, "00", one),
                                  SimpleBlock(0x5854, "80", one),
                                  SimpleBlock(0x36C6, "80", one),
                                  SimpleBlock(0xA95D, "80", one)});
    EXPECT_TRUE(Same(recording.Clusters(),
                     Join({first,
                           second,
                           Cues({{0, 1059, 4},
                                 {1000 + 0x5854, 1059 + 23, 16 + 7 + 4},
                                 {1000 + 0x36C6, 1059 + 23, 16 + 14 + 4},
                                 {1000u - 22179u, 1059 + 23, 16 + 21 + 4}})})));
}

TEST(MkvTailer, CueTimesGoOnWhereThoseOfClustersWrap)
{
    Recording recording;
    recording.Header().Input(IFrame(1).AtRate(1)).Input(PFrame(1).AtRate(1), 65);
    recording.Input(IFrame(1).AtRate(1)).Tailer();
    constexpr uint32_t kLength = kClusterHead + 7;
    const Bytes cues = Cues({{0, 1059, 4}, {66000, 1059 + 66 * kLength, 4}});
    EXPECT_TRUE(Same(Support::Slice(recording.File(), 1059 + 67 * kLength, cues.size()), cues));
}

TEST(MkvTailer, RelativePositionKeepsItsLow16Bits)
{
    Recording recording;
    recording.Header().Input(IFrame(70000)).Input(IFrame(1)).Tailer();
    const std::size_t end = 1059 + 16 + 70008 + 7;  // the first block has 8 bytes ahead
    // 70008 + 16 + 4 = 70028 = 0x1118C
    EXPECT_TRUE(
        Same(Support::Slice(recording.File(), end, 60), Cues({{0, 1059, 4}, {40, 1059, 0x118C}})));
}

}  // namespace
}  // namespace Golden
