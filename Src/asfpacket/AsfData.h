#ifndef WRAPTON_ASFPACKET_ASFDATA_H
#define WRAPTON_ASFPACKET_ASFDATA_H

#include <cstddef>
#include <cstdint>
#include <span>

#include "tool/ByteCursor.h"

namespace Orbel::Wrapton
{

/// Length of a data packet, and what it holds of a frame.
inline constexpr uint32_t kAsfPacketLen = 2076;
inline constexpr uint32_t kAsfPayloadRoom = 2048;

/// Stream number of a packet, with its key frame bit.
enum AsfStreamByte : uint8_t
{
    kAsfVideoInter = 0x01,
    kAsfVideoKey = 0x81,
    kAsfAudio = 0x82
};

/// A frame as its packets describe it.
struct AsfMediaObject
{
    AsfStreamByte stream;
    uint8_t number;  // frame counter of the stream, low bits
    uint32_t time;   // milliseconds
    std::span<const unsigned char> bytes;
};

constexpr size_t AsfPacketCount(size_t size)
{
    return size / kAsfPayloadRoom + (size % kAsfPayloadRoom != 0 ? 1 : 0);
}

/// The packets of a frame.
void PutPackets(CLsbCursor& w, const AsfMediaObject& frame);

/// Where a key frame stands: its first packet, and how many there are.
struct Index_Entry
{
    uint32_t packet_num = 0;
    uint16_t packet_count = 0;
};

inline constexpr uint32_t kAsfIndexEntryLen = 6;

void PutIndexEntry(CLsbCursor& w, const Index_Entry& entry);

/// The simple index object ahead of its entries.
void PutSimpleIndex(CLsbCursor& w, uint32_t entry_count);

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_ASFPACKET_ASFDATA_H
