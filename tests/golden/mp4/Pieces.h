/**
 * @file Pieces.h
 * The boxes of the MP4 family as their standards lay them out, a field per line.
 *
 * Creation and modification times are 0 here; Recording sets those of the output to 0 once they
 * are known to be right.
 */
#ifndef WRAPTON_TESTS_GOLDEN_MP4_PIECES_H
#define WRAPTON_TESTS_GOLDEN_MP4_PIECES_H

#include <cstdint>
#include <initializer_list>
#include <string_view>

#include "support/Bytes.h"

namespace Golden
{

using Support::Bytes;

/// A box of the size that is typed; throws when the fields do not add up to it.
Bytes Box(uint32_t size, std::string_view type, std::initializer_list<Bytes> fields);

/// A box of whatever size its contents have, for containers of long tables.
Bytes BoxOf(std::string_view type, std::initializer_list<Bytes> contents);

Bytes FtypMp4();
Bytes FtypMov();

Bytes Mvhd(uint32_t duration, uint32_t nextTrack);

Bytes TkhdVideo(uint32_t duration, uint32_t width, uint32_t height);
Bytes TkhdAudio(uint32_t duration);
Bytes Mdhd(uint32_t timescale, uint32_t duration);
Bytes HdlrVideo();
Bytes HdlrAudio();
Bytes Vmhd();
Bytes Smhd();
Bytes Dinf();

/// stsd around its one entry.
Bytes Stsd(const Bytes& entry);
Bytes Stts(uint32_t count, uint32_t delta);
Bytes Stsc();
Bytes Stss(std::initializer_list<uint32_t> numbers);
Bytes Stsz(std::initializer_list<uint32_t> sizes);
Bytes Stco(std::initializer_list<uint32_t> offsets);
Bytes Co64(std::initializer_list<uint64_t> offsets);

/// The 78 bytes that avc1, mp4v and jpeg have in common.
Bytes VisualEntry(uint32_t width, uint32_t height);
Bytes Avc1(uint32_t width, uint32_t height, const Bytes& avcC);
Bytes Mp4v(uint32_t width, uint32_t height, const Bytes& esds);
Bytes Jpeg(uint32_t width, uint32_t height);

/// avcC of one SPS, whose bytes 1 to 3 give profile, compatibility and level, and one PPS.
Bytes AvcC(const Bytes& sps, const Bytes& pps);

/// esds with a descriptor of @p info, at most 95 bytes, so that every length has one byte.
Bytes Esds(uint32_t id, uint32_t objectType, uint32_t streamType, const Bytes& info);
/// esds without decoder specific information.
Bytes EsdsBare(uint32_t id, uint32_t objectType, uint32_t streamType);

/// mp4a of an MP4 file; @p rate is the 16-bit field.
Bytes Mp4aMp4(uint32_t channels, uint32_t bits, uint32_t rate, const Bytes& esds);
/// mp4a of a QuickTime file, with its wave box.
Bytes Mp4aMov(uint32_t channels, uint32_t bits, uint32_t rate, const Bytes& esds);

}  // namespace Golden

#endif  // WRAPTON_TESTS_GOLDEN_MP4_PIECES_H
