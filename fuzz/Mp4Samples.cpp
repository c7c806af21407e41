#include "Mp4Samples.h"

#include <algorithm>

#include "Require.h"
#include "readers/AnnexBReference.h"
#include "readers/FrameReference.h"
#include "readers/Mp4Reader.h"

namespace Fuzz
{
namespace
{

using namespace Orbel::Wrapton;

/// Start codes of 3 bytes become lengths of 4.
constexpr std::size_t kMostGrowth = 2;
constexpr std::size_t kMostConfig = 256;

/// Frames of AAC that are nothing but a header leave a sample of no bytes and, where samples have
/// no boxes of their own, no block that would tell.
bool HasBytes(const Readers::Mp4Sample& sample)
{
    return sample.size != 0;
}

}  // namespace

void Mp4Samples::Add(const SGFrameInfo& record, std::span<const unsigned char> bytes)
{
    if (record.frame_type == SG_FRAME_TYPE_EXT) return;  // no track has them

    auto& track = record.frame_type == SG_FRAME_TYPE_VIDEO ? m_video : m_audio;
    track.push_back({.encode = record.frame_encode,
                     .key = record.frame_sub_type == SG_FRAME_SUB_TYPE_I,
                     .bytes = {bytes.begin(), bytes.end()}});
}

std::vector<unsigned char> Mp4Samples::SampleOf(const Stored& frame)
{
    switch (frame.encode)
    {
        case SG_ENCODE_VIDEO_HI_H264:
        case SG_ENCODE_VIDEO_QV_H264:
            return Readers::ReferenceH264ToAvc(frame.bytes, frame.bytes.size() * kMostGrowth)
                .written;
        case SG_ENCODE_VIDEO_MPEG4:
        {
            // What became the track's configuration is missing at the sample's end.
            const std::size_t config =
                frame.key ? Readers::ReferenceMpeg4Config(frame.bytes).size() : 0;
            const std::size_t cut = config <= kMostConfig ? config : 0;
            return {frame.bytes.begin(), frame.bytes.end() - static_cast<std::ptrdiff_t>(cut)};
        }
        case SG_ENCODE_AUDIO_AAC:
        {
            const auto data = Readers::ReferenceAacData(frame.bytes);
            return {data.begin(), data.end()};
        }
        default:
            return frame.bytes;
    }
}

void Mp4Samples::Compare(std::span<const unsigned char> file) const
{
    const Readers::Mp4Movie movie = Readers::ReadMp4(file);
    std::size_t compared = 0;
    for (const Readers::Mp4Track& track : movie.tracks)
    {
        const bool video = track.handler == "vide";
        auto sample = track.samples.begin();
        for (const Stored& frame : video ? m_video : m_audio)
        {
            ++compared;
            const auto expected = SampleOf(frame);
            if (expected.empty()) continue;

            sample = std::find_if(sample, track.samples.end(), HasBytes);
            Require(sample != track.samples.end(), "a frame has its sample");
            Require(std::ranges::equal(file.subspan(sample->offset, sample->size), expected),
                    "a frame comes back");
            Require(!video || sample->sync == frame.key, "key pictures are told");
            ++sample;
        }
        Require(std::none_of(sample, track.samples.end(), HasBytes), "a sample has its frame");
    }
    Require(compared == m_video.size() + m_audio.size(), "every stored frame has its track");
}

}  // namespace Fuzz
