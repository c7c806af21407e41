#ifndef WRAPTON_TOOL_DYNAMICBUFFER_H
#define WRAPTON_TOOL_DYNAMICBUFFER_H

#include <cstddef>
#include <memory>
#include <span>

namespace Orbel::Wrapton
{

/**
 * A growable byte buffer with a fixed growth rule: 16384 bytes first, then doubling while the
 * capacity is at most 256000, then steps of 65536. Results are SG_ERR_TYPE codes.
 *
 * The rule decides MaxSize(). The storage behind it doubles ahead of the rule, so that a table of
 * millions of entries is not moved again at every 64 KiB. Memory that nothing was written to yet
 * takes no page.
 */
class CDynamicBuffer
{
public:
    static constexpr int BUFFER_START_BASE = 16384;
    static constexpr int REALLOC_STEP = 65536;
    static constexpr int DOUBLE_SIZE_THRELOD = 256000;  // spelled so in the interface

    /// Replaces the storage by @p size zeroed bytes and empties the buffer.
    int Init(unsigned int size) noexcept;

    /// Empties the buffer; the storage stays. @return 0
    int Clear() noexcept;

    /// Appends and grows as often as needed. A failed growth may lose the content, see ReAlloc().
    int AppendBuffer(const unsigned char* data, unsigned int len) noexcept;

    /// Appends if there is room, never grows.
    int StaticAppendBuffer(const unsigned char* data, unsigned int len) noexcept;

    /// Grows by one step of the rule. When there is no memory for the new storage the old one is
    /// gone by then: the buffer is left without storage and empty.
    int ReAlloc() noexcept;

    /// Grows by the rule until @p len more bytes fit. Unlike ReAlloc() a failure changes nothing.
    int Reserve(unsigned int len) noexcept;

    [[nodiscard]] unsigned char* GetPointer() noexcept { return m_pBuffer.get(); }
    [[nodiscard]] int GetDataLen() const noexcept { return m_nDataLen; }
    [[nodiscard]] int MaxSize() const noexcept { return m_nMaxSize; }
    [[nodiscard]] std::span<const unsigned char> Data() const noexcept
    {
        return {m_pBuffer.get(), static_cast<size_t>(m_nDataLen)};
    }
    [[nodiscard]] unsigned char& operator[](int index) noexcept
    {
        return m_pBuffer[static_cast<size_t>(index)];
    }

private:
    [[nodiscard]] bool Fits(unsigned int len) const noexcept;
    bool Enlarge(int capacity) noexcept;

    std::unique_ptr<unsigned char[]> m_pBuffer;
    int m_nMaxSize = 0;     // capacity by the rule
    int m_nDataLen = 0;     // bytes in use
    size_t m_nStorage = 0;  // bytes at m_pBuffer, never fewer than m_nMaxSize while it exists
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_TOOL_DYNAMICBUFFER_H
