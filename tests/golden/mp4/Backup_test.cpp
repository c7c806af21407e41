// SG_GetBackup(): the movie box as it would be now.
#include "golden/mp4/Recording.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Aac;
using Support::H264I;
using Support::H264P;
using Support::Join;
using Support::Nal;
using Support::Payload;
using Support::Same;

Bytes Copy(const SGOutputData& backup)
{
    return {backup.data_pointer, backup.data_pointer + backup.data_size};
}

/// A record that shows which fields were filled.
SGOutputData Marked()
{
    SGOutputData backup{};
    backup.struct_size = sizeof(backup);
    backup.data_size = -7;
    backup.offset_type = -8;
    backup.offset_pos = 9;
    backup.offset_pos64 = -10;
    return backup;
}

void ExpectUntouched(const SGOutputData& backup)
{
    EXPECT_EQ(backup.data_pointer, nullptr);
    EXPECT_EQ(backup.data_size, -7);
    EXPECT_EQ(backup.offset_type, -8);
    EXPECT_EQ(backup.offset_pos, 9u);
    EXPECT_EQ(backup.offset_pos64, -10);
}

class Backup : public EveryFlavour
{
};
INSTANTIATE_FLAVOURS(Backup);

TEST_P(Backup, AheadOfTheHeaderIsNone)
{
    Recording recording(GetParam());
    SGOutputData backup = Marked();
    EXPECT_EQ(recording.Calls().Backup(backup), 0);
    ExpectUntouched(backup);
}

TEST_P(Backup, BehindTheTailerIsNone)
{
    Recording recording(GetParam());
    recording.Header().Input(H264I(kIFrame)).Tailer();
    SGOutputData backup = Marked();
    EXPECT_EQ(recording.Calls().Backup(backup), 0);
    ExpectUntouched(backup);
}

TEST_P(Backup, IntoNoRecordIsRefused)
{
    Recording recording(GetParam());
    recording.Header().Input(H264I(kIFrame));
    EXPECT_EQ(SG_GetBackup(recording.Calls().Handle(), nullptr), SG_ERR_PARAM_ERR);
}

TEST_P(Backup, AheadOfTheFirstFrameIsAMovieWithoutTracks)
{
    const TimeWindow window;
    Recording recording(GetParam());
    recording.Header(100);
    SGOutputData backup = Marked();
    EXPECT_EQ(recording.Calls().Backup(backup), 116);
    EXPECT_EQ(backup.data_size, 116);
    EXPECT_EQ(backup.offset_type, 0);
    EXPECT_EQ(backup.offset_pos, GetParam().DataStart() + 100);
    EXPECT_EQ(backup.offset_pos64, GetParam().DataStart() + 100);
    Bytes movie = Copy(backup);
    window.MaskTimes(movie);
    EXPECT_TRUE(Same(movie, Box(116, "moov", {Mvhd(0, 1)})));
}

TEST_P(Backup, IsTheMovieThatTheTailerWouldWrite)
{
    const Flavour flavour = GetParam();
    Recording recording(flavour);
    recording.Header().Input(H264I(kIFrame)).Input(Aac(Payload(20))).Input(H264P(kPFrame));
    SGOutputData backup = Marked();
    const int size = recording.Calls().Backup(backup);
    const uint32_t end = flavour.DataStart() + 54 + 3 * flavour.SampleHeader();
    EXPECT_EQ(backup.data_size, size);
    EXPECT_EQ(backup.offset_type, 0);
    EXPECT_EQ(backup.offset_pos, end);
    EXPECT_EQ(backup.offset_pos64, end);
    const Bytes movie = Copy(backup);
    recording.Tailer();
    const Support::Block& block = recording.Blocks().at(recording.Blocks().size() - 2);
    EXPECT_TRUE(Same(block.data, movie));
    EXPECT_EQ(block.position, end);
}

TEST_P(Backup, EmitsNothingAndChangesNothing)
{
    Recording plain(GetParam());
    plain.Header(2000).Input(H264I(kIFrame)).Input(H264P(kPFrame)).Tailer();

    Recording watched(GetParam());
    SGOutputData backup{};
    EXPECT_EQ(watched.Calls().Backup(backup), 0);
    watched.Header(2000);
    EXPECT_EQ(watched.Calls().Backup(backup), 116);
    watched.Input(H264I(kIFrame));
    EXPECT_GT(watched.Calls().Backup(backup), 116);
    EXPECT_GT(watched.Calls().Backup(backup), 116);
    watched.Input(H264P(kPFrame));
    EXPECT_GT(watched.Calls().Backup(backup), 116);
    watched.Tailer();

    EXPECT_EQ(watched.Blocks().size(), plain.Blocks().size());
    EXPECT_TRUE(Same(watched.File(), plain.File()));
}

TEST_P(Backup, FollowsEachFrame)
{
    Recording recording(GetParam());
    recording.Header();
    SGOutputData backup{};
    const int row = GetParam().wide ? 12 : 8;  // of stsz and the chunk offsets
    recording.Input(H264I(kIFrame));
    int size = recording.Calls().Backup(backup);
    for (int i = 0; i < 5; ++i)
    {
        recording.Input(H264P(kPFrame));
        const int next = recording.Calls().Backup(backup);
        EXPECT_EQ(next, size + row);
        size = next;
    }
}

/**
 * The snapshot of a recording whose movie box has @p size bytes: an I frame, whose SPS makes up
 * for what is not a multiple of 12, and P frames of one byte.
 */
int BackupOfSize(uint32_t size)
{
    Support::DiscardingSink sink;
    Support::Recorder recorder(kMp4Wide.type, sink);
    recorder.Header();
    Bytes sps = kSps;
    const auto frame = [&sps] { return H264I(Join({Nal(sps), Nal(kPps), Nal(kIdr)})); };
    SGOutputData backup{};
    {
        Support::DiscardingSink probe;
        Support::Recorder measure(kMp4Wide.type, probe);
        measure.Header();
        measure.Input(frame());
        const auto first = static_cast<uint32_t>(measure.Backup(backup));
        sps.resize(sps.size() + (size - first) % 12, 0x55);
        size -= first + (size - first) % 12;
    }
    recorder.Input(frame());
    Bytes bytes = kPFrame;
    SGFrameInfo record = RecordOf(H264P(bytes));
    record.frame_pointer = bytes.data();
    for (uint32_t i = 0; i < size / 12; ++i)
    {
        SG_InputFrame(recorder.Handle(), &record);
    }
    const int result = recorder.Backup(backup);
    EXPECT_EQ(recorder.Tailer(), SG_ERR_NOERR);
    return result;
}

TEST(BackupSize, IsAtMostThatOfTheWorkBuffer)
{
    EXPECT_EQ(BackupOfSize(0x2FFFFF), 0x2FFFFF);
    EXPECT_EQ(BackupOfSize(0x300000), 0x300000);
    EXPECT_EQ(BackupOfSize(0x300001), 0);
}

}  // namespace
}  // namespace Golden
