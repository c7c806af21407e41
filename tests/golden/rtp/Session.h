/**
 * @file Session.h
 * An RTP session through the flat interface, and packets to compare its output with.
 */
#ifndef WRAPTON_TESTS_GOLDEN_RTP_SESSION_H
#define WRAPTON_TESTS_GOLDEN_RTP_SESSION_H

#include <cstdint>
#include <vector>

#include "readers/RtpReader.h"
#include "support/Recorder.h"

namespace Golden
{

using Orbel::Wrapton::SGFrameInfo;
using Orbel::Wrapton::SGRtpPackageParam;
using Support::Bytes;
using Support::Frame;

constexpr uint32_t kSsrc = 0xA1B2C3D4;

/// The parameters that the tests begin with: the next packet has number 1.
SGRtpPackageParam Params();

/// A packet as it has to come out, field by field of RFC 3550 5.1.
struct Packet
{
    uint32_t sequence;
    bool marker;
    Bytes payload;
    uint32_t timestamp = 0;
    uint32_t payloadType = 0;
    uint32_t ssrc = kSsrc;

    /// The packet without a length.
    [[nodiscard]] Bytes Rtp() const;
    /// The packet behind its length.
    [[nodiscard]] Bytes Unit() const;
};

/// One handle with parameters, whose output is kept.
class Session
{
public:
    explicit Session(const SGRtpPackageParam& params = Params());

    int Set(const SGRtpPackageParam& params);
    [[nodiscard]] SGRtpPackageParam Get();

    /// Hands a frame in and gives its result; the blocks so far are forgotten first.
    int Input(const Frame& frame);
    /// Hands a frame in, expects success and gives the blocks.
    std::vector<Bytes> Blocks(const Frame& frame);
    /// Hands a frame in, expects success and gives the packets.
    std::vector<Readers::RtpPacket> Packets(const Frame& frame);
    /// The RTP time stamp of a frame of one byte at @p time.
    uint32_t StampOf(Frame frame, uint32_t time);

    [[nodiscard]] const std::vector<Support::Block>& Seen() const { return m_sink.Blocks(); }
    [[nodiscard]] Support::Recorder& Calls() { return m_calls; }
    [[nodiscard]] void* Handle() const { return m_calls.Handle(); }

private:
    Support::AppendingSink m_sink;
    Support::Recorder m_calls;
    std::size_t m_customLength = 0;
};

/// The blocks of @p blocks as bytes.
std::vector<Bytes> BytesOf(const std::vector<Support::Block>& blocks);

/// Payload of @p count bytes that begins like a NAL unit.
Bytes Nal(uint32_t header, std::size_t count);

/// A start code of 4 or 3 bytes and a unit.
Bytes Long(const Bytes& unit);
Bytes Short(const Bytes& unit);

/// A frame of audio with a payload of @p count bytes.
Frame Sound(std::size_t count);

}  // namespace Golden

#endif  // WRAPTON_TESTS_GOLDEN_RTP_SESSION_H
