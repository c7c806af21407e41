#include "readers/Mp4Reader.h"

#include <algorithm>

#include "golden/mp4/Pieces.h"

namespace Readers
{
namespace
{

using Golden::Box;
using Golden::BoxOf;
using Support::Bytes;
using Support::Hex;
using Support::Join;
using Support::Msb32;
using Support::Payload;

const Bytes kSps = Hex("67 42 C0 1E");
const Bytes kPps = Hex("68 CE");

/// What a test spoils of a file that is otherwise whole.
struct Parts
{
    Bytes entry = Golden::Avc1(16, 16, Golden::AvcC(kSps, kPps));
    Bytes stts = Golden::Stts(2, 3600);
    Bytes stss = Golden::Stss({1});
    Bytes stsc = Golden::Stsc();
    Bytes stsz = Golden::Stsz({6, 4});
    Bytes offsets = Golden::Stco({40, 46});
    Bytes handler = Golden::HdlrVideo();
    Bytes mediaHeader = Golden::Vmhd();
};

Bytes FileOf(const Parts& parts)
{
    const Bytes stbl = BoxOf(
        "stbl",
        {Golden::Stsd(parts.entry), parts.stts, parts.stss, parts.stsc, parts.stsz, parts.offsets});
    const Bytes minf = BoxOf("minf", {parts.mediaHeader, Golden::Dinf(), stbl});
    const Bytes mdia = BoxOf("mdia", {Golden::Mdhd(90000, 7200), parts.handler, minf});
    const Bytes trak = BoxOf("trak", {Golden::TkhdVideo(7200, 16, 16), mdia});
    return Join({Golden::FtypMp4(),
                 Box(18, "mdat", {Payload(10)}),
                 BoxOf("moov", {Golden::Mvhd(7200, 2), trak})});
}

template <typename Spoil>
Bytes Spoiled(Spoil spoil)
{
    Parts parts;
    spoil(parts);
    return FileOf(parts);
}

TEST(ReadMp4, GivesTracksAndSamples)
{
    const Mp4Movie movie = ReadMp4(FileOf({}));
    EXPECT_EQ(movie.brand, "isom");
    EXPECT_EQ(movie.timescale, 90000u);
    EXPECT_EQ(movie.duration, 7200u);
    EXPECT_EQ(movie.nextTrack, 2u);
    ASSERT_EQ(movie.tracks.size(), 1u);
    const Mp4Track& track = movie.tracks[0];
    EXPECT_EQ(track.id, 1u);
    EXPECT_EQ(track.duration, 7200u);
    EXPECT_EQ(track.width, 16u);
    EXPECT_EQ(track.mediaDuration, 7200u);
    EXPECT_EQ(track.handler, "vide");
    EXPECT_EQ(track.entry, "avc1");
    ASSERT_TRUE(track.avc.has_value());
    EXPECT_EQ(track.avc->profile, 0x42u);
    EXPECT_EQ(track.avc->level, 0x1Eu);
    EXPECT_EQ(track.avc->sps, std::vector<Bytes>{kSps});
    EXPECT_EQ(track.avc->pps, std::vector<Bytes>{kPps});
    ASSERT_EQ(track.samples.size(), 2u);
    EXPECT_EQ(track.samples[1].offset, 46u);
    EXPECT_EQ(track.samples[1].size, 4u);
    EXPECT_EQ(track.samples[1].duration, 3600u);
    EXPECT_TRUE(track.samples[0].sync);
    EXPECT_FALSE(track.samples[1].sync);
}

TEST(ReadMp4, ReadsSoundInBothForms)
{
    const Bytes esds = Golden::Esds(2, 0x40, 0x15, Hex("12 10"));
    for (const Bytes& entry :
         {Golden::Mp4aMp4(2, 16, 44100, esds), Golden::Mp4aMov(2, 16, 44100, esds)})
    {
        const Bytes file = Spoiled(
            [&](Parts& parts)
            {
                parts.entry = entry;
                parts.handler = Golden::HdlrAudio();
                parts.mediaHeader = Golden::Smhd();
                parts.stss.clear();
            });
        const Mp4Track track = ReadMp4(file).tracks.at(0);
        EXPECT_EQ(track.handler, "soun");
        EXPECT_EQ(track.channels, 2u);
        EXPECT_EQ(track.sampleBits, 16u);
        EXPECT_EQ(track.sampleRate, 44100u);
        ASSERT_TRUE(track.esds.has_value());
        EXPECT_EQ(track.esds->id, 2u);
        EXPECT_EQ(track.esds->objectType, 0x40u);
        EXPECT_EQ(track.esds->specificInfo, Hex("12 10"));
        EXPECT_TRUE(track.samples.at(1).sync);
    }
}

TEST(ReadMp4, RefusesTablesThatDisagree)
{
    const auto refused = [](auto spoil) { EXPECT_THROW(ReadMp4(Spoiled(spoil)), Mp4Error); };
    refused([](Parts& p) { p.stts = Golden::Stts(1, 3600); });
    refused([](Parts& p) { p.stts = Golden::Stts(3, 3600); });
    refused([](Parts& p) { p.stss = Golden::Stss({3}); });
    refused([](Parts& p) { p.stss = Golden::Stss({0}); });
    refused([](Parts& p) { p.stss = Golden::Stss({2, 1}); });
    refused([](Parts& p) { p.stsz = Golden::Stsz({6}); });
    refused([](Parts& p) { p.offsets = Golden::Stco({40}); });
    refused([](Parts& p) { p.offsets.clear(); });
    refused([](Parts& p) { p.stsc.clear(); });
    refused([](Parts& p) { p.mediaHeader = Golden::Smhd(); });
    refused([](Parts& p) { p.stsz.at(19) = 3; });  // says three rows, has two
    refused([](Parts& p) { p.stsc.at(23) = 2; });  // two samples in a chunk
}

TEST(ReadMp4, RefusesSamplesOutsideTheMediaData)
{
    EXPECT_THROW(ReadMp4(Spoiled([](Parts& p) { p.offsets = Golden::Stco({39, 46}); })), Mp4Error);
    EXPECT_THROW(ReadMp4(Spoiled([](Parts& p) { p.offsets = Golden::Stco({40, 47}); })), Mp4Error);
    EXPECT_THROW(ReadMp4(Spoiled(
                     [](Parts& p) {
                         p.offsets = Golden::Co64({40, 0xFFFFFFFFFFFFFFFF});
                     })),
                 Mp4Error);
}

TEST(ReadMp4, RefusesAFileThatEndsAnywhereEarlier)
{
    const Bytes file = FileOf({});
    for (std::size_t size = 0; size < file.size(); ++size)
    {
        EXPECT_THROW(ReadMp4(Support::Slice(file, 0, size)), Mp4Error) << size;
    }
}

TEST(ReadMp4, LeavesNoBoxWhateverAByteSays)
{
    const Bytes whole = FileOf({});
    for (std::size_t at = 0; at < whole.size(); ++at)
    {
        for (const unsigned char value : Hex("00 01 7F FF"))
        {
            Bytes file = whole;
            file[at] = value;
            try
            {
                ReadMp4(file);
            }
            catch (const Mp4Error&)
            {
                // Whether a byte matters is not the question here, only that nothing else happens.
            }
        }
    }
}

}  // namespace
}  // namespace Readers
