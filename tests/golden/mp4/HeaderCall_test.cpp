// What SG_CreateHeader() emits: ftyp, free and the provisional mdat header.
#include <algorithm>

#include "golden/mp4/Recording.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Hex;
using Support::Join;
using Support::Msb32;
using Support::Text;
using Support::Zero;

constexpr uint32_t kWorkBuffer = 0x300000;
constexpr uint32_t kLargestReserve = 64u << 20;

/// mdat as it stands ahead of the first sample.
Bytes EmptyMdat(const Flavour& flavour)
{
    return flavour.wide ? Hex("00 00 00 01 "               // a largesize follows
                              "6D 64 61 74 "               // mdat
                              "00 00 00 00 00 00 00 10 ")  // largesize, these 16 bytes
                        : Hex("00 00 00 08 6D 64 61 74");
}

class HeaderCall : public EveryFlavour
{
};
INSTANTIATE_FLAVOURS(HeaderCall);

TEST_P(HeaderCall, GivesFtypFreeAndMdatHeaderAsOneBlockEach)
{
    const Flavour flavour = GetParam();
    Recording recording(flavour);
    recording.Header();
    const auto& blocks = recording.Blocks();
    ASSERT_EQ(blocks.size(), flavour.noSeek ? 2u : 3u);
    const uint32_t ftyp = flavour.FtypSize();
    EXPECT_TRUE(IsBlock(blocks[0], 0, flavour.Ftyp()));
    EXPECT_TRUE(IsBlock(blocks[1], ftyp, Hex("00 00 00 08 66 72 65 65")));
    if (!flavour.noSeek)
    {
        EXPECT_TRUE(IsBlock(blocks[2], ftyp + 8, EmptyMdat(flavour)));
    }
}

TEST_P(HeaderCall, ReservesAsManyZeroBytesAsAsked)
{
    const Flavour flavour = GetParam();
    Recording recording(flavour);
    recording.Header(1000);
    const auto& blocks = recording.Blocks();
    ASSERT_EQ(blocks.size(), flavour.noSeek ? 2u : 3u);
    const uint32_t ftyp = flavour.FtypSize();
    EXPECT_TRUE(IsBlock(blocks[1], ftyp, Join({Hex("00 00 03 F0"), Text("free"), Zero(1000)})));
    if (!flavour.noSeek)
    {
        EXPECT_TRUE(IsBlock(blocks[2], ftyp + 1008, EmptyMdat(flavour)));
    }
}

TEST_P(HeaderCall, ReservesNothingWithoutHeaderRecord)
{
    const Flavour flavour = GetParam();
    Recording recording(flavour);
    EXPECT_EQ(recording.Calls().HeaderWith(nullptr), SG_ERR_NOERR);
    ASSERT_EQ(recording.Blocks().size(), flavour.noSeek ? 2u : 3u);
    EXPECT_TRUE(IsBlock(recording.Blocks()[1], flavour.FtypSize(), Hex("00 00 00 08 66 72 65 65")));
}

TEST(HeaderCallReserve, TakesOneTwoAndThreeBytes)
{
    for (const uint32_t reserve : {1u, 2u, 3u})
    {
        Recording recording(kMp4);
        recording.Header(reserve);
        EXPECT_TRUE(IsBlock(
            recording.Blocks().at(1), 32, Join({Msb32(8 + reserve), Text("free"), Zero(reserve)})));
    }
}

TEST(HeaderCallReserve, IgnoresTheStreamsOfTheHeaderRecord)
{
    SGHeaderInfo header{};
    header.video = {1, SG_ENCODE_VIDEO_HI_H264, 640, 360, 25};
    header.audio = {1, SG_ENCODE_AUDIO_AAC, 1, 16, 8000};
    Recording recording(kMp4);
    EXPECT_EQ(recording.Calls().HeaderWith(&header), SG_ERR_NOERR);
    EXPECT_TRUE(Support::Same(
        recording.File(),
        Join({FtypMp4(), Hex("00 00 00 08 66 72 65 65"), Hex("00 00 00 08 6D 64 61 74")})));
}

/// The reserve may come in pieces, but they must lie behind each other and be zero.
void ExpectReserve(uint32_t reserve)
{
    Recording recording(kMp4);
    recording.Header(reserve);
    const auto& blocks = recording.Blocks();
    uint64_t position = 0;
    for (const Support::Block& block : blocks)
    {
        EXPECT_EQ(block.structSize, 40u);
        EXPECT_EQ(block.origin, 0);
        EXPECT_EQ(block.position, static_cast<int64_t>(position));
        EXPECT_EQ(block.narrow, static_cast<uint32_t>(position));
        position += block.data.size();
    }
    const Bytes& file = recording.Sink().Image();
    ASSERT_EQ(file.size(), 32u + 8u + reserve + 8u);
    EXPECT_TRUE(
        Support::Same(Support::Slice(file, 32, 8), Join({Msb32(reserve + 8), Text("free")})));
    EXPECT_TRUE(std::all_of(
        file.begin() + 40, file.end() - 8, [](unsigned char byte) { return byte == 0; }));
    EXPECT_TRUE(
        Support::Same(Support::Slice(file, file.size() - 8, 8), Hex("00 00 00 08 6D 64 61 74")));
}

TEST(HeaderCallReserve, IsOneBlockWhileTheFreeBoxFitsTheWorkBuffer)
{
    for (const uint32_t reserve : {kWorkBuffer - 9, kWorkBuffer - 8})
    {
        ExpectReserve(reserve);
        Recording recording(kMp4);
        recording.Header(reserve);
        EXPECT_EQ(recording.Blocks().size(), 3u);
    }
}

TEST(HeaderCallReserve, MayBeLargerThanTheWorkBuffer)
{
    ExpectReserve(kWorkBuffer - 7);
    ExpectReserve(kWorkBuffer);
    ExpectReserve(kWorkBuffer + 1);
    ExpectReserve(2 * kWorkBuffer);
}

TEST(HeaderCallReserve, MayBe64MiB)
{
    ExpectReserve(kLargestReserve - 1);
    ExpectReserve(kLargestReserve);
}

TEST(HeaderCallReserve, IsRefusedWithoutAByteWhenItIsBeyond64MiB)
{
    for (const uint32_t reserve :
         {kLargestReserve + 1, 0x7FFFFFF8u, 0x80000000u, 0xFFFFFFF7u, 0xFFFFFFF8u, 0xFFFFFFFFu})
    {
        Recording recording(kMp4);
        EXPECT_EQ(recording.Calls().Header(reserve), SG_ERR_PARAM_ERR) << reserve;
        EXPECT_TRUE(recording.Blocks().empty()) << reserve;
    }
}

TEST(HeaderCallReserve, LeavesNoRecordingForFramesAndTailerWhenItIsRefused)
{
    Recording recording(kMp4);
    EXPECT_EQ(recording.Calls().Header(kLargestReserve + 1), SG_ERR_PARAM_ERR);
    EXPECT_EQ(recording.Calls().Input(Support::H264I(kIFrame)), SG_ERR_NOERR);
    EXPECT_EQ(recording.Calls().Tailer(), SG_ERR_PARAM_ERR);
    EXPECT_TRUE(recording.Blocks().empty());
}

TEST(HeaderCallReserve, CanBeAskedForAgainAfterARefusal)
{
    Recording recording(kMp4);
    EXPECT_EQ(recording.Calls().Header(0xFFFFFFFF), SG_ERR_PARAM_ERR);
    recording.Header(4);
    EXPECT_TRUE(Support::Same(recording.File(),
                              Join({FtypMp4(),
                                    Hex("00 00 00 0C 66 72 65 65 00 00 00 00"),
                                    Hex("00 00 00 08 6D 64 61 74")})));
}

}  // namespace
}  // namespace Golden
