#pragma once

#include <cstddef>
#include <span>

namespace Orbel::Wrapton::Command
{

/// Length of what an FLV file begins with: the file header and the script tag with the metadata.
/// 0 when the bytes do not begin so.
std::size_t FlvHeaderLength(std::span<const unsigned char> bytes);

}  // namespace Orbel::Wrapton::Command
