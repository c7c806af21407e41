// Where the QV flavour takes a date from, with clock and time zone fixed.
#include "pspacket/qvps/QvPsPacket.h"

#include <array>

#include "support/Frames.h"
#include "tool/Clock.h"

namespace Orbel::Wrapton
{
namespace
{

using namespace Support;

constexpr int64_t kNow = 1000000;

int64_t s_asked = 0;

int64_t Now() noexcept
{
    return kNow;
}

bool LocalTime(int64_t time, std::tm& date) noexcept
{
    s_asked = time;
    date = {};
    date.tm_year = 100;  // 2000
    date.tm_sec = 1;
    return true;
}

bool NoLocalTime(int64_t time, std::tm& /*date*/) noexcept
{
    s_asked = time;
    return false;
}

constexpr Sources kFixed{Now, LocalTime, nullptr};
constexpr Sources kWithoutDate{Now, NoLocalTime, nullptr};
constexpr uint32_t kFixedDate = 1u << 22 | 1;  // month 1, second 1

class QvDate : public ::testing::Test
{
protected:
    QvDate() { InstallSources(&kFixed); }
    ~QvDate() override { InstallSources(nullptr); }

    struct Dates
    {
        uint32_t first;
        uint32_t second;
    };

    /// The two dates in the map of an I frame.
    Dates Input(uint32_t rate, uint32_t time, uint32_t date)
    {
        SGFrameInfo record = RecordOf(H264I({0x10}).AtRate(rate));
        unsigned char byte = 0x10;
        record.frame_pointer = &byte;
        record.frame_time = time;
        record.frame_data = date;
        std::array<unsigned char, 200> room{};
        CPsOutput output(room);
        int length = 0;
        EXPECT_GT(m_flavour.Packet_I_frame(&record, output, length), 0);
        const auto word = [&room](std::size_t at)
        {
            return static_cast<uint32_t>(room[at]) | static_cast<uint32_t>(room[at + 1]) << 8 |
                   static_cast<uint32_t>(room[at + 2]) << 16 |
                   static_cast<uint32_t>(room[at + 3]) << 24;
        };
        return {word(14 + 32), word(14 + 56)};
    }

    CQvPsPacket m_flavour;
};

TEST_F(QvDate, IsTheFramesOwnWhenItHasOne)
{
    for (const uint32_t date : {1u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu})
    {
        const Dates dates = Input(25, 5000, date);
        EXPECT_EQ(s_asked, int64_t{date});
        EXPECT_EQ(dates.first, kFixedDate);
        EXPECT_EQ(dates.second, kFixedDate);
    }
}

TEST_F(QvDate, IsTheFramesTimeInSecondsWithoutADate)
{
    EXPECT_EQ(Input(25, 1000, 0).second, 0u);
    EXPECT_EQ(s_asked, 1);
    Input(0, 0xFFFFFFFF, 0);
    EXPECT_EQ(s_asked, 4294967);
}

TEST_F(QvDate, IsThePresentInTheFirstSecond)
{
    Input(25, 999, 0);
    EXPECT_EQ(s_asked, kNow);
    Input(25, 0, 0);
    EXPECT_EQ(s_asked, kNow);
}

TEST_F(QvDate, IsThePresentWithoutTimeAndRate)
{
    EXPECT_EQ(Input(0, 0, 0).first, kFixedDate);
    EXPECT_EQ(s_asked, kNow);
}

TEST_F(QvDate, IsTheCountOfPicturesByTheRateWithoutTime)
{
    Input(2, 0, 0);
    EXPECT_EQ(s_asked, kNow);
    Input(2, 0, 0);
    EXPECT_EQ(s_asked, 1);
    Input(3, 0, 0);
    EXPECT_EQ(s_asked, 1);
    Input(1, 0, 0);
    EXPECT_EQ(s_asked, 4);
    Input(0xFFFFFFFF, 0, 0);
    EXPECT_EQ(s_asked, kNow);
}

TEST_F(QvDate, IsZeroWhenTheTimeCannotBeBrokenDown)
{
    InstallSources(&kWithoutDate);
    const Dates dates = Input(25, 0, 77);
    EXPECT_EQ(s_asked, 77);
    EXPECT_EQ(dates.first, 0u);
    EXPECT_EQ(dates.second, 0u);
}

}  // namespace
}  // namespace Orbel::Wrapton
