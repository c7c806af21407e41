#ifndef WRAPTON_MP4PACKET_BOX_CHUNKOFFSETS_H
#define WRAPTON_MP4PACKET_BOX_CHUNKOFFSETS_H

#include <cstdint>
#include <span>

#include "mp4packet/Box/Box.h"
#include "tool/DynamicBuffer.h"

namespace Orbel::Wrapton
{

/// What stco and co64 share: a table of chunk offsets, ISO/IEC 14496-12 8.7.5. Kept: both print the
/// line of the 32-bit box.
class CChunkOffsets : public CBox
{
public:
    CChunkOffsets(eBoxType type, uint32_t nMode, uint32_t nEntryLen);
    void Update() override;

    /// Makes room for one more entry. @return false, with nothing changed, without memory
    [[nodiscard]] bool Reserve() noexcept;

protected:
    void PutData(CMsbCursor& w) const override;

    /// Appends an entry in file byte order; without memory it is not taken.
    void Append(std::span<const unsigned char> entry) noexcept;

private:
    uint32_t m_nEntryLen;
    uint32_t m_nEntryCount = 0;
    CDynamicBuffer m_pData;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MP4PACKET_BOX_CHUNKOFFSETS_H
