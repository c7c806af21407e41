// Muxing into WAV, whose audio frames are passed through.
#include "Measure.h"

namespace Bench
{
namespace
{

using namespace Orbel::Wrapton;

void Mux(benchmark::State& state)
{
    const auto size = static_cast<std::size_t>(state.range(0));
    Bytes bytes = Payload(size, 1);
    SGFrameInfo frame{};
    frame.struct_size = sizeof(frame);
    frame.frame_pointer = bytes.data();
    frame.frame_size = static_cast<uint32_t>(size);
    frame.frame_type = SG_FRAME_TYPE_AUDIO;
    frame.frame_encode = SG_ENCODE_AUDIO_PCM16;
    std::vector<SGFrameInfo> frames(FramesPerRecording(size), frame);
    MuxAgainstCopy(state, SG_STREAM_TYPE_WAV, frames);
}

BENCHMARK(Mux)->Name("Mux/wav")->Apply(FrameSizes);

}  // namespace
}  // namespace Bench
