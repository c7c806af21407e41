#include "OutputFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <system_error>
#include <utility>

#include "Failure.h"

namespace Orbel::Wrapton::Command
{
namespace
{

constexpr const char* kIsInput = ": the output is one of the inputs; nothing was written to it";

FileSink Open(const std::string& path, const std::vector<std::string>& inputs, unsigned int type)
{
    if (path == OutputFile::kStandardOutput) return FileSink::Appending(STDOUT_FILENO, type);

    FileOptions options;
    options.spared.assign(inputs.begin(), inputs.end());
    std::error_code error;
    FileSink sink(path, type, options, error);
    if (error == std::errc::file_exists) throw Failure(path + kIsInput);
    if (error) throw Failure(path + ": " + error.message() + "; nothing was written to it");
    return sink;
}

/// Whether the file, there or not, is one that can be gone back in.
bool WouldBeRegular(const std::string& path)
{
    struct stat found = {};
    return path != OutputFile::kStandardOutput &&
           (stat(path.c_str(), &found) != 0 || S_ISREG(found.st_mode));
}

}  // namespace

bool IsStandardOutput(const std::string& path)
{
    if (path == OutputFile::kStandardOutput) return true;
    struct stat named = {};
    struct stat output = {};
    return stat(path.c_str(), &named) == 0 && fstat(STDOUT_FILENO, &output) == 0 &&
           (S_ISREG(output.st_mode) || S_ISFIFO(output.st_mode)) && named.st_dev == output.st_dev &&
           named.st_ino == output.st_ino;
}

OutputFile::OutputFile(const std::string& path,
                       const std::vector<std::string>& inputs,
                       unsigned int type)
    : m_path(path), m_sink(Open(path, inputs, type))
{
}

OutputFile::OutputFile(Rehearsal rehearsal, std::string path)
    : m_path(std::move(path)), m_sink("/dev/null", SG_STREAM_TYPE_MP4), m_rehearsal(rehearsal)
{
}

std::unique_ptr<OutputFile> OutputFile::Rehearsed(const std::string& path,
                                                  const std::vector<std::string>& inputs,
                                                  unsigned int type)
{
    for (const std::string& input : inputs)
    {
        std::error_code ignored;
        if (std::filesystem::equivalent(path, input, ignored)) throw Failure(path + kIsInput);
    }
    const bool replaces_header = type == SG_STREAM_TYPE_FLV && WouldBeRegular(path);
    return std::unique_ptr<OutputFile>(new OutputFile(Rehearsal{replaces_header}, path));
}

std::size_t OutputFile::Place(const Block& block)
{
    constexpr std::array<unsigned char, 3> kSignature = {'F', 'L', 'V'};
    const bool is_header = block.bytes.size() > kSignature.size() &&
                           std::equal(kSignature.begin(), kSignature.end(), block.bytes.begin());
    if (m_rehearsal && m_rehearsal->replaces_header && block.closing && is_header)
        return m_sink.Place(0, Origin::kStart, block.bytes);
    return m_sink(block);
}

void OutputFile::Finish()
{
    const bool was_good = m_sink.Good();
    std::error_code error;
    m_sink.Finish(error);
    if (!error) return;
    if (was_good && error == std::errc::no_such_file_or_directory)
        throw Failure(m_path +
                      ": it was removed, or its directory was, while it was written;"
                      " nothing of it is left under this name");
    std::string left = "; nothing of it is left on disk";
    if (m_sink.CanGoBack() && m_sink.StillThere())
        left = "; an unfinished file of " + std::to_string(Size()) +
               " bytes is left, it does not play";
    throw Failure(m_path + ": " + error.message() + left);
}

}  // namespace Orbel::Wrapton::Command
