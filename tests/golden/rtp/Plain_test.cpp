// Frames that are cut into plain pieces: MPEG-4, JPEG, audio and extension data.
#include "golden/rtp/Session.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Payload;
using Support::Slice;

constexpr std::size_t kChunk = 998 - 12;  // payload of a full packet by default

std::vector<Frame> PlainKinds(const Bytes& bytes)
{
    Frame lastSubType = Support::Mpeg4P(bytes).As(SG_FRAME_SUB_TYPE_B);
    return {Support::Mpeg4I(bytes),
            Support::Mpeg4P(bytes),
            lastSubType,
            Support::JpegI(bytes),
            Support::JpegI(bytes).As(SG_FRAME_SUB_TYPE_JPEG_FRAME),
            Support::Aac(bytes),
            Support::Audio(0, bytes, 8000, 1, 8),
            Support::Audio(0xFFFFFFFF, bytes, 0, 0, 0),
            Support::Ext(bytes)};
}

struct Piece
{
    std::size_t at;
    std::size_t size;
    bool marker;
};

void ExpectPieces(std::size_t size, const std::vector<Piece>& pieces)
{
    const Bytes bytes = Payload(size);
    for (const Frame& frame : PlainKinds(bytes))
    {
        Session session;
        const auto packets = session.Packets(frame);
        ASSERT_EQ(packets.size(), pieces.size());
        for (std::size_t i = 0; i < pieces.size(); ++i)
        {
            EXPECT_EQ(packets[i].payload, Slice(bytes, pieces[i].at, pieces[i].size));
            EXPECT_EQ(packets[i].marker, pieces[i].marker);
            EXPECT_EQ(packets[i].sequence, i + 1);
        }
    }
}

TEST(PlainFrame, OfOneByteIsOnePacket)
{
    ExpectPieces(1, {{0, 1, true}});
}

TEST(PlainFrame, ThatStaysBelowTheRoomIsOnePacket)
{
    ExpectPieces(kChunk - 1, {{0, kChunk - 1, true}});
}

TEST(PlainFrame, ThatFillsTheRoomIsClosedByAnEmptyPacket)
{
    ExpectPieces(kChunk, {{0, kChunk, false}, {kChunk, 0, true}});
}

TEST(PlainFrame, ThatPassesTheRoomIsCut)
{
    ExpectPieces(kChunk + 1, {{0, kChunk, false}, {kChunk, 1, true}});
}

TEST(PlainFrame, OfSeveralFullPacketsIsClosedByAnEmptyOneToo)
{
    ExpectPieces(3 * kChunk - 1,
                 {{0, kChunk, false}, {kChunk, kChunk, false}, {2 * kChunk, kChunk - 1, true}});
    ExpectPieces(3 * kChunk,
                 {{0, kChunk, false},
                  {kChunk, kChunk, false},
                  {2 * kChunk, kChunk, false},
                  {3 * kChunk, 0, true}});
}

TEST(PlainFrame, IsNotLookedInto)
{
    Bytes bytes = Support::Join({Payload(50), Support::Hex("00 00 00 01 00 00 01"), Payload(50)});
    for (const Frame& frame : PlainKinds(bytes))
    {
        Session session;
        const auto packets = session.Packets(frame);
        ASSERT_EQ(packets.size(), 1u);
        EXPECT_EQ(packets[0].payload, bytes);
    }
}

TEST(PlainFrame, AudioThatFillsTheRoomExactlyYieldsTwoPacketsTheSecondEmptyWithTheMarker)
{
    Session session;
    const auto blocks = session.Blocks(Sound(kChunk));
    ASSERT_EQ(blocks.size(), 2u);
    EXPECT_TRUE(Support::Same(blocks[0], Packet{1, false, Payload(kChunk)}.Unit()));
    EXPECT_TRUE(Support::Same(blocks[1], Packet{2, true, {}}.Unit()));
    EXPECT_EQ(blocks[0].size(), 1000u);
}

TEST(PlainFrame, RoomFollowsTheMaximumTheExtensionAndTheCustomBytes)
{
    const Bytes extension = Payload(5, 7);  // 4 + 8 bytes of header
    const Bytes custom = Payload(20, 8);
    SGRtpPackageParam params = Params();
    params.max_packet_length = 100;
    params.extension_data = extension.data();
    params.extension_data_length = 5;
    params.custom_data = custom.data();
    params.custom_data_length = 20;
    Session session(params);
    // 100 - 2 - 20 - 24
    const auto packets = session.Packets(Sound(55));
    ASSERT_EQ(packets.size(), 2u);
    EXPECT_EQ(packets[0].payload.size(), 54u);
    EXPECT_EQ(packets[1].payload.size(), 1u);
    EXPECT_EQ(session.Packets(Sound(54)).size(), 2u);
    EXPECT_EQ(session.Packets(Sound(53)).size(), 1u);
}

TEST(PlainFrame, PacketLengthNeverPassesItsTwoBytes)
{
    for (const uint32_t maximum : {65536u, 65537u, 65538u, 70000u, 0x7FFFFFFFu})
    {
        SGRtpPackageParam params = Params();
        params.max_packet_length = maximum;
        Session session(params);
        const auto packets = session.Packets(Sound(200000));
        ASSERT_EQ(packets.size(), 4u);
        EXPECT_EQ(packets[0].length, maximum < 65537 ? maximum - 2 : 65535u);
        EXPECT_EQ(Readers::ReadPlainFrames(packets).at(0), Payload(200000));
    }
}

}  // namespace
}  // namespace Golden
