// A day of pictures and sound through every container into a sink that stores nothing: memory grows
// by what the index needs and by nothing else.
#include <algorithm>
#include <array>
#include <iostream>

#include "reliability/FixedSources.h"
#include "reliability/ProcessMemory.h"
#include "reliability/Subject.h"

namespace Reliability
{
namespace
{

using namespace Orbel::Wrapton;

constexpr uint32_t kHours = 24;
constexpr uint32_t kRate = 25;
constexpr uint32_t kPicturesPerHour = kRate * 3600;
constexpr uint32_t kPicturesPerKey = 50;

/// Bytes of index for a second, for each picture, each key picture and each piece of sound.
struct Index
{
    uint32_t perSecond = 0;
    uint32_t perPicture = 0;
    uint32_t perKey = 0;
    uint32_t perSound = 0;

    [[nodiscard]] uint64_t PerHour(bool sound) const
    {
        return uint64_t{3600} * perSecond + uint64_t{kPicturesPerHour} * perPicture +
               uint64_t{kPicturesPerHour / kPicturesPerKey} * perKey +
               (sound ? uint64_t{kPicturesPerHour} * perSound : 0);
    }
};

struct Day
{
    uint32_t type;
    uint32_t sound;  ///< encoding; 0: none
    Index index;
};

/// Sample sizes and chunk offsets, with the numbers of key samples.
constexpr Index kMovie = {.perPicture = 4 + 4, .perKey = 4, .perSound = 4 + 4};
constexpr Index kWideMovie = {.perPicture = 4 + 8, .perKey = 4, .perSound = 4 + 8};

constexpr std::array<Day, 18> kDays = {{
    {SG_STREAM_TYPE_MP4, SG_ENCODE_AUDIO_AAC, kMovie},
    {SG_STREAM_TYPE_MOV, SG_ENCODE_AUDIO_AAC, kMovie},
    {SG_STREAM_TYPE_MP4_NOSEEK, SG_ENCODE_AUDIO_AAC, kMovie},
    {SG_STREAM_TYPE_MP4_64, SG_ENCODE_AUDIO_AAC, kWideMovie},
    {SG_STREAM_TYPE_MOV_64, SG_ENCODE_AUDIO_AAC, kWideMovie},
    // A chunk has an entry of idx1 and one of ix.
    {SG_STREAM_TYPE_AVI, SG_ENCODE_AUDIO_PCM16, {.perPicture = 16 + 8, .perSound = 16 + 8}},
    {SG_STREAM_TYPE_ASF, SG_ENCODE_AUDIO_PCM16, {.perSecond = 6}},
    {SG_STREAM_TYPE_STREAM_ASF, SG_ENCODE_AUDIO_PCM16, {}},
    {SG_STREAM_TYPE_FLV, SG_ENCODE_AUDIO_PCM16, {}},
    {SG_STREAM_TYPE_STREAM_FLV, SG_ENCODE_AUDIO_PCM16, {}},
    {SG_STREAM_TYPE_OMF, SG_ENCODE_AUDIO_PCM16, {}},
    {SG_STREAM_TYPE_RTP, SG_ENCODE_AUDIO_G711A, {}},
    {SG_STREAM_TYPE_TS, SG_ENCODE_AUDIO_AAC, {}},
    {SG_STREAM_TYPE_PS, SG_ENCODE_AUDIO_MP2, {}},
    {SG_STREAM_TYPE_QVPS, SG_ENCODE_AUDIO_AAC, {}},
    {SG_STREAM_TYPE_GAYSPS, SG_ENCODE_AUDIO_G711A, {}},
    // All cue points are part of the handle.
    {SG_STREAM_TYPE_MKV, 0, {}},
    {SG_STREAM_TYPE_WAV, SG_ENCODE_AUDIO_PCM16, {}},
}};

/// Counts what a sink that stores nothing gets; the last block is kept.
struct Tally
{
    uint64_t blocks = 0;
    uint64_t bytes = 0;
    Support::Bytes last;

    static void Receive(SGOutputData* block, void* user)
    {
        auto& self = *static_cast<Tally*>(user);
        ++self.blocks;
        self.bytes += static_cast<uint64_t>(block->data_size);
        self.last.assign(block->data_pointer, block->data_pointer + block->data_size);
    }
};

class WholeDay : public ::testing::TestWithParam<Day>
{
protected:
    WholeDay()
    {
        m_key = Support::H264I(Support::Join({Support::Nal(Support::Hex("67 42 C0 1E D9")),
                                              Support::Nal(Support::Hex("68 CE 3C 80")),
                                              Support::Nal(Support::Hex("65 88"))}));
        m_other = Support::H264P(Support::Nal(Support::Hex("41 9A")));
        m_sound = Support::Audio(GetParam().sound, Support::Hex("21 10 04 60"), 8000, 1, 16);
        create.user = &m_tally;
        create.sg_datacb = &Tally::Receive;
    }

    /// Pictures and sound of one hour; each is stored.
    void AnHour(Subject& subject, uint32_t hour)
    {
        for (uint32_t picture = 0; picture < kPicturesPerHour; ++picture)
        {
            Support::Frame& frame = picture % kPicturesPerKey == 0 ? m_key : m_other;
            const uint64_t time = (uint64_t{hour} * kPicturesPerHour + picture) * 1000 / kRate;
            frame.time = static_cast<uint32_t>(time) + 1;
            const uint64_t before = m_tally.blocks;
            const int result = subject.Input(frame);
            ASSERT_TRUE(result == SG_ERR_NOERR || GetParam().type == SG_STREAM_TYPE_WAV);
            ASSERT_TRUE(m_tally.blocks > before || GetParam().type == SG_STREAM_TYPE_WAV);
            if (GetParam().sound == 0) continue;

            m_sound.time = frame.time;
            const uint64_t pictures = m_tally.blocks;
            ASSERT_EQ(subject.Input(m_sound), SG_ERR_NOERR);
            ASSERT_GT(m_tally.blocks, pictures);
        }
    }

    Support::Frame m_key;
    Support::Frame m_other;
    Support::Frame m_sound;
    Tally m_tally;
    SGCreateParam create{};
};

INSTANTIATE_TEST_SUITE_P(EveryContainer,
                         WholeDay,
                         ::testing::ValuesIn(kDays),
                         [](const auto& day) { return NameOf(day.param.type); });

/// Storage is at most twice what a table needs, or the least that it begins with.
constexpr uint64_t kSlack = 256 * 1024;

/// The time stamp of the video PES packet in a block, ISO/IEC 13818-1 2.4.3.7.
uint64_t PtsOf(const Support::Bytes& block)
{
    const Support::Bytes code = Support::Hex("00 00 01 E0");
    const auto found = std::search(block.begin(), block.end(), code.begin(), code.end());
    const auto at = static_cast<std::size_t>(found - block.begin()) + 9;
    return (block.at(at) >> 1 & 7ull) << 30 | uint64_t{block.at(at + 1)} << 22 |
           (block.at(at + 2) >> 1) * 0x8000ull | uint64_t{block.at(at + 3)} << 7 |
           block.at(at + 4) >> 1;
}

TEST_P(WholeDay, GrowsByItsIndexAlone)
{
    const FixedSources sources;
    const uint64_t perHour = GetParam().index.PerHour(GetParam().sound != 0);
    Subject subject(GetParam().type, create);
    subject.Header();
    subject.Input(m_key);
    if (GetParam().sound != 0) subject.Input(m_sound);
    const uint64_t before = AllocatedBytes();
    uint64_t grown = 0;
    for (uint32_t hour = 0; hour < kHours; ++hour)
    {
        AnHour(subject, hour);
        if (HasFatalFailure()) return;
        grown = AllocatedBytes() - before;
        if (!kMemoryCounts) continue;
        EXPECT_LE(grown, (hour + 1) * perHour * 2 + kSlack) << "hour " << hour;
    }
    if (kMemoryCounts)
    {
        EXPECT_GE(grown + kSlack, kHours * perHour);
        std::cout << NameOf(GetParam().type) << ": " << grown / kHours << " bytes an hour, "
                  << perHour << " of them index" << std::endl;
    }
    EXPECT_EQ(subject.Tailer(), SG_ERR_NOERR);
}

class ClockOfADay : public WholeDay
{
};

INSTANTIATE_TEST_SUITE_P(ProgramAndTransportStreams,
                         ClockOfADay,
                         ::testing::Values(Day{SG_STREAM_TYPE_PS, 0, {}},
                                           Day{SG_STREAM_TYPE_QVPS, 0, {}},
                                           Day{SG_STREAM_TYPE_GAYSPS, 0, {}},
                                           Day{SG_STREAM_TYPE_TS, 0, {}}),
                         [](const auto& day) { return NameOf(day.param.type); });

TEST_P(ClockOfADay, WrapsBehind13HoursWhereItHas32Bits)
{
    Subject subject(GetParam().type, create);
    for (uint32_t hour = 0; hour < kHours; ++hour)
    {
        AnHour(subject, hour);
        if (HasFatalFailure()) return;
    }
    constexpr uint64_t kTicks = 90000 / kRate;
    constexpr uint64_t kPictures = uint64_t{kHours} * kPicturesPerHour;
    constexpr uint64_t kLow32 = 0xFFFFFFFF;
    switch (GetParam().type)
    {
        case SG_STREAM_TYPE_GAYSPS:  // 33 bits, from 0 on
            EXPECT_EQ(PtsOf(m_tally.last), (kPictures - 1) * kTicks);
            break;
        case SG_STREAM_TYPE_TS:
            EXPECT_EQ(PtsOf(m_tally.last), kPictures * kTicks & kLow32);
            break;
        default:
            EXPECT_EQ(PtsOf(m_tally.last), (60000 + kPictures * kTicks) & kLow32);
            break;
    }
}

}  // namespace
}  // namespace Reliability
