#include "mkvpacket/Objects/Tracks.h"

#include <algorithm>
#include <string_view>

#include "mkvpacket/Objects/ElementIds.h"

namespace Orbel::Wrapton
{
namespace
{

constexpr uint32_t kVideoUid = 1;
constexpr uint32_t kAudioUid = 2;
constexpr double kNanosecondsPerSecond = 1e9;
constexpr std::string_view kUndetermined = "und";
constexpr std::string_view kAac = "A_AAC";

template <class Info>
std::span<const unsigned char> CodecId(const Info& info)
{
    return std::span(info.codeIDdata).first(info.codeIDdatalen);
}

template <class Info>
std::span<const unsigned char> PrivateData(const Info& info)
{
    return std::span(info.privatedata).first(info.privatedatalen);
}

bool IsAac(const AUDIOINFO& info)
{
    return std::equal(kAac.begin(), kAac.end(), info.codeIDdata.begin());
}

uint32_t NanosecondsPerFrame(uint32_t rate)
{
    return static_cast<uint32_t>(kNanosecondsPerSecond / static_cast<double>(rate));
}

/// TrackEntry of a video track, RFC 9559 5.1.4.1.
void PutVideoEntry(CMsbCursor& w, const VIDEOINFO& info)
{
    const CEbmlScope entry(w, kTrackEntry);
    PutUint8(w, kTrackNumber, info.trackNum);
    PutUint8(w, kTrackUid, kVideoUid);
    PutUint8(w, kTrackType, info.trackType);
    PutBytes(w, kCodecId, CodecId(info));
    if (info.nFramerate != 0)
    {
        PutUint32(w, kDefaultDuration, NanosecondsPerFrame(info.nFramerate));
    }
    PutString(w, kLanguage, kUndetermined);
    PutBytes(w, kCodecPrivate, PrivateData(info));
    PutId(w, kVideo);
    PutSize(w, (1 + 1 + 2) + (1 + 1 + 2));
    PutUint16(w, kPixelWidth, info.width);
    PutUint16(w, kPixelHeight, info.heigth);
}

/// TrackEntry of an audio track, RFC 9559 5.1.4.1.
void PutAudioEntry(CMsbCursor& w, const AUDIOINFO& info)
{
    const CEbmlScope entry(w, kTrackEntry);
    PutUint8(w, kTrackNumber, info.trackNum);
    PutUint8(w, kTrackUid, kAudioUid);
    PutUint8(w, kFlagLacing, 0);
    PutUint8(w, kTrackType, TRACK_TYPE_AUDIO);
    PutBytes(w, kCodecId, CodecId(info));
    PutString(w, kLanguage, kUndetermined);
    if (IsAac(info)) PutBytes(w, kCodecPrivate, PrivateData(info));
    PutId(w, kAudio);
    PutSize(w, (1 + 1 + 8) + (1 + 1 + 1) + (2 + 1 + 1));
    PutFloat64(w, kSamplingFrequency, info.sample_rate);
    PutUint8(w, kChannels, info.channels);
    PutUint8(w, kBitDepth, info.bit_per_sample);
}

/// Lengths from outside stay within their arrays.
template <class Info>
Info Copied(const void* pInfo)
{
    Info info = *static_cast<const Info*>(pInfo);
    info.codeIDdatalen =
        std::min(info.codeIDdatalen, static_cast<uint32_t>(info.codeIDdata.size()));
    if (info.privatedatalen > info.privatedata.size()) info.privatedatalen = 0;
    return info;
}

}  // namespace

void CTracks::Init(uint32_t nType, const void* pInfo)
{
    m_nType = nType;
    m_videoInfo = {};
    m_audioInfo = {};
    if (pInfo == nullptr) return;
    if (nType == TRACK_TYPE_VIDEO) m_videoInfo = Copied<VIDEOINFO>(pInfo);
    if (nType == TRACK_TYPE_AUDIO) m_audioInfo = Copied<AUDIOINFO>(pInfo);
}

void CTracks::Update()
{
    m_nDataLen += m_TrackDatlen;
}

uint32_t CTracks::WriteID(CMsbCursor& w)
{
    PutId(w, kTracks);
    return kTracks.Length();
}

uint32_t CTracks::WriteData(CMsbCursor& w)
{
    const size_t begin = w.Produced();
    switch (m_nType)
    {
        case TRACK_TYPE_VIDEO:
            PutVideoEntry(w, m_videoInfo);
            break;
        case TRACK_TYPE_AUDIO:
            PutAudioEntry(w, m_audioInfo);
            break;
        default:
        {
            const CEbmlScope empty(w, kTrackEntry);
        }
    }
    m_TrackDatlen = static_cast<uint32_t>(w.Produced() - begin);
    Update();
    return m_TrackDatlen;
}

uint32_t CTracks::Size()
{
    m_size = m_nDataLen + kTracks.Length();
    return m_size;
}

}  // namespace Orbel::Wrapton
