// What can be seen with a fixed clock, or of the class alone.
#include "asfpacket/AsfPacket.h"

#include "support/FailingNew.h"
#include "support/Recorder.h"
#include "tool/Clock.h"

namespace Orbel::Wrapton
{
namespace
{

using Support::Bytes;

int64_t g_now = 0;

int64_t FixedNow() noexcept
{
    return g_now;
}

bool NoLocalTime(int64_t, std::tm&) noexcept
{
    return false;
}

uint32_t NoChance() noexcept
{
    return 0;
}

/// The clock stands at a time while this lives.
class FixedClock
{
public:
    explicit FixedClock(int64_t now)
    {
        static constexpr Sources kSources{FixedNow, NoLocalTime, NoChance};
        g_now = now;
        InstallSources(&kSources);
    }
    FixedClock(const FixedClock&) = delete;
    FixedClock& operator=(const FixedClock&) = delete;
    ~FixedClock() { InstallSources(nullptr); }
};

TEST(CAsfPacket, DatesTheFileAtItsFirstKeyFrameIn100NanosecondsSince1601)
{
    const FixedClock clock(1000000000);  // 2001-09-09
    Support::SeekingSink sink;
    Support::Recorder recorder(SG_STREAM_TYPE_ASF, sink);
    recorder.Header();
    g_now = 1000000001;
    recorder.Input(Support::H264I({1}));
    g_now = 1000000002;
    recorder.Tailer();
    // (1000000001 + 11644473600) * 10000000
    const Bytes date = Support::Lsb64(126444736010000000u);
    ASSERT_EQ(sink.Blocks().size(), 3u);
    EXPECT_TRUE(Support::Same(Support::Slice(sink.Blocks()[0].data, 78, 8), date));
    EXPECT_TRUE(Support::Same(Support::Slice(sink.Blocks()[2].data, 78, 8), date));
}

TEST(CAsfPacket, WritesAnyClockWithoutOverflow)
{
    for (const int64_t now : {INT64_MIN, int64_t{-1}, INT64_MAX})
    {
        const FixedClock clock(now);
        Support::SeekingSink sink;
        Support::Recorder recorder(SG_STREAM_TYPE_ASF, sink);
        EXPECT_EQ(recorder.Input(Support::H264I({1})), SG_ERR_NOERR);
        const uint64_t date = (static_cast<uint64_t>(now) + 11644473600u) * 10000000u;
        EXPECT_TRUE(
            Support::Same(Support::Slice(sink.Blocks()[0].data, 78, 8), Support::Lsb64(date)));
    }
}

/// One handle, one frame to hand in again and again, and what came last, all without memory.
class Frugal
{
public:
    Frugal()
    {
        SGCreateParam create{};
        create.user = this;
        create.sg_datacb = [](SGOutputData* block, void* user)
        {
            auto& self = *static_cast<Frugal*>(user);
            ++self.m_blocks;
            self.m_size = block->data_size;
            self.m_time = block->data_pointer[7];
            self.m_number = block->data_pointer[14];
        };
        m_handle = SG_CreateHandle(SG_STREAM_TYPE_ASF, &create);
    }
    Frugal(const Frugal&) = delete;
    Frugal& operator=(const Frugal&) = delete;
    ~Frugal() { SG_DestroyHandle(m_handle); }

    int Input(uint32_t rate = 25)
    {
        unsigned char byte = 1;
        Support::Frame frame;
        frame.rate = rate;
        SGFrameInfo record = Support::RecordOf(frame);
        record.frame_pointer = &byte;
        record.frame_size = 1;
        return SG_InputFrame(m_handle, &record);
    }
    int Tailer() { return SG_CreateTailer(m_handle, nullptr); }

    int m_blocks = 0;
    int m_size = 0;
    unsigned m_time = 0;
    unsigned m_number = 0;

private:
    void* m_handle = nullptr;
};

TEST(CAsfPacket, DropsAFrameWhoseIndexEntryFindsNoMemory)
{
    Frugal recording;
    EXPECT_EQ(recording.Input(), SG_ERR_NOERR);
    {
        const Support::FailingNew fail(1, true);
        EXPECT_EQ(recording.Input(), SG_ERR_NOERR);  // 40 ms: the first entry
    }
    EXPECT_EQ(recording.m_blocks, 1);
    EXPECT_EQ(recording.Input(), SG_ERR_NOERR);
    EXPECT_EQ(recording.m_blocks, 2);
    EXPECT_EQ(recording.m_time, 40u);   // neither the time
    EXPECT_EQ(recording.m_number, 1u);  // nor the number moved
}

TEST(CAsfPacket, AllocatesOnlyForTheIndex)
{
    Frugal recording;
    recording.Input(1);
    recording.Input(1);  // takes the storage for the first 2730 entries
    std::size_t asked = 0;
    {
        const Support::FailingNew fail(1, true);
        for (int i = 0; i < 2729; ++i)
        {
            EXPECT_EQ(recording.Input(1), SG_ERR_NOERR);
        }
        EXPECT_EQ(recording.Tailer(), SG_ERR_NOERR);
        asked = Support::FailingNew::Asked();
    }
    EXPECT_EQ(asked, 0u);
    EXPECT_EQ(recording.m_blocks, 2731 + 2);
    recording.Input(1);
    EXPECT_EQ(recording.m_blocks, 2731 + 3);
}

TEST(CAsfPacket, KeepsTheTypeAndDoesNothingForAPacket)
{
    for (const uint32_t type : {SG_STREAM_TYPE_ASF, SG_STREAM_TYPE_STREAM_ASF})
    {
        CAsfPacket packager(type, nullptr);
        EXPECT_EQ(packager.GetType(), type);
        EXPECT_EQ(packager.Init(), 0);
        EXPECT_EQ(packager.CreateHeader(nullptr, 0), 0);
        EXPECT_EQ(packager.InputData(nullptr, 0), SG_ERR_PARAM_ERR);
        EXPECT_EQ(packager.CreateTailer(nullptr, 0), 0);
        EXPECT_EQ(packager.Deinit(), 0);
    }
}

}  // namespace
}  // namespace Orbel::Wrapton
