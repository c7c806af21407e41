#ifndef WRAPTON_FUZZ_STOREDFRAMES_H
#define WRAPTON_FUZZ_STOREDFRAMES_H

#include <span>

#include "Wrapton.h"

namespace Fuzz
{

/// The frames of one recording that have to come back from its file.
class StoredFrames
{
public:
    virtual ~StoredFrames() = default;

    /// A frame that was stored, whatever its kind.
    virtual void Add(const Orbel::Wrapton::SGFrameInfo& record,
                     std::span<const unsigned char> bytes) = 0;

    /**
     * Reads the closed file and compares every frame.
     *
     * @throws std::runtime_error when it is not a file of its container
     */
    virtual void Compare(std::span<const unsigned char> file) const = 0;
};

}  // namespace Fuzz

#endif  // WRAPTON_FUZZ_STOREDFRAMES_H
