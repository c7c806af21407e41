// Extension RIFFs past 4 GiB: positions and index entries go on where 32 bits end.
#include "golden/avi/LongRecording.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;

constexpr uint32_t kPicture = (64u << 20) - 8;  // a chunk of 64 MiB
constexpr uint32_t kChunks = 16;                // fill a RIFF of 1 GiB
constexpr uint64_t kData = 1u << 30;
constexpr uint32_t kIndex = 32 + 8 * kChunks;

/// Where RIFF @p number begins. The first has headers of 4128 bytes, its index and idx1; the others
/// have headers of 24 bytes and their index twice.
uint64_t RiffAt(uint32_t number)
{
    if (number == 0) return 0;
    const uint64_t first = 4128 + kData + kIndex + 8 + 16 * kChunks;
    return first + (number - 1) * (24 + kData + 2 * kIndex);
}

TEST(AviPast4GiB, PositionsAndIndexEntriesHave64Bits)
{
    LongRecording recording(kPicture);
    recording.Header(VideoHeader());
    std::vector<SuperEntry> entries;
    for (uint32_t riff = 0; riff < 5; ++riff)
    {
        const uint64_t data = RiffAt(riff) + (riff == 0 ? 4128 : 24);
        for (uint32_t chunk = 0; chunk < kChunks; ++chunk)
        {
            recording.Sink().ForgetBlocks();
            recording.Video(SG_FRAME_SUB_TYPE_I, kPicture);
            ASSERT_TRUE(IsChunkBlock(
                recording.Blocks()[0], data + chunk * uint64_t{kPicture + 8}, "00dc", kPicture));
        }
        // Entered is the second copy.
        entries.push_back({data + kData + (riff == 0 ? 0 : kIndex), kIndex, kChunks});
    }
    const uint64_t last = RiffAt(5);
    ASSERT_GT(RiffAt(4), uint64_t{1} << 32);
    EXPECT_TRUE(
        IsBlockAt(recording.Blocks().back(), last, Join({RiffHeader(24, "AVIX"), MoviHeader(12)})));

    recording.Video(SG_FRAME_SUB_TYPE_I, 2);
    entries.push_back({last + 24 + 10, 40, 1});
    recording.Sink().ForgetBlocks();
    recording.Tailer();
    const auto& blocks = recording.Blocks();
    ASSERT_EQ(blocks.size(), 3u);
    EXPECT_TRUE(IsBlockAt(blocks[0], last + 24 + 10, Ix("ix00", "00dc", last + 20, {{12, 2}})));
    EXPECT_TRUE(IsBlockAt(
        blocks[1], last, Join({RiffHeader(24 + 10 + 40, "AVIX"), MoviHeader(12 + 10 + 40)})));
    EXPECT_TRUE(Same(Support::Slice(blocks[2].data, 76 + 124, 1032), Indx("00dc", entries)));
}

}  // namespace
}  // namespace Golden
