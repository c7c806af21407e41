#ifndef WRAPTON_FUZZ_FRAMEMAKER_H
#define WRAPTON_FUZZ_FRAMEMAKER_H

#include <memory>

#include "ByteSource.h"
#include "Wrapton.h"

namespace Fuzz
{

/// A frame whose bytes stand in an allocation of exactly their size.
struct MadeFrame
{
    Orbel::Wrapton::SGFrameInfo record{};
    std::unique_ptr<unsigned char[]> bytes;
};

/**
 * A frame out of the input: its kind, its encoding and attributes, mostly sensible and sometimes at
 * a limit, and its bytes, taken from the input or filled up to one of the sizes at which a work
 * buffer ends.
 */
MadeFrame MakeFrame(ByteSource& source);

}  // namespace Fuzz

#endif  // WRAPTON_FUZZ_FRAMEMAKER_H
