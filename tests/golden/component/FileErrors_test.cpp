// Blocks that do not get to where they belong.
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <cstring>
#include <stdexcept>
#include <thread>

#include "support/Components.h"
#include "support/TemporaryDirectory.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using namespace Support;

constexpr uint32_t kLost = 0x10030011;

const Frame kSound = Audio(SG_ENCODE_AUDIO_PCM16, Payload(320), 8000, 1, 16);
const Frame kPicture = H264I(Join({Nal(Hex("67 42 00 1F")), Nal(Hex("68 CE")), Nal(Hex("65 88"))}));

/// The code that @p call leaves in an empty slot.
template <class Call>
uint32_t ErrorOf(Call call)
{
    setLastError(0);
    EXPECT_TRUE(call());
    const uint32_t error = getLastError();
    setLastError(0);
    return error;
}

TEST(LostBlocks, AreToldOfByEveryCallAndAgainByClose)
{
    EXPECT_EQ(kErrorWrite, kLost);
    const File file = MakeFile("wav");
    EXPECT_EQ(ErrorOf([&] { return file->open("/dev/full"); }), kLost);
    EXPECT_EQ(ErrorOf([&] { return Input(*file, kSound); }), kLost);
    EXPECT_EQ(ErrorOf([&] { return Input(*file, kSound); }), kLost);
    EXPECT_EQ(ErrorOf([&] { return file->close(); }), kLost);

    // The next recording is another one.
    const TemporaryDirectory directory;
    EXPECT_EQ(ErrorOf([&] { return file->open(directory.Path("a.wav").c_str()); }), 0u);
    EXPECT_EQ(ErrorOf([&] { return file->close(); }), 0u);
    EXPECT_EQ(ErrorOf([&] { return file->close(); }), 0u);
}

TEST(LostBlocks, AreToldOfByCloseWhenItLosesNone)
{
    const File file = MakeFile("omf");  // has no tailer
    EXPECT_EQ(ErrorOf([&] { return file->open("/dev/full"); }), 0u);
    EXPECT_EQ(ErrorOf([&] { return Input(*file, kPicture); }), kLost);
    EXPECT_EQ(ErrorOf([&] { return file->close(); }), kLost);
    EXPECT_EQ(ErrorOf([&] { return file->close(); }), 0u);
}

TEST(LostBlocks, GiveWayToTheRefusalOfAFrame)
{
    const File file = MakeFile("wav");
    EXPECT_EQ(ErrorOf([&] { return file->open("/dev/full"); }), kLost);
    EXPECT_FALSE(file->inputFrame(nullptr, 0, {}));
    EXPECT_EQ(getLastError(), 4u);
}

TEST(LostBlocks, OfAFileThatMayNotGrowLeaveWhatFitted)
{
    const TemporaryDirectory directory;
    const std::string path = directory.Path("a.omf");
    std::signal(SIGXFSZ, SIG_IGN);
    const File file = MakeFile("omf");
    ASSERT_TRUE(file->open(path.c_str()));
    EXPECT_EQ(ErrorOf([&] { return Input(*file, kPicture); }), 0u);
    const std::size_t whole = ReadFile(path).size();

    rlimit former{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &former), 0);
    rlimit tight = former;
    tight.rlim_cur = whole + 10;
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &tight), 0);
    EXPECT_EQ(ErrorOf([&] { return Input(*file, kPicture); }), kLost);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &former), 0);

    EXPECT_EQ(ReadFile(path).size(), whole + 10);
    EXPECT_EQ(ErrorOf([&] { return Input(*file, kPicture); }), 0u);
    EXPECT_EQ(ErrorOf([&] { return file->close(); }), kLost);
}

TEST(LostBlocks, ComeFromPipesThatCannotGoBack)
{
    const TemporaryDirectory directory;
    const std::string pipe = directory.Path("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    Bytes received;
    std::thread reader([&] { received = ReadFile(pipe); });
    const File file = MakeFile("wav");
    EXPECT_EQ(ErrorOf([&] { return file->open(pipe.c_str()); }), 0u);
    EXPECT_EQ(ErrorOf([&] { return Input(*file, kSound); }), kLost);  // the header once more
    EXPECT_EQ(ErrorOf([&] { return file->close(); }), kLost);
    reader.join();
    EXPECT_EQ(received.size(), 3u * 44);  // written all the same, where the pipe stands
}

TEST(LostBlocks, DoNotComeFromPipesThatAreOnlyAppendedTo)
{
    const TemporaryDirectory directory;
    const std::string pipe = directory.Path("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    Bytes received;
    std::thread reader([&] { received = ReadFile(pipe); });
    const File file = MakeFile("omf");
    EXPECT_EQ(ErrorOf([&] { return file->open(pipe.c_str()); }), 0u);
    EXPECT_EQ(ErrorOf([&] { return Input(*file, kPicture); }), 0u);
    EXPECT_EQ(ErrorOf([&] { return file->close(); }), 0u);
    reader.join();
    EXPECT_FALSE(received.empty());
}

TEST(Callable, MayThrowAnything)
{
    int calls = 0;
    const auto throwing = [&](FrameAttributes&, IWraptonData&) -> bool
    {
        if (++calls % 2 == 0) throw calls;
        throw std::runtime_error("no");
    };
    for (const char* type : {"mp4", "mov", "mkv", "avi", "asf", "flv", "omf", "wav"})
    {
        const File file = MakeFile(type);
        calls = 0;
        setLastError(0);
        EXPECT_TRUE(file->open(throwing)) << type;
        Input(*file, kPicture);
        Input(*file, kSound);
        EXPECT_EQ(ErrorOf([&] { return file->close(); }), kLost) << type;
        EXPECT_GT(calls, 0) << type;
    }
}

TEST(Callable, MayChangeTheEntriesItGets)
{
    const File file = MakeFile("wav");
    std::vector<long> offsets;
    ASSERT_TRUE(file->open(
        [&](FrameAttributes& info, IWraptonData&)
        {
            offsets.push_back(info.at("fileoffset"));
            info.clear();
            info["fileoffset"] = 1;
            return true;
        }));
    EXPECT_TRUE(Input(*file, kSound));
    EXPECT_TRUE(Input(*file, kSound));
    EXPECT_EQ(offsets, (std::vector<long>{0, 0, 44}));
}

TEST(FrameBytes, AreNotWrittenToByAnyComponent)
{
    const long page = sysconf(_SC_PAGESIZE);
    const auto size = static_cast<std::size_t>(page);
    void* const memory =
        mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(memory, MAP_FAILED);
    const auto length = static_cast<unsigned int>(kPicture.bytes.size());
    std::memcpy(memory, kPicture.bytes.data(), length);
    ASSERT_EQ(mprotect(memory, size, PROT_READ), 0);
    const TemporaryDirectory directory;
    for (const char* type :
         {"mov64", "mp464", "mp4noseek", "mp4", "3gp", "mov", "asf", "mkv", "avi", "omf", "flv"})
    {
        const File file = MakeFile(type);
        ASSERT_TRUE(file->open(directory.Path(type).c_str()));
        EXPECT_TRUE(file->inputFrame(memory, length, AttributesOf(kPicture))) << type;
        EXPECT_TRUE(file->close());
    }
    munmap(memory, size);
}

}  // namespace
}  // namespace Golden
