#include "pspacket/gays/GaysPsPacket.h"

#include <algorithm>
#include <cassert>

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

    const auto room = output.Claim(Measure(*pFrame, kGaysIFrame));
    if (room.empty()) return kRefused;

    m_nRate = static_cast<int32_t>(pFrame->frame_rate);
    calc_scr();

    CMsbCursor w(room);
    PutFrame(w, *pFrame, kGaysIFrame);
    assert(w.Produced() == room.size());
    nLength = static_cast<int>(room.size());
    return nLength;
}

int CGaysPsPacket::Packet_P_frame(const SGFrameInfo* pFrame, CPsOutput& output, int& nLength)
{
    nLength = 0;
    if (!IsVideoPackable(pFrame)) return kRefused;

    const auto room = output.Claim(Measure(*pFrame, kGaysPFrame));
    if (room.empty()) return kRefused;

    if (m_nRate != 0) calc_scr();

    CMsbCursor w(room);
    PutFrame(w, *pFrame, kGaysPFrame);
    assert(w.Produced() == room.size());
    nLength = static_cast<int>(room.size());
    return nLength;
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
    const auto room = output.Claim(size_t{kPtsHeaderLen} + pFrame->frame_size);
    if (room.empty()) return kRefused;

    CMsbCursor w(room);
    PutPtsHeader(w, kAudioStreamId, pFrame->frame_size, static_cast<uint64_t>(m_nSrc));
    w.Bytes(BytesOf(pFrame));
    assert(w.Produced() == room.size());
    nLength = static_cast<int>(room.size());
    return nLength;
}

void CGaysPsPacket::calc_scr()
{
    const int64_t time = m_nTimeStamp + 1000 / m_nRate;
    if (m_bStarted)
    {
        const int64_t ticks = (time - m_nTimeStamp) * kTicksPerMs;
        m_nSrc = (m_nSrc + ticks + (time < m_nTimeStamp ? kStepBackTicks : 0)) & kScrMask;
    }
    m_bStarted = true;
    m_nTimeStamp = time;
}

void CGaysPsPacket::PutFrame(CMsbCursor& w, const SGFrameInfo& frame, uint8_t frame_type) const
{
    for (uint32_t at = 0; at < frame.frame_size; at += kPesChunkLen)
    {
        const uint32_t length = std::min(frame.frame_size - at, kPesChunkLen);
        ps_pack_video(w,
                      {.scr = m_nSrc,
                       .width = static_cast<int32_t>(frame.width),
                       .height = static_cast<int32_t>(frame.heigth),
                       .frame_rate = static_cast<int32_t>(frame.frame_rate),
                       .payload_len = static_cast<uint16_t>(length),
                       .first_packet_of_frame = at == 0,
                       .encode_type = static_cast<uint8_t>(frame.frame_encode),
                       .frame_type = frame_type},
                      frame.frame_pointer + at);
    }
}

size_t CGaysPsPacket::Measure(const SGFrameInfo& frame, uint8_t frame_type) const
{
    CMsbCursor measure;
    PutFrame(measure, frame, frame_type);
    return measure.Produced();
}

}  // namespace Orbel::Wrapton
