// What SG_CreateHeader() emits: RIFF header, header list, movi header.
#include "golden/avi/Recording.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;

TEST(AviHeaderCall, GivesRiffHeaderHeaderListAndMoviHeaderAsOneBlockEach)
{
    Recording recording;
    recording.Header(VideoAndAudioHeader());
    const auto& blocks = recording.Blocks();
    ASSERT_EQ(blocks.size(), 3u);
    EXPECT_TRUE(IsBlockAt(blocks[0], 0, RiffHeader(4128, "AVI ")));
    EXPECT_TRUE(IsBlockAt(blocks[1],
                          12,
                          Hdrl({VideoAndAudioAvih().Chunk(),
                                VideoStream().List(),
                                AudioStream().List(),
                                Junk(1730)})));
    EXPECT_TRUE(IsBlockAt(blocks[2], 4116, MoviHeader(4)));
}

TEST(AviHeaderCall, WithoutARecordDeclaresNoStream)
{
    Recording recording;
    recording.NoHeader();
    EXPECT_TRUE(Same(recording.HeaderList(), Hdrl({Avih{}.Chunk(), Junk(4020)})));
}

TEST(AviHeaderCall, JunkTakesWhatTheVideoListLeaves)
{
    Recording recording;
    recording.Header(VideoHeader());
    EXPECT_TRUE(Same(recording.HeaderList(),
                     Hdrl({VideoAvih().Chunk(), VideoStream().List(), Junk(2864)})));
}

TEST(AviHeaderCall, MakesBothListsOfZerosWhenTheFlagsSayThereAreNoStreams)
{
    SGHeaderInfo header = VideoAndAudioHeader();
    header.video.bVideo = 0;
    header.audio.bAudio = 0;
    Recording recording;
    recording.Header(header);
    EXPECT_TRUE(Same(
        recording.HeaderList(),
        Hdrl({Avih{.streams = 2}.Chunk(), VideoStrl{}.List(), AudioStrl{}.List(), Junk(1730)})));
}

TEST(AviHeaderCall, IsRefusedInsideARecordingAndChangesNothing)
{
    Recording recording;
    recording.Header(VideoHeader()).Input(IFrame(10));
    recording.Sink().ForgetBlocks();

    SGHeaderInfo other = VideoAndAudioHeader();
    EXPECT_EQ(recording.Calls().HeaderWith(&other), SG_ERR_PARAM_ERR);
    EXPECT_TRUE(recording.Blocks().empty());

    recording.Input(PFrame(10)).Tailer();
    Recording undisturbed;
    undisturbed.Header(VideoHeader()).Input(IFrame(10)).Input(PFrame(10)).Tailer();
    EXPECT_TRUE(Same(recording.File(), undisturbed.File()));
}

TEST(AviHeaderCall, AfterATailerBeginsANewFileFromScratch)
{
    Recording recording;
    recording.Header(VideoAndAudioHeader()).Input(IFrame(10)).Input(Sound(5)).Tailer();
    recording.Sink().ForgetBlocks();
    recording.Header(VideoHeader()).Input(IFrame(21)).Tailer();

    Recording fresh;
    fresh.Header(VideoHeader()).Input(IFrame(21)).Tailer();
    ASSERT_EQ(recording.Blocks().size(), fresh.Blocks().size());
    for (std::size_t at = 0; at < fresh.Blocks().size(); ++at)
    {
        const Block& due = fresh.Blocks()[at];
        EXPECT_TRUE(
            IsBlockAt(recording.Blocks()[at], static_cast<uint64_t>(due.position), due.data));
    }
}

}  // namespace
}  // namespace Golden
