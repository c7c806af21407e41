#ifndef WRAPTON_FLVPACKET_FLVTAGS_H
#define WRAPTON_FLVPACKET_FLVTAGS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "tool/ByteCursor.h"

namespace Orbel::Wrapton
{

/// SoundFormat of an audio tag.
enum FLV_AFORMAT : uint8_t
{
    FLV_AFORMAT_PCM = 0,
    FLV_AFORMAT_ADPCM = 1,
    FLV_AFORMAT_MP3 = 2,
    FLV_AFORMAT_PCMLE = 3,
    FLV_AFORMAT_G711A = 7,
    FLV_AFORMAT_G711U = 8,
    FLV_AFORMAT_AAC = 10,
    FLV_AFORMAT_SPEEX = 11,
    FLV_AFORMAT_MP3_8K = 14
};

/// CodecID of H.264 in video tags and in the metadata.
inline constexpr uint32_t kFlvCodecAvc = 7;

/// Bits of _FLV_HEADER::Flag.
inline constexpr uint32_t kFlvHasAudio = 4;
inline constexpr uint32_t kFlvHasVideo = 1;

/// Bits of the first byte of an audio tag, below the format's four.
inline constexpr uint32_t kFlvSound16Bit = 0x02;
inline constexpr uint32_t kFlvSoundStereo = 0x01;

/// The file header and the PreviousTagSize ahead of the first tag.
struct _FLV_HEADER
{
    std::array<unsigned char, 3> Sign = {'F', 'L', 'V'};
    uint8_t Version = 1;
    uint8_t Flag = 0;
    uint32_t DataOffset = 9;
    uint32_t FirstTagSize = 0;
};

/// The header of a tag.
struct _FLV_TAG
{
    uint32_t TagType = 0;      // kFlvTagAudio, ...
    uint32_t DataSize = 0;     // 24 bits
    uint32_t Timestamp = 0;    // milliseconds, 24 bits
    uint32_t TimestampEx = 0;  // the bits above; always 0
    uint32_t StreamID = 0;     // always 0
};

inline constexpr uint32_t kFlvTagAudio = 8;
inline constexpr uint32_t kFlvTagVideo = 9;
inline constexpr uint32_t kFlvTagScript = 18;

/// What onMetaData tells. 0 is also "not known".
struct FlvMetaData
{
    double m_dDuration = 0;  // seconds
    double m_dWidth = 0;
    double m_dHeight = 0;
    double m_dFrameRate = 0;
    double m_dVCodecId = 0;
    double m_dSampleRate = 0;
    double m_dSampleSize = 0;  // bits
    uint8_t m_bChannel = 0;    // 1: stereo
    double m_dACodecId = 0;
    double m_dFileSize = 0;
};

/// AVCDecoderConfigurationRecord, ISO/IEC 14496-15 5.3.3.1, with at most one set of each kind.
struct _AVCDecoderConfig
{
    uint8_t cfgVersion = 0;
    uint8_t avcProfile = 0;
    uint8_t profileCompatibility = 0;
    uint8_t avcLevel = 0;
    uint8_t lengthSizeMinusOne = 0xFF;  // 6 reserved ones, 4-byte lengths
    uint8_t numOfSPS = 0;
    int16_t spsLength = 0;
    std::array<unsigned char, 256> pSPSdata = {};  // spsLength of them count
    uint8_t numOfPPS = 0;
    int16_t ppsLength = 0;
    std::array<unsigned char, 256> pPPSdata = {};

    [[nodiscard]] std::span<const unsigned char> Sps() const
    {
        return std::span(pSPSdata).first(static_cast<size_t>(spsLength));
    }
    [[nodiscard]] std::span<const unsigned char> Pps() const
    {
        return std::span(pPPSdata).first(static_cast<size_t>(ppsLength));
    }
};

/// Length of what goes ahead of the NAL units in a video tag, and of what goes behind them.
inline constexpr size_t kFlvVideoLead = 16;
inline constexpr size_t kFlvTagTrail = 4;

void WriteFileHeader(CMsbCursor& w, const _FLV_HEADER& header);
void WriteFLVTag(CMsbCursor& w, const _FLV_TAG& tag);
/// The script tag "onMetaData".
void WriteDataPacket(CMsbCursor& w, const FlvMetaData& meta);
/// The AVC sequence header.
void WriteAvcStart(CMsbCursor& w, const _AVCDecoderConfig& config);
/// The AVC end of sequence. @p timestamp in milliseconds
void WriteAvcEnd(CMsbCursor& w, uint32_t timestamp);
/// An audio tag. @p flags is the sound flags byte
void WriteAudioTag(CMsbCursor& w,
                   uint32_t timestamp,
                   uint32_t flags,
                   std::span<const unsigned char> samples);
/// Lays a video tag out around NAL units that stand in @p place already, kFlvVideoLead bytes from
/// its start. @p place ends with the tag
void WriteVideoTag(std::span<unsigned char> place, uint32_t timestamp, bool key);

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_FLVPACKET_FLVTAGS_H
