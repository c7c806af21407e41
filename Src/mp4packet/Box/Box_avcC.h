#ifndef WRAPTON_MP4PACKET_BOX_BOX_AVCC_H
#define WRAPTON_MP4PACKET_BOX_BOX_AVCC_H

#include <array>
#include <cstddef>
#include <span>

#include "mp4packet/Box/Box.h"

namespace Orbel::Wrapton
{

/// A parameter set and its length, which is 0 when there is none.
struct Mp4_ParameterSet
{
    int16_t length = 0;
    std::array<unsigned char, 256> data{};

    [[nodiscard]] std::span<const unsigned char> Bytes() const noexcept
    {
        return std::span(data).first(static_cast<size_t>(length));
    }
};

/// The fields of an AVC decoder configuration record.
struct Mp4_AVCC
{
    uint8_t configurate_version = 1;
    uint8_t AVCProfileIndition = 77;  // Main
    uint8_t profile_compatibility = 0x40;
    uint8_t AVCLevelIndition = 30;
    uint32_t lengthSizeMinusOne = 0xFF;  // 6 reserved ones and the 2 bits for lengths of 4 bytes
    uint8_t SPS_num = 0;
    Mp4_ParameterSet sps;
    uint8_t PPS_num = 0;
    Mp4_ParameterSet pps;
};

/// avcC: AVC decoder configuration record, ISO/IEC 14496-15 5.3.3.1. Taken once, from the first I
/// frame; profile and level keep a default when that carries no parameter set.
class CBox_avcC final : public CBox
{
public:
    explicit CBox_avcC(uint32_t nMode);
    void Init(uint32_t nType, void* pInfo) override;
    void Update() override;

protected:
    void PutData(CMsbCursor& w) const override;

private:
    static constexpr uint32_t kFixedLen = 6 + 2 + 1 + 2;  // everything but the parameter sets

    Mp4_AVCC m_Data;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MP4PACKET_BOX_BOX_AVCC_H
