#ifndef WRAPTON_MP4PACKET_BOX_BOX_CO64_H
#define WRAPTON_MP4PACKET_BOX_BOX_CO64_H

#include "mp4packet/Box/Box.h"
#include "tool/DynamicBuffer.h"

namespace Orbel::Wrapton
{

/// co64: chunk offsets of 64 bits, ISO/IEC 14496-12 8.7.5.
class CBox_co64 final : public CBox
{
public:
    explicit CBox_co64(uint32_t nMode);
    void Update() override;

    /// @param nOffset offset of the next chunk in the file; not taken without memory
    virtual void InputOffset(uint64_t nOffset);

    [[nodiscard]] bool Reserve() noexcept;

protected:
    void PutData(CMsbCursor& w) const override;

private:
    uint32_t m_nEntryCount = 0;
    CDynamicBuffer m_pData;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MP4PACKET_BOX_BOX_CO64_H
