#ifndef WRAPTON_MP4PACKET_BOX_BOX_SMHD_H
#define WRAPTON_MP4PACKET_BOX_BOX_SMHD_H

#include "mp4packet/Box/Box.h"

namespace Orbel::Wrapton
{

struct Mp4_SMHD
{
    uint8_t version = 0;
    uint32_t flags = 0;
    uint16_t balance = 0;  // 8.8, centre
    uint16_t reserved = 0;
};

/// smhd: sound media header, ISO/IEC 14496-12 12.2.2.
class CBox_smhd final : public CBox
{
public:
    explicit CBox_smhd(uint32_t nMode);

protected:
    void PutData(CMsbCursor& w) const override;

private:
    Mp4_SMHD m_Data;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MP4PACKET_BOX_BOX_SMHD_H
