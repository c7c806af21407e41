#ifndef WRAPTON_MP4PACKET_BOX_BOX_MVHD_H
#define WRAPTON_MP4PACKET_BOX_BOX_MVHD_H

#include "mp4packet/Box/Box.h"
#include "mp4packet/Box/MovieTime.h"

namespace Orbel::Wrapton
{

struct Mp4_MVHD
{
    uint8_t version = 0;
    uint32_t flags = 0;
    uint32_t creation_time = 0;      // seconds since 1904-01-01 UTC
    uint32_t modification_time = 0;  // likewise
    uint32_t time_scale = kMovieTimeScale;
    uint32_t duration = 0;       // movie units
    uint32_t rate = 0x00010000;  // 16.16
    uint16_t volume = 0x0100;    // 8.8
    uint32_t next_track_id = 1;
};

/// mvhd: movie header, ISO/IEC 14496-12 8.2.2.
class CBox_mvhd final : public CBox
{
public:
    explicit CBox_mvhd(uint32_t nMode);

    /// @param nType count of tracks
    void Init(uint32_t nType, void* pInfo) override;
    void setDuration(uint32_t duration) noexcept { m_Data.duration = duration; }

protected:
    void PutData(CMsbCursor& w) const override;

private:
    Mp4_MVHD m_Data;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MP4PACKET_BOX_BOX_MVHD_H
