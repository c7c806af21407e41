// Runs a fuzz target over kept inputs where libFuzzer is not linked: every file as it is, and then
// a fixed series of changed copies of it, the same in every run.
#include <algorithm>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace
{

using Input = std::vector<uint8_t>;

Input s_running;

/// Keeps the input that ended the run, to be minimised and added to the corpus.
void KeepInput(int /*signal*/)
{
    std::ofstream file("failed-input", std::ios::binary);
    std::copy(s_running.begin(), s_running.end(), std::ostreambuf_iterator<char>(file));
    std::cerr << "the input was kept in ./failed-input" << std::endl;
}

void Run(const Input& input)
{
    // A copy of the exact size: nothing behind it is readable unnoticed.
    s_running = Input(input.begin(), input.end());
    s_running.shrink_to_fit();
    LLVMFuzzerTestOneInput(s_running.data(), s_running.size());
}

Input Read(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void Change(Input& input, std::mt19937& random)
{
    if (input.empty())
    {
        input.push_back(static_cast<uint8_t>(random()));
        return;
    }
    const auto at = static_cast<std::ptrdiff_t>(random() % input.size());
    const auto count = std::min<std::ptrdiff_t>(1 + static_cast<std::ptrdiff_t>(random() % 16),
                                                std::ssize(input) - at);
    const auto from = input.begin() + at;
    switch (random() % 4)
    {
        case 0:
            *from = static_cast<uint8_t>(random());
            break;
        case 1:
            input.erase(from, from + count);
            break;
        case 2:
        {
            const Input again(from, from + count);
            input.insert(from, again.begin(), again.end());
            break;
        }
        default:
            *from = static_cast<uint8_t>(*from ^ (1u << (random() % 8)));
            break;
    }
}

int Usage()
{
    std::cerr << "usage: TARGET [--changes N] FILE_OR_DIRECTORY...\n";
    return 2;
}

}  // namespace

int main(int argc, char** argv)
{
    unsigned long changes = 0;
    std::vector<std::filesystem::path> files;
    for (int i = 1; i < argc; ++i)
    {
        const std::string argument = argv[i];
        if (argument == "--changes")
        {
            if (++i == argc) return Usage();
            changes = std::strtoul(argv[i], nullptr, 10);
        }
        else if (std::filesystem::is_directory(argument))
        {
            for (const auto& entry : std::filesystem::directory_iterator(argument))
            {
                files.push_back(entry.path());
            }
        }
        else
        {
            files.emplace_back(argument);
        }
    }
    if (files.empty()) return Usage();
    std::sort(files.begin(), files.end());

    if (std::signal(SIGABRT, KeepInput) == SIG_ERR) return 2;
    // NOLINTNEXTLINE(cert-msc32-c,cert-msc51-cpp): the same series in every run
    std::mt19937 random(1);
    for (const std::filesystem::path& file : files)
    {
        const Input seed = Read(file);
        Run(seed);
        Input changed = seed;
        for (unsigned long i = 0; i < changes; ++i)
        {
            if (i % 8 == 0) changed = seed;
            Change(changed, random);
            Run(changed);
        }
    }
    std::cout << files.size() << " inputs, " << changes << " changed copies of each\n";
    return 0;
}
