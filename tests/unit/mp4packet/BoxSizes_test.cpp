// Size and bytes of every box agree, empty and full, in every mode.
#include <gtest/gtest.h>

#include <span>
#include <string>
#include <type_traits>

#include "Wrapton.h"
#include "mp4packet/Box/Box_free.h"
#include "mp4packet/Box/Box_ftyp.h"
#include "mp4packet/Box/Box_mdat.h"
#include "mp4packet/Box/Box_moov.h"
#include "mp4packet/Box/Box_omfr.h"
#include "mp4packet/Box/Box_wave.h"
#include "support/Bytes.h"

namespace Orbel::Wrapton
{
namespace
{

using Support::Bytes;

const Bytes kKeyFrame = Support::Hex(
    "00 00 00 01 67 42 00 1E AA "  // SPS
    "00 00 00 01 68 CE 3C "        // PPS
    "00 00 00 01 65 88");          // IDR slice

Mp4_VideoInfo Video(uint32_t encode)
{
    return {.pointer = kKeyFrame.data(),
            .size = static_cast<uint32_t>(kKeyFrame.size()),
            .width = 640,
            .heigth = 360,
            .frame_rate = 25,
            .encode_type = encode};
}

Mp4_AudioInfo Audio(uint32_t encode)
{
    return {.encode_type = encode, .channels = 1, .bit_per_sample = 16, .sample_rate = 8000};
}

/// What opens a box, and what is fed into it.
template <class Box>
void Open(Box& box, uint32_t track)
{
    Mp4_VideoInfo video = Video(SG_ENCODE_VIDEO_HI_H264);
    Mp4_AudioInfo audio = Audio(SG_ENCODE_AUDIO_AAC);
    box.Init(track, track == MP4_AUDIO_TRAK ? static_cast<void*>(&audio) : &video);
}

void Feed(CBox& box, uint32_t track)
{
    for (uint64_t i = 0; i < 3; ++i)
    {
        Mp4_Sample sample{.pointer = kKeyFrame.data(),
                          .size = static_cast<uint32_t>(kKeyFrame.size()),
                          .frametype = SG_FRAME_SUB_TYPE_I,
                          .postion = 100 * i};
        box.InputData(track, &sample);
    }
    box.Update();
}

::testing::AssertionResult Agrees(CBox& box)
{
    box.Update();
    Bytes bytes(box.Size());
    CMsbCursor w(bytes);
    box.Put(w);
    if (box.Length() != box.Size() || w.Produced() != box.Size() || w.Overrun())
    {
        return ::testing::AssertionFailure() << "declares " << box.Size() << " bytes, measures "
                                             << box.Length() << ", writes " << w.Produced();
    }
    Bytes by_pointer(box.Size());
    if (box.Write(by_pointer.data()) != box.Size() || by_pointer != bytes)
    {
        return ::testing::AssertionFailure() << "the pointer form writes something else";
    }
    if (Support::ReadMsb32(bytes, 0) != box.Size())
    {
        return ::testing::AssertionFailure() << "the size field says something else";
    }
    return ::testing::AssertionSuccess();
}

template <class Box>
class SizedBox : public ::testing::Test
{
};

using Boxes = ::testing::Types<CBox_free,
                               CBox_ftyp,
                               CBox_mvhd,
                               CBox_tkhd,
                               CBox_mdhd,
                               CBox_hdlr,
                               CBox_url,
                               CBox_dref,
                               CBox_dinf,
                               CBox_stsd,
                               CBox_stts,
                               CBox_stsc,
                               CBox_stco,
                               CBox_omfr>;
TYPED_TEST_SUITE(SizedBox, Boxes);

TYPED_TEST(SizedBox, DeclaresWhatItWrites)
{
    for (uint32_t mode = BoxMode_Mp4; mode <= BoxMode_Mov_NoSeek; ++mode)
    {
        for (uint32_t track = MP4_VIDEO_TRAK; track <= MP4_EXT_TRAK; ++track)
        {
            SCOPED_TRACE("mode " + std::to_string(mode) + ", track " + std::to_string(track));
            TypeParam box(mode);
            EXPECT_TRUE(Agrees(box)) << "empty";
            Open(box, track);
            EXPECT_TRUE(Agrees(box)) << "open";
            Feed(box, track);
            EXPECT_TRUE(Agrees(box)) << "full";
        }
    }
}

template <class Container>
class SizedContainer : public ::testing::Test
{
};

using Containers =
    ::testing::Types<CBox_minf, CBox_mdia, CBox_trak, CBox_moov, CBox_stbl, CBox_mp4a, CBox_wave>;
TYPED_TEST_SUITE(SizedContainer, Containers);

/// Every encoding that a track can have.
TYPED_TEST(SizedContainer, DeclaresWhatItWritesForEveryEncoding)
{
    for (uint32_t mode = BoxMode_Mp4; mode <= BoxMode_Mov_NoSeek; ++mode)
    {
        for (const uint32_t encode : {SG_ENCODE_AUDIO_AAC, SG_ENCODE_AUDIO_MP2})
        {
            TypeParam box(mode);
            EXPECT_TRUE(Agrees(box));
            Mp4_AudioInfo audio = Audio(encode);
            box.Init(MP4_AUDIO_TRAK, &audio);
            EXPECT_TRUE(Agrees(box));
            Feed(box, MP4_AUDIO_TRAK);
            EXPECT_TRUE(Agrees(box));
        }
        if (std::is_same_v<TypeParam, CBox_mp4a> || std::is_same_v<TypeParam, CBox_wave>) continue;

        for (const uint32_t encode : {SG_ENCODE_VIDEO_HI_H264,
                                      SG_ENCODE_VIDEO_QV_H264,
                                      SG_ENCODE_VIDEO_MPEG4,
                                      SG_ENCODE_VIDEO_JPEG,
                                      SG_ENCODE_VIDEO_STD_H264})
        {
            TypeParam box(mode);
            Mp4_VideoInfo video = Video(encode);
            box.Init(MP4_VIDEO_TRAK, &video);
            EXPECT_TRUE(Agrees(box)) << encode;
            Feed(box, MP4_VIDEO_TRAK);
            EXPECT_TRUE(Agrees(box)) << encode;
        }
    }
}

/// Known exceptions: they claim bytes that others write.
TEST(CBox_mdat, ClaimsTheSamplesBehindItsHeader)
{
    CBox_mdat mdat(BoxMode_Mp4);
    mdat.InputData(1000, nullptr);
    EXPECT_EQ(mdat.Size(), 1008u);
    EXPECT_EQ(mdat.Length(), 8u);
}

TEST(CBox_free, StillClaimsTheHoleThatWasFilledExactly)
{
    CBox_free free(BoxMode_Mp4);
    free.Init(500, nullptr);
    free.Init(0, nullptr);
    EXPECT_EQ(free.Size(), 508u);
    EXPECT_EQ(free.Length(), 8u);
}

TEST(Catom, KeepsItsSizeWhenThePayloadIsEmpty)
{
    Catom atom(FREE);
    EXPECT_EQ(atom.Size(), 8u);
    atom.Update(10);
    EXPECT_EQ(atom.Size(), 18u);
    atom.Update(0);
    EXPECT_EQ(atom.Size(), 18u);

    Bytes header(Catom::kHeaderLen);
    EXPECT_EQ(atom.Write(header.data()), 8u);
    EXPECT_TRUE(Support::Same(header,
                              Support::Hex("00 00 00 12 "     // size
                                           "66 72 65 65")));  // "free"
}

TEST(CBox, WritesNothingToANullPointer)
{
    CBox_ftyp ftyp(BoxMode_Mp4);
    EXPECT_EQ(ftyp.Write(nullptr), 0u);
    EXPECT_EQ(ftyp.WriteAtom(nullptr), 0u);
    EXPECT_EQ(ftyp.WriteData(nullptr), 0u);
}

TEST(CBox, StoresNoFieldPastTheRoomItWasGiven)
{
    CBox_ftyp ftyp(BoxMode_Mp4);
    Bytes room(20, 0xEE);
    CMsbCursor w({room.data(), 11});  // the header and three bytes of the brand
    ftyp.Put(w);
    EXPECT_TRUE(w.Overrun());
    EXPECT_EQ(w.Produced(), 32u);
    EXPECT_TRUE(Support::Same(Support::Slice(room, 8, 12), Bytes(12, 0xEE)));
}

}  // namespace
}  // namespace Orbel::Wrapton
