#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Containers.h"
#include "Inputs.h"
#include "Progress.h"
#include "Report.h"

namespace Orbel::Wrapton::Command
{

/// What `pack` was asked for.
struct PackOptions
{
    InputRequest inputs;
    std::string output;
    std::vector<std::string> spared;  ///< files that no output replaces, the inputs aside
    std::string to;                   ///< empty: the output's extension says it
    uint32_t reserve = 0;
    std::string segment;
    std::string start;
    std::string duration;
    bool each = false;  ///< every input becomes an output of its own
    bool make_directories = false;
    bool dry_run = false;
    bool pcap = false;
    bool json = false;
    bool progress = false;
};

/// The container that was asked for, by name, by --pcap or by the output's extension. Throws
/// Failure.
const Container& ContainerOf(const PackOptions& options);

/// Throws Failure when a time, a size or another option can be no part of any call.
void CheckOptions(const PackOptions& options);

/// Makes one output of the inputs. Whatever goes wrong stands in the report, and so does its exit
/// code.
Report PackOne(const PackOptions& options, ProgressMeter& meter);

}  // namespace Orbel::Wrapton::Command
