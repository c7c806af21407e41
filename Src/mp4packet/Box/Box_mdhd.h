#ifndef WRAPTON_MP4PACKET_BOX_BOX_MDHD_H
#define WRAPTON_MP4PACKET_BOX_BOX_MDHD_H

#include "mp4packet/Box/Box.h"

namespace Orbel::Wrapton
{

struct Mp4_MDHD
{
    uint8_t version = 0;
    uint32_t flags = 0;
    uint32_t creation_time = 0;      // seconds since 1904-01-01 UTC
    uint32_t modification_time = 0;  // likewise
    uint32_t time_scale = 0;         // media units per second
    uint32_t duration = 0;           // media units
    uint16_t language = 0x55C4;      // "und", three letters of 5 bits
    uint16_t quality = 0;
};

/// mdhd: media header, ISO/IEC 14496-12 8.4.2.
class CBox_mdhd final : public CBox
{
public:
    explicit CBox_mdhd(uint32_t nMode);
    void Init(uint32_t nType, void* pInfo) override;
    void setDuration(uint32_t duration) noexcept { m_Data.duration = duration; }

protected:
    void PutData(CMsbCursor& w) const override;

private:
    Mp4_MDHD m_Data;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MP4PACKET_BOX_BOX_MDHD_H
