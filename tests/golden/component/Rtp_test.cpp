// Parameters, which RTP alone has.
#include <climits>

#include "support/Components.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using namespace Support;

long Get(IWrapton& stream, const char* name)
{
    long value = -77;
    EXPECT_TRUE(stream.getParam(name, value)) << name;
    return value;
}

TEST(RtpParameters, BeginAtTheirDefaults)
{
    const Stream stream = MakeStream("rtp");
    EXPECT_EQ(Get(*stream, "max_rtp_packet_length"), 1000);
    EXPECT_EQ(Get(*stream, "rtp_sequence_number"), 0);
    EXPECT_EQ(Get(*stream, "rtp_timestamp"), 0);
    EXPECT_EQ(Get(*stream, "rtp_audio_sample"), 0);
    EXPECT_EQ(Get(*stream, "rtp_payload_type"), 0);
    EXPECT_EQ(Get(*stream, "rtp_packet_output_all_flag"), 0);
    const long ssrc = Get(*stream, "rtp_ssrc");
    EXPECT_GE(ssrc, 0);
    EXPECT_LE(ssrc, 0xFFFFFFFF);
}

TEST(RtpParameters, ReadBackAsTheyWereSet)
{
    const Stream stream = MakeStream("RTP");
    setLastError(0);
    for (const char* name : {"max_rtp_packet_length",
                             "rtp_timestamp",
                             "rtp_ssrc",
                             "rtp_audio_sample",
                             "rtp_payload_type",
                             "rtp_packet_output_all_flag"})
    {
        for (const long value : {1L, 1400L, 0x7FFFFFFFL})
        {
            EXPECT_TRUE(stream->setParam(name, value));
            EXPECT_EQ(Get(*stream, name), value) << name;
        }
    }
    EXPECT_TRUE(stream->setParam("max_rtp_packet_length", 0));
    EXPECT_EQ(Get(*stream, "max_rtp_packet_length"), 1000);
    EXPECT_EQ(getLastError(), 0u);
}

TEST(RtpParameters, AreCutToTheirWidth)
{
    const Stream stream = MakeStream("rtp");
    for (const char* name : {"rtp_timestamp",
                             "rtp_ssrc",
                             "rtp_audio_sample",
                             "rtp_payload_type",
                             "rtp_packet_output_all_flag"})
    {
        EXPECT_TRUE(stream->setParam(name, -1));
        EXPECT_EQ(Get(*stream, name), 0xFFFFFFFF) << name;
        EXPECT_TRUE(stream->setParam(name, 0x3'0000'0004));
        EXPECT_EQ(Get(*stream, name), 4) << name;
        EXPECT_TRUE(stream->setParam(name, LONG_MIN));
        EXPECT_EQ(Get(*stream, name), 0) << name;
    }
    EXPECT_TRUE(stream->setParam("max_rtp_packet_length", 0x1'FFFF'FFFB));
    EXPECT_EQ(Get(*stream, "max_rtp_packet_length"), -5);
}

TEST(RtpParameters, GiveTheSequenceNumberOneLower)
{
    const Stream stream = MakeStream("rtp");
    EXPECT_TRUE(stream->setParam("rtp_sequence_number", 1));
    EXPECT_EQ(Get(*stream, "rtp_sequence_number"), 0);
    EXPECT_TRUE(stream->setParam("rtp_sequence_number", 1000));
    EXPECT_EQ(Get(*stream, "rtp_sequence_number"), 999);
    EXPECT_TRUE(stream->setParam("rtp_sequence_number", 0));
    EXPECT_EQ(Get(*stream, "rtp_sequence_number"), 65535);
    EXPECT_TRUE(stream->setParam("rtp_sequence_number", 65536 + 8));
    EXPECT_EQ(Get(*stream, "rtp_sequence_number"), 7);
    EXPECT_TRUE(stream->setParam("rtp_sequence_number", LONG_MIN));
    EXPECT_EQ(Get(*stream, "rtp_sequence_number"), 65535);
}

TEST(RtpParameters, ReachThePackets)
{
    const Stream stream = MakeStream("rtp");
    stream->setParam("rtp_sequence_number", 100);
    stream->setParam("rtp_timestamp", 5000);
    stream->setParam("rtp_ssrc", 0x0A0B0C0D);
    stream->setParam("rtp_payload_type", 96);
    EXPECT_TRUE(Input(*stream, H264I(Nal(Hex("65 88")))));
    EXPECT_TRUE(Same(Packet(*stream),
                     Join({
                         Msb16(14),          // length
                         Hex("80 E0"),       // version; marker, payload type
                         Msb16(100),         // sequence number
                         Msb32(5000),        // time stamp
                         Msb32(0x0A0B0C0D),  // synchronisation source
                         Hex("65 88"),
                     })));
    EXPECT_EQ(Get(*stream, "rtp_sequence_number"), 100);
}

TEST(RtpParameters, OutputAllAtOnce)
{
    const Stream stream = MakeStream("rtp");
    stream->setParam("rtp_packet_output_all_flag", 1);
    stream->setParam("max_rtp_packet_length", 100);
    EXPECT_TRUE(Input(*stream, Audio(SG_ENCODE_AUDIO_G711A, Payload(200), 8000, 1, 8)));
    EXPECT_EQ(Packet(*stream).size(), 200u + 3 * (2 + 12));
}

TEST(RtpParameters, AreTakenWithoutEffectUnderOtherNames)
{
    const Stream stream = MakeStream("rtp");
    setLastError(77);
    for (const char* name : {"rtp_encode_type", "", "RTP_SSRC", "rtp_ssrc ", "rtp_ssr", "seekpos"})
    {
        EXPECT_TRUE(stream->setParam(name, 9));
        long value = 3;
        EXPECT_TRUE(stream->getParam(name, value));
        EXPECT_EQ(value, 3) << name;
    }
    long value = 3;
    EXPECT_TRUE(stream->setParam(nullptr, 9));
    EXPECT_TRUE(stream->getParam(nullptr, value));
    EXPECT_EQ(value, 3);
    EXPECT_EQ(getLastError(), 77u);
}

TEST(RtpParameters, AreNoneOfOtherStreams)
{
    for (const char* type : {"asf", "flv", "omf", "ts", "ps", "qvps", "gaysps"})
    {
        const Stream stream = MakeStream(type);
        SharedPtr<IWraptonData> data;
        long value = 3;
        EXPECT_TRUE(stream->setParam("rtp_ssrc", 9));
        EXPECT_TRUE(stream->getParam("rtp_ssrc", value));
        EXPECT_TRUE(stream->setExtInfo("rtp_custom_data", "a", 1));
        EXPECT_TRUE(stream->setExtInfo(nullptr, nullptr, 0));
        EXPECT_TRUE(stream->getExtInfo(rtpExtensionDataName(), data));
        EXPECT_EQ(value, 3);
        EXPECT_EQ(data, nullptr);
    }
}

/// The bytes ahead of a packet's length, when @p size bytes of custom data were set.
Bytes CustomBytes(const Bytes& data, unsigned int size)
{
    const Stream stream = MakeStream("rtp");
    EXPECT_TRUE(stream->setExtInfo("rtp_custom_data", "old", 3));
    EXPECT_TRUE(stream->setExtInfo("rtp_custom_data", data.data(), size));
    EXPECT_TRUE(Input(*stream, H264I(Nal(Hex("65 88")))));
    const Bytes packet = Packet(*stream);
    return Slice(packet, 0, packet.size() - (2 + 12 + 2));
}

TEST(CustomData, StandsAheadOfEveryPacketAndIsCountedIn8BitsWithASign)
{
    const Bytes data = Payload(600);
    EXPECT_TRUE(Same(CustomBytes(data, 1), Slice(data, 0, 1)));
    EXPECT_TRUE(Same(CustomBytes(data, 126), Slice(data, 0, 126)));
    EXPECT_TRUE(Same(CustomBytes(data, 127), Slice(data, 0, 127)));
    EXPECT_TRUE(Same(CustomBytes(data, 128), {}));  // a negative count
    EXPECT_TRUE(Same(CustomBytes(data, 255), {}));
    EXPECT_TRUE(Same(CustomBytes(data, 256), {}));
    EXPECT_TRUE(Same(CustomBytes(data, 257), Slice(data, 0, 1)));
    EXPECT_TRUE(Same(CustomBytes(data, 0), {}));
    const Stream stream = MakeStream("rtp");
    EXPECT_TRUE(stream->setExtInfo("rtp_custom_data", nullptr, 5));
}

TEST(ExtensionData, ReadsBackByThePointerOfItsNameAlone)
{
    const Stream stream = MakeStream("rtp");
    setLastError(77);
    EXPECT_TRUE(stream->setExtInfo("rtp_extension_data", "abcdef", 6));
    const std::string text = "rtp_extension_data";
    EXPECT_STREQ(rtpExtensionDataName(), text.c_str());
    SharedPtr<IWraptonData> data;
    EXPECT_TRUE(stream->getExtInfo(text.c_str(), data));
    EXPECT_TRUE(stream->getExtInfo("rtp_extension_data", data));
    EXPECT_TRUE(stream->getExtInfo("rtp_custom_data", data));
    EXPECT_TRUE(stream->getExtInfo(nullptr, data));
    EXPECT_EQ(data, nullptr);
    EXPECT_TRUE(stream->getExtInfo(rtpExtensionDataName(), data));
    ASSERT_NE(data, nullptr);
    EXPECT_TRUE(Same(BytesOf(*data), Text("abcdef")));
    EXPECT_EQ(getLastError(), 77u);
}

TEST(ExtensionData, IsTakenAwayByANullPointer)
{
    const Stream stream = MakeStream("rtp");
    SharedPtr<IWraptonData> data;
    EXPECT_TRUE(stream->getExtInfo(rtpExtensionDataName(), data));
    ASSERT_NE(data, nullptr);
    EXPECT_EQ(data->getBuffer(), nullptr);
    EXPECT_EQ(data->getLen(), 0u);
    EXPECT_TRUE(stream->setExtInfo("rtp_extension_data", "abc", 3));
    EXPECT_TRUE(stream->setExtInfo("rtp_extension_data", nullptr, 3));
    EXPECT_TRUE(stream->getExtInfo(rtpExtensionDataName(), data));
    EXPECT_EQ(data->getLen(), 0u);
}

TEST(ExtensionData, IsNotTakenWhenItIsTooLong)
{
    const Stream stream = MakeStream("rtp");
    EXPECT_TRUE(stream->setExtInfo("rtp_extension_data", "abc", 3));
    const Bytes data = Payload(262141);
    setLastError(77);
    EXPECT_FALSE(stream->setExtInfo("rtp_extension_data", data.data(), 262141));
    EXPECT_FALSE(stream->setExtInfo("rtp_extension_data", data.data(), 0xFFFFFFFF));
    EXPECT_EQ(getLastError(), 77u);
    SharedPtr<IWraptonData> read;
    EXPECT_TRUE(stream->getExtInfo(rtpExtensionDataName(), read));
    EXPECT_TRUE(Same(BytesOf(*read), Text("abc")));
    EXPECT_TRUE(stream->setExtInfo("rtp_extension_data", data.data(), 262140));
}

TEST(OtherBytes, AreTakenWithoutEffect)
{
    const Stream stream = MakeStream("rtp");
    EXPECT_TRUE(stream->setExtInfo("rtp_custom", "abc", 3));
    EXPECT_TRUE(stream->setExtInfo("", "abc", 3));
    EXPECT_TRUE(stream->setExtInfo(nullptr, "abc", 3));
    EXPECT_TRUE(Input(*stream, H264I(Nal(Hex("65 88")))));
    EXPECT_EQ(Packet(*stream).size(), 2u + 12 + 2);
}

}  // namespace
}  // namespace Golden
