#include "mp4packet/Box/Box_stss.h"

#include "mp4packet/Box/HeaderFields.h"

namespace Orbel::Wrapton
{

CBox_stss::CBox_stss(uint32_t nMode) : CBox(STSS, nMode)
{
    CBox_stss::Update();
}

void CBox_stss::InputData(uint32_t nType, void* /*pInfo*/)
{
    m_table.Append(nType);
}

void CBox_stss::Update()
{
    m_nDataLen = 4 + 4 + 4 * m_table.Count();
    CBox::Update();
}

void CBox_stss::PutData(CMsbCursor& w) const
{
    const CPayloadCheck check(w, m_nDataLen, "CBox_stss:WriteData error!\n");

    PutFullBox(w, 0, 0);
    w.U32(m_table.Count());
    w.Bytes(m_table.Bytes());
}

}  // namespace Orbel::Wrapton
