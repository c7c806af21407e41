// Whole outputs, a field per line, and what tells the two variants apart.
#include "golden/flv/Pieces.h"

namespace GoldenFlv
{
namespace
{

using namespace Orbel::Wrapton;
using Support::H264I;
using Support::H264P;
using Support::Hex;
using Support::Join;

/// File header, metadata and sequence header of kIFrame at 640x360, 25 per second.
Bytes TypedStart(const char* flags)
{
    return Join({
        Hex("46 4C 56"),     // "FLV"
        Hex("01"),           // version
        Hex(flags),          //
        Hex("00 00 00 09"),  // data offset
        Hex("00 00 00 00"),  // PreviousTagSize0

        Hex("12"),                                                  // script tag
        Hex("00 00 FB"),                                            // data size 251
        Hex("00 00 00 00"),                                         // timestamp and its extension
        Hex("00 00 00"),                                            // stream id
        Hex("02 00 0A 6F 6E 4D 65 74 61 44 61 74 61"),              // string "onMetaData"
        Hex("08 00 00 00 0D"),                                      // ECMA array, 13
        Hex("00 08 64 75 72 61 74 69 6F 6E"),                       // "duration"
        Hex("00 00 00 00 00 00 00 00 00"),                          // 0.0
        Hex("00 05 77 69 64 74 68"),                                // "width"
        Hex("00 40 84 00 00 00 00 00 00"),                          // 640.0
        Hex("00 06 68 65 69 67 68 74"),                             // "height"
        Hex("00 40 76 80 00 00 00 00 00"),                          // 360.0
        Hex("00 0D 76 69 64 65 6F 64 61 74 61 72 61 74 65"),        // "videodatarate"
        Hex("00 00 00 00 00 00 00 00 00"),                          // 0.0
        Hex("00 09 66 72 61 6D 65 72 61 74 65"),                    // "framerate"
        Hex("00 40 39 00 00 00 00 00 00"),                          // 25.0
        Hex("00 0C 76 69 64 65 6F 63 6F 64 65 63 69 64"),           // "videocodecid"
        Hex("00 40 1C 00 00 00 00 00 00"),                          // 7.0
        Hex("00 0D 61 75 64 69 6F 64 61 74 61 72 61 74 65"),        // "audiodatarate"
        Hex("00 00 00 00 00 00 00 00 00"),                          // 0.0
        Hex("00 0F 61 75 64 69 6F 73 61 6D 70 6C 65 72 61 74 65"),  // "audiosamplerate"
        Hex("00 00 00 00 00 00 00 00 00"),                          // 0.0
        Hex("00 00 00 00 00 00 00 00 00"),                          // sample size 0.0, no name
        Hex("00 06 73 74 65 72 65 6F"),                             // "stereo"
        Hex("01 00"),                                               // false
        Hex("00 0C 61 75 64 69 6F 63 6F 64 65 63 69 64"),           // "audiocodecid"
        Hex("00 00 00 00 00 00 00 00 00"),                          // 0.0
        Hex("00 08 66 69 6C 65 73 69 7A 65"),                       // "filesize"
        Hex("00 00 00 00 00 00 00 00 00"),                          // 0.0
        Hex("00 00 09"),                                            // object end
        Hex("00 00 01 06"),                                         // previous tag size 262

        Hex("09"),           // video tag
        Hex("00 00 18"),     // data size 24
        Hex("00 00 00 00"),  // timestamp
        Hex("00 00 00"),     // stream id
        Hex("17"),           // key frame, AVC
        Hex("00"),           // sequence header
        Hex("00 00 00"),     // composition time
        Hex("01"),           // configuration version
        Hex("42 C0 1E"),     // profile, compatibility, level
        Hex("FF"),           // 4-byte lengths
        Hex("E1"),           // 1 SPS
        Hex("00 04 67 42 C0 1E"),
        Hex("01"),  // 1 PPS
        Hex("00 04 68 CE 3C 80"),
        Hex("00 00 00 23"),  // previous tag size 35
    });
}

const Bytes kTypedIFrame = Join({
    Hex("09"),                       // video tag
    Hex("00 00 1C"),                 // data size 28
    Hex("00 00 00 00"),              // timestamp
    Hex("00 00 00"),                 // stream id
    Hex("17"),                       // key frame, AVC
    Hex("01"),                       // NAL units
    Hex("00 00 00"),                 // composition time
    Hex("00 00 00 04 67 42 C0 1E"),  // SPS
    Hex("00 00 00 04 68 CE 3C 80"),  // PPS
    Hex("00 00 00 03 65 88 84"),     // slice
    Hex("00 00 00 27"),              // previous tag size 39
});

const Bytes kTypedPFrame = Join({
    Hex("09"),                    // video tag
    Hex("00 00 0C"),              // data size 12
    Hex("00 00 28 00"),           // timestamp 40
    Hex("00 00 00"),              // stream id
    Hex("27"),                    // inter frame, AVC
    Hex("01"),                    // NAL units
    Hex("00 00 00"),              // composition time
    Hex("00 00 00 03 41 9A 02"),  // slice
    Hex("00 00 00 17"),           // previous tag size 23
});

const Bytes kTypedAudio = Join({
    Hex("08"),           // audio tag
    Hex("00 00 05"),     // data size 5
    Hex("00 00 00 00"),  // timestamp
    Hex("00 00 00"),     // stream id
    Hex("32"),           // PCM little-endian, rate bits 0, 16 bit, mono
    Hex("11 22 33 44"),  // samples
    Hex("00 00 00 10"),  // previous tag size 16
});

const Bytes kTypedClosing = Join({
    Hex("09"),              // video tag
    Hex("00 00 05"),        // data size 5
    Hex("00 00 50 00"),     // timestamp 80
    Hex("00 00 00"),        // stream id
    Hex("17"),              // key frame, AVC
    Hex("02"),              // end of sequence
    Hex("00 00 00"),        // composition time
    Hex("00 00 00 10"),     // previous tag size 16
    Hex("46 4C 56 01 05"),  // "FLV", version 1, audio and video
    Hex("00 00 00 09 00 00 00 00"),
    Hex("12 00 00 FB 00 00 00 00 00 00 00"),                    // script tag of 251 bytes
    Hex("02 00 0A 6F 6E 4D 65 74 61 44 61 74 61"),              // string "onMetaData"
    Hex("08 00 00 00 0D"),                                      // ECMA array, 13
    Hex("00 08 64 75 72 61 74 69 6F 6E"),                       // "duration"
    Hex("00 3F B4 7A E1 47 AE 14 7B"),                          // 0.08
    Hex("00 05 77 69 64 74 68"),                                // "width"
    Hex("00 40 84 00 00 00 00 00 00"),                          // 640.0
    Hex("00 06 68 65 69 67 68 74"),                             // "height"
    Hex("00 40 76 80 00 00 00 00 00"),                          // 360.0
    Hex("00 0D 76 69 64 65 6F 64 61 74 61 72 61 74 65"),        // "videodatarate"
    Hex("00 00 00 00 00 00 00 00 00"),                          // 0.0
    Hex("00 09 66 72 61 6D 65 72 61 74 65"),                    // "framerate"
    Hex("00 40 39 00 00 00 00 00 00"),                          // 25.0
    Hex("00 0C 76 69 64 65 6F 63 6F 64 65 63 69 64"),           // "videocodecid"
    Hex("00 40 1C 00 00 00 00 00 00"),                          // 7.0
    Hex("00 0D 61 75 64 69 6F 64 61 74 61 72 61 74 65"),        // "audiodatarate"
    Hex("00 00 00 00 00 00 00 00 00"),                          // 0.0
    Hex("00 0F 61 75 64 69 6F 73 61 6D 70 6C 65 72 61 74 65"),  // "audiosamplerate"
    Hex("00 40 BF 40 00 00 00 00 00"),                          // 8000.0
    Hex("00 40 30 00 00 00 00 00 00"),                          // sample size 16.0, no name
    Hex("00 06 73 74 65 72 65 6F"),                             // "stereo"
    Hex("01 00"),                                               // false
    Hex("00 0C 61 75 64 69 6F 63 6F 64 65 63 69 64"),           // "audiocodecid"
    Hex("00 40 08 00 00 00 00 00 00"),                          // 3.0
    Hex("00 08 66 69 6C 65 73 69 7A 65"),                       // "filesize"
    Hex("00 40 7A C0 00 00 00 00 00"),                          // 428.0
    Hex("00 00 09"),                                            // object end
    Hex("00 00 01 06"),                                         // previous tag size 262
});

TEST(FlvFile, IsTheseBytes)
{
    Recording recording(SG_STREAM_TYPE_FLV);
    EXPECT_EQ(recording.Calls().Header(), SG_ERR_NOERR);
    EXPECT_TRUE(recording.Blocks().empty());
    recording.Input(H264I(kIFrame)).Input(Pcm16(Hex("11 22 33 44"))).Input(H264P(kPFrame));
    recording.Tailer();
    EXPECT_TRUE(Support::Same(
        recording.File(),
        Join({TypedStart("01"), kTypedIFrame, kTypedAudio, kTypedPFrame, kTypedClosing})));
}

TEST(FlvStream, IsTheseBytes)
{
    Recording recording(SG_STREAM_TYPE_STREAM_FLV);
    EXPECT_EQ(recording.Calls().Header(), SG_ERR_NOERR);
    recording.Input(H264I(kIFrame)).Input(Pcm16(Hex("11 22 33 44"))).Input(H264P(kPFrame));
    recording.Tailer();
    EXPECT_TRUE(Support::Same(recording.File(),
                              Join({TypedStart("05"), kTypedIFrame, kTypedAudio, kTypedPFrame})));
}

class EveryVariant : public ::testing::TestWithParam<uint32_t>
{
};
INSTANTIATE_TEST_SUITE_P(Flv,
                         EveryVariant,
                         ::testing::Values(SG_STREAM_TYPE_FLV, SG_STREAM_TYPE_STREAM_FLV),
                         [](const auto& variant)
                         { return variant.param == SG_STREAM_TYPE_FLV ? "File" : "Stream"; });

TEST_P(EveryVariant, EmitsOneAppendedBlockPerFrame)
{
    Recording recording(GetParam());
    recording.Input(H264I(kIFrame)).Input(Pcm16(Hex("11 22"))).Input(H264P(kPFrame));
    const uint32_t flags = GetParam() == SG_STREAM_TYPE_FLV ? 1 : 5;
    ASSERT_EQ(recording.Blocks().size(), 3u);
    EXPECT_TRUE(
        IsAppended(recording.Blocks()[0], Join({Start(flags), VideoTag(0, true, kIUnits)})));
    EXPECT_TRUE(IsAppended(recording.Blocks()[1], AudioTag(0, 0x32, Hex("11 22"))));
    EXPECT_TRUE(IsAppended(recording.Blocks()[2], VideoTag(40, false, kPUnits)));
}

TEST_P(EveryVariant, NeedsNoHeaderCallAndTakesAnyNumberOfThem)
{
    Recording plain(GetParam());
    plain.Input(H264I(kIFrame)).Input(H264P(kPFrame)).Tailer();

    Recording recording(GetParam());
    EXPECT_EQ(recording.Calls().HeaderWith(nullptr), SG_ERR_NOERR);
    recording.Input(H264I(kIFrame));
    EXPECT_EQ(recording.Calls().Header(1000), SG_ERR_NOERR);
    recording.Input(H264P(kPFrame)).Tailer();
    EXPECT_TRUE(Support::Same(recording.File(), plain.File()));
}

TEST_P(EveryVariant, DropsFramesAheadOfTheFirstIFrame)
{
    Recording recording(GetParam());
    recording.Input(H264P(kPFrame)).Input(Pcm16(Hex("11 22")));
    recording.Input(H264I(kIFrame).As(SG_FRAME_SUB_TYPE_B));
    recording.Input(H264I(kIFrame).As(SG_FRAME_SUB_TYPE_JPEG_FRAME));
    EXPECT_TRUE(recording.Blocks().empty());
    recording.Input(H264I(kIFrame));
    const uint32_t flags = GetParam() == SG_STREAM_TYPE_FLV ? 1 : 5;
    EXPECT_TRUE(Support::Same(recording.Fresh(), Join({Start(flags), VideoTag(0, true, kIUnits)})));
}

TEST_P(EveryVariant, GivesNoBackup)
{
    Recording recording(GetParam());
    recording.Input(H264I(kIFrame));
    SGOutputData backup{};
    backup.data_size = 7;
    EXPECT_EQ(recording.Calls().Backup(backup), SG_ERR_NOERR);
    EXPECT_EQ(backup.data_pointer, nullptr);
    EXPECT_EQ(backup.data_size, 0);
}

TEST_P(EveryVariant, HeedsNoAnswerOfTheSink)
{
    Recording whole(GetParam());
    whole.Input(H264I(kIFrame)).Input(Pcm16(Hex("11 22"))).Tailer();
    for (const int32_t change : {-1000, -1, 1})
    {
        Support::ResizingSink sink([=](std::size_t, int32_t size) { return size + change; });
        Support::Recorder recorder(GetParam(), sink);
        recorder.Input(H264I(kIFrame));
        recorder.Input(Pcm16(Hex("11 22")));
        recorder.Tailer();
        ASSERT_EQ(sink.Blocks().size(), whole.Blocks().size());
        for (std::size_t i = 0; i < whole.Blocks().size(); ++i)
        {
            EXPECT_TRUE(IsAppended(sink.Blocks()[i], whole.Blocks()[i].data)) << change;
        }
    }
}

TEST_P(EveryVariant, PrintsNothing)
{
    ::testing::internal::CaptureStdout();
    Recording recording(GetParam());
    recording.Input(H264I(kIFrame)).Input(Pcm16(Hex("11 22"))).Tailer();
    recording.Calls().Destroy();
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
}

}  // namespace
}  // namespace GoldenFlv
