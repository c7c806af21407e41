#include "mp4packet/Box/Box_hdlr.h"

#include "mp4packet/Box/HeaderFields.h"

namespace Orbel::Wrapton
{

CBox_hdlr::CBox_hdlr(uint32_t nMode) : CBox(HDLR, nMode)
{
    m_nDataLen = kFixedLen;
    CBox::Update();
}

void CBox_hdlr::Init(uint32_t nType, void* pInfo)
{
    if (m_bInited || pInfo == nullptr) return;

    if (nType == MP4_VIDEO_TRAK)
    {
        m_Data.component_subtype = {'v', 'i', 'd', 'e'};
        m_Data.component_name = "VideoHandler";
    }
    else if (nType == MP4_AUDIO_TRAK)
    {
        m_Data.component_subtype = {'s', 'o', 'u', 'n'};
        m_Data.component_name = "SoundHandler";
    }
    else
    {
        m_Data.component_subtype = {'O', 'M', 'F', 'R'};
        m_Data.component_name = "OMFRExtHandler";
    }
    m_bInited = true;
    Update();
}

void CBox_hdlr::Update()
{
    if (m_bInited) m_nDataLen = kFixedLen + static_cast<uint32_t>(m_Data.component_name.size()) + 1;
    CBox::Update();
}

void CBox_hdlr::PutData(CMsbCursor& w) const
{
    const CPayloadCheck check(w, m_nDataLen, "CBox_hdlr::WriteData error!\n");

    PutFullBox(w, m_Data.version, m_Data.flags);
    w.U32(m_Data.pre_define);
    w.Bytes(m_Data.component_subtype);
    w.Fill(3 * 4, 0);  // reserved
    if (!m_bInited) return;

    w.Bytes({reinterpret_cast<const unsigned char*>(m_Data.component_name.data()),
             m_Data.component_name.size()});
    w.U8(0);
}

}  // namespace Orbel::Wrapton
