#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "OutputFile.h"

namespace Orbel::Wrapton::Command
{

/// A capture file in the classic pcap form, version 2.4, in which RTP packets stand as UDP
/// datagrams: as if they had been seen on their way to a receiver.
class PcapFile
{
public:
    /// Where the datagrams go to; 5004 is the registered port of RTP, RFC 3551 8.
    static constexpr uint16_t kPort = 5004;
    /// The longest packet that an IPv4 datagram takes: 65535 less the headers of IPv4 and UDP.
    static constexpr std::size_t kMostPayload = 65535 - 20 - 8;

    /// The output must live longer and is written here alone.
    explicit PcapFile(OutputFile& output) : m_output(output) {}

    /// Writes the header of the file.
    void Begin();

    /// Writes one packet of at most kMostPayload bytes that was seen at a time in milliseconds.
    void Put(uint32_t time_ms, std::span<const unsigned char> packet);

private:
    OutputFile& m_output;
    std::vector<unsigned char> m_record;  ///< the one that is put together; kept for its memory
    uint16_t m_nDatagrams = 0;            ///< identification of the next one; wraps
};

}  // namespace Orbel::Wrapton::Command
