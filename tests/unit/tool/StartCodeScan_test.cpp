#include "tool/StartCodeScan.h"

#include <algorithm>
#include <memory>
#include <new>
#include <string>

#include "support/Bytes.h"
#include "support/Chance.h"
#include "tool/StartCode.h"

namespace Orbel::Wrapton
{
namespace
{

using Support::Bytes;
using Support::Chance;

constexpr unsigned char kUntouched = 0xEE;
constexpr std::size_t kLine = 64;

bool HasAvx2()
{
    return __builtin_cpu_supports("avx2") != 0;
}

/// Bytes that begin at @p alignment of a cache line and end where their allocation does, so that a
/// sanitizer sees every byte that is read behind them.
class Placed
{
public:
    Placed(std::size_t size, std::size_t alignment)
        : m_memory(static_cast<unsigned char*>(
              ::operator new (alignment + size, std::align_val_t{kLine}))),
          m_alignment(alignment)
    {
    }

    [[nodiscard]] unsigned char* Begin() const { return m_memory.get() + m_alignment; }

private:
    struct Release
    {
        void operator()(unsigned char* memory) const
        {
            ::operator delete (memory, std::align_val_t{kLine});
        }
    };
    std::unique_ptr<unsigned char, Release> m_memory;
    std::size_t m_alignment;
};

/// What a range holds, by the definition of a start code.
std::size_t Expected(const ScanRange& range)
{
    for (std::size_t at = 0; at + 3 < range.size + range.ahead; ++at)
    {
        const unsigned char* const code = range.data + at;
        const bool short_form = code[0] == 0 && code[1] == 0 && code[2] == 1;
        const bool long_form = code[0] == 0 && code[1] == 0 && code[2] == 0 && code[3] == 1;
        if (short_form || long_form) return at;
    }
    return range.size;
}

/// Runs a copying scan into an allocation of the range's size: what it copied, and nothing behind
/// it.
::testing::AssertionResult CopiesUpTo(StartCodeScan scan,
                                      const ScanRange& range,
                                      std::size_t expected)
{
    const auto to = std::make_unique<unsigned char[]>(range.size);
    std::fill_n(to.get(), range.size, kUntouched);
    const std::size_t place = scan(range, to.get());
    if (place != expected)
    {
        return ::testing::AssertionFailure() << "found at " << place << ", not " << expected;
    }
    if (!std::equal(to.get(), to.get() + place, range.data))
    {
        return ::testing::AssertionFailure() << "copied other bytes";
    }
    if (!std::all_of(to.get() + place,
                     to.get() + range.size,
                     [](unsigned char byte) { return byte == kUntouched; }))
    {
        return ::testing::AssertionFailure() << "wrote behind the copy";
    }
    return ::testing::AssertionSuccess();
}

void ExpectAllAgree(const ScanRange& range)
{
    const std::size_t expected = Expected(range);
    const std::string of = std::to_string(range.size) + "+" + std::to_string(range.ahead);
    EXPECT_EQ(ScanPlain<false>(range, nullptr), expected) << of;
    EXPECT_EQ(ScanSse2<false>(range, nullptr), expected) << of;
    EXPECT_TRUE(CopiesUpTo(ScanPlain<true>, range, expected)) << of;
    EXPECT_TRUE(CopiesUpTo(ScanSse2<true>, range, expected)) << of;
    if (!HasAvx2()) return;
    EXPECT_EQ(ScanAvx2<false>(range, nullptr), expected) << of;
    EXPECT_TRUE(CopiesUpTo(ScanAvx2<true>, range, expected)) << of;
}

/// Every way to end a range with the bytes at @p data: from the one that takes them all on.
void ExpectAllAgree(const unsigned char* data, std::size_t size)
{
    for (std::size_t ahead = 0; ahead <= std::min(kStartCodeAhead, size); ++ahead)
    {
        ExpectAllAgree({data, size - ahead, ahead});
    }
}

TEST(StartCodeScan, AgreesWithThePlainLoopOnRandomBytes)
{
    Chance chance(8);
    for (int round = 0; round < 1000000; ++round)
    {
        const std::size_t size = chance.Below(round % 16 == 0 ? 600 : 80);
        const std::size_t ahead = std::min<std::size_t>(chance.Below(4), size);
        // From nearly nothing but zeros to data in which zeros are as rare as in coded pictures.
        const uint32_t rarity = chance.OneOf({2, 3, 4, 8, 30, 250});
        Bytes bytes(size);
        for (unsigned char& byte : bytes)
        {
            const uint32_t value = chance.Below(rarity);
            byte = static_cast<unsigned char>(value < 2 ? value : 2 + value % 254);
        }
        const auto exact = std::make_unique<unsigned char[]>(size);
        std::copy(bytes.begin(), bytes.end(), exact.get());
        ExpectAllAgree({exact.get(), size - ahead, ahead});
        if (::testing::Test::HasFailure()) return;
    }
}

TEST(StartCodeScan, FindsACodeAcrossEveryBorderOfEveryAlignment)
{
    constexpr std::size_t kSize = 2 * 128 + 64;
    for (std::size_t alignment = 0; alignment < kLine; ++alignment)
    {
        const Placed placed(kSize, alignment);
        unsigned char* const data = placed.Begin();
        for (std::size_t length = 3; length <= 5; ++length)
        {
            for (std::size_t place = 0; place + length <= kSize; ++place)
            {
                std::fill_n(data, kSize, static_cast<unsigned char>(2));
                std::fill_n(data + place, length - 1, static_cast<unsigned char>(0));
                data[place + length - 1] = 1;
                ExpectAllAgree(data, kSize);
                if (::testing::Test::HasFailure()) return;
            }
        }
    }
}

TEST(StartCodeScan, TellsNearMissesFromCodesInEveryPlace)
{
    constexpr std::size_t kSize = 200;
    const auto data = std::make_unique<unsigned char[]>(kSize);
    for (std::size_t place = 0; place + 4 <= kSize; ++place)
    {
        for (unsigned pattern = 0; pattern < 81; ++pattern)
        {
            std::fill_n(data.get(), kSize, static_cast<unsigned char>(0xFF));
            for (unsigned i = 0, rest = pattern; i < 4; ++i, rest /= 3)
            {
                data[place + i] = static_cast<unsigned char>(rest % 3);
            }
            ExpectAllAgree(data.get(), kSize);
            if (::testing::Test::HasFailure()) return;
        }
    }
}

TEST(StartCodeScan, KeepsToTheRuleOfTheLastBytesForEveryLength)
{
    for (std::size_t size = 0; size <= 300; ++size)
    {
        for (std::size_t back = 0; back <= 6; ++back)
        {
            const auto data = std::make_unique<unsigned char[]>(size);
            std::fill_n(data.get(), size, static_cast<unsigned char>(9));
            for (std::size_t i = 0; i < 4 && i + back < size; ++i)
            {
                data[size - 1 - back - i] = i == 0 ? 1 : 0;
            }
            ExpectAllAgree(data.get(), size);
        }
    }
}

TEST(FindStartCode, GivesBothPlacesOfBothForms)
{
    const Bytes data = Support::Hex("11 00 00 01 22 00 00 00 01 33");
    const StartCode first = FindStartCode(data, 0);
    EXPECT_EQ(first.begin, 1u);
    EXPECT_EQ(first.unit, 4u);
    const StartCode second = FindStartCode(data, first.unit);
    EXPECT_EQ(second.begin, 5u);
    EXPECT_EQ(second.unit, 9u);
    const StartCode none = FindStartCode(data, second.unit);
    EXPECT_EQ(none.begin, data.size());
    EXPECT_EQ(none.unit, data.size());
}

TEST(FindStartCode, DoesNotTakeAZeroAheadOfTheSearchForTheLongForm)
{
    const Bytes data = Support::Hex("00 00 00 01 22");
    EXPECT_EQ(FindStartCode(data, 0).begin, 0u);
    EXPECT_EQ(FindStartCode(data, 1).begin, 1u);
    EXPECT_EQ(FindStartCode(data, 1).unit, 4u);
    EXPECT_EQ(FindStartCode(data, 2).begin, 5u);
}

TEST(FindStartCode, LooksForCodesThatBeginAheadOfABound)
{
    const Bytes data = Support::Hex("11 00 00 01 22 00 00 00 01 33");
    EXPECT_EQ(FindStartCode(data, 0, 0).begin, 0u);
    EXPECT_EQ(FindStartCode(data, 0, 1).begin, 1u);
    EXPECT_EQ(FindStartCode(data, 0, 1).unit, 1u) << "a bound is no start code";
    EXPECT_EQ(FindStartCode(data, 0, 2).begin, 1u) << "recognised by bytes behind the bound";
    EXPECT_EQ(FindStartCode(data, 0, 2).unit, 4u);
    EXPECT_EQ(FindStartCode(data, 4, 1).unit, 5u);
    EXPECT_EQ(FindStartCode(data, 4, 2).unit, 9u);
    EXPECT_EQ(FindStartCode(data, 9, 1).begin, data.size());
    EXPECT_EQ(FindStartCode(data, 9, 2).begin, data.size());
}

TEST(CopyToStartCode, StopsAtItsBoundInFramesOfEverySize)
{
    for (const std::size_t size : {std::size_t{2000}, std::size_t{600 << 10}})
    {
        const Bytes data = Support::Payload(size);
        for (const std::size_t most : {std::size_t{0}, std::size_t{1}, std::size_t{981}, size - 7})
        {
            Bytes to(most + 1, kUntouched);
            EXPECT_EQ(CopyToStartCode(data, 5, to.data(), most).begin, 5 + most);
            EXPECT_TRUE(std::equal(to.begin(), to.end() - 1, data.begin() + 5));
            EXPECT_EQ(to.back(), kUntouched);
        }
    }
}

TEST(CopyToStartCode, AgreesWithTheSearchAroundEveryPartOfALargeFrame)
{
    constexpr std::size_t kSize = 600 << 10;
    constexpr std::size_t kPart = 8192;
    const Bytes clean = Support::Payload(kSize);
    const auto data = std::make_unique<unsigned char[]>(kSize);
    const auto to = std::make_unique<unsigned char[]>(kSize);
    for (std::size_t border : {kPart, 7 * kPart, kSize - 8})
    {
        for (std::size_t place = border - 8; place <= border + 4; ++place)
        {
            std::copy(clean.begin(), clean.end(), data.get());
            std::fill_n(to.get(), kSize, kUntouched);
            const unsigned char code[] = {0, 0, 0, 1};
            std::copy(std::begin(code), std::end(code), data.get() + place);

            const StartCode found = CopyToStartCode({data.get(), kSize}, 0, to.get());
            EXPECT_EQ(found.begin, place);
            EXPECT_EQ(found.unit, place + 4);
            EXPECT_TRUE(std::equal(data.get(), data.get() + place, to.get()));
            EXPECT_TRUE(std::all_of(to.get() + place,
                                    to.get() + kSize,
                                    [](unsigned char byte) { return byte == kUntouched; }));
        }
    }
}

TEST(CopyToStartCode, CopiesALargeFrameWithoutACodeWhole)
{
    const Bytes data = Support::Payload((256 << 10) + 12345);
    Bytes to(data.size(), kUntouched);
    EXPECT_EQ(CopyToStartCode(data, 0, to.data()).begin, data.size());
    EXPECT_TRUE(Support::Same(to, data));
}

}  // namespace
}  // namespace Orbel::Wrapton
