#pragma once

#include <stdexcept>
#include <string>

namespace Orbel::Wrapton::Command
{

/// What the command ends with; documented in docs/command.md.
enum ExitCode
{
    kExitDone = 0,
    kExitWarned = 1,   ///< pack: a frame, or a whole stream, is not in the output
    kExitDamaged = 1,  ///< info: a part of the recording is damaged
    kExitFailed = 2,   ///< reading, writing or the call itself failed
    kExitSignal = 128  ///< plus the number of the signal that ended the recording
};

/// Something that ends the command; the message is for the person who called it.
class Failure : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// The input stopped because the user asked for it. Not a failure of the input.
class Interrupted : public std::runtime_error
{
public:
    Interrupted() : std::runtime_error("interrupted") {}
};

}  // namespace Orbel::Wrapton::Command
