#include "mp4packet/Box/Box_avcC.h"

#include "tool/AvcConvert.h"

namespace Orbel::Wrapton
{

CBox_avcC::CBox_avcC(uint32_t nMode) : CBox(AVCC, nMode)
{
    CBox_avcC::Update();
}

void CBox_avcC::Init(uint32_t /*nType*/, void* pInfo)
{
    if (pInfo == nullptr) return;

    const auto* video = static_cast<const Mp4_VideoInfo*>(pInfo);
    if (video->pointer != nullptr)
    {
        const CAvcConvert convert;
        auto& sps = m_Data.sps;
        auto& pps = m_Data.pps;
        const auto capacity = static_cast<unsigned int>(sps.data.size());
        sps.length = static_cast<int16_t>(
            convert.getSPS(video->pointer, video->size, sps.data.data(), capacity));
        pps.length = static_cast<int16_t>(
            convert.getPPS(video->pointer, video->size, pps.data.data(), capacity));
        m_Data.SPS_num = sps.length > 0 ? 1 : 0;
        m_Data.PPS_num = pps.length > 0 ? 1 : 0;
        if (sps.length >= 4)
        {
            m_Data.AVCProfileIndition = sps.data[1];
            m_Data.profile_compatibility = sps.data[2];
            m_Data.AVCLevelIndition = sps.data[3];
        }
    }
    Update();
}

void CBox_avcC::Update()
{
    m_nDataLen = kFixedLen + static_cast<uint32_t>(m_Data.sps.length + m_Data.pps.length);
    CBox::Update();
}

void CBox_avcC::PutData(CMsbCursor& w) const
{
    const CPayloadCheck check(w, m_nDataLen, "CBox_avcC::WriteData error!\n");

    w.U8(m_Data.configurate_version);
    w.U8(m_Data.AVCProfileIndition);
    w.U8(m_Data.profile_compatibility);
    w.U8(m_Data.AVCLevelIndition);
    w.U8(m_Data.lengthSizeMinusOne);
    w.U8(0xE0u | m_Data.SPS_num);  // 3 reserved ones, 5-bit count
    w.U16(static_cast<uint16_t>(m_Data.sps.length));
    w.Bytes(m_Data.sps.Bytes());
    w.U8(m_Data.PPS_num);
    w.U16(static_cast<uint16_t>(m_Data.pps.length));
    w.Bytes(m_Data.pps.Bytes());
}

}  // namespace Orbel::Wrapton
