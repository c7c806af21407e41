#include "OutputFile.h"

#include <unistd.h>

#include <system_error>
#include <utility>

#include "Failure.h"

namespace Orbel::Wrapton::Command
{
namespace
{

FileSink Open(const std::string& path, const std::vector<std::string>& inputs, unsigned int type)
{
    if (path == OutputFile::kStandardOutput) return FileSink::Appending(STDOUT_FILENO, type);

    FileOptions options;
    options.spared.assign(inputs.begin(), inputs.end());
    std::error_code error;
    FileSink sink(path, type, options, error);
    if (error == std::errc::file_exists)
        throw Failure(path + ": the output is one of the inputs; nothing was written");
    if (error) throw Failure(path + ": " + error.message() + "; nothing was written");
    return sink;
}

}  // namespace

OutputFile::OutputFile(const std::string& path,
                       const std::vector<std::string>& inputs,
                       unsigned int type)
    : m_path(path), m_sink(Open(path, inputs, type))
{
}

OutputFile::OutputFile(std::string path)
    : m_path(std::move(path)), m_sink("/dev/null", SG_STREAM_TYPE_MP4)
{
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
