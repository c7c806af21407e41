#include "SelfDescription.h"

#include <algorithm>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "Containers.h"
#include "Failure.h"

namespace Orbel::Wrapton::Command
{
namespace
{

/// The commands that are for people.
std::vector<const CLI::App*> Commands(const CLI::App& app)
{
    std::vector<const CLI::App*> commands;
    for (const CLI::App* command : app.get_subcommands(nullptr))
        if (!command->get_group().empty()) commands.push_back(command);
    return commands;
}

/// Text for troff: no line begins a request, and a minus stays one.
std::string Escaped(const std::string& text)
{
    std::string result;
    for (const char c : text)
    {
        const bool at_start = result.empty() || result.back() == '\n';
        if (at_start && (c == '.' || c == '\'')) result += "\\&";
        if (c == '\\')
            result += "\\e";
        else if (c == '-')
            result += "\\-";
        else
            result += c;
    }
    return result;
}

void PrintOptions(const CLI::App& app)
{
    std::cout << ".SH OPTIONS\n";
    for (const CLI::Option* option : app.get_options())
    {
        std::cout << ".TP\n.B " << Escaped(option->get_name(option->get_positional(), true));
        if (option->get_items_expected_max() > 0 && !option->get_positional())
        {
            const std::string type = option->get_type_name();  // "N:UINT in [1 - 1000]"
            std::cout << " \\fI" << Escaped(type.substr(0, type.find(':'))) << "\\fR";
        }
        std::cout << '\n' << Escaped(option->get_description()) << '\n';
    }
}

void PrintHead(const std::string& name, const std::string& what)
{
    std::string title = name;
    std::transform(title.begin(),
                   title.end(),
                   title.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    std::cout << ".TH " << title << " 1 \"\" \"wrapton " WRAPTON_VERSION "\" \"User Commands\"\n"
              << ".SH NAME\n"
              << Escaped(name) << " \\- " << Escaped(what) << '\n';
}

void PrintManOfCommand(const CLI::App& command)
{
    PrintHead("wrapton-" + command.get_name(), command.get_description());
    std::string usage = command.help("wrapton");  // its first lines describe, the next show calls
    usage.erase(0, usage.find("Usage:"));
    std::cout << ".SH SYNOPSIS\n";
    std::istringstream lines(usage);
    for (std::string line; std::getline(lines, line);)
    {
        const std::size_t call = line.find("wrapton");
        if (call == std::string::npos) break;
        std::cout << Escaped(line.substr(call)) << "\n.br\n";
    }
    PrintOptions(command);
    std::cout << ".SH EXIT STATUS\n"
              << (command.get_footer().empty() ? "0 done, 2 failed."
                                               : Escaped(command.get_footer()))
              << "\n.SH SEE ALSO\n.BR wrapton (1)\n";
}

void PrintManOfAll(const CLI::App& app)
{
    PrintHead("wrapton", app.get_description());
    std::cout << ".SH SYNOPSIS\n.B wrapton\nCOMMAND [OPTIONS]\n.SH COMMANDS\n";
    for (const CLI::App* command : Commands(app))
        std::cout << ".TP\n.B " << command->get_name() << '\n'
                  << Escaped(command->get_description()) << '\n';
    PrintOptions(app);
    std::cout << ".SH CONTAINERS\n";
    for (const Container& container : OfferedContainers())
    {
        std::cout << ".TP\n.B " << container.name << "\nvideo:";
        for (const Codec codec : container.video)
            std::cout << ' ' << EntryOf(codec).name;
        std::cout << (container.video.empty() ? " none; audio:" : "; audio:");
        for (const Codec codec : container.audio)
            std::cout << ' ' << EntryOf(codec).name;
        std::cout << '\n';
    }
    std::cout
        << ".SH EXIT STATUS\n0 done, 1 done with warnings, 2 failed; 129, 130 or 143 ended by a "
           "signal.\n.SH SEE ALSO\n";
    for (const CLI::App* command : Commands(app))
        std::cout << ".BR wrapton\\-" << command->get_name() << " (1)\n";
}

int PrintMan(const CLI::App& app, const std::string& name)
{
    if (name.empty())
    {
        PrintManOfAll(app);
        return kExitDone;
    }
    for (const CLI::App* command : Commands(app))
    {
        if (command->get_name() != name) continue;
        PrintManOfCommand(*command);
        return kExitDone;
    }
    std::cerr << "wrapton: no command " << name << '\n';
    return kExitFailed;
}

/// Options with two dashes, each followed by a blank.
std::string LongOptions(const CLI::App& app)
{
    std::string names;
    for (const CLI::Option* option : app.get_options())
        for (const std::string& name : option->get_lnames())
            names.append("--").append(name).append(" ");
    return names;
}

int PrintCompletion(const CLI::App& app)
{
    std::string commands;
    for (const CLI::App* command : Commands(app))
        commands.append(command->get_name()).append(" ");
    std::string containers;
    for (const Container& container : OfferedContainers())
        containers.append(container.name).append(" ");
    std::cout << "# Completion of the command wrapton for bash, made by it.\n"
                 "_wrapton()\n{\n"
                 "    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}\n"
                 "    local words\n"
                 "    COMPREPLY=()\n"
                 "    if [ \"$before\" = --to ]; then\n"
                 "        words='"
              << containers
              << "'\n"
                 "    elif [ \"$COMP_CWORD\" -eq 1 ]; then\n"
                 "        words='"
              << commands << LongOptions(app)
              << "'\n"
                 "    elif [[ $word == -* ]]; then\n"
                 "        case ${COMP_WORDS[1]} in\n";
    for (const CLI::App* command : Commands(app))
        std::cout << "            " << command->get_name() << ") words='" << LongOptions(*command)
                  << "' ;;\n";
    std::cout << "        esac\n"
                 "    else\n"
                 "        mapfile -t COMPREPLY < <(compgen -f -- \"$word\")\n"
                 "        return\n"
                 "    fi\n"
                 "    mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"$word\")\n"
                 "}\n"
                 "complete -o filenames -F _wrapton wrapton\n";
    return kExitDone;
}

}  // namespace

void AddSelfDescription(CLI::App& app, std::function<int()>& run)
{
    CLI::App* man = app.add_subcommand("man", "Print a manual page");
    const auto name = std::make_shared<std::string>();
    man->add_option("COMMAND", *name, "Of this command");
    man->group("");  // hides it
    man->callback([name, &app, &run] { run = [name, &app] { return PrintMan(app, *name); }; });

    CLI::App* completion = app.add_subcommand("completion", "Print the completion for bash");
    completion->group("");
    completion->callback([&app, &run] { run = [&app] { return PrintCompletion(app); }; });
}

}  // namespace Orbel::Wrapton::Command
