// How a picture becomes PES packets in the flavours that split at start codes, and the limits.
#include <numeric>

#include "golden/ps/Pieces.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using namespace Support;

const Bytes kStartCode = Hex("00 00 00 01");

/// A start code and payload, @p size bytes together.
Bytes Unit(std::size_t size, uint32_t seed = 1)
{
    return Join({kStartCode, Payload(size - 4, seed)});
}

/// The clocks before the first frame; both flavours have the same PTS.
struct Flavour
{
    const char* name;
    uint32_t type;
    uint32_t dts;
};

class SplittingPs : public ::testing::TestWithParam<Flavour>
{
protected:
    /// Behind a first I frame at 25 fps, so that the packets of @p bytes have a PTS alone.
    Bytes Packets(const Bytes& bytes, uint32_t encode = SG_ENCODE_VIDEO_HI_H264)
    {
        Stream stream(GetParam().type);
        stream.Output(Video(encode, SG_FRAME_SUB_TYPE_I, Hex("10")));
        const Bytes block = stream.Output(Video(encode, SG_FRAME_SUB_TYPE_P, bytes));
        if (block.empty()) return {};
        EXPECT_TRUE(Same(Slice(block, 0, 14), Pack(7200)));
        return Slice(block, 14, block.size() - 14);
    }

    /// The PES packet of a second frame.
    static Bytes Pes(const Bytes& payload) { return VideoPes(67200, payload); }

    /// The packets of the very first frame, without what stands ahead of them.
    static Bytes FirstPackets(Stream& stream, const Bytes& bytes)
    {
        const Bytes block = stream.Output(H264I(bytes));
        if (block.empty()) return {};
        const std::size_t ahead = GetParam().type == SG_STREAM_TYPE_PS ? 68 : 96;
        return Slice(block, ahead, block.size() - ahead);
    }
};

INSTANTIATE_TEST_SUITE_P(Flavours,
                         SplittingPs,
                         ::testing::Values(Flavour{"Standard", SG_STREAM_TYPE_PS, 50000},
                                           Flavour{"Qv", SG_STREAM_TYPE_QVPS, 56400}),
                         [](const auto& flavour) { return std::string(flavour.param.name); });

TEST_P(SplittingPs, EveryUnitOfTheFirstFrameIsAPacketAndOnlyTheFirstHasADts)
{
    const Bytes sps = Nal(Hex("67 42 C0 1E"));
    const Bytes pps = Nal(Hex("68 CE 3C 80"));
    const Bytes idr = Nal(Hex("65 88 84 21"));
    Stream stream(GetParam().type);
    EXPECT_TRUE(Same(FirstPackets(stream, Join({sps, pps, idr})),
                     Join({
                         VideoPes(63600, GetParam().dts + 3600, sps),
                         VideoPes(63600, pps),
                         VideoPes(63600, idr),
                     })));
}

TEST_P(SplittingPs, AllPacketsOfAFrameHaveOnePts)
{
    EXPECT_TRUE(Same(Packets(Join({Unit(10, 1), Unit(11, 2), Unit(12, 3)})),
                     Join({Pes(Unit(10, 1)), Pes(Unit(11, 2)), Pes(Unit(12, 3))})));
}

TEST_P(SplittingPs, FrameWithoutStartCodesIsCutAt61440)
{
    const Bytes frame = Payload(130000);
    EXPECT_TRUE(Same(Packets(frame),
                     Join({
                         Pes(Slice(frame, 0, 61440)),
                         Pes(Slice(frame, 61440, 61440)),
                         Pes(Slice(frame, 122880, 7120)),
                     })));
}

TEST_P(SplittingPs, SixtyKibibytesAreOnePacketAndAByteMoreTwo)
{
    const Bytes frame = Payload(61441);
    EXPECT_TRUE(Same(Packets(Slice(frame, 0, 61439)), Pes(Slice(frame, 0, 61439))));
    EXPECT_TRUE(Same(Packets(Slice(frame, 0, 61440)), Pes(Slice(frame, 0, 61440))));
    EXPECT_TRUE(
        Same(Packets(frame), Join({Pes(Slice(frame, 0, 61440)), Pes(Slice(frame, 61440, 1))})));
    const Bytes two = Payload(122880);
    EXPECT_TRUE(
        Same(Packets(two), Join({Pes(Slice(two, 0, 61440)), Pes(Slice(two, 61440, 61440))})));
}

TEST_P(SplittingPs, FirstFrameThatIsCutHasItsDtsInTheFirstPiece)
{
    const Bytes frame = Payload(61441);
    Stream stream(GetParam().type);
    EXPECT_TRUE(Same(FirstPackets(stream, frame),
                     Join({
                         VideoPes(63600, GetParam().dts + 3600, Slice(frame, 0, 61440)),
                         VideoPes(63600, Slice(frame, 61440, 1)),
                     })));
}

TEST_P(SplittingPs, OnlyTheLastUnitIsCut)
{
    const Bytes unit = Unit(61441);
    EXPECT_TRUE(Same(Packets(Join({unit, unit})),
                     Join({Pes(unit), Pes(Slice(unit, 0, 61440)), Pes(Slice(unit, 61440, 1))})));
}

TEST_P(SplittingPs, LengthFieldOfAnInnerUnitAbove65527Wraps)
{
    for (const std::size_t size : {65526u, 65527u, 65528u, 200000u})
    {
        const Bytes block = Packets(Join({Unit(size), Unit(9)}));
        ASSERT_EQ(block.size(), 14 + size + 14 + 9);
        EXPECT_EQ(ReadMsb16(block, 4), (size + 8) & 0xFFFF) << size;
        EXPECT_TRUE(Same(Slice(block, 14, size), Unit(size)));
        EXPECT_TRUE(Same(Slice(block, 14 + size, 14 + 9), Pes(Unit(9))));
    }
}

TEST_P(SplittingPs, WrappedLengthLeadsAReaderIntoTheMiddleOfTheUnit)
{
    const Bytes block = Packets(Join({Unit(70000), Unit(9)}));
    const std::size_t next = 6 + ReadMsb16(block, 4);
    EXPECT_EQ(next, 14u + 70000 - 65536);
    EXPECT_NE(ReadMsb32(block, next) >> 8, 1u);
}

TEST_P(SplittingPs, BytesAheadOfTheFirstStartCodeAreLeftOut)
{
    EXPECT_TRUE(Same(Packets(Join({Payload(100), Unit(50)})), Pes(Unit(50))));
    // One zero byte more than a start code has.
    EXPECT_TRUE(Same(Packets(Join({Zero(1), Unit(50)})), Pes(Unit(50))));
}

TEST_P(SplittingPs, ThreeByteStartCodesDoNotSplit)
{
    const Bytes frame = Join({Unit(50), Hex("00 00 01 41"), Payload(30)});
    EXPECT_TRUE(Same(Packets(frame), Pes(frame)));
    const Bytes three = Join({Hex("00 00 01 67"), Payload(30), Hex("00 00 01 65"), Payload(30)});
    EXPECT_TRUE(Same(Packets(three), Pes(three)));
    // Ahead of a start code of four bytes they are lost with everything else there.
    EXPECT_TRUE(Same(Packets(Join({three, Unit(50)})), Pes(Unit(50))));
}

TEST_P(SplittingPs, StartCodesRightBehindOneAnotherAreUnitsOfTheirOwn)
{
    EXPECT_TRUE(Same(Packets(Join({kStartCode, kStartCode, Unit(5)})),
                     Join({Pes(kStartCode), Pes(kStartCode), Pes(Unit(5))})));
    EXPECT_TRUE(Same(Packets(Join({Hex("00 00 01"), kStartCode, Hex("09")})),
                     Pes(Join({kStartCode, Hex("09")}))));
}

TEST_P(SplittingPs, StartCodeInTheLastFourBytesIsSeen)
{
    EXPECT_TRUE(
        Same(Packets(Join({Unit(20), kStartCode})), Join({Pes(Unit(20)), Pes(kStartCode)})));
    EXPECT_TRUE(Same(Packets(kStartCode), Pes(kStartCode)));
}

TEST_P(SplittingPs, FramesShorterThanAStartCodeArePackagedWhole)
{
    for (const char* const bytes : {"00", "00 01", "00 00 01", "00 00 00", "01"})
    {
        EXPECT_TRUE(Same(Packets(Hex(bytes)), Pes(Hex(bytes)))) << bytes;
    }
}

TEST_P(SplittingPs, Mpeg4IsNotSplit)
{
    const Bytes frame = Join({Payload(9), Unit(50), Unit(50)});
    EXPECT_TRUE(Same(Packets(frame, SG_ENCODE_VIDEO_MPEG4), Pes(frame)));
}

TEST_P(SplittingPs, FrameOfFFFFFBytesIsAcceptedWhole)
{
    const Bytes frame = Payload(0xFFFFF);
    Bytes expected;
    for (std::size_t at = 0; at < frame.size(); at += 61440)
    {
        Append(expected, Pes(Slice(frame, at, std::min<std::size_t>(61440, frame.size() - at))));
    }
    EXPECT_TRUE(Same(Packets(frame), expected));
}

TEST_P(SplittingPs, FramesFrom100000HexBytesOnAreRefusedBeforeAnythingMoves)
{
    Stream stream(GetParam().type);
    EXPECT_TRUE(stream.Output(H264I(Payload(0x100000)).AtRate(1)).empty());
    // The call opened the stream all the same; rate and encoding are still the first ones.
    EXPECT_TRUE(stream.Output(H264P(Payload(0x100000))).empty());
    EXPECT_TRUE(stream.Output(H264P(Payload(0x100001))).empty());
    EXPECT_TRUE(Same(stream.Output(H264P(Unit(8))),
                     Join({Pack(3600), VideoPes(63600, GetParam().dts + 3600, Unit(8))})));
}

TEST_P(SplittingPs, InnerUnitIsCutToTheCapacityOfOnePacket)
{
    constexpr std::size_t kRoom = 0x100000 - 14;
    for (const std::size_t size : {kRoom - 1, kRoom, kRoom + 1, kRoom + 9})
    {
        const Bytes block = Packets(Join({Unit(size), kStartCode}));
        const std::size_t kept = std::min(size, kRoom);
        ASSERT_EQ(block.size(), 14 + kept + 14 + 4) << size;
        EXPECT_EQ(ReadMsb16(block, 4), (kept + 8) & 0xFFFF);
        EXPECT_TRUE(Same(Slice(block, 14, kept), Slice(Unit(size), 0, kept)));
        EXPECT_TRUE(Same(Slice(block, 14 + kept, 18), Pes(kStartCode)));
    }
}

TEST_P(SplittingPs, DtsTakesFiveBytesOfThatCapacity)
{
    constexpr std::size_t kRoom = 0x100000 - 19;
    Stream stream(GetParam().type);
    const Bytes block = FirstPackets(stream, Join({Unit(kRoom + 1), kStartCode}));
    ASSERT_EQ(block.size(), 19 + kRoom + 14 + 4);
    EXPECT_EQ(ReadMsb16(block, 4), (kRoom + 13) & 0xFFFF);
    EXPECT_TRUE(Same(Slice(block, 19 + kRoom, 18), VideoPes(63600, kStartCode)));
}

/// Units of 4 bytes and more, @p size bytes together.
Bytes ManyUnits(std::size_t count, std::size_t size)
{
    Bytes frame;
    for (std::size_t unit = 0; unit < count; ++unit)
    {
        const std::size_t left = count - unit;
        Append(frame, Unit((size - frame.size()) / left));
    }
    return frame;
}

TEST_P(SplittingPs, FrameThatFillsTheWorkBufferIsPackagedAndAByteMoreRefused)
{
    // Pack header, 149796 PES headers and the units are 3 MiB.
    constexpr std::size_t kUnits = 149796;
    constexpr std::size_t kSize = 0x300000 - 14 - 14 * kUnits;
    const Bytes block = Packets(ManyUnits(kUnits, kSize));
    EXPECT_EQ(block.size(), 0x300000u - 14);
    EXPECT_TRUE(Same(Slice(block, 0, 20), Pes(Unit(6))));
    EXPECT_TRUE(Packets(ManyUnits(kUnits, kSize + 1)).empty());
}

TEST_P(SplittingPs, RefusedFrameOfTinyUnitsMovesNothing)
{
    const Bytes tiny = ManyUnits(262143, 0xFFFFC);
    Stream stream(GetParam().type);
    EXPECT_TRUE(stream.Output(H264I(tiny).AtRate(1)).empty());
    EXPECT_TRUE(stream.Output(H264P(tiny)).empty());
    EXPECT_TRUE(Same(stream.Output(H264P(Unit(8))),
                     Join({Pack(3600), VideoPes(63600, GetParam().dts + 3600, Unit(8))})));
}

TEST_P(SplittingPs, AudioIsCutToTheCapacityOfOnePacket)
{
    for (const uint32_t size : {0xFFF7u, 0xFFF8u, 0xFFFF1u, 0xFFFF2u, 0xFFFF3u, 0x400000u})
    {
        const Bytes sound = Payload(size);
        Stream stream(GetParam().type);
        Bytes block = stream.Output(Mp2(sound, 16000, 1));
        const std::size_t ahead = GetParam().type == SG_STREAM_TYPE_PS ? 14 : 78;
        const std::size_t kept = std::min<std::size_t>(size, 0xFFFF2);
        ASSERT_EQ(block.size(), ahead + 14 + kept) << size;
        EXPECT_EQ(ReadMsb16(block, ahead + 4), (kept + 8) & 0xFFFF);
        EXPECT_TRUE(Same(Slice(block, ahead + 14, kept), Slice(sound, 0, kept)));
    }
}

}  // namespace
}  // namespace Golden
