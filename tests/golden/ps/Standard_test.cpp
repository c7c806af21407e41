// The standard flavour: headers, clocks, and what is taken from which frame.
#include "golden/ps/Pieces.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using namespace Support;

const Bytes kIdr = Nal(Hex("65 88 84 21"));
const Bytes kSlice = Nal(Hex("41 9A 02 33"));
constexpr uint32_t kH264 = 0x1B;
constexpr uint32_t kMpeg4 = 0x10;

class StandardPs : public ::testing::Test
{
protected:
    Bytes Output(const Frame& frame) { return m_stream.Output(frame); }

    Stream m_stream{SG_STREAM_TYPE_PS};
};

TEST_F(StandardPs, FirstIFrameIsPackMapSystemHeaderAndPes)
{
    const Bytes expected = Join({
        Hex("00 00 01 BA"),        // pack_start_code
        Hex("44 00 04 70 84 01"),  // SCR 3600: 3600 >> 5 is 70 hex, 16 of 5 bits left
        Hex("00 60 1B"),           // program_mux_rate 6150
        Hex("F8"),                 // no stuffing

        Hex("00 00 01 BC"),                    // the map stands ahead of the system header
        Hex("00 1E E1 FF 00 00 00 18"),        // lengths 30, 0 and 24
        Hex("1B E0 00 0C"),                    // H.264, stream E0, 12 bytes of descriptor
        Hex("2A 0A 7F FF 00 00 07 08 1F FE"),  // 1800 ticks a field
        Hex("50 2D"),                          // 640 / 8, 360 / 8
        Hex("90 C0 00 00"),                    // audio
        Hex("00 00 00 00"),                    // CRC

        Hex("00 00 01 BB 00 0C 80 CC F5 04 E1 7F E0 E0 E8 C0 C0 20"),

        Hex("00 00 01 E0"),     // video
        Hex("00 15"),           // 8 bytes of payload + 13
        Hex("80 C0 0A"),        // PTS and DTS
        Hex("31 00 03 F0 E1"),  // PTS 63600
        Hex("11 00 03 A2 C1"),  // DTS 53600
        Hex("00 00 00 01 65 88 84 21"),
    });
    EXPECT_TRUE(Same(Output(H264I(kIdr)), expected));
}

TEST_F(StandardPs, PFrameIsPackAndPesOneStepLater)
{
    Output(H264I(kIdr));
    EXPECT_TRUE(Same(Output(H264P(kSlice)),
                     Join({
                         Hex("00 00 01 BA"),
                         Hex("44 00 04 E1 04 01"),  // SCR 7200
                         Hex("00 60 1B F8"),
                         Hex("00 00 01 E0"),
                         Hex("00 10"),           // 8 + 8
                         Hex("80 80 05"),        // PTS
                         Hex("21 00 05 0D 01"),  // PTS 67200
                         Hex("00 00 00 01 41 9A 02 33"),
                     })));
}

TEST_F(StandardPs, SecondIFrameHasAMapAndNoDts)
{
    Output(H264I(kIdr));
    EXPECT_TRUE(
        Same(Output(H264I(kIdr)),
             Join({Pack(7200), Map(kH264, 1800, 80, 45), System(), VideoPes(67200, kIdr)})));
}

TEST_F(StandardPs, AudioPesHasThePtsOfTheLastPictureAndThePackItsScr)
{
    Output(H264I(kIdr));
    const Bytes sound = Payload(26);
    EXPECT_TRUE(Same(Output(Mp2(sound)),
                     Join({
                         Hex("00 00 01 BA 44 00 04 70 84 01"),  // SCR 3600
                         Hex("00 60 1B F8"),
                         Hex("00 00 01 C0"),
                         Hex("00 22"),           // 26 + 8
                         Hex("80 80 05"),        // PTS
                         Hex("21 00 03 F0 E1"),  // PTS 63600
                         sound,
                     })));
    // Neither clock moved, and audio does not use a clock of its own.
    EXPECT_TRUE(Same(Output(Mp2(sound)), Join({Pack(3600), AudioPes(63600, sound)})));
    EXPECT_TRUE(Same(Output(H264P(kSlice)), Join({Pack(7200), VideoPes(67200, kSlice)})));
}

TEST_F(StandardPs, AudioAheadOfAnyPictureHasTheFirstClocks)
{
    EXPECT_TRUE(Same(Output(Mp2(Hex("FF FD"))), Join({Pack(0), AudioPes(60000, Hex("FF FD"))})));
}

TEST_F(StandardPs, AudioOfAnotherEncodingGivesNothingAndOpensTheStream)
{
    EXPECT_TRUE(Output(H264P(kSlice)).empty());
    for (uint32_t encode = 0; encode < 64; ++encode)
    {
        if (encode == SG_ENCODE_AUDIO_MP2) continue;
        EXPECT_TRUE(Output(Audio(encode, Payload(300), 8000, 1, 16)).empty()) << encode;
    }
    EXPECT_TRUE(Same(Output(H264P(kSlice)), Join({Pack(3600), VideoPes(63600, 53600, kSlice)})));
}

TEST_F(StandardPs, PFrameAheadOfAnyIFrameGivesNothingAndMovesNothing)
{
    for (const uint32_t subType : {1u, 2u, 8u, 9u, 77u})
    {
        EXPECT_TRUE(Output(H264P(kSlice).As(subType)).empty());
    }
    EXPECT_TRUE(Same(Slice(Output(H264I(kIdr)), 0, 14), Pack(3600)));
}

TEST_F(StandardPs, PFrameBehindAudioAloneUsesTheFirstRateAndIsSplit)
{
    Output(Mp2(Payload(10)));
    const Bytes units = Join({kSlice, kSlice});
    EXPECT_TRUE(Same(Output(Mpeg4P(units).AtRate(10)),
                     Join({
                         Pack(3600),
                         VideoPes(63600, 53600, kSlice),
                         VideoPes(63600, kSlice),
                     })));
}

TEST_F(StandardPs, OtherSubTypesArePackagedLikePFrames)
{
    Output(H264I(kIdr));
    uint32_t frames = 1;
    for (const uint32_t subType : {1u, 2u, 8u, 9u, 0xFFFFFFFFu})
    {
        ++frames;
        EXPECT_TRUE(Same(Output(H264P(kSlice).As(subType)),
                         Join({Pack(3600 * frames), VideoPes(60000 + 3600 * frames, kSlice)})));
    }
}

TEST_F(StandardPs, PFrameUsesRateAndEncodingOfTheLastIFrame)
{
    const Bytes units = Join({kSlice, kSlice});
    Output(Mpeg4I(units).AtRate(10));
    EXPECT_TRUE(Same(Output(H264P(units).AtRate(50)), Join({Pack(18000), VideoPes(78000, units)})));
    Output(H264I(kIdr).AtRate(50));
    EXPECT_TRUE(Same(Output(Mpeg4P(units).AtRate(10)),
                     Join({
                         Pack(18000 + 2 * 1800),
                         VideoPes(78000 + 2 * 1800, kSlice),
                         VideoPes(78000 + 2 * 1800, kSlice),
                     })));
}

TEST_F(StandardPs, MapCallsMpeg4ByItsTypeAndEverythingElseH264)
{
    for (uint32_t encode = 0; encode < 140; ++encode)
    {
        const Bytes block = Output(Video(encode, SG_FRAME_SUB_TYPE_I, Hex("10")));
        ASSERT_GT(block.size(), 36u);
        EXPECT_EQ(block[14 + 12], encode == SG_ENCODE_VIDEO_MPEG4 ? kMpeg4 : kH264) << encode;
    }
}

TEST_F(StandardPs, MapHasTheSizeInUnitsOfEightCutToAByte)
{
    const auto map = [&](uint32_t width, uint32_t height)
    { return Slice(Output(H264I(kIdr).Sized(width, height)), 14, 36); };
    EXPECT_TRUE(Same(map(0, 0), Map(kH264, 1800, 0, 0)));
    EXPECT_TRUE(Same(map(7, 8), Map(kH264, 1800, 0, 1)));
    EXPECT_TRUE(Same(map(2047, 2048), Map(kH264, 1800, 255, 0)));
    EXPECT_TRUE(Same(map(0x10000 + 64, 0xFFFFFFFF), Map(kH264, 1800, 8, 255)));
}

TEST_F(StandardPs, RateZeroLeavesTheClocksAndWritesZeroIntoTheMap)
{
    EXPECT_TRUE(
        Same(Output(H264I(kIdr).AtRate(0)),
             Join({Pack(0), Map(kH264, 0, 80, 45), System(), VideoPes(60000, 50000, kIdr)})));
    EXPECT_TRUE(Same(Output(H264P(kSlice)), Join({Pack(0), VideoPes(60000, kSlice)})));
}

TEST_F(StandardPs, ExtremeRatesDivideWithoutWrapping)
{
    const auto map = [&](uint32_t rate) { return Slice(Output(H264I(kIdr).AtRate(rate)), 14, 36); };
    EXPECT_TRUE(Same(map(45000), Map(kH264, 1, 80, 45)));
    EXPECT_TRUE(Same(Slice(Output(H264P(kSlice)), 0, 14), Pack(4)));
    EXPECT_TRUE(Same(map(45001), Map(kH264, 0, 80, 45)));
    EXPECT_TRUE(Same(map(90000), Map(kH264, 0, 80, 45)));
    EXPECT_TRUE(Same(Slice(Output(H264P(kSlice)), 0, 14), Pack(7)));
    for (const uint32_t rate : {90001u, 0x7FFFFFFFu, 0x80000000u, 0x80000001u, 0xFFFFFFFFu})
    {
        EXPECT_TRUE(Same(map(rate), Map(kH264, 0, 80, 45))) << rate;
        EXPECT_TRUE(Same(Slice(Output(H264P(kSlice)), 0, 14), Pack(7)));
    }
}

TEST_F(StandardPs, ClocksKeep32BitsOnly)
{
    // 47721 seconds at one frame per second reach FFFFBB10, the next frame wraps.
    Output(H264I(kIdr).AtRate(1));
    for (int second = 2; second <= 47721; ++second)
    {
        Output(H264P(Hex("10")));
    }
    const uint32_t scr = 47722u * 90000u;  // wraps
    ASSERT_LT(scr, 90000u);
    EXPECT_TRUE(
        Same(Output(H264P(Hex("10"))), Join({Pack(scr), VideoPes(scr + 60000, Hex("10"))})));
}

TEST_F(StandardPs, NarrowedEncodingDecidesSplittingAndTheWholeOneTheMap)
{
    const Bytes units = Join({kSlice, kSlice});
    EXPECT_TRUE(Same(Output(Video(0x10001, SG_FRAME_SUB_TYPE_I, units)),
                     Join({
                         Pack(3600),
                         Map(kH264, 1800, 80, 45),
                         System(),
                         VideoPes(63600, 53600, units),
                     })));
}

}  // namespace
}  // namespace Golden
