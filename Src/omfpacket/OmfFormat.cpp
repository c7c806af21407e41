#include "omfpacket/OmfFormat.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <climits>
#include <utility>

#include "Wrapton.h"
#include "tool/StreamTool.h"
#include "tool/Sum32.h"

namespace Orbel::Wrapton
{
namespace
{

/// Indexed by SG_FRAME_SUB_TYPE.
constexpr std::array<uint8_t, 4> s_frametype = {kOmfFrameI, kOmfFrameP, kOmfFrameB, kOmfFrameOther};
static_assert(s_frametype[SG_FRAME_SUB_TYPE_P] == kOmfFrameP);

// Kept: SG_ENCODE_VIDEO_STD_H264 is not among them.
constexpr std::array<std::pair<uint32_t, uint8_t>, 8> s_mediaflagTable = {{
    {SG_ENCODE_VIDEO_MPEG4, OMF_ENCODE_VIDEO_MPEG4},
    {SG_ENCODE_VIDEO_HI_H264, OMF_ENCODE_VIDEO_HI_H264},
    {SG_ENCODE_VIDEO_JPEG, OMF_ENCODE_VIDEO_JPEG},
    {SG_ENCODE_VIDEO_QV_H264, OMF_ENCODE_VIDEO_QV_H264},
    {SG_ENCODE_VIDEO_SVAC, OMF_ENCODE_VIDEO_SVAC},
    {SG_ENCODE_VIDEO_QV_H265, OMF_ENCODE_VIDEO_QV_H265},
    {SG_ENCODE_VIDEO_H263, OMF_ENCODE_VIDEO_QV_H263},
    {SG_ENCODE_VIDEO_HIK_H264, OMF_ENCODE_VIDEO_HIK_H264},
}};

constexpr std::array<uint32_t, 10> s_samplerateTable = {
    0, 4000, 8000, 11025, 16000, 20000, 22050, 32000, 44100, 48000};

}  // namespace

uint8_t OmfVideoFrameType(uint32_t encode, uint32_t sub_type) noexcept
{
    if (encode == SG_ENCODE_VIDEO_JPEG) return kOmfFrameJpeg;
    return sub_type < s_frametype.size() ? s_frametype[sub_type] : uint8_t{kOmfFrameOther};
}

uint8_t OmfVideoEncode(uint32_t encode) noexcept
{
    for (const auto& [sg, omf] : s_mediaflagTable)
    {
        if (sg == encode) return omf;
    }
    return OMF_ENCODE_VIDEO_UNKNOW;
}

uint32_t SgVideoEncode(uint8_t omf_encode) noexcept
{
    for (const auto& [sg, omf] : s_mediaflagTable)
    {
        if (omf == omf_encode) return sg;
    }
    return SG_ENCODE_VIDEO_UNKNOWN;
}

uint8_t OmfSampleRateIndex(uint32_t sample_rate) noexcept
{
    const auto* const found =
        std::find(s_samplerateTable.begin(), s_samplerateTable.end(), sample_rate);
    return found != s_samplerateTable.end()
               ? static_cast<uint8_t>(found - s_samplerateTable.begin())
               : uint8_t{0};
}

uint32_t OmfSampleRate(uint8_t index) noexcept
{
    return index < s_samplerateTable.size() ? s_samplerateTable[index] : 0;
}

uint32_t OmfCheckValue(uint8_t check_type, std::span<const unsigned char> payload) noexcept
{
    assert(payload.size() <= INT_MAX);
    const auto length = static_cast<int32_t>(payload.size());
    switch (check_type)
    {
        case kOmfCheckSum:
            return GetSum32(payload.data(), length);
        case kOmfCheckXor:
            return GetXor32(payload.data(), length);
        case kOmfCheckCrc:
            return GetCRC32(payload.data(), length);
        default:
            return 0;
    }
}

uint32_t OmfCopyAndCheck(uint8_t check_type,
                         std::span<const unsigned char> payload,
                         unsigned char* to) noexcept
{
    if (check_type == kOmfCheckSum) return CopyAndSum32(payload, to);

    std::copy(payload.begin(), payload.end(), to);
    return OmfCheckValue(check_type, payload);
}

}  // namespace Orbel::Wrapton
