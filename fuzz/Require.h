#ifndef WRAPTON_FUZZ_REQUIRE_H
#define WRAPTON_FUZZ_REQUIRE_H

#include <cstdlib>
#include <iostream>

namespace Fuzz
{

/// Ends the run, so that the input is kept, when the library did what it must never do.
inline void Require(bool holds, const char* what)
{
    if (holds) return;

    std::cerr << "violated: " << what << std::endl;
    std::abort();
}

}  // namespace Fuzz

#endif  // WRAPTON_FUZZ_REQUIRE_H
