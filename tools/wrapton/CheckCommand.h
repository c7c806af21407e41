#pragma once

#include <CLI/CLI.hpp>
#include <functional>

namespace Orbel::Wrapton::Command
{

/// Adds `wrapton check`. When it is called, @p run gets what to do.
void AddCheckCommand(CLI::App& app, std::function<int()>& run);

}  // namespace Orbel::Wrapton::Command
