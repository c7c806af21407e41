/**
 * @file TsReader.h
 * A transport stream of one program, ISO/IEC 13818-1 2.4, read packet by packet.
 */
#ifndef WRAPTON_TESTS_READERS_TSREADER_H
#define WRAPTON_TESTS_READERS_TSREADER_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace Readers
{

/// The bytes are not what the standard asks for.
class TsError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// One frame, as its PES packet carried it.
struct TsFrame
{
    uint32_t pid = 0;
    uint32_t streamId = 0;
    uint32_t packetLength = 0;  ///< PES_packet_length
    std::optional<uint64_t> pts;
    std::optional<uint64_t> dts;
    std::optional<uint64_t> pcr;  ///< base, of the packet in which the PES begins
    std::vector<unsigned char> payload;
};

/**
 * Takes the packets of a stream in order. Every packet is checked for its sync byte, its adaptation
 * field and the continuity of its counter, every section for its CRC.
 */
class TsReader
{
public:
    /// @p packets must be whole packets; throws TsError at the first fault.
    void Read(std::span<const unsigned char> packets);

    /// All frames so far, those still open included; throws when a PES length field is wrong.
    std::vector<TsFrame> Frames();

    /// Stream types by PID, from the last program map table.
    [[nodiscard]] const std::map<uint32_t, uint32_t>& Streams() const { return m_streams; }
    [[nodiscard]] std::size_t ProgramMaps() const { return m_programMaps; }

private:
    struct Packet
    {
        uint32_t pid = 0;
        bool unitStart = false;
        std::optional<uint64_t> pcr;
        std::span<const unsigned char> payload;
    };

    Packet ReadPacket(std::span<const unsigned char> bytes);
    void CheckContinuity(uint32_t pid, uint32_t counter);
    void ReadSection(uint32_t pid, std::span<const unsigned char> payload);
    void ReadPes(const Packet& packet);

    /// A PES packet whose end has not been seen.
    struct Open
    {
        std::size_t place = 0;  // of its frame, whose PID and PCR are known
        std::vector<unsigned char> pes;
    };
    void Finish(const Open& open);

    std::map<uint32_t, uint32_t> m_counters;
    std::map<uint32_t, uint32_t> m_streams;
    std::map<uint32_t, Open> m_open;
    std::vector<TsFrame> m_frames;
    std::size_t m_programMaps = 0;
    std::optional<uint32_t> m_mapPid;
};

}  // namespace Readers

#endif  // WRAPTON_TESTS_READERS_TSREADER_H
