#ifndef WRAPTON_MP4PACKET_BOX_BOX_CO64_H
#define WRAPTON_MP4PACKET_BOX_BOX_CO64_H

#include <cstdint>

#include "mp4packet/Box/ChunkOffsets.h"

namespace Orbel::Wrapton
{

/// co64: chunk offsets of 64 bits.
class CBox_co64 final : public CChunkOffsets
{
public:
    explicit CBox_co64(uint32_t nMode);

    /// @param nOffset offset of the next chunk in the file; not taken without memory
    virtual void InputOffset(uint64_t nOffset);
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MP4PACKET_BOX_BOX_CO64_H
