#include "readers/RtpReader.h"

#include <string>
#include <utility>

namespace Readers
{
namespace
{

/// Takes bytes off the front of a buffer.
class Front
{
public:
    explicit Front(const RtpBytes& bytes) : m_bytes(bytes) {}

    [[nodiscard]] std::size_t Left() const { return m_bytes.size() - m_at; }

    RtpBytes Take(std::size_t count)
    {
        if (count > Left())
        {
            throw RtpError("at byte " + std::to_string(m_at) + ": " + std::to_string(count) +
                           " bytes announced, " + std::to_string(Left()) + " there");
        }
        const auto from = m_bytes.begin() + static_cast<std::ptrdiff_t>(m_at);
        m_at += count;
        return {from, from + static_cast<std::ptrdiff_t>(count)};
    }

    uint32_t Number(std::size_t count)
    {
        uint32_t number = 0;
        for (const unsigned char byte : Take(count))
        {
            number = number << 8 | byte;
        }
        return number;
    }

private:
    const RtpBytes& m_bytes;
    std::size_t m_at = 0;
};

void Append(RtpBytes& to, const RtpBytes& from, std::size_t skipped)
{
    to.insert(to.end(), from.begin() + static_cast<std::ptrdiff_t>(skipped), from.end());
}

std::string Named(const RtpPacket& packet)
{
    return "packet " + std::to_string(packet.sequence);
}

constexpr unsigned kFuA = 28;

}  // namespace

RtpPacket ReadRtpPacket(const RtpBytes& bytes)
{
    RtpPacket packet;
    packet.length = bytes.size();
    Front front(bytes);
    const uint32_t first = front.Number(1);
    if (first >> 6 != 2)
    {
        throw RtpError("version " + std::to_string(first >> 6));
    }
    const uint32_t second = front.Number(1);
    packet.marker = second >= 0x80;
    packet.payloadType = second & 0x7F;
    packet.sequence = front.Number(2);
    packet.timestamp = front.Number(4);
    packet.ssrc = front.Number(4);
    front.Take(std::size_t{4} * (first & 0x0F));  // contributing sources
    if ((first & 0x10) != 0)
    {
        RtpExtension extension;
        extension.profile = front.Number(2);
        const uint32_t words = front.Number(2);
        extension.words = front.Take(std::size_t{4} * words);
        packet.extension = std::move(extension);
    }
    packet.payload = front.Take(front.Left());
    if ((first & 0x20) != 0)
    {
        if (packet.payload.empty() || packet.payload.back() == 0 ||
            packet.payload.back() > packet.payload.size())
        {
            throw RtpError(Named(packet) + ": padding without a length");
        }
        packet.payload.erase(packet.payload.end() - packet.payload.back(), packet.payload.end());
    }
    return packet;
}

std::vector<RtpPacket> ReadRtpPackets(const RtpBytes& bytes, std::size_t customLength)
{
    std::vector<RtpPacket> packets;
    Front front(bytes);
    while (front.Left() != 0)
    {
        RtpBytes custom = front.Take(customLength);
        const uint32_t length = front.Number(2);
        packets.push_back(ReadRtpPacket(front.Take(length)));
        packets.back().custom = std::move(custom);
    }
    return packets;
}

void CheckSequence(const std::vector<RtpPacket>& packets)
{
    for (std::size_t i = 1; i < packets.size(); ++i)
    {
        if (packets[i].sequence != ((packets[i - 1].sequence + 1) & 0xFFFF))
        {
            throw RtpError(Named(packets[i]) + " behind " + Named(packets[i - 1]));
        }
    }
}

std::vector<RtpBytes> ReadNalUnits(const std::vector<RtpPacket>& packets)
{
    std::vector<RtpBytes> units;
    bool open = false;
    for (const RtpPacket& packet : packets)
    {
        const RtpBytes& payload = packet.payload;
        if (payload.empty())
        {
            throw RtpError(Named(packet) + " is empty");
        }
        const unsigned type = payload[0] & 0x1Fu;
        if (type != kFuA)
        {
            if (open || type == 0 || type > 23)
            {
                throw RtpError(Named(packet) + ": type " + std::to_string(type));
            }
            units.push_back(payload);
            continue;
        }
        if (payload.size() < 3)
        {
            throw RtpError(Named(packet) + ": a fragment without data");
        }
        const bool start = (payload[1] & 0x80) != 0;
        const bool end = (payload[1] & 0x40) != 0;
        const unsigned header = (payload[0] & 0xE0u) | (payload[1] & 0x1Fu);
        if (start == open || (start && end) || (payload[1] & 0x20) != 0)
        {
            throw RtpError(Named(packet) + ": start and end bits out of order");
        }
        if (start)
        {
            units.push_back({static_cast<unsigned char>(header)});
        }
        if (units.back()[0] != header)
        {
            throw RtpError(Named(packet) + ": the NAL header changes inside a unit");
        }
        Append(units.back(), payload, 2);
        open = !end;
    }
    if (open)
    {
        throw RtpError("the last unit does not end");
    }
    return units;
}

std::vector<RtpBytes> ReadPlainFrames(const std::vector<RtpPacket>& packets)
{
    std::vector<RtpBytes> frames;
    bool open = false;
    for (const RtpPacket& packet : packets)
    {
        if (!open)
        {
            frames.emplace_back();
        }
        Append(frames.back(), packet.payload, 0);
        open = !packet.marker;
    }
    if (open)
    {
        throw RtpError("the last frame does not end");
    }
    return frames;
}

}  // namespace Readers
