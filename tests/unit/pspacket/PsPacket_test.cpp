// The form that takes a packet, and what the factory never makes.
#include "pspacket/PsPacket.h"

#include "golden/ps/Pieces.h"
#include "support/Allocators.h"

namespace Orbel::Wrapton
{
namespace
{

using namespace Golden;
using namespace Support;

const Bytes kUnit = Nal(Hex("65 88 84 21"));

int Input(CPackage& package, Frame frame)
{
    SGFrameInfo record = RecordOf(frame);
    record.frame_pointer = frame.bytes.data();
    return package.InputData(&record, 0);
}

int Input(CPackage& package, Frame frame, PacketBuffer& packet)
{
    SGFrameInfo record = RecordOf(frame);
    record.frame_pointer = frame.bytes.data();
    return package.InputData(&record, packet);
}

Bytes Contents(const PacketBuffer& packet)
{
    return {packet.Data(), packet.Data() + packet.Size()};
}

PacketBuffer Marked(std::size_t size)
{
    PacketBuffer packet(size);
    std::fill_n(packet.Data(), size, static_cast<unsigned char>(0xEE));
    return packet;
}

class PsIntoPacket : public ::testing::TestWithParam<uint32_t>
{
protected:
    PsIntoPacket() : m_create(CreateFor(m_sink)), m_package(GetParam(), &m_create) {}

    [[nodiscard]] Bytes LastBlock() const { return m_sink.Blocks().back().data; }

    AppendingSink m_sink;
    SGCreateParam m_create;
    CPsPacket m_package;
};

INSTANTIATE_TEST_SUITE_P(
    Flavours,
    PsIntoPacket,
    ::testing::Values(SG_STREAM_TYPE_PS, SG_STREAM_TYPE_QVPS, SG_STREAM_TYPE_GAYSPS),
    [](const auto& flavour) { return "Type" + std::to_string(flavour.param); });

TEST_P(PsIntoPacket, WritesToThePacketAndGivesItToTheCallback)
{
    PacketBuffer packet = Marked(500);
    EXPECT_EQ(Input(m_package, H264I(kUnit), packet), 0);
    ASSERT_EQ(m_sink.Blocks().size(), 1u);
    EXPECT_EQ(m_sink.Blocks()[0].origin, 1);
    EXPECT_EQ(m_sink.Blocks()[0].position, 0);
    const Bytes block = LastBlock();
    ASSERT_LT(block.size(), 500u);
    // The packet keeps its size, and its bytes behind the output.
    EXPECT_TRUE(Same(Contents(packet), Join({block, Bytes(500 - block.size(), 0xEE)})));
}

TEST_P(PsIntoPacket, GivesTheBytesOfTheOtherForm)
{
    AppendingSink sink;
    SGCreateParam create = CreateFor(sink);
    CPsPacket other(GetParam(), &create);
    PacketBuffer packet(1);
    for (const Frame& frame : {H264I(kUnit),
                               Mp2(Payload(40), 16000, 1),
                               H264P(Payload(70000)),
                               H264P(Payload(0xFFFFF)),
                               H264P(kUnit)})
    {
        EXPECT_EQ(Input(m_package, frame, packet), 0);
        EXPECT_EQ(Input(other, frame), 0);
        EXPECT_TRUE(Same(LastBlock(), sink.Blocks().back().data));
    }
}

TEST_P(PsIntoPacket, GrowsAPacketThatIsTooSmallAndGivesItItsSizeBack)
{
    for (const std::size_t size : {0u, 1u, 60u})
    {
        PacketBuffer packet = Marked(100);
        packet.Resize(size);
        EXPECT_EQ(Input(m_package, H264I(kUnit), packet), 0);
        EXPECT_EQ(packet.Size(), size);
        EXPECT_TRUE(Same(Contents(packet), Slice(LastBlock(), 0, size)));
    }
}

TEST_P(PsIntoPacket, LeavesThePacketAsItIsWhenTheFrameIsRefused)
{
    PacketBuffer packet = Marked(50);
    EXPECT_EQ(Input(m_package, H264P(kUnit), packet), 0);
    EXPECT_EQ(Input(m_package, H264I(Payload(0x100000)), packet), 0);
    EXPECT_EQ(Input(m_package, Audio(SG_ENCODE_AUDIO_G711A, Payload(9), 44100, 1, 16), packet), 0);
    EXPECT_EQ(Input(m_package, Ext(kUnit), packet), SG_ERR_PARAM_ERR);
    EXPECT_EQ(m_package.InputData(nullptr, packet), SG_ERR_PARAM_ERR);
    SGFrameInfo record = RecordOf(H264I(kUnit));
    EXPECT_EQ(m_package.InputData(&record, packet), SG_ERR_PARAM_ERR);
    EXPECT_EQ(Input(m_package, H264I({}), packet), SG_ERR_PARAM_ERR);
    EXPECT_TRUE(m_sink.Blocks().empty());
    EXPECT_TRUE(Same(Contents(packet), Bytes(50, 0xEE)));
}

TEST_P(PsIntoPacket, RefusesAPacketWithoutMemory)
{
    PacketBuffer packet;
    EXPECT_EQ(Input(m_package, H264I(kUnit), packet), SG_ERR_PARAM_ERR);
    EXPECT_TRUE(m_sink.Blocks().empty());
}

TEST_P(PsIntoPacket, DoesNotUseThePacketBeyondTheCall)
{
    {
        PacketBuffer packet(10000);
        EXPECT_EQ(Input(m_package, H264I(kUnit), packet), 0);
    }
    EXPECT_EQ(Input(m_package, H264P(kUnit)), 0);
    EXPECT_EQ(m_sink.Blocks().size(), 2u);
}

TEST_P(PsIntoPacket, NeedsNoWorkBuffer)
{
    AllocatorLog log;
    log.FailCall(1);
    m_create.sg_malloc = &AllocatorLog::Malloc;
    m_create.sg_free = &AllocatorLog::Free;
    CPsPacket package(GetParam(), &m_create);
    PacketBuffer packet(10);
    EXPECT_EQ(Input(package, H264I(kUnit), packet), 0);
    EXPECT_EQ(m_sink.Blocks().size(), 1u);
    EXPECT_EQ(Input(package, H264P(kUnit)), SG_ERR_PARAM_ERR);
    EXPECT_EQ(m_sink.Blocks().size(), 1u);
}

TEST(CPsPacket, GaysAudioBeyondTheSizeOfABlockIsRefusedBeforeItIsRead)
{
    AppendingSink sink;
    SGCreateParam create = CreateFor(sink);
    CPsPacket package(SG_STREAM_TYPE_GAYSPS, &create);
    unsigned char byte = 0;
    SGFrameInfo record = RecordOf(Aac({}));
    record.frame_pointer = &byte;
    PacketBuffer packet = Marked(50);
    for (const uint32_t size : {0x7FFFFFFFu - 13, 0x80000000u, 0xFFFFFFFFu})
    {
        record.frame_size = size;
        EXPECT_EQ(package.InputData(&record, packet), 0);
        EXPECT_EQ(package.InputData(&record, 0), 0);
    }
    EXPECT_TRUE(sink.Blocks().empty());
    EXPECT_TRUE(Same(Contents(packet), Bytes(50, 0xEE)));
}

TEST(CPsPacket, WithoutAFlavourAnswersAsUsualAndGivesNothing)
{
    AppendingSink sink;
    SGCreateParam create = CreateFor(sink);
    CPsPacket package(SG_STREAM_TYPE_TS, &create);
    EXPECT_EQ(package.GetType(), uint32_t{SG_STREAM_TYPE_TS});
    EXPECT_EQ(package.Init(), 0);
    EXPECT_EQ(package.CreateHeader(nullptr, 0), 0);
    EXPECT_EQ(Input(package, H264I(kUnit)), 0);
    EXPECT_EQ(Input(package, H264P(kUnit)), 0);
    EXPECT_EQ(Input(package, Mp2(Payload(40))), 0);
    EXPECT_EQ(Input(package, Ext(kUnit)), SG_ERR_PARAM_ERR);
    EXPECT_EQ(package.CreateTailer(nullptr, 0), 0);
    EXPECT_EQ(package.Deinit(), 0);
    EXPECT_TRUE(sink.Blocks().empty());
}

TEST(CPsPacket, SetDataCallBackSendsTheOutputElsewhere)
{
    AppendingSink first;
    AppendingSink second;
    SGCreateParam create = CreateFor(first);
    CPsPacket package(SG_STREAM_TYPE_PS, &create);
    EXPECT_EQ(package.SetDataCallBack(&Sink::Callback, &second), 0);
    EXPECT_EQ(Input(package, H264I(kUnit)), 0);
    EXPECT_TRUE(first.Blocks().empty());
    EXPECT_EQ(second.Blocks().size(), 1u);
    EXPECT_EQ(package.SetDataCallBack(nullptr, nullptr), 0);
    EXPECT_EQ(Input(package, H264P(kUnit)), 0);
    EXPECT_EQ(second.Blocks().size(), 1u);
}

}  // namespace
}  // namespace Orbel::Wrapton
