#include "Report.h"

#include <gnu/libc-version.h>
#include <sys/utsname.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <thread>
#include <utility>

#include "Peer.h"

namespace Bench
{
namespace
{

std::string ProcessorName()
{
    std::ifstream info("/proc/cpuinfo");
    for (std::string line; std::getline(info, line);)
    {
        const size_t colon = line.find(": ");
        if (line.starts_with("model name") && colon != std::string::npos)
        {
            return line.substr(colon + 2);
        }
    }
    return "unknown";
}

std::string CacheText()
{
    std::string text;
    for (int index = 0; index < 8; ++index)
    {
        std::string path = "/sys/devices/system/cpu/cpu0/cache/index";
        path += std::to_string(index);
        path += '/';
        std::string level;
        std::string type;
        std::string size;
        std::ifstream(path + "level") >> level;
        std::ifstream(path + "type") >> type;
        std::ifstream(path + "size") >> size;
        if (size.empty() || type == "Instruction") continue;
        text += text.empty() ? "L" : ", L";
        text += level;
        text += ' ';
        text += size;
    }
    return text.empty() ? "unknown" : text;
}

const char* ScanText()
{
    return __builtin_cpu_supports("avx2") != 0 ? "AVX2" : "SSE2";
}

}  // namespace

std::string MachineText()
{
    utsname system{};
    uname(&system);
    const std::string peer = PeerVersion();
    Table table({"", ""});
    table.Add({"Processor",
               ProcessorName() + ", " + std::to_string(std::thread::hardware_concurrency()) +
                   " cores in use"});
    table.Add({"Caches", CacheText()});
    table.Add({"Widest instructions used", ScanText()});
    table.Add({"System", std::string(system.sysname) + " " + system.release});
    table.Add({"C library", std::string("glibc ") + gnu_get_libc_version()});
    table.Add({"Compiler", "gcc " __VERSION__});
    table.Add({"Peer", peer.empty() ? "not installed" : peer});
    return table.Text();
}

Table::Table(std::vector<std::string> head)
{
    m_rows.push_back(std::move(head));
}

void Table::Add(std::vector<std::string> row)
{
    row.resize(m_rows.front().size());
    m_rows.push_back(std::move(row));
}

std::string Table::Text() const
{
    std::vector<size_t> widths(m_rows.front().size(), 1);
    for (const auto& row : m_rows)
    {
        for (size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], row[i].size());
    }
    std::string text;
    for (const auto& row : m_rows)
    {
        for (size_t i = 0; i < row.size(); ++i)
        {
            text += "| ";
            text += row[i];
            text.append(widths[i] - row[i].size() + 1, ' ');
        }
        text += "|\n";
        if (&row != &m_rows.front()) continue;
        for (const size_t width : widths)
        {
            text += '|';
            text.append(width + 2, '-');
        }
        text += "|\n";
    }
    return text;
}

std::string Number(double value, int digits)
{
    char text[64];
    std::snprintf(text, sizeof(text), "%.*f", digits, value);
    return text;
}

}  // namespace Bench
