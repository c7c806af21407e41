#ifndef WRAPTON_MP4PACKET_BOX_BOX_VMHD_H
#define WRAPTON_MP4PACKET_BOX_BOX_VMHD_H

#include "mp4packet/Box/Box.h"

namespace Orbel::Wrapton
{

struct Mp4_VMHD
{
    uint8_t version = 0;
    uint32_t flags = 1;
};

/// vmhd: video media header, ISO/IEC 14496-12 12.1.2.
class CBox_vmhd final : public CBox
{
public:
    explicit CBox_vmhd(uint32_t nMode);

protected:
    void PutData(CMsbCursor& w) const override;

private:
    Mp4_VMHD m_Data;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MP4PACKET_BOX_BOX_VMHD_H
