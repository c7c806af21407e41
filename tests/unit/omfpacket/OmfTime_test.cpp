#include "omfpacket/OmfTime.h"

#include <gtest/gtest.h>

namespace Orbel::Wrapton
{
namespace
{

uint32_t Packed(uint32_t year,
                uint32_t month,
                uint32_t day,
                uint32_t hour = 0,
                uint32_t minute = 0,
                uint32_t second = 0)
{
    return year << 26 | month << 22 | day << 17 | hour << 12 | minute << 6 | second;
}

/// 12:00:00 and @p seconds of an ordinary day.
uint32_t Noon(uint32_t seconds)
{
    return Packed(24, 5, 1, 12 + seconds / 3600, seconds / 60 % 60, seconds % 60);
}

TEST(OmfDate, IsTakenApart)
{
    const auto date = ReadOmfDate(Packed(24, 12, 31, 23, 59, 58));
    ASSERT_TRUE(date.has_value());
    EXPECT_EQ(date->year, 2024u);
    EXPECT_EQ(date->month, 12u);
    EXPECT_EQ(date->day, 31u);
    EXPECT_EQ(date->hour, 23u);
    EXPECT_EQ(date->minute, 59u);
    EXPECT_EQ(date->second, 58u);
}

TEST(OmfDate, CountsSecondsThroughTheCalendar)
{
    EXPECT_EQ(ReadOmfDate(Packed(0, 1, 1))->Seconds(), 0);
    EXPECT_EQ(ReadOmfDate(Packed(0, 3, 1))->Seconds(), 60 * 86400);  // 2000 was a leap year
    EXPECT_EQ(ReadOmfDate(Packed(1, 1, 1, 1, 1, 1))->Seconds(), 366 * 86400 + 3661);
    EXPECT_EQ(ReadOmfDate(Packed(63, 12, 31))->Seconds(), 23375 * int64_t{86400});
}

TEST(OmfDate, WordsThatAreNoDateGiveNone)
{
    EXPECT_FALSE(ReadOmfDate(0));
    EXPECT_FALSE(ReadOmfDate(0xFFFFFFFF));
    EXPECT_FALSE(ReadOmfDate(Packed(24, 0, 1)));
    EXPECT_FALSE(ReadOmfDate(Packed(24, 13, 1)));
    EXPECT_FALSE(ReadOmfDate(Packed(24, 4, 31)));
    EXPECT_FALSE(ReadOmfDate(Packed(23, 2, 29)));
    EXPECT_FALSE(ReadOmfDate(Packed(24, 5, 1, 24)));
    EXPECT_FALSE(ReadOmfDate(Packed(24, 5, 1, 0, 60)));
    EXPECT_FALSE(ReadOmfDate(Packed(24, 5, 1, 0, 0, 61)));
    EXPECT_TRUE(ReadOmfDate(Packed(24, 2, 29)));
    EXPECT_TRUE(ReadOmfDate(Packed(16, 12, 31, 23, 59, 60)));
}

TEST(UnwrapOmfStamp, GoesOnWhenTheStampStartsOver)
{
    const OmfPoint before{.time = 65500, .date = Noon(0)};
    EXPECT_EQ(UnwrapOmfStamp(before, 65535, Noon(0)), 65535);
    EXPECT_EQ(UnwrapOmfStamp(before, 4, Noon(0)), 65540);
    EXPECT_EQ(UnwrapOmfStamp({.time = 10 * 65536 + 65500}, 4, 0), 10 * 65536 + 65540);
}

TEST(UnwrapOmfStamp, GoesBackUpToFourSeconds)
{
    const OmfPoint before{.time = 100000, .date = 0};
    EXPECT_EQ(UnwrapOmfStamp(before, static_cast<uint16_t>(96000), 0), 96000);
    EXPECT_EQ(UnwrapOmfStamp(before, static_cast<uint16_t>(95999), 0), 95999 + 65536);
    EXPECT_EQ(UnwrapOmfStamp({.time = 10, .date = 0}, 65530, 0), -6);
}

TEST(UnwrapOmfStamp, BridgesALongPauseByTheDate)
{
    const OmfPoint before{.time = 1000, .date = Noon(0)};
    EXPECT_EQ(UnwrapOmfStamp(before, static_cast<uint16_t>(601000), Noon(600)), 601000);
    // Dates have whole seconds: two and a bit more may lie between them.
    EXPECT_EQ(UnwrapOmfStamp(before, static_cast<uint16_t>(601999), Noon(600)), 601999);
    EXPECT_EQ(UnwrapOmfStamp(before, static_cast<uint16_t>(599001), Noon(600)), 599001);
    EXPECT_EQ(UnwrapOmfStamp(before, static_cast<uint16_t>(604000), Noon(600)), 604000);
    const auto day = Packed(24, 5, 2, 12);
    EXPECT_EQ(UnwrapOmfStamp(before, static_cast<uint16_t>(86401000), day), 86401000);
}

TEST(UnwrapOmfStamp, LeavesADateAloneThatTheStampContradicts)
{
    const OmfPoint before{.time = 1000, .date = Noon(7200)};
    EXPECT_EQ(UnwrapOmfStamp(before, 1040, Noon(7200 + 3600)), 1040) << "an hour forward";
    EXPECT_EQ(UnwrapOmfStamp(before, 1040, Noon(7200 - 3600)), 1040) << "an hour back";
    EXPECT_EQ(UnwrapOmfStamp(before, 1040, Noon(7200 + 5)), 1040) << "the clock was set";
    EXPECT_EQ(UnwrapOmfStamp(before, 1040, Packed(34, 1, 1, 0, 0, 1)), 1040) << "years";
    EXPECT_EQ(UnwrapOmfStamp(before, 1040, 0), 1040) << "no date";
    // 65 s would agree with the stamp, but never did a frame stand so far behind the one before it.
    EXPECT_EQ(UnwrapOmfStamp({.time = 200000, .date = Noon(100)},
                             static_cast<uint16_t>(200000 - 65536 + 40),
                             Noon(100 - 65)),
              200040);
}

}  // namespace
}  // namespace Orbel::Wrapton
