// What the flat interface does not show: the packet form, and dates under a fixed clock.
#include "omfpacket/OmfPacket.h"

#include <algorithm>
#include <ctime>
#include <memory>
#include <vector>

#include "support/Sinks.h"
#include "tool/Clock.h"

namespace Orbel::Wrapton
{
namespace
{

using Support::Bytes;
using Support::Hex;
using Support::Join;
using Support::Same;

/// 2024-05-01 10:34:56 UTC.
constexpr int64_t kNow = 1714559696;

int64_t s_now = kNow;

/// Year since 2000, month, day, hour, minute, second from the top down.
uint32_t Packed(
    uint32_t year, uint32_t month, uint32_t day, uint32_t hour, uint32_t minute, uint32_t second)
{
    return year << 26 | month << 22 | day << 17 | hour << 12 | minute << 6 | second;
}

/// A packager into a sink, in a world where the clock stands still and all places have one time.
class OmfPacket : public ::testing::Test
{
protected:
    OmfPacket()
    {
        s_now = kNow;
        InstallSources(&m_sources);
        m_record.struct_size = sizeof(m_record);
        m_record.frame_pointer = m_payload.get();
        m_record.frame_size = kPayloadLen;
        m_record.frame_type = SG_FRAME_TYPE_VIDEO;
        m_record.frame_sub_type = SG_FRAME_SUB_TYPE_I;
        m_record.frame_rate = 25;
        m_packager.SetDataCallBack(&Support::Sink::Callback, &m_sink);
    }
    ~OmfPacket() override { InstallSources(nullptr); }

    static constexpr uint32_t kPayloadLen = 5;

    static int64_t Now() noexcept { return s_now; }
    static bool Utc(int64_t time, std::tm& date) noexcept
    {
        const std::time_t seconds = time;
        return gmtime_r(&seconds, &date) != nullptr;
    }
    static bool NoLocalTime(int64_t /*time*/, std::tm& /*date*/) noexcept { return false; }
    static uint32_t Random() noexcept { return 0; }

    /// Packages the record; gives the frame's date.
    uint32_t NextDate()
    {
        m_sink.ForgetBlocks();
        EXPECT_EQ(m_packager.InputData(&m_record, 0), SG_ERR_NOERR);
        const Bytes& frame = m_sink.Blocks().at(0).data;
        return Support::ReadMsb32({frame.at(19), frame.at(18), frame.at(17), frame.at(16)}, 0);
    }

    static Bytes Content(const PacketBuffer& packet)
    {
        return {packet.Data(), packet.Data() + packet.Size()};
    }

    Sources m_sources{Now, Utc, Random};
    std::unique_ptr<unsigned char[]> m_payload{new unsigned char[kPayloadLen]{1, 2, 3, 4, 5}};
    SGFrameInfo m_record{};
    Support::SeekingSink m_sink;
    COmfPacket m_packager{SG_STREAM_TYPE_OMF, nullptr};
};

TEST_F(OmfPacket, CountedPicturesMoveTheDateASecondWhenTheNextNumberDoes)
{
    ASSERT_EQ(m_packager.CreateHeader(nullptr, 0), SG_ERR_NOERR);
    s_now += 1000;  // of no account
    const uint32_t start = Packed(24, 5, 1, 10, 34, 56);
    for (int i = 1; i <= 23; ++i)
    {
        EXPECT_EQ(NextDate(), start) << "frame " << i;
    }
    for (int i = 24; i <= 48; ++i)
    {
        EXPECT_EQ(NextDate(), start + 1) << "frame " << i;
    }
    EXPECT_EQ(NextDate(), start + 2);
}

TEST_F(OmfPacket, TimedPicturesAreDatedByTheirTime)
{
    ASSERT_EQ(m_packager.CreateHeader(nullptr, 0), SG_ERR_NOERR);
    m_record.frame_time = 999;
    EXPECT_EQ(NextDate(), Packed(24, 5, 1, 10, 34, 56));
    m_record.frame_time = 4000;
    EXPECT_EQ(NextDate(), Packed(24, 5, 1, 10, 35, 0));
    m_record.frame_time = 0xFFFFFFFF;  // 4294967 s
    EXPECT_EQ(NextDate(), Packed(24, 6, 20, 3, 37, 43));
}

TEST_F(OmfPacket, SoundAndExtensionsHaveTheDateOfTheLastPicture)
{
    ASSERT_EQ(m_packager.CreateHeader(nullptr, 0), SG_ERR_NOERR);
    m_record.frame_type = SG_FRAME_TYPE_AUDIO;
    m_record.frame_time = 8000;
    EXPECT_EQ(NextDate(), Packed(24, 5, 1, 10, 34, 56));
    m_record.frame_type = SG_FRAME_TYPE_VIDEO;
    m_record.frame_time = 3000;
    EXPECT_EQ(NextDate(), Packed(24, 5, 1, 10, 34, 59));
    for (const uint32_t type : {SG_FRAME_TYPE_AUDIO, SG_FRAME_TYPE_EXT})
    {
        m_record.frame_type = type;
        m_record.frame_time = 8000;
        EXPECT_EQ(NextDate(), Packed(24, 5, 1, 10, 34, 59));
    }
}

TEST_F(OmfPacket, AnotherHeaderSetsTheClockAgain)
{
    ASSERT_EQ(m_packager.CreateHeader(nullptr, 0), SG_ERR_NOERR);
    m_record.frame_time = 3000;
    NextDate();
    s_now += 60;
    ASSERT_EQ(m_packager.CreateHeader(nullptr, 0), SG_ERR_NOERR);
    m_record.frame_type = SG_FRAME_TYPE_EXT;
    EXPECT_EQ(NextDate(), Packed(24, 5, 1, 10, 35, 56));
}

TEST_F(OmfPacket, WithoutAHeaderThePresentIsTheDateUntilASecondIsCounted)
{
    for (int i = 1; i <= 23; ++i)
    {
        EXPECT_EQ(NextDate(), Packed(24, 5, 1, 10, 34, 56));
        EXPECT_EQ(m_sink.Blocks().size(), 1u);
    }
    // One second after the beginning of 1970, the 34th year modulo 64 from 2000 on.
    EXPECT_EQ(NextDate(), Packed(34, 1, 1, 0, 0, 1));
    s_now += 4;
    m_record.frame_time = 999;
    EXPECT_EQ(NextDate(), Packed(24, 5, 1, 10, 35, 0));
}

TEST_F(OmfPacket, AGivenDateStandsAndMovesNothing)
{
    ASSERT_EQ(m_packager.CreateHeader(nullptr, 0), SG_ERR_NOERR);
    m_record.frame_data = 0xFFFFFFFF;  // 2106-02-07 06:28:15, the 42nd year modulo 64
    EXPECT_EQ(NextDate(), Packed(42, 2, 7, 6, 28, 15));
    m_record.frame_data = 0;
    EXPECT_EQ(NextDate(), Packed(24, 5, 1, 10, 34, 56));
}

TEST_F(OmfPacket, DateIsZeroWhenThereIsNoLocalTime)
{
    m_sources.local_time = NoLocalTime;
    ASSERT_EQ(m_packager.CreateHeader(nullptr, 0), SG_ERR_NOERR);
    EXPECT_EQ(NextDate(), 0u);
    m_record.frame_data = 1;
    EXPECT_EQ(NextDate(), 0u);
}

TEST_F(OmfPacket, InitAndDeinitAnswerZero)
{
    EXPECT_EQ(m_packager.Init(), SG_ERR_NOERR);
    EXPECT_EQ(m_packager.Deinit(), SG_ERR_NOERR);
    EXPECT_EQ(m_packager.GetType(), uint32_t{SG_STREAM_TYPE_OMF});
}

TEST_F(OmfPacket, NullCallbackDiscards)
{
    m_packager.SetDataCallBack(nullptr, nullptr);
    EXPECT_EQ(m_packager.InputData(&m_record, 0), SG_ERR_NOERR);
    PacketBuffer packet;
    EXPECT_EQ(m_packager.InputData(&m_record, packet), SG_ERR_NOERR);
    EXPECT_EQ(packet.Size(), 24u + 8 + 5 + 8);
}

TEST_F(OmfPacket, NullFrameIsRefused)
{
    EXPECT_EQ(m_packager.InputData(nullptr, 0), SG_ERR_PARAM_ERR);
    PacketBuffer packet;
    EXPECT_EQ(m_packager.InputData(nullptr, packet), SG_ERR_PARAM_ERR);
    EXPECT_TRUE(m_sink.Blocks().empty());
}

TEST_F(OmfPacket, PacketLacksTheHeaderAndHoldsThePayloadAt24)
{
    PacketBuffer packet;
    ASSERT_EQ(m_packager.InputData(&m_record, packet), SG_ERR_NOERR);
    // 24 + 8 + 5 + 8 bytes as if the frame were whole.
    const Bytes wanted =
        Hex("88 06 02 03 04 00 00 00 "   // data check: 04030201 + 00000005
            "00 00 00 00 00 00 00 00 "   // not written
            "00 00 00 00 00 00 00 00 "   // not written
            "01 02 03 04 05 "            // payload
            "6F 6D 66 72 2D 00 00 00 "   // omfr, 45
            "00 00 00 00 00 00 00 00");  // not written
    EXPECT_TRUE(Same(Content(packet), wanted));
    ASSERT_EQ(m_sink.Blocks().size(), 1u);
    EXPECT_EQ(m_sink.Blocks()[0].origin, 1);
    EXPECT_EQ(m_sink.Blocks()[0].position, 0);
    EXPECT_TRUE(Same(m_sink.Blocks()[0].data, wanted));
}

TEST_F(OmfPacket, PacketKeepsWhatIsNotWritten)
{
    PacketBuffer packet(200);
    std::fill_n(packet.Data(), packet.Size(), static_cast<unsigned char>(0xEE));
    ASSERT_EQ(m_packager.InputData(&m_record, packet), SG_ERR_NOERR);
    EXPECT_TRUE(Same(Content(packet),
                     Hex("88 06 02 03 04 00 00 00 "  // data check
                         "EE EE EE EE EE EE EE EE EE EE EE EE EE EE EE EE "
                         "01 02 03 04 05 "           // payload
                         "6F 6D 66 72 2D 00 00 00 "  // omfr, 45
                         "EE EE EE EE EE EE EE EE")));

    PacketBuffer small(30);
    std::fill_n(small.Data(), small.Size(), static_cast<unsigned char>(0xEE));
    ASSERT_EQ(m_packager.InputData(&m_record, small), SG_ERR_NOERR);
    EXPECT_TRUE(Same(Content(small),
                     Hex("88 06 02 03 04 00 00 00 "  // data check
                         "EE EE EE EE EE EE EE EE EE EE EE EE EE EE EE EE "
                         "01 02 03 04 05 "              // payload
                         "6F 6D 66 72 2D 00 00 00 "     // omfr, 45
                         "00 00 00 00 00 00 00 00")));  // grown
}

TEST_F(OmfPacket, PayloadAndTrailerStandOverLongExtensionHeaders)
{
    std::vector<SGBlockInfo> blocks(2, {0x1111, 0x2222, 0x3333, 0x4444, 0x55555555, 0x66666666});
    m_record.split_info = {1, 2, 1, blocks.data()};
    PacketBuffer packet;
    ASSERT_EQ(m_packager.InputData(&m_record, packet), SG_ERR_NOERR);
    ASSERT_EQ(packet.Size(), 24u + 48 + 5 + 8);
    EXPECT_TRUE(Same(Content(packet),
                     Join({Hex("88 06 02 03 04 00 00 00 "   // data check
                               "99 02 01 00 00 00 00 00 "   // split 2 x 1
                               "11 11 22 22 33 33 44 44 "   // half of the first block
                               "01 02 03 04 05 "            // payload
                               "6F 6D 66 72 55 00 00 00 "   // omfr, 85
                               "33 44 44 "                  // rest of the second block
                               "55 55 55 55 66 66 66 66"),  //
                           Bytes(packet.Size() - 48, 0)})));
}

TEST_F(OmfPacket, ARefusedFrameLeavesThePacketAsLongAsTheLastFrame)
{
    PacketBuffer packet(100);
    m_record.frame_sub_type = SG_FRAME_SUB_TYPE_P;
    EXPECT_EQ(m_packager.InputData(&m_record, packet), SG_ERR_PARAM_ERR);
    EXPECT_EQ(packet.Size(), 0u);

    m_record.frame_sub_type = SG_FRAME_SUB_TYPE_I;
    ASSERT_EQ(m_packager.InputData(&m_record, 0), SG_ERR_NOERR);
    PacketBuffer other;
    m_record.frame_type = 9;
    EXPECT_EQ(m_packager.InputData(&m_record, other), SG_ERR_PARAM_ERR);
    EXPECT_TRUE(Same(Content(other), Bytes(45, 0)));
    m_record.frame_type = SG_FRAME_TYPE_AUDIO;
    m_record.frame_size = 0;
    PacketBuffer third(46);
    EXPECT_EQ(m_packager.InputData(&m_record, third), SG_ERR_PARAM_ERR);
    EXPECT_EQ(third.Size(), 45u);
    EXPECT_EQ(m_sink.Blocks().size(), 1u);
}

TEST_F(OmfPacket, BothFormsShareCountersAndKeyFrame)
{
    PacketBuffer packet;
    ASSERT_EQ(m_packager.InputData(&m_record, packet), SG_ERR_NOERR);
    m_record.frame_sub_type = SG_FRAME_SUB_TYPE_P;
    ASSERT_EQ(m_packager.InputData(&m_record, 0), SG_ERR_NOERR);
    EXPECT_EQ(m_sink.Blocks().back().data.at(8), 2u);
}

}  // namespace
}  // namespace Orbel::Wrapton
