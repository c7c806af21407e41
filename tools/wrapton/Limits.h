#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "Containers.h"

namespace Orbel::Wrapton::Command
{

/// Something that a container cannot hold, and where a recording meets it.
struct Limit
{
    std::string_view name;
    std::optional<uint64_t> bytes;        ///< of the file
    std::optional<uint64_t> frame_bytes;  ///< of one picture
    std::optional<int64_t> time_us;       ///< of the recording
    std::string_view outcome;             ///< what becomes of a recording that passes it
};

/// The limits of a container, those of a recording's length first.
std::vector<Limit> LimitsOf(const Container& container);

}  // namespace Orbel::Wrapton::Command
