// Real streams, read back by another reader and compared frame by frame.
#include "golden/mkv/Recording.h"
#include "readers/MkvReader.h"
#include "support/Streams.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using namespace std::string_literals;
using Support::Frame;

Readers::MkvFile ReadBack(const std::vector<Frame>& frames)
{
    Recording recording;
    recording.Header();
    for (const Frame& frame : frames)
        recording.Input(frame);
    recording.Tailer();
    return Readers::ReadMkv(recording.File());
}

void ExpectSeeksLeadToElements(const Readers::MkvFile& file)
{
    ASSERT_EQ(file.seeks.size(), 3u);
    for (const auto& [id, position] : file.seeks)
        EXPECT_EQ(file.found.at(id), position);
}

void ExpectCuesLeadToKeyFrames(const Readers::MkvFile& file, std::size_t count)
{
    ASSERT_EQ(file.cues.size(), count);
    for (const Readers::MkvCue& cue : file.cues)
    {
        const bool found = std::any_of(file.blocks.begin(),
                                       file.blocks.end(),
                                       [&](const Readers::MkvBlock& block)
                                       {
                                           return block.key &&
                                                  block.time == static_cast<int64_t>(cue.time) &&
                                                  block.cluster == cue.cluster;
                                       });
        EXPECT_TRUE(found) << cue.time;
    }
}

TEST(MkvReadBack, H264)
{
    std::vector<Frame> frames;
    std::vector<Bytes> stored;
    std::size_t keys = 0;
    const Bytes stream = Support::Media("camera_640x360_25fps_baseline.h264");
    for (const Bytes& unit : Support::AccessUnits(stream))
    {
        Bytes annex_b;
        Bytes lengths;
        for (const Bytes& nal : Support::NalUnits(unit))
        {
            Support::Append(annex_b, Support::Nal(nal));
            Support::Append(lengths, Support::LengthNal(nal));
        }
        keys += Support::IsIdr(unit) ? 1 : 0;
        frames.push_back(Support::IsIdr(unit) ? Support::H264I(annex_b) : Support::H264P(annex_b));
        stored.push_back(lengths);
    }

    const Readers::MkvFile file = ReadBack(frames);
    EXPECT_EQ(file.docType, "matroska");
    EXPECT_EQ(file.codecId, "V_MPEG4/ISO/AVC\0"s);
    EXPECT_EQ(file.defaultDuration, 40000000u);
    EXPECT_EQ(file.width, 640u);
    EXPECT_EQ(file.height, 360u);
    EXPECT_FALSE(file.codecPrivate.empty());
    ASSERT_EQ(file.blocks.size(), stored.size());
    for (std::size_t at = 0; at < stored.size(); ++at)
    {
        EXPECT_TRUE(Same(file.blocks[at].data, stored[at])) << at;
        EXPECT_EQ(file.blocks[at].time, static_cast<int64_t>(at) * 40);
        EXPECT_EQ(file.blocks[at].key, frames[at].subType == SG_FRAME_SUB_TYPE_I);
    }
    ExpectSeeksLeadToElements(file);
    ExpectCuesLeadToKeyFrames(file, keys);
}

TEST(MkvReadBack, Mpeg4)
{
    std::vector<Frame> frames;
    std::size_t keys = 0;
    for (const Bytes& picture : Support::Mpeg4Pictures(Support::Media("cif_352x288_25fps.m4v")))
    {
        const bool intra = Support::IsMpeg4Intra(picture);
        keys += intra ? 1 : 0;
        frames.push_back(intra ? Support::Mpeg4I(picture) : Support::Mpeg4P(picture));
    }

    const Readers::MkvFile file = ReadBack(frames);
    EXPECT_EQ(file.codecId, "V_MPEG4/ISO/ASP\0"s);
    EXPECT_FALSE(file.codecPrivate.empty());
    ASSERT_EQ(file.blocks.size(), frames.size());
    for (std::size_t at = 0; at < frames.size(); ++at)
    {
        EXPECT_TRUE(Same(file.blocks[at].data, frames[at].bytes)) << at;
    }
    ExpectSeeksLeadToElements(file);
    ExpectCuesLeadToKeyFrames(file, keys);
}

}  // namespace
}  // namespace Golden
