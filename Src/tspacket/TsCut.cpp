#include "tspacket/TsCut.h"

#include <cassert>
#include <cstring>

#include "tool/StreamTool.h"

// Nearly all bytes of a transport stream go through this loop, 182 at a time. A cursor would count
// every field into memory before the next; here the compiler keeps the places in registers and
// turns the copy, whose length it knows, into moves. It does so once for every kind of vector.

namespace Orbel::Wrapton
{
namespace
{

[[gnu::always_inline, gnu::nonnull]] inline void Cut(unsigned char* out,
                                                     const unsigned char* payload,
                                                     size_t packets,
                                                     uint32_t header,
                                                     uint32_t counter)
{
    constexpr uint32_t kCounterCycle = 16;
    constexpr uint32_t kEmptyField = 0x0100;  // adaptation_field_length 1, no flags

    for (; packets != 0; --packets)
    {
        MSB_uint32_to_memory(out, header | counter % kCounterCycle);
        MSB_uint16_to_memory(out + 4, kEmptyField);
        std::memcpy(out + kTsFullHeadLen, payload, kTsFullPayloadLen);
        out += kTsPacketLen;
        payload += kTsFullPayloadLen;
        ++counter;
    }
}

[[gnu::target("avx2"), gnu::nonnull]] void CutAvx2(unsigned char* out,
                                                   const unsigned char* payload,
                                                   size_t packets,
                                                   uint32_t header,
                                                   uint32_t counter)
{
    Cut(out, payload, packets, header, counter);
}

[[gnu::nonnull]] void CutPlain(unsigned char* out,
                               const unsigned char* payload,
                               size_t packets,
                               uint32_t header,
                               uint32_t counter)
{
    Cut(out, payload, packets, header, counter);
}

}  // namespace

void CutFullPackets(std::span<unsigned char> out,
                    std::span<const unsigned char> payload,
                    uint32_t header,
                    uint32_t counter) noexcept
{
    const size_t packets = out.size() / kTsPacketLen;
    assert(packets == 0 || payload.size() == packets * kTsFullPayloadLen);
    if (packets == 0) return;
    const bool avx2 = __builtin_cpu_supports("avx2") != 0;
    (avx2 ? CutAvx2 : CutPlain)(out.data(), payload.data(), packets, header, counter);
}

}  // namespace Orbel::Wrapton
