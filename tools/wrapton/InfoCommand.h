#pragma once

#include <CLI/CLI.hpp>
#include <functional>

namespace Orbel::Wrapton::Command
{

/// Adds `wrapton info`; see AddPackCommand().
void AddInfoCommand(CLI::App& app, std::function<int()>& run);

}  // namespace Orbel::Wrapton::Command
