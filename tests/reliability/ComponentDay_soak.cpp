// A day of pictures and sound through stream components: every frame gives its packet, and memory
// stays as it is.
#include <iostream>

#include "reliability/ProcessMemory.h"
#include "support/Components.h"

namespace Reliability
{
namespace
{

using namespace Orbel::Wrapton;

constexpr uint32_t kHours = 24;
constexpr uint32_t kRate = 25;
constexpr uint32_t kPicturesPerHour = kRate * 3600;
constexpr uint32_t kPicturesPerKey = 50;

/// No stream has an index: what may grow are buffers up to the largest frame.
constexpr uint64_t kSlack = 64 * 1024;

struct Source
{
    const char* type;
    uint32_t sound;  ///< encoding
};

/// A frame that goes in again and again.
struct Repeated
{
    explicit Repeated(const Support::Frame& frame)
        : bytes(frame.bytes), attrs(Support::AttributesOf(frame))
    {
    }

    Support::Bytes bytes;
    FrameAttributes attrs;
};

class ComponentDay : public ::testing::TestWithParam<Source>
{
protected:
    void SetUp() override
    {
        // All packets of a frame are one block, where only the last one would wait otherwise.
        if (std::string(GetParam().type) == "rtp")
        {
            ASSERT_TRUE(m_stream->setParam("rtp_packet_output_all_flag", 1L));
        }
    }

    /// Packages the frame, and takes out what it gave.
    void Input(Repeated& frame, uint64_t time)
    {
        frame.attrs["timestamp"] = static_cast<long>(time);
        const auto size = static_cast<unsigned int>(frame.bytes.size());
        if (std::string(GetParam().type) == "ts")
        {
            ASSERT_TRUE(m_stream->inputFrameEx(frame.bytes.data(), size, frame.attrs, m_packet));
            ASSERT_GT(m_packet.Size(), size);
            return;
        }
        ASSERT_TRUE(m_stream->inputFrame(frame.bytes.data(), size, frame.attrs));
        SharedPtr<IWraptonData> block;
        ASSERT_TRUE(m_stream->getPacket(block));
        ASSERT_GT(block->getLen(), size);
    }

    void AnHour(uint32_t hour)
    {
        for (uint32_t picture = 0; picture < kPicturesPerHour && !HasFatalFailure(); ++picture)
        {
            const uint64_t number = uint64_t{hour} * kPicturesPerHour + picture;
            const uint64_t time = number * 1000 / kRate + 1;
            Input(picture % kPicturesPerKey == 0 ? m_key : m_other, time);
            Input(m_sound, time);
        }
    }

    Support::Stream m_stream = Support::MakeStream(GetParam().type);
    PacketBuffer m_packet{1};
    Repeated m_key{Support::H264I(Support::Join({Support::Nal(Support::Hex("67 42 C0 1E D9")),
                                                 Support::Nal(Support::Hex("68 CE 3C 80")),
                                                 Support::Nal(Support::Hex("65 88"))}))};
    Repeated m_other{Support::H264P(Support::Nal(Support::Hex("41 9A")))};
    Repeated m_sound{Support::Audio(GetParam().sound, Support::Hex("21 10 04 60"), 8000, 1, 16)};
};

INSTANTIATE_TEST_SUITE_P(Streams,
                         ComponentDay,
                         ::testing::Values(Source{"ps", SG_ENCODE_AUDIO_MP2},
                                           Source{"flv", SG_ENCODE_AUDIO_PCM16},
                                           Source{"rtp", SG_ENCODE_AUDIO_G711A},
                                           Source{"ts", SG_ENCODE_AUDIO_MP2}),
                         [](const auto& source) { return std::string(source.param.type); });

TEST_P(ComponentDay, LeavesNothingBehind)
{
    Input(m_key, 0);
    Input(m_sound, 0);
    const uint64_t before = AllocatedBytes();
    for (uint32_t hour = 0; hour < kHours; ++hour)
    {
        AnHour(hour);
        if (HasFatalFailure()) return;
        ASSERT_TRUE(!kMemoryCounts || AllocatedBytes() <= before + kSlack) << "hour " << hour;
    }
    if (!kMemoryCounts) return;
    const auto grown = static_cast<int64_t>(AllocatedBytes() - before);
    std::cout << GetParam().type << ": " << grown << " bytes in " << kHours << " hours"
              << std::endl;
}

}  // namespace
}  // namespace Reliability
