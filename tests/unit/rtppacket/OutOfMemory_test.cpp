// What becomes of an RTP stream when there is no memory, and how little it needs.
#include "rtppacket/RtpPacket.h"
#include "support/FailingNew.h"
#include "support/Frames.h"

namespace Orbel::Wrapton
{
namespace
{

using Support::Bytes;
using Support::FailingNew;
using Support::Frame;
using Support::Payload;

class RtpWithoutMemory : public ::testing::Test
{
protected:
    RtpWithoutMemory() : m_handle(SG_CreateHandle(SG_STREAM_TYPE_RTP, nullptr)) {}
    RtpWithoutMemory(const RtpWithoutMemory&) = delete;
    RtpWithoutMemory& operator=(const RtpWithoutMemory&) = delete;
    ~RtpWithoutMemory() override { SG_DestroyHandle(m_handle); }

    [[nodiscard]] SGRtpPackageParam Get() const
    {
        SGRtpPackageParam params{};
        unsigned int length = sizeof(params);
        EXPECT_EQ(SG_GetParam(m_handle, 0, &params, &length), SG_ERR_NOERR);
        return params;
    }

    void* m_handle;
};

TEST_F(RtpWithoutMemory, ThereIsNoHandle)
{
    const FailingNew fail(1, true);
    EXPECT_EQ(SG_CreateHandle(SG_STREAM_TYPE_RTP, nullptr), nullptr);
}

TEST_F(RtpWithoutMemory, SetParamSaysSoAndSetsNothing)
{
    const Bytes former = Payload(8);
    const Bytes body = Payload(100, 2);
    SGRtpPackageParam params{};
    params.ssrc = 1;
    params.extension_data = former.data();
    params.extension_data_length = 8;
    ASSERT_EQ(SG_SetParam(m_handle, 0, &params, 64), SG_ERR_NOERR);

    params.ssrc = 2;
    params.sequence_number = 50;
    params.extension_data = body.data();
    params.extension_data_length = 100;
    params.custom_data = body.data();
    params.custom_data_length = 5;
    {
        const FailingNew fail(1, true);
        EXPECT_EQ(SG_SetParam(m_handle, 0, &params, 64), SG_ERR_MEMORY_OUT);
    }
    const SGRtpPackageParam kept = Get();
    EXPECT_EQ(kept.ssrc, 1u);
    EXPECT_EQ(kept.sequence_number, 65535u);
    ASSERT_EQ(kept.extension_data_length, 8u);
    EXPECT_EQ(Bytes(kept.extension_data, kept.extension_data + 8), former);
    EXPECT_EQ(kept.custom_data, nullptr);

    EXPECT_EQ(SG_SetParam(m_handle, 0, &params, 64), SG_ERR_NOERR);
    EXPECT_EQ(Get().ssrc, 2u);
}

TEST_F(RtpWithoutMemory, ParametersWithoutAnExtensionNeedNone)
{
    const Bytes custom = Payload(127);
    SGRtpPackageParam params{};
    params.custom_data = custom.data();
    params.custom_data_length = 127;
    const FailingNew fail(1, true);
    EXPECT_EQ(SG_SetParam(m_handle, 0, &params, 64), SG_ERR_NOERR);
    EXPECT_EQ(Get().custom_data_length, 127u);
}

TEST_F(RtpWithoutMemory, FramesNeedNoneOnceTheBufferIsThere)
{
    Frame frame = Support::H264I(Support::Join(
        {Support::Nal(Payload(5)), Support::Nal(Payload(4)), Support::Nal(Payload(50000))}));
    SGFrameInfo record = Support::RecordOf(frame);
    record.frame_pointer = frame.bytes.data();
    std::size_t asked = 0;
    {
        const FailingNew fail(1, true);
        EXPECT_EQ(SG_InputFrame(m_handle, &record), SG_ERR_MEMORY_OUT);
    }
    EXPECT_EQ(SG_InputFrame(m_handle, &record), SG_ERR_NOERR);
    {
        const FailingNew fail(1, true);
        for (int i = 0; i < 10; ++i)
        {
            EXPECT_EQ(SG_InputFrame(m_handle, &record), SG_ERR_NOERR);
        }
        asked = FailingNew::Asked();
    }
    EXPECT_EQ(asked, 0u);
}

TEST(RtpIntoPacketWithoutMemory, RefusesTheFrameAndGoesOn)
{
    CRtpPacket rtp(SG_STREAM_TYPE_RTP, nullptr);
    Frame frame =
        Support::H264I(Support::Join({Support::Nal(Payload(5)), Support::Nal(Payload(50000))}));
    SGFrameInfo record = Support::RecordOf(frame);
    record.frame_pointer = frame.bytes.data();
    PacketBuffer packet(100);
    {
        const FailingNew fail(1, true);
        EXPECT_EQ(rtp.InputData(&record, packet), SG_ERR_MEMORY_OUT);
    }
    EXPECT_EQ(packet.Size(), 0u);
    EXPECT_EQ(rtp.m_nSeqNumber, 0u);
    EXPECT_EQ(rtp.InputData(&record, packet), SG_ERR_NOERR);
    EXPECT_EQ(rtp.m_nSeqNumber, 1u + 51);
}

}  // namespace
}  // namespace Orbel::Wrapton
