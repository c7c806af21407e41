// Results of calls out of order and of frames that are no frames.
#include "golden/mp4/Recording.h"
#include "support/PrintsNothing.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Aac;
using Support::Ext;
using Support::Frame;
using Support::H264I;
using Support::RecordOf;

class CallOrder : public EveryFlavour
{
};
INSTANTIATE_FLAVOURS(CallOrder);

TEST_P(CallOrder, FramesAheadOfTheHeaderGiveNoOutput)
{
    Recording recording(GetParam());
    recording.Input(H264I(kIFrame)).Input(Aac(Support::Payload(20))).Input(Ext({1}));
    EXPECT_TRUE(recording.Blocks().empty());
}

TEST_P(CallOrder, TailerAheadOfTheHeaderIsRefused)
{
    Recording recording(GetParam());
    EXPECT_EQ(recording.Calls().Tailer(), SG_ERR_PARAM_ERR);
    EXPECT_TRUE(recording.Blocks().empty());
}

TEST_P(CallOrder, SecondTailerIsRefusedAndEmitsNothing)
{
    Recording recording(GetParam());
    recording.Header().Input(H264I(kIFrame)).Tailer();
    recording.Sink().ForgetBlocks();
    EXPECT_EQ(recording.Calls().Tailer(), SG_ERR_PARAM_ERR);
    EXPECT_TRUE(recording.Blocks().empty());
}

TEST_P(CallOrder, FramesBehindTheTailerGiveNoOutput)
{
    Recording recording(GetParam());
    recording.Header().Input(H264I(kIFrame)).Tailer();
    recording.Sink().ForgetBlocks();
    recording.Input(H264I(kIFrame)).Input(Aac(Support::Payload(20))).Input(Ext({1}));
    EXPECT_TRUE(recording.Blocks().empty());
}

TEST_P(CallOrder, SecondHeaderInsideARecordingIsRefusedAndChangesNothing)
{
    Recording once(GetParam());
    once.Header(64).Input(H264I(kIFrame)).Input(Aac(Support::Payload(20))).Tailer();

    Recording twice(GetParam());
    twice.Header(64);
    EXPECT_EQ(twice.Calls().Header(7), SG_ERR_PARAM_ERR);
    twice.Input(H264I(kIFrame));
    EXPECT_EQ(twice.Calls().HeaderWith(nullptr), SG_ERR_PARAM_ERR);
    twice.Input(Aac(Support::Payload(20))).Tailer();

    EXPECT_EQ(once.Blocks().size(), twice.Blocks().size());
    EXPECT_TRUE(Support::Same(twice.File(), once.File()));
}

TEST_P(CallOrder, DestroyWithoutTailerEmitsNothing)
{
    Recording recording(GetParam());
    recording.Header().Input(H264I(kIFrame));
    recording.Sink().ForgetBlocks();
    EXPECT_EQ(recording.Calls().Destroy(), SG_ERR_NOERR);
    EXPECT_TRUE(recording.Blocks().empty());
}

TEST_P(CallOrder, WorksWithoutAnyCreateRecord)
{
    void* const handle = SG_CreateHandle(GetParam().type, nullptr);
    ASSERT_NE(handle, nullptr);
    Frame frame = H264I(kIFrame);
    SGFrameInfo record = RecordOf(frame);
    record.frame_pointer = frame.bytes.data();
    EXPECT_EQ(SG_CreateHeader(handle, nullptr), SG_ERR_NOERR);
    EXPECT_EQ(SG_InputFrame(handle, &record), SG_ERR_NOERR);
    EXPECT_EQ(SG_CreateTailer(handle, nullptr), SG_ERR_NOERR);
    EXPECT_EQ(SG_DestroyHandle(handle), SG_ERR_NOERR);
}

/// Calls SG_InputFrame() with a record that the test has spoiled.
int InputSpoiled(Recording& recording, const Frame& frame, void (*spoil)(SGFrameInfo&))
{
    Frame copy = frame;
    SGFrameInfo record = RecordOf(copy);
    record.frame_pointer = copy.bytes.data();
    spoil(record);
    return SG_InputFrame(recording.Calls().Handle(), &record);
}

TEST(FrameArgument, IsRefusedWhenItIsNoFrame)
{
    Recording recording(kMp4);
    recording.Header();
    recording.Sink().ForgetBlocks();
    const Frame frame = H264I(kIFrame);
    EXPECT_EQ(SG_InputFrame(recording.Calls().Handle(), nullptr), SG_ERR_PARAM_ERR);
    EXPECT_EQ(InputSpoiled(recording, frame, [](SGFrameInfo& r) { r.struct_size = 111; }),
              SG_ERR_PARAM_ERR);
    EXPECT_EQ(InputSpoiled(recording, frame, [](SGFrameInfo& r) { r.struct_size = 113; }),
              SG_ERR_PARAM_ERR);
    EXPECT_EQ(InputSpoiled(recording, frame, [](SGFrameInfo& r) { r.frame_pointer = nullptr; }),
              SG_ERR_PARAM_ERR);
    EXPECT_EQ(InputSpoiled(recording, frame, [](SGFrameInfo& r) { r.frame_size = 0; }),
              SG_ERR_PARAM_ERR);
    EXPECT_TRUE(recording.Blocks().empty());
    EXPECT_EQ(InputSpoiled(recording, frame, [](SGFrameInfo&) {}), SG_ERR_NOERR);
    EXPECT_EQ(recording.Blocks().size(), 1u);
}

TEST(FrameArgument, IsRefusedWhenItsTypeIsNotVideoAudioOrExt)
{
    Recording recording(kMp4);
    recording.Header().Input(H264I(kIFrame));
    recording.Sink().ForgetBlocks();
    for (const uint32_t type : {0u, 4u, 5u, 0xFFFFFFFFu})
    {
        Frame frame = H264I(kIFrame);
        frame.type = type;
        EXPECT_EQ(recording.Calls().Input(frame), SG_ERR_PARAM_ERR) << type;
    }
    EXPECT_TRUE(recording.Blocks().empty());
}

TEST(FrameArgument, IsCheckedInTheSameWayAheadOfTheHeader)
{
    Recording recording(kMp4);
    const Frame frame = H264I(kIFrame);
    EXPECT_EQ(InputSpoiled(recording, frame, [](SGFrameInfo& r) { r.frame_pointer = nullptr; }),
              SG_ERR_PARAM_ERR);
    EXPECT_EQ(InputSpoiled(recording, frame, [](SGFrameInfo& r) { r.frame_size = 0; }),
              SG_ERR_PARAM_ERR);
    EXPECT_EQ(InputSpoiled(recording, frame, [](SGFrameInfo& r) { r.frame_type = 0; }),
              SG_ERR_PARAM_ERR);
}

TEST_P(CallOrder, ARecordingPrintsNothing)
{
    const Support::PrintsNothing quiet;
    Recording recording(GetParam());
    recording.Header(5000).Input(H264I(kIFrame)).Input(Aac(Support::Payload(20))).Tailer();
    recording.Calls().Destroy();
}

}  // namespace
}  // namespace Golden
