#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <filesystem>
#include <thread>

#include "Platform.h"
#include "support/Bytes.h"
#include "support/TemporaryDirectory.h"

namespace Orbel::Wrapton
{
namespace
{

using Support::Bytes;
using Support::OpenDescriptors;
using Support::Same;
using Support::Text;

constexpr uint32_t kCreate = LargeFile::kModeCreate | LargeFile::kModeWrite;

class LargeFileTest : public ::testing::Test
{
protected:
    [[nodiscard]] Bytes Content(const std::string& name) const
    {
        return Support::ReadFile(m_directory.Path(name));
    }

    static bool Write(LargeFile& file, const std::string& text)
    {
        return file.write(text.data(), text.size());
    }

    Support::TemporaryDirectory m_directory;
};

TEST_F(LargeFileTest, CreatesAndEmpties)
{
    EXPECT_EQ(kCreate, 4097u);
    {
        LargeFile file;
        EXPECT_FALSE(file.isOpen());
        ASSERT_TRUE(file.open(m_directory.Path("a").c_str(), kCreate));
        EXPECT_TRUE(file.isOpen());
        EXPECT_TRUE(Write(file, "0123456789"));
        EXPECT_TRUE(file.flush());
        EXPECT_TRUE(Same(Content("a"), Text("0123456789")));  // nothing waits in the process
    }
    LargeFile file;
    ASSERT_TRUE(file.open(m_directory.Path("a").c_str(), LargeFile::kModeWrite));
    EXPECT_TRUE(Write(file, "ab"));
    EXPECT_TRUE(Same(Content("a"), Text("ab23456789")));
    ASSERT_TRUE(file.open(m_directory.Path("a").c_str(), kCreate));
    EXPECT_TRUE(Same(Content("a"), {}));
}

TEST_F(LargeFileTest, OpensNothingElse)
{
    LargeFile file;
    EXPECT_FALSE(file.open(nullptr, kCreate));
    EXPECT_FALSE(file.open("", kCreate));
    EXPECT_FALSE(file.open(m_directory.Path("").c_str(), kCreate));
    EXPECT_FALSE(file.open(m_directory.Path("no/such").c_str(), kCreate));
    EXPECT_FALSE(file.open(m_directory.Path("new").c_str(), LargeFile::kModeWrite));
    for (const uint32_t mode : {0u, LargeFile::kModeCreate, 2u, 4098u, 4097u << 1})
    {
        EXPECT_FALSE(file.open(m_directory.Path("new").c_str(), mode)) << mode;
    }
    EXPECT_FALSE(file.isOpen());
    EXPECT_FALSE(std::filesystem::exists(m_directory.Path("new")));
}

TEST_F(LargeFileTest, SeeksFromAllThreeOrigins)
{
    LargeFile file;
    ASSERT_TRUE(file.open(m_directory.Path("a").c_str(), kCreate));
    EXPECT_TRUE(Write(file, "0123456789"));
    EXPECT_TRUE(file.seek(2, LargeFile::kSeekStart));
    EXPECT_TRUE(Write(file, "A"));
    EXPECT_TRUE(file.seek(2, LargeFile::kSeekCurrent));
    EXPECT_TRUE(Write(file, "B"));
    EXPECT_TRUE(file.seek(-6, LargeFile::kSeekCurrent));
    EXPECT_TRUE(Write(file, "C"));
    EXPECT_TRUE(file.seek(-1, LargeFile::kSeekEnd));
    EXPECT_TRUE(Write(file, "D"));
    EXPECT_TRUE(file.seek(2, LargeFile::kSeekEnd));  // leaves a hole of zeros
    EXPECT_TRUE(Write(file, "E"));
    EXPECT_TRUE(Same(Content("a"), Support::Join({Text("C1A34B678D"), {0, 0}, Text("E")})));
}

TEST_F(LargeFileTest, StaysWhereItIsWhenItCannotSeek)
{
    LargeFile file;
    ASSERT_TRUE(file.open(m_directory.Path("a").c_str(), kCreate));
    EXPECT_TRUE(Write(file, "01"));
    EXPECT_FALSE(file.seek(-1, LargeFile::kSeekStart));
    EXPECT_FALSE(file.seek(-3, LargeFile::kSeekCurrent));
    EXPECT_FALSE(file.seek(-3, LargeFile::kSeekEnd));
    EXPECT_FALSE(file.seek(LLONG_MAX, LargeFile::kSeekCurrent));
    EXPECT_FALSE(file.seek(LLONG_MIN, LargeFile::kSeekEnd));
    EXPECT_FALSE(file.seek(0, 3));
    EXPECT_FALSE(file.seek(0, -1));
    EXPECT_TRUE(Write(file, "2"));
    EXPECT_TRUE(Same(Content("a"), Text("012")));
}

TEST_F(LargeFileTest, WritesBehindFourGiB)
{
    LargeFile file;
    ASSERT_TRUE(file.open(m_directory.Path("a").c_str(), kCreate));
    EXPECT_TRUE(file.seek(0x1'0000'0005, LargeFile::kSeekStart));
    EXPECT_TRUE(Write(file, "x"));
    EXPECT_EQ(std::filesystem::file_size(m_directory.Path("a")), 0x1'0000'0006u);
}

TEST_F(LargeFileTest, GivesAFileUpForTheNextAndKeepsItWhenThereIsNone)
{
    LargeFile file;
    const auto before = OpenDescriptors();
    ASSERT_TRUE(file.open(m_directory.Path("a").c_str(), kCreate));
    EXPECT_TRUE(Write(file, "first"));
    ASSERT_TRUE(file.open(m_directory.Path("b").c_str(), kCreate));
    EXPECT_EQ(OpenDescriptors(), before + 1);
    EXPECT_TRUE(Write(file, "sec"));
    EXPECT_FALSE(file.open(m_directory.Path("no/such").c_str(), kCreate));
    EXPECT_TRUE(file.isOpen());
    EXPECT_TRUE(Write(file, "ond"));
    EXPECT_TRUE(Same(Content("a"), Text("first")));
    EXPECT_TRUE(Same(Content("b"), Text("second")));
    EXPECT_TRUE(file.close());
    EXPECT_EQ(OpenDescriptors(), before);
}

TEST_F(LargeFileTest, DoesNothingWhileNothingIsOpen)
{
    LargeFile file;
    EXPECT_FALSE(file.close());
    EXPECT_FALSE(file.flush());
    EXPECT_FALSE(file.seek(0, LargeFile::kSeekStart));
    EXPECT_FALSE(Write(file, "x"));
    ASSERT_TRUE(file.open(m_directory.Path("a").c_str(), kCreate));
    EXPECT_TRUE(file.write(nullptr, 0));
    EXPECT_TRUE(file.close());
    EXPECT_FALSE(file.close());
    EXPECT_FALSE(Write(file, "x"));
}

TEST_F(LargeFileTest, TellsThatADeviceIsFull)
{
    LargeFile file;
    ASSERT_TRUE(file.open("/dev/full", kCreate));
    EXPECT_FALSE(Write(file, "x"));
    EXPECT_TRUE(file.close());
}

TEST_F(LargeFileTest, FeedsAPipeInOrder)
{
    const std::string pipe = m_directory.Path("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    Bytes received;
    std::thread reader([&] { received = Support::ReadFile(pipe); });
    LargeFile file;
    ASSERT_TRUE(file.open(pipe.c_str(), kCreate));
    EXPECT_TRUE(file.seek(0, LargeFile::kSeekStart));
    EXPECT_TRUE(Write(file, "01"));
    EXPECT_TRUE(file.seek(0, LargeFile::kSeekCurrent));
    EXPECT_TRUE(file.seek(2, LargeFile::kSeekStart));
    EXPECT_TRUE(file.seek(0, LargeFile::kSeekEnd));
    EXPECT_FALSE(file.seek(0, LargeFile::kSeekStart));  // it cannot go back
    EXPECT_TRUE(Write(file, "23"));
    EXPECT_TRUE(file.close());
    reader.join();
    EXPECT_TRUE(Same(received, Text("0123")));
}

TEST_F(LargeFileTest, IsNotInheritedByOtherPrograms)
{
    LargeFile file;
    ASSERT_TRUE(file.open(m_directory.Path("a").c_str(), kCreate));
    const std::string self = "/proc/self/fd";
    for (const auto& entry : std::filesystem::directory_iterator(self))
    {
        std::error_code error;
        if (std::filesystem::read_symlink(entry, error) != m_directory.Path("a")) continue;
        const int number = std::stoi(entry.path().filename().string());
        EXPECT_EQ(fcntl(number, F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
    }
}

}  // namespace
}  // namespace Orbel::Wrapton
