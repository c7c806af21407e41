#ifndef WRAPTON_AVIPACKET_AVIIDX1OBJECT_H
#define WRAPTON_AVIPACKET_AVIIDX1OBJECT_H

#include <cstdint>

#include "avipacket/AviDefs.h"
#include "tool/DynamicBuffer.h"

namespace Orbel::Wrapton
{

/// The idx1 chunk of the first RIFF, kept as it stands in the file: header and entries.
class CAviIdx1Object
{
public:
    int Init() noexcept;
    /// Makes room for one more entry; a failure changes nothing.
    int Reserve() noexcept;
    int InputEntry(const Avi_Idx1Entry* entry) noexcept;

    /// The chunk; its header is brought up to date here, not with every entry.
    [[nodiscard]] const unsigned char* GetBuffer() noexcept;
    [[nodiscard]] uint32_t GetBufferLen() const noexcept;
    [[nodiscard]] uint32_t GetEntryCount() const noexcept { return m_entryCount; }

private:
    void WriteHeader() noexcept;

    uint32_t m_objectSize = 0;  // payload bytes
    uint32_t m_entryCount = 0;
    CDynamicBuffer m_outputBuffer;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_AVIPACKET_AVIIDX1OBJECT_H
