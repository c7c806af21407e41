#include "avipacket/AviXRiff.h"

#include <array>

#include "avipacket/AviRecords.h"

namespace Orbel::Wrapton
{
namespace
{

constexpr uint32_t kHeaderLen = 12 + 12;
/// From the RIFF's beginning to its "movi" code, where offsets of chunks count from.
constexpr uint32_t kMoviCode = 20;

}  // namespace

int CAviXRiff::Init(uint64_t baseOffset, pRiffCallback callback, void* user) noexcept
{
    if (callback == nullptr) return SG_ERR_EMPTY_POINTER;

    const int result = InitIndexes(baseOffset + kMoviCode);
    if (result != SG_ERR_NOERR) return result;

    m_cbOutput = callback;
    m_pUser = user;
    m_nBaseOffset = baseOffset;
    // Kept: both sizes are 8 more than what they enclose, so the RIFF's is its whole length.
    m_riffHeader.filesize = kHeaderLen;
    m_moviList.size = 12;
    EmitHeader();
    m_nCurOffset = kHeaderLen;
    return SG_ERR_NOERR;
}

int CAviXRiff::InputFrame(const SGFrameInfo* pFrame) noexcept
{
    if (pFrame == nullptr) return SG_ERR_NOERR;
    if (pFrame->frame_pointer == nullptr) return SG_ERR_NOERR;
    if (!FitsBlock(pFrame->frame_size)) return SG_ERR_PARAM_ERR;
    if (!HasBegun()) return SG_ERR_NOERR;

    int result = SG_ERR_NOERR;
    if (pFrame->frame_type == SG_FRAME_TYPE_VIDEO) result = Package(AVI_VIDEO_STREAM, *pFrame);
    if (pFrame->frame_type == SG_FRAME_TYPE_AUDIO) result = Package(AVI_AUDIO_STREAM, *pFrame);
    if (result != SG_ERR_NOERR) return result;

    if (Size() > kRiffSizeLimit) EndInput();
    return SG_ERR_NOERR;
}

int CAviXRiff::Package(eAviStream stream, const SGFrameInfo& frame) noexcept
{
    const int result = Reserve(stream, frame.frame_size);
    if (result != SG_ERR_NOERR) return result;

    EmitChunk(stream, frame);
    PassChunk(frame);
    return SG_ERR_NOERR;
}

void CAviXRiff::EndInput() noexcept
{
    if (!HasBegun()) return;

    EmitIndexes();
    EmitHeader();
}

void CAviXRiff::EmitHeader() const noexcept
{
    std::array<unsigned char, kHeaderLen> bytes{};
    CLsbCursor w(bytes);
    PutRiffHeader(w, m_riffHeader, FourCc("AVIX"));
    PutMovieList(w, m_moviList);
    Output(bytes.data(), kHeaderLen, m_nBaseOffset);
}

}  // namespace Orbel::Wrapton
