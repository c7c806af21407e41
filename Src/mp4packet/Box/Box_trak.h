#ifndef WRAPTON_MP4PACKET_BOX_BOX_TRAK_H
#define WRAPTON_MP4PACKET_BOX_BOX_TRAK_H

#include <memory>

#include "mp4packet/Box/Box.h"
#include "mp4packet/Box/Box_mdia.h"
#include "mp4packet/Box/Box_tkhd.h"

namespace Orbel::Wrapton
{

/// trak: one track, ISO/IEC 14496-12 8.3.1.
class CBox_trak final : public CBox
{
public:
    explicit CBox_trak(uint32_t nMode);

    /// Opens the track; only the first description counts.
    void Init(uint32_t nType, void* pInfo) override;

    /// Takes an Mp4_Sample. The ADTS header of an AAC sample is taken off it.
    void InputData(uint32_t nType, void* pInfo) override;
    void Update() override;

    /// @see CBox_stbl::Reserve()
    bool Reserve() { return m_pMdia->Reserve(); }

    /// Media units per second.
    [[nodiscard]] uint32_t getTimeScale() const noexcept { return m_nTimeScale; }
    /// In media units.
    [[nodiscard]] uint32_t getTotalDuration() const noexcept { return m_pMdia->getTotalDuration(); }

protected:
    void PutData(CMsbCursor& w) const override;

private:
    uint32_t m_nType = 0;        // eTrakType
    uint32_t m_nEncodeType = 0;  // SG_ENCODE_VIDEO_TYPE or SG_ENCODE_AUDIO_TYPE
    uint32_t m_nTimeScale = 0;
    std::unique_ptr<CBox_tkhd> m_pTkhd;
    std::unique_ptr<CBox_mdia> m_pMdia;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MP4PACKET_BOX_BOX_TRAK_H
