#pragma once

#include <cstdint>

#include "FrameSource.h"

namespace Orbel::Wrapton::Command
{

/// Frames per second as the records of the library hold them.
uint32_t WholeRate(const Rate& rate);

/// What the library is told of a frame beside its bytes; times are counted from @p start_us.
SGFrameInfo RecordOf(const StreamInfo& info, const Frame& frame, int64_t start_us);

}  // namespace Orbel::Wrapton::Command
