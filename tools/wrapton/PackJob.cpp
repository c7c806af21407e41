#include "PackJob.h"

#include <exception>
#include <filesystem>
#include <optional>
#include <utility>

#include "Failure.h"
#include "Interrupt.h"
#include "OutputSeries.h"
#include "Quantities.h"
#include "Recording.h"
#include "TrimmedSource.h"

namespace Orbel::Wrapton::Command
{
namespace
{

int64_t TimeOf(const std::string& option, const std::string& text)
{
    const auto time = ParseMicroseconds(text);
    if (!time) throw Failure(option + ": " + text + " is no time such as 90, 10m or 1:30:00");
    return *time;
}

TrimRequest TrimOf(const PackOptions& options)
{
    TrimRequest request;
    if (!options.start.empty()) request.start_us = TimeOf("--start", options.start);
    if (!options.duration.empty()) request.duration_us = TimeOf("--duration", options.duration);
    if (request.duration_us == 0)
        throw Failure("--duration: " + options.duration + " is no time at all");
    return request;
}

std::optional<SegmentLimit> LimitOf(const PackOptions& options)
{
    if (options.segment.empty()) return std::nullopt;
    const auto limit = ParseSegmentLimit(options.segment);
    if (!limit)
        throw Failure("--segment: " + options.segment +
                      " is no time such as 90, 10m or 1:30:00, and no size such as 100M or 4G");
    return limit;
}

void CheckOutput(const PackOptions& options, const Container& container)
{
    const bool to_pipe = options.output == OutputFile::kStandardOutput;
    if (to_pipe && !OnlyAppends(container))
        throw Failure(std::string(container.name) +
                      " goes back to earlier places, which standard output cannot");
    if (to_pipe && !options.segment.empty())
        throw Failure("--segment needs files, not standard output");
    if (container.is_rtp && !options.segment.empty())
        throw Failure("--segment is not for rtp: its packets are one session");
}

void MakeDirectoryOf(const std::string& output)
{
    const std::filesystem::path directory = std::filesystem::path(output).parent_path();
    std::error_code error;
    if (!directory.empty()) std::filesystem::create_directories(directory, error);
    if (error) throw Failure(output + ": " + error.message() + "; nothing was written to it");
}

void Record(const PackOptions& options, ProgressMeter& meter, Report& report)
{
    const Container& container = ContainerOf(options);
    report.container = container.name;
    report.type = container.type;
    report.reserve = options.reserve;
    report.dry_run = options.dry_run;
    CheckOutput(options, container);
    const TrimRequest trim = TrimOf(options);
    std::vector<std::string> spared = options.inputs.AllFiles();
    spared.insert(spared.end(), options.spared.begin(), options.spared.end());
    OutputSeries series(
        options.output, std::move(spared), container.type, LimitOf(options), options.dry_run);

    CatchInterrupts();
    Inputs inputs = OpenInputs(options.inputs);
    report.left_out = std::move(inputs.left_out);
    Recording recording(container, Trimmed(std::move(inputs.sources), trim), meter, report);
    if (!recording.HasSomething()) return;

    if (options.make_directories && !options.dry_run) MakeDirectoryOf(options.output);
    recording.Run(series, options.pcap);
    report.notes = NotesOn(report, container);
}

}  // namespace

const Container& ContainerOf(const PackOptions& options)
{
    // A capture file holds RTP, whatever its name.
    const bool named = !options.to.empty() || !options.pcap;
    const Container& container = ChooseContainer(named ? options.to : "rtp", options.output);
    if (options.pcap && !container.is_rtp)
        throw Failure("--pcap is for rtp, not for " + std::string(container.name));
    return container;
}

void CheckOptions(const PackOptions& options)
{
    TrimOf(options);
    LimitOf(options);
    if (!options.to.empty()) ContainerOf(options);
}

Report PackOne(const PackOptions& options, ProgressMeter& meter)
{
    Report report;
    report.output = options.output;
    try
    {
        if (options.inputs.AllFiles().empty() || options.output.empty())
            throw Failure("pack needs an input and an output");
        Record(options, meter, report);
    }
    catch (const Interrupted&)
    {
        report.signal = CaughtSignal();
    }
    catch (const std::exception& failure)  // one Failure or, of the system, out of memory
    {
        report.error = failure.what();
    }
    meter.Clear();
    report.warnings = WarningsOn(report);
    report.exit_code = ExitCodeOf(report);
    return report;
}

}  // namespace Orbel::Wrapton::Command
