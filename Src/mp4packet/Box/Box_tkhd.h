#ifndef WRAPTON_MP4PACKET_BOX_BOX_TKHD_H
#define WRAPTON_MP4PACKET_BOX_BOX_TKHD_H

#include "mp4packet/Box/Box.h"

namespace Orbel::Wrapton
{

struct Mp4_TKHD
{
    uint8_t version = 0;
    uint32_t flags = 0;
    uint32_t creation_time = 0;      // seconds since 1904-01-01 UTC
    uint32_t modification_time = 0;  // likewise
    uint32_t track_ID = 0;
    uint32_t duration = 0;  // movie units
    uint16_t layer = 0;
    uint16_t alternate_group = 0;
    uint16_t volume = 0;        // 8.8
    uint32_t track_width = 0;   // 16.16
    uint32_t track_height = 0;  // 16.16
};

/// tkhd: track header, ISO/IEC 14496-12 8.3.2.
class CBox_tkhd final : public CBox
{
public:
    explicit CBox_tkhd(uint32_t nMode);
    void Init(uint32_t nType, void* pInfo) override;
    void setDuration(uint32_t duration) noexcept { m_Data.duration = duration; }

protected:
    void PutData(CMsbCursor& w) const override;

private:
    Mp4_TKHD m_Data;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MP4PACKET_BOX_BOX_TKHD_H
