// The bytes of whole packets and the blocks in which they leave.
#include "golden/rtp/Session.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Hex;
using Support::Join;
using Support::Payload;
using Support::Same;

TEST(RtpPacketBytes, StandBehindTheirLengthWithEveryFieldOfTheFixedHeader)
{
    SGRtpPackageParam params = Params();
    params.sequence_number = 0x1234;
    params.timestamp = 0x01020304;
    params.ssrc = 0xCAFEBABE;
    params.payload_type = 97;
    Session session(params);
    Frame frame = Sound(0);
    frame.bytes = Hex("D5 55 D5");
    const auto blocks = session.Blocks(frame);
    ASSERT_EQ(blocks.size(), 1u);
    EXPECT_TRUE(Same(blocks[0],
                     Hex("00 0F "        // length of what follows
                         "80 "           // version 2, no padding, no extension, no sources
                         "E1 "           // marker, payload type 97
                         "12 34 "        // sequence number
                         "01 02 03 04 "  // time stamp
                         "CA FE BA BE "  // synchronisation source
                         "D5 55 D5")));  // payload
}

TEST(RtpPacketBytes, CarryTheExtensionWithProfileZeroAndZerosUpToAWholeWord)
{
    const Bytes body = Hex("E1 E2 E3 E4 E5");
    SGRtpPackageParam params = Params();
    params.extension_data = body.data();
    params.extension_data_length = 5;
    Session session(params);
    Frame frame = Sound(0);
    frame.bytes = Hex("11");
    const auto blocks = session.Blocks(frame);
    ASSERT_EQ(blocks.size(), 1u);
    EXPECT_TRUE(Same(blocks[0],
                     Hex("00 19 "        // length: 12 + 4 + 8 + 1
                         "90 80 00 01 "  // version 2, extension; marker; sequence number
                         "00 00 00 00 "  // time stamp
                         "A1 B2 C3 D4 "  // synchronisation source
                         "00 00 "        // defined by profile
                         "00 02 "        // extension length in words
                         "E1 E2 E3 E4 "  //
                         "E5 00 00 00 "  // padded
                         "11")));        // payload
}

TEST(RtpPacketBytes, ExtensionOfWholeWordsHasNoPadding)
{
    const Bytes body = Hex("E1 E2 E3 E4");
    SGRtpPackageParam params = Params();
    params.extension_data = body.data();
    params.extension_data_length = 4;
    Session session(params);
    const auto packets = session.Packets(Sound(1));
    ASSERT_EQ(packets.size(), 1u);
    ASSERT_TRUE(packets[0].extension.has_value());
    EXPECT_EQ(packets[0].extension->profile, 0u);
    EXPECT_EQ(packets[0].extension->words, body);
}

TEST(RtpPacketBytes, EveryPacketOfAFrameCarriesTheExtension)
{
    const Bytes body = Hex("E1 E2 E3");
    SGRtpPackageParam params = Params();
    params.extension_data = body.data();
    params.extension_data_length = 3;
    params.max_packet_length = 102;  // room 100, header 20
    Session session(params);
    const auto packets = session.Packets(Sound(170));
    ASSERT_EQ(packets.size(), 3u);
    for (const auto& packet : packets)
    {
        ASSERT_TRUE(packet.extension.has_value());
        EXPECT_EQ(packet.extension->words, Hex("E1 E2 E3 00"));
    }
    EXPECT_EQ(packets[0].payload.size(), 80u);
    EXPECT_EQ(packets[2].payload.size(), 10u);
}

TEST(RtpPacketBytes, StandBehindTheCustomBytesWhichNoLengthCounts)
{
    const Bytes custom = Hex("C1 C2 C3");
    SGRtpPackageParam params = Params();
    params.custom_data = custom.data();
    params.custom_data_length = 3;
    Session session(params);
    Frame frame = Sound(0);
    frame.bytes = Hex("11 22");
    const auto blocks = session.Blocks(frame);
    ASSERT_EQ(blocks.size(), 1u);
    EXPECT_TRUE(Same(blocks[0],
                     Hex("C1 C2 C3 "     // custom bytes
                         "00 0E "        // length of the packet alone
                         "80 80 00 01 "  //
                         "00 00 00 00 "  //
                         "A1 B2 C3 D4 "  //
                         "11 22")));
}

TEST(RtpPacketBytes, CustomBytesStandAheadOfEveryPacketAndLessenItsRoom)
{
    const Bytes custom = Payload(127, 9);
    SGRtpPackageParam params = Params();
    params.custom_data = custom.data();
    params.custom_data_length = 127;
    params.max_packet_length = 202;  // room 200 - 127 = 73, payload 61
    Session session(params);
    const auto packets = session.Packets(Sound(130));
    ASSERT_EQ(packets.size(), 3u);
    for (const auto& packet : packets)
    {
        EXPECT_EQ(packet.custom, custom);
    }
    EXPECT_EQ(packets[0].length, 73u);
    EXPECT_EQ(packets[1].length, 73u);
    EXPECT_EQ(packets[2].length, 12u + 8u);
}

TEST(RtpPacketBytes, PayloadTypeKeepsSevenBitsAndLeavesTheMarkerAlone)
{
    SGRtpPackageParam params = Params();
    params.payload_type = 0xFFFFFF80u | 33u;
    params.max_packet_length = 52;  // room 50, payload 38
    Session session(params);
    const auto packets = session.Packets(Sound(40));
    ASSERT_EQ(packets.size(), 2u);
    EXPECT_EQ(packets[0].payloadType, 33u);
    EXPECT_FALSE(packets[0].marker);
    EXPECT_EQ(packets[1].payloadType, 33u);
    EXPECT_TRUE(packets[1].marker);
}

TEST(RtpPacketBytes, SequenceNumbersRunThroughFramesOfAllKindsAndWrap)
{
    SGRtpPackageParam params = Params();
    params.sequence_number = 65534;
    Session session(params);
    EXPECT_EQ(session.Packets(Sound(1)).at(0).sequence, 65534u);
    EXPECT_EQ(session.Packets(Support::H264I(Long(Nal(0x65, 4)))).at(0).sequence, 65535u);
    EXPECT_EQ(session.Packets(Support::Ext({1})).at(0).sequence, 0u);
    EXPECT_EQ(session.Packets(Support::Mpeg4I({1})).at(0).sequence, 1u);
}

TEST(RtpPacketBytes, FirstPacketOfAFreshHandleHasNumberOneStampZeroAndTypeZero)
{
    Support::AppendingSink sink;
    Support::Recorder calls(SG_STREAM_TYPE_RTP, sink);
    ASSERT_EQ(calls.Input(Sound(3)), SG_ERR_NOERR);
    const auto packets = Readers::ReadRtpPackets(sink.Image());
    ASSERT_EQ(packets.size(), 1u);
    EXPECT_EQ(packets[0].sequence, 1u);
    EXPECT_EQ(packets[0].timestamp, 0u);
    EXPECT_EQ(packets[0].payloadType, 0u);
    EXPECT_FALSE(packets[0].extension.has_value());
}

TEST(RtpSsrc, IsTheOneThatAGetTellsUntilItIsSet)
{
    Support::AppendingSink sink;
    Support::Recorder calls(SG_STREAM_TYPE_RTP, sink);
    SGRtpPackageParam params{};
    unsigned int length = 64;
    ASSERT_EQ(SG_GetParam(calls.Handle(), 0, &params, &length), SG_ERR_NOERR);
    ASSERT_EQ(calls.Input(Sound(3)), SG_ERR_NOERR);
    ASSERT_EQ(calls.Input(Sound(3)), SG_ERR_NOERR);
    const auto packets = Readers::ReadRtpPackets(sink.Image());
    ASSERT_EQ(packets.size(), 2u);
    EXPECT_EQ(packets[0].ssrc, params.ssrc);
    EXPECT_EQ(packets[1].ssrc, params.ssrc);
}

TEST(RtpBlocks, OneForEachPacketWithTheWholeUnit)
{
    SGRtpPackageParam params = Params();
    params.max_packet_length = 102;  // room 100, payload 88
    Session session(params);
    const Bytes bytes = Sound(100).bytes;
    const auto blocks = session.Blocks(Sound(100));
    ASSERT_EQ(blocks.size(), 2u);
    EXPECT_TRUE(Same(blocks[0], Packet{1, false, Support::Slice(bytes, 0, 88)}.Unit()));
    EXPECT_TRUE(Same(blocks[1], Packet{2, true, Support::Slice(bytes, 88, 12)}.Unit()));
    for (const Support::Block& block : session.Seen())
    {
        EXPECT_EQ(block.structSize, 40u);
        EXPECT_EQ(block.origin, 1);
        EXPECT_EQ(block.position, 0);
        EXPECT_EQ(block.narrow, 0u);
    }
}

TEST(RtpBlocks, OneForAllPacketsWhenTheFlagIsOne)
{
    SGRtpPackageParam params = Params();
    params.max_packet_length = 102;
    params.rtp_output_all_flag = 1;
    Session session(params);
    const Bytes bytes = Sound(100).bytes;
    const auto blocks = session.Blocks(Sound(100));
    ASSERT_EQ(blocks.size(), 1u);
    EXPECT_TRUE(Same(blocks[0],
                     Join({Packet{1, false, Support::Slice(bytes, 0, 88)}.Unit(),
                           Packet{2, true, Support::Slice(bytes, 88, 12)}.Unit()})));
    EXPECT_EQ(session.Seen()[0].structSize, 40u);
    EXPECT_EQ(session.Seen()[0].origin, 1);
    EXPECT_EQ(session.Seen()[0].position, 0);
    EXPECT_EQ(session.Seen()[0].narrow, 0u);
}

TEST(RtpBlocks, OneForEachPacketWhenTheFlagIsAnythingElse)
{
    for (const uint32_t flag : {0u, 2u, 0xFFFFFFFFu})
    {
        SGRtpPackageParam params = Params();
        params.max_packet_length = 102;
        params.rtp_output_all_flag = flag;
        Session session(params);
        EXPECT_EQ(session.Blocks(Sound(100)).size(), 2u) << flag;
    }
}

TEST(RtpBlocks, AreTheSameWhateverTheCallbackAnswers)
{
    for (const int32_t answer : {0, 1, -5, 70000})
    {
        Support::ResizingSink sink([answer](std::size_t, int32_t) { return answer; });
        Support::Recorder calls(SG_STREAM_TYPE_RTP, sink);
        SGRtpPackageParam params = Params();
        params.max_packet_length = 102;
        ASSERT_EQ(SG_SetParam(calls.Handle(), 0, &params, 64), SG_ERR_NOERR);
        ASSERT_EQ(calls.Input(Sound(100)), SG_ERR_NOERR);
        ASSERT_EQ(calls.Input(Sound(100)), SG_ERR_NOERR);
        Session usual(params);
        auto expected = usual.Blocks(Sound(100));
        for (const Bytes& block : usual.Blocks(Sound(100)))
        {
            expected.push_back(block);
        }
        EXPECT_EQ(BytesOf(sink.Blocks()), expected) << answer;
    }
}

TEST(RtpCalls, HeaderAndTailerEmitNothingAndDoNotInterruptTheStream)
{
    Session session;
    EXPECT_EQ(session.Packets(Sound(1)).at(0).sequence, 1u);
    session.Input(Sound(1));
    const std::size_t seen = session.Seen().size();
    EXPECT_EQ(session.Calls().HeaderWith(nullptr), SG_ERR_NOERR);
    EXPECT_EQ(session.Calls().Header(500), SG_ERR_NOERR);
    EXPECT_EQ(session.Calls().Tailer(), SG_ERR_NOERR);
    EXPECT_EQ(session.Calls().Tailer(), SG_ERR_NOERR);
    EXPECT_EQ(session.Seen().size(), seen);
    EXPECT_EQ(session.Packets(Sound(1)).at(0).sequence, 3u);
}

TEST(RtpCalls, BackupIsEmpty)
{
    Session session;
    SGOutputData backup{};
    backup.data_size = 7;
    EXPECT_EQ(session.Calls().Backup(backup), SG_ERR_NOERR);
    EXPECT_EQ(backup.data_pointer, nullptr);
    EXPECT_EQ(backup.data_size, 0);
}

}  // namespace
}  // namespace Golden
