#include "tool/Clock.h"

#include <array>
#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>

#include <gtest/gtest.h>

namespace Orbel::Wrapton
{
namespace
{

int64_t s_now = 0;
int64_t s_brokenDown = 0;

/// Fixes the clock; local time and chance stay the system's unless a test says otherwise.
class Clock : public ::testing::Test
{
protected:
    Clock() { InstallSources(&m_sources); }
    ~Clock() override { InstallSources(nullptr); }
    Clock(const Clock&) = delete;
    Clock& operator=(const Clock&) = delete;

    static int64_t FixedNow() noexcept { return s_now; }

    static bool NoLocalTime(int64_t /*time*/, std::tm& /*brokenDown*/) noexcept { return false; }

    static bool UtcAsLocalTime(int64_t time, std::tm& brokenDown) noexcept
    {
        s_brokenDown = time;
        const std::time_t seconds = time;
        return gmtime_r(&seconds, &brokenDown) != nullptr;
    }

    static uint32_t FixedRandom() noexcept { return 0xC0FFEE; }

    Sources m_sources{FixedNow, UtcAsLocalTime, FixedRandom};
};

/// Sets the time zone of the process for a scope.
class ZoneScope
{
public:
    explicit ZoneScope(const char* zone)
    {
        const char* const before = std::getenv("TZ");
        if (before != nullptr) m_before = before;
        setenv("TZ", zone, 1);
        tzset();
    }
    ~ZoneScope()
    {
        if (m_before)
        {
            setenv("TZ", m_before->c_str(), 1);
        }
        else
        {
            unsetenv("TZ");
        }
        tzset();
    }
    ZoneScope(const ZoneScope&) = delete;
    ZoneScope& operator=(const ZoneScope&) = delete;

private:
    std::optional<std::string> m_before;
};

constexpr uint32_t Packed(
    uint32_t year, uint32_t month, uint32_t day, uint32_t hour, uint32_t minute, uint32_t second)
{
    return year << 26 | month << 22 | day << 17 | hour << 12 | minute << 6 | second;
}

constexpr int64_t kNovember2023 = 1700000000;  // 2023-11-14 22:13:20 UTC

TEST(LocalDate, BecomesTheTimeOfTheZone)
{
    std::tm date{};
    date.tm_year = 115;
    date.tm_mon = 6;
    date.tm_mday = 4;
    date.tm_hour = 12;
    {
        const ZoneScope zone("UTC0");
        EXPECT_EQ(get_utc_time_of(date), 1436011200);  // 2015-07-04 12:00:00 UTC
    }
    const ZoneScope zone("EST5EDT,M3.2.0,M11.1.0");
    EXPECT_EQ(get_utc_time_of(date), 1436011200 + 5 * 3600);  // daylight saving marked off
    date.tm_isdst = 1;
    EXPECT_EQ(get_utc_time_of(date), 1436011200 + 4 * 3600);
}

TEST(LocalDate, MayLieBeyondTheRangesOfItsFields)
{
    const ZoneScope zone("UTC0");
    std::tm date{};
    date.tm_year = 100;
    date.tm_mon = -1;
    date.tm_mday = 0;
    EXPECT_EQ(get_utc_time_of(date), 943920000);  // 1999-11-30 00:00:00
}

TEST_F(Clock, UtcTimeIsTheSystemTime)
{
    s_now = kNovember2023;
    EXPECT_EQ(get_current_utc_time(), kNovember2023);
    s_now = int64_t{1} << 40;
    EXPECT_EQ(get_current_utc_time(), int64_t{1} << 40);
}

TEST_F(Clock, Mp4TimeCountsFrom1904)
{
    s_now = 0;
    EXPECT_EQ(get_current_mp4_time(), 2082844800u);
    s_now = kNovember2023;
    EXPECT_EQ(get_current_mp4_time(), 3782844800u);
}

TEST_F(Clock, Mp4TimeIsCutTo32Bits)
{
    s_now = 2212122495;  // 2040-02-06 06:28:15 UTC
    EXPECT_EQ(get_current_mp4_time(), 0xFFFFFFFFu);
    s_now = 2212122496;
    EXPECT_EQ(get_current_mp4_time(), 0u);
}

TEST_F(Clock, OmfTimePacksADateIntoOneWord)
{
    EXPECT_EQ(get_current_omf_time(kNovember2023), Packed(23, 11, 14, 22, 13, 20));
    EXPECT_EQ(get_current_omf_time(kNovember2023), 0x5EDD6354u);
    EXPECT_EQ(get_current_omf_time(946684800), Packed(0, 1, 1, 0, 0, 0));  // 2000-01-01
    EXPECT_EQ(get_current_omf_time(1735689599), Packed(24, 12, 31, 23, 59, 59));
    EXPECT_EQ(get_current_omf_time(1709164800), Packed(24, 2, 29, 0, 0, 0));
}

TEST_F(Clock, OmfTimeMasksAYearOutsideItsSixBits)
{
    EXPECT_EQ(get_current_omf_time(946684799), Packed(63, 12, 31, 23, 59, 59));   // 1999
    EXPECT_EQ(get_current_omf_time(2966371199), Packed(63, 12, 31, 23, 59, 59));  // 2063
    EXPECT_EQ(get_current_omf_time(2966371200), Packed(0, 1, 1, 0, 0, 0));        // 2064
    EXPECT_EQ(get_current_omf_time(-1), Packed(33, 12, 31, 23, 59, 59));          // 1969
}

TEST_F(Clock, OmfTimeOfZeroIsNow)
{
    s_now = kNovember2023;
    EXPECT_EQ(get_current_omf_time(0), Packed(23, 11, 14, 22, 13, 20));
    EXPECT_EQ(s_brokenDown, kNovember2023);
    EXPECT_EQ(get_current_omf_time(1), Packed(34, 1, 1, 0, 0, 1));  // 1970: −30 in six bits
    EXPECT_EQ(s_brokenDown, 1);
}

TEST_F(Clock, OmfTimeIsZeroWhenLocalTimeFails)
{
    m_sources.local_time = NoLocalTime;
    EXPECT_EQ(get_current_omf_time(kNovember2023), 0u);
    s_now = kNovember2023;
    EXPECT_EQ(get_current_omf_time(0), 0u);
}

TEST_F(Clock, OmfTimeIsInTheLocalTimeZone)
{
    m_sources.local_time = SystemSources().local_time;
    {
        const ZoneScope east("XST-5:30");  // 5 h 30 min ahead of UTC
        EXPECT_EQ(get_current_omf_time(kNovember2023), Packed(23, 11, 15, 3, 43, 20));
    }
    {
        const ZoneScope west("XST8");
        EXPECT_EQ(get_current_omf_time(kNovember2023), Packed(23, 11, 14, 14, 13, 20));
    }
    {
        // Summer time from the second Sunday of March, one hour ahead.
        const ZoneScope summer("XST8XDT,M3.2.0,M11.1.0");
        EXPECT_EQ(get_current_omf_time(1720000000), Packed(24, 7, 3, 2, 46, 40));
    }
}

TEST_F(Clock, SystemLocalTimeRefusesWhatHasNoYear)
{
    std::tm brokenDown{};
    EXPECT_FALSE(SystemSources().local_time(INT64_MAX, brokenDown));
    m_sources.local_time = SystemSources().local_time;
    EXPECT_EQ(get_current_omf_time(INT64_MAX), 0u);
}

TEST_F(Clock, RandomNumbersComeFromTheInstalledSource)
{
    EXPECT_EQ(get_random(), 0xC0FFEEu);
}

TEST(SystemClock, RunsOnTheSystemTime)
{
    const int64_t before = std::time(nullptr);
    const int64_t now = get_current_utc_time();
    const uint32_t mp4 = get_current_mp4_time();
    const int64_t after = std::time(nullptr);
    EXPECT_LE(before, now);
    EXPECT_LE(now, after);
    EXPECT_GE(mp4, static_cast<uint32_t>(before + 2082844800));
    EXPECT_LE(mp4, static_cast<uint32_t>(after + 2082844800));
}

TEST(COmfDate, AgreesWithTheFunctionForTimesThatStayAndMove)
{
    const ZoneScope zone("CET-1CEST,M3.5.0,M10.5.0/3");
    COmfDate date;
    for (const long time : {1700000000L, 1700000000L, 1700000001L, 1690000000L, 1700000000L, -5L})
    {
        EXPECT_EQ(date.At(time), get_current_omf_time(time)) << time;
    }
}

TEST(COmfDate, NoticesAChangeOfTheZoneWithinASecond)
{
    constexpr long kTime = 1700000000;
    COmfDate date;
    uint32_t in_utc = 0;
    {
        const ZoneScope zone("UTC0");
        in_utc = date.At(kTime);
        EXPECT_EQ(in_utc, get_current_omf_time(kTime));
    }
    const ZoneScope zone("JST-9");
    EXPECT_EQ(date.At(kTime), get_current_omf_time(kTime));
    EXPECT_NE(date.At(kTime), in_utc);
}

TEST(COmfDate, TakesZeroForNow)
{
    COmfDate date;
    EXPECT_NE(date.At(0), 0u);
}

TEST_F(Clock, OmfDateAsksOtherSourcesEveryTime)
{
    COmfDate date;
    EXPECT_NE(date.At(1700000000), 0u);
    s_brokenDown = 0;
    date.At(1700000000);
    EXPECT_EQ(s_brokenDown, 1700000000);
}

TEST(SystemClock, TakesRandomNumbersFromTheSequenceOfTheProgram)
{
    // NOLINTBEGIN(cert-msc30-c,cert-msc32-c,cert-msc50-cpp,cert-msc51-cpp): the sequence matters
    std::srand(20);
    const std::array expected = {std::rand(), std::rand(), std::rand()};
    std::srand(20);
    // NOLINTEND(cert-msc30-c,cert-msc32-c,cert-msc50-cpp,cert-msc51-cpp)
    for (const int number : expected)
    {
        EXPECT_EQ(get_random(), static_cast<uint32_t>(number));
    }
}

}  // namespace
}  // namespace Orbel::Wrapton
