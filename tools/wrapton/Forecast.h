#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Containers.h"
#include "IndexSize.h"
#include "Limits.h"

namespace Orbel::Wrapton::Command
{

/// What was counted of one stream.
struct StreamCount
{
    Specimen first;  ///< the first frame that can open a file
    uint64_t frames = 0;
    uint64_t key_frames = 0;
    uint64_t bytes = 0;
    uint64_t largest = 0;  ///< bytes of the largest frame
    int64_t end_us = 0;    ///< where the last frame ends

    /// Bytes in an hour, at the rate counted.
    [[nodiscard]] double BytesPerHour() const;
    /// How many of the counted frames come in a time, rounded up; as they are without a time.
    [[nodiscard]] uint64_t FramesIn(std::optional<int64_t> time_us, uint64_t counted) const;
};

/// A limit that a recording meets.
struct LimitMet
{
    Limit limit;
    std::optional<int64_t> at_us;  ///< when; nothing: with the first frame that is too large
};

/// What one container would make of a recording.
struct Forecast
{
    const Container* container = nullptr;
    std::vector<std::string> refusals;  ///< of whole streams, in words
    uint64_t bytes = 0;                 ///< of the file, about
    std::vector<LimitMet> met;          ///< within the recording's length
    std::optional<uint64_t> index;      ///< bytes of the index that could stand ahead
    std::optional<uint32_t> reserve;    ///< to be given for it

    [[nodiscard]] bool IsWhole() const { return refusals.empty() && met.empty(); }
};

/// @param streams video first
/// @param length_us of the recording; without one it is as long as what was counted
Forecast ForecastFor(const Container& container,
                     const std::vector<StreamCount>& streams,
                     std::optional<int64_t> length_us);

/// What to record with: the first container that holds everything for the whole length, otherwise
/// the first that does so in segments.
struct Advice
{
    const Forecast* forecast = nullptr;
    std::optional<int64_t> segment_us;
};

Advice Advise(const std::vector<Forecast>& forecasts);

}  // namespace Orbel::Wrapton::Command
