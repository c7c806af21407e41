/**
 * @file FixedSources.h
 * Time and chance that are the same in every run.
 */
#ifndef WRAPTON_TESTS_RELIABILITY_FIXEDSOURCES_H
#define WRAPTON_TESTS_RELIABILITY_FIXEDSOURCES_H

#include "tool/Clock.h"

namespace Reliability
{

/// For its lifetime the library's clock stands and its random number is always the same.
class FixedSources
{
public:
    FixedSources() { Orbel::Wrapton::InstallSources(&kFixed); }
    FixedSources(const FixedSources&) = delete;
    FixedSources& operator=(const FixedSources&) = delete;
    ~FixedSources() { Orbel::Wrapton::InstallSources(nullptr); }

private:
    static int64_t Now() noexcept { return 1700000000; }
    static bool InUtc(int64_t time, std::tm& broken_down) noexcept
    {
        const auto seconds = static_cast<std::time_t>(time);
        return gmtime_r(&seconds, &broken_down) != nullptr;
    }
    static uint32_t Random() noexcept { return 0x5EED; }

    static constexpr Orbel::Wrapton::Sources kFixed = {&Now, &InUtc, &Random};
};

}  // namespace Reliability

#endif  // WRAPTON_TESTS_RELIABILITY_FIXEDSOURCES_H
