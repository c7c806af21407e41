#include "Batch.h"

#include <algorithm>
#include <iostream>

#include <nlohmann/json.hpp>

#include "Failure.h"

namespace Orbel::Wrapton::Command
{
namespace
{

using Json = nlohmann::ordered_json;

/// How many inputs ended in which way.
struct Tally
{
    explicit Tally(const Batch& batch) : not_begun(batch.inputs - batch.reports.size())
    {
        for (const Report& report : batch.reports)
        {
            std::size_t& count = report.exit_code == kExitDone     ? done
                                 : report.exit_code == kExitWarned ? warned
                                 : report.exit_code == kExitFailed ? failed
                                                                   : interrupted;
            ++count;
        }
    }

    std::size_t done = 0;
    std::size_t warned = 0;
    std::size_t failed = 0;
    std::size_t interrupted = 0;
    std::size_t not_begun;
};

}  // namespace

int Batch::ExitCode() const
{
    int worst = !error.empty() ? kExitFailed : signal != 0 ? kExitSignal + signal : kExitDone;
    for (const Report& report : reports)
        worst = std::max(worst, report.exit_code);
    return worst;
}

std::string Batch::State() const
{
    const int worst = ExitCode();
    for (const Report& report : reports)
        if (report.exit_code == worst) return StateName(report);
    if (worst == kExitFailed) return "failed";
    return worst == kExitDone ? "done" : "interrupted";
}

void PrintText(const Batch& batch)
{
    if (!batch.error.empty()) return;
    const Tally tally(batch);
    std::cout << batch.inputs << (batch.inputs == 1 ? " input: " : " inputs: ") << tally.done
              << " done";
    const auto add = [](std::size_t count, const char* what)
    {
        if (count > 0) std::cout << ", " << count << what;
    };
    add(tally.warned, " with warnings");
    add(tally.failed, " failed");
    add(tally.interrupted, " interrupted");
    add(tally.not_begun, " not begun");
    std::cout << '\n';
}

void PrintJson(const Batch& batch)
{
    const Tally tally(batch);
    Json json = {{"state", batch.State()},
                 {"exit_code", batch.ExitCode()},
                 {"error", batch.error.empty() ? Json(nullptr) : Json(batch.error)},
                 {"inputs", batch.inputs},
                 {"inputs_done", tally.done},
                 {"inputs_warned", tally.warned},
                 {"inputs_failed", tally.failed},
                 {"inputs_interrupted", tally.interrupted},
                 {"inputs_not_begun", tally.not_begun}};
    json["results"] = Json::array();
    for (const Report& report : batch.reports)
    {
        Json result = {{"input", report.input}};
        result.update(JsonOf(report));
        json["results"].push_back(result);
    }
    std::cout << json.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

void PrintKeyValue(const Batch& batch)
{
    const Tally tally(batch);
    std::cout << "state=" << batch.State() << "\nexit_code=" << batch.ExitCode()
              << "\ninputs=" << batch.inputs << "\ninputs_done=" << tally.done
              << "\ninputs_warned=" << tally.warned << "\ninputs_failed=" << tally.failed
              << "\ninputs_interrupted=" << tally.interrupted
              << "\ninputs_not_begun=" << tally.not_begun << '\n';
}

}  // namespace Orbel::Wrapton::Command
