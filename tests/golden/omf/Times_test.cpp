// Numbers, stamps and dates.
#include "golden/omf/Native.h"

#include <array>
#include <chrono>
#include <ctime>

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Hex;

constexpr uint32_t kI = SG_FRAME_SUB_TYPE_I;
constexpr uint32_t kP = SG_FRAME_SUB_TYPE_P;

SGFrameInfo At(SGFrameInfo record, uint32_t time)
{
    record.frame_time = time;
    return record;
}

TEST(OmfTimes, PicturesWithoutTimeAreStampedByTheirNumber)
{
    Native native;
    for (const uint32_t stamp : {40u, 80u, 120u})
    {
        const Bytes frame = native.Give(Picture(stamp == 40 ? kI : kP), Hex("01"));
        EXPECT_EQ(NumberOf(frame), stamp / 40);
        EXPECT_EQ(StampOf(frame), stamp);
    }
}

TEST(OmfTimes, StampsAreCutToWholeMilliseconds)
{
    Native native;
    SGFrameInfo record = Picture();
    record.frame_rate = 30;
    for (const uint32_t stamp : {33u, 66u, 100u, 133u})
    {
        EXPECT_EQ(StampOf(native.Give(record, Hex("01"))), stamp);
    }
}

TEST(OmfTimes, CountedStampsStartOverAfter16Bits)
{
    Native native;
    SGFrameInfo record = Picture();
    record.frame_rate = 1;
    Bytes frame;
    for (int i = 0; i < 65; ++i)
    {
        frame = native.Give(record, Hex("01"));
    }
    EXPECT_EQ(StampOf(frame), 65000u);
    EXPECT_EQ(StampOf(native.Give(record, Hex("01"))), 66000u - 65536u);
    // Sound without a time takes the stamp as it was written.
    EXPECT_EQ(StampOf(native.Give(Sound(), Hex("01"))), 66000u - 65536u);
}

TEST(OmfTimes, ACountIsDividedByTheRateOfTheLastKeyFrame)
{
    Native native;
    SGFrameInfo record = Picture();
    record.frame_rate = 10;
    native.Give(record, Hex("01"));
    EXPECT_EQ(StampOf(native.Give(Picture(kP), Hex("01"))), 200u);
    EXPECT_EQ(StampOf(native.Give(Picture(kI), Hex("01"))), 120u);
}

TEST(OmfTimes, AHugeRateGivesStampsOfZero)
{
    Native native;
    SGFrameInfo record = Picture();
    record.frame_rate = 0xFFFFFFFF;
    EXPECT_EQ(StampOf(native.Give(record, Hex("01"))), 0u);
}

TEST(OmfTimes, AGivenTimeIsStampedWithItsLow16Bits)
{
    Native native;
    for (const auto& [time, stamp] :
         {std::pair{1u, 1u}, {65535u, 65535u}, {65536u, 0u}, {65537u, 1u}, {0xFFFFFFFFu, 0xFFFFu}})
    {
        EXPECT_EQ(StampOf(native.Give(At(Picture(), time), Hex("01"))), stamp);
        EXPECT_EQ(StampOf(native.Give(At(Sound(), time), Hex("01"))), stamp);
        EXPECT_EQ(StampOf(native.Give(At(Extension(), time), Hex("01"))), stamp);
    }
}

TEST(OmfTimes, NeitherTimeNorRateGivesStampZero)
{
    Native native;
    SGFrameInfo record = Picture();
    record.frame_rate = 0;
    EXPECT_EQ(StampOf(native.Give(record, Hex("01"))), 0u);
}

TEST(OmfTimes, SoundAndExtensionsWithoutTimeFollowTheLastCountedPicture)
{
    Native native;
    EXPECT_EQ(StampOf(native.Give(Sound(), Hex("01"))), 0u);
    EXPECT_EQ(StampOf(native.Give(Extension(), Hex("01"))), 0u);
    native.Give(Picture(), Hex("01"));
    native.Give(Picture(kP), Hex("01"));
    EXPECT_EQ(StampOf(native.Give(Sound(), Hex("01"))), 80u);
    EXPECT_EQ(StampOf(native.Give(Extension(), Hex("01"))), 80u);
    // A picture that brought its time leaves nothing behind.
    native.Give(At(Picture(kP), 5000), Hex("01"));
    EXPECT_EQ(StampOf(native.Give(Sound(), Hex("01"))), 80u);
    native.Give(At(Sound(), 7000), Hex("01"));
    EXPECT_EQ(StampOf(native.Give(Extension(), Hex("01"))), 80u);
}

TEST(OmfTimes, SoundAndExtensionsShareOneCounter)
{
    Native native;
    EXPECT_EQ(NumberOf(native.Give(Sound(), Hex("01"))), 1u);
    EXPECT_EQ(NumberOf(native.Give(Sound(), Hex("01"))), 2u);
    EXPECT_EQ(NumberOf(native.Give(Extension(), Hex("01"))), 3u);
    EXPECT_EQ(NumberOf(native.Give(Picture(), Hex("01"))), 1u);
    EXPECT_EQ(NumberOf(native.Give(Sound(), Hex("01"))), 4u);
    EXPECT_EQ(NumberOf(native.Give(Picture(kP), Hex("01"))), 2u);
}

TEST(OmfTimes, CountersGoOnAfterATailerAndAnotherHeader)
{
    Native native;
    native.Give(Picture(), Hex("01"));
    native.Give(Sound(), Hex("01"));
    ASSERT_EQ(native.Calls().Tailer(), SG_ERR_NOERR);
    ASSERT_EQ(native.Calls().Header(), SG_ERR_NOERR);
    // The key frame is still known, too.
    EXPECT_EQ(NumberOf(native.Give(Picture(kP), Hex("01"))), 2u);
    EXPECT_EQ(NumberOf(native.Give(Sound(), Hex("01"))), 2u);
}

TEST(OmfTimes, AGivenDateIsPackedInLocalTime)
{
    Native native;
    for (const uint32_t date : {1u, kDate, kDate + 1, 0xFFFFFFFFu})
    {
        const std::time_t time = date;
        std::tm local{};
        ASSERT_NE(localtime_r(&time, &local), nullptr);
        SGFrameInfo record = Picture();
        record.frame_data = date;
        const uint32_t packed = DateOf(native.Give(record, Hex("01")));
        EXPECT_EQ(packed & 63, static_cast<uint32_t>(local.tm_sec));
        EXPECT_EQ(packed >> 6 & 63, static_cast<uint32_t>(local.tm_min));
        EXPECT_EQ(packed >> 12 & 31, static_cast<uint32_t>(local.tm_hour));
        EXPECT_EQ(packed >> 17 & 31, static_cast<uint32_t>(local.tm_mday));
        EXPECT_EQ(packed >> 22 & 15, static_cast<uint32_t>(local.tm_mon + 1));
        // 1970 is 30 years ahead of 2000: 34 in 6 bits.
        EXPECT_EQ(packed >> 26, static_cast<uint32_t>(local.tm_year - 100) & 63);
    }
}

}  // namespace
}  // namespace Golden
