#include <map>

#include <gtest/gtest.h>

#include "Wrapton.h"
#include "tool/StreamTool.h"

namespace Orbel::Wrapton
{
namespace
{

TEST(GetCodecId, GivesTheTagsOfItsTableAndZeroForEveryOtherNumber)
{
    const std::map<unsigned int, uint16_t> tags = {
        {8, 0x0044},   // G.729
        {10, 0x0007},  // mu-law
        {11, 0x0040},  // G.721
        {13, 0x0002},  // Microsoft ADPCM
        {14, 0x0006},  // A-law
        {15, 0x4201},  // AMR
        {16, 0x0001},  // PCM
        {22, 0x0007},  // mu-law
        {23, 0x0014},  // unnamed
    };
    for (unsigned int encode = 0; encode <= 300; ++encode)
    {
        const auto tag = tags.find(encode);
        EXPECT_EQ(get_codec_id(encode), tag == tags.end() ? 0 : tag->second) << encode;
    }
}

TEST(GetCodecId, HasNoTagForPcmImaG723AndAac)
{
    EXPECT_EQ(get_codec_id(SG_ENCODE_AUDIO_PCM), 0);
    EXPECT_EQ(get_codec_id(SG_ENCODE_AUDIO_IMA), 0);
    EXPECT_EQ(get_codec_id(SG_ENCODE_AUDIO_G723), 0);
    EXPECT_EQ(get_codec_id(SG_ENCODE_AUDIO_AAC), 0);
}

TEST(GetCodecId, EndsAtThirty)
{
    EXPECT_EQ(get_codec_id(29), 0);
    EXPECT_EQ(get_codec_id(30), 0);
    EXPECT_EQ(get_codec_id(31), 0);
    EXPECT_EQ(get_codec_id(0x80000000u), 0);
    EXPECT_EQ(get_codec_id(0xFFFFFFFFu), 0);
}

}  // namespace
}  // namespace Orbel::Wrapton
