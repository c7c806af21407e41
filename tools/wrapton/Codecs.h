#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include <wrapton/IWrapton.h>
#include <wrapton/Wrapton.h>

namespace Orbel::Wrapton::Command
{

/// Encodings that at least one container takes from this command.
enum class Codec
{
    kH264,
    kMpeg4,
    kMjpeg,
    kAac,
    kMp2,
    kAlaw,
    kUlaw,
    kS16le,
};

struct CodecEntry
{
    Codec codec;
    std::string_view name;
    uint32_t encode;       ///< SGFrameInfo::frame_encode
    EncodeType component;  ///< the same for a component
};

/// Indexed by Codec.
inline constexpr std::array<CodecEntry, 8> kCodecs = {{
    {Codec::kH264, "h264", SG_ENCODE_VIDEO_HI_H264, encodeTypeH264},
    {Codec::kMpeg4, "mpeg4", SG_ENCODE_VIDEO_MPEG4, encodeTypeMpeg4},
    {Codec::kMjpeg, "mjpeg", SG_ENCODE_VIDEO_JPEG, encodeTypeJpeg},
    {Codec::kAac, "aac", SG_ENCODE_AUDIO_AAC, encodeTypeAac},
    {Codec::kMp2, "mp2", SG_ENCODE_AUDIO_MP2, encodeTypeMp2},
    {Codec::kAlaw, "alaw", SG_ENCODE_AUDIO_G711A, encodeTypeG711a},
    {Codec::kUlaw, "ulaw", SG_ENCODE_AUDIO_G711U, encodeTypeG711u},
    {Codec::kS16le, "s16le", SG_ENCODE_AUDIO_PCM16, encodeTypePcm16},
}};

constexpr const CodecEntry& EntryOf(Codec codec)
{
    return kCodecs.at(static_cast<std::size_t>(codec));
}

static_assert(EntryOf(Codec::kH264).codec == Codec::kH264);
static_assert(EntryOf(Codec::kAac).codec == Codec::kAac);
static_assert(EntryOf(Codec::kS16le).codec == Codec::kS16le);

}  // namespace Orbel::Wrapton::Command
