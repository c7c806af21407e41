#include "flvpacket/FlvPacket.h"

#include <algorithm>
#include <array>

#include "tool/AvcConvert.h"
#include "tool/CacheLine.h"

namespace Orbel::Wrapton
{
namespace
{

constexpr uint32_t kWorkLen = 0x200000;

/// By how much a frame may grow when its start codes become lengths: 3-byte codes gain a byte each.
constexpr size_t kConvertedGrowth = 100;

using ByteSpan = std::span<const unsigned char>;

ByteSpan BytesOf(const SGFrameInfo& frame)
{
    return {frame.frame_pointer, frame.frame_size};
}

bool IsVideoStorable(uint32_t encode)
{
    return encode == SG_ENCODE_VIDEO_HI_H264 || encode == SG_ENCODE_VIDEO_QV_H264;
}

bool IsAudioStorable(uint32_t encode)
{
    return encode == SG_ENCODE_AUDIO_PCM16 || encode == SG_ENCODE_AUDIO_PCM;
}

/// @p thousandfold / @p rate cut to 32 bits; 0 when there is no rate.
uint32_t Milliseconds(uint64_t thousandfold, double rate)
{
    if (rate == 0) return 0;
    return static_cast<uint32_t>(static_cast<uint64_t>(static_cast<double>(thousandfold) / rate));
}

uint32_t PictureTime(uint32_t number, double frame_rate)
{
    return Milliseconds(uint64_t{number} * 1000, frame_rate);
}

/// The parameter sets of @p frame; those longer than 256 bytes are left out.
_AVCDecoderConfig getSPS_PSS(ByteSpan frame)
{
    const CAvcConvert convert;
    const auto size = static_cast<uint32_t>(frame.size());
    _AVCDecoderConfig config;
    config.spsLength = static_cast<int16_t>(
        convert.getSPS(frame.data(), size, config.pSPSdata.data(), config.pSPSdata.size()));
    config.ppsLength = static_cast<int16_t>(
        convert.getPPS(frame.data(), size, config.pPPSdata.data(), config.pPPSdata.size()));
    if (config.spsLength > 0)
    {
        config.numOfSPS = 1;
        config.cfgVersion = 1;
    }
    if (config.spsLength >= 4)
    {
        config.avcProfile = config.pSPSdata[1];
        config.profileCompatibility = config.pSPSdata[2];
        config.avcLevel = config.pSPSdata[3];
    }
    if (config.ppsLength > 0) config.numOfPPS = 1;
    return config;
}

FlvMetaData WithVideo(FlvMetaData meta, const SGFrameInfo& frame)
{
    meta.m_dVCodecId = kFlvCodecAvc;
    meta.m_dFrameRate = frame.frame_rate;
    meta.m_dWidth = frame.width;
    meta.m_dHeight = frame.heigth;
    return meta;
}

FlvMetaData WithAudio(FlvMetaData meta, const SGFrameInfo& frame)
{
    meta.m_dACodecId = FLV_AFORMAT_PCMLE;
    meta.m_dSampleRate = frame.sample_rate;
    meta.m_dSampleSize = frame.bit_per_sample;
    if (frame.channels == 1 || frame.channels == 2) meta.m_bChannel = frame.channels == 2 ? 1 : 0;
    return meta;
}

/// SoundRate. Kept: the format means 5512.5, 11025, 22050 and 44100 Hz, the comparison is with
/// these round numbers.
uint32_t SoundRate(uint32_t sample_rate)
{
    constexpr std::array<uint32_t, 4> kRates = {5500, 11000, 22000, 44000};
    const auto found = std::find(kRates.begin(), kRates.end(), sample_rate);
    return found != kRates.end() ? static_cast<uint32_t>(found - kRates.begin()) : 0;
}

uint32_t SoundFlags(const SGFrameInfo& frame)
{
    return uint32_t{FLV_AFORMAT_PCMLE} << 4 |                    //
           SoundRate(frame.sample_rate) << 2 |                   //
           (frame.bit_per_sample == 16 ? kFlvSound16Bit : 0u) |  //
           (frame.channels == 2 ? kFlvSoundStereo : 0u);
}

/// Where a tag without anything ahead of it is composed: its first unit begins a cache line.
std::span<unsigned char> TagRoom(std::span<unsigned char> work, const SGFrameInfo& frame)
{
    const size_t most = kFlvVideoLead + frame.frame_size + kConvertedGrowth + kFlvTagTrail;
    return AlignPayload(work, kFlvVideoLead + CAvcConvert::kLengthLen, most);
}

/// Composes a video tag at the start of @p room. @return its length; 0 when it does not fit
size_t PackageVideoFrame(std::span<unsigned char> room,
                         const SGFrameInfo& frame,
                         uint32_t timestamp)
{
    if (room.size() < kFlvVideoLead + kFlvTagTrail) return 0;

    const auto units = room.subspan(kFlvVideoLead, room.size() - kFlvVideoLead - kFlvTagTrail);
    const size_t capacity = size_t{frame.frame_size} + kConvertedGrowth;
    const auto converted =
        CAvcConvert::ConvertUnits(BytesOf(frame), units.first(std::min(units.size(), capacity)));
    // Kept: units beyond the capacity are left out. Units that only this room is too small for are
    // not: the tag does not fit.
    if (converted.left_out != 0 && converted.written + converted.left_out <= capacity) return 0;

    const size_t length = kFlvVideoLead + converted.written + kFlvTagTrail;
    WriteVideoTag(room.first(length), timestamp, frame.frame_sub_type == SG_FRAME_SUB_TYPE_I);
    return length;
}

}  // namespace

CFlvPacket::CFlvPacket(uint32_t nType, const SGCreateParam* pCreateParam)
    : CPackage(nType, pCreateParam), m_pOutBuffer(Allocate(kWorkLen))
{
}

int CFlvPacket::Init()
{
    return SG_ERR_NOERR;
}

int CFlvPacket::Deinit()
{
    return SG_ERR_NOERR;
}

int CFlvPacket::CreateHeader(SGHeaderInfo* /*pHeader*/, unsigned int /*nReserved*/)
{
    return SG_ERR_NOERR;
}

int CFlvPacket::InputData(SGFrameInfo* pFrame, unsigned int /*nReserved*/)
{
    if (!IsFrame(pFrame)) return SG_ERR_PARAM_ERR;
    const bool video = pFrame->frame_type == SG_FRAME_TYPE_VIDEO;
    const bool audio = pFrame->frame_type == SG_FRAME_TYPE_AUDIO;
    if (!video && !audio) return SG_ERR_PARAM_ERR;
    if (m_pOutBuffer == nullptr) return SG_ERR_MEMORY_OUT;

    // Kept: what becomes of a frame of these two kinds is not told.
    if (video) InputVideoData(pFrame);
    if (audio) InputAudioData(pFrame);
    return SG_ERR_NOERR;
}

void CFlvPacket::InputVideoData(const SGFrameInfo* pFrame)
{
    if (!IsVideoStorable(pFrame->frame_encode)) return;
    if (!m_bVideoFlag && pFrame->frame_sub_type != SG_FRAME_SUB_TYPE_I) return;

    // Members move only once the tag is known to fit.
    const FlvMetaData meta = m_bVideoFlag ? m_MetaData : WithVideo(m_MetaData, *pFrame);
    const auto room = m_bVideoFlag ? TagRoom(WorkRoom(), *pFrame) : WorkRoom();
    CMsbCursor start(room);
    if (!m_bVideoFlag)
    {
        WriteFileHeader(start, InitFileHeader(true));
        WriteDataPacket(start, meta);
        WriteAvcStart(start, getSPS_PSS(BytesOf(*pFrame)));
    }
    const uint32_t timestamp = PictureTime(m_nVFrameNum, meta.m_dFrameRate);
    const size_t tag = PackageVideoFrame(room.subspan(start.Produced()), *pFrame, timestamp);
    if (tag == 0) return;

    m_MetaData = meta;
    m_bVideoFlag = true;
    m_nVTimeStamp = timestamp;
    m_nAFrameLen = 0;
    ++m_nVFrameNum;
    const double rate = m_MetaData.m_dFrameRate;
    m_MetaData.m_dDuration = rate != 0 ? m_nVFrameNum / rate : 0;
    m_MetaData.m_dFileSize += static_cast<double>(start.Produced() + tag);
    OutputData(room.first(start.Produced() + tag));
}

void CFlvPacket::InputAudioData(const SGFrameInfo* pFrame)
{
    if (!IsAudioStorable(pFrame->frame_encode)) return;
    if (!m_bVideoFlag) return;

    const double byte_rate = 2.0 * pFrame->sample_rate;
    const uint32_t timestamp =
        byte_rate != 0 ? Milliseconds(uint64_t{m_nAFrameLen} * 1000, byte_rate) + m_nVTimeStamp : 0;
    CMsbCursor w(WorkRoom());
    WriteAudioTag(w, timestamp, SoundFlags(*pFrame), BytesOf(*pFrame));
    if (w.Overrun()) return;

    m_MetaData = WithAudio(m_MetaData, *pFrame);
    m_bAudioFlag = true;
    m_nAFrameLen += pFrame->frame_size;
    m_MetaData.m_dFileSize += static_cast<double>(w.Produced());
    OutputData(WorkRoom().first(w.Produced()));
}

int CFlvPacket::CreateTailer(SGTailerInfo* /*pTailer*/, unsigned int /*nReserved*/)
{
    if (m_nType != SG_STREAM_TYPE_FLV) return SG_ERR_NOERR;
    if (m_pOutBuffer == nullptr) return SG_ERR_MEMORY_OUT;

    CMsbCursor end(WorkRoom());
    WriteAvcEnd(end, PictureTime(m_nVFrameNum, m_MetaData.m_dFrameRate));
    OutputData(WorkRoom().first(end.Produced()));
    m_MetaData.m_dFileSize += static_cast<double>(end.Produced());

    // Kept: the closing header is appended like everything else, its place is the consumer's
    // choice. The file size does not count it.
    CMsbCursor closing(WorkRoom());
    WriteFileHeader(closing, InitFileHeader(m_bVideoFlag));
    WriteDataPacket(closing, m_MetaData);
    OutputData(WorkRoom().first(closing.Produced()));
    return SG_ERR_NOERR;
}

/// Emits a block; positions are not told.
void CFlvPacket::OutputData(std::span<const unsigned char> block)
{
    Emit(block.data(), static_cast<uint32_t>(block.size()), Origin::kCurrent, 0);
}

_FLV_HEADER CFlvPacket::InitFileHeader(bool has_video) const
{
    _FLV_HEADER header;
    const bool announce_both = m_nType == SG_STREAM_TYPE_STREAM_FLV;
    header.Flag = static_cast<uint8_t>((announce_both || m_bAudioFlag ? kFlvHasAudio : 0u) |
                                       (announce_both || has_video ? kFlvHasVideo : 0u));
    return header;
}

std::span<unsigned char> CFlvPacket::WorkRoom() const
{
    return {m_pOutBuffer.get(), kWorkLen};
}

}  // namespace Orbel::Wrapton
