#include "tool/StreamMatch.h"

#include <array>
#include <cstddef>

#include "Wrapton.h"

namespace Orbel::Wrapton
{
namespace
{

constexpr std::array<unsigned int, encodeTypeAudioMax> kEncodings = []
{
    std::array<unsigned int, encodeTypeAudioMax> table{};
    // Kept: HEVC, the Windows Media encodings and G.723 have no entry.
    table[encodeTypeMpeg4] = SG_ENCODE_VIDEO_MPEG4;
    table[encodeTypeH264] = SG_ENCODE_VIDEO_HI_H264;
    table[encodeTypeJpeg] = SG_ENCODE_VIDEO_JPEG;
    table[encodeTypeSvac] = SG_ENCODE_VIDEO_SVAC;
    table[encodeTypeMpeg2] = SG_ENCODE_VIDEO_MPEG2;
    table[encodeTypeH263] = SG_ENCODE_VIDEO_H263;
    table[encodeTypeHikH264] = SG_ENCODE_VIDEO_HIK_H264;
    table[encodeTypePcm] = SG_ENCODE_AUDIO_PCM;
    table[encodeTypeG729] = SG_ENCODE_AUDIO_G729;
    table[encodeTypeIma] = SG_ENCODE_AUDIO_IMA;
    table[encodeTypeMulaw] = SG_ENCODE_PCM_MULAW;
    table[encodeTypeG721] = SG_ENCODE_AUDIO_G721;
    table[encodeTypeVmis] = SG_ENCODE_PCM8_VWIS;
    table[encodeTypeAdpcm] = SG_ENCODE_MS_ADPCM;
    table[encodeTypeG711a] = SG_ENCODE_AUDIO_G711A;
    table[encodeTypeAmr] = SG_ENCODE_AUDIO_AMR;
    table[encodeTypePcm16] = SG_ENCODE_AUDIO_PCM16;
    table[encodeTypeG711u] = SG_ENCODE_AUDIO_G711U;
    table[encodeTypeAac] = SG_ENCODE_AUDIO_AAC;
    table[encodeTypeG726_40] = SG_ENCODE_AUDIO_G726_40;
    table[encodeTypeG726_32] = SG_ENCODE_AUDIO_G726_32;
    table[encodeTypeG726_24] = SG_ENCODE_AUDIO_G726_24;
    table[encodeTypeG726_16] = SG_ENCODE_AUDIO_G726_16;
    table[encodeTypeMp2] = SG_ENCODE_AUDIO_MP2;
    table[encodeTypeOgg] = SG_ENCODE_AUDIO_OGG;
    table[encodeTypeMp3] = SG_ENCODE_AUDIO_MP3;
    table[encodeTypeG722_1] = SG_ENCODE_AUDIO_G722_1;
    return table;
}();
static_assert(kEncodings[encodeTypeHevc] == 0);

constexpr std::array<unsigned int, frameSubtypeJpegFrame + 1> kSubTypes = []
{
    std::array<unsigned int, frameSubtypeJpegFrame + 1> table{};
    table.fill(SG_FRAME_SUB_TYPE_UNKNOW);
    table[frameSubtypeIFrame] = SG_FRAME_SUB_TYPE_I;
    table[frameSubtypePFrame] = SG_FRAME_SUB_TYPE_P;
    table[frameSubtypeBFrame] = SG_FRAME_SUB_TYPE_B;
    table[frameSubtypeJpegFrame] = SG_FRAME_SUB_TYPE_JPEG_FRAME;
    return table;
}();

constexpr std::array<unsigned int, SG_ERR_PARAM_ERR + 1> kResults = {
    errorNoError,        // SG_ERR_NOERR
    errorInvalidHandle,  // SG_ERR_HANDLE_EMPTY
    errorParam,          // SG_ERR_INIT_FAIL
    errorParam,          // SG_ERR_PARAM_ERR
};

template <size_t Size>
unsigned int LookUp(const std::array<unsigned int, Size>& table,
                    unsigned int index,
                    unsigned int otherwise)
{
    return index < Size ? table[index] : otherwise;
}

}  // namespace

unsigned int ConvertEncodeType(unsigned int encodeType) noexcept
{
    return LookUp(kEncodings, encodeType, 0);
}

unsigned int ConvertFrameType(unsigned int frameType) noexcept
{
    switch (frameType)
    {
        case 'A':
            return SG_FRAME_TYPE_AUDIO;
        case 'V':
            return SG_FRAME_TYPE_VIDEO;
        case 'X':
            return SG_FRAME_TYPE_EXT;
        default:
            return SG_FRAME_TYPE_UNKNOW;
    }
}

unsigned int ConvertFrameSubType(unsigned int frameSubType) noexcept
{
    return LookUp(kSubTypes, frameSubType, SG_FRAME_SUB_TYPE_UNKNOW);
}

unsigned int ConvertErrorMsg(unsigned int error) noexcept
{
    return LookUp(kResults, error, errorNoError);
}

}  // namespace Orbel::Wrapton
