#include "Comparison.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <memory>
#include <optional>
#include <tuple>
#include <utility>
#include <vector>

#include "Containers.h"
#include "Measure.h"
#include "Peer.h"
#include "Report.h"

namespace Bench
{
namespace
{

struct Outcome
{
    double copies = 0;             // median of packaging / copying
    std::optional<double> faster;  // median of the peer / packaging
    double bytes_per_second = 0;
};

/// The recordings are large: each is made once and kept while its workload is under way.
class Recordings
{
public:
    const Recording& Get(const Workload& load, Sound sound)
    {
        auto& recording = m_recordings[{&load, sound}];
        if (recording == nullptr) recording = std::make_unique<Recording>(load, sound);
        return *recording;
    }

private:
    std::map<std::pair<const Workload*, Sound>, std::unique_ptr<Recording>> m_recordings;
};

Outcome Measure(const Container& container,
                const Recording& recording,
                const ComparisonOptions& options)
{
    const uint32_t count = std::max(recording.Load().frames / options.divisor, 1u);
    RunPackager(container, recording, std::min(count, 1000u));  // warms caches and code
    RunCopy(recording, std::min(count, 1000u));

    std::vector<double> copies;
    std::vector<double> faster;
    std::vector<double> speed;
    for (int round = 0; round < options.rounds; ++round)
    {
        // The copy runs on both sides of the packager: what changes in between hits both.
        const double before = RunCopy(recording, count).seconds;
        const Run packaged = RunPackager(container, recording, count);
        const double after = RunCopy(recording, count).seconds;
        copies.push_back(packaged.seconds / ((before + after) / 2));
        speed.push_back(static_cast<double>(packaged.payload) / packaged.seconds);
        if (!options.with_peer) continue;
        const auto peer = RunPeer(container, recording, count);
        if (peer.has_value()) faster.push_back(peer->seconds / packaged.seconds);
    }
    Outcome outcome{.copies = Median(copies), .faster = {}, .bytes_per_second = Median(speed)};
    if (!faster.empty()) outcome.faster = Median(faster);
    return outcome;
}

std::string Mark(bool reached)
{
    return reached ? "" : " (missed)";
}

std::vector<std::string> Row(const Container& container, const Goal& goal, const Outcome& outcome)
{
    std::string faster = "no peer";
    if (outcome.faster.has_value())
    {
        faster = Number(*outcome.faster, 2) + Mark(*outcome.faster >= goal.faster);
    }
    else if (container.peer != nullptr)
    {
        faster = "not measured";
    }
    return {container.name,
            goal.load().name,
            Number(outcome.copies, 2) + Mark(outcome.copies <= goal.copies),
            Number(goal.copies, 2),
            faster,
            goal.faster != 0 ? Number(goal.faster, 2) : "",
            Number(outcome.bytes_per_second / 1e9, 1)};
}

}  // namespace

std::string Compare(const ComparisonOptions& options)
{
    Recordings recordings;
    Table table(
        {"Container", "Load", "x copy", "at most", "x faster than peer", "at least", "GB/s"});
    for (const Container& container : Containers())
    {
        if (std::string(container.name).find(options.containers) == std::string::npos) continue;
        for (const Goal& goal : container.goals)
        {
            if (goal.load == nullptr) continue;
            const Workload& load = goal.load();
            if (!options.load.empty() && options.load != load.name) continue;

            const Recording& recording = recordings.Get(load, container.sound);
            table.Add(Row(container, goal, Measure(container, recording, options)));
            std::fprintf(stderr, "%s, %s: done\n", container.name, load.name);
        }
    }
    return table.Text();
}

std::string WorkloadText()
{
    Table table({"Load", "Frames", "What"});
    for (const Workload* load :
         {&WorkloadW1(), &WorkloadW2(), &WorkloadW3(), &WorkloadA1(), &WorkloadA2()})
    {
        table.Add({load->name, std::to_string(load->frames), load->what});
    }
    return table.Text();
}

}  // namespace Bench
