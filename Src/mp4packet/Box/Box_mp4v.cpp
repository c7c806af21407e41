#include "mp4packet/Box/Box_mp4v.h"

namespace Orbel::Wrapton
{

CBox_mp4v::CBox_mp4v(uint32_t nMode)
    : CBox(MP4V, nMode), m_pEsds(std::make_unique<CBox_esds>(nMode))
{
    CBox_mp4v::Update();
}

void CBox_mp4v::Init(uint32_t nType, void* pInfo)
{
    if (pInfo == nullptr) return;

    if (nType == MP4_VIDEO_TRAK) m_Data.SetSize(*static_cast<const Mp4_VideoInfo*>(pInfo));
    m_pEsds->Init(nType, pInfo);
    Update();
}

void CBox_mp4v::InputData(uint32_t nType, void* pInfo)
{
    m_pEsds->InputData(nType, pInfo);
}

void CBox_mp4v::Update()
{
    m_pEsds->Update();
    m_nDataLen = kVisualEntryLen + m_pEsds->Size();
    CBox::Update();
}

void CBox_mp4v::PutData(CMsbCursor& w) const
{
    const CPayloadCheck check(w, m_nDataLen, "CBox_mp4v:WriteData error!\n");

    PutWholeVisualEntry(w, m_Data);
    m_pEsds->Put(w);
}

}  // namespace Orbel::Wrapton
