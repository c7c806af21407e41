// Muxing into the MP4 family, and its tailer over a long recording.
#include <algorithm>

#include "Measure.h"

namespace Bench
{
namespace
{

using namespace Orbel::Wrapton;

/// Frames of one NAL unit behind a start code: an I frame and P frames.
class H264Frames
{
public:
    H264Frames(std::size_t size, std::size_t count)
    {
        constexpr std::size_t kDistinct = 8;
        for (uint32_t i = 0; i < std::min(count, kDistinct); ++i)
        {
            Bytes bytes = Payload(size, i);
            const bool key = i == 0;
            const unsigned char front[] = {
                0, 0, 0, 1, static_cast<unsigned char>(key ? 0x65 : 0x41)};
            std::copy(std::begin(front), std::end(front), bytes.begin());
            m_bytes.push_back(std::move(bytes));
        }
        for (std::size_t i = 0; i < count; ++i)
        {
            Bytes& bytes = m_bytes[i % m_bytes.size()];
            SGFrameInfo frame{};
            frame.struct_size = sizeof(frame);
            frame.frame_pointer = bytes.data();
            frame.frame_size = static_cast<uint32_t>(bytes.size());
            frame.frame_type = SG_FRAME_TYPE_VIDEO;
            frame.frame_sub_type =
                i % m_bytes.size() == 0 ? SG_FRAME_SUB_TYPE_I : SG_FRAME_SUB_TYPE_P;
            frame.frame_encode = SG_ENCODE_VIDEO_HI_H264;
            frame.width = 1280;
            frame.heigth = 720;
            frame.frame_rate = 25;
            m_frames.push_back(frame);
        }
    }

    std::vector<SGFrameInfo>& Records() { return m_frames; }

private:
    std::vector<Bytes> m_bytes;
    std::vector<SGFrameInfo> m_frames;
};

/// Their time is a small part of what surrounds it, so the iterations are counted, not timed.
void LongRecordings(benchmark::internal::Benchmark* bench)
{
    bench->UseManualTime()->Iterations(10)->Unit(benchmark::kMillisecond);
}

void Mux(benchmark::State& state, uint32_t type)
{
    const auto size = static_cast<std::size_t>(state.range(0));
    H264Frames frames(size, FramesPerRecording(size));
    MuxAgainstCopy(state, type, frames.Records());
}

void Tailer(benchmark::State& state, uint32_t type)
{
    constexpr std::size_t kSamples = 100000;
    H264Frames frames(64, kSamples);
    for ([[maybe_unused]] auto _ : state)
    {
        Muxer muxer(type);
        for (SGFrameInfo& frame : frames.Records())
        {
            muxer.Input(frame);
        }
        state.SetIterationTime(Seconds([&] { muxer.Tailer(); }));
    }
    state.counters["samples"] = kSamples;
}

/// Every frame of a recording of 100 000, so that the growing tables are in it.
void Long(benchmark::State& state, uint32_t type)
{
    H264Frames frames(1024, 100000);
    MuxAgainstCopy(state, type, frames.Records());
}

BENCHMARK_CAPTURE(Mux, mp4, SG_STREAM_TYPE_MP4)->Apply(FrameSizes);
BENCHMARK_CAPTURE(Mux, mov_64, SG_STREAM_TYPE_MOV_64)->Apply(FrameSizes);
BENCHMARK_CAPTURE(Mux, mp4_noseek, SG_STREAM_TYPE_MP4_NOSEEK)->Apply(FrameSizes);
BENCHMARK_CAPTURE(Long, mp4, SG_STREAM_TYPE_MP4)->Apply(LongRecordings);
BENCHMARK_CAPTURE(Tailer, mp4, SG_STREAM_TYPE_MP4)->Apply(LongRecordings);
BENCHMARK_CAPTURE(Tailer, mp4_64, SG_STREAM_TYPE_MP4_64)->Apply(LongRecordings);

}  // namespace
}  // namespace Bench
