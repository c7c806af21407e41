#include "CheckCommand.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <memory>

#include <nlohmann/json.hpp>

#include "Arguments.h"
#include "Failure.h"
#include "Forecast.h"
#include "Inputs.h"
#include "Quantities.h"

namespace Orbel::Wrapton::Command
{
namespace
{

using Json = nlohmann::ordered_json;

struct CheckOptions
{
    InputRequest inputs;
    std::string to;
    std::string length;
    bool json = false;
};

struct Findings
{
    std::vector<StreamCount> streams;
    int64_t length_us = 0;
    std::vector<Forecast> forecasts;
    Advice advice;
};

StreamCount Count(FrameSource& source)
{
    StreamCount count;
    int64_t last_us = 0;
    while (std::optional<Frame> frame = source.Next())
    {
        const bool opens = !source.Info().is_video || frame->sub_type == SG_FRAME_SUB_TYPE_I;
        ++count.frames;
        count.key_frames += opens ? 1 : 0;
        count.bytes += frame->bytes.size();
        count.largest = std::max<uint64_t>(count.largest, frame->bytes.size());
        last_us = std::max(last_us, frame->time_us);
        if (opens && count.first.frame.bytes.empty()) count.first.frame = std::move(*frame);
    }
    count.first.info = source.Info();
    // The last frame lasts as long as the others do on average.
    const auto others = static_cast<int64_t>(count.frames) - 1;
    count.end_us = others > 0 ? last_us + last_us / others : last_us;
    const Rate& rate = count.first.info.frame_rate;
    if (count.frames == 1 && rate.num > 0)
        count.end_us += static_cast<int64_t>(1e6 * static_cast<double>(rate.den) /
                                             static_cast<double>(rate.num));
    return count;
}

Findings Examine(const CheckOptions& options)
{
    if (options.inputs.AllFiles().empty()) throw Failure("check needs an input");
    Findings findings;
    const Inputs inputs = OpenInputs(options.inputs);
    for (const auto& source : inputs.sources)
        findings.streams.push_back(Count(*source));
    std::optional<int64_t> length_us;
    if (!options.length.empty())
    {
        length_us = ParseMicroseconds(options.length);
        if (!length_us || *length_us == 0)
            throw Failure("--for: " + options.length + " is no time such as 90, 10m or 24h");
    }
    for (const StreamCount& count : findings.streams)
        findings.length_us = length_us.value_or(std::max(findings.length_us, count.end_us));
    for (const Container& container : AllContainers())
    {
        if (!IsOffered(container)) continue;
        findings.forecasts.push_back(ForecastFor(container, findings.streams, length_us));
    }
    findings.advice = Advise(findings.forecasts);
    return findings;
}

/// What to call for the recording.
std::string CallFor(const Advice& advice)
{
    std::string call = "--to " + std::string(advice.forecast->container->name);
    if (advice.segment_us) return call + " --segment " + ClockText(*advice.segment_us);
    if (advice.forecast->reserve) call += " --reserve " + std::to_string(*advice.forecast->reserve);
    return call;
}

std::string MetText(const LimitMet& met)
{
    std::string text(met.limit.name);
    text.append(met.at_us ? " after " + ClockText(*met.at_us) : " at the first such frame");
    return text.append(": ").append(met.limit.outcome);
}

void PrintText(const Findings& findings)
{
    double per_hour = 0;
    for (const StreamCount& count : findings.streams)
    {
        std::cout << count.first.info.file << ": " << count.first.info.codec_name << ", "
                  << count.frames << " frames in " << ClockText(count.end_us) << ", "
                  << std::llround(count.BytesPerHour()) << " bytes an hour\n";
        per_hour += count.BytesPerHour();
    }
    std::cout << "a recording of " << ClockText(findings.length_us) << ", "
              << std::llround(per_hour) << " bytes an hour\n";
    for (const Forecast& forecast : findings.forecasts)
    {
        std::string name(forecast.container->name);
        std::cout << "  " << name.append(name.size() < 11 ? 11 - name.size() : 1, ' ');
        if (!forecast.refusals.empty())
        {
            std::string reasons;
            for (const std::string& refusal : forecast.refusals)
                reasons.append(reasons.empty() ? "" : ", ").append(refusal);
            std::cout << "refuses: " << reasons << '\n';
            continue;
        }
        std::cout << forecast.bytes << " bytes";
        if (forecast.reserve) std::cout << ", --reserve " << *forecast.reserve;
        std::cout << '\n';
        for (const LimitMet& met : forecast.met)
            std::cout << "             " << MetText(met) << '\n';
    }
    if (findings.advice.forecast != nullptr)
        std::cout << "recommended: " << CallFor(findings.advice) << '\n';
    else
        std::cout << "recommended: nothing holds all of it\n";
}

template <typename Value>
Json ValueOrNull(const std::optional<Value>& value)
{
    return value ? Json(*value) : Json(nullptr);
}

Json SecondsOrNull(const std::optional<int64_t>& time_us)
{
    return time_us ? Json(static_cast<double>(*time_us) / 1e6) : Json(nullptr);
}

Json ForecastJson(const Forecast& forecast)
{
    Json json = {{"name", forecast.container->name},
                 {"refusals", forecast.refusals},
                 {"bytes", forecast.bytes},
                 {"index_bytes", ValueOrNull(forecast.index)},
                 {"reserve", ValueOrNull(forecast.reserve)}};
    json["limits_met"] = Json::array();
    for (const LimitMet& met : forecast.met)
        json["limits_met"].push_back({{"name", met.limit.name},
                                      {"after_seconds", SecondsOrNull(met.at_us)},
                                      {"outcome", met.limit.outcome}});
    return json;
}

void PrintJson(const Findings& findings, int code)
{
    Json json = {{"exit_code", code}, {"seconds", static_cast<double>(findings.length_us) / 1e6}};
    json["streams"] = Json::array();
    for (const StreamCount& count : findings.streams)
        json["streams"].push_back({{"file", count.first.info.file},
                                   {"codec", count.first.info.codec_name},
                                   {"frames", count.frames},
                                   {"key_frames", count.key_frames},
                                   {"bytes", count.bytes},
                                   {"largest_frame", count.largest},
                                   {"bytes_per_hour", std::llround(count.BytesPerHour())}});
    json["formats"] = Json::array();
    for (const Forecast& forecast : findings.forecasts)
        json["formats"].push_back(ForecastJson(forecast));
    json["recommended"] = nullptr;
    if (const Forecast* best = findings.advice.forecast; best != nullptr)
        json["recommended"] = {{"name", best->container->name},
                               {"segment_seconds", SecondsOrNull(findings.advice.segment_us)},
                               {"reserve", ValueOrNull(best->reserve)},
                               {"call", CallFor(findings.advice)}};
    std::cout << json.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

int Check(const CheckOptions& options)
{
    try
    {
        if (!options.to.empty()) ChooseContainer(options.to, "");
        Findings findings = Examine(options);
        if (!options.to.empty())
            std::erase_if(findings.forecasts,
                          [&](const Forecast& entry)
                          { return entry.container != &ChooseContainer(options.to, ""); });
        findings.advice = Advise(findings.forecasts);
        const bool whole = std::any_of(findings.forecasts.begin(),
                                       findings.forecasts.end(),
                                       [](const Forecast& entry) { return entry.IsWhole(); });
        const int code = whole ? kExitDone : kExitWarned;
        if (options.json)
            PrintJson(findings, code);
        else
            PrintText(findings);
        return code;
    }
    catch (const Failure& failure)
    {
        std::cerr << "wrapton: " << failure.what() << '\n';
    }
    return kExitFailed;
}

}  // namespace

void AddCheckCommand(CLI::App& app, std::function<int()>& run)
{
    CLI::App* check = app.add_subcommand(
        "check", "Tell which limits a recording of such streams will meet, and what to use");
    const auto options = std::make_shared<CheckOptions>();
    check->add_option("INPUT", options->inputs.files, "A piece of what is to be recorded");
    check->add_option("--video", options->inputs.video, "Take the video from this file")
        ->type_name("FILE")
        ->check(NotEmpty);
    check->add_option("--audio", options->inputs.audio, "Take the audio from this file")
        ->type_name("FILE")
        ->check(NotEmpty);
    check
        ->add_option(
            "--for", options->length, "How long the recording will be; as long as the input")
        ->type_name("TIME")
        ->check(NotEmpty);
    check->add_option("--to", options->to, "Tell of this container alone")
        ->type_name("TYPE")
        ->check(NotEmpty);
    check->add_flag("--json", options->json, "Print the findings as JSON");
    check->footer(
        "Exit codes: 0 a container holds all of it, 1 each refuses a stream or meets a limit,\n"
        "2 failed.");
    check->callback([options, &run] { run = [options] { return Check(*options); }; });
}

}  // namespace Orbel::Wrapton::Command
