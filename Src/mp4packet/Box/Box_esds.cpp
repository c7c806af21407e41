#include "mp4packet/Box/Box_esds.h"

#include <algorithm>

#include "Wrapton.h"
#include "mp4packet/Box/HeaderFields.h"
#include "mp4packet/Mpeg4Config.h"

namespace Orbel::Wrapton
{
namespace
{

// Class tags of the descriptors, ISO/IEC 14496-1 table 1.
constexpr uint32_t kEsDescrTag = 0x03;
constexpr uint32_t kDecoderConfigDescrTag = 0x04;
constexpr uint32_t kDecSpecificInfoTag = 0x05;
constexpr uint32_t kSlConfigDescrTag = 0x06;

constexpr uint32_t kTagLen = 4;  // the tag and three empty size bytes, ahead of the length
constexpr uint32_t kDecoderConfigFixedLen = 1 + 1 + 11;
constexpr uint32_t kSlConfigLen = 1;

/// ISO/IEC 14496-3 table 1.16; the last three indexes are reserved.
constexpr std::array<uint32_t, 16> kSamplingFrequencies = {
    96000,
    88200,
    64000,
    48000,
    44100,
    32000,
    24000,
    22050,
    16000,
    12000,
    11025,
    8000,
    7350,
    0,
    0,
    0,
};

/// A tag, three bytes that say "the length goes on", and the length.
void PutDescriptor(CMsbCursor& w, uint32_t tag, uint32_t length)
{
    w.U8(tag);
    w.Fill(3, 0x80);
    w.CompactInt(static_cast<int32_t>(length));
}

uint32_t DescriptorLen(uint32_t length)
{
    return kTagLen + CompactIntSize(static_cast<int32_t>(length));
}

uint32_t DecoderConfigLen(size_t specific_info)
{
    // Kept: a length of its own counts 1 byte here, whatever its size.
    return specific_info == 0
               ? kDecoderConfigFixedLen
               : kDecoderConfigFixedLen + kTagLen + 1 + static_cast<uint32_t>(specific_info);
}

uint32_t EsLen(size_t specific_info)
{
    constexpr uint32_t kFixedLen = 2 + 1 + kTagLen + 1 + kTagLen + 1;  // lengths count 1 byte here
    static_assert(kFixedLen == 13);
    return kFixedLen + DecoderConfigLen(specific_info) + kSlConfigLen;
}

}  // namespace

CBox_esds::CBox_esds(uint32_t nMode) : CBox(ESDS, nMode)
{
    CBox_esds::Update();
}

void CBox_esds::Init(uint32_t nType, void* pInfo)
{
    if (pInfo == nullptr) return;

    if (nType == MP4_VIDEO_TRAK)
    {
        m_Data.encode_type =
            static_cast<uint8_t>(static_cast<const Mp4_VideoInfo*>(pInfo)->encode_type);
        m_Data.object_type = 0x20;  // Visual ISO/IEC 14496-2
        m_Data.stream_type = 0x11;  // visual stream
        m_Data.track_id = MP4_VIDEO_TRAK;
    }
    else if (nType == MP4_AUDIO_TRAK)
    {
        const auto* audio = static_cast<const Mp4_AudioInfo*>(pInfo);
        InitAudio(audio->encode_type, audio->sample_rate, audio->channels);
    }
    Update();
}

void CBox_esds::InitAudio(uint32_t encode_type, uint32_t sample_rate, uint32_t channels)
{
    m_Data.encode_type = static_cast<uint8_t>(encode_type);
    m_Data.stream_type = 0x15;  // audio stream
    m_Data.track_id = MP4_AUDIO_TRAK;
    if (encode_type != SG_ENCODE_AUDIO_AAC)
    {
        m_Data.object_type = 0x69;  // Audio ISO/IEC 13818-3
        return;
    }
    m_Data.object_type = 0x40;  // Audio ISO/IEC 14496-3

    const auto found =
        std::find(kSamplingFrequencies.begin(), kSamplingFrequencies.end(), sample_rate);
    if (found == kSamplingFrequencies.end()) return;

    // AudioSpecificConfig, ISO/IEC 14496-3 1.6.2.1
    constexpr uint32_t kAacLc = 2;
    const auto index = static_cast<uint32_t>(found - kSamplingFrequencies.begin());
    CMsbCursor config(m_Data.decoderConfig);
    config.Bits<16>(Field<5>(kAacLc),    // audioObjectType
                    Field<4>(index),     // samplingFrequencyIndex
                    Field<4>(channels),  // channelConfiguration
                    Field<3>(0));        // GASpecificConfig
    m_Data.decoderConfigLen = static_cast<int32_t>(config.Produced());
}

void CBox_esds::InputData(uint32_t nType, void* pInfo)
{
    auto* sample = static_cast<Mp4_Sample*>(pInfo);
    if (nType != MP4_VIDEO_TRAK || sample->frametype != SG_FRAME_SUB_TYPE_I) return;
    if (m_Data.encode_type != SG_ENCODE_VIDEO_MPEG4) return;

    const auto config = FindMpeg4Config({sample->pointer, sample->size});
    if (config.empty() || config.size() > m_Data.decoderConfig.size()) return;

    std::copy(config.begin(), config.end(), m_Data.decoderConfig.begin());
    m_Data.decoderConfigLen = static_cast<int32_t>(config.size());
    sample->pointer += config.size();
    sample->size -= static_cast<uint32_t>(config.size());
}

void CBox_esds::Update()
{
    const auto specific_info = DecoderConfig().size();
    m_nDataLen = 1 + 3 +                                                                    //
                 DescriptorLen(EsLen(specific_info)) + 2 + 1 +                              //
                 DescriptorLen(DecoderConfigLen(specific_info)) + kDecoderConfigFixedLen +  //
                 DescriptorLen(kSlConfigLen) + kSlConfigLen;
    if (specific_info != 0)
    {
        const auto length = static_cast<uint32_t>(specific_info);
        m_nDataLen += DescriptorLen(length) + length;
    }
    CBox::Update();
}

void CBox_esds::PutData(CMsbCursor& w) const
{
    const CPayloadCheck check(w, m_nDataLen, "CBox_esds::WriteData error!\n");
    const auto specific_info = DecoderConfig();

    PutFullBox(w, m_Data.version, m_Data.flags);
    PutDescriptor(w, kEsDescrTag, EsLen(specific_info.size()));
    w.U16(m_Data.track_id);
    w.U8(0x10);  // no dependence, no URL, no OCR stream; streamPriority 16
    PutDescriptor(w, kDecoderConfigDescrTag, DecoderConfigLen(specific_info.size()));
    w.U8(m_Data.object_type);
    w.U8(m_Data.stream_type);
    w.Fill(3, 0);  // bufferSizeDB
    w.Fill(4, 0);  // maxBitrate
    w.Fill(4, 0);  // avgBitrate
    if (!specific_info.empty())
    {
        PutDescriptor(w, kDecSpecificInfoTag, static_cast<uint32_t>(specific_info.size()));
        w.Bytes(specific_info);
    }
    PutDescriptor(w, kSlConfigDescrTag, kSlConfigLen);
    w.U8(2);  // predefined: reserved for use in MP4 files
}

}  // namespace Orbel::Wrapton
