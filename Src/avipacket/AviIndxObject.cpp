#include "avipacket/AviIndxObject.h"

#include "Wrapton.h"

namespace Orbel::Wrapton
{
namespace
{

constexpr uint32_t kChunkHeaderLen = 8;
constexpr uint32_t kHeaderLen = kChunkHeaderLen + 2 + 1 + 1 + 4 + 4 + 12;
constexpr uint32_t kEntryLen = 16;
/// Kept: the chunk claims its reserved size whatever the number of entries.
constexpr uint32_t kObjectSize = CAviIndxObject::kLength - kChunkHeaderLen;
static_assert(kObjectSize == 1024);
static_assert(kHeaderLen == 32);
static_assert(kHeaderLen + kEntryLen * CAviIndxObject::kMaxEntryCount <= CAviIndxObject::kLength);
static_assert(kHeaderLen + kEntryLen * (CAviIndxObject::kMaxEntryCount + 1) >
              CAviIndxObject::kLength);

constexpr uint32_t kLongsPerEntry = 4;
constexpr uint8_t kIndexSubType = 0;
constexpr uint8_t kIndexOfIndexes = 0;  // AVI_INDEX_OF_INDEXES

}  // namespace

void CAviIndxObject::Init(fourcc_t chunkId) noexcept
{
    m_fourcc = FourCc("JUNK");
    m_entryCount = 0;
    m_chunkId = chunkId;
    m_outputBuffer.fill(0);
    WriteHeader();
}

int CAviIndxObject::InputEntry(const superindex_entry* entry) noexcept
{
    if (entry == nullptr) return SG_ERR_EMPTY_POINTER;
    if (m_entryCount == kMaxEntryCount) return SG_ERR_NOERR;

    const std::span<unsigned char> image(m_outputBuffer);
    CLsbCursor w(image.subspan(kHeaderLen + kEntryLen * m_entryCount, kEntryLen));
    w.U64(entry->offset);
    w.U32(entry->size);
    // Kept: dwDuration holds the number of chunks, not stream ticks.
    w.U32(entry->entrycount);

    m_fourcc = FourCc("indx");
    ++m_entryCount;
    WriteHeader();
    return SG_ERR_NOERR;
}

/// AVISUPERINDEX without its entries, OpenDML AVI File Format Extensions 1.02.
void CAviIndxObject::WriteHeader() noexcept
{
    CLsbCursor w(m_outputBuffer);
    PutFourCC(w, m_fourcc);
    w.U32(kObjectSize);
    w.U16(kLongsPerEntry);
    w.U8(kIndexSubType);
    w.U8(kIndexOfIndexes);
    w.U32(m_entryCount);
    PutFourCC(w, m_chunkId);
    w.Fill(12, 0);  // dwReserved[3]
}

}  // namespace Orbel::Wrapton
