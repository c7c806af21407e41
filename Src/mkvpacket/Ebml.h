#ifndef WRAPTON_MKVPACKET_EBML_H
#define WRAPTON_MKVPACKET_EBML_H

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "tool/ByteCursor.h"

namespace Orbel::Wrapton
{

/// Numbers of variable length, RFC 8794 4.
class CEbml
{
public:
    /**
     * Encodes a size in 1 to 4 bytes; sizes whose data bits would all be one take the next length.
     *
     * @return the encoded bytes, in a buffer of this thread that the next call uses again; null for
     *         a size that 4 bytes do not hold
     */
    static const unsigned char* GetsizeID(uint64_t size, uint32_t& length) noexcept;

    /// The 8-byte form of a size, to be written big-endian.
    static constexpr uint64_t SetID(uint64_t size) noexcept { return size | uint64_t{1} << 56; }

    /**
     * Reads a number of @p expected bytes.
     *
     * @return its length; 0 for a null buffer, -1 when the number has another length
     */
    static int Getvint(const unsigned char* buffer, int expected, uint64_t& value) noexcept;

private:
    static thread_local std::array<unsigned char, 8> s_arrBuffer;
};

/// An element ID, RFC 8794 5: written with its marker bit, which must agree with its length.
class EbmlId
{
public:
    consteval explicit EbmlId(uint32_t id) : m_id(id)
    {
        if (std::countl_zero(id) % 8 != static_cast<int>(Length()) - 1) throw "malformed ID";
    }

    [[nodiscard]] constexpr uint32_t Value() const noexcept { return m_id; }
    [[nodiscard]] constexpr uint32_t Length() const noexcept
    {
        return 4 - static_cast<uint32_t>(std::countl_zero(m_id)) / 8;
    }

private:
    uint32_t m_id;
};

void PutId(CMsbCursor& w, EbmlId id) noexcept;
/// A size in its shortest form, at most 268435454.
void PutSize(CMsbCursor& w, uint64_t size) noexcept;

// Elements whole, with their size in one byte or, for bytes, its shortest form.

void PutUint8(CMsbCursor& w, EbmlId id, uint32_t value) noexcept;
void PutUint16(CMsbCursor& w, EbmlId id, uint32_t value) noexcept;
void PutUint24(CMsbCursor& w, EbmlId id, uint32_t value) noexcept;
void PutUint32(CMsbCursor& w, EbmlId id, uint32_t value) noexcept;
void PutUint64(CMsbCursor& w, EbmlId id, uint64_t value) noexcept;
void PutFloat64(CMsbCursor& w, EbmlId id, double value) noexcept;
void PutBytes(CMsbCursor& w, EbmlId id, std::span<const unsigned char> bytes) noexcept;
/// The characters without a terminator.
void PutString(CMsbCursor& w, EbmlId id, std::string_view text) noexcept;

/// A master element with a size of 8 bytes, which is filled in when the scope ends.
class CEbmlScope
{
public:
    CEbmlScope(CMsbCursor& w, EbmlId id) noexcept;
    ~CEbmlScope();
    CEbmlScope(const CEbmlScope&) = delete;
    CEbmlScope& operator=(const CEbmlScope&) = delete;

private:
    CMsbCursor& m_cursor;
    size_t m_begin;  // of the contents
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MKVPACKET_EBML_H
