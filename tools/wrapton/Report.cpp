#include "Report.h"

#include <algorithm>
#include <cstdio>
#include <iostream>

#include <nlohmann/json.hpp>

#include "Arguments.h"
#include "Containers.h"
#include "Failure.h"
#include "RtpStream.h"

namespace Orbel::Wrapton::Command
{
namespace
{

using Json = nlohmann::ordered_json;

const char* KindName(const StreamInfo& info)
{
    return info.is_video ? "video" : "audio";
}

Json StreamJson(const StreamReport& stream)
{
    const StreamInfo& info = stream.info;
    Json json = {{"kind", KindName(info)},
                 {"codec", info.codec_name},
                 {"file", info.file},
                 {"index", info.index}};
    if (info.is_video)
    {
        json["width"] = info.width;
        json["height"] = info.height;
        json["frame_rate"] = {info.frame_rate.num, info.frame_rate.den};
    }
    else
    {
        json["sample_rate"] = info.sample_rate;
        json["channels"] = info.channels;
    }
    json["frames_in"] = stream.frames_in;
    json["frames_stored"] = stream.frames_stored;
    json["frames_dropped"] = stream.frames_dropped;
    Json refused = Json::object();
    for (const auto& [code, count] : stream.refused)
        refused[std::to_string(code)] = count;
    json["frames_refused"] = refused;
    json["frames_damaged"] = stream.frames_damaged;
    json["bytes_in"] = stream.bytes_in;
    json["refusal"] = stream.refusal.empty() ? Json(nullptr) : Json(stream.refusal);
    return json;
}

std::string RateText(const Rate& rate)
{
    if (rate.num % rate.den == 0) return std::to_string(rate.num / rate.den);
    return std::to_string(rate.num) + "/" + std::to_string(rate.den);
}

std::string ShapeText(const StreamInfo& info)
{
    if (info.is_video)
        return std::to_string(info.width) + "x" + std::to_string(info.height) + ", " +
               RateText(info.frame_rate) + "/s";
    return std::to_string(info.sample_rate) + " Hz, " + std::to_string(info.channels) +
           (info.channels == 1 ? " channel" : " channels");
}

bool LastsWholeMilliseconds(const StreamInfo& info)
{
    constexpr int64_t kSecond = 1000;
    return info.frame_rate.num > 0 && kSecond * info.frame_rate.den % info.frame_rate.num == 0;
}

bool HasRoundRate(const StreamInfo& info)
{
    return info.sample_rate == 5500 || info.sample_rate == 11000 || info.sample_rate == 22000 ||
           info.sample_rate == 44000;
}

bool StoresSound(const Report& report)
{
    return std::any_of(report.streams.begin(),
                       report.streams.end(),
                       [](const StreamReport& stream)
                       { return !stream.info.is_video && stream.frames_stored > 0; });
}

/// What a container makes of the times and rates of a stream.
void AddNotesOnTimes(const StreamInfo& info,
                     const Container& container,
                     std::vector<std::string>& notes)
{
    const std::string name(container.name);
    if (container.whole_milliseconds && info.is_video && !LastsWholeMilliseconds(info))
        notes.push_back(name + " counts whole milliseconds: " + RateText(info.frame_rate) +
                        " pictures per second run a little fast");
    if (container.doubles_g711_times && (info.codec == Codec::kAlaw || info.codec == Codec::kUlaw))
        notes.push_back(name + " gives " + info.codec_name +
                        " sound twice its time, so that it lags behind the pictures");
    if (container.labels_round_rates && !info.is_video && !HasRoundRate(info))
        notes.push_back(name + " labels sound of " + std::to_string(info.sample_rate) +
                        " Hz as 5500 Hz");
}

void PrintStream(const StreamReport& stream)
{
    const StreamInfo& info = stream.info;
    std::cout << "  " << KindName(info) << "  " << info.codec_name << ", " << ShapeText(info)
              << "  (" << info.file << ")\n         ";
    if (!stream.refusal.empty() && stream.frames_in == 0)
    {
        std::cout << "refused\n";
        return;
    }
    std::cout << stream.frames_in << " frames in, " << stream.frames_stored << " stored";
    if (stream.frames_dropped > 0)
        std::cout << ", " << stream.frames_dropped << " dropped by the container";
    for (const auto& [code, count] : stream.refused)
        std::cout << ", " << count << " refused with code " << code;
    if (stream.frames_damaged > 0)
        std::cout << ", " << stream.frames_damaged << " damaged in the source";
    std::cout << '\n';
}

}  // namespace

uint64_t StreamReport::FramesRefused() const
{
    uint64_t sum = 0;
    for (const auto& [code, count] : refused)
        sum += count;
    return sum;
}

int ExitCodeOf(const Report& report)
{
    if (!report.error.empty()) return kExitFailed;
    if (report.signal != 0) return kExitSignal + report.signal;
    const bool whole = std::all_of(report.streams.begin(),
                                   report.streams.end(),
                                   [](const StreamReport& stream) { return stream.IsWhole(); });
    return whole ? kExitDone : kExitWarned;
}

bool StreamReport::IsWhole() const
{
    return refusal.empty() && frames_dropped == 0 && refused.empty();
}

std::string StateName(const Report& report)
{
    if (report.exit_code == kExitDone) return "done";
    if (report.exit_code == kExitFailed) return "failed";
    if (report.exit_code > kExitSignal) return "interrupted";
    const bool refused =
        std::any_of(report.streams.begin(),
                    report.streams.end(),
                    [](const StreamReport& stream) { return !stream.refusal.empty(); });
    return refused ? "refused" : "warned";
}

std::vector<std::string> WarningsOn(const Report& report)
{
    std::vector<std::string> warnings;
    for (const StreamReport& stream : report.streams)
    {
        if (!stream.refusal.empty())
        {
            warnings.push_back(stream.refusal);
            continue;
        }
        const std::string of = " of " + std::to_string(stream.frames_in) + " frames of " +
                               stream.info.codec_name + " " + KindName(stream.info) +
                               " are not in the output: ";
        if (stream.frames_dropped > 0)
            warnings.push_back(std::to_string(stream.frames_dropped) + of + "dropped by " +
                               report.container);
        for (const auto& [code, count] : stream.refused)
            warnings.push_back(std::to_string(count) + of + "refused by " + report.container +
                               " with code " + std::to_string(code));
    }
    return warnings;
}

std::vector<std::string> NotesOn(const Report& report, const Container& container)
{
    std::vector<std::string> notes;
    for (const StreamReport& stream : report.streams)
    {
        const StreamInfo& info = stream.info;
        if (stream.frames_stored == 0) continue;
        if (info.is_video && info.rate_is_assumed)
            notes.push_back(info.file + " carries no times: taken as " + RateText(info.frame_rate) +
                            " pictures per second (--fps says otherwise)");
        if (info.is_video && container.constant_rate &&
            info.frame_rate.num % info.frame_rate.den != 0)
            notes.push_back(std::string(container.name) + " is written at a whole rate: " +
                            RateText(info.frame_rate) + " pictures per second were rounded");
        if ((container.constant_rate || container.is_rtp) && stream.frames_b > 0)
            notes.push_back(std::string(container.name) +
                            " keeps decoding order without composition times: the times of " +
                            std::to_string(stream.frames_b) +
                            " B pictures are those of their places");
        if (container.cuts_mpeg4_pictures && info.codec == Codec::kMpeg4)
            notes.push_back(std::string(container.name) +
                            " cuts an mpeg4 I picture that carries its headers by their length");
        if (container.is_rtp) notes.push_back(NoteOn(info));
        AddNotesOnTimes(info, container, notes);
        if (container.labels_8000_mono_pcm &&
            (info.sample_rate != 8000 || info.channels != 1 || info.codec != Codec::kS16le))
            notes.push_back(std::string(container.name) +
                            " is labelled as 8000 Hz, mono, 16-bit PCM whatever it holds");
    }
    if (container.declares_sound && !StoresSound(report))
        notes.push_back(std::string(container.name) +
                        " declares sound of 8000 Hz, although it holds none");
    if (report.reserve > 0 && !container.takes_reserve)
        notes.push_back(std::string(container.name) + " has no use for --reserve");
    else if (report.reserve > 0 && report.index_at_end)
        notes.emplace_back("the reserve was too small: the index stands at the end of the file");
    return notes;
}

void PrintErrors(const Report& report)
{
    const std::string of = report.input.empty() ? "wrapton: " : "wrapton: " + report.input + ": ";
    for (const std::string& warning : report.warnings)
        std::cerr << of << warning << '\n';
    if (!report.error.empty()) std::cerr << "wrapton: " << report.error << '\n';
    if (report.error.empty() && report.signal != 0)
        std::cerr << "wrapton: interrupted; "
                  << (report.output_complete ? report.output + " is complete up to here"
                                             : std::string("nothing was written"))
                  << '\n';
}

void PrintText(const Report& report)
{
    const bool ended_early = report.signal != 0 || !report.error.empty();
    if (ended_early && !report.output_complete) return;  // there is nothing to tell but the error
    if (report.output_complete)
        std::cout << report.output << ": " << report.container << ", " << report.bytes << " bytes"
                  << (report.dry_run ? ", not written" : "") << (ended_early ? ", ended early" : "")
                  << '\n';
    for (const SegmentReport& segment : report.segments)
        std::cout << "  " << segment.output << ": " << segment.bytes << " bytes\n";
    for (const StreamReport& stream : report.streams)
        PrintStream(stream);
    for (const std::string& stream : report.left_out)
        std::cout << "  left out: " << stream << '\n';
    for (const std::string& note : report.notes)
        std::cout << "  note: " << note << '\n';
}

nlohmann::ordered_json JsonOf(const Report& report)
{
    Json json = {{"state", StateName(report)},
                 {"exit_code", report.exit_code},
                 {"error", report.error.empty() ? Json(nullptr) : Json(report.error)},
                 {"output", report.output},
                 {"output_complete", report.output_complete},
                 {"container", report.container},
                 {"type", report.type},
                 {"bytes", report.bytes},
                 {"reserve", report.reserve},
                 {"index_at_end", report.index_at_end},
                 {"dry_run", report.dry_run}};
    json["segments"] = Json::array();
    for (const SegmentReport& segment : report.segments)
        json["segments"].push_back({{"output", segment.output}, {"bytes", segment.bytes}});
    json["streams"] = Json::array();
    for (const StreamReport& stream : report.streams)
        json["streams"].push_back(StreamJson(stream));
    json["warnings"] = report.warnings;
    json["left_out"] = report.left_out;
    json["notes"] = report.notes;
    return json;
}

void PrintJson(const Report& report)
{
    // A file name need not be UTF-8.
    std::cout << JsonOf(report).dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

void PrintKeyValue(const Report& report)
{
    std::cout << "state=" << StateName(report) << "\nexit_code=" << report.exit_code << '\n';
    if (!report.input.empty()) std::cout << "input=" << InOneLine(report.input) << '\n';
    std::cout << "output=" << InOneLine(report.output)
              << "\noutput_complete=" << report.output_complete
              << "\ncontainer=" << report.container << "\nbytes=" << report.bytes << '\n';
    for (const SegmentReport& segment : report.segments)
        std::cout << "segment=" << InOneLine(segment.output) << '\n';
    for (const StreamReport& stream : report.streams)
    {
        const std::string kind = KindName(stream.info);
        std::cout << kind << "_codec=" << stream.info.codec_name << '\n'
                  << kind << "_frames_in=" << stream.frames_in << '\n'
                  << kind << "_frames_stored=" << stream.frames_stored << '\n'
                  << kind << "_frames_dropped=" << stream.frames_dropped << '\n'
                  << kind << "_frames_refused=" << stream.FramesRefused() << '\n';
    }
}

}  // namespace Orbel::Wrapton::Command
