#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "Report.h"

namespace Orbel::Wrapton::Command
{

/// What became of a call that makes an output of every input.
struct Batch
{
    std::size_t inputs = 0;
    std::vector<Report> reports;  ///< of those that were begun
    int signal = 0;               ///< that kept the others from being begun
    std::string error;            ///< why none was begun; empty: they were

    /// The worst of all.
    [[nodiscard]] int ExitCode() const;
    [[nodiscard]] std::string State() const;
};

void PrintText(const Batch& batch);
void PrintJson(const Batch& batch);
void PrintKeyValue(const Batch& batch);

}  // namespace Orbel::Wrapton::Command
