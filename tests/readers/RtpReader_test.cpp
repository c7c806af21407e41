#include "readers/RtpReader.h"

#include "support/Bytes.h"

namespace Readers
{
namespace
{

using Support::Bytes;
using Support::Hex;
using Support::Join;

/// A packet number @p sequence with @p payload, without a length.
Bytes Packet(const char* sequence, const char* payload)
{
    return Join({Hex("80 60"), Hex(sequence), Hex("00 00 00 01 00 00 00 02"), Hex(payload)});
}

RtpPacket Read(const char* sequence, const char* payload)
{
    return ReadRtpPacket(Packet(sequence, payload));
}

TEST(ReadRtpPacket, TellsEveryField)
{
    const RtpPacket packet = ReadRtpPacket(
        Hex("B2 E1 12 34 "    // version 2, padding, extension, 2 sources; marker, type 97; sequence
            "01 02 03 04 "    // time stamp
            "0A 0B 0C 0D "    // synchronisation source
            "00 00 00 07 "    // contributing sources
            "00 00 00 08 "    //
            "BE DE 00 01 "    // extension, 1 word
            "11 22 33 44 "    //
            "55 66 00 02"));  // payload, 2 bytes of padding
    EXPECT_EQ(packet.length, 32u);
    EXPECT_TRUE(packet.marker);
    EXPECT_EQ(packet.payloadType, 97u);
    EXPECT_EQ(packet.sequence, 0x1234u);
    EXPECT_EQ(packet.timestamp, 0x01020304u);
    EXPECT_EQ(packet.ssrc, 0x0A0B0C0Du);
    ASSERT_TRUE(packet.extension.has_value());
    EXPECT_EQ(packet.extension->profile, 0xBEDEu);
    EXPECT_EQ(packet.extension->words, Hex("11 22 33 44"));
    EXPECT_EQ(packet.payload, Hex("55 66"));
}

TEST(ReadRtpPacket, RefusesWhatIsNoPacket)
{
    EXPECT_THROW(ReadRtpPacket(Hex("80 60 00 01 00 00 00 01 00 00 00")), RtpError);
    EXPECT_THROW(ReadRtpPacket(Hex("40 60 00 01 00 00 00 01 00 00 00 02")), RtpError);
    EXPECT_THROW(ReadRtpPacket(Hex("90 60 00 01 00 00 00 01 00 00 00 02 00 00 00 01")), RtpError);
    EXPECT_THROW(ReadRtpPacket(Hex("A0 60 00 01 00 00 00 01 00 00 00 02 09")), RtpError);
}

TEST(ReadRtpPackets, TakesTheCustomBytesOffAndEndsWithTheBytes)
{
    const Bytes two =
        Join({Hex("AA 00 0D"), Packet("FF FF", "31"), Hex("BB 00 0C"), Packet("00 00", "")});
    const auto packets = ReadRtpPackets(two, 1);
    ASSERT_EQ(packets.size(), 2u);
    EXPECT_EQ(packets[0].custom, Hex("AA"));
    EXPECT_EQ(packets[1].custom, Hex("BB"));
    EXPECT_EQ(packets[0].payload, Hex("31"));
    EXPECT_NO_THROW(CheckSequence(packets));
    EXPECT_THROW(ReadRtpPackets(Support::Slice(two, 0, two.size() - 1), 1), RtpError);
}

TEST(CheckSequence, SeesAGap)
{
    EXPECT_THROW(CheckSequence({Read("00 01", ""), Read("00 03", "")}), RtpError);
}

TEST(ReadNalUnits, PutsFragmentsTogether)
{
    const auto units = ReadNalUnits({Read("00 01", "67 01"),
                                     Read("00 02", "7C 85 AA"),
                                     Read("00 03", "7C 05 BB"),
                                     Read("00 04", "7C 45 CC DD")});
    ASSERT_EQ(units.size(), 2u);
    EXPECT_EQ(units[0], Hex("67 01"));
    EXPECT_EQ(units[1], Hex("65 AA BB CC DD"));
}

TEST(ReadNalUnits, RefusesFragmentsOutOfOrder)
{
    EXPECT_THROW(ReadNalUnits({Read("00 01", "7C 05 BB")}), RtpError);
    EXPECT_THROW(ReadNalUnits({Read("00 01", "7C C5 BB")}), RtpError);
    EXPECT_THROW(ReadNalUnits({Read("00 01", "7C 85 BB")}), RtpError);
    EXPECT_THROW(ReadNalUnits({Read("00 01", "7C 85 BB"), Read("00 02", "5C 45 BB")}), RtpError);
    EXPECT_THROW(ReadNalUnits({Read("00 01", "7C 85 BB"), Read("00 02", "67 01")}), RtpError);
    EXPECT_THROW(ReadNalUnits({Read("00 01", "7C 85")}), RtpError);
    EXPECT_THROW(ReadNalUnits({Read("00 01", "")}), RtpError);
}

TEST(ReadPlainFrames, EndsAFrameAtTheMarker)
{
    RtpPacket first = Read("00 01", "01 02");
    RtpPacket second = Read("00 02", "03");
    second.marker = true;
    const auto frames = ReadPlainFrames({first, second, second});
    ASSERT_EQ(frames.size(), 2u);
    EXPECT_EQ(frames[0], Hex("01 02 03"));
    EXPECT_EQ(frames[1], Hex("03"));
    EXPECT_THROW(ReadPlainFrames({first}), RtpError);
}

}  // namespace
}  // namespace Readers
