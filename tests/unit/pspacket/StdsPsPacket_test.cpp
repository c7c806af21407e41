// What the packager never asks of the standard flavour.
#include "pspacket/ps/StdsPsPacket.h"

#include <array>

#include "golden/ps/Pieces.h"

namespace Orbel::Wrapton
{
namespace
{

using namespace Golden;
using namespace Support;

class StandardFlavour : public ::testing::Test
{
protected:
    /// Audio with the map asked for; the result and what was written.
    Bytes SoundWithMap()
    {
        const Frame frame = Mp2(Hex("FF FD"));
        SGFrameInfo record = RecordOf(frame);
        Bytes bytes = frame.bytes;
        record.frame_pointer = bytes.data();
        CPsOutput output(m_buffer);
        int length = -5;
        const int result = m_flavour.Packet_Audio_frame(&record, output, length, true);
        EXPECT_EQ(result, length);
        return {m_buffer.begin(), m_buffer.begin() + length};
    }

    std::array<unsigned char, 200> m_buffer{};
    CStdsPsPacket m_flavour;
};

TEST_F(StandardFlavour, WritesTheMapWithTheFirstAudioFrameThatAsksForItOnly)
{
    // 352 x 288 at 25 frames per second, as long as no picture has come.
    EXPECT_TRUE(Same(SoundWithMap(),
                     Join({
                         Pack(0),
                         Map(0x1B, 1800, 44, 36),
                         AudioPes(60000, Hex("FF FD")),
                     })));
    for (int frame = 2; frame <= 60; ++frame)
    {
        EXPECT_TRUE(Same(SoundWithMap(), Join({Pack(0), AudioPes(60000, Hex("FF FD"))})));
    }
}

TEST_F(StandardFlavour, RefusesWhatIsNoFrame)
{
    SGFrameInfo record = RecordOf(Mp2({}));
    unsigned char byte = 0;
    CPsOutput output(m_buffer);
    CPsOutput none(std::span<unsigned char>{});
    int length = 7;

    EXPECT_EQ(m_flavour.Packet_Audio_frame(&record, output, length, true), SG_ERR_PARAM_ERR);
    EXPECT_EQ(length, 0);
    EXPECT_LT(m_flavour.Packet_I_frame(&record, output, length), 1);
    EXPECT_LT(m_flavour.Packet_P_frame(&record, output, length), 1);
    record.frame_pointer = &byte;
    EXPECT_EQ(m_flavour.Packet_Audio_frame(&record, output, length, true), SG_ERR_PARAM_ERR);
    EXPECT_LT(m_flavour.Packet_I_frame(&record, output, length), 1);
    EXPECT_LT(m_flavour.Packet_P_frame(&record, output, length), 1);
    record.frame_size = 1;
    EXPECT_EQ(m_flavour.Packet_Audio_frame(&record, none, length, true), SG_ERR_PARAM_ERR);
    EXPECT_LT(m_flavour.Packet_I_frame(&record, none, length), 1);
    EXPECT_LT(m_flavour.Packet_P_frame(&record, none, length), 1);
    record.frame_encode = SG_ENCODE_AUDIO_AAC;
    EXPECT_EQ(m_flavour.Packet_Audio_frame(&record, output, length, true), SG_ERR_ENCODE_UNSUPPORT);
    EXPECT_EQ(length, 0);
    // None of them counted as the first one with a map.
    EXPECT_EQ(SoundWithMap().size(), 14u + 36 + 14 + 2);
}

TEST_F(StandardFlavour, RefusesAFrameThatDoesNotFitAndKeepsItsClocks)
{
    unsigned char byte = 0x10;
    SGFrameInfo record = RecordOf(H264I({0x10}));
    record.frame_pointer = &byte;
    int length = 7;
    constexpr std::size_t kNeeded = 14 + 36 + 18 + 19 + 1;
    CPsOutput small({m_buffer.data(), kNeeded - 1});
    EXPECT_LT(m_flavour.Packet_I_frame(&record, small, length), 1);
    EXPECT_EQ(length, 0);
    CPsOutput enough({m_buffer.data(), kNeeded});
    EXPECT_EQ(m_flavour.Packet_I_frame(&record, enough, length), static_cast<int>(kNeeded));
    EXPECT_EQ(length, static_cast<int>(kNeeded));
    EXPECT_TRUE(Same({m_buffer.begin(), m_buffer.begin() + 14}, Pack(3600)));
}

}  // namespace
}  // namespace Orbel::Wrapton
