// File components on disks that fill up, behind quotas, on closed descriptors and in places that
// cannot be written: a recording that lost a byte never counts as whole.
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "reliability/ComponentSubject.h"
#include "reliability/FixedSources.h"
#include "support/SmallDisks.h"

namespace Reliability
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Bytes;
using Support::File;

/// What getLastError() tells behind a lost block, and for a file that does not open.
constexpr uint32_t kLost = 0x10030011;
constexpr uint32_t kNotOpened = 5;

std::vector<ComponentKind> FileKinds()
{
    std::vector<ComponentKind> kinds;
    for (const ComponentKind& kind : kComponents)
        if (kind.isFile) kinds.push_back(kind);
    return kinds;
}

/// What the calls of a recording left in the slot for errors, which was empty ahead of each.
struct Told
{
    bool opened = false;
    uint32_t byOpen = 0;
    bool lostByFrame = false;
    uint32_t byClose = 0;
};

template <class Call>
uint32_t ErrorOf(Call call)
{
    setLastError(0);
    call();
    return getLastError();
}

/// The small frames of all kinds, and @p pictures of 20000 bytes. Every call is made.
Told Record(const File& component, const std::string& path, int pictures = 0)
{
    IFilePackage& file = *component;
    Told told;
    told.byOpen = ErrorOf([&] { told.opened = file.open(path.c_str()); });
    const auto input = [&](const Support::Frame& frame)
    {
        const uint32_t error = ErrorOf([&] { Support::Input(file, frame); });
        told.lostByFrame = told.lostByFrame || error == kLost;
    };
    for (const Support::Frame& frame : SmallFrames())
        input(frame);
    Support::Frame picture =
        Support::H264P(Support::Nal(Support::Join({Support::U8(0x41), Support::Payload(20000)})));
    Support::Frame sound =
        Support::Audio(SG_ENCODE_AUDIO_PCM16, Support::Payload(20000), 8000, 1, 16);
    for (int i = 0; i < pictures; ++i)
    {
        input(picture);
        input(sound);  // all that some containers take
    }
    told.byClose = ErrorOf([&] { EXPECT_TRUE(file.close()); });
    return told;
}

/// Close() tells of every loss, whenever it was.
void ExpectLoss(const Told& told)
{
    EXPECT_TRUE(told.opened);
    EXPECT_EQ(told.byClose, kLost);
}

class Disks : public ::testing::TestWithParam<ComponentKind>
{
protected:
    ~Disks() override { setLastError(0); }

    [[nodiscard]] std::string Path(const std::string& name) const { return m_directory.Path(name); }

    static File Make() { return Support::MakeFile(GetParam().type); }

    /// A recording to which nothing happens.
    Bytes Whole(int pictures = 0)
    {
        const Told told = Record(Make(), Path("whole"), pictures);
        EXPECT_TRUE(told.opened);
        EXPECT_FALSE(told.lostByFrame);
        EXPECT_NE(told.byClose, kLost);
        return Support::ReadFile(Path("whole"));
    }

    const FixedSources m_sources;
    const Support::TemporaryDirectory m_directory;
};

INSTANTIATE_TEST_SUITE_P(EveryType,
                         Disks,
                         ::testing::ValuesIn(FileKinds()),
                         [](const auto& kind) { return kind.param.Name(); });

TEST_P(Disks, AQuotaIsToldOfExceptWhereTheFileFits)
{
    const uint64_t size = Whole().size();
    ASSERT_GT(size, 500u);
    for (const uint64_t limit : {uint64_t{0}, uint64_t{1}, size / 2, size - 1})
    {
        SCOPED_TRACE("of " + std::to_string(limit) + " bytes");
        Told told;
        {
            const Support::FileSizeLimit quota(limit);
            told = Record(Make(), Path("cut"));
        }
        ExpectLoss(told);
        EXPECT_LE(std::filesystem::file_size(Path("cut")), limit);
    }
    Told told;
    {
        const Support::FileSizeLimit quota(size);
        told = Record(Make(), Path("cut"));
    }
    EXPECT_NE(told.byClose, kLost);
    EXPECT_EQ(Support::ReadFile(Path("cut")), Whole());
}

TEST_P(Disks, AFullDiskIsToldOfAndKeepsWhatFitted)
{
    constexpr uint64_t kRoom = 64 * 1024;
    const Support::SmallDisk disk(kRoom);
    if (!disk.Mounted()) GTEST_SKIP() << "this user may not mount a file system";

    const Told told = Record(Make(), disk.Path("a"), 10);
    ExpectLoss(told);
    EXPECT_TRUE(told.lostByFrame);
    const Bytes left = Support::ReadFile(disk.Path("a"));
    const Bytes whole = Whole(10);
    ASSERT_GT(whole.size(), 2 * kRoom);
    EXPECT_GT(left.size(), kRoom / 2);
    EXPECT_LE(left.size(), kRoom);
}

TEST_P(Disks, ADeviceThatIsAlwaysFullIsToldOf)
{
    ExpectLoss(Record(Make(), "/dev/full"));
}

/// Closes the descriptor that this process has of a file.
void CloseBehindItsBack(const std::string& path)
{
    const std::filesystem::path file = std::filesystem::canonical(path);
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd"))
    {
        std::error_code ignored;
        if (std::filesystem::read_symlink(entry.path(), ignored) != file) continue;
        ASSERT_EQ(close(std::stoi(entry.path().filename())), 0);
        return;
    }
    FAIL() << path << " is not open";
}

TEST_P(Disks, ADescriptorThatSomebodyClosedIsToldOf)
{
    const File file = Make();
    ASSERT_TRUE(file->open(Path("a").c_str()));
    CloseBehindItsBack(Path("a"));
    for (const Support::Frame& frame : SmallFrames())
        Support::Input(*file, frame);
    EXPECT_EQ(ErrorOf([&] { EXPECT_TRUE(file->close()); }), kLost);
}

TEST_P(Disks, APlaceThatCannotBeWrittenIsNotOpened)
{
    std::ofstream(Path("file")) << "x";
    std::vector<std::string> places = {
        Path(""), Path("file") + "/below", Path("none") + "/a", "", std::string(5000, 'x')};
    Support::SmallDisk disk(64 * 1024);
    if (disk.Mounted())
    {
        std::ofstream(disk.Path("there")) << "x";
        disk.MakeReadOnly();
        places.insert(places.end(), {disk.Path("there"), disk.Path("new")});
    }
    for (const std::string& place : places)
    {
        SCOPED_TRACE(place.substr(0, 100));
        const Told told = Record(Make(), place);
        EXPECT_FALSE(told.opened);
        EXPECT_EQ(told.byOpen, kNotOpened);
    }
    EXPECT_EQ(Support::ReadFile(Path("file")), Support::Text("x"));
}

}  // namespace
}  // namespace Reliability
