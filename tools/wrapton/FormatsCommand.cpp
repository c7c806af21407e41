#include "FormatsCommand.h"

#include <iomanip>
#include <iostream>
#include <memory>

#include <nlohmann/json.hpp>

#include "Containers.h"
#include "Failure.h"
#include "Limits.h"
#include "OutputSeries.h"

namespace Orbel::Wrapton::Command
{
namespace
{

using Json = nlohmann::ordered_json;

std::vector<std::string> Names(std::span<const Codec> codecs)
{
    std::vector<std::string> names;
    names.reserve(codecs.size());
    for (const Codec codec : codecs)
        names.emplace_back(EntryOf(codec).name);
    return names;
}

template <typename Texts>
std::string Joined(const Texts& texts)
{
    std::string line;
    for (const auto& text : texts)
        line.append(line.empty() ? "" : " ").append(text);
    return line.empty() ? "-" : line;
}

void PrintRow(const std::string& name,
              const std::string& type,
              const std::string& extensions,
              const std::string& video,
              const std::string& audio)
{
    std::cout << std::left << std::setw(11) << name << std::setw(6) << type << std::setw(13)
              << extensions << std::setw(19) << video << audio << '\n';
}

void PrintTable(const std::vector<Container>& containers)
{
    PrintRow("name", "type", "extensions", "video", "audio");
    for (const Container& container : containers)
        PrintRow(std::string(container.name),
                 std::to_string(container.type),
                 Joined(container.extensions),
                 Joined(Names(container.video)),
                 Joined(Names(container.audio)));
}

template <typename Value>
Json ValueOrNull(const std::optional<Value>& value)
{
    return value ? Json(*value) : Json(nullptr);
}

Json LimitsJson(const Container& container)
{
    Json limits = Json::array();
    for (const Limit& limit : LimitsOf(container))
    {
        Json json = {{"name", limit.name},
                     {"file_bytes", ValueOrNull(limit.bytes)},
                     {"frame_bytes", ValueOrNull(limit.frame_bytes)},
                     {"seconds", nullptr},
                     {"outcome", limit.outcome}};
        if (limit.time_us) json["seconds"] = static_cast<double>(*limit.time_us) / 1e6;
        limits.push_back(json);
    }
    return limits;
}

/// How a caller gets this container, by the command and by the library.
Json ReachedBy(const Container& container)
{
    Json ways = {"--to " + std::string(container.name)};
    for (const std::string_view extension : container.extensions)
        ways.push_back(extension);
    void* handle = SG_CreateHandle(container.type, nullptr);
    if (handle != nullptr)
        ways.push_back("SG_CreateHandle(" + std::to_string(container.type) + ")");
    SG_DestroyHandle(handle);
    return ways;
}

void PrintList(const std::vector<Container>& containers)
{
    Json json = {{"formats", Json::array()}};
    for (const Container& container : containers)
        json["formats"].push_back(
            {{"name", container.name},
             {"type", container.type},
             {"extensions",
              std::vector<std::string>(container.extensions.begin(), container.extensions.end())},
             {"video", Names(container.video)},
             {"audio", Names(container.audio)},
             {"reached_by", ReachedBy(container)},
             {"standard_output", OnlyAppends(container)},
             {"reserve", container.takes_reserve},
             {"limits", LimitsJson(container)}});
    std::cout << json.dump(2) << '\n';
}

}  // namespace

void AddFormatsCommand(CLI::App& app, std::function<int()>& run)
{
    CLI::App* formats = app.add_subcommand(
        "formats", "List the containers that this build offers, and what they take");
    const auto json = std::make_shared<bool>(false);
    formats->add_flag("--json", *json, "Print the list as JSON");
    formats->callback(
        [json, &run]
        {
            run = [json]
            {
                *json ? PrintList(OfferedContainers()) : PrintTable(OfferedContainers());
                return static_cast<int>(kExitDone);
            };
        });
}

}  // namespace Orbel::Wrapton::Command
