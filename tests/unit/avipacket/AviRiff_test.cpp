// The two kinds of RIFF without a packager around them.
#include "avipacket/AviRiff.h"
#include "avipacket/AviXRiff.h"

#include "golden/avi/Pieces.h"
#include "support/Frames.h"

namespace Orbel::Wrapton
{
namespace
{

using Golden::Bytes;
using Support::Same;

/// Blocks as a RIFF hands them out.
struct Output
{
    struct Block
    {
        Bytes bytes;
        uint64_t position;
    };
    std::vector<Block> blocks;

    static void Callback(const unsigned char* data, uint32_t length, uint64_t position, void* user)
    {
        static_cast<Output*>(user)->blocks.push_back({Bytes(data, data + length), position});
    }
};

SGFrameInfo Picture(Bytes& bytes)
{
    SGFrameInfo record = Support::RecordOf(Support::H264P(bytes));
    record.frame_pointer = bytes.data();
    return record;
}

template <class Riff>
void ExpectNothingWithoutABeginning(Riff& riff)
{
    Bytes bytes = Support::Payload(10);
    const SGFrameInfo frame = Picture(bytes);
    EXPECT_EQ(riff.InputFrame(&frame), SG_ERR_NOERR);
    riff.EndInput();
    EXPECT_EQ(riff.Size(), 0u);
}

TEST(CAviRiff, NeedsACallback)
{
    CAviRiff riff;
    EXPECT_EQ(riff.Init(nullptr, nullptr, nullptr), SG_ERR_EMPTY_POINTER);
    ExpectNothingWithoutABeginning(riff);
    riff.CreateHeader();
}

TEST(CAviRiff, IgnoresANullFrame)
{
    Output output;
    CAviRiff riff;
    ASSERT_EQ(riff.Init(nullptr, Output::Callback, &output), SG_ERR_NOERR);
    output.blocks.clear();
    EXPECT_EQ(riff.InputFrame(nullptr), SG_ERR_NOERR);
    EXPECT_TRUE(output.blocks.empty());
    EXPECT_EQ(riff.Size(), 4128u);
}

TEST(CAviXRiff, NeedsACallback)
{
    CAviXRiff riff;
    EXPECT_EQ(riff.Init(100, nullptr, nullptr), SG_ERR_EMPTY_POINTER);
    ExpectNothingWithoutABeginning(riff);
}

TEST(CAviXRiff, IgnoresANullFrame)
{
    Output output;
    CAviXRiff riff;
    ASSERT_EQ(riff.Init(100, Output::Callback, &output), SG_ERR_NOERR);
    EXPECT_EQ(riff.InputFrame(nullptr), SG_ERR_NOERR);
    EXPECT_EQ(output.blocks.size(), 1u);
}

// A position of the 1000th gigabyte, and the two sizes that are 8 more than what they enclose.
TEST(CAviXRiff, CountsFromItsBaseOffset)
{
    constexpr uint64_t kBase = uint64_t{1000} << 30;
    Output output;
    CAviXRiff riff;
    ASSERT_EQ(riff.Init(kBase, Output::Callback, &output), SG_ERR_NOERR);
    Bytes bytes = Support::Payload(3);
    const SGFrameInfo frame = Picture(bytes);
    EXPECT_EQ(riff.InputFrame(&frame), SG_ERR_NOERR);
    EXPECT_EQ(riff.Size(), 36u);
    riff.EndInput();
    EXPECT_EQ(riff.Size(), 36u + 40u);
    riff.EndInput();
    EXPECT_EQ(riff.Size(), 36u + 80u);

    const Bytes index = Golden::Ix("ix00", "00dc", kBase + 20, {{12, 3 | 0x80000000}});
    ASSERT_EQ(output.blocks.size(), 6u);
    EXPECT_EQ(output.blocks[0].position, kBase);
    EXPECT_TRUE(Same(output.blocks[0].bytes,
                     Support::Join({Golden::RiffHeader(24, "AVIX"), Golden::MoviHeader(12)})));
    EXPECT_EQ(output.blocks[1].position, kBase + 24);
    EXPECT_TRUE(Same(output.blocks[1].bytes, Golden::Chunk("00dc", bytes)));
    EXPECT_EQ(output.blocks[2].position, kBase + 36);
    EXPECT_TRUE(Same(output.blocks[2].bytes, index));
    EXPECT_EQ(output.blocks[3].position, kBase);
    EXPECT_TRUE(Same(output.blocks[3].bytes,
                     Support::Join({Golden::RiffHeader(76, "AVIX"), Golden::MoviHeader(64)})));
    EXPECT_EQ(output.blocks[4].position, kBase + 76);
    EXPECT_TRUE(Same(output.blocks[4].bytes, index));
    EXPECT_TRUE(Same(output.blocks[5].bytes,
                     Support::Join({Golden::RiffHeader(116, "AVIX"), Golden::MoviHeader(104)})));
    EXPECT_EQ(riff.IndexEntry(AVI_VIDEO_STREAM).offset, kBase + 76);
    EXPECT_EQ(riff.IndexEntry(AVI_AUDIO_STREAM).size, 0u);
}

}  // namespace
}  // namespace Orbel::Wrapton
