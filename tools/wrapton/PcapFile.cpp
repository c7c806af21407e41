#include "PcapFile.h"

#include <cassert>

namespace Orbel::Wrapton::Command
{
namespace
{

using Bytes = std::vector<unsigned char>;

constexpr std::size_t kIpHeader = 20;
constexpr std::size_t kUdpHeader = 8;
constexpr uint32_t kLinkTypeRaw = 101;  // a packet begins with its IP header
constexpr uint32_t kProtocolUdp = 17;

// Addresses for documentation, RFC 5737.
constexpr uint32_t kSender = 0xC0000201;    // 192.0.2.1
constexpr uint32_t kReceiver = 0xC0000202;  // 192.0.2.2

/// Headers of the capture file are little-endian here; its magic number says so.
void PutLsb(Bytes& to, uint32_t value, int bytes)
{
    for (int i = 0; i < bytes; ++i)
        to.push_back(static_cast<unsigned char>(value >> (8 * i)));
}

void PutMsb(Bytes& to, uint32_t value, int bytes)
{
    for (int i = bytes - 1; i >= 0; --i)
        to.push_back(static_cast<unsigned char>(value >> (8 * i)));
}

void PatchMsb16(Bytes& bytes, std::size_t at, uint32_t value)
{
    bytes[at] = static_cast<unsigned char>(value >> 8);
    bytes[at + 1] = static_cast<unsigned char>(value);
}

/// The checksum of RFC 1071, begun with a sum of other words.
uint32_t Checksum(std::span<const unsigned char> bytes, uint32_t sum)
{
    for (std::size_t i = 0; i < bytes.size(); ++i)
        sum += i % 2 == 0 ? uint32_t{bytes[i]} << 8 : bytes[i];
    while (sum > 0xFFFF)
        sum = (sum & 0xFFFF) + (sum >> 16);
    return ~sum & 0xFFFF;
}

/// RFC 791, 3.1.
void PutIpHeader(Bytes& to, uint32_t length, uint32_t identification)
{
    const std::size_t begin = to.size();
    PutMsb(to, 0x4500, 2);  // version 4, 5 words, no service
    PutMsb(to, length, 2);
    PutMsb(to, identification, 2);
    PutMsb(to, 0x4000, 2);  // not to be fragmented
    PutMsb(to, 64, 1);      // time to live
    PutMsb(to, kProtocolUdp, 1);
    PutMsb(to, 0, 2);  // checksum
    PutMsb(to, kSender, 4);
    PutMsb(to, kReceiver, 4);
    PatchMsb16(to, begin + 10, Checksum(std::span(to).subspan(begin), 0));
}

/// RFC 768.
void PutUdp(Bytes& to, std::span<const unsigned char> payload)
{
    const std::size_t begin = to.size();
    const auto length = static_cast<uint32_t>(kUdpHeader + payload.size());
    PutMsb(to, PcapFile::kPort, 2);
    PutMsb(to, PcapFile::kPort, 2);
    PutMsb(to, length, 2);
    PutMsb(to, 0, 2);  // checksum
    to.insert(to.end(), payload.begin(), payload.end());

    uint32_t pseudo_header = kProtocolUdp + length;
    for (const uint32_t address : {kSender, kReceiver})
        pseudo_header += (address >> 16) + (address & 0xFFFF);
    const uint32_t checksum = Checksum(std::span(to).subspan(begin), pseudo_header);
    PatchMsb16(to, begin + 6, checksum != 0 ? checksum : 0xFFFF);  // 0 says that there is none
}

}  // namespace

void PcapFile::Begin()
{
    m_record.clear();
    PutLsb(m_record, 0xA1B2C3D4, 4);  // times in microseconds
    PutLsb(m_record, 2, 2);           // version
    PutLsb(m_record, 4, 2);
    PutLsb(m_record, 0, 4);      // time zone
    PutLsb(m_record, 0, 4);      // accuracy of times
    PutLsb(m_record, 65535, 4);  // the longest packet
    PutLsb(m_record, kLinkTypeRaw, 4);
    m_output.Place(0, Origin::kCurrent, m_record);
}

void PcapFile::Put(uint32_t time_ms, std::span<const unsigned char> packet)
{
    assert(packet.size() <= kMostPayload);
    const auto length = static_cast<uint32_t>(kIpHeader + kUdpHeader + packet.size());
    m_record.clear();
    PutLsb(m_record, time_ms / 1000, 4);
    PutLsb(m_record, time_ms % 1000 * 1000, 4);
    PutLsb(m_record, length, 4);  // bytes that follow
    PutLsb(m_record, length, 4);  // bytes that there were
    PutIpHeader(m_record, length, m_nDatagrams++);
    PutUdp(m_record, packet);
    m_output.Place(0, Origin::kCurrent, m_record);
}

}  // namespace Orbel::Wrapton::Command
