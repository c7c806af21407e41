// Runs the program of the README and reads its file back.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <sys/wait.h>
#include <unistd.h>

#include "readers/Mp4Reader.h"
#include "support/Bytes.h"
#include "support/Streams.h"

namespace Examples
{
namespace
{

using Support::Bytes;

constexpr const char* kCamera = RECORD_MEDIA "/camera_640x360_25fps_baseline.h264";

/// A directory for one test, removed with everything in it.
class Record : public ::testing::Test
{
public:
    Record(const Record&) = delete;
    Record& operator=(const Record&) = delete;

protected:
    Record()
    {
        std::string name = (std::filesystem::temp_directory_path() / "record-XXXXXX").string();
        m_directory = mkdtemp(name.data());
    }
    ~Record() override { std::filesystem::remove_all(m_directory); }

    [[nodiscard]] std::string Path(const std::string& name) const
    {
        return (m_directory / name).string();
    }

    /// The exit code of the program.
    static int Run(const std::vector<std::string>& arguments, const char* program = RECORD_PROGRAM)
    {
        std::string command = program;
        for (const std::string& argument : arguments)
        {
            command.append(" ").append(argument);
        }
        command.append(" 2>/dev/null");
        // NOLINTNEXTLINE(cert-env33-c): the command is the test's own
        const int status = std::system(command.c_str());
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

private:
    std::filesystem::path m_directory;
};

TEST_F(Record, WritesEveryPictureIntoAFileThatStartsFast)
{
    const std::string output = Path("camera.mp4");
    ASSERT_EQ(Run({"640 360 25", kCamera, output}), 0);

    const Readers::Mp4Movie movie = Readers::ReadMp4(Support::ReadFile(output));
    EXPECT_EQ(Readers::TypesOf(movie.boxes), "ftyp free moov mdat");
    ASSERT_EQ(movie.tracks.size(), 1u);
    const Readers::Mp4Track& track = movie.tracks[0];
    EXPECT_EQ(track.entry, "avc1");
    EXPECT_EQ(track.width, 640u);
    EXPECT_EQ(track.height, 360u);

    const std::vector<Bytes> pictures = Support::AccessUnits(Support::ReadFile(kCamera));
    ASSERT_EQ(track.samples.size(), pictures.size());
    EXPECT_EQ(pictures.size(), 100u);
    for (std::size_t i = 0; i < pictures.size(); ++i)
    {
        EXPECT_EQ(track.samples[i].sync, Support::IsIdr(pictures[i])) << "picture " << i;
    }
}

TEST_F(Record, TakesAStreamOfSmallPictures)
{
    const std::string input = Path("tiny.h264");
    const Bytes stream = Support::Hex(
        "00 00 00 01 67 42 00 1F 00 00 00 01 68 CE "  // parameter sets
        "00 00 01 65 88 84 00 00 01 65 48 "           // a key picture of two slices
        "00 00 00 01 41 9A 02 "                       // a picture
        "00 00 01 09 F0 00 00 01 41 9A 04");          // a picture behind its delimiter
    std::ofstream(input, std::ios::binary)
        .write(reinterpret_cast<const char*>(stream.data()), std::ssize(stream));

    const std::string output = Path("tiny.mp4");
    ASSERT_EQ(Run({"64 48 10", input, output}), 0);
    const Readers::Mp4Movie movie = Readers::ReadMp4(Support::ReadFile(output));
    ASSERT_EQ(movie.tracks.size(), 1u);
    const auto& samples = movie.tracks[0].samples;
    ASSERT_EQ(samples.size(), 3u);
    EXPECT_EQ(samples[0].size, 8u + 6u + 7u + 6u);  // four units behind lengths
    EXPECT_EQ(samples[1].size, 7u);
    EXPECT_EQ(samples[2].size, 6u + 7u);
}

TEST_F(Record, FailsWhenItCannotReadOrWrite)
{
    EXPECT_EQ(Run({}), 2);
    EXPECT_EQ(Run({"640 360 25", kCamera}), 2);
    EXPECT_EQ(Run({"640 360 25", Path("missing.h264"), Path("out.mp4")}), 2);
    EXPECT_EQ(Run({"640 360 25 /dev/null", Path("out.mp4")}), 2);
    EXPECT_FALSE(std::filesystem::exists(Path("out.mp4")));
    EXPECT_EQ(Run({"640 360 25", kCamera, Path("missing/out.mp4")}), 2);
    EXPECT_EQ(Run({"640 360 25", kCamera, "/dev/full"}), 1);
}

TEST_F(Record, IsMendedWithTheIndexThatWasKept)
{
    const std::vector<Bytes> pictures = Support::AccessUnits(Support::ReadFile(kCamera));
    std::size_t known = pictures.size();  // up to the last key picture: the rest is lost
    while (!Support::IsIdr(pictures[known - 1]))
        --known;
    ASSERT_LT(known, pictures.size());
    for (const char* type : {"mp4", "mov", "3gp", "mp464", "mov64", "mp4noseek"})
    {
        const std::string output = Path(type);
        const std::string kept = Path("kept");
        ASSERT_EQ(Run({"record", type, "640 360 25", kCamera, output, kept}, MEND_PROGRAM), 0);
        ASSERT_EQ(Run({"repair", output, kept}, MEND_PROGRAM), 0) << type;

        const Readers::Mp4Movie movie = Readers::ReadMp4(Support::ReadFile(output));
        ASSERT_EQ(movie.tracks.size(), 1u) << type;
        const auto& samples = movie.tracks[0].samples;
        ASSERT_EQ(samples.size(), known) << type;
        for (std::size_t i = 0; i < known; ++i)
            EXPECT_EQ(samples[i].sync, Support::IsIdr(pictures[i])) << type << ", picture " << i;
    }
    EXPECT_EQ(Run({}, MEND_PROGRAM), 2);
    EXPECT_EQ(Run({"record avi 640 360 25", kCamera, Path("out"), Path("kept")}, MEND_PROGRAM), 1);
    EXPECT_EQ(Run({"repair", Path("mp4"), Path("missing")}, MEND_PROGRAM), 1);
}

TEST_F(Record, WritesEveryJpegPictureByTheHeaderForCxx)
{
    const std::string input = RECORD_MEDIA "/qvga_320x240_12fps.mjpeg";
    const std::string output = Path("camera.mp4");
    ASSERT_EQ(Run({"320 240 12", input, output}, RECORD_PICTURES_PROGRAM), 0);

    const Readers::Mp4Movie movie = Readers::ReadMp4(Support::ReadFile(output));
    EXPECT_EQ(Readers::TypesOf(movie.boxes), "ftyp free moov mdat");
    ASSERT_EQ(movie.tracks.size(), 1u);
    const std::vector<Bytes> pictures = Support::JpegPictures(Support::ReadFile(input));
    ASSERT_GT(pictures.size(), 1u);
    ASSERT_EQ(movie.tracks[0].samples.size(), pictures.size());
    for (std::size_t i = 0; i < pictures.size(); ++i)
        EXPECT_EQ(movie.tracks[0].samples[i].size, pictures[i].size()) << "picture " << i;

    EXPECT_EQ(Run({}, RECORD_PICTURES_PROGRAM), 2);
    EXPECT_EQ(Run({"320 240 12", input, Path("missing/out.mp4")}, RECORD_PICTURES_PROGRAM), 1);
    EXPECT_EQ(Run({"320 240 12", input, "/dev/full"}, RECORD_PICTURES_PROGRAM), 1);
}

}  // namespace
}  // namespace Examples
