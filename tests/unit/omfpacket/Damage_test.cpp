// Cut, overwritten, shortened and padded recordings: nothing whole may be lost.
#include <algorithm>
#include <cstdint>
#include <random>
#include <set>

#include "unit/omfpacket/Recordings.h"

namespace Orbel::Wrapton
{
namespace
{

using Support::Hex;
using Support::Payload;
using Support::Slice;

constexpr std::size_t kFrames = 30;
constexpr std::size_t kHeader = 24;
constexpr std::size_t kTailer = 8;

const Read* FrameAt(const Readout& readout, uint64_t offset)
{
    const auto found =
        std::find_if(readout.frames.begin(),
                     readout.frames.end(),
                     [offset](const Read& read) { return read.frame.offset == offset; });
    return found == readout.frames.end() ? nullptr : &*found;
}

TEST(OmfDamage, ARecordingCutAnywhereInItsLastThreeFramesKeepsAllOthers)
{
    const MixedRecording recording(kFrames);
    const auto& frames = recording.Frames();
    const auto first = static_cast<std::size_t>(frames[kFrames - 3].offset);
    for (std::size_t size = first; size <= recording.Image().size(); ++size)
    {
        const Readout readout = ReadAll(Slice(recording.Image(), 0, size));
        std::size_t whole = 0;
        uint64_t end = 0;
        while (whole < kFrames && frames[whole].offset + frames[whole].length <= size)
        {
            end = frames[whole].offset + frames[whole].length;
            ++whole;
        }
        ASSERT_EQ(readout.frames.size(), whole) << "cut at " << size;
        EXPECT_EQ(readout.skipped, size - end) << "cut at " << size;
        for (std::size_t i = 0; i < whole; ++i)
        {
            ASSERT_TRUE(IsSame(readout.frames[i], frames[i])) << "cut at " << size;
        }
    }
}

TEST(OmfDamage, ARecordingThatBeginsInsideAFrameKeepsAllOthers)
{
    const MixedRecording recording(4);
    const auto& frames = recording.Frames();
    for (std::size_t from = 1; from <= frames[1].offset; ++from)
    {
        const Readout readout =
            ReadAll(Slice(recording.Image(), from, recording.Image().size() - from));
        ASSERT_EQ(readout.frames.size(), 3u);
        EXPECT_EQ(readout.skipped, frames[1].offset - from);
        EXPECT_TRUE(std::all_of(readout.frames.begin(),
                                readout.frames.end(),
                                [](const Read& read) { return read.frame.intact; }));
    }
}

/// What a single wrong byte at @p at inside @p frame must do.
void ExpectReported(const Readout& readout, const Recorded& frame, std::size_t at, uint8_t exLen)
{
    const Read* const read = FrameAt(readout, frame.offset);
    if (at < kHeader || at >= frame.length - kTailer)
    {
        EXPECT_EQ(read, nullptr) << "header or trailer, byte " << at;
        EXPECT_EQ(readout.skipped, frame.length);
        return;
    }
    ASSERT_NE(read, nullptr) << "byte " << at;
    EXPECT_EQ(readout.skipped, 0u);
    // Nothing watches over the fields of extension headers but the data check's own.
    if (at < kHeader + exLen) return;
    EXPECT_FALSE(read->frame.intact) << "payload, byte " << at;
}

TEST(OmfDamage, EveryWrongByteIsReportedAndCostsItsFrameOnly)
{
    const MixedRecording recording(6);
    const auto& frames = recording.Frames();
    for (std::size_t hit = 0; hit < frames.size(); ++hit)
    {
        for (std::size_t at = 0; at < frames[hit].length; ++at)
        {
            Bytes image = recording.Image();
            const auto place = static_cast<std::size_t>(frames[hit].offset) + at;
            const uint8_t exLen = image[static_cast<std::size_t>(frames[hit].offset) + 22];
            image[place] ^= 0x40;
            const Readout readout = ReadAll(image);
            ExpectReported(readout, frames[hit], at, exLen);
            for (std::size_t i = 0; i < frames.size(); ++i)
            {
                if (i == hit) continue;
                const Read* const read = FrameAt(readout, frames[i].offset);
                ASSERT_NE(read, nullptr) << "frame " << i << ", byte " << at << " of " << hit;
                ASSERT_TRUE(IsSame(*read, frames[i]));
            }
        }
    }
}

/// Reads a damaged image and expects every frame that is the same in both.
void ExpectUntouchedFrames(const Recording& recording, const Bytes& image)
{
    const Readout readout = ReadAll(image);
    for (const Recorded& frame : recording.Frames())
    {
        const auto begin = static_cast<std::ptrdiff_t>(frame.offset);
        const bool untouched = std::equal(image.begin() + begin,
                                          image.begin() + begin + frame.length,
                                          recording.Image().begin() + begin);
        const Read* const read = FrameAt(readout, frame.offset);
        if (untouched)
        {
            ASSERT_NE(read, nullptr);
            ASSERT_TRUE(IsSame(*read, frame));
        }
    }
}

TEST(OmfDamage, RandomBytesCostNoFrameThatTheyDoNotHit)
{
    const MixedRecording recording(60);
    for (uint32_t seed = 0; seed < 300; ++seed)
    {
        std::mt19937 random(seed);
        Bytes image = recording.Image();
        for (uint32_t i = 0; i <= seed % 40; ++i)
        {
            image[random() % image.size()] = static_cast<unsigned char>(random());
        }
        ExpectUntouchedFrames(recording, image);
    }
}

TEST(OmfDamage, AZeroedSectorCostsTheFramesInItOnly)
{
    constexpr std::size_t kSector = 512;
    const MixedRecording recording(60);
    for (std::size_t at = 0; at + kSector <= recording.Image().size(); at += kSector)
    {
        Bytes image = recording.Image();
        std::fill_n(image.begin() + static_cast<std::ptrdiff_t>(at),
                    kSector,
                    static_cast<unsigned char>(0));
        ExpectUntouchedFrames(recording, image);
    }
}

TEST(OmfDamage, LostAndAddedBytesCostTheirFrameOnly)
{
    const MixedRecording recording(8);
    const auto& frames = recording.Frames();
    const auto middle = static_cast<std::ptrdiff_t>(frames[3].offset + frames[3].length / 2);
    Bytes shorter = recording.Image();
    shorter.erase(shorter.begin() + middle);
    Bytes longer = recording.Image();
    longer.insert(longer.begin() + middle, 0x55);
    for (const Bytes& image : {shorter, longer})
    {
        const Readout readout = ReadAll(image);
        ASSERT_EQ(readout.frames.size(), 7u);
        EXPECT_EQ(readout.skipped, frames[3].length + image.size() - recording.Image().size());
        EXPECT_EQ(readout.frames[3].frame.skipped, readout.skipped);
        EXPECT_TRUE(Support::Same(readout.frames[3].payload, frames[4].payload));
    }
}

TEST(OmfDamage, BytesBetweenFramesAreSkippedAndCounted)
{
    Recording recording;
    recording.AddGarbage(Payload(100));
    recording.AddSound(Hex("01"));
    recording.AddGarbage(Payload(1));
    recording.AddSound(Hex("02"));
    recording.AddGarbage(Payload(4000));
    const Readout readout = ReadAll(recording.Image());
    ASSERT_EQ(readout.frames.size(), 2u);
    EXPECT_EQ(readout.frames[0].frame.skipped, 100u);
    EXPECT_EQ(readout.frames[1].frame.skipped, 1u);
    EXPECT_EQ(readout.skipped, 4101u);
}

TEST(OmfDamage, ARecordingInsideAFrameIsThatFrame)
{
    const MixedRecording inner(5);
    Recording outer;
    outer.AddSound(inner.Image());
    outer.AddSound(Hex("01"));
    EXPECT_EQ(ReadAll(outer.Image()).frames.size(), 2u);
    // Without the outer trailer, what is inside is all there is.
    const Readout readout = ReadAll(Slice(outer.Image(), 0, outer.Frames()[0].length - 1));
    EXPECT_EQ(readout.frames.size(), 5u);
}

}  // namespace
}  // namespace Orbel::Wrapton
