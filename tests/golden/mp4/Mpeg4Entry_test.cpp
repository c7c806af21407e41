// mp4v and esds, and the decoder configuration that is taken from the I frames of MPEG-4 video.
#include "golden/mp4/Recording.h"
#include "support/PrintsNothing.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Hex;
using Support::Join;
using Support::Mpeg4I;
using Support::Mpeg4P;
using Support::Msb32;
using Support::Payload;
using Support::Same;
using Support::Slice;
using Support::Text;
using Support::U8;

/// Start codes of ISO/IEC 14496-2 6.2.1.
const Bytes kObjectLayer = Hex("00 00 01 20");
const Bytes kPicture = Hex("00 00 01 B6");
const Bytes kCoded = Hex("10 60 61 88 71 3F");  // of the picture

/// Headers of @p size bytes that begin with a video object layer.
Bytes Headers(std::size_t size)
{
    return Join({kObjectLayer, Payload(size - 4)});
}

Bytes Vop()
{
    return Join({kPicture, kCoded});
}

struct Outcome
{
    Bytes esds;
    Bytes stsz;
    Bytes stored;  ///< from the position of the first sample to the movie box
};

Outcome Record(std::initializer_list<Support::Frame> frames)
{
    Recording recording(kMp4);
    recording.Header();
    for (const Support::Frame& frame : frames)
    {
        recording.Input(frame);
    }
    recording.Tailer();
    Outcome outcome;
    outcome.esds = recording.VideoTable("stsd/mp4v/esds");
    outcome.stsz = recording.VideoTable("stsz");
    const Bytes file = recording.File();
    const std::size_t from = kMp4.DataStart();
    outcome.stored = Slice(file, from, file.size() - recording.Movie().size() - from);
    return outcome;
}

/// esds of the video track, as far as every length has one byte.
Bytes VideoEsds(const Bytes& info)
{
    return Esds(1, 0x20, 0x11, info);
}
Bytes VideoEsdsBare()
{
    return EsdsBare(1, 0x20, 0x11);
}

void ExpectTaken(const Bytes& frame, std::size_t from, std::size_t count)
{
    const Outcome outcome = Record({Mpeg4I(frame)});
    const auto left = static_cast<uint32_t>(frame.size() - count);
    EXPECT_TRUE(Same(outcome.esds, VideoEsds(Slice(frame, from, count))));
    EXPECT_TRUE(Same(outcome.stsz, Stsz({left})));
    EXPECT_TRUE(Same(outcome.stored, Slice(frame, 0, left)));
}

void ExpectWhole(const Bytes& frame)
{
    const Outcome outcome = Record({Mpeg4I(frame)});
    EXPECT_TRUE(Same(outcome.esds, VideoEsdsBare()));
    EXPECT_TRUE(Same(outcome.stsz, Stsz({static_cast<uint32_t>(frame.size())})));
    EXPECT_TRUE(Same(outcome.stored, frame));
}

class Mpeg4Entry : public EveryFlavour
{
};
INSTANTIATE_FLAVOURS(Mpeg4Entry);

TEST_P(Mpeg4Entry, HoldsThePictureAndTheConfiguration)
{
    Recording recording(GetParam());
    recording.Header().Input(Mpeg4I(Join({Hex("00 00 01 B0 F5"), Vop()}))).Tailer();
    const Bytes expected = Box(16 + 8 + 78 + 54,
                               "stsd",
                               {
                                   Hex("00 00 00 00"),  // version, flags
                                   Hex("00 00 00 01"),  // entry_count
                                   Hex("00 00 00 8C"),  // size of mp4v: 8 + 78 + 54
                                   Text("mp4v"),
                                   VisualEntry(640, 360),
                                   Hex("00 00 00 36"),  // size of esds: 49 + 5
                                   Text("esds"),
                                   Hex("00 00 00 00"),        // version, flags
                                   Hex("03 80 80 80 25"),     // ES descriptor of 37 bytes
                                   Hex("00 01 10"),           // ES_ID 1, flags
                                   Hex("04 80 80 80 17"),     // decoder config of 23 bytes
                                   Hex("20 11"),              // MPEG-4 visual
                                   Hex("00 00 00"),           // bufferSizeDB
                                   Hex("00 00 00 00"),        // maxBitrate
                                   Hex("00 00 00 00"),        // avgBitrate
                                   Hex("05 80 80 80 05"),     // specific info of 5 bytes
                                   Hex("00 00 01 B0 F5"),     // the headers
                                   Hex("06 80 80 80 01 02"),  // SL config, predefined 2
                               });
    EXPECT_TRUE(Same(recording.VideoTable("stsd"), expected));
    EXPECT_TRUE(Same(expected, Stsd(Mp4v(640, 360, Esds(1, 0x20, 0x11, Hex("00 00 01 B0 F5"))))));
}

TEST_P(Mpeg4Entry, HasNoSpecificInfoWithoutConfiguration)
{
    Recording recording(GetParam());
    recording.Header().Input(Mpeg4I(Vop())).Tailer();
    EXPECT_TRUE(Same(recording.VideoTable("stsd"), Stsd(Mp4v(640, 360, VideoEsdsBare()))));
}

TEST_P(Mpeg4Entry, StoresTheIFrameShortenedAtItsEnd)
{
    const Flavour flavour = GetParam();
    const Bytes frame = Join({Headers(7), Vop()});  // 17 bytes, 7 of them headers
    Recording recording(flavour);
    recording.Header().Input(Mpeg4I(frame)).Input(Mpeg4P(Vop()));
    const auto& blocks = recording.Blocks();
    const std::size_t first = blocks.size() - 2;
    const uint32_t start = flavour.DataStart();
    const Bytes stored = Slice(frame, 0, 10);
    if (flavour.noSeek)
    {
        EXPECT_TRUE(IsBlock(blocks[first], start, Join({Msb32(18), Text("mdat"), stored})));
        EXPECT_TRUE(IsBlock(blocks[first + 1], start + 18, Join({Msb32(18), Text("mdat"), Vop()})));
    }
    else
    {
        EXPECT_TRUE(IsBlock(blocks[first], start, stored));
        EXPECT_TRUE(IsBlock(blocks[first + 1], start + 10, Vop()));
    }
    recording.Tailer();
    EXPECT_TRUE(Same(recording.VideoTable("stsz"), Stsz({10, 10})));
}

TEST(Mpeg4Configuration, BeginsAtAnyHeaderStartCode)
{
    for (const uint32_t code : {0x20u, 0x00u, 0x01u, 0xB0u, 0xB2u, 0xB3u, 0xB5u})
    {
        const Bytes headers = Join({Hex("00 00 01"), U8(code), Hex("55 66")});
        SCOPED_TRACE(code);
        ExpectTaken(Join({headers, Vop()}), 0, 6);
    }
}

TEST(Mpeg4Configuration, DoesNotBeginAtOtherStartCodes)
{
    for (const uint32_t code : {0x02u, 0x1Fu, 0x21u, 0xAFu, 0xB1u, 0xB4u, 0xB6u, 0xB7u, 0xFFu})
    {
        const Bytes headers = Join({Hex("00 00 01"), U8(code), Hex("55 66")});
        SCOPED_TRACE(code);
        ExpectWhole(Join({headers, Vop()}));
    }
}

TEST(Mpeg4Configuration, MayBeginBehindOtherBytes)
{
    ExpectTaken(Join({Hex("77 00 00 01 B4 88"), Headers(9), Vop()}), 6, 9);
}

TEST(Mpeg4Configuration, MayBeginBehindAPicture)
{
    ExpectTaken(Join({Vop(), Headers(9), Vop()}), 10, 9);
}

TEST(Mpeg4Configuration, RunsOverFurtherHeadersToTheFirstPicture)
{
    ExpectTaken(
        Join({Hex("00 00 01 B0 01 00 00 01 B5 09 00 00 01 00"), Headers(9), Vop(), Vop()}), 0, 23);
}

TEST(Mpeg4Configuration, EndsAtAPictureStartCodeThatEndsTheFrame)
{
    ExpectTaken(Join({Headers(9), kPicture}), 0, 9);
}

TEST(Mpeg4Configuration, IsNotTakenWithoutPicture)
{
    ExpectWhole(Headers(40));
    ExpectWhole(Join({Headers(9), Hex("00 00 01")}));
    ExpectWhole(Join({Headers(9), Hex("00 00 01 B7")}));
    ExpectWhole(kObjectLayer);
}

TEST(Mpeg4Configuration, IsNotLookedForInFramesTooShortForAStartCode)
{
    ExpectWhole(Hex("00"));
    ExpectWhole(Hex("00 00 01"));
    ExpectWhole(Hex("00 00 01 B6"));
}

TEST(Mpeg4Configuration, IsNotTakenFromPFrames)
{
    const Bytes frame = Join({Headers(9), Vop()});
    const Outcome outcome = Record({Mpeg4I(Vop()), Mpeg4P(frame)});
    EXPECT_TRUE(Same(outcome.esds, VideoEsdsBare()));
    EXPECT_TRUE(Same(outcome.stsz, Stsz({10, 19})));
    EXPECT_TRUE(Same(outcome.stored, Join({Vop(), frame})));
}

TEST(Mpeg4Configuration, OfALaterIFrameReplacesTheEarlierOne)
{
    const Bytes early = Join({Hex("00 00 01 B0 11 22 33"), Vop()});
    const Bytes late = Join({Hex("00 00 01 20 44"), Vop()});
    const Outcome outcome = Record({Mpeg4I(early), Mpeg4I(late)});
    EXPECT_TRUE(Same(outcome.esds, VideoEsds(Hex("00 00 01 20 44"))));
    EXPECT_TRUE(Same(outcome.stsz, Stsz({10, 10})));
    EXPECT_TRUE(Same(outcome.stored, Join({Slice(early, 0, 10), Slice(late, 0, 10)})));
}

TEST(Mpeg4Configuration, StaysWhenALaterIFrameHasNone)
{
    const Bytes early = Join({Headers(9), Vop()});
    const Outcome outcome = Record({Mpeg4I(early), Mpeg4I(Vop()), Mpeg4I(Headers(20))});
    EXPECT_TRUE(Same(outcome.esds, VideoEsds(Headers(9))));
    EXPECT_TRUE(Same(outcome.stsz, Stsz({10, 10, 20})));
}

TEST(Mpeg4Configuration, StaysWhenALaterOneIsTooLong)
{
    const Bytes early = Join({Headers(9), Vop()});
    const Bytes late = Join({Headers(257), Vop()});
    const Outcome outcome = Record({Mpeg4I(early), Mpeg4I(late)});
    EXPECT_TRUE(Same(outcome.esds, VideoEsds(Headers(9))));
    EXPECT_TRUE(Same(outcome.stsz, Stsz({10, 267})));
    EXPECT_TRUE(Same(outcome.stored, Join({Slice(early, 0, 10), late})));
}

TEST(Mpeg4Configuration, ThatIsLongerThanTheRecordIsNotTaken)
{
    ExpectWhole(Join({Headers(257), Vop()}));
    ExpectWhole(Join({Headers(258), Vop()}));
    ExpectWhole(Join({Headers(5000), Vop()}));
}

/// esds whose lengths are typed; those from 128 on have their low 7 bits first.
Bytes LongEsds(
    uint32_t box, const Bytes& es, const Bytes& config, const Bytes& own, const Bytes& info)
{
    return Box(box,
               "esds",
               {
                   Hex("00 00 00 00"),  // version, flags
                   Hex("03 80 80 80"),  // ES_DescrTag
                   es,                  // 32 and the information
                   Hex("00 01 10"),     // ES_ID 1, flags
                   Hex("04 80 80 80"),  // DecoderConfigDescrTag
                   config,              // 18 and the information
                   Hex("20 11"),        // MPEG-4 visual
                   Support::Zero(11),   // buffer size, maximum and average bit rate
                   Hex("05 80 80 80"),  // DecSpecificInfoTag
                   own,
                   info,
                   Hex("06 80 80 80 01 02"),  // SL config, predefined 2
               });
}

TEST(Mpeg4Configuration, OfAnyLengthKeepsTheDeclaredSizeEqualToTheWrittenOne)
{
    struct Case
    {
        std::size_t size;
        uint32_t box;
        const char* es;
        const char* config;
        const char* own;
    };
    for (const Case& c : {
             Case{95, 144, "7F", "71", "5F"},            // 127, 113
             Case{96, 146, "00 81", "72", "60"},         // 128, 114
             Case{97, 147, "01 81", "73", "61"},         // 129, 115
             Case{109, 159, "0D 81", "7F", "6D"},        // 141, 127
             Case{110, 161, "0E 81", "00 81", "6E"},     // 142, 128
             Case{111, 162, "0F 81", "01 81", "6F"},     // 143, 129
             Case{127, 178, "1F 81", "11 81", "7F"},     // 159, 145
             Case{128, 180, "20 81", "12 81", "00 81"},  // 160, 146
             Case{129, 181, "21 81", "13 81", "01 81"},  // 161, 147
             Case{255, 307, "1F 82", "11 82", "7F 81"},  // 287, 273
             Case{256, 308, "20 82", "12 82", "00 82"},  // 288, 274
         })
    {
        const Bytes headers = Headers(c.size);
        const Support::PrintsNothing quiet;
        const Outcome outcome = Record({Mpeg4I(Join({headers, Vop(), Payload(300)}))});
        EXPECT_TRUE(
            Same(outcome.esds, LongEsds(c.box, Hex(c.es), Hex(c.config), Hex(c.own), headers)))
            << c.size;
        EXPECT_TRUE(Same(outcome.stsz, Stsz({310}))) << c.size;
    }
}

TEST(Mpeg4Configuration, ThatShrinksAgainLeavesNoRest)
{
    const Outcome outcome = Record(
        {Mpeg4I(Join({Headers(200), Vop(), Payload(300)})), Mpeg4I(Join({Headers(5), Vop()}))});
    EXPECT_TRUE(Same(outcome.esds, VideoEsds(Headers(5))));
}

}  // namespace
}  // namespace Golden
