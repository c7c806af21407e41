// The two variants as a whole: blocks, their places, the tailer and what comes behind it.
#include "golden/asf/Pieces.h"

namespace GoldenAsf
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Join;
using Support::Payload;

TEST(AsfFile, IsHeaderPacketsIndexAndTheHeaderAgain)
{
    const Bytes first = Payload(5000, 1);
    const Bytes second = Payload(100, 2);
    const Bytes sound = Payload(640, 3);
    Recording recording(SG_STREAM_TYPE_ASF);
    EXPECT_EQ(recording.Calls().Header(), SG_ERR_NOERR);
    EXPECT_TRUE(recording.Blocks().empty());
    recording.Input(Key(first)).Input(Pcm16(sound)).Input(Inter(second)).Tailer();

    ASSERT_EQ(recording.Blocks().size(), 5u);
    const std::size_t index = kDataStart + 5 * kPacketLen;
    EXPECT_TRUE(IsAt(recording.Blocks()[0], 0, kDataStart + 3 * kPacketLen));
    EXPECT_TRUE(IsAt(recording.Blocks()[1], kDataStart + 3 * kPacketLen, kPacketLen));
    EXPECT_TRUE(IsAt(recording.Blocks()[2], kDataStart + 4 * kPacketLen, kPacketLen));
    EXPECT_TRUE(IsAt(recording.Blocks()[3], index, 56 + 6));
    EXPECT_TRUE(IsAt(recording.Blocks()[4], 0, kDataStart));

    EXPECT_TRUE(Support::Same(recording.Masked(recording.Blocks()[0]),
                              Join({Header({}), Packets(kKey, 0, 0, first)})));
    HeaderValues closing;
    closing.fileSize = index + 56 + 6;
    closing.packets = 5;
    closing.duration = 40 * 10000;
    closing.dataPackets = 5;
    closing.audio = AudioValues{};
    EXPECT_TRUE(Support::Same(recording.Masked(recording.Blocks()[4]), Header(closing)));
    EXPECT_TRUE(Support::Same(recording.File(),
                              Join({Header(closing),
                                    Packets(kKey, 0, 0, first),
                                    Packets(kSound, 0, 0, sound),
                                    Packets(kInter, 1, 40, second),
                                    Index({{0, 3}})})));
}

TEST(AsfFile, RepeatsTheDateOfTheFirstHeader)
{
    Recording recording(SG_STREAM_TYPE_ASF);
    recording.Input(Key(Payload(10))).Tailer();
    const Bytes& first = recording.Blocks().front().data;
    const Bytes& closing = recording.Blocks().back().data;
    EXPECT_TRUE(Support::Same(Support::Slice(closing, 78, 8), Support::Slice(first, 78, 8)));
}

TEST(AsfStream, HasABroadcastHeaderAndNoTailer)
{
    const Bytes first = Payload(5000, 1);
    const Bytes sound = Payload(640, 3);
    Recording recording(SG_STREAM_TYPE_STREAM_ASF);
    recording.Input(Key(first)).Input(Pcm16(sound)).Input(Inter(first)).Tailer();
    ASSERT_EQ(recording.Blocks().size(), 3u);
    EXPECT_TRUE(IsAt(recording.Blocks()[0], 0, kDataStart + 3 * kPacketLen));
    EXPECT_TRUE(IsAt(recording.Blocks()[1], kDataStart + 3 * kPacketLen, kPacketLen));
    EXPECT_TRUE(IsAt(recording.Blocks()[2], kDataStart + 4 * kPacketLen, 3 * kPacketLen));
    EXPECT_TRUE(Support::Same(recording.File(),
                              Join({Header(Broadcast()),
                                    Packets(kKey, 0, 0, first),
                                    Packets(kSound, 0, 0, sound),
                                    Packets(kInter, 1, 40, first)})));
}

class EveryVariant : public ::testing::TestWithParam<uint32_t>
{
protected:
    static HeaderValues FirstHeader()
    {
        return GetParam() == SG_STREAM_TYPE_ASF ? HeaderValues{} : Broadcast();
    }
};
INSTANTIATE_TEST_SUITE_P(Asf,
                         EveryVariant,
                         ::testing::Values(SG_STREAM_TYPE_ASF, SG_STREAM_TYPE_STREAM_ASF),
                         [](const auto& variant)
                         { return variant.param == SG_STREAM_TYPE_ASF ? "File" : "Stream"; });

TEST_P(EveryVariant, EmitsAnEmptyBlockForAFrameAheadOfTheFirstKeyFrame)
{
    Recording recording(GetParam());
    for (const uint32_t subType : {1u, 2u, 9u, 0xFFFFFFFFu})
    {
        recording.Input(Inter(Payload(3000)).As(subType));
        EXPECT_TRUE(IsAt(recording.Blocks().back(), 0, 0)) << subType;
    }
    recording.Input(Inter(Payload(5 << 20)));  // no matter how large
    ASSERT_EQ(recording.Blocks().size(), 5u);
    EXPECT_TRUE(IsAt(recording.Blocks().back(), 0, 0));
    // They count as nothing.
    recording.Input(Key(Payload(10)));
    EXPECT_TRUE(Support::Same(recording.Fresh(),
                              Join({Header(FirstHeader()), Packets(kKey, 0, 0, Payload(10))})));
}

TEST_P(EveryVariant, TailerAheadOfAnyKeyFrameEmitsNothing)
{
    Recording recording(GetParam());
    recording.Tailer();
    recording.Input(Pcm16(Payload(100))).Tailer();
    EXPECT_TRUE(recording.Blocks().empty());
}

TEST_P(EveryVariant, NeedsNoHeaderCallAndTakesAnyNumberOfThem)
{
    Recording plain(GetParam());
    plain.Input(Key(Payload(10))).Input(Inter(Payload(20))).Tailer();

    Recording recording(GetParam());
    EXPECT_EQ(recording.Calls().HeaderWith(nullptr), SG_ERR_NOERR);
    recording.Input(Key(Payload(10)));
    EXPECT_EQ(recording.Calls().Header(1000), SG_ERR_NOERR);
    recording.Input(Inter(Payload(20))).Tailer();
    EXPECT_TRUE(Support::Same(recording.File(), plain.File()));
    EXPECT_EQ(recording.Blocks().size(), plain.Blocks().size());
}

TEST_P(EveryVariant, GivesNoBackup)
{
    Recording recording(GetParam());
    recording.Input(Key(Payload(10)));
    SGOutputData backup{};
    backup.data_size = 7;
    EXPECT_EQ(recording.Calls().Backup(backup), SG_ERR_NOERR);
    EXPECT_EQ(backup.data_pointer, nullptr);
    EXPECT_EQ(backup.data_size, 0);
}

TEST_P(EveryVariant, PrintsNothing)
{
    ::testing::internal::CaptureStdout();
    Recording recording(GetParam());
    recording.Input(Key(Payload(10))).Input(Pcm16(Payload(10))).Tailer();
    recording.Calls().Destroy();
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
}

TEST_P(EveryVariant, CountsPositionsByWhatTheSinkTook)
{
    Support::ResizingSink sink([](std::size_t number, int32_t size)
                               { return number == 0   ? size - 76
                                        : number == 1 ? -5
                                                      : size + 7; });
    Support::Recorder recorder(GetParam(), sink);
    for (int i = 0; i < 4; ++i)
    {
        recorder.Input(i == 0 ? Key(Payload(10)) : Inter(Payload(10)));
    }
    ASSERT_EQ(sink.Blocks().size(), 4u);
    EXPECT_EQ(sink.Blocks()[1].position, 818 + 2000);
    EXPECT_EQ(sink.Blocks()[2].position, 818 + 2000);
    EXPECT_EQ(sink.Blocks()[3].position, 818 + 2000 + 2076);
    recorder.Tailer();
    if (GetParam() == SG_STREAM_TYPE_ASF)
    {
        ASSERT_EQ(sink.Blocks().size(), 6u);
        const uint64_t end = 818 + 2000 + 2 * 2076;
        EXPECT_TRUE(IsAt(sink.Blocks()[4], end, 62));
        EXPECT_TRUE(IsAt(sink.Blocks()[5], 0, kDataStart));
        // The file size tells what was taken, the counts what was offered.
        EXPECT_TRUE(
            Support::Same(Support::Slice(sink.Blocks()[5].data, 70, 8), Support::Lsb64(end + 62)));
        EXPECT_TRUE(Support::Same(Support::Slice(sink.Blocks()[5].data, 86, 8), Support::Lsb64(4)));
        EXPECT_TRUE(Support::Same(Support::Slice(sink.Blocks()[5].data, 768 + 16, 8),
                                  Support::Lsb64(50 + 4 * 2076)));
    }
}

TEST(AsfTailer, CountsInTheFileSizeOnlyWhatIsTakenOfTheIndex)
{
    Support::ResizingSink sink([](std::size_t number, int32_t size)
                               { return number == 1 ? 6 : size; });
    Support::Recorder recorder(SG_STREAM_TYPE_ASF, sink);
    recorder.Input(Key(Payload(10)));
    recorder.Tailer();
    EXPECT_TRUE(Support::Same(Support::Slice(sink.Blocks().back().data, 70, 8),
                              Support::Lsb64(818 + 2076 + 6)));
}

TEST(AsfTailer, LetsFramesGoOnWhereTheDataEnded)
{
    const Bytes frame = Payload(10);
    Recording recording(SG_STREAM_TYPE_ASF);
    recording.Input(Key(frame)).Tailer();
    recording.Fresh();
    const std::size_t blocks = recording.Blocks().size();
    recording.Input(Inter(frame)).Input(Pcm16(frame)).Tailer();
    EXPECT_TRUE(IsAt(recording.Blocks()[blocks], kDataStart + kPacketLen, kPacketLen));
    EXPECT_TRUE(IsAt(recording.Blocks()[blocks + 1], kDataStart + 2 * kPacketLen, kPacketLen));
    EXPECT_TRUE(IsAt(recording.Blocks()[blocks + 2], kDataStart + 3 * kPacketLen, 62));
    HeaderValues closing;
    closing.fileSize = kDataStart + 3 * kPacketLen + 62;
    closing.packets = 3;
    closing.duration = 40 * 10000;
    closing.dataPackets = 3;
    closing.audio = AudioValues{};
    EXPECT_TRUE(Support::Same(recording.File(),
                              Join({Header(closing),
                                    Packets(kKey, 0, 0, frame),
                                    Packets(kInter, 1, 40, frame),
                                    Packets(kSound, 0, 0, frame),
                                    Index({{0, 1}})})));
}

TEST(AsfTailer, ComesAgainAtTheSamePlace)
{
    Recording recording(SG_STREAM_TYPE_ASF);
    recording.Input(Key(Payload(10))).Input(Inter(Payload(10))).Tailer();
    const Bytes once = recording.File();
    recording.Tailer();
    EXPECT_TRUE(Support::Same(recording.File(), once));
    ASSERT_EQ(recording.Blocks().size(), 6u);
    EXPECT_EQ(recording.Blocks()[4].position, recording.Blocks()[2].position);
}

}  // namespace
}  // namespace GoldenAsf
