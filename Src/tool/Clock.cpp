#include "tool/Clock.h"

#include <atomic>
#include <cstdlib>
#include <mutex>

namespace Orbel::Wrapton
{
namespace
{

/// Seconds from 1904-01-01 to 1970-01-01.
constexpr int64_t kMp4Epoch = 2082844800;

/// Around calls that look at the time zone. The C library keeps them apart by a lock of its own,
/// but one that ThreadSanitizer cannot see.
constinit std::mutex s_zoneMutex;

int64_t SystemNow() noexcept
{
    return std::time(nullptr);
}

bool SystemLocalTime(int64_t time, std::tm& broken_down) noexcept
{
    const std::time_t seconds = time;
    const std::scoped_lock lock(s_zoneMutex);
    return localtime_r(&seconds, &broken_down) != nullptr;
}

/// Kept: of the C library's sequence, so that a program's srand() decides what comes.
uint32_t SystemRandom() noexcept
{
    return static_cast<uint32_t>(std::rand());  // NOLINT(cert-msc30-c,cert-msc50-cpp)
}

constexpr Sources kSystemSources{SystemNow, SystemLocalTime, SystemRandom};

std::atomic<const Sources*> s_pSources{&kSystemSources};

const Sources& Installed() noexcept
{
    return *s_pSources.load(std::memory_order_acquire);
}

/// The field of a packed date: @p value shifted by @p bias, cut to @p bits.
constexpr uint32_t Field(int value, uint32_t bias, uint32_t bits)
{
    return (static_cast<uint32_t>(value) + bias) & ((1u << bits) - 1);
}

}  // namespace

const Sources& SystemSources() noexcept
{
    return kSystemSources;
}

void InstallSources(const Sources* sources) noexcept
{
    s_pSources.store(sources != nullptr ? sources : &kSystemSources, std::memory_order_release);
}

uint32_t get_current_mp4_time() noexcept
{
    return static_cast<uint32_t>(get_current_utc_time() + kMp4Epoch);
}

int64_t get_current_utc_time() noexcept
{
    return Installed().now();
}

uint32_t get_current_omf_time(long t) noexcept
{
    std::tm date{};
    if (!Installed().local_time(t != 0 ? t : get_current_utc_time(), date)) return 0;

    constexpr uint32_t kYearsFrom1900To2000 = 100;
    return Field(date.tm_year, 0u - kYearsFrom1900To2000, 6) << 26 |  //
           Field(date.tm_mon, 1, 4) << 22 |                           //
           Field(date.tm_mday, 0, 5) << 17 |                          //
           Field(date.tm_hour, 0, 5) << 12 |                          //
           Field(date.tm_min, 0, 6) << 6 |                            //
           Field(date.tm_sec, 0, 6);
}

int64_t get_utc_time_of(const std::tm& local) noexcept
{
    std::tm fields = local;
    const std::scoped_lock lock(s_zoneMutex);
    return std::mktime(&fields);
}

COmfDate::Zone COmfDate::CurrentZone() noexcept
{
    const std::scoped_lock lock(s_zoneMutex);
    return {::timezone, ::daylight, ::tzname[0], ::tzname[1]};
}

uint32_t COmfDate::At(long t) noexcept
{
    // Other sources than the system's may tell the same time differently whenever they like.
    if (t == 0 || &Installed() != &kSystemSources) return get_current_omf_time(t);
    if (m_bKnown && t == m_nTime && m_zone == CurrentZone()) return m_nDate;

    m_nDate = get_current_omf_time(t);
    m_zone = CurrentZone();
    m_nTime = t;
    m_bKnown = true;
    return m_nDate;
}

uint32_t get_random() noexcept
{
    return Installed().random();
}

}  // namespace Orbel::Wrapton
