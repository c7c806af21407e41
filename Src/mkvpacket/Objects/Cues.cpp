#include "mkvpacket/Objects/Cues.h"

#include "mkvpacket/Objects/ElementIds.h"

namespace Orbel::Wrapton
{
namespace
{

constexpr uint32_t kCueTrackNumber = 1;
constexpr uint32_t kPositionsLen = (1 + 1 + 1) + (1 + 1 + 4) + (1 + 1 + 2);
constexpr uint32_t kTrailingZero = 1;
constexpr uint32_t kPointDataLen = (1 + 1 + 4) + (1 + 1 + kPositionsLen) + kTrailingZero;

}  // namespace

void CCues::Append(const MKV_CuePoint& point) noexcept
{
    if (m_nCount == kMaxCount) return;

    static_assert(kPointLen == 2 + kPointDataLen);
    const std::span<unsigned char> table(m_bytes);
    CMsbCursor w(table.subspan(kHeaderLen + size_t{kPointLen} * m_nCount, kPointLen));
    PutId(w, kCuePoint);
    PutSize(w, kPointDataLen);
    PutUint32(w, kCueTime, point.time);
    PutId(w, kCueTrackPositions);
    PutSize(w, kPositionsLen);
    PutUint8(w, kCueTrack, kCueTrackNumber);
    PutUint32(w, kCueClusterPosition, point.clusterPosition);
    PutUint16(w, kCueRelativePosition, point.relativePosition);
    w.Fill(kTrailingZero, 0);  // kept: the size of the point counts it
    ++m_nCount;
}

std::span<const unsigned char> CCues::Finish() noexcept
{
    const size_t length = size_t{kPointLen} * m_nCount;
    const std::span<unsigned char> table(m_bytes);
    CMsbCursor w(table.first(kHeaderLen));
    PutId(w, kCues);
    w.U64(CEbml::SetID(length));
    return table.first(kHeaderLen + length);
}

}  // namespace Orbel::Wrapton
