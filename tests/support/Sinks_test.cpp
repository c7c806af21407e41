#include "support/Sinks.h"

namespace Support
{
namespace
{

using Orbel::Wrapton::SGOutputData;

/// Gives a block to a sink as a packager would; returns data_size as it stands afterwards.
int32_t Give(Sink& sink, Bytes bytes, int32_t origin, int64_t position)
{
    SGOutputData block{};
    block.struct_size = sizeof(block);
    block.data_pointer = bytes.data();
    block.data_size = static_cast<int32_t>(bytes.size());
    block.offset_type = origin;
    block.offset_pos = static_cast<uint32_t>(position);
    block.offset_pos64 = position;
    Sink::Callback(&block, &sink);
    return block.data_size;
}

TEST(SeekingSink, PlacesBlocksFromAllThreeOrigins)
{
    SeekingSink sink;
    Give(sink, Hex("01 02 03 04"), 0, 0);
    Give(sink, Hex("05"), 1, 0);  // behind the last block
    Give(sink, Hex("AA"), 0, 1);
    Give(sink, Hex("BB"), 1, 1);  // one byte behind AA's end
    Give(sink, Hex("CC DD"), 2, -1);
    EXPECT_TRUE(Same(sink.Image(), Hex("01 AA 03 BB CC DD")));
    ASSERT_EQ(sink.Blocks().size(), 5u);
    EXPECT_EQ(sink.Blocks()[4].origin, 2);
    EXPECT_EQ(sink.Blocks()[4].position, -1);
    EXPECT_EQ(sink.Blocks()[4].narrow, 0xFFFFFFFFu);
    EXPECT_TRUE(Same(sink.Blocks()[4].data, Hex("CC DD")));
}

TEST(AppendingSink, HeedsNoPosition)
{
    AppendingSink sink;
    Give(sink, Hex("01 02"), 0, 0);
    Give(sink, Hex("03"), 0, 0);
    EXPECT_TRUE(Same(sink.Image(), Hex("01 02 03")));
}

TEST(ResizingSink, StoresNoMoreThanItAnswers)
{
    ResizingSink sink([](std::size_t number, int32_t size)
                      { return number == 0   ? size - 1
                               : number == 1 ? -5
                                             : size + 5; });
    EXPECT_EQ(Give(sink, Hex("01 02 03"), 0, 0), 2);
    EXPECT_EQ(Give(sink, Hex("04"), 0, 2), -5);
    EXPECT_EQ(Give(sink, Hex("05"), 0, 2), 6);
    EXPECT_TRUE(Same(sink.Image(), Hex("01 02 05")));
    EXPECT_EQ(sink.Blocks()[0].size, 3);
}

TEST(DiscardingSink, KeepsSizesAndPositions)
{
    DiscardingSink sink;
    Give(sink, Bytes(65536, 7), 0, int64_t{1} << 33);
    Give(sink, Bytes(65537, 7), 0, (int64_t{1} << 33) + 65536);
    EXPECT_EQ(sink.Blocks()[0].size, 65536);
    EXPECT_EQ(sink.Blocks()[0].position, int64_t{1} << 33);
    EXPECT_EQ(sink.Blocks()[0].data.size(), 65536u);
    EXPECT_EQ(sink.Blocks()[1].size, 65537);
    EXPECT_TRUE(sink.Blocks()[1].data.empty());
}

}  // namespace
}  // namespace Support
