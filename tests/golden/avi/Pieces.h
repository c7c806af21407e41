/**
 * @file Pieces.h
 * The chunks of an AVI file as the RIFF documentation of AVI 1.0 and the OpenDML AVI File Format
 * Extensions 1.02 lay them out, a field per line. All numbers are little-endian.
 */
#ifndef WRAPTON_TESTS_GOLDEN_AVI_PIECES_H
#define WRAPTON_TESTS_GOLDEN_AVI_PIECES_H

#include <cstdint>
#include <initializer_list>
#include <string_view>
#include <vector>

#include "support/Bytes.h"

namespace Golden
{

using Support::Bytes;

/// Where the first chunk of every file begins, and where its "movi" code stands.
constexpr uint32_t kFirstChunk = 4128;
constexpr uint32_t kMoviCode = 4124;
constexpr uint32_t kRiffLimit = 1073741824;

/// "RIFF", size, form type.
Bytes RiffHeader(uint32_t size, std::string_view form);
/// "LIST", size, "movi".
Bytes MoviHeader(uint32_t size);

struct Avih
{
    uint32_t microSecPerFrame = 0;
    uint32_t maxBytesPerSec = 0;
    uint32_t totalFrames = 0;
    uint32_t streams = 0;
    uint32_t suggestedBufferSize = 0;
    uint32_t width = 0;
    uint32_t height = 0;

    [[nodiscard]] Bytes Chunk() const;
};

struct VideoStrl
{
    Bytes code = Support::Zero(4);  // handler and compression
    uint32_t rate = 0;
    uint32_t length = 0;
    uint32_t suggestedBufferSize = 1048576;
    uint32_t width = 0;
    uint32_t height = 0;
    uint32_t sizeImage = 0;
    Bytes index = {};  // empty: the reservation without an entry

    [[nodiscard]] Bytes List() const;
};

struct AudioStrl
{
    uint32_t rate = 0;
    uint32_t length = 0;
    uint32_t suggestedBufferSize = 12288;
    uint32_t width = 0;
    uint32_t height = 0;
    uint32_t formatTag = 0;
    uint32_t channels = 0;
    uint32_t samplesPerSec = 0;
    uint32_t avgBytesPerSec = 0;
    uint32_t blockAlign = 0;
    uint32_t bitsPerSample = 0;
    Bytes index = {};  // empty: the reservation without an entry

    [[nodiscard]] Bytes List() const;
};

struct SuperEntry
{
    uint64_t offset;
    uint32_t size;
    uint32_t chunks;
};

/// The index reservation of a stream: 1032 bytes, "JUNK" while there are no entries.
Bytes Indx(std::string_view chunkId, const std::vector<SuperEntry>& entries);

Bytes Odml(uint32_t totalFrames);
/// "JUNK" with @p size zero bytes.
Bytes Junk(uint32_t size);

/// "LIST" "hdrl" around its chunks; throws when they are not the 4104 bytes that it always has.
Bytes Hdrl(std::initializer_list<Bytes> chunks);

/// A data chunk with its padding.
Bytes Chunk(std::string_view code, const Bytes& data);

struct Idx1Entry
{
    std::string_view code;
    uint32_t key;
    uint32_t offset;
};

Bytes Idx1(std::initializer_list<Idx1Entry> entries);

struct IxEntry
{
    uint32_t offset;
    uint32_t size;
};

/// ix00 or ix01.
Bytes Ix(std::string_view code,
         std::string_view chunkId,
         uint64_t baseOffset,
         const std::vector<IxEntry>& entries);

}  // namespace Golden

#endif  // WRAPTON_TESTS_GOLDEN_AVI_PIECES_H
