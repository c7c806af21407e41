#ifndef WRAPTON_MP4PACKET_BOX_ENTRYTABLE_H
#define WRAPTON_MP4PACKET_BOX_ENTRYTABLE_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace Orbel::Wrapton
{

/**
 * A table of big-endian 32-bit entries that doubles its room, kept as it stands in the file so that
 * it leaves in one piece.
 */
class CEntryTable
{
public:
    static constexpr uint32_t kFirstCount = 2048;

    /// Makes room for one more entry. @return false, with nothing changed, without memory
    [[nodiscard]] bool Reserve() noexcept;

    /// Appends; without memory for a larger table the entry is not taken.
    void Append(uint32_t entry) noexcept;

    [[nodiscard]] uint32_t Count() const noexcept { return m_nEntryCount; }
    [[nodiscard]] uint32_t MaxCount() const noexcept { return m_maxCount; }
    [[nodiscard]] std::span<const unsigned char> Bytes() const noexcept
    {
        return {m_pData.get(), size_t{m_nEntryCount} * kEntryLen};
    }

private:
    static constexpr uint32_t kEntryLen = 4;

    bool Grow(uint32_t count) noexcept;

    uint32_t m_nEntryCount = 0;
    uint32_t m_maxCount = 0;
    std::unique_ptr<unsigned char[]> m_pData;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MP4PACKET_BOX_ENTRYTABLE_H
