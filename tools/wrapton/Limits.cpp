#include "Limits.h"

namespace Orbel::Wrapton::Command
{
namespace
{

constexpr uint64_t kMiB = uint64_t{1} << 20;
constexpr uint64_t kGiB = uint64_t{1} << 30;
constexpr int64_t kSecond = 1'000'000;
constexpr uint64_t kWords32 = uint64_t{1} << 32;

Limit Bytes(std::string_view name, uint64_t bytes, std::string_view outcome)
{
    return {.name = name, .bytes = bytes, .frame_bytes = {}, .time_us = {}, .outcome = outcome};
}

Limit FrameBytes(uint64_t bytes)
{
    return {.name = "picture size",
            .bytes = {},
            .frame_bytes = bytes,
            .time_us = {},
            .outcome = "larger pictures are dropped"};
}

Limit Time(std::string_view name, int64_t time_us, std::string_view outcome)
{
    return {.name = name, .bytes = {}, .frame_bytes = {}, .time_us = time_us, .outcome = outcome};
}

/// When 32 bits of a 90 kHz clock are full: 13:15:21.
constexpr int64_t kClock90 = static_cast<int64_t>(kWords32 * 100 / 9);

std::vector<Limit> Mp4Limits(bool wide)
{
    std::vector<Limit> limits;
    if (!wide)
        limits.push_back(Bytes(
            "offsets", kWords32, "offsets of 32 bits wrap: frames behind 4 GiB are not found"));
    limits.push_back(
        Time("durations", kClock90, "durations stay at their highest value, players end there"));
    limits.push_back(FrameBytes(3 * kMiB));
    return limits;
}

}  // namespace

std::vector<Limit> LimitsOf(const Container& container)
{
    switch (container.type)
    {
        case SG_STREAM_TYPE_MP4_64:
        case SG_STREAM_TYPE_MOV_64:
            return Mp4Limits(true);
        case SG_STREAM_TYPE_MP4:
        case SG_STREAM_TYPE_MOV:
        case SG_STREAM_TYPE_3GP:
        case SG_STREAM_TYPE_MP4_NOSEEK:
            return Mp4Limits(false);
        case SG_STREAM_TYPE_MKV:
            // Clusters last a second each and count it in 16 bits of milliseconds.
            return {Time("cluster times", 66 * kSecond, "times start over every 65.536 seconds"),
                    Time("clusters", 102400 * kSecond, "frames are refused"),
                    FrameBytes(2 * kMiB)};
        case SG_STREAM_TYPE_FLV:
        case SG_STREAM_TYPE_STREAM_FLV:
            return {Time("time stamps", (int64_t{1} << 24) * 1000, "times start over at 0"),
                    FrameBytes(2 * kMiB)};
        case SG_STREAM_TYPE_AVI:
            // The super index has room for 62 parts of a gibibyte.
            return {Bytes("index", 62 * kGiB, "what follows is not in the index")};
        case SG_STREAM_TYPE_ASF:
        case SG_STREAM_TYPE_STREAM_ASF:
            return {FrameBytes(2 * kMiB)};
        case SG_STREAM_TYPE_PS:
        case SG_STREAM_TYPE_QVPS:
            return {Time("clock", kClock90, "the clock of 32 bits starts over at 0"),
                    FrameBytes(kMiB)};
        case SG_STREAM_TYPE_GAYSPS:
            return {Time("clock", 2 * kClock90, "the clock of 33 bits starts over at 0"),
                    FrameBytes(kMiB)};
        case SG_STREAM_TYPE_TS:
            return {Time("time stamps", kClock90, "the time stamps of 32 bits start over at 0")};
        case SG_STREAM_TYPE_WAV:
            return {Bytes("data size", kWords32, "the size of 32 bits wraps")};
        default:
            return {};  // OMF and RTP go on for ever: their stamps are made to start over
    }
}

}  // namespace Orbel::Wrapton::Command
