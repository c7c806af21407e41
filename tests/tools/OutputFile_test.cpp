#include "OutputFile.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <utility>

#include "Failure.h"

namespace Orbel::Wrapton::Command
{
namespace
{

namespace fs = std::filesystem;

std::span<const unsigned char> Text(std::string_view text)
{
    return {reinterpret_cast<const unsigned char*>(text.data()), text.size()};
}

class OutputFileTest : public ::testing::Test
{
protected:
    OutputFileTest()
    {
        std::string pattern = (fs::temp_directory_path() / "wrapton-XXXXXX").string();
        if (mkdtemp(pattern.data()) != nullptr) m_directory = pattern;
    }
    ~OutputFileTest() override
    {
        std::error_code ignored;
        fs::remove_all(m_directory, ignored);
    }

    [[nodiscard]] std::string Path(const std::string& name) const
    {
        return (m_directory / name).string();
    }

    static std::string Content(const std::string& path)
    {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    static void Put(const std::string& path, std::string_view text)
    {
        std::ofstream(path, std::ios::binary) << text;
    }

    /// What Finish() says.
    static std::string Finish(OutputFile& output)
    {
        try
        {
            output.Finish();
        }
        catch (const Failure& failure)
        {
            return failure.what();
        }
        return "";
    }

    fs::path m_directory;
};

TEST_F(OutputFileTest, BlocksGoWhereTheirOriginSays)
{
    OutputFile output(Path("out"), {});
    EXPECT_EQ(output.Place(0, Origin::kStart, Text("0123456789")), 10U);
    EXPECT_EQ(output.Place(2, Origin::kStart, Text("ab")), 2U);
    EXPECT_EQ(output.Place(0, Origin::kCurrent, Text("c")), 1U);  // at 4
    EXPECT_EQ(output.Place(1, Origin::kCurrent, Text("d")), 1U);  // at 6
    EXPECT_EQ(output.Place(0, Origin::kEnd, Text("e")), 1U);      // at 10
    EXPECT_EQ(output.Place(-2, Origin::kEnd, Text("f")), 1U);     // at 9
    EXPECT_EQ(output.Place(12, Origin::kStart, Text("g")), 1U);   // leaves a hole of one byte
    EXPECT_EQ(output.Size(), 13U);
    EXPECT_EQ(Finish(output), "");
    EXPECT_EQ(Content(Path("out")), std::string("01abc5d78fe\0g", 13));
}

TEST_F(OutputFileTest, OldContentIsGone)
{
    Put(Path("out"), "something longer than what comes");
    OutputFile output(Path("out"), {});
    output.Place(0, Origin::kStart, Text("new"));
    EXPECT_EQ(Finish(output), "");
    EXPECT_EQ(Content(Path("out")), "new");
}

TEST_F(OutputFileTest, AnInputIsNotOpenedWhateverItsName)
{
    Put(Path("in"), "input");
    fs::create_symlink(Path("in"), Path("soft"));
    fs::create_hard_link(Path("in"), Path("hard"));
    for (const char* name : {"in", "soft", "hard"})
        EXPECT_THROW(OutputFile(Path(name), {Path("other"), Path("in")}), Failure) << name;
    EXPECT_EQ(Content(Path("in")), "input");
}

TEST_F(OutputFileTest, TheFirstErrorStays)
{
    OutputFile output("/dev/full", {});
    EXPECT_TRUE(output.Good());
    EXPECT_EQ(output.Place(0, Origin::kStart, Text("x")), 0U);
    EXPECT_FALSE(output.Good());
    EXPECT_EQ(output.Place(-1, Origin::kStart, Text("x")), 0U);
    EXPECT_EQ(Finish(output), "/dev/full: No space left on device; nothing of it is left on disk");
}

TEST_F(OutputFileTest, APositionAheadOfTheStartIsAnError)
{
    OutputFile output(Path("out"), {});
    output.Place(0, Origin::kStart, Text("abc"));
    EXPECT_EQ(output.Place(-4, Origin::kEnd, Text("x")), 0U);
    EXPECT_EQ(Finish(output),
              Path("out") +
                  ": Invalid argument; an unfinished file of 3 bytes is left, it does not"
                  " play");
}

TEST_F(OutputFileTest, ARemovedOrReplacedFileIsAnError)
{
    OutputFile removed(Path("out"), {});
    removed.Place(0, Origin::kStart, Text("abc"));
    fs::remove(Path("out"));
    EXPECT_NE(Finish(removed).find("it was removed"), std::string::npos);

    OutputFile replaced(Path("out"), {});
    replaced.Place(0, Origin::kStart, Text("abc"));
    fs::rename(Path("out"), Path("elsewhere"));
    Put(Path("out"), "another");
    EXPECT_NE(Finish(replaced).find("it was removed"), std::string::npos);
    EXPECT_EQ(Content(Path("out")), "another");
}

TEST_F(OutputFileTest, NothingIsWrittenAfterTheEnd)
{
    OutputFile output(Path("out"), {});
    output.Place(0, Origin::kStart, Text("abc"));
    EXPECT_EQ(Finish(output), "");
    EXPECT_EQ(output.Place(0, Origin::kEnd, Text("x")), 0U);
    EXPECT_EQ(Content(Path("out")), "abc");
}

TEST_F(OutputFileTest, ARehearsalHasTheSizeAndWritesNothing)
{
    Put(Path("old"), "old");
    for (const char* name : {"old", "new"})
    {
        const auto output = OutputFile::Rehearsed(Path(name), {}, SG_STREAM_TYPE_MP4);
        EXPECT_EQ(output->Place(0, Origin::kStart, Text("0123456789")), 10U);
        EXPECT_EQ(output->Place(4, Origin::kStart, Text("ab")), 2U);
        EXPECT_EQ(output->Size(), 10U);
        EXPECT_EQ(Finish(*output), "");
    }
    EXPECT_EQ(Content(Path("old")), "old");
    EXPECT_FALSE(fs::exists(Path("new")));
}

TEST_F(OutputFileTest, ARehearsalRefusesAnInput)
{
    Put(Path("in"), "input");
    fs::create_symlink(Path("in"), Path("soft"));
    EXPECT_THROW(OutputFile::Rehearsed(Path("soft"), {Path("in")}, SG_STREAM_TYPE_MP4), Failure);
    EXPECT_NO_THROW(OutputFile::Rehearsed(Path("in"), {Path("none")}, SG_STREAM_TYPE_MP4));
}

TEST_F(OutputFileTest, ARehearsedFlvHeaderReplacesTheFirstInAFileAndFollowsInAPipe)
{
    const std::pair<std::string, uint64_t> outputs[] = {
        {Path("out.flv"), 8}, {"-", 12}, {"/dev/null", 12}};
    for (const auto& [path, size] : outputs)
    {
        const auto output = OutputFile::Rehearsed(path, {}, SG_STREAM_TYPE_FLV);
        output->Place({0, Origin::kCurrent, Text("FLV\1tags")});
        output->Place({0, Origin::kCurrent, Text("FLV\1"), true});
        EXPECT_EQ(output->Size(), size) << path;
    }
}

TEST_F(OutputFileTest, StandardOutputIsKnownByItsName)
{
    EXPECT_TRUE(IsStandardOutput("-"));
    EXPECT_FALSE(IsStandardOutput(Path("none")));
    EXPECT_FALSE(IsStandardOutput("./-"));
}

}  // namespace
}  // namespace Orbel::Wrapton::Command
