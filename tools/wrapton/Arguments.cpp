#include "Arguments.h"

namespace Orbel::Wrapton::Command
{

std::string NotEmpty(const std::string& value)
{
    return value.empty() ? "the value is empty" : "";
}

std::string InOneLine(const std::string& value)
{
    std::string line;
    for (const char c : value)
        switch (c)
        {
            case '\n':
                line += "\\n";
                break;
            case '\r':
                line += "\\r";
                break;
            case '\\':
                line += "\\\\";
                break;
            default:
                line += c;
        }
    return line;
}

}  // namespace Orbel::Wrapton::Command
