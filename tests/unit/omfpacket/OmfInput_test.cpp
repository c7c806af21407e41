// Files are read through a window; memory as it is.
#include "omfpacket/OmfInput.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "unit/omfpacket/Recordings.h"

namespace Orbel::Wrapton
{
namespace
{

using Support::Payload;
using Support::Same;
using Support::Slice;

/// A file with a content, for the time of a test.
class TempFile
{
public:
    explicit TempFile(const Bytes& content)
    {
        const int file = mkstemp(m_path.data());
        EXPECT_GE(file, 0);
        close(file);
        std::ofstream out(m_path, std::ios::binary);
        out.write(reinterpret_cast<const char*>(content.data()),
                  static_cast<std::streamsize>(content.size()));
    }
    ~TempFile() { std::filesystem::remove(m_path); }
    TempFile(const TempFile&) = delete;
    TempFile& operator=(const TempFile&) = delete;

    [[nodiscard]] const std::string& Path() const { return m_path; }

private:
    std::string m_path = ::testing::TempDir() + "wrapton-omf-XXXXXX";
};

Bytes Copy(std::span<const unsigned char> view)
{
    return {view.begin(), view.end()};
}

void ExpectViews(COmfInput& input, const Bytes& content)
{
    ASSERT_EQ(input.Size(), content.size());
    // Forwards, on from inside the last view, backwards, and beyond the end.
    for (const auto& [at, count] : {std::pair<std::size_t, std::size_t>{0, 10},
                                    {5, 10},
                                    {60, 100},
                                    {70, 500},
                                    {3, 4},
                                    {990, 10},
                                    {990, 11},
                                    {999, 1},
                                    {0, 1000},
                                    {1000, 1},
                                    {5000, 4}})
    {
        const std::size_t rest = at < content.size() ? content.size() - at : 0;
        const auto view = input.View(at, count);
        ASSERT_GE(view.size(), std::min(count, rest));
        ASSERT_LE(view.size(), rest);
        if (!view.empty())
        {
            EXPECT_TRUE(Same(Copy(view), Slice(content, at, view.size())));
        }

        Bytes peeked(count);
        ASSERT_EQ(input.Peek(at, peeked), std::min(count, rest));
        peeked.resize(std::min(count, rest));
        if (!peeked.empty())
        {
            EXPECT_TRUE(Same(peeked, Slice(content, at, peeked.size())));
        }
    }
}

TEST(OmfInput, MemoryAndFilesShowTheSame)
{
    const Bytes content = Payload(1000);
    COmfMemory memory(content);
    ExpectViews(memory, content);
    const TempFile file(content);
    for (const std::size_t readAhead : {1u, 64u, 999u, 1000u, 4096u})
    {
        COmfFile input(file.Path(), readAhead);
        ExpectViews(input, content);
    }
}

TEST(OmfInput, APeekLeavesTheViewAlone)
{
    const Bytes content = Payload(1000);
    const TempFile file(content);
    COmfFile input(file.Path(), 16);
    const auto view = input.View(100, 16);
    Bytes peeked(8);
    ASSERT_EQ(input.Peek(900, peeked), 8u);
    ASSERT_EQ(input.Peek(100, peeked), 8u);
    EXPECT_TRUE(Same(peeked, Slice(content, 100, 8)));
    EXPECT_TRUE(Same(Copy(view), Slice(content, 100, 16)));
}

TEST(OmfInput, RecordingsAreReadFromFilesThroughWindowsOfEverySize)
{
    const MixedRecording recording(50);
    const TempFile file(recording.Image());
    for (const std::size_t readAhead : {1u, 4u, 24u, 100u, 1000u, 1u << 20})
    {
        COmfFile input(file.Path(), readAhead);
        const Readout readout = ReadAll(input);
        ASSERT_EQ(readout.frames.size(), 50u);
        for (std::size_t i = 0; i < readout.frames.size(); ++i)
        {
            ASSERT_TRUE(IsSame(readout.frames[i], recording.Frames()[i]));
        }
    }
}

/// A file of holes with bytes here and there; false when the file system takes none of that size.
bool PutAt(const TempFile& file, int64_t at, const Bytes& bytes)
{
    const int raw = open(file.Path().c_str(), O_WRONLY | O_CLOEXEC);
    EXPECT_GE(raw, 0);
    const auto written = pwrite(raw, bytes.data(), bytes.size(), at);
    close(raw);
    return written == static_cast<ssize_t>(bytes.size());
}

TEST(OmfInput, FramesBeyondFourGiBAreReached)
{
    constexpr uint32_t kLargest = 0x7FFFFFFF;
    const TempFile file({});
    const Bytes header = MakeFrame(0xF1, kLargest, 8, Support::Hex("88 00 00 00 00 00 00 00"));
    Recording last;
    last.AddSound(Payload(100));
    int64_t end = 0;
    for (int i = 0; i < 3; ++i)
    {
        if (!PutAt(file, end, header)) GTEST_SKIP() << "no file of 6 GiB here";
        end += kLargest;
        ASSERT_TRUE(PutAt(file, end - 8, Tailer(kLargest)));
    }
    ASSERT_TRUE(PutAt(file, end, last.Image()));

    COmfFile input(file.Path(), 4096);
    const Readout readout = ReadAll(input, COmfReader::Depth::kHeaders);
    ASSERT_EQ(readout.frames.size(), 4u);
    EXPECT_EQ(readout.skipped, 0u);
    EXPECT_EQ(readout.frames[3].frame.offset, 3ull * kLargest);
    EXPECT_TRUE(readout.frames[3].frame.intact);
    const auto view = input.View(3ull * kLargest, last.Image().size());
    EXPECT_TRUE(Same(Copy(view), last.Image()));
}

TEST(OmfInput, AFileThatBecomesShorterEnds)
{
    const MixedRecording recording(50);
    const TempFile file(recording.Image());
    COmfFile input(file.Path(), 64);
    COmfReader reader(input);
    ASSERT_TRUE(reader.Next());
    ASSERT_EQ(truncate(file.Path().c_str(), 100), 0);
    while (const auto frame = reader.Next())
    {
        EXPECT_LE(frame->offset, 100u);
    }
    EXPECT_EQ(reader.Position(), recording.Image().size());
}

int OpenError(const std::string& path)
{
    try
    {
        const COmfFile input(path, 64);
    }
    catch (const std::system_error& error)
    {
        return error.code().value();
    }
    return 0;
}

TEST(OmfInput, WhatIsNoRegularFileIsRefused)
{
    EXPECT_EQ(OpenError("/nowhere/at/all.omf"), ENOENT);
    EXPECT_EQ(OpenError(::testing::TempDir()), EISDIR);
    EXPECT_EQ(OpenError("/dev/null"), ESPIPE);
    const std::string pipe = ::testing::TempDir() + "wrapton-omf-pipe-" + std::to_string(getpid());
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(OpenError(pipe), ESPIPE);
    std::filesystem::remove(pipe);
}

}  // namespace
}  // namespace Orbel::Wrapton
