// The GAYS flavour: its headers, its clock of 33 bits, and its chunks.
#include "golden/ps/Pieces.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using namespace Support;

const Bytes kUnit = Nal(Hex("65 88 84 21"));

/// A PES packet without a PTS, whose place is filled all the same.
Bytes LaterPes(const Bytes& payload)
{
    return Join({
        Hex("00 00 01 E0"),
        Msb16(static_cast<uint32_t>(payload.size()) + 8),
        Hex("80 00 05"),        // neither PTS nor DTS, 5 bytes of header data
        Hex("21 00 01 00 01"),  // filled
        payload,
    });
}

class GaysPs : public ::testing::Test
{
protected:
    Bytes Output(const Frame& frame) { return m_stream.Output(frame); }

    static Frame Sound(Bytes bytes, uint32_t rate = 8000)
    {
        return Audio(SG_ENCODE_AUDIO_G711A, std::move(bytes), rate, 1, 8);
    }

    /// Checks that the clock stands at @p scr, by a sound frame.
    void ExpectClock(uint64_t scr)
    {
        EXPECT_TRUE(Same(Output(Sound(Hex("D5"))), AudioPes(scr, Hex("D5")))) << scr;
    }

    Stream m_stream{SG_STREAM_TYPE_GAYSPS};
};

TEST_F(GaysPs, FirstIFrameIsPackSystemHeaderMapAndPesAtTimeZero)
{
    const Bytes expected = Join({
        Hex("00 00 01 BA"),        // pack_start_code
        Hex("44 00 04 00 04 01"),  // SCR 0
        Hex("00 5F 6B"),           // program_mux_rate 6106
        Hex("F8"),                 // no stuffing

        Hex("00 00 01 BB 00 0C 80 CC F5 04 E1 7F E0 E0 E8 C0 C0 20"),

        Hex("00 00 01 BC"),
        Hex("00 20 E1 FF 00 00 00 18"),        // length 32, two more than there are
        Hex("1B E0 00 0C"),                    // H.264, stream E0, 12 bytes of descriptor
        Hex("2A 0A 7F FF 00 00 07 08 1F FE"),  // 1800 ticks a field
        Hex("50 2D"),                          // 640 / 8, 360 / 8
        Hex("90 C0 00 00"),                    // audio
        Hex("00 00 00 00"),                    // CRC

        Hex("00 00 01 E0"),     // video
        Hex("00 10"),           // 8 + 8
        Hex("80 80 05"),        // PTS
        Hex("21 00 01 00 01"),  // PTS 0
        Hex("00 00 00 01 65 88 84 21"),
    });
    EXPECT_TRUE(Same(Output(H264I(kUnit)), expected));
}

TEST_F(GaysPs, NextFrameStandsAt3600)
{
    Output(H264I(kUnit));
    EXPECT_TRUE(Same(Output(H264P(kUnit)), Join({GaysPack(3600), VideoPes(3600, kUnit)})));
    EXPECT_TRUE(Same(Output(H264I(kUnit)),
                     Join({
                         GaysPack(7200),
                         System(),
                         GaysMap(0x1B, 1800, 80, 45),
                         VideoPes(7200, kUnit),
                     })));
}

TEST_F(GaysPs, MapLengthPointsTwoBytesIntoTheNextStructure)
{
    const Bytes block = Output(H264I(kUnit));
    const std::size_t map = 14 + 18;
    EXPECT_EQ(ReadMsb16(block, map + 4) + 6, 36u + 2);
    EXPECT_EQ(ReadMsb32(block, map + 36), 0x000001E0u);
}

TEST_F(GaysPs, FramesAreCutAt61440WithHeadersAheadOfTheFirstChunkOnly)
{
    const Bytes frame = Payload(130000);
    const auto chunks = [&](uint64_t pts)
    {
        return Join({
            VideoPes(pts, Slice(frame, 0, 61440)),
            LaterPes(Slice(frame, 61440, 61440)),
            LaterPes(Slice(frame, 122880, 7120)),
        });
    };
    EXPECT_TRUE(Same(Output(H264I(frame)),
                     Join({GaysPack(0), System(), GaysMap(0x1B, 1800, 80, 45), chunks(0)})));
    EXPECT_TRUE(Same(Output(H264P(frame)), Join({GaysPack(3600), chunks(3600)})));
}

TEST_F(GaysPs, WholeMultipleHasNoEmptyChunk)
{
    const Bytes frame = Payload(122881);
    Output(H264I(kUnit));
    EXPECT_TRUE(Same(Output(H264P(Slice(frame, 0, 61440))),
                     Join({GaysPack(3600), VideoPes(3600, Slice(frame, 0, 61440))})));
    EXPECT_TRUE(Same(Output(H264P(Slice(frame, 0, 122880))),
                     Join({
                         GaysPack(7200),
                         VideoPes(7200, Slice(frame, 0, 61440)),
                         LaterPes(Slice(frame, 61440, 61440)),
                     })));
    EXPECT_TRUE(Same(Output(H264P(frame)),
                     Join({
                         GaysPack(10800),
                         VideoPes(10800, Slice(frame, 0, 61440)),
                         LaterPes(Slice(frame, 61440, 61440)),
                         LaterPes(Slice(frame, 122880, 1)),
                     })));
}

TEST_F(GaysPs, StartCodesDoNotSplit)
{
    const Bytes units = Join({Payload(5), kUnit, kUnit});
    Output(H264I(kUnit));
    EXPECT_TRUE(Same(Output(H264P(units)), Join({GaysPack(3600), VideoPes(3600, units)})));
}

TEST_F(GaysPs, FrameOfFFFFFBytesIsAcceptedWholeAndAByteMoreRefused)
{
    EXPECT_TRUE(Output(H264I(Payload(0x100000))).empty());
    EXPECT_EQ(Output(H264I(Payload(0xFFFFF))).size(), 14u + 18 + 36 + 18 * 14 + 0xFFFFF);
    EXPECT_TRUE(Output(H264P(Payload(0x100000))).empty());
    // The refused ones moved nothing.
    EXPECT_TRUE(Same(Output(H264P(kUnit)), Join({GaysPack(3600), VideoPes(3600, kUnit)})));
}

TEST_F(GaysPs, IFrameWithoutARateIsRefusedAndEverythingKept)
{
    EXPECT_TRUE(Output(H264I(kUnit).AtRate(0)).empty());
    ExpectClock(0);
    Output(H264I(kUnit).AtRate(10));  // starts the clock
    EXPECT_TRUE(Output(H264I(kUnit).AtRate(0)).empty());
    EXPECT_TRUE(Same(Output(H264P(kUnit)), Join({GaysPack(9000), VideoPes(9000, kUnit)})));
}

TEST_F(GaysPs, PFrameAheadOfAnyIFrameNeedsAudioAndKeepsTheClockAtZero)
{
    EXPECT_TRUE(Output(H264P(kUnit)).empty());
    ExpectClock(0);
    EXPECT_TRUE(Same(Output(H264P(kUnit)), Join({GaysPack(0), VideoPes(0, kUnit)})));
    EXPECT_TRUE(Same(Output(H264P(kUnit).AtRate(25)), Join({GaysPack(0), VideoPes(0, kUnit)})));
    Output(H264I(kUnit));
    ExpectClock(0);  // the I frame started it
    Output(H264P(kUnit));
    ExpectClock(3600);
}

TEST_F(GaysPs, ClockMovesInWholeMilliseconds)
{
    Output(H264I(kUnit).AtRate(30));
    Output(H264P(kUnit));
    ExpectClock(33 * 90);
    Output(H264P(kUnit).AtRate(1));  // the rate of the last I frame counts
    ExpectClock(66 * 90);
    Output(H264I(kUnit).AtRate(1000));
    ExpectClock(67 * 90);
    Output(H264I(kUnit).AtRate(1001));
    ExpectClock(67 * 90);
    Output(H264P(kUnit));
    ExpectClock(67 * 90);
}

TEST_F(GaysPs, OnlyTheVeryFirstCallStartsTheClock)
{
    // At this rate the millisecond clock stays at zero; the second call counts all the same.
    Output(H264I(kUnit).AtRate(2000));
    Output(H264I(kUnit));
    ExpectClock(3600);
}

TEST_F(GaysPs, ClockThatStepsBackGets65535MillisecondsMore)
{
    // 0xFFFFFFFF frames per second are -1 as a signed number: 1000 milliseconds back.
    Output(H264I(kUnit).AtRate(0xFFFFFFFF));
    ExpectClock(0);
    Output(H264P(kUnit));
    ExpectClock(5898150 - 90000);
    Output(H264I(kUnit).AtRate(0x80000000));  // no step
    ExpectClock(5898150 - 90000);
    Output(H264P(kUnit));
    ExpectClock(5898150 - 90000);
}

TEST_F(GaysPs, ClockHas33Bits)
{
    // One frame per second: 90000 ticks each.
    Output(H264I(Hex("10")).AtRate(1));
    for (int frame = 1; frame <= 47722; ++frame)
    {
        Output(H264P(Hex("10")));
    }
    const uint64_t beyond = uint64_t{47723} * 90000;  // above 2^32
    ASSERT_GT(beyond, 0xFFFFFFFFu);
    EXPECT_TRUE(
        Same(Output(H264P(Hex("10"))), Join({GaysPack(beyond), VideoPes(beyond, Hex("10"))})));
    for (int frame = 47724; frame <= 95443; ++frame)
    {
        Output(H264P(Hex("10")));
    }
    const uint64_t wrapped = uint64_t{95444} * 90000 - (uint64_t{1} << 33);
    ASSERT_LT(wrapped, 90000u);
    EXPECT_TRUE(
        Same(Output(H264P(Hex("10"))), Join({GaysPack(wrapped), VideoPes(wrapped, Hex("10"))})));
}

TEST_F(GaysPs, MapTellsEncodingRateAndSize)
{
    const auto map = [&](const Frame& frame) { return Slice(Output(frame), 32, 36); };
    EXPECT_TRUE(Same(map(Mpeg4I(kUnit)), GaysMap(0x10, 1800, 80, 45)));
    EXPECT_TRUE(Same(map(JpegI(kUnit)), GaysMap(0x1B, 1800, 80, 45)));
    EXPECT_TRUE(Same(map(H264I(kUnit).AtRate(45000)), GaysMap(0x1B, 1, 80, 45)));
    for (const uint32_t rate : {45001u, 0x7FFFFFFFu, 0x80000000u, 0x80000001u, 0xFFFFFFFFu})
    {
        EXPECT_TRUE(Same(map(H264I(kUnit).AtRate(rate)), GaysMap(0x1B, 0, 80, 45))) << rate;
    }
    EXPECT_TRUE(Same(map(H264I(kUnit).Sized(0xFFFFFFFF, 0x10008)), GaysMap(0x1B, 1800, 255, 1)));
}

TEST_F(GaysPs, AudioIsAPesWithTheClockOfTheLastPicture)
{
    Output(H264I(kUnit));
    Output(H264P(kUnit));
    const Bytes sound = Payload(320);
    EXPECT_TRUE(Same(Output(Sound(sound)),
                     Join({
                         Hex("00 00 01 C0"),
                         Hex("01 48"),           // 320 + 8
                         Hex("80 80 05"),        // PTS
                         Hex("21 00 01 1C 21"),  // PTS 3600
                         sound,
                     })));
    EXPECT_TRUE(Same(Output(Sound(sound)), AudioPes(3600, sound)));
    EXPECT_TRUE(Same(Output(H264P(kUnit)), Join({GaysPack(7200), VideoPes(7200, kUnit)})));
}

TEST_F(GaysPs, ALawOfAnotherRateIsRefusedAndOtherAudioTakenAsItIs)
{
    for (const uint32_t rate : {0u, 7999u, 8001u, 16000u})
    {
        EXPECT_TRUE(Output(Sound(Payload(9), rate)).empty()) << rate;
    }
    for (uint32_t encode = 0; encode < 64; ++encode)
    {
        if (encode == SG_ENCODE_AUDIO_G711A) continue;
        EXPECT_TRUE(Same(Output(Audio(encode, Payload(9), 44100, 2, 16)), AudioPes(0, Payload(9))));
    }
}

TEST_F(GaysPs, LengthFieldOfLongAudioKeepsItsLow16Bits)
{
    for (const uint32_t size : {65527u, 65528u, 0x100000u, 0x300000u - 14})
    {
        const Bytes sound = Payload(size);
        const Bytes block = Output(Sound(sound));
        ASSERT_EQ(block.size(), 14 + std::size_t{size});
        EXPECT_EQ(ReadMsb16(block, 4), (size + 8) & 0xFFFF) << size;
        EXPECT_TRUE(Same(Slice(block, 14, size), sound));
    }
}

TEST_F(GaysPs, AudioBeyondTheWorkBufferIsRefused)
{
    EXPECT_TRUE(Output(Sound(Payload(0x300000 - 13))).empty());
    EXPECT_TRUE(Output(Sound(Payload(0x300000))).empty());
}

}  // namespace
}  // namespace Golden
