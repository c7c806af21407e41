#ifndef WRAPTON_PSPACKET_PSOUTPUT_H
#define WRAPTON_PSPACKET_PSOUTPUT_H

#include <climits>
#include <cstddef>
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
    /// Frames begin where the buffer does.
    explicit CPsOutput(std::span<unsigned char> buffer) noexcept : m_buffer(buffer), m_whole(buffer)
    {
    }
    /// @param ahead bytes ahead of the payload of most frames: it decides where in the buffer they
    ///        are written
    CPsOutput(std::span<unsigned char> buffer, size_t ahead) noexcept
        : m_buffer(AlignPayload(buffer, ahead, 0)), m_whole(buffer)
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

    /// Writes a frame. @p layout fills a cursor, with as many bytes whenever it is called: a packet
    /// is measured for it first. @return the length; 0 when there is not as much room, a packet is
    /// then as it was
    template <class Layout>
    [[nodiscard]] int Write(const Layout& layout)
    {
        if (m_pPacket != nullptr)
        {
            CMsbCursor measure;
            layout(measure);
            return GrowPacket(measure.Produced()) ? Fill(layout) : 0;
        }
        const int length = Fill(layout);
        if (length != 0 || m_buffer.size() == m_whole.size()) return length;

        m_buffer = m_whole;
        return Fill(layout);
    }

    /// What was written, from its first byte on.
    [[nodiscard]] const unsigned char* Data() const noexcept { return m_buffer.data(); }

private:
    /// Flat, so that the cursor lives in registers: through memory it costs more than what is
    /// written.
    template <class Layout>
    [[gnu::flatten]] int Fill(const Layout& layout)
    {
        CMsbCursor w(m_buffer);
        layout(w);
        return w.Overrun() || w.Produced() > INT_MAX ? 0 : static_cast<int>(w.Produced());
    }

    bool GrowPacket(size_t length) noexcept
    {
        if (length > INT_MAX) return false;  // a block's size is a signed 32-bit number
        if (length > m_buffer.size() && m_pPacket->Resize(length))
        {
            m_buffer = {m_pPacket->Data(), m_pPacket->Size()};
        }
        return length <= m_buffer.size();
    }

    std::span<unsigned char> m_buffer;
    std::span<unsigned char> m_whole;  // of the work buffer, for a frame that fits nowhere else
    PacketBuffer* m_pPacket = nullptr;
    size_t m_nPacketSize = 0;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_PSPACKET_PSOUTPUT_H
