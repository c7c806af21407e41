#ifndef WRAPTON_FUZZ_FRAMEMAKER_H
#define WRAPTON_FUZZ_FRAMEMAKER_H

#include <cstddef>
#include <memory>
#include <span>

#include "ByteSource.h"
#include "Wrapton.h"

namespace Fuzz
{

/// A frame whose bytes stand in an allocation of exactly their size.
struct MadeFrame
{
    Orbel::Wrapton::SGFrameInfo record{};
    std::unique_ptr<unsigned char[]> bytes;
    std::size_t size = 0;  ///< of them, whatever the record says
};

/// What the frames of one container are chosen from.
struct Palette
{
    std::span<const uint32_t> encodings;
    std::span<const uint32_t> sizes;  ///< beyond those that the input has bytes for
};

/**
 * A frame out of the input: its kind, its encoding and attributes, mostly sensible and sometimes at
 * a limit, and its bytes, taken from the input. Where a size of the palette is chosen, the bytes
 * that were taken are repeated until it is full.
 */
MadeFrame MakeFrame(ByteSource& source, const Palette& palette);

/// What the MP4 family, WAV and native recordings tell apart, in the sizes of one of them.
Palette UsualFrames(std::span<const uint32_t> sizes);

}  // namespace Fuzz

#endif  // WRAPTON_FUZZ_FRAMEMAKER_H
