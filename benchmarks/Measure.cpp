#include "Measure.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <new>
#include <random>

namespace Bench
{
namespace
{

using namespace Orbel::Wrapton;

std::atomic<uint64_t> s_allocations = 0;

void* CountedMalloc(std::size_t size) noexcept
{
    s_allocations.fetch_add(1, std::memory_order_relaxed);
    return std::malloc(size != 0 ? size : 1);
}

void* Allocate(int size)
{
    return CountedMalloc(static_cast<std::size_t>(size));
}

void Release(void* memory, int /*size*/)
{
    std::free(memory);
}

void Discard(SGOutputData* block, void* /*user*/)
{
    benchmark::DoNotOptimize(block->data_pointer);
}

}  // namespace

void Expect(bool holds)
{
    if (!holds) std::abort();
}

Bytes Payload(std::size_t size, uint32_t seed)
{
    std::mt19937 random(seed);
    Bytes bytes(size);
    for (unsigned char& byte : bytes)
    {
        byte = static_cast<unsigned char>(random());
    }
    for (std::size_t i = 2; i < size; ++i)
    {
        // Emulation prevention as a coder does it: 00 00 is never followed by 00 to 03.
        if (bytes[i - 2] == 0 && bytes[i - 1] == 0 && bytes[i] <= 3) bytes[i] = 0x80;
    }
    return bytes;
}

double ProcessorTime()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

uint64_t Allocations()
{
    return s_allocations.load(std::memory_order_relaxed);
}

SGCreateParam Discarding()
{
    SGCreateParam create{};
    create.struct_size = sizeof(create);
    create.sg_malloc = Allocate;
    create.sg_free = Release;
    create.sg_datacb = Discard;
    return create;
}

Muxer::Muxer(uint32_t type)
{
    SGCreateParam create = Discarding();
    m_handle = SG_CreateHandle(type, &create);
    Expect(SG_CreateHeader(m_handle, nullptr) == SG_ERR_NOERR);
}

Muxer::~Muxer()
{
    SG_DestroyHandle(m_handle);
}

void Muxer::Input(SGFrameInfo& frame)
{
    Expect(SG_InputFrame(m_handle, &frame) == SG_ERR_NOERR);
}

void Muxer::Tailer()
{
    Expect(SG_CreateTailer(m_handle, nullptr) == SG_ERR_NOERR);
}

double Median(std::vector<double> values)
{
    const auto middle = values.begin() + std::ssize(values) / 2;
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

std::size_t FramesPerRecording(std::size_t size)
{
    return std::min<std::size_t>(2000, (std::size_t{32} << 20) / size);
}

void FrameSizes(benchmark::internal::Benchmark* bench)
{
    bench->Arg(1 << 10)->Arg(64 << 10)->Arg(1 << 20);
    bench->UseManualTime()->Iterations(50)->Unit(benchmark::kMicrosecond);
}

void MuxAgainstCopy(benchmark::State& state, uint32_t type, std::vector<SGFrameInfo>& frames)
{
    uint64_t payload = 0;
    uint32_t largest = 0;
    for (const SGFrameInfo& frame : frames)
    {
        payload += frame.frame_size;
        largest = std::max(largest, frame.frame_size);
    }
    Bytes target(largest);
    std::vector<double> ratios;
    uint64_t allocations = 0;
    for ([[maybe_unused]] auto _ : state)
    {
        Muxer muxer(type);
        muxer.Input(frames.front());  // opens the track, and touches every buffer once
        muxer.Input(frames.back());
        const uint64_t before = Allocations();
        const double seconds = Seconds(
            [&]
            {
                for (SGFrameInfo& frame : frames)
                {
                    muxer.Input(frame);
                }
            });
        allocations += Allocations() - before;
        const double copying = Seconds(
            [&]
            {
                for (const SGFrameInfo& frame : frames)
                {
                    std::memcpy(target.data(), frame.frame_pointer, frame.frame_size);
                    benchmark::DoNotOptimize(target.data());
                    benchmark::ClobberMemory();
                }
            });
        ratios.push_back(seconds / copying);
        state.SetIterationTime(seconds);
    }
    const auto count = static_cast<int64_t>(frames.size());
    state.SetItemsProcessed(state.iterations() * count);
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(payload));
    state.counters["memcpys"] = Median(ratios);
    state.counters["allocs/frame"] =
        static_cast<double>(allocations) / static_cast<double>(state.iterations() * count);
}

}  // namespace Bench

void* operator new(std::size_t size)
{
    void* const memory = Bench::CountedMalloc(size);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

void* operator new[](std::size_t size)
{
    return operator new(size);
}

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept
{
    return Bench::CountedMalloc(size);
}

void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept
{
    return Bench::CountedMalloc(size);
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory, std::size_t /*size*/) noexcept
{
    std::free(memory);
}
