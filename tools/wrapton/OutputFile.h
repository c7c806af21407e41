#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace Orbel::Wrapton::Command
{

/// A file to which blocks are written at positions. The first error stays: nothing is written after
/// it, and Finish() reports it.
class OutputFile
{
public:
    /// Opens and empties the file. Throws Failure when that is impossible, or when it is one of the
    /// inputs, which are then left as they are.
    OutputFile(const std::string& path, const std::vector<std::string>& inputs);
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    ~OutputFile();

    /// Writes a block at an offset from an origin: 0 start, 1 current position, 2 end.
    /// Returns the bytes written, fewer than given only after an error.
    std::size_t Place(int64_t offset, int origin, std::span<const unsigned char> bytes);

    [[nodiscard]] bool Good() const { return m_nError == 0; }
    /// False for a pipe or a device: nothing can go back to an earlier position.
    [[nodiscard]] bool CanGoBack() const { return m_bRegular; }
    [[nodiscard]] const std::string& Path() const { return m_path; }

    /// The end of the highest block so far.
    [[nodiscard]] uint64_t Size() const { return static_cast<uint64_t>(m_nEnd); }

    /// Brings everything to the disk, closes the file and sees that it is still there under its
    /// name. Throws Failure with the first error of all, naming what is left.
    void Finish();

private:
    [[noreturn]] void Fail() const;
    [[nodiscard]] bool StillThere() const;
    [[nodiscard]] int64_t Target(int64_t offset, int origin) const;

    std::string m_path;
    int m_nFile = -1;
    int m_nError = 0;         ///< errno of the first failure
    bool m_bRegular = false;  ///< not a device or a pipe
    int64_t m_nPosition = 0;
    int64_t m_nEnd = 0;
};

}  // namespace Orbel::Wrapton::Command
