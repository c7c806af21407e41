#ifndef WRAPTON_MP4PACKET_BOX_BOX_STCO_H
#define WRAPTON_MP4PACKET_BOX_BOX_STCO_H

#include <cstdint>

#include "mp4packet/Box/ChunkOffsets.h"

namespace Orbel::Wrapton
{

/// stco: chunk offsets of 32 bits. They wrap past 4 GiB.
class CBox_stco final : public CChunkOffsets
{
public:
    explicit CBox_stco(uint32_t nMode);

    /// @param nType offset of the next chunk in the file; not taken without memory
    void InputData(uint32_t nType, void* pInfo) override;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MP4PACKET_BOX_BOX_STCO_H
