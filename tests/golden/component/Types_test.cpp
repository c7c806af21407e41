// Which names make which components.
#include <set>

#include "support/Components.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using namespace Support;
using namespace std::string_literals;

const std::vector<std::string> kStreams = {"asf",
                                           "ASF",
                                           "flv",
                                           "FLV",
                                           "omf",
                                           "OMF",
                                           "rtp",
                                           "RTP",
                                           "ts",
                                           "TS",
                                           "ps",
                                           "PS",
                                           "qvps",
                                           "QVPS",
                                           "gaysps",
                                           "GAYSPS"};
const std::vector<std::string> kFiles = {
    "MOV64", "mov64", "MP464", "mp464", "MP4NOSEEK", "mp4noseek", "MP4", "mp4",
    "3GP",   "3gp",   "MOV",   "mov",   "ASF",       "asf",       "MKV", "mkv",
    "AVI",   "avi",   "OMF",   "omf",   "FLV",       "flv",       "WAV", "wav"};

/// Names that are almost one of @p names.
std::set<std::string> NearMisses(const std::vector<std::string>& names)
{
    std::set<std::string> misses = {"", " ", "\0"s, "unknown"};
    for (const std::string& name : names)
    {
        misses.insert({name + " ",
                       " " + name,
                       name + "\0"s,
                       name + "x",
                       name.substr(1),
                       name.substr(0, name.size() - 1),
                       name + name,
                       "." + name});
        std::string mixed = name;
        for (char& letter : mixed)
        {
            if (std::isalpha(letter) == 0) continue;
            letter = static_cast<char>(letter ^ 0x20);  // the other case
            misses.insert(mixed);
        }
        std::string first_only = name;
        first_only[0] = static_cast<char>(std::toupper(first_only[0]));
        misses.insert(first_only);
    }
    for (const std::string& name : names)
        misses.erase(name);
    return misses;
}

/// A component of an unknown type knows no parameters, any other says true.
bool IsKnown(IWrapton& stream)
{
    return stream.setParam("", 0);
}

bool IsKnown(IFilePackage& file)
{
    setLastError(0);
    const bool known = file.close();
    EXPECT_EQ(getLastError(), known ? 0u : 1u);
    return known;
}

TEST(StreamTypes, AreKnownInBothSpellings)
{
    EXPECT_EQ(kStreams.size(), 16u);
    for (const std::string& name : kStreams)
        EXPECT_TRUE(IsKnown(*MakeStream(name))) << name;
}

TEST(StreamTypes, AreKnownInNoOther)
{
    for (const std::string& name : NearMisses(kStreams))
        EXPECT_FALSE(IsKnown(*MakeStream(name))) << '"' << name << '"';
    for (const char* name : {"Flv", "mp4", "wav", "mkv", "avi", "3gp", "mov"})
        EXPECT_FALSE(IsKnown(*MakeStream(name))) << name;
}

TEST(FileTypes, AreKnownInBothSpellings)
{
    EXPECT_EQ(kFiles.size(), 24u);
    for (const std::string& name : kFiles)
        EXPECT_TRUE(IsKnown(*MakeFile(name))) << name;
}

TEST(FileTypes, AreKnownInNoOther)
{
    for (const std::string& name : NearMisses(kFiles))
        EXPECT_FALSE(IsKnown(*MakeFile(name))) << '"' << name << '"';
    for (const char* name : {"Mp4", "ts", "ps", "rtp", "qvps", "gaysps", "mp4_64"})
        EXPECT_FALSE(IsKnown(*MakeFile(name))) << name;
}

TEST(UnknownStream, SaysFalseToEverything)
{
    const Stream stream = MakeStream("Flv");
    PacketBuffer packet(10);
    SharedPtr<IWraptonData> data;
    long value = 3;
    setLastError(77);
    EXPECT_FALSE(Input(*stream, H264I(Hex("00 00 01 65 88"))));
    EXPECT_FALSE(InputEx(*stream, H264I(Hex("00 00 01 65 88")), packet));
    EXPECT_FALSE(stream->setParam("rtp_ssrc", 1));
    EXPECT_FALSE(stream->getParam("rtp_ssrc", value));
    EXPECT_FALSE(stream->setExtInfo("rtp_custom_data", "a", 1));
    EXPECT_FALSE(stream->getExtInfo(rtpExtensionDataName(), data));
    EXPECT_EQ(getLastError(), 77u);  // without a reason
    EXPECT_FALSE(stream->getPacket(data));
    EXPECT_EQ(getLastError(), 10u);
    EXPECT_EQ(value, 3);
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(packet.Size(), 10u);
}

TEST(UnknownFile, SaysThatThereIsNoPackager)
{
    const File file = MakeFile("Mp4");
    SharedPtr<IWraptonData> data;
    FrameAttributes info;
    const auto fails = [](bool result)
    {
        EXPECT_FALSE(result);
        EXPECT_EQ(getLastError(), 1u);
        setLastError(0);
    };
    fails(file->open("/dev/null"));
    fails(file->open(static_cast<const char*>(nullptr)));
    fails(Input(*file, H264I(Hex("00 00 01 65 88"))));
    fails(file->close());
    fails(file->open([](FrameAttributes&, IWraptonData&) { return true; }));
    fails(file->getbackup(data, info));
    setLastError(77);
    EXPECT_FALSE(file->open(FilePackageProc()));  // what is empty is seen first
    EXPECT_EQ(getLastError(), 77u);
    EXPECT_TRUE(info.empty());
}

TEST(Factories, HaveTheirClassIds)
{
    initWraptonComponentLibrary();
    initWraptonComponentLibrary();
    ASSERT_NE(IComponentFactory::find("Wrapton"), nullptr);
    ASSERT_NE(IComponentFactory::find("FilePackage"), nullptr);
    EXPECT_STREQ(IComponentFactory::find("Wrapton")->clsid(), "Wrapton");
    EXPECT_STREQ(IComponentFactory::find("FilePackage")->clsid(), "FilePackage");
    EXPECT_EQ(IComponentFactory::find("wrapton"), nullptr);
    EXPECT_EQ(IComponentFactory::find("Filepackage"), nullptr);
}

void ExpectVersion(const VersionInfo& version)
{
    EXPECT_STREQ(version.name, "Application");
    EXPECT_EQ(version.majorNumber, 1);
    EXPECT_EQ(version.minorNumber, 0);
    EXPECT_EQ(version.revisionNumber, 0);
    EXPECT_STREQ(version.revision, "$Rev: 23572 $");
    EXPECT_STREQ(version.buildDate, "Nov  6 2015");
}

TEST(Components, ShareAVersion)
{
    ExpectVersion(MakeStream("ts")->getVersion());
    ExpectVersion(MakeStream("unknown")->getVersion());
    ExpectVersion(MakeFile("wav")->getVersion());
}

TEST(Components, BeginWithOneReference)
{
    const Stream stream = MakeStream("ts");
    EXPECT_EQ(stream->addRef(), 2);
    EXPECT_EQ(stream->release(), 1);
    MakeFile("wav").release()->destroy();
}

}  // namespace
}  // namespace Golden
