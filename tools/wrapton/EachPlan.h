#pragma once

#include <string>
#include <vector>

#include "PackJob.h"

namespace Orbel::Wrapton::Command
{

/// True for a directory, be it there or only named as one by a slash at its end.
bool NamesDirectory(const std::string& path);

/// One call for each of the inputs, in their order: the output is the directory or the pattern that
/// was asked for, filled in with the names of the input. Throws Failure when two inputs are the
/// same, when two outputs would be, or when one would replace an input.
std::vector<PackOptions> PlanEach(const PackOptions& options);

}  // namespace Orbel::Wrapton::Command
