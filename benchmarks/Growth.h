/**
 * @file Growth.h
 * What long recordings and many handles cost.
 */
#ifndef WRAPTON_BENCHMARKS_GROWTH_H
#define WRAPTON_BENCHMARKS_GROWTH_H

#include <string>

namespace Bench
{

/// Time per frame, heap and tailer of recordings of 10 000 and of 1 000 000 small frames.
std::string GrowthText(int rounds);

/// Creating a handle and giving it a header: time, memory touched, and 10 000 of them at once.
std::string HandlesText();

}  // namespace Bench

#endif  // WRAPTON_BENCHMARKS_GROWTH_H
