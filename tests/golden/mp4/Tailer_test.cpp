// What SG_CreateTailer() emits: the movie box, in the reserve when it fits, and the mdat header.
#include <algorithm>
#include <utility>

#include "golden/mp4/Recording.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Aac;
using Support::H264I;
using Support::H264P;
using Support::Hex;
using Support::Join;
using Support::Msb32;
using Support::Payload;
using Support::Same;
using Support::Slice;
using Support::Text;
using Support::Zero;

/// Bytes of the three samples of Record().
constexpr uint32_t kSampleBytes = 27 + 20 + 7;

void Record(Recording& recording, uint32_t reserve)
{
    recording.Header(reserve).Input(H264I(kIFrame)).Input(Aac(Payload(20))).Input(H264P(kPFrame));
    recording.Sink().ForgetBlocks();
    recording.Tailer();
}

/// The movie box, masked, that @p recording gives whatever its reserve, but for the chunk offsets.
uint32_t MovieSize(const Flavour& flavour)
{
    Recording recording(flavour);
    Record(recording, 0);
    return static_cast<uint32_t>(recording.Movie().size());
}

/// The last block: mdat with its final size.
Bytes FinalMdat(const Flavour& flavour)
{
    if (flavour.noSeek)
    {
        return Hex("00 00 00 0F 6D 64 61 74");  // of the last sample, 8 + 7
    }
    return flavour.wide ? Hex("00 00 00 01 6D 64 61 74 00 00 00 00 00 00 00 46")  // 16 + 54
                        : Hex("00 00 00 3E 6D 64 61 74");                         // 8 + 54
}

/// Position of the mdat header behind a reserve; 0 in the flavour that has none.
uint64_t MdatAt(const Flavour& flavour, uint32_t reserve)
{
    return flavour.noSeek ? 0 : flavour.FtypSize() + 8 + reserve;
}

class Tailer : public EveryFlavour
{
protected:
    /// The movie box as it came, times and all.
    static Bytes RawMovie(const Recording& recording)
    {
        const auto movie =
            std::find_if(recording.Blocks().begin(), recording.Blocks().end(), IsMovie);
        return movie == recording.Blocks().end() ? Bytes() : movie->data;
    }

    static void ExpectAtTheEnd(uint32_t reserve)
    {
        const Flavour flavour = GetParam();
        Recording recording(flavour);
        Record(recording, reserve);
        const uint64_t end =
            flavour.DataStart() + reserve + kSampleBytes + 3 * flavour.SampleHeader();
        ASSERT_EQ(recording.Blocks().size(), 2u);
        EXPECT_TRUE(IsBlock(recording.Blocks()[0], end, RawMovie(recording)));
        EXPECT_TRUE(IsBlock(recording.Blocks()[1], MdatAt(flavour, reserve), FinalMdat(flavour)));
    }

    static void ExpectInTheReserve(uint32_t reserve, const Bytes& freeBox)
    {
        const Flavour flavour = GetParam();
        Recording recording(flavour);
        Record(recording, reserve);
        const uint32_t freeAt = flavour.FtypSize();
        ASSERT_EQ(recording.Blocks().size(), 3u);
        EXPECT_TRUE(IsBlock(recording.Blocks()[0], freeAt, freeBox));
        EXPECT_TRUE(IsBlock(recording.Blocks()[1], freeAt + freeBox.size(), RawMovie(recording)));
        EXPECT_TRUE(IsBlock(recording.Blocks()[2], MdatAt(flavour, reserve), FinalMdat(flavour)));
        // The samples behind the reserve are intact.
        const uint32_t sampleAt = flavour.DataStart() + reserve + flavour.SampleHeader();
        EXPECT_TRUE(Same(Slice(recording.Sink().Image(), sampleAt, 27), kISample));
    }
};
INSTANTIATE_FLAVOURS(Tailer);

TEST_P(Tailer, PutsTheMovieAtTheEndWithoutReserve)
{
    ExpectAtTheEnd(0);
}

TEST_P(Tailer, PutsTheMovieAtTheEndWhenTheReserveIsAByteShort)
{
    ExpectAtTheEnd(MovieSize(GetParam()) - 1);
}

TEST_P(Tailer, KeepsTheFreeHeaderAroundTheMovieThatFillsTheReserve)
{
    const uint32_t movie = MovieSize(GetParam());
    ExpectInTheReserve(movie, Join({Msb32(movie + 8), Text("free")}));
}

TEST_P(Tailer, LeavesTheRestOfTheReserveAsFreeBox)
{
    const uint32_t movie = MovieSize(GetParam());
    ExpectInTheReserve(movie + 1, Join({Hex("00 00 00 09"), Text("free"), Zero(1)}));
    ExpectInTheReserve(movie + 2, Join({Hex("00 00 00 0A"), Text("free"), Zero(2)}));
    ExpectInTheReserve(movie + 1000, Join({Hex("00 00 03 F0"), Text("free"), Zero(1000)}));
}

TEST(TailerOrder, OfBoxesIsFastStartOnlyWithAReserve)
{
    for (const Flavour& flavour : {kMp4, kMov, kMp4Wide, kMovWide})
    {
        Recording without(flavour);
        Record(without, 0);
        EXPECT_EQ(Readers::TypesOf(Readers::ReadBoxes(without.File())), "ftyp free mdat moov");
        Recording with(flavour);
        Record(with, 100000);
        EXPECT_EQ(Readers::TypesOf(Readers::ReadBoxes(with.File())), "ftyp free moov mdat");
    }
}

TEST(TailerOrder, HidesTheMovieThatFillsTheReserveInTheFreeBox)
{
    const uint32_t movie = MovieSize(kMp4);
    Recording recording(kMp4);
    Record(recording, movie);
    const Bytes file = recording.File();
    EXPECT_EQ(Readers::TypesOf(Readers::ReadBoxes(file)), "ftyp free mdat");
    EXPECT_TRUE(Same(Slice(file, 40, movie), recording.Movie()));
}

TEST(TailerReserve, MayStayLargerThanTheWorkBuffer)
{
    for (const uint32_t reserve : {0x300000u + 2000, 8u << 20, 64u << 20})
    {
        Recording recording(kMp4);
        Record(recording, reserve);
        const Bytes file = recording.File();
        const auto boxes = Readers::ReadBoxes(file);
        EXPECT_EQ(Readers::TypesOf(boxes), "ftyp free moov mdat");
        const auto movie = static_cast<uint32_t>(recording.Movie().size());
        EXPECT_EQ(boxes.at(1).size, 8 + reserve - movie);
        EXPECT_TRUE(std::all_of(file.begin() + 40,
                                file.begin() + 40 + (reserve - movie),
                                [](unsigned char byte) { return byte == 0; }));
        // Pieces of the free box lie behind each other.
        uint64_t position = 32;
        for (std::size_t i = 0; i + 1 < recording.Blocks().size(); ++i)
        {
            EXPECT_EQ(recording.Blocks()[i].position, static_cast<int64_t>(position));
            EXPECT_EQ(recording.Blocks()[i].origin, 0);
            position += recording.Blocks()[i].data.size();
        }
        EXPECT_EQ(position, 40 + uint64_t{reserve});
    }
}

TEST(TailerOfNoSamples, GivesAnEmptyMediaDataBox)
{
    struct Case
    {
        Flavour flavour;
        const char* mdat;
    };
    for (const Case& c : {Case{kMp4, "00 00 00 08 6D 64 61 74"},
                          Case{kMov, "00 00 00 08 6D 64 61 74"},
                          Case{kNoSeek, "00 00 00 08 6D 64 61 74"},
                          Case{kMp4Wide, "00 00 00 01 6D 64 61 74 00 00 00 00 00 00 00 10"}})
    {
        Recording recording(c.flavour);
        recording.Header();
        recording.Sink().ForgetBlocks();
        recording.Input(Aac(Payload(20))).Tailer();
        ASSERT_EQ(recording.Blocks().size(), 2u);
        EXPECT_EQ(recording.Blocks()[0].position, c.flavour.DataStart());
        EXPECT_TRUE(Same(recording.Movie(), Box(116, "moov", {Mvhd(0, 1)})));
        EXPECT_TRUE(IsBlock(recording.Blocks()[1], MdatAt(c.flavour, 0), Hex(c.mdat)));
    }
}

TEST(TailerOfNoSamples, FitsAReserveOf116Bytes)
{
    // ftyp 32, free 8, reserve, mdat 8; or in the reserve, behind what is left of it
    for (const auto& [reserve, position] : {std::pair{115u, 163}, {116u, 40}, {117u, 41}})
    {
        Recording recording(kMp4);
        recording.Header(reserve).Tailer();
        const auto movie =
            std::find_if(recording.Blocks().begin(), recording.Blocks().end(), IsMovie);
        ASSERT_NE(movie, recording.Blocks().end());
        EXPECT_EQ(movie->position, position) << reserve;
    }
}

TEST(TailerArgument, IsIgnored)
{
    Recording recording(kMp4);
    recording.Header();
    SGTailerInfo tailer{};
    EXPECT_EQ(SG_CreateTailer(recording.Calls().Handle(), &tailer), SG_ERR_NOERR);
}

}  // namespace
}  // namespace Golden
