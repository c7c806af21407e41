#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <wrapton/wrapton.hpp>

namespace Orbel::Wrapton::Command
{

/// True for "-", and for a file or a pipe that standard output goes to whatever its name here: what
/// is told must not get between the bytes.
bool IsStandardOutput(const std::string& path);

/// The file, or the standard output, that the command writes: the library's own file sink, with its
/// errors told in words.
class OutputFile
{
public:
    /// The name of the standard output.
    static constexpr std::string_view kStandardOutput = "-";

    /// Opens and empties the file. Throws Failure when that is impossible, or when it is one of the
    /// inputs, which are then left as they are.
    OutputFile(const std::string& path,
               const std::vector<std::string>& inputs,
               unsigned int type = SG_STREAM_TYPE_MP4);

    /// Writes nothing: the sizes are those that a file of this name would have. Throws Failure when
    /// it is one of the inputs.
    static std::unique_ptr<OutputFile> Rehearsed(const std::string& path,
                                                 const std::vector<std::string>& inputs,
                                                 unsigned int type);

    /// Places a block of the library, by the closing rules of its container.
    std::size_t Place(const Block& block);

    /// Writes bytes where they are said to belong. Returns the bytes written, fewer than given only
    /// after an error.
    std::size_t Place(int64_t offset, Origin origin, std::span<const unsigned char> bytes)
    {
        return m_sink.Place(offset, origin, bytes);
    }

    [[nodiscard]] bool Good() const { return m_sink.Good(); }
    [[nodiscard]] const std::string& Path() const { return m_path; }

    /// The end of the highest block so far.
    [[nodiscard]] uint64_t Size() const { return m_sink.Size(); }

    /// Brings everything to the disk, closes the file and sees that it is still there under its
    /// name. Throws Failure with the first error of all, naming what is left.
    void Finish();

private:
    struct Rehearsal
    {
        bool replaces_header;  ///< the closing one of FLV, as in a file
    };
    explicit OutputFile(Rehearsal rehearsal, std::string path);

    std::string m_path;
    FileSink m_sink;
    std::optional<Rehearsal> m_rehearsal;  ///< nothing is written
};

}  // namespace Orbel::Wrapton::Command
