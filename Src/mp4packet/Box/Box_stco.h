#ifndef WRAPTON_MP4PACKET_BOX_BOX_STCO_H
#define WRAPTON_MP4PACKET_BOX_BOX_STCO_H

#include "mp4packet/Box/Box.h"
#include "tool/DynamicBuffer.h"

namespace Orbel::Wrapton
{

/// stco: chunk offsets of 32 bits, ISO/IEC 14496-12 8.7.5. They wrap past 4 GiB.
class CBox_stco final : public CBox
{
public:
    explicit CBox_stco(uint32_t nMode);

    /// @param nType offset of the next chunk in the file; not taken without memory
    void InputData(uint32_t nType, void* pInfo) override;
    void Update() override;

    [[nodiscard]] bool Reserve() noexcept;

protected:
    void PutData(CMsbCursor& w) const override;

private:
    uint32_t m_nEntryCount = 0;
    CDynamicBuffer m_pData;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MP4PACKET_BOX_BOX_STCO_H
