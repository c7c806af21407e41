#ifndef WRAPTON_MP4PACKET_BOX_BOX_MP4V_H
#define WRAPTON_MP4PACKET_BOX_BOX_MP4V_H

#include <memory>

#include "mp4packet/Box/Box.h"
#include "mp4packet/Box/Box_esds.h"
#include "mp4packet/Box/VisualEntry.h"

namespace Orbel::Wrapton
{

/// mp4v: MPEG-4 visual sample entry, ISO/IEC 14496-14 5.6.
class CBox_mp4v final : public CBox
{
public:
    explicit CBox_mp4v(uint32_t nMode);
    void Init(uint32_t nType, void* pInfo) override;
    void InputData(uint32_t nType, void* pInfo) override;
    void Update() override;

protected:
    void PutData(CMsbCursor& w) const override;

private:
    Mp4_AVC1 m_Data;
    std::unique_ptr<CBox_esds> m_pEsds;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MP4PACKET_BOX_BOX_MP4V_H
