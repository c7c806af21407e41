#include "mp4packet/Box/Box_stbl.h"

#include "Wrapton.h"

namespace Orbel::Wrapton
{

CBox_stbl::CBox_stbl(uint32_t nMode)
    : CBox(STBL, nMode),
      m_pStsd(std::make_unique<CBox_stsd>(nMode)),
      m_pStts(std::make_unique<CBox_stts>(nMode)),
      m_pStss(std::make_unique<CBox_stss>(nMode)),
      m_pStsc(std::make_unique<CBox_stsc>(nMode)),
      m_pStsz(std::make_unique<CBox_stsz>(nMode))
{
    if (Is64Bit(nMode))
    {
        m_pCo64 = std::make_unique<CBox_co64>(nMode);
    }
    else
    {
        m_pStco = std::make_unique<CBox_stco>(nMode);
    }
}

template <class Visit>
void CBox_stbl::ForEachChild(Visit visit) const
{
    visit(*m_pStsd);
    visit(*m_pStts);
    if (m_nType == MP4_VIDEO_TRAK) visit(*m_pStss);
    visit(*m_pStsc);
    visit(*m_pStsz);
    if (m_pStco != nullptr) visit(*m_pStco);
    if (m_pCo64 != nullptr) visit(*m_pCo64);
}

void CBox_stbl::Init(uint32_t nType, void* pInfo)
{
    m_nType = nType;
    m_pStsd->Init(nType, pInfo);
    m_pStts->Init(nType, pInfo);
    Update();
}

bool CBox_stbl::Reserve()
{
    if (m_nType == MP4_VIDEO_TRAK && !m_pStss->Reserve()) return false;
    return m_pStsz->Reserve() && (m_pStco != nullptr ? m_pStco->Reserve() : m_pCo64->Reserve());
}

void CBox_stbl::InputData(uint32_t nType, void* pInfo)
{
    auto* sample = static_cast<Mp4_Sample*>(pInfo);
    m_pStsd->InputData(nType, sample);
    m_pStts->InputData(nType, sample);
    if (m_nType == MP4_VIDEO_TRAK && sample->frametype == SG_FRAME_SUB_TYPE_I)
    {
        m_pStss->InputData(m_nEntryCount, nullptr);
    }
    m_pStsz->InputData(sample->size, nullptr);
    if (m_pStco != nullptr) m_pStco->InputData(static_cast<uint32_t>(sample->postion), nullptr);
    if (m_pCo64 != nullptr) m_pCo64->InputOffset(sample->postion);
    ++m_nEntryCount;
}

void CBox_stbl::Update()
{
    m_nDataLen = 0;
    ForEachChild(
        [this](CBox& child)
        {
            child.Update();
            m_nDataLen += child.Size();
        });
    CBox::Update();
}

void CBox_stbl::PutData(CMsbCursor& w) const
{
    const CPayloadCheck check(w, m_nDataLen, "CBox_stbl:WriteData error!\n");

    ForEachChild([&w](const CBox& child) { child.Put(w); });
}

}  // namespace Orbel::Wrapton
