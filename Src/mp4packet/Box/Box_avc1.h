#ifndef WRAPTON_MP4PACKET_BOX_BOX_AVC1_H
#define WRAPTON_MP4PACKET_BOX_BOX_AVC1_H

#include <memory>

#include "mp4packet/Box/Box.h"
#include "mp4packet/Box/Box_avcC.h"
#include "mp4packet/Box/VisualEntry.h"

namespace Orbel::Wrapton
{

/// avc1: AVC sample entry, ISO/IEC 14496-15 5.3.4.
class CBox_avc1 final : public CBox
{
public:
    explicit CBox_avc1(uint32_t nMode);
    void Init(uint32_t nType, void* pInfo) override;
    void Update() override;

protected:
    void PutData(CMsbCursor& w) const override;

private:
    Mp4_AVC1 m_Data;
    std::unique_ptr<CBox_avcC> m_pAvcC;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MP4PACKET_BOX_BOX_AVC1_H
