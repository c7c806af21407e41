#include "flvpacket/FlvTags.h"

#include <functional>

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
Bytes Written(const std::function<void(CMsbCursor&)>& write)
{
    Bytes room(4096, 0xEE);
    CMsbCursor w(room);
    write(w);
    EXPECT_FALSE(w.Overrun());
    CMsbCursor measure;
    write(measure);
    EXPECT_EQ(measure.Produced(), w.Produced());
    room.resize(w.Produced());
    return room;
}

TEST(WriteFileHeader, IsThirteenBytes)
{
    _FLV_HEADER header;
    header.Flag = 5;
    EXPECT_TRUE(Same(Written([&](CMsbCursor& w) { WriteFileHeader(w, header); }),
                     Hex("46 4C 56 "        // signature
                         "01 "              // version
                         "05 "              // audio and video
                         "00 00 00 09 "     // data offset
                         "00 00 00 00")));  // PreviousTagSize0
}

TEST(WriteFLVTag, CutsEveryFieldToItsWidth)
{
    const _FLV_TAG tag{.TagType = 0x109,
                       .DataSize = 0x11223344,
                       .Timestamp = 0x55667788,
                       .TimestampEx = 0x1AB,
                       .StreamID = 0x01020304};
    EXPECT_TRUE(Same(Written([&](CMsbCursor& w) { WriteFLVTag(w, tag); }),
                     Hex("09 22 33 44 66 77 88 AB 02 03 04")));
}

TEST(WriteDataPacket, HasAValueWithoutANameForAudiosamplesize)
{
    FlvMetaData meta;
    meta.m_dSampleRate = 1;
    meta.m_dSampleSize = 2;
    meta.m_bChannel = 1;
    const Bytes tag = Written([&](CMsbCursor& w) { WriteDataPacket(w, meta); });
    ASSERT_EQ(tag.size(), 266u);
    EXPECT_TRUE(Same(Support::Slice(tag, 11 + 161, 26 + 9 + 10),
                     Join({Hex("00 0F"),  // length of the name
                           Support::Text("audiosamplerate"),
                           Hex("00 3F F0 00 00 00 00 00 00"),  // 1.0
                           Hex("00 40 00 00 00 00 00 00 00"),  // 2.0
                           Hex("00 06"),                       // length of the name
                           Support::Text("stereo"),
                           Hex("01 01")})));  // true
}

TEST(WriteDataPacket, CountsThirteenEntriesAndWritesTwelve)
{
    const Bytes tag = Written([](CMsbCursor& w) { WriteDataPacket(w, {}); });
    EXPECT_TRUE(Same(Support::Slice(tag, 11 + 13, 5), Hex("08 00 00 00 0D")));
}

TEST(WriteAvcStart, WritesTheWholeRecord)
{
    _AVCDecoderConfig config;
    config.cfgVersion = 1;
    config.avcProfile = 0x64;
    config.profileCompatibility = 0x02;
    config.avcLevel = 0x28;
    config.numOfSPS = 1;
    config.spsLength = 2;
    config.pSPSdata[0] = 0x67;
    config.pSPSdata[1] = 0x64;
    config.numOfPPS = 1;
    config.ppsLength = 1;
    config.pPPSdata[0] = 0x68;
    EXPECT_TRUE(Same(Written([&](CMsbCursor& w) { WriteAvcStart(w, config); }),
                     Hex("09 00 00 13 00 00 00 00 00 00 00 "  // 19 bytes
                         "17 00 00 00 00 "                    // key frame, sequence header
                         "01 64 02 28 FF "                    // record
                         "E1 00 02 67 64 "                    // SPS
                         "01 00 01 68 "                       // PPS
                         "00 00 00 1E")));                    // previous tag size
}

TEST(WriteAvcEnd, HasATimeAndNoData)
{
    EXPECT_TRUE(Same(Written([](CMsbCursor& w) { WriteAvcEnd(w, 0x010203); }),
                     Hex("09 00 00 05 01 02 03 00 00 00 00 17 02 00 00 00 00 00 00 10")));
}

TEST(WriteAudioTag, OverrunsARoomThatIsOneByteShort)
{
    const Bytes samples = Hex("11 22 33");
    Bytes room(11 + 1 + 3 + 4);
    CMsbCursor enough(room);
    WriteAudioTag(enough, 0, 0x32, samples);
    EXPECT_FALSE(enough.Overrun());
    EXPECT_TRUE(Same(room, Hex("08 00 00 04 00 00 00 00 00 00 00 32 11 22 33 00 00 00 0F")));
    CMsbCursor small({room.data(), room.size() - 1});
    WriteAudioTag(small, 0, 0x32, samples);
    EXPECT_TRUE(small.Overrun());
}

TEST(WriteVideoTag, LeavesTheUnitsInThePlaceUntouched)
{
    Bytes place = Join({Bytes(16, 0xEE), Hex("00 00 00 01 65"), Bytes(4, 0xEE)});
    WriteVideoTag(place, 0x28, true);
    EXPECT_TRUE(Same(place,
                     Hex("09 00 00 0A 00 00 28 00 00 00 00 "  // 10 bytes at 40 ms
                         "17 01 00 00 00 "                    // key frame, NAL units
                         "00 00 00 01 65 "                    // a unit
                         "00 00 00 15")));                    // previous tag size
}

}  // namespace
}  // namespace Orbel::Wrapton
