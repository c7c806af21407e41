#include "pspacket/gays/GaysPsPacket.h"

#include <algorithm>

#include "pspacket/PsHeaders.h"

namespace Orbel::Wrapton
{
namespace
{

constexpr int64_t kTicksPerMs = 90;
constexpr int64_t kScrMask = (int64_t{1} << 33) - 1;

/// Added where the millisecond clock steps back, which a rate that is negative as a signed number
/// makes it do.
constexpr int64_t kStepBackTicks = 65535 * kTicksPerMs;

}  // namespace

int CGaysPsPacket::Packet_I_frame(const SGFrameInfo* pFrame, CPsOutput& output, int& nLength)
{
    nLength = 0;
    if (!IsVideoPackable(pFrame)) return kRefused;
    if (pFrame->frame_rate == 0) return kRefused;

    const Clock before = m_clock;
    m_clock.m_nRate = static_cast<int32_t>(pFrame->frame_rate);
    calc_scr();
    nLength = PutFrame(output, *pFrame, kGaysIFrame);
    if (nLength == 0) m_clock = before;
    return nLength != 0 ? nLength : kRefused;
}

int CGaysPsPacket::Packet_P_frame(const SGFrameInfo* pFrame, CPsOutput& output, int& nLength)
{
    nLength = 0;
    if (!IsVideoPackable(pFrame)) return kRefused;

    const Clock before = m_clock;
    if (m_clock.m_nRate != 0) calc_scr();
    nLength = PutFrame(output, *pFrame, kGaysPFrame);
    if (nLength == 0) m_clock = before;
    return nLength != 0 ? nLength : kRefused;
}

int CGaysPsPacket::Packet_Audio_frame(const SGFrameInfo* pFrame,
                                      CPsOutput& output,
                                      int& nLength,
                                      bool /*bWithMap*/)
{
    constexpr uint32_t kG711SampleRate = 8000;

    nLength = 0;
    if (!HasData(pFrame)) return kRefused;
    if (pFrame->frame_encode == SG_ENCODE_AUDIO_G711A && pFrame->sample_rate != kG711SampleRate)
    {
        return kRefused;
    }
    nLength = output.Write(
        [&](CMsbCursor& w)
        {
            const auto pts = static_cast<uint64_t>(m_clock.m_nSrc);
            PutPtsHeader(w, kAudioStreamId, pFrame->frame_size, pts);
            w.Bytes(BytesOf(pFrame));
        });
    return nLength != 0 ? nLength : kRefused;
}

void CGaysPsPacket::calc_scr()
{
    const int64_t time = m_clock.m_nTimeStamp + 1000 / m_clock.m_nRate;
    if (m_clock.m_bStarted)
    {
        const int64_t ticks = (time - m_clock.m_nTimeStamp) * kTicksPerMs;
        const int64_t step_back = time < m_clock.m_nTimeStamp ? kStepBackTicks : 0;
        m_clock.m_nSrc = (m_clock.m_nSrc + ticks + step_back) & kScrMask;
    }
    m_clock.m_bStarted = true;
    m_clock.m_nTimeStamp = time;
}

int CGaysPsPacket::PutFrame(CPsOutput& output, const SGFrameInfo& frame, uint8_t frame_type) const
{
    return output.Write(
        [&](CMsbCursor& w)
        {
            for (uint32_t at = 0; at < frame.frame_size; at += kPesChunkLen)
            {
                const uint32_t length = std::min(frame.frame_size - at, kPesChunkLen);
                ps_pack_video(w,
                              {.scr = m_clock.m_nSrc,
                               .width = static_cast<int32_t>(frame.width),
                               .height = static_cast<int32_t>(frame.heigth),
                               .frame_rate = static_cast<int32_t>(frame.frame_rate),
                               .payload_len = static_cast<uint16_t>(length),
                               .first_packet_of_frame = at == 0,
                               .encode_type = static_cast<uint8_t>(frame.frame_encode),
                               .frame_type = frame_type},
                              frame.frame_pointer + at);
            }
        });
}

}  // namespace Orbel::Wrapton
