#include "Adts.h"

#include <gtest/gtest.h>

#include <vector>

namespace Orbel::Wrapton::Command
{
namespace
{

using Bytes = std::vector<unsigned char>;

TEST(Adts, HeaderIsReadFieldByField)
{
    const Bytes frame = {0xFF,  // syncword
                         0xF1,  // MPEG-4, layer 0, no CRC
                         0x50,  // 01 LC, 0100 is 44100 Hz, 0 private, 0 of the channels
                         0x80,  // 10 of the channels: stereo; 4 flags; 2 bits of length
                         0x01,
                         0x1F,
                         0xFC,
                         0x21};
    const auto header = ReadAdts(frame);
    ASSERT_TRUE(header);
    EXPECT_EQ(header->config.object_type, 2U);
    EXPECT_EQ(header->config.SampleRate(), 44100U);
    EXPECT_EQ(header->config.Channels(), 2U);
    EXPECT_EQ(header->header_len, 7U);
    EXPECT_TRUE(header->plain);
}

TEST(Adts, CrcMakesTheHeaderTwoBytesLonger)
{
    Bytes frame = {0xFF, 0xF0, 0x50, 0x80, 0x01, 0x3F, 0xFC, 0x00, 0x00};
    const auto header = ReadAdts(frame);
    ASSERT_TRUE(header);
    EXPECT_EQ(header->header_len, 9U);
    EXPECT_FALSE(header->plain);

    frame.pop_back();
    EXPECT_FALSE(ReadAdts(frame));
}

TEST(Adts, OtherMpegVersionIsNotThePlainForm)
{
    const Bytes frame = {0xFF, 0xF9, 0x50, 0x80, 0x00, 0xFF, 0xFC};
    const auto header = ReadAdts(frame);
    ASSERT_TRUE(header);
    EXPECT_EQ(header->header_len, 7U);
    EXPECT_FALSE(header->plain);
}

TEST(Adts, NoSyncwordOrLayerAudioOrShortFrameIsNoHeader)
{
    EXPECT_FALSE(ReadAdts({}));
    EXPECT_FALSE(ReadAdts(Bytes{0xFF, 0xF1, 0x50, 0x80, 0x00, 0xFF}));
    EXPECT_FALSE(ReadAdts(Bytes{0xFF, 0xE1, 0x50, 0x80, 0x00, 0xFF, 0xFC}));  // 11 bits of sync
    EXPECT_FALSE(ReadAdts(Bytes{0xFF, 0xFD, 0x50, 0x80, 0x00, 0xFF, 0xFC}));  // layer II
    EXPECT_FALSE(ReadAdts(Bytes{0xFE, 0xF1, 0x50, 0x80, 0x00, 0xFF, 0xFC}));
}

TEST(Adts, ReservedRateAndInBandChannelsAreNotKnown)
{
    const Bytes frame = {0xFF, 0xF1, 0x74, 0x00, 0x00, 0xFF, 0xFC};  // index 13, configuration 0
    const auto header = ReadAdts(frame);
    ASSERT_TRUE(header);
    EXPECT_EQ(header->config.SampleRate(), 0U);
    EXPECT_EQ(header->config.Channels(), 0U);
}

TEST(AudioSpecificConfig, LowComplexity)
{
    const auto stereo = ReadAudioSpecificConfig(Bytes{0x12, 0x10});  // 00010 0100 0010 000
    ASSERT_TRUE(stereo);
    EXPECT_EQ(stereo->object_type, 2U);
    EXPECT_EQ(stereo->SampleRate(), 44100U);
    EXPECT_EQ(stereo->Channels(), 2U);

    const auto mono = ReadAudioSpecificConfig(Bytes{0x15, 0x88});  // 00010 1011 0001 000
    ASSERT_TRUE(mono);
    EXPECT_EQ(mono->SampleRate(), 8000U);
    EXPECT_EQ(mono->Channels(), 1U);
}

TEST(AudioSpecificConfig, OfBandReplicationTheCoreIsGiven)
{
    // 00101 SBR, 0110 24000 Hz, 0010 stereo, 0011 48000 Hz, 00010 LC, 000
    const auto core = ReadAudioSpecificConfig(Bytes{0x2B, 0x11, 0x88, 0x00});
    ASSERT_TRUE(core);
    EXPECT_EQ(core->object_type, 2U);
    EXPECT_EQ(core->SampleRate(), 24000U);
    EXPECT_EQ(core->Channels(), 2U);
}

TEST(AudioSpecificConfig, RateWrittenOutIsTakenFromTheTable)
{
    // 00010 LC, 1111 escape, 24 bits 44100, 0010 stereo, 000
    const auto config = ReadAudioSpecificConfig(Bytes{0x17, 0x80, 0x56, 0x22, 0x10});
    ASSERT_TRUE(config);
    EXPECT_EQ(config->rate_index, 4U);
    // the same with 44101 Hz
    EXPECT_FALSE(ReadAudioSpecificConfig(Bytes{0x17, 0x80, 0x56, 0x22, 0x90}));
}

TEST(AudioSpecificConfig, WhatNoHeaderCanSayIsRefused)
{
    EXPECT_FALSE(ReadAudioSpecificConfig({}));
    EXPECT_FALSE(ReadAudioSpecificConfig(Bytes{0x12}));        // breaks off
    EXPECT_FALSE(ReadAudioSpecificConfig(Bytes{0x12, 0x00}));  // channels in a config element
    EXPECT_FALSE(ReadAudioSpecificConfig(Bytes{0x12, 0x14}));  // frames of 960 samples
    EXPECT_FALSE(ReadAudioSpecificConfig(Bytes{0x16, 0x90}));  // rate index 13
    EXPECT_FALSE(ReadAudioSpecificConfig(Bytes{0x12, 0x40}));  // channel configuration 8
    EXPECT_FALSE(ReadAudioSpecificConfig(Bytes{0x02, 0x10}));  // object type 0
    EXPECT_FALSE(ReadAudioSpecificConfig(Bytes{0x3A, 0x10}));  // object type 7
    // 11111 escape, 001010 is 42, 0100, 0010
    EXPECT_FALSE(ReadAudioSpecificConfig(Bytes{0xF9, 0x48, 0x40, 0x00}));
}

TEST(MakeAdts, EveryFieldStandsInItsBits)
{
    const AacConfig config = {.object_type = 2, .rate_index = 11, .channel_config = 7};
    const auto header = MakeAdts(config, 0x1234 - kAdtsLen);
    ASSERT_TRUE(header);
    const std::array<unsigned char, kAdtsLen> wanted = {
        0xFF,  // syncword
        0xF1,  // MPEG-4, layer 0, no CRC
        0x6D,  // 01 LC, 1011 8000 Hz, 0, 1 of 111
        0xC2,  // 11 of 111, 0000, 10 of the length 1 0010 0011 0100
        0x46,  // 0100 0110
        0x9F,  // 100, 11111 of the buffer fullness
        0xFC,  // 111111, 00 one raw data block
    };
    EXPECT_EQ(*header, wanted);
}

TEST(MakeAdts, LengthHasThirteenBits)
{
    const AacConfig config = {.object_type = 2, .rate_index = 4, .channel_config = 2};
    EXPECT_TRUE(MakeAdts(config, 8183));
    EXPECT_TRUE(MakeAdts(config, 8184));
    EXPECT_FALSE(MakeAdts(config, 8185));
}

TEST(MakeAdts, ReadsBack)
{
    const AacConfig config = {.object_type = 1, .rate_index = 12, .channel_config = 6};
    const auto made = MakeAdts(config, 0);
    ASSERT_TRUE(made);
    const auto header = ReadAdts(*made);
    ASSERT_TRUE(header);
    EXPECT_EQ(header->config.object_type, 1U);
    EXPECT_EQ(header->config.rate_index, 12U);
    EXPECT_EQ(header->config.channel_config, 6U);
    EXPECT_TRUE(header->plain);
}

TEST(IsEmptyAdts, OnlyAPlainHeaderOfLengthSeven)
{
    const Bytes empty = {0xFF, 0xF1, 0x6C, 0x40, 0x00, 0xFF, 0xFC};  // length 0 0000 0000 0111
    EXPECT_TRUE(IsEmptyAdts(empty));
    for (const int length : {0xDF, 0x1F})  // 6 and 0, which cannot be
    {
        Bytes other = empty;
        other[5] = static_cast<unsigned char>(length);
        EXPECT_FALSE(IsEmptyAdts(other));
    }
    EXPECT_FALSE(IsEmptyAdts(Bytes{0xFF, 0xF1, 0x6C, 0x40, 0x01, 0x1F, 0xFC}));        // 8
    EXPECT_FALSE(IsEmptyAdts(Bytes{0xFF, 0xF0, 0x6C, 0x40, 0x00, 0xFF, 0xFC, 0, 0}));  // a CRC
    EXPECT_FALSE(IsEmptyAdts(Bytes{0xFF, 0xF1, 0x6C, 0x40, 0x00, 0xFF}));              // cut
    EXPECT_FALSE(IsEmptyAdts({}));
}

}  // namespace
}  // namespace Orbel::Wrapton::Command
