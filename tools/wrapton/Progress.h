#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

namespace Orbel::Wrapton::Command
{

enum class ProgressStyle
{
    kNone,
    kBar,             ///< on standard error
    kKeyValueStdout,  ///< lines for programs
    kKeyValueStderr,  ///< the same beside JSON
};

struct Progress
{
    uint64_t frames_in = 0;
    uint64_t bytes_written = 0;
    int64_t time_ms = 0;
    uint64_t input_read = 0;
    uint64_t input_total = 0;  ///< 0: not known
};

/// Which of many recordings it is; no input: the only one.
struct Turn
{
    std::string input;
    std::size_t number = 0;
    std::size_t count = 0;
};

/// Shows how far a recording is, a few times a second.
class ProgressMeter
{
public:
    explicit ProgressMeter(ProgressStyle style, Turn turn = {})
        : m_style(style), m_turn(std::move(turn))
    {
    }

    bool IsDue();
    void Show(const Progress& progress);

    /// Takes a bar off the terminal, so that what follows begins on a clean line.
    void Clear();

private:
    using Clock = std::chrono::steady_clock;

    ProgressStyle m_style;
    Turn m_turn;
    Clock::time_point m_next = Clock::now();
    bool m_bBarShown = false;
};

}  // namespace Orbel::Wrapton::Command
