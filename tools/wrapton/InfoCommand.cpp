#include "InfoCommand.h"

#include <array>
#include <iomanip>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <system_error>

#include <nlohmann/json.hpp>

#include "Failure.h"
#include "OmfSurvey.h"
#include "RtpInfo.h"

namespace Orbel::Wrapton::Command
{
namespace
{

using Json = nlohmann::ordered_json;

constexpr std::size_t kReadAhead = 1 << 20;
constexpr std::array kStreams = {OmfStream::kVideo, OmfStream::kAudio, OmfStream::kExt};

struct InfoOptions
{
    std::string file;
    bool json = false;
    bool frames = false;
};

Json TextOrNull(const std::string& text)
{
    return text.empty() ? Json(nullptr) : Json(text);
}

/// A file name need not be UTF-8.
std::string Dump(const Json& json, int indent)
{
    return json.dump(indent, ' ', false, Json::error_handler_t::replace);
}

std::string Seconds(int64_t milliseconds)
{
    std::ostringstream text;
    text << std::fixed << std::setprecision(3) << static_cast<double>(milliseconds) / 1000;
    return text.str();
}

std::string Counted(uint64_t count, const std::string& thing)
{
    return std::to_string(count) + " " + thing + (count == 1 ? "" : "s");
}

// One line per frame, and one for every stretch without any.

void PrintFrameJson(const OmfFrame& frame)
{
    Json json = {{"offset", frame.offset},
                 {"bytes", frame.length},
                 {"stream", StreamName(frame.stream)},
                 {"number", frame.number},
                 {"time_ms", frame.time},
                 {"date", TextOrNull(DateText(frame.date))},
                 {"kind", TextOrNull(FrameKind(frame))},
                 {"codec", TextOrNull(EncodingName(frame))},
                 {"payload", frame.payload.size()},
                 {"intact", frame.intact}};
    if (frame.stream == OmfStream::kVideo)
    {
        json["width"] = frame.video.width;
        json["height"] = frame.video.height;
        json["interlaced"] = frame.video.interlaced;
        json["frame_rate"] = frame.video.frame_rate;
    }
    if (frame.stream == OmfStream::kAudio)
    {
        json["sample_rate"] = frame.audio.sample_rate;
        json["channels"] = frame.audio.channels;
        json["bit_rate"] = frame.audio.bit_rate;
    }
    std::cout << Dump(json, -1) << '\n';
}

void PrintFrameText(const OmfFrame& frame)
{
    const auto or_dash = [](const std::string& text) { return text.empty() ? "-" : text; };
    std::cout << std::right << std::setw(12) << frame.offset << ' ' << std::setw(9) << frame.length
              << "  " << std::left << std::setw(5) << StreamName(frame.stream) << std::right << ' '
              << std::setw(7) << frame.number << ' ' << std::setw(3) << or_dash(FrameKind(frame))
              << ' ' << std::setw(11) << Seconds(frame.time) << "  " << std::left << std::setw(19)
              << or_dash(DateText(frame.date)) << "  " << or_dash(EncodingName(frame))
              << (frame.intact ? "" : "  damaged") << '\n';
}

void PrintGap(const InfoOptions& options, uint64_t offset, uint64_t bytes)
{
    if (bytes == 0) return;
    if (options.json)
        std::cout << Dump({{"offset", offset}, {"bytes", bytes}, {"stream", nullptr}}, -1) << '\n';
    else
        std::cout << std::right << std::setw(12) << offset << ' ' << std::setw(9) << bytes
                  << "  no frame\n";
}

void PrintFrame(const InfoOptions& options, const OmfFrame& frame)
{
    PrintGap(options, frame.offset - frame.skipped, frame.skipped);
    if (options.json)
        PrintFrameJson(frame);
    else
        PrintFrameText(frame);
}

// The summary.

Json StreamJson(OmfStream stream, const OmfStreamSurvey& found)
{
    Json json = {{"kind", StreamName(stream)}};
    if (stream != OmfStream::kExt) json["codecs"] = found.encodings;
    if (stream == OmfStream::kVideo)
    {
        json["width"] = found.video.width;
        json["height"] = found.video.height;
        json["interlaced"] = found.video.interlaced;
        json["frame_rate"] = found.video.frame_rate;
        json["frames_i"] = found.frames_i;
        json["frames_p"] = found.frames_p;
        json["frames_b"] = found.frames_b;
    }
    if (stream == OmfStream::kAudio)
    {
        json["sample_rate"] = found.audio.sample_rate;
        json["channels"] = found.audio.channels;
        json["bit_rate"] = found.audio.bit_rate;
    }
    json["frames"] = found.frames;
    json["frames_damaged"] = found.frames_damaged;
    json["payload_bytes"] = found.bytes;
    json["start_ms"] = found.start_ms;
    json["end_ms"] = found.end_ms;
    return json;
}

void PrintSummaryJson(const InfoOptions& options, const OmfSurvey& survey, uint64_t size)
{
    Json json = {{"file", options.file},
                 {"container", "omf"},
                 {"bytes", size},
                 {"frames", survey.Frames()},
                 {"duration_ms", survey.Duration()},
                 {"first_date", TextOrNull(survey.FirstDate())},
                 {"last_date", TextOrNull(survey.LastDate())},
                 {"frames_damaged", survey.FramesDamaged()},
                 {"bytes_skipped", survey.BytesSkipped()},
                 {"places_damaged", survey.Places()}};
    json["streams"] = Json::array();
    for (const OmfStream stream : kStreams)
        if (survey.Of(stream).frames > 0)
            json["streams"].push_back(StreamJson(stream, survey.Of(stream)));
    json["damage"] = Json::array();
    for (const OmfDamage& damage : survey.Damage())
        json["damage"].push_back({{"offset", damage.offset},
                                  {"bytes", damage.bytes},
                                  {"frame", TextOrNull(damage.frame)}});
    std::cout << Dump(json, 2) << '\n';
}

std::string ShapeText(OmfStream stream, const OmfStreamSurvey& found)
{
    if (stream == OmfStream::kExt) return "";
    std::string text;
    for (const std::string& name : found.encodings)
        text.append(text.empty() ? "" : "/").append(name);
    if (text.empty()) text = "unknown";
    if (stream == OmfStream::kVideo)
        return text + ", " + std::to_string(found.video.width) + "x" +
               std::to_string(found.video.height) +
               (found.video.interlaced ? " interlaced, " : ", ") +
               std::to_string(found.video.frame_rate) + "/s, ";
    return text + ", " + std::to_string(found.audio.sample_rate) + " Hz, " +
           Counted(found.audio.channels, "channel") + ", ";
}

void PrintStream(OmfStream stream, const OmfStreamSurvey& found)
{
    std::cout << "  " << std::left << std::setw(5) << StreamName(stream) << "  "
              << ShapeText(stream, found) << Counted(found.frames, "frame");
    if (stream == OmfStream::kVideo)
        std::cout << " (" << found.frames_i << " I, " << found.frames_p << " P, " << found.frames_b
                  << " B)";
    std::cout << ", " << Seconds(found.end_ms - found.start_ms) << " s from first to last\n";
}

void PrintDamage(const OmfSurvey& survey)
{
    if (!survey.IsDamaged())
    {
        std::cout << "  no damage\n";
        return;
    }
    std::cout << "  damage in " << Counted(survey.Places(), "place") << ": "
              << Counted(survey.FramesDamaged(), "frame") << " with a wrong check, "
              << Counted(survey.BytesSkipped(), "byte") << " that are no frame\n";
    for (const OmfDamage& damage : survey.Damage())
        std::cout << std::right << std::setw(14) << damage.offset << "  "
                  << Counted(damage.bytes, "byte")
                  << (damage.frame.empty() ? "" : ", " + damage.frame) << '\n';
    if (survey.Places() > survey.Damage().size())
        std::cout << "                and " << survey.Places() - survey.Damage().size()
                  << " more\n";
}

void PrintSummaryText(const InfoOptions& options, const OmfSurvey& survey, uint64_t size)
{
    std::cout << options.file << ": omf, " << Counted(size, "byte") << ", "
              << Seconds(survey.Duration()) << " s\n";
    for (const OmfStream stream : kStreams)
        if (survey.Of(stream).frames > 0) PrintStream(stream, survey.Of(stream));
    if (!survey.FirstDate().empty())
        std::cout << "  dated " << survey.FirstDate() << " to " << survey.LastDate() << '\n';
    PrintDamage(survey);
}

/// By its name, or by its first bytes where they are those of a packet and not of a recording.
bool IsRtp(const std::string& path)
{
    return path.ends_with(".rtp") || (!path.ends_with(".omf") && LooksLikeRtp(path));
}

int Survey(const InfoOptions& options)
{
    COmfFile file(options.file, kReadAhead);
    COmfReader reader(file);
    OmfSurvey survey;
    uint64_t end = 0;
    while (const auto frame = reader.Next())
    {
        survey.Add(*frame);
        end = reader.Position();
        if (options.frames) PrintFrame(options, *frame);
    }
    if (survey.Frames() == 0)
        throw Failure(options.file + ": no frame of a native recording in it");

    survey.End(file.Size(), file.Size() - end);
    if (options.frames)
        PrintGap(options, end, file.Size() - end);
    else if (options.json)
        PrintSummaryJson(options, survey, file.Size());
    else
        PrintSummaryText(options, survey, file.Size());
    return survey.IsDamaged() ? kExitDamaged : kExitDone;
}

int Info(const InfoOptions& options)
{
    try
    {
        if (IsRtp(options.file)) return TellRtp(options.file, options.json, options.frames);
        return Survey(options);
    }
    catch (const std::system_error& error)
    {
        std::cerr << "wrapton: " << options.file << ": " << error.code().message() << '\n';
    }
    catch (const Failure& failure)
    {
        std::cerr << "wrapton: " << failure.what() << '\n';
    }
    return kExitFailed;
}

}  // namespace

void AddInfoCommand(CLI::App& app, std::function<int()>& run)
{
    CLI::App* info = app.add_subcommand(
        "info", "Tell what a native recording (.omf) or packets of RTP (.rtp) hold");
    const auto options = std::make_shared<InfoOptions>();
    info->add_option("FILE", options->file, "The file")->required();
    info->add_flag(
        "--frames", options->frames, "Print one line per frame or packet instead of a summary");
    info->add_flag("--json", options->json, "Print JSON; with --frames one object per line");
    info->footer("Exit codes: 0 all is well, 1 a part is damaged or missing, 2 failed.");
    info->callback([options, &run] { run = [options] { return Info(*options); }; });
}

}  // namespace Orbel::Wrapton::Command
