#ifndef WRAPTON_MP4PACKET_BOX_BOX_STTS_H
#define WRAPTON_MP4PACKET_BOX_BOX_STTS_H

#include "mp4packet/Box/Box.h"

namespace Orbel::Wrapton
{

/// stts: decoding time to sample, ISO/IEC 14496-12 8.6.1.2. One entry: every sample of a track
/// lasts equally long, by the rate of its first frame.
class CBox_stts final : public CBox
{
public:
    explicit CBox_stts(uint32_t nMode);
    void Init(uint32_t nType, void* pInfo) override;

    /// Counts one more sample.
    void InputData(uint32_t nType, void* pInfo) override;

    /// In media units.
    [[nodiscard]] uint32_t getTotalDuration() const noexcept
    {
        return m_nSampleDelta * m_nSampleCount;
    }

protected:
    void PutData(CMsbCursor& w) const override;

private:
    uint32_t m_nEntryCount = 1;
    uint32_t m_nSampleCount = 0;
    uint32_t m_nSampleDelta = 0;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MP4PACKET_BOX_BOX_STTS_H
