#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>
#include <wrapton/wrapton_file.hpp>

namespace Face
{
namespace
{

/// What was brought to the disk, in order: a file by its bytes or only its data, or a directory.
enum class Synced
{
    kWhole,
    kData,
    kDirectory
};

std::vector<Synced> s_synced;
std::vector<int> s_failures;  ///< errno of the calls to come, the last one first

int Answer(int file, bool whole)
{
    struct stat kind = {};
    if (fstat(file, &kind) != 0) return -1;
    if (!s_failures.empty())
    {
        errno = s_failures.back();
        s_failures.pop_back();
        return -1;
    }
    s_synced.push_back(S_ISDIR(kind.st_mode) ? Synced::kDirectory
                       : whole               ? Synced::kWhole
                                             : Synced::kData);
    return 0;
}

}  // namespace
}  // namespace Face

// In place of the C library's.
extern "C" int fsync(int file)
{
    return Face::Answer(file, true);
}

extern "C" int fdatasync(int file)
{
    return Face::Answer(file, false);
}

namespace Face
{
namespace
{

namespace fs = std::filesystem;
using namespace Orbel::Wrapton;

std::span<const unsigned char> Text(std::string_view text)
{
    return {reinterpret_cast<const unsigned char*>(text.data()), text.size()};
}

class SyncTest : public ::testing::Test
{
protected:
    SyncTest()
    {
        std::string pattern = (fs::temp_directory_path() / "wrapton-XXXXXX").string();
        if (mkdtemp(pattern.data()) != nullptr) m_directory = pattern;
        s_synced.clear();
        s_failures.clear();
    }
    ~SyncTest() override
    {
        std::error_code ignored;
        fs::remove_all(m_directory, ignored);
    }

    std::error_code Record(Sync sync)
    {
        FileSink sink(m_directory / "out", SG_STREAM_TYPE_MP4, {.sync = sync});
        sink.Place(0, Origin::kStart, Text("abc"));
        sink.Place(3, Origin::kStart, Text("def"));
        std::error_code error;
        sink.Finish(error);
        return error;
    }

    fs::path m_directory;
};

TEST_F(SyncTest, NeverBringsNothing)
{
    EXPECT_FALSE(Record(Sync::kNever));
    EXPECT_TRUE(s_synced.empty());
}

TEST_F(SyncTest, AtEndBringsTheFileAndItsName)
{
    EXPECT_FALSE(Record(Sync::kAtEnd));
    EXPECT_EQ(s_synced, (std::vector{Synced::kWhole, Synced::kDirectory}));
}

TEST_F(SyncTest, EachBlockBringsTheNameAheadOfTheFirst)
{
    EXPECT_FALSE(Record(Sync::kEachBlock));
    EXPECT_EQ(s_synced,
              (std::vector{Synced::kDirectory, Synced::kData, Synced::kData, Synced::kWhole}));
}

TEST_F(SyncTest, AnInterruptedCallIsRepeated)
{
    s_failures = {EINTR, EINTR};
    EXPECT_FALSE(Record(Sync::kAtEnd));
    EXPECT_EQ(s_synced, (std::vector{Synced::kWhole, Synced::kDirectory}));
}

TEST_F(SyncTest, ADiskThatFailsIsTheFirstError)
{
    s_failures = {EIO};
    EXPECT_EQ(Record(Sync::kAtEnd), std::errc::io_error);
    EXPECT_TRUE(s_synced.empty());
}

TEST_F(SyncTest, ABlockThatDidNotReachTheDiskStopsTheRecording)
{
    FileSink sink(m_directory / "out", SG_STREAM_TYPE_MP4, {.sync = Sync::kEachBlock});
    s_failures = {EIO};
    EXPECT_EQ(sink.Place(0, Origin::kStart, Text("abc")), 3u);
    EXPECT_EQ(sink.Error(), std::errc::io_error);
    EXPECT_EQ(sink.Place(3, Origin::kStart, Text("def")), 0u);
}

TEST_F(SyncTest, AFileSystemWithoutSyncIsNoError)
{
    for (const int code : {EINVAL, EROFS})
    {
        s_failures = {code, code};
        EXPECT_FALSE(Record(Sync::kAtEnd)) << code;
    }
}

}  // namespace
}  // namespace Face
