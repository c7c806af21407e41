#include "mkvpacket/Objects/Metaseek.h"

#include "mkvpacket/Objects/ElementIds.h"

namespace Orbel::Wrapton
{
namespace
{

constexpr uint32_t kSeekLen = 2 + 1 + (2 + 1 + 4) + (2 + 1 + 4);
constexpr uint32_t kEntriesLen = 3 * kSeekLen;
static_assert(kEntriesLen == 51);
constexpr uint32_t kVoidHeaderLen = 1 + 8;
constexpr uint32_t kVoidLen =
    CMetaseekBox::kLength - CMetaseekBox::kHeaderLen - kEntriesLen - kVoidHeaderLen;
static_assert(kVoidLen == 435);

void PutSeek(CMsbCursor& w, EbmlId target, uint32_t position)
{
    PutId(w, kSeek);
    PutSize(w, kSeekLen - 3);
    PutUint32(w, kSeekId, target.Value());
    PutUint32(w, kSeekPosition, position);
}

}  // namespace

uint32_t CMetaseekBox::Write(CMsbCursor& w)
{
    PutId(w, kSeekHead);
    PutSize(w, kEntriesLen);
    WriteData(w);
    PutId(w, kVoid);
    w.U64(CEbml::SetID(kVoidLen));
    w.Fill(kVoidLen, 0);
    return kLength;
}

uint32_t CMetaseekBox::WriteData(CMsbCursor& w)
{
    PutSeek(w, kInfo, m_positions.info);
    PutSeek(w, kTracks, m_positions.tracks);
    PutSeek(w, kCues, m_positions.cues);
    return kEntriesLen;
}

uint32_t CMetaseekBox::Size()
{
    return kLength;
}

}  // namespace Orbel::Wrapton
