// What the packager sends of which frame, and when.
#include "tspacket/TsPacket.h"

#include <memory>

#include "readers/TsReader.h"
#include "support/Allocators.h"
#include "support/Frames.h"
#include "support/Recorder.h"
#include "support/Sinks.h"

namespace Orbel::Wrapton
{
namespace
{

using namespace Support;

constexpr std::size_t kMark = 70;  // the size of a packet that nobody writes to

class TsPacket : public ::testing::Test
{
protected:
    /// Hands @p frame over in an allocation of its exact size.
    static int Input(CTsPacket& package, const Frame& frame, PacketBuffer& packet)
    {
        const std::unique_ptr<unsigned char[]> bytes(new unsigned char[frame.bytes.size()]);
        std::copy(frame.bytes.begin(), frame.bytes.end(), bytes.get());
        SGFrameInfo record = RecordOf(frame);
        record.frame_pointer = bytes.get();
        return package.InputData(&record, packet);
    }

    static Bytes Contents(const PacketBuffer& packet)
    {
        return {packet.Data(), packet.Data() + packet.Size()};
    }

    /// What a frame becomes.
    Bytes Output(const Frame& frame)
    {
        PacketBuffer packet(kMark);
        EXPECT_EQ(Input(m_package, frame, packet), 0);
        return Contents(packet);
    }

    bool LeavesThePacketAlone(const Frame& frame)
    {
        PacketBuffer packet(kMark);
        std::fill_n(packet.Data(), kMark, static_cast<unsigned char>(0xEE));
        EXPECT_EQ(Input(m_package, frame, packet), 0);
        return Contents(packet) == Bytes(kMark, 0xEE);
    }

    /// The clock at which the next picture, of rate 0, stands; less that picture's own step.
    uint64_t Pts(const Bytes& output)
    {
        m_reader.Read(output);
        return m_reader.Frames().back().pts.value_or(0);
    }

    CTsPacket m_package{nullptr};
    Readers::TsReader m_reader;
};

TEST_F(TsPacket, FirstIFrameOf1000BytesIsTwoTablesAndSixPackets)
{
    const Bytes frame = Payload(1000);
    const Bytes packets = Output(H264I(frame));
    ASSERT_EQ(packets.size(), 8u * 188);
    EXPECT_TRUE(Same(Slice(packets, 0, 5), Hex("47 40 00 10 00")));
    EXPECT_TRUE(Same(Slice(packets, 188, 5), Hex("47 40 10 10 00")));
    EXPECT_EQ(packets[188 + 17], 0x1B);
    EXPECT_TRUE(Same(Slice(packets, 2 * 188, 188),
                     Join({
                         Hex("47 40 12 30"),                 // a unit starts, PID 0x12, counter 0
                         Hex("07 10"),                       // adaptation field with PCR
                         Hex("00 00 07 08 7E 00"),           // base 3600
                         Hex("00 00 01 E0 03 FB 80 C0 0A"),  // PES of 1019
                         Hex("31 00 01 1C 21 11 00 01 1C 21"),  // PTS and DTS 3600
                         Hex("00 00 00 01 09 F0"),              // access unit delimiter
                         Slice(frame, 0, 176 - 25),
                     })));
    for (std::size_t i = 1; i < 5; ++i)
    {
        EXPECT_TRUE(Same(Slice(packets, (2 + i) * 188, 188),
                         Join({
                             Hex("47 00 12"),
                             U8(0x30 + static_cast<uint32_t>(i)),
                             Hex("01 00"),
                             Slice(frame, 151 + (i - 1) * 182, 182),
                         })));
    }
    EXPECT_TRUE(Same(Slice(packets, 7 * 188, 188),
                     Join({
                         Hex("47 00 12 35"),
                         Hex("3E 00"),  // adaptation_field_length 62
                         Bytes(61, 0xFF),
                         Slice(frame, 1000 - 121, 121),
                     })));
}

TEST_F(TsPacket, Mpeg4HasItsOwnStreamTypeAndNoDelimiter)
{
    const Bytes packets = Output(Mpeg4I(Payload(50)));
    ASSERT_EQ(packets.size(), 3u * 188);
    EXPECT_EQ(packets[188 + 17], 0x10);
    EXPECT_TRUE(Same(Slice(packets, 3 * 188 - 50, 50), Payload(50)));
    EXPECT_EQ(packets[2 * 188 + 4], 183 - 19 - 50);
}

TEST_F(TsPacket, EveryOtherEncodingIsTreatedAsH264)
{
    for (uint32_t encode = 0; encode < 140; ++encode)
    {
        if (encode == SG_ENCODE_VIDEO_MPEG4) continue;
        CTsPacket package(nullptr);
        PacketBuffer packet;
        Input(package, Video(encode, SG_FRAME_SUB_TYPE_I, Payload(50)), packet);
        const Bytes packets = Contents(packet);
        ASSERT_EQ(packets.size(), 3u * 188);
        EXPECT_EQ(packets[188 + 17], 0x1B);
        EXPECT_EQ(packets[2 * 188 + 4], 183 - 25 - 50);
    }
}

TEST_F(TsPacket, AudioHasTheTimeOfTheLastPictureAndTablesOfItsOwn)
{
    Output(H264I(Payload(50)));
    const Bytes packets = Output(Mp2(Payload(50)));
    ASSERT_EQ(packets.size(), 3u * 188);
    EXPECT_EQ(packets[188 + 17], 0x1B);
    EXPECT_TRUE(Same(Slice(packets, 2 * 188, 188),
                     Join({
                         Hex("47 40 13 30"),
                         U8(183 - 64),
                         Hex("10 00 00 07 08 7E 00"),  // PCR base 3600
                         Bytes(183 - 64 - 7, 0xFF),
                         Hex("00 00 01 E0 00 3A 80 80 05 21 00 01 1C 21"),  // PTS 3600
                         Payload(50),
                     })));
    // Of MPEG-4 video, too, the tables ahead of audio speak of H.264.
    CTsPacket package(nullptr);
    PacketBuffer packet;
    Input(package, Mpeg4I(Payload(50)), packet);
    Input(package, Aac(Payload(50)), packet);
    EXPECT_EQ(Contents(packet).at(188 + 17), 0x1B);
}

TEST_F(TsPacket, TablesPrecedeEveryTenthFrameOfEachStream)
{
    for (int frame = 0; frame < 25; ++frame)
    {
        const std::size_t expected = frame % 10 == 0 ? 3 * 188 : 188;
        EXPECT_EQ(Output(frame == 0 ? H264I(Payload(9)) : H264P(Payload(9))).size(), expected);
        if (frame % 2 != 0) continue;
        EXPECT_EQ(Output(Mp2(Payload(9))).size(), frame % 20 == 0 ? 3u * 188 : 188u) << frame;
    }
}

TEST_F(TsPacket, CountersOfTheTwoStreamsContinueOnTheirOwn)
{
    for (int frame = 0; frame < 60; ++frame)
    {
        m_reader.Read(Output(H264I(Payload(500))));
        m_reader.Read(Output(Aac(Payload(200))));
    }
    EXPECT_EQ(m_reader.Frames().size(), 120u);
    EXPECT_EQ(m_reader.ProgramMaps(), 12u);
}

TEST_F(TsPacket, ClockStepsByWholeMillisecondsOfTheFrameRate)
{
    const auto pts = [&](uint32_t rate) { return Pts(Output(H264I(Payload(9)).AtRate(rate))); };
    EXPECT_EQ(pts(0), 3600u);  // no rate was ever given
    EXPECT_EQ(pts(30), 3600u + 2970);
    EXPECT_EQ(pts(0), 3600u + 2 * 2970);
    EXPECT_EQ(pts(25), 2 * 3600u + 2 * 2970);
    EXPECT_EQ(pts(1), 2 * 3600u + 2 * 2970 + 90000);
    EXPECT_EQ(pts(1000), 2 * 3600u + 2 * 2970 + 90090);
    for (const uint32_t rate : {1001u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu, 0u})
    {
        EXPECT_EQ(pts(rate), 2 * 3600u + 2 * 2970 + 90090) << rate;
    }
}

TEST_F(TsPacket, PcrHas33BitsOfTheClockAndTheTimeStamps32)
{
    // At one picture a second the clock passes 32 bits with picture 47722.
    for (int frame = 1; frame < 47722; ++frame)
    {
        PacketBuffer packet;
        Input(m_package, H264I(Hex("10")).AtRate(1), packet);
    }
    const Bytes packets = Output(H264I(Hex("10")));
    ASSERT_EQ(packets.size(), 188u);
    const uint64_t clock = uint64_t{47721} * 90000 + 3600;
    EXPECT_LE(clock, 0xFFFFFFFFu);
    const Bytes later = Output(H264I(Hex("10")).AtRate(1));
    const uint64_t beyond = clock + 90000;
    ASSERT_GT(beyond, 0xFFFFFFFFu);
    EXPECT_EQ(ReadMsb32(later, 6), beyond >> 1);
    EXPECT_EQ(later[10], (beyond & 1) << 7 | 0x7E);
    // The stamp's bits 32 to 30 are all 0.
    EXPECT_EQ(later[188 - 26 + 9], 0x31);
}

TEST_F(TsPacket, NothingIsSentAheadOfTheFirstIFrame)
{
    EXPECT_TRUE(Output(H264P(Payload(9))).empty());
    EXPECT_TRUE(Output(Mp2(Payload(9))).empty());
    EXPECT_TRUE(Output(Aac(Payload(9))).empty());
    EXPECT_EQ(Pts(Output(H264I(Payload(9)))), 3600u);
}

TEST_F(TsPacket, AudioOfAnotherEncodingEmptiesThePacket)
{
    Output(H264I(Payload(9)));
    for (uint32_t encode = 0; encode < 64; ++encode)
    {
        const bool sent = encode == SG_ENCODE_AUDIO_AAC || encode == SG_ENCODE_AUDIO_MP2;
        EXPECT_EQ(Output(Audio(encode, Payload(9), 8000, 1, 16)).empty(), !sent) << encode;
    }
}

TEST_F(TsPacket, OtherSubTypesAndFrameTypesLeaveThePacketAlone)
{
    for (int round = 0; round < 2; ++round)
    {
        for (const uint32_t subType : {2u, 8u, 9u, 0xFFFFFFFFu})
        {
            EXPECT_TRUE(LeavesThePacketAlone(H264I(Payload(9)).As(subType)));
            EXPECT_TRUE(LeavesThePacketAlone(H264I({}).As(subType)));
        }
        for (const uint32_t type : {0u, 3u, 4u, 0xFFFFFFFFu})
        {
            Frame frame = H264I(Payload(9));
            frame.type = type;
            EXPECT_TRUE(LeavesThePacketAlone(frame));
        }
        Output(H264I(Payload(9)));
    }
    PacketBuffer packet(kMark);
    EXPECT_EQ(m_package.InputData(nullptr, packet), 0);
    EXPECT_EQ(packet.Size(), kMark);
    EXPECT_EQ(m_package.InputData(nullptr, 0), 0);
}

TEST_F(TsPacket, FramesWithoutDataEmptyThePacketAndMoveNothing)
{
    PacketBuffer packet(kMark);
    SGFrameInfo record = RecordOf(H264I(Payload(9)));
    EXPECT_EQ(m_package.InputData(&record, packet), 0);  // null data
    EXPECT_EQ(packet.Size(), 0u);
    EXPECT_EQ(m_package.InputData(&record, 0), 0);
    EXPECT_TRUE(Output(H264I({})).empty());
    // Not even the gate.
    EXPECT_TRUE(Output(H264P(Payload(9))).empty());
    EXPECT_EQ(Pts(Output(H264I(Payload(9)))), 3600u);

    EXPECT_TRUE(Output(H264I({})).empty());
    EXPECT_TRUE(Output(Mp2({})).empty());
    record = RecordOf(Mp2(Payload(9)));
    packet.Resize(kMark);
    EXPECT_EQ(m_package.InputData(&record, packet), 0);
    EXPECT_EQ(packet.Size(), 0u);
    EXPECT_EQ(Pts(Output(H264P(Payload(9)))), 7200u);
}

TEST_F(TsPacket, PacketGetsTheSizeOfTheOutputWhateverItHadBefore)
{
    Output(H264I(Payload(9)));
    PacketBuffer none;
    EXPECT_EQ(Input(m_package, H264P(Payload(3000)), none), 0);
    EXPECT_EQ(none.Size(), 17u * 188);
    PacketBuffer large(100000);
    EXPECT_EQ(Input(m_package, H264P(Payload(3000)), large), 0);
    EXPECT_EQ(large.Size(), 17u * 188);
    PacketBuffer small(1);
    EXPECT_EQ(Input(m_package, H264P(Payload(4000000)), small), 0);
    EXPECT_GT(small.Size(), 4000000u);
}

TEST_F(TsPacket, OtherFormConvertsWithoutGivingAnythingToAnybody)
{
    AppendingSink sink;
    SGCreateParam create = CreateFor(sink);
    CTsPacket package(&create);
    EXPECT_EQ(package.GetType(), uint32_t{SG_STREAM_TYPE_TS});
    Bytes bytes = Payload(1000);
    SGFrameInfo record = RecordOf(H264I(bytes));
    record.frame_pointer = bytes.data();
    EXPECT_EQ(package.InputData(&record, 0), 0);
    EXPECT_TRUE(sink.Blocks().empty());
    // Clock and counters have moved as with the other form.
    PacketBuffer packet;
    Input(package, H264P(Payload(9)), packet);
    Output(H264I(bytes));
    EXPECT_TRUE(Same(Contents(packet), Output(H264P(Payload(9)))));
    EXPECT_TRUE(sink.Blocks().empty());
}

TEST_F(TsPacket, OtherFormDropsWhatItsBufferDoesNotHold)
{
    // 5577 packets fit 1 MiB: two tables, and 5575 of the frame.
    constexpr std::size_t kMost = 176 + 5574 * 182 - 25;
    for (const std::size_t size : {kMost, kMost + 1})
    {
        CTsPacket package(nullptr);
        Bytes bytes = Payload(size);
        SGFrameInfo record = RecordOf(H264I(bytes));
        record.frame_pointer = bytes.data();
        EXPECT_EQ(package.InputData(&record, 0), 0);
        // A dropped frame has moved the clock alone; it has opened the stream, too.
        PacketBuffer packet;
        Input(package, H264P(Payload(9)), packet);
        const Bytes packets = Contents(packet);
        const bool dropped = size > kMost;
        ASSERT_EQ(packets.size(), dropped ? 3u * 188 : 188u);
        EXPECT_EQ(packets[packets.size() - 188 + 3], 0x30 | (dropped ? 0 : 5575 % 16));
        EXPECT_EQ(ReadMsb32(packets, packets.size() - 188 + 6), 7200u / 2);
    }
}

TEST_F(TsPacket, BufferOfTheOtherFormIsAskedForOnFirstUse)
{
    AllocatorLog log;
    SGCreateParam create{};
    create.sg_malloc = &AllocatorLog::Malloc;
    create.sg_free = &AllocatorLog::Free;
    {
        CTsPacket package(&create);
        PacketBuffer packet;
        Input(package, H264I(Payload(9)), packet);
        EXPECT_TRUE(log.Asked().empty());

        Bytes bytes = Payload(9);
        SGFrameInfo record = RecordOf(H264P(bytes));
        record.frame_pointer = bytes.data();
        log.FailCall(1);
        EXPECT_EQ(package.InputData(&record, 0), 0);
        EXPECT_EQ(package.InputData(&record, 0), 0);
        EXPECT_EQ(package.InputData(&record, 0), 0);
        EXPECT_EQ(log.Asked(), (std::vector<int>{0x100000, 0x100000}));
        // Without a buffer nothing moved.
        Input(package, H264P(Payload(9)), packet);
        EXPECT_EQ(ReadMsb32(Contents(packet), 6), 4u * 3600 / 2);
    }
    EXPECT_EQ(log.Released(), std::vector<int>{0x100000});
}

TEST_F(TsPacket, HeaderTailerAndBackupAreTheUsualNothing)
{
    EXPECT_EQ(m_package.Init(), 0);
    EXPECT_EQ(m_package.CreateHeader(nullptr, 0), 0);
    EXPECT_EQ(m_package.CreateTailer(nullptr, 0), 0);
    EXPECT_EQ(m_package.Deinit(), 0);
    unsigned char byte = 7;
    SGOutputData backup{1, &byte, 2, 3, 4, 5};
    EXPECT_EQ(m_package.GetFileHeader(&backup), 0);
    EXPECT_EQ(backup.data_pointer, nullptr);
    EXPECT_EQ(backup.data_size, 0);
}

TEST_F(TsPacket, FrameWhosePacketsAreMoreThanABlockHoldsIsDroppedUnread)
{
    EXPECT_EQ(Pts(Output(H264I(Payload(9)))), 3600u);
    unsigned char byte = 0;
    PacketBuffer packet(kMark);
    for (const uint32_t size : {0x7FFFFFFFu, 0xFFFFFFFFu})
    {
        SGFrameInfo record = RecordOf(H264P({}));
        record.frame_pointer = &byte;
        record.frame_size = size;
        EXPECT_EQ(m_package.InputData(&record, packet), 0);
        EXPECT_EQ(packet.Size(), 0u);
        EXPECT_EQ(m_package.InputData(&record, 0), 0);
    }
    EXPECT_EQ(Pts(Output(H264P(Payload(9)))), 6u * 3600);
}

}  // namespace
}  // namespace Orbel::Wrapton
