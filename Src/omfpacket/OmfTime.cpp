#include "omfpacket/OmfTime.h"

#include <chrono>
#include <cstdlib>

namespace Orbel::Wrapton
{
namespace
{

constexpr int64_t kStampRange = 0x10000;
constexpr int64_t kStepBack = 4000;
/// Dates have whole seconds, and a sound's may be that of the picture before it.
constexpr int64_t kTolerance = 3000;
/// A larger step is a clock that was set.
constexpr int64_t kLongestPause = 24 * 60 * 60 * 1000;

uint32_t Bits(uint32_t word, unsigned at, unsigned count)
{
    return word >> at & ((1u << count) - 1);
}

/// Milliseconds from one date to the other.
std::optional<int64_t> Elapsed(uint32_t from, uint32_t to)
{
    const auto first = ReadOmfDate(from);
    const auto second = ReadOmfDate(to);
    if (!first || !second) return std::nullopt;
    return (second->Seconds() - first->Seconds()) * 1000;
}

}  // namespace

int64_t OmfDate::Seconds() const noexcept
{
    using namespace std::chrono;
    const year_month_day calendar{std::chrono::year{static_cast<int>(year)},
                                  std::chrono::month{month},
                                  std::chrono::day{day}};
    constexpr sys_days kOrigin{std::chrono::year{2000} / January / 1};
    const int64_t days = (sys_days{calendar} - kOrigin).count();
    return ((days * 24 + hour) * 60 + minute) * 60 + second;
}

std::optional<OmfDate> ReadOmfDate(uint32_t date) noexcept
{
    const OmfDate read{.year = 2000 + Bits(date, 26, 6),
                       .month = Bits(date, 22, 4),
                       .day = Bits(date, 17, 5),
                       .hour = Bits(date, 12, 5),
                       .minute = Bits(date, 6, 6),
                       .second = Bits(date, 0, 6)};
    const std::chrono::year_month_day calendar{std::chrono::year{static_cast<int>(read.year)},
                                               std::chrono::month{read.month},
                                               std::chrono::day{read.day}};
    if (!calendar.ok()) return std::nullopt;
    // A leap second is the 61st of its minute.
    if (read.hour > 23 || read.minute > 59 || read.second > 60) return std::nullopt;
    return read;
}

int64_t UnwrapOmfStamp(const OmfPoint& before, uint16_t stamp, uint32_t date) noexcept
{
    // The step to the next time with these 16 bits.
    const int64_t step = (stamp - before.time) & (kStampRange - 1);
    if (const auto elapsed = Elapsed(before.date, date);
        elapsed && std::abs(*elapsed) <= kLongestPause)
    {
        const int64_t rounds = (*elapsed - step + kStampRange / 2) >> 16;
        const int64_t dated = step + rounds * kStampRange;
        if (dated >= -kStepBack && std::abs(dated - *elapsed) <= kTolerance)
        {
            return before.time + dated;
        }
    }
    return before.time + (step >= kStampRange - kStepBack ? step - kStampRange : step);
}

}  // namespace Orbel::Wrapton
