#ifndef WRAPTON_OMFPACKET_OMFFORMAT_H
#define WRAPTON_OMFPACKET_OMFFORMAT_H

#include <cstdint>
#include <span>

namespace Orbel::Wrapton
{

// What the writer and the reader of native frames have to agree on. A native recording is nothing
// but frames one after another: header, extension headers, payload, trailer; all little-endian.

inline constexpr uint32_t kOmfHeaderLen = 4 + 1 + 1 + 1 + 1 + 4 + 4 + 4 + 2 + 1 + 1;
static_assert(kOmfHeaderLen == 24);
inline constexpr uint32_t kOmfTailerLen = 4 + 4;

inline constexpr char kOmfHeaderTag[] = "OMFR";
inline constexpr char kOmfTailerTag[] = "omfr";

/// The fixed header of a frame. Its last byte, the sum of all others, is made when it is written.
struct Omf_Header
{
    uint8_t frame_type = 0;  // OmfFrameType
    uint8_t frame_sub_type = 0;
    uint8_t channel = 1;
    uint8_t frame_sub_num = 0;
    uint32_t frame_num = 0;
    uint32_t frame_length = 0;  // of the whole frame, header to trailer
    uint32_t frame_date = 0;    // packed like get_current_omf_time()
    uint16_t frame_time_stamp = 0;
    uint8_t frame_length_ex = 0;  // of the extension headers, its low 8 bits
};

/// Omf_Header::frame_type.
enum OmfFrameType : uint8_t
{
    kOmfFrameOther = 0x00,  // a picture of no kind below
    kOmfFrameAudio = 0xF0,
    kOmfFrameExt = 0xF1,
    kOmfFrameJpeg = 0xFB,
    kOmfFrameP = 0xFC,
    kOmfFrameI = 0xFD,
    kOmfFrameB = 0xFE
};

/// Tags of the extension headers.
enum OmfExTag : uint8_t
{
    kOmfExImageSize = 0x80,
    kOmfExPlayBack = 0x81,
    kOmfExLargeImageSize = 0x82,
    kOmfExAudioFormat = 0x83,
    kOmfExDataCheck = 0x88,
    kOmfExRotation = 0x8B,
    kOmfExAudioFormatRate = 0x8C,
    kOmfExCompanyType = 0x92,
    kOmfExSplit = 0x99
};

/// Video encodings as the play-back header numbers them.
enum OMF_ENCODE_VIDEO_TYPE : uint8_t
{
    OMF_ENCODE_VIDEO_UNKNOW = 0,  // spelled so in the interface
    OMF_ENCODE_VIDEO_MPEG4 = 1,
    OMF_ENCODE_VIDEO_HI_H264 = 2,
    OMF_ENCODE_VIDEO_JPEG = 5,
    OMF_ENCODE_VIDEO_QV_H264 = 8,
    OMF_ENCODE_VIDEO_SVAC = 11,
    OMF_ENCODE_VIDEO_QV_H265 = 12,
    OMF_ENCODE_VIDEO_QV_H263 = 13,
    OMF_ENCODE_VIDEO_HIK_H264 = 14,
    OMF_ENCODE_VIDEO_MAX = 15
};

/// The data-check header's last byte.
enum OmfCheckType : uint8_t
{
    kOmfCheckSum = 0,
    kOmfCheckXor = 1,
    kOmfCheckCrc = 2
};

/// The frame type of a picture by its SG_ENCODE_VIDEO_TYPE and SG_FRAME_SUB_TYPE.
uint8_t OmfVideoFrameType(uint32_t encode, uint32_t sub_type) noexcept;

/// SG_ENCODE_VIDEO_TYPE to OMF_ENCODE_VIDEO_TYPE, and back; 0 for what the other side lacks.
uint8_t OmfVideoEncode(uint32_t encode) noexcept;
uint32_t SgVideoEncode(uint8_t omf_encode) noexcept;

/// The number that stands for a sample rate in Hz, and back; 0 for what the format lacks.
uint8_t OmfSampleRateIndex(uint32_t sample_rate) noexcept;
uint32_t OmfSampleRate(uint8_t index) noexcept;

/// The check value over a payload of at most INT_MAX bytes; 0 for a type that is not known.
uint32_t OmfCheckValue(uint8_t check_type, std::span<const unsigned char> payload) noexcept;

/// The same, with the payload copied to @p to on the way.
uint32_t OmfCopyAndCheck(uint8_t check_type,
                         std::span<const unsigned char> payload,
                         unsigned char* to) noexcept;

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_OMFPACKET_OMFFORMAT_H
