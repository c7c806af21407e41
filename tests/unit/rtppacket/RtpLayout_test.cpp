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

/// Expects the cut to fill exactly Size() bytes with packets that keep to the room.
void ExpectExact(const Rtp_FrameInfo& info, const CRtpLayout& layout, const Rtp_Cut& cut)
{
    const std::size_t size = layout.Size(cut);
    const std::unique_ptr<unsigned char[]> memory(new unsigned char[size]);
    uint16_t sequence = 0xFFFE;
    layout.Put({memory.get(), size}, cut, sequence);
    const auto packets =
        Readers::ReadRtpPackets(Bytes(memory.get(), memory.get() + size), info.custom.size());
    ASSERT_EQ(packets.size(), cut.full_packets + 1);
    EXPECT_EQ(sequence, static_cast<uint16_t>(0xFFFE + packets.size()));
    EXPECT_EQ(packets[0].sequence, 0xFFFFu);
    std::size_t payload = 0;
    for (const auto& packet : packets)
    {
        EXPECT_LE(packet.length + info.custom.size(), info.limit);
        EXPECT_EQ(packet.marker, &packet == &packets.back());
        payload += packet.payload.size();
    }
    EXPECT_EQ(payload, cut.PayloadLen() + (cut.fragmented ? 2 * packets.size() : 0));
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
                const auto unit = std::span(data).first(size);
                ExpectExact(info, layout, layout.CutPlain(unit));
                ExpectExact(info, layout, layout.CutNalUnit(unit, true, true));
                ExpectExact(info, layout, layout.CutNalUnit(unit, false, true));
                ExpectExact(info, layout, layout.CutNalUnit(unit, true, false));
            }
        });
}

TEST(CRtpLayout, SizesOfPiecesNearFourGibibytesAreExact)
{
    const unsigned char byte = 0x41;
    // Never read: only the length counts.
    const std::span<const unsigned char> huge(&byte, 0xFFFFFFFF);
    Rtp_FrameInfo info;
    info.limit = 15;  // 3 bytes of plain data, 1 of a fragment
    const CRtpLayout layout(info);
    EXPECT_EQ(layout.Size(layout.CutPlain(huge)), 0xFFFFFFFFull + (0xFFFFFFFFull / 3 + 1) * 14);
    EXPECT_EQ(layout.Size(layout.CutNalUnit(huge, true, true)), 0xFFFFFFFFull * (1 + 16));
}

}  // namespace
}  // namespace Orbel::Wrapton
