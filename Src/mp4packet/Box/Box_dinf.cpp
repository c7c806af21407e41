#include "mp4packet/Box/Box_dinf.h"

namespace Orbel::Wrapton
{

CBox_dinf::CBox_dinf(uint32_t nMode)
    : CBox(DINF, nMode), m_pDref(std::make_unique<CBox_dref>(nMode))
{
    CBox_dinf::Update();
}

void CBox_dinf::Init(uint32_t nType, void* pInfo)
{
    if (pInfo == nullptr) return;

    m_pDref->Init(nType, pInfo);
    Update();
}

void CBox_dinf::Update()
{
    m_nDataLen = m_pDref->Size();
    CBox::Update();
}

void CBox_dinf::PutData(CMsbCursor& w) const
{
    m_pDref->Put(w);
}

}  // namespace Orbel::Wrapton
