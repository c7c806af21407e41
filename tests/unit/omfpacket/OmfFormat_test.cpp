#include "omfpacket/OmfFormat.h"

#include "Wrapton.h"
#include "omfpacket/OmfExHeader.h"
#include "support/Bytes.h"

namespace Orbel::Wrapton
{
namespace
{

using Support::Bytes;
using Support::Hex;
using Support::Same;
using Support::Text;

TEST(OmfFormat, EncodingsGoThereAndBack)
{
    for (const uint32_t encode : {SG_ENCODE_VIDEO_MPEG4,
                                  SG_ENCODE_VIDEO_HI_H264,
                                  SG_ENCODE_VIDEO_JPEG,
                                  SG_ENCODE_VIDEO_QV_H264,
                                  SG_ENCODE_VIDEO_SVAC,
                                  SG_ENCODE_VIDEO_QV_H265,
                                  SG_ENCODE_VIDEO_H263,
                                  SG_ENCODE_VIDEO_HIK_H264})
    {
        EXPECT_NE(OmfVideoEncode(encode), 0u);
        EXPECT_EQ(SgVideoEncode(OmfVideoEncode(encode)), encode);
    }
    for (const uint32_t number : {0u, 3u, 4u, 6u, 7u, 9u, 10u, 15u, 255u})
    {
        EXPECT_EQ(SgVideoEncode(static_cast<uint8_t>(number)), uint32_t{SG_ENCODE_VIDEO_UNKNOWN});
    }
}

TEST(OmfFormat, RatesGoThereAndBack)
{
    for (uint8_t index = 0; index < 10; ++index)
    {
        EXPECT_EQ(OmfSampleRateIndex(OmfSampleRate(index)), index);
    }
    EXPECT_EQ(OmfSampleRate(9), 48000u);
    EXPECT_EQ(OmfSampleRate(10), 0u);
    EXPECT_EQ(OmfSampleRate(255), 0u);
}

TEST(OmfFormat, CheckValueKnowsThreeTypes)
{
    const Bytes digits = Text("123456789");
    EXPECT_EQ(OmfCheckValue(kOmfCheckSum, digits), 0x34333231u + 0x38373635u + 0x39u);
    EXPECT_EQ(OmfCheckValue(kOmfCheckXor, digits), 0x31u);
    EXPECT_EQ(OmfCheckValue(kOmfCheckCrc, digits), 0xCBF43926u);
    EXPECT_EQ(OmfCheckValue(3, digits), 0u);
    EXPECT_EQ(OmfCheckValue(255, digits), 0u);
}

Bytes DataCheck(uint8_t type)
{
    Bytes bytes(8);
    CLsbCursor w(bytes);
    const Bytes digits = Text("123456789");
    w.PatchU32(AddExHeaderDataCheck(w, type), OmfCheckValue(type, digits));
    EXPECT_EQ(w.Produced(), bytes.size());
    return bytes;
}

TEST(OmfFormat, DataCheckHeaderHoldsValueAndType)
{
    EXPECT_TRUE(Same(DataCheck(0), Hex("88 9F 68 6A 6C 00 00 00")));
    EXPECT_TRUE(Same(DataCheck(1), Hex("88 31 00 00 00 00 00 01")));
    EXPECT_TRUE(Same(DataCheck(2), Hex("88 26 39 F4 CB 00 00 02")));
    EXPECT_TRUE(Same(DataCheck(3), Hex("88 00 00 00 00 00 00 03")));
}

}  // namespace
}  // namespace Orbel::Wrapton
