#include "UnitGroup.h"

#include "support/Bytes.h"

namespace Orbel::Wrapton::Command
{
namespace
{

using namespace Support;

Bytes Grouped(Bytes picture)
{
    GroupUnits(picture);
    return picture;
}

/// A unit behind a start code of four bytes, @p size bytes together.
Bytes Long(std::size_t size)
{
    return Join({Hex("00 00 00 01"), Payload(size - 4)});
}

/// The same unit behind three bytes.
Bytes Short(std::size_t size)
{
    return Join({Hex("00 00 01"), Payload(size - 4)});
}

TEST(GroupUnits, LeavesAPictureOfShortPiecesAsItIs)
{
    for (const Bytes& picture : {Join({Long(10), Long(20), Long(100000)}),
                                 Join({Long(10), Short(100000), Short(20)}),
                                 Join({Short(10), Short(100000)}),
                                 Long(4),
                                 Payload(100),
                                 Bytes()})
    {
        EXPECT_TRUE(Same(Grouped(picture), picture));
    }
}

TEST(GroupUnits, JoinsUnitsWhenOneAheadOfTheLastIsTooLong)
{
    EXPECT_TRUE(Same(Grouped(Join({Long(65522), Long(9)})), Join({Long(65522), Long(9)})));
    EXPECT_TRUE(Same(Grouped(Join({Long(65523), Long(9), Long(70000)})),
                     Join({Long(65523), Short(9), Short(70000)})));
    EXPECT_TRUE(Same(Grouped(Join({Long(9), Long(65000), Short(1000), Long(9)})),
                     Join({Long(9), Short(65000), Short(1000), Short(9)})));
}

TEST(GroupUnits, LengthensTheFirstStartCodeWhenAnotherIsLong)
{
    EXPECT_TRUE(Same(Grouped(Join({Short(10), Long(20)})), Join({Long(10), Short(20)})));
}

TEST(GroupUnits, DropsZerosBetweenUnitsWhereTheyWouldMakeAStartCodeLong)
{
    EXPECT_TRUE(
        Same(Grouped(Join({Short(10), Zero(2), Long(20), Zero(3)})), Join({Long(10), Short(20)})));
    EXPECT_TRUE(Same(Grouped(Join({Zero(1), Long(10), Long(20)})), Join({Long(10), Short(20)})));
}

}  // namespace
}  // namespace Orbel::Wrapton::Command
