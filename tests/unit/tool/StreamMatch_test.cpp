#include "tool/StreamMatch.h"

#include <array>

#include <gtest/gtest.h>

namespace Orbel::Wrapton
{
namespace
{

constexpr unsigned int kHuge[] = {1000, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};

TEST(ConvertEncodeType, GivesTheWholeTable)
{
    // Indexed by the component's number.
    static constexpr std::array<unsigned int, 42> kExpected = {
        0,                         // 0 unknown
        1,                         // 1 MPEG-4
        2,                         // 2 H.264
        3,                         // 3 JPEG
        11,                        // 4 SVAC
        0,                         // 5 HEVC
        9,                         // 6 MPEG-2
        35,                        // 7 H.263
        0,   0,  0,  0,  0,        // 8 to 12 Microsoft MPEG-4 1 to 3, WMV 1 and 2
        129,                       // 13 HIK H.264
        0,   0,  0,  0,  0, 0, 0,  // 14 to 20
        7,                         // 21 PCM
        8,                         // 22 G.729
        9,                         // 23 IMA
        10,                        // 24 mu-law PCM
        11,                        // 25 G.721
        12,                        // 26 VMIS
        13,                        // 27 ADPCM
        14,                        // 28 G.711 A-law
        15,                        // 29 AMR
        16,                        // 30 PCM, 16 bits
        22,                        // 31 G.711 mu-law
        0,                         // 32 G.723
        26,                        // 33 AAC
        27,  28, 29, 30,           // 34 to 37 G.726 at 40, 32, 24 and 16 kbit/s
        31,                        // 38 MP2
        32,                        // 39 OGG
        33,                        // 40 MP3
        34,                        // 41 G.722.1
    };
    for (unsigned int i = 0; i < kExpected.size(); ++i)
    {
        EXPECT_EQ(ConvertEncodeType(i), kExpected[i]) << i;
    }
    for (unsigned int i = 42; i < 300; ++i)
    {
        EXPECT_EQ(ConvertEncodeType(i), 0u) << i;
    }
    for (const unsigned int i : kHuge)
    {
        EXPECT_EQ(ConvertEncodeType(i), 0u) << i;
    }
}

TEST(ConvertFrameType, KnowsThreeCapitalLetters)
{
    for (unsigned int code = 0; code < 300; ++code)
    {
        const unsigned int expected = code == 65 ? 2 : code == 86 ? 1 : code == 88 ? 3 : 0;
        EXPECT_EQ(ConvertFrameType(code), expected) << code;
    }
    EXPECT_EQ(ConvertFrameType('v'), 0u);
    EXPECT_EQ(ConvertFrameType(65 + 256), 0u);
    for (const unsigned int code : kHuge)
    {
        EXPECT_EQ(ConvertFrameType(code), 0u) << code;
    }
}

TEST(ConvertFrameSubType, GivesTheWholeTable)
{
    static constexpr std::array<unsigned int, 10> kExpected = {
        9,  // 0 unknown
        0,  // 1 I
        1,  // 2 P
        2,  // 3 B
        9,
        9,
        9,
        9,
        9,  // 4 to 8: S, three watermarks, intelligence data
        8,  // 9 JPEG
    };
    for (unsigned int i = 0; i < kExpected.size(); ++i)
    {
        EXPECT_EQ(ConvertFrameSubType(i), kExpected[i]) << i;
    }
    for (unsigned int i = 10; i < 300; ++i)
    {
        EXPECT_EQ(ConvertFrameSubType(i), 9u) << i;
    }
    for (const unsigned int i : kHuge)
    {
        EXPECT_EQ(ConvertFrameSubType(i), 9u) << i;
    }
}

TEST(ConvertErrorMsg, GivesTheWholeTable)
{
    EXPECT_EQ(ConvertErrorMsg(0), 0u);
    EXPECT_EQ(ConvertErrorMsg(1), 1u);
    EXPECT_EQ(ConvertErrorMsg(2), 4u);
    EXPECT_EQ(ConvertErrorMsg(3), 4u);
    for (unsigned int i = 4; i < 300; ++i)
    {
        EXPECT_EQ(ConvertErrorMsg(i), 0u) << i;
    }
    for (const unsigned int i : kHuge)
    {
        EXPECT_EQ(ConvertErrorMsg(i), 0u) << i;
    }
}

TEST(ComponentEnumerations, HaveTheirNumbers)
{
    EXPECT_EQ(encodeTypeUnknown, 0u);
    EXPECT_EQ(encodeTypeMpeg4, 1u);
    EXPECT_EQ(encodeTypeH264, 2u);
    EXPECT_EQ(encodeTypeJpeg, 3u);
    EXPECT_EQ(encodeTypeSvac, 4u);
    EXPECT_EQ(encodeTypeHevc, 5u);
    EXPECT_EQ(encodeTypeMpeg2, 6u);
    EXPECT_EQ(encodeTypeH263, 7u);
    EXPECT_EQ(encodeTypeMsmpe4v1, 8u);
    EXPECT_EQ(encodeTypeMsmpe4v2, 9u);
    EXPECT_EQ(encodeTypeMsmpe4v3, 10u);
    EXPECT_EQ(encodeTypeWmv1, 11u);
    EXPECT_EQ(encodeTypeWmv2, 12u);
    EXPECT_EQ(encodeTypeHikH264, 13u);
    EXPECT_EQ(encodeTypeVideoMax, 20u);
    EXPECT_EQ(encodeTypePcm, 21u);
    EXPECT_EQ(encodeTypeG729, 22u);
    EXPECT_EQ(encodeTypeIma, 23u);
    EXPECT_EQ(encodeTypeMulaw, 24u);
    EXPECT_EQ(encodeTypeG721, 25u);
    EXPECT_EQ(encodeTypeVmis, 26u);
    EXPECT_EQ(encodeTypeAdpcm, 27u);
    EXPECT_EQ(encodeTypeG711a, 28u);
    EXPECT_EQ(encodeTypeAmr, 29u);
    EXPECT_EQ(encodeTypePcm16, 30u);
    EXPECT_EQ(encodeTypeG711u, 31u);
    EXPECT_EQ(encodeTypeG723, 32u);
    EXPECT_EQ(encodeTypeAac, 33u);
    EXPECT_EQ(encodeTypeG726_40, 34u);
    EXPECT_EQ(encodeTypeG726_32, 35u);
    EXPECT_EQ(encodeTypeG726_24, 36u);
    EXPECT_EQ(encodeTypeG726_16, 37u);
    EXPECT_EQ(encodeTypeMp2, 38u);
    EXPECT_EQ(encodeTypeOgg, 39u);
    EXPECT_EQ(encodeTypeMp3, 40u);
    EXPECT_EQ(encodeTypeG722_1, 41u);
    EXPECT_EQ(encodeTypeAudioMax, 42u);

    EXPECT_EQ(frameSubtypeUnknown, 0u);
    EXPECT_EQ(frameSubtypeIFrame, 1u);
    EXPECT_EQ(frameSubtypePFrame, 2u);
    EXPECT_EQ(frameSubtypeBFrame, 3u);
    EXPECT_EQ(frameSubtypeSFrame, 4u);
    EXPECT_EQ(frameSubtypeWatermarkText, 5u);
    EXPECT_EQ(frameSubtypeWatermarkJpeg, 6u);
    EXPECT_EQ(frameSubtypeWatermarkBmp, 7u);
    EXPECT_EQ(frameSubtypeIntlData, 8u);
    EXPECT_EQ(frameSubtypeJpegFrame, 9u);
    EXPECT_EQ(frameSubtypeItsData, 10u);
    EXPECT_EQ(frameSubtypeGpsData, 11u);
    EXPECT_EQ(frameSubtypeIntlexData, 12u);
    EXPECT_EQ(frameSubtypeMotionFullData, 13u);
    EXPECT_EQ(frameSubtypeMotionCardData, 14u);
    EXPECT_EQ(frameSubtypeLightData, 15u);
    EXPECT_EQ(frameSubtypeRawData, 16u);
    EXPECT_EQ(frameSubtypeIndexI, 17u);
    EXPECT_EQ(frameSubtypeMotionData, 18u);
    EXPECT_EQ(frameSubtypeLabelData, 19u);
    EXPECT_EQ(frameSubtypeScreenCaptionData, 20u);
    EXPECT_EQ(frameSubtypeEventData, 21u);
    EXPECT_EQ(frameSubtypeFileHeadData, 22u);
    EXPECT_EQ(frameSubtypeSdpData, 23u);
    EXPECT_EQ(frameSubtypeMax, 24u);

    EXPECT_EQ(errorNoError, 0u);
    EXPECT_EQ(errorInvalidHandle, 1u);
    EXPECT_EQ(errorNoSupport, 2u);
    EXPECT_EQ(errorThread, 3u);
    EXPECT_EQ(errorParam, 4u);
    EXPECT_EQ(errorFileOpen, 5u);
    EXPECT_EQ(errorFileRead, 6u);
    EXPECT_EQ(errorFormat, 7u);
    EXPECT_EQ(errorBufferOverFlow, 8u);
    EXPECT_EQ(errorSysOutOfMem, 9u);
    EXPECT_EQ(errorNoOutPut, 10u);
}

}  // namespace
}  // namespace Orbel::Wrapton
