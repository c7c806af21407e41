#pragma once

#include <CLI/CLI.hpp>
#include <functional>

namespace Orbel::Wrapton::Command
{

/// Adds the hidden commands by which the build makes the manual pages and the completion for bash
/// out of the options themselves: `wrapton man [COMMAND]`, `wrapton completion`.
void AddSelfDescription(CLI::App& app, std::function<int()>& run);

}  // namespace Orbel::Wrapton::Command
