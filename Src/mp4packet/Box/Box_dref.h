#ifndef WRAPTON_MP4PACKET_BOX_BOX_DREF_H
#define WRAPTON_MP4PACKET_BOX_BOX_DREF_H

#include <memory>

#include "mp4packet/Box/Box.h"
#include "mp4packet/Box/Box_url.h"

namespace Orbel::Wrapton
{

/// dref: data reference, ISO/IEC 14496-12 8.7.2, with its one entry.
class CBox_dref final : public CBox
{
public:
    explicit CBox_dref(uint32_t nMode);
    void Update() override;

protected:
    void PutData(CMsbCursor& w) const override;

private:
    uint8_t m_nVersion = 0;
    uint32_t m_nFlag = 0;
    uint32_t m_nEntryCount = 1;
    std::unique_ptr<CBox_url> m_pUrl;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MP4PACKET_BOX_BOX_DREF_H
