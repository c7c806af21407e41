// Measures every container against a plain copy and against libavformat, and writes the report.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "Comparison.h"
#include "Growth.h"
#include "Report.h"

namespace
{

using namespace Bench;

void Usage()
{
    std::fputs(
        "usage: wrapton_compare [--rounds N] [--divisor N] [--container PART] [--load NAME]\n"
        "                       [--no-peer] [--no-growth]\n",
        stderr);
    std::exit(2);
}

std::string Value(int& i, int argc, char** argv)
{
    if (i + 1 == argc) Usage();
    return argv[++i];
}

}  // namespace

int main(int argc, char** argv)
{
    ComparisonOptions options;
    bool growth = true;
    for (int i = 1; i < argc; ++i)
    {
        const std::string option = argv[i];
        if (option == "--rounds")
            options.rounds = std::max(std::atoi(Value(i, argc, argv).c_str()), 1);
        else if (option == "--divisor")
            options.divisor =
                static_cast<uint32_t>(std::max(std::atoi(Value(i, argc, argv).c_str()), 1));
        else if (option == "--container")
            options.containers = Value(i, argc, argv);
        else if (option == "--load")
            options.load = Value(i, argc, argv);
        else if (option == "--no-peer")
            options.with_peer = false;
        else if (option == "--no-growth")
            growth = false;
        else
            Usage();
    }

    // First: the memory of freed packagers would be theirs again.
    const std::string handles = growth ? HandlesText() : std::string();
    std::printf("## Machine\n\n%s\n", MachineText().c_str());
    std::printf("## Packaging\n\n%s\n%s\n", WorkloadText().c_str(), Compare(options).c_str());
    if (growth)
    {
        std::printf("## Long recordings\n\n%s\n", GrowthText(options.rounds).c_str());
        std::printf("## Many handles\n\n%s\n", handles.c_str());
    }
    return 0;
}
