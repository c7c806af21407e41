#include "support/Streams.h"

#include <numeric>

namespace Support
{
namespace
{

std::size_t TotalSize(const std::vector<Bytes>& frames)
{
    return std::accumulate(frames.begin(),
                           frames.end(),
                           std::size_t{0},
                           [](std::size_t sum, const Bytes& frame) { return sum + frame.size(); });
}

TEST(NalUnits, ComeWithoutStartCodesAndTrailingZeros)
{
    const std::vector<Bytes> units =
        NalUnits(Hex("00 00 00 01 67 42 00 00 01 68 00 00 00 01 65 00"));
    EXPECT_EQ(units, (std::vector<Bytes>{Hex("67 42"), Hex("68"), Hex("65 00")}));
}

TEST(AccessUnits, BeginAtParameterSetsAndFirstSlices)
{
    const Bytes idr = Hex("00 00 00 01 67 42 00 00 00 01 68 CE 00 00 01 65 88 00 00 01 65 40");
    const Bytes slice = Hex("00 00 00 01 41 9A 00 00 01 41 40");
    const std::vector<Bytes> units = AccessUnits(Join({idr, slice}));
    EXPECT_EQ(units, (std::vector<Bytes>{idr, slice}));
    EXPECT_TRUE(IsIdr(units.at(0)));
    EXPECT_FALSE(IsIdr(units.at(1)));
}

TEST(SampleStreams, AreCutWithoutLosingAByte)
{
    const Bytes camera = Media("camera_640x360_25fps_baseline.h264");
    EXPECT_EQ(TotalSize(AccessUnits(camera)), camera.size());
    const Bytes film = Media("film_1280x720_30fps_bframes.h264");
    EXPECT_EQ(TotalSize(AccessUnits(film)), film.size());
    const Bytes m4v = Media("cif_352x288_25fps.m4v");
    EXPECT_EQ(TotalSize(Mpeg4Pictures(m4v)), m4v.size());
    const Bytes mjpeg = Media("qvga_320x240_12fps.mjpeg");
    EXPECT_EQ(TotalSize(JpegPictures(mjpeg)), mjpeg.size());
    const Bytes aac = Media("tone_8000_mono.aac");
    EXPECT_EQ(TotalSize(AdtsFrames(aac)), aac.size());
    for (const char* const name : {"tone_48000_stereo.mp2", "tone_16000_mono.mp2"})
    {
        const Bytes mp2 = Media(name);
        EXPECT_EQ(TotalSize(Layer2Frames(mp2)), mp2.size());
    }
}

TEST(SampleStreams, BeginWithAnIntraPicture)
{
    EXPECT_TRUE(IsIdr(AccessUnits(Media("camera_640x360_25fps_baseline.h264")).at(0)));
    EXPECT_TRUE(IsIdr(AccessUnits(Media("film_1280x720_30fps_bframes.h264")).at(0)));
    EXPECT_TRUE(IsMpeg4Intra(Mpeg4Pictures(Media("cif_352x288_25fps.m4v")).at(0)));
}

}  // namespace
}  // namespace Support
