// Frames that go into the caller's packet.
#include "readers/TsReader.h"
#include "support/Components.h"
#include "support/Streams.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using namespace Support;

const Frame kPicture = H264I(Nal(Join({Hex("65"), Payload(500)})));

TEST(InputEx, SaysFalseAloneToAPacketThatIsNotValid)
{
    for (const char* type : {"asf", "flv", "omf", "rtp", "ts", "ps", "qvps", "gaysps"})
    {
        const Stream stream = MakeStream(type);
        PacketBuffer packet;
        setLastError(77);
        EXPECT_FALSE(InputEx(*stream, kPicture, packet)) << type;
        EXPECT_EQ(getLastError(), 77u) << type;
        EXPECT_FALSE(packet.IsValid());
        SharedPtr<IWraptonData> block;
        EXPECT_FALSE(stream->getPacket(block));
    }
}

TEST(InputEx, TakesAPacketThatWasMadeEmpty)
{
    const Stream stream = MakeStream("rtp");
    PacketBuffer packet(1);
    packet.Resize(0);
    EXPECT_TRUE(InputEx(*stream, kPicture, packet));
    EXPECT_EQ(packet.Size(), 2u + 12 + 501);
}

TEST(InputEx, EmptiesThePacketOfARefusedRtpFrame)
{
    const Stream stream = MakeStream("rtp");
    PacketBuffer packet(100);
    setLastError(0);
    // A frame without a type, and one of an encoding that is not carried.
    EXPECT_FALSE(stream->inputFrameEx("abc", 3, {}, packet));
    EXPECT_EQ(getLastError(), 4u);
    EXPECT_EQ(packet.Size(), 0u);
    packet.Resize(100);
    EXPECT_FALSE(stream->inputFrameEx("abc", 3, {{"frametype", 'V'}}, packet));
    EXPECT_EQ(packet.Size(), 0u);
    // One without data leaves it alone.
    packet.Resize(100);
    EXPECT_FALSE(stream->inputFrameEx("abc", 0, {{"frametype", 'V'}}, packet));
    EXPECT_EQ(packet.Size(), 100u);
}

TEST(InputEx, LeavesThePacketOfFlvAndAsfAlone)
{
    for (const char* type : {"asf", "flv"})
    {
        const Stream stream = MakeStream(type);
        PacketBuffer packet(3);
        EXPECT_TRUE(InputEx(*stream, kPicture, packet));
        EXPECT_TRUE(stream->inputFrameEx(nullptr, 0, {}, packet));
        EXPECT_TRUE(Same(BytesOf(packet), Zero(3)));
        SharedPtr<IWraptonData> block;
        EXPECT_FALSE(stream->getPacket(block));
    }
}

TEST(InputEx, LeavesTheLengthOfAProgramStreamsPacketAndTellsThatOfTheBlock)
{
    const Stream stream = MakeStream("ps");
    const Stream other = MakeStream("ps");
    EXPECT_TRUE(Input(*other, kPicture));
    const Bytes expected = Packet(*other);
    for (const std::size_t size : {std::size_t{1}, expected.size(), expected.size() + 7})
    {
        const Stream fresh = MakeStream("ps");
        PacketBuffer packet(size);
        EXPECT_TRUE(InputEx(*fresh, kPicture, packet));
        EXPECT_EQ(packet.Size(), size);
        const std::size_t common = std::min(size, expected.size());
        EXPECT_TRUE(Same(Slice(BytesOf(packet), 0, common), Slice(expected, 0, common)));
        EXPECT_TRUE(Same(Packet(*fresh), expected));
    }
}

TEST(InputEx, LeavesABlockThatOutlivesThePacket)
{
    for (const char* type : {"omf", "rtp", "ps", "qvps", "gaysps"})
    {
        const Stream stream = MakeStream(type);
        Bytes expected;
        {
            PacketBuffer packet(10000);
            EXPECT_TRUE(InputEx(*stream, kPicture, packet));
            expected = BytesOf(packet);
        }
        const Bytes block = Packet(*stream);
        ASSERT_FALSE(block.empty()) << type;
        EXPECT_TRUE(Same(block, Slice(expected, 0, block.size()))) << type;
    }
}

TEST(InputEx, TakesAFrameOutOfThePacketThatItWritesTo)
{
    const std::size_t size = kPicture.bytes.size();
    FrameAttributes attrs = AttributesOf(kPicture);
    attrs["year"] = 24;  // the current time may differ from one to the other
    for (const char* type : {"omf", "rtp", "ts", "ps", "qvps", "gaysps"})
    {
        // The frame stands at the packet's front or within it; the packet has to grow or not.
        for (const auto& [room, at] : {std::pair<std::size_t, std::size_t>{size, 0},
                                       {size + 10000, 0},
                                       {size + 10000, 30},
                                       {size + 30, 30}})
        {
            PacketBuffer packet(room);
            std::copy(kPicture.bytes.begin(), kPicture.bytes.end(), packet.Data() + at);
            PacketBuffer apart(room);
            std::copy(kPicture.bytes.begin(), kPicture.bytes.end(), apart.Data() + at);
            const auto input = [&](const unsigned char* data, PacketBuffer& into)
            {
                const Stream stream = MakeStream(type);
                EXPECT_TRUE(stream->setParam("rtp_ssrc", 1));
                return stream->inputFrameEx(data, static_cast<unsigned int>(size), attrs, into);
            };
            EXPECT_TRUE(input(packet.Data() + at, packet));
            EXPECT_TRUE(input(kPicture.bytes.data(), apart));
            EXPECT_TRUE(Same(BytesOf(packet), BytesOf(apart))) << type << " " << room << " " << at;
        }
    }
}

TEST(InputEx, LeavesABlockOfInputFrameWaitingWhereItGivesNone)
{
    const Stream stream = MakeStream("flv");
    EXPECT_TRUE(Input(*stream, kPicture));
    PacketBuffer packet(10);
    EXPECT_TRUE(InputEx(*stream, kPicture, packet));
    const Stream other = MakeStream("flv");
    EXPECT_TRUE(Input(*other, kPicture));
    EXPECT_TRUE(Same(Packet(*stream), Packet(*other)));
}

TEST(InputEx, ReadsTheMakerThatInputFrameDoesNot)
{
    FrameAttributes plain = AttributesOf(kPicture);
    FrameAttributes made = plain;
    made["tpcompanytype"] = 3;
    made["tpstreamheaderlen"] = 16;
    const auto size = static_cast<unsigned int>(kPicture.bytes.size());
    const auto packed = [&](const FrameAttributes& attrs)
    {
        PacketBuffer packet(1);
        EXPECT_TRUE(MakeStream("omf")->inputFrameEx(kPicture.bytes.data(), size, attrs, packet));
        return packet.Size();
    };
    const auto given = [&](const FrameAttributes& attrs)
    {
        const Stream stream = MakeStream("omf");
        EXPECT_TRUE(stream->inputFrame(kPicture.bytes.data(), size, attrs));
        return Packet(*stream).size();
    };
    EXPECT_EQ(packed(made), packed(plain) + 8);  // an extension header more
    EXPECT_EQ(given(made), given(plain));
}

TEST(InputEx, ReadsTheDateAsAWordAndInputFrameAsSeconds)
{
    setenv("TZ", "UTC0", 1);
    tzset();
    FrameAttributes attrs = AttributesOf(kPicture);
    for (const auto& [key, value] : FrameAttributes{
             {"year", 26}, {"month", 11}, {"day", 21}, {"hour", 8}, {"minute", 9}, {"second", 10}})
        attrs[key] = value;
    const auto size = static_cast<unsigned int>(kPicture.bytes.size());
    const Stream stream = MakeStream("omf");
    EXPECT_TRUE(stream->inputFrame(kPicture.bytes.data(), size, attrs));
    const Bytes frame = Packet(*stream);
    constexpr std::size_t kDateAt = 16;
    EXPECT_TRUE(Same(Slice(frame, kDateAt, 4),
                     Lsb32(26u << 26 | 11u << 22 | 21u << 17 | 8u << 12 | 9u << 6 | 10)));
}

TEST(TransportStream, IsWholeThroughTheComponent)
{
    const Bytes camera = Media("camera_640x360_25fps_baseline.h264");
    const std::vector<Bytes> sounds = Layer2Frames(Media("tone_48000_stereo.mp2"));
    const Stream stream = MakeStream("ts");
    Readers::TsReader reader;
    PacketBuffer packet(1);
    Bytes video;
    Bytes audio;
    std::size_t sound = 0;
    const auto send = [&](const Frame& frame)
    {
        ASSERT_TRUE(InputEx(*stream, frame, packet));
        reader.Read({packet.Data(), packet.Size()});  // throws where a counter does not follow
    };
    for (const Bytes& unit : AccessUnits(camera))
    {
        send(IsIdr(unit) ? H264I(unit) : H264P(unit));
        Append(video, Hex("00 00 00 01 09 F0"));
        Append(video, unit);
        if (sound == sounds.size()) continue;
        send(Mp2(sounds[sound]));
        Append(audio, sounds[sound++]);
    }
    Bytes seen;
    Bytes heard;
    for (const Readers::TsFrame& frame : reader.Frames())
        Append(frame.pid == 0x12 ? seen : heard, frame.payload);
    EXPECT_TRUE(Same(seen, video));
    EXPECT_TRUE(Same(heard, audio));
}

}  // namespace
}  // namespace Golden
