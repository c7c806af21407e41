#include "pspacket/qvps/QvMap.h"

#include <array>

#include "Wrapton.h"
#include "pspacket/PsHeaders.h"
#include "tool/StreamTool.h"

namespace Orbel::Wrapton
{
namespace
{

/// Added to sizes and audio parameters; a part of the format.
constexpr uint32_t kMask = 0x1234;

constexpr uint32_t kDescriptorLen = 20;

uint32_t VideoStreamType(uint32_t encode)
{
    switch (encode)
    {
        case SG_ENCODE_VIDEO_HI_H264:
        case SG_ENCODE_VIDEO_QV_H264:
            return kStreamTypeH264;
        case SG_ENCODE_VIDEO_MPEG4:
            return kStreamTypeMpeg4;
        case SG_ENCODE_VIDEO_MPEG2:
            return 0x02;
        case SG_ENCODE_VIDEO_SVAC:
            return 0x80;
        case SG_ENCODE_VIDEO_HIK_H264:
            return 0xB0;
        case SG_ENCODE_VIDEO_JPEG:
            return 0xB1;
        default:
            return 0x24;  // H.265
    }
}

uint32_t AudioStreamType(uint32_t encode)
{
    return encode == SG_ENCODE_AUDIO_AAC ? 0x0F : 0x04;  // ADTS AAC, else MPEG-2 audio
}

void PutDate(CMsbCursor& w, uint32_t date)
{
    std::array<unsigned char, 4> bytes{};
    LSB_uint32_to_memory(bytes.data(), date);  // the only little-endian field here
    w.Bytes(bytes);
}

}  // namespace

/// ISO/IEC 13818-1 table 2-41; the descriptors are this format's own and the CRC is left zero.
void PutQvMap(CMsbCursor& w, const QvMap& map)
{
    w.U24(0x000001);
    w.U8(0xBC);
    w.U16(kQvMapLen - 6);
    w.U8(0xE1);  // current, version 1
    w.U8(0xFF);
    w.U16(0);   // program_stream_info_length
    w.U16(48);  // elementary_stream_map_length

    w.U8(VideoStreamType(map.video_encode));
    w.U8(kVideoStreamId);
    w.U16(kDescriptorLen);
    w.FourCC("QVES");
    w.U24(0x000100);
    w.U8(map.frame_encode);
    w.U16(map.width + kMask);
    w.U16(map.height + kMask);
    w.U16(map.frame_rate * 10);
    w.U16(0x000A);
    PutDate(w, map.date);

    w.U8(AudioStreamType(map.audio_encode));
    w.U8(kAudioStreamId);
    w.U16(kDescriptorLen);
    w.FourCC("QVES");
    w.U16(0x0001);
    w.U16(map.audio_encode);
    w.U32(map.sample_rate + kMask);
    w.U16(map.bit_per_sample + kMask);
    w.U16(map.channels + kMask);
    PutDate(w, map.audio_date);
    w.U32(0);  // CRC
}

}  // namespace Orbel::Wrapton
