#include "readers/PsReader.h"

#include <string>

namespace Readers
{
namespace
{

using Span = std::span<const unsigned char>;

constexpr uint32_t kPack = 0xBA;
constexpr uint32_t kSystem = 0xBB;
constexpr uint32_t kMap = 0xBC;
constexpr uint32_t kAudio = 0xC0;
constexpr uint32_t kVideo = 0xE0;

void Require(bool holds, const std::string& what)
{
    if (!holds) throw PsError("program stream: " + what);
}

/// Takes bytes off the front.
class Front
{
public:
    explicit Front(Span bytes) : m_bytes(bytes) {}

    [[nodiscard]] Span Left() const { return m_bytes; }

    Span Take(std::size_t count)
    {
        Require(count <= m_bytes.size(), "a structure that is cut off");
        const Span taken = m_bytes.first(count);
        m_bytes = m_bytes.subspan(count);
        return taken;
    }

    uint64_t Number(std::size_t count)
    {
        uint64_t number = 0;
        for (const unsigned char byte : Take(count))
        {
            number = number << 8 | byte;
        }
        return number;
    }

private:
    Span m_bytes;
};

/// Bits @p from to @p to of a field, the lowest being 0.
uint64_t Bits(uint64_t field, unsigned from, unsigned to)
{
    return field >> to & ((uint64_t{1} << (from - to + 1)) - 1);
}

/// 33 bits with a marker behind each part, as PTS, DTS and SCR have them.
uint64_t Clock(uint64_t field, unsigned first, unsigned second, unsigned third)
{
    Require(
        (Bits(field, first, first) & Bits(field, second, second) & Bits(field, third, third)) != 0,
        "a clock without its markers");
    return Bits(field, first + 3, first + 1) << 30 | Bits(field, first - 1, second + 1) << 15 |
           Bits(field, second - 1, third + 1);
}

uint64_t TimeStamp(Front& front, uint64_t prefix)
{
    const uint64_t field = front.Number(5);
    Require(Bits(field, 39, 36) == prefix, "a time stamp with another prefix");
    return Clock(field, 32, 16, 0);
}

uint64_t PackClock(Front& front)
{
    const uint64_t field = front.Number(6);
    Require(Bits(field, 47, 46) == 1, "no pack of MPEG-2");
    Require((field & 1) == 1, "a clock without its last marker");
    Require((front.Number(3) & 3) == 3, "a rate without its markers");
    const uint64_t stuffing = front.Number(1) & 7;
    for (const unsigned char byte : front.Take(stuffing))
    {
        Require(byte == 0xFF, "other stuffing");
    }
    return Clock(field, 42, 26, 10);
}

PesPacket ReadPes(uint32_t stream, Front body)
{
    PesPacket packet;
    packet.stream = stream;
    Require(body.Number(1) == 0x80, "PES flags that are never set");
    const uint64_t flags = body.Number(1) >> 6;
    Front header(body.Take(body.Number(1)));
    if (flags >= 2) packet.pts = TimeStamp(header, flags);
    if (flags == 3) packet.dts = TimeStamp(header, 1);
    packet.payload.assign(body.Left().begin(), body.Left().end());
    return packet;
}

}  // namespace

ProgramStream ReadPs(Span bytes, std::size_t mapSurplus)
{
    ProgramStream stream;
    Front front(bytes);
    while (!front.Left().empty())
    {
        Require(front.Number(3) == 1, "no start code where a structure ends");
        const auto code = static_cast<uint32_t>(front.Number(1));
        if (code == kPack)
        {
            stream.clocks.push_back(PackClock(front));
            continue;
        }
        const Front body(front.Take(front.Number(2) - (code == kMap ? mapSurplus : 0)));
        switch (code)
        {
            case kSystem:
                ++stream.systemHeaders;
                break;
            case kMap:
                ++stream.maps;
                break;
            case kAudio:
            case kVideo:
                stream.packets.push_back(ReadPes(code, body));
                break;
            default:
                Require(false, "a structure of code " + std::to_string(code));
        }
    }
    return stream;
}

}  // namespace Readers
