#ifndef WRAPTON_MP4PACKET_BOX_BOX_MDIA_H
#define WRAPTON_MP4PACKET_BOX_BOX_MDIA_H

#include <memory>

#include "mp4packet/Box/Box.h"
#include "mp4packet/Box/Box_hdlr.h"
#include "mp4packet/Box/Box_mdhd.h"
#include "mp4packet/Box/Box_minf.h"

namespace Orbel::Wrapton
{

/// mdia: media, ISO/IEC 14496-12 8.4.1.
class CBox_mdia final : public CBox
{
public:
    explicit CBox_mdia(uint32_t nMode);
    void Init(uint32_t nType, void* pInfo) override;
    void InputData(uint32_t nType, void* pInfo) override;
    void Update() override;

    /// @see CBox_stbl::Reserve()
    bool Reserve() { return m_pMinf->Reserve(); }
    [[nodiscard]] uint32_t getTotalDuration() const noexcept { return m_pMinf->getTotalDuration(); }

protected:
    void PutData(CMsbCursor& w) const override;

private:
    std::unique_ptr<CBox_mdhd> m_pMdhd;
    std::unique_ptr<CBox_hdlr> m_pHdlr;
    std::unique_ptr<CBox_minf> m_pMinf;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MP4PACKET_BOX_BOX_MDIA_H
