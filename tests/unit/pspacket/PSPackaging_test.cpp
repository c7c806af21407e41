#include "pspacket/PSPackaging.h"

#include <gtest/gtest.h>

#include "pspacket/ps/StdsPsPacket.h"

namespace Orbel::Wrapton
{
namespace
{

uint32_t Duration(uint32_t encode, uint32_t sampleRate, uint32_t bits, uint32_t channels)
{
    const CStdsPsPacket flavour;
    SGFrameInfo frame{};
    frame.frame_encode = encode;
    frame.sample_rate = sampleRate;
    frame.bit_per_sample = bits;
    frame.channels = channels;
    return flavour.GetDuration(&frame);
}

TEST(GetDuration, OfAacIs2048BytesOfSamples)
{
    EXPECT_EQ(Duration(SG_ENCODE_AUDIO_AAC, 16000, 16, 1), 5760u);  // 1024 samples
    EXPECT_EQ(Duration(SG_ENCODE_AUDIO_AAC, 48000, 16, 2), 960u);
    EXPECT_EQ(Duration(SG_ENCODE_AUDIO_AAC, 44100, 16, 1), 2089u);  // 2089.8
}

TEST(GetDuration, OfLayer2Is2304BytesOfSamples)
{
    EXPECT_EQ(Duration(SG_ENCODE_AUDIO_MP2, 16000, 16, 1), 6480u);  // 1152 samples
}

TEST(GetDuration, OfAnotherEncodingIsZero)
{
    for (uint32_t encode = 0; encode < 64; ++encode)
    {
        if (encode == SG_ENCODE_AUDIO_AAC || encode == SG_ENCODE_AUDIO_MP2) continue;
        EXPECT_EQ(Duration(encode, 16000, 16, 1), 0u) << encode;
    }
}

TEST(GetDuration, WithoutRateBitsOrChannelsIsZero)
{
    EXPECT_EQ(Duration(SG_ENCODE_AUDIO_AAC, 0, 16, 1), 0u);
    EXPECT_EQ(Duration(SG_ENCODE_AUDIO_AAC, 16000, 0, 1), 0u);
    EXPECT_EQ(Duration(SG_ENCODE_AUDIO_AAC, 16000, 16, 0), 0u);
}

TEST(GetDuration, OfAProductThatWrapsToZeroIsZero)
{
    EXPECT_EQ(Duration(SG_ENCODE_AUDIO_AAC, 0x10000000, 16, 1), 0u);
    EXPECT_EQ(Duration(SG_ENCODE_AUDIO_AAC, 0x80000000, 1, 2), 0u);
    EXPECT_EQ(Duration(SG_ENCODE_AUDIO_MP2, 0x80000000, 0x80000000, 4), 0u);
}

}  // namespace
}  // namespace Orbel::Wrapton
