#include "StartCodes.h"

#include <gtest/gtest.h>

namespace Orbel::Wrapton::Command
{
namespace
{

using Bytes = std::vector<unsigned char>;

TEST(FindStartCode, GivesTheEndWhenThereIsNone)
{
    const Bytes stream = {0, 0, 1, 9, 0, 0, 0, 1, 0, 0};
    EXPECT_EQ(FindStartCode(stream, 0), 0u);
    EXPECT_EQ(FindStartCode(stream, 1), 5u);
    EXPECT_EQ(FindStartCode(stream, 5), 5u);
    EXPECT_EQ(FindStartCode(stream, 6), 10u);
    EXPECT_EQ(FindStartCode(stream, 10), 10u);
    EXPECT_FALSE(IsLongStartCode(stream, 0));
    EXPECT_TRUE(IsLongStartCode(stream, 5));
}

TEST(WithLongStartCodes, GivesEveryShortOneAZero)
{
    EXPECT_EQ(WithLongStartCodes(Bytes{0, 0, 1, 9, 0, 0, 1, 0x65, 7}),
              (Bytes{0, 0, 0, 1, 9, 0, 0, 0, 1, 0x65, 7}));
}

TEST(WithLongStartCodes, LeavesLongOnesAndTheirExtraZerosAsTheyAre)
{
    const Bytes stream = {0, 0, 0, 1, 9, 0, 0, 0, 0, 1, 0x65};
    EXPECT_EQ(WithLongStartCodes(stream), stream);
}

TEST(WithLongStartCodes, LeavesWhatIsNoStartCode)
{
    for (const Bytes& stream : {Bytes{}, Bytes{0}, Bytes{0, 0}, Bytes{1}, Bytes{0, 0, 2, 0, 1}})
    {
        EXPECT_EQ(WithLongStartCodes(stream), stream);
    }
}

TEST(WithLongStartCodes, CodesAtBothEndsCount)
{
    EXPECT_EQ(WithLongStartCodes(Bytes{0, 0, 1}), (Bytes{0, 0, 0, 1}));
    EXPECT_EQ(WithLongStartCodes(Bytes{5, 0, 0, 1, 0, 0, 1}), (Bytes{5, 0, 0, 0, 1, 0, 0, 0, 1}));
}

}  // namespace
}  // namespace Orbel::Wrapton::Command
