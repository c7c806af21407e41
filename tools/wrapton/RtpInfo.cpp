#include "RtpInfo.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <map>
#include <optional>
#include <vector>

#include <nlohmann/json.hpp>

#include "Failure.h"

namespace Orbel::Wrapton::Command
{
namespace
{

using Json = nlohmann::ordered_json;

constexpr std::size_t kHeader = 12;  // RFC 3550 5.1, without contributing sources
constexpr uint32_t kNumbers = 65536;

struct RtpPacket
{
    uint64_t offset = 0;  ///< of its length
    std::size_t length = 0;
    bool marker = false;
    uint32_t payload_type = 0;
    uint32_t sequence = 0;
    uint32_t timestamp = 0;
    uint32_t ssrc = 0;
    std::size_t payload = 0;
};

uint32_t Number(const unsigned char* bytes, int count)
{
    uint32_t value = 0;
    for (int i = 0; i < count; ++i)
        value = value << 8 | bytes[i];
    return value;
}

/// Header fields; nothing when the bytes are no packet of version 2.
std::optional<RtpPacket> ReadPacket(const std::vector<unsigned char>& bytes)
{
    if (bytes.size() < kHeader || bytes[0] >> 6 != 2) return std::nullopt;
    std::size_t header = kHeader + 4 * std::size_t{bytes[0] & 15U};
    const bool has_extension = (bytes[0] & 0x10) != 0;
    if (has_extension)
    {
        if (bytes.size() < header + 4) return std::nullopt;
        header += 4 + 4 * std::size_t{Number(bytes.data() + header + 2, 2)};
    }
    const bool has_padding = (bytes[0] & 0x20) != 0;
    const std::size_t padding = has_padding ? bytes.back() : 0;
    if (bytes.size() < header + padding) return std::nullopt;
    RtpPacket packet;
    packet.length = bytes.size();
    packet.marker = bytes[1] >> 7 != 0;
    packet.payload_type = bytes[1] & 127U;
    packet.sequence = Number(bytes.data() + 2, 2);
    packet.timestamp = Number(bytes.data() + 4, 4);
    packet.ssrc = Number(bytes.data() + 8, 4);
    packet.payload = bytes.size() - header - padding;
    return packet;
}

class RtpFile
{
public:
    explicit RtpFile(const std::string& path) : m_file(path, std::ios::binary)
    {
        if (!m_file) throw Failure(path + ": " + std::strerror(errno));
    }

    /// The next packet; nothing at the end, and at the first bytes that are none.
    std::optional<RtpPacket> Next()
    {
        std::array<char, 2> length = {};
        if (!m_file.read(length.data(), length.size()))
        {
            m_nLeft = static_cast<uint64_t>(m_file.gcount());
            return std::nullopt;
        }
        std::vector<unsigned char> bytes(
            Number(reinterpret_cast<const unsigned char*>(length.data()), 2));
        m_file.read(reinterpret_cast<char*>(bytes.data()), std::ssize(bytes));
        std::optional<RtpPacket> packet;
        if (m_file.gcount() == std::ssize(bytes)) packet = ReadPacket(bytes);
        if (!packet)
        {
            m_nLeft = length.size() + static_cast<uint64_t>(m_file.gcount());
            return std::nullopt;
        }
        packet->offset = m_nAt;
        m_nAt += length.size() + bytes.size();
        return packet;
    }

    /// Reads on behind the last packet, to the end.
    void CountRest()
    {
        std::array<char, 65536> room = {};
        while (m_file.read(room.data(), room.size()) || m_file.gcount() > 0)
            m_nLeft += static_cast<uint64_t>(m_file.gcount());
    }

    /// Behind the last packet: bytes that are none.
    [[nodiscard]] uint64_t Left() const { return m_nLeft; }
    [[nodiscard]] uint64_t Bytes() const { return m_nAt + m_nLeft; }

private:
    std::ifstream m_file;
    uint64_t m_nAt = 0;
    uint64_t m_nLeft = 0;
};

/// What was found of one source of packets.
struct SourceSurvey
{
    void Add(const RtpPacket& packet)
    {
        if (packets == 0)
            first = packet;
        else
        {
            lost += (packet.sequence - last.sequence - 1) % kNumbers;
            // Time stamps run around; a difference is a signed word.
            const uint32_t step = packet.timestamp - last.timestamp;
            if (step != 0) ++times;
            ticks += static_cast<int32_t>(step);
        }
        ++packets;
        markers += packet.marker ? 1 : 0;
        payload += packet.payload;
        ++payload_types[packet.payload_type];
        last = packet;
    }

    RtpPacket first;
    RtpPacket last;
    uint64_t packets = 0;
    uint64_t lost = 0;     ///< numbers that are missing
    uint64_t markers = 0;  ///< packets with the marker
    uint64_t times = 1;    ///< stretches of one time stamp
    int64_t ticks = 0;     ///< from the first time stamp to the last
    uint64_t payload = 0;
    std::map<uint32_t, uint64_t> payload_types;
};

void PrintPacket(const RtpPacket& packet, bool json)
{
    if (json)
        std::cout << Json({{"offset", packet.offset},
                           {"bytes", packet.length},
                           {"sequence", packet.sequence},
                           {"timestamp", packet.timestamp},
                           {"ssrc", packet.ssrc},
                           {"payload_type", packet.payload_type},
                           {"marker", packet.marker},
                           {"payload", packet.payload}})
                         .dump()
                  << '\n';
    else
        std::cout << std::setw(12) << packet.offset << ' ' << std::setw(6) << packet.length
                  << "  number " << std::setw(5) << packet.sequence << "  time " << std::setw(10)
                  << packet.timestamp << "  type " << packet.payload_type
                  << (packet.marker ? "  marker" : "") << '\n';
}

std::string TypesText(const SourceSurvey& source)
{
    std::string text;
    for (const auto& [type, count] : source.payload_types)
        text.append(text.empty() ? "" : "/").append(std::to_string(type));
    return text;
}

void PrintText(const std::string& path,
               const RtpFile& file,
               const std::map<uint32_t, SourceSurvey>& sources)
{
    std::cout << path << ": rtp, " << file.Bytes() << " bytes\n";
    for (const auto& [ssrc, source] : sources)
        std::cout << "  source " << ssrc << ": " << source.packets << " packets of payload type "
                  << TypesText(source) << ", " << source.payload << " bytes of payload, "
                  << source.times << " time stamps over " << source.ticks << " ticks, "
                  << source.lost << " packets missing\n";
    if (file.Left() > 0) std::cout << "  " << file.Left() << " bytes at the end are no packet\n";
}

void PrintJson(const std::string& path,
               const RtpFile& file,
               const std::map<uint32_t, SourceSurvey>& sources)
{
    Json json = {{"file", path},
                 {"container", "rtp"},
                 {"bytes", file.Bytes()},
                 {"bytes_skipped", file.Left()}};
    json["sources"] = Json::array();
    for (const auto& [ssrc, source] : sources)
    {
        Json types = Json::object();
        for (const auto& [type, count] : source.payload_types)
            types[std::to_string(type)] = count;
        json["sources"].push_back({{"ssrc", ssrc},
                                   {"packets", source.packets},
                                   {"packets_missing", source.lost},
                                   {"markers", source.markers},
                                   {"payload_types", types},
                                   {"payload_bytes", source.payload},
                                   {"first_sequence", source.first.sequence},
                                   {"first_timestamp", source.first.timestamp},
                                   {"timestamps", source.times},
                                   {"ticks", source.ticks}});
    }
    std::cout << json.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

}  // namespace

bool LooksLikeRtp(const std::string& path)
{
    return RtpFile(path).Next().has_value();
}

int TellRtp(const std::string& path, bool json, bool packets)
{
    RtpFile file(path);
    std::map<uint32_t, SourceSurvey> sources;
    while (const auto packet = file.Next())
    {
        sources[packet->ssrc].Add(*packet);
        if (packets) PrintPacket(*packet, json);
    }
    if (sources.empty()) throw Failure(path + ": no packet of RTP in it");
    file.CountRest();

    bool is_damaged = file.Left() > 0;
    for (const auto& [ssrc, source] : sources)
        is_damaged = is_damaged || source.lost > 0;
    if (!packets) json ? PrintJson(path, file, sources) : PrintText(path, file, sources);
    return is_damaged ? kExitDamaged : kExitDone;
}

}  // namespace Orbel::Wrapton::Command
