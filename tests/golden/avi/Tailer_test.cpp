// Closing a file that never passed 1 GiB.
#include "golden/avi/Recording.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;

TEST(AviTailer, GivesIndexRiffHeaderMoviHeaderAndHeaderList)
{
    Recording recording;
    recording.Header(VideoHeader()).Input(IFrame(3)).Input(PFrame(4));
    recording.Sink().ForgetBlocks();
    recording.Tailer();
    Avih avih = VideoAvih();
    avih.maxBytesPerSec = 87;  // 25 * 7 / 2
    avih.totalFrames = 2;
    avih.suggestedBufferSize = 4;
    VideoStrl video = VideoStream();
    video.length = 2;
    video.suggestedBufferSize = 4;

    const auto& blocks = recording.Blocks();
    ASSERT_EQ(blocks.size(), 4u);
    // Two chunks of 8 + 4 bytes, an index of 8 + 2 * 16.
    EXPECT_TRUE(IsBlockAt(blocks[0], 4152, Idx1({{"00dc", 16, 4}, {"00dc", 0, 16}})));
    // Kept: 8 more than the length of the file less 8.
    EXPECT_TRUE(IsBlockAt(blocks[1], 0, RiffHeader(4128 + 24 + 40, "AVI ")));
    EXPECT_TRUE(IsBlockAt(blocks[2], 4116, MoviHeader(4 + 24)));
    EXPECT_TRUE(IsBlockAt(blocks[3], 12, Hdrl({avih.Chunk(), video.List(), Junk(2864)})));
    EXPECT_EQ(recording.File().size(), 4192u);
}

TEST(AviTailer, RiffSizeIsTheLengthOfTheFile)
{
    Recording recording;
    recording.Header(VideoAndAudioHeader()).Input(IFrame(33)).Input(Sound(7)).Tailer();
    EXPECT_TRUE(Same(Support::Slice(recording.File(), 0, 12),
                     RiffHeader(static_cast<uint32_t>(recording.File().size()), "AVI ")));
}

}  // namespace
}  // namespace Golden
