// The allocator of the create record: what is asked of it, and what happens when it fails.
#include "golden/mp4/Recording.h"
#include "readers/Mp4Boxes.h"
#include "support/Allocators.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Aac;
using Support::AllocatorLog;
using Support::Ext;
using Support::H264I;
using Support::H264P;
using Support::Hex;
using Support::Payload;
using Support::Recorder;
using Support::SeekingSink;

constexpr int kWorkBuffer = 0x300000;

using Sizes = std::vector<int>;

SGCreateParam Create(SeekingSink& sink)
{
    SGCreateParam create = Support::CreateFor(sink);
    create.sg_malloc = &AllocatorLog::Malloc;
    create.sg_free = &AllocatorLog::Free;
    return create;
}

/// Size of the movie box of the last tailer.
int MovieSize(const SeekingSink& sink)
{
    return sink.Blocks().at(sink.Blocks().size() - 2).size;
}

class Allocation : public EveryFlavour
{
};
INSTANTIATE_FLAVOURS(Allocation);

TEST_P(Allocation, IsTheWorkBufferAndTheMovieBox)
{
    AllocatorLog log;
    SeekingSink sink;
    Recorder recorder(GetParam().type, Create(sink));
    EXPECT_EQ(log.Asked(), Sizes({kWorkBuffer}));
    recorder.Header(5000);
    recorder.Input(H264I(kIFrame));
    recorder.Input(Aac(Payload(20)));
    recorder.Input(Ext(Payload(20)));
    EXPECT_EQ(log.Asked(), Sizes({kWorkBuffer}));
    recorder.Tailer();
    EXPECT_EQ(log.Asked(), Sizes({kWorkBuffer, MovieSize(sink)}));
    EXPECT_TRUE(log.Released().empty());
    recorder.Destroy();
    EXPECT_EQ(log.LiveCount(), 0u);
    EXPECT_EQ(log.Released().size(), 2u);
}

TEST_P(Allocation, OfTheBackupIsKeptWhileItIsLargeEnough)
{
    AllocatorLog log;
    SeekingSink sink;
    Recorder recorder(GetParam().type, Create(sink));
    SGOutputData backup{};
    recorder.Header(0);
    EXPECT_EQ(recorder.Backup(backup), 116);
    EXPECT_EQ(recorder.Backup(backup), 116);
    EXPECT_EQ(log.Asked(), Sizes({kWorkBuffer, 116}));
    recorder.Input(H264I(kIFrame));
    const int larger = recorder.Backup(backup);
    EXPECT_EQ(log.Asked(), Sizes({kWorkBuffer, 116, larger}));
    EXPECT_EQ(log.Released(), Sizes({116}));
    recorder.Tailer();
    EXPECT_EQ(log.Asked(), Sizes({kWorkBuffer, 116, larger, larger}));
    // The next recording begins smaller.
    recorder.Header(0);
    EXPECT_EQ(recorder.Backup(backup), 116);
    recorder.Tailer();
    EXPECT_EQ(log.Asked().size(), 4u);
    recorder.Header(0);
    recorder.Input(H264I(kIFrame));
    recorder.Input(H264P(kPFrame));
    recorder.Tailer();
    EXPECT_EQ(log.Asked(), Sizes({kWorkBuffer, 116, larger, larger, MovieSize(sink)}));
    EXPECT_EQ(log.Released(), Sizes({116, larger}));
    recorder.Destroy();
    EXPECT_EQ(log.LiveCount(), 0u);
}

TEST_P(Allocation, ThatFailsForTheWorkBufferLeavesAHandleThatRefuses)
{
    AllocatorLog log;
    SeekingSink sink;
    log.FailCall(1);
    Recorder recorder(GetParam().type, Create(sink));
    ASSERT_NE(recorder.Handle(), nullptr);
    EXPECT_EQ(recorder.Input(H264I(kIFrame)), SG_ERR_PARAM_ERR);
    EXPECT_EQ(recorder.Tailer(), SG_ERR_PARAM_ERR);
    EXPECT_EQ(recorder.Header(0), SG_ERR_PARAM_ERR);
    EXPECT_EQ(recorder.Header(0), SG_ERR_PARAM_ERR);
    EXPECT_EQ(recorder.Input(H264I(kIFrame)), SG_ERR_PARAM_ERR);
    EXPECT_EQ(recorder.Input(Ext(Payload(9))), SG_ERR_PARAM_ERR);
    EXPECT_EQ(recorder.Tailer(), SG_ERR_PARAM_ERR);
    EXPECT_TRUE(sink.Blocks().empty());
    EXPECT_EQ(recorder.Destroy(), SG_ERR_NOERR);
    EXPECT_TRUE(log.Released().empty());
}

/// Records with backups between, and compares the file with that of a recording without failures.
void ExpectUnharmed(const Flavour& flavour, std::size_t failing)
{
    Recording whole(flavour);
    whole.Header(0).Input(H264I(kIFrame)).Input(H264P(kPFrame)).Tailer();

    AllocatorLog log;
    SeekingSink sink;
    const TimeWindow window;
    Recorder recorder(flavour.type, Create(sink));
    SGOutputData backup{};
    recorder.Header(0);
    log.FailCall(failing);
    const int first = recorder.Backup(backup);
    EXPECT_EQ(first, failing == 1 ? SG_ERR_PARAM_ERR : 116);
    recorder.Input(H264I(kIFrame));
    const int second = recorder.Backup(backup);
    EXPECT_EQ(second == SG_ERR_PARAM_ERR, failing == 2);
    recorder.Input(H264P(kPFrame));
    const int third = recorder.Backup(backup);
    EXPECT_EQ(third == SG_ERR_PARAM_ERR, failing == 3);
    const std::size_t blocks = sink.Blocks().size();
    if (failing == 4)
    {
        EXPECT_EQ(recorder.Tailer(), SG_ERR_PARAM_ERR);
        EXPECT_EQ(sink.Blocks().size(), blocks);
    }
    EXPECT_EQ(recorder.Tailer(), SG_ERR_NOERR);
    recorder.Destroy();
    EXPECT_EQ(log.LiveCount(), 0u);

    Bytes movie = sink.Blocks().at(sink.Blocks().size() - 2).data;
    window.MaskTimes(movie);
    EXPECT_TRUE(Support::Same(movie, whole.Movie()));
    EXPECT_EQ(sink.Blocks().size(), whole.Blocks().size());
    EXPECT_EQ(sink.Image().size(), whole.Sink().Image().size());
}

TEST_P(Allocation, ThatFailsForABackupOrTheTailerHarmsNothing)
{
    for (const std::size_t failing : {1u, 2u, 3u, 4u})
    {
        SCOPED_TRACE(failing);
        ExpectUnharmed(GetParam(), failing);
    }
}

TEST(AllocationOfTheTailer, FailsOnlyAfterTheReserveWasRewritten)
{
    Recording whole(kMp4);
    whole.Header(1000).Tailer();

    AllocatorLog log;
    SeekingSink sink;
    Recorder recorder(kMp4.type, Create(sink));
    recorder.Header(1000);
    log.FailCall(1);
    EXPECT_EQ(recorder.Tailer(), SG_ERR_PARAM_ERR);
    ASSERT_EQ(sink.Blocks().size(), 4u);
    EXPECT_EQ(sink.Blocks()[3].position, 32);
    EXPECT_EQ(sink.Blocks()[3].size, 8 + 1000 - 116);
    // The next attempt finds the whole reserve again.
    EXPECT_EQ(recorder.Tailer(), SG_ERR_NOERR);
    ASSERT_EQ(sink.Blocks().size(), 7u);
    EXPECT_EQ(sink.Blocks()[4].position, 32);
    EXPECT_EQ(sink.Blocks()[4].size, 8 + 1000 - 116);
    EXPECT_EQ(sink.Blocks()[5].position, 32 + 8 + 1000 - 116);
    EXPECT_EQ(sink.Image().size(), whole.Sink().Image().size());
}

TEST(AllocationOfTheTailer, ClosesTheReserveWhenTheMovieHasOutgrownItSince)
{
    constexpr uint32_t kReserve = 200;
    AllocatorLog log;
    SeekingSink sink;
    Recorder recorder(kMp4.type, Create(sink));
    recorder.Header(kReserve);
    log.FailCall(1);
    EXPECT_EQ(recorder.Tailer(), SG_ERR_PARAM_ERR);  // the movie of 116 bytes would have fitted
    ASSERT_EQ(sink.Blocks().size(), 4u);
    EXPECT_EQ(sink.Blocks()[3].size, 8 + kReserve - 116);

    recorder.Input(H264I(kIFrame));
    EXPECT_EQ(recorder.Tailer(), SG_ERR_NOERR);
    ASSERT_EQ(sink.Blocks().size(), 8u);
    EXPECT_EQ(sink.Blocks()[5].position, 32);
    EXPECT_EQ(sink.Blocks()[5].size, 8 + kReserve);
    EXPECT_EQ(Support::Slice(sink.Blocks()[5].data, 0, 8), Hex("00 00 00 D0 66 72 65 65"));
    EXPECT_EQ(Readers::TypesOf(Readers::ReadBoxes(sink.Image())), "ftyp free mdat moov");
}

TEST(AllocationOfTheTailer, ClosesTheReserveOnceWhenItFailsAgain)
{
    constexpr uint32_t kReserve = 200;
    AllocatorLog log;
    SeekingSink sink;
    Recorder recorder(kMp4.type, Create(sink));
    recorder.Header(kReserve);
    log.FailCall(1);
    EXPECT_EQ(recorder.Tailer(), SG_ERR_PARAM_ERR);
    recorder.Input(H264I(kIFrame));
    ASSERT_EQ(sink.Blocks().size(), 5u);

    log.FailCall(1);
    EXPECT_EQ(recorder.Tailer(), SG_ERR_PARAM_ERR);
    ASSERT_EQ(sink.Blocks().size(), 6u);
    EXPECT_EQ(sink.Blocks()[5].position, 32);
    EXPECT_EQ(sink.Blocks()[5].size, 8 + kReserve);

    EXPECT_EQ(recorder.Tailer(), SG_ERR_NOERR);
    EXPECT_EQ(sink.Blocks().size(), 8u);  // the movie and the header of the media data
    EXPECT_EQ(Readers::TypesOf(Readers::ReadBoxes(sink.Image())), "ftyp free mdat moov");
}

}  // namespace
}  // namespace Golden
