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

CQvPsPacket::CQvPsPacket() : CSplitPsPacket(kFirstDts, kFirstPts) {}

int CQvPsPacket::Packet_Audio_frame(const SGFrameInfo* pFrame,
                                    CPsOutput& output,
                                    int& nLength,
                                    bool /*bWithMap*/)
{
    nLength = 0;
    if (!HasData(pFrame)) return kRefused;
    if (!IsAudioPackable(*pFrame)) return kRefused;

    const bool with_map = m_sound.m_AudioCount % kAudioFramesPerMap == 0;
    const Sound before = m_sound;
    m_sound.m_nAudioEncode = static_cast<uint16_t>(pFrame->frame_encode);
    m_sound.m_nSampleRate = pFrame->sample_rate;
    m_sound.m_nBitPerSample = static_cast<uint16_t>(pFrame->bit_per_sample);
    m_sound.m_nChannels = static_cast<uint16_t>(pFrame->channels);
    ++m_sound.m_AudioCount;
    m_sound.m_nAudioPts += GetDuration(pFrame);
    nLength = PutAudio(output, *pFrame, with_map, m_sound.m_nAudioPts);
    if (nLength == 0) m_sound = before;
    return nLength != 0 ? nLength : kRefused;
}

void CQvPsPacket::PutMap(CMsbCursor& w, const SGFrameInfo& frame) const
{
    const uint32_t date = Date(frame);
    PutQvMap(w,
             {.video_encode = m_pictures.m_nVideoEncode,
              .frame_encode = frame.frame_encode,
              .width = m_pictures.m_nWidth,
              .height = m_pictures.m_nHeight,
              .frame_rate = m_pictures.m_nFrameRate,
              .date = date,
              .audio_date = frame.frame_data != 0 ? date : 0,
              .audio_encode = m_sound.m_nAudioEncode,
              .sample_rate = m_sound.m_nSampleRate,
              .bit_per_sample = m_sound.m_nBitPerSample,
              .channels = m_sound.m_nChannels});
}

uint32_t CQvPsPacket::Date(const SGFrameInfo& frame) const
{
    if (frame.frame_data != 0) return get_current_omf_time(frame.frame_data);

    // Kept: the stream's times count from 1970, and its first second is taken for the present.
    uint32_t current = frame.frame_time / 1000;
    const uint32_t rate = m_pictures.m_nFrameRate;
    if (frame.frame_time == 0 && rate != 0) current = m_pictures.m_VideoCount / rate;
    return get_current_omf_time(current);
}

}  // namespace Orbel::Wrapton
