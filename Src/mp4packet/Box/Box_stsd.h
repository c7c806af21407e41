#ifndef WRAPTON_MP4PACKET_BOX_BOX_STSD_H
#define WRAPTON_MP4PACKET_BOX_BOX_STSD_H

#include <memory>

#include "mp4packet/Box/Box.h"

namespace Orbel::Wrapton
{

/// stsd: sample descriptions, ISO/IEC 14496-12 8.5.2. One entry, chosen by the track's encoding.
class CBox_stsd final : public CBox
{
public:
    explicit CBox_stsd(uint32_t nMode);
    void Init(uint32_t nType, void* pInfo) override;
    void InputData(uint32_t nType, void* pInfo) override;
    void Update() override;

protected:
    void PutData(CMsbCursor& w) const override;

private:
    uint32_t m_nEntryCount = 0;
    std::unique_ptr<CBox> m_pEntry;  // null until a track of a known encoding is opened
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MP4PACKET_BOX_BOX_STSD_H
