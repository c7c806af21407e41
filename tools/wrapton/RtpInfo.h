#pragma once

#include <string>

namespace Orbel::Wrapton::Command
{

/// True when the file reads as packets of RTP, each behind its length in two bytes (RFC 4571 2).
bool LooksLikeRtp(const std::string& path);

/// Tells what packets the file holds. Gives an exit code; throws Failure when it cannot be read or
/// holds none.
int TellRtp(const std::string& path, bool json, bool packets);

}  // namespace Orbel::Wrapton::Command
