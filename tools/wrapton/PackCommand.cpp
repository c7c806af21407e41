#include "PackCommand.h"

#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <memory>
#include <utility>

#include "Arguments.h"
#include "Batch.h"
#include "EachPlan.h"
#include "Failure.h"
#include "Interrupt.h"
#include "OutputFile.h"
#include "PackJob.h"

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
        return "Usage: wrapton pack [OPTIONS] INPUT... OUTPUT\n"
               "       wrapton pack [OPTIONS] --each INPUT... -o DIRECTORY/|PATTERN\n";
    }
};

ProgressStyle StyleOf(const PackOptions& options)
{
    if (options.progress)
        return options.json ? ProgressStyle::kKeyValueStderr : ProgressStyle::kKeyValueStdout;
    return isatty(STDERR_FILENO) == 1 ? ProgressStyle::kBar : ProgressStyle::kNone;
}

int Pack(const PackOptions& options)
{
    ProgressMeter meter(StyleOf(options));
    const Report report = PackOne(options, meter);
    PrintErrors(report);
    if (options.json)
        PrintJson(report);
    else if (options.progress)
        PrintKeyValue(report);
    else
        PrintText(report);
    return report.exit_code;
}

/// Makes the outputs one after the other, and goes on behind one that fails.
int PackEach(const PackOptions& options)
{
    Batch batch;
    batch.inputs = options.inputs.files.size();
    try
    {
        const std::vector<PackOptions> jobs = PlanEach(options);
        for (const PackOptions& job : jobs)
        {
            batch.signal = CaughtSignal();
            if (batch.signal != 0) break;
            ProgressMeter meter(StyleOf(options),
                                {job.inputs.files.front(), batch.reports.size() + 1, batch.inputs});
            batch.reports.push_back(PackOne(job, meter));
            Report& report = batch.reports.back();
            report.input = job.inputs.files.front();
            PrintErrors(report);
            if (options.progress && !options.json) PrintKeyValue(report);
            if (!options.progress && !options.json) PrintText(report);
        }
    }
    catch (const Failure& failure)
    {
        batch.error = failure.what();
        std::cerr << "wrapton: " << batch.error << '\n';
    }
    if (options.json)
        PrintJson(batch);
    else if (options.progress)
        PrintKeyValue(batch);
    else
        PrintText(batch);
    return batch.ExitCode();
}

int Run(PackOptions options)
{
    std::vector<std::string>& files = options.inputs.files;
    if (options.output.empty() && !files.empty())
    {
        options.output = files.back();
        files.pop_back();
    }
    else if (NamesDirectory(options.output))
        options.each = true;

    if (options.each) return PackEach(options);
    // The output has standard output for itself.
    if (IsStandardOutput(options.output)) std::cout.rdbuf(std::cerr.rdbuf());
    return Pack(options);
}

void AddWhatGoesIn(CLI::App& pack, PackOptions& options)
{
    pack.add_option("FILES",
                    options.inputs.files,
                    "INPUT... OUTPUT: files with coded streams, and the file to write; "
                    "- is standard output");
    pack.add_option("-o,--output",
                    options.output,
                    "The file to write; all FILES are inputs then. A directory is that of --each")
        ->type_name("OUTPUT")
        ->check(NotEmpty);
    pack.add_flag("--each",
                  options.each,
                  "Make an output of every input. OUTPUT is a directory, or a name with {name}, "
                  "{ext}, {dir} or {number} of the input in it");
    pack.add_option("--video", options.inputs.video, "Take the video from this file")
        ->type_name("FILE")
        ->check(NotEmpty);
    pack.add_option("--audio", options.inputs.audio, "Take the audio from this file")
        ->type_name("FILE")
        ->check(NotEmpty);
    pack.add_option("--fps",
                    options.inputs.frame_rate,
                    "Pictures per second, for streams that do not say it")
        ->type_name("N")
        ->check(CLI::Range(1U, kMostRate));
    pack.add_option("--rate",
                    options.inputs.raw_rate,
                    "Sample rate of a raw .s16le, .pcm, .alaw or .ulaw input (8000)")
        ->type_name("HZ")
        ->check(CLI::Range(1, kMostSampleRate));
    pack.add_option("--channels", options.inputs.raw_channels, "Channels of such an input (1)")
        ->type_name("N")
        ->check(CLI::Range(1, kMostChannels));
}

void AddWhatComesOut(CLI::App& pack, PackOptions& options)
{
    pack.add_option("--to",
                    options.to,
                    "Container, one of those `wrapton formats` lists; "
                    "otherwise the output's extension says it")
        ->type_name("TYPE")
        ->check(NotEmpty);
    pack.add_option("--reserve",
                    options.reserve,
                    "Room for the index ahead of the media, so that playing can begin "
                    "before the whole file is there; at most 67108864")
        ->type_name("BYTES")
        ->check(CLI::Range(0U, kMostReserve));
    pack.add_flag("--pcap",
                  options.pcap,
                  "Write the packets of rtp as UDP datagrams into a capture file, "
                  "to be looked at with Wireshark");
    pack.add_option("--segment",
                    options.segment,
                    "Go on in another file, OUTPUT_0001 and so on, with the first key picture "
                    "behind a TIME (90, 10m, 1:30:00) or a SIZE (100M, 4G)")
        ->type_name("TIME|SIZE")
        ->check(NotEmpty);
    pack.add_option("--start",
                    options.start,
                    "Begin with the first key picture that is not ahead of this time")
        ->type_name("TIME")
        ->check(NotEmpty);
    pack.add_option("--duration", options.duration, "End after this time")
        ->type_name("TIME")
        ->check(NotEmpty);
    pack.add_flag("--dry-run", options.dry_run, "Package everything, and write nothing");
    pack.add_flag("--json", options.json, "Print the result as JSON");
    pack.add_flag("--progress", options.progress, "Print key=value lines while packaging");
}

}  // namespace

void AddPackCommand(CLI::App& app, std::function<int()>& run)
{
    CLI::App* pack = app.add_subcommand("pack", "Package coded streams into a container");
    const auto options = std::make_shared<PackOptions>();
    pack->formatter(std::make_shared<PackFormatter>());
    AddWhatGoesIn(*pack, *options);
    AddWhatComesOut(*pack, *options);
    pack->footer(
        "Exit codes: 0 everything is stored, 1 a frame or a whole stream is not, 2 failed,\n"
        "129, 130 or 143 ended by a signal after completing the file; with --each the highest of "
        "all.");
    pack->callback([options, &run] { run = [options] { return Run(*options); }; });
}

}  // namespace Orbel::Wrapton::Command
