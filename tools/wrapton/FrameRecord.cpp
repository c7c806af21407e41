#include "FrameRecord.h"

#include <algorithm>
#include <limits>

namespace Orbel::Wrapton::Command
{
namespace
{

uint32_t Milliseconds(int64_t time_us)
{
    return static_cast<uint32_t>(std::max<int64_t>(time_us, 0) / 1000);  // wraps after 49 days
}

uint32_t Narrow(int64_t value)
{
    return value > 0 && value <= std::numeric_limits<uint32_t>::max() ? static_cast<uint32_t>(value)
                                                                      : 0;
}

}  // namespace

uint32_t WholeRate(const Rate& rate)
{
    const int64_t rounded = (rate.num + rate.den / 2) / rate.den;
    constexpr int64_t kMost = std::numeric_limits<uint32_t>::max();
    return static_cast<uint32_t>(std::clamp<int64_t>(rounded, 1, kMost));
}

SGFrameInfo RecordOf(const StreamInfo& info, const Frame& frame, int64_t start_us)
{
    SGFrameInfo record = {};
    record.frame_type = info.is_video ? SG_FRAME_TYPE_VIDEO : SG_FRAME_TYPE_AUDIO;
    record.frame_sub_type = frame.sub_type;
    record.frame_encode = EntryOf(*info.codec).encode;
    record.frame_time = Milliseconds(frame.time_us - start_us);
    record.bit_rate = Narrow(info.bit_rate);
    if (info.is_video)
    {
        record.width = Narrow(info.width);
        record.heigth = Narrow(info.height);
        record.frame_rate = WholeRate(info.frame_rate);
        record.deinter_lace = info.interlaced ? 1 : 0;
    }
    else
    {
        record.sample_rate = info.sample_rate;
        record.bit_per_sample = info.bits_per_sample;
        record.channels = info.channels;
    }
    return record;
}

}  // namespace Orbel::Wrapton::Command
