#include "avipacket/AviIxObject.h"

#include <array>

#include "Wrapton.h"

namespace Orbel::Wrapton
{
namespace
{

constexpr uint32_t kFirstCapacity = 4096;
constexpr uint32_t kChunkHeaderLen = 8;
constexpr uint32_t kHeaderLen = kChunkHeaderLen + 2 + 1 + 1 + 4 + 4 + 8 + 4;
static_assert(kHeaderLen == 32);
constexpr uint32_t kEntryLen = 8;

constexpr uint32_t kLongsPerEntry = 2;
constexpr uint8_t kIndexSubType = 0;
constexpr uint8_t kIndexOfChunks = 1;  // AVI_INDEX_OF_CHUNKS

}  // namespace

int CAviIxObject::Init(uint32_t stream, uint64_t baseOffset) noexcept
{
    switch (stream)
    {
        case AVI_VIDEO_STREAM:
            m_fourcc = FourCc("ix00");
            m_chunkId = kVideoChunk;
            break;
        case AVI_AUDIO_STREAM:
            m_fourcc = FourCc("ix01");
            m_chunkId = kAudioChunk;
            break;
        default:
            return SG_ERR_PARAM_ERR;
    }
    m_objectSize = kHeaderLen - kChunkHeaderLen;
    m_entryCount = 0;
    m_moviOffset = baseOffset;
    if (m_outputBuffer.Init(kFirstCapacity) != SG_ERR_NOERR) return SG_ERR_MEMORY_OUT;

    const std::array<unsigned char, kHeaderLen> header{};
    m_outputBuffer.StaticAppendBuffer(header.data(), kHeaderLen);
    return SG_ERR_NOERR;
}

int CAviIxObject::Reserve() noexcept
{
    return m_outputBuffer.Reserve(kEntryLen) == SG_ERR_NOERR ? SG_ERR_NOERR : SG_ERR_PARAM_ERR;
}

int CAviIxObject::InputEntry(const stdindex_entry* entry) noexcept
{
    if (entry == nullptr) return SG_ERR_EMPTY_POINTER;
    if (Reserve() != SG_ERR_NOERR) return SG_ERR_PARAM_ERR;

    std::array<unsigned char, kEntryLen> bytes{};
    CLsbCursor w(bytes);
    w.U32(entry->offset);
    w.U32(entry->size);
    m_outputBuffer.StaticAppendBuffer(bytes.data(), kEntryLen);

    m_objectSize += kEntryLen;
    ++m_entryCount;
    return SG_ERR_NOERR;
}

const unsigned char* CAviIxObject::GetBuffer() noexcept
{
    WriteHeader();
    return m_outputBuffer.GetPointer();
}

uint32_t CAviIxObject::GetBufferLen() const noexcept
{
    return m_entryCount == 0 ? 0 : static_cast<uint32_t>(m_outputBuffer.GetDataLen());
}

/// AVISTDINDEX without its entries, OpenDML AVI File Format Extensions 1.02.
void CAviIxObject::WriteHeader() noexcept
{
    if (m_outputBuffer.GetPointer() == nullptr) return;

    CLsbCursor w({m_outputBuffer.GetPointer(), kHeaderLen});
    PutFourCC(w, m_fourcc);
    w.U32(m_objectSize);
    w.U16(kLongsPerEntry);
    w.U8(kIndexSubType);
    w.U8(kIndexOfChunks);
    w.U32(m_entryCount);
    PutFourCC(w, m_chunkId);
    w.U64(m_moviOffset);
    w.U32(0);  // dwReserved3
}

}  // namespace Orbel::Wrapton
