// H.264 frames: start codes become lengths, in the caller's bytes.
#include "golden/mkv/Recording.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Frame;
using Support::Hex;
using Support::LengthNal;
using Support::Nal;
using Support::Payload;

/// What a frame of H.264 is like after the call.
Bytes Converted(const Bytes& bytes)
{
    Recording recording;
    recording.Header();
    Frame frame = Support::H264I(bytes);
    EXPECT_EQ(InputInPlace(recording.Calls().Handle(), frame), SG_ERR_NOERR);
    // What is stored is what the caller's bytes have become.
    const Bytes block = SimpleBlock(0, "80", frame.bytes);
    EXPECT_TRUE(Same(Support::Slice(recording.Clusters(), kClusterHead, block.size()), block));
    return frame.bytes;
}

TEST(MkvStartCodes, OfFourBytesBecomeTheLengthOfTheirUnit)
{
    EXPECT_TRUE(Same(Converted(Join({Nal(Payload(5, 1)), Nal(Payload(300, 2))})),
                     Join({LengthNal(Payload(5, 1)), LengthNal(Payload(300, 2))})));
}

TEST(MkvStartCodes, OfThreeBytesArePartOfTheUnit)
{
    const Bytes unit = Join({Payload(5), Hex("00 00 01"), Payload(6)});
    EXPECT_TRUE(Same(Converted(Nal(unit)), LengthNal(unit)));
    const Bytes alone = Join({Hex("00 00 01"), Payload(6)});
    EXPECT_TRUE(Same(Converted(alone), alone));
}

TEST(MkvStartCodes, BytesAheadOfTheFirstOneStay)
{
    EXPECT_TRUE(Same(Converted(Join({Hex("AA BB"), Nal(Payload(3))})),
                     Join({Hex("AA BB"), LengthNal(Payload(3))})));
}

TEST(MkvStartCodes, ZerosAheadOfOneBelongToTheUnitBefore)
{
    EXPECT_TRUE(Same(Converted(Join({Nal(Payload(2)), Hex("00 00"), Nal(Payload(3))})),
                     Join({LengthNal(Join({Payload(2), Hex("00 00")})), LengthNal(Payload(3))})));
}

TEST(MkvStartCodes, UnitsWithoutBytesGetTheLength0)
{
    EXPECT_TRUE(
        Same(Converted(Hex("00 00 00 01 00 00 00 01 65")), Hex("00 00 00 00 00 00 00 01 65")));
    EXPECT_TRUE(Same(Converted(Hex("65 00 00 00 01")), Hex("65 00 00 00 00")));
}

// A unit of one byte gets the length 1, which looks like a start code and must not be taken for
// one.
TEST(MkvStartCodes, LengthsAreNotTakenForStartCodes)
{
    EXPECT_TRUE(Same(Converted(Join({Nal(Hex("09")), Nal(Payload(4))})),
                     Join({Hex("00 00 00 01 09"), LengthNal(Payload(4))})));
    EXPECT_TRUE(Same(Converted(Join({Nal(Payload(256)), Nal(Payload(4))})),
                     Join({Hex("00 00 01 00"), Payload(256), LengthNal(Payload(4))})));
}

TEST(MkvStartCodes, ShortFramesHaveNone)
{
    for (const char* bytes : {"01", "00", "00 01", "00 00 01", "00 00 00"})
    {
        EXPECT_TRUE(Same(Converted(Hex(bytes)), Hex(bytes)));
    }
    EXPECT_TRUE(Same(Converted(Hex("00 00 00 01")), Hex("00 00 00 00")));
}

TEST(MkvStartCodes, OfQvH264AreReplacedToo)
{
    Recording recording;
    recording.Header();
    Frame frame = Support::Video(SG_ENCODE_VIDEO_QV_H264, 0, Nal(Payload(6)));
    EXPECT_EQ(InputInPlace(recording.Calls().Handle(), frame), SG_ERR_NOERR);
    EXPECT_TRUE(Same(frame.bytes, LengthNal(Payload(6))));
}

// Recorder::Input() fails the test when the bytes were written to.
TEST(MkvStartCodes, OfOtherEncodingsStay)
{
    for (const uint32_t encode : {0u, 1u, 3u, 8u, 12u, 129u})
    {
        Recording recording;
        recording.Header();
        const Frame frame = Support::Video(encode, 0, Nal(Payload(6)));
        EXPECT_EQ(recording.Calls().Input(frame), SG_ERR_NOERR) << encode;
    }
}

TEST(MkvStartCodes, OfDroppedFramesAreReplacedToo)
{
    Recording recording;
    recording.Header();
    Frame early = Support::H264P(Nal(Payload(6)));
    EXPECT_EQ(InputInPlace(recording.Calls().Handle(), early), SG_ERR_NOERR);
    EXPECT_TRUE(Same(early.bytes, LengthNal(Payload(6))));

    recording.Input(IFrame(10));
    Frame other = Support::H264P(Nal(Payload(7)));
    EXPECT_EQ(InputInPlace(recording.Calls().Handle(), other), SG_ERR_NOERR);
    EXPECT_TRUE(Same(other.bytes, LengthNal(Payload(7))));
}

}  // namespace
}  // namespace Golden
