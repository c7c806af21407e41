/**
 * @file AviReader.h
 * Reads the first RIFF of an AVI file back into streams and chunks, by the RIFF documentation of
 * AVI 1.0. It goes through the movi list and takes no index.
 */
#ifndef WRAPTON_TESTS_READERS_AVIREADER_H
#define WRAPTON_TESTS_READERS_AVIREADER_H

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace Readers
{

struct AviStream
{
    std::string type;     ///< "vids", "auds"
    std::string handler;  ///< four characters
    uint32_t scale = 0;
    uint32_t rate = 0;
    uint32_t length = 0;
    std::vector<unsigned char> format;  ///< payload of strf
};

struct AviChunk
{
    std::string code;
    uint64_t offset = 0;  ///< of the chunk, in the file
    std::vector<unsigned char> data;
};

struct AviFile
{
    uint32_t totalFrames = 0;
    std::vector<AviStream> streams;
    std::vector<AviChunk> chunks;   ///< of the movi list
    std::vector<std::string> rest;  ///< codes behind the movi list
};

/// Throws std::runtime_error where the bytes are no such file.
AviFile ReadAvi(std::span<const unsigned char> file);

}  // namespace Readers

#endif  // WRAPTON_TESTS_READERS_AVIREADER_H
