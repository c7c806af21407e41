#include "mp4packet/Box/Box_dref.h"

#include "mp4packet/Box/HeaderFields.h"

namespace Orbel::Wrapton
{

CBox_dref::CBox_dref(uint32_t nMode) : CBox(DREF, nMode), m_pUrl(std::make_unique<CBox_url>(nMode))
{
    CBox_dref::Update();
}

void CBox_dref::Update()
{
    m_nDataLen = 1 + 3 + 4 + m_pUrl->Size();
    CBox::Update();
}

void CBox_dref::PutData(CMsbCursor& w) const
{
    const CPayloadCheck check(w, m_nDataLen, "CBox_dref::WriteData error!\n");

    PutFullBox(w, m_nVersion, m_nFlag);
    w.U32(m_nEntryCount);
    m_pUrl->Put(w);
}

}  // namespace Orbel::Wrapton
