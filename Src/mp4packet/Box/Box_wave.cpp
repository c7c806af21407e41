#include "mp4packet/Box/Box_wave.h"

namespace Orbel::Wrapton
{

CBox_wave::CBox_wave(uint32_t nMode)
    : CBox(WAVE, nMode),
      m_pFrma(std::make_unique<CBox_frma>(BoxMode_Mp4)),
      m_pMp4a(std::make_unique<CBox_mp4a>(BoxMode_Empty)),
      m_pEsds(std::make_unique<CBox_esds>(BoxMode_Mp4))
{
    CBox_wave::Update();
}

void CBox_wave::Init(uint32_t nType, void* pInfo)
{
    m_pFrma->Init(nType, pInfo);
    m_pMp4a->Init(nType, pInfo);
    m_pEsds->Init(nType, pInfo);
    Update();
}

void CBox_wave::Update()
{
    m_nDataLen = m_pFrma->Size() + m_pMp4a->Size() + m_pEsds->Size();
    CBox::Update();
}

void CBox_wave::PutData(CMsbCursor& w) const
{
    const CPayloadCheck check(w, m_nDataLen, "CBox_wave::WriteData error!\n");

    m_pFrma->Put(w);
    m_pMp4a->Put(w);
    m_pEsds->Put(w);
}

}  // namespace Orbel::Wrapton
