#include "tool/Sum32.h"

#include <algorithm>
#include <memory>

#include "support/Bytes.h"
#include "support/Chance.h"
#include "tool/StreamTool.h"

namespace Orbel::Wrapton
{
namespace
{

using Support::Bytes;
using Support::Chance;

/// Runs a copying sum between allocations of the data's size.
::testing::AssertionResult CopiesAndGives(WordSum sum,
                                          const unsigned char* data,
                                          std::size_t size,
                                          uint32_t expected)
{
    const auto to = std::make_unique<unsigned char[]>(size);
    const uint32_t came = sum(data, size, to.get());
    if (came != expected)
    {
        return ::testing::AssertionFailure() << came << " of " << size << ", not " << expected;
    }
    if (!std::equal(data, data + size, to.get()))
    {
        return ::testing::AssertionFailure() << "copied other bytes of " << size;
    }
    return ::testing::AssertionSuccess();
}

uint32_t ByteByByte(const unsigned char* data, std::size_t size)
{
    uint32_t sum = 0;
    for (std::size_t i = 0; i < size; ++i)
    {
        sum += static_cast<uint32_t>(data[i]) << (8 * (i % 4));
    }
    return sum;
}

void ExpectAllAgree(const unsigned char* data, std::size_t size)
{
    const uint32_t expected = ByteByByte(data, size);
    EXPECT_EQ(SumPlain<false>(data, size, nullptr), expected) << size;
    EXPECT_EQ(SumSse2<false>(data, size, nullptr), expected) << size;
    EXPECT_TRUE(CopiesAndGives(SumPlain<true>, data, size, expected));
    EXPECT_TRUE(CopiesAndGives(SumSse2<true>, data, size, expected));
    if (__builtin_cpu_supports("avx2") == 0) return;
    EXPECT_EQ(SumAvx2<false>(data, size, nullptr), expected) << size;
    EXPECT_TRUE(CopiesAndGives(SumAvx2<true>, data, size, expected));
}

TEST(WordSum, AgreesWithSingleBytesForEveryLength)
{
    Chance chance(3);
    for (std::size_t size = 0; size <= 700; ++size)
    {
        const auto data = std::make_unique<unsigned char[]>(size);
        std::generate_n(
            data.get(), size, [&chance] { return static_cast<unsigned char>(chance.Below(256)); });
        ExpectAllAgree(data.get(), size);
    }
}

TEST(WordSum, AgreesOnRandomLengthsAndAlignments)
{
    Chance chance(4);
    for (int round = 0; round < 100000; ++round)
    {
        const std::size_t ahead = chance.Below(64);
        const std::size_t size = chance.Below(300);
        const auto data = std::make_unique<unsigned char[]>(ahead + size);
        for (std::size_t i = 0; i < size; ++i)
        {
            data[ahead + i] = static_cast<unsigned char>(chance.Below(256));
        }
        ExpectAllAgree(data.get() + ahead, size);
        if (::testing::Test::HasFailure()) return;
    }
}

TEST(WordSum, WrapsWhereTheSumPasses32Bits)
{
    const Bytes data(1021, 0xFF);
    ExpectAllAgree(data.data(), data.size());
}

TEST(CopyAndSum32, AgreesAroundTheLengthFromWhichItWorksInParts)
{
    constexpr std::size_t kLarge = 256 << 10;
    for (const std::size_t size : {kLarge - 1, kLarge, kLarge + 1, kLarge + 4095, kLarge + 4099})
    {
        const Bytes data = Support::Payload(size);
        Bytes to(size);
        EXPECT_EQ(CopyAndSum32(data, to.data()), ByteByByte(data.data(), size));
        EXPECT_EQ(GetSum32(data.data(), static_cast<int32_t>(size)), ByteByByte(data.data(), size));
        EXPECT_TRUE(Support::Same(to, data));
    }
}

}  // namespace
}  // namespace Orbel::Wrapton
