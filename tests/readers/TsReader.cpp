#include "readers/TsReader.h"

namespace Readers
{
namespace
{

using Span = std::span<const unsigned char>;

constexpr std::size_t kPacketSize = 188;

void Require(bool condition, const std::string& what)
{
    if (!condition)
    {
        throw TsError(what);
    }
}

uint32_t Number(Span bytes, std::size_t at, std::size_t width)
{
    Require(at + width <= bytes.size(), "a field beyond the end");
    uint32_t value = 0;
    for (std::size_t i = 0; i < width; ++i)
    {
        value = value << 8 | bytes[at + i];
    }
    return value;
}

/// Remainder by the polynomial of annex A, a bit at a time from the highest on.
bool HasGoodCrc(Span section)
{
    uint32_t remainder = 0xFFFFFFFF;
    for (const unsigned char byte : section)
    {
        for (int bit = 7; bit >= 0; --bit)
        {
            const bool carry = ((remainder >> 31) ^ ((byte >> bit) & 1u)) != 0;
            remainder = remainder << 1 ^ (carry ? 0x04C11DB7u : 0u);
        }
    }
    return remainder == 0;  // over the CRC field, too
}

uint64_t TimeStamp(Span bytes, std::size_t at, uint32_t prefix)
{
    const uint64_t first = Number(bytes, at, 1);
    const uint64_t middle = Number(bytes, at + 1, 2);
    const uint64_t last = Number(bytes, at + 3, 2);
    Require(first >> 4 == prefix, "a time stamp with another prefix");
    Require((first & middle & last & 1) == 1, "a time stamp without its markers");
    return (first >> 1 & 7) << 30 | middle >> 1 << 15 | last >> 1;
}

}  // namespace

void TsReader::Read(Span packets)
{
    Require(packets.size() % kPacketSize == 0, "not whole packets");
    for (std::size_t at = 0; at < packets.size(); at += kPacketSize)
    {
        const Packet packet = ReadPacket(packets.subspan(at, kPacketSize));
        if (packet.pid == 0 || packet.pid == m_mapPid)
        {
            Require(packet.unitStart, "a section over several packets");
            ReadSection(packet.pid, packet.payload);
        }
        else
        {
            ReadPes(packet);
        }
    }
}

TsReader::Packet TsReader::ReadPacket(Span bytes)
{
    Require(bytes[0] == 0x47, "no sync byte");
    const uint32_t control = bytes[3] >> 4;
    Packet packet;
    packet.pid = Number(bytes, 1, 2) & 0x1FFF;
    packet.unitStart = (bytes[1] & 0x40) != 0;
    Require((bytes[1] & 0xA0) == 0, "an error or priority flag");
    Require(control == 1 || control == 3, "no payload, or a scrambled one");
    std::size_t at = 4;
    if (control == 3)
    {
        const std::size_t length = bytes[4];
        Require(length <= kPacketSize - 6, "an adaptation field that leaves no payload");
        if (length > 0 && (bytes[5] & 0x10) != 0)
        {
            Require(length >= 7, "no room for a PCR");
            packet.pcr = uint64_t{Number(bytes, 6, 4)} << 1 | bytes[10] >> 7;
            Require((Number(bytes, 10, 2) & 0x7FFF) == 0x7E00, "reserved bits or an extension");
        }
        for (std::size_t i = 6 + (packet.pcr ? 6u : 0u); i < 5 + length; ++i)
        {
            Require(bytes[i] == 0xFF, "other stuffing");
        }
        at += 1 + length;
    }
    packet.payload = bytes.subspan(at);
    // The tables of this stream begin again at 0 each time; everything else counts.
    if (control == 3)
    {
        CheckContinuity(packet.pid, bytes[3] & 15u);
    }
    else
    {
        Require((bytes[3] & 15) == 0, "a table with a counter");
    }
    return packet;
}

void TsReader::CheckContinuity(uint32_t pid, uint32_t counter)
{
    const auto known = m_counters.find(pid);
    const uint32_t expected = known == m_counters.end() ? 0 : (known->second + 1) % 16;
    Require(counter == expected, "a counter that does not continue");
    m_counters[pid] = counter;
}

void TsReader::ReadSection(uint32_t pid, Span payload)
{
    Require(payload[0] == 0, "a section that does not begin the payload");
    const std::size_t length = (Number(payload, 2, 2) & 0xFFF) + 3u;
    const Span section = payload.subspan(1, length);
    Require(HasGoodCrc(section), "a section with another CRC");
    for (const unsigned char byte : payload.subspan(1 + length))
    {
        Require(byte == 0xFF, "something behind a section");
    }
    if (pid == 0)
    {
        Require(section[0] == 0, "no program association table");
        m_mapPid = Number(section, 10, 2) & 0x1FFF;
        return;
    }
    Require(section[0] == 2, "no program map table");
    ++m_programMaps;
    m_streams.clear();
    std::size_t at = 12 + (Number(section, 10, 2) & 0xFFF);
    while (at < length - 4)
    {
        m_streams[Number(section, at + 1, 2) & 0x1FFF] = section[at];
        at += 5 + (Number(section, at + 3, 2) & 0xFFF);
    }
}

void TsReader::ReadPes(const Packet& packet)
{
    if (packet.unitStart)
    {
        const auto last = m_open.find(packet.pid);
        if (last != m_open.end())
        {
            Finish(last->second);
        }
        m_open[packet.pid] = {m_frames.size(), {}};
        m_frames.emplace_back();
        m_frames.back().pid = packet.pid;
        m_frames.back().pcr = packet.pcr;
    }
    const auto open = m_open.find(packet.pid);
    Require(open != m_open.end(), "a PES packet without its beginning");
    std::vector<unsigned char>& pes = open->second.pes;
    pes.insert(pes.end(), packet.payload.begin(), packet.payload.end());
}

void TsReader::Finish(const Open& open)
{
    const std::vector<unsigned char>& pes = open.pes;
    TsFrame& frame = m_frames[open.place];
    Require(Number(pes, 0, 3) == 1, "no PES start code");
    frame.streamId = Number(pes, 3, 1);
    frame.packetLength = Number(pes, 4, 2);
    Require(frame.packetLength == 0 || frame.packetLength + 6 == pes.size(),
            "a PES length that is not that of the packet");
    const uint32_t flags = Number(pes, 7, 1) >> 6;
    if (flags == 2)
    {
        frame.pts = TimeStamp(pes, 9, 2);
    }
    if (flags == 3)
    {
        frame.pts = TimeStamp(pes, 9, 3);
        frame.dts = TimeStamp(pes, 14, 1);
    }
    const std::size_t header = 9 + Number(pes, 8, 1);
    Require(header <= pes.size(), "a PES header beyond its packet");
    frame.payload.assign(pes.begin() + static_cast<std::ptrdiff_t>(header), pes.end());
}

std::vector<TsFrame> TsReader::Frames()
{
    for (const auto& [pid, open] : m_open)
    {
        Finish(open);
    }
    m_open.clear();
    return m_frames;
}

}  // namespace Readers
