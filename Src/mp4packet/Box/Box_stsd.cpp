#include "mp4packet/Box/Box_stsd.h"

#include "Wrapton.h"
#include "mp4packet/Box/Box_avc1.h"
#include "mp4packet/Box/Box_jpeg.h"
#include "mp4packet/Box/Box_mp4a.h"
#include "mp4packet/Box/Box_mp4v.h"
#include "mp4packet/Box/Box_omfr.h"
#include "mp4packet/Box/HeaderFields.h"

namespace Orbel::Wrapton
{
namespace
{

std::unique_ptr<CBox> MakeVideoEntry(uint32_t encode, uint32_t nMode)
{
    switch (encode)
    {
        case SG_ENCODE_VIDEO_MPEG4:
            return std::make_unique<CBox_mp4v>(nMode);
        case SG_ENCODE_VIDEO_HI_H264:
        case SG_ENCODE_VIDEO_QV_H264:
            return std::make_unique<CBox_avc1>(nMode);
        case SG_ENCODE_VIDEO_JPEG:
            return std::make_unique<CBox_jpeg>(nMode);
        default:
            return nullptr;
    }
}

std::unique_ptr<CBox> MakeEntry(uint32_t nType, const void* pInfo, uint32_t nMode)
{
    switch (nType)
    {
        case MP4_VIDEO_TRAK:
            return MakeVideoEntry(static_cast<const Mp4_VideoInfo*>(pInfo)->encode_type, nMode);
        case MP4_AUDIO_TRAK:
            return std::make_unique<CBox_mp4a>(nMode);
        default:
            return std::make_unique<CBox_omfr>(BoxMode_Mp4);
    }
}

}  // namespace

CBox_stsd::CBox_stsd(uint32_t nMode) : CBox(STSD, nMode) {}

void CBox_stsd::Init(uint32_t nType, void* pInfo)
{
    if (m_bInited || pInfo == nullptr) return;

    m_pEntry = MakeEntry(nType, pInfo, m_nMode);
    if (m_pEntry == nullptr) return;

    m_pEntry->Init(nType, pInfo);
    m_nEntryCount = 1;
    m_bInited = true;
    Update();
}

void CBox_stsd::InputData(uint32_t nType, void* pInfo)
{
    if (m_pEntry != nullptr) m_pEntry->InputData(nType, pInfo);
}

void CBox_stsd::Update()
{
    m_nDataLen = 1 + 3 + 4;
    if (m_pEntry != nullptr)
    {
        m_pEntry->Update();
        m_nDataLen += m_pEntry->Size();
    }
    CBox::Update();
}

void CBox_stsd::PutData(CMsbCursor& w) const
{
    PutFullBox(w, 0, 0);
    w.U32(m_nEntryCount);
    if (m_pEntry != nullptr) m_pEntry->Put(w);
}

}  // namespace Orbel::Wrapton
