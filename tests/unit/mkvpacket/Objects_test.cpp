// The element writers on their own.
#include <vector>

#include "golden/mkv/Pieces.h"
#include "mkvpacket/Objects/Clusters.h"
#include "mkvpacket/Objects/Cues.h"
#include "mkvpacket/Objects/Metaseek.h"
#include "mkvpacket/Objects/SegInfo.h"
#include "mkvpacket/Objects/Tracks.h"
#include "tool/Clock.h"

namespace Orbel::Wrapton
{
namespace
{

using Golden::Bytes;
using Support::Hex;
using Support::Join;
using Support::Same;

/// What an operation lays out; fails the test when it reports another length.
template <class Operation>
Bytes Laid(Operation operation)
{
    std::vector<unsigned char> room(4096);
    CMsbCursor w(room);
    const uint32_t length = operation(w);
    EXPECT_EQ(w.Produced(), length);
    room.resize(w.Produced());
    return room;
}

TEST(CBasicatom, WritesFourZerosAndNoData)
{
    CBasicatom atom;
    atom.Init(1, nullptr);
    atom.InputData(1, nullptr);
    atom.Update();
    EXPECT_EQ(atom.Size(), 12u);
    EXPECT_TRUE(Same(Laid([&](CMsbCursor& w) { return atom.Write(w); }), Hex("00 00 00 00")));
}

TEST(CSegInfo, HasTheCurrentTimeInSeconds)
{
    const Sources fixed{.now = []() noexcept -> int64_t { return 0x0102030405; },
                        .local_time = SystemSources().local_time,
                        .random = SystemSources().random};
    InstallSources(&fixed);
    CSegInfo info;
    EXPECT_TRUE(
        Same(Laid([&](CMsbCursor& w) { return info.Write(w); }), Golden::Info(0x0102030405)));
    InstallSources(nullptr);
    EXPECT_EQ(info.Size(), 62u);
}

TEST(CMetaseekBox, Has500BytesWhateverItHolds)
{
    CMetaseekBox seek;
    EXPECT_EQ(seek.Size(), 500u);
    EXPECT_TRUE(
        Same(Laid([&](CMsbCursor& w) { return seek.Write(w); }), Golden::SeekHead(0, 0, 0)));
    seek.SetPositions({.info = 1, .tracks = 0x12345678, .cues = 0xFFFFFFFF});
    EXPECT_TRUE(Same(Laid([&](CMsbCursor& w) { return seek.Write(w); }),
                     Golden::SeekHead(1, 0x12345678, 0xFFFFFFFF)));
    EXPECT_TRUE(Same(Laid([&](CMsbCursor& w) { return seek.WriteData(w); }),
                     Golden::Seeks(1, 0x12345678, 0xFFFFFFFF)));
}

TEST(CTracks, WritesItsId)
{
    CTracks tracks;
    EXPECT_TRUE(Same(Laid([&](CMsbCursor& w) { return tracks.WriteID(w); }), Hex("16 54 AE 6B")));
}

TEST(CTracks, SumsUpTheEntriesWrittenThroughIt)
{
    CTracks tracks;
    VIDEOINFO video;
    video.trackNum = 1;
    video.trackType = TRACK_TYPE_VIDEO;
    video.nFramerate = 25;
    tracks.Init(TRACK_TYPE_VIDEO, &video);
    EXPECT_EQ(tracks.Size(), 4u);
    const Golden::VideoEntry entry{.defaultDuration = 40000000, .width = 0, .height = 0};
    const auto length = static_cast<uint32_t>(entry.Element().size());
    EXPECT_TRUE(Same(Laid([&](CMsbCursor& w) { return tracks.WriteData(w); }), entry.Element()));
    EXPECT_EQ(tracks.Size(), 4u + length);
    Laid([&](CMsbCursor& w) { return tracks.WriteData(w); });
    EXPECT_EQ(tracks.Size(), 4u + 2 * length);
}

AUDIOINFO AudioInfo()
{
    AUDIOINFO audio;
    audio.trackNum = 2;
    audio.channels = 2;
    audio.bit_per_sample = 16;
    audio.sample_rate = 44100;
    return audio;
}

TEST(CTracks, AacEntryHasPrivateData)
{
    AUDIOINFO audio = AudioInfo();
    const Bytes id = Support::Text("A_AAC");
    std::copy(id.begin(), id.end(), audio.codeIDdata.begin());
    audio.codeIDdatalen = 5;
    audio.privatedata[0] = 0x12;
    audio.privatedata[1] = 0x10;
    audio.privatedatalen = 2;
    CTracks tracks;
    tracks.Init(TRACK_TYPE_AUDIO, &audio);
    EXPECT_TRUE(Same(Laid([&](CMsbCursor& w) { return tracks.WriteData(w); }),
                     Hex("AE 01 00 00 00 00 00 00 33 "     // TrackEntry of 51 bytes
                         "D7 81 02 "                       // TrackNumber
                         "73 C5 81 02 "                    // TrackUID
                         "9C 81 00 "                       // FlagLacing
                         "83 81 02 "                       // TrackType: audio
                         "86 85 41 5F 41 41 43 "           // CodecID "A_AAC"
                         "22 B5 9C 83 75 6E 64 "           // Language "und"
                         "63 A2 82 12 10 "                 // CodecPrivate
                         "E1 91 "                          // Audio of 17 bytes
                         "B5 88 40 E5 88 80 00 00 00 00 "  // SamplingFrequency 44100
                         "9F 81 02 "                       // Channels
                         "62 64 81 10 ")));                // BitDepth
}

TEST(CTracks, OtherAudioEntryHasNone)
{
    AUDIOINFO audio = AudioInfo();
    audio.privatedatalen = 2;
    CTracks tracks;
    tracks.Init(TRACK_TYPE_AUDIO, &audio);
    EXPECT_TRUE(Same(Laid([&](CMsbCursor& w) { return tracks.WriteData(w); }),
                     Hex("AE 01 00 00 00 00 00 00 29 "
                         "D7 81 02 73 C5 81 02 9C 81 00 83 81 02 "
                         "86 80 "  // CodecID, empty
                         "22 B5 9C 83 75 6E 64 "
                         "E1 91 B5 88 40 E5 88 80 00 00 00 00 9F 81 02 62 64 81 10 ")));
}

TEST(CTracks, EntryOfAnotherTypeIsEmpty)
{
    for (const uint32_t type : {0u, 3u, 16u, 17u, 18u, 32u})
    {
        CTracks tracks;
        tracks.Init(type, nullptr);
        EXPECT_TRUE(Same(Laid([&](CMsbCursor& w) { return tracks.WriteData(w); }),
                         Hex("AE 01 00 00 00 00 00 00 00")));
    }
}

TEST(CTracks, LengthsBeyondTheirArraysAreNotFollowed)
{
    VIDEOINFO video;
    video.codeIDdatalen = UINT32_MAX;
    video.privatedatalen = 257;
    CTracks tracks;
    tracks.Init(TRACK_TYPE_VIDEO, &video);
    const Bytes entry = Laid([&](CMsbCursor& w) { return tracks.WriteData(w); });
    EXPECT_TRUE(Same(Support::Slice(entry, 19, 22), Join({Hex("86 94"), Support::Zero(20)})));
    EXPECT_EQ(entry.size(), 9u + 10 + 22 + 7 + 3 + 10);
}

TEST(CTracks, InitWithoutARecordClearsBoth)
{
    AUDIOINFO audio = AudioInfo();
    CTracks tracks;
    tracks.Init(TRACK_TYPE_AUDIO, &audio);
    tracks.Init(TRACK_TYPE_VIDEO, nullptr);
    EXPECT_TRUE(Same(Laid([&](CMsbCursor& w) { return tracks.WriteData(w); }),
                     Hex("AE 01 00 00 00 00 00 00 20 "
                         "D7 81 00 73 C5 81 01 83 81 00 86 80 22 B5 9C 83 75 6E 64 63 A2 80 "
                         "E0 88 B0 82 00 00 BA 82 00 00 ")));
}

TEST(CClusters, WritesItsId)
{
    CClusters clusters;
    EXPECT_TRUE(Same(Laid([&](CMsbCursor& w) { return clusters.WriteID(w); }), Hex("1F 43 B6 75")));
}

TEST(CClusters, BlockHasTrackTimeAndFlags)
{
    const Bytes bytes = Support::Payload(3);
    MKV_FrameData frame{.pointer = bytes.data(), .size = 3, .frametype = 0, .timescode = -2};
    CClusters clusters;
    clusters.InputData(5, &frame);
    EXPECT_TRUE(Same(Laid([&](CMsbCursor& w) { return clusters.WriteData(w); }),
                     Join({Hex("A3 87 85 FF FE 80"), bytes})));
    frame.frametype = 1;
    clusters.InputData(126, &frame);
    EXPECT_TRUE(Same(Laid([&](CMsbCursor& w) { return clusters.WriteData(w); }),
                     Join({Hex("A3 87 FE FF FE 00"), bytes})));
    EXPECT_EQ(clusters.Size(), 4u + 9 + 9);
}

TEST(CClusters, BlockThatIsNoPictureLeavesTheOneBefore)
{
    const Bytes bytes = Support::Payload(3);
    const Bytes others = Support::Payload(5, 2);
    const MKV_FrameData picture{
        .pointer = bytes.data(), .size = 3, .frametype = 2, .timescode = 40};
    CClusters clusters;
    clusters.InputData(1, &picture);
    for (const int32_t type : {-1, 3, 8, 9})
    {
        const MKV_FrameData other{
            .pointer = others.data(), .size = 5, .frametype = type, .timescode = 80};
        clusters.InputData(2, &other);
    }
    clusters.InputData(2, nullptr);
    EXPECT_TRUE(Same(Laid([&](CMsbCursor& w) { return clusters.WriteData(w); }),
                     Join({Hex("A3 87 81 00 28 80"), bytes})));
}

TEST(CClusters, OverheadGrowsWithTheSizeField)
{
    EXPECT_EQ(CClusters::BlockOverhead(0), 6u);
    EXPECT_EQ(CClusters::BlockOverhead(122), 6u);
    EXPECT_EQ(CClusters::BlockOverhead(123), 7u);
    EXPECT_EQ(CClusters::BlockOverhead(16378), 7u);
    EXPECT_EQ(CClusters::BlockOverhead(16379), 8u);
    EXPECT_EQ(CClusters::BlockOverhead(2097146), 8u);
    EXPECT_EQ(CClusters::BlockOverhead(2097147), 9u);
}

TEST(CCues, PointHas24BytesOfWhichTheLastIsZero)
{
    const auto cues = std::make_unique<CCues>();
    EXPECT_TRUE(Same({cues->Finish().begin(), cues->Finish().end()}, Golden::Cues({})));
    cues->Append({.time = 0x01020304, .clusterPosition = 0x05060708, .relativePosition = 0x090A});
    const Bytes bytes(cues->Finish().begin(), cues->Finish().end());
    EXPECT_TRUE(Same(bytes,
                     Hex("1C 53 BB 6B 01 00 00 00 00 00 00 18 "
                         "BB 96 B3 84 01 02 03 04 "
                         "B7 8D F7 81 01 F1 84 05 06 07 08 F0 82 09 0A 00")));
    cues->Clear();
    EXPECT_EQ(cues->Finish().size(), 12u);
}

TEST(CCues, TakesNoPointBehindTheLast)
{
    const auto cues = std::make_unique<CCues>();
    for (uint32_t at = 0; at < CCues::kMaxCount - 1; ++at)
        cues->Append({.time = at});
    EXPECT_EQ(cues->Finish().size(), 12u + 24u * 102399);
    cues->Append({.time = 1});
    EXPECT_EQ(cues->Finish().size(), 12u + 24u * 102400);
    cues->Append({.time = 2});
    EXPECT_EQ(cues->Finish().size(), 12u + 24u * 102400);
}

}  // namespace
}  // namespace Orbel::Wrapton
