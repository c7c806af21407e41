/**
 * @file MkvReader.h
 * Reads a Matroska file with one video track back, by RFC 8794 and RFC 9559.
 */
#ifndef WRAPTON_TESTS_READERS_MKVREADER_H
#define WRAPTON_TESTS_READERS_MKVREADER_H

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <vector>

namespace Readers
{

struct MkvBlock
{
    uint64_t cluster = 0;  ///< position of its cluster in the file
    int64_t time = 0;      ///< milliseconds
    bool key = false;
    std::vector<unsigned char> data;
};

struct MkvCue
{
    uint64_t time = 0;
    uint64_t cluster = 0;
    uint64_t relative = 0;
};

struct MkvFile
{
    std::string docType;
    std::map<uint32_t, uint64_t> seeks;  ///< ID to position from the segment's data
    std::map<uint32_t, uint64_t> found;  ///< where the top-level elements stand, likewise
    std::string codecId;
    std::vector<unsigned char> codecPrivate;
    uint64_t defaultDuration = 0;
    uint64_t width = 0;
    uint64_t height = 0;
    std::vector<MkvBlock> blocks;
    std::vector<MkvCue> cues;
};

/// Throws std::runtime_error where the bytes are no such file.
MkvFile ReadMkv(std::span<const unsigned char> file);

}  // namespace Readers

#endif  // WRAPTON_TESTS_READERS_MKVREADER_H
