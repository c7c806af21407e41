#include "mp4packet/Box/Box_url.h"

#include "mp4packet/Box/HeaderFields.h"

namespace Orbel::Wrapton
{

CBox_url::CBox_url(uint32_t nMode) : CBox(URL, nMode)
{
    m_nDataLen = 4;
    CBox::Update();
}

void CBox_url::PutData(CMsbCursor& w) const
{
    PutFullBox(w, m_nVersion, m_nFlag);
}

}  // namespace Orbel::Wrapton
