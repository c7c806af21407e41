#include "pspacket/SplitPsPacket.h"

#include "pspacket/PsHeaders.h"

namespace Orbel::Wrapton
{
int CSplitPsPacket::Packet_I_frame(const SGFrameInfo* pFrame, CPsOutput& output, int& nLength)
{
    nLength = 0;
    if (!IsVideoPackable(pFrame)) return kRefused;

    const Pictures before = m_pictures;
    m_pictures.m_nFrameRate = pFrame->frame_rate;
    m_pictures.m_nWidth = static_cast<uint16_t>(pFrame->width);
    m_pictures.m_nHeight = static_cast<uint16_t>(pFrame->heigth);
    m_pictures.m_nVideoEncode = static_cast<uint16_t>(pFrame->frame_encode);
    nLength = PutPicture(*pFrame, output, true);
    if (nLength == 0) m_pictures = before;
    return nLength != 0 ? nLength : kRefused;
}

int CSplitPsPacket::Packet_P_frame(const SGFrameInfo* pFrame, CPsOutput& output, int& nLength)
{
    nLength = 0;
    if (!IsVideoPackable(pFrame)) return kRefused;

    const Pictures before = m_pictures;
    nLength = PutPicture(*pFrame, output, false);
    if (nLength == 0) m_pictures = before;
    return nLength != 0 ? nLength : kRefused;
}

int CSplitPsPacket::PutPicture(const SGFrameInfo& frame, CPsOutput& output, bool with_headers)
{
    CVideoPackets& packets = m_pictures.m_Video;
    ++m_pictures.m_VideoCount;
    packets.Advance(FrameTicks(m_pictures.m_nFrameRate));
    const bool split = m_pictures.m_nVideoEncode != SG_ENCODE_VIDEO_MPEG4;
    const int length = output.Write(
        [&](CMsbCursor& w)
        {
            PutPackHeader(w, packets.Scr(), kMuxRate);
            if (with_headers) PutMap(w, frame);
            if (with_headers) PutSystemHeader(w);
            packets.Put(w, BytesOf(&frame), split);
        });
    packets.Settle();
    return length;
}

int CSplitPsPacket::PutAudio(CPsOutput& output,
                             const SGFrameInfo& frame,
                             bool with_map,
                             uint32_t pts) const
{
    const int length = output.Write(
        [&](CMsbCursor& w)
        {
            PutPackHeader(w, m_pictures.m_Video.Scr(), kMuxRate);
            if (with_map) PutMap(w, frame);
            PutAudioPes(w, BytesOf(&frame), pts);
        });
    return length;
}

}  // namespace Orbel::Wrapton
