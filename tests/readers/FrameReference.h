/**
 * @file FrameReference.h
 * The searches in coded frames in their plainest form: every position is looked at.
 */
#ifndef WRAPTON_TESTS_READERS_FRAMEREFERENCE_H
#define WRAPTON_TESTS_READERS_FRAMEREFERENCE_H

#include <cstddef>
#include <initializer_list>
#include <optional>
#include <span>

namespace Readers
{

/// The first of 00 00 01 and one of @p codes at or behind @p from.
std::optional<std::size_t> FindCode(std::span<const unsigned char> frame,
                                    std::initializer_list<unsigned> codes,
                                    std::size_t from);

/// What stands behind an ADTS header that begins with FF F1 and whose length fits; else the frame.
std::span<const unsigned char> ReferenceAacData(std::span<const unsigned char> frame);

/// From the first header of MPEG-4 video to the first picture behind it; empty without one of them.
std::span<const unsigned char> ReferenceMpeg4Config(std::span<const unsigned char> frame);

}  // namespace Readers

#endif  // WRAPTON_TESTS_READERS_FRAMEREFERENCE_H
