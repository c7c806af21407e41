// Data packets, video times and the simple index.
#include "golden/asf/Pieces.h"

namespace GoldenAsf
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Hex;
using Support::Join;
using Support::Payload;

/// A recording whose header and first frame are behind.
Recording& Begun(Recording& recording, uint32_t rate = 25)
{
    recording.Input(Key(Payload(10)).AtRate(rate));
    recording.Fresh();
    return recording;
}

TEST(AsfPacket, IsTheseBytes)
{
    Recording recording(SG_STREAM_TYPE_ASF);
    Begun(recording).Input(Inter(Hex("AA BB CC")));
    EXPECT_TRUE(Support::Same(recording.Fresh(),
                              Join({
                                  Hex("82"),           // error correction present, 2 bytes
                                  Hex("00 00"),        // error correction data
                                  Hex("90"),           // length types
                                  Hex("5D"),           // property types
                                  Hex("FD 07"),        // padding 2045
                                  Hex("28 00 00 00"),  // send time 40
                                  Hex("00 00"),        // duration
                                  Hex("01"),           // stream 1
                                  Hex("01"),           // object number
                                  Hex("00 00 00 00"),  // offset
                                  Hex("08"),           // replicated data
                                  Hex("03 00 00 00"),  // object size
                                  Hex("28 00 00 00"),  // presentation time 40
                                  Hex("AA BB CC"),     // payload
                                  Support::Zero(2045),
                              })));
}

TEST(AsfPacket, HoldsAtMost2048BytesOfAFrame)
{
    for (const std::size_t size : {1u, 2047u, 2048u, 2049u, 4095u, 4096u, 4097u, 5000u})
    {
        const Bytes frame = Payload(size);
        Recording recording(SG_STREAM_TYPE_ASF);
        Begun(recording).Input(Inter(frame));
        const Bytes packets = recording.Fresh();
        EXPECT_EQ(packets.size(), (size + 2047) / 2048 * 2076) << size;
        EXPECT_TRUE(Support::Same(packets, Packets(kInter, 1, 40, frame)));
    }
}

TEST(AsfPacket, CutsAFrameOf5000BytesInThree)
{
    const Bytes frame = Payload(5000);
    Recording recording(SG_STREAM_TYPE_ASF);
    recording.Input(Key(frame));
    PacketSpec values{.stream = kKey, .objectSize = 5000};
    const Bytes first = Packet(values, Support::Slice(frame, 0, 2048));
    values.offset = 2048;
    const Bytes second = Packet(values, Support::Slice(frame, 2048, 2048));
    values.offset = 4096;
    const Bytes third = Packet(values, Support::Slice(frame, 4096, 904));
    EXPECT_TRUE(
        Support::Same(third, Join({Support::Slice(third, 0, 28 + 904), Support::Zero(1144)})));
    EXPECT_TRUE(Support::Same(recording.File(), Join({Header({}), first, second, third})));
}

TEST(AsfPacket, MarksIAndJpegFramesAsKeyFrames)
{
    Recording recording(SG_STREAM_TYPE_ASF);
    Begun(recording);
    uint32_t number = 1;
    for (const uint32_t subType : {0u, 1u, 2u, 8u, 9u, 0xFFFFFFFFu})
    {
        const Bytes frame = Payload(10, number);
        recording.Input(Inter(frame).As(subType));
        const bool key = subType == 0 || subType == 8;
        EXPECT_TRUE(Support::Same(recording.Fresh(),
                                  Packets(key ? kKey : kInter, number, 40 * number, frame)));
        ++number;
    }
}

TEST(AsfPacket, BeginsARecordingWithAJpegFrame)
{
    Recording recording(SG_STREAM_TYPE_ASF);
    recording.Input(Support::JpegI(Payload(10)).As(SG_FRAME_SUB_TYPE_JPEG_FRAME));
    HeaderValues values;
    values.compression = Support::Text("MJPG");
    EXPECT_TRUE(
        Support::Same(recording.File(), Join({Header(values), Packets(kKey, 0, 0, Payload(10))})));
}

TEST(AsfPacket, CountsFramesOfEachStreamIn8Bits)
{
    const Bytes frame = Payload(10);
    Recording recording(SG_STREAM_TYPE_ASF);
    Begun(recording);
    for (uint32_t number = 1; number <= 257; ++number)
    {
        recording.Input(Inter(frame));
        EXPECT_TRUE(
            Support::Same(recording.Fresh(), Packets(kInter, number & 0xFF, 40 * number, frame)));
    }
    const Support::Frame sound = Support::Audio(SG_ENCODE_AUDIO_G729, frame, 8000, 1, 16);
    for (uint32_t number = 0; number <= 256; ++number)
    {
        recording.Input(sound);
        EXPECT_EQ(recording.Fresh().at(14), number & 0xFF);
    }
}

TEST(AsfTime, GrowsByWholeMillisecondsOfTheLastKeyFramesRate)
{
    Recording recording(SG_STREAM_TYPE_ASF);
    const Bytes frame = Payload(10);
    Begun(recording, 30);
    recording.Input(Inter(frame).AtRate(1));  // a rate of an inter frame changes nothing
    EXPECT_TRUE(Support::Same(recording.Fresh(), Packets(kInter, 1, 33, frame)));
    recording.Input(Key(frame).AtRate(10));  // counts behind this frame
    EXPECT_TRUE(Support::Same(recording.Fresh(), Packets(kKey, 2, 66, frame)));
    recording.Input(Key(frame).AtRate(0));  // keeps the interval
    EXPECT_TRUE(Support::Same(recording.Fresh(), Packets(kKey, 3, 166, frame)));
    recording.Input(Key(frame).AtRate(1001));  // 1000 / 1001 is no millisecond
    EXPECT_TRUE(Support::Same(recording.Fresh(), Packets(kKey, 4, 266, frame)));
    recording.Input(Key(frame).AtRate(0xFFFFFFFFu));
    EXPECT_TRUE(Support::Same(recording.Fresh(), Packets(kKey, 5, 266, frame)));
    recording.Input(Key(frame).AtRate(1));
    EXPECT_TRUE(Support::Same(recording.Fresh(), Packets(kKey, 6, 266, frame)));
    recording.Input(Inter(frame));
    EXPECT_TRUE(Support::Same(recording.Fresh(), Packets(kInter, 7, 1266, frame)));
}

TEST(AsfTime, StandsStillWithoutARate)
{
    Recording recording(SG_STREAM_TYPE_ASF);
    Begun(recording, 0).Input(Inter(Payload(10)));
    EXPECT_TRUE(Support::Same(recording.Fresh(), Packets(kInter, 1, 0, Payload(10))));
    recording.Tailer();
    HeaderValues values;
    values.timePerFrame = 0;
    values.packets = 2;
    values.dataPackets = 2;
    values.fileSize = kDataStart + 2 * kPacketLen + 56;
    EXPECT_TRUE(Support::Same(recording.Fresh(), Join({Index({}), Header(values)})));
}

TEST(AsfTime, IgnoresTheFramesOwnTimes)
{
    Recording recording(SG_STREAM_TYPE_ASF);
    Support::Frame frame = Inter(Payload(10));
    frame.time = 77777;
    frame.date = 1;
    Begun(recording).Input(frame);
    EXPECT_TRUE(Support::Same(recording.Fresh(), Packets(kInter, 1, 40, Payload(10))));
}

TEST(AsfDuration, IsTheLastFramesBeginningInMoreThan32Bits)
{
    Recording recording(SG_STREAM_TYPE_ASF);
    Begun(recording, 1).Input(Inter(Payload(10)), 600).Tailer();
    const Bytes& header = recording.Blocks().back().data;
    const uint64_t duration = uint64_t{600000} * 10000;
    EXPECT_TRUE(Support::Same(Support::Slice(header, 94, 16),
                              Join({Support::Lsb64(duration), Support::Lsb64(duration)})));
}

/// What the tailer's index must be.
void ExpectIndex(Recording& recording, const std::vector<std::pair<uint32_t, uint32_t>>& entries)
{
    recording.Tailer();
    const Support::Block& block = recording.Blocks().at(recording.Blocks().size() - 2);
    EXPECT_TRUE(Support::Same(block.data, Index(entries)));
}

TEST(AsfIndex, IsEmptyForASingleFrame)
{
    Recording recording(SG_STREAM_TYPE_ASF);
    ExpectIndex(Begun(recording), {});
}

TEST(AsfIndex, GainsItsFirstEntryWithTheFirstFrameBehind0Milliseconds)
{
    Recording recording(SG_STREAM_TYPE_ASF);
    ExpectIndex(Begun(recording).Input(Inter(Payload(10))), {{0, 1}});
}

TEST(AsfIndex, GainsAnEntryPerSecondForTheLastKeyFrame)
{
    Recording recording(SG_STREAM_TYPE_ASF);
    recording.Input(Key(Payload(5000)));                 // 0 ms, packets 0 to 2
    recording.Input(Inter(Payload(10)), 9);              // 40 to 360 ms, packets 3 to 11
    recording.Input(Key(Payload(3000)));                 // 400 ms, packets 12 and 13
    recording.Input(Inter(Payload(10)), 14);             // 440 to 960 ms, packets 14 to 27
    ExpectIndex(recording, {{0, 3}});                    //
    recording.Input(Key(Payload(10)));                   // 1000 ms does not exceed 1000, packet 28
    ExpectIndex(recording, {{0, 3}});                    //
    recording.Input(Inter(Payload(10)));                 // 1040 ms, packet 29
    ExpectIndex(recording, {{0, 3}, {28, 1}});           //
    recording.Input(Inter(Payload(10)), 24);             // up to 2000 ms, packets 30 to 53
    ExpectIndex(recording, {{0, 3}, {28, 1}});           //
    recording.Input(Key(Payload(10)));                   // 2040 ms, its own entry, packet 54
    ExpectIndex(recording, {{0, 3}, {28, 1}, {54, 1}});  //
}

TEST(AsfIndex, GainsOneEntryPerFrameWhenFramesAreSeconds)
{
    Recording recording(SG_STREAM_TYPE_ASF);
    Begun(recording, 1);
    recording.Input(Key(Payload(10)).AtRate(1)).Input(Key(Payload(3000)).AtRate(1));
    ExpectIndex(recording, {{1, 1}, {2, 2}});
}

TEST(AsfIndex, CountsAudioPackets)
{
    Recording recording(SG_STREAM_TYPE_ASF);
    Begun(recording).Input(Pcm16(Payload(5000)));
    recording.Input(Key(Payload(10)));
    ExpectIndex(recording, {{4, 1}});
}

TEST(AsfIndex, IsEmittedInPiecesBeyondTheWorkBuffer)
{
    // 56 + 6 * n bytes; a frame per second gives an entry each but the first.
    constexpr uint32_t kFull = (0x200000 - 56) / 6;
    struct Tally
    {
        uint64_t position = 0;
        std::vector<std::pair<int64_t, int32_t>> blocks;  // of the tailer
        bool closing = false;
        Bytes index;
    } tally;
    SGCreateParam create{};
    create.user = &tally;
    create.sg_datacb = [](SGOutputData* block, void* user)
    {
        auto& seen = *static_cast<Tally*>(user);
        if (!seen.closing)
        {
            EXPECT_EQ(block->offset_pos64, static_cast<int64_t>(seen.position));
            seen.position += static_cast<uint64_t>(block->data_size);
            return;
        }
        seen.blocks.emplace_back(block->offset_pos64, block->data_size);
        if (block->offset_pos64 != 0)
        {
            seen.index.insert(
                seen.index.end(), block->data_pointer, block->data_pointer + block->data_size);
        }
    };
    void* const handle = SG_CreateHandle(SG_STREAM_TYPE_ASF, &create);
    Bytes bytes = Payload(1);
    SGFrameInfo record = Support::RecordOf(Key(bytes).AtRate(1));
    record.frame_pointer = bytes.data();
    for (uint32_t i = 0; i <= kFull; ++i)
    {
        ASSERT_EQ(SG_InputFrame(handle, &record), SG_ERR_NOERR);
    }
    tally.closing = true;
    EXPECT_EQ(SG_CreateTailer(handle, nullptr), SG_ERR_NOERR);
    const auto end = static_cast<int64_t>(tally.position);
    ASSERT_EQ(tally.blocks.size(), 2u);
    EXPECT_EQ(tally.blocks[0], std::make_pair(end, static_cast<int32_t>(56 + 6 * kFull)));
    EXPECT_EQ(tally.blocks[1], std::make_pair(int64_t{0}, 818));

    tally.closing = false;
    ASSERT_EQ(SG_InputFrame(handle, &record), SG_ERR_NOERR);
    tally.closing = true;
    tally.blocks.clear();
    tally.index.clear();
    EXPECT_EQ(SG_CreateTailer(handle, nullptr), SG_ERR_NOERR);
    EXPECT_EQ(SG_DestroyHandle(handle), SG_ERR_NOERR);
    const int64_t start = end + static_cast<int64_t>(kPacketLen);
    const int32_t rest = 56 + 6 * static_cast<int32_t>(kFull + 1) - 0x200000;
    ASSERT_EQ(tally.blocks.size(), 3u);
    EXPECT_EQ(tally.blocks[0], std::make_pair(start, 0x200000));
    EXPECT_EQ(tally.blocks[1], std::make_pair(start + 0x200000, rest));
    EXPECT_EQ(tally.blocks[2], std::make_pair(int64_t{0}, 818));
    std::vector<std::pair<uint32_t, uint32_t>> entries;
    for (uint32_t i = 1; i <= kFull + 1; ++i)
    {
        entries.emplace_back(i, 1);
    }
    EXPECT_TRUE(Support::Same(tally.index, Index(entries)));
}

}  // namespace
}  // namespace GoldenAsf
