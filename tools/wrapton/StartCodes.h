#pragma once

#include <vector>

namespace Orbel::Wrapton::Command
{

/// The Annex B stream with every start code in its form of 4 bytes, ISO/IEC 14496-10 B.1.1.
std::vector<unsigned char> WithLongStartCodes(const std::vector<unsigned char>& stream);

}  // namespace Orbel::Wrapton::Command
