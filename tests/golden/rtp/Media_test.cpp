// Streams of tests/media through packets and back.
#include <algorithm>

#include "golden/rtp/Session.h"
#include "support/Streams.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;

struct Variant
{
    uint32_t maximum;
    std::size_t custom;
    uint32_t all;
};

class RtpMedia : public ::testing::TestWithParam<Variant>
{
protected:
    RtpMedia()
        : m_custom(Support::Payload(GetParam().custom)), m_session(Make(GetParam(), m_custom))
    {
    }

    static SGRtpPackageParam Make(const Variant& variant, const Bytes& custom)
    {
        SGRtpPackageParam params = Params();
        params.max_packet_length = variant.maximum;
        params.custom_data = custom.data();
        params.custom_data_length = static_cast<uint32_t>(custom.size());
        params.rtp_output_all_flag = variant.all;
        return params;
    }

    /// Packages frames of 40 ms and gives all packets; the clock has to follow.
    std::vector<Readers::RtpPacket> Package(const std::vector<Frame>& frames)
    {
        std::vector<Readers::RtpPacket> all;
        uint32_t number = 0;
        for (Frame frame : frames)
        {
            frame.time = number * 40;
            for (auto& packet : m_session.Packets(frame))
            {
                EXPECT_EQ(packet.timestamp, number * 3600);
                EXPECT_LE(packet.length + packet.custom.size() + 2, Maximum());
                all.push_back(std::move(packet));
            }
            ++number;
        }
        Readers::CheckSequence(all);
        return all;
    }

    [[nodiscard]] static std::size_t Maximum()
    {
        return GetParam().maximum != 0 ? GetParam().maximum : 1000;
    }

    const Bytes m_custom;
    Session m_session;
};

/// Units without the zero bytes behind them, which belong to the byte stream.
std::vector<Bytes> Trimmed(std::vector<Bytes> units)
{
    for (Bytes& unit : units)
    {
        while (!unit.empty() && unit.back() == 0)
        {
            unit.pop_back();
        }
    }
    return units;
}

std::vector<Frame> H264Frames(const Bytes& stream)
{
    std::vector<Frame> frames;
    for (const Bytes& picture : Support::AccessUnits(stream))
    {
        frames.push_back(Support::IsIdr(picture) ? Support::H264I(picture)
                                                 : Support::H264P(picture));
    }
    return frames;
}

TEST_P(RtpMedia, EveryNalUnitOfACameraComesBack)
{
    const Bytes stream = Support::Media("camera_640x360_25fps_baseline.h264");
    const auto packets = Package(H264Frames(stream));
    EXPECT_EQ(Trimmed(Readers::ReadNalUnits(packets)), Trimmed(Support::NalUnits(stream)));
}

TEST_P(RtpMedia, EveryOneOfFourSlicesPerPictureBehindThreeByteStartCodesComesBack)
{
    const Bytes stream = Support::Media("slices_320x240_25fps.h264");
    const auto frames = H264Frames(stream);
    ASSERT_EQ(frames.size(), 12u);
    const auto packets = Package(frames);
    const auto units = Trimmed(Support::NalUnits(stream));
    EXPECT_EQ(units.size(), 12u * 4 + 2 * 2);
    EXPECT_EQ(Trimmed(Readers::ReadNalUnits(packets)), units);
    EXPECT_TRUE(std::any_of(
        units.begin(), units.end(), [](const Bytes& unit) { return unit.size() > 1000; }))
        << "the stream has to need fragments";
}

TEST_P(RtpMedia, EveryMpeg4PictureComesBack)
{
    std::vector<Frame> frames;
    const auto pictures = Support::Mpeg4Pictures(Support::Media("cif_352x288_25fps.m4v"));
    frames.reserve(pictures.size());
    for (const Bytes& picture : pictures)
    {
        frames.push_back(Support::IsMpeg4Intra(picture) ? Support::Mpeg4I(picture)
                                                        : Support::Mpeg4P(picture));
    }
    EXPECT_EQ(Readers::ReadPlainFrames(Package(frames)), pictures);
}

TEST_P(RtpMedia, EveryJpegPictureComesBack)
{
    std::vector<Frame> frames;
    const auto pictures = Support::JpegPictures(Support::Media("qvga_320x240_12fps.mjpeg"));
    frames.reserve(pictures.size());
    for (const Bytes& picture : pictures)
    {
        frames.push_back(Support::JpegI(picture));
    }
    EXPECT_EQ(Readers::ReadPlainFrames(Package(frames)), pictures);
}

INSTANTIATE_TEST_SUITE_P(Sizes,
                         RtpMedia,
                         ::testing::Values(Variant{0, 0, 0},
                                           Variant{0, 0, 1},
                                           Variant{1400, 0, 0},
                                           Variant{200, 1, 0},
                                           Variant{65537, 0, 0}),
                         [](const auto& variant)
                         {
                             return "Maximum" + std::to_string(variant.param.maximum) + "Custom" +
                                    std::to_string(variant.param.custom) + "All" +
                                    std::to_string(variant.param.all);
                         });

}  // namespace
}  // namespace Golden
