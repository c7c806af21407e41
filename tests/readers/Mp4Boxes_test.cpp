#include "readers/Mp4Boxes.h"

#include "support/Bytes.h"

namespace Readers
{
namespace
{

using Support::Hex;
using Support::Join;

TEST(ReadBoxes, WalksContainersAndLargesizes)
{
    const auto boxes = ReadBoxes(Join({
        Hex("00 00 00 18 6D 6F 6F 76 "    // moov of 24 bytes
            "00 00 00 10 74 72 61 6B "    // trak of 16 bytes
            "00 00 00 08 6D 64 69 61 "),  // mdia of 8 bytes
        Hex("00 00 00 01 6D 64 61 74 00 00 00 00 00 00 00 11 FF"),
    }));
    EXPECT_EQ(TypesOf(boxes), "moov mdat");
    ASSERT_NE(FindBox(boxes, "moov/trak/mdia"), nullptr);
    EXPECT_EQ(FindBox(boxes, "moov/trak/mdia")->offset, 16u);
    EXPECT_EQ(FindBox(boxes, "moov/trak[1]"), nullptr);
    EXPECT_EQ(FindBox(boxes, "mdat")->header, 16u);
    EXPECT_EQ(FindBox(boxes, "mdat")->Payload(), 40u);
}

TEST(ReadBoxes, CountsBoxesOfOneType)
{
    const auto boxes = ReadBoxes(Hex("00 00 00 08 66 72 65 65 00 00 00 09 66 72 65 65 00"));
    EXPECT_EQ(FindBox(boxes, "free[1]")->offset, 8u);
    EXPECT_EQ(FindBox(boxes, "free[2]"), nullptr);
}

TEST(ReadBoxes, RefusesSizesThatDoNotFit)
{
    EXPECT_THROW(ReadBoxes(Hex("00 00 00 07 66 72 65 65")), Mp4Error);
    EXPECT_THROW(ReadBoxes(Hex("00 00 00 09 66 72 65 65")), Mp4Error);
    EXPECT_THROW(ReadBoxes(Hex("00 00 00 08 66 72 65")), Mp4Error);
    EXPECT_THROW(ReadBoxes(Hex("00 00 00 01 6D 64 61 74 00 00 00 00 00 00 00 0F")), Mp4Error);
    EXPECT_THROW(ReadBoxes(Hex("00 00 00 01 6D 64 61 74 FF FF FF FF FF FF FF FF")), Mp4Error);
    // A child that is larger than its parent
    EXPECT_THROW(ReadBoxes(Hex("00 00 00 10 6D 6F 6F 76 00 00 00 09 74 72 61 6B 00")), Mp4Error);
    // A sample entry that is smaller than its fields
    EXPECT_THROW(ReadBoxes(Hex("00 00 00 0C 61 76 63 31 00 00 00 00")), Mp4Error);
}

TEST(ReadBoxes, RefusesEndlessNesting)
{
    Support::Bytes nested;
    for (int i = 0; i < 100; ++i)
    {
        nested = Join({Support::Msb32(static_cast<uint32_t>(nested.size() + 8)),
                       Support::Text("moov"),
                       nested});
    }
    EXPECT_THROW(ReadBoxes(nested), Mp4Error);
}

}  // namespace
}  // namespace Readers
