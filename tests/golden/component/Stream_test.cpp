// What waits for getPacket().
#include "support/Components.h"
#include "support/Recorder.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using namespace Support;

/// A picture of one unit; another @p seed gives another.
Frame Picture(uint32_t seed, std::size_t size = 50)
{
    return H264I(Nal(Join({Hex("65"), Payload(size, seed)})));
}

/// What a packager emits last for @p frames in a row.
Bytes LastBlock(uint32_t type, const std::vector<Frame>& frames)
{
    SeekingSink sink;
    Recorder flat(type, sink);
    for (const Frame& frame : frames)
        EXPECT_EQ(flat.Input(frame), SG_ERR_NOERR);
    return sink.Blocks().empty() ? Bytes() : sink.Blocks().back().data;
}

void ExpectNoPacket(IWrapton& stream)
{
    SharedPtr<IWraptonData> block;
    setLastError(0);
    EXPECT_FALSE(stream.getPacket(block));
    EXPECT_EQ(getLastError(), 10u);
    EXPECT_EQ(block, nullptr);
}

TEST(WaitingBlock, IsGivenOnce)
{
    const Stream stream = MakeStream("ps");
    ExpectNoPacket(*stream);
    EXPECT_TRUE(Input(*stream, Picture(1)));
    EXPECT_TRUE(Same(Packet(*stream), LastBlock(SG_STREAM_TYPE_PS, {Picture(1)})));
    ExpectNoPacket(*stream);
}

TEST(WaitingBlock, IsThatOfTheLastOfTwoInputs)
{
    const Stream stream = MakeStream("ps");
    EXPECT_TRUE(Input(*stream, Picture(1)));
    EXPECT_TRUE(Input(*stream, Picture(2)));
    EXPECT_TRUE(Same(Packet(*stream), LastBlock(SG_STREAM_TYPE_PS, {Picture(1), Picture(2)})));
    ExpectNoPacket(*stream);
}

TEST(WaitingBlock, IsTheLastOfSeveralOfOneFrame)
{
    const Stream stream = MakeStream("rtp");
    stream->setParam("rtp_ssrc", 5);
    EXPECT_TRUE(Input(*stream, Picture(1, 2500)));
    const Bytes last = Packet(*stream);
    EXPECT_LT(last.size(), 1000u);  // the third fragment
    EXPECT_EQ(ReadMsb16(last, 0), last.size() - 2);
    EXPECT_EQ(last.at(3) & 0x80, 0x80);  // marker
    EXPECT_EQ(ReadMsb16(last, 4), 3u);   // sequence number
    ExpectNoPacket(*stream);
}

TEST(WaitingBlock, MayBeEmpty)
{
    // The broadcast tells of pictures ahead of the first key frame with an empty block.
    const Stream stream = MakeStream("asf");
    EXPECT_TRUE(Input(*stream, H264P(Nal(Hex("41 9A")))));
    SharedPtr<IWraptonData> block;
    ASSERT_TRUE(stream->getPacket(block));
    EXPECT_EQ(block->getLen(), 0u);
    ExpectNoPacket(*stream);
}

TEST(WaitingBlock, OutlastsARefusedFrame)
{
    for (const char* type : {"asf", "flv", "omf", "rtp", "ps", "qvps", "gaysps"})
    {
        const Stream stream = MakeStream(type);
        stream->setParam("rtp_ssrc", 5);
        const Stream other = MakeStream(type);
        other->setParam("rtp_ssrc", 5);
        EXPECT_TRUE(Input(*stream, Picture(1)));
        EXPECT_TRUE(Input(*other, Picture(1)));
        setLastError(0);
        EXPECT_FALSE(stream->inputFrame(nullptr, 7, {{"frametype", 'V'}})) << type;
        EXPECT_EQ(getLastError(), 4u);
        EXPECT_FALSE(stream->inputFrame("abc", 0, {{"frametype", 'V'}})) << type;
        EXPECT_FALSE(stream->inputFrame("abc", 3, {})) << type;
        EXPECT_TRUE(Same(Packet(*stream), Packet(*other))) << type;
        ExpectNoPacket(*stream);
    }
}

TEST(WaitingBlock, KeepsItsBytesWhenTheNextFrameSpoilsTheWorkBufferAndIsDropped)
{
    // The tag is composed until it does not fit into the packager's 2 MiB.
    const Stream stream = MakeStream("flv");
    EXPECT_TRUE(Input(*stream, Picture(1)));
    EXPECT_TRUE(Input(*stream, Audio(SG_ENCODE_AUDIO_PCM16, Payload(0x200000, 3), 8000, 1, 16)));
    EXPECT_TRUE(Same(Packet(*stream), LastBlock(SG_STREAM_TYPE_STREAM_FLV, {Picture(1)})));
    ExpectNoPacket(*stream);
}

TEST(WaitingBlock, ThatWasTakenStaysTaken)
{
    const Stream stream = MakeStream("ps");
    EXPECT_TRUE(Input(*stream, Picture(1)));
    Packet(*stream);
    EXPECT_FALSE(stream->inputFrame(nullptr, 0, {}));
    ExpectNoPacket(*stream);
}

TEST(WaitingBlock, NeverComesFromATransportStream)
{
    const Stream stream = MakeStream("ts");
    EXPECT_TRUE(Input(*stream, Picture(1)));
    ExpectNoPacket(*stream);
    PacketBuffer packet(1);
    EXPECT_TRUE(InputEx(*stream, Picture(1), packet));
    EXPECT_EQ(packet.Size() % 188, 0u);
    ExpectNoPacket(*stream);
}

TEST(LastError, IsNotClearedByASuccess)
{
    const Stream stream = MakeStream("ps");
    EXPECT_FALSE(stream->inputFrame(nullptr, 0, {}));
    EXPECT_EQ(getLastError(), 4u);
    EXPECT_TRUE(Input(*stream, Picture(1)));
    Packet(*stream);
    EXPECT_EQ(getLastError(), 4u);
    setLastError(0);
}

TEST(Input, IsRefusedOrDroppedAsByThePackager)
{
    const Stream rtp = MakeStream("rtp");
    Frame standard = Picture(1);
    EXPECT_FALSE(rtp->inputFrame("abc", 3, {{"frametype", 'V'}, {"framesubtype", 1}}));
    EXPECT_EQ(getLastError(), 4u);
    const Stream ps = MakeStream("ps");
    EXPECT_TRUE(Input(*ps, H264P(Nal(Hex("41 9A")))));  // ahead of an I frame: dropped
    ExpectNoPacket(*ps);
    EXPECT_FALSE(Input(*ps, Ext(Payload(5))));
    const Stream omf = MakeStream("omf");
    EXPECT_TRUE(Input(*omf, Ext(Payload(5))));
    EXPECT_GT(Packet(*omf).size(), 5u);
}

TEST(Input, TakesWildAttributes)
{
    const std::vector<long> wild = {LONG_MIN, LONG_MAX, -1, 0x80000000L, 0xFFFFFFFFL, 1L << 40};
    const Bytes bytes = Nal(Hex("65 88 84"));
    for (const char* type : {"asf", "flv", "omf", "rtp", "ts", "ps", "qvps", "gaysps"})
    {
        const Stream stream = MakeStream(type);
        PacketBuffer packet(1);
        for (const long value : wild)
        {
            for (const long kind : {long{'V'}, long{'A'}, long{'X'}, value})
            {
                FrameAttributes attrs;
                for (const char* key : {"framesubtype",
                                        "encodetype",
                                        "timestamp",
                                        "year",
                                        "month",
                                        "day",
                                        "hour",
                                        "minute",
                                        "second",
                                        "width",
                                        "height",
                                        "rate",
                                        "deinterlace",
                                        "samplespersec",
                                        "bitspersample",
                                        "channels",
                                        "bitrate",
                                        "n_slice",
                                        "m_slice",
                                        "blockpos_top_1",
                                        "rotationangle",
                                        "tpcompanytype",
                                        "tpstreamheaderlen"})
                    attrs[key] = value;
                attrs["frametype"] = kind;
                for (const long encode : {1L, 2L, 3L, 28L, 30L, 33L, 38L, value})
                {
                    attrs["encodetype"] = encode;
                    attrs["framesubtype"] = encode % 3 + 1;
                    stream->inputFrame(bytes.data(), 7, attrs);
                    stream->inputFrameEx(bytes.data(), 7, attrs, packet);
                    SharedPtr<IWraptonData> block;
                    stream->getPacket(block);
                }
            }
        }
    }
}

}  // namespace
}  // namespace Golden
