// What the tailer emits, and calls behind it.
#include "golden/flv/Pieces.h"

namespace GoldenFlv
{
namespace
{

using namespace Orbel::Wrapton;
using Support::H264I;
using Support::H264P;
using Support::Hex;
using Support::Join;

constexpr double kFirstBlock = 279 + 39 + 43;  // start with kIFrame

TEST(FlvTailer, IsEndTagThenClosingHeaderBothAppended)
{
    Recording recording(SG_STREAM_TYPE_FLV);
    recording.Input(H264I(kIFrame)).Tailer();
    Meta meta;
    meta.duration = 1 / 25.0;
    meta.fileSize = kFirstBlock + 20;
    ASSERT_EQ(recording.Blocks().size(), 3u);
    EXPECT_TRUE(IsAppended(recording.Blocks()[1], EndTag(40)));
    EXPECT_TRUE(IsAppended(recording.Blocks()[2], Join({FileHeader(1), MetaTag(meta)})));
}

TEST(FlvTailer, AppendsASecondHeaderOfTheFirstOnesLengthThatNowTellsOfAudio)
{
    Recording recording(SG_STREAM_TYPE_FLV);
    recording.Input(H264I(kIFrame)).Input(Pcm16(Hex("11"), 44000, 2, 8)).Tailer();
    Meta meta;
    EXPECT_TRUE(Support::Same(Support::Slice(recording.File(), 0, 279),
                              Join({FileHeader(1), MetaTag(meta)})));
    meta.duration = 1 / 25.0;
    meta.sampleRate = 44000;
    meta.sampleSize = 8;
    meta.stereo = 1;
    meta.audioCodec = 3;
    meta.fileSize = kFirstBlock + 17 + 20;
    EXPECT_TRUE(Support::Same(Support::Slice(recording.File(), recording.File().size() - 279, 279),
                              Join({FileHeader(5), MetaTag(meta)})));
}

TEST(FlvTailer, AheadOfAnyVideoStillEmitsBothBlocks)
{
    Recording recording(SG_STREAM_TYPE_FLV);
    recording.Input(Pcm16(Hex("11"))).Tailer();
    Meta meta;
    meta.width = 0;
    meta.height = 0;
    meta.frameRate = 0;
    meta.videoCodec = 0;
    meta.fileSize = 20;
    ASSERT_EQ(recording.Blocks().size(), 2u);
    EXPECT_TRUE(IsAppended(recording.Blocks()[0], EndTag(0)));
    EXPECT_TRUE(IsAppended(recording.Blocks()[1], Join({FileHeader(0), MetaTag(meta)})));
    // The recording can begin yet.
    recording.Fresh();
    recording.Input(H264I(kIFrame));
    Meta start;
    start.fileSize = 20;
    EXPECT_TRUE(
        Support::Same(recording.Fresh(), Join({Start(1, start), VideoTag(0, true, kIUnits)})));
}

TEST(FlvTailer, StopsNothing)
{
    Recording recording(SG_STREAM_TYPE_FLV);
    recording.Input(H264I(kIFrame)).Tailer();
    recording.Fresh();
    recording.Input(H264P(kPFrame)).Input(Pcm16(Hex("11 22")));
    EXPECT_TRUE(Support::Same(
        recording.Fresh(), Join({VideoTag(40, false, kPUnits), AudioTag(40, 0x32, Hex("11 22"))})));
    recording.Tailer();
    Meta meta;
    meta.duration = 2 / 25.0;
    meta.sampleRate = 8000;
    meta.sampleSize = 16;
    meta.audioCodec = 3;
    // Two end tags count, the first closing header does not.
    meta.fileSize = kFirstBlock + 20 + 27 + 18 + 20;
    EXPECT_TRUE(Support::Same(recording.Fresh(), Join({EndTag(80), FileHeader(5), MetaTag(meta)})));
}

TEST(FlvTailer, IsEmptyForTheStreamVariant)
{
    Recording recording(SG_STREAM_TYPE_STREAM_FLV);
    recording.Tailer();
    EXPECT_TRUE(recording.Blocks().empty());
    recording.Input(H264I(kIFrame)).Input(Pcm16(Hex("11 22")));
    recording.Fresh();
    recording.Tailer().Tailer();
    EXPECT_TRUE(recording.Fresh().empty());
    recording.Input(H264P(kPFrame));
    EXPECT_TRUE(Support::Same(recording.Fresh(), VideoTag(40, false, kPUnits)));
}

}  // namespace
}  // namespace GoldenFlv
