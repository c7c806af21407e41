// Frames that are refused, and what then stays as it was.
#include <memory>

#include "golden/rtp/Session.h"
#include "support/Allocators.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using Support::AllocatorLog;
using Support::H264I;
using Support::Payload;

/// Hands in a record that the test has spoiled.
int InputSpoiled(Session& session, void (*spoil)(SGFrameInfo&))
{
    Frame frame = Sound(3);
    SGFrameInfo record = Support::RecordOf(frame);
    record.frame_pointer = frame.bytes.data();
    spoil(record);
    return SG_InputFrame(session.Handle(), &record);
}

TEST(RtpRefusal, OfAFrameThatIsNone)
{
    Session session;
    EXPECT_EQ(SG_InputFrame(session.Handle(), nullptr), SG_ERR_PARAM_ERR);
    EXPECT_EQ(InputSpoiled(session, [](SGFrameInfo& r) { r.frame_pointer = nullptr; }),
              SG_ERR_PARAM_ERR);
    EXPECT_EQ(InputSpoiled(session, [](SGFrameInfo& r) { r.frame_size = 0; }), SG_ERR_PARAM_ERR);
    EXPECT_EQ(InputSpoiled(session, [](SGFrameInfo& r) { r.struct_size = 111; }), SG_ERR_PARAM_ERR);
    for (const uint32_t type : {0u, 4u, 0xFFFFFFFFu})
    {
        Frame frame = Sound(3);
        frame.type = type;
        EXPECT_EQ(session.Input(frame), SG_ERR_PARAM_ERR) << type;
    }
    EXPECT_TRUE(session.Seen().empty());
    EXPECT_EQ(session.Packets(Sound(3)).at(0).sequence, 1u);
}

TEST(RtpRefusal, OfEveryVideoEncodingButFour)
{
    Session session;
    for (uint32_t encode = 0; encode < 300; ++encode)
    {
        const Frame frame = Support::Video(encode, SG_FRAME_SUB_TYPE_I, Long(Nal(0x65, 9)));
        const bool taken = encode >= 1 && encode <= 4;
        EXPECT_EQ(session.Input(frame), taken ? SG_ERR_NOERR : SG_ERR_PARAM_ERR) << encode;
        EXPECT_EQ(session.Seen().empty(), !taken) << encode;
    }
    EXPECT_EQ(session.Get().sequence_number, 4u);
}

/// The kinds of frame that are packaged.
std::vector<Frame> Kinds()
{
    return {H264I(Long(Nal(0x65, 9))),
            H264I(Long(Nal(0x65, 9))).As(SG_FRAME_SUB_TYPE_B),
            Support::Mpeg4I(Payload(9)),
            Sound(9),
            Support::Ext(Payload(9))};
}

/// Expects every kind of frame to be taken, or refused.
void ExpectTaken(const SGRtpPackageParam& params, bool taken)
{
    for (const Frame& frame : Kinds())
    {
        Session session(params);
        EXPECT_EQ(session.Input(frame), taken ? SG_ERR_NOERR : SG_ERR_PARAM_ERR);
        EXPECT_EQ(session.Seen().empty(), !taken);
        if (!taken)
        {
            EXPECT_EQ(session.Get().sequence_number, 0u);
            session.Set(Params());
            EXPECT_EQ(session.Packets(frame).at(0).sequence, 1u);
        }
    }
}

TEST(RtpRefusal, OfEveryFrameWhenHeaderFragmentHeaderAndOneByteDoNotFit)
{
    SGRtpPackageParam params = Params();
    // 2 for the length, 12 for the header, 2 for the FU-A header and 1 of payload.
    for (const uint32_t maximum : {1u, 2u, 3u, 13u, 14u, 15u, 16u})
    {
        params.max_packet_length = maximum;
        ExpectTaken(params, false);
    }
    params.max_packet_length = 17;
    ExpectTaken(params, true);
    params.max_packet_length = 18;
    ExpectTaken(params, true);
}

TEST(RtpRefusal, OfEveryFrameWhenTheMaximumPasses31Bits)
{
    SGRtpPackageParam params = Params();
    for (const uint32_t maximum : {0x80000000u, 0x80000001u, 0xFFFFFFFFu})
    {
        params.max_packet_length = maximum;
        ExpectTaken(params, false);
    }
    params.max_packet_length = 0x7FFFFFFF;
    ExpectTaken(params, true);
}

TEST(RtpRefusal, CountsTheCustomBytes)
{
    const Bytes custom = Payload(100);
    SGRtpPackageParam params = Params();
    params.custom_data = custom.data();
    params.custom_data_length = 100;
    params.max_packet_length = 116;
    ExpectTaken(params, false);
    params.max_packet_length = 117;
    ExpectTaken(params, true);
}

TEST(RtpRefusal, CountsTheExtension)
{
    const Bytes extension = Payload(65535 * 4);
    SGRtpPackageParam params = Params();
    params.extension_data = extension.data();
    params.extension_data_length = 978;  // 980 in words; 12 + 4 + 980 + 3 = 999
    ExpectTaken(params, false);
    params.extension_data_length = 976;  // 995
    ExpectTaken(params, true);

    params.max_packet_length = 65537;
    params.extension_data_length = 65535 * 4;
    ExpectTaken(params, false);
    params.extension_data_length = 65535 - 19;  // 16379 words and a room of 65535 - 16 - 65516
    ExpectTaken(params, true);
    params.extension_data_length = 65535 - 18;
    ExpectTaken(params, false);
}

TEST(SmallestPackets, CarryOneByteOfAFragmentAndThreeOfPlainData)
{
    SGRtpPackageParam params = Params();
    params.max_packet_length = 17;
    Session session(params);
    const Bytes unit = Nal(0x65, 300);
    const auto fragments = session.Packets(H264I(Long(unit)));
    ASSERT_EQ(fragments.size(), 300u);
    EXPECT_EQ(Readers::ReadNalUnits(fragments).at(0), Support::Join({unit, Support::Zero(1)}));
    EXPECT_EQ(session.Packets(Sound(10)).size(), 4u);
    EXPECT_EQ(session.Packets(Sound(9)).size(), 4u);
    EXPECT_EQ(session.Packets(Sound(8)).size(), 3u);
}

/// A session with an allocator under the test's eye.
class RtpMemory : public ::testing::Test
{
protected:
    RtpMemory()
    {
        SGCreateParam create = Support::CreateFor(m_sink);
        create.sg_malloc = &AllocatorLog::Malloc;
        create.sg_free = &AllocatorLog::Free;
        m_calls = std::make_unique<Support::Recorder>(SG_STREAM_TYPE_RTP, create);
    }

    SGRtpPackageParam Set(uint32_t maximum)
    {
        SGRtpPackageParam params = Params();
        params.max_packet_length = maximum;
        EXPECT_EQ(SG_SetParam(m_calls->Handle(), 0, &params, 64), SG_ERR_NOERR);
        return params;
    }

    /// Hands a frame in and expects its bytes back, from packets numbered from @p sequence on.
    void ExpectWhole(const Frame& frame, uint32_t sequence)
    {
        m_sink.ForgetBlocks();
        ASSERT_EQ(m_calls->Input(frame), SG_ERR_NOERR);
        Bytes all;
        for (const Bytes& block : BytesOf(m_sink.Blocks()))
        {
            Support::Append(all, block);
        }
        const auto packets = Readers::ReadRtpPackets(all);
        ASSERT_FALSE(packets.empty());
        EXPECT_EQ(packets[0].sequence, sequence);
        Readers::CheckSequence(packets);
        if (frame.encode == SG_ENCODE_VIDEO_HI_H264)
        {
            const auto units = Readers::ReadNalUnits(packets);
            ASSERT_EQ(units.size(), 1u);
            EXPECT_TRUE(
                Support::Same(Long(units[0]), Support::Join({frame.bytes, Support::Zero(1)})));
        }
        else
        {
            const auto frames = Readers::ReadPlainFrames(packets);
            ASSERT_EQ(frames.size(), 1u);
            EXPECT_TRUE(Support::Same(frames[0], frame.bytes));
        }
    }

    AllocatorLog m_log;
    Support::AppendingSink m_sink;
    std::unique_ptr<Support::Recorder> m_calls;
};

constexpr int kOwn = 0x100000;

TEST_F(RtpMemory, IsTakenWithTheFirstFrameAndGivenBackWithTheHandle)
{
    EXPECT_TRUE(m_log.Asked().empty());
    m_calls->HeaderWith(nullptr);
    Frame empty = Sound(0);
    m_calls->Input(empty);
    EXPECT_TRUE(m_log.Asked().empty());
    ExpectWhole(Sound(20), 1);
    ExpectWhole(Sound(20), 2);
    EXPECT_EQ(m_log.Asked(), (std::vector<int>{kOwn}));
    m_calls->Destroy();
    EXPECT_EQ(m_log.Released(), (std::vector<int>{kOwn}));
}

TEST_F(RtpMemory, SufficesForPacketsOfExactlyItsLength)
{
    // 1049 packets: 1048 full ones of 986 bytes and the last, each with 14 bytes around.
    const std::size_t most = kOwn - 1049 * 14;
    ASSERT_LT(most - 1048 * 986, 986u);
    ExpectWhole(Sound(most - 1), 1);
    ExpectWhole(Sound(most), 1050);
    EXPECT_EQ(m_log.Asked(), (std::vector<int>{kOwn}));
    ExpectWhole(Sound(most + 1), 2099);
    ASSERT_EQ(m_log.Asked().size(), 2u);
    EXPECT_GT(m_log.Asked()[1], kOwn);
    EXPECT_EQ(m_log.Released(), (std::vector<int>{kOwn}));
    ExpectWhole(Sound(most), 3148);
    EXPECT_EQ(m_log.Asked().size(), 2u) << "the larger buffer stays";
}

TEST_F(RtpMemory, GrowsForFramesNearAndAboveOneMebibyte)
{
    uint32_t sequence = 1;
    for (const std::size_t size : {std::size_t{0xFFFFF},
                                   std::size_t{0x100000},
                                   std::size_t{0x100001},
                                   std::size_t{0x300000}})
    {
        ExpectWhole(Sound(size), sequence);
        sequence += static_cast<uint32_t>(size / 986 + 1);
        ExpectWhole(H264I(Long(Nal(0x65, size))), sequence & 0xFFFF);
        sequence += static_cast<uint32_t>((size - 1) / 984 + 1);
    }
}

TEST_F(RtpMemory, GrowsForASmallFrameInTinyPackets)
{
    Set(17);
    ExpectWhole(H264I(Long(Nal(0x65, 70000))), 1);
    ASSERT_EQ(m_log.Asked().size(), 2u);
    EXPECT_GE(m_log.Asked()[1], 70000 * 17);
}

TEST_F(RtpMemory, KeepsEarlierUnitsOfTheFrameWhenItGrows)
{
    Set(17);
    Bytes stream;
    for (uint32_t i = 0; i < 20; ++i)
    {
        Support::Append(stream, Short(Nal(0x40 | i, 20000)));
    }
    ASSERT_EQ(m_calls->Input(H264I(stream)), SG_ERR_NOERR);
    Bytes all;
    for (const Bytes& block : BytesOf(m_sink.Blocks()))
    {
        Support::Append(all, block);
    }
    const auto packets = Readers::ReadRtpPackets(all);
    Readers::CheckSequence(packets);
    ASSERT_EQ(packets.size(), 20u * 20000);
    for (uint32_t i = 0; i < 20; ++i)
    {
        const auto& first = packets[i * 20000];
        EXPECT_EQ(first.payload.at(0), 0x40 | 28);
        EXPECT_EQ(first.payload.at(1), 0x80 | i);
    }
}

TEST_F(RtpMemory, WithoutAnyTheFirstFrameIsRefusedAndTheNextTriesAgain)
{
    m_log.FailCall(1);
    EXPECT_EQ(m_calls->Input(Sound(20)), SG_ERR_MEMORY_OUT);
    EXPECT_TRUE(m_sink.Blocks().empty());
    ExpectWhole(Sound(20), 1);
    EXPECT_EQ(m_log.Asked(), (std::vector<int>{kOwn, kOwn}));
}

TEST_F(RtpMemory, WithoutMoreALargeFrameIsRefusedAndTheStreamGoesOn)
{
    ExpectWhole(Sound(20), 1);
    for (const Frame& frame : {Sound(0x200000), H264I(Long(Nal(0x65, 0x200000)))})
    {
        m_sink.ForgetBlocks();
        m_log.FailCall(1);
        EXPECT_EQ(m_calls->Input(frame), SG_ERR_MEMORY_OUT);
        EXPECT_TRUE(m_sink.Blocks().empty());
    }
    ExpectWhole(Sound(20), 2);
    ExpectWhole(Sound(0x200000), 3);
}

TEST_F(RtpMemory, ALaterUnitThatDoesNotFitTakesTheWholeFrameBack)
{
    const Bytes frame = Support::Join({Long(Nal(0x67, 9)), Long(Nal(0x65, 0x200000))});
    ExpectWhole(Sound(20), 1);
    m_sink.ForgetBlocks();
    m_log.FailCall(1);
    EXPECT_EQ(m_calls->Input(H264I(frame)), SG_ERR_MEMORY_OUT);
    EXPECT_TRUE(m_sink.Blocks().empty());
    ExpectWhole(Sound(20), 2);
}

TEST_F(RtpMemory, PacketsOfMoreThan2GiBAreRefusedAheadOfAnyAllocation)
{
    ExpectWhole(Sound(20), 1);
    m_sink.ForgetBlocks();
    // The size alone decides: the bytes behind the first are not there.
    const std::unique_ptr<unsigned char[]> byte(new unsigned char[1]{0x11});
    for (const uint32_t size : {0xFFFFFFFFu, 0x80000000u, 0x7FFFFFFFu, 0x7E400000u})
    {
        SGFrameInfo record = Support::RecordOf(Sound(1));
        record.frame_pointer = byte.get();
        record.frame_size = size;
        EXPECT_EQ(SG_InputFrame(m_calls->Handle(), &record), SG_ERR_MEMORY_OUT) << size;
    }
    EXPECT_EQ(m_log.Asked(), (std::vector<int>{kOwn}));
    EXPECT_TRUE(m_sink.Blocks().empty());
    ExpectWhole(Sound(20), 2);
}

TEST(RtpHandle, WorksWithoutAnyCreateRecord)
{
    void* const handle = SG_CreateHandle(SG_STREAM_TYPE_RTP, nullptr);
    ASSERT_NE(handle, nullptr);
    Frame frame = Sound(5);
    SGFrameInfo record = Support::RecordOf(frame);
    record.frame_pointer = frame.bytes.data();
    EXPECT_EQ(SG_InputFrame(handle, &record), SG_ERR_NOERR);
    EXPECT_EQ(SG_DestroyHandle(handle), SG_ERR_NOERR);
}

}  // namespace
}  // namespace Golden
