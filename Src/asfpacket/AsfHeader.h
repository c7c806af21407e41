#ifndef WRAPTON_ASFPACKET_ASFHEADER_H
#define WRAPTON_ASFPACKET_ASFHEADER_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "tool/ByteCursor.h"

namespace Orbel::Wrapton
{

/// Length of the header object. A padding object keeps it, so that it can be rewritten in place.
inline constexpr size_t kAsfHeaderLen = 768;
/// Length of the data object ahead of its packets.
inline constexpr size_t kAsfDataHeaderLen = 50;

inline constexpr uint32_t kAsfBroadcast = 1;
inline constexpr uint32_t kAsfSeekable = 2;

struct AsfFileProperties
{
    uint64_t file_size = 0;
    uint64_t creation_date = 0;  // 100 ns since 1601
    uint64_t packet_count = 0;
    uint64_t play_duration = 0;  // 100 ns
    uint64_t send_duration = 0;  // 100 ns
    uint32_t flags = 0;
};

struct AsfVideoStream
{
    uint32_t m_nVEncodeType = 0;  // SG_ENCODE_VIDEO_TYPE
    uint32_t m_nWidth = 0;
    uint32_t m_nHeight = 0;
    uint32_t m_nFrameRate = 0;  // per second; 0: not known
    uint32_t m_nVExtLen = 0;
    std::array<unsigned char, 64> m_VExtData = {};  // the decoder's configuration

    [[nodiscard]] std::span<const unsigned char> Config() const
    {
        return std::span(m_VExtData).first(m_nVExtLen);
    }
};

struct AsfAudioStream
{
    uint16_t m_nCodecID = 0;  // format tag
    uint16_t m_nChannels = 0;
    uint32_t m_nSampleRate = 0;  // Hz
    uint32_t bytes_per_sec = 0;  // sample rate x bits / 8
    uint16_t m_nBitPerSample = 0;
};

/// Everything that the header object tells.
struct AsfHeader
{
    AsfFileProperties file;
    const AsfVideoStream& video;
    const AsfAudioStream* audio;  // null: none is declared
};

/// The header object, kAsfHeaderLen bytes.
void PutHeaderObject(CLsbCursor& w, const AsfHeader& header);

/// The head of the data object, kAsfDataHeaderLen bytes. @p size counts it and the packets
void PutDataObject(CLsbCursor& w, uint64_t size, uint64_t packet_count);

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_ASFPACKET_ASFHEADER_H
