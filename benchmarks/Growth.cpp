#include "Growth.h"

#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <memory>
#include <string_view>
#include <vector>

#include "Containers.h"
#include "Measure.h"
#include "Report.h"

namespace Bench
{
namespace
{

constexpr uint32_t kShort = 10000;
constexpr uint32_t kLong = 1000000;
constexpr uint32_t kShortRuns = 20;  // in every round
constexpr uint32_t kHandles = 10000;

struct Length
{
    double frames = 0;  // seconds
    double tailer = 0;
    double heap = 0;           // bytes that the frames have left
    uint64_t allocations = 0;  // in the second half of the frames
};

double HeapInUse()
{
    const struct mallinfo2 info = mallinfo2();
    return static_cast<double>(info.uordblks) + static_cast<double>(info.hblkhd);
}

Length Record(const Container& container, const Recording& recording, uint32_t count)
{
    Length length;
    Packager packager(container);
    packager.Header();
    const double heap = HeapInUse();
    uint64_t half = 0;
    const auto input = [&](const Frame& frame, uint32_t number)
    {
        if (number == count / 2) half = Allocations();
        if (recording.HasPictures())
        {
            packager.Picture(frame, number);
        }
        else
        {
            packager.SoundFrame(frame, number);
        }
    };
    length.frames = Seconds([&] { recording.ForEach(count, input, input); });
    length.allocations = Allocations() - half;
    length.heap = HeapInUse() - heap;
    length.tailer = Seconds([&] { packager.Tailer(); });
    recording.Restore();
    return length;
}

/// The first line of the process's memory figures: all pages, resident pages.
double ResidentBytes()
{
    std::ifstream file("/proc/self/statm");
    double all = 0;
    double resident = 0;
    file >> all >> resident;
    return resident * static_cast<double>(sysconf(_SC_PAGESIZE));
}

struct Handles
{
    double each = 0;   // seconds, median
    double bytes = 0;  // touched by each
    double all = 0;    // seconds
};

Handles OpenHandles(const Container& container)
{
    std::vector<double> times;
    times.reserve(kHandles);
    std::vector<std::unique_ptr<Packager>> open;
    open.reserve(kHandles);
    const auto open_one = [&]
    {
        open.push_back(std::make_unique<Packager>(container));
        open.back()->Header();
    };
    Handles handles;
    const double before = ResidentBytes();
    handles.all = Seconds(
        [&]
        {
            for (uint32_t i = 0; i < kHandles; ++i)
                times.push_back(Seconds(open_one));
        });
    handles.bytes = (ResidentBytes() - before) / kHandles;
    handles.each = Median(times);
    return handles;
}

/// What @p work returns in a child: memory that was given back before it would not count as
/// touched.
template <class Work>
auto InFreshProcess(Work work)
{
    int ends[2];
    Expect(pipe(ends) == 0);
    const pid_t child = fork();
    Expect(child >= 0);
    decltype(work()) result{};
    if (child == 0)
    {
        result = work();
        _exit(write(ends[1], &result, sizeof(result)) == sizeof(result) ? 0 : 1);
    }
    Expect(read(ends[0], &result, sizeof(result)) == sizeof(result));
    waitpid(child, nullptr, 0);
    close(ends[0]);
    close(ends[1]);
    return result;
}

bool IsVariant(const Container& container)
{
    return container.peer_option != nullptr;  // the same packager once more
}

}  // namespace

std::string GrowthText(int rounds)
{
    Table table({"Container",
                 "ns/frame at 1 000 000",
                 "x that at 10 000",
                 "heap bytes/frame",
                 "allocations, last 500 000 frames",
                 "tailer ns/frame",
                 "tailer at 10 000, us",
                 "tailer at 1 000 000, us"});
    for (const Container& container : Containers())
    {
        if (IsVariant(container)) continue;
        const bool sound_only = container.goals.front().load == WorkloadA1;
        const Recording recording(sound_only ? WorkloadA1() : WorkloadW2(), container.sound);
        std::vector<double> growth;
        std::vector<double> frame;
        std::vector<double> heap;
        std::vector<double> short_tailer;
        std::vector<double> long_tailer;
        uint64_t allocations = 0;
        for (int round = 0; round < rounds; ++round)
        {
            std::vector<double> short_frames;
            for (uint32_t run = 0; run < kShortRuns; ++run)
            {
                const Length few = Record(container, recording, kShort);
                short_frames.push_back(few.frames / kShort);
                short_tailer.push_back(few.tailer);
            }
            const Length many = Record(container, recording, kLong);
            growth.push_back(many.frames / kLong / Median(short_frames));
            frame.push_back(many.frames / kLong);
            heap.push_back(many.heap / kLong);
            long_tailer.push_back(many.tailer);
            allocations = many.allocations;
        }
        table.Add({container.name,
                   Number(Median(frame) * 1e9, 0),
                   Number(Median(growth), 2),
                   Number(Median(heap), 1),
                   std::to_string(allocations),
                   Number(Median(long_tailer) / kLong * 1e9, 2),
                   Number(Median(short_tailer) * 1e6, 1),
                   Number(Median(long_tailer) * 1e6, 1)});
        std::fprintf(stderr, "%s, growth: done\n", container.name);
    }
    return table.Text();
}

std::string HandlesText()
{
    Table table({"Container", "create and header, us", "memory touched, KiB", "10 000 handles, s"});
    for (const Container& container : Containers())
    {
        if (IsVariant(container)) continue;
        const Handles handles = InFreshProcess([&] { return OpenHandles(container); });
        table.Add({container.name,
                   Number(handles.each * 1e6, 1),
                   Number(handles.bytes / 1024, 0),
                   Number(handles.all, 2)});
        std::fprintf(stderr, "%s, handles: done\n", container.name);
    }
    return table.Text();
}

}  // namespace Bench
