#pragma once

#include <cstdint>
#include <optional>

#include "Containers.h"
#include "FrameSource.h"

namespace Orbel::Wrapton::Command
{

/// What the movie box of the MP4 family needs, told by the library itself: the box is made for a
/// few frames, and each further frame makes it longer by the same bytes.
struct IndexModel
{
    uint64_t fixed = 0;  ///< with a key picture, and a piece of sound where there is sound
    uint64_t per_key_picture = 0;
    uint64_t per_other_picture = 0;
    uint64_t per_sound = 0;

    /// The bytes for a recording of so many frames.
    [[nodiscard]] uint64_t BytesFor(uint64_t key_pictures,
                                    uint64_t other_pictures,
                                    uint64_t sounds) const;
};

/// One stream's record and the first frame of it that can open a file.
struct Specimen
{
    StreamInfo info;
    Frame frame;
};

/// Nothing when the container has no such box, or refuses the frames.
std::optional<IndexModel> ModelIndex(const Container& container,
                                     const Specimen& video,
                                     const std::optional<Specimen>& audio);

}  // namespace Orbel::Wrapton::Command
