// avc1 and avcC.
#include "golden/mp4/Recording.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using Support::H264I;
using Support::H264P;
using Support::Hex;
using Support::Join;
using Support::Msb16;
using Support::Nal;
using Support::Payload;
using Support::Same;
using Support::U8;
using Support::Video;

class AvcEntry : public EveryFlavour
{
};
INSTANTIATE_FLAVOURS(AvcEntry);

/// The avcC of a recording whose first I frame is @p annexB.
Bytes AvcCOf(const Bytes& annexB)
{
    Recording recording(kMp4);
    recording.Header().Input(H264I(annexB)).Tailer();
    return recording.VideoTable("stsd/avc1/avcC");
}

/// A parameter set of @p size bytes whose bytes 1 to 3 are 64 00 28.
Bytes ParameterSet(uint32_t header, std::size_t size)
{
    Bytes unit = Join({U8(header), Hex("64 00 28"), Payload(300)});
    unit.resize(size);
    return unit;
}

TEST_P(AvcEntry, HoldsThePictureAndTheParameterSets)
{
    Recording recording(GetParam());
    recording.Header().Input(H264I(kIFrame)).Tailer();
    const Bytes expected = Box(16 + 8 + 78 + 29,
                               "stsd",
                               {
                                   Hex("00 00 00 00"),  // version, flags
                                   Hex("00 00 00 01"),  // entry_count
                                   Hex("00 00 00 73"),  // size of avc1: 8 + 78 + 29
                                   Support::Text("avc1"),
                                   VisualEntry(640, 360),
                                   Hex("00 00 00 1D"),  // size of avcC: 8 + 11 + 6 + 4
                                   Support::Text("avcC"),
                                   Hex("01"),     // configurationVersion
                                   Hex("42"),     // AVCProfileIndication, byte 1 of the SPS
                                   Hex("C0"),     // profile_compatibility, byte 2
                                   Hex("1E"),     // AVCLevelIndication, byte 3
                                   Hex("FF"),     // lengthSizeMinusOne 3
                                   Hex("E1"),     // one SPS
                                   Hex("00 06"),  // its length
                                   Hex("67 42 C0 1E 95 A0"),
                                   Hex("01"),     // one PPS
                                   Hex("00 04"),  // its length
                                   Hex("68 CE 3C 80"),
                               });
    EXPECT_TRUE(Same(recording.VideoTable("stsd"), expected));
    EXPECT_TRUE(Same(expected, Stsd(Avc1(640, 360, AvcC(kSps, kPps)))));
}

TEST_P(AvcEntry, IsTheSameForBothH264Encodings)
{
    Recording recording(GetParam());
    recording.Header().Input(Video(SG_ENCODE_VIDEO_QV_H264, 0, kIFrame)).Tailer();
    EXPECT_TRUE(Same(recording.VideoTable("stsd"), Stsd(Avc1(640, 360, AvcC(kSps, kPps)))));
}

/// avcC without SPS: Main profile, level 3.0.
Bytes AvcCWithout(const Bytes& ppsPart)
{
    return BoxOf("avcC",
                 {
                     Hex("01"),     // configurationVersion
                     Hex("4D"),     // AVCProfileIndication 77
                     Hex("40"),     // profile_compatibility
                     Hex("1E"),     // AVCLevelIndication 30
                     Hex("FF"),     // lengthSizeMinusOne 3
                     Hex("E0"),     // no SPS
                     Hex("00 00"),  // its length
                     ppsPart,
                 });
}

TEST(AvcDecoderConfig, WithoutParameterSetsHasCountsAndLengthsOfZero)
{
    EXPECT_TRUE(Same(AvcCOf(Nal(kIdr)), AvcCWithout(Hex("00 00 00"))));
}

TEST(AvcDecoderConfig, WithoutSpsKeepsTheDefaultProfile)
{
    EXPECT_TRUE(
        Same(AvcCOf(Join({Nal(kPps), Nal(kIdr)})), AvcCWithout(Join({Hex("01 00 04"), kPps}))));
}

TEST(AvcDecoderConfig, WithoutPpsHasTheSpsAlone)
{
    EXPECT_TRUE(Same(AvcCOf(Join({Nal(kSps), Nal(kIdr)})),
                     Box(25,
                         "avcC",
                         {
                             Hex("01 42 C0 1E FF"),  // from the SPS
                             Hex("E1 00 06"),        // one SPS, its length
                             kSps,
                             Hex("00 00 00"),  // no PPS, its length
                         })));
}

TEST(AvcDecoderConfig, TakesTheFirstOfEachParameterSet)
{
    const Bytes other = Hex("67 64 00 28 11");
    EXPECT_TRUE(Same(AvcCOf(Join({Nal(kSps), Nal(other), Nal(kPps), Nal(Hex("68 11")), Nal(kIdr)})),
                     AvcC(kSps, kPps)));
}

TEST(AvcDecoderConfig, FindsThreeByteStartCodes)
{
    const Bytes code = Hex("00 00 01");
    EXPECT_TRUE(Same(AvcCOf(Join({code, kSps, code, kPps, code, kIdr})), AvcC(kSps, kPps)));
}

TEST(AvcDecoderConfig, IgnoresTheReferenceIdcOfTheHeaderByte)
{
    const Bytes sps = Hex("27 42 C0 1E 95");
    const Bytes pps = Hex("28 CE 3C 80");
    EXPECT_TRUE(Same(AvcCOf(Join({Nal(sps), Nal(pps), Nal(kIdr)})), AvcC(sps, pps)));
}

TEST(AvcDecoderConfig, TakesAParameterSetThatEndsTheFrame)
{
    EXPECT_TRUE(Same(AvcCOf(Join({Nal(kIdr), Nal(kSps), Nal(kPps)})), AvcC(kSps, kPps)));
}

TEST(AvcDecoderConfig, KeepsTheDefaultProfileForAnSpsBelowFourBytes)
{
    for (const std::size_t size : {1u, 2u, 3u})
    {
        const Bytes sps = Support::Slice(kSps, 0, size);
        EXPECT_TRUE(Same(AvcCOf(Join({Nal(sps), Nal(kPps), Nal(kIdr)})),
                         BoxOf("avcC",
                               {
                                   Hex("01 4D 40 1E FF"),  // defaults
                                   Hex("E1"),              // one SPS
                                   Msb16(static_cast<uint32_t>(size)),
                                   sps,
                                   Hex("01 00 04"),  // one PPS, its length
                                   kPps,
                               })))
            << size;
    }
}

TEST(AvcDecoderConfig, TakesTheProfileFromAnSpsOfFourBytes)
{
    const Bytes sps = Support::Slice(kSps, 0, 4);
    EXPECT_TRUE(Same(AvcCOf(Join({Nal(sps), Nal(kPps), Nal(kIdr)})), AvcC(sps, kPps)));
}

TEST(AvcDecoderConfig, TakesAnSpsOfUpTo256Bytes)
{
    for (const std::size_t size : {255u, 256u})
    {
        const Bytes sps = ParameterSet(0x67, size);
        EXPECT_TRUE(Same(AvcCOf(Join({Nal(sps), Nal(kPps), Nal(kIdr)})), AvcC(sps, kPps))) << size;
    }
    EXPECT_TRUE(Same(AvcCOf(Join({Nal(ParameterSet(0x67, 257)), Nal(kPps), Nal(kIdr)})),
                     AvcCWithout(Join({Hex("01 00 04"), kPps}))));
}

TEST(AvcDecoderConfig, TakesAPpsOfUpTo256Bytes)
{
    for (const std::size_t size : {255u, 256u})
    {
        const Bytes pps = ParameterSet(0x68, size);
        EXPECT_TRUE(Same(AvcCOf(Join({Nal(kSps), Nal(pps), Nal(kIdr)})), AvcC(kSps, pps))) << size;
    }
    EXPECT_TRUE(Same(AvcCOf(Join({Nal(kSps), Nal(ParameterSet(0x68, 257)), Nal(kIdr)})),
                     Box(25, "avcC", {Hex("01 42 C0 1E FF E1 00 06"), kSps, Hex("00 00 00")})));
}

TEST(AvcDecoderConfig, IsTakenOnceFromTheFirstIFrame)
{
    Recording recording(kMp4);
    recording.Header()
        .Input(H264P(Join({Nal(Hex("67 11 22 33")), kPFrame})))  // dropped
        .Input(H264I(kIFrame))
        .Input(H264I(Join({Nal(Hex("67 64 00 28 11")), Nal(Hex("68 11")), Nal(kIdr)})))
        .Tailer();
    EXPECT_TRUE(Same(recording.VideoTable("stsd/avc1/avcC"), AvcC(kSps, kPps)));
}

TEST(AvcDecoderConfig, IsNotSearchedForAgainWhenTheFirstIFrameHasNone)
{
    Recording recording(kMp4);
    recording.Header().Input(H264I(Nal(kIdr))).Input(H264I(kIFrame)).Tailer();
    EXPECT_TRUE(Same(recording.VideoTable("stsd/avc1/avcC"), AvcCWithout(Hex("00 00 00"))));
}

}  // namespace
}  // namespace Golden
