// wrapton: packages coded audio and video files into containers, by the library's eight functions.

#include <fcntl.h>
#include <unistd.h>
#include <CLI/CLI.hpp>

#include <algorithm>
#include <csignal>
#include <exception>
#include <functional>
#include <iostream>
#include <sstream>

#include "AvTypes.h"
#include "CheckCommand.h"
#include "Failure.h"
#include "FormatsCommand.h"
#include "InfoCommand.h"
#include "PackCommand.h"
#include "SelfDescription.h"

namespace
{

using namespace Orbel::Wrapton::Command;

int RunCommand(int argc, char** argv)
{
    CLI::App app("Packages coded audio and video into containers.", "wrapton");
    app.set_version_flag("--version", "wrapton " WRAPTON_VERSION);
    app.require_subcommand(1);
    app.failure_message(CLI::FailureMessage::simple);
    std::function<int()> run;
    AddPackCommand(app, run);
    AddFormatsCommand(app, run);
    AddInfoCommand(app, run);
    AddCheckCommand(app, run);
    AddSelfDescription(app, run);
    try
    {
        app.parse(argc, argv);
    }
    catch (const CLI::ParseError& error)
    {
        return app.exit(error) == 0 ? kExitDone : kExitFailed;  // 0 is help or version
    }
    return run();
}

/// A standard file that is closed would give its number to the next file that is opened, and what
/// is meant for standard output would go into a recording. Opened the wrong way round, it fails.
void HoldStandardFiles()
{
    for (const int file : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (fcntl(file, F_GETFD) < 0)
            static_cast<void>(open("/dev/null", file == STDIN_FILENO ? O_WRONLY : O_RDONLY));
}

}  // namespace

int main(int argc, char** argv)
{
    HoldStandardFiles();
    // Neither a reader that leaves nor a file size limit may end the process in the middle of a
    // file; both come back from write(). Ignoring a signal that exists cannot fail.
    static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
    static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));
    av_log_set_level(AV_LOG_QUIET);  // what matters comes back as a code and is reported once
    int code = kExitFailed;
    try
    {
        code = RunCommand(argc, argv);
    }
    catch (const std::exception& error)
    {
        std::cerr << "wrapton: " << error.what() << '\n';
    }
    if (!std::cout.flush())
    {
        std::cerr << "wrapton: standard output cannot be written\n";
        code = std::max<int>(code, kExitFailed);
    }
    return code;
}
