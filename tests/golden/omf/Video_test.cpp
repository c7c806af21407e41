// Video frames: header, image size, play-back, and what key frames settle for those behind them.
#include <limits>

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

constexpr uint32_t kI = SG_FRAME_SUB_TYPE_I;
constexpr uint32_t kP = SG_FRAME_SUB_TYPE_P;
constexpr uint32_t kB = SG_FRAME_SUB_TYPE_B;
constexpr uint32_t kJpegFrame = SG_FRAME_SUB_TYPE_JPEG_FRAME;

SGFrameInfo Sized(uint32_t width, uint32_t height)
{
    SGFrameInfo record = Picture();
    record.width = width;
    record.heigth = height;
    return record;
}

/// The first extension header of a key frame with that record.
Bytes ImageSize(const SGFrameInfo& record)
{
    Native native;
    const Bytes headers = ExHeadersOf(native.Give(record, Hex("01")));
    return Support::Slice(headers, 0, headers.at(0) == 0x82 ? 8 : 4);
}

Bytes PlayBack(const SGFrameInfo& record)
{
    Native native;
    return Support::Slice(ExHeadersOf(native.Give(record, Hex("01"))), 4, 4);
}

TEST(OmfVideo, FullHdKeyFrameIsByteForByteAsDocumented)
{
    Native native;
    const Bytes frame = native.Give(Sized(1920, 1080), Hex("00 00 00 01 65 88 84"));
    const Bytes fixed = Join({
        Hex("4F 4D 46 52 "   // OMFR
            "FD "            // I frame
            "00 "            // sub type
            "01 "            // channel
            "00 "            // sub number
            "01 00 00 00 "   // first video frame
            "37 00 00 00"),  // 24 + 16 + 7 + 8 bytes
        Lsb32(PackedDate(kDate)),
        Hex("28 00 "  // 40 ms
            "10"),    // 16 bytes of extension headers
    });
    uint32_t sum = 0;
    for (const unsigned char byte : fixed)
    {
        sum += byte;
    }
    EXPECT_TRUE(Same(frame,
                     Join({
                         fixed,
                         U8(sum),
                         Hex("80 02 F0 87 "               // progressive, 240 x 8, 135 x 8
                             "81 00 08 19 "               // QV H.264, 25 fps
                             "88 65 88 84 01 00 00 00 "   // 01000000 + 00848865, sum
                             "00 00 00 01 65 88 84 "      // payload
                             "6F 6D 66 72 37 00 00 00"),  // omfr, 55 bytes
                     })));
}

TEST(OmfVideo, SizeFitsTheShortHeaderUpTo2047AndInStepsOf8)
{
    EXPECT_TRUE(Same(ImageSize(Sized(8, 8)), Hex("80 02 01 01")));
    EXPECT_TRUE(Same(ImageSize(Sized(2040, 2040)), Hex("80 02 FF FF")));
    EXPECT_TRUE(Same(ImageSize(Sized(2047, 8)), Hex("82 02 00 00 FF 07 08 00")));
    EXPECT_TRUE(Same(ImageSize(Sized(2048, 8)), Hex("82 02 00 00 00 08 08 00")));
    EXPECT_TRUE(Same(ImageSize(Sized(8, 2048)), Hex("82 02 00 00 08 00 00 08")));
    EXPECT_TRUE(Same(ImageSize(Sized(8, 9)), Hex("82 02 00 00 08 00 09 00")));
    EXPECT_TRUE(Same(ImageSize(Sized(7, 8)), Hex("82 02 00 00 07 00 08 00")));
    EXPECT_TRUE(Same(ImageSize(Sized(2560, 1440)), Hex("82 02 00 00 00 0A A0 05")));
}

TEST(OmfVideo, LongSizeHeaderKeepsTheLow16Bits)
{
    EXPECT_TRUE(Same(ImageSize(Sized(65535, 65536)), Hex("82 02 00 00 FF FF 00 00")));
    EXPECT_TRUE(Same(ImageSize(Sized(0xFFFFFFFF, 1)), Hex("82 02 00 00 FF FF 01 00")));
}

TEST(OmfVideo, SizeHeaderSaysTwoLessTheInterlaceFlag)
{
    for (const auto& [flag, byte] :
         {std::pair{0u, 0x02u}, {1u, 0x01u}, {2u, 0x00u}, {3u, 0xFFu}, {0xFFFFFFFFu, 0x03u}})
    {
        SGFrameInfo record = Picture();
        record.deinter_lace = flag;
        EXPECT_TRUE(Same(ImageSize(record), Join({Hex("80"), U8(byte), Hex("50 2D")})));
        record.width = 639;
        EXPECT_TRUE(Same(ImageSize(record), Join({Hex("82"), U8(byte), Hex("00 00 7F 02 68 01")})));
    }
}

TEST(OmfVideo, FrameTypeFollowsSubTypeAndJpegStandsFirst)
{
    struct Row
    {
        uint32_t encode;
        uint32_t subType;
        unsigned char type;
    };
    for (const Row& row : {Row{SG_ENCODE_VIDEO_HI_H264, kI, 0xFD},
                           Row{SG_ENCODE_VIDEO_HI_H264, kP, 0xFC},
                           Row{SG_ENCODE_VIDEO_HI_H264, kB, 0xFE},
                           Row{SG_ENCODE_VIDEO_HI_H264, 3, 0x00},
                           Row{SG_ENCODE_VIDEO_HI_H264, 4, 0x00},
                           Row{SG_ENCODE_VIDEO_HI_H264, kJpegFrame, 0x00},
                           Row{SG_ENCODE_VIDEO_HI_H264, SG_FRAME_SUB_TYPE_UNKNOW, 0x00},
                           Row{SG_ENCODE_VIDEO_HI_H264, 0xFFFFFFFF, 0x00},
                           Row{SG_ENCODE_VIDEO_JPEG, kI, 0xFB},
                           Row{SG_ENCODE_VIDEO_JPEG, kP, 0xFB},
                           Row{SG_ENCODE_VIDEO_JPEG, kB, 0xFB},
                           Row{SG_ENCODE_VIDEO_JPEG, 3, 0xFB},
                           Row{SG_ENCODE_VIDEO_JPEG, kJpegFrame, 0xFB}})
    {
        Native native;
        native.Give(Picture(), Hex("01"));
        const Bytes frame = native.Give(Picture(row.subType, row.encode), Hex("01"));
        EXPECT_EQ(frame.at(4), row.type) << row.encode << ' ' << row.subType;
        EXPECT_EQ(frame.at(5), 0u) << "sub type of a video frame";
    }
}

TEST(OmfVideo, PlayBackHeaderNumbersTheEncodingsItsOwnWay)
{
    struct Row
    {
        uint32_t encode;
        uint32_t number;
    };
    for (const Row& row : {Row{SG_ENCODE_VIDEO_MPEG4, 1},
                           Row{SG_ENCODE_VIDEO_HI_H264, 2},
                           Row{SG_ENCODE_VIDEO_JPEG, 5},
                           Row{SG_ENCODE_VIDEO_QV_H264, 8},
                           Row{SG_ENCODE_VIDEO_SVAC, 11},
                           Row{SG_ENCODE_VIDEO_QV_H265, 12},
                           Row{SG_ENCODE_VIDEO_H263, 13},
                           Row{SG_ENCODE_VIDEO_HIK_H264, 14},
                           Row{SG_ENCODE_VIDEO_STD_H264, 0},
                           Row{SG_ENCODE_VIDEO_JPEG2000, 0},
                           Row{5, 0},
                           Row{0xFFFFFFFF, 0}})
    {
        EXPECT_TRUE(Same(PlayBack(Picture(kI, row.encode)),
                         Join({Hex("81 00"), U8(row.number), Hex("19")})));
    }
}

TEST(OmfVideo, PlayBackHeaderKeepsTheLow8BitsOfTheRate)
{
    for (const auto& [rate, byte] :
         {std::pair{0u, 0x00u}, {255u, 0xFFu}, {256u, 0x00u}, {0xFFFFFFFFu, 0xFFu}})
    {
        SGFrameInfo record = Picture();
        record.frame_rate = rate;
        EXPECT_TRUE(Same(PlayBack(record), Join({Hex("81 00 08"), U8(byte)})));
    }
}

TEST(OmfVideo, PicturesWithoutWidthHeightOrEncodingAreNotDescribed)
{
    const Bytes payload = Hex("01 02 03");
    const Bytes wanted =
        Frame({.type = 0xFD, .number = 1, .stamp = 40}, Hex("88 01 02 03 00 00 00 00"), payload);
    EXPECT_TRUE(Same(Native().Give(Sized(0, 360), payload), wanted));
    EXPECT_TRUE(Same(Native().Give(Sized(640, 0), payload), wanted));
    EXPECT_TRUE(Same(Native().Give(Picture(kI, SG_ENCODE_VIDEO_UNKNOWN), payload), wanted));
}

TEST(OmfVideo, EveryPictureIsDescribedAsTheLastKeyFrameWas)
{
    Native native;
    native.Give(Picture(), Hex("01"));
    SGFrameInfo other = Picture(kP, SG_ENCODE_VIDEO_SVAC);
    other.width = 1280;
    other.heigth = 720;
    other.deinter_lace = 1;
    other.frame_rate = 50;
    const Bytes wanted = Join({PictureHeaders(), DataCheck(Hex("02"))});
    EXPECT_TRUE(Same(ExHeadersOf(native.Give(other, Hex("02"))), wanted));
    other.frame_sub_type = kB;
    EXPECT_TRUE(Same(ExHeadersOf(native.Give(other, Hex("02"))), wanted));

    other.frame_sub_type = kJpegFrame;
    const Bytes updated =
        Hex("80 01 A0 5A "               // interlaced, 1280 / 8, 720 / 8
            "81 00 0B 32 "               // SVAC, 50 fps
            "88 02 00 00 00 00 00 00");  // sum
    EXPECT_TRUE(Same(ExHeadersOf(native.Give(other, Hex("02"))), updated));
    EXPECT_TRUE(Same(ExHeadersOf(native.Give(Picture(kP), Hex("02"))), updated));
}

TEST(OmfVideo, PicturesAheadOfTheFirstKeyFrameAreRefused)
{
    Native native;
    for (const uint32_t subType : {kP, kB, 3u, uint32_t{SG_FRAME_SUB_TYPE_UNKNOW}})
    {
        native.Refuse(Picture(subType), Hex("01"));
        native.Refuse(Picture(subType, SG_ENCODE_VIDEO_JPEG), Hex("01"));
    }
    // The refused ones were not counted.
    EXPECT_EQ(NumberOf(native.Give(Picture(), Hex("01"))), 1u);
    EXPECT_EQ(NumberOf(native.Give(Picture(kP), Hex("01"))), 2u);
}

TEST(OmfVideo, AJpegFrameOpensTheRecordingAsWell)
{
    Native native;
    const Bytes frame = native.Give(Picture(kJpegFrame, SG_ENCODE_VIDEO_JPEG), Hex("FF D8 FF D9"));
    EXPECT_TRUE(Same(frame,
                     Frame({.type = 0xFB, .number = 1, .stamp = 40},
                           Hex("80 02 50 2D "               // progressive, 640 / 8, 360 / 8
                               "81 00 05 19 "               // JPEG, 25 fps
                               "88 FF D8 FF D9 00 00 00"),  // sum
                           Hex("FF D8 FF D9"))));
    native.Give(Picture(kP), Hex("01"));
}

}  // namespace
}  // namespace Golden
