#include "mkvpacket/Objects/Clusters.h"

#include <cassert>

#include "Wrapton.h"
#include "mkvpacket/Objects/ElementIds.h"

namespace Orbel::Wrapton
{
namespace
{

constexpr uint32_t kBlockHeaderLen = 1 + 2 + 1;  // track, time, flags
constexpr uint8_t kKeyFrame = 0x80;

bool IsPicture(int32_t frametype)
{
    return frametype == SG_FRAME_SUB_TYPE_I || frametype == SG_FRAME_SUB_TYPE_P ||
           frametype == SG_FRAME_SUB_TYPE_B;
}

}  // namespace

uint32_t CClusters::BlockOverhead(uint32_t frameSize) noexcept
{
    uint32_t sizeLength = 0;
    CEbml::GetsizeID(uint64_t{frameSize} + kBlockHeaderLen, sizeLength);
    return kSimpleBlock.Length() + sizeLength + kBlockHeaderLen;
}

void CClusters::InputData(uint32_t nType, const void* pData)
{
    if (pData == nullptr) return;

    const auto& frame = *static_cast<const MKV_FrameData*>(pData);
    if (!IsPicture(frame.frametype)) return;

    m_frame = frame;
    mTrackNum = static_cast<uint8_t>(nType | 0x80u);
    // Kept: a B frame is marked as a key frame.
    m_Flag = frame.frametype == SG_FRAME_SUB_TYPE_P ? 0 : kKeyFrame;
}

void CClusters::Update()
{
    m_nDataLen += m_nClustedatlen;
}

uint32_t CClusters::WriteID(CMsbCursor& w)
{
    PutId(w, kCluster);
    return kCluster.Length();
}

/// SimpleBlock, RFC 9559 10.2, without lacing.
void CClusters::PutHead(CMsbCursor& w) const
{
    PutId(w, kSimpleBlock);
    PutSize(w, uint64_t{m_frame.size} + kBlockHeaderLen);
    w.U8(mTrackNum);
    w.U16(static_cast<uint16_t>(m_frame.timescode));
    w.U8(m_Flag);
}

void CClusters::WriteAhead(std::span<unsigned char> head)
{
    CMsbCursor w(head);
    PutHead(w);
    assert(w.Produced() == head.size());
    m_nClustedatlen = static_cast<uint32_t>(w.Produced() + m_frame.size);
    Update();
}

uint32_t CClusters::WriteData(CMsbCursor& w)
{
    const size_t begin = w.Produced();
    PutHead(w);
    w.Bytes({m_frame.pointer, m_frame.size});
    m_nClustedatlen = static_cast<uint32_t>(w.Produced() - begin);
    Update();
    return m_nClustedatlen;
}

uint32_t CClusters::Size()
{
    m_size = m_nDataLen + kCluster.Length();
    return m_size;
}

}  // namespace Orbel::Wrapton
