#include "avipacket/AviIdx1Object.h"

#include <array>

#include "Wrapton.h"

namespace Orbel::Wrapton
{
namespace
{

constexpr uint32_t kFirstCapacity = 4096;
constexpr uint32_t kHeaderLen = 8;
constexpr uint32_t kEntryLen = 16;

}  // namespace

int CAviIdx1Object::Init() noexcept
{
    m_objectSize = 0;
    m_entryCount = 0;
    if (m_outputBuffer.Init(kFirstCapacity) != SG_ERR_NOERR) return SG_ERR_MEMORY_OUT;

    const std::array<unsigned char, kHeaderLen> header{};
    m_outputBuffer.StaticAppendBuffer(header.data(), kHeaderLen);
    return SG_ERR_NOERR;
}

int CAviIdx1Object::Reserve() noexcept
{
    return m_outputBuffer.Reserve(kEntryLen) == SG_ERR_NOERR ? SG_ERR_NOERR : SG_ERR_PARAM_ERR;
}

/// AVIOLDINDEX, OpenDML AVI File Format Extensions 1.02 and the RIFF documentation of AVI 1.0.
int CAviIdx1Object::InputEntry(const Avi_Idx1Entry* entry) noexcept
{
    if (entry == nullptr) return SG_ERR_EMPTY_POINTER;
    if (Reserve() != SG_ERR_NOERR) return SG_ERR_PARAM_ERR;

    // Kept: the code takes 8 bytes, which moves flags and offset one field back and leaves no room
    // for the chunk's length.
    std::array<unsigned char, kEntryLen> bytes{};
    CLsbCursor w(bytes);
    w.U64(entry->tag);
    w.U32(entry->key);
    w.U32(entry->offset);
    m_outputBuffer.StaticAppendBuffer(bytes.data(), kEntryLen);

    m_objectSize += kEntryLen;
    ++m_entryCount;
    return SG_ERR_NOERR;
}

const unsigned char* CAviIdx1Object::GetBuffer() noexcept
{
    WriteHeader();
    return m_outputBuffer.GetPointer();
}

uint32_t CAviIdx1Object::GetBufferLen() const noexcept
{
    return static_cast<uint32_t>(m_outputBuffer.GetDataLen());
}

void CAviIdx1Object::WriteHeader() noexcept
{
    if (m_outputBuffer.GetPointer() == nullptr) return;

    CLsbCursor w({m_outputBuffer.GetPointer(), kHeaderLen});
    w.FourCC("idx1");
    w.U32(m_objectSize);
}

}  // namespace Orbel::Wrapton
