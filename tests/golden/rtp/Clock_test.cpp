// Time stamps.
#include "golden/rtp/Session.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Ext;
using Support::H264P;

const Frame kVideo = H264P(Long(Nal(0x41, 9)));

SGRtpPackageParam Starting(uint32_t timestamp, uint32_t audioSample = 8000)
{
    SGRtpPackageParam params = Params();
    params.timestamp = timestamp;
    params.audio_sample = audioSample;
    return params;
}

TEST(RtpClock, VideoAt0And40And80MillisecondsAdvancesBy3600)
{
    Session session(Starting(1000));
    EXPECT_EQ(session.StampOf(kVideo, 0), 1000u);
    EXPECT_EQ(session.StampOf(kVideo, 40), 1000u + 3600);
    EXPECT_EQ(session.StampOf(kVideo, 80), 1000u + 7200);
}

TEST(RtpClock, FirstFrameHasTheStartWhateverItsTime)
{
    for (const uint32_t time : {0u, 1u, 40u, 65535u, 65536u, 0xFFFFFFFFu})
    {
        Session session(Starting(77));
        EXPECT_EQ(session.StampOf(kVideo, time), 77u);
        EXPECT_EQ(session.StampOf(kVideo, time + 10), 77u + 900);
    }
}

TEST(RtpClock, AudioAt8000HzEvery20MillisecondsAdvancesBy160)
{
    Session session(Starting(5, 8000));
    EXPECT_EQ(session.StampOf(Sound(160), 100), 5u);
    EXPECT_EQ(session.StampOf(Sound(160), 120), 165u);
    EXPECT_EQ(session.StampOf(Sound(160), 140), 325u);
}

TEST(RtpClock, AudioRoundsEachStepDown)
{
    Session session(Starting(0, 11025));
    EXPECT_EQ(session.StampOf(Sound(1), 50), 0u);
    EXPECT_EQ(session.StampOf(Sound(1), 53), 33u);  // 33.075
    EXPECT_EQ(session.StampOf(Sound(1), 56), 66u);
}

TEST(RtpClock, AudioWithoutASampleRateStands)
{
    Session session(Starting(9, 0));
    EXPECT_EQ(session.StampOf(Sound(1), 50), 9u);
    EXPECT_EQ(session.StampOf(Sound(1), 5000), 9u);
}

TEST(RtpClock, AudioStepIsExactForHighRatesAndLongGaps)
{
    Session session(Starting(0, 192000));
    EXPECT_EQ(session.StampOf(Sound(1), 1), 0u);
    EXPECT_EQ(session.StampOf(Sound(1), 60001), 60000u * 192);
    Session highest(Starting(1, 0xFFFFFFFF));
    EXPECT_EQ(highest.StampOf(Sound(1), 1), 1u);
    // 1 + 65535 * 4294967295 / 1000, of which 32 bits are kept
    EXPECT_EQ(highest.StampOf(Sound(1), 0),
              1 + static_cast<uint32_t>(65535ull * 0xFFFFFFFFull / 1000));
}

TEST(RtpClock, ExtensionFramesAdvanceLikeVideo)
{
    Session session(Starting(0));
    EXPECT_EQ(session.StampOf(Ext({1}), 10), 0u);
    EXPECT_EQ(session.StampOf(Ext({1}), 11), 90u);
}

TEST(RtpClock, RunsThroughFramesOfAllKindsEachWithItsOwnStep)
{
    Session session(Starting(0, 8000));
    EXPECT_EQ(session.StampOf(kVideo, 100), 0u);
    EXPECT_EQ(session.StampOf(Sound(1), 110), 80u);
    EXPECT_EQ(session.StampOf(kVideo, 140), 80u + 2700);
    EXPECT_EQ(session.StampOf(Ext({1}), 141), 80u + 2700 + 90);
}

TEST(RtpClock, TimeThatWrapsFrom65530To10AdvancesBy16Milliseconds)
{
    Session session(Starting(0));
    EXPECT_EQ(session.StampOf(kVideo, 65530), 0u);
    EXPECT_EQ(session.StampOf(kVideo, 10), 16u * 90);
}

TEST(RtpClock, OnlyTheLow16BitsOfAGapCount)
{
    Session session(Starting(0));
    EXPECT_EQ(session.StampOf(kVideo, 100), 0u);
    EXPECT_EQ(session.StampOf(kVideo, 100 + 65535), 65535u * 90);
    EXPECT_EQ(session.StampOf(kVideo, 100 + 65535 + 65536), 65535u * 90);
    EXPECT_EQ(session.StampOf(kVideo, 100 + 65535 + 65536 + 65537), 65536u * 90);
}

TEST(RtpClock, TimeThatStepsBackCountsAsAGapForward)
{
    Session session(Starting(0));
    EXPECT_EQ(session.StampOf(kVideo, 100), 0u);
    EXPECT_EQ(session.StampOf(kVideo, 60), 65496u * 90);
}

TEST(RtpClock, ATimeOfZeroInTheMiddleIsATimeLikeAnyOther)
{
    Session session(Starting(0));
    EXPECT_EQ(session.StampOf(kVideo, 65500), 0u);
    EXPECT_EQ(session.StampOf(kVideo, 0), 36u * 90);
    EXPECT_EQ(session.StampOf(kVideo, 40), 76u * 90);
}

TEST(RtpClock, Wraps)
{
    Session session(Starting(0xFFFFFFFF));
    EXPECT_EQ(session.StampOf(kVideo, 0), 0xFFFFFFFFu);
    EXPECT_EQ(session.StampOf(kVideo, 1), 89u);
}

TEST(RtpClock, AllPacketsOfAFrameHaveOneStamp)
{
    Session session(Starting(4));
    session.StampOf(kVideo, 0);
    Frame frame = H264P(Support::Join({Long(Nal(0x41, 3000)), Short(Nal(0x41, 5))}));
    frame.time = 40;
    const auto packets = session.Packets(frame);
    EXPECT_EQ(packets.size(), 5u);
    for (const auto& packet : packets)
    {
        EXPECT_EQ(packet.timestamp, 3604u);
    }
}

TEST(RtpClock, AStartSetLaterCountsOnlyWhileTheClockStandsAtZero)
{
    Session zero(Starting(0));
    EXPECT_EQ(zero.StampOf(kVideo, 0), 0u);
    zero.Set(Starting(5000));
    EXPECT_EQ(zero.StampOf(kVideo, 40), 5000u + 3600);

    Session running(Starting(1));
    EXPECT_EQ(running.StampOf(kVideo, 0), 1u);
    running.Set(Starting(5000));
    EXPECT_EQ(running.StampOf(kVideo, 40), 3601u);
}

TEST(RtpClock, AClockThatWrapsToZeroStartsOver)
{
    Session session(Starting(0u - 3600));
    EXPECT_EQ(session.StampOf(kVideo, 0), 0u - 3600);
    EXPECT_EQ(session.StampOf(kVideo, 40), 0u);
    EXPECT_EQ(session.StampOf(kVideo, 80), 0u);  // the start once more, 3600 behind it
}

TEST(RtpClock, ARefusedFrameDoesNotMoveIt)
{
    Session session(Starting(1000));
    EXPECT_EQ(session.StampOf(kVideo, 0), 1000u);
    Frame refused = kVideo;
    refused.time = 20;
    refused.encode = SG_ENCODE_VIDEO_QV_H265;
    EXPECT_EQ(session.Input(refused), SG_ERR_PARAM_ERR);
    refused.type = 7;
    EXPECT_EQ(session.Input(refused), SG_ERR_PARAM_ERR);
    EXPECT_EQ(session.StampOf(kVideo, 40), 4600u);
    EXPECT_EQ(session.Get().sequence_number, 2u);
}

TEST(RtpClock, AFirstRefusedFrameIsThePredecessorOfTheFirstPackagedOne)
{
    Session session(Starting(1000));
    Frame refused = kVideo;
    refused.time = 20;
    refused.encode = SG_ENCODE_VIDEO_QV_H265;
    EXPECT_EQ(session.Input(refused), SG_ERR_PARAM_ERR);
    EXPECT_EQ(session.StampOf(kVideo, 30), 1900u);
    EXPECT_EQ(session.StampOf(kVideo, 40), 2800u);
}

TEST(RtpClock, AFirstFrameWithoutDataIsNobodysPredecessor)
{
    Session session(Starting(1000));
    Frame empty = kVideo;
    empty.time = 20;
    empty.bytes.clear();
    EXPECT_EQ(session.Input(empty), SG_ERR_PARAM_ERR);
    EXPECT_EQ(session.StampOf(kVideo, 30), 1000u);
}

TEST(RtpClock, AFirstRefusedFrameTakesTheStart)
{
    Session session(Starting(1000));
    Frame refused = kVideo;
    refused.type = SG_FRAME_TYPE_UNKNOW;
    EXPECT_EQ(session.Input(refused), SG_ERR_PARAM_ERR);
    session.Set(Starting(2000));
    EXPECT_EQ(session.StampOf(kVideo, 0), 1000u);
}

}  // namespace
}  // namespace Golden
