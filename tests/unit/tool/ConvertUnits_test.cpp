// Where the conversion of start codes stops, which tells what was left out.
#include "support/Bytes.h"
#include "tool/AvcConvert.h"

namespace Orbel::Wrapton
{
namespace
{

using Support::Bytes;
using Support::Hex;
using Support::Same;

const Bytes kTwoUnits = Hex("00 00 01 65 AA BB 00 00 00 01 41 CC");

TEST(ConvertUnits, TellsWhatTheFirstUnitThatDidNotFitNeeds)
{
    struct Case
    {
        std::size_t room;
        std::size_t written;
        std::size_t left_out;
    };
    for (const Case& expected : {Case{0, 0, 7},
                                 Case{3, 0, 7},
                                 Case{6, 0, 7},
                                 Case{7, 7, 6},
                                 Case{10, 7, 6},
                                 Case{12, 7, 6},
                                 Case{13, 13, 0},
                                 Case{14, 13, 0}})
    {
        Bytes out(expected.room, 0xEE);
        const auto result = CAvcConvert::ConvertUnits(kTwoUnits, out);
        EXPECT_EQ(result.written, expected.written) << expected.room;
        EXPECT_EQ(result.left_out, expected.left_out) << expected.room;
        out.resize(result.written);
        EXPECT_TRUE(Same(
            out,
            Support::Slice(Hex("00 00 00 03 65 AA BB 00 00 00 02 41 CC"), 0, expected.written)));
    }
}

TEST(ConvertUnits, CountsAnEmptyUnitWithItsLength)
{
    const Bytes frame = Hex("00 00 00 01");
    Bytes out(4, 0xEE);
    EXPECT_EQ(CAvcConvert::ConvertUnits(frame, {out.data(), 3}).left_out, 4u);
    EXPECT_EQ(CAvcConvert::ConvertUnits(frame, out).written, 4u);
    EXPECT_TRUE(Same(out, Hex("00 00 00 00")));
}

TEST(ConvertUnits, LeavesNothingOutOfDataWithoutStartCodes)
{
    const auto result = CAvcConvert::ConvertUnits(Hex("65 AA BB CC"), {});
    EXPECT_EQ(result.written, 0u);
    EXPECT_EQ(result.left_out, 0u);
}

}  // namespace
}  // namespace Orbel::Wrapton
