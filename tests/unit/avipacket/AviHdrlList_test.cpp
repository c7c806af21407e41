// The header list on its own.
#include "avipacket/AviHdrlList.h"

#include "golden/avi/Pieces.h"

namespace Orbel::Wrapton
{
namespace
{

using Golden::Bytes;
using Support::Same;

/// What the list hands to its callback.
struct Output
{
    Bytes bytes;
    uint64_t position = 0;
    int calls = 0;

    static void Callback(const unsigned char* data, uint32_t length, uint64_t position, void* user)
    {
        auto& output = *static_cast<Output*>(user);
        output.bytes.assign(data, data + length);
        output.position = position;
        ++output.calls;
    }
};

class HdrlList : public ::testing::Test
{
protected:
    HdrlList() { m_list.Init(12, nullptr, Output::Callback, &m_output); }

    Output m_output;
    CAviHdrlList m_list;
};

TEST_F(HdrlList, WritesOneBlockAtItsBaseOffset)
{
    m_list.Write();
    EXPECT_EQ(m_output.calls, 1);
    EXPECT_EQ(m_output.position, 12u);
    EXPECT_TRUE(Same(m_output.bytes, Golden::Hdrl({Golden::Avih{}.Chunk(), Golden::Junk(4020)})));
    EXPECT_EQ(CAviHdrlList::Size(), 4104u);
}

TEST_F(HdrlList, NullPointersAreRefused)
{
    EXPECT_EQ(m_list.InitVideoStreamList(nullptr), SG_ERR_EMPTY_POINTER);
    EXPECT_EQ(m_list.InitAudioStreamList(nullptr), SG_ERR_EMPTY_POINTER);
    EXPECT_EQ(m_list.InputFrame(nullptr), SG_ERR_EMPTY_POINTER);
    EXPECT_EQ(m_list.InputEntry(AVI_VIDEO_STREAM, nullptr), SG_ERR_EMPTY_POINTER);
    EXPECT_FALSE(m_list.IsVideoInited());
    EXPECT_FALSE(m_list.IsAudioInited());
    EXPECT_FALSE(m_list.UseOpenDML());
}

TEST_F(HdrlList, EntryOfAnUnknownStreamIsRefusedAndLeavesOpenDmlOff)
{
    const superindex_entry entry{.offset = 1, .size = 40, .entrycount = 1};
    EXPECT_EQ(m_list.InputEntry(0, &entry), SG_ERR_PARAM_ERR);
    EXPECT_EQ(m_list.InputEntry(3, &entry), SG_ERR_PARAM_ERR);
    EXPECT_FALSE(m_list.UseOpenDML());
}

TEST_F(HdrlList, FirstEntryOfEitherStreamTakesTheOdmlBlockOutOfJunk)
{
    const SGVideoInfo video{};
    const SGAudioInfo audio{};
    m_list.InitVideoStreamList(&video);
    m_list.InitAudioStreamList(&audio);
    const superindex_entry entry{.offset = 99, .size = 40, .entrycount = 5};
    EXPECT_EQ(m_list.InputEntry(AVI_AUDIO_STREAM, &entry), SG_ERR_NOERR);
    EXPECT_TRUE(m_list.UseOpenDML());
    m_list.Write();
    Golden::AudioStrl withEntry;
    withEntry.index = Golden::Indx("01wb", {{99, 40, 5}});
    // Entries of sound do not count as frames.
    EXPECT_TRUE(Same(m_output.bytes,
                     Golden::Hdrl({Golden::Avih{.streams = 2}.Chunk(),
                                   Golden::VideoStrl{}.List(),
                                   withEntry.List(),
                                   Golden::Odml(0),
                                   Golden::Junk(1462)})));
    EXPECT_EQ(m_list.InputEntry(AVI_VIDEO_STREAM, &entry), SG_ERR_NOERR);
    m_list.Write();
    EXPECT_TRUE(
        Same(Support::Slice(m_output.bytes, 76 + 1156 + 1134, 268 + 8),
             Support::Join({Golden::Odml(5), Support::Text("JUNK"), Support::Lsb32(1462)})));
}

TEST_F(HdrlList, FramesCountOnWhenTheSuperIndexIsFull)
{
    const SGVideoInfo video{};
    m_list.InitVideoStreamList(&video);
    const superindex_entry entry{.offset = 99, .size = 40, .entrycount = 10};
    for (int at = 0; at < 64; ++at)
    {
        EXPECT_EQ(m_list.InputEntry(AVI_VIDEO_STREAM, &entry), SG_ERR_NOERR);
    }
    m_list.Write();
    // nEntriesInUse of the index reservation, 124 bytes into the video list.
    EXPECT_TRUE(Same(Support::Slice(m_output.bytes, 76 + 124 + 12, 4), Support::Lsb32(62)));
    EXPECT_TRUE(Same(Support::Slice(m_output.bytes, 76 + 1156, 268), Golden::Odml(640)));
    EXPECT_EQ(m_output.bytes.size(), 4104u);
}

TEST_F(HdrlList, CountersWrapWithoutADivisionByZero)
{
    SGFrameInfo frame{};
    frame.frame_type = SG_FRAME_TYPE_VIDEO;
    frame.frame_size = 0xFFFFFFFF;
    EXPECT_EQ(m_list.InputFrame(&frame), SG_ERR_NOERR);
    frame.frame_size = 3;
    EXPECT_EQ(m_list.InputFrame(&frame), SG_ERR_NOERR);
    m_list.Write();
    EXPECT_TRUE(Same(Support::Slice(m_output.bytes, 12, 64),
                     Golden::Avih{.totalFrames = 2, .suggestedBufferSize = 0xFFFFFFFF}.Chunk()));
}

TEST(CAviHdrlList, WritesNothingWithoutACallback)
{
    ::testing::internal::CaptureStdout();
    CAviHdrlList list;
    list.Write();
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
}

}  // namespace
}  // namespace Orbel::Wrapton
