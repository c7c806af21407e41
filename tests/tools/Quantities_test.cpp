#include "Quantities.h"

#include <gtest/gtest.h>

namespace Orbel::Wrapton::Command
{
namespace
{

TEST(ParseMicroseconds, TakesSecondsUnitsAndClocks)
{
    EXPECT_EQ(ParseMicroseconds("90"), 90'000'000);
    EXPECT_EQ(ParseMicroseconds("1.5s"), 1'500'000);
    EXPECT_EQ(ParseMicroseconds("10m"), 600'000'000);
    EXPECT_EQ(ParseMicroseconds("2h"), 7'200'000'000);
    EXPECT_EQ(ParseMicroseconds("1:30"), 90'000'000);
    EXPECT_EQ(ParseMicroseconds("1:02:03.5"), 3'723'500'000);
    EXPECT_EQ(ParseMicroseconds("0"), 0);
}

TEST(ParseMicroseconds, RefusesEverythingElse)
{
    for (const char* text : {"",
                             "-1",
                             "x",
                             "1x",
                             "1:",
                             ":1",
                             "1:2:3:4",
                             "1m2",
                             "1:2m",
                             "1..2",
                             ".",
                             "1e3",
                             " 1",
                             "1 ",
                             "nan",
                             "9999999999999"})
        EXPECT_EQ(ParseMicroseconds(text), std::nullopt) << text;
}

TEST(ParseBytes, TakesSizesWithAUnit)
{
    EXPECT_EQ(ParseBytes("500K"), 512'000u);
    EXPECT_EQ(ParseBytes("1.5MB"), 1'572'864u);
    EXPECT_EQ(ParseBytes("4GiB"), 4'294'967'296u);
    EXPECT_EQ(ParseBytes("2T"), 2'199'023'255'552u);
}

TEST(ParseBytes, RefusesEverythingElse)
{
    for (const char* text : {"", "100", "K", "0M", "-1M", "1X", "1MM", "1Mb", "1m", "99999999999T"})
        EXPECT_EQ(ParseBytes(text), std::nullopt) << text;
}

TEST(ClockText, ShowsHoursWhenThereAreAny)
{
    EXPECT_EQ(ClockText(0), "0:00");
    EXPECT_EQ(ClockText(65'535'000), "1:05.535");
    EXPECT_EQ(ClockText(47'721'858'844), "13:15:21.858");
    EXPECT_EQ(ClockText(86'400'000'000), "24:00:00");
}

}  // namespace
}  // namespace Orbel::Wrapton::Command
