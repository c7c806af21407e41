#include "mp4packet/Box/Box_stco.h"

#include "Wrapton.h"
#include "mp4packet/Box/HeaderFields.h"
#include "tool/StreamTool.h"

namespace Orbel::Wrapton
{
namespace
{

constexpr uint32_t kEntryLen = 4;

}  // namespace

CBox_stco::CBox_stco(uint32_t nMode) : CBox(STCO, nMode)
{
    CBox_stco::Update();
}

bool CBox_stco::Reserve() noexcept
{
    return m_pData.Reserve(kEntryLen) == SG_ERR_NOERR;
}

void CBox_stco::InputData(uint32_t nType, void* /*pInfo*/)
{
    if (!Reserve()) return;

    unsigned char entry[kEntryLen];
    MSB_uint32_to_memory(entry, nType);
    m_pData.AppendBuffer(entry, kEntryLen);
    ++m_nEntryCount;
}

void CBox_stco::Update()
{
    m_nDataLen = 4 + 4 + kEntryLen * m_nEntryCount;
    CBox::Update();
}

void CBox_stco::PutData(CMsbCursor& w) const
{
    const CPayloadCheck check(w, m_nDataLen, "CBox_stco:WriteData error!\n");

    PutFullBox(w, 0, 0);
    w.U32(m_nEntryCount);
    w.Bytes(m_pData.Data());
}

}  // namespace Orbel::Wrapton
