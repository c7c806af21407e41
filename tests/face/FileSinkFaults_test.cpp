// The file sink on disks that fill up, behind quotas, on closed descriptors and in places that
// cannot be written: Finish() never tells of a whole file then.
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <functional>

#include <wrapton/wrapton.hpp>

#include "support/Frames.h"
#include "support/SmallDisks.h"

namespace Face
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Bytes;
using Support::Hex;

/// Those that go back to their beginning, and those that only append.
constexpr std::array<unsigned int, 8> kTypes = {SG_STREAM_TYPE_MP4,
                                                SG_STREAM_TYPE_MOV_64,
                                                SG_STREAM_TYPE_AVI,
                                                SG_STREAM_TYPE_MKV,
                                                SG_STREAM_TYPE_ASF,
                                                SG_STREAM_TYPE_FLV,
                                                SG_STREAM_TYPE_MP4_NOSEEK,
                                                SG_STREAM_TYPE_PS};

/// 60 pictures of 2000 bytes. Calls fail or do not; what counts is what the sink says in the end.
std::error_code Record(FileSink& sink, unsigned int type)
{
    const Bytes key = Support::Join({Support::Nal(Hex("67 42 C0 1E D9 00 A0 47 FE 88")),
                                     Support::Nal(Hex("68 CE 3C 80")),
                                     Support::Nal(Hex("65 88"))});
    const Bytes other = Support::Nal(Support::Join({Hex("41"), Support::Payload(2000)}));
    {
        Packager packager(type, std::ref(sink));
        std::error_code ignored;
        packager.Header(ignored);
        const auto attributes = [](SG_FRAME_SUB_TYPE kind)
        { return VideoFrame(SG_ENCODE_VIDEO_HI_H264, kind, 640, 360, 25); };
        packager.Input(key, attributes(SG_FRAME_SUB_TYPE_I), ignored);
        for (int picture = 1; picture < 60; ++picture)
            packager.Input(other, attributes(SG_FRAME_SUB_TYPE_P), ignored);
        packager.Tailer(ignored);
    }
    std::error_code error;
    sink.Finish(error);
    return error;
}

class FileSinkFaults : public ::testing::TestWithParam<unsigned int>
{
protected:
    [[nodiscard]] std::string Path(const std::string& name) const { return m_directory.Path(name); }

    static std::error_code RecordInto(const std::string& path)
    {
        std::error_code error;
        FileSink sink(path, GetParam(), {}, error);
        const std::error_code end = Record(sink, GetParam());
        EXPECT_TRUE(!error || end == error);
        return end;
    }

    uint64_t WholeSize()
    {
        EXPECT_FALSE(RecordInto(Path("whole")));
        return std::filesystem::file_size(Path("whole"));
    }

    const Support::TemporaryDirectory m_directory;
};

INSTANTIATE_TEST_SUITE_P(EveryWay, FileSinkFaults, ::testing::ValuesIn(kTypes));

TEST_P(FileSinkFaults, AQuotaIsAnErrorExceptWhereTheFileFits)
{
    const uint64_t size = WholeSize();
    ASSERT_GT(size, 59u * 2000);
    for (const uint64_t limit : {uint64_t{0}, uint64_t{1}, size / 2, size - 1})
    {
        const Support::FileSizeLimit quota(limit);
        EXPECT_EQ(RecordInto(Path("cut")), std::errc::file_too_large) << limit;
    }
    const Support::FileSizeLimit quota(size);
    EXPECT_FALSE(RecordInto(Path("cut")));
}

TEST_P(FileSinkFaults, AFullDiskIsAnError)
{
    EXPECT_EQ(RecordInto("/dev/full"), std::errc::no_space_on_device);
    const Support::SmallDisk disk(64 * 1024);
    if (!disk.Mounted()) GTEST_SKIP() << "this user may not mount a file system";

    EXPECT_EQ(RecordInto(disk.Path("a")), std::errc::no_space_on_device);
    EXPECT_LE(std::filesystem::file_size(disk.Path("a")), 64u * 1024);
}

TEST_P(FileSinkFaults, AReadOnlyDiskIsAnError)
{
    Support::SmallDisk disk(64 * 1024);
    if (!disk.Mounted()) GTEST_SKIP() << "this user may not mount a file system";

    std::ofstream(disk.Path("there")) << "x";
    disk.MakeReadOnly();
    EXPECT_EQ(RecordInto(disk.Path("there")), std::errc::read_only_file_system);
    EXPECT_EQ(RecordInto(disk.Path("new")), std::errc::read_only_file_system);
}

TEST_P(FileSinkFaults, AClosedOrReadOnlyDescriptorIsAnError)
{
    std::ofstream(Path("there")) << "x";
    const int file = open(Path("there").c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_GE(file, 0);
    FileSink readable = FileSink::Appending(file, GetParam());
    EXPECT_EQ(Record(readable, GetParam()), std::errc::bad_file_descriptor);
    FileSink closed = FileSink::Appending(file, GetParam());
    close(file);
    EXPECT_EQ(Record(closed, GetParam()), std::errc::bad_file_descriptor);
    EXPECT_EQ(Support::ReadFile(Path("there")), Support::Text("x"));
}

}  // namespace
}  // namespace Face
