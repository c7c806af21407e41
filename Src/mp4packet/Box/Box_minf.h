#ifndef WRAPTON_MP4PACKET_BOX_BOX_MINF_H
#define WRAPTON_MP4PACKET_BOX_BOX_MINF_H

#include <memory>

#include "mp4packet/Box/Box.h"
#include "mp4packet/Box/Box_dinf.h"
#include "mp4packet/Box/Box_stbl.h"

namespace Orbel::Wrapton
{

/// minf: media information, ISO/IEC 14496-12 8.4.4.
class CBox_minf final : public CBox
{
public:
    explicit CBox_minf(uint32_t nMode);
    void Init(uint32_t nType, void* pInfo) override;
    void InputData(uint32_t nType, void* pInfo) override;
    void Update() override;

    /// @see CBox_stbl::Reserve()
    bool Reserve() { return m_pStbl->Reserve(); }
    [[nodiscard]] uint32_t getTotalDuration() const noexcept { return m_pStbl->getTotalDuration(); }

protected:
    void PutData(CMsbCursor& w) const override;

private:
    std::unique_ptr<CBox> m_pMediaHeader;  // vmhd or smhd; null on the ext track
    std::unique_ptr<CBox_dinf> m_pDinf;
    std::unique_ptr<CBox_stbl> m_pStbl;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MP4PACKET_BOX_BOX_MINF_H
