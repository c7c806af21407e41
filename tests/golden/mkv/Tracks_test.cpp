// The TrackEntry: codec IDs, private data, durations and sizes.
#include <array>

#include "golden/mkv/Recording.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Frame;
using Support::Hex;
using Support::Nal;
using Support::Payload;
using Support::Zero;

const Bytes kSps = Hex("67 64 00 28 AC D9");
const Bytes kPps = Hex("68 EB E3");
const Bytes kSlice = Hex("65 88 84");

/// The TrackEntry that the frames bring.
Bytes EntryOf(std::initializer_list<Frame> frames)
{
    Recording recording;
    recording.Header();
    for (const Frame& frame : frames)
        recording.Input(frame);
    recording.Tailer();
    return recording.Entries();
}

VideoEntry Avc(const Bytes& config)
{
    return {.codecId = AvcId(), .defaultDuration = 40000000, .codecPrivate = config};
}

VideoEntry Asp(const Bytes& headers)
{
    return {.codecId = AspId(), .defaultDuration = 40000000, .codecPrivate = headers};
}

/// A parameter set of @p size bytes.
Bytes Set(uint32_t header, std::size_t size)
{
    return Join({Support::U8(header), Payload(size - 1)});
}

TEST(MkvAvcTrack, HasTheRecordOfTheFirstIFrame)
{
    const Frame first = Support::H264I(Join({Nal(kSps), Nal(kPps), Nal(kSlice)}));
    EXPECT_TRUE(Same(EntryOf({first}), Avc(AvcConfig(kSps, kPps)).Element()));
    EXPECT_TRUE(Same(AvcConfig(kSps, kPps),
                     Hex("01 "        // version
                         "64 00 28 "  // profile, compatibility, level
                         "FF E1 "     // 4-byte lengths, one SPS
                         "00 06 67 64 00 28 AC D9 "
                         "01 00 03 68 EB E3")));
}

TEST(MkvAvcTrack, KeepsTheFirstSetsOfTheStreamDroppedFramesIncluded)
{
    const Bytes later_sps = Hex("67 4D 40 1F 99");
    const Frame early = Support::H264P(Join({Nal(kSps), Nal(kSlice)}));
    const Frame other = Support::H264P(Nal(kPps)).As(SG_FRAME_SUB_TYPE_UNKNOW);
    const Frame first = Support::H264I(Join({Nal(later_sps), Nal(Hex("68 01")), Nal(kSlice)}));
    EXPECT_TRUE(Same(EntryOf({early, other, first}), Avc(AvcConfig(kSps, kPps)).Element()));
}

TEST(MkvAvcTrack, SetsBehindTheFirstIFrameComeTooLate)
{
    const Frame first = Support::H264I(Nal(kSlice));
    const Frame second = Support::H264I(Join({Nal(kSps), Nal(kPps), Nal(kSlice)}));
    EXPECT_TRUE(Same(EntryOf({first, second}), Avc(EmptyAvcConfig()).Element()));
}

TEST(MkvAvcTrack, OneSetAloneStandsInAnUnfinishedRecord)
{
    EXPECT_TRUE(Same(EntryOf({Support::H264I(Join({Nal(kSps), Nal(kSlice)}))}),
                     Avc(EmptyAvcConfig(kSps)).Element()));
    EXPECT_TRUE(Same(EntryOf({Support::H264I(Join({Nal(kPps), Nal(kSlice)}))}),
                     Avc(EmptyAvcConfig({}, kPps)).Element()));
}

TEST(MkvAvcTrack, SpsOfFewerThan4BytesLeavesTheProfile0)
{
    for (std::size_t size = 1; size <= 4; ++size)
    {
        const Bytes sps = Support::Slice(kSps, 0, size);
        EXPECT_TRUE(Same(EntryOf({Support::H264I(Join({Nal(sps), Nal(kPps)}))}),
                         Avc(AvcConfig(sps, kPps)).Element()))
            << size;
    }
}

TEST(MkvAvcTrack, SetsOf1To255BytesCount)
{
    // 255 bytes of one and 1 byte of the other do not fit the 256 bytes of private data.
    const Bytes long_set = Set(0x68, 255);
    const Bytes too_long = Set(0x68, 256);
    const Bytes small = Hex("68");
    const Frame with_long = Support::H264I(Join({Nal(long_set), Nal(small)}));
    EXPECT_TRUE(Same(EntryOf({with_long}), Avc({}).Element()));
    const Frame with_too_long = Support::H264I(Join({Nal(too_long), Nal(small)}));
    EXPECT_TRUE(Same(EntryOf({with_too_long}), Avc(EmptyAvcConfig({}, small)).Element()));
    const Frame with_empty = Support::H264I(Join({Nal({}), Nal(small)}));
    EXPECT_TRUE(Same(EntryOf({with_empty}), Avc(EmptyAvcConfig({}, small)).Element()));
}

TEST(MkvAvcTrack, RecordOf256BytesIsStoredAndOneMoreByteIsLeftOut)
{
    // The record has 11 bytes besides the sets.
    const Bytes sps = Set(0x67, 200);
    const Bytes pps = Set(0x68, 45);
    EXPECT_TRUE(Same(EntryOf({Support::H264I(Join({Nal(sps), Nal(pps)}))}),
                     Avc(AvcConfig(sps, pps)).Element()));
    EXPECT_TRUE(
        Same(EntryOf({Support::H264I(Join({Nal(sps), Nal(Set(0x68, 46))}))}), Avc({}).Element()));
    // At most 322 bytes: the entries never reach the first cluster.
    EXPECT_EQ(Avc(Zero(256)).Element().size(), 322u);
}

TEST(MkvMpeg4Track, HasTheHeadersAheadOfThePicture)
{
    const Bytes headers = Hex("00 00 01 B0 01 00 00 01 B5 09 00 00 01 00 00 00 01 20 00");
    const Bytes picture = Hex("00 00 01 B6 10");
    EXPECT_TRUE(Same(EntryOf({Support::Mpeg4I(Join({headers, picture}))}), Asp(headers).Element()));
    EXPECT_TRUE(Same(EntryOf({Support::Mpeg4I(Join({Hex("FF"), headers, picture}))}),
                     Asp(headers).Element()));
}

TEST(MkvMpeg4Track, HeadersEndAtAGroupOfPictures)
{
    const Bytes headers = Hex("00 00 01 B5 09 00 00 01 20 00");
    const Frame frame = Support::Mpeg4I(Join({headers, Hex("00 00 01 B3 00 00 01 B6 10")}));
    EXPECT_TRUE(Same(EntryOf({frame}), Asp(headers).Element()));
}

TEST(MkvMpeg4Track, HeadersNeedABeginningAndAnEnd)
{
    for (const char* bytes : {"00 00 01 20 00 00 00 01 B6 10",     // no B0 or B5
                              "00 00 01 B6 10 00 00 01 B0 01",     // the picture comes first
                              "00 00 01 B0 01 00 00 01 B5 09 00",  // no picture
                              "00 00 01 B0 01 00 00 01",
                              "00 00 01"})
    {
        EXPECT_TRUE(Same(EntryOf({Support::Mpeg4I(Hex(bytes))}), Asp({}).Element())) << bytes;
    }
}

TEST(MkvMpeg4Track, CodesMayShareTheirZeros)
{
    // 00 is the code of a video object, whose zero belongs to the next prefix as well.
    EXPECT_TRUE(Same(EntryOf({Support::Mpeg4I(Hex("00 00 01 B0 00 00 01 00 00 01 B6"))}),
                     Asp(Hex("00 00 01 B0 00 00 01")).Element()));
    // A zero ahead of the prefix is part of the headers.
    EXPECT_TRUE(Same(EntryOf({Support::Mpeg4I(Hex("00 00 00 01 B0 05 00 00 00 01 B6"))}),
                     Asp(Hex("00 00 01 B0 05 00")).Element()));
}

TEST(MkvMpeg4Track, HeadersOf256BytesAreStoredAndOneMoreByteIsLeftOut)
{
    const Bytes end = Hex("00 00 01 B6 10");
    for (const std::size_t size : {255u, 256u})
    {
        const Bytes headers = Join({Hex("00 00 01 B0"), Payload(size - 4)});
        EXPECT_TRUE(Same(EntryOf({Support::Mpeg4I(Join({headers, end}))}), Asp(headers).Element()));
    }
    EXPECT_TRUE(Same(EntryOf({Support::Mpeg4I(Join({Hex("00 00 01 B0"), Payload(253), end}))}),
                     Asp({}).Element()));
}

TEST(MkvMpeg4Track, StoredFrameIsNotShortened)
{
    const Bytes bytes = Hex("00 00 01 B0 01 00 00 01 B6 10");
    Recording recording;
    recording.Header();
    EXPECT_EQ(recording.Calls().Input(Support::Mpeg4I(bytes)), SG_ERR_NOERR);
    EXPECT_TRUE(Same(recording.Clusters(), Cluster(0, {SimpleBlock(0, "80", bytes)})));
}

TEST(MkvTrack, OtherEncodingsHaveNeitherCodecIdNorPrivateData)
{
    for (const uint32_t encode : {0u, 3u, 8u, 12u, UINT32_MAX})
    {
        EXPECT_TRUE(Same(EntryOf({Support::Video(encode, 0, Payload(10))}),
                         VideoEntry{.defaultDuration = 40000000}.Element()))
            << encode;
    }
}

TEST(MkvTrack, DefaultDurationIsCutDown)
{
    const std::array<std::pair<uint32_t, Bytes>, 7> cases = {{
        {1, Hex("3B 9A CA 00")},          // 1000000000
        {3, Hex("13 DE 43 55")},          // 333333333
        {30, Hex("01 FC A0 55")},         // 33333333
        {999999999, Hex("00 00 00 01")},  // 1.000000001
        {1000000000, Hex("00 00 00 01")},
        {1000000001, Hex("00 00 00 00")},
        {UINT32_MAX, Hex("00 00 00 00")},
    }};
    for (const auto& [rate, nanoseconds] : cases)
    {
        // Behind ID, size, number, UID, type and codec ID of 18 bytes.
        EXPECT_TRUE(Same(Support::Slice(EntryOf({IFrame(10).AtRate(rate)}), 9 + 10 + 18, 8),
                         Join({Hex("23 E3 83 84"), nanoseconds})))
            << rate;
    }
}

TEST(MkvTrack, SizesKeepTheirLow16Bits)
{
    VideoEntry entry = PlainEntry();
    entry.width = 0x2345;
    entry.height = 0xFFFF;
    EXPECT_TRUE(Same(EntryOf({IFrame(10).Sized(0x12345, 0xFFFFFFFF)}), entry.Element()));
}

TEST(MkvTrack, IsThatOfTheFirstIFrame)
{
    EXPECT_TRUE(Same(
        EntryOf(
            {PFrame(1).Sized(1, 2).AtRate(3), IFrame(10), IFrame(10).Sized(100, 200).AtRate(50)}),
        PlainEntry().Element()));
}

}  // namespace
}  // namespace Golden
