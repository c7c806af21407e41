#ifndef WRAPTON_PSPACKET_PSOUTPUT_H
#define WRAPTON_PSPACKET_PSOUTPUT_H

#include <climits>
#include <cstddef>
#include <optional>
#include <span>

#include "Platform.h"
#include "tool/ByteCursor.h"
#include "tool/CacheLine.h"

namespace Orbel::Wrapton
{

/**
 * Where a flavour writes one frame: the packager's work buffer, or a caller's packet. The packet
 * grows as needed and has its old size again when this object ends.
 */
class CPsOutput
{
public:
    explicit CPsOutput(std::span<unsigned char> buffer) noexcept : m_buffer(buffer) {}
    /// @param ahead bytes ahead of the payload of most frames: it decides where in the buffer they
    ///        are written
    CPsOutput(std::span<unsigned char> buffer, size_t ahead) noexcept
        : m_buffer(buffer), m_ahead(ahead)
    {
    }
    explicit CPsOutput(PacketBuffer& packet) noexcept
        : m_buffer(packet.Data(), packet.Size()), m_pPacket(&packet), m_nPacketSize(packet.Size())
    {
    }
    CPsOutput(const CPsOutput&) = delete;
    CPsOutput& operator=(const CPsOutput&) = delete;
    ~CPsOutput()
    {
        if (m_pPacket != nullptr) m_pPacket->Resize(m_nPacketSize);
    }

    /// Whether there is memory to write to at all.
    [[nodiscard]] bool IsValid() const noexcept
    {
        return m_pPacket != nullptr ? m_pPacket->IsValid() : m_buffer.data() != nullptr;
    }

    /// Room for the @p length bytes of a frame, asked for once and before anything is written;
    /// empty when there is not as much.
    [[nodiscard]] std::span<unsigned char> Claim(size_t length) noexcept
    {
        if (length > INT_MAX) return {};  // a block's size is a signed 32-bit number
        if (m_pPacket != nullptr && length > m_buffer.size() && m_pPacket->Resize(length))
        {
            m_buffer = {m_pPacket->Data(), m_pPacket->Size()};
        }
        if (m_ahead.has_value()) m_buffer = AlignPayload(m_buffer, *m_ahead, length);
        return length <= m_buffer.size() ? m_buffer.first(length) : std::span<unsigned char>();
    }

    /// Writes a frame whose length is not known ahead. @p layout fills a cursor, with the same
    /// bytes whenever it is called. @return the length; 0 when there is not as much room. A packet
    /// is as it was then.
    template <class Layout>
    [[nodiscard]] size_t Write(const Layout& layout)
    {
        if (m_pPacket != nullptr)
        {
            CMsbCursor measure;
            layout(measure);
            return Claim(measure.Produced()).empty() ? 0 : Fill(layout);
        }
        const auto whole = m_buffer;
        if (m_ahead.has_value()) m_buffer = AlignPayload(whole, *m_ahead, 0);
        const size_t length = Fill(layout);
        if (length != 0 || m_buffer.size() == whole.size()) return length;

        m_buffer = whole;
        return Fill(layout);
    }

    /// What was written, from its first byte on.
    [[nodiscard]] const unsigned char* Data() const noexcept { return m_buffer.data(); }

private:
    template <class Layout>
    size_t Fill(const Layout& layout)
    {
        CMsbCursor w(m_buffer);
        layout(w);
        return w.Overrun() || w.Produced() > INT_MAX ? 0 : w.Produced();
    }

    std::span<unsigned char> m_buffer;
    std::optional<size_t> m_ahead;
    PacketBuffer* m_pPacket = nullptr;
    size_t m_nPacketSize = 0;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_PSPACKET_PSOUTPUT_H
