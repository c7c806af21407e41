#include "Forecast.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace Orbel::Wrapton::Command
{
namespace
{

constexpr double kHour = 3600e6;
constexpr uint64_t kMostReserve = 64U << 20;  // SGHeaderInfo::pre_header_len
constexpr uint64_t kReserveStep = 4096;

/// A damaged file can have any times. Products of counts up to here fit 64 bits.
constexpr double kMost = 1e15;

uint64_t Whole(double value)
{
    return static_cast<uint64_t>(std::clamp(value, 0.0, kMost));
}

const StreamCount* Of(const std::vector<StreamCount>& streams, bool video)
{
    const auto found =
        std::find_if(streams.begin(),
                     streams.end(),
                     [&](const StreamCount& count) { return count.first.info.is_video == video; });
    return found == streams.end() ? nullptr : &*found;
}

std::optional<std::string> Refusal(const Container& container,
                                   const StreamCount& count,
                                   bool has_video)
{
    const StreamInfo& info = count.first.info;
    const auto accepted = info.is_video ? container.video : container.audio;
    if (!info.codec || !Accepts(accepted, *info.codec)) return "no " + info.codec_name;
    if (!info.unusable.empty()) return info.codec_name + ": " + info.unusable;
    if (!info.is_video && container.audio_needs_video && !has_video)
        return "no " + info.codec_name + " without video";
    if (!info.is_video && container.is_rtp && has_video)
        return "no " + info.codec_name + " beside video";
    if (info.is_video && count.key_frames == 0 && !container.is_rtp)
        return "no " + info.codec_name + " without a key picture";
    return std::nullopt;
}

void AddIndex(Forecast& forecast,
              const std::vector<StreamCount>& streams,
              std::optional<int64_t> length_us)
{
    const StreamCount* video = Of(streams, true);
    const StreamCount* audio = Of(streams, false);
    if (video == nullptr || !forecast.refusals.empty()) return;

    const auto sound = audio != nullptr ? std::optional(audio->first) : std::nullopt;
    const auto model = ModelIndex(*forecast.container, video->first, sound);
    if (!model) return;
    const uint64_t pictures = video->FramesIn(length_us, video->frames);
    const uint64_t keys = std::min(pictures, video->FramesIn(length_us, video->key_frames));
    const uint64_t sounds = audio != nullptr ? audio->FramesIn(length_us, audio->frames) : 0;
    forecast.index = model->BytesFor(keys, pictures - keys, sounds);
    forecast.bytes += *forecast.index;

    // The box must leave room for the header of what is left over.
    constexpr uint64_t kFreeHeader = 8;
    const uint64_t room = (*forecast.index + kFreeHeader + kReserveStep) / kReserveStep;
    if (room * kReserveStep <= kMostReserve)
        forecast.reserve = static_cast<uint32_t>(room * kReserveStep);
}

void AddLimits(Forecast& forecast, const std::vector<StreamCount>& streams, int64_t length_us)
{
    const double hours = static_cast<double>(length_us) / kHour;
    const double per_hour = hours > 0 ? static_cast<double>(forecast.bytes) / hours : 0;
    for (const Limit& limit : LimitsOf(*forecast.container))
    {
        if (limit.time_us && length_us > *limit.time_us)
            forecast.met.push_back({limit, limit.time_us});
        if (limit.bytes && forecast.bytes >= *limit.bytes)
            forecast.met.push_back(
                {limit,
                 per_hour > 0 ? static_cast<int64_t>(
                                    Whole(static_cast<double>(*limit.bytes) / per_hour * kHour))
                              : 0});
        const bool too_large = std::any_of(streams.begin(),
                                           streams.end(),
                                           [&](const StreamCount& count) {
                                               return count.first.info.is_video &&
                                                      limit.frame_bytes &&
                                                      count.largest >= *limit.frame_bytes;
                                           });
        if (too_large) forecast.met.push_back({limit, std::nullopt});
    }
}

/// Half of what the first limit allows, in whole minutes: bit rates vary.
std::optional<int64_t> SegmentFor(const Forecast& forecast)
{
    constexpr int64_t kMinute = 60'000'000;
    std::optional<int64_t> first;
    for (const LimitMet& met : forecast.met)
    {
        if (!met.at_us) return std::nullopt;
        first = std::min(first.value_or(*met.at_us), *met.at_us);
    }
    if (!first || *first / 2 < kMinute) return std::nullopt;
    return *first / 2 / kMinute * kMinute;
}

}  // namespace

double StreamCount::BytesPerHour() const
{
    if (end_us <= 0) return 0;
    return std::min(static_cast<double>(bytes) / static_cast<double>(end_us) * kHour, kMost);
}

uint64_t StreamCount::FramesIn(std::optional<int64_t> time_us, uint64_t counted) const
{
    if (!time_us || end_us <= 0) return counted;
    return Whole(std::ceil(static_cast<double>(counted) * static_cast<double>(*time_us) /
                           static_cast<double>(end_us)));
}

Forecast ForecastFor(const Container& container,
                     const std::vector<StreamCount>& streams,
                     std::optional<int64_t> length_us)
{
    Forecast forecast;
    forecast.container = &container;
    const bool has_video = Of(streams, true) != nullptr;
    double bytes = 0;
    int64_t longest_us = 0;
    for (const StreamCount& count : streams)
    {
        if (const auto refusal = Refusal(container, count, has_video))
            forecast.refusals.push_back(*refusal);
        const int64_t stream_us = length_us.value_or(count.end_us);
        longest_us = std::max(longest_us, stream_us);
        bytes += count.end_us > 0 ? count.BytesPerHour() * static_cast<double>(stream_us) / kHour
                                  : static_cast<double>(count.bytes);
    }
    forecast.bytes = Whole(bytes);
    AddIndex(forecast, streams, length_us);
    AddLimits(forecast, streams, longest_us);
    return forecast;
}

Advice Advise(const std::vector<Forecast>& forecasts)
{
    // What plays in most places first; the native format holds everything, but few play it.
    static constexpr std::array kOrder = {SG_STREAM_TYPE_MP4,
                                          SG_STREAM_TYPE_MP4_64,
                                          SG_STREAM_TYPE_AVI,
                                          SG_STREAM_TYPE_ASF,
                                          SG_STREAM_TYPE_FLV,
                                          SG_STREAM_TYPE_MKV,
                                          SG_STREAM_TYPE_PS,
                                          SG_STREAM_TYPE_QVPS,
                                          SG_STREAM_TYPE_GAYSPS};
    static constexpr std::array kLast = {SG_STREAM_TYPE_WAV, SG_STREAM_TYPE_OMF};

    const auto of = [&](SG_STREAM_TYPE type) -> const Forecast*
    {
        const auto found =
            std::find_if(forecasts.begin(),
                         forecasts.end(),
                         [&](const Forecast& entry) { return entry.container->type == type; });
        return found != forecasts.end() && found->refusals.empty() ? &*found : nullptr;
    };
    for (const SG_STREAM_TYPE type : kOrder)
        if (const Forecast* forecast = of(type); forecast != nullptr && forecast->IsWhole())
            return {forecast, std::nullopt};
    for (const SG_STREAM_TYPE type : kOrder)
        if (const Forecast* forecast = of(type); forecast != nullptr)
            if (const auto segment = SegmentFor(*forecast)) return {forecast, segment};
    for (const SG_STREAM_TYPE type : kLast)
        if (const Forecast* forecast = of(type); forecast != nullptr && forecast->IsWhole())
            return {forecast, std::nullopt};
    return {};
}

}  // namespace Orbel::Wrapton::Command
