#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "FrameSource.h"

namespace Orbel::Wrapton::Command
{

/// What part of the inputs is wanted.
struct TrimRequest
{
    int64_t start_us = 0;
    std::optional<int64_t> duration_us;  ///< from where the part begins

    [[nodiscard]] bool IsWhole() const { return start_us == 0 && !duration_us; }
};

/// Puts each source behind one that gives the wanted part alone, at times from its beginning. The
/// part begins at the first key picture that is not ahead of the start, for the sound too.
///
/// @param sources video first, and read first
std::vector<std::unique_ptr<FrameSource>> Trimmed(std::vector<std::unique_ptr<FrameSource>> sources,
                                                  const TrimRequest& request);

}  // namespace Orbel::Wrapton::Command
