/**
 * @file Streams.h
 * Cuts the elementary streams of tests/media into frames, as a recorder's source would.
 */
#ifndef WRAPTON_TESTS_SUPPORT_STREAMS_H
#define WRAPTON_TESTS_SUPPORT_STREAMS_H

#include <string>
#include <vector>

#include "support/Bytes.h"

namespace Support
{

/// A stream of tests/media.
Bytes Media(const std::string& name);

/// NAL units without their start codes; the zero bytes ahead of a start code belong to none.
std::vector<Bytes> NalUnits(const Bytes& annexB);

/// Access units of an H.264 stream in decoding order, start codes kept, ISO/IEC 14496-10 7.4.1.2.3.
std::vector<Bytes> AccessUnits(const Bytes& annexB);

/// Whether an access unit holds an IDR picture.
bool IsIdr(const Bytes& accessUnit);

/// Frames of an ADTS stream, headers kept; throws at a byte that is no header.
std::vector<Bytes> AdtsFrames(const Bytes& stream);

/// Frames of an MPEG audio layer II stream; throws at a byte that is no header.
std::vector<Bytes> Layer2Frames(const Bytes& stream);

/// JPEG pictures from SOI to EOI.
std::vector<Bytes> JpegPictures(const Bytes& stream);

/// MPEG-4 Part 2 pictures, each with the headers that stand ahead of it.
std::vector<Bytes> Mpeg4Pictures(const Bytes& stream);

/// Whether an MPEG-4 Part 2 picture is intra coded (vop_coding_type 0).
bool IsMpeg4Intra(const Bytes& picture);

}  // namespace Support

#endif  // WRAPTON_TESTS_SUPPORT_STREAMS_H
