#include "mp4packet/Box/Box_avc1.h"

namespace Orbel::Wrapton
{

CBox_avc1::CBox_avc1(uint32_t nMode)
    : CBox(AVC1, nMode), m_pAvcC(std::make_unique<CBox_avcC>(nMode))
{
    CBox_avc1::Update();
}

void CBox_avc1::Init(uint32_t nType, void* pInfo)
{
    if (pInfo == nullptr) return;

    if (nType == MP4_VIDEO_TRAK) m_Data.SetSize(*static_cast<const Mp4_VideoInfo*>(pInfo));
    m_pAvcC->Init(nType, pInfo);
    Update();
}

void CBox_avc1::Update()
{
    m_pAvcC->Update();
    m_nDataLen = kVisualEntryLen + m_pAvcC->Size();
    CBox::Update();
}

void CBox_avc1::PutData(CMsbCursor& w) const
{
    const CPayloadCheck check(w, m_nDataLen, "CBox_avc1::WriteData error!\n");

    PutWholeVisualEntry(w, m_Data);
    m_pAvcC->Put(w);
}

}  // namespace Orbel::Wrapton
