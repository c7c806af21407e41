#ifndef WRAPTON_TOOL_CLOCK_H
#define WRAPTON_TOOL_CLOCK_H

#include <cstdint>
#include <ctime>

namespace Orbel::Wrapton
{

/**
 * Where the library gets time and chance from. Everything goes through the set that is installed,
 * so that a test can fix it; the functions may be called from any thread.
 */
struct Sources
{
    /// Seconds since 1970-01-01 UTC.
    int64_t (*now)() noexcept;
    /// Breaks a time down in the local time zone; false when that cannot be done.
    bool (*local_time)(int64_t time, std::tm& broken_down) noexcept;
    /// A random number.
    uint32_t (*random)() noexcept;
};

/// The operating system's clock, time zone and random numbers.
const Sources& SystemSources() noexcept;

/// Installs @p sources, which must outlive their use, for the whole process; null brings the
/// system's back.
void InstallSources(const Sources* sources) noexcept;

/// The current time in seconds since 1904-01-01 UTC, cut to 32 bits: the time unit of movie
/// headers, ISO/IEC 14496-12 8.2.2.3.
uint32_t get_current_mp4_time() noexcept;

/// The current time in seconds since 1970-01-01 UTC.
int64_t get_current_utc_time() noexcept;

/// @p t (seconds since 1970; the current time for 0) in local time as a packed date word: year
/// since 2000 in 6 bits, month 4, day 5, hour 5, minute 6, second 6, from the top down. 0 when the
/// time cannot be broken down.
uint32_t get_current_omf_time(long t) noexcept;

/// The time in seconds since 1970-01-01 UTC at which the clocks of the local time zone show @p
/// local, whose fields may lie beyond their ranges; -1 when there is none. tm_isdst says whether
/// these clocks are on daylight saving.
int64_t get_utc_time_of(const std::tm& local) noexcept;

/**
 * get_current_omf_time() for frames one after another: those of the same second are told their date
 * without breaking it down again. A zone that tzset() has changed is noticed; zones that share
 * their offset and both their names are taken for one.
 */
class COmfDate
{
public:
    uint32_t At(long t) noexcept;

private:
    /// What a date depends on beside the time. tzset() is what changes it.
    struct Zone
    {
        long offset = 0;
        int daylight = 0;
        const char* standard_name = nullptr;
        const char* daylight_name = nullptr;

        bool operator==(const Zone&) const noexcept = default;
    };
    static Zone CurrentZone() noexcept;

    bool m_bKnown = false;
    long m_nTime = 0;
    Zone m_zone;
    uint32_t m_nDate = 0;
};

/// A random number; the system's is of the C library's rand().
uint32_t get_random() noexcept;

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_TOOL_CLOCK_H
