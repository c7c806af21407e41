#include "tool/Buffer.h"

#include <algorithm>
#include <climits>

#include "support/Bytes.h"

namespace Orbel::Wrapton
{
namespace
{

TEST(CAutoBuffer, StartsWithoutStorage)
{
    CAutoBuffer buffer;
    EXPECT_FALSE(buffer.HadInit());
    EXPECT_EQ(buffer.GetPointer(), nullptr);
    EXPECT_EQ(buffer.GetBufferLen(), 0u);
}

TEST(CAutoBuffer, GivesZeroedBytesOfTheSizeAskedFor)
{
    for (const int size : {1, 2, 4097})
    {
        CAutoBuffer buffer;
        ASSERT_EQ(buffer.Init(size), 0);
        EXPECT_TRUE(buffer.HadInit());
        EXPECT_EQ(buffer.GetBufferLen(), static_cast<uint32_t>(size));
        EXPECT_TRUE(std::all_of(
            buffer.GetPointer(), buffer.GetPointer() + size, [](char byte) { return byte == 0; }));
    }
}

TEST(CAutoBuffer, IsInitialisedOnceOnly)
{
    CAutoBuffer buffer;
    ASSERT_EQ(buffer.Init(10), 0);
    char* const storage = buffer.GetPointer();
    storage[9] = 'x';
    EXPECT_EQ(buffer.Init(20), -1);
    EXPECT_EQ(buffer.Init(10), -1);
    EXPECT_EQ(buffer.GetPointer(), storage);
    EXPECT_EQ(buffer.GetBufferLen(), 10u);
    EXPECT_EQ(storage[9], 'x');
}

TEST(CAutoBuffer, RefusesASizeBelowOneAndMayBeTriedAgain)
{
    CAutoBuffer buffer;
    EXPECT_EQ(buffer.Init(0), -1);
    EXPECT_EQ(buffer.Init(-1), -1);
    EXPECT_EQ(buffer.Init(INT_MIN), -1);
    EXPECT_FALSE(buffer.HadInit());
    EXPECT_EQ(buffer.Init(1), 0);
}

}  // namespace
}  // namespace Orbel::Wrapton
