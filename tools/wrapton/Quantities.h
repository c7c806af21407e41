#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace Orbel::Wrapton::Command
{

/// A time in words: seconds ("90", "1.5s"), "10m", "2h", "1:30" or "1:02:03". Nothing when it is
/// none of these, negative, or beyond 10 years.
std::optional<int64_t> ParseMicroseconds(const std::string& text);

/// A size in words: "500K", "100M", "4G", each of 1024, or with a B behind it: "700MB". Nothing
/// when it is none of these or 0.
std::optional<uint64_t> ParseBytes(const std::string& text);

/// "13:15:21" or "1:05.535".
std::string ClockText(int64_t microseconds);

}  // namespace Orbel::Wrapton::Command
