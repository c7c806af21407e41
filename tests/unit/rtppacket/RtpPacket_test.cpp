#include "rtppacket/RtpPacket.h"

#include <initializer_list>
#include <memory>

#include "readers/RtpReader.h"
#include "support/Allocators.h"
#include "support/Recorder.h"
#include "tool/Clock.h"

namespace Orbel::Wrapton
{
namespace
{

using Support::Bytes;
using Support::Frame;
using Support::H264I;
using Support::Hex;
using Support::Join;
using Support::Payload;

/// Puts a fixed random number in the place of the system's for a scope.
class FixedRandom
{
public:
    FixedRandom() : m_sources(SystemSources())
    {
        m_sources.random = []() noexcept { return 0xFEDCBA98u; };
        InstallSources(&m_sources);
    }
    FixedRandom(const FixedRandom&) = delete;
    FixedRandom& operator=(const FixedRandom&) = delete;
    ~FixedRandom() { InstallSources(nullptr); }

private:
    Sources m_sources;
};

TEST(CRtpPacket, BeginsWithARandomSourceAndZerosOtherwise)
{
    const FixedRandom random;
    const CRtpPacket rtp(SG_STREAM_TYPE_RTP, nullptr);
    EXPECT_EQ(rtp.GetType(), 9u);
    EXPECT_EQ(rtp.m_nSsrc, 0xFEDCBA98u);
    EXPECT_EQ(rtp.m_nSeqNumber, 0u);
    EXPECT_EQ(rtp.m_nTimestamp, 0u);
    EXPECT_EQ(rtp.m_rtpOutputAllFlag, 0u);
    EXPECT_EQ(rtp.m_nMaxPacketSize, 0);
    EXPECT_EQ(rtp.GetAudioSample(), 0u);
    EXPECT_EQ(rtp.GetPayloadTypeEx(), 0u);
}

TEST(CRtpPacket, PayloadTypeOfEveryEncodingIsTheOneThatWasSet)
{
    CRtpPacket rtp(SG_STREAM_TYPE_RTP, nullptr);
    EXPECT_EQ(rtp.EncodeTypeToRTPPlayLoadType(SG_ENCODE_VIDEO_HI_H264), 0u);
    rtp.SetPayloadTypeEx(300);
    for (const uint32_t encode : {0u, 2u, 14u, 26u, 0xFFFFFFFFu})
    {
        EXPECT_EQ(rtp.EncodeTypeToRTPPlayLoadType(encode), 300u);
    }
}

TEST(CRtpPacket, SetParamAnswersWithOneAndWithZeroForWhatItDoesNotTake)
{
    CRtpPacket rtp(SG_STREAM_TYPE_RTP, nullptr);
    const Bytes body = Payload(65535 * 4);
    EXPECT_EQ(rtp.SetParam(body.data(), static_cast<int>(body.size())), 1);
    EXPECT_EQ(rtp.SetParam(body.data(), static_cast<int>(body.size()) + 1), 0);
    EXPECT_EQ(rtp.SetParam(body.data(), -1), 0);
    void* got = nullptr;
    int length = 0;
    EXPECT_EQ(rtp.GetParam(got, length), SG_ERR_NOERR);
    EXPECT_EQ(length, 65535 * 4);
    EXPECT_EQ(rtp.SetParam(nullptr, -1), 1);
    EXPECT_EQ(rtp.GetParam(got, length), SG_ERR_NOERR);
    EXPECT_EQ(got, nullptr);
    EXPECT_EQ(length, 0);
}

TEST(CRtpPacket, AppendHeaderTakesUpTo127BytesAndClearsOtherwise)
{
    CRtpPacket rtp(SG_STREAM_TYPE_RTP, nullptr);
    const Bytes custom = Payload(127);
    const unsigned char* got = nullptr;
    uint32_t length = 0;
    for (const signed char cleared : std::initializer_list<signed char>{0, -1, -128})
    {
        EXPECT_TRUE(rtp.AppendHeader(custom.data(), 127));
        rtp.GetHeader(got, length);
        EXPECT_EQ(Bytes(got, got + length), custom);
        EXPECT_TRUE(rtp.AppendHeader(custom.data(), cleared));
        rtp.GetHeader(got, length);
        EXPECT_EQ(got, nullptr);
        EXPECT_EQ(length, 0u);
    }
    EXPECT_TRUE(rtp.AppendHeader(custom.data(), 127));
    EXPECT_TRUE(rtp.AppendHeader(nullptr, 127));
    rtp.GetHeader(got, length);
    EXPECT_EQ(got, nullptr);
}

TEST(CRtpPacket, WithoutACallbackRunsAndCounts)
{
    CRtpPacket rtp(SG_STREAM_TYPE_RTP, nullptr);
    EXPECT_EQ(rtp.SetDataCallBack(nullptr, nullptr), SG_ERR_NOERR);
    Frame frame = H264I(Hex("00 00 01 65 01"));
    SGFrameInfo record = Support::RecordOf(frame);
    record.frame_pointer = frame.bytes.data();
    EXPECT_EQ(rtp.InputData(&record, 0), SG_ERR_NOERR);
    EXPECT_EQ(rtp.m_nSeqNumber, 1u);
}

/// A packager that writes into packets.
class RtpIntoPacket : public ::testing::Test
{
protected:
    RtpIntoPacket()
    {
        SGCreateParam create = Support::CreateFor(m_sink);
        create.sg_malloc = &Support::AllocatorLog::Malloc;
        create.sg_free = &Support::AllocatorLog::Free;
        m_rtp = std::make_unique<CRtpPacket>(SG_STREAM_TYPE_RTP, &create);
    }

    /// The frame stands in an allocation of its exact size; the record's own size is not set, as
    /// packagers do not look at it.
    int Input(const Frame& frame, PacketBuffer& packet)
    {
        m_sink.ForgetBlocks();
        const std::unique_ptr<unsigned char[]> bytes(new unsigned char[frame.bytes.size()]);
        std::copy(frame.bytes.begin(), frame.bytes.end(), bytes.get());
        SGFrameInfo record = Support::RecordOf(frame);
        record.struct_size = 0;
        record.frame_pointer = bytes.get();
        return m_rtp->InputData(&record, packet);
    }

    static Bytes Content(const PacketBuffer& packet)
    {
        return {packet.Data(), packet.Data() + packet.Size()};
    }

    Support::AllocatorLog m_log;
    Support::AppendingSink m_sink;
    std::unique_ptr<CRtpPacket> m_rtp;
};

TEST_F(RtpIntoPacket, PacketHoldsAllPacketsOfTheFrameWhateverItsLengthWas)
{
    const Bytes unit = Payload(3000);
    for (const std::size_t size : {0u, 1u, 100u, 3063u, 3064u, 3065u, 100000u})
    {
        PacketBuffer packet(size);
        ASSERT_EQ(Input(H264I(Join({Hex("00 00 01"), unit})), packet), SG_ERR_NOERR);
        const auto packets = Readers::ReadRtpPackets(Content(packet));
        EXPECT_EQ(packets.size(), 4u);
        EXPECT_EQ(packet.Size(), 3000u + 4 * (2 + 12 + 2));
        EXPECT_EQ(Readers::ReadNalUnits(packets).at(0), Join({unit, Hex("00")}));
    }
    PacketBuffer fresh;
    ASSERT_EQ(Input(Support::Ext({7}), fresh), SG_ERR_NOERR);
    EXPECT_EQ(fresh.Size(), 15u);
    EXPECT_TRUE(m_log.Asked().empty()) << "the own buffer is not needed";
}

TEST_F(RtpIntoPacket, GrowsForManyUnits)
{
    Bytes frame;
    for (int i = 0; i < 5000; ++i)
    {
        Support::Append(frame, Hex("00 00 01 41"));
    }
    PacketBuffer packet;
    ASSERT_EQ(Input(H264I(frame), packet), SG_ERR_NOERR);
    const auto packets = Readers::ReadRtpPackets(Content(packet));
    EXPECT_EQ(packets.size(), 5000u);
    Readers::CheckSequence(packets);
}

TEST_F(RtpIntoPacket, CallbackSeesThePacketsInTheCallersMemory)
{
    static const unsigned char* s_first;
    s_first = nullptr;
    m_rtp->SetDataCallBack([](SGOutputData* block, void*)
                           { s_first = s_first != nullptr ? s_first : block->data_pointer; },
                           nullptr);
    PacketBuffer packet(4000);
    ASSERT_EQ(Input(Support::Ext(Payload(1500)), packet), SG_ERR_NOERR);
    EXPECT_EQ(s_first, packet.Data());

    m_rtp->SetDataCallBack(&Support::Sink::Callback, &m_sink);
    ASSERT_EQ(Input(Support::Ext(Payload(1500)), packet), SG_ERR_NOERR);
    EXPECT_EQ(m_sink.Blocks().size(), 2u);
    m_rtp->m_rtpOutputAllFlag = 1;
    ASSERT_EQ(Input(Support::Ext(Payload(1500)), packet), SG_ERR_NOERR);
    ASSERT_EQ(m_sink.Blocks().size(), 1u);
    EXPECT_EQ(m_sink.Blocks()[0].data, Content(packet));
}

TEST_F(RtpIntoPacket, RefusedFrameLeavesAnEmptyPacket)
{
    const Frame good = H264I(Hex("00 00 01 65 01"));
    Frame unknown = good;
    unknown.type = 7;
    Frame unsupported = good;
    unsupported.encode = SG_ENCODE_VIDEO_STD_H264;
    for (const Frame& frame : {unknown, unsupported})
    {
        PacketBuffer packet(50);
        EXPECT_EQ(Input(frame, packet), SG_ERR_PARAM_ERR);
        EXPECT_EQ(packet.Size(), 0u);
        EXPECT_TRUE(m_sink.Blocks().empty());
    }
    m_rtp->m_nMaxPacketSize = 16;
    PacketBuffer packet(50);
    EXPECT_EQ(Input(good, packet), SG_ERR_PARAM_ERR);
    EXPECT_EQ(packet.Size(), 0u);
    EXPECT_EQ(m_rtp->m_nSeqNumber, 0u);
}

TEST_F(RtpIntoPacket, FrameWithoutDataLeavesThePacketAsItWas)
{
    PacketBuffer packet(3);
    packet.Data()[1] = 9;
    EXPECT_EQ(m_rtp->InputData(nullptr, packet), SG_ERR_PARAM_ERR);
    SGFrameInfo record = Support::RecordOf(H264I(Hex("65")));
    EXPECT_EQ(m_rtp->InputData(&record, packet), SG_ERR_PARAM_ERR);
    EXPECT_EQ(Input(H264I({}), packet), SG_ERR_PARAM_ERR);
    EXPECT_EQ(Content(packet), Hex("00 09 00"));
}

TEST_F(RtpIntoPacket, FrameOfMoreThan2GiBOfPacketsIsRefused)
{
    unsigned char byte = 0;
    SGFrameInfo record = Support::RecordOf(Support::Ext({1}));
    record.frame_pointer = &byte;
    record.frame_size = 0xFFFFFFFF;
    PacketBuffer packet(3);
    EXPECT_EQ(m_rtp->InputData(&record, packet), SG_ERR_MEMORY_OUT);
    EXPECT_EQ(packet.Size(), 0u);
}

TEST_F(RtpIntoPacket, BothFormsShareClockAndSequence)
{
    m_rtp->m_nTimestamp = 50;
    PacketBuffer packet;
    Frame frame = H264I(Hex("00 00 01 65 01"));
    frame.time = 10;
    ASSERT_EQ(Input(frame, packet), SG_ERR_NOERR);
    SGFrameInfo record = Support::RecordOf(frame);
    record.frame_pointer = frame.bytes.data();
    record.frame_time = 50;
    m_sink.ForgetBlocks();
    ASSERT_EQ(m_rtp->InputData(&record, 0), SG_ERR_NOERR);
    ASSERT_EQ(m_sink.Blocks().size(), 1u);
    const auto packets = Readers::ReadRtpPackets(m_sink.Blocks()[0].data);
    EXPECT_EQ(packets.at(0).sequence, 2u);
    EXPECT_EQ(packets.at(0).timestamp, 3650u);
    frame.time = 90;
    ASSERT_EQ(Input(frame, packet), SG_ERR_NOERR);
    EXPECT_EQ(Readers::ReadRtpPackets(Content(packet)).at(0).timestamp, 7250u);
    EXPECT_EQ(m_rtp->m_nSeqNumber, 3u);
}

}  // namespace
}  // namespace Orbel::Wrapton
