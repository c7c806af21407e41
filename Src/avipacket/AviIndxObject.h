#ifndef WRAPTON_AVIPACKET_AVIINDXOBJECT_H
#define WRAPTON_AVIPACKET_AVIINDXOBJECT_H

#include <array>
#include <cstdint>
#include <span>

#include "avipacket/AviDefs.h"

namespace Orbel::Wrapton
{

/**
 * The super index of one stream (indx), kept as it stands in the file.
 *
 * The chunk has its full length from the start, as "JUNK" until the first entry arrives.
 */
class CAviIndxObject
{
public:
    static constexpr uint32_t kLength = 1032;
    /// Entries that fit the chunk. Later ones are not stored: the recording goes on without them.
    static constexpr uint32_t kMaxEntryCount = 62;

    /// @param chunkId code of the stream's data chunks
    void Init(fourcc_t chunkId) noexcept;
    int InputEntry(const superindex_entry* entry) noexcept;

    [[nodiscard]] std::span<const unsigned char, kLength> GetBuffer() const noexcept
    {
        return m_outputBuffer;
    }
    [[nodiscard]] static constexpr uint32_t GetBufferLen() noexcept { return kLength; }
    [[nodiscard]] uint32_t GetEntryCount() const noexcept { return m_entryCount; }

private:
    void WriteHeader() noexcept;

    fourcc_t m_fourcc = 0;
    uint32_t m_entryCount = 0;
    fourcc_t m_chunkId = 0;
    std::array<unsigned char, kLength> m_outputBuffer{};
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_AVIPACKET_AVIINDXOBJECT_H
