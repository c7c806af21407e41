#pragma once

#include <CLI/CLI.hpp>
#include <functional>

namespace Orbel::Wrapton::Command
{

/// Adds `wrapton formats`; see AddPackCommand().
void AddFormatsCommand(CLI::App& app, std::function<int()>& run);

}  // namespace Orbel::Wrapton::Command
