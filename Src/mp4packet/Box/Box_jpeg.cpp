#include "mp4packet/Box/Box_jpeg.h"

namespace Orbel::Wrapton
{

CBox_jpeg::CBox_jpeg(uint32_t nMode) : CBox(JPEG, nMode)
{
    CBox_jpeg::Update();
}

void CBox_jpeg::Init(uint32_t nType, void* pInfo)
{
    if (pInfo == nullptr) return;

    if (nType == MP4_VIDEO_TRAK) m_Data.SetSize(*static_cast<const Mp4_VideoInfo*>(pInfo));
    Update();
}

void CBox_jpeg::Update()
{
    m_nDataLen = kVisualEntryLen;
    CBox::Update();
}

void CBox_jpeg::PutData(CMsbCursor& w) const
{
    // Kept: the line names the MPEG-4 entry.
    const CPayloadCheck check(w, m_nDataLen, "CBox_mp4v:WriteData error!\n");

    PutWholeVisualEntry(w, m_Data);
}

}  // namespace Orbel::Wrapton
