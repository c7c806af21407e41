#include "mp4packet/Box/Box_minf.h"

#include "mp4packet/Box/Box_smhd.h"
#include "mp4packet/Box/Box_vmhd.h"

namespace Orbel::Wrapton
{

CBox_minf::CBox_minf(uint32_t nMode)
    : CBox(MINF, nMode),
      m_pDinf(std::make_unique<CBox_dinf>(nMode)),
      m_pStbl(std::make_unique<CBox_stbl>(nMode))
{
}

void CBox_minf::Init(uint32_t nType, void* pInfo)
{
    if (m_bInited || pInfo == nullptr) return;

    if (nType == MP4_VIDEO_TRAK)
    {
        m_pMediaHeader = std::make_unique<CBox_vmhd>(BoxMode_Mp4);
    }
    else if (nType == MP4_AUDIO_TRAK)
    {
        m_pMediaHeader = std::make_unique<CBox_smhd>(BoxMode_Mp4);
    }
    m_pDinf->Init(nType, pInfo);
    m_pStbl->Init(nType, pInfo);
    m_bInited = true;
    Update();
}

void CBox_minf::InputData(uint32_t nType, void* pInfo)
{
    m_pStbl->InputData(nType, pInfo);
}

void CBox_minf::Update()
{
    m_pStbl->Update();
    m_nDataLen = (m_pMediaHeader != nullptr ? m_pMediaHeader->Size() : 0) +  //
                 m_pDinf->Size() +                                           //
                 m_pStbl->Size();
    CBox::Update();
}

void CBox_minf::PutData(CMsbCursor& w) const
{
    const CPayloadCheck check(w, m_nDataLen, "CBox_minf:WriteData error!\n");

    if (m_pMediaHeader != nullptr) m_pMediaHeader->Put(w);
    m_pDinf->Put(w);
    m_pStbl->Put(w);
}

}  // namespace Orbel::Wrapton
