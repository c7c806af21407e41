#include "mp4packet/Box/ChunkOffsets.h"

#include <cassert>

#include "Wrapton.h"
#include "mp4packet/Box/HeaderFields.h"

namespace Orbel::Wrapton
{

CChunkOffsets::CChunkOffsets(eBoxType type, uint32_t nMode, uint32_t nEntryLen)
    : CBox(type, nMode), m_nEntryLen(nEntryLen)
{
    CChunkOffsets::Update();
}

bool CChunkOffsets::Reserve() noexcept
{
    return m_pData.Reserve(m_nEntryLen) == SG_ERR_NOERR;
}

void CChunkOffsets::Append(std::span<const unsigned char> entry) noexcept
{
    assert(entry.size() == m_nEntryLen);
    if (!Reserve()) return;

    m_pData.AppendBuffer(entry.data(), m_nEntryLen);
    ++m_nEntryCount;
}

void CChunkOffsets::Update()
{
    m_nDataLen = 4 + 4 + m_nEntryLen * m_nEntryCount;
    CBox::Update();
}

void CChunkOffsets::PutData(CMsbCursor& w) const
{
    const CPayloadCheck check(w, m_nDataLen, "CBox_stco:WriteData error!\n");

    PutFullBox(w, 0, 0);
    w.U32(m_nEntryCount);
    w.Bytes(m_pData.Data());
}

}  // namespace Orbel::Wrapton
