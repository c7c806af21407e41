#include "mp4packet/Box/Box_moov.h"

#include <algorithm>

#include "mp4packet/Box/MovieTime.h"

namespace Orbel::Wrapton
{
namespace
{

/// More than a frame can add to the box: table entries, a track that it opens, a configuration.
constexpr uint32_t kMaxGrowth = 0x10000;

}  // namespace

CBox_moov::CBox_moov(uint32_t nMode)
    : CBox(MOOV, nMode), m_pMvhd(std::make_unique<CBox_mvhd>(nMode))
{
    for (Track& track : m_tracks)
    {
        track.box = std::make_unique<CBox_trak>(nMode);
    }
}

CBox_moov::Track* CBox_moov::Find(uint32_t nType)
{
    static_assert(MP4_VIDEO_TRAK == 1 && MP4_AUDIO_TRAK == 2 && MP4_EXT_TRAK == 3);
    return nType >= MP4_VIDEO_TRAK && nType <= MP4_EXT_TRAK ? &m_tracks[nType - 1] : nullptr;
}

void CBox_moov::Init(uint32_t nType, void* pInfo)
{
    if (pInfo == nullptr) return;
    Track* const track = Find(nType);
    if (track == nullptr) return;

    track->box->Init(nType, pInfo);
    track->open = true;
    ++m_nTrackCnt;
    m_pMvhd->Init(m_nTrackCnt, nullptr);
    Update();
}

void CBox_moov::InputData(uint32_t nType, void* pInfo)
{
    if (Find(nType) == nullptr || pInfo == nullptr) return;

    Note(nType, *static_cast<Mp4_Sample*>(pInfo));
    Update();
}

void CBox_moov::Note(uint32_t nType, Mp4_Sample& sample)
{
    Track* const track = Find(nType);
    if (track == nullptr) return;

    track->box->InputData(nType, &sample);
    m_nUnsettled += kMaxGrowth;
    // A track's duration wraps and the movie's does not: it is taken at every sample.
    if (track->open) NoteDuration(*track->box);
}

bool CBox_moov::Reserve(uint32_t nType)
{
    // Settling walks over all boxes: only when the limit could be near.
    constexpr uint32_t kMost = INT32_MAX - kMaxGrowth;
    if (Size() + m_nUnsettled > kMost) Update();
    if (Size() > kMost) return false;
    Track* const track = Find(nType);
    return track != nullptr && track->box->Reserve();
}

void CBox_moov::Update()
{
    uint32_t tracks_len = 0;
    for (const Track& track : m_tracks)
    {
        if (!track.open) continue;

        CBox_trak& trak = *track.box;
        trak.Update();
        tracks_len += trak.Size();
        NoteDuration(trak);
    }
    m_pMvhd->setDuration(m_nTotalDuration);
    m_pMvhd->Update();
    m_nDataLen = m_pMvhd->Size() + tracks_len;
    m_nUnsettled = 0;
    CBox::Update();
}

void CBox_moov::NoteDuration(const CBox_trak& trak)
{
    if (trak.getTimeScale() == 0) return;
    m_nTotalDuration =
        std::max(m_nTotalDuration, ToMovieUnits(trak.getTotalDuration(), trak.getTimeScale()));
}

void CBox_moov::PutData(CMsbCursor& w) const
{
    const CPayloadCheck check(w, m_nDataLen, "CBox_moov:WriteData error! %d != %d \n");

    m_pMvhd->Put(w);
    for (const Track& track : m_tracks)
    {
        if (track.open) track.box->Put(w);
    }
}

}  // namespace Orbel::Wrapton
