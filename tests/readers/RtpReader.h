/**
 * @file RtpReader.h
 * RTP packets and what receivers make of them, from RFC 3550, RFC 4571 and RFC 6184.
 */
#ifndef WRAPTON_TESTS_READERS_RTPREADER_H
#define WRAPTON_TESTS_READERS_RTPREADER_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <vector>

namespace Readers
{

/// The bytes are not what the RFCs ask for.
class RtpError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

using RtpBytes = std::vector<unsigned char>;

struct RtpExtension
{
    uint32_t profile = 0;
    RtpBytes words;
};

struct RtpPacket
{
    RtpBytes custom;         ///< what stood ahead of the length
    std::size_t length = 0;  ///< of the whole packet
    bool marker = false;
    uint32_t payloadType = 0;
    uint32_t sequence = 0;
    uint32_t timestamp = 0;
    uint32_t ssrc = 0;
    std::optional<RtpExtension> extension;
    RtpBytes payload;
};

/**
 * Packets each behind its length in 2 bytes, RFC 4571 2, to the last byte; throws RtpError.
 *
 * @param customLength bytes ahead of every length
 */
std::vector<RtpPacket> ReadRtpPackets(const RtpBytes& bytes, std::size_t customLength = 0);

/// One packet, RFC 3550 5.1 and 5.3.1.
RtpPacket ReadRtpPacket(const RtpBytes& packet);

/// Throws RtpError unless every sequence number is one above that of the packet before, modulo
/// 65536.
void CheckSequence(const std::vector<RtpPacket>& packets);

/// NAL units in single packets and in FU-A fragments, RFC 6184 5.6 and 5.8; throws RtpError.
std::vector<RtpBytes> ReadNalUnits(const std::vector<RtpPacket>& packets);

/// Payloads put together up to each marker.
std::vector<RtpBytes> ReadPlainFrames(const std::vector<RtpPacket>& packets);

}  // namespace Readers

#endif  // WRAPTON_TESTS_READERS_RTPREADER_H
