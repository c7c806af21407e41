#include "EachPlan.h"

#include <sys/stat.h>

#include <array>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string_view>
#include <utility>

#include "Containers.h"
#include "Failure.h"
#include "OutputFile.h"

namespace Orbel::Wrapton::Command
{
namespace
{

namespace fs = std::filesystem;

/// What a pattern is filled in with.
struct NamePart
{
    std::string_view name;
    std::string (*of)(const fs::path& input, std::size_t number);
};

constexpr std::array kParts = {
    NamePart{"name", [](const fs::path& input, std::size_t) { return input.stem().string(); }},
    NamePart{"ext",
             [](const fs::path& input, std::size_t)
             {
                 const std::string extension = input.extension().string();
                 return extension.empty() ? extension : extension.substr(1);
             }},
    NamePart{"dir",
             [](const fs::path& input, std::size_t)
             {
                 const fs::path directory = input.parent_path();
                 return directory.empty() ? std::string(".") : directory.string();
             }},
    NamePart{"number", [](const fs::path&, std::size_t number) { return std::to_string(number); }},
};

constexpr const char* kKnownParts = "{name}, {ext}, {dir} and {number}";

const NamePart& PartNamed(std::string_view name)
{
    for (const NamePart& part : kParts)
        if (part.name == name) return part;
    throw Failure("{" + std::string(name) + "}: an output's name can have " + kKnownParts);
}

std::string Filled(const std::string& pattern, const std::string& input, std::size_t number)
{
    std::string filled;
    for (std::size_t at = 0; at < pattern.size();)
    {
        const std::size_t open = pattern.find('{', at);
        filled.append(pattern, at, open - at);
        if (open == std::string::npos) break;
        const std::size_t close = pattern.find('}', open);
        if (close == std::string::npos) throw Failure(pattern + ": a { without its }");
        const std::string_view name(&pattern[open + 1], close - open - 1);
        filled += PartNamed(name).of(input, number);
        at = close + 1;
    }
    return filled;
}

/// The pattern for the names in a directory.
std::string PatternFor(const PackOptions& options)
{
    if (!NamesDirectory(options.output)) return options.output;
    if (options.to.empty() && !options.pcap)
        throw Failure(options.output +
                      ": a directory names no container; say --to, or a pattern such as " +
                      (fs::path(options.output) / "{name}.mp4").string());
    const std::string extension =
        options.pcap ? ".pcap" : std::string(FileExtension(ContainerOf(options)));
    return (fs::path(options.output) / ("{name}" + extension)).string();
}

/// Tells whether two names are of one file that is there.
std::optional<std::string> Identity(const std::string& path)
{
    struct stat found = {};
    if (stat(path.c_str(), &found) != 0 || !S_ISREG(found.st_mode)) return std::nullopt;
    return std::to_string(found.st_dev) + ":" + std::to_string(found.st_ino);
}

/// The same for all names of a place, whether a file is there or not.
std::string Place(const std::string& path)
{
    std::error_code error;
    const fs::path place = fs::weakly_canonical(path, error);
    return (error ? fs::absolute(path).lexically_normal() : place).string();
}

/// Refuses what is already in it.
class Once
{
public:
    explicit Once(std::function<std::string(const std::string&, const std::string&)> complaint)
        : m_complaint(std::move(complaint))
    {
    }

    void Add(const std::string& key, const std::string& input)
    {
        const auto [found, is_new] = m_owners.emplace(key, input);
        if (!is_new) throw Failure(m_complaint(found->second, input) + "; nothing was written");
    }

private:
    std::function<std::string(const std::string&, const std::string&)> m_complaint;
    std::map<std::string, std::string> m_owners;
};

void CheckInputs(const std::vector<std::string>& inputs)
{
    Once places([](const std::string&, const std::string& input)
                { return input + ": the same input twice"; });
    for (const std::string& input : inputs)
        places.Add(Place(input), input);
}

void CheckOutputs(const std::vector<PackOptions>& jobs, const std::vector<std::string>& inputs)
{
    std::map<std::string, std::string> taken;
    for (const std::string& input : inputs)
    {
        taken.emplace(Place(input), input);
        if (const auto identity = Identity(input)) taken.emplace(*identity, input);
    }
    std::string output;
    Once outputs([&output](const std::string& one, const std::string& other)
                 { return output + ": the output of both " + one + " and " + other; });
    for (const PackOptions& job : jobs)
    {
        output = job.output;
        const std::string place = Place(output);
        const auto identity = Identity(output);
        if (taken.contains(place) || (identity && taken.contains(*identity)))
            throw Failure(output + ": the output is one of the inputs; nothing was written");
        outputs.Add(identity.value_or(place), job.inputs.files.front());
    }
}

}  // namespace

bool NamesDirectory(const std::string& path)
{
    std::error_code ignored;
    return path.ends_with('/') || fs::is_directory(path, ignored);
}

std::vector<PackOptions> PlanEach(const PackOptions& options)
{
    if (options.inputs.files.empty() || options.output.empty())
        throw Failure("pack --each needs inputs and an output");
    if (!options.inputs.video.empty() || !options.inputs.audio.empty())
        throw Failure("--video and --audio name tracks of one output, and --each makes many");
    if (options.output == OutputFile::kStandardOutput)
        throw Failure("--each needs files, not standard output");
    CheckOptions(options);
    CheckRawOptions(options.inputs);
    const std::string pattern = PatternFor(options);
    if (pattern.find('{') == std::string::npos)
        throw Failure(options.output + ": --each needs a directory, or a name with one of " +
                      kKnownParts);

    std::vector<PackOptions> jobs;
    for (const std::string& input : options.inputs.files)
    {
        PackOptions job = options;
        job.inputs.files = {input};
        job.output = Filled(pattern, input, jobs.size() + 1);
        job.spared = options.inputs.files;
        job.make_directories = true;
        if (!IsRawAudio(input)) job.inputs.raw_rate = job.inputs.raw_channels = std::nullopt;
        ContainerOf(job);
        jobs.push_back(std::move(job));
    }
    CheckInputs(options.inputs.files);
    CheckOutputs(jobs, options.inputs.files);
    return jobs;
}

}  // namespace Orbel::Wrapton::Command
