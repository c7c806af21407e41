// What only the class offers: the 3GP mode, and operations out of the flat interface's order.
#include <gtest/gtest.h>

#include "mp4packet/Mp4Packet.h"
#include "support/Frames.h"
#include "support/Sinks.h"
#include "tool/Clock.h"

namespace Orbel::Wrapton
{
namespace
{

using Support::Bytes;
using Support::SeekingSink;

const Bytes kKeyFrame = Support::Nal(Support::Hex("65 88 84"));

/// Both recordings of a comparison begin at the same time.
class FixedClock : public ::testing::Test
{
protected:
    FixedClock() { InstallSources(&m_sources); }
    ~FixedClock() override { InstallSources(nullptr); }

private:
    static int64_t Now() noexcept { return 1700000000; }

    const Sources m_sources{Now, SystemSources().local_time, SystemSources().random};
};

SGCreateParam CreateFor(SeekingSink& sink)
{
    return {.struct_size = sizeof(SGCreateParam),
            .user = &sink,
            .sg_malloc = nullptr,
            .sg_free = nullptr,
            .sg_datacb = Support::Sink::Callback};
}

int Input(CMp4Packet& packet, Bytes bytes)
{
    SGFrameInfo frame = Support::RecordOf(Support::H264I(bytes));
    frame.frame_pointer = bytes.data();
    return packet.InputData(&frame, 0);
}

Bytes Record(uint32_t type)
{
    SeekingSink sink;
    const SGCreateParam create = CreateFor(sink);
    CMp4Packet packet(type, &create);
    SGHeaderInfo header{};
    header.pre_header_len = 100;
    EXPECT_EQ(packet.Init(), 0);
    EXPECT_EQ(packet.CreateHeader(&header, 0), 0);
    EXPECT_EQ(Input(packet, kKeyFrame), 0);
    EXPECT_EQ(packet.CreateTailer(nullptr, 0), 0);
    EXPECT_EQ(packet.Deinit(), 0);
    return sink.Image();
}

using CMp4PacketAtAFixedTime = FixedClock;

TEST_F(CMp4PacketAtAFixedTime, Writes3GPExactlyLikeMp4)
{
    EXPECT_TRUE(Support::Same(Record(SG_STREAM_TYPE_3GP), Record(SG_STREAM_TYPE_MP4)));
}

TEST_F(CMp4PacketAtAFixedTime, WritesMp4ForATypePastItsTable)
{
    EXPECT_TRUE(Support::Same(Record(16), Record(SG_STREAM_TYPE_MP4)));
}

TEST(CMp4Packet, NeedsItsBoxesForEveryStep)
{
    SeekingSink sink;
    const SGCreateParam create = CreateFor(sink);
    CMp4Packet packet(SG_STREAM_TYPE_MP4, &create);
    EXPECT_EQ(packet.CreateHeader(nullptr, 0), SG_ERR_PARAM_ERR);
    EXPECT_EQ(packet.CreateTailer(nullptr, 0), SG_ERR_PARAM_ERR);
    EXPECT_EQ(Input(packet, kKeyFrame), 0);
    SGOutputData backup{};
    EXPECT_EQ(packet.GetFileHeader(&backup), 0);
    EXPECT_EQ(packet.GetFileHeader(nullptr), SG_ERR_PARAM_ERR);
    EXPECT_TRUE(sink.Blocks().empty());
}

TEST(CMp4Packet, RefusesASecondHeaderAlsoWithoutInit)
{
    SeekingSink sink;
    const SGCreateParam create = CreateFor(sink);
    CMp4Packet packet(SG_STREAM_TYPE_MP4, &create);
    packet.Init();
    packet.CreateHeader(nullptr, 0);
    sink.ForgetBlocks();
    EXPECT_EQ(packet.CreateHeader(nullptr, 0), SG_ERR_PARAM_ERR);
    EXPECT_EQ(packet.Init(), SG_ERR_PARAM_ERR);
    EXPECT_TRUE(sink.Blocks().empty());
}

TEST(CMp4Packet, LeavesAPacketBufferAndParametersAlone)
{
    CMp4Packet packet(SG_STREAM_TYPE_MP4, nullptr);
    SGFrameInfo frame{};
    PacketBuffer buffer(3);
    EXPECT_EQ(packet.InputData(&frame, buffer), 0);
    EXPECT_EQ(buffer.Size(), 3u);
    EXPECT_EQ(packet.SetParam(&frame, 1), 0);
    void* parameter = &frame;
    int length = 7;
    EXPECT_EQ(packet.GetParam(parameter, length), 0);
    EXPECT_EQ(parameter, &frame);
    EXPECT_EQ(length, 7);
}

TEST(CMp4Packet, StoresWhatIsLeftAfterAnAdtsHeaderThatMakesTheFrameFit)
{
    // 3 MiB and 6 bytes: too large with its header, but the header's length field ends it early.
    Bytes bytes = Support::Adts(7 + 100, Bytes(0x300000 - 1, 0x21));
    SeekingSink sink;
    const SGCreateParam create = CreateFor(sink);
    CMp4Packet packet(SG_STREAM_TYPE_MP4, &create);
    packet.Init();
    packet.CreateHeader(nullptr, 0);
    Input(packet, kKeyFrame);
    sink.ForgetBlocks();

    SGFrameInfo frame = Support::RecordOf(Support::Aac({0x21}));
    frame.frame_pointer = bytes.data();
    frame.frame_size = static_cast<uint32_t>(bytes.size());
    EXPECT_EQ(packet.InputData(&frame, 0), 0);
    ASSERT_EQ(sink.Blocks().size(), 1u);
    EXPECT_TRUE(Support::Same(sink.Blocks()[0].data, Bytes(100, 0x21)));
}

}  // namespace
}  // namespace Orbel::Wrapton
