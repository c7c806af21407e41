#include "PackCommand.h"

#include <unistd.h>

#include <iostream>
#include <memory>
#include <utility>

#include "Failure.h"
#include "Inputs.h"
#include "Interrupt.h"
#include "Quantities.h"
#include "Recording.h"
#include "TrimmedSource.h"

namespace Orbel::Wrapton::Command
{
namespace
{

constexpr uint32_t kMostReserve = 64U << 20;  // SGHeaderInfo::pre_header_len
constexpr unsigned int kMostRate = 1000;      // pictures per second
constexpr int kMostSampleRate = 768000;
constexpr int kMostChannels = 64;

/// The positionals are read as one list, because options may stand between them and behind them.
class PackFormatter final : public CLI::Formatter
{
public:
    std::string make_usage(const CLI::App*, std::string) const override
    {
        return "Usage: wrapton pack [OPTIONS] INPUT... OUTPUT\n";
    }
};

struct PackOptions
{
    InputRequest inputs;
    std::vector<std::string> files;  ///< the last one is the output
    std::string to;
    uint32_t reserve = 0;
    std::string segment;
    std::string start;
    std::string duration;
    bool dry_run = false;
    bool pcap = false;
    bool json = false;
    bool progress = false;
};

ProgressStyle StyleOf(const PackOptions& options)
{
    if (options.progress)
        return options.json ? ProgressStyle::kKeyValueStderr : ProgressStyle::kKeyValueStdout;
    return isatty(STDERR_FILENO) == 1 ? ProgressStyle::kBar : ProgressStyle::kNone;
}

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

void CheckOutput(const PackOptions& options, const Container& container, const std::string& output)
{
    const bool to_pipe = output == OutputFile::kStandardOutput;
    if (to_pipe && !OnlyAppends(container))
        throw Failure(std::string(container.name) +
                      " goes back to earlier places, which standard output cannot");
    if (to_pipe && !options.segment.empty())
        throw Failure("--segment needs files, not standard output");
    if (container.is_rtp && !options.segment.empty())
        throw Failure("--segment is not for rtp: its packets are one session");
}

void Record(const PackOptions& options, ProgressMeter& meter, Report& report)
{
    // A capture file holds RTP, whatever its name.
    const bool named = !options.to.empty() || !options.pcap;
    const Container& container = ChooseContainer(named ? options.to : "rtp", report.output);
    if (options.pcap && !container.is_rtp)
        throw Failure("--pcap is for rtp, not for " + std::string(container.name));
    report.container = container.name;
    report.type = container.type;
    report.reserve = options.reserve;
    report.dry_run = options.dry_run;
    CheckOutput(options, container, report.output);
    const TrimRequest trim = TrimOf(options);
    OutputSeries series(report.output,
                        options.inputs.AllFiles(),
                        container.type,
                        LimitOf(options),
                        options.dry_run);

    CatchInterrupts();
    Inputs inputs = OpenInputs(options.inputs);
    report.left_out = std::move(inputs.left_out);
    Recording recording(container, Trimmed(std::move(inputs.sources), trim), meter, report);
    if (!recording.HasSomething()) return;

    recording.Run(series, options.pcap);
    report.notes = NotesOn(report, container);
}

int ExitCodeOf(const Report& report)
{
    if (!report.error.empty()) return kExitFailed;
    if (report.signal != 0) return kExitSignal + report.signal;
    for (const StreamReport& stream : report.streams)
        if (!stream.refusal.empty()) return kExitStreamRefused;
    return kExitDone;
}

void PrintErrors(const Report& report)
{
    for (const StreamReport& stream : report.streams)
        if (!stream.refusal.empty()) std::cerr << "wrapton: " << stream.refusal << '\n';
    if (!report.error.empty()) std::cerr << "wrapton: " << report.error << '\n';
    if (report.error.empty() && report.signal != 0)
        std::cerr << "wrapton: interrupted; "
                  << (report.output_complete ? report.output + " is complete up to here"
                                             : std::string("nothing was written"))
                  << '\n';
}

int Pack(PackOptions options)
{
    Report report;
    report.output = options.files.back();
    options.files.pop_back();
    options.inputs.files = options.files;

    // The output has standard output for itself.
    if (report.output == OutputFile::kStandardOutput) std::cout.rdbuf(std::cerr.rdbuf());
    ProgressMeter meter(StyleOf(options));
    try
    {
        if (options.inputs.AllFiles().empty()) throw Failure("pack needs an input and an output");
        Record(options, meter, report);
    }
    catch (const Interrupted&)
    {
        report.signal = CaughtSignal();
    }
    catch (const Failure& failure)
    {
        report.error = failure.what();
    }
    report.exit_code = ExitCodeOf(report);

    meter.Clear();
    PrintErrors(report);
    if (options.json)
        PrintJson(report);
    else if (options.progress)
        PrintKeyValue(report);
    else
        PrintText(report);
    return report.exit_code;
}

}  // namespace

void AddPackCommand(CLI::App& app, std::function<int()>& run)
{
    CLI::App* pack = app.add_subcommand("pack", "Package coded streams into a container");
    const auto options = std::make_shared<PackOptions>();
    pack->formatter(std::make_shared<PackFormatter>());

    pack->add_option("FILES",
                     options->files,
                     "INPUT... OUTPUT: files with coded streams, and the file to write; "
                     "- is standard output")
        ->required();
    pack->add_option("--video", options->inputs.video, "Take the video from this file")
        ->type_name("FILE");
    pack->add_option("--audio", options->inputs.audio, "Take the audio from this file")
        ->type_name("FILE");
    pack->add_option("--to",
                     options->to,
                     "Container, one of those `wrapton formats` lists; "
                     "otherwise the output's extension says it")
        ->type_name("TYPE");
    pack->add_option("--fps",
                     options->inputs.frame_rate,
                     "Pictures per second, for streams that do not say it")
        ->type_name("N")
        ->check(CLI::Range(1U, kMostRate));
    pack->add_option("--reserve",
                     options->reserve,
                     "Room for the index ahead of the media, so that playing can begin "
                     "before the whole file is there; at most 67108864")
        ->type_name("BYTES")
        ->check(CLI::Range(0U, kMostReserve));
    pack->add_flag("--pcap",
                   options->pcap,
                   "Write the packets of rtp as UDP datagrams into a capture file, "
                   "to be looked at with Wireshark");
    pack->add_option("--rate",
                     options->inputs.raw_rate,
                     "Sample rate of a raw .s16le, .pcm, .alaw or .ulaw input (8000)")
        ->type_name("HZ")
        ->check(CLI::Range(1, kMostSampleRate));
    pack->add_option("--channels", options->inputs.raw_channels, "Channels of such an input (1)")
        ->type_name("N")
        ->check(CLI::Range(1, kMostChannels));
    pack->add_option("--segment",
                     options->segment,
                     "Go on in another file, OUTPUT_0001 and so on, with the first key picture "
                     "behind a TIME (90, 10m, 1:30:00) or a SIZE (100M, 4G)")
        ->type_name("TIME|SIZE");
    pack->add_option("--start",
                     options->start,
                     "Begin with the first key picture that is not ahead of this time")
        ->type_name("TIME");
    pack->add_option("--duration", options->duration, "End after this time")->type_name("TIME");
    pack->add_flag("--dry-run", options->dry_run, "Package everything, and write nothing");
    pack->add_flag("--json", options->json, "Print the result as JSON");
    pack->add_flag("--progress", options->progress, "Print key=value lines while packaging");
    pack->footer(
        "Exit codes: 0 everything is stored, 1 a whole stream was refused, 2 failed,\n"
        "130 or 143 ended by a signal after completing the file.");
    pack->callback([options, &run] { run = [options] { return Pack(*options); }; });
}

}  // namespace Orbel::Wrapton::Command
