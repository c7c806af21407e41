/**
 * @file Pieces.h
 * The elements of a Matroska file as RFC 8794 and RFC 9559 lay them out, a field per line.
 */
#ifndef WRAPTON_TESTS_GOLDEN_MKV_PIECES_H
#define WRAPTON_TESTS_GOLDEN_MKV_PIECES_H

#include <cstdint>
#include <string_view>
#include <vector>

#include "support/Bytes.h"

namespace Golden
{

using Support::Bytes;

// Places in every file.
constexpr uint32_t kSegmentSize = 51;
constexpr uint32_t kSeekHeadAt = 59;
constexpr uint32_t kInfoAt = 559;
constexpr uint32_t kTracksAt = 621;
constexpr uint32_t kEntriesAt = 633;
constexpr uint32_t kFirstCluster = 1059;
/// Offset of DateUTC's value in Info.
constexpr uint32_t kDateInInfo = 22;
/// A cluster up to its first block: ID, size, timecode.
constexpr uint32_t kClusterHead = 16;

/// A size of 8 bytes: the marker 01 and 7 bytes.
Bytes Size8(uint64_t size);

Bytes EbmlHeader();
/// SeekHead with its filling, 500 bytes; positions count from the segment's data.
Bytes SeekHead(uint32_t info, uint32_t tracks, uint32_t cues);
/// The three Seek elements alone.
Bytes Seeks(uint32_t info, uint32_t tracks, uint32_t cues);
Bytes Info(uint64_t date);

struct VideoEntry
{
    Bytes codecId = {};
    uint32_t defaultDuration = 0;  // nanoseconds; 0: no element
    Bytes codecPrivate = {};
    uint32_t width = 640;
    uint32_t height = 360;

    [[nodiscard]] Bytes Element() const;
};

/// "V_MPEG4/ISO/AVC" and "V_MPEG4/ISO/ASP", with the zero that the files have behind them.
Bytes AvcId();
Bytes AspId();
/// AVCDecoderConfigurationRecord with one set of each kind, ISO/IEC 14496-15 5.3.3.1.
Bytes AvcConfig(const Bytes& sps, const Bytes& pps);
/// The record when a set is missing: all zeros but for the reserved bits and what there is.
Bytes EmptyAvcConfig(const Bytes& sps = {}, const Bytes& pps = {});

/// EC and a size of 8 bytes: the head of the Void behind Tracks.
Bytes VoidHead(uint32_t size);

Bytes ClusterId();
Bytes Timecode(uint32_t time);
/// @param flags 80 for a key frame, 00
Bytes SimpleBlock(uint32_t time, std::string_view flags, const Bytes& frame);
/// A cluster of @p blocks with its size filled in.
Bytes Cluster(uint32_t time, const std::vector<Bytes>& blocks);

struct CuePoint
{
    uint32_t time;
    uint32_t cluster;
    uint32_t relative;
};

Bytes Cues(const std::vector<CuePoint>& points);

}  // namespace Golden

#endif  // WRAPTON_TESTS_GOLDEN_MKV_PIECES_H
