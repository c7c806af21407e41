/**
 * @file AsfReader.h
 * Reads an ASF file back into its streams and frames, Advanced Systems Format 01.20.03.
 */
#ifndef WRAPTON_TESTS_READERS_ASFREADER_H
#define WRAPTON_TESTS_READERS_ASFREADER_H

#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace Readers
{

/// The bytes are not what the format asks for.
class AsfError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// A media object, put together from its payloads.
struct AsfFrame
{
    uint32_t stream = 0;
    uint32_t number = 0;
    uint32_t time = 0;  ///< milliseconds
    bool key = false;
    uint32_t firstPacket = 0;
    uint32_t packets = 0;
    std::vector<unsigned char> bytes;
};

struct AsfStream
{
    uint32_t number = 0;
    bool video = false;
    std::string compression;  ///< video: four characters
    uint32_t width = 0;
    uint32_t height = 0;
    std::vector<unsigned char> config;
    uint32_t tag = 0;  ///< audio: format tag
    uint32_t channels = 0;
    uint32_t sampleRate = 0;
    uint32_t bits = 0;
};

struct AsfFile
{
    uint64_t fileSize = 0;
    uint64_t packets = 0;
    uint64_t duration = 0;  ///< 100 ns
    bool broadcast = false;
    std::vector<AsfStream> streams;
    std::vector<AsfFrame> frames;
    bool hasIndex = false;
    std::vector<std::pair<uint32_t, uint32_t>> index;  ///< packet number and count
};

/// Reads a whole file and checks sizes and counts against each other; throws AsfError. A broadcast
/// may have any number of packets behind its header.
AsfFile ReadAsf(std::span<const unsigned char> file);

}  // namespace Readers

#endif  // WRAPTON_TESTS_READERS_ASFREADER_H
