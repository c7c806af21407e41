#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include <nlohmann/json_fwd.hpp>

#include "FrameSource.h"

namespace Orbel::Wrapton::Command
{

/// What became of one stream.
struct StreamReport
{
    StreamInfo info;
    uint64_t frames_in = 0;  ///< read and handed to the library
    uint64_t frames_stored = 0;
    uint64_t frames_dropped = 0;      ///< answered with 0 and not in the output
    std::map<int, uint64_t> refused;  ///< library's code, and how many frames got it
    uint64_t frames_damaged = 0;      ///< of frames_in
    uint64_t frames_b = 0;            ///< of frames_stored
    uint64_t bytes_in = 0;
    int64_t end_us = 0;   ///< time of the last frame
    std::string refusal;  ///< why the whole stream is not in the output; empty: it is

    [[nodiscard]] uint64_t FramesRefused() const;
    /// False when a frame that went in is not in the output, or none was to.
    [[nodiscard]] bool IsWhole() const;
};

struct SegmentReport
{
    std::string output;
    uint64_t bytes = 0;
};

/// What became of the recording.
struct Report
{
    std::string input;  ///< empty: the only recording of the call
    std::string output;
    std::string container;
    unsigned int type = 0;
    uint64_t bytes = 0;                   ///< of the output
    uint32_t reserve = 0;                 ///< as asked for
    std::vector<SegmentReport> segments;  ///< empty: one output, under its own name
    bool dry_run = false;                 ///< nothing was written
    bool index_at_end = false;            ///< the tailer made the file longer
    int signal = 0;                       ///< that ended the recording early
    bool output_complete = false;         ///< tailer written, file closed
    std::string error;                    ///< why it failed; empty: it did not
    int exit_code = 0;
    std::vector<StreamReport> streams;
    std::vector<std::string> warnings;  ///< what is not in the output, in words
    std::vector<std::string> left_out;
    std::vector<std::string> notes;
};

/// By what the report says of errors, signals and refusals.
int ExitCodeOf(const Report& report);

/// "done", "warned", "refused", "interrupted" or "failed".
std::string StateName(const Report& report);

/// Which frames and streams are not in the output, and whose doing that is.
std::vector<std::string> WarningsOn(const Report& report);

/// What the reader of the report should know of the output beyond the counts.
std::vector<std::string> NotesOn(const Report& report, const struct Container& container);

/// On standard error.
void PrintErrors(const Report& report);

nlohmann::ordered_json JsonOf(const Report& report);

void PrintText(const Report& report);
void PrintJson(const Report& report);
void PrintKeyValue(const Report& report);

}  // namespace Orbel::Wrapton::Command
