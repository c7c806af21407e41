#include "rtppacket/RtpLayout.h"

#include <memory>

#include "readers/RtpReader.h"
#include "support/Bytes.h"

namespace Orbel::Wrapton
{
namespace
{

using Support::Bytes;
using Support::Payload;

/// Every combination of lengths that decides about a cut.
template <class Test>
void ForEachLayout(Test test)
{
    const Bytes bytes = Payload(64);
    for (const std::size_t custom : {0u, 1u, 10u})
    {
        for (const std::size_t extension : {0u, 1u, 4u, 7u})
        {
            for (uint32_t limit = 0; limit < 60; ++limit)
            {
                Rtp_FrameInfo info;
                info.custom = std::span(bytes).first(custom);
                info.extension = std::span(bytes).first(extension);
                info.limit = limit;
                test(info, CRtpLayout(info));
            }
        }
    }
}

TEST(CRtpLayout, HasRoomFromOneByteBehindAFragmentHeaderOn)
{
    ForEachLayout(
        [](const Rtp_FrameInfo& info, const CRtpLayout& layout)
        {
            const std::size_t words = (info.extension.size() + 3) / 4;
            const std::size_t header = info.extension.empty() ? 12 : 16 + 4 * words;
            EXPECT_EQ(layout.HasRoom(), info.limit >= info.custom.size() + header + 2 + 1);
        });
}

/// How a piece is packaged.
enum class Kind
{
    kPlain,
    kNalUnit,
    kFragments
};

uint64_t SizeOf(const CRtpLayout& layout, Kind kind, std::size_t length)
{
    switch (kind)
    {
        case Kind::kPlain:
            return layout.PlainSize(length);
        case Kind::kNalUnit:
            return layout.NalUnitSize(length);
        default:
            return layout.FragmentsSize(length);
    }
}

void Put(const CRtpLayout& layout,
         Kind kind,
         std::span<unsigned char> room,
         std::span<const unsigned char> piece,
         uint16_t& sequence)
{
    switch (kind)
    {
        case Kind::kPlain:
            layout.PutPlain(room, piece, sequence);
            break;
        case Kind::kNalUnit:
            layout.PutNalUnit(room, piece, sequence);
            break;
        default:
        {
            StartCode end;
            EXPECT_EQ(layout.PutFragments(room, piece, piece.size() - 1, end, sequence),
                      room.size());
            EXPECT_EQ(end.begin, piece.size());
            EXPECT_EQ(end.unit, piece.size());
        }
    }
}

/// Expects the piece to fill exactly the announced size with packets that keep to the room.
void ExpectExact(const Rtp_FrameInfo& info,
                 const CRtpLayout& layout,
                 Kind kind,
                 std::span<const unsigned char> piece)
{
    const std::size_t size = SizeOf(layout, kind, piece.size());
    const std::unique_ptr<unsigned char[]> memory(new unsigned char[size]);
    uint16_t sequence = 0xFFFE;
    Put(layout, kind, {memory.get(), size}, piece, sequence);
    const auto packets =
        Readers::ReadRtpPackets(Bytes(memory.get(), memory.get() + size), info.custom.size());
    ASSERT_FALSE(packets.empty());
    EXPECT_EQ(sequence, static_cast<uint16_t>(0xFFFE + packets.size()));
    EXPECT_EQ(packets[0].sequence, 0xFFFFu);
    Bytes payload;
    for (const auto& packet : packets)
    {
        EXPECT_LE(packet.length + info.custom.size(), info.limit);
        EXPECT_EQ(packet.marker, &packet == &packets.back());
        const std::ptrdiff_t fua = kind == Kind::kFragments ? 2 : 0;
        payload.insert(payload.end(), packet.payload.begin() + fua, packet.payload.end());
    }
    Bytes expected(piece.begin(), piece.end());
    if (kind == Kind::kFragments)
    {
        expected.erase(expected.begin());
        expected.push_back(0);
    }
    EXPECT_TRUE(Support::Same(payload, expected));
    EXPECT_EQ(CRtpLayout::FirstSize({memory.get(), size}, info.custom.size()),
              info.custom.size() + 2 + packets[0].length);
}

TEST(CRtpLayout, FillsExactlyTheSizeItAnnouncesAndNoPacketPassesTheRoom)
{
    const Bytes data = Payload(100, 2);
    ForEachLayout(
        [&data](const Rtp_FrameInfo& info, const CRtpLayout& layout)
        {
            if (!layout.HasRoom()) return;
            for (std::size_t size = 0; size <= data.size(); ++size)
            {
                const auto piece = std::span(data).first(size);
                ExpectExact(info, layout, Kind::kPlain, piece);
                ExpectExact(info, layout, Kind::kNalUnit, piece);
                if (size != 0) ExpectExact(info, layout, Kind::kFragments, piece);
            }
        });
}

/// A unit of @p length bytes with a start code and another unit behind it.
Bytes TwoUnits(std::size_t length, std::size_t start_code)
{
    Bytes frame = Payload(length, 3);
    frame.insert(frame.end(), start_code - 1, 0);
    frame.insert(frame.end(), {1, 0x41, 0x9A});
    return frame;
}

template <class Test>
void ForEachUnitLength(Test test)
{
    for (std::size_t length = 0; length <= 40; ++length)
    {
        for (const std::size_t start_code : {3u, 4u})
        {
            test(length, start_code);
        }
    }
}

TEST(CRtpLayout, FragmentsEndAtTheNextStartCodeWhereverItStands)
{
    ForEachLayout(
        [](const Rtp_FrameInfo& info, const CRtpLayout& layout)
        {
            if (!layout.HasRoom()) return;
            ForEachUnitLength(
                [&](std::size_t length, std::size_t start_code)
                {
                    if (length == 0) return;
                    const Bytes frame = TwoUnits(length, start_code);
                    const std::size_t room = layout.FragmentsSize(frame.size());
                    const std::unique_ptr<unsigned char[]> memory(new unsigned char[room]);
                    uint16_t sequence = 0;
                    StartCode end;
                    const std::size_t size =
                        layout.PutFragments({memory.get(), room}, frame, length - 1, end, sequence);
                    EXPECT_EQ(size, layout.FragmentsSize(length));
                    EXPECT_EQ(end.begin, length);
                    EXPECT_EQ(end.unit, length + start_code);
                    const auto packets = Readers::ReadRtpPackets(
                        Bytes(memory.get(), memory.get() + size), info.custom.size());
                    EXPECT_EQ(packets.size(), sequence);
                    EXPECT_EQ(packets.back().payload.back(), 0) << "the byte behind the unit";
                });
        });
}

TEST(CRtpLayout, UnitsThatAreNoLongerThanAPacketAreNotFragmented)
{
    ForEachLayout(
        [](const Rtp_FrameInfo& /*info*/, const CRtpLayout& layout)
        {
            if (!layout.HasRoom()) return;
            ForEachUnitLength(
                [&](std::size_t length, std::size_t start_code)
                {
                    const Bytes frame = TwoUnits(length, start_code);
                    const std::size_t room = layout.FragmentsSize(frame.size());
                    const std::unique_ptr<unsigned char[]> memory(new unsigned char[room]);
                    for (std::size_t whole = length; whole < frame.size(); ++whole)
                    {
                        uint16_t sequence = 7;
                        StartCode end;
                        EXPECT_EQ(
                            layout.PutFragments({memory.get(), room}, frame, whole, end, sequence),
                            0u);
                        EXPECT_EQ(sequence, 7);
                    }
                });
        });
}

TEST(CRtpLayout, TheLongestWholeUnitCountsTheExtensionTwiceAndLaterTheCustomBytesToo)
{
    const Bytes bytes = Payload(64);
    Rtp_FrameInfo info;
    info.limit = 100;
    EXPECT_EQ(CRtpLayout(info).MostWhole(true), 100u - 12);
    EXPECT_EQ(CRtpLayout(info).MostWhole(false), 100u - 12);
    info.custom = std::span(bytes).first(10);
    EXPECT_EQ(CRtpLayout(info).MostWhole(true), 100u - 12 - 10);
    EXPECT_EQ(CRtpLayout(info).MostWhole(false), 100u - 12 - 2 * 10);
    info.extension = std::span(bytes).first(5);
    EXPECT_EQ(CRtpLayout(info).MostWhole(true), 100u - 12 - 10 - 8 - 5);
    info.limit = 34;
    EXPECT_EQ(CRtpLayout(info).MostWhole(true), 0u);
}

TEST(CRtpLayout, SizesOfPiecesNearFourGibibytesAreExact)
{
    constexpr std::size_t kHuge = 0xFFFFFFFF;
    Rtp_FrameInfo info;
    info.limit = 15;  // 3 bytes of plain data, 1 of a fragment
    const CRtpLayout layout(info);
    EXPECT_EQ(layout.PlainSize(kHuge), kHuge + (kHuge / 3 + 1) * 14);
    EXPECT_EQ(layout.NalUnitSize(kHuge), kHuge + ((kHuge - 1) / 3 + 1) * 14);
    EXPECT_EQ(layout.FragmentsSize(kHuge), kHuge * (1 + 16));
}

}  // namespace
}  // namespace Orbel::Wrapton
