// A handle used for a second recording after the tailer of the first.
#include <algorithm>

#include "golden/mp4/Recording.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Aac;
using Support::Ext;
using Support::H264I;
using Support::H264P;
using Support::Hex;
using Support::JpegI;
using Support::Mp2;
using Support::Payload;
using Support::Same;

class SecondRecording : public EveryFlavour
{
};
INSTANTIATE_FLAVOURS(SecondRecording);

TEST_P(SecondRecording, BeginsWhereTheFirstEnded)
{
    const Flavour flavour = GetParam();
    Recording recording(flavour);
    recording.Header().Input(H264I(kIFrame)).Tailer();
    const std::size_t end = recording.Sink().Image().size();
    recording.Sink().ForgetBlocks();
    recording.Header();
    const auto& blocks = recording.Blocks();
    ASSERT_EQ(blocks.size(), flavour.noSeek ? 2u : 3u);
    EXPECT_TRUE(IsBlock(blocks[0], end, flavour.Ftyp()));
    EXPECT_TRUE(IsBlock(blocks[1], end + flavour.FtypSize(), Hex("00 00 00 08 66 72 65 65")));
    if (!flavour.noSeek)
    {
        EXPECT_TRUE(IsBlock(blocks[2],
                            end + flavour.FtypSize() + 8,
                            flavour.wide ? Hex("00 00 00 01 6D 64 61 74 00 00 00 00 00 00 00 10")
                                         : Hex("00 00 00 08 6D 64 61 74")));
    }
}

TEST_P(SecondRecording, BeginsBehindTheMovieBoxThoughThatLiesInTheReserve)
{
    const Flavour flavour = GetParam();
    Recording recording(flavour);
    recording.Header(5000).Input(H264I(kIFrame)).Tailer();
    const std::size_t end = recording.Sink().Image().size() + recording.Movie().size();
    recording.Sink().ForgetBlocks();
    recording.Header(3);
    EXPECT_TRUE(IsBlock(recording.Blocks().at(0), end, flavour.Ftyp()));
    EXPECT_TRUE(IsBlock(recording.Blocks().at(1),
                        end + flavour.FtypSize(),
                        Hex("00 00 00 0B 66 72 65 65 00 00 00")));
}

TEST_P(SecondRecording, HasTracksTablesAndSizesOfItsOwn)
{
    const Flavour flavour = GetParam();
    Recording recording(flavour);
    recording.Header().Input(H264I(kIFrame), 3).Input(Aac(Payload(20)), 2).Tailer();
    const auto end = static_cast<uint32_t>(recording.Sink().Image().size());
    recording.Header();
    recording.Sink().ForgetBlocks();
    recording.Input(Mp2(Payload(11))).Input(H264P(kPFrame));  // no video track yet
    EXPECT_TRUE(recording.Blocks().empty());
    recording.Input(JpegI(Payload(30)).AtRate(10)).Input(Mp2(Payload(11))).Tailer();
    EXPECT_TRUE(Same(recording.MovieBox("mvhd"), Mvhd(9000, 3)));
    EXPECT_TRUE(Same(recording.VideoTable("stsd"), Stsd(Jpeg(640, 360))));
    EXPECT_TRUE(Same(recording.VideoTable("stts"), Stts(1, 9000)));
    EXPECT_TRUE(Same(recording.VideoTable("stss"), Stss({1})));
    EXPECT_TRUE(Same(recording.VideoTable("stsz"), Stsz({30})));
    EXPECT_TRUE(Same(recording.AudioTable("stts"), Stts(1, 1152)));
    const uint32_t first = end + flavour.DataStart() + flavour.SampleHeader();
    const uint32_t second = first + 30 + flavour.SampleHeader();
    const char* const table = flavour.wide ? "co64" : "stco";
    EXPECT_TRUE(Same(recording.VideoTable(table), flavour.wide ? Co64({first}) : Stco({first})));
    EXPECT_TRUE(Same(recording.AudioTable(table), flavour.wide ? Co64({second}) : Stco({second})));
    const Support::Block& last = recording.Blocks().back();
    if (flavour.noSeek)
    {
        EXPECT_TRUE(IsBlock(last, 0, Hex("00 00 00 13 6D 64 61 74")));
    }
    else
    {
        EXPECT_TRUE(IsBlock(last,
                            end + flavour.FtypSize() + 8,
                            flavour.wide ? Hex("00 00 00 01 6D 64 61 74 00 00 00 00 00 00 00 39")
                                         : Hex("00 00 00 31 6D 64 61 74")));
    }
}

TEST_P(SecondRecording, DropsExtFramesUntilItsVideoTrackIsOpen)
{
    Recording recording(GetParam());
    recording.Header().Input(H264I(kIFrame)).Input(Ext(Payload(9))).Tailer();
    recording.Header();
    recording.Sink().ForgetBlocks();
    recording.Input(Ext(Payload(9)));
    EXPECT_TRUE(recording.Blocks().empty());
    recording.Input(H264I(kIFrame)).Input(Ext(Payload(9)));
    EXPECT_EQ(recording.Blocks().size(), 2u);
}

TEST_P(SecondRecording, HasABackupOfItsOwn)
{
    Recording recording(GetParam());
    recording.Header().Input(H264I(kIFrame), 50);
    SGOutputData backup{};
    const int large = recording.Calls().Backup(backup);
    recording.Tailer();
    recording.Header();
    EXPECT_EQ(recording.Calls().Backup(backup), 116);
    recording.Input(H264I(kIFrame), 50);
    EXPECT_EQ(recording.Calls().Backup(backup), large);
}

}  // namespace
}  // namespace Golden
