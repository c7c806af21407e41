#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <vector>

namespace Orbel::Wrapton::Command
{

/// What every start code of an Annex B stream ends with, ISO/IEC 14496-10 B.1.1.
inline constexpr std::array<unsigned char, 3> kStartCode = {0, 0, 1};

/// Where kStartCode begins, at or behind @p from; the stream's end when there is none.
std::size_t FindStartCode(std::span<const unsigned char> stream, std::size_t from);

/// A zero byte ahead of kStartCode at @p at makes the start code one of 4 bytes.
bool IsLongStartCode(std::span<const unsigned char> stream, std::size_t at);

/// The stream with every start code in its form of 4 bytes.
std::vector<unsigned char> WithLongStartCodes(std::span<const unsigned char> stream);

}  // namespace Orbel::Wrapton::Command
