/**
 * @file Platform.h
 * Small types that the C++ interfaces share with their callers.
 */
#ifndef WRAPTON_PLATFORM_H
#define WRAPTON_PLATFORM_H

#include <cstddef>
#include <new>
#include <vector>

namespace Orbel::Wrapton
{

/**
 * A growable packet of bytes, owned by the caller, into which a packager writes its output.
 *
 * A default-constructed packet holds no memory and is not valid yet; Resize() makes it so. Growing
 * keeps the bytes that the packet held and sets the new ones to zero. No operation throws.
 */
class PacketBuffer
{
public:
    PacketBuffer() noexcept = default;

    /// A packet of @p size zero bytes; not valid when there is no memory for them.
    explicit PacketBuffer(std::size_t size) noexcept { Resize(size); }

    /// Whether the packet has memory to write to. It stays valid when it is resized to 0.
    [[nodiscard]] bool IsValid() const noexcept { return m_bytes.capacity() != 0; }

    /**
     * Sets the length in bytes.
     *
     * @return false, with the packet unchanged, when there is no memory for @p size bytes
     */
    bool Resize(std::size_t size) noexcept
    {
        try
        {
            m_bytes.resize(size);
        }
        catch (...)
        {
            return false;
        }
        return true;
    }

    /// The bytes; valid until the next Resize() or the packet's end.
    [[nodiscard]] unsigned char* Data() noexcept { return m_bytes.data(); }
    [[nodiscard]] const unsigned char* Data() const noexcept { return m_bytes.data(); }

    /// The length in bytes.
    [[nodiscard]] std::size_t Size() const noexcept { return m_bytes.size(); }

private:
    std::vector<unsigned char> m_bytes;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_PLATFORM_H
