#include "Quantities.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>

namespace Orbel::Wrapton::Command
{
namespace
{

constexpr int64_t kSecond = 1'000'000;
constexpr double kMostSeconds = 10.0 * 366 * 24 * 3600;

/// The decimal number that begins the text, and where it ends.
std::optional<double> Number(const std::string& text, std::size_t& at)
{
    const std::size_t digits = text.find_first_not_of("0123456789.", at);
    const std::string part = text.substr(at, digits - at);
    if (part.empty() || part.find_first_of("0123456789") == std::string::npos) return std::nullopt;
    char* end = nullptr;
    const double value = std::strtod(part.c_str(), &end);
    if (end != part.c_str() + part.size()) return std::nullopt;
    at += part.size();
    return value;
}

std::optional<int64_t> FromSeconds(double seconds)
{
    if (!(seconds <= kMostSeconds)) return std::nullopt;
    return std::llround(seconds * static_cast<double>(kSecond));
}

}  // namespace

std::optional<int64_t> ParseMicroseconds(const std::string& text)
{
    constexpr int kMostParts = 3;  // hours, minutes, seconds
    double seconds = 0;
    std::size_t at = 0;
    for (int part = 1; part <= kMostParts; ++part)
    {
        const auto number = Number(text, at);
        if (!number) return std::nullopt;
        seconds = seconds * 60 + *number;
        if (at == text.size()) return FromSeconds(seconds);
        if (text[at] != ':')
        {
            if (part > 1 || at + 1 != text.size()) return std::nullopt;
            switch (text[at])
            {
                case 's':
                    return FromSeconds(seconds);
                case 'm':
                    return FromSeconds(seconds * 60);
                case 'h':
                    return FromSeconds(seconds * 3600);
                default:
                    return std::nullopt;
            }
        }
        ++at;
    }
    return std::nullopt;
}

std::optional<uint64_t> ParseBytes(const std::string& text)
{
    std::size_t at = 0;
    const auto number = Number(text, at);
    if (!number || at == text.size()) return std::nullopt;

    const std::size_t power = std::string("KMGT").find(text[at]);
    if (power == std::string::npos) return std::nullopt;
    const std::string rest = text.substr(at + 1);
    if (!rest.empty() && rest != "B" && rest != "iB") return std::nullopt;
    const double bytes = *number * std::ldexp(1.0, 10 * (static_cast<int>(power) + 1));
    constexpr double kMostBytes = 9.0e18;
    if (bytes < 1 || bytes > kMostBytes) return std::nullopt;
    return static_cast<uint64_t>(bytes);
}

std::string ClockText(int64_t microseconds)
{
    const int64_t milliseconds = microseconds / 1000;
    const int64_t seconds = milliseconds / 1000;
    const int64_t hours = seconds / 3600;
    std::string text;
    char part[32];
    if (hours > 0)
        std::snprintf(part,
                      sizeof part,
                      "%lld:%02d:%02d",
                      static_cast<long long>(hours),
                      static_cast<int>(seconds / 60 % 60),
                      static_cast<int>(seconds % 60));
    else
        std::snprintf(part,
                      sizeof part,
                      "%d:%02d",
                      static_cast<int>(seconds / 60 % 60),
                      static_cast<int>(seconds % 60));
    text = part;
    if (milliseconds % 1000 == 0) return text;
    std::snprintf(part, sizeof part, ".%03d", static_cast<int>(milliseconds % 1000));
    return text + part;
}

}  // namespace Orbel::Wrapton::Command
