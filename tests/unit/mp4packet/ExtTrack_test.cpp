// The boxes of the native-frame track. The driver never describes that track, so they stay out of
// every file; their bytes are pinned here.
#include <gtest/gtest.h>

#include <string>

#include "mp4packet/Box/Box_moov.h"
#include "mp4packet/Box/Box_omfr.h"
#include "support/Bytes.h"

namespace Orbel::Wrapton
{
namespace
{

using Support::Bytes;
using Support::Hex;
using Support::Join;
using Support::Msb32;
using Support::Same;
using Support::Text;
using Support::Zero;

Bytes Written(CBox& box)
{
    Bytes bytes(box.Length());
    box.Write(bytes.data());
    return bytes;
}

/// ISO/IEC 14496-12 12.1.3, with the last field in one byte.
const Bytes kEntry = Join({
    Msb32(8 + 77),
    Text("OMFR"),
    Zero(6),             // reserved
    Hex("00 01"),        // data reference index
    Zero(16),            // pre_defined, reserved
    Hex("00 00 00 00"),  // width, height
    Hex("00 48 00 00"),  // horizontal resolution, 72 dpi
    Hex("00 48 00 00"),  // vertical resolution
    Zero(4),             // reserved
    Hex("00 01"),        // frame count
    Zero(32),            // compressor name
    Hex("00 18"),        // depth
    Hex("FF"),           // pre_defined
});

TEST(CBox_omfr, EndsWithOneByteOfPreDefined)
{
    CBox_omfr entry(BoxMode_Mp4);
    EXPECT_TRUE(Same(Written(entry), kEntry));
}

TEST(CBox_stsd, DescribesNativeFramesByTheirEntry)
{
    Mp4_VideoInfo any;
    CBox_stsd stsd(BoxMode_Mov);
    stsd.Init(MP4_EXT_TRAK, &any);
    stsd.Update();
    EXPECT_TRUE(Same(Written(stsd),
                     Join({Msb32(8 + 8 + 85),
                           Text("stsd"),
                           Zero(4),   // version, flags
                           Msb32(1),  // entry count
                           kEntry})));
}

TEST(CBox_hdlr, NamesTheExtTrack)
{
    Mp4_VideoInfo any;
    CBox_hdlr hdlr(BoxMode_Mp4);
    hdlr.Init(MP4_EXT_TRAK, &any);
    EXPECT_TRUE(Same(Written(hdlr),
                     Join({Msb32(8 + 24 + 14 + 1),
                           Text("hdlr"),
                           Zero(4),  // version, flags
                           Zero(4),  // pre_defined
                           Text("OMFR"),
                           Zero(12),  // reserved
                           Text("OMFRExtHandler"),
                           Zero(1)})));
}

TEST(CBox_tkhd, OfTheExtTrackHasNumber3AndNoFlags)
{
    Mp4_VideoInfo any;
    CBox_tkhd tkhd(BoxMode_Mp4);
    tkhd.Init(MP4_EXT_TRAK, &any);
    const Bytes bytes = Written(tkhd);
    EXPECT_EQ(Support::ReadMsb32(bytes, 8), 0u);                   // version, flags
    EXPECT_EQ(Support::ReadMsb32(bytes, 8 + 12), 3u);              // track_ID
    EXPECT_TRUE(Same(Support::Slice(bytes, 8 + 36, 2), Zero(2)));  // volume
}

TEST(CBox_moov, DoesNotOpenATrackWithoutADescription)
{
    CBox_moov moov(BoxMode_Mp4);
    moov.Init(MP4_EXT_TRAK, nullptr);
    moov.Update();
    EXPECT_EQ(moov.Size(), 8u + 108u);

    Mp4_Sample sample{.pointer = kEntry.data(), .size = 4};
    moov.InputData(MP4_EXT_TRAK, &sample);
    moov.Update();
    EXPECT_EQ(moov.Size(), 8u + 108u);
}

TEST(CBox_moov, IgnoresATrackThatDoesNotExist)
{
    Mp4_VideoInfo any;
    Mp4_Sample sample{.pointer = kEntry.data(), .size = 4};
    CBox_moov moov(BoxMode_Mp4);
    for (const uint32_t track : {0u, 4u, 0xFFFFFFFFu})
    {
        moov.Init(track, &any);
        moov.InputData(track, &sample);
        EXPECT_FALSE(moov.Reserve(track));
    }
    moov.Update();
    EXPECT_EQ(moov.Size(), 8u + 108u);
}

TEST(CBox_moov, WritesAnExtTrackThatIsDescribedWithoutSyncSamplesOrMediaHeader)
{
    Mp4_VideoInfo any;
    CBox_moov moov(BoxMode_Mp4);
    moov.Init(MP4_EXT_TRAK, &any);
    Mp4_Sample sample{.pointer = kEntry.data(), .size = 4, .postion = 100};
    moov.InputData(MP4_EXT_TRAK, &sample);

    const std::string file = [&]
    {
        const Bytes bytes = Written(moov);
        return std::string(bytes.begin(), bytes.end());
    }();
    EXPECT_EQ(file.size(), moov.Size());
    for (const char* present : {"trak", "tkhd", "mdhd", "dinf", "stbl", "stsd", "stts", "stco"})
    {
        EXPECT_NE(file.find(present), std::string::npos) << present;
    }
    for (const char* absent : {"stss", "vmhd", "smhd"})
    {
        EXPECT_EQ(file.find(absent), std::string::npos) << absent;
    }
}

}  // namespace
}  // namespace Orbel::Wrapton
