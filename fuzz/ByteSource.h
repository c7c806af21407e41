#ifndef WRAPTON_FUZZ_BYTESOURCE_H
#define WRAPTON_FUZZ_BYTESOURCE_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

namespace Fuzz
{

/// Hands the input's bytes out one after the other; behind its end there are zeros.
class ByteSource
{
public:
    ByteSource(const uint8_t* data, size_t size) : m_left(data, size) {}

    [[nodiscard]] bool Empty() const { return m_left.empty(); }

    uint8_t U8()
    {
        if (m_left.empty()) return 0;

        const uint8_t byte = m_left.front();
        m_left = m_left.subspan(1);
        return byte;
    }

    uint32_t U16()
    {
        const uint32_t low = U8();
        return low | static_cast<uint32_t>(U8()) << 8;
    }

    uint32_t U32()
    {
        const uint32_t low = U16();
        return low | U16() << 16;
    }

    /// One of the values, chosen by a byte.
    uint32_t Choose(std::span<const uint32_t> values) { return values[U8() % values.size()]; }

    /// The next @p count bytes, fewer at the end.
    std::span<const uint8_t> Take(size_t count)
    {
        const std::span<const uint8_t> taken = m_left.first(std::min(count, m_left.size()));
        m_left = m_left.subspan(taken.size());
        return taken;
    }

private:
    std::span<const uint8_t> m_left;
};

}  // namespace Fuzz

#endif  // WRAPTON_FUZZ_BYTESOURCE_H
