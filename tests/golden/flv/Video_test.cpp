// Video tags: which frames are taken, their times, parameter sets and conversion.
#include <string_view>

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
using Support::LengthNal;
using Support::Nal;

/// The bytes that the first frame of a file recording brings.
Bytes FirstBlock(const Support::Frame& frame)
{
    Recording recording(SG_STREAM_TYPE_FLV);
    recording.Input(frame);
    return recording.File();
}

TEST(FlvVideo, TakesHiH264AndQvH264Alone)
{
    Recording recording(SG_STREAM_TYPE_FLV);
    for (const uint32_t encode : {0u, 1u, 3u, 5u, 6u, 7u, 8u, 9u, 10u, 11u, 12u, 129u, 130u})
    {
        recording.Input(Support::Video(encode, SG_FRAME_SUB_TYPE_I, kIFrame));
    }
    EXPECT_TRUE(recording.Blocks().empty());
    recording.Input(Support::Video(SG_ENCODE_VIDEO_QV_H264, SG_FRAME_SUB_TYPE_I, kIFrame));
    EXPECT_TRUE(Support::Same(recording.Fresh(), Join({Start(1), VideoTag(0, true, kIUnits)})));
    recording.Input(H264P(kPFrame));
    EXPECT_TRUE(Support::Same(recording.Fresh(), VideoTag(40, false, kPUnits)));
    recording.Input(Support::Mpeg4P(kPFrame));
    EXPECT_TRUE(recording.Fresh().empty());
}

TEST(FlvVideo, MarksIFramesAsKeyFramesAndNoOthers)
{
    Recording recording(SG_STREAM_TYPE_FLV);
    recording.Input(H264I(kIFrame));
    recording.Fresh();
    uint32_t time = 40;
    for (const uint32_t subType : {1u, 2u, 8u, 9u, 0u, 0xFFFFFFFFu})
    {
        recording.Input(H264P(kPFrame).As(subType));
        EXPECT_TRUE(Support::Same(recording.Fresh(), VideoTag(time, subType == 0, kPUnits)))
            << subType;
        time += 40;
    }
}

TEST(FlvVideo, WritesTheStartOnceWithTheFirstIFramesValues)
{
    Recording recording(SG_STREAM_TYPE_FLV);
    recording.Input(H264I(kIFrame).Sized(4294967295u, 1).AtRate(30));
    Meta meta;
    meta.width = 4294967295.0;
    meta.height = 1;
    meta.frameRate = 30;
    EXPECT_TRUE(
        Support::Same(recording.Fresh(), Join({Start(1, meta), VideoTag(0, true, kIUnits)})));
    // A later I frame with other attributes changes neither times nor metadata.
    recording.Input(H264I(kIFrame).Sized(64, 48).AtRate(1));
    EXPECT_TRUE(Support::Same(recording.Fresh(), VideoTag(33, true, kIUnits)));
    recording.Input(H264P(kPFrame).AtRate(1)).Tailer();
    meta.duration = 3 / 30.0;
    meta.fileSize = 279 + 39 + 43 + 43 + 27 + 20;
    EXPECT_TRUE(Support::Same(
        recording.Fresh(),
        Join({VideoTag(66, false, kPUnits), EndTag(100), FileHeader(1), MetaTag(meta)})));
}

TEST(FlvVideo, TakesItsTimeFromTheFrameCount)
{
    Recording recording(SG_STREAM_TYPE_FLV);
    Support::Frame frame = H264I(kIFrame);
    frame.time = 123456;
    recording.Input(frame);
    recording.Fresh();
    for (const uint32_t time : {40u, 80u, 120u})
    {
        frame = H264P(kPFrame);
        frame.time = 5;
        recording.Input(frame);
        EXPECT_TRUE(Support::Same(recording.Fresh(), VideoTag(time, false, kPUnits)));
    }
}

TEST(FlvVideo, CutsTimesOffAtWholeMilliseconds)
{
    Recording recording(SG_STREAM_TYPE_FLV);
    recording.Input(H264I(kIFrame).AtRate(7));
    recording.Fresh();
    for (const uint32_t time : {142u, 285u, 428u, 571u, 714u, 857u, 1000u})
    {
        recording.Input(H264P(kPFrame));
        EXPECT_TRUE(Support::Same(recording.Fresh(), VideoTag(time, false, kPUnits)));
    }
}

TEST(FlvVideo, StoresTheLow24BitsOfALaterTime)
{
    Recording recording(SG_STREAM_TYPE_FLV);
    recording.Input(H264I(kIFrame).AtRate(1));
    recording.Input(H264P(kPFrame), 16776);
    recording.Fresh();
    recording.Input(H264P(kPFrame));  // 16777000 ms: the last below 2^24
    EXPECT_TRUE(Support::Same(recording.Fresh(), VideoTag(16777000, false, kPUnits)));
    recording.Input(H264P(kPFrame));  // 16778000 ms = 2^24 + 784
    EXPECT_TRUE(Support::Same(recording.Fresh(), VideoTag(784, false, kPUnits)));
    recording.Tailer();
    EXPECT_TRUE(Support::Same(Support::Slice(recording.Fresh(), 0, 20), EndTag(1784)));
}

TEST(FlvVideo, WrapsItsTimeAtFrame419431Of25PerSecond)
{
    uint32_t time = 0;  // of the last tag
    SGCreateParam create{};
    create.user = &time;
    create.sg_datacb = [](SGOutputData* block, void* user)
    {
        const unsigned char* const tag = block->data_pointer;
        *static_cast<uint32_t*>(user) = static_cast<uint32_t>(tag[7]) << 24 |
                                        static_cast<uint32_t>(tag[4]) << 16 |
                                        static_cast<uint32_t>(tag[5]) << 8 | tag[6];
    };
    void* const handle = SG_CreateHandle(SG_STREAM_TYPE_FLV, &create);
    Bytes bytes = kPFrame;
    SGFrameInfo record = Support::RecordOf(H264I(bytes));
    record.frame_pointer = bytes.data();
    for (uint32_t number = 0; number <= 419430; ++number)
    {
        ASSERT_EQ(SG_InputFrame(handle, &record), SG_ERR_NOERR);
    }
    EXPECT_EQ(time, 16777200u);
    EXPECT_EQ(SG_InputFrame(handle, &record), SG_ERR_NOERR);  // 16777240 ms
    EXPECT_EQ(time, 24u);
    SG_DestroyHandle(handle);
}

TEST(FlvVideo, HasTime0AndDuration0WithoutAFrameRate)
{
    Recording recording(SG_STREAM_TYPE_FLV);
    recording.Input(H264I(kIFrame).AtRate(0)).Input(H264P(kPFrame)).Tailer();
    Meta meta;
    meta.frameRate = 0;
    Meta closing = meta;
    closing.fileSize = 279 + 39 + 43 + 27 + 20;
    EXPECT_TRUE(Support::Same(recording.File(),
                              Join({Start(1, meta),
                                    VideoTag(0, true, kIUnits),
                                    VideoTag(0, false, kPUnits),
                                    EndTag(0),
                                    FileHeader(1),
                                    MetaTag(closing)})));
}

TEST(FlvVideo, TakesTheLargestFrameRate)
{
    Recording recording(SG_STREAM_TYPE_FLV);
    recording.Input(H264I(kIFrame).AtRate(0xFFFFFFFFu)).Input(H264P(kPFrame)).Tailer();
    Meta meta;
    meta.frameRate = 4294967295.0;
    Meta closing = meta;
    closing.duration = 2 / 4294967295.0;
    closing.fileSize = 279 + 39 + 43 + 27 + 20;
    EXPECT_TRUE(Support::Same(recording.File(),
                              Join({Start(1, meta),
                                    VideoTag(0, true, kIUnits),
                                    VideoTag(0, false, kPUnits),
                                    EndTag(0),
                                    FileHeader(1),
                                    MetaTag(closing)})));
}

/// The sequence header that comes with a frame, which stands behind 279 bytes.
Bytes SequenceHeaderOf(const Bytes& annexB)
{
    const Bytes block = FirstBlock(H264I(annexB));
    const uint32_t size = Support::ReadMsb16(block, 279 + 2) + 15;
    return Support::Slice(block, 279, size);
}

TEST(FlvSequenceHeader, HasNoProfileForAnSpsBelow4Bytes)
{
    const Bytes slice = Nal(Hex("65 88"));
    for (const Bytes& sps : {Hex("67"), Hex("67 42"), Hex("67 42 C0")})
    {
        EXPECT_TRUE(Support::Same(SequenceHeaderOf(Join({Nal(sps), Nal(kPps), slice})),
                                  SequenceHeader(sps, kPps)));
    }
    EXPECT_TRUE(Support::Same(SequenceHeaderOf(Join({Nal(kSps), Nal(kPps), slice})),
                              SequenceHeader(kSps, kPps)));
}

TEST(FlvSequenceHeader, IsWrittenWithoutParameterSets)
{
    const Bytes slice = Nal(Hex("65 88"));
    EXPECT_TRUE(Support::Same(SequenceHeaderOf(slice), SequenceHeader({}, {})));
    EXPECT_TRUE(
        Support::Same(SequenceHeaderOf(Join({Nal(kPps), slice})), SequenceHeader({}, kPps)));
    EXPECT_TRUE(
        Support::Same(SequenceHeaderOf(Join({Nal(kSps), slice})), SequenceHeader(kSps, {})));
}

TEST(FlvSequenceHeader, HasRoomForSetsOf256BytesAndLeavesLongerOnesOut)
{
    const Bytes slice = Nal(Hex("65 88"));
    for (const std::size_t size : {255u, 256u, 257u})
    {
        const Bytes sps = Join({Hex("67"), Support::Payload(size - 1)});
        const Bytes pps = Join({Hex("68"), Support::Payload(size - 1)});
        const bool fits = size <= 256;
        EXPECT_TRUE(Support::Same(SequenceHeaderOf(Join({Nal(sps), Nal(pps), slice})),
                                  SequenceHeader(fits ? sps : Bytes(), fits ? pps : Bytes())))
            << size;
    }
}

TEST(FlvSequenceHeader, TakesTheFirstSetsOfTheFirstIFrameOnly)
{
    const Bytes other = Hex("67 64 00 1F");
    const Bytes frame = Join({Nal(kSps), Nal(other), Nal(kPps), Nal(Hex("68 01")), Nal(Hex("65"))});
    EXPECT_TRUE(Support::Same(SequenceHeaderOf(frame), SequenceHeader(kSps, kPps)));

    Recording recording(SG_STREAM_TYPE_FLV);
    recording.Input(H264I(kIFrame));
    recording.Fresh();
    recording.Input(H264I(Join({Nal(other), Nal(Hex("65 88"))})));
    EXPECT_TRUE(Support::Same(
        recording.Fresh(), VideoTag(40, true, Join({LengthNal(other), LengthNal(Hex("65 88"))}))));
}

TEST(FlvVideo, KeepsEveryNalUnitAndDropsWhatIsAheadOfThem)
{
    const Bytes frame = Join({Hex("AA BB"),  // ahead of the first start code
                              Nal(Hex("09 F0")),
                              Hex("00 00 01"),  // a 3-byte start code
                              Hex("06 01 02"),
                              Nal(Hex("65 88"))});
    const Bytes units =
        Join({LengthNal(Hex("09 F0")), LengthNal(Hex("06 01 02")), LengthNal(Hex("65 88"))});
    EXPECT_TRUE(Support::Same(
        FirstBlock(H264I(frame)),
        Join({FileHeader(1), MetaTag({}), SequenceHeader({}, {}), VideoTag(0, true, units)})));
}

TEST(FlvVideo, IsAnEmptyTagForAFrameWithoutStartCodes)
{
    for (const Bytes& frame : {Hex("65"), Hex("00 00"), Hex("00 00 01"), Hex("41 42 43 44 45")})
    {
        Recording recording(SG_STREAM_TYPE_FLV);
        recording.Input(H264I(frame));
        EXPECT_TRUE(Support::Same(
            recording.Fresh(),
            Join({FileHeader(1), MetaTag({}), SequenceHeader({}, {}), VideoTag(0, true, {})})));
        recording.Input(H264P(frame));
        EXPECT_TRUE(Support::Same(recording.Fresh(), VideoTag(40, false, {})));
    }
}

/// @p count units of one byte behind 3-byte start codes: each grows from 4 to 5 bytes.
Bytes ShortUnits(std::size_t count)
{
    Bytes frame;
    for (std::size_t i = 0; i < count; ++i)
    {
        Support::Append(frame, Hex("00 00 01 41"));
    }
    return frame;
}

Bytes ShortUnitsConverted(std::size_t count)
{
    Bytes units;
    for (std::size_t i = 0; i < count; ++i)
    {
        Support::Append(units, LengthNal(Hex("41")));
    }
    return units;
}

TEST(FlvVideo, GrowsByAtMost100BytesAndLosesTheUnitsBeyond)
{
    for (const std::size_t count : {99u, 100u, 101u, 104u, 105u, 106u})
    {
        Recording recording(SG_STREAM_TYPE_FLV);
        recording.Input(H264I(kIFrame));
        recording.Fresh();
        recording.Input(H264P(ShortUnits(count)));
        // 4 * count + 100 bytes hold (4 * count + 100) / 5 units of 5.
        const std::size_t kept = std::min(count, (4 * count + 100) / 5);
        EXPECT_EQ(kept == count, count <= 100);
        EXPECT_TRUE(
            Support::Same(recording.Fresh(), VideoTag(40, false, ShortUnitsConverted(kept))))
            << count;
    }
}

TEST(FlvVideo, StopsAtTheFirstUnitThatDoesNotFitEvenIfALaterOneWould)
{
    // 104 short units grow by 104 bytes, the long one behind them by one more: 4 too many. The last
    // one would fit in its place.
    const Bytes lengthy = Support::Payload(10);
    const Bytes frame = Join({ShortUnits(104), Hex("00 00 01"), lengthy, Hex("00 00 01 41")});
    Recording recording(SG_STREAM_TYPE_FLV);
    recording.Input(H264I(kIFrame));
    recording.Fresh();
    recording.Input(H264P(frame));
    EXPECT_TRUE(Support::Same(recording.Fresh(), VideoTag(40, false, ShortUnitsConverted(104))));
}

TEST(FlvVideo, CountsAFrameFromTheLastVideoTagForAudio)
{
    Recording recording(SG_STREAM_TYPE_FLV);
    recording.Input(H264I(kIFrame)).Input(Pcm16(Support::Payload(320)));
    recording.Input(H264P(kPFrame));
    recording.Fresh();
    const Bytes samples = Support::Payload(320);
    recording.Input(Pcm16(samples));  // the count of bytes began anew with the P frame
    EXPECT_TRUE(Support::Same(recording.Fresh(), AudioTag(40, 0x32, samples)));
}

}  // namespace
}  // namespace GoldenFlv
