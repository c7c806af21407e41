#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <thread>

#include <wrapton/wrapton.hpp>

#include "support/Bytes.h"

namespace Face
{
namespace
{

namespace fs = std::filesystem;
using namespace Orbel::Wrapton;
using Support::Bytes;
using Support::Hex;

std::span<const unsigned char> Text(std::string_view text)
{
    return {reinterpret_cast<const unsigned char*>(text.data()), text.size()};
}

Block At(int64_t offset, Origin origin, std::span<const unsigned char> bytes, bool closing = false)
{
    return {offset, origin, bytes, closing};
}

class FileSinkTest : public ::testing::Test
{
protected:
    FileSinkTest()
    {
        std::string pattern = (fs::temp_directory_path() / "wrapton-XXXXXX").string();
        if (mkdtemp(pattern.data()) != nullptr) m_directory = pattern;
    }
    ~FileSinkTest() override
    {
        std::error_code ignored;
        fs::remove_all(m_directory, ignored);
    }

    [[nodiscard]] fs::path Path(const std::string& name) const { return m_directory / name; }

    static std::string Content(const fs::path& path)
    {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    static void Put(const fs::path& path, std::string_view text)
    {
        std::ofstream(path, std::ios::binary) << text;
    }

    static std::error_code Finish(FileSink& sink)
    {
        std::error_code error;
        sink.Finish(error);
        return error;
    }

    fs::path m_directory;
};

TEST_F(FileSinkTest, BlocksGoWhereTheirOriginSays)
{
    FileSink sink(Path("out"), SG_STREAM_TYPE_MP4);
    EXPECT_EQ(sink(At(0, Origin::kStart, Text("0123456789"))), 10u);
    EXPECT_EQ(sink(At(2, Origin::kStart, Text("ab"))), 2u);
    EXPECT_EQ(sink(At(0, Origin::kCurrent, Text("c"))), 1u);  // at 4
    EXPECT_EQ(sink(At(0, Origin::kEnd, Text("e"))), 1u);      // at 10
    EXPECT_EQ(sink(At(-2, Origin::kEnd, Text("f"))), 1u);     // at 9
    EXPECT_EQ(sink(At(12, Origin::kStart, Text("g"))), 1u);   // leaves a hole of one byte
    EXPECT_EQ(sink.Size(), 13u);
    EXPECT_FALSE(Finish(sink));
    EXPECT_EQ(Content(Path("out")), std::string("01abc5678fe\0g", 13));
}

TEST_F(FileSinkTest, OldContentIsGoneAndNothingIsWrittenAfterTheEnd)
{
    Put(Path("out"), "something longer than what comes");
    FileSink sink(Path("out"), SG_STREAM_TYPE_MP4);
    sink.Place(0, Origin::kStart, Text("new"));
    sink.Finish();
    sink.Finish();  // once more changes nothing
    EXPECT_EQ(sink.Place(0, Origin::kEnd, Text("x")), 0u);
    EXPECT_EQ(Finish(sink), std::errc::bad_file_descriptor);  // a block was lost
    EXPECT_EQ(Content(Path("out")), "new");
}

TEST_F(FileSinkTest, AnEmptyBlockIsNoneWhereverItWouldBelong)
{
    FileSink sink(Path("out"), SG_STREAM_TYPE_MP4);
    for (const int64_t offset : {int64_t{0}, int64_t{100}, int64_t{-1}})
        EXPECT_EQ(sink.Place(offset, Origin::kStart, {}), 0u);
    EXPECT_EQ(sink.Place(0, Origin::kCurrent, Text("abc")), 3u);
    EXPECT_FALSE(Finish(sink));
    EXPECT_EQ(sink.Place(0, Origin::kCurrent, {}), 0u);
    EXPECT_TRUE(sink.Good());
    EXPECT_EQ(Content(Path("out")), "abc");
}

TEST_F(FileSinkTest, AFileIsFoundFromAnotherDirectory)
{
    const fs::path before = fs::current_path();
    fs::current_path(m_directory);
    FileSink sink("out", SG_STREAM_TYPE_MP4);
    fs::current_path(before);
    sink.Place(0, Origin::kStart, Text("abc"));
    EXPECT_TRUE(sink.StillThere());
    EXPECT_FALSE(Finish(sink));
    EXPECT_EQ(Content(Path("out")), "abc");
}

TEST_F(FileSinkTest, ASparedFileIsNotOpenedWhateverItsName)
{
    Put(Path("in"), "input");
    fs::create_symlink(Path("in"), Path("soft"));
    fs::create_hard_link(Path("in"), Path("hard"));
    for (const char* name : {"in", "soft", "hard"})
    {
        const FileOptions options{.spared = {Path("other"), Path("in")}};
        std::error_code error;
        FileSink sink(Path(name), SG_STREAM_TYPE_MP4, options, error);
        EXPECT_EQ(error, std::errc::file_exists) << name;
        EXPECT_EQ(sink.Place(0, Origin::kStart, Text("x")), 0u);
    }
    EXPECT_EQ(Content(Path("in")), "input");
}

TEST_F(FileSinkTest, SaysWhyItCannotOpen)
{
    const fs::path path = Path("missing") / "out";
    std::error_code error;
    FileSink sink(path, SG_STREAM_TYPE_MP4, {}, error);
    EXPECT_EQ(error, std::errc::no_such_file_or_directory);
    EXPECT_EQ(sink.Error(), error);
    EXPECT_EQ(Finish(sink), error);
    EXPECT_THROW(FileSink(path, SG_STREAM_TYPE_MP4), fs::filesystem_error);
}

TEST_F(FileSinkTest, TheFirstErrorStays)
{
    FileSink sink("/dev/full", SG_STREAM_TYPE_MP4);
    EXPECT_TRUE(sink.Good());
    EXPECT_EQ(sink.Place(0, Origin::kStart, Text("x")), 0u);
    EXPECT_EQ(sink.Error(), std::errc::no_space_on_device);
    EXPECT_EQ(sink.Place(-1, Origin::kStart, Text("x")), 0u);  // another error by itself
    EXPECT_EQ(Finish(sink), std::errc::no_space_on_device);
    EXPECT_THROW(sink.Finish(), fs::filesystem_error);
}

TEST_F(FileSinkTest, PositionsOutsideEveryFileAreErrors)
{
    for (const int64_t offset : {int64_t{-4}, INT64_MIN, INT64_MAX})
    {
        FileSink sink(Path("out"), SG_STREAM_TYPE_MP4);
        sink.Place(0, Origin::kStart, Text("abc"));
        EXPECT_EQ(sink.Place(offset, Origin::kEnd, Text("x")), 0u) << offset;
        EXPECT_EQ(Finish(sink), std::errc::invalid_argument) << offset;
        EXPECT_EQ(sink.Size(), 3u);
    }
}

TEST_F(FileSinkTest, ARemovedOrReplacedFileIsAnError)
{
    FileSink removed(Path("out"), SG_STREAM_TYPE_MP4);
    removed.Place(0, Origin::kStart, Text("abc"));
    fs::remove(Path("out"));
    EXPECT_EQ(Finish(removed), std::errc::no_such_file_or_directory);

    FileSink replaced(Path("out"), SG_STREAM_TYPE_MP4);
    replaced.Place(0, Origin::kStart, Text("abc"));
    fs::rename(Path("out"), Path("elsewhere"));
    Put(Path("out"), "another");
    EXPECT_EQ(Finish(replaced), std::errc::no_such_file_or_directory);
    EXPECT_EQ(Content(Path("out")), "another");
}

TEST_F(FileSinkTest, AWriteThatWasCutShortIsContinuedUntilItFails)
{
    struct rlimit old = {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &old), 0);
    const struct rlimit small = {4, old.rlim_max};
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    FileSink sink(Path("out"), SG_STREAM_TYPE_MP4);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    const std::size_t stored = sink.Place(0, Origin::kStart, Text("123456"));
    setrlimit(RLIMIT_FSIZE, &old);
    static_cast<void>(std::signal(SIGXFSZ, handler));

    EXPECT_EQ(stored, 4u);
    EXPECT_EQ(sink.Error(), std::errc::file_too_large);
    EXPECT_EQ(sink.Size(), 4u);
}

extern "C" void Nothing(int) {}

TEST_F(FileSinkTest, AnInterruptedWriteIsContinued)
{
    std::array<int, 2> ends = {};
    ASSERT_EQ(pipe(ends.data()), 0);
    struct sigaction action = {};
    action.sa_handler = Nothing;  // without SA_RESTART, so that write() comes back
    struct sigaction old = {};
    ASSERT_EQ(sigaction(SIGUSR1, &action, &old), 0);

    const Bytes many(1 << 20, 'x');  // more than a pipe holds
    std::size_t stored = 0;
    FileSink sink = FileSink::Appending(ends[1], SG_STREAM_TYPE_PS);
    std::thread writer([&] { stored = sink.Place(0, Origin::kCurrent, many); });
    std::size_t read_bytes = 0;
    std::array<char, 4096> room = {};
    while (read_bytes < many.size())
    {
        pthread_kill(writer.native_handle(), SIGUSR1);
        const ssize_t count = read(ends[0], room.data(), room.size());
        ASSERT_GT(count, 0);
        read_bytes += static_cast<std::size_t>(count);
    }
    writer.join();
    sigaction(SIGUSR1, &old, nullptr);
    EXPECT_EQ(stored, many.size());
    EXPECT_FALSE(Finish(sink));
    close(ends[0]);
    EXPECT_EQ(close(ends[1]), 0);  // still the caller's
}

TEST_F(FileSinkTest, AppendingNeverGoesBack)
{
    const int file = open(Path("out").c_str(), O_WRONLY | O_CREAT, 0666);
    ASSERT_GE(file, 0);
    FileSink sink = FileSink::Appending(file, SG_STREAM_TYPE_MP4, Sync::kAtEnd);
    EXPECT_FALSE(sink.CanGoBack());
    EXPECT_EQ(sink.Place(0, Origin::kStart, Text("abc")), 3u);
    EXPECT_EQ(sink.Place(3, Origin::kStart, Text("d")), 1u);
    EXPECT_EQ(sink.Place(0, Origin::kStart, Text("x")), 0u);
    EXPECT_EQ(Finish(sink), std::errc::invalid_seek);
    close(file);
    EXPECT_EQ(Content(Path("out")), "abcd");

    FileSink none = FileSink::Appending(-1, SG_STREAM_TYPE_PS);
    EXPECT_EQ(none.Place(0, Origin::kCurrent, Text("x")), 0u);
    EXPECT_EQ(none.Error(), std::errc::bad_file_descriptor);
}

TEST_F(FileSinkTest, TheClosingBlockOfTheNoSeekVariantIsLeftOut)
{
    FileSink sink(Path("out"), SG_STREAM_TYPE_MP4_NOSEEK);
    sink(At(0, Origin::kStart, Text("ftyp")));
    EXPECT_EQ(sink(At(4, Origin::kStart, Text("moov"), true)), 4u);
    EXPECT_EQ(sink(At(0, Origin::kStart, Text("mdat"), true)), 4u);
    EXPECT_FALSE(Finish(sink));
    EXPECT_EQ(Content(Path("out")), "ftypmoov");

    FileSink mp4(Path("other"), SG_STREAM_TYPE_MP4);  // there it belongs to the file
    mp4(At(0, Origin::kStart, Text("ftyp")));
    mp4(At(0, Origin::kStart, Text("mdat"), true));
    EXPECT_FALSE(Finish(mp4));
    EXPECT_EQ(Content(Path("other")), "mdat");
}

/// File header, a script tag with @p data, and the size of it.
Bytes FlvHeader(const Bytes& data)
{
    return Support::Join({
        Hex("46 4C 56 01 05 00 00 00 09 00 00 00 00"),  // "FLV" and no tag ahead
        Hex("12 00 00"),                                // script tag, high bytes of its size
        Bytes(1, static_cast<unsigned char>(data.size())),
        Hex("00 00 00 00 00 00 00"),  // time and stream
        data,
        Hex("00 00 00 0E"),  // previous tag size
    });
}

std::string AsText(const Bytes& bytes)
{
    return {bytes.begin(), bytes.end()};
}

TEST_F(FileSinkTest, TheClosingHeaderOfFlvReplacesTheFirstInAFile)
{
    const Bytes first = FlvHeader(Hex("AA BB CC"));
    const Bytes last = FlvHeader(Hex("01 02 03"));
    const Bytes with_frame = Support::Join({first, Hex("09 08 07")});
    FileSink sink(Path("out"), SG_STREAM_TYPE_FLV);
    sink(At(0, Origin::kCurrent, with_frame));
    sink(At(0, Origin::kCurrent, Text("end"), true));
    EXPECT_EQ(sink(At(0, Origin::kCurrent, last, true)), last.size());
    EXPECT_FALSE(Finish(sink));
    EXPECT_EQ(Content(Path("out")), AsText(last) + "\x09\x08\x07" + "end");
}

TEST_F(FileSinkTest, AClosingHeaderOfAnotherLengthIsAppended)
{
    const Bytes first = FlvHeader(Hex("AA BB CC"));
    const Bytes longer = FlvHeader(Hex("AA BB CC DD"));
    FileSink sink(Path("out"), SG_STREAM_TYPE_FLV);
    sink(At(0, Origin::kCurrent, first));
    sink(At(0, Origin::kCurrent, longer, true));
    EXPECT_FALSE(Finish(sink));
    EXPECT_EQ(Content(Path("out")), AsText(first) + AsText(longer));
}

TEST_F(FileSinkTest, TheClosingHeaderOfFlvIsAppendedWhereNothingGoesBack)
{
    const Bytes header = FlvHeader(Hex("AA BB CC"));
    for (const unsigned int type : {SG_STREAM_TYPE_FLV, SG_STREAM_TYPE_STREAM_FLV})
    {
        const int file = open(Path("out").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
        FileSink sink = FileSink::Appending(file, type);
        sink(At(0, Origin::kCurrent, header));
        sink(At(0, Origin::kCurrent, header, true));
        EXPECT_FALSE(Finish(sink));
        close(file);
        EXPECT_EQ(Content(Path("out")), AsText(header) + AsText(header));
    }
}

TEST_F(FileSinkTest, BytesThatAreNoFlvHeaderAreAppended)
{
    const Bytes whole = FlvHeader(Hex("AA BB CC"));
    for (std::size_t size = 1; size < whole.size(); ++size)
    {
        const Bytes cut = Support::Slice(whole, 0, size);
        FileSink sink(Path("out"), SG_STREAM_TYPE_FLV);
        sink(At(0, Origin::kCurrent, cut));
        sink(At(0, Origin::kCurrent, cut, true));
        EXPECT_EQ(sink.Size(), 2 * size);
    }
    for (const std::size_t at : {0u, 1u, 2u, 13u})
    {
        Bytes other = whole;
        ++other[at];
        FileSink sink(Path("out"), SG_STREAM_TYPE_FLV);
        sink(At(0, Origin::kCurrent, other));
        sink(At(0, Origin::kCurrent, other, true));
        EXPECT_EQ(sink.Size(), 2 * whole.size());
    }
}

TEST_F(FileSinkTest, SyncingNeverFailsForPipes)
{
    for (const Sync sync : {Sync::kNever, Sync::kAtEnd, Sync::kEachBlock})
    {
        std::array<int, 2> ends = {};
        ASSERT_EQ(pipe(ends.data()), 0);
        FileSink sink = FileSink::Appending(ends[1], SG_STREAM_TYPE_PS, sync);
        EXPECT_EQ(sink.Place(0, Origin::kCurrent, Text("abc")), 3u);
        EXPECT_FALSE(Finish(sink));
        close(ends[0]);
        close(ends[1]);
    }
}

TEST_F(FileSinkTest, EveryPolicyWritesTheSame)
{
    for (const Sync sync : {Sync::kNever, Sync::kAtEnd, Sync::kEachBlock})
    {
        FileSink sink(Path("out"), SG_STREAM_TYPE_MP4, {.sync = sync});
        sink.Place(0, Origin::kStart, Text("abc"));
        sink.Place(0, Origin::kEnd, Text("def"));
        EXPECT_FALSE(Finish(sink));
        EXPECT_EQ(Content(Path("out")), "abcdef");
    }
}

TEST_F(FileSinkTest, TakesARecordingAndKeepsItsPlaceWhenItMoves)
{
    FileSink first(Path("out"), SG_STREAM_TYPE_WAV);
    first.Place(0, Origin::kStart, Text("abc"));
    FileSink sink = std::move(first);
    sink.Place(0, Origin::kCurrent, Text("def"));
    // NOLINTBEGIN(bugprone-use-after-move,clang-analyzer-cplusplus.Move): what is left is the point
    EXPECT_EQ(first.Place(0, Origin::kStart, Text("x")), 0u);
    EXPECT_EQ(Finish(first), std::errc::bad_file_descriptor);
    // NOLINTEND(bugprone-use-after-move,clang-analyzer-cplusplus.Move)
    sink.Finish();
    EXPECT_EQ(Content(Path("out")), "abcdef");
}

}  // namespace
}  // namespace Face
