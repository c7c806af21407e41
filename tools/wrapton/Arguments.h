#pragma once

#include <string>

namespace Orbel::Wrapton::Command
{

/// For CLI11: a value is not empty. One that is stands for a variable of a script that was never
/// set, and would mean that the option was not given.
std::string NotEmpty(const std::string& value);

/// A value for a key=value line: the ends of lines become \n and \r, a backslash two of them.
std::string InOneLine(const std::string& value);

}  // namespace Orbel::Wrapton::Command
