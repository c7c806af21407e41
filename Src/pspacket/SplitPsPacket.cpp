#include "pspacket/SplitPsPacket.h"

#include <cassert>

#include "pspacket/PsHeaders.h"

namespace Orbel::Wrapton
{
namespace
{

bool IsSplit(uint16_t encode)
{
    return encode != SG_ENCODE_VIDEO_MPEG4;
}

}  // namespace

int CSplitPsPacket::Packet_I_frame(const SGFrameInfo* pFrame, CPsOutput& output, int& nLength)
{
    nLength = 0;
    if (!IsVideoPackable(pFrame)) return kRefused;

    const auto encode = static_cast<uint16_t>(pFrame->frame_encode);
    const size_t packets = m_Video.Plan(BytesOf(pFrame), IsSplit(encode));
    const auto room = output.Claim(kPackHeaderLen + m_nMapLen + kSystemHeaderLen + packets);
    if (room.empty()) return kRefused;

    m_nFrameRate = pFrame->frame_rate;
    m_nWidth = static_cast<uint16_t>(pFrame->width);
    m_nHeight = static_cast<uint16_t>(pFrame->heigth);
    m_nVideoEncode = encode;
    ++m_VideoCount;
    m_Video.Advance(FrameTicks(m_nFrameRate));

    CMsbCursor w(room);
    PutPackHeader(w, m_Video.Scr(), kMuxRate);
    PutMap(w, *pFrame);
    PutSystemHeader(w);
    m_Video.Put(w, BytesOf(pFrame));
    assert(w.Produced() == room.size());
    nLength = static_cast<int>(room.size());
    return nLength;
}

int CSplitPsPacket::Packet_P_frame(const SGFrameInfo* pFrame, CPsOutput& output, int& nLength)
{
    nLength = 0;
    if (!IsVideoPackable(pFrame)) return kRefused;

    const size_t packets = m_Video.Plan(BytesOf(pFrame), IsSplit(m_nVideoEncode));
    const auto room = output.Claim(kPackHeaderLen + packets);
    if (room.empty()) return kRefused;

    ++m_VideoCount;
    m_Video.Advance(FrameTicks(m_nFrameRate));

    CMsbCursor w(room);
    PutPackHeader(w, m_Video.Scr(), kMuxRate);
    m_Video.Put(w, BytesOf(pFrame));
    assert(w.Produced() == room.size());
    nLength = static_cast<int>(room.size());
    return nLength;
}

std::span<unsigned char> CSplitPsPacket::ClaimAudio(CPsOutput& output,
                                                    const SGFrameInfo& frame,
                                                    uint32_t map_len)
{
    return output.Claim(kPackHeaderLen + map_len + AudioPesLen(BytesOf(&frame)));
}

int CSplitPsPacket::PutAudio(std::span<unsigned char> room,
                             const SGFrameInfo& frame,
                             bool with_map,
                             uint32_t pts) const
{
    CMsbCursor w(room);
    PutPackHeader(w, m_Video.Scr(), kMuxRate);
    if (with_map) PutMap(w, frame);
    PutAudioPes(w, BytesOf(&frame), pts);
    assert(w.Produced() == room.size());
    return static_cast<int>(room.size());
}

}  // namespace Orbel::Wrapton
