#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Containers.h"
#include "OutputFile.h"

namespace Orbel::Wrapton::Command
{

/// When a recording goes on in another file: with the first key picture at or behind the limit.
struct SegmentLimit
{
    std::optional<int64_t> time_us;
    std::optional<uint64_t> bytes;
};

/// A TIME or a SIZE. Nothing when it is neither, or 0.
std::optional<SegmentLimit> ParseSegmentLimit(const std::string& text);

/// Whether the container's blocks only ever continue the output, so that a pipe can take them.
bool OnlyAppends(const Container& container);

/// The files that one recording goes into: one, or with a limit many, numbered from 1.
class OutputSeries
{
public:
    /// @param dry_run packages for nothing: no file is opened
    OutputSeries(std::string path,
                 std::vector<std::string> inputs,
                 unsigned int type,
                 std::optional<SegmentLimit> limit,
                 bool dry_run);

    /// Opens the next file. Throws Failure.
    std::unique_ptr<OutputFile> Next();

    [[nodiscard]] bool IsSplit() const { return m_limit.has_value(); }
    /// Whether a segment that lasts so long already should end at the next key picture.
    [[nodiscard]] bool IsFull(int64_t time_us, uint64_t bytes) const;

private:
    [[nodiscard]] std::string NameOf(unsigned int number) const;

    std::string m_path;
    std::vector<std::string> m_inputs;
    unsigned int m_nType;
    std::optional<SegmentLimit> m_limit;
    bool m_bDryRun;
    unsigned int m_nOpened = 0;
};

}  // namespace Orbel::Wrapton::Command
