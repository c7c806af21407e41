// FU-A fragments, RFC 6184 5.8, and the units that stay without.
#include "golden/rtp/Session.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using Support::H264I;
using Support::H264P;
using Support::Hex;
using Support::Join;
using Support::Same;
using Support::Slice;
using Support::U8;

constexpr std::size_t kChunk = 998 - 12 - 2;  // payload of a full fragment by default

/// The payload of a fragment of a unit with the header 0x65: FU indicator with nal_ref_idc 3 and
/// type 28, FU header with @p bits and type 5, data.
Bytes Fragment(uint32_t bits, const Bytes& data)
{
    return Join({U8(0x7C), U8(bits | 5), data});
}
constexpr uint32_t kStart = 0x80;
constexpr uint32_t kMiddle = 0;
constexpr uint32_t kEnd = 0x40;

Bytes WithZero(const Bytes& data)
{
    return Join({data, Hex("00")});
}

std::vector<Bytes> PayloadsOf(const std::vector<Readers::RtpPacket>& packets)
{
    std::vector<Bytes> payloads;
    payloads.reserve(packets.size());
    for (const auto& packet : packets)
    {
        payloads.push_back(packet.payload);
    }
    return payloads;
}

std::string MarkersOf(const std::vector<Readers::RtpPacket>& packets)
{
    std::string markers;
    for (const auto& packet : packets)
    {
        markers += packet.marker ? 'M' : '-';
    }
    return markers;
}

using List = std::vector<Bytes>;

TEST(FuA, ParameterSetsGoOutWholeAndALargeIdrUnitInFragments)
{
    const Bytes sps = Nal(0x67, 5);
    const Bytes pps = Nal(0x68, 4);
    const Bytes idr = Nal(0x65, 3000);
    Session session;
    const auto blocks = session.Blocks(H264I(Join({Long(sps), Long(pps), Long(idr)})));
    ASSERT_EQ(blocks.size(), 6u);
    EXPECT_TRUE(Same(blocks[0], Packet{1, true, sps}.Unit()));
    EXPECT_TRUE(Same(blocks[1], Packet{2, true, pps}.Unit()));
    EXPECT_TRUE(Same(blocks[2], Packet{3, false, Fragment(kStart, Slice(idr, 1, kChunk))}.Unit()));
    EXPECT_TRUE(Same(blocks[3],
                     Packet{4, false, Fragment(kMiddle, Slice(idr, 1 + kChunk, kChunk))}.Unit()));
    EXPECT_TRUE(Same(
        blocks[4], Packet{5, false, Fragment(kMiddle, Slice(idr, 1 + 2 * kChunk, kChunk))}.Unit()));
    // 3000 bytes less the header, and the byte behind the unit.
    EXPECT_TRUE(Same(
        blocks[5],
        Packet{6, true, Fragment(kEnd, WithZero(Slice(idr, 1 + 3 * kChunk, 2999 - 3 * kChunk)))}
            .Unit()));
    for (const std::size_t full : {2u, 3u, 4u})
    {
        EXPECT_EQ(blocks[full].size(), 1000u);
    }
}

TEST(FuA, IsChosenWhenHeaderAndUnitPassTheRoom)
{
    for (const uint32_t subType : {uint32_t{SG_FRAME_SUB_TYPE_I}, uint32_t{SG_FRAME_SUB_TYPE_P}})
    {
        Session session;
        const auto sized = [&](std::size_t count)
        { return session.Packets(H264I(Long(Nal(0x65, count))).As(subType)); };
        EXPECT_EQ(PayloadsOf(sized(985)), (List{Nal(0x65, 985)}));
        EXPECT_EQ(PayloadsOf(sized(986)), (List{Nal(0x65, 986)}));
        const Bytes unit = Nal(0x65, 987);
        EXPECT_EQ(PayloadsOf(sized(987)),
                  (List{Fragment(kStart, Slice(unit, 1, kChunk)),
                        Fragment(kEnd, WithZero(Slice(unit, 1 + kChunk, 2)))}));
    }
}

TEST(FuA, LastFragmentMayBeFull)
{
    Session session;
    const auto lengths = [&](std::size_t count)
    {
        std::vector<std::size_t> found;
        for (const auto& packet : session.Packets(H264I(Long(Nal(0x65, count)))))
        {
            found.push_back(packet.payload.size());
        }
        return found;
    };
    using Lengths = std::vector<std::size_t>;
    EXPECT_EQ(lengths(2 * kChunk - 1), (Lengths{986, 985}));
    EXPECT_EQ(lengths(2 * kChunk), (Lengths{986, 986}));
    EXPECT_EQ(lengths(2 * kChunk + 1), (Lengths{986, 986, 3}));
}

TEST(FuA, KeepsForbiddenBitAndReferenceIdcInTheIndicator)
{
    Session session;
    struct Case
    {
        uint32_t header;
        unsigned char indicator;
        unsigned char type;
    };
    for (const Case& c : {Case{0x01, 0x1C, 1}, Case{0x41, 0x5C, 1}, Case{0xFF, 0xFC, 31}})
    {
        const auto packets = session.Packets(H264P(Long(Nal(c.header, 2500))));
        ASSERT_EQ(packets.size(), 3u);
        for (const auto& packet : packets)
        {
            EXPECT_EQ(packet.payload[0], c.indicator);
        }
        EXPECT_EQ(packets[0].payload[1], 0x80 | c.type);
        EXPECT_EQ(packets[1].payload[1], c.type);
        EXPECT_EQ(packets[2].payload[1], 0x40 | c.type);
    }
}

TEST(FuA, UnitsBehindAFragmentedOneBeginBehindTheirOwnStartCodes)
{
    const Bytes one = Nal(0x65, 1500);
    const Bytes two = Nal(0x65, 1200);
    const Bytes three = Nal(0x65, 30);
    const Bytes four = Nal(0x65, 1300);
    Session session;
    const auto packets =
        session.Packets(H264I(Join({Long(one), Short(two), Short(three), Long(four)})));
    EXPECT_EQ(MarkersOf(packets), "-M-MM-M");
    const auto units = Readers::ReadNalUnits(packets);
    ASSERT_EQ(units.size(), 4u);
    EXPECT_TRUE(Same(units[0], WithZero(one)));
    EXPECT_TRUE(Same(units[1], WithZero(two)));
    EXPECT_TRUE(Same(units[2], three));
    EXPECT_TRUE(Same(units[3], WithZero(four)));
}

TEST(FuA, AFrameWithoutAStartCodeIsFragmentedToo)
{
    const Bytes unit = Nal(0x41, 1500);
    Session session;
    const auto units = Readers::ReadNalUnits(session.Packets(H264P(unit)));
    ASSERT_EQ(units.size(), 1u);
    EXPECT_TRUE(Same(units[0], WithZero(unit)));
}

TEST(FuA, IsNotForOtherSubTypesWhichAreCutIntoPlainPieces)
{
    for (const uint32_t subType : {2u, 8u, 9u, 0xFFFFFFFFu})
    {
        const Bytes unit = Nal(0x01, 2 * 986);
        Session session;
        const auto packets =
            session.Packets(H264P(Join({Long(unit), Long(Hex("01 22"))})).As(subType));
        EXPECT_EQ(PayloadsOf(packets),
                  (List{Slice(unit, 0, 986), Slice(unit, 986, 986), Hex("01 22")}));
        EXPECT_EQ(MarkersOf(packets), "-MM");
        EXPECT_EQ(session.Packets(H264P(Long(Nal(0x01, 2 * 986 + 1))).As(subType)).size(), 3u);
    }
}

/// Parameters with custom bytes, room 100.
class WithCustomBytes : public ::testing::Test
{
protected:
    WithCustomBytes() : m_session(Make(m_custom)) {}

    static SGRtpPackageParam Make(const Bytes& custom)
    {
        SGRtpPackageParam params = Params();
        params.max_packet_length = 102;
        params.custom_data = custom.data();
        params.custom_data_length = static_cast<uint32_t>(custom.size());
        return params;
    }

    const Bytes m_custom = Support::Payload(10, 4);
    Session m_session;
};

TEST_F(WithCustomBytes, FirstUnitIsComparedWithTheWholeRoom)
{
    // 10 + 12 + 78 is the room of 100; the packet may have 90 bytes and has them.
    const auto whole = m_session.Packets(H264I(Long(Nal(0x65, 78))));
    EXPECT_EQ(PayloadsOf(whole), (List{Nal(0x65, 78)}));
    EXPECT_EQ(whole[0].length, 90u);

    const Bytes unit = Nal(0x65, 79);
    const auto packets = m_session.Packets(H264I(Long(unit)));
    // A fragment holds 90 - 12 - 2 = 76.
    EXPECT_EQ(
        PayloadsOf(packets),
        (List{Fragment(kStart, Slice(unit, 1, 76)), Fragment(kEnd, WithZero(Slice(unit, 77, 2)))}));
    EXPECT_EQ(MarkersOf(packets), "-M");
}

TEST_F(WithCustomBytes, LaterUnitsAreComparedWithTheRoomLessTheCustomBytes)
{
    const auto second = [&](std::size_t count)
    {
        const auto packets =
            m_session.Packets(H264I(Join({Long(Hex("67 01")), Long(Nal(0x65, count))})));
        return List(PayloadsOf({packets.begin() + 1, packets.end()}));
    };
    // 10 + 12 + 68 is 100 - 10.
    EXPECT_EQ(second(68), (List{Nal(0x65, 68)}));
    // One more is a fragment although it fits, and its only one: the end bit, no start bit.
    const Bytes unit = Nal(0x65, 69);
    EXPECT_EQ(second(69), (List{Fragment(kEnd, WithZero(Slice(unit, 1, 68)))}));
    const Bytes full = Nal(0x65, 76);
    EXPECT_EQ(second(76), (List{Fragment(kEnd, WithZero(Slice(full, 1, 75)))}));
    const Bytes two = Nal(0x65, 77);
    EXPECT_EQ(second(77), (List{Fragment(kStart, Slice(two, 1, 76)), Fragment(kEnd, Hex("00"))}));
}

TEST_F(WithCustomBytes, EveryFrameBeginsWithTheWholeRoom)
{
    for (int i = 0; i < 2; ++i)
    {
        const auto packets = m_session.Packets(H264I(Long(Nal(0x65, 78))));
        EXPECT_EQ(PayloadsOf(packets), (List{Nal(0x65, 78)}));
    }
}

/// Room 100 with an extension of @p count bytes, which must live longer.
SGRtpPackageParam Extended(const Bytes& extension)
{
    SGRtpPackageParam params = Params();
    params.max_packet_length = 102;
    params.extension_data = extension.data();
    params.extension_data_length = static_cast<uint32_t>(extension.size());
    return params;
}

TEST(FuAWithExtension, EstimateCountsTheExtensionTwiceAndNotItsFixedPart)
{
    // 12 + 20 + 18 = 50 in the estimate, 12 + 4 + 20 = 36 in the packet.
    const Bytes extension = Support::Payload(18, 6);
    Session session(Extended(extension));
    EXPECT_EQ(PayloadsOf(session.Packets(H264I(Long(Nal(0x65, 50))))), (List{Nal(0x65, 50)}));
    const Bytes unit = Nal(0x65, 51);
    EXPECT_EQ(PayloadsOf(session.Packets(H264I(Long(unit)))),
              (List{Fragment(kEnd, WithZero(Slice(unit, 1, 50)))}));
    EXPECT_EQ(PayloadsOf(session.Packets(H264I(Long(Nal(0x65, 63))))).size(), 2u);
}

TEST(FuAWithExtension, AShortOneLetsAUnitThroughThatIsThenCutWithoutFragmentHeaders)
{
    // 12 + 4 + 1 = 17 in the estimate, 12 + 4 + 4 = 20 in the packet.
    const Bytes extension = Hex("E1");
    Session session(Extended(extension));
    EXPECT_EQ(PayloadsOf(session.Packets(H264I(Long(Nal(0x65, 80))))), (List{Nal(0x65, 80)}));
    for (const std::size_t count : {81u, 82u, 83u})
    {
        const Bytes unit = Nal(0x65, count);
        const auto packets = session.Packets(H264I(Long(unit)));
        EXPECT_EQ(PayloadsOf(packets), (List{Slice(unit, 0, 80), Slice(unit, 80, count - 80)}));
        EXPECT_EQ(MarkersOf(packets), "-M");
    }
    const Bytes unit = Nal(0x65, 84);
    EXPECT_EQ(
        PayloadsOf(session.Packets(H264I(Long(unit)))),
        (List{Fragment(kStart, Slice(unit, 1, 78)), Fragment(kEnd, WithZero(Slice(unit, 79, 5)))}));
}

TEST(FuAWithExtension, AUnitOfOneByteBecomesAFragmentWithTheByteBehindItAlone)
{
    const Bytes extension = Support::Payload(44, 6);  // 12 + 44 + 44 = 100 without the unit
    Session session(Extended(extension));
    EXPECT_EQ(PayloadsOf(session.Packets(H264I(Join({Long(Hex("65")), Long(Hex("65"))})))),
              (List{Fragment(kEnd, Hex("00")), Fragment(kEnd, Hex("00"))}));
}

}  // namespace
}  // namespace Golden
