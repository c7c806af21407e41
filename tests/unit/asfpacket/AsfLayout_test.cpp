// Layout writers: sizes with and without a room, scopes and the split of MPEG-4 frames.
#include <functional>
#include <string_view>

#include "asfpacket/AsfData.h"
#include "asfpacket/AsfHeader.h"
#include "asfpacket/AsfMpeg4.h"
#include "asfpacket/AsfObject.h"
#include "support/Bytes.h"

namespace Orbel::Wrapton
{
namespace
{

using Support::Bytes;
using Support::Hex;
using Support::Join;
using Support::Same;

/// What a writer lays out; its count without a room must be the same.
Bytes Written(const std::function<void(CLsbCursor&)>& write)
{
    Bytes room(8192, 0xEE);
    CLsbCursor w(room);
    write(w);
    EXPECT_FALSE(w.Overrun());
    CLsbCursor measure;
    write(measure);
    EXPECT_EQ(measure.Produced(), w.Produced());
    room.resize(w.Produced());
    return room;
}

TEST(CAsfObjectScope, FillsTheSizeOfNestedObjectsIn)
{
    const _GUID id = {0x01020304, 0x0506, 0x0708, {9, 10, 11, 12, 13, 14, 15, 16}};
    const Bytes written = Written(
        [&](CLsbCursor& w)
        {
            const CAsfObjectScope outer(w, id);
            w.U8(0xAA);
            {
                const CAsfObjectScope inner(w, id);
                w.U8(0xBB);
            }
            w.U8(0xCC);
        });
    const Bytes head = Hex("04 03 02 01 06 05 08 07 09 0A 0B 0C 0D 0E 0F 10");
    EXPECT_TRUE(Same(written,
                     Join({head,
                           Support::Lsb64(24 + 1 + 25 + 1),
                           Hex("AA"),
                           head,
                           Support::Lsb64(24 + 1),
                           Hex("BB CC")})));
}

TEST(PutHeaderObject, Is768BytesWhateverItHolds)
{
    const AsfAudioStream audio;
    for (const bool with_audio : {false, true})
    {
        for (uint32_t config = 0; config <= 64; ++config)
        {
            AsfVideoStream video;
            video.m_nVExtLen = config;
            const AsfHeader header{
                .file = {}, .video = video, .audio = with_audio ? &audio : nullptr};
            const Bytes written = Written([&](CLsbCursor& w) { PutHeaderObject(w, header); });
            EXPECT_EQ(written.size(), 768u);
            EXPECT_TRUE(Same(
                Support::Slice(written, 16, 14),
                Join({Support::Lsb64(768), Support::Lsb32(with_audio ? 4 : 3), Hex("01 02")})));
        }
    }
}

TEST(PutHeaderObject, TakesStreamsAndConfigurationOutOfExtensionAndPadding)
{
    AsfVideoStream video;
    video.m_nVExtLen = 10;
    const AsfAudioStream audio;
    const AsfHeader header{.file = {}, .video = video, .audio = &audio};
    const Bytes written = Written([&](CLsbCursor& w) { PutHeaderObject(w, header); });
    // 30 + 104 ahead, 139 + 116 behind: 379 are left, 46 + 39 + 88 of them ahead of the padding.
    EXPECT_TRUE(Same(Support::Slice(written, 134 + 16, 8), Support::Lsb64(379)));
    EXPECT_TRUE(Same(Support::Slice(written, 134 + 42, 4), Support::Lsb32(379 - 46)));
    EXPECT_TRUE(Same(Support::Slice(written, 134 + 173 + 16, 8), Support::Lsb64(379 - 173)));
    EXPECT_TRUE(Same(Support::Slice(written, 134 + 173 + 24, 379 - 173 - 24),
                     Support::Zero(379 - 173 - 24)));
}

TEST(PutDataObject, IsFiftyBytes)
{
    EXPECT_TRUE(Same(
        Written([](CLsbCursor& w) { PutDataObject(w, 0x0102030405060708, 0x1122334455667788); }),
        Join({Hex("36 26 B2 75 8E 66 CF 11 A6 D9 00 AA 00 62 CE 6C"),
              Hex("08 07 06 05 04 03 02 01"),
              Hex("92 8C 60 DF EA 71 FE 43 81 04 22 51 D3 94 F3 9D"),
              Hex("88 77 66 55 44 33 22 11"),
              Hex("01 01")})));
}

TEST(AsfPacketCount, RoundsUp)
{
    EXPECT_EQ(AsfPacketCount(0), 0u);
    EXPECT_EQ(AsfPacketCount(1), 1u);
    EXPECT_EQ(AsfPacketCount(2048), 1u);
    EXPECT_EQ(AsfPacketCount(2049), 2u);
    EXPECT_EQ(AsfPacketCount(0xFFFFFFFF), 0x200000u);
}

TEST(PutPackets, OverrunsARoomThatIsOneByteShort)
{
    const Bytes frame = Support::Payload(2049);
    Bytes room(2 * 2076);
    CLsbCursor enough(room);
    PutPackets(enough, {.stream = kAsfVideoKey, .number = 1, .time = 2, .bytes = frame});
    EXPECT_FALSE(enough.Overrun());
    EXPECT_EQ(enough.Produced(), room.size());
    CLsbCursor small({room.data(), room.size() - 1});
    PutPackets(small, {.stream = kAsfVideoKey, .number = 1, .time = 2, .bytes = frame});
    EXPECT_TRUE(small.Overrun());
}

TEST(PutSimpleIndex, TellsItsSizeInMoreThan32Bits)
{
    EXPECT_TRUE(Same(Written([](CLsbCursor& w) { PutSimpleIndex(w, 0xFFFFFFFF); }),
                     Join({Hex("90 08 00 33 B1 E5 CF 11 89 F4 00 A0 C9 03 49 CB"),
                           Support::Lsb64(56 + 6 * uint64_t{0xFFFFFFFF}),
                           Hex("92 8C 60 DF EA 71 FE 43 81 04 22 51 D3 94 F3 9D"),
                           Support::Lsb64(10000000),
                           Support::Lsb32(41960),
                           Hex("FF FF FF FF")})));
}

TEST(PutIndexEntry, IsSixBytes)
{
    EXPECT_TRUE(Same(Written(
                         [](CLsbCursor& w) {
                             PutIndexEntry(w, {0x01020304, 0x0506});
                         }),
                     Hex("04 03 02 01 06 05")));
}

/// The parts of a frame as hexadecimal text.
std::pair<std::string, std::string> SplitOf(const Bytes& frame)
{
    const Mpeg4Parts parts = SplitMpeg4(frame);
    return {Support::ToHex({parts.config.begin(), parts.config.end()}),
            Support::ToHex({parts.picture.begin(), parts.picture.end()})};
}

TEST(SplitMpeg4, LooksForTheExactCodes)
{
    using Parts = std::pair<std::string, std::string>;
    EXPECT_EQ(SplitOf({}), Parts("", ""));
    EXPECT_EQ(SplitOf(Hex("00 00 01 01 00 00 01 B6")), Parts("00 00 01 01", "00 00 01 B6"));
    EXPECT_EQ(SplitOf(Hex("00 00 01 B5 00 00 01 B7 AA")), Parts("", "00 00 01 B5 00 00 01 B7 AA"));
    EXPECT_EQ(SplitOf(Hex("00 00 01 00 00 00 01 B6 AA")), Parts("00 00 01 00", "00 00 01 B6 AA"));
}

TEST(SplitMpeg4, SeesCodesThatOverlapTheEndOfAnother)
{
    using Parts = std::pair<std::string, std::string>;
    // The last byte of the first code is the first of the second.
    EXPECT_EQ(SplitOf(Hex("00 00 01 00 00 01 B6 AA")), Parts("00 00 01", "00 00 01 B6 AA"));
    // A zero more ahead of a code belongs to what stands ahead of it.
    EXPECT_EQ(SplitOf(Hex("00 00 00 01 00 AA 00 00 00 01 B6")),
              Parts("00 00 01 00 AA 00", "00 00 01 B6"));
}

}  // namespace
}  // namespace Orbel::Wrapton
