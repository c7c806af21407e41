#include "tool/PesTime.h"

#include <array>

#include "support/Bytes.h"

namespace Orbel::Wrapton
{
namespace
{

using Support::Bytes;
using Support::Hex;

Bytes Written(PesTime kind, uint64_t time)
{
    std::array<unsigned char, 5> room{};
    CMsbCursor w(room);
    PutPesTime(w, kind, time);
    EXPECT_EQ(w.Produced(), room.size());
    return {room.begin(), room.end()};
}

TEST(PesTime, HasThreeGroupsWithAMarkerBehindEach)
{
    EXPECT_EQ(Written(PesTime::kPtsAlone, 0), Hex("21 00 01 00 01"));
    EXPECT_EQ(Written(PesTime::kPtsBeforeDts, 0), Hex("31 00 01 00 01"));
    EXPECT_EQ(Written(PesTime::kDts, 0), Hex("11 00 01 00 01"));
    EXPECT_EQ(Written(PesTime::kPtsAlone, 0x7FFF), Hex("21 00 01 FF FF"));
    EXPECT_EQ(Written(PesTime::kPtsAlone, 0x3FFF8000), Hex("21 FF FF 00 01"));
    EXPECT_EQ(Written(PesTime::kPtsAlone, 0x1C0000000), Hex("2F 00 01 00 01"));
}

TEST(PesTime, Keeps33Bits)
{
    EXPECT_EQ(Written(PesTime::kDts, 0x1FFFFFFFF), Hex("1F FF FF FF FF"));
    EXPECT_EQ(Written(PesTime::kDts, 0x200000000), Hex("11 00 01 00 01"));
}

}  // namespace
}  // namespace Orbel::Wrapton
