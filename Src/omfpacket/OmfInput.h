#ifndef WRAPTON_OMFPACKET_OMFINPUT_H
#define WRAPTON_OMFPACKET_OMFINPUT_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace Orbel::Wrapton
{

/// Bytes that can be read from any position. Nothing but these two operations is asked of a
/// recording, however large it is.
class COmfInput
{
public:
    COmfInput() = default;
    COmfInput(const COmfInput&) = delete;
    COmfInput& operator=(const COmfInput&) = delete;
    virtual ~COmfInput() = default;

    [[nodiscard]] virtual uint64_t Size() const = 0;

    /// At least @p count bytes from @p at on, more when they are at hand, fewer only where the
    /// input ends. Valid until the next call.
    virtual std::span<const unsigned char> View(uint64_t at, size_t count) = 0;

    /// Copies bytes from @p at on without giving up the last view. @return how many there were
    virtual size_t Peek(uint64_t at, std::span<unsigned char> to) = 0;
};

/// A recording in memory.
class COmfMemory final : public COmfInput
{
public:
    /// @param bytes the caller's, not copied
    explicit COmfMemory(std::span<const unsigned char> bytes) : m_bytes(bytes) {}

    [[nodiscard]] uint64_t Size() const override { return m_bytes.size(); }
    std::span<const unsigned char> View(uint64_t at, size_t count) override;
    size_t Peek(uint64_t at, std::span<unsigned char> to) override;

private:
    std::span<const unsigned char> m_bytes;
};

/// A recording in a regular file, read a window at a time. Its size is that at the opening. Throws
/// std::system_error, from any operation, when the file cannot be read.
class COmfFile final : public COmfInput
{
public:
    /// @param read_ahead bytes that a view fetches at least when it has to read
    COmfFile(const std::string& path, size_t read_ahead);
    ~COmfFile() override;

    [[nodiscard]] uint64_t Size() const override { return m_nSize; }
    std::span<const unsigned char> View(uint64_t at, size_t count) override;
    size_t Peek(uint64_t at, std::span<unsigned char> to) override;

private:
    [[nodiscard]] std::span<const unsigned char> Window() const { return {m_window.get(), m_nLen}; }
    void Move(uint64_t at, size_t count);
    [[nodiscard]] size_t ReadAt(uint64_t at, std::span<unsigned char> to) const;

    int m_nFile;
    uint64_t m_nSize = 0;
    size_t m_nReadAhead;
    std::unique_ptr<unsigned char[]> m_window;
    size_t m_nRoom = 0;  // bytes at m_window
    uint64_t m_nAt = 0;  // position of the window in the file
    size_t m_nLen = 0;   // bytes of the file in the window
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_OMFPACKET_OMFINPUT_H
