// Whole small files: an I frame, an AAC frame with ADTS header, a P frame.
#include <algorithm>

#include "golden/mp4/Recording.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Aac;
using Support::Adts;
using Support::H264I;
using Support::H264P;
using Support::Hex;
using Support::Join;
using Support::Payload;
using Support::Same;
using Support::Text;
using Support::Zero;

/// Sizes of the boxes that hold others, from the inside out.
struct TrakSizes
{
    uint32_t stsd;
    uint32_t stbl;
    uint32_t minf;
    uint32_t mdia;
    uint32_t trak;
};

Bytes VideoTrak(const TrakSizes& size, const Bytes& offsets)
{
    const Bytes stsd = Stsd(Avc1(640, 360, AvcC(kSps, kPps)));
    EXPECT_EQ(stsd.size(), size.stsd);
    const Bytes stbl =
        Box(size.stbl, "stbl", {stsd, Stts(2, 3600), Stss({1}), Stsc(), Stsz({27, 7}), offsets});
    const Bytes minf = Box(size.minf, "minf", {Vmhd(), Dinf(), stbl});
    const Bytes mdia = Box(size.mdia, "mdia", {Mdhd(90000, 7200), HdlrVideo(), minf});
    return Box(size.trak, "trak", {TkhdVideo(7200, 640, 360), mdia});
}

Bytes AudioTrak(const TrakSizes& size, const Bytes& entry, const Bytes& offsets)
{
    const Bytes stsd = Stsd(entry);
    EXPECT_EQ(stsd.size(), size.stsd);
    const Bytes stbl = Box(size.stbl, "stbl", {stsd, Stts(1, 1024), Stsc(), Stsz({20}), offsets});
    const Bytes minf = Box(size.minf, "minf", {Smhd(), Dinf(), stbl});
    const Bytes mdia = Box(size.mdia, "mdia", {Mdhd(8000, 1024), HdlrAudio(), minf});
    return Box(size.trak, "trak", {TkhdAudio(11520), mdia});
}

Bytes Movie(uint32_t size, const Bytes& video, const Bytes& audio)
{
    return Box(size, "moov", {Mvhd(11520, 3), video, audio});
}

const Bytes kEmptyFree = Hex("00 00 00 08 66 72 65 65");

Bytes AacConfig()
{
    return Esds(2, 0x40, 0x15, Hex("15 88"));
}

Bytes Record(const Flavour& flavour, uint32_t reserve = 0)
{
    Recording recording(flavour);
    recording.Header(reserve)
        .Input(H264P(kPFrame))              // ahead of the first I frame: dropped
        .Input(Aac(Adts(27, Payload(20))))  // ahead of the video: dropped
        .Input(H264I(kIFrame))
        .Input(Aac(Adts(27, Payload(20))))
        .Input(H264P(kPFrame))
        .Tailer();
    return recording.File();
}

TEST(WholeFile, Mp4)
{
    const Bytes expected = Join({
        FtypMp4(),
        kEmptyFree,
        Box(62, "mdat", {kISample, Payload(20), kPSample}),
        Movie(1080,
              VideoTrak({131, 263, 327, 412, 512}, Stco({48, 95})),
              AudioTrak({103, 207, 267, 352, 452}, Mp4aMp4(1, 16, 8000, AacConfig()), Stco({75}))),
    });
    EXPECT_TRUE(Same(Record(kMp4), expected));
}

TEST(WholeFile, Mp4WithFastStart)
{
    const Bytes expected = Join({
        FtypMp4(),
        Box(128, "free", {Zero(120)}),
        Movie(
            1080,
            VideoTrak({131, 263, 327, 412, 512}, Stco({1248, 1295})),
            AudioTrak({103, 207, 267, 352, 452}, Mp4aMp4(1, 16, 8000, AacConfig()), Stco({1275}))),
        Box(62, "mdat", {kISample, Payload(20), kPSample}),
    });
    EXPECT_TRUE(Same(Record(kMp4, 1200), expected));
}

TEST(WholeFile, Mov)
{
    const Bytes expected = Join({
        FtypMov(),
        kEmptyFree,
        Box(62, "mdat", {kISample, Payload(20), kPSample}),
        Movie(1128,
              VideoTrak({131, 263, 327, 412, 512}, Stco({36, 83})),
              AudioTrak({151, 255, 315, 400, 500}, Mp4aMov(1, 16, 8000, AacConfig()), Stco({63}))),
    });
    EXPECT_TRUE(Same(Record(kMov), expected));
}

/// mdat with a largesize that counts its 16 header bytes.
Bytes WideMdat()
{
    return Join({
        Hex("00 00 00 01"),  // a largesize follows
        Text("mdat"),
        Hex("00 00 00 00 00 00 00 46"),  // 16 + 54
        kISample,
        Payload(20),
        kPSample,
    });
}

TEST(WholeFile, Mp4With64BitOffsets)
{
    const Bytes expected = Join({
        FtypMp4(),
        kEmptyFree,
        WideMdat(),
        Movie(1092,
              VideoTrak({131, 271, 335, 420, 520}, Co64({56, 103})),
              AudioTrak({103, 211, 271, 356, 456}, Mp4aMp4(1, 16, 8000, AacConfig()), Co64({83}))),
    });
    EXPECT_TRUE(Same(Record(kMp4Wide), expected));
}

TEST(WholeFile, MovWith64BitOffsets)
{
    const Bytes expected = Join({
        FtypMov(),
        kEmptyFree,
        WideMdat(),
        Movie(1140,
              VideoTrak({131, 271, 335, 420, 520}, Co64({44, 91})),
              AudioTrak({151, 259, 319, 404, 504}, Mp4aMov(1, 16, 8000, AacConfig()), Co64({71}))),
    });
    EXPECT_TRUE(Same(Record(kMovWide), expected));
}

TEST(WholeFile, Mp4WithoutSeekingEndsWithAHeaderOverItsBeginning)
{
    Bytes expected = Join({
        FtypMp4(),
        kEmptyFree,
        Box(35, "mdat", {kISample}),
        Box(28, "mdat", {Payload(20)}),
        Box(15, "mdat", {kPSample}),
        Movie(1080,
              VideoTrak({131, 263, 327, 412, 512}, Stco({48, 111})),
              AudioTrak({103, 207, 267, 352, 452}, Mp4aMp4(1, 16, 8000, AacConfig()), Stco({83}))),
    });
    // The closing block repeats the header of the last sample's box at position 0.
    const Bytes closing = Hex("00 00 00 0F 6D 64 61 74");
    std::copy(closing.begin(), closing.end(), expected.begin());
    EXPECT_TRUE(Same(Record(kNoSeek), expected));
}

}  // namespace
}  // namespace Golden
