// Real streams, packaged and read back by a reader of the format.
#include "golden/flv/Pieces.h"
#include "readers/FlvReader.h"
#include "support/Streams.h"

namespace GoldenFlv
{
namespace
{

using namespace Orbel::Wrapton;

/// What stands ahead of the frames' tags: metadata and sequence header.
constexpr std::size_t kLeadingTags = 2;

void ExpectPictures(const Readers::FlvFile& file,
                    const std::vector<Bytes>& accessUnits,
                    uint32_t rate)
{
    ASSERT_GE(file.tags.size(), kLeadingTags + accessUnits.size());
    EXPECT_EQ(file.tags[0].type, 18u);
    EXPECT_EQ(file.tags[1].body.at(1), 0u);  // sequence header
    for (std::size_t i = 0; i < accessUnits.size(); ++i)
    {
        const Readers::FlvTag& tag = file.tags[kLeadingTags + i];
        EXPECT_EQ(Readers::AvcUnits(tag), Support::NalUnits(accessUnits[i])) << i;
        EXPECT_EQ(tag.time, i * 1000 / rate);
        EXPECT_EQ(tag.body.at(0), Support::IsIdr(accessUnits[i]) ? 0x17 : 0x27);
    }
}

Bytes Packaged(uint32_t type, const std::vector<Bytes>& accessUnits, uint32_t rate)
{
    Recording recording(type);
    for (const Bytes& unit : accessUnits)
    {
        const bool key = Support::IsIdr(unit);
        recording.Input((key ? Support::H264I(unit) : Support::H264P(unit)).AtRate(rate));
    }
    recording.Tailer();
    return recording.File();
}

TEST(FlvRoundTrip, GivesTheNalUnitsOfTheStreamVariantBack)
{
    const auto units = Support::AccessUnits(Support::Media("camera_640x360_25fps_baseline.h264"));
    const Bytes bytes = Packaged(SG_STREAM_TYPE_STREAM_FLV, units, 25);
    const Readers::FlvFile file = Readers::ReadFlv(bytes);
    EXPECT_TRUE(file.hasAudio);
    EXPECT_TRUE(file.hasVideo);
    EXPECT_EQ(file.tags.size(), kLeadingTags + units.size());
    ExpectPictures(file, units, 25);
}

TEST(FlvRoundTrip, GivesTheNalUnitsOfTheFileVariantBack)
{
    const auto units = Support::AccessUnits(Support::Media("film_1280x720_30fps_bframes.h264"));
    Bytes bytes = Packaged(SG_STREAM_TYPE_FLV, units, 30);
    // A player's file ends ahead of the closing header.
    const Readers::FlvFile closing =
        Readers::ReadFlv(Support::Slice(bytes, bytes.size() - 279, 279));
    EXPECT_EQ(closing.tags.size(), 1u);
    bytes.resize(bytes.size() - 279);
    const Readers::FlvFile file = Readers::ReadFlv(bytes);
    EXPECT_FALSE(file.hasAudio);
    EXPECT_TRUE(file.hasVideo);
    EXPECT_EQ(file.tags.size(), kLeadingTags + units.size() + 1);
    ExpectPictures(file, units, 30);
    EXPECT_EQ(file.tags.back().time, units.size() * 1000 / 30);
}

}  // namespace
}  // namespace GoldenFlv
