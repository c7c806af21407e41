#ifndef WRAPTON_MP4PACKET_BOX_BOX_ESDS_H
#define WRAPTON_MP4PACKET_BOX_BOX_ESDS_H

#include <array>
#include <cstddef>
#include <span>

#include "mp4packet/Box/Box.h"

namespace Orbel::Wrapton
{

/// The descriptors of an elementary stream.
struct Mp4_ESDS
{
    uint8_t version = 0;
    uint32_t flags = 0;
    int32_t decoderConfigLen = 0;  // 0: no decoder specific information
    std::array<unsigned char, 256> decoderConfig{};
    uint8_t encode_type = 0;  // SG_ENCODE_VIDEO_TYPE or SG_ENCODE_AUDIO_TYPE
    uint8_t object_type = 0;  // objectTypeIndication
    uint8_t stream_type = 0;  // streamType, upStream and reserved bit in one byte
    uint16_t track_id = 0;    // ES_ID
};

/// esds: elementary stream descriptor, ISO/IEC 14496-14 5.6 and ISO/IEC 14496-1 7.2.6.
class CBox_esds final : public CBox
{
public:
    explicit CBox_esds(uint32_t nMode);
    void Init(uint32_t nType, void* pInfo) override;

    /// Takes the configuration out of an I frame of MPEG-4 video, replacing an earlier one, and
    /// shortens the Mp4_Sample by it. A configuration of more than 256 bytes is left where it is.
    void InputData(uint32_t nType, void* pInfo) override;
    void Update() override;

protected:
    void PutData(CMsbCursor& w) const override;

private:
    void InitAudio(uint32_t encode_type, uint32_t sample_rate, uint32_t channels);

    [[nodiscard]] std::span<const unsigned char> DecoderConfig() const noexcept
    {
        return std::span(m_Data.decoderConfig).first(static_cast<size_t>(m_Data.decoderConfigLen));
    }

    Mp4_ESDS m_Data;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MP4PACKET_BOX_BOX_ESDS_H
