#include "pspacket/qvps/QvPsPacket.h"

#include "pspacket/qvps/QvMap.h"
#include "tool/Clock.h"

namespace Orbel::Wrapton
{
namespace
{

constexpr uint32_t kFirstDts = 56400;
constexpr uint32_t kFirstPts = 60000;
constexpr uint32_t kAudioFramesPerMap = 25;

bool IsAudioPackable(const SGFrameInfo& frame)
{
    constexpr uint32_t kLayer2SampleRate = 16000;

    if (frame.frame_encode == SG_ENCODE_AUDIO_AAC) return true;
    return frame.frame_encode == SG_ENCODE_AUDIO_MP2 && frame.sample_rate == kLayer2SampleRate;
}

}  // namespace

CQvPsPacket::CQvPsPacket() : CSplitPsPacket(kFirstDts, kFirstPts, kQvMapLen) {}

int CQvPsPacket::Packet_Audio_frame(const SGFrameInfo* pFrame,
                                    CPsOutput& output,
                                    int& nLength,
                                    bool /*bWithMap*/)
{
    nLength = 0;
    if (!HasData(pFrame)) return kRefused;
    if (!IsAudioPackable(*pFrame)) return kRefused;

    const bool with_map = m_AudioCount % kAudioFramesPerMap == 0;
    const auto room = ClaimAudio(output, *pFrame, with_map ? m_nMapLen : 0);
    if (room.empty()) return kRefused;

    m_nAudioEncode = static_cast<uint16_t>(pFrame->frame_encode);
    m_nSampleRate = pFrame->sample_rate;
    m_nBitPerSample = static_cast<uint16_t>(pFrame->bit_per_sample);
    m_nChannels = static_cast<uint16_t>(pFrame->channels);
    ++m_AudioCount;
    m_nAudioPts += GetDuration(pFrame);
    nLength = PutAudio(room, *pFrame, with_map, m_nAudioPts);
    return nLength;
}

void CQvPsPacket::PutMap(CMsbCursor& w, const SGFrameInfo& frame) const
{
    const uint32_t date = Date(frame);
    PutQvMap(w,
             {.video_encode = m_nVideoEncode,
              .frame_encode = frame.frame_encode,
              .width = m_nWidth,
              .height = m_nHeight,
              .frame_rate = m_nFrameRate,
              .date = date,
              .audio_date = frame.frame_data != 0 ? date : 0,
              .audio_encode = m_nAudioEncode,
              .sample_rate = m_nSampleRate,
              .bit_per_sample = m_nBitPerSample,
              .channels = m_nChannels});
}

uint32_t CQvPsPacket::Date(const SGFrameInfo& frame) const
{
    if (frame.frame_data != 0) return get_current_omf_time(frame.frame_data);

    // Kept: the stream's times count from 1970, and its first second is taken for the present.
    uint32_t current = frame.frame_time / 1000;
    if (frame.frame_time == 0 && m_nFrameRate != 0) current = m_VideoCount / m_nFrameRate;
    return get_current_omf_time(current);
}

}  // namespace Orbel::Wrapton
