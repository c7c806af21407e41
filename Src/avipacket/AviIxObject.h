#ifndef WRAPTON_AVIPACKET_AVIIXOBJECT_H
#define WRAPTON_AVIPACKET_AVIIXOBJECT_H

#include <cstdint>

#include "avipacket/AviDefs.h"
#include "tool/DynamicBuffer.h"

namespace Orbel::Wrapton
{

/// The standard index of one stream in one RIFF (ix00 or ix01), kept as it stands in the file.
class CAviIxObject
{
public:
    /// @param stream eAviStream
    /// @param baseOffset absolute position of the RIFF's "movi" code
    int Init(uint32_t stream, uint64_t baseOffset) noexcept;
    /// Makes room for one more entry; a failure changes nothing.
    int Reserve() noexcept;
    int InputEntry(const stdindex_entry* entry) noexcept;

    /// The chunk; its header is brought up to date here, not with every entry.
    [[nodiscard]] const unsigned char* GetBuffer() noexcept;
    /// 0 while there are no entries: the chunk is left out then.
    [[nodiscard]] uint32_t GetBufferLen() const noexcept;
    [[nodiscard]] uint32_t GetEntryCount() const noexcept { return m_entryCount; }

private:
    void WriteHeader() noexcept;

    fourcc_t m_fourcc = 0;
    uint32_t m_objectSize = 0;  // payload bytes
    uint32_t m_entryCount = 0;
    fourcc_t m_chunkId = 0;
    uint64_t m_moviOffset = 0;
    CDynamicBuffer m_outputBuffer;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_AVIPACKET_AVIIXOBJECT_H
