#include "mp4packet/Box/Box_mdia.h"

namespace Orbel::Wrapton
{

CBox_mdia::CBox_mdia(uint32_t nMode)
    : CBox(MDIA, nMode),
      m_pMdhd(std::make_unique<CBox_mdhd>(nMode)),
      m_pHdlr(std::make_unique<CBox_hdlr>(nMode)),
      m_pMinf(std::make_unique<CBox_minf>(nMode))
{
}

void CBox_mdia::Init(uint32_t nType, void* pInfo)
{
    if (pInfo == nullptr) return;

    m_pMdhd->Init(nType, pInfo);
    m_pHdlr->Init(nType, pInfo);
    m_pMinf->Init(nType, pInfo);
    Update();
}

void CBox_mdia::InputData(uint32_t nType, void* pInfo)
{
    m_pMinf->InputData(nType, pInfo);
}

void CBox_mdia::Update()
{
    m_pMinf->Update();
    m_pMdhd->setDuration(getTotalDuration());
    m_pMdhd->Update();
    m_nDataLen = m_pMdhd->Size() + m_pHdlr->Size() + m_pMinf->Size();
    CBox::Update();
}

void CBox_mdia::PutData(CMsbCursor& w) const
{
    const CPayloadCheck check(w, m_nDataLen, "CBox_mdia:WriteData error!\n");

    m_pMdhd->Put(w);
    m_pHdlr->Put(w);
    m_pMinf->Put(w);
}

}  // namespace Orbel::Wrapton
