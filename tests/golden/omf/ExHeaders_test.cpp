// Extension headers beside image size and play-back.
#include <array>
#include <limits>
#include <vector>

#include "golden/omf/Native.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Hex;
using Support::Join;
using Support::Lsb32;
using Support::Same;
using Support::U8;

constexpr int32_t kMost = std::numeric_limits<int32_t>::max();

/// The audio-format header of a sound frame.
Bytes AudioFormat(const SGFrameInfo& record)
{
    Native native;
    const Bytes headers = ExHeadersOf(native.Give(record, Hex("01")));
    return Support::Slice(headers, 0, headers.at(0) == 0x8C ? 8 : 4);
}

SGFrameInfo AtBitRate(uint32_t bitRate)
{
    SGFrameInfo record = Sound();
    record.bit_rate = bitRate;
    return record;
}

TEST(OmfAudio, FrameIsByteForByteAsDocumented)
{
    Native native;
    SGFrameInfo record = Sound();
    record.sample_rate = 44100;
    record.channels = 2;
    record.frame_time = 1000;
    EXPECT_TRUE(Same(native.Give(record, Hex("FF F1 6C 40 01")),
                     Frame({.type = 0xF0, .number = 1, .stamp = 1000},
                           Hex("83 02 1A 08 "               // stereo, AAC, index of 44100 Hz
                               "88 00 F2 6C 40 00 00 00"),  // 406CF1FF + 00000001, sum
                           Hex("FF F1 6C 40 01"))));
}

TEST(OmfAudio, RatesAreStoredAsTheirIndexAndOthersAsZero)
{
    constexpr std::array<uint32_t, 10> kRates = {
        0, 4000, 8000, 11025, 16000, 20000, 22050, 32000, 44100, 48000};
    for (uint32_t i = 0; i < kRates.size(); ++i)
    {
        SGFrameInfo record = Sound();
        record.sample_rate = kRates.at(i);
        EXPECT_TRUE(Same(AudioFormat(record), Join({Hex("83 01 1A"), U8(i)})));
    }
    for (const uint32_t rate : {1u, 12000u, 24000u, 47999u, 48001u, 96000u, 0xFFFFFFFFu})
    {
        SGFrameInfo record = Sound();
        record.sample_rate = rate;
        EXPECT_TRUE(Same(AudioFormat(record), Hex("83 01 1A 00")));
    }
}

TEST(OmfAudio, ABitRateBringsTheLongHeader)
{
    EXPECT_TRUE(Same(AudioFormat(AtBitRate(16000)), Hex("8C 08 01 1A 02 01 00 00")));
    EXPECT_TRUE(Same(AudioFormat(AtBitRate(32000)), Hex("8C 08 01 1A 02 02 00 00")));
    for (const uint32_t bitRate : {1u, 15999u, 16001u, 31999u, 32001u, 64000u, 0xFFFFFFFFu})
    {
        EXPECT_TRUE(Same(AudioFormat(AtBitRate(bitRate)), Hex("8C 08 01 1A 02 00 00 00")));
    }
}

TEST(OmfAudio, ChannelsAndEncodingKeepTheirLow8Bits)
{
    SGFrameInfo record = Sound();
    record.channels = 0x102;
    record.frame_encode = 0x330;
    EXPECT_TRUE(Same(AudioFormat(record), Hex("83 02 30 02")));
    record.bit_rate = 16000;
    EXPECT_TRUE(Same(AudioFormat(record), Hex("8C 08 02 30 02 01 00 00")));
}

TEST(OmfAudio, EveryFrameIsDescribedByItself)
{
    Native native;
    native.Give(AtBitRate(16000), Hex("01"));
    SGFrameInfo record = Sound();
    record.frame_encode = SG_ENCODE_AUDIO_G711A;
    record.frame_sub_type = 7;
    const Bytes frame = native.Give(record, Hex("02"));
    EXPECT_TRUE(Same(frame,
                     Frame({.type = 0xF0, .number = 2, .stamp = 0},
                           Hex("83 01 0E 02 "               // mono, A-law, index of 8000 Hz
                               "88 02 00 00 00 00 00 00"),  // sum
                           Hex("02"))));
}

TEST(OmfExt, FrameCarriesTheCallersSubTypeAndNoFormat)
{
    Native native;
    SGFrameInfo record = Extension();
    record.frame_sub_type = 0x123;
    record.width = 640;
    record.heigth = 360;
    record.frame_encode = SG_ENCODE_VIDEO_HI_H264;
    record.sample_rate = 8000;
    record.frame_time = 0x10203;
    EXPECT_TRUE(Same(native.Give(record, Hex("01 02 03 04 05 06")),
                     Frame({.type = 0xF1, .number = 1, .stamp = 0x203, .subType = 0x23},
                           Hex("88 06 08 03 04 00 00 00"),  // 04030201 + 00000605, sum
                           Hex("01 02 03 04 05 06"))));
}

TEST(OmfExt, FrameIsTakenAheadOfAnyPictureAndDescribesNone)
{
    Native native;
    SGFrameInfo record = Extension();
    record.width = 640;
    record.heigth = 360;
    record.frame_encode = SG_ENCODE_VIDEO_HI_H264;
    native.Give(record, Hex("01"));
    native.Refuse(Picture(SG_FRAME_SUB_TYPE_P), Hex("01"));
}

TEST(OmfDataCheck, AddsLittleEndianWordsAndTheBytesLeftOver)
{
    const Bytes all = Hex("81 F2 03 94 A5 B6 C7 D8 09");
    const std::array<uint32_t, 9> kSums = {
        0x00000081,                        // 81
        0x0000F281,                        // 81 F2
        0x0003F281,                        // 81 F2 03
        0x9403F281,                        // one word
        0x9403F281u + 0xA5,                //
        0x9403F281u + 0xB6A5,              //
        0x9403F281u + 0xC7B6A5,            //
        0x9403F281u + 0xD8C7B6A5u,         // passes 32 bits
        0x9403F281u + 0xD8C7B6A5u + 0x09,  //
    };
    for (std::size_t size = 1; size <= all.size(); ++size)
    {
        Native native;
        const Bytes payload = Support::Slice(all, 0, size);
        EXPECT_TRUE(Same(native.Give(Extension(), payload),
                         Frame({.type = 0xF1, .number = 1, .stamp = 0},
                               Join({Hex("88"), Lsb32(kSums.at(size - 1)), Hex("00 00 00")}),
                               payload)));
    }
}

TEST(OmfRotation, IsWrittenForSubTypeZeroOnly)
{
    Native native;
    SGFrameInfo record = Picture();
    record.rotation_angle = 90;
    const Bytes described = Join({PictureHeaders(), DataCheck(Hex("01"))});
    const Bytes turned = Join({described, Hex("8B 5A 00 00")});
    EXPECT_TRUE(Same(ExHeadersOf(native.Give(record, Hex("01"))), turned));
    for (const uint32_t subType : {1u, 2u, 8u})
    {
        record.frame_sub_type = subType;
        EXPECT_TRUE(Same(ExHeadersOf(native.Give(record, Hex("01"))), described));
    }
    // Sound and extensions have that sub type, too, unless the caller says otherwise.
    SGFrameInfo sound = Sound();
    sound.rotation_angle = 0x1B4;  // its low 8 bits
    EXPECT_TRUE(Same(ExHeadersOf(native.Give(sound, Hex("01"))),
                     Join({Hex("83 01 1A 02"), DataCheck(Hex("01")), Hex("8B B4 00 00")})));
    SGFrameInfo extension = Extension();
    extension.rotation_angle = 256;
    EXPECT_TRUE(Same(ExHeadersOf(native.Give(extension, Hex("01"))),
                     Join({DataCheck(Hex("01")), Hex("8B 00 00 00")})));
    extension.frame_sub_type = 1;
    EXPECT_TRUE(Same(ExHeadersOf(native.Give(extension, Hex("01"))), DataCheck(Hex("01"))));
}

TEST(OmfCompany, IsWrittenWhenThereIsOne)
{
    Native native;
    SGFrameInfo record = Extension();
    record._3rdstream_header_length = 0x0304;
    EXPECT_TRUE(Same(ExHeadersOf(native.Give(record, Hex("01"))), DataCheck(Hex("01"))));
    record.company_type = 0xABCD;
    EXPECT_TRUE(Same(ExHeadersOf(native.Give(record, Hex("01"))),
                     Join({DataCheck(Hex("01")), Hex("92 00 CD AB 04 03 00 00")})));
}

/// A split of @p n by @p m with blocks that are all different, in exact memory.
struct Split
{
    Split(int32_t n, int32_t m)
        : Split(n, m, static_cast<std::size_t>(n) * static_cast<std::size_t>(m))
    {
    }
    Split(int32_t n, int32_t m, std::size_t count) : blocks(count)
    {
        int16_t value = 0;
        for (SGBlockInfo& block : blocks)
        {
            block = {++value, ++value, ++value, static_cast<int16_t>(-++value), ++value, 0};
        }
        info = {1, n, m, blocks.data()};
    }
    Split(const Split&) = delete;
    Split& operator=(const Split&) = delete;

    std::vector<SGBlockInfo> blocks;
    SGSplitInfo info{};
};

Bytes SplitHeaders(const SGSplitInfo& split)
{
    Native native;
    native.Give(Picture(), Hex("01"));
    SGFrameInfo record = Extension();
    record.split_info = split;
    const Bytes frame = native.Give(record, Hex("01"));
    const Bytes check = DataCheck(Hex("01"));
    const Bytes headers = Support::Slice(frame, 24, frame.size() - 24 - 1 - 8);
    EXPECT_TRUE(Same(Support::Slice(headers, 0, check.size()), check));
    EXPECT_EQ(frame.at(22), static_cast<unsigned char>(headers.size()));
    EXPECT_EQ(LengthOf(frame), frame.size());
    return Support::Slice(headers, check.size(), headers.size() - check.size());
}

/// Byte by byte: left, top, right, bottom in 16 bits, offset and reserved in 32.
Bytes BlockBytes(const SGBlockInfo& block)
{
    return Join({Support::Lsb16(static_cast<uint16_t>(block.left)),
                 Support::Lsb16(static_cast<uint16_t>(block.top)),
                 Support::Lsb16(static_cast<uint16_t>(block.right)),
                 Support::Lsb16(static_cast<uint16_t>(block.bottom)),
                 Lsb32(static_cast<uint32_t>(block.offset)),
                 Lsb32(static_cast<uint32_t>(block.reserved))});
}

/// The header with the first @p count blocks.
Bytes SplitBytes(const Split& split, std::size_t count)
{
    Bytes bytes = Join({Hex("99"),
                        U8(static_cast<uint32_t>(split.info.block_n)),
                        U8(static_cast<uint32_t>(split.info.block_m)),
                        Hex("80 02 68 01 "  // 640 x 360, of the last key frame
                            "00")});
    for (std::size_t i = 0; i < count; ++i)
    {
        Support::Append(bytes, BlockBytes(split.blocks.at(i)));
    }
    return bytes;
}

TEST(OmfSplit, BlockIsByteForByteAsDocumented)
{
    std::vector<SGBlockInfo> blocks = {{-1, 2, 640, -360, 0x01020304, -2}};
    EXPECT_TRUE(Same(SplitHeaders({1, 1, 1, blocks.data()}),
                     Hex("99 01 01 80 02 68 01 00 "     // 1 x 1, 640 x 360
                         "FF FF 02 00 80 02 98 FE "     // left, top, right, bottom
                         "04 03 02 01 FE FF FF FF")));  // offset, reserved
}

TEST(OmfSplit, AllBlocksAreWrittenUpTo15)
{
    for (const auto& [n, m] : {std::pair{0, 0}, {0, 5}, {1, 1}, {2, 2}, {7, 2}, {3, 5}, {15, 1}})
    {
        const Split split(n, m);
        EXPECT_TRUE(Same(SplitHeaders(split.info), SplitBytes(split, split.blocks.size())));
    }
}

TEST(OmfSplit, LengthStartsOverAt16Blocks)
{
    for (const auto& [n, m] :
         {std::pair{4, 4}, {16, 1}, {17, 1}, {31, 1}, {4, 8}, {16, 16}, {257, 1}})
    {
        const Split split(n, m);
        EXPECT_TRUE(Same(SplitHeaders(split.info), SplitBytes(split, split.blocks.size() % 16)));
    }
}

TEST(OmfSplit, HugeCountsReadNoMoreThanTheyWrite)
{
    const Split one(kMost, kMost, 1);  // its square is 1 modulo 16
    EXPECT_TRUE(Same(SplitHeaders(one.info), SplitBytes(one, 1)));
    const Split fifteen(kMost, 1, 15);
    EXPECT_TRUE(Same(SplitHeaders(fifteen.info), SplitBytes(fifteen, 15)));
    const Split none(65536, 65536, 0);
    SGSplitInfo info = none.info;
    SGBlockInfo unread{};
    info.pblock = &unread;
    EXPECT_TRUE(Same(SplitHeaders(info), SplitBytes(none, 0)));
}

TEST(OmfSplit, HasNoBlocksWhenThereIsNoneOrACountIsNegative)
{
    Split split(2, 2);
    split.info.pblock = nullptr;
    EXPECT_TRUE(Same(SplitHeaders(split.info), SplitBytes(split, 0)));
    for (const auto& [n, m] : {std::pair{-1, 2}, {2, -1}, {-1, -1}, {-kMost - 1, -kMost - 1}})
    {
        const Split negative(n, m, 1);
        EXPECT_TRUE(Same(SplitHeaders(negative.info), SplitBytes(negative, 0)));
    }
}

TEST(OmfSplit, AnyFlagButZeroCounts)
{
    Split split(1, 1);
    split.info.flag = -1;
    EXPECT_TRUE(Same(SplitHeaders(split.info), SplitBytes(split, 1)));
    split.info.flag = 0;
    EXPECT_TRUE(SplitHeaders(split.info).empty());
}

TEST(OmfSplit, SizeIsZeroAheadOfTheFirstKeyFrame)
{
    Native native;
    SGFrameInfo record = Sound();
    record.split_info = {1, 0, 0, nullptr};
    EXPECT_TRUE(
        Same(ExHeadersOf(native.Give(record, Hex("01"))),
             Join({Hex("83 01 1A 02"), DataCheck(Hex("01")), Hex("99 00 00 00 00 00 00 00")})));
}

TEST(OmfExHeaders, StandInTheirOrder)
{
    Native native;
    SGFrameInfo record = Picture();
    const Split split(1, 1);
    record.split_info = split.info;
    record.rotation_angle = 1;
    record.company_type = 2;
    record._3rdstream_header_length = 3;
    EXPECT_TRUE(Same(ExHeadersOf(native.Give(record, Hex("05"))),
                     Join({PictureHeaders(),
                           DataCheck(Hex("05")),
                           SplitBytes(split, 1),
                           Hex("8B 01 00 00 "                   // rotation
                               "92 00 02 00 03 00 00 00")})));  // company type
}

TEST(OmfExHeaders, PastEightBitsOnlyTheirOwnLengthWraps)
{
    Native native;
    SGFrameInfo record = Picture();
    record.width = 2560;
    record.heigth = 1440;
    const Split split(15, 1);
    record.split_info = split.info;
    record.rotation_angle = 1;
    record.company_type = 2;
    const Bytes payload = Hex("01 02 03 04");
    Bytes splitBytes = SplitBytes(split, 15);
    splitBytes.at(3) = 0x00;  // 2560
    splitBytes.at(4) = 0x0A;
    splitBytes.at(5) = 0xA0;  // 1440
    splitBytes.at(6) = 0x05;
    const Bytes headers = Join({Hex("82 02 00 00 00 0A A0 05 81 00 08 19"),
                                DataCheck(payload),
                                splitBytes,
                                Hex("8B 01 00 00 92 00 02 00 00 00 00 00")});
    ASSERT_EQ(headers.size(), 280u);
    const Bytes frame = native.Give(record, payload);
    EXPECT_EQ(frame.at(22), 280 - 256);
    EXPECT_TRUE(Same(frame, Frame({.type = 0xFD, .number = 1, .stamp = 40}, headers, payload)));
}

}  // namespace
}  // namespace Golden
