// Where H.264 frames are cut into NAL units.
#include "golden/rtp/Session.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using Support::H264I;
using Support::H264P;
using Support::Hex;
using Support::Join;
using Support::Zero;

/// The payloads of a frame whose units all fit; every one has to close its unit.
std::vector<Bytes> Units(const Bytes& annexB, uint32_t encode = SG_ENCODE_VIDEO_HI_H264)
{
    Session session;
    std::vector<Bytes> payloads;
    for (const auto& packet : session.Packets(Support::Video(encode, SG_FRAME_SUB_TYPE_I, annexB)))
    {
        EXPECT_TRUE(packet.marker);
        payloads.push_back(packet.payload);
    }
    return payloads;
}

using List = std::vector<Bytes>;

TEST(NalUnits, StandBehindStartCodesOfFourAndThreeBytes)
{
    EXPECT_EQ(Units(Join({Long(Hex("67 11")), Short(Hex("68 22")), Long(Hex("65 33 44"))})),
              (List{Hex("67 11"), Hex("68 22"), Hex("65 33 44")}));
}

TEST(NalUnits, AreCutInBothEncodingsThatAreByteStreams)
{
    const Bytes frame = Join({Long(Hex("67 11")), Short(Hex("68 22"))});
    EXPECT_EQ(Units(frame, SG_ENCODE_VIDEO_HI_H264), (List{Hex("67 11"), Hex("68 22")}));
    EXPECT_EQ(Units(frame, SG_ENCODE_VIDEO_QV_H264), (List{Hex("67 11"), Hex("68 22")}));
}

TEST(NalUnits, FrameWithoutAStartCodeIsOneUnit)
{
    EXPECT_EQ(Units(Hex("65 11 22 33 44")), (List{Hex("65 11 22 33 44")}));
    EXPECT_EQ(Units(Hex("65")), (List{Hex("65")}));
    EXPECT_EQ(Units(Hex("00 00 00")), (List{Hex("00 00 00")}));
}

TEST(NalUnits, BytesAheadOfTheFirstStartCodeAreLeftOut)
{
    EXPECT_EQ(Units(Join({Hex("AA BB 00"), Short(Hex("65 11"))})), (List{Hex("65 11")}));
    EXPECT_EQ(Units(Join({Hex("AA BB"), Short(Hex("65 11"))})), (List{Hex("65 11")}));
}

TEST(NalUnits, FurtherZerosAheadOfAStartCodeBelongToTheUnitBefore)
{
    EXPECT_EQ(Units(Join({Long(Hex("67 11")), Zero(2), Long(Hex("65 22"))})),
              (List{Hex("67 11 00 00"), Hex("65 22")}));
}

TEST(NalUnits, StartCodeRightAtTheEndIsSeenWithFourBytesOnly)
{
    EXPECT_EQ(Units(Join({Long(Hex("65 11")), Hex("00 00 00 01")})), (List{Hex("65 11"), {}}));
    EXPECT_EQ(Units(Join({Long(Hex("65 11")), Hex("00 00 01")})), (List{Hex("65 11 00 00 01")}));
    EXPECT_EQ(Units(Join({Long(Hex("65 11")), Hex("00 00 01 09")})),
              (List{Hex("65 11"), Hex("09")}));
    EXPECT_EQ(Units(Hex("00 00 01")), (List{Hex("00 00 01")}));
    EXPECT_EQ(Units(Hex("00 00 00 01")), (List{{}}));
    EXPECT_EQ(Units(Hex("00 00 01 65")), (List{Hex("65")}));
}

TEST(NalUnits, EmptyOneGivesAPacketWithoutPayload)
{
    EXPECT_EQ(Units(Hex("00 00 00 01 00 00 00 01 65 11")), (List{{}, Hex("65 11")}));
    EXPECT_EQ(Units(Hex("00 00 01 00 00 01 65 11")), (List{{}, Hex("65 11")}));
    EXPECT_EQ(Units(Hex("00 00 01 00 00 01 00 00 00 01")), (List{{}, {}, {}}));
}

TEST(NalUnits, EmptyOneIsNeverFragmented)
{
    const Bytes extension = Support::Payload(600);
    SGRtpPackageParam params = Params();
    params.extension_data = extension.data();
    params.extension_data_length = 600;  // 600 + 600 + 12 is more than the room of 998
    Session session(params);
    const auto packets = session.Packets(H264I(Hex("00 00 00 01 00 00 00 01")));
    ASSERT_EQ(packets.size(), 2u);
    for (const auto& packet : packets)
    {
        EXPECT_EQ(packet.length, 12u + 4 + 600);
        EXPECT_TRUE(packet.payload.empty());
        EXPECT_TRUE(packet.marker);
    }
}

TEST(NalUnits, WhatLooksLikeAStartCodeInsideOneThatWasJumpedOverIsNone)
{
    // The scan goes on behind the code, so its own bytes are no part of the next one.
    EXPECT_EQ(Units(Hex("00 00 01 00 01 65")), (List{Hex("00 01 65")}));
    EXPECT_EQ(Units(Hex("00 00 00 01 01 65")), (List{Hex("01 65")}));
}

TEST(NalUnits, BytesOf01WithoutZerosAreData)
{
    EXPECT_EQ(Units(Join({Long(Hex("65 01 01 00 01 01")), Long(Hex("41 02"))})),
              (List{Hex("65 01 01 00 01 01"), Hex("41 02")}));
}

TEST(NalUnits, OfOneFrameCanBeManyThousands)
{
    Bytes frame;
    for (int i = 0; i < 20000; ++i)
    {
        Support::Append(frame, Hex("00 00 01"));
    }
    Support::Append(frame, Hex("41"));
    Session session;
    const auto packets = session.Packets(H264P(frame));
    EXPECT_EQ(packets.size(), 20000u);
    Readers::CheckSequence(packets);
    EXPECT_EQ(packets.back().payload, Hex("41"));
}

}  // namespace
}  // namespace Golden
