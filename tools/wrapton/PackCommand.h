#pragma once

#include <CLI/CLI.hpp>
#include <functional>

namespace Orbel::Wrapton::Command
{

/// Adds `wrapton pack`. When it is chosen, parsing leaves in `run` what carries it out and gives
/// the exit code.
void AddPackCommand(CLI::App& app, std::function<int()>& run);

}  // namespace Orbel::Wrapton::Command
