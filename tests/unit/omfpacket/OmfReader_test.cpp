// What the reader tells of whole frames, and of the odd ones.
#include "omfpacket/OmfReader.h"

#include <limits>

#include "unit/omfpacket/Recordings.h"

namespace Orbel::Wrapton
{
namespace
{

using Support::Hex;
using Support::Join;
using Support::Payload;
using Support::Same;
using Support::Text;

using Depth = COmfReader::Depth;

SGFrameInfo Picture(uint32_t subType = SG_FRAME_SUB_TYPE_I,
                    uint32_t encode = SG_ENCODE_VIDEO_QV_H265)
{
    SGFrameInfo record{};
    record.frame_type = SG_FRAME_TYPE_VIDEO;
    record.frame_sub_type = subType;
    record.frame_encode = encode;
    record.width = 640;
    record.heigth = 360;
    record.frame_rate = 25;
    return record;
}

SGFrameInfo Extension()
{
    SGFrameInfo record{};
    record.frame_type = SG_FRAME_TYPE_EXT;
    return record;
}

OmfFrame ReadOne(const SGFrameInfo& record)
{
    Recording recording;
    recording.Add(record, Hex("01 02 03"));
    const Readout readout = ReadAll(recording.Image());
    EXPECT_EQ(readout.frames.size(), 1u);
    if (readout.frames.empty()) return {};
    EXPECT_TRUE(readout.frames[0].frame.intact);
    EXPECT_TRUE(Same(readout.frames[0].payload, Hex("01 02 03")));
    return readout.frames[0].frame;
}

TEST(OmfReader, NothingHoldsNothing)
{
    const Readout readout = ReadAll(Bytes{});
    EXPECT_TRUE(readout.frames.empty());
    EXPECT_EQ(readout.skipped, 0u);
}

TEST(OmfReader, EveryFrameComesBackInOrder)
{
    const MixedRecording recording(40);
    const Readout readout = ReadAll(recording.Image());
    ASSERT_EQ(readout.frames.size(), 40u);
    EXPECT_EQ(readout.skipped, 0u);
    for (std::size_t i = 0; i < 40; ++i)
    {
        EXPECT_TRUE(IsSame(readout.frames[i], recording.Frames()[i])) << i;
        EXPECT_EQ(readout.frames[i].frame.stream,
                  i % 2 == 0 ? OmfStream::kVideo : OmfStream::kAudio);
    }
}

TEST(OmfReader, PictureIsDescribed)
{
    SGFrameInfo record = Picture();
    record.deinter_lace = 1;
    const OmfFrame small = ReadOne(record);
    EXPECT_EQ(small.stream, OmfStream::kVideo);
    EXPECT_EQ(small.sub_type, uint32_t{SG_FRAME_SUB_TYPE_I});
    EXPECT_EQ(small.video.encode, uint32_t{SG_ENCODE_VIDEO_QV_H265});
    EXPECT_EQ(small.video.width, 640u);
    EXPECT_EQ(small.video.height, 360u);
    EXPECT_TRUE(small.video.interlaced);
    EXPECT_EQ(small.video.frame_rate, 25u);
    EXPECT_EQ(small.number, 1u);

    record.width = 2560;
    record.heigth = 1439;
    record.deinter_lace = 0;
    const OmfFrame large = ReadOne(record);
    EXPECT_EQ(large.video.width, 2560u);
    EXPECT_EQ(large.video.height, 1439u);
    EXPECT_FALSE(large.video.interlaced);
}

TEST(OmfReader, PictureTypesComeBack)
{
    struct Row
    {
        uint32_t encode;
        uint32_t given;
        uint32_t read;
    };
    for (const Row& row :
         {Row{SG_ENCODE_VIDEO_HI_H264, SG_FRAME_SUB_TYPE_I, SG_FRAME_SUB_TYPE_I},
          Row{SG_ENCODE_VIDEO_HI_H264, SG_FRAME_SUB_TYPE_P, SG_FRAME_SUB_TYPE_P},
          Row{SG_ENCODE_VIDEO_HI_H264, SG_FRAME_SUB_TYPE_B, SG_FRAME_SUB_TYPE_B},
          Row{SG_ENCODE_VIDEO_HI_H264, SG_FRAME_SUB_TYPE_JPEG_FRAME, SG_FRAME_SUB_TYPE_UNKNOW},
          Row{SG_ENCODE_VIDEO_JPEG, SG_FRAME_SUB_TYPE_P, SG_FRAME_SUB_TYPE_I}})
    {
        Recording recording;
        recording.Add(Picture(), Hex("01"));
        recording.Add(Picture(row.given, row.encode), Hex("01"));
        EXPECT_EQ(ReadAll(recording.Image()).frames.at(1).frame.sub_type, row.read);
    }
}

TEST(OmfReader, AJpegPictureIsOneWhateverTheLastKeyFrameWas)
{
    Recording recording;
    recording.Add(Picture(), Hex("01"));
    recording.Add(Picture(SG_FRAME_SUB_TYPE_P, SG_ENCODE_VIDEO_JPEG), Hex("01"));
    recording.Add(Picture(SG_FRAME_SUB_TYPE_P), Hex("01"));
    const Readout readout = ReadAll(recording.Image());
    EXPECT_EQ(readout.frames.at(1).frame.video.encode, uint32_t{SG_ENCODE_VIDEO_JPEG});
    EXPECT_EQ(readout.frames.at(2).frame.video.encode, uint32_t{SG_ENCODE_VIDEO_QV_H265});
}

TEST(OmfReader, PicturesThatAreNotDescribedAreIntact)
{
    SGFrameInfo record = Picture();
    record.width = 0;
    const OmfFrame frame = ReadOne(record);
    EXPECT_EQ(frame.video.encode, 0u);
    EXPECT_EQ(frame.video.width, 0u);
    EXPECT_EQ(frame.video.frame_rate, 0u);
}

TEST(OmfReader, SoundIsDescribed)
{
    SGFrameInfo record{};
    record.frame_type = SG_FRAME_TYPE_AUDIO;
    record.frame_encode = SG_ENCODE_AUDIO_AAC;
    record.channels = 2;
    record.sample_rate = 44100;
    record.frame_time = 1000;
    for (const auto& [given, read] :
         {std::pair{0u, 0u}, {16000u, 16000u}, {32000u, 32000u}, {64000u, 0u}})
    {
        record.bit_rate = given;
        const OmfFrame frame = ReadOne(record);
        EXPECT_EQ(frame.stream, OmfStream::kAudio);
        EXPECT_EQ(frame.audio.encode, uint32_t{SG_ENCODE_AUDIO_AAC});
        EXPECT_EQ(frame.audio.channels, 2u);
        EXPECT_EQ(frame.audio.sample_rate, 44100u);
        EXPECT_EQ(frame.audio.bit_rate, read);
        EXPECT_EQ(frame.time, 1000);
    }
}

TEST(OmfReader, ExtensionKeepsItsSubType)
{
    SGFrameInfo record = Extension();
    record.frame_sub_type = 77;
    record.frame_data = 1714559696;
    const OmfFrame frame = ReadOne(record);
    EXPECT_EQ(frame.stream, OmfStream::kExt);
    EXPECT_EQ(frame.sub_type, 77u);
    ASSERT_TRUE(ReadOmfDate(frame.date).has_value());
    EXPECT_EQ(ReadOmfDate(frame.date)->year, 2024u);
}

TEST(OmfReader, SplitScreensOfEveryShapeAreIntact)
{
    std::vector<SGBlockInfo> blocks(64, SGBlockInfo{1, 2, 3, 4, 5, 0});
    for (const auto& [n, m] : {std::pair{0, 0}, {1, 1}, {3, 5}, {4, 4}, {31, 1}, {-1, 3}, {8, 8}})
    {
        for (const uint32_t company : {0u, 1u})
        {
            SGFrameInfo record = Picture();
            record.width = 2560;
            record.split_info = {1, n, m, blocks.data()};
            record.rotation_angle = 90;
            record.company_type = static_cast<uint16_t>(company);
            const OmfFrame frame = ReadOne(record);
            EXPECT_EQ(frame.video.width, 2560u);
            record.split_info.pblock = nullptr;
            ReadOne(record);
        }
    }
}

TEST(OmfReader, LongestExtensionHeadersAreReadWithoutTheirPayload)
{
    std::vector<SGBlockInfo> blocks(15);
    SGFrameInfo record = Picture();
    record.width = 2560;
    record.split_info = {1, 15, 1, blocks.data()};
    Recording recording;
    recording.Add(record, Payload(1000));
    const Readout readout = ReadAll(recording.Image(), Depth::kHeaders);
    ASSERT_EQ(readout.frames.size(), 1u);
    EXPECT_TRUE(readout.frames[0].frame.intact);
    EXPECT_TRUE(readout.frames[0].payload.empty());
    EXPECT_EQ(readout.frames[0].frame.video.width, 2560u);
}

TEST(OmfReader, HeadersAloneTellAllButThePayload)
{
    const MixedRecording recording(20);
    const Readout headers = ReadAll(recording.Image(), Depth::kHeaders);
    const Readout whole = ReadAll(recording.Image());
    ASSERT_EQ(headers.frames.size(), whole.frames.size());
    for (std::size_t i = 0; i < headers.frames.size(); ++i)
    {
        const OmfFrame& one = headers.frames[i].frame;
        const OmfFrame& other = whole.frames[i].frame;
        EXPECT_TRUE(one.intact);
        EXPECT_TRUE(one.payload.empty());
        EXPECT_EQ(one.offset, other.offset);
        EXPECT_EQ(one.length, other.length);
        EXPECT_EQ(one.time, other.time);
        EXPECT_EQ(one.video.width, other.video.width);
        EXPECT_EQ(one.audio.sample_rate, other.audio.sample_rate);
    }
}

TEST(OmfReader, TimesGoOnBeyond16Bits)
{
    Recording recording;
    for (uint32_t i = 1; i <= 5000; ++i)
    {
        recording.AddPicture(SG_FRAME_SUB_TYPE_I, Hex("01"), i * 40);
        recording.AddSound(Hex("02"), i * 40 + 13);
    }
    const Readout readout = ReadAll(recording.Image());
    for (std::size_t i = 0; i < readout.frames.size(); ++i)
    {
        const auto picture = static_cast<int64_t>(i / 2 + 1) * 40;
        ASSERT_EQ(readout.frames[i].frame.time, picture + (i % 2 == 0 ? 0 : 13));
    }
}

TEST(OmfReader, AStreamWithoutTimesDoesNotPushTheOthersOn)
{
    Recording recording;
    for (uint32_t i = 1; i <= 100; ++i)
    {
        recording.AddPicture(SG_FRAME_SUB_TYPE_I, Hex("01"), i * 1000);
        recording.AddSound(Hex("02"));
    }
    const Readout readout = ReadAll(recording.Image());
    EXPECT_EQ(readout.frames.at(198).frame.time, 100000);
}

TEST(OmfReader, StreamsThatDoNotBeginInStepStayTogether)
{
    Recording recording;
    recording.AddPicture(SG_FRAME_SUB_TYPE_I, Hex("01"), 65536 + 10);
    recording.AddSound(Hex("02"), 65530);
    const Readout readout = ReadAll(recording.Image());
    EXPECT_EQ(readout.frames.at(0).frame.time, 10);
    EXPECT_EQ(readout.frames.at(1).frame.time, -6);
}

TEST(OmfReader, AllThreeChecksAreVerified)
{
    const Bytes digits = Text("123456789");
    for (const char* const check : {"88 9F 68 6A 6C 00 00 00",
                                    "88 31 00 00 00 00 00 01",
                                    "88 26 39 F4 CB 00 00 02",
                                    "88 00 00 00 00 00 00 03"})
    {
        Bytes header = Hex(check);
        const auto frame = [&] {
            return MakeFrame(0xF1, 49, 8, Join({header, digits, Tailer(49)}));
        };
        EXPECT_TRUE(ReadAll(frame()).frames.at(0).frame.intact);
        header[1] ^= 1;
        EXPECT_FALSE(ReadAll(frame()).frames.at(0).frame.intact);
    }
}

TEST(OmfReader, AFrameWithoutPayloadIsAFrame)
{
    const Bytes check = Hex("88 00 00 00 00 00 00 00");
    const Readout readout = ReadAll(MakeFrame(0xF1, 40, 8, Join({check, Tailer(40)})));
    ASSERT_EQ(readout.frames.size(), 1u);
    EXPECT_TRUE(readout.frames[0].frame.intact);
    EXPECT_TRUE(readout.frames[0].payload.empty());
}

TEST(OmfReader, BrokenExtensionHeadersMakeAFrameDamaged)
{
    for (const char* const broken : {"",                             // no data check
                                     "8B 00 00 00",                  // another header only
                                     "88 00 00 00 00 00 00",         // cut
                                     "55 00 00 00 00 00 00 00",      // unknown
                                     "99 00 00 00 00 00 00 00",      // a split without a check
                                     "88 00 00 00 00 00 00 00 80"})  // cut behind the check
    {
        for (const Depth depth : {Depth::kWhole, Depth::kHeaders})
        {
            const Bytes headers = Hex(broken);
            const auto exLen = static_cast<unsigned char>(headers.size());
            const uint32_t length = 32 + exLen;
            const Readout readout =
                ReadAll(MakeFrame(0xF1, length, exLen, Join({headers, Tailer(length)})), depth);
            ASSERT_EQ(readout.frames.size(), 1u) << broken;
            EXPECT_FALSE(readout.frames[0].frame.intact) << broken;
        }
    }
}

TEST(OmfReader, WhatIsNoFrameIsSkipped)
{
    const Bytes check = Hex("88 00 00 00 00 00 00 00");
    const Bytes whole = MakeFrame(0xF1, 40, 8, Join({check, Tailer(40)}));
    for (const Bytes& wrong : {
             MakeFrame(0xF2, 40, 8, Join({check, Tailer(40)})),  // unknown type
             MakeFrame(0xF1, 40, 9, Join({check, Tailer(40)})),  // too short for its headers
             MakeFrame(0xF1, 40, 8, Join({check, Tailer(41)})),  // lengths disagree
             MakeFrame(0xF1, 40, 8, Join({check, Text("omfR"), Support::Lsb32(40)})),
             MakeFrame(0xF1, 0, 0, Tailer(0)),
             MakeFrame(0xF1, 31, 0, Tailer(31)),
             MakeFrame(0xF1, 0x7FFFFFFF, 0, Tailer(0x7FFFFFFF)),
             MakeFrame(0xF1, 0x80000000, 0, Tailer(0x80000000)),
             MakeFrame(0xF1, 0xFFFFFFFF, 0, Tailer(0xFFFFFFFF)),
             Text("OMFR"),
             Text("OMFROMFROMF"),
             Text("O"),
         })
    {
        const Readout readout = ReadAll(Join({wrong, whole, wrong}));
        ASSERT_EQ(readout.frames.size(), 1u);
        EXPECT_TRUE(readout.frames[0].frame.intact);
        EXPECT_EQ(readout.frames[0].frame.skipped, wrong.size());
        EXPECT_EQ(readout.skipped, 2 * wrong.size());
    }
}

}  // namespace
}  // namespace Orbel::Wrapton
