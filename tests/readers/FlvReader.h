/**
 * @file FlvReader.h
 * Reads an FLV file back into its tags, Flash Video File Format 10.1 annex E.
 */
#ifndef WRAPTON_TESTS_READERS_FLVREADER_H
#define WRAPTON_TESTS_READERS_FLVREADER_H

#include <cstdint>
#include <span>
#include <stdexcept>
#include <vector>

namespace Readers
{

/// The bytes are not what the format asks for.
class FlvError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

struct FlvTag
{
    uint32_t type = 0;  ///< 8 audio, 9 video, 18 script
    uint32_t time = 0;  ///< milliseconds, with the extension
    std::vector<unsigned char> body;
};

struct FlvFile
{
    bool hasAudio = false;
    bool hasVideo = false;
    std::vector<FlvTag> tags;
};

/// Reads bytes that hold one header and tags to the end; throws FlvError.
FlvFile ReadFlv(std::span<const unsigned char> file);

/// The NAL units of a video tag with 4-byte lengths; throws FlvError when it is none of AVC NAL
/// units.
std::vector<std::vector<unsigned char>> AvcUnits(const FlvTag& tag);

}  // namespace Readers

#endif  // WRAPTON_TESTS_READERS_FLVREADER_H
