// Which audio and extension frames are stored, and the ADTS headers that AAC frames lose.
#include "golden/mp4/Recording.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Aac;
using Support::Adts;
using Support::Audio;
using Support::Ext;
using Support::Frame;
using Support::H264I;
using Support::Hex;
using Support::Join;
using Support::Mp2;
using Support::Msb32;
using Support::Payload;
using Support::Same;
using Support::Slice;
using Support::Text;

Bytes Stored(const Flavour& flavour, const Bytes& sample)
{
    return flavour.noSeek
               ? Join({Msb32(static_cast<uint32_t>(sample.size() + 8)), Text("mdat"), sample})
               : sample;
}

/// Position of the first block behind one video frame.
uint32_t BehindVideo(const Flavour& flavour)
{
    return flavour.DataStart() + flavour.SampleHeader() + 27;
}

class AudioInput : public EveryFlavour
{
};
INSTANTIATE_FLAVOURS(AudioInput);

TEST_P(AudioInput, IsDroppedUntilTheVideoTrackIsOpen)
{
    Recording recording(GetParam());
    recording.Header();
    recording.Sink().ForgetBlocks();
    recording.Input(Aac(Payload(9))).Input(Mp2(Payload(9))).Input(Ext(Payload(9)));
    EXPECT_TRUE(recording.Blocks().empty());
    recording.Tailer();
    EXPECT_TRUE(Same(recording.Movie(), Box(116, "moov", {Mvhd(0, 1)})));
}

TEST_P(AudioInput, AheadOfTheVideoDoesNotChooseTheTracksEncoding)
{
    Recording recording(GetParam());
    recording.Header().Input(Mp2(Payload(9))).Input(H264I(kIFrame)).Input(Aac(Payload(9))).Tailer();
    EXPECT_TRUE(Same(recording.AudioTable("stts"), Stts(1, 1024)));
}

TEST_P(AudioInput, IsCopiedBehindTheVideo)
{
    const Flavour flavour = GetParam();
    Recording recording(flavour);
    recording.Header().Input(H264I(kIFrame));
    recording.Sink().ForgetBlocks();
    recording.Input(Aac(Payload(20))).Input(Aac(Payload(30, 2)));
    ASSERT_EQ(recording.Blocks().size(), 2u);
    const uint32_t at = BehindVideo(flavour);
    EXPECT_TRUE(IsBlock(recording.Blocks()[0], at, Stored(flavour, Payload(20))));
    EXPECT_TRUE(IsBlock(
        recording.Blocks()[1], at + 20 + flavour.SampleHeader(), Stored(flavour, Payload(30, 2))));
}

TEST_P(AudioInput, OfAnEncodingThatTheContainerCannotHoldIsDropped)
{
    Recording recording(GetParam());
    recording.Header().Input(H264I(kIFrame));
    recording.Sink().ForgetBlocks();
    for (const uint32_t encode : {0u, 1u, 2u, 7u, 14u, 16u, 22u, 25u, 27u, 30u, 32u, 33u, 48u})
    {
        recording.Input(Audio(encode, Payload(9), 8000, 1, 16));
    }
    EXPECT_TRUE(recording.Blocks().empty());
    recording.Tailer();
    EXPECT_EQ(recording.Types("moov"), "mvhd trak");
}

TEST_P(AudioInput, OfAnotherEncodingThanTheTracksIsDropped)
{
    Recording aac(GetParam());
    aac.Header().Input(H264I(kIFrame)).Input(Aac(Payload(9)));
    aac.Sink().ForgetBlocks();
    aac.Input(Mp2(Payload(9)));
    EXPECT_TRUE(aac.Blocks().empty());
    aac.Input(Aac(Payload(10))).Tailer();
    EXPECT_TRUE(Same(aac.AudioTable("stsz"), Stsz({9, 10})));

    Recording mp2(GetParam());
    mp2.Header().Input(H264I(kIFrame)).Input(Mp2(Payload(9)));
    mp2.Sink().ForgetBlocks();
    mp2.Input(Aac(Payload(9)));
    EXPECT_TRUE(mp2.Blocks().empty());
}

TEST_P(AudioInput, OfAacLosesItsAdtsHeader)
{
    const Flavour flavour = GetParam();
    Recording recording(flavour);
    recording.Header().Input(H264I(kIFrame));
    recording.Sink().ForgetBlocks();
    recording.Input(Aac(Adts(27, Payload(20)))).Input(Aac(Adts(12, Payload(5))));
    ASSERT_EQ(recording.Blocks().size(), 2u);
    const uint32_t at = BehindVideo(flavour);
    EXPECT_TRUE(IsBlock(recording.Blocks()[0], at, Stored(flavour, Payload(20))));
    EXPECT_TRUE(IsBlock(
        recording.Blocks()[1], at + 20 + flavour.SampleHeader(), Stored(flavour, Payload(5))));
    recording.Tailer();
    EXPECT_TRUE(Same(recording.AudioTable("stsz"), Stsz({20, 5})));
}

TEST_P(AudioInput, OfAnAdtsHeaderAloneIsASampleOfNoBytes)
{
    const Flavour flavour = GetParam();
    Recording recording(flavour);
    recording.Header().Input(H264I(kIFrame));
    recording.Sink().ForgetBlocks();
    recording.Input(Aac(Adts(7, {})));
    const uint32_t at = BehindVideo(flavour);
    if (flavour.noSeek)
    {
        ASSERT_EQ(recording.Blocks().size(), 1u);
        EXPECT_TRUE(IsBlock(recording.Blocks()[0], at, Hex("00 00 00 08 6D 64 61 74")));
    }
    else
    {
        EXPECT_TRUE(recording.Blocks().empty());
    }
    recording.Input(Aac(Payload(9))).Tailer();
    EXPECT_TRUE(Same(recording.AudioTable("stsz"), Stsz({0, 9})));
    EXPECT_TRUE(Same(recording.AudioTable("stts"), Stts(2, 1024)));
    const uint32_t first = at + flavour.SampleHeader();
    const uint32_t second = first + flavour.SampleHeader();
    EXPECT_TRUE(Same(recording.AudioTable(flavour.wide ? "co64" : "stco"),
                     flavour.wide ? Co64({first, second}) : Stco({first, second})));
}

/// The sample that an AAC frame becomes.
Bytes SampleOf(const Bytes& frame)
{
    Recording recording(kMp4);
    recording.Header().Input(H264I(kIFrame));
    recording.Sink().ForgetBlocks();
    recording.Input(Aac(frame));
    Bytes sample;
    for (const Support::Block& block : recording.Blocks())
    {
        Support::Append(sample, block.data);
    }
    recording.Tailer();
    EXPECT_TRUE(Same(recording.AudioTable("stsz"), Stsz({static_cast<uint32_t>(sample.size())})));
    return sample;
}

TEST(AdtsHeader, GivesTheSizeOfTheSampleNotTheFrame)
{
    const Bytes frame = Adts(17, Payload(40));
    EXPECT_TRUE(Same(SampleOf(frame), Slice(frame, 7, 10)));
}

TEST(AdtsHeader, OfFewerBytesThanItselfIsNotStripped)
{
    for (const uint32_t length : {0u, 1u, 5u, 6u})
    {
        const Bytes frame = Adts(length, Payload(20));
        EXPECT_TRUE(Same(SampleOf(frame), frame)) << length;
    }
    EXPECT_TRUE(Same(SampleOf(Adts(7, Payload(20))), {}));
    EXPECT_TRUE(Same(SampleOf(Adts(8, Payload(20))), Slice(Payload(20), 0, 1)));
}

TEST(AdtsHeader, OfMoreBytesThanTheFrameIsNotStripped)
{
    EXPECT_TRUE(Same(SampleOf(Adts(26, Payload(20))), Slice(Payload(20), 0, 19)));
    EXPECT_TRUE(Same(SampleOf(Adts(27, Payload(20))), Payload(20)));
    const Bytes beyond = Adts(28, Payload(20));
    EXPECT_TRUE(Same(SampleOf(beyond), beyond));
}

TEST(AdtsHeader, HasALengthOf13Bits)
{
    const Bytes block = Payload(8200);
    EXPECT_TRUE(Same(SampleOf(Adts(8191, block)), Slice(block, 0, 8184)));
    EXPECT_TRUE(Same(SampleOf(Adts(4096 + 7, block)), Slice(block, 0, 4096)));
    EXPECT_TRUE(Same(SampleOf(Adts(2048 + 7, block)), Slice(block, 0, 2048)));
}

TEST(AdtsHeader, WithCrcOrMpeg2IdIsKept)
{
    for (const uint32_t second : {0xF0u, 0xF9u, 0xF8u, 0xF3u, 0xE1u, 0x00u})
    {
        const Bytes frame = Adts(27, Payload(20), second);
        EXPECT_TRUE(Same(SampleOf(frame), frame)) << second;
    }
}

TEST(AdtsHeader, ThatIsCutShortIsKept)
{
    const Bytes header = Adts(7, {});
    for (std::size_t size = 1; size < 7; ++size)
    {
        const Bytes frame = Slice(header, 0, size);
        EXPECT_TRUE(Same(SampleOf(frame), frame)) << size;
    }
}

TEST(AdtsHeader, OfLayerIIIsKept)
{
    const Bytes frame = Adts(27, Payload(20));
    Recording recording(kMp4);
    recording.Header().Input(H264I(kIFrame)).Input(Mp2(frame)).Tailer();
    EXPECT_TRUE(Same(recording.AudioTable("stsz"), Stsz({27})));
    EXPECT_TRUE(Same(Slice(recording.File(), 75, 27), frame));
}

class ExtInput : public EveryFlavour
{
};
INSTANTIATE_FLAVOURS(ExtInput);

TEST_P(ExtInput, IsDroppedUntilTheVideoTrackIsOpen)
{
    Recording recording(GetParam());
    recording.Header();
    recording.Sink().ForgetBlocks();
    recording.Input(Ext(Payload(9)));
    EXPECT_TRUE(recording.Blocks().empty());
}

TEST_P(ExtInput, IsStoredWithoutATrack)
{
    const Flavour flavour = GetParam();
    Recording recording(flavour);
    recording.Header().Input(H264I(kIFrame));
    recording.Sink().ForgetBlocks();
    recording.Input(Ext(Payload(15))).Input(Ext(Payload(25, 2)));
    ASSERT_EQ(recording.Blocks().size(), 2u);
    const uint32_t at = BehindVideo(flavour);
    EXPECT_TRUE(IsBlock(recording.Blocks()[0], at, Stored(flavour, Payload(15))));
    const uint32_t second = at + 15 + flavour.SampleHeader();
    EXPECT_TRUE(IsBlock(recording.Blocks()[1], second, Stored(flavour, Payload(25, 2))));
    recording.Tailer();
    EXPECT_EQ(recording.Types("moov"), "mvhd trak");
    EXPECT_TRUE(Same(recording.MovieBox("mvhd"), Mvhd(3600, 2)));
    EXPECT_TRUE(Same(recording.VideoTable("stsz"), Stsz({27})));
    const Support::Block& last = recording.Blocks().back();
    if (flavour.noSeek)
    {
        EXPECT_TRUE(IsBlock(last, 0, Hex("00 00 00 21 6D 64 61 74")));  // 8 + 25
    }
    else if (flavour.wide)
    {
        EXPECT_TRUE(IsBlock(last,
                            flavour.FtypSize() + 8,
                            Hex("00 00 00 01 6D 64 61 74 "     // largesize follows
                                "00 00 00 00 00 00 00 53")));  // 16 + 27 + 15 + 25
    }
    else
    {
        EXPECT_TRUE(IsBlock(last,
                            flavour.FtypSize() + 8,
                            Hex("00 00 00 4B 6D 64 61 74")));  // 8 + 27 + 15 + 25
    }
}

TEST_P(ExtInput, KeepsAdtsHeaders)
{
    const Flavour flavour = GetParam();
    const Bytes frame = Adts(27, Payload(20));
    Frame ext = Ext(frame);
    ext.encode = SG_ENCODE_AUDIO_AAC;
    Recording recording(flavour);
    recording.Header().Input(H264I(kIFrame)).Input(Aac(Payload(9)));
    recording.Sink().ForgetBlocks();
    recording.Input(ext);
    EXPECT_TRUE(IsBlock(recording.Blocks().at(0),
                        BehindVideo(flavour) + 9 + flavour.SampleHeader(),
                        Stored(flavour, frame)));
}

}  // namespace
}  // namespace Golden
