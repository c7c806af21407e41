/**
 * @file Pieces.h
 * Parts of an ASF file as they must come out, laid out after Advanced Systems Format 01.20.03, and
 * a recording to compare them with.
 */
#ifndef WRAPTON_TESTS_GOLDEN_ASF_PIECES_H
#define WRAPTON_TESTS_GOLDEN_ASF_PIECES_H

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "support/Recorder.h"

namespace GoldenAsf
{

using Support::Bytes;

inline constexpr std::size_t kHeaderLen = 768;
inline constexpr std::size_t kDataStart = 818;
inline constexpr std::size_t kPacketLen = 2076;

/// Stream byte of a packet.
inline constexpr uint32_t kKey = 0x81;
inline constexpr uint32_t kInter = 0x01;
inline constexpr uint32_t kSound = 0x82;

struct AudioValues
{
    uint32_t tag = 1;
    uint32_t channels = 1;
    uint32_t sampleRate = 8000;
    uint32_t bytesPerSecond = 16000;
    uint32_t bits = 16;
};

/// What a header tells; the date is compared apart.
struct HeaderValues
{
    uint64_t fileSize = 0;
    uint64_t packets = 0;
    uint64_t duration = 0;  ///< 100 ns
    uint32_t flags = 2;
    uint64_t date = 0;
    Bytes compression = Support::Text("H264");
    uint32_t width = 640;
    uint32_t height = 360;
    uint64_t timePerFrame = 400000;  ///< 100 ns
    Bytes config = {};
    std::optional<AudioValues> audio = {};
    /// Of the data object head.
    uint64_t dataPackets = 0;
};

/// The header object and the head of the data object, 818 bytes.
Bytes Header(const HeaderValues& values);

/// A header of the stream variant: ones, flags 3, and audio as stored.
HeaderValues Broadcast(const AudioValues& audio = {0, 0, 0, 0, 0});

/// One data packet.
struct PacketSpec
{
    uint32_t stream = kKey;
    uint32_t number = 0;
    uint32_t time = 0;
    uint32_t offset = 0;
    uint32_t objectSize = 0;
};
Bytes Packet(const PacketSpec& values, const Bytes& payload);

/// All packets of a frame.
Bytes Packets(uint32_t stream, uint32_t number, uint32_t time, const Bytes& frame);

/// The simple index object with these packet numbers and counts.
Bytes Index(const std::vector<std::pair<uint32_t, uint32_t>>& entries);

Support::Frame Key(Bytes bytes);
Support::Frame Inter(Bytes bytes);
Support::Frame Pcm16(Bytes samples,
                     uint32_t sampleRate = 8000,
                     uint32_t channels = 1,
                     uint32_t bits = 16);

/// A recording of one variant into a sink that seeks.
class Recording
{
public:
    explicit Recording(uint32_t type);

    /// Calls that must give 0.
    Recording& Input(const Support::Frame& frame, int times = 1);
    Recording& Tailer();

    Support::Recorder& Calls() { return m_recorder; }
    [[nodiscard]] const std::vector<Support::Block>& Blocks() const { return m_sink.Blocks(); }

    /// The bytes of the blocks since the last call of this, the date of headers masked.
    Bytes Fresh();
    /// The file with its date masked.
    [[nodiscard]] Bytes File() const;
    /// A block with the date of its header masked; a date other than that of the recording stays.
    [[nodiscard]] Bytes Masked(const Support::Block& block) const;

private:
    [[nodiscard]] Bytes WithoutDate(Bytes bytes) const;

    int64_t m_opened;  ///< seconds since 1970
    Support::SeekingSink m_sink;
    Support::Recorder m_recorder;
    std::size_t m_seen = 0;
};

/// Whether a block has origin 0, this position and this size.
::testing::AssertionResult IsAt(const Support::Block& block, uint64_t position, std::size_t size);

}  // namespace GoldenAsf

#endif  // WRAPTON_TESTS_GOLDEN_ASF_PIECES_H
