// Frames at the size of the work buffer: one that does not fit is dropped and leaves no trace.
#include "golden/mp4/Recording.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Aac;
using Support::Adts;
using Support::Ext;
using Support::Frame;
using Support::H264I;
using Support::H264P;
using Support::Hex;
using Support::Join;
using Support::JpegI;
using Support::LengthNal;
using Support::Mp2;
using Support::Mpeg4I;
using Support::Msb32;
using Support::Nal;
using Support::Payload;
using Support::Same;
using Support::Text;

/// Bytes of a sample that fit, with the mdat header of its own where it has one.
constexpr uint32_t Capacity(const Flavour& flavour)
{
    return flavour.noSeek ? 0x2FFFF8 : 0x300000;
}

class WorkBuffer : public EveryFlavour
{
protected:
    /// Records @p opening, then @p large, then @p opening again; @p stored is what large becomes.
    static void Expect(const Frame& opening,
                       uint32_t openingSize,
                       const Frame& large,
                       const Bytes& stored)
    {
        const Flavour flavour = GetParam();
        Recording recording(flavour);
        recording.Header().Input(opening);
        recording.Sink().ForgetBlocks();
        recording.Input(large);
        uint32_t at = flavour.DataStart() + flavour.SampleHeader() + openingSize;
        if (stored.empty())
        {
            EXPECT_TRUE(recording.Blocks().empty());
        }
        else
        {
            const Bytes header =
                flavour.noSeek
                    ? Join({Msb32(static_cast<uint32_t>(stored.size() + 8)), Text("mdat")})
                    : Bytes();
            ASSERT_EQ(recording.Blocks().size(), 1u);
            EXPECT_TRUE(IsBlock(recording.Blocks()[0], at, Join({header, stored})));
            at += static_cast<uint32_t>(header.size() + stored.size());
        }
        recording.Sink().ForgetBlocks();
        recording.Input(opening);
        ASSERT_EQ(recording.Blocks().size(), 1u);
        EXPECT_EQ(recording.Blocks()[0].position, at);
        recording.Tailer();
        const auto size = static_cast<uint32_t>(stored.size());
        EXPECT_TRUE(Same(recording.VideoTable("stsz"),
                         stored.empty() || large.type != SG_FRAME_TYPE_VIDEO
                             ? Stsz({openingSize, openingSize})
                             : Stsz({openingSize, size, openingSize})));
    }

    static void ExpectCopied(const Frame& opening, uint32_t openingSize, Frame (*make)(Bytes))
    {
        const uint32_t capacity = Capacity(GetParam());
        for (const uint32_t size : {capacity - 1, capacity})
        {
            SCOPED_TRACE(size);
            const Bytes bytes = Payload(size);
            Expect(opening, openingSize, make(bytes), bytes);
        }
        Expect(opening, openingSize, make(Payload(capacity + 1)), {});
        Expect(opening, openingSize, make(Payload(2 * capacity)), {});
    }
};
INSTANTIATE_FLAVOURS(WorkBuffer);

TEST_P(WorkBuffer, HoldsConvertedVideoWithItsLengths)
{
    const uint32_t capacity = Capacity(GetParam());
    for (const uint32_t unit : {capacity - 5, capacity - 4})
    {
        SCOPED_TRACE(unit);
        Expect(H264I(kIFrame), 27, H264P(Nal(Payload(unit))), LengthNal(Payload(unit)));
    }
    Expect(H264I(kIFrame), 27, H264P(Nal(Payload(capacity - 3))), {});
}

TEST_P(WorkBuffer, HoldsConvertedVideoThatGrows)
{
    // A length needs a byte more than a short start code.
    const uint32_t capacity = Capacity(GetParam());
    const Bytes unit = Payload(capacity - 4);
    Expect(H264I(kIFrame), 27, H264P(Join({Hex("00 00 01"), unit})), LengthNal(unit));
    Expect(H264I(kIFrame), 27, H264P(Join({Hex("00 00 01"), Payload(capacity - 3)})), {});
}

TEST_P(WorkBuffer, TakesNoFrameInPart)
{
    const uint32_t capacity = Capacity(GetParam());
    const Bytes first = Hex("41 9A 24");
    Expect(H264I(kIFrame),
           27,
           H264P(Join({Nal(first), Nal(Payload(capacity - 11))})),
           Join({LengthNal(first), LengthNal(Payload(capacity - 11))}));
    Expect(H264I(kIFrame), 27, H264P(Join({Nal(first), Nal(Payload(capacity - 10))})), {});
    Expect(H264I(kIFrame), 27, H264P(Join({Nal(Payload(capacity - 4)), Nal(first)})), {});
}

TEST_P(WorkBuffer, HoldsCopiedVideo)
{
    ExpectCopied(JpegI(Payload(9)), 9, JpegI);
    ExpectCopied(Mpeg4I(Payload(9)), 9, Mpeg4I);
}

TEST_P(WorkBuffer, HoldsMpeg4VideoWithTheHeadersItLoses)
{
    const uint32_t capacity = Capacity(GetParam());
    const Bytes start = Join({Hex("00 00 01 20 55 66 77 88"), Hex("00 00 01 B6")});
    const Bytes fits = Join({start, Payload(capacity - 12)});
    Expect(Mpeg4I(Payload(9)), 9, Mpeg4I(fits), Support::Slice(fits, 0, capacity - 8));
    Expect(Mpeg4I(Payload(9)), 9, Mpeg4I(Join({start, Payload(capacity - 11)})), {});
}

TEST_P(WorkBuffer, HoldsAudio)
{
    ExpectCopied(H264I(kIFrame), 27, [](Bytes bytes) { return Mp2(std::move(bytes)); });
    ExpectCopied(H264I(kIFrame), 27, [](Bytes bytes) { return Aac(std::move(bytes)); });
}

TEST_P(WorkBuffer, HoldsWhatAnAdtsHeaderLeavesOfALargerFrame)
{
    const uint32_t capacity = Capacity(GetParam());
    Expect(H264I(kIFrame),
           27,
           Aac(Adts(107, Payload(capacity + 1))),
           Support::Slice(Payload(200), 0, 100));
}

TEST_P(WorkBuffer, HoldsExtFrames)
{
    ExpectCopied(H264I(kIFrame), 27, Ext);
}

TEST_P(WorkBuffer, KeepsDroppedAudioOutOfTheTables)
{
    const uint32_t capacity = Capacity(GetParam());
    Recording recording(GetParam());
    recording.Header()
        .Input(H264I(kIFrame))
        .Input(Mp2(Payload(capacity + 1)))
        .Input(Mp2(Payload(10)))
        .Input(Mp2(Payload(capacity + 1)))
        .Tailer();
    EXPECT_TRUE(Same(recording.AudioTable("stsz"), Stsz({10})));
    EXPECT_TRUE(Same(recording.AudioTable("stts"), Stts(1, 1152)));
}

TEST_P(WorkBuffer, KeepsDroppedFramesOutOfTheMediaDataSize)
{
    const Flavour flavour = GetParam();
    const uint32_t capacity = Capacity(flavour);
    Recording recording(flavour);
    recording.Header()
        .Input(JpegI(Payload(10)))
        .Input(JpegI(Payload(capacity + 1)))
        .Input(Ext(Payload(capacity + 1)))
        .Tailer();
    EXPECT_TRUE(Same(recording.Blocks().back().data,
                     flavour.wide ? Hex("00 00 00 01 6D 64 61 74 00 00 00 00 00 00 00 1A")
                                  : Hex("00 00 00 12 6D 64 61 74")));
}

TEST_P(WorkBuffer, TooSmallForTheFirstIFrameStillOpensTheTrack)
{
    Recording recording(GetParam());
    recording.Header();
    recording.Sink().ForgetBlocks();
    recording.Input(H264I(Join({Nal(kSps), Nal(kPps), Nal(Payload(0x300000))})));
    EXPECT_TRUE(recording.Blocks().empty());
    recording.Input(H264P(kPFrame)).Tailer();
    EXPECT_TRUE(Same(recording.VideoTable("stsd"), Stsd(Avc1(640, 360, AvcC(kSps, kPps)))));
    EXPECT_TRUE(Same(recording.VideoTable("stsz"), Stsz({7})));
    EXPECT_TRUE(Same(recording.VideoTable("stss"), Stss({})));
}

}  // namespace
}  // namespace Golden
