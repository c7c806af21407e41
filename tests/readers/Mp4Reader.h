/**
 * @file Mp4Reader.h
 * Reads an MP4 or QuickTime file back into tracks and samples.
 */
#ifndef WRAPTON_TESTS_READERS_MP4READER_H
#define WRAPTON_TESTS_READERS_MP4READER_H

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "readers/Mp4Boxes.h"

namespace Readers
{

struct Mp4Sample
{
    uint64_t offset = 0;
    uint32_t size = 0;
    uint32_t duration = 0;  ///< media units
    bool sync = true;
};

/// AVCDecoderConfigurationRecord, ISO/IEC 14496-15 5.3.3.1.
struct Mp4Avc
{
    uint32_t profile = 0;
    uint32_t compatibility = 0;
    uint32_t level = 0;
    uint32_t lengthSize = 0;
    std::vector<std::vector<unsigned char>> sps;
    std::vector<std::vector<unsigned char>> pps;
};

/// ES_Descriptor, ISO/IEC 14496-1 7.2.6.5.
struct Mp4Esds
{
    uint32_t id = 0;
    uint32_t objectType = 0;
    uint32_t streamType = 0;
    std::vector<unsigned char> specificInfo;
};

struct Mp4Track
{
    uint32_t id = 0;
    uint32_t duration = 0;  ///< movie units
    uint32_t width = 0;     ///< pixels
    uint32_t height = 0;    ///< pixels
    uint32_t timescale = 0;
    uint32_t mediaDuration = 0;  ///< media units
    std::string handler;
    std::string entry;  ///< type of the sample entry
    uint32_t channels = 0;
    uint32_t sampleBits = 0;
    uint32_t sampleRate = 0;
    std::optional<Mp4Avc> avc;
    std::optional<Mp4Esds> esds;
    std::vector<Mp4Sample> samples;
};

struct Mp4Movie
{
    std::string brand;
    uint32_t timescale = 0;
    uint32_t duration = 0;
    uint32_t nextTrack = 0;
    std::vector<Mp4Box> boxes;
    std::vector<Mp4Track> tracks;
};

/**
 * Reads a whole file. Everything is checked against its box: counts against the table's bytes, the
 * samples against the media data boxes.
 *
 * @throws Mp4Error
 */
Mp4Movie ReadMp4(std::span<const unsigned char> file);

}  // namespace Readers

#endif  // WRAPTON_TESTS_READERS_MP4READER_H
