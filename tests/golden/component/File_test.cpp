// Recordings into files and into callables.
#include <cstring>
#include <map>

#include "support/Components.h"
#include "support/Recorder.h"
#include "support/TemporaryDirectory.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using namespace Support;

const Frame kSound = Audio(SG_ENCODE_AUDIO_PCM16, Payload(320), 8000, 1, 16);
const Frame kPicture = H264I(Join({Nal(Hex("67 42 00 1F")), Nal(Hex("68 CE")), Nal(Hex("65 88"))}));

/// RIFF, "WAVE", the format of 8000 Hz mono in 16 bits, and "data".
Bytes WavHeader(uint32_t dataSize)
{
    return Join({Text("RIFF"),
                 Lsb32(dataSize + 36),
                 Text("WAVE"),
                 Text("fmt "),
                 Lsb32(16),
                 Lsb16(1),
                 Lsb16(1),
                 Lsb32(8000),
                 Lsb32(16000),
                 Lsb16(2),
                 Lsb16(16),
                 Text("data"),
                 Lsb32(dataSize)});
}

class FileComponent : public ::testing::Test
{
protected:
    FileComponent() { setLastError(0); }

    [[nodiscard]] std::string Path(const std::string& name) const { return m_directory.Path(name); }
    [[nodiscard]] Bytes Content(const std::string& name) const { return ReadFile(Path(name)); }

    TemporaryDirectory m_directory;
};

struct Given
{
    long offset;
    long type;
    Bytes bytes;
};

/// Keeps what a callable is given.
FilePackageProc Keeper(std::vector<Given>& given)
{
    return [&given](FrameAttributes& info, IWraptonData& block)
    {
        EXPECT_EQ(info.size(), 2u);
        given.push_back({info.at("fileoffset"), info.at("offsettype"), BytesOf(block)});
        return true;
    };
}

TEST_F(FileComponent, WritesAWavFileOf684Bytes)
{
    const File file = MakeFile("wav");
    ASSERT_TRUE(file->open(Path("a.wav").c_str()));
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(Input(*file, kSound));
    EXPECT_TRUE(file->close());
    const Bytes content = Content("a.wav");
    EXPECT_EQ(content.size(), 684u);
    EXPECT_TRUE(Same(content, Join({WavHeader(640), kSound.bytes, kSound.bytes})));
    EXPECT_EQ(getLastError(), 0u);
}

TEST_F(FileComponent, GivesACallableEveryBlockWithItsPlace)
{
    std::vector<Given> given;
    const File file = MakeFile("WAV");
    ASSERT_TRUE(file->open(Keeper(given)));
    ASSERT_EQ(given.size(), 1u);
    EXPECT_EQ(given[0].offset, 0);
    EXPECT_EQ(given[0].type, 0);
    EXPECT_EQ(given[0].bytes.size(), 44u);
    EXPECT_TRUE(Input(*file, kSound));  // brings the header once more
    EXPECT_TRUE(Input(*file, kSound));
    ASSERT_EQ(given.size(), 3u);
    EXPECT_EQ(given[2].offset, 44);
    EXPECT_EQ(given[2].type, 0);
    EXPECT_TRUE(Same(given[2].bytes, kSound.bytes));
    EXPECT_TRUE(file->close());
    ASSERT_EQ(given.size(), 4u);
    EXPECT_EQ(given[3].offset, 0);
    EXPECT_EQ(given[3].type, 0);
    EXPECT_EQ(given[3].bytes.size(), 44u);
}

TEST_F(FileComponent, GivesACallableTheOriginOfAppendedBlocks)
{
    std::vector<Given> given;
    const File file = MakeFile("omf");
    ASSERT_TRUE(file->open(Keeper(given)));
    EXPECT_TRUE(Input(*file, kPicture));
    ASSERT_EQ(given.size(), 1u);
    EXPECT_EQ(given[0].offset, 0);
    EXPECT_EQ(given[0].type, 1);
}

TEST_F(FileComponent, MakesA3gpThatTheFlatInterfaceRefuses)
{
    EXPECT_EQ(SG_CreateHandle(SG_STREAM_TYPE_3GP, nullptr), nullptr);
    const File file = MakeFile("3gp");
    ASSERT_TRUE(file->open(Path("a.3gp").c_str()));
    EXPECT_TRUE(Input(*file, kPicture));
    EXPECT_TRUE(file->close());
    const Bytes content = Content("a.3gp");
    EXPECT_TRUE(Same(Slice(content, 4, 4), Text("ftyp")));
    const auto has = [&](const char* type)
    {
        const Bytes wanted = Text(type);
        return std::search(content.begin(), content.end(), wanted.begin(), wanted.end()) !=
               content.end();
    };
    EXPECT_TRUE(has("moov"));
    EXPECT_TRUE(has("avc1"));
}

TEST_F(FileComponent, OpensNoFileWithoutAPath)
{
    const File file = MakeFile("wav");
    EXPECT_FALSE(file->open(nullptr));
    EXPECT_EQ(getLastError(), 5u);
    setLastError(0);
    EXPECT_FALSE(file->open(""));
    EXPECT_EQ(getLastError(), 5u);
    setLastError(0);
    EXPECT_FALSE(file->open(Path("no/such.wav").c_str()));
    EXPECT_EQ(getLastError(), 5u);
    EXPECT_FALSE(file->open(Path("").c_str()));
    ASSERT_TRUE(file->open(Path("a.wav").c_str()));  // none of these did harm
    EXPECT_TRUE(Input(*file, kSound));
    EXPECT_EQ(getLastError(), 5u);  // a success leaves it
}

TEST_F(FileComponent, TakesNoEmptyCallable)
{
    const File file = MakeFile("wav");
    setLastError(77);
    EXPECT_FALSE(file->open(FilePackageProc()));
    EXPECT_EQ(getLastError(), 77u);
    EXPECT_FALSE(Input(*file, kSound));  // the recording did not begin
    EXPECT_EQ(getLastError(), 4u);
}

TEST_F(FileComponent, EmptiesAFileThatIsThere)
{
    for (int i = 0; i < 2; ++i)
    {
        const File file = MakeFile("omf");
        ASSERT_TRUE(file->open(Path("a.omf").c_str()));
        EXPECT_TRUE(Content("a.omf").empty());
        EXPECT_TRUE(Input(*file, kPicture));
        EXPECT_FALSE(Content("a.omf").empty());  // as soon as the call is over
        EXPECT_TRUE(file->close());
    }
}

/// What each packager says to a frame ahead of a header.
TEST_F(FileComponent, TakesFramesAheadOfOpenAsThePackagerDoes)
{
    const std::map<std::string, uint32_t> types = {{"mov64", SG_STREAM_TYPE_MOV_64},
                                                   {"mp464", SG_STREAM_TYPE_MP4_64},
                                                   {"mp4noseek", SG_STREAM_TYPE_MP4_NOSEEK},
                                                   {"mp4", SG_STREAM_TYPE_MP4},
                                                   {"3gp", SG_STREAM_TYPE_MP4},
                                                   {"mov", SG_STREAM_TYPE_MOV},
                                                   {"asf", SG_STREAM_TYPE_ASF},
                                                   {"mkv", SG_STREAM_TYPE_MKV},
                                                   {"avi", SG_STREAM_TYPE_AVI},
                                                   {"omf", SG_STREAM_TYPE_OMF},
                                                   {"flv", SG_STREAM_TYPE_FLV},
                                                   {"wav", SG_STREAM_TYPE_WAV}};
    ASSERT_EQ(types.size(), 12u);
    for (const auto& [name, type] : types)
    {
        const File file = MakeFile(name);
        void* const flat = SG_CreateHandle(type, nullptr);
        for (const Frame& frame : {kPicture, kSound, Aac(Payload(20)), Ext(Payload(5)), H264I({})})
        {
            Bytes bytes = frame.bytes;
            SGFrameInfo record = RecordOf(frame);
            record.frame_pointer = bytes.data();
            const bool taken = SG_InputFrame(flat, &record) == SG_ERR_NOERR;
            setLastError(0);
            EXPECT_EQ(Input(*file, frame), taken) << name;
            EXPECT_EQ(getLastError(), taken ? 0u : 4u) << name;
        }
        EXPECT_TRUE(file->close());
        EXPECT_TRUE(file->close());
        SG_DestroyHandle(flat);
    }
}

TEST_F(FileComponent, LeavesTheFirstFileForASecondWithoutAnEnd)
{
    const auto before = OpenDescriptors();
    {
        const File file = MakeFile("wav");
        ASSERT_TRUE(file->open(Path("a.wav").c_str()));
        EXPECT_TRUE(Input(*file, kSound));
        EXPECT_TRUE(Input(*file, kSound));
        ASSERT_TRUE(file->open(Path("b.wav").c_str()));
        EXPECT_EQ(OpenDescriptors(), before + 1);
        EXPECT_TRUE(Input(*file, kSound));
        EXPECT_TRUE(file->close());
        EXPECT_EQ(OpenDescriptors(), before);
    }
    EXPECT_EQ(Content("a.wav").size(), 44u + 320);
    // The packager goes on counting: nothing but the second header and what follows is here.
    EXPECT_EQ(Content("b.wav").size(), 44u + 320 + 44 + 320);
    EXPECT_EQ(getLastError(), 0u);
}

TEST_F(FileComponent, GoesOnWithTheFirstFileWhenThereIsNoSecond)
{
    const File file = MakeFile("mp4");
    ASSERT_TRUE(file->open(Path("a.mp4").c_str()));
    EXPECT_TRUE(Input(*file, kPicture));
    EXPECT_FALSE(file->open(Path("no/such.mp4").c_str()));
    EXPECT_EQ(getLastError(), 5u);
    EXPECT_TRUE(Input(*file, kPicture));
    EXPECT_TRUE(file->close());

    SeekingSink sink;
    Recorder flat(SG_STREAM_TYPE_MP4, sink);
    EXPECT_EQ(flat.HeaderWith(nullptr), 0);
    EXPECT_EQ(flat.Input(kPicture), 0);
    EXPECT_EQ(flat.Input(kPicture), 0);
    EXPECT_EQ(flat.Tailer(), 0);
    EXPECT_EQ(Content("a.mp4").size(), sink.Image().size());
}

TEST_F(FileComponent, RecordsOneFileAfterAnother)
{
    const File file = MakeFile("mkv");
    for (const char* name : {"a.mkv", "b.mkv"})
    {
        ASSERT_TRUE(file->open(Path(name).c_str()));
        EXPECT_TRUE(Input(*file, kPicture));
        EXPECT_TRUE(file->close());
    }
    EXPECT_EQ(Content("a.mkv").size(), Content("b.mkv").size());
}

TEST_F(FileComponent, PrefersAFileAndGoesBackToTheCallable)
{
    std::vector<Given> given;
    const File file = MakeFile("omf");
    ASSERT_TRUE(file->open(Keeper(given)));
    EXPECT_TRUE(Input(*file, kPicture));
    EXPECT_EQ(given.size(), 1u);
    ASSERT_TRUE(file->open(Path("a.omf").c_str()));
    EXPECT_TRUE(Input(*file, kPicture));
    EXPECT_EQ(given.size(), 1u);
    ASSERT_TRUE(file->open(Keeper(given)));  // the file stays open
    EXPECT_TRUE(Input(*file, kPicture));
    EXPECT_EQ(given.size(), 1u);
    EXPECT_TRUE(file->close());
    EXPECT_TRUE(Input(*file, kPicture));
    EXPECT_EQ(given.size(), 2u);
    EXPECT_EQ(Content("a.omf").size(), given[0].bytes.size() * 2);
}

TEST_F(FileComponent, DropsBlocksThatHaveNowhereToGo)
{
    const File file = MakeFile("omf");
    EXPECT_TRUE(Input(*file, kPicture));
    ASSERT_TRUE(file->open(Path("a.omf").c_str()));
    EXPECT_TRUE(file->close());
    EXPECT_TRUE(Input(*file, kPicture));
    EXPECT_TRUE(Content("a.omf").empty());
    EXPECT_EQ(getLastError(), 0u);
}

TEST_F(FileComponent, EndsWithoutATailerWhenItIsNotClosed)
{
    const auto before = OpenDescriptors();
    {
        const File file = MakeFile("wav");
        ASSERT_TRUE(file->open(Path("a.wav").c_str()));
        EXPECT_TRUE(Input(*file, kSound));
        EXPECT_TRUE(Input(*file, kSound));
    }
    EXPECT_EQ(OpenDescriptors(), before);
    const Bytes content = Content("a.wav");
    EXPECT_EQ(content.size(), 44u + 320);
    EXPECT_NE(Slice(content, 40, 4), Lsb32(320));  // sizes that are still those of the start
}

TEST_F(FileComponent, GivesNoBackupWhereThereIsNone)
{
    SharedPtr<IWraptonData> header;
    FrameAttributes info = {{"seekpos", 5}};
    for (const char* type : {"asf", "mkv", "avi", "omf", "flv", "wav"})
    {
        const File file = MakeFile(type);
        ASSERT_TRUE(file->open(Path("a").c_str()));
        Input(*file, kPicture);
        setLastError(77);
        EXPECT_FALSE(file->getbackup(header, info)) << type;
        EXPECT_EQ(getLastError(), 77u) << type;
    }
    const File file = MakeFile("mp4");
    EXPECT_FALSE(file->getbackup(header, info));  // nothing is open
    EXPECT_EQ(getLastError(), 77u);
    EXPECT_EQ(header, nullptr);
    EXPECT_EQ(info, (FrameAttributes{{"seekpos", 5}}));
}

TEST_F(FileComponent, GivesTheMovieBoxAndItsPlaceAsABackup)
{
    for (const char* type : {"mp4", "mp464", "mp4noseek", "mov", "mov64", "3gp"})
    {
        std::vector<Given> given;
        const File file = MakeFile(type);
        ASSERT_TRUE(file->open(Keeper(given)));
        EXPECT_TRUE(Input(*file, kPicture));
        long end = 0;
        for (const Given& block : given)
            end = std::max(end, block.offset + static_cast<long>(block.bytes.size()));
        SharedPtr<IWraptonData> header;
        FrameAttributes info = {{"seektype", 9}, {"other", 1}};
        ASSERT_TRUE(file->getbackup(header, info)) << type;
        ASSERT_NE(header, nullptr);
        const Bytes box = BytesOf(*header);
        EXPECT_EQ(ReadMsb32(box, 0), box.size());
        EXPECT_TRUE(Same(Slice(box, 4, 4), Text("moov")));
        EXPECT_EQ(info, (FrameAttributes{{"seekpos", end}, {"seektype", 0}, {"other", 1}}));
        EXPECT_TRUE(file->close());
        EXPECT_FALSE(file->getbackup(header, info));
    }
}

}  // namespace
}  // namespace Golden
