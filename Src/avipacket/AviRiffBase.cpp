#include "avipacket/AviRiffBase.h"

#include <cassert>
#include <climits>

#include "tool/CacheLine.h"

namespace Orbel::Wrapton
{
namespace
{

constexpr uint32_t kChunkHeaderLen = 8;
/// In the size of a standard index entry: not a key frame.
constexpr uint32_t kDeltaFrame = 0x80000000;

/// Chunks begin at even places.
uint32_t PaddedLen(uint32_t size)
{
    return kChunkHeaderLen + size + size % 2;
}

}  // namespace

superindex_entry CAviRiffBase::IndexEntry(eAviStream stream) const noexcept
{
    const bool video = stream == AVI_VIDEO_STREAM;
    const CAviIxObject& index = video ? m_ix00Object : m_ix01Object;
    return {.offset = video ? m_nIx00Offset : m_nIx01Offset,
            .size = index.GetBufferLen(),
            .entrycount = index.GetEntryCount()};
}

bool CAviRiffBase::FitsBlock(uint32_t size) noexcept
{
    return size <= INT_MAX - kChunkHeaderLen - 1;
}

int CAviRiffBase::InitIndexes(uint64_t moviCodeOffset) noexcept
{
    const int result = m_ix00Object.Init(AVI_VIDEO_STREAM, moviCodeOffset);
    if (result != SG_ERR_NOERR) return result;
    return m_ix01Object.Init(AVI_AUDIO_STREAM, moviCodeOffset);
}

int CAviRiffBase::Reserve(eAviStream stream, uint32_t size) noexcept
{
    m_outputBuffer.Clear();
    const int result = m_outputBuffer.Reserve(PaddedLen(size));
    if (result != SG_ERR_NOERR) return result;
    return IndexOf(stream).Reserve();
}

void CAviRiffBase::EmitChunk(eAviStream stream, const SGFrameInfo& frame) noexcept
{
    const bool video = stream == AVI_VIDEO_STREAM;
    const auto room = static_cast<size_t>(m_outputBuffer.MaxSize());
    const auto chunk = AlignPayload(
        {m_outputBuffer.GetPointer(), room}, kChunkHeaderLen, PaddedLen(frame.frame_size));
    CLsbCursor w(chunk);
    PutFourCC(w, video ? kVideoChunk : kAudioChunk);
    w.U32(frame.frame_size);
    w.Bytes({frame.frame_pointer, frame.frame_size});
    w.Fill(frame.frame_size % 2, 0);
    assert(!w.Overrun());
    Output(chunk.data(), static_cast<uint32_t>(w.Produced()), m_nBaseOffset + m_nCurOffset);

    // Kept: a B frame counts as a key frame here.
    const bool delta = video && frame.frame_sub_type == SG_FRAME_SUB_TYPE_P;
    const stdindex_entry entry{.offset = m_nFrameOffset + kChunkHeaderLen,
                               .size = frame.frame_size | (delta ? kDeltaFrame : 0)};
    IndexOf(stream).InputEntry(&entry);
}

void CAviRiffBase::PassChunk(const SGFrameInfo& frame) noexcept
{
    Advance(PaddedLen(frame.frame_size));
}

void CAviRiffBase::EmitIndexes() noexcept
{
    EmitIndex(m_ix00Object, m_nIx00Offset);
    EmitIndex(m_ix01Object, m_nIx01Offset);
}

void CAviRiffBase::EmitIndex(CAviIxObject& index, uint64_t& position) noexcept
{
    position = m_nBaseOffset + m_nCurOffset;
    const uint32_t length = index.GetBufferLen();
    if (length == 0) return;

    Output(index.GetBuffer(), length, position);
    Advance(length);
}

void CAviRiffBase::Output(const unsigned char* data,
                          uint32_t length,
                          uint64_t position) const noexcept
{
    m_cbOutput(data, length, position, m_pUser);
}

CAviIxObject& CAviRiffBase::IndexOf(eAviStream stream) noexcept
{
    return stream == AVI_VIDEO_STREAM ? m_ix00Object : m_ix01Object;
}

void CAviRiffBase::Advance(uint32_t length) noexcept
{
    m_nCurOffset += length;
    m_nFrameOffset += length;
    m_moviList.size += length;
    m_riffHeader.filesize += length;
}

}  // namespace Orbel::Wrapton
