#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <wrapton/wrapton.hpp>

#include "support/Bytes.h"
#include "support/Frames.h"
#include "support/Recorder.h"
#include "support/Sinks.h"
#include "support/Streams.h"

namespace Face
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Bytes;
using Support::Hex;

const SGFrameInfo kSound = AudioFrame(SG_ENCODE_AUDIO_PCM16, 8000, 1, 16);

/// Appends what comes, and remembers what closed.
struct Taker
{
    void operator()(const Block& block)
    {
        Support::Block kept;
        kept.origin = static_cast<int32_t>(block.origin);
        kept.position = block.offset;
        kept.data.assign(block.bytes.begin(), block.bytes.end());
        blocks.push_back(kept);
        closing += block.closing ? 1 : 0;
    }

    std::vector<Support::Block> blocks;
    int closing = 0;
};

TEST(Packager, EmitsTheBlocksOfTheEightFunctions)
{
    const std::vector<Bytes> pictures =
        Support::AccessUnits(Support::Media("camera_640x360_25fps_baseline.h264"));

    Support::SeekingSink sink;
    Support::Recorder recorder(SG_STREAM_TYPE_FLV, sink);  // no creation time in its bytes
    ASSERT_EQ(recorder.Header(), 0);
    Taker taker;
    Packager packager(SG_STREAM_TYPE_FLV, std::ref(taker));
    packager.Header(SGHeaderInfo{});
    for (const Bytes& picture : pictures)
    {
        const SG_FRAME_SUB_TYPE kind =
            Support::IsIdr(picture) ? SG_FRAME_SUB_TYPE_I : SG_FRAME_SUB_TYPE_P;
        ASSERT_EQ(recorder.Input(Support::H264I(picture).As(kind)), 0);
        packager.Input(picture, VideoFrame(SG_ENCODE_VIDEO_HI_H264, kind, 640, 360, 25));
    }
    const std::size_t before = taker.blocks.size();
    ASSERT_EQ(recorder.Tailer(), 0);
    packager.Tailer();

    ASSERT_EQ(taker.blocks.size(), sink.Blocks().size());
    for (std::size_t i = 0; i < taker.blocks.size(); ++i)
    {
        EXPECT_EQ(taker.blocks[i].origin, sink.Blocks()[i].origin) << i;
        EXPECT_EQ(taker.blocks[i].position, sink.Blocks()[i].position) << i;
        EXPECT_EQ(taker.blocks[i].data, sink.Blocks()[i].data) << i;
    }
    EXPECT_EQ(taker.closing, static_cast<int>(taker.blocks.size() - before));
    EXPECT_GT(taker.closing, 0);
}

TEST(Packager, FillsTheRecordOfAPicture)
{
    const SGFrameInfo frame = VideoFrame(
        SG_ENCODE_VIDEO_MPEG4, SG_FRAME_SUB_TYPE_B, 352, 288, 30, std::chrono::milliseconds(1234));
    EXPECT_EQ(frame.frame_type, 1u);
    EXPECT_EQ(frame.frame_sub_type, 2u);
    EXPECT_EQ(frame.frame_encode, 1u);
    EXPECT_EQ(frame.width, 352u);
    EXPECT_EQ(frame.heigth, 288u);
    EXPECT_EQ(frame.frame_rate, 30u);
    EXPECT_EQ(frame.frame_time, 1234u);
}

TEST(Packager, FillsTheRecordOfSound)
{
    const SGFrameInfo frame =
        AudioFrame(SG_ENCODE_AUDIO_AAC, 48000, 2, 16, std::chrono::seconds(2));
    EXPECT_EQ(frame.frame_type, 2u);
    EXPECT_EQ(frame.frame_encode, 26u);
    EXPECT_EQ(frame.sample_rate, 48000u);
    EXPECT_EQ(frame.channels, 2u);
    EXPECT_EQ(frame.bit_per_sample, 16u);
    EXPECT_EQ(frame.frame_time, 2000u);
}

TEST(Packager, ThrowsTheLibrarysCode)
{
    Packager packager(SG_STREAM_TYPE_WAV);
    try
    {
        packager.Input(Bytes(320), kSound);  // ahead of the header
        FAIL() << "nothing was thrown";
    }
    catch (const std::system_error& error)
    {
        EXPECT_EQ(error.code(), SG_ERR_PARAM_ERR);
        EXPECT_NE(std::string(error.what()).find("SG_InputFrame: a bad argument"),
                  std::string::npos);
    }
}

TEST(Packager, GivesTheLibrarysCodeWithoutThrowing)
{
    std::error_code error = SG_ERR_MEMORY_OUT;
    Packager packager(
        SG_STREAM_TYPE_WAV, [](const Block&) {}, error);
    EXPECT_FALSE(error);
    Bytes samples(320);
    packager.Input(samples, kSound, error);
    EXPECT_EQ(error, SG_ERR_PARAM_ERR);
    EXPECT_STREQ(error.category().name(), "wrapton");
    packager.Header(error);
    EXPECT_FALSE(error);
    packager.Input(samples, kSound, error);
    EXPECT_FALSE(error);
    packager.Tailer(error);
    EXPECT_FALSE(error);
    static_assert(noexcept(packager.Header(error)));
    static_assert(noexcept(packager.Header(SGHeaderInfo{}, error)));
    static_assert(noexcept(packager.Input(samples, kSound, error)));
    static_assert(noexcept(packager.Tailer(error)));
    static_assert(noexcept(packager.Backup(error)));
}

TEST(Packager, TellsCodesInWords)
{
    const std::error_category& category = PackagingCategory();
    EXPECT_EQ(category.message(0), "done");
    EXPECT_EQ(category.message(1), "no packager");
    EXPECT_EQ(category.message(4), "out of memory");
    EXPECT_EQ(category.message(5), "the container cannot hold this encoding");
    EXPECT_EQ(category.message(-1), "the frame's encoding is not that of its track");
    EXPECT_EQ(category.message(77), "code 77 of the packager");
}

TEST(Packager, TellsCodesAsTheStandardLibraryDoes)
{
    EXPECT_EQ(make_error_code(SG_ERR_MEMORY_OUT), std::errc::not_enough_memory);
    EXPECT_EQ(make_error_code(SG_ERR_PARAM_ERR), std::errc::invalid_argument);
    EXPECT_EQ(make_error_code(SG_ERR_EMPTY_POINTER), std::errc::invalid_argument);
    EXPECT_EQ(make_error_code(SG_ERR_ENCODE_UNSUPPORT), std::errc::not_supported);
    EXPECT_EQ(make_error_code(SG_ERR_HANDLE_EMPTY), std::errc::bad_file_descriptor);
    EXPECT_NE(make_error_code(SG_ERR_INIT_FAIL), std::errc::invalid_argument);
}

TEST(Packager, ClearsTheErrorWhenAllWentWell)
{
    std::error_code error = SG_ERR_MEMORY_OUT;
    Packager packager(SG_STREAM_TYPE_WAV);
    packager.Header(error);
    EXPECT_EQ(error, std::error_code());
    EXPECT_EQ(error, SG_ERR_NOERR);
    EXPECT_FALSE(packager.Backup(error));  // WAV has none, which is no error
    EXPECT_EQ(error, std::error_code());
}

/// Can be copied once, when it is handed over, and not moved on from there.
struct Heavy
{
    Heavy() = default;
    Heavy(const Heavy& other) : left(other.left - 1)
    {
        if (left == 0) throw std::runtime_error("too heavy");
    }
    void operator()(const Block&) const {}

    int left = 2;
};

TEST(Packager, AnOutputThatCannotBeMovedIsAnError)
{
    std::error_code error;
    Packager packager(SG_STREAM_TYPE_WAV, Heavy(), error);
    EXPECT_EQ(error, SG_ERR_INIT_FAIL);
    EXPECT_FALSE(packager);
    EXPECT_THROW(Packager(SG_STREAM_TYPE_WAV, Heavy()), std::system_error);
}

TEST(Packager, IsEmptyWithoutAHandle)
{
    EXPECT_THROW(Packager{SG_STREAM_TYPE_TS}, std::system_error);
    std::error_code error;
    Packager packager(
        SG_STREAM_TYPE_3GP, [](const Block&) {}, error);
    EXPECT_EQ(error, SG_ERR_INIT_FAIL);
    EXPECT_FALSE(packager);
    EXPECT_EQ(packager.Handle(), nullptr);
    packager.Header(error);
    EXPECT_EQ(error, SG_ERR_HANDLE_EMPTY);
    packager.Input(Bytes(4), kSound, error);
    EXPECT_EQ(error, SG_ERR_HANDLE_EMPTY);
    EXPECT_FALSE(packager.Backup(error));
    EXPECT_EQ(error, SG_ERR_HANDLE_EMPTY);
    EXPECT_EQ(packager.Thrown(), nullptr);
}

TEST(Packager, KeepsItsOutputWhenItMoves)
{
    Taker taker;
    Packager first(SG_STREAM_TYPE_WAV, std::ref(taker));
    Packager second = std::move(first);
    EXPECT_FALSE(first);  // NOLINT(bugprone-use-after-move): what is left is the point
    second.Header();
    EXPECT_EQ(taker.blocks.size(), 1u);
    Packager third(SG_STREAM_TYPE_WAV);
    third = std::move(second);
    third.Tailer();
    EXPECT_EQ(taker.blocks.size(), 2u);
}

TEST(Packager, PassesOnWhatItsOutputThrew)
{
    int calls = 0;
    Packager packager(SG_STREAM_TYPE_WAV,
                      [&](const Block&)
                      {
                          ++calls;
                          throw std::runtime_error("no room");
                      });
    EXPECT_THROW(packager.Header(), std::runtime_error);
    std::error_code error;
    packager.Tailer(error);
    EXPECT_EQ(error, std::errc::operation_canceled);
    EXPECT_NE(packager.Thrown(), nullptr);
    EXPECT_EQ(calls, 2);
    packager.SetRtp({}, error);  // no RTP: nothing is emitted
    EXPECT_FALSE(error);
    EXPECT_EQ(packager.Thrown(), nullptr);
}

TEST(Packager, DoesNotThrowAgainWhatACallBeforeThrew)
{
    Packager packager(SG_STREAM_TYPE_WAV, [](const Block&) { throw std::runtime_error("once"); });
    std::error_code error;
    packager.Header(error);
    ASSERT_NE(packager.Thrown(), nullptr);
    // Nobody looks at the bytes of a frame that is too long for the record.
    const unsigned char byte = 0;
    const std::span<const unsigned char> too_long(&byte, std::size_t{UINT32_MAX} + 1);
    EXPECT_THROW(packager.Input(too_long, kSound), std::system_error);
    EXPECT_EQ(packager.Thrown(), nullptr);

    Packager copying(SG_STREAM_TYPE_MKV);
    copying.Input(too_long, kSound, error);
    EXPECT_EQ(error, SG_ERR_PARAM_ERR);
}

TEST(Packager, StoresNothingWhereTheOutputAnswersWithLess)
{
    std::vector<int64_t> positions;
    Packager packager(SG_STREAM_TYPE_MP4_NOSEEK,
                      [&](const Block& block)
                      {
                          positions.push_back(block.offset);
                          return -1;  // as write() says it
                      });
    packager.Header();
    ASSERT_EQ(positions.size(), 2u);  // ftyp and free
    EXPECT_EQ(positions[1], 0);
}

TEST(Packager, TellsTheLibraryHowMuchWasStored)
{
    std::vector<int64_t> positions;
    Packager packager(SG_STREAM_TYPE_MP4_NOSEEK,
                      [&](const Block& block)
                      {
                          positions.push_back(block.offset);
                          return block.bytes.size() - 1;
                      });
    packager.Header(SGHeaderInfo{});
    packager.Input(Hex("00 00 00 01 67 42 00 1F 00 00 00 01 68 CE 00 00 00 01 65 88"),
                   VideoFrame(SG_ENCODE_VIDEO_HI_H264, SG_FRAME_SUB_TYPE_I, 64, 48, 25));
    ASSERT_GE(positions.size(), 2u);
    EXPECT_EQ(positions[0], 0);

    std::size_t first = 0;
    Packager whole(SG_STREAM_TYPE_MP4_NOSEEK,
                   [&](const Block& block) { first = first == 0 ? block.bytes.size() : first; });
    whole.Header(SGHeaderInfo{});
    EXPECT_EQ(positions[1], static_cast<int64_t>(first) - 1);
}

TEST(Packager, LeavesConstantBytesAloneInMatroska)
{
    // Start codes of four bytes become lengths in the caller's memory, unless that is constant.
    constexpr const char* kPicture =
        "00 00 00 01 67 42 00 1F 00 00 00 01 68 CE 00 00 00 01 65 88 84";
    const Bytes picture = Hex(kPicture);
    const SGFrameInfo attributes =
        VideoFrame(SG_ENCODE_VIDEO_HI_H264, SG_FRAME_SUB_TYPE_I, 64, 48, 25);
    Bytes changed = picture;
    Packager in_place(SG_STREAM_TYPE_MKV);
    in_place.Header(SGHeaderInfo{});
    in_place.InputInPlace(changed, attributes);
    EXPECT_NE(changed, picture);

    Packager copying(SG_STREAM_TYPE_MKV);
    copying.Header(SGHeaderInfo{});
    copying.Input(picture, attributes);
    EXPECT_EQ(picture, Hex(kPicture));
}

TEST(Packager, GivesTheHeaderAsABackup)
{
    Packager packager(SG_STREAM_TYPE_MP4);
    packager.Header(SGHeaderInfo{});
    packager.Input(Hex("00 00 00 01 67 42 00 1F 00 00 00 01 68 CE 00 00 00 01 65 88"),
                   VideoFrame(SG_ENCODE_VIDEO_HI_H264, SG_FRAME_SUB_TYPE_I, 64, 48, 25));
    const std::optional<Block> backup = packager.Backup();
    ASSERT_TRUE(backup);
    EXPECT_GT(backup->bytes.size(), 8u);
    EXPECT_EQ(std::string(backup->bytes.begin() + 4, backup->bytes.begin() + 8), "moov");

    EXPECT_FALSE(Packager(SG_STREAM_TYPE_WAV).Backup());
}

TEST(Packager, SetsAndReadsRtp)
{
    Packager packager(SG_STREAM_TYPE_RTP);
    SGRtpPackageParam param = packager.Rtp();
    EXPECT_EQ(param.struct_size, 64u);
    EXPECT_EQ(param.max_packet_length, 1000u);
    param.sequence_number = 1000;
    param.ssrc = 0x01020304;
    packager.SetRtp(param);
    param = packager.Rtp();
    EXPECT_EQ(param.sequence_number, 999u);
    EXPECT_EQ(param.ssrc, 0x01020304u);
}

}  // namespace
}  // namespace Face
