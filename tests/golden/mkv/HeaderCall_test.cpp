// What SG_CreateHeader() emits: the front part of the file.
#include <ctime>

#include "golden/mkv/Recording.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Hex;
using Support::Zero;

TEST(MkvHeaderCall, GivesTheFrontPartInSixBlocks)
{
    const std::time_t before = std::time(nullptr);
    Recording recording;
    recording.Header();
    const std::time_t after = std::time(nullptr);

    const auto& blocks = recording.Blocks();
    ASSERT_EQ(blocks.size(), 6u);
    EXPECT_TRUE(IsBlockAt(blocks[0], 0, EbmlHeader()));
    EXPECT_TRUE(IsBlockAt(blocks[1], 47, Hex("18 53 80 67")));
    EXPECT_TRUE(IsBlockAt(blocks[2], 51, Zero(8)));
    EXPECT_TRUE(IsBlockAt(blocks[3], 59, SeekHead(0, 0, 0)));
    ASSERT_EQ(blocks[4].data.size(), 62u);
    // Kept: seconds since 1970.
    const uint64_t date = Support::ReadMsb64(blocks[4].data, kDateInInfo);
    EXPECT_GE(date, static_cast<uint64_t>(before));
    EXPECT_LE(date, static_cast<uint64_t>(after));
    EXPECT_TRUE(IsBlockAt(blocks[4], 559, Info(date)));
    EXPECT_TRUE(IsBlockAt(blocks[5], 621, Hex("16 54 AE 6B")));
}

TEST(MkvHeaderCall, DoesNotLookAtTheRecord)
{
    Recording recording;
    EXPECT_EQ(recording.Calls().HeaderWith(nullptr), SG_ERR_NOERR);
    EXPECT_EQ(recording.Blocks().size(), 6u);
}

TEST(MkvHeaderCall, IsRefusedInsideARecordingAndChangesNothing)
{
    Recording recording;
    recording.Header().Input(IFrame(10));
    recording.Sink().ForgetBlocks();
    EXPECT_EQ(recording.Calls().Header(), SG_ERR_PARAM_ERR);
    EXPECT_TRUE(recording.Blocks().empty());

    recording.Input(PFrame(5)).Tailer();
    Recording undisturbed;
    undisturbed.Header().Input(IFrame(10)).Input(PFrame(5)).Tailer();
    EXPECT_TRUE(Same(recording.Clusters(), undisturbed.Clusters()));
    EXPECT_TRUE(Same(recording.Entries(), undisturbed.Entries()));
}

TEST(MkvHeaderCall, AfterATailerBeginsANewFileFromScratch)
{
    Recording recording;
    recording.Header().Input(Support::H264I(Support::Nal(Hex("67 42 00 1E 95")))).Tailer();
    recording.Sink().ForgetBlocks();
    recording.Header().Input(IFrame(10)).Input(PFrame(5)).Tailer();

    Recording fresh;
    fresh.Header().Input(IFrame(10)).Input(PFrame(5)).Tailer();
    ASSERT_EQ(recording.Blocks().size(), fresh.Blocks().size());
    for (std::size_t at = 0; at < fresh.Blocks().size(); ++at)
    {
        if (at == 4) continue;  // the date in Info
        const Block& due = fresh.Blocks()[at];
        EXPECT_TRUE(
            IsBlockAt(recording.Blocks()[at], static_cast<uint64_t>(due.position), due.data));
    }
}

}  // namespace
}  // namespace Golden
