// Files past 1 GiB: extension RIFFs, standard indexes and super indexes.
#include "golden/avi/LongRecording.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;

constexpr uint32_t kI = SG_FRAME_SUB_TYPE_I;
constexpr uint32_t kP = SG_FRAME_SUB_TYPE_P;
constexpr uint32_t kB = SG_FRAME_SUB_TYPE_B;
constexpr uint32_t kDelta = 0x80000000;
constexpr uint32_t k256MiB = 256u << 20;
constexpr uint32_t k64MiB = 64u << 20;

TEST(AviOpenDml, RiffOfExactly1GiBStaysOpenAndTheNextChunkClosesIt)
{
    LongRecording recording(k64MiB);
    recording.Header(VideoHeader()).FillFirstRiff();
    ASSERT_EQ(recording.Blocks().size(), 3u + 16u);
    recording.Sink().ForgetBlocks();

    recording.Video(kP, 0);
    const auto& blocks = recording.Blocks();
    ASSERT_EQ(blocks.size(), 6u);
    EXPECT_TRUE(IsChunkBlock(blocks[0], kRiffLimit, "00dc", 0));
    // 17 entries: a chunk of ix00 has 32 + 17 * 8 bytes, of idx1 8 + 17 * 16.
    EXPECT_EQ(blocks[1].position, kRiffLimit + 8);
    EXPECT_EQ(blocks[1].size, 168);
    EXPECT_EQ(blocks[2].position, kRiffLimit + 176);
    EXPECT_EQ(blocks[2].size, 280);
    EXPECT_TRUE(IsBlockAt(blocks[3], 0, RiffHeader(kRiffLimit + 456, "AVI ")));
    EXPECT_TRUE(IsBlockAt(blocks[4], 4116, MoviHeader(kRiffLimit + 176 - 4124)));
    EXPECT_TRUE(
        IsBlockAt(blocks[5], kRiffLimit + 456, Join({RiffHeader(24, "AVIX"), MoviHeader(12)})));
}

TEST(AviOpenDml, FileOfExactly1GiBEndsWithoutOpenDml)
{
    LongRecording recording(k64MiB);
    recording.Header(VideoHeader()).FillFirstRiff();
    recording.Sink().ForgetBlocks();
    recording.Tailer();
    const auto& blocks = recording.Blocks();
    ASSERT_EQ(blocks.size(), 4u);
    EXPECT_EQ(blocks[0].position, kRiffLimit);
    EXPECT_EQ(blocks[0].size, 8 + 16 * 16);
    // Header list: 12 bytes, avih 64, and 124 bytes into the video list its index reservation.
    EXPECT_TRUE(Same(Support::Slice(blocks[3].data, 76 + 124, 1032), Indx("00dc", {})));
    EXPECT_TRUE(Same(Support::Slice(blocks[3].data, 76 + 1156, 8),
                     Join({Support::Text("JUNK"), Support::Lsb32(2864)})));
}

// Three RIFFs, past 2 GiB, with all that leaves the packager behind the headers.
class ThreeRiffs : public ::testing::Test
{
protected:
    static constexpr uint64_t kSecond = 1073746190;
    static constexpr uint64_t kThird = kSecond + 1073742008;

    ThreeRiffs() : m_recording(k256MiB) { m_recording.Header(VideoAndAudioHeader()); }

    /// Four chunks of 256 MiB + 8 and one of 14 bytes, 1073741870 together.
    void FillFirst()
    {
        m_recording.Video(kI, k256MiB).Video(kP, k256MiB).Video(kB, k256MiB);
        m_recording.Sound(5).Video(kI, k256MiB);
    }
    /// Four chunks of 256 MiB + 8, 1073741856 together.
    void FillSecond()
    {
        m_recording.Video(kI, k256MiB).Video(kP, k256MiB).Video(kB, k256MiB).Video(kI, k256MiB);
    }
    /// A chunk of 18 and one of 12 bytes.
    void FillThird() { m_recording.Video(kP, 10).Sound(3); }

    LongRecording m_recording;
};

TEST_F(ThreeRiffs, FirstEndsWithStandardIndexesAndIdx1)
{
    FillFirst();
    const auto& blocks = m_recording.Blocks();
    ASSERT_EQ(blocks.size(), 3u + 5u + 6u);
    EXPECT_TRUE(IsChunkBlock(blocks[3], 4128, "00dc", k256MiB));
    EXPECT_TRUE(IsChunkBlock(blocks[4], 4128 + 268435464, "00dc", k256MiB));
    EXPECT_TRUE(IsChunkBlock(blocks[5], 4128 + 536870928, "00dc", k256MiB));
    EXPECT_TRUE(IsChunkBlock(blocks[6], 4128 + 805306392, "01wb", 5));
    EXPECT_TRUE(IsChunkBlock(blocks[7], 4128 + 805306406, "00dc", k256MiB));
    // Offsets in ix00 and ix01 are those of the data; those in idx1 of the chunk.
    EXPECT_TRUE(IsBlockAt(blocks[8],
                          1073745998,
                          Ix("ix00",
                             "00dc",
                             kMoviCode,
                             {{12, k256MiB},
                              {268435476, k256MiB | kDelta},
                              {536870940, k256MiB},  // kept: a B frame counts as a key frame
                              {805306418, k256MiB}})));
    EXPECT_TRUE(IsBlockAt(blocks[9], 1073746062, Ix("ix01", "01wb", kMoviCode, {{805306404, 5}})));
    EXPECT_TRUE(IsBlockAt(blocks[10],
                          1073746102,
                          Idx1({{"00dc", 16, 4},
                                {"00dc", 0, 268435468},
                                {"00dc", 0, 536870932},
                                {"01wb", 16, 805306396},
                                {"00dc", 16, 805306410}})));
    EXPECT_TRUE(IsBlockAt(blocks[11], 0, RiffHeader(1073746190, "AVI ")));
    // idx1 is not part of the list.
    EXPECT_TRUE(IsBlockAt(blocks[12], 4116, MoviHeader(4 + 1073741870 + 64 + 40)));
    EXPECT_TRUE(IsBlockAt(blocks[13], kSecond, Join({RiffHeader(24, "AVIX"), MoviHeader(12)})));
}

TEST_F(ThreeRiffs, SecondIsClosedTwiceAndHasItsIndexTwice)
{
    FillFirst();
    m_recording.Sink().ForgetBlocks();
    FillSecond();
    const auto& blocks = m_recording.Blocks();
    ASSERT_EQ(blocks.size(), 4u + 2u + 2u + 1u);
    EXPECT_TRUE(IsChunkBlock(blocks[0], kSecond + 24, "00dc", k256MiB));
    EXPECT_TRUE(IsChunkBlock(blocks[3], kSecond + 24 + 805306392, "00dc", k256MiB));
    const Bytes index = Ix(
        "ix00",
        "00dc",
        kSecond + 20,
        {{12, k256MiB}, {268435476, k256MiB | kDelta}, {536870940, k256MiB}, {805306404, k256MiB}});
    EXPECT_TRUE(IsBlockAt(blocks[4], kSecond + 1073741880, index));
    EXPECT_TRUE(IsBlockAt(
        blocks[5],
        kSecond,
        Join({RiffHeader(24 + 1073741856 + 64, "AVIX"), MoviHeader(12 + 1073741856 + 64)})));
    EXPECT_TRUE(IsBlockAt(blocks[6], kSecond + 1073741944, index));
    EXPECT_TRUE(IsBlockAt(
        blocks[7],
        kSecond,
        Join({RiffHeader(24 + 1073741856 + 128, "AVIX"), MoviHeader(12 + 1073741856 + 128)})));
    EXPECT_TRUE(IsBlockAt(blocks[8], kThird, Join({RiffHeader(24, "AVIX"), MoviHeader(12)})));
}

TEST_F(ThreeRiffs, TailerClosesTheLastOnceAndEntersAllIndexesIntoTheHeader)
{
    FillFirst();
    FillSecond();
    FillThird();
    m_recording.Sink().ForgetBlocks();
    m_recording.Tailer();
    const auto& blocks = m_recording.Blocks();
    ASSERT_EQ(blocks.size(), 4u);
    EXPECT_TRUE(
        IsBlockAt(blocks[0], kThird + 54, Ix("ix00", "00dc", kThird + 20, {{12, 10 | kDelta}})));
    EXPECT_TRUE(IsBlockAt(blocks[1], kThird + 94, Ix("ix01", "01wb", kThird + 20, {{30, 3}})));
    EXPECT_TRUE(IsBlockAt(
        blocks[2], kThird, Join({RiffHeader(24 + 30 + 80, "AVIX"), MoviHeader(12 + 30 + 80)})));

    Avih avih = VideoAndAudioAvih();
    avih.maxBytesPerSec = 268435456;  // 25 * 2^30, cut to 32 bits, by 4
    avih.totalFrames = 4;             // those of the first RIFF
    avih.suggestedBufferSize = k256MiB;
    VideoStrl video = VideoStream();
    video.length = 4;
    video.suggestedBufferSize = k256MiB;
    video.index = Indx("00dc",
                       {{1073745998, 64, 4},
                        {kSecond + 1073741944, 64, 4},  // the second copy
                        {kThird + 54, 40, 1}});
    AudioStrl audio = AudioStream();
    audio.length = 1;
    audio.suggestedBufferSize = 5;
    // The second RIFF has no sound and gives no entry.
    audio.index = Indx("01wb", {{1073746062, 40, 1}, {kThird + 94, 40, 1}});
    EXPECT_TRUE(IsBlockAt(
        blocks[3], 12, Hdrl({avih.Chunk(), video.List(), audio.List(), Odml(9), Junk(1462)})));
}

TEST_F(ThreeRiffs, SecondTailerAppendsTheIndexesOnceMore)
{
    FillFirst();
    FillThird();
    m_recording.Tailer();
    m_recording.Sink().ForgetBlocks();
    m_recording.Video(kI, 2).Tailer();
    const auto& blocks = m_recording.Blocks();
    ASSERT_EQ(blocks.size(), 5u);
    // Behind header, 30 bytes of chunks and 80 bytes of indexes.
    EXPECT_TRUE(IsChunkBlock(blocks[0], kSecond + 134, "00dc", 2));
    EXPECT_TRUE(IsBlockAt(
        blocks[1], kSecond + 144, Ix("ix00", "00dc", kSecond + 20, {{12, 10 | kDelta}, {122, 2}})));
    EXPECT_TRUE(IsBlockAt(blocks[2], kSecond + 192, Ix("ix01", "01wb", kSecond + 20, {{30, 3}})));
    EXPECT_TRUE(
        IsBlockAt(blocks[3],
                  kSecond,
                  Join({RiffHeader(24 + 40 + 80 + 88, "AVIX"), MoviHeader(12 + 40 + 80 + 88)})));
    EXPECT_TRUE(
        Same(Support::Slice(blocks[4].data, 76 + 124, 1032),
             Indx("00dc", {{1073745998, 64, 4}, {kSecond + 54, 40, 1}, {kSecond + 144, 48, 2}})));
}

TEST_F(ThreeRiffs, ExtensionTakesNoFrameOfAnotherTypeOrWithoutData)
{
    FillFirst();
    m_recording.Sink().ForgetBlocks();
    SGFrameInfo record = Support::RecordOf(IFrame(0));
    record.frame_type = SG_FRAME_TYPE_EXT;
    EXPECT_EQ(m_recording.Input(record, 100), SG_ERR_NOERR);
    record.frame_type = SG_FRAME_TYPE_VIDEO;
    record.frame_size = 100;
    EXPECT_EQ(SG_InputFrame(m_recording.Calls().Handle(), &record), SG_ERR_NOERR);
    EXPECT_TRUE(m_recording.Blocks().empty());

    unsigned char byte = 0;
    record.frame_pointer = &byte;
    record.frame_size = 0x7FFFFFF7;  // 31 bits are passed by header and padding
    EXPECT_EQ(SG_InputFrame(m_recording.Calls().Handle(), &record), SG_ERR_PARAM_ERR);
    EXPECT_TRUE(m_recording.Blocks().empty());
}

// Kept: the header list has no audio stream, and AAC is not even supported.
TEST(AviOpenDml, ExtensionTakesFramesOfStreamsThatTheHeaderDoesNotKnow)
{
    LongRecording recording(k256MiB);
    recording.NoHeader();
    for (int frame = 0; frame < 4; ++frame)
        recording.Video(kI, k256MiB);
    recording.Sink().ForgetBlocks();
    EXPECT_EQ(recording.Input(Support::RecordOf(Support::Aac({})), 7), SG_ERR_NOERR);
    recording.Tailer();

    const uint64_t base = 4128 + 1073741856 + 64 + 72;
    const auto& blocks = recording.Blocks();
    ASSERT_EQ(blocks.size(), 4u);
    EXPECT_TRUE(IsChunkBlock(blocks[0], base + 24, "01wb", 7));
    EXPECT_TRUE(IsBlockAt(blocks[1], base + 40, Ix("ix01", "01wb", base + 20, {{12, 7}})));
    Avih avih = VideoAvih();
    avih.maxBytesPerSec = 268435456;
    avih.totalFrames = 4;
    avih.suggestedBufferSize = k256MiB;
    VideoStrl video = VideoStream();
    video.length = 4;
    video.suggestedBufferSize = k256MiB;
    video.index = Indx("00dc", {{4128 + 1073741856, 64, 4}});
    EXPECT_TRUE(IsBlockAt(blocks[3], 12, Hdrl({avih.Chunk(), video.List(), Odml(4), Junk(2596)})));
}

// Kept: idx1 counts for the size of the RIFF, which the next call then finds too large, whatever
// frame it brings. The standard index is not written any more, so the super index leads to 0; and
// the tailer had moved the next RIFF on already.
TEST(AviOpenDml, FrameBehindTheTailerOfAFullRiffOpensAnExtension)
{
    LongRecording recording(k64MiB);
    recording.Header(VideoHeader()).FillFirstRiff().Tailer();
    recording.Sink().ForgetBlocks();
    SGFrameInfo record = Support::RecordOf(Support::Ext({}));
    EXPECT_EQ(recording.Input(record, 5), SG_ERR_NOERR);
    constexpr uint32_t kIdx1 = 8 + 16 * 16;
    constexpr uint64_t kBase = 2 * (uint64_t{kRiffLimit} + kIdx1);
    const auto& blocks = recording.Blocks();
    ASSERT_EQ(blocks.size(), 3u);
    EXPECT_TRUE(IsBlockAt(blocks[0], 0, RiffHeader(kRiffLimit + kIdx1, "AVI ")));
    EXPECT_TRUE(IsBlockAt(blocks[1], 4116, MoviHeader(kRiffLimit - 4124)));
    EXPECT_TRUE(IsBlockAt(blocks[2], kBase, Join({RiffHeader(24, "AVIX"), MoviHeader(12)})));

    recording.Video(kP, 6).Tailer();
    ASSERT_EQ(blocks.size(), 3u + 4u);
    EXPECT_TRUE(IsChunkBlock(blocks[3], kBase + 24, "00dc", 6));
    EXPECT_TRUE(
        IsBlockAt(blocks[4], kBase + 38, Ix("ix00", "00dc", kBase + 20, {{12, 6 | kDelta}})));
    EXPECT_TRUE(Same(Support::Slice(blocks[6].data, 76 + 124, 1032),
                     Indx("00dc", {{0, 32 + 16 * 8, 16}, {kBase + 38, 40, 1}})));
}

TEST(AviOpenDml, NewFileAfterATailerForgetsTheExtensions)
{
    LongRecording recording(k256MiB);
    recording.Header(VideoHeader());
    for (int frame = 0; frame < 4; ++frame)
        recording.Video(kI, k256MiB);
    recording.Tailer();
    recording.Sink().ForgetBlocks();
    recording.Header(VideoHeader()).Video(kI, 10).Tailer();
    const auto& blocks = recording.Blocks();
    ASSERT_EQ(blocks.size(), 3u + 1u + 4u);
    EXPECT_TRUE(IsChunkBlock(blocks[3], 4128, "00dc", 10));
    EXPECT_TRUE(IsBlockAt(blocks[5], 0, RiffHeader(4128 + 18 + 24, "AVI ")));
}

}  // namespace
}  // namespace Golden
