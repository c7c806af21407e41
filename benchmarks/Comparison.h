/**
 * @file Comparison.h
 * Packagers against a plain copy and against libavformat, in rounds that see the same machine.
 */
#ifndef WRAPTON_BENCHMARKS_COMPARISON_H
#define WRAPTON_BENCHMARKS_COMPARISON_H

#include <cstdint>
#include <string>

namespace Bench
{

struct ComparisonOptions
{
    int rounds = 7;
    uint32_t divisor = 1;    // of the frame counts
    std::string containers;  // part of a name; empty: all
    std::string load;        // name of a workload; empty: all
    bool with_peer = true;
};

/// Runs the comparison. @return its table
std::string Compare(const ComparisonOptions& options);

/// What the workloads are.
std::string WorkloadText();

}  // namespace Bench

#endif  // WRAPTON_BENCHMARKS_COMPARISON_H
