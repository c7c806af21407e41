#include "asfpacket/AsfData.h"

#include <algorithm>

#include "asfpacket/AsfObject.h"

namespace Orbel::Wrapton
{
namespace
{

constexpr uint32_t kErrorCorrection = 0x82;  // present, 2 bytes of data
constexpr uint32_t kLengthTypes = 0x90;      // error correction, WORD padding, single payload
constexpr uint32_t kPropertyTypes = 0x5D;    // BYTE replicated length, DWORD offset, BYTE numbers

/// Data packet with a single payload, Advanced Systems Format 01.20.03, 5.2.
void PutPacket(CLsbCursor& w,
               const AsfMediaObject& frame,
               uint32_t offset,
               std::span<const unsigned char> payload)
{
    const auto padding = static_cast<uint32_t>(kAsfPayloadRoom - payload.size());

    w.U8(kErrorCorrection);
    w.U16(0);  // error correction data
    w.U8(kLengthTypes);
    w.U8(kPropertyTypes);
    w.U16(padding);
    w.U32(frame.time);  // send time
    w.U16(0);           // duration
    w.U8(frame.stream);
    w.U8(frame.number);
    w.U32(offset);
    w.U8(4 + 4);  // replicated data
    w.U32(static_cast<uint32_t>(frame.bytes.size()));
    w.U32(frame.time);  // presentation time
    w.Bytes(payload);
    w.Fill(padding, 0);
}

}  // namespace

void PutPackets(CLsbCursor& w, const AsfMediaObject& frame)
{
    for (size_t offset = 0; offset < frame.bytes.size(); offset += kAsfPayloadRoom)
    {
        const size_t size = std::min<size_t>(frame.bytes.size() - offset, kAsfPayloadRoom);
        // A cursor of its own: what it counts stays in registers, and its room is known to suffice.
        CLsbCursor packet(w.Claimed(kAsfPacketLen));
        PutPacket(packet, frame, static_cast<uint32_t>(offset), frame.bytes.subspan(offset, size));
    }
}

void PutIndexEntry(CLsbCursor& w, const Index_Entry& entry)
{
    w.U32(entry.packet_num);
    w.U16(entry.packet_count);
}

/// Simple Index Object, 6.1.
void PutSimpleIndex(CLsbCursor& w, uint32_t entry_count)
{
    constexpr uint64_t kFixedLen = kAsfObjectHead + 16 + 8 + 4 + 4;
    static_assert(kFixedLen == 56);

    w.Guid(kAsfSimpleIndexObject);
    w.U64(kFixedLen + uint64_t{entry_count} * kAsfIndexEntryLen);
    w.Guid(kAsfFileId);
    w.U64(10000000);  // one entry per second
    w.U32(41960);     // maximum packet count; kept, whatever the entries have
    w.U32(entry_count);
}

}  // namespace Orbel::Wrapton
