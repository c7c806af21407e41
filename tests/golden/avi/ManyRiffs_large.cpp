// More RIFFs than a super index has room for.
#include "golden/avi/LongRecording.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;

constexpr uint32_t k1GiB = 1u << 30;

TEST(AviManyRiffs, RecordingGoesOnPast62EntriesAndWritesNothingBehindTheIndex)
{
    LongRecording recording(k1GiB);
    recording.Header(VideoHeader());
    std::vector<SuperEntry> entries;
    uint64_t base = 0;
    for (uint32_t riff = 0; riff < 65; ++riff)
    {
        recording.Sink().ForgetBlocks();
        recording.Video(SG_FRAME_SUB_TYPE_I, k1GiB);
        // Every frame fills a RIFF. The first has headers of 4128 bytes and idx1 of 24; in the
        // others the index of 40 bytes stands twice.
        const uint64_t index = base + (riff == 0 ? 4128 : 24) + 8 + k1GiB;
        if (entries.size() < 62)
        {
            entries.push_back({riff == 0 ? index : index + 40, 40, 1});
        }
        base = index + (riff == 0 ? 40 + 24 : 80);
        ASSERT_TRUE(IsBlockAt(
            recording.Blocks().back(), base, Join({RiffHeader(24, "AVIX"), MoviHeader(12)})))
            << riff;
    }
    recording.Sink().ForgetBlocks();
    recording.Tailer();

    VideoStrl video = VideoStream();
    video.length = 1;
    video.suggestedBufferSize = k1GiB;
    video.index = Indx("00dc", entries);
    Avih avih = VideoAvih();
    avih.maxBytesPerSec = k1GiB;  // 25 * 2^30 cut to 32 bits
    avih.totalFrames = 1;
    avih.suggestedBufferSize = k1GiB;
    EXPECT_TRUE(IsBlockAt(
        recording.Blocks().back(), 12, Hdrl({avih.Chunk(), video.List(), Odml(65), Junk(2596)})));
}

}  // namespace
}  // namespace Golden
