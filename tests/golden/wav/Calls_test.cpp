// Results and effects of every call on a WAV handle, in order and out of order.
#include <array>
#include <climits>
#include <cstring>

#include "golden/wav/Recording.h"
#include "support/Allocators.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Bytes;
using Support::Frame;
using Support::Join;
using Support::Payload;
using Support::Recorder;
using Support::RecordOf;
using Support::ResizingSink;
using Support::Same;
using Support::SeekingSink;

constexpr uint32_t kWav = SG_STREAM_TYPE_WAV;

/// A recorder whose first frame has been swallowed, so that the next one is written at 44.
class StartedWav : public ::testing::Test
{
protected:
    StartedWav() : m_recorder(kWav, m_sink)
    {
        m_recorder.Header();
        m_recorder.Input(Pcm16(Payload(4, 9)));
        m_sink.ForgetBlocks();
    }

    /// SG_InputFrame() with a record that @p spoil has changed.
    template <class Spoil>
    int InputSpoiled(Spoil spoil)
    {
        Bytes bytes = Payload(6);
        SGFrameInfo record = RecordOf(Pcm16(bytes));
        record.frame_pointer = bytes.data();
        spoil(record);
        return SG_InputFrame(m_recorder.Handle(), &record);
    }

    SeekingSink m_sink;
    Recorder m_recorder;
};

TEST(WavBeforeHeader, FramesAndTailerAreRefused)
{
    SeekingSink sink;
    Recorder recorder(kWav, sink);
    EXPECT_EQ(recorder.Input(Pcm16(Payload(4))), 3);
    EXPECT_EQ(recorder.Input(Alaw(Payload(4))), 3);
    EXPECT_EQ(recorder.Input(Support::H264I(Payload(4))), 3);
    EXPECT_EQ(recorder.Tailer(), 3);
    EXPECT_TRUE(sink.Blocks().empty());

    // They leave nothing behind: the first frame is still ahead.
    recorder.Header();
    recorder.Input(Pcm16(Payload(4)));
    recorder.Input(Pcm16(Payload(4)));
    recorder.Tailer();
    EXPECT_TRUE(Same(sink.Image(), Join({WavHeader(40, 4), Payload(4)})));
}

TEST_F(StartedWav, RefusesWhatIsNoAudioFrame)
{
    EXPECT_EQ(InputSpoiled([](SGFrameInfo& r) { r.frame_pointer = nullptr; }), 3);
    EXPECT_EQ(InputSpoiled([](SGFrameInfo& r) { r.frame_size = 0; }), 3);
    for (const uint32_t type : {0u, 1u, 3u, 4u, 0x102u, 0xFFFFFFFFu})
    {
        EXPECT_EQ(InputSpoiled([type](SGFrameInfo& r) { r.frame_type = type; }), 3) << type;
    }
    EXPECT_EQ(SG_InputFrame(m_recorder.Handle(), nullptr), 3);
    EXPECT_TRUE(m_sink.Blocks().empty());
    EXPECT_EQ(InputSpoiled([](SGFrameInfo&) {}), 0);
    ASSERT_EQ(m_sink.Blocks().size(), 1u);
    EXPECT_TRUE(IsBlock(m_sink.Blocks()[0], 44, Payload(6)));
}

TEST_F(StartedWav, DropsEveryOtherEncodingWithoutAWord)
{
    for (uint32_t encode = 0; encode < 140; ++encode)
    {
        if (encode == 14 || encode == 16) continue;
        EXPECT_EQ(InputSpoiled([encode](SGFrameInfo& r) { r.frame_encode = encode; }), 0);
    }
    EXPECT_EQ(InputSpoiled([](SGFrameInfo& r) { r.frame_encode = 0xFFFFFFFF; }), 0);
    EXPECT_EQ(InputSpoiled([](SGFrameInfo& r) { r.frame_encode = 16 + 256; }), 0);
    EXPECT_TRUE(m_sink.Blocks().empty());
}

TEST(WavFirstFrame, IsNotSpentOnADroppedEncoding)
{
    SeekingSink sink;
    Recorder recorder(kWav, sink);
    recorder.Header();
    sink.ForgetBlocks();
    EXPECT_EQ(recorder.Input(Support::Audio(SG_ENCODE_AUDIO_G726_32, Payload(8), 8000, 1, 16)), 0);
    EXPECT_EQ(recorder.Input(Support::H264I(Payload(8))), 3);
    EXPECT_TRUE(sink.Blocks().empty());
    recorder.Input(Pcm16(Payload(8)));
    ASSERT_EQ(sink.Blocks().size(), 1u);
    EXPECT_TRUE(IsBlock(sink.Blocks()[0], 0, WavHeader(36, 0)));
}

TEST(WavFirstFrame, MayHaveAnyOfTheTwoEncodings)
{
    for (const Frame& first : {Pcm16(Payload(8)), Alaw(Payload(8))})
    {
        SeekingSink sink;
        Recorder recorder(kWav, sink);
        recorder.Header();
        recorder.Input(first);
        EXPECT_TRUE(Same(sink.Image(), WavHeader(36, 0)));
    }
}

TEST(WavFirstFrame, MayHaveAnySizeBecauseItsBytesAreNotRead)
{
    SeekingSink sink;
    Recorder recorder(kWav, sink);
    recorder.Header();
    sink.ForgetBlocks();
    Bytes bytes = Payload(6);
    SGFrameInfo record = RecordOf(Pcm16(bytes));
    record.frame_pointer = bytes.data();
    record.frame_size = 0x80000000u;
    EXPECT_EQ(SG_InputFrame(recorder.Handle(), &record), 0);
    ASSERT_EQ(sink.Blocks().size(), 1u);
    EXPECT_TRUE(IsBlock(sink.Blocks()[0], 0, WavHeader(36, 0)));
    recorder.Input(Pcm16(Payload(5)));
    EXPECT_TRUE(IsBlock(sink.Blocks().at(1), 44, Payload(5)));
}

TEST_F(StartedWav, IgnoresEverythingElseInTheRecord)
{
    EXPECT_EQ(InputSpoiled(
                  [](SGFrameInfo& r)
                  {
                      r.frame_sub_type = 0xFFFFFFFF;
                      r.frame_time = 0xFFFFFFFF;
                      r.frame_data = 0xFFFFFFFF;
                      r.width = r.heigth = r.frame_rate = 0xFFFFFFFF;
                      r.sample_rate = r.bit_per_sample = r.channels = 0;
                      r.split_info = {1, 100, 100, nullptr};
                      r._3rdstream_header_length = 0xFFFF;
                  }),
              0);
    ASSERT_EQ(m_sink.Blocks().size(), 1u);
    EXPECT_TRUE(IsBlock(m_sink.Blocks()[0], 44, Payload(6)));
}

TEST_F(StartedWav, DropsAFrameThatABlockCannotDescribe)
{
    EXPECT_EQ(InputSpoiled([](SGFrameInfo& r) { r.frame_size = 0x80000000u; }), 0);
    EXPECT_EQ(InputSpoiled([](SGFrameInfo& r) { r.frame_size = 0xFFFFFFFFu; }), 0);
    EXPECT_TRUE(m_sink.Blocks().empty());
    m_recorder.Input(Pcm16(Payload(5)));
    EXPECT_TRUE(IsBlock(m_sink.Blocks().at(0), 44, Payload(5)));
}

TEST_F(StartedWav, WritesTheHeaderAnewAtEveryTailer)
{
    m_recorder.Input(Pcm16(Payload(100, 1)));
    EXPECT_EQ(m_recorder.Tailer(), 0);
    EXPECT_EQ(m_recorder.Tailer(), 0);
    const auto& blocks = m_sink.Blocks();
    ASSERT_EQ(blocks.size(), 3u);
    EXPECT_TRUE(IsBlock(blocks[1], 0, WavHeader(136, 100)));
    EXPECT_TRUE(IsBlock(blocks[2], 0, WavHeader(136, 100)));

    // Frames are taken behind a tailer, too; the next one tells the new sizes.
    EXPECT_EQ(m_recorder.Input(Pcm16(Payload(10, 2))), 0);
    EXPECT_EQ(m_recorder.Tailer(), 0);
    EXPECT_TRUE(Same(m_sink.Image(), Join({WavHeader(146, 110), Payload(100, 1), Payload(10, 2)})));
}

TEST_F(StartedWav, AddsAnother44BytesWithEveryHeader)
{
    m_recorder.Input(Pcm16(Payload(10, 1)));
    m_sink.ForgetBlocks();
    EXPECT_EQ(m_recorder.Header(), 0);
    EXPECT_EQ(m_recorder.Header(), 0);
    m_recorder.Input(Pcm16(Payload(10, 2)));
    m_recorder.Tailer();
    const auto& blocks = m_sink.Blocks();
    ASSERT_EQ(blocks.size(), 4u);
    EXPECT_TRUE(IsBlock(blocks[0], 0, WavHeader(54 - 8, 54 - 44)));
    EXPECT_TRUE(IsBlock(blocks[1], 0, WavHeader(98 - 8, 98 - 44)));
    EXPECT_TRUE(IsBlock(blocks[2], 142, Payload(10, 2)));  // not the first frame any more
    EXPECT_TRUE(IsBlock(blocks[3], 0, WavHeader(152 - 8, 152 - 44)));
}

TEST(WavHeaderCall, CountsEachTimeEvenBeforeTheFirstFrame)
{
    SeekingSink sink;
    Recorder recorder(kWav, sink);
    recorder.Header();
    recorder.Header();
    recorder.Input(Pcm16(Payload(3)));
    const auto& blocks = sink.Blocks();
    ASSERT_EQ(blocks.size(), 3u);
    EXPECT_TRUE(IsBlock(blocks[0], 0, WavHeader(0xFFFFFFF8, 0xFFFFFFD4)));
    EXPECT_TRUE(IsBlock(blocks[1], 0, WavHeader(36, 0)));
    EXPECT_TRUE(IsBlock(blocks[2], 0, WavHeader(80, 44)));
}

TEST_F(StartedWav, GivesNoBackupAndLeavesTheRecordAlone)
{
    SGOutputData backup;
    std::memset(&backup, 0xA5, sizeof(backup));
    const SGOutputData before = backup;
    EXPECT_EQ(m_recorder.Backup(backup), 0);
    EXPECT_EQ(std::memcmp(&backup, &before, sizeof(backup)), 0);
    EXPECT_EQ(SG_GetBackup(m_recorder.Handle(), nullptr), 0);
    EXPECT_TRUE(m_sink.Blocks().empty());
}

TEST(WavPositions, FollowTheSizeThatTheCallbackReportsBack)
{
    // Of each audio block the sink takes 3 bytes, of the second none.
    ResizingSink sink([](std::size_t number, int32_t size)
                      { return number < 2    ? size
                               : number == 3 ? 0
                                             : 3; });
    Recorder recorder(kWav, sink);
    recorder.Header();
    recorder.Input(Pcm16(Payload(10, 1)));
    recorder.Input(Pcm16(Payload(10, 2)));
    recorder.Input(Pcm16(Payload(10, 3)));
    recorder.Input(Pcm16(Payload(10, 4)));
    recorder.Tailer();
    const auto& blocks = sink.Blocks();
    ASSERT_EQ(blocks.size(), 6u);
    EXPECT_TRUE(IsBlock(blocks[2], 44, Payload(10, 2)));
    EXPECT_TRUE(IsBlock(blocks[3], 47, Payload(10, 3)));
    EXPECT_TRUE(IsBlock(blocks[4], 47, Payload(10, 4)));
    EXPECT_TRUE(IsBlock(blocks[5], 0, WavHeader(42, 6)));
}

TEST(WavPositions, CountAHeaderWholeWhateverTheCallbackTook)
{
    ResizingSink sink([](std::size_t, int32_t) { return 0; });
    Recorder recorder(kWav, sink);
    recorder.Header();
    recorder.Input(Pcm16(Payload(10, 1)));
    recorder.Input(Pcm16(Payload(10, 2)));
    recorder.Tailer();
    const auto& blocks = sink.Blocks();
    ASSERT_EQ(blocks.size(), 4u);
    EXPECT_TRUE(IsBlock(blocks[1], 0, WavHeader(36, 0)));
    EXPECT_TRUE(IsBlock(blocks[2], 44, Payload(10, 2)));
    EXPECT_TRUE(IsBlock(blocks[3], 0, WavHeader(36, 0)));
}

TEST(WavMemory, DoesNotComeFromTheCallersAllocator)
{
    Support::AllocatorLog log;
    SeekingSink sink;
    SGCreateParam create = Support::CreateFor(sink);
    create.sg_malloc = &Support::AllocatorLog::Malloc;
    create.sg_free = &Support::AllocatorLog::Free;
    Recorder recorder(kWav, create);
    recorder.Header();
    recorder.Input(Pcm16(Payload(10, 1)));
    recorder.Input(Pcm16(Payload(10, 2)));
    recorder.Tailer();
    recorder.Destroy();
    EXPECT_TRUE(log.Asked().empty());
    EXPECT_TRUE(log.Released().empty());
}

TEST(WavHandle, WritesNothingMoreWhenItIsDestroyedWithoutATailer)
{
    SeekingSink sink;
    Recorder recorder(kWav, sink);
    recorder.Header();
    recorder.Input(Pcm16(Payload(10, 1)));
    recorder.Input(Pcm16(Payload(10, 2)));
    const std::size_t before = sink.Blocks().size();
    EXPECT_EQ(recorder.Destroy(), 0);
    EXPECT_EQ(sink.Blocks().size(), before);
}

TEST(WavHandle, PrintsNothing)
{
    ::testing::internal::CaptureStdout();
    SeekingSink sink;
    Recorder recorder(kWav, sink);
    recorder.Input(Pcm16(Payload(1)));
    recorder.Tailer();
    recorder.Header();
    recorder.Input(Pcm16(Payload(10, 1)));
    recorder.Input(Pcm16(Payload(10, 2)));
    recorder.Tailer();
    recorder.Destroy();
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
}

}  // namespace
}  // namespace Golden
