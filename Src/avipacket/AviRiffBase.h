#ifndef WRAPTON_AVIPACKET_AVIRIFFBASE_H
#define WRAPTON_AVIPACKET_AVIRIFFBASE_H

#include <cstdint>

#include "Wrapton.h"
#include "avipacket/AviDefs.h"
#include "avipacket/AviIxObject.h"
#include "tool/DynamicBuffer.h"

namespace Orbel::Wrapton
{

/**
 * What the first RIFF and its extensions have in common: data chunks, the standard index of each
 * stream, and the sizes that grow with both.
 *
 * Positions inside a RIFF are 32 bits wide: a RIFF is closed once its size passes 1 GiB.
 */
class CAviRiffBase
{
public:
    /// The header was emitted.
    [[nodiscard]] bool HasBegun() const noexcept { return m_cbOutput != nullptr; }

    /// The RIFF's size field.
    [[nodiscard]] uint32_t Size() const noexcept { return m_riffHeader.filesize; }

    /// The standard index of @p stream where it was written last, as the super index wants it.
    [[nodiscard]] superindex_entry IndexEntry(eAviStream stream) const noexcept;

protected:
    CAviRiffBase() = default;
    ~CAviRiffBase() = default;
    CAviRiffBase(CAviRiffBase&&) = default;
    CAviRiffBase& operator=(CAviRiffBase&&) = default;

    /// A chunk with @p size bytes of data, header and padding included, fits a block of output.
    [[nodiscard]] static bool FitsBlock(uint32_t size) noexcept;

    int InitIndexes(uint64_t moviCodeOffset) noexcept;

    /// Makes room for a chunk with @p size bytes of data and for its index entry. A failure leaves
    /// no trace.
    int Reserve(eAviStream stream, uint32_t size) noexcept;

    /// Emits @p frame, for which room was reserved, as a data chunk and enters it into the standard
    /// index.
    void EmitChunk(eAviStream stream, const SGFrameInfo& frame) noexcept;
    /// Moves on behind the chunk of @p frame.
    void PassChunk(const SGFrameInfo& frame) noexcept;
    /// Emits the standard indexes; one without entries is left out.
    void EmitIndexes() noexcept;
    void Output(const unsigned char* data, uint32_t length, uint64_t position) const noexcept;

    pRiffCallback m_cbOutput = nullptr;  // null: not begun
    void* m_pUser = nullptr;
    uint64_t m_nBaseOffset = 0;   // of the RIFF in the file
    uint32_t m_nCurOffset = 0;    // of the next byte in the RIFF
    uint32_t m_nFrameOffset = 4;  // of the next chunk, relative to the "movi" code
    Avi_FileHeader m_riffHeader;
    Avi_MovieList m_moviList;

private:
    void EmitIndex(CAviIxObject& index, uint64_t& position) noexcept;
    [[nodiscard]] CAviIxObject& IndexOf(eAviStream stream) noexcept;
    void Advance(uint32_t length) noexcept;

    uint64_t m_nIx00Offset = 0;  // where the standard indexes were written last
    uint64_t m_nIx01Offset = 0;
    CAviIxObject m_ix00Object;
    CAviIxObject m_ix01Object;
    CDynamicBuffer m_outputBuffer;  // the chunk under way
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_AVIPACKET_AVIRIFFBASE_H
