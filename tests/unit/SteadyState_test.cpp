// Allocations while frames come in: none per frame, whatever the container.
#include <cstdlib>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "PackageImpl.h"
#include "mp4packet/Mp4Packet.h"
#include "support/Bytes.h"
#include "support/FailingNew.h"
#include "tspacket/TsPacket.h"

namespace Orbel::Wrapton
{
namespace
{

using Support::Bytes;
using Support::FailingNew;

constexpr uint32_t kWarmUp = 3000;
constexpr uint32_t kCounted = 1000;

struct Steady
{
    uint32_t type;
    uint32_t sound_encode;  // 0: the container takes no sound
    /// Tables with an entry for every frame grow by a part of themselves now and then.
    std::size_t most;
};

std::size_t s_callerAllocations = 0;

void* CountingMalloc(int size)
{
    ++s_callerAllocations;
    return std::malloc(static_cast<std::size_t>(size));
}

void CountingFree(void* memory, int /*size*/)
{
    std::free(memory);
}

/// A key frame has parameter sets and two slices; the others have one.
Bytes Picture(bool key)
{
    if (!key) return Support::Join({Support::Hex("00 00 00 01 41 9A"), Support::Payload(900)});
    return Support::Join({Support::Hex("00 00 00 01 67 42 C0 28 DA 01 E0 08 9F 95"
                                       "00 00 00 01 68 CE 3C 80"
                                       "00 00 00 01 65 88"),
                          Support::Payload(3000),
                          Support::Hex("00 00 01 65 11"),
                          Support::Payload(2000)});
}

/// Pictures and sound as long as they are asked for.
class Source
{
public:
    explicit Source(uint32_t sound_encode) : m_soundEncode(sound_encode) {}

    template <class Input>
    void Run(uint32_t first, uint32_t count, Input input)
    {
        for (uint32_t i = first; i < first + count; ++i)
        {
            const bool key = i % 25 == 0;
            // Matroska converts in place: every frame is a fresh copy in the same memory.
            m_work = key ? m_key : m_other;
            SGFrameInfo picture = Record(SG_FRAME_TYPE_VIDEO, SG_ENCODE_VIDEO_HI_H264, m_work);
            picture.frame_sub_type = key ? SG_FRAME_SUB_TYPE_I : SG_FRAME_SUB_TYPE_P;
            picture.frame_time = 1 + 40 * i;
            input(picture);
            if (m_soundEncode == 0) continue;
            SGFrameInfo sound = Record(SG_FRAME_TYPE_AUDIO, m_soundEncode, m_sound);
            sound.frame_time = 1 + 40 * i;
            input(sound);
        }
    }

private:
    static SGFrameInfo Record(uint32_t type, uint32_t encode, Bytes& bytes)
    {
        SGFrameInfo record{};
        record.struct_size = sizeof(record);
        record.frame_pointer = bytes.data();
        record.frame_size = static_cast<uint32_t>(bytes.size());
        record.frame_type = type;
        record.frame_encode = encode;
        record.width = 640;
        record.heigth = 360;
        record.frame_rate = 25;
        record.sample_rate = 16000;
        record.bit_per_sample = 16;
        record.channels = 1;
        return record;
    }

    uint32_t m_soundEncode;
    Bytes m_key = Picture(true);
    Bytes m_other = Picture(false);
    Bytes m_sound = Support::Payload(320);
    Bytes m_work = m_key;
};

std::unique_ptr<CPackage> Make(uint32_t type)
{
    SGCreateParam create{};
    create.struct_size = sizeof(create);
    create.sg_malloc = CountingMalloc;
    create.sg_free = CountingFree;
    if (type == SG_STREAM_TYPE_TS) return std::make_unique<CTsPacket>(&create);
    if (type == SG_STREAM_TYPE_3GP) return std::make_unique<CMp4Packet>(type, &create);
    return CreatePackage(type, &create);
}

class SteadyState : public ::testing::TestWithParam<Steady>
{
};

TEST_P(SteadyState, AllocatesNothingForAFrame)
{
    const auto package = Make(GetParam().type);
    ASSERT_NE(package, nullptr);
    ASSERT_EQ(package->Init(), SG_ERR_NOERR);
    ASSERT_EQ(package->CreateHeader(nullptr, 0), SG_ERR_NOERR);

    Source source(GetParam().sound_encode);
    PacketBuffer packet;
    const bool into_packet = GetParam().type == SG_STREAM_TYPE_TS;
    uint32_t refused = 0;
    const auto input = [&](SGFrameInfo& frame)
    {
        const int result =
            into_packet ? package->InputData(&frame, packet) : package->InputData(&frame, 0);
        if (result != SG_ERR_NOERR) ++refused;
    };
    source.Run(0, kWarmUp, input);
    ASSERT_EQ(refused, 0u);

    const std::size_t caller_before = s_callerAllocations;
    std::size_t asked = 0;
    {
        const FailingNew count(0);
        source.Run(kWarmUp, kCounted, input);
        asked = FailingNew::Asked();
    }
    EXPECT_EQ(refused, 0u);
    EXPECT_EQ(s_callerAllocations, caller_before);
    EXPECT_LE(asked, GetParam().most);
    package->CreateTailer(nullptr, 0);
}

INSTANTIATE_TEST_SUITE_P(
    All,
    SteadyState,
    ::testing::Values(Steady{SG_STREAM_TYPE_MP4, SG_ENCODE_AUDIO_AAC, 6},
                      Steady{SG_STREAM_TYPE_MOV, SG_ENCODE_AUDIO_AAC, 6},
                      Steady{SG_STREAM_TYPE_3GP, SG_ENCODE_AUDIO_AAC, 6},
                      Steady{SG_STREAM_TYPE_MP4_NOSEEK, SG_ENCODE_AUDIO_AAC, 6},
                      Steady{SG_STREAM_TYPE_MP4_64, SG_ENCODE_AUDIO_AAC, 6},
                      Steady{SG_STREAM_TYPE_MOV_64, SG_ENCODE_AUDIO_AAC, 6},
                      Steady{SG_STREAM_TYPE_AVI, SG_ENCODE_AUDIO_PCM16, 6},
                      Steady{SG_STREAM_TYPE_ASF, SG_ENCODE_AUDIO_PCM16, 1},
                      Steady{SG_STREAM_TYPE_STREAM_ASF, SG_ENCODE_AUDIO_PCM16, 0},
                      Steady{SG_STREAM_TYPE_FLV, SG_ENCODE_AUDIO_PCM16, 0},
                      Steady{SG_STREAM_TYPE_STREAM_FLV, SG_ENCODE_AUDIO_PCM16, 0},
                      Steady{SG_STREAM_TYPE_MKV, 0, 1},
                      Steady{SG_STREAM_TYPE_OMF, SG_ENCODE_AUDIO_PCM16, 0},
                      Steady{SG_STREAM_TYPE_PS, SG_ENCODE_AUDIO_MP2, 0},
                      Steady{SG_STREAM_TYPE_QVPS, SG_ENCODE_AUDIO_MP2, 0},
                      Steady{SG_STREAM_TYPE_GAYSPS, SG_ENCODE_AUDIO_MP2, 0},
                      Steady{SG_STREAM_TYPE_RTP, SG_ENCODE_AUDIO_PCM16, 0},
                      Steady{SG_STREAM_TYPE_TS, SG_ENCODE_AUDIO_AAC, 0}),
    [](const auto& run) { return "type" + std::to_string(run.param.type); });

TEST(SteadyWav, PassesSoundThroughWithoutAllocating)
{
    const auto package = Make(SG_STREAM_TYPE_WAV);
    ASSERT_EQ(package->CreateHeader(nullptr, 0), SG_ERR_NOERR);
    Bytes bytes = Support::Payload(320);
    SGFrameInfo frame{};
    frame.struct_size = sizeof(frame);
    frame.frame_pointer = bytes.data();
    frame.frame_size = 320;
    frame.frame_type = SG_FRAME_TYPE_AUDIO;
    frame.frame_encode = SG_ENCODE_AUDIO_PCM16;
    package->InputData(&frame, 0);

    const std::size_t caller_before = s_callerAllocations;
    const FailingNew count(0);
    for (uint32_t i = 0; i < kCounted; ++i)
    {
        ASSERT_EQ(package->InputData(&frame, 0), SG_ERR_NOERR);
    }
    EXPECT_EQ(FailingNew::Asked(), 0u);
    EXPECT_EQ(s_callerAllocations, caller_before);
}

}  // namespace
}  // namespace Orbel::Wrapton
