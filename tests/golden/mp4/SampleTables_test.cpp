// stbl: stts, stss, stsc, stsz, stco, co64.
#include "golden/mp4/Recording.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Aac;
using Support::Frame;
using Support::H264I;
using Support::H264P;
using Support::JpegI;
using Support::Mp2;
using Support::Msb32;
using Support::Payload;
using Support::ReadMsb32;
using Support::ReadMsb64;
using Support::Same;

class SampleTables : public EveryFlavour
{
};
INSTANTIATE_FLAVOURS(SampleTables);

TEST_P(SampleTables, StandInTheirOrder)
{
    const Flavour flavour = GetParam();
    Recording recording(flavour);
    recording.Header().Input(H264I(kIFrame)).Input(Aac(Payload(9))).Tailer();
    const std::string offsets = flavour.wide ? "co64" : "stco";
    EXPECT_EQ(recording.Types("moov/trak/mdia/minf/stbl"), "stsd stts stss stsc stsz " + offsets);
    EXPECT_EQ(recording.Types("moov/trak[1]/mdia/minf/stbl"), "stsd stts stsc stsz " + offsets);
}

TEST_P(SampleTables, OfOneSampleHaveOneRowEach)
{
    const Flavour flavour = GetParam();
    Recording recording(flavour);
    recording.Header().Input(H264I(kIFrame)).Tailer();
    const uint32_t position = flavour.DataStart() + flavour.SampleHeader();
    EXPECT_TRUE(Same(recording.VideoTable("stts"), Stts(1, 3600)));
    EXPECT_TRUE(Same(recording.VideoTable("stss"), Stss({1})));
    EXPECT_TRUE(Same(recording.VideoTable("stsc"), Stsc()));
    EXPECT_TRUE(Same(recording.VideoTable("stsz"), Stsz({27})));
    EXPECT_TRUE(Same(recording.VideoTable("stco"), flavour.wide ? Bytes() : Stco({position})));
    EXPECT_TRUE(Same(recording.VideoTable("co64"), flavour.wide ? Co64({position}) : Bytes()));
}

TEST_P(SampleTables, PointAtThePayloadOfEachSample)
{
    const Flavour flavour = GetParam();
    Recording recording(flavour);
    recording.Header()
        .Input(H264I(kIFrame))  // 27 bytes as a sample
        .Input(Aac(Payload(100)))
        .Input(H264P(kPFrame))  // 7 bytes
        .Input(Aac(Payload(50)))
        .Tailer();
    const uint32_t ahead = flavour.SampleHeader();
    const uint32_t first = flavour.DataStart() + ahead;
    const uint32_t second = first + 27 + ahead;
    const uint32_t third = second + 100 + ahead;
    const uint32_t fourth = third + 7 + ahead;
    const char* const table = flavour.wide ? "co64" : "stco";
    EXPECT_TRUE(Same(recording.VideoTable(table),
                     flavour.wide ? Co64({first, third}) : Stco({first, third})));
    EXPECT_TRUE(Same(recording.AudioTable(table),
                     flavour.wide ? Co64({second, fourth}) : Stco({second, fourth})));
    EXPECT_TRUE(Same(recording.VideoTable("stsz"), Stsz({27, 7})));
    EXPECT_TRUE(Same(recording.AudioTable("stsz"), Stsz({100, 50})));
    EXPECT_TRUE(Same(Support::Slice(recording.File(), third, 7), kPSample));
    EXPECT_TRUE(Same(Support::Slice(recording.File(), fourth, 50), Payload(50)));
}

TEST(SampleDuration, Is90000DividedByTheRateWithoutRemainder)
{
    struct Case
    {
        uint32_t rate;
        uint32_t delta;
    };
    for (const Case& c : {Case{0, 3600},  // not known: 25
                          Case{1, 90000},
                          Case{7, 12857},
                          Case{12, 7500},
                          Case{15, 6000},
                          Case{24, 3750},
                          Case{25, 3600},
                          Case{29, 3103},
                          Case{30, 3000},
                          Case{60, 1500},
                          Case{89999, 1},
                          Case{90000, 1},
                          Case{90001, 0},
                          Case{0xFFFFFFFF, 0}})
    {
        Recording recording(kMp4);
        recording.Header().Input(JpegI(Payload(9)).AtRate(c.rate)).Tailer();
        EXPECT_TRUE(Same(recording.VideoTable("stts"), Stts(1, c.delta))) << c.rate;
    }
}

TEST(SampleDuration, Is1024ForAacAnd1152ForLayerII)
{
    Recording aac(kMp4);
    aac.Header().Input(H264I(kIFrame)).Input(Aac(Payload(9)), 3).Tailer();
    EXPECT_TRUE(Same(aac.AudioTable("stts"), Stts(3, 1024)));
    Recording mp2(kMp4);
    mp2.Header().Input(H264I(kIFrame)).Input(Mp2(Payload(9)), 3).Tailer();
    EXPECT_TRUE(Same(mp2.AudioTable("stts"), Stts(3, 1152)));
}

TEST(SampleDuration, DoesNotFollowTheTimesOfTheFrames)
{
    Recording recording(kMp4);
    recording.Header();
    for (const uint32_t time : {0u, 10u, 5000u})
    {
        Frame frame = H264I(kIFrame);
        frame.time = time;
        recording.Input(frame);
    }
    recording.Tailer();
    EXPECT_TRUE(Same(recording.VideoTable("stts"), Stts(3, 3600)));
}

TEST(SyncSamples, AreTheIFrames)
{
    Recording recording(kMp4);
    recording.Header()
        .Input(H264P(kPFrame))  // dropped, and not counted
        .Input(H264I(kIFrame))
        .Input(H264P(kPFrame), 2)
        .Input(H264P(kPFrame).As(SG_FRAME_SUB_TYPE_B))
        .Input(H264I(kIFrame))
        .Input(H264P(kPFrame).As(SG_FRAME_SUB_TYPE_JPEG_FRAME))
        .Input(H264P(kPFrame).As(SG_FRAME_SUB_TYPE_UNKNOW))
        .Input(H264P(kPFrame).As(0x80000000))
        .Input(H264I(kIFrame))
        .Tailer();
    EXPECT_TRUE(Same(recording.VideoTable("stss"), Stss({1, 5, 9})));
    EXPECT_TRUE(Same(recording.VideoTable("stts"), Stts(9, 3600)));
}

TEST(SyncSamples, AreOneWhenOnlyPFramesFollow)
{
    Recording recording(kMp4);
    recording.Header().Input(H264I(kIFrame)).Input(H264P(kPFrame), 10).Tailer();
    EXPECT_TRUE(Same(recording.VideoTable("stss"), Stss({1})));
}

TEST(SyncSamples, OfAudioAreNotWritten)
{
    Recording recording(kMp4);
    recording.Header().Input(H264I(kIFrame)).Input(Aac(Payload(9)).As(0)).Tailer();
    EXPECT_TRUE(recording.AudioTable("stss").empty());
}

/// A JPEG picture whose size tells its number.
Frame Numbered(uint32_t number)
{
    return JpegI(Payload(1 + number % 7));
}

/// Sizes, sync samples and offsets of @p count numbered pictures, row by row.
void ExpectNumbered(const Flavour& flavour, uint32_t count)
{
    Recording recording(flavour);
    recording.Header();
    for (uint32_t i = 0; i < count; ++i)
    {
        recording.Input(Numbered(i));
    }
    recording.Tailer();
    const Bytes stsz = recording.VideoTable("stsz");
    const Bytes stss = recording.VideoTable("stss");
    const Bytes offsets = recording.VideoTable(flavour.wide ? "co64" : "stco");
    const std::size_t width = flavour.wide ? 8 : 4;
    ASSERT_EQ(stsz.size(), 20 + std::size_t{4} * count);
    ASSERT_EQ(stss.size(), 16 + std::size_t{4} * count);
    ASSERT_EQ(offsets.size(), 16 + width * count);
    EXPECT_EQ(ReadMsb32(stsz, 16), count);
    EXPECT_EQ(ReadMsb32(stss, 12), count);
    EXPECT_EQ(ReadMsb32(offsets, 12), count);
    uint64_t position = flavour.DataStart();
    for (uint32_t i = 0; i < count; ++i)
    {
        const std::size_t row = i;
        ASSERT_EQ(ReadMsb32(stsz, 20 + 4 * row), 1 + i % 7) << i;
        ASSERT_EQ(ReadMsb32(stss, 16 + 4 * row), i + 1) << i;
        ASSERT_EQ(
            flavour.wide ? ReadMsb64(offsets, 16 + 8 * row) : ReadMsb32(offsets, 16 + 4 * row),
            position)
            << i;
        position += 1 + i % 7;
    }
}

TEST(TableGrowth, LosesNoRowAroundThe2048thSample)
{
    for (const uint32_t count : {2047u, 2048u, 2049u})
    {
        ExpectNumbered(kMp4, count);
    }
}

TEST(TableGrowth, LosesNoRowAroundThe4096thSample)
{
    for (const uint32_t count : {4095u, 4096u, 4097u})
    {
        ExpectNumbered(kMp4Wide, count);
    }
}

TEST(TableGrowth, LosesNoRowOf50000Samples)
{
    ExpectNumbered(kMp4, 50000);
    ExpectNumbered(kMovWide, 50000);
}

}  // namespace
}  // namespace Golden
