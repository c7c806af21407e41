// The checks of the eight functions, in their order.
#include <array>
#include <cstring>

#include "support/Allocators.h"
#include "support/Frames.h"
#include "support/Recorder.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Bytes;
using Support::Payload;
using Support::Recorder;
using Support::RecordOf;
using Support::SeekingSink;

static_assert(noexcept(SG_CreateHandle(0, nullptr)));
static_assert(noexcept(SG_CreateHeader(nullptr, nullptr)));
static_assert(noexcept(SG_InputFrame(nullptr, nullptr)));
static_assert(noexcept(SG_CreateTailer(nullptr, nullptr)));
static_assert(noexcept(SG_GetBackup(nullptr, nullptr)));
static_assert(noexcept(SG_SetParam(nullptr, 0, nullptr, 0)));
static_assert(noexcept(SG_GetParam(nullptr, 0, nullptr, nullptr)));
static_assert(noexcept(SG_DestroyHandle(nullptr)));

TEST(NullHandle, IsAnsweredBeforeEveryOtherArgumentIsLookedAt)
{
    SGHeaderInfo header{};
    SGFrameInfo frame{};
    SGTailerInfo tailer{};
    SGOutputData backup{};
    backup.data_size = 77;
    SGRtpPackageParam parameter{};
    parameter.struct_size = 77;
    unsigned int length = 63;

    EXPECT_EQ(SG_CreateHeader(nullptr, &header), 1);
    EXPECT_EQ(SG_CreateHeader(nullptr, nullptr), 1);
    EXPECT_EQ(SG_InputFrame(nullptr, &frame), 1);  // its struct_size is wrong, too
    EXPECT_EQ(SG_InputFrame(nullptr, nullptr), 1);
    EXPECT_EQ(SG_CreateTailer(nullptr, &tailer), 1);
    EXPECT_EQ(SG_CreateTailer(nullptr, nullptr), 1);
    EXPECT_EQ(SG_GetBackup(nullptr, &backup), 1);
    EXPECT_EQ(SG_GetBackup(nullptr, nullptr), 1);
    EXPECT_EQ(backup.data_size, 77);
    EXPECT_EQ(SG_SetParam(nullptr, 0, &parameter, 64), 1);
    EXPECT_EQ(SG_SetParam(nullptr, 5, nullptr, 0), 1);
    EXPECT_EQ(SG_GetParam(nullptr, 0, &parameter, &length), 1);
    EXPECT_EQ(SG_GetParam(nullptr, 5, nullptr, nullptr), 1);
    EXPECT_EQ(parameter.struct_size, 77u);
    EXPECT_EQ(length, 63u);
    EXPECT_EQ(SG_DestroyHandle(nullptr), 1);
}

/// The packagers that have no parameters.
class NotRtp : public ::testing::TestWithParam<uint32_t>
{
};
INSTANTIATE_TEST_SUITE_P(Types,
                         NotRtp,
                         ::testing::Values(SG_STREAM_TYPE_MP4,
                                           SG_STREAM_TYPE_MOV,
                                           SG_STREAM_TYPE_MP4_NOSEEK,
                                           SG_STREAM_TYPE_MP4_64,
                                           SG_STREAM_TYPE_MOV_64,
                                           SG_STREAM_TYPE_WAV));

TEST_P(NotRtp, SetParamWantsARecordAndDoesNothingWithIt)
{
    SeekingSink sink;
    Recorder recorder(GetParam(), sink);
    std::array<unsigned char, 64> parameter{};
    parameter.fill(0xFF);
    const auto before = parameter;
    for (const unsigned int type : {0u, 1u, 0xFFFFFFFFu})
    {
        for (const unsigned int length : {0u, 63u, 64u, 65u, 0xFFFFFFFFu})
        {
            EXPECT_EQ(SG_SetParam(recorder.Handle(), type, parameter.data(), length), 0);
            EXPECT_EQ(SG_SetParam(recorder.Handle(), type, nullptr, length), 3);
        }
    }
    EXPECT_EQ(parameter, before);
    EXPECT_TRUE(sink.Blocks().empty());
}

TEST_P(NotRtp, GetParamGivesALengthOfZeroAndNoRecord)
{
    SeekingSink sink;
    Recorder recorder(GetParam(), sink);
    std::array<unsigned char, 64> parameter{};
    parameter.fill(0xA5);
    const auto before = parameter;
    for (const unsigned int type : {0u, 1u, 0xFFFFFFFFu})
    {
        for (const unsigned int given : {0u, 63u, 64u, 0xFFFFFFFFu})
        {
            unsigned int length = given;
            EXPECT_EQ(SG_GetParam(recorder.Handle(), type, nullptr, &length), 3);
            EXPECT_EQ(length, given);
            EXPECT_EQ(SG_GetParam(recorder.Handle(), type, parameter.data(), nullptr), 3);
            EXPECT_EQ(SG_GetParam(recorder.Handle(), type, nullptr, nullptr), 3);
            EXPECT_EQ(SG_GetParam(recorder.Handle(), type, parameter.data(), &length), 0);
            EXPECT_EQ(length, 0u);
        }
    }
    EXPECT_EQ(parameter, before);
    EXPECT_TRUE(sink.Blocks().empty());
}

TEST_P(NotRtp, FrameOfAnotherSizeDoesNotReachThePackager)
{
    SeekingSink sink;
    Recorder recorder(GetParam(), sink);
    ASSERT_EQ(recorder.Header(), 0);
    sink.ForgetBlocks();
    Bytes bytes = Payload(10);
    SGFrameInfo record = RecordOf(Support::Audio(SG_ENCODE_AUDIO_PCM16, bytes, 8000, 1, 16));
    record.frame_pointer = bytes.data();
    for (const uint32_t size : {0u, 111u, 113u, 112u + 65536u, 0xFFFFFFFFu})
    {
        record.struct_size = size;
        EXPECT_EQ(SG_InputFrame(recorder.Handle(), &record), 3) << size;
    }
    EXPECT_EQ(SG_InputFrame(recorder.Handle(), nullptr), 3);
    EXPECT_TRUE(sink.Blocks().empty());
}

TEST_P(NotRtp, TailerRecordIsIgnored)
{
    SeekingSink with;
    SeekingSink without;
    Recorder one(GetParam(), with);
    Recorder two(GetParam(), without);
    one.Header();
    two.Header();
    SGTailerInfo tailer{0xFFFFFFFF};
    EXPECT_EQ(SG_CreateTailer(one.Handle(), &tailer), 0);
    EXPECT_EQ(SG_CreateTailer(two.Handle(), nullptr), 0);
    EXPECT_EQ(tailer.struct_size, 0xFFFFFFFFu);
    EXPECT_EQ(with.Blocks().size(), without.Blocks().size());
}

TEST_P(NotRtp, DestroyingWithoutATailerWritesNothingMore)
{
    SeekingSink sink;
    Recorder recorder(GetParam(), sink);
    recorder.Header();
    const std::size_t before = sink.Blocks().size();
    EXPECT_GT(before, 0u);
    EXPECT_EQ(recorder.Destroy(), 0);
    EXPECT_EQ(sink.Blocks().size(), before);
}

TEST(FoldedResults, AreThreeForATailerThatIsRefused)
{
    for (const uint32_t type : {SG_STREAM_TYPE_MP4, SG_STREAM_TYPE_WAV})
    {
        SeekingSink sink;
        Recorder recorder(type, sink);
        EXPECT_EQ(recorder.Tailer(), SG_ERR_PARAM_ERR);
        EXPECT_TRUE(sink.Blocks().empty());
    }
}

TEST(FoldedResults, AreThreeForAHeaderThatIsRefused)
{
    // Without its work buffer the MP4 packager refuses the header.
    Support::AllocatorLog log;
    log.FailCall(1);
    SeekingSink sink;
    SGCreateParam create = Support::CreateFor(sink);
    create.sg_malloc = &Support::AllocatorLog::Malloc;
    create.sg_free = &Support::AllocatorLog::Free;
    Recorder recorder(SG_STREAM_TYPE_MP4, create);
    EXPECT_EQ(recorder.Header(), SG_ERR_PARAM_ERR);
    EXPECT_TRUE(sink.Blocks().empty());
}

TEST(FoldedResults, AreThreeWhenTheTailerFindsNoMemory)
{
    Support::AllocatorLog log;
    SeekingSink sink;
    SGCreateParam create = Support::CreateFor(sink);
    create.sg_malloc = &Support::AllocatorLog::Malloc;
    create.sg_free = &Support::AllocatorLog::Free;
    Recorder recorder(SG_STREAM_TYPE_MP4, create);
    ASSERT_EQ(recorder.Header(), 0);
    log.FailCall(1);
    // The packager says "out of memory", the function "a step failed".
    EXPECT_EQ(recorder.Tailer(), SG_ERR_PARAM_ERR);
    EXPECT_EQ(recorder.Tailer(), SG_ERR_NOERR);
}

TEST(InputFrame, PassesThePackagersOwnCodeOn)
{
    SeekingSink sink;
    Recorder wav(SG_STREAM_TYPE_WAV, sink);
    EXPECT_EQ(wav.Input(Support::Audio(SG_ENCODE_AUDIO_PCM16, Payload(4), 8000, 1, 16)), 3);
    Recorder mp4(SG_STREAM_TYPE_MP4, sink);
    EXPECT_EQ(mp4.Input(Support::Audio(SG_ENCODE_AUDIO_AAC, Payload(4), 8000, 1, 16)), 0);
}

TEST(GetBackup, PassesThePackagersOwnResultOn)
{
    SeekingSink sink;
    Recorder wav(SG_STREAM_TYPE_WAV, sink);
    SGOutputData backup{};
    EXPECT_EQ(wav.Backup(backup), 0);
    EXPECT_EQ(SG_GetBackup(wav.Handle(), nullptr), 0);

    Recorder mp4(SG_STREAM_TYPE_MP4, sink);
    EXPECT_EQ(mp4.Backup(backup), 0);  // no movie box before the header
    ASSERT_EQ(mp4.Header(), 0);
    const int size = mp4.Backup(backup);
    EXPECT_GT(size, 8);
    EXPECT_EQ(backup.data_size, size);
}

}  // namespace
}  // namespace Golden
