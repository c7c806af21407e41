#ifndef WRAPTON_MKVPACKET_MKVCODEC_H
#define WRAPTON_MKVPACKET_MKVCODEC_H

#include <array>
#include <cstdint>
#include <span>

#include "tool/ByteCursor.h"

namespace Orbel::Wrapton
{

/// AVCDecoderConfigurationRecord, ISO/IEC 14496-15 5.3.3.1, as it comes together from the stream.
/// Until both parameter sets are there everything but them is 0.
struct MKV_AVCC
{
    uint8_t configurate_version = 0;
    uint8_t AVCProfileIndition = 0;
    uint8_t profile_compatibility = 0;
    uint8_t AVCLevelIndition = 0;
    uint8_t lengthSizeMinusOne = 0;  // with its 6 reserved ones
    uint8_t sps_num = 0;
    int16_t sps_length = 0;
    std::array<unsigned char, 256> sps_data{};
    uint8_t pps_num = 0;
    int16_t pps_length = 0;
    std::array<unsigned char, 256> pps_data{};
};

/**
 * Replaces every start code of 4 bytes by the length of the NAL unit behind it, in place, and keeps
 * the first parameter sets of 1 to 255 bytes that come by. Start codes of 3 bytes are part of the
 * unit they stand in.
 */
void ConvertStartCodes(std::span<unsigned char> frame, MKV_AVCC& config) noexcept;

/// The same, with the converted frame copied to @p to on the way.
void ConvertStartCodes(std::span<unsigned char> frame,
                       MKV_AVCC& config,
                       unsigned char* to) noexcept;

void PutAvcConfig(CMsbCursor& w, const MKV_AVCC& config) noexcept;

/// The headers ahead of an MPEG-4 picture, ISO/IEC 14496-2 6.2.1: from the first visual object
/// sequence or visual object up to the next group of pictures or picture. Empty when either is
/// missing.
std::span<const unsigned char> FindMpeg4Headers(std::span<const unsigned char> frame) noexcept;

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MKVPACKET_MKVCODEC_H
