/**
 * @file Measure.h
 * What the benchmarks share: payloads, a sink that throws its output away, and the counting of
 * allocations.
 */
#ifndef WRAPTON_BENCHMARKS_MEASURE_H
#define WRAPTON_BENCHMARKS_MEASURE_H

#include <benchmark/benchmark.h>

#include <cstdint>
#include <vector>

#include <wrapton/Wrapton.h>

namespace Bench
{

using Bytes = std::vector<unsigned char>;

/// Ends the program: a number that was measured over failures says nothing.
void Expect(bool holds);

/// Random bytes without a start code.
Bytes Payload(std::size_t size, uint32_t seed);

/// Allocations of the whole process so far: operator new and the allocator below.
uint64_t Allocations();

/// A create record whose output is counted and thrown away; memory comes from a counting allocator.
Orbel::Wrapton::SGCreateParam Discarding();

/// Owns a handle that writes nowhere and has its header.
class Muxer
{
public:
    explicit Muxer(uint32_t type);
    Muxer(const Muxer&) = delete;
    Muxer& operator=(const Muxer&) = delete;
    ~Muxer();

    void Input(Orbel::Wrapton::SGFrameInfo& frame);
    void Tailer();

private:
    void* m_handle;
};

/// Processor time of this thread in seconds. Nothing here waits, and what other programs take of a
/// shared machine does not count.
double ProcessorTime();

/// Seconds that @p work takes.
template <class Work>
double Seconds(Work work)
{
    const double start = ProcessorTime();
    work();
    return ProcessorTime() - start;
}

/// The middle of @p values, which must not be empty: one that lost the processor says nothing.
double Median(std::vector<double> values);

/// Frames of @p size bytes for a recording of 32 MiB, at most 2000.
std::size_t FramesPerRecording(std::size_t size);

/// 1 KiB, 64 KiB and 1 MiB, a fixed number of recordings each: the copy beside them may take far
/// longer than what is measured.
void FrameSizes(benchmark::internal::Benchmark* bench);

/**
 * Muxes the frames once in every iteration and copies the same bytes by memcpy() right afterwards,
 * so that both see the same machine. The benchmark's own time is the muxing.
 *
 * Counters: frames/s, bytes/s, `memcpys` (muxing time in units of the copy, median) and
 * `allocs/frame`.
 */
void MuxAgainstCopy(benchmark::State& state,
                    uint32_t type,
                    std::vector<Orbel::Wrapton::SGFrameInfo>& frames);

}  // namespace Bench

#endif  // WRAPTON_BENCHMARKS_MEASURE_H
