#ifndef WRAPTON_TSPACKET_TSCUT_H
#define WRAPTON_TSPACKET_TSCUT_H

#include <cstddef>
#include <cstdint>
#include <span>

namespace Orbel::Wrapton
{

inline constexpr size_t kTsPacketLen = 188;
/// What stands ahead of the payload in a packet that is full of it: the packet's header and an
/// adaptation field without fields.
inline constexpr size_t kTsFullHeadLen = 4 + 2;
inline constexpr size_t kTsFullPayloadLen = kTsPacketLen - kTsFullHeadLen;

/**
 * Cuts @p payload, a multiple of kTsFullPayloadLen, into packets that are full of it.
 *
 * @param out room for as many packets; none is written when it is empty
 * @param header ISO/IEC 13818-1 table 2-2 with the continuity counter 0, which is its lowest field
 * @param counter the first packet's
 */
void CutFullPackets(std::span<unsigned char> out,
                    std::span<const unsigned char> payload,
                    uint32_t header,
                    uint32_t counter) noexcept;

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_TSPACKET_TSCUT_H
