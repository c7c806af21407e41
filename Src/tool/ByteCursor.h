#ifndef WRAPTON_TOOL_BYTECURSOR_H
#define WRAPTON_TOOL_BYTECURSOR_H

#include <array>
#include <bit>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

#include "tool/StreamTool.h"

namespace Orbel::Wrapton
{

/**
 * Writes a layout field by field into a room of bytes.
 *
 * The cursor counts on past the end of its room without storing: Produced() is what the layout
 * asked for, Overrun() says that it did not fit. Nothing is stored from the first field on that did
 * not fit. A cursor without a room measures.
 */
class CByteCursor
{
public:
    /// Measures only.
    CByteCursor() noexcept = default;
    explicit CByteCursor(std::span<unsigned char> room) noexcept : m_room(room) {}
    CByteCursor(const CByteCursor&) = delete;
    CByteCursor& operator=(const CByteCursor&) = delete;

    [[nodiscard]] size_t Produced() const noexcept { return m_nProduced; }
    [[nodiscard]] bool Overrun() const noexcept { return m_nProduced > m_room.size(); }

    void U8(uint32_t value) noexcept { MSB_uint8_to_memory(Claim(1), static_cast<uint8_t>(value)); }

    /// Four characters, in the order in which they are read.
    void FourCC(const char (&code)[5]) noexcept { Store(code, 4); }

    void Bytes(std::span<const unsigned char> bytes) noexcept { Store(bytes.data(), bytes.size()); }

    void Fill(size_t count, unsigned char value) noexcept
    {
        unsigned char* const place = Claim(count);
        if (place != nullptr && count != 0) std::memset(place, value, count);
    }

    /// The room behind what was produced, empty after an overrun. Bytes that are put there become
    /// a part of the layout by Skip().
    [[nodiscard]] std::span<unsigned char> Left() const noexcept
    {
        return Overrun() ? std::span<unsigned char>() : m_room.subspan(m_nProduced);
    }

    /// Counts @p count bytes that stand in their place already.
    void Skip(size_t count) noexcept { m_nProduced += count; }

    /// The next @p count bytes, for a loop of its own to fill: it has to write all of them. Empty
    /// when they do not fit.
    [[nodiscard]] std::span<unsigned char> Claimed(size_t count) noexcept
    {
        unsigned char* const place = Claim(count);
        return place != nullptr ? std::span(place, count) : std::span<unsigned char>();
    }

protected:
    /// The place of the next @p count bytes; null when they do not fit, which makes every byte
    /// writer write nothing.
    [[nodiscard]] unsigned char* Claim(size_t count) noexcept
    {
        const size_t at = m_nProduced;
        m_nProduced += count;
        return Overrun() ? nullptr : m_room.data() + at;
    }

    /// A place that has been produced and stored already; null when it was not.
    [[nodiscard]] unsigned char* Stored(size_t at, size_t count) noexcept
    {
        const size_t stored = m_nProduced < m_room.size() ? m_nProduced : m_room.size();
        return count <= stored && at <= stored - count ? m_room.data() + at : nullptr;
    }

private:
    void Store(const void* bytes, size_t count) noexcept
    {
        unsigned char* const place = Claim(count);
        if (place != nullptr && count != 0) std::memcpy(place, bytes, count);
    }

    std::span<unsigned char> m_room;
    size_t m_nProduced = 0;
};

/// A value for @p Width bits of a word; higher bits of it are cut off.
template <unsigned Width>
struct Field
{
    static_assert(Width >= 1 && Width <= 32);
    constexpr explicit Field(uint32_t from) noexcept
        : value(from & static_cast<uint32_t>((uint64_t{1} << Width) - 1))
    {
    }
    uint32_t value;
};

/// The word that fields make up, the first in the highest bits.
template <unsigned... Widths>
constexpr uint64_t WordOf(Field<Widths>... fields) noexcept
{
    static_assert((Widths + ...) <= 64);
    uint64_t word = 0;
    ((word = word << Widths | fields.value), ...);
    return word;
}

/// The word that fields make up, the first in the lowest bits: the order in which a little-endian
/// word stands in memory.
template <unsigned... Widths>
constexpr uint64_t LsbWordOf(Field<Widths>... fields) noexcept
{
    static_assert((Widths + ...) <= 64);
    uint64_t word = 0;
    unsigned at = 0;
    ((word |= uint64_t{fields.value} << at, at += Widths), ...);
    return word;
}

/// Four characters as the first field of a little-endian word.
constexpr Field<32> FourCCField(const char (&code)[5]) noexcept
{
    uint32_t value = 0;
    for (unsigned i = 0; i < 4; ++i)
    {
        value |= uint32_t{static_cast<unsigned char>(code[i])} << 8 * i;
    }
    return Field<32>(value);
}

/// Big-endian layouts.
class CMsbCursor : public CByteCursor
{
public:
    using CByteCursor::CByteCursor;

    void U16(uint32_t value) noexcept { MSB_uint16_to_memory(Claim(2), value); }
    void U24(uint32_t value) noexcept { MSB_uint24_to_memory(Claim(3), value); }
    void U32(uint32_t value) noexcept { MSB_uint32_to_memory(Claim(4), value); }
    void U64(uint64_t value) noexcept { MSB_uint64_to_memory(Claim(8), value); }
    void F64(double value) noexcept { MSB_float64_to_memory(Claim(8), value); }
    void CompactInt(int32_t value) noexcept
    {
        MSB_compact_int_to_memory(Claim(CompactIntSize(value)), value);
    }

    /// A word of @p Total bits made of fields, the first in the highest bits.
    template <unsigned Total, unsigned... Widths>
    void Bits(Field<Widths>... fields) noexcept
    {
        static_assert((Widths + ...) == Total, "the fields do not fill the word");
        static_assert(Total % 8 == 0 && Total <= 64);
        // One claim for the whole word: it is stored whole or, at the end of the room, not at all.
        unsigned char* const place = Claim(Total / 8);
        if (place == nullptr) return;

        static_assert(std::endian::native == std::endian::little);
        const uint64_t bytes = __builtin_bswap64(WordOf(fields...) << (64 - Total));
        std::memcpy(place, &bytes, Total / 8);
    }

    /// Rewrites a field that has been produced before.
    void PatchU32(size_t at, uint32_t value) noexcept
    {
        MSB_uint32_to_memory(Stored(at, 4), value);
    }
};

/// Little-endian layouts.
class CLsbCursor : public CByteCursor
{
public:
    using CByteCursor::CByteCursor;

    void U16(uint32_t value) noexcept { LSB_uint16_to_memory(Claim(2), value); }
    void U32(uint32_t value) noexcept { LSB_uint32_to_memory(Claim(4), value); }
    void U64(uint64_t value) noexcept { LSB_uint64_to_memory(Claim(8), value); }
    void Guid(const _GUID& value) noexcept { LSB_guid_to_memory(Claim(16), value); }

    /// Rewrites a field that has been produced before.
    void PatchU32(size_t at, uint32_t value) noexcept
    {
        LSB_uint32_to_memory(Stored(at, 4), value);
    }
};

/// Writes a layout of exactly @p Count bytes, all of it or, at the end of the room, nothing. It has
/// a cursor of its own, whose room is known to suffice: neither places nor checks are left of it.
template <size_t Count, class Cursor, class Layout>
[[gnu::always_inline]] inline void PutWhole(Cursor& w, Layout layout) noexcept
{
    const std::span<unsigned char> room = w.Claimed(Count);
    if (room.empty()) return;

    Cursor whole(room.first<Count>());
    layout(whole);
    assert(whole.Produced() == Count);
}

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_TOOL_BYTECURSOR_H
