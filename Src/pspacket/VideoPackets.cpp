#include "pspacket/VideoPackets.h"

#include <algorithm>

#include "pspacket/PsHeaders.h"
#include "tool/StartCode.h"

namespace Orbel::Wrapton
{

size_t CVideoPackets::Plan(std::span<const unsigned char> frame, bool split)
{
    constexpr size_t kLongForm = 4;

    m_nal_list.clear();
    StartCode code{0, 0};
    while (split && code.unit < frame.size())
    {
        code = FindStartCode(frame, code.unit);
        if (code.unit - code.begin != kLongForm) continue;
        m_nal_list.push_back(static_cast<uint32_t>(code.begin));
    }

    CMsbCursor measure;
    PutPackets(measure, frame);
    return measure.Produced();
}

void CVideoPackets::Advance(uint32_t ticks)
{
    m_nScrb += ticks;
    m_nDts += ticks;
    m_nVideoPts += ticks;
}

void CVideoPackets::Put(CMsbCursor& w, std::span<const unsigned char> frame)
{
    PutPackets(w, frame);
    m_bFirst = false;
}

void CVideoPackets::PutPackets(CMsbCursor& w, std::span<const unsigned char> frame) const
{
    bool with_dts = m_bFirst;
    size_t from = m_nal_list.empty() ? 0 : m_nal_list.front();
    for (size_t unit = 1; unit < m_nal_list.size(); ++unit)
    {
        PutPacket(w, frame.subspan(from, m_nal_list[unit] - from), with_dts);
        with_dts = false;
        from = m_nal_list[unit];
    }
    while (frame.size() - from > kPesChunkLen)
    {
        PutPacket(w, frame.subspan(from, kPesChunkLen), with_dts);
        with_dts = false;
        from += kPesChunkLen;
    }
    PutPacket(w, frame.subspan(from), with_dts);
}

void CVideoPackets::PutPacket(CMsbCursor& w,
                              std::span<const unsigned char> payload,
                              bool with_dts) const
{
    const uint32_t header_len = with_dts ? kPtsDtsHeaderLen : kPtsHeaderLen;
    const auto length =
        static_cast<uint32_t>(std::min<size_t>(payload.size(), kPesCapacity - header_len));
    if (with_dts)
    {
        PutPtsDtsHeader(w, length, m_nVideoPts, m_nDts);
    }
    else
    {
        PutPtsHeader(w, kVideoStreamId, length, m_nVideoPts);
    }
    w.Bytes(payload.first(length));
}

}  // namespace Orbel::Wrapton
