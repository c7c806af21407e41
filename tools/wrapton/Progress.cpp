#include "Progress.h"

#include <algorithm>
#include <iomanip>
#include <iostream>
#include <string>

#include "Arguments.h"

namespace Orbel::Wrapton::Command
{
namespace
{

constexpr std::chrono::milliseconds kInterval(200);
constexpr int kBarWidth = 30;

/// Parts in a hundred, -1 when the inputs' sizes are not known.
int Percent(const Progress& progress)
{
    if (progress.input_total == 0) return -1;
    const double part =
        static_cast<double>(progress.input_read) / static_cast<double>(progress.input_total);
    return static_cast<int>(std::min(part, 1.0) * 100.0);
}

void ShowLines(std::ostream& out, const Turn& turn, const Progress& progress)
{
    out << "state=running\n";
    if (turn.count > 0)
        out << "input=" << InOneLine(turn.input) << "\nnumber=" << turn.number
            << "\ninputs=" << turn.count << '\n';
    out << "frames_in=" << progress.frames_in << "\nbytes_written=" << progress.bytes_written
        << "\ntime_ms=" << progress.time_ms << '\n';
    if (progress.input_total > 0) out << "percent=" << Percent(progress) << '\n';
    out.flush();
}

void ShowBar(const Turn& turn, const Progress& progress)
{
    const int percent = Percent(progress);
    std::cerr << '\r';
    if (turn.count > 0) std::cerr << turn.number << '/' << turn.count << ' ';
    if (percent >= 0)
    {
        const int filled = percent * kBarWidth / 100;
        std::cerr << '[' << std::string(static_cast<std::size_t>(filled), '#')
                  << std::string(static_cast<std::size_t>(kBarWidth - filled), ' ') << "] "
                  << std::setw(3) << percent << " %  ";
    }
    std::cerr << progress.frames_in << " frames, " << progress.bytes_written / 1024 << " KiB\x1b[K"
              << std::flush;
}

}  // namespace

bool ProgressMeter::IsDue()
{
    if (m_style == ProgressStyle::kNone || Clock::now() < m_next) return false;
    m_next = Clock::now() + kInterval;
    return true;
}

void ProgressMeter::Show(const Progress& progress)
{
    switch (m_style)
    {
        case ProgressStyle::kNone:
            break;
        case ProgressStyle::kBar:
            ShowBar(m_turn, progress);
            m_bBarShown = true;
            break;
        case ProgressStyle::kKeyValueStdout:
            ShowLines(std::cout, m_turn, progress);
            break;
        case ProgressStyle::kKeyValueStderr:
            ShowLines(std::cerr, m_turn, progress);
            break;
    }
}

void ProgressMeter::Clear()
{
    if (m_bBarShown) std::cerr << "\r\x1b[K" << std::flush;
    m_bBarShown = false;
}

}  // namespace Orbel::Wrapton::Command
