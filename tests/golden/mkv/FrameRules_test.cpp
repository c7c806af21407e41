// Which frames are stored, dropped and refused.
#include <array>

#include "golden/mkv/Recording.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Frame;
using Support::Payload;

TEST(MkvFrames, OtherTypesThanVideoAreRefused)
{
    Recording recording;
    recording.Header().Input(IFrame(10));
    recording.Sink().ForgetBlocks();
    for (const uint32_t type : {0u, 2u, 3u, 4u, UINT32_MAX})
    {
        Frame frame = PFrame(10);
        frame.type = type;
        EXPECT_EQ(recording.Calls().Input(frame), SG_ERR_PARAM_ERR) << type;
    }
    EXPECT_EQ(recording.Calls().Input(Support::Aac(Payload(20))), SG_ERR_PARAM_ERR);
    EXPECT_TRUE(recording.Blocks().empty());
}

TEST(MkvFrames, FramesWithoutDataAreRefused)
{
    Recording recording;
    recording.Header();
    recording.Sink().ForgetBlocks();
    SGFrameInfo record = Support::RecordOf(IFrame(10));
    EXPECT_EQ(SG_InputFrame(recording.Calls().Handle(), &record), SG_ERR_PARAM_ERR);
    unsigned char byte = 0;
    record.frame_pointer = &byte;
    record.frame_size = 0;
    EXPECT_EQ(SG_InputFrame(recording.Calls().Handle(), &record), SG_ERR_PARAM_ERR);
    EXPECT_TRUE(recording.Blocks().empty());
}

TEST(MkvFrames, AheadOfTheFirstIFrameAreDropped)
{
    Recording recording;
    recording.Header();
    recording.Sink().ForgetBlocks();
    recording.Input(PFrame(10)).Input(BFrame(10)).Input(IFrame(10).As(SG_FRAME_SUB_TYPE_UNKNOW));
    EXPECT_TRUE(recording.Blocks().empty());
    recording.Input(IFrame(10));
    EXPECT_TRUE(Same(recording.Clusters(), Cluster(0, {SimpleBlock(0, "80", Payload(10))})));
}

TEST(MkvFrames, OfAnotherEncodingAreDroppedEvenIFrames)
{
    Recording recording;
    recording.Header().Input(IFrame(10));
    recording.Sink().ForgetBlocks();
    recording.Input(Support::H264I(Payload(10))).Input(Support::JpegI(Payload(10)));
    EXPECT_TRUE(recording.Blocks().empty());
    recording.Input(PFrame(5));
    EXPECT_TRUE(
        Same(recording.Clusters(),
             Cluster(0, {SimpleBlock(0, "80", Payload(10)), SimpleBlock(40, "00", Payload(5))})));
}

TEST(MkvFrames, TheTwoH264EncodingsAreNotTheSame)
{
    Recording recording;
    recording.Header().Input(Support::Video(SG_ENCODE_VIDEO_QV_H264, 0, Payload(10)));
    recording.Sink().ForgetBlocks();
    recording.Input(Support::Video(SG_ENCODE_VIDEO_HI_H264, 1, Payload(10)));
    EXPECT_TRUE(recording.Blocks().empty());
}

TEST(MkvFrames, OfOtherSubTypesLeaveNoClusterBlockCueOrCount)
{
    for (const uint32_t sub_type : {3u, 7u, 8u, 9u, 10u, UINT32_MAX})
    {
        Recording recording;
        recording.Header().Input(IFrame(10)).Input(PFrame(5), 24);
        recording.Sink().ForgetBlocks();
        recording.Input(PFrame(7).As(sub_type));
        EXPECT_TRUE(recording.Blocks().empty()) << sub_type;
        // Frame 25 is the next and opens the cluster.
        recording.Input(PFrame(3));
        EXPECT_EQ(recording.Blocks().size(), 5u) << sub_type;
    }
}

TEST(MkvFrames, OfOtherSubTypesStillHaveTheirStartCodesReplaced)
{
    Recording recording;
    recording.Header();
    recording.Sink().ForgetBlocks();
    Frame frame = Support::H264I(Support::Nal(Payload(9))).As(SG_FRAME_SUB_TYPE_JPEG_FRAME);
    EXPECT_EQ(InputInPlace(recording.Calls().Handle(), frame), SG_ERR_NOERR);
    EXPECT_TRUE(Same(frame.bytes, Support::LengthNal(Payload(9))));
    EXPECT_TRUE(recording.Blocks().empty());
}

TEST(MkvFrames, FirstIFrameWithoutARateOpensTheTrackButIsRefused)
{
    Recording recording;
    recording.Header();
    recording.Sink().ForgetBlocks();
    EXPECT_EQ(recording.Calls().Input(IFrame(10).AtRate(0)), SG_ERR_PARAM_ERR);
    EXPECT_EQ(recording.Calls().Input(PFrame(10).AtRate(0)), SG_ERR_PARAM_ERR);
    EXPECT_TRUE(recording.Blocks().empty());

    // The next frame with a rate is the first.
    recording.Input(PFrame(5)).Tailer();
    EXPECT_TRUE(Same(recording.Entries(), VideoEntry{.codecId = AspId()}.Element()));
    const Bytes cluster = Cluster(0, {SimpleBlock(0, "00", Payload(5))});
    EXPECT_TRUE(Same(recording.Clusters(), Join({cluster, Cues({})})));
}

TEST(MkvFrames, StreamWithoutARateHasATrackAndNoCluster)
{
    Recording recording;
    recording.Header();
    EXPECT_EQ(recording.Calls().Input(IFrame(10).AtRate(0)), SG_ERR_PARAM_ERR);
    recording.Tailer();
    EXPECT_TRUE(Same(recording.Clusters(), Cues({})));
}

// A block of this length has 8 bytes ahead of the frame; the work buffer has 2 MiB.
TEST(MkvFrames, AreDroppedWhenTheirBlockDoesNotFitTheWorkBuffer)
{
    constexpr std::size_t kLargest = 2097152 - 8;
    Recording recording;
    recording.Header();
    recording.Sink().ForgetBlocks();
    for (const std::size_t size : {kLargest + 1, kLargest + 2, std::size_t{2097152}})
    {
        recording.Input(IFrame(size));
    }
    EXPECT_TRUE(recording.Blocks().empty());

    recording.Input(IFrame(kLargest)).Input(PFrame(kLargest - 1));
    ASSERT_EQ(recording.Blocks().size(), 7u);
    EXPECT_EQ(recording.Blocks()[3].size, 2097152);
    EXPECT_EQ(recording.Blocks()[5].size, 2097151);
    EXPECT_TRUE(Same(Support::Slice(recording.Clusters(), kClusterHead, 8 + kLargest),
                     SimpleBlock(0, "80", Payload(kLargest))));
}

TEST(MkvFrames, TooLargeOnesKeepTheirBytesAndBringNoParameterSets)
{
    const Bytes sets =
        Join({Support::Nal(Support::Hex("67 42 00 1E")), Support::Nal(Support::Hex("68 CE"))});
    Recording recording;
    recording.Header();
    Frame large = Support::H264I(Join({sets, Payload(2097152)}));
    const Bytes before = large.bytes;
    EXPECT_EQ(InputInPlace(recording.Calls().Handle(), large), SG_ERR_NOERR);
    EXPECT_TRUE(large.bytes == before);

    // Whatever size a frame claims: it is not looked at.
    unsigned char byte = 0;
    SGFrameInfo record = Support::RecordOf(IFrame(1));
    record.frame_pointer = &byte;
    for (const uint32_t size : {2097153u, 0x7FFFFFFFu, UINT32_MAX})
    {
        record.frame_size = size;
        EXPECT_EQ(SG_InputFrame(recording.Calls().Handle(), &record), SG_ERR_NOERR);
    }

    recording.Input(Support::H264I(Support::Nal(Payload(5)))).Tailer();
    EXPECT_TRUE(
        Same(recording.Entries(),
             VideoEntry{
                 .codecId = AvcId(), .defaultDuration = 40000000, .codecPrivate = EmptyAvcConfig()}
                 .Element()));
}

}  // namespace
}  // namespace Golden
