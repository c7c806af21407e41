#include "mp4packet/Box/Box_co64.h"

#include "Wrapton.h"
#include "mp4packet/Box/HeaderFields.h"
#include "tool/StreamTool.h"

namespace Orbel::Wrapton
{
namespace
{

constexpr uint32_t kEntryLen = 8;

}  // namespace

CBox_co64::CBox_co64(uint32_t nMode) : CBox(CO64, nMode)
{
    CBox_co64::Update();
}

bool CBox_co64::Reserve() noexcept
{
    return m_pData.Reserve(kEntryLen) == SG_ERR_NOERR;
}

void CBox_co64::InputOffset(uint64_t nOffset)
{
    if (!Reserve()) return;

    unsigned char entry[kEntryLen];
    MSB_uint64_to_memory(entry, nOffset);
    m_pData.AppendBuffer(entry, kEntryLen);
    ++m_nEntryCount;
}

void CBox_co64::Update()
{
    m_nDataLen = 4 + 4 + kEntryLen * m_nEntryCount;
    CBox::Update();
}

void CBox_co64::PutData(CMsbCursor& w) const
{
    // Kept: the line names the 32-bit box.
    const CPayloadCheck check(w, m_nDataLen, "CBox_stco:WriteData error!\n");

    PutFullBox(w, 0, 0);
    w.U32(m_nEntryCount);
    w.Bytes(m_pData.Data());
}

}  // namespace Orbel::Wrapton
