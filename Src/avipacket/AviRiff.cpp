#include "avipacket/AviRiff.h"

#include <array>

namespace Orbel::Wrapton
{
namespace
{

constexpr uint32_t kListHeaderLen = 12;
constexpr uint32_t kHdrlOffset = kListHeaderLen;
constexpr uint32_t kMoviOffset = kHdrlOffset + CAviHdrlList::kLength;
static_assert(kMoviOffset == 4116);
/// From the "movi" header to its code, where offsets of chunks count from.
constexpr uint32_t kMoviCode = 8;

constexpr uint32_t kKeyFrame = 0x10;  // AVIIF_KEYFRAME

using ListHeader = std::array<unsigned char, kListHeaderLen>;

}  // namespace

int CAviRiff::Init(const SGHeaderInfo* pHeader, pRiffCallback callback, void* user) noexcept
{
    if (callback == nullptr) return SG_ERR_EMPTY_POINTER;

    m_nMoviOffset = kMoviOffset;
    int result = InitIndexes(m_nMoviOffset + kMoviCode);
    if (result != SG_ERR_NOERR) return result;
    result = m_idx1Object.Init();
    if (result != SG_ERR_NOERR) return result;
    result = m_hdrlList.Init(kHdrlOffset, pHeader, callback, user);
    if (result != SG_ERR_NOERR) return result;

    m_cbOutput = callback;
    m_pUser = user;
    // Kept: counts the 8 bytes of its own header, too.
    m_riffHeader.filesize = CAviHdrlList::Size() + 2 * kListHeaderLen;
    EmitRiffHeader();
    m_hdrlList.Write();
    m_moviList.size = 4;
    EmitMovieList();
    m_nCurOffset = kMoviOffset + kListHeaderLen;
    return SG_ERR_NOERR;
}

int CAviRiff::InputFrame(const SGFrameInfo* pFrame) noexcept
{
    if (pFrame == nullptr) return SG_ERR_NOERR;
    if (pFrame->frame_pointer == nullptr) return SG_ERR_NOERR;
    if (!FitsBlock(pFrame->frame_size)) return SG_ERR_PARAM_ERR;

    int result = SG_ERR_NOERR;
    if (pFrame->frame_type == SG_FRAME_TYPE_VIDEO) result = PackageVideoFrame(*pFrame);
    if (pFrame->frame_type == SG_FRAME_TYPE_AUDIO) result = PackageAudioFrame(*pFrame);
    if (result != SG_ERR_NOERR) return result;

    // Kept: frames of other types and dropped ones bring the statistics up to date as well.
    return m_hdrlList.InputFrame(pFrame);
}

int CAviRiff::PackageVideoFrame(const SGFrameInfo& frame) noexcept
{
    const bool opening =
        frame.frame_sub_type == SG_FRAME_SUB_TYPE_I || frame.frame_encode == SG_ENCODE_VIDEO_JPEG;
    if (!m_hdrlList.IsVideoInited() && !opening) return SG_ERR_NOERR;

    const int result = ReserveFor(AVI_VIDEO_STREAM, frame.frame_size);
    if (result != SG_ERR_NOERR) return result;

    if (!m_hdrlList.IsVideoInited())
    {
        const SGVideoInfo info{.bVideo = 1,
                               .videoencode = static_cast<int32_t>(frame.frame_encode),
                               .width = static_cast<int32_t>(frame.width),
                               .height = static_cast<int32_t>(frame.heigth),
                               .framerate = static_cast<int32_t>(frame.frame_rate)};
        m_hdrlList.InitVideoStreamList(&info);
    }
    Package(AVI_VIDEO_STREAM, frame, frame.frame_sub_type == SG_FRAME_SUB_TYPE_I);
    return SG_ERR_NOERR;
}

int CAviRiff::PackageAudioFrame(const SGFrameInfo& frame) noexcept
{
    if (!m_hdrlList.IsVideoInited()) return SG_ERR_NOERR;

    const int result = ReserveFor(AVI_AUDIO_STREAM, frame.frame_size);
    if (result != SG_ERR_NOERR) return result;

    if (!m_hdrlList.IsAudioInited())
    {
        const SGAudioInfo info{.bAudio = 1,
                               .audioencode = static_cast<int32_t>(frame.frame_encode),
                               .channels = static_cast<int32_t>(frame.channels),
                               .sampledepth = static_cast<int32_t>(frame.bit_per_sample),
                               .samplerate = static_cast<int32_t>(frame.sample_rate)};
        m_hdrlList.InitAudioStreamList(&info);
    }
    if (m_hdrlList.IsAudioInited()) Package(AVI_AUDIO_STREAM, frame, true);
    return SG_ERR_NOERR;
}

int CAviRiff::ReserveFor(eAviStream stream, uint32_t size) noexcept
{
    if (!HasBegun()) return SG_ERR_NOERR;

    const int result = Reserve(stream, size);
    return result != SG_ERR_NOERR ? result : m_idx1Object.Reserve();
}

void CAviRiff::Package(eAviStream stream, const SGFrameInfo& frame, bool key) noexcept
{
    // Kept: a frame ahead of the header brings its stream and counts, and is not stored.
    if (!HasBegun()) return;

    EmitChunk(stream, frame);
    const Avi_Idx1Entry entry{.tag = stream == AVI_VIDEO_STREAM ? kVideoChunk : kAudioChunk,
                              .key = key ? kKeyFrame : 0,
                              .offset = m_nFrameOffset};
    m_idx1Object.InputEntry(&entry);
    PassChunk(frame);
}

void CAviRiff::EndInput() noexcept
{
    if (!HasBegun()) return;

    if (!m_bHasTailer)
    {
        if (Size() > kRiffSizeLimit) EmitIndexes();

        const uint32_t length = m_idx1Object.GetBufferLen();
        Output(m_idx1Object.GetBuffer(), length, m_nBaseOffset + m_nCurOffset);
        m_nCurOffset += length;
        m_riffHeader.filesize += length;
        m_bHasTailer = true;
    }
    EmitRiffHeader();
    EmitMovieList();
}

int CAviRiff::InputEntry(eAviStream stream, const superindex_entry* entry) noexcept
{
    return m_hdrlList.InputEntry(stream, entry);
}

void CAviRiff::EmitRiffHeader() const noexcept
{
    ListHeader bytes{};
    CLsbCursor w(bytes);
    PutRiffHeader(w, m_riffHeader, FourCc("AVI "));
    Output(bytes.data(), kListHeaderLen, m_nBaseOffset);
}

void CAviRiff::EmitMovieList() const noexcept
{
    ListHeader bytes{};
    CLsbCursor w(bytes);
    PutMovieList(w, m_moviList);
    Output(bytes.data(), kListHeaderLen, m_nMoviOffset);
}

}  // namespace Orbel::Wrapton
