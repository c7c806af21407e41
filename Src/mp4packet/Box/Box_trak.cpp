#include "mp4packet/Box/Box_trak.h"

#include "Wrapton.h"
#include "mp4packet/Adts.h"
#include "mp4packet/Box/MovieTime.h"

namespace Orbel::Wrapton
{

CBox_trak::CBox_trak(uint32_t nMode)
    : CBox(TRAK, nMode),
      m_pTkhd(std::make_unique<CBox_tkhd>(nMode)),
      m_pMdia(std::make_unique<CBox_mdia>(nMode))
{
}

void CBox_trak::Init(uint32_t nType, void* pInfo)
{
    if (m_bInited || pInfo == nullptr) return;

    m_nType = nType;
    if (nType == MP4_VIDEO_TRAK)
    {
        m_nTimeScale = kMovieTimeScale;
        m_nEncodeType = static_cast<const Mp4_VideoInfo*>(pInfo)->encode_type;
    }
    else if (nType == MP4_AUDIO_TRAK)
    {
        const auto* audio = static_cast<const Mp4_AudioInfo*>(pInfo);
        m_nTimeScale = audio->sample_rate;
        m_nEncodeType = audio->encode_type;
    }
    m_pTkhd->Init(nType, pInfo);
    m_pMdia->Init(nType, pInfo);
    m_bInited = true;
    Update();
}

void CBox_trak::InputData(uint32_t nType, void* pInfo)
{
    if (!m_bInited) return;

    auto* sample = static_cast<Mp4_Sample*>(pInfo);
    if (m_nType == MP4_AUDIO_TRAK && m_nEncodeType == SG_ENCODE_AUDIO_AAC)
    {
        const auto data = StripAdts({sample->pointer, sample->size});
        sample->pointer = data.data();
        sample->size = static_cast<uint32_t>(data.size());
    }
    m_pMdia->InputData(nType, sample);
}

void CBox_trak::Update()
{
    m_pMdia->Update();
    if (m_nTimeScale != 0)
    {
        m_pTkhd->setDuration(ToMovieUnits(getTotalDuration(), m_nTimeScale));
        m_pTkhd->Update();
    }
    m_nDataLen = m_pTkhd->Size() + m_pMdia->Size();
    CBox::Update();
}

void CBox_trak::PutData(CMsbCursor& w) const
{
    const CPayloadCheck check(w, m_nDataLen, "CBox_trak:WriteData error!\n");

    m_pTkhd->Put(w);
    m_pMdia->Put(w);
}

}  // namespace Orbel::Wrapton
