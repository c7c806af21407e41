// Runs the programs of the README that use the components and reads their files back.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include <sys/wait.h>

#include "readers/Mp4Reader.h"
#include "readers/TsReader.h"
#include "support/Bytes.h"
#include "support/Streams.h"
#include "support/TemporaryDirectory.h"

namespace Examples
{
namespace
{

using Support::Bytes;

constexpr const char* kCamera = RECORD_MEDIA "/camera_640x360_25fps_baseline.h264";

class Components : public ::testing::Test
{
protected:
    [[nodiscard]] std::string Path(const std::string& name) const { return m_directory.Path(name); }

    /// The exit code of a program.
    static int Run(const std::string& program, const std::vector<std::string>& arguments)
    {
        std::string command = program;
        for (const std::string& argument : arguments)
            command.append(" ").append(argument);
        command.append(" 2>/dev/null");
        // NOLINTNEXTLINE(cert-env33-c): the command is the test's own
        const int status = std::system(command.c_str());
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

private:
    Support::TemporaryDirectory m_directory;
};

TEST_F(Components, BroadcastEveryPicture)
{
    const std::string output = Path("camera.ts");
    ASSERT_EQ(Run(BROADCAST_PROGRAM, {"25", kCamera, output}), 0);
    Readers::TsReader reader;
    reader.Read(Support::ReadFile(output));
    const std::vector<Bytes> pictures = Support::AccessUnits(Support::ReadFile(kCamera));
    ASSERT_EQ(reader.Frames().size(), pictures.size());
    for (std::size_t i = 0; i < pictures.size(); ++i)
    {
        const Bytes delimited = Support::Join({Support::Hex("00 00 00 01 09 F0"), pictures[i]});
        ASSERT_TRUE(Support::Same(reader.Frames()[i].payload, delimited)) << "picture " << i;
        EXPECT_EQ(reader.Frames()[i].pts, 3600u * (i + 1));
    }
}

TEST_F(Components, RecordEveryPictureIntoAFileOfTheNamedType)
{
    for (const char* name : {"camera.mp4", "camera.3gp", "camera.MOV"})
    {
        const std::string output = Path(name);
        ASSERT_EQ(Run(FILE_PROGRAM, {"640 360 25", kCamera, output}), 0) << name;
        const Readers::Mp4Movie movie = Readers::ReadMp4(Support::ReadFile(output));
        ASSERT_EQ(movie.tracks.size(), 1u);
        EXPECT_EQ(movie.tracks[0].width, 640u);
        EXPECT_EQ(movie.tracks[0].height, 360u);
        const std::vector<Bytes> pictures = Support::AccessUnits(Support::ReadFile(kCamera));
        ASSERT_EQ(movie.tracks[0].samples.size(), pictures.size());
        for (std::size_t i = 0; i < pictures.size(); ++i)
            EXPECT_EQ(movie.tracks[0].samples[i].sync, Support::IsIdr(pictures[i])) << i;
    }
    for (const char* name : {"camera.mkv", "camera.avi", "camera.flv", "camera.asf", "camera.omf"})
    {
        ASSERT_EQ(Run(FILE_PROGRAM, {"640 360 25", kCamera, Path(name)}), 0) << name;
        EXPECT_GT(std::filesystem::file_size(Path(name)), std::filesystem::file_size(kCamera));
    }
}

TEST_F(Components, FailWhenTheyCannotReadOrWrite)
{
    EXPECT_EQ(Run(BROADCAST_PROGRAM, {}), 2);
    EXPECT_EQ(Run(BROADCAST_PROGRAM, {"25", Path("missing.h264"), Path("out.ts")}), 2);
    EXPECT_EQ(Run(BROADCAST_PROGRAM, {"25 /dev/null", Path("out.ts")}), 2);
    EXPECT_EQ(Run(BROADCAST_PROGRAM, {"25", kCamera, Path("missing/out.ts")}), 1);
    EXPECT_EQ(Run(BROADCAST_PROGRAM, {"25", kCamera, "/dev/full"}), 1);
    EXPECT_EQ(Run(FILE_PROGRAM, {"640 360 25", kCamera}), 2);
    EXPECT_EQ(Run(FILE_PROGRAM, {"640 360 25", Path("missing.h264"), Path("out.mp4")}), 2);
    EXPECT_EQ(Run(FILE_PROGRAM, {"640 360 25", kCamera, Path("missing/out.mp4")}), 1);
    EXPECT_EQ(Run(FILE_PROGRAM, {"640 360 25", kCamera, Path("out.unknown")}), 1);
    std::filesystem::create_symlink("/dev/full", Path("full.mp4"));
    EXPECT_EQ(Run(FILE_PROGRAM, {"640 360 25", kCamera, Path("full.mp4")}), 1);
}

}  // namespace
}  // namespace Examples
